// VKPrivateTag as a caller uses it. The records that its operations take are only declared here;
// PrivateTagRecordsInterfaceTest.cpp builds payloads of them.
#pragma GCC diagnostic error "-Wmismatched-tags"
class VKPrivateTag;
class ProfileDataList;
class SplitParam;
class VKColorParam;
class VKCompatibilityParam;
class VKDitherParam;
class VKLinExtraDataParam;
class VKMultiInklimit;
class VKProfileExtraParam;
class VKSingleInkLimitWithLinRef;
class VKSpotLinDLParam;
class VKSpotSingleInkLimit;

#include "privatetags/VKPrivateTag.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

#include "interface/Interface.h"
#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

// The signature: an enumeration of 32 bits that converts into a number, with 27 values.
static_assert(std::is_enum_v<VKPrivateTagSignature> && sizeof(VKPrivateTagSignature) == 4);
static_assert(std::is_convertible_v<VKPrivateTagSignature, std::uint32_t>);
static_assert(QX50 == 0x51583530 && QX51 == 0x51583531 && QX52 == 0x51583532);
static_assert(QX53 == 0x51583533 && QX54 == 0x51583534 && QX55 == 0x51583535);
static_assert(QX56 == 0x51583536 && QX57 == 0x51583537 && QX58 == 0x51583538);
static_assert(QX59 == 0x51583539 && QX60 == 0x51583630 && QX61 == 0x51583631);
static_assert(QX62 == 0x51583632 && QX63 == 0x51583633 && QX64 == 0x51583634);
static_assert(QX65 == 0x51583635 && QX66 == 0x51583636 && QX67 == 0x51583637);
static_assert(QX68 == 0x51583638 && QX69 == 0x51583639 && QX70 == 0x51583730);
static_assert(QX71 == 0x51583731 && QX72 == 0x51583732 && QX73 == 0x51583733);
static_assert(QX74 == 0x51583734 && QX75 == 0x51583735 && QX76 == 0x51583736);
static_assert(std::is_same_v<decltype(QX50), VKPrivateTagSignature>);

static_assert(kIsRecord<VKPrivateTag>);
static_assert(std::is_same_v<decltype(VKPrivateTag::signature), VKPrivateTagSignature>);
static_assert(std::is_same_v<decltype(VKPrivateTag::data), char*>);
static_assert(std::is_same_v<decltype(VKPrivateTag::size), std::uint32_t>);

static_assert(Query<std::uint32_t()>::Is(&VKPrivateTag::GetTagSize));
static_assert(Query<char*()>::Is(&VKPrivateTag::GetData));

// Only the links take something back: their lengths and the payload's.
template <class... Arguments>
using Init = Operation<int(Arguments...)>;
static_assert(Init<const ProfileDataList&, VKPrivateTagSignature>::Is(
    &VKPrivateTag::InitFromProfileDataList));
static_assert(Init<const SplitParam&>::Is(&VKPrivateTag::InitFromSplitParam));
static_assert(Init<const VKDitherParam&>::Is(&VKPrivateTag::InitFromDitherParam));
static_assert(Init<const int&>::Is(&VKPrivateTag::InitCMStoDither));
static_assert(Init<const AString&>::Is(&VKPrivateTag::InitVKChromaAdjust));
static_assert(Init<int>::Is(&VKPrivateTag::InitWizardTag));
static_assert(Init<const VKCompatibilityParam&>::Is(&VKPrivateTag::InitFromVKCompatibilityParam));
static_assert(Init<const VKColorParam&>::Is(&VKPrivateTag::InitFromVKColorParam));
static_assert(Init<const AFilePath&>::Is(&VKPrivateTag::InitFromTRCFile));
static_assert(Init<const VKMultiInklimit&>::Is(&VKPrivateTag::InitFromVKMultiInklimit));
static_assert(
    Init<const VKSingleInkLimitWithLinRef&>::Is(&VKPrivateTag::InitFromVKSingleInkLimitWithLinRef));
