// VKCLProfileProperties as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class VKCLProfileProperties;
class VKCLProfileOptions;
class ProfileDataList;

#include "handler/VKCLProfileProperties.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <type_traits>

#include "interface/Interface.h"

namespace vkcl::testing {
namespace {

using Properties = VKCLProfileProperties;

template <class Member, class Type>
constexpr bool kIs = std::is_same_v<Member, Type>;

static_assert(kIsRecord<Properties>);
static_assert(kIs<decltype(Properties::singleInkLimit), VKSingleInkLimitWithLinRef>);
static_assert(kIs<decltype(Properties::multiInkLimit), VKMultiInklimit>);
static_assert(kIs<decltype(Properties::split), SplitParam>);
static_assert(kIs<decltype(Properties::dither), VKDitherParam>);
static_assert(kIs<decltype(Properties::colorParam), VKColorParam>);
static_assert(kIs<decltype(Properties::compatibility), VKCompatibilityParam>);
static_assert(kIs<decltype(Properties::linReference), ProfileDataList>);
static_assert(kIs<decltype(Properties::linMeasurement), ProfileDataList>);
static_assert(kIs<decltype(Properties::gbReference), ProfileDataList>);
static_assert(kIs<decltype(Properties::gbMeasurement), ProfileDataList>);
static_assert(kIs<decltype(Properties::charReference), ProfileDataList>);
static_assert(kIs<decltype(Properties::charMeasurement), ProfileDataList>);
static_assert(kIs<decltype(Properties::options), VKCLProfileOptions>);
static_assert(kIs<decltype(Properties::spotInkLimit), VKSpotSingleInkLimit>);
static_assert(kIs<decltype(Properties::vsdParam), VKVSDProfileParam>);
static_assert(kIs<decltype(Properties::hasChromaAdjust), int>);
static_assert(kIs<decltype(Properties::chromaAdjust), AString>);
static_assert(kIs<decltype(Properties::extraParam), VKProfileExtraParam>);

TEST(VKCLProfilePropertiesInterface, StartAsTheirMembersDo) {
  const Properties p;
  EXPECT_EQ(p.singleInkLimit.size, 140);
  EXPECT_EQ(p.multiInkLimit.version, 4);
  EXPECT_EQ(p.split.size, 20);
  EXPECT_EQ(p.split.splits, nullptr);
  EXPECT_EQ(p.dither.size, 16);
  EXPECT_EQ(p.colorParam.size, 1068);
  EXPECT_EQ(p.compatibility.bytes[0], 0);
  EXPECT_EQ(p.linReference.DataList, nullptr);
  EXPECT_EQ(p.charMeasurement.NumOfSamples, 0);
  EXPECT_EQ(p.options.BlackWidth.str(), "100");
  EXPECT_EQ(p.spotInkLimit.version, 1);
  EXPECT_EQ(p.spotInkLimit.name, nullptr);
  EXPECT_EQ(p.vsdParam.version, 1);
  EXPECT_EQ(p.hasChromaAdjust, 0);
  EXPECT_TRUE(p.chromaAdjust.empty());
  EXPECT_EQ(p.extraParam.version, 1);
}

TEST(VKCLProfilePropertiesInterface, MembersStandInTheirOrder) {
  const Properties p;
  const std::size_t places[] = {
      OffsetIn(p, p.singleInkLimit),  OffsetIn(p, p.multiInkLimit),  OffsetIn(p, p.split),
      OffsetIn(p, p.dither),          OffsetIn(p, p.colorParam),     OffsetIn(p, p.compatibility),
      OffsetIn(p, p.linReference),    OffsetIn(p, p.linMeasurement), OffsetIn(p, p.gbReference),
      OffsetIn(p, p.gbMeasurement),   OffsetIn(p, p.charReference),  OffsetIn(p, p.charMeasurement),
      OffsetIn(p, p.options),         OffsetIn(p, p.spotInkLimit),   OffsetIn(p, p.vsdParam),
      OffsetIn(p, p.hasChromaAdjust), OffsetIn(p, p.chromaAdjust),   OffsetIn(p, p.extraParam)};
  for (std::size_t i = 1; i < std::size(places); ++i) EXPECT_LT(places[i - 1], places[i]) << i;
}

TEST(VKCLProfilePropertiesInterface, AreCopied) {
  Properties properties;
  properties.chromaAdjust = "C1";
  properties.hasChromaAdjust = 1;
  properties.spotInkLimit.count = 1;
  properties.spotInkLimit.limits = new double[1]{80};
  properties.linReference.NumOfColors = 4;
  EXPECT_EQ(properties.linReference.RefreshList(2), 1);
  EXPECT_EQ(properties.split.SetDefaultValues(2, nullptr), 1);

  const Properties copy(properties);
  Properties assigned;
  assigned = copy;
  for (const Properties* p : {&copy, static_cast<const Properties*>(&assigned)}) {
    EXPECT_EQ(p->chromaAdjust.str(), "C1");
    EXPECT_EQ(p->hasChromaAdjust, 1);
    EXPECT_NE(p->spotInkLimit.limits, properties.spotInkLimit.limits);
    EXPECT_EQ(p->spotInkLimit.limits[0], 80.0);
    EXPECT_TRUE(p->linReference == properties.linReference);
    EXPECT_EQ(p->split.count, 2);
  }
}

}  // namespace
}  // namespace vkcl::testing
