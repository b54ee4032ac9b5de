// The types of an ICC profile file as a caller uses them.
#include "profile/icc.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "interface/Interface.h"
#include "support/ImageBuilder.h"

namespace vkcl::testing {
namespace {

template <class Member, class Type>
constexpr bool kIs = std::is_same_v<Member, Type>;

template <class Member>
constexpr bool kIsWord = sizeof(Member) == 4 && std::is_convertible_v<Member, std::uint32_t>;

// Signatures are enumerations of 32 bits that convert into numbers.
template <class Signature>
constexpr bool kIsSignature = std::is_enum_v<Signature>&& kIsWord<Signature>;
static_assert(kIsSignature<icTagSignature>);
static_assert(kIsSignature<icProfileClassSignature>);
static_assert(kIsSignature<icColorSpaceSignature>);

static_assert(icSigInputClass == Sig("scnr") && icSigDisplayClass == Sig("mntr"));
static_assert(icSigOutputClass == Sig("prtr") && icSigLinkClass == Sig("link"));
static_assert(kIs<decltype(icSigOutputClass), icProfileClassSignature>);

static_assert(icSigXYZData == Sig("XYZ ") && icSigLabData == Sig("Lab "));
static_assert(icSigGrayData == Sig("GRAY") && icSigRgbData == Sig("RGB "));
static_assert(icSigCmyData == Sig("CMY ") && icSigCmykData == Sig("CMYK"));
static_assert(icSig2colorData == Sig("2CLR") && icSig3colorData == Sig("3CLR"));
static_assert(icSig4colorData == Sig("4CLR") && icSig5colorData == Sig("5CLR"));
static_assert(icSig6colorData == Sig("6CLR") && icSig7colorData == Sig("7CLR"));
static_assert(icSig8colorData == Sig("8CLR") && icSig9colorData == Sig("9CLR"));
static_assert(icSig10colorData == Sig("ACLR") && icSig11colorData == Sig("BCLR"));
static_assert(icSig12colorData == Sig("CCLR") && icSig13colorData == Sig("DCLR"));
static_assert(icSig14colorData == Sig("ECLR") && icSig15colorData == Sig("FCLR"));
static_assert(kIs<decltype(icSigCmykData), icColorSpaceSignature>);

static_assert(icSigAToB0Tag == Sig("A2B0") && icSigAToB1Tag == Sig("A2B1"));
static_assert(icSigBToA0Tag == Sig("B2A0") && icSigBToA1Tag == Sig("B2A1"));
static_assert(icSigBToA2Tag == Sig("B2A2") && icSigCharTargetTag == Sig("targ"));
static_assert(kIs<decltype(icSigCharTargetTag), icTagSignature>);
static_assert(icSigDataType == Sig("data") && icSigTextType == Sig("text"));

// The header: each field at the place that it has in the file.
static_assert(sizeof(icHeader) == 128 && std::is_trivially_copyable_v<icHeader>);
static_assert(offsetof(icHeader, size) == 0 && kIs<decltype(icHeader::size), std::uint32_t>);
static_assert(offsetof(icHeader, cmmId) == 4 && kIsWord<decltype(icHeader::cmmId)>);
static_assert(offsetof(icHeader, version) == 8 && kIs<decltype(icHeader::version), std::uint32_t>);
static_assert(offsetof(icHeader, deviceClass) == 12 &&
              kIs<decltype(icHeader::deviceClass), icProfileClassSignature>);
static_assert(offsetof(icHeader, colorSpace) == 16 &&
              kIs<decltype(icHeader::colorSpace), icColorSpaceSignature>);
static_assert(offsetof(icHeader, pcs) == 20 && kIs<decltype(icHeader::pcs), icColorSpaceSignature>);
static_assert(offsetof(icHeader, date) == 24 && sizeof(icHeader::date) == 12);
static_assert(offsetof(icHeader, magic) == 36 && kIsWord<decltype(icHeader::magic)>);
static_assert(offsetof(icHeader, platform) == 40 && kIsWord<decltype(icHeader::platform)>);
static_assert(offsetof(icHeader, flags) == 44 && kIs<decltype(icHeader::flags), std::uint32_t>);
static_assert(offsetof(icHeader, manufacturer) == 48 && kIsWord<decltype(icHeader::manufacturer)>);
static_assert(offsetof(icHeader, model) == 52 && kIs<decltype(icHeader::model), std::uint32_t>);
static_assert(offsetof(icHeader, attributes) == 56 &&
              kIs<decltype(icHeader::attributes), std::uint32_t[2]>);
static_assert(offsetof(icHeader, renderingIntent) == 64 &&
              kIs<decltype(icHeader::renderingIntent), std::uint32_t>);
static_assert(offsetof(icHeader, illuminant) == 68 && sizeof(icHeader::illuminant) == 12);
static_assert(offsetof(icHeader, creator) == 80 && kIsWord<decltype(icHeader::creator)>);
static_assert(offsetof(icHeader, reserved) == 84 && kIsBytes<decltype(icHeader::reserved), 44>);

using Date = decltype(icHeader::date);
static_assert(offsetof(Date, year) == 0 && kIs<decltype(Date::year), std::uint16_t>);
static_assert(offsetof(Date, month) == 2 && kIs<decltype(Date::month), std::uint16_t>);
static_assert(offsetof(Date, day) == 4 && kIs<decltype(Date::day), std::uint16_t>);
static_assert(offsetof(Date, hours) == 6 && kIs<decltype(Date::hours), std::uint16_t>);
static_assert(offsetof(Date, minutes) == 8 && kIs<decltype(Date::minutes), std::uint16_t>);
static_assert(offsetof(Date, seconds) == 10 && kIs<decltype(Date::seconds), std::uint16_t>);

using White = decltype(icHeader::illuminant);
static_assert(offsetof(White, X) == 0 && kIs<decltype(White::X), std::int32_t>);
static_assert(offsetof(White, Y) == 4 && kIs<decltype(White::Y), std::int32_t>);
static_assert(offsetof(White, Z) == 8 && kIs<decltype(White::Z), std::int32_t>);

static_assert(sizeof(icTag) == 12 && std::is_trivially_copyable_v<icTag>);
static_assert(offsetof(icTag, sig) == 0 && kIs<decltype(icTag::sig), icTagSignature>);
static_assert(offsetof(icTag, offset) == 4 && kIs<decltype(icTag::offset), std::uint32_t>);
static_assert(offsetof(icTag, size) == 8 && kIs<decltype(icTag::size), std::uint32_t>);

// 'data' and 'text': type, reserved word, and the flag of the one before its content.
static_assert(offsetof(icDataType, base) == 0 && kIsWord<decltype(icDataType::base.sig)>);
static_assert(sizeof(icDataType::base) == 8 && kIsBytes<decltype(icDataType::base.reserved), 4>);
static_assert(offsetof(icDataType, data) == 8);
static_assert(kIs<decltype(icDataType::data.dataFlag), std::uint32_t>);
static_assert(offsetof(decltype(icDataType::data), data) == 4);
static_assert(offsetof(icTextType, base) == 0 && kIsWord<decltype(icTextType::base.sig)>);
static_assert(offsetof(icTextType, data) == 8);
static_assert(offsetof(decltype(icTextType::data), data) == 0);

TEST(IccInterface, HeaderHasTheLayoutOfTheFile) {
  const Bytes bytes = ProfileHeader();
  icHeader header;
  ASSERT_EQ(bytes.size(), sizeof header);
  std::memcpy(&header, bytes.data(), sizeof header);
  EXPECT_EQ(0, std::memcmp(header.reserved, &bytes[84], sizeof header.reserved));
  EXPECT_EQ(0, std::memcmp(&header.creator, &bytes[80], 4));
  const icHeader copy = header;
  EXPECT_EQ(0, std::memcmp(&copy, bytes.data(), sizeof copy));
}

TEST(IccInterface, TableEntryIsMadeOfThreeWords) {
  const icTag tag = {icSigCharTargetTag, 144, 20};
  EXPECT_EQ(tag.sig, Sig("targ"));
  EXPECT_EQ(tag.offset, 144u);
  EXPECT_EQ(tag.size, 20u);
  icTag other = tag;
  other.sig = static_cast<icTagSignature>(Sig("QX50"));
  EXPECT_NE(other.sig, tag.sig);
}

}  // namespace
}  // namespace vkcl::testing
