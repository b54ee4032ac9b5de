// The types of an ICC profile file (ICC.1:2001-04), as the ICC's reference header names them.
// Numbers are big-endian in the file; the library holds them in host order.
#pragma once

#include <cstddef>
#include <cstdint>

/// Four characters as one number, the first in the high byte.
constexpr std::uint32_t icSignature(const char (&text)[5]) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(text[i]);
  return value;
}

/// The signature that every profile has in its header (6.1.7).
inline constexpr std::uint32_t icMagicNumber = icSignature("acsp");

/// Profile or device class (6.1.4).
enum icProfileClassSignature : std::uint32_t {
  icSigInputClass = icSignature("scnr"),
  icSigDisplayClass = icSignature("mntr"),
  icSigOutputClass = icSignature("prtr"),
  icSigLinkClass = icSignature("link"),
  icSigColorSpaceClass = icSignature("spac"),
  icSigAbstractClass = icSignature("abst"),
  icSigNamedColorClass = icSignature("nmcl"),
};

/// Data colour space and profile connection space (6.1.5).
enum icColorSpaceSignature : std::uint32_t {
  icSigXYZData = icSignature("XYZ "),
  icSigLabData = icSignature("Lab "),
  icSigGrayData = icSignature("GRAY"),
  icSigRgbData = icSignature("RGB "),
  icSigCmyData = icSignature("CMY "),
  icSigCmykData = icSignature("CMYK"),
  icSig1colorData = icSignature("1CLR"),
  icSig2colorData = icSignature("2CLR"),
  icSig3colorData = icSignature("3CLR"),
  icSig4colorData = icSignature("4CLR"),
  icSig5colorData = icSignature("5CLR"),
  icSig6colorData = icSignature("6CLR"),
  icSig7colorData = icSignature("7CLR"),
  icSig8colorData = icSignature("8CLR"),
  icSig9colorData = icSignature("9CLR"),
  icSig10colorData = icSignature("ACLR"),
  icSig11colorData = icSignature("BCLR"),
  icSig12colorData = icSignature("CCLR"),
  icSig13colorData = icSignature("DCLR"),
  icSig14colorData = icSignature("ECLR"),
  icSig15colorData = icSignature("FCLR"),
  icSig16colorData = icSignature("GCLR"),
};

/// Tags that this library knows by name (6.3).
enum icTagSignature : std::uint32_t {
  icSigAToB0Tag = icSignature("A2B0"),
  icSigAToB1Tag = icSignature("A2B1"),
  icSigAToB2Tag = icSignature("A2B2"),
  icSigBToA0Tag = icSignature("B2A0"),
  icSigBToA1Tag = icSignature("B2A1"),
  icSigBToA2Tag = icSignature("B2A2"),
  icSigCharTargetTag = icSignature("targ"),
};

/// Types of tag data that this library reads and writes (6.5).
enum icTagTypeSignature : std::uint32_t {
  icSigDataType = icSignature("data"),
  icSigTextType = icSignature("text"),
};

/// Platforms (6.1.7).
enum icPlatformSignature : std::uint32_t {
  icSigMicrosoft = icSignature("MSFT"),
};

/// A moment (5.3.1).
struct icDateTimeNumber {
  std::uint16_t year;     ///< as 1994
  std::uint16_t month;    ///< 1 to 12
  std::uint16_t day;      ///< 1 to 31
  std::uint16_t hours;    ///< 0 to 23
  std::uint16_t minutes;  ///< 0 to 59
  std::uint16_t seconds;  ///< 0 to 59
};

/// Three s15Fixed16 numbers: the value times 65536.
struct icXYZNumber {
  std::int32_t X;  ///< X tristimulus value
  std::int32_t Y;  ///< Y tristimulus value
  std::int32_t Z;  ///< Z tristimulus value
};

/// The profile header (6.1).
struct icHeader {
  std::uint32_t size;                   ///< length of the profile in bytes
  std::uint32_t cmmId;                  ///< signature of the preferred CMM
  std::uint32_t version;                ///< of the format: 0x02400000 for 2.4.0
  icProfileClassSignature deviceClass;  ///< profile or device class
  icColorSpaceSignature colorSpace;     ///< of the device data
  icColorSpaceSignature pcs;            ///< profile connection space
  icDateTimeNumber date;                ///< when the profile was made
  std::uint32_t magic;                  ///< 'acsp'
  std::uint32_t platform;               ///< signature of the primary platform
  std::uint32_t flags;                  ///< profile flags
  std::uint32_t manufacturer;           ///< signature of the maker of the device
  std::uint32_t model;                  ///< signature of the model of the device
  std::uint32_t attributes[2];          ///< 64 bits; the words stand in file order
  std::uint32_t renderingIntent;        ///< 0 to 3
  icXYZNumber illuminant;               ///< of the connection space: D50
  std::uint32_t creator;                ///< signature of who made the profile
  std::uint8_t reserved[44];  ///< profile ID and reserved bytes of later versions: never touched
};

/// One entry of the tag table (6.2).
struct icTag {
  icTagSignature sig;    ///< which tag it is
  std::uint32_t offset;  ///< of the tag's data, from the start of the file
  std::uint32_t size;    ///< of the tag's data in bytes, without padding
};

/// The head of every tag's data (6.5).
struct icTagBase {
  icTagTypeSignature sig;   ///< type of the data
  std::int8_t reserved[4];  ///< zeros
};

/// What follows the head in a 'data' tag.
struct icData {
  std::uint32_t dataFlag;  ///< 0 ASCII, 1 binary
  std::int8_t data[1];     ///< first of the bytes
};

/// What follows the head in a 'text' tag.
struct icText {
  std::int8_t data[1];  ///< first of the characters
};

/// A 'data' tag: head of 12 bytes, then the content.
struct icDataType {
  icTagBase base;  ///< type and reserved bytes
  icData data;     ///< flag and content
};

/// A 'text' tag: head of 8 bytes, then the text.
struct icTextType {
  icTagBase base;  ///< type and reserved bytes
  icText data;     ///< the text
};

static_assert(sizeof(icHeader) == 128 && offsetof(icHeader, date) == 24 &&
              offsetof(icHeader, magic) == 36 && offsetof(icHeader, attributes) == 56 &&
              offsetof(icHeader, illuminant) == 68 && offsetof(icHeader, reserved) == 84);
static_assert(sizeof(icTag) == 12);
static_assert(offsetof(icDataType, data.dataFlag) == 8 && offsetof(icDataType, data.data) == 12);
static_assert(offsetof(icTextType, data.data) == 8);
