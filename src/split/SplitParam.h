// Ink split records: how each channel is divided between a light, a medium and a dark ink.
//
// The records are stored in tag 'QX50' as their own little-endian image (4-byte packing), so the
// sizes and offsets asserted below are the stored format. Inputs and amounts are fractions from
// 0.0 to 1.0.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Export.h"

class AXMLTree;
class AXMLTreeNode;

#pragma pack(push, 4)

/// Head of every split record.
class VKCL_API SplitTypeBase {
 public:
  std::uint32_t size = 0;           ///< length of the whole record in bytes
  std::int32_t colorantIndex = -1;  ///< colorant that the record splits; -1 when not set

  /// Saves the attribute "colorantIndex" into an element (`load` 0), or loads it; 1. A missing
  /// attribute reads as 0.
  int Serialize(AXMLTree& tree, AXMLTreeNode& node, int load);
};

/// Version 2: knots and amounts. -1.0 marks a knot that is not set.
class VKCL_API SplitTypeV2 : public SplitTypeBase {
 public:
  float reserved = -1.0f;          ///< carried unchanged
  float lightPeakInput = -1.0f;    ///< input at which the light ink peaks
  float lightEndInput = -1.0f;     ///< input at which the light ink is back at 0
  float mediumPeakInput = -1.0f;   ///< input at which the medium ink peaks
  float mediumEndInput = -1.0f;    ///< input at which the medium ink is back at 0
  float lightPeakAmount = -1.0f;   ///< light ink at its peak
  float mediumPeakAmount = -1.0f;  ///< medium ink at its peak
  float darkAmount = -1.0f;        ///< dark ink where the last lighter ink ends
  float lightTailAmount = 0.0f;    ///< light ink kept up to the top; 0 for none
  float lightPeakShape = 0.0f;     ///< shape at the peak of the light ink
  float lightEndShape = 0.0f;      ///< shape at the end of the light ink
  float mediumTailAmount = 0.0f;   ///< medium ink kept up to the top; 0 for none
  float mediumStartShape = 0.0f;   ///< shape at the start of the medium ink
  float mediumPeakShape = 0.0f;    ///< shape at the peak of the medium ink
  float mediumEndShape = 0.0f;     ///< shape at the end of the medium ink
  float darkStartShape = 0.0f;     ///< shape at the start of the dark ink
  float darkEndShape = 0.0f;       ///< shape where the dark ink has reached darkAmount

  SplitTypeV2() { size = 76; }
};

/// One point of a version 3 curve.
class VKCL_API SplitDotInfo {
 public:
  float input = 0.0f;   ///< fraction, 0.0 to 1.0
  float amount = 0.0f;  ///< ink at that input, 0.0 to 1.0
};

/// One point of a version 4 curve.
class VKCL_API SplitDotInfo2 {
 public:
  float input = 0.0f;   ///< fraction, 0.0 to 1.0
  float amount = 0.0f;  ///< ink at that input, 0.0 to 1.0
  float shape = 0.0f;   ///< of the curve there; its meaning is the consumer's
};

/// Version 3: three curves of up to 256 points. Points behind a curve's count are zeros.
class VKCL_API SplitTypeV3 : public SplitTypeBase {
 public:
  SplitDotInfo light[256];         ///< curve of the light ink
  SplitDotInfo medium[256];        ///< curve of the medium ink
  SplitDotInfo dark[256];          ///< curve of the dark ink
  std::int32_t lightCount = 0;     ///< points used in `light`
  std::int32_t mediumCount = 0;    ///< points used in `medium`
  std::int32_t darkCount = 0;      ///< points used in `dark`
  std::int32_t interpolation = 0;  ///< kind of interpolation, decided by the consumer

  SplitTypeV3() { size = 6168; }
  /// The knots as points. Tails and shapes are lost. The medium curve starts at the light peak,
  /// also without a light one.
  SplitTypeV3(const SplitTypeV2& v2);
};

/// Version 4: three curves of up to 256 points with a shape each.
class VKCL_API SplitTypeV4 : public SplitTypeBase {
 public:
  SplitDotInfo2 light[256];        ///< curve of the light ink
  SplitDotInfo2 medium[256];       ///< curve of the medium ink
  SplitDotInfo2 dark[256];         ///< curve of the dark ink
  std::int32_t lightCount = 0;     ///< points used in `light`
  std::int32_t mediumCount = 0;    ///< points used in `medium`
  std::int32_t darkCount = 0;      ///< points used in `dark`
  std::int32_t interpolation = 0;  ///< kind of interpolation, decided by the consumer