static_assert(Init<const VKSpotSingleInkLimit&>::Is(&VKPrivateTag::InitFromVKSpotSIL));
static_assert(Init<VKSpotLinDLParam&>::Is(&VKPrivateTag::InitFromVKSpotLinDL));
static_assert(Init<const VKLinExtraDataParam&>::Is(&VKPrivateTag::InitFromVKLinExtraDataParam));
static_assert(Init<const AFilePath&>::Is(&VKPrivateTag::InitFromVSDProfile));
static_assert(Init<const VKProfileExtraParam&>::Is(&VKPrivateTag::InitFromVKProfileExtraParam));

std::string Content(const VKPrivateTag& tag) { return {tag.GetData(), tag.GetTagSize()}; }

TEST(VKPrivateTagInterface, StartsEmpty) {
  const VKPrivateTag tag;
  EXPECT_EQ(tag.signature, 0u);
  EXPECT_EQ(tag.GetTagSize(), 0u);
  EXPECT_EQ(tag.GetData(), nullptr);
  EXPECT_LT(OffsetIn(tag, tag.signature), OffsetIn(tag, tag.data));
  EXPECT_LT(OffsetIn(tag, tag.data), OffsetIn(tag, tag.size));
}

TEST(VKPrivateTagInterface, IsFilledByHand) {
  VKPrivateTag tag;
  tag.SetSignature(QX58);
  tag.data = new char[3]{'T', 'R', 'C'};
  tag.size = 3;
  EXPECT_EQ(tag.signature, QX58);
  EXPECT_EQ(Content(tag), "TRC");

  VKPrivateTag assigned;
  assigned = tag;
  EXPECT_EQ(assigned.GetData(), tag.GetData());
  EXPECT_EQ(assigned.GetTagSize(), 3u);
  EXPECT_EQ(assigned.signature, QX58);
  assigned.data = nullptr;  // the other one keeps the block that both share
}

TEST(VKPrivateTagInterface, IsFilledWithNumbersAndTexts) {
  const int flag = 1;
  VKPrivateTag dither;
  EXPECT_EQ(dither.InitCMStoDither(flag), 1);
  EXPECT_EQ(dither.signature, QX64);
  EXPECT_EQ(Content(dither), std::string("\1\0\0\0", 4));
  VKPrivateTag wizard;
  EXPECT_EQ(wizard.InitWizardTag(258), 1);
  EXPECT_EQ(wizard.signature, QX74);
  EXPECT_EQ(Content(wizard), std::string("\2\1\0\0", 4));
  VKPrivateTag empty;
  EXPECT_EQ(empty.InitVKChromaAdjust(""), 1);
  EXPECT_EQ(empty.signature, QX75);
  EXPECT_EQ(Content(empty), std::string("\0", 1));
  VKPrivateTag text;
  EXPECT_EQ(text.InitVKChromaAdjust(std::string("C1")), 1);
  EXPECT_EQ(Content(text), std::string("C1\0", 3));
}

TEST(VKPrivateTagInterface, IsFilledFromFiles) {
  const TempDir dir;
  AFilePath path = dir.Write("curve.trc", {'a', 'b'});
  VKPrivateTag curve;
  EXPECT_EQ(curve.InitFromTRCFile(path), 1);
  EXPECT_EQ(curve.signature, QX58);
  EXPECT_EQ(Content(curve), "ab");
  VKPrivateTag sidecar;
  EXPECT_EQ(sidecar.InitFromVSDProfile(path), 1);
  EXPECT_EQ(sidecar.signature, QX71);
  ASSERT_EQ(sidecar.GetTagSize(), 134u);
  EXPECT_STREQ(sidecar.GetData() + 4, "curve.trc");
  EXPECT_EQ(0, std::memcmp(sidecar.GetData() + 132, "ab", 2));

  VKPrivateTag none;
  EXPECT_EQ(none.InitFromTRCFile(dir.File("missing").c_str()), 0);
  EXPECT_EQ(none.InitFromVSDProfile(dir.File("missing")), 0);
}

}  // namespace
}  // namespace vkcl::testing
