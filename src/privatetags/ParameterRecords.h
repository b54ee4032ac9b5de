// The plain parameter records of a print set-up. Each fixed record is stored in its tag as its own
// little-endian image, so the offsets asserted below are the stored format.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Export.h"

#pragma pack(push, 4)

/// Colour parameters of a print set-up; tag 'QX53'.
class VKCL_API VKColorParam {
 public:
  std::int32_t version = 1;              ///< version of the record
  std::int32_t size = 1068;              ///< bytes that the tag holds
  std::int32_t status = 0;               ///< workflow state; 9 to 13 carry the lock state
  std::int32_t MediaID = 0;              ///< number of the medium; not interpreted
  char Make[128] = {};                   ///< printer make, zero-terminated
  char Model[128] = {};                  ///< printer model
  char MediaName[128] = {};              ///< name of the medium, zero-terminated
  std::int32_t ResolutionID = 0;         ///< number of the resolution; not interpreted
  float ResolutionX = 0;                 ///< horizontal resolution, dots per inch
  float ResolutionY = 0;                 ///< vertical resolution, dots per inch
  std::int32_t ColorMode = 0;            ///< colour mode of the ink set
  std::int32_t DriverColorMode = 0;      ///< the driver's own colour mode; not interpreted
  std::int32_t DitherMethod = 0;         ///< number of the dither method; not interpreted
  std::int32_t PrintMode = 0;            ///< number of the print mode; not interpreted
  unsigned char DriverOption[256] = {};  ///< opaque
  char reservedText1[128] = {};          ///< carried unchanged
  char reservedText2[128] = {};          ///< carried unchanged
  char reservedText3[128] = {};          ///< carried unchanged
};

/// Head of tag 'QX71': the name of the VSD sidecar file that follows it.
class VKCL_API VKVSDProfileParam {
 public:
  std::int32_t version = 1;  ///< version of the record
  char fileName[128] = {};   ///< last path component; not terminated when it fills the field
};

/// Opaque block of the host; tag 'QX67'.
class VKCL_API VKCompatibilityParam {
 public:
  unsigned char bytes[64] = {};  ///< carried, not interpreted
};

/// Extra parameters; tag 'QX76'.
class VKCL_API VKProfileExtraParam {
 public:
  std::int32_t version = 1;  ///< version of the record
  std::int32_t value = 0;    ///< carried, not interpreted
};

/// Screen angles as text. No tag carries it.
class VKCL_API VKAngleScreenParam {
 public:
  char text1[128] = {};  ///< not interpreted
  char text2[128] = {};  ///< not interpreted
  char text3[128] = {};  ///< not interpreted
};

/// Head of every dither table: its length in bytes.
class VKCL_API DitherTypeBase {
 public:
  std::uint32_t size = 0;  ///< length of the table, this field included
};

/// The dither table; its bytes are carried and never interpreted.
class VKCL_API DitherTypeV1 : public DitherTypeBase {
 public:
  unsigned char table[4112] = {};  ///< carried, not interpreted

  DitherTypeV1() { size = 4116; }
};

#pragma pack(pop)

static_assert(sizeof(float) == 4 && sizeof(double) == 8);
static_assert(sizeof(VKColorParam) == 1068);
static_assert(offsetof(VKColorParam, Make) == 16 && offsetof(VKColorParam, Model) == 144 &&
              offsetof(VKColorParam, MediaName) == 272 &&
              offsetof(VKColorParam, ResolutionID) == 400 &&
              offsetof(VKColorParam, ColorMode) == 412 &&
              offsetof(VKColorParam, DriverOption) == 428 &&
              offsetof(VKColorParam, reservedText1) == 684 &&
              offsetof(VKColorParam, reservedText3) == 940);
static_assert(sizeof(VKVSDProfileParam) == 132 && offsetof(VKVSDProfileParam, fileName) == 4);
static_assert(sizeof(VKCompatibilityParam) == 64);
static_assert(sizeof(VKProfileExtraParam) == 8);
static_assert(sizeof(VKAngleScreenParam) == 384);
static_assert(sizeof(DitherTypeBase) == 4 && sizeof(DitherTypeV1) == 4116);

/// Dither parameters; tag 'QX66', which holds the table behind a head of 16 bytes.
class VKCL_API VKDitherParam {
 public:
  std::int32_t type = 1;          ///< 1 is the only type that has a table
  std::int32_t size = 16;         ///< bytes that the tag holds: 16, or 4132 with a table
  DitherTypeV1* table = nullptr;  ///< owned, may be null

  VKDitherParam() = default;
  ~VKDitherParam();
  /// Assignment into an empty record.
  VKDitherParam(const VKDitherParam& other);
  /// Deliberately partial: of a table of type 1 only the first 8 bytes are taken over (its length
  /// word and the four bytes behind it, the rest zeros), and the size becomes 24. A record without
  /// such a table gives size 16 and no table. Assigning a record to itself changes nothing.
  VKDitherParam& operator=(const VKDitherParam& other);

  /// Replaces the table by a copy of the 4116 bytes of `source`, length word included; 1. The
  /// record's own table may be given. 0, and no table, for a type other than 1 and for a null
  /// source; the type is stored, the size stays.
  int InitDitherParam(const int& newType, DitherTypeBase* source);
};
