// VKCLProfileOptions as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class VKCLProfileOptions;

#include "handler/VKCLProfileOptions.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "interface/Interface.h"

namespace vkcl::testing {
namespace {

static_assert(kIsRecord<VKCLProfileOptions>);
static_assert(std::is_same_v<decltype(VKCLProfileOptions::ProfileSize), AString>);
static_assert(std::is_same_v<decltype(VKCLProfileOptions::ProfileFormat), AString>);
static_assert(std::is_same_v<decltype(VKCLProfileOptions::BlackGeneration), AString>);
static_assert(std::is_same_v<decltype(VKCLProfileOptions::BlackWidth), AString>);
static_assert(std::is_same_v<decltype(VKCLProfileOptions::BlackStart), AString>);
static_assert(std::is_same_v<decltype(VKCLProfileOptions::BrightenerCorrection), AString>);
static_assert(std::is_same_v<decltype(VKCLProfileOptions::InkTotal), AString>);

TEST(VKCLProfileOptionsInterface, StartWithTheDefaults) {
  const VKCLProfileOptions options;
  EXPECT_EQ(options.ProfileSize.str(), "2");
  EXPECT_EQ(options.ProfileFormat.str(), "4");
  EXPECT_EQ(options.BlackGeneration.str(), "GCRSmooth");
  EXPECT_EQ(options.BlackWidth.str(), "100");
  EXPECT_EQ(options.BlackStart.str(), "0");
  EXPECT_EQ(options.BrightenerCorrection.str(), "0.0");
  EXPECT_EQ(options.InkTotal.str(), "");
}

TEST(VKCLProfileOptionsInterface, MembersStandInTheirOrder) {
  const VKCLProfileOptions o;
  EXPECT_LT(OffsetIn(o, o.ProfileSize), OffsetIn(o, o.ProfileFormat));
  EXPECT_LT(OffsetIn(o, o.ProfileFormat), OffsetIn(o, o.BlackGeneration));
  EXPECT_LT(OffsetIn(o, o.BlackGeneration), OffsetIn(o, o.BlackWidth));
  EXPECT_LT(OffsetIn(o, o.BlackWidth), OffsetIn(o, o.BlackStart));
  EXPECT_LT(OffsetIn(o, o.BlackStart), OffsetIn(o, o.BrightenerCorrection));
  EXPECT_LT(OffsetIn(o, o.BrightenerCorrection), OffsetIn(o, o.InkTotal));
}

TEST(VKCLProfileOptionsInterface, AreCopied) {
  VKCLProfileOptions options;
  options.InkTotal = "320";
  options.BlackStart = std::string("15");
  const VKCLProfileOptions copy(options);
  EXPECT_EQ(copy.InkTotal.str(), "320");
  VKCLProfileOptions assigned;
  assigned = copy;
  EXPECT_EQ(assigned.BlackStart.str(), "15");
}

}  // namespace
}  // namespace vkcl::testing