  SplitTypeV4() { size = 9240; }
  /// Deliberately not the conversion through version 3: tails and shapes are kept, and a medium
  /// curve without a light one starts at input 0.
  SplitTypeV4(const SplitTypeV2& v2);
  /// Shapes are 0. Counts outside 0 to 256 are taken as 0 or 256.
  SplitTypeV4(const SplitTypeV3& v3);

  /// Saves the record into an element, or loads it; 1. Attributes "interpolation" and
  /// "colorantIndex"; child elements "light", "medium" and "dark" (none of them when the record's
  /// size is 0), each with its points as "input amount shape;", six decimals a number. When
  /// loading, a curve without its element is empty, damaged text ends a curve at its last good
  /// point, and a curve ends at 256 points. 0 when saving failed for want of memory.
  int Serialize(AXMLTree& tree, AXMLTreeNode& node, int load);
};

#pragma pack(pop)

static_assert(sizeof(SplitTypeBase) == 8 && sizeof(SplitTypeV2) == 76);
static_assert(sizeof(SplitDotInfo) == 8 && sizeof(SplitDotInfo2) == 12);
static_assert(sizeof(SplitTypeV3) == 6168 && sizeof(SplitTypeV4) == 9240);

/// The split records of one ink set, all of one version; tag 'QX50'.
class VKCL_API SplitParam {
 public:
  std::int32_t version = 4;         ///< version of every record: 2, 3 or 4
  std::int32_t size = 20;           ///< bytes that the tag holds: 20 + count x record size
  std::int32_t count = 0;           ///< number of records
  SplitTypeBase* splits = nullptr;  ///< owned, first of an array of records of that version

  SplitParam() = default;
  ~SplitParam();
  ///@{
  /// Deep copies. Assigning a set to itself changes nothing.
  SplitParam(const SplitParam& other);
  SplitParam& operator=(const SplitParam& other);
  ///@}

  /// Replaces the records by copies of `newCount` records of `newVersion`; 1. For a version other
  /// than 2, 3 and 4 the result is 0: version and count are stored and no records are left. A
  /// negative count, null records and a set too large for its size field are refused with 0 and
  /// change nothing.
  int InitSplitParam(long newVersion, int newCount, SplitTypeBase* records);

  /// Replaces version 2 records by version 3 ones. Other versions, and a set without records, are
  /// left alone.
  void ConvertToV3();
  /// Replaces version 2 or 3 records by version 4 ones.
  void ConvertToV4();

  /// Replaces the records by the default split of a colour mode, of the version that the set has:
  /// a record for each colorant that has a light or medium ink. 1, also for a mode that has none;
  /// 0 for a version other than 2, 3 and 4 (the count is stored, and no records are left).
  ///
  /// With `values`, the strength of each channel's ink in the canonical order of the mode, in any
  /// unit, the curves of version 4 are scaled by how strong the light and medium inks are compared
  /// with the full-strength one, whose strength is taken at the colorant's number. A colorant whose
  /// own strength is 0 or missing, or whose lighter inks are not a positive part of it, gets the
  /// fixed curves.
  int SetDefaultValues(int colorMode, double* values);

  /// Saves the set into an element (`load` 0), or loads it; 1. Attributes "Version" and
  /// "NumofColor2Split", child "ListSplit" with an "item" a record. Of records of version 2 and 3
  /// only the colorant is kept, deliberately: convert to version 4 before saving. Numbers have a
  /// point whatever the locale.
  ///
  /// Loading takes the elements below "ListSplit" by their place, whatever their name; a record
  /// without one has its defaults. 0 for a version other than 2, 3 and 4: what was saved up to
  /// there stays, and after loading no records are left. 0, too, when loading, for a count below 0,
  /// and for one above 1,024 when there are fewer elements than that.
  int Serialize(AXMLTree& tree, AXMLTreeNode& node, int load);

  /// Length of one record of a version; 0 for a version other than 2, 3 and 4.
  static std::size_t RecordSize(long version);
  /// An array of `count` default records of a version; null for other versions, for a negative
  /// count, and when memory is short.
  static SplitTypeBase* NewRecords(long version, int count);
  /// Releases an array of records; nothing happens for a version other than 2, 3 and 4.
  static void DeleteRecords(long version, SplitTypeBase* records);
};

/// `count` default records; null when memory is short or the count negative. The caller owns the
/// array for the life of the process.
VKCL_API SplitTypeV2* NewSplitTypeV2Array(int count);
/// Releases nothing: only a null pointer is released. Deliberate, and relied upon by callers that
/// go on using the array.
VKCL_API void FreeSplitTypeV2Array(SplitTypeV2* array);
