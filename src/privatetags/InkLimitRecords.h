// The ink-limit records. The fixed ones are stored as their own little-endian image, so the
// offsets asserted below are the stored format; the two spot-colour records own arrays and have
// tag layouts of their own (PayloadBuilders.cpp).
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Export.h"
#include "platform/mfc/CString.h"

#pragma pack(push, 4)

/// Limits of combinations of inks; tag 'QX52'.
class VKCL_API VKMultiInklimit {
 public:
  std::int32_t version = 4;  ///< 1, 2 or 4; see ConvertToCurrentVersion
  std::int32_t size = 300;   ///< bytes that the tag holds
  std::int32_t count = 36;   ///< number of limits
  double limits[36] = {};    ///< percent; 100.0 by default

  VKMultiInklimit() {
    for (int i = 0; i < 36; ++i) limits[i] = 100.0;
  }

  /// Brings a version 1 record to version 2 where the colour mode knows how (the CMYK family of
  /// named ink sets: 1, 2, 64, 256, 1024, 4096 and 8192). 1 when the record is now of version 2 or
  /// above; 0, and nothing changed, for a version 1 record of any other colour mode.
  int ConvertToCurrentVersion(int colorMode);

 private:
  int ConvertCMYKToVersionTwo();
};

/// Limits of the single channels; tag 'QX51', always 140 bytes.
class VKCL_API VKSingleInkLimitWithLinRef {
 public:
  std::int32_t version = 1;  ///< version of the record
  std::int32_t size = 140;   ///< bytes that the tag holds
  std::int32_t count = 16;   ///< number of limits
  double limits[16] = {};    ///< percent, in channel order; 100.0 by default

  VKSingleInkLimitWithLinRef() {
    for (int i = 0; i < 16; ++i) limits[i] = 100.0;
  }
};

/// Extra data of the linearisation; tag 'QX70', always 572 bytes.
class VKCL_API VKLinExtraDataParam {
 public:
  std::int32_t version = 1;        ///< version of the record
  char text[129] = {};             ///< zero-terminated; not interpreted
  unsigned char packing[3] = {};   ///< without meaning
  std::int32_t value = 0;          ///< carried, not interpreted
  unsigned char blockA[144] = {};  ///< carried, not interpreted
  unsigned char blockB[288] = {};  ///< carried, not interpreted
};

#pragma pack(pop)

static_assert(sizeof(VKMultiInklimit) == 300 && offsetof(VKMultiInklimit, limits) == 12);
static_assert(sizeof(VKSingleInkLimitWithLinRef) == 140 &&
              offsetof(VKSingleInkLimitWithLinRef, limits) == 12);
static_assert(sizeof(VKLinExtraDataParam) == 572 && offsetof(VKLinExtraDataParam, value) == 136 &&
              offsetof(VKLinExtraDataParam, blockA) == 140 &&
              offsetof(VKLinExtraDataParam, blockB) == 284);

/// Limits of a spot colour; tag 'QX68'. The destructor releases both arrays. Copies share them:
/// copying is shallow by design, and only one copy may be destroyed while it holds them.
class VKCL_API VKSpotSingleInkLimit {
 public:
  std::int32_t version = 1;  ///< version of the record
  std::int32_t size = 0;     ///< bytes that the tag holds: name length + 8 x count + 12
  std::int32_t count = 0;    ///< number of limits
  char* name = nullptr;      ///< owned, zero-terminated, may be null
  double* limits = nullptr;  ///< owned, `count` values in percent, may be null

  VKSpotSingleInkLimit() = default;
  ~VKSpotSingleInkLimit();
  ///@{
  /// Shares name and limits with the other record.
  VKSpotSingleInkLimit(const VKSpotSingleInkLimit&) = default;
  VKSpotSingleInkLimit& operator=(const VKSpotSingleInkLimit&) = default;
  ///@}

  /// Replaces name and limits by copies of the given ones (null values: zeros). A count of 0
  /// keeps neither, yet the size counts the length of the name: a deliberate asymmetry, and such
  /// a record cannot be stored. A negative count is taken as 0. When memory is short nothing
  /// changes.
  void SetData(int newCount, const CString& newName, double* values);
};

/// Linearisation links of a spot colour; tag 'QX69'. The destructor releases the arrays and the
/// links. Copies share them, as with VKSpotSingleInkLimit.
class VKCL_API VKSpotLinDLParam {
 public:
  std::int32_t version = 1;           ///< version of the record
  std::int32_t size = 0;              ///< bytes that the tag holds; set when the tag is built
  std::int32_t count = 0;             ///< number of links
  std::int32_t nameLength = 0;        ///< characters of the name
  char* name = nullptr;               ///< owned, zero-terminated, may be null
  std::int32_t* linkSizes = nullptr;  ///< owned, serialised length of each link
  void** links = nullptr;             ///< owned, `count` 8-bit link handles of the profiler library

  VKSpotLinDLParam() = default;
  ~VKSpotLinDLParam();
  ///@{
  /// Shares name, sizes and links with the other record.
  VKSpotLinDLParam(const VKSpotLinDLParam&) = default;
  VKSpotLinDLParam& operator=(const VKSpotLinDLParam&) = default;
  ///@}

  /// Replaces everything by the name and `newCount` new empty links. A count of 0 or below keeps
  /// nothing. When memory is short nothing changes.
  void SetData(int newCount, const CString& newName);

  /// Releases name, sizes and links, and sets the counts that describe them to 0.
  void Release();
};
