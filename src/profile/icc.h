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

/// Platforms (6.1.8).
enum icPlatformSignature : std::uint32_t {
  icSigMicrosoft = icSignature("MSFT"),
};

struct icDateTimeNumber {
  std::uint16_t year;
  std::uint16_t month;
  std::uint16_t day;
  std::uint16_t hours;
  std::uint16_t minutes;
  std::uint16_t seconds;
};

/// Three s15Fixed16 numbers: the value times 65536.
struct icXYZNumber {
  std::int32_t X;
  std::int32_t Y;
  std::int32_t Z;
};

/// The profile header (6.1).
struct icHeader {
  std::uint32_t size;  ///< length of the profile in bytes
  std::uint32_t cmmId;
  std::uint32_t version;
  icProfileClassSignature deviceClass;
  icColorSpaceSignature colorSpace;
  icColorSpaceSignature pcs;
  icDateTimeNumber date;
  std::uint32_t magic;  ///< 'acsp'
  std::uint32_t platform;
  std::uint32_t flags;
  std::uint32_t manufacturer;
  std::uint32_t model;
  std::uint32_t attributes[2];  ///< 64 bits; the words stand in file order
  std::uint32_t renderingIntent;
  icXYZNumber illuminant;
  std::uint32_t creator;
  std::uint8_t reserved[44];  ///< profile ID and reserved bytes of later versions: never touched
};

/// One entry of the tag table (6.2).
struct icTag {
  icTagSignature sig;
  std::uint32_t offset;  ///< of the tag's data, from the start of the file
  std::uint32_t size;    ///< of the tag's data in bytes, without padding
};

struct icTagBase {
  icTagTypeSignature sig;
  std::int8_t reserved[4];
};

struct icData {
  std::uint32_t dataFlag;  ///< 0 ASCII, 1 binary
  std::int8_t data[1];     ///< first of the bytes
};

struct icText {
  std::int8_t data[1];  ///< first of the characters
};

/// A 'data' tag: head of 12 bytes, then the content.
struct icDataType {
  icTagBase base;
  icData data;
};

/// A 'text' tag: head of 8 bytes, then the text.
struct icTextType {
  icTagBase base;
  icText data;
};

static_assert(sizeof(icHeader) == 128 && offsetof(icHeader, date) == 24 &&
              offsetof(icHeader, magic) == 36 && offsetof(icHeader, attributes) == 56 &&
              offsetof(icHeader, illuminant) == 68 && offsetof(icHeader, reserved) == 84);
static_assert(sizeof(icTag) == 12);
static_assert(offsetof(icDataType, data.dataFlag) == 8 && offsetof(icDataType, data.data) == 12);
static_assert(offsetof(icTextType, data.data) == 8);
