// The colour definitions as a caller uses them.
#pragma GCC diagnostic error "-Wmismatched-tags"
struct ColorDefinitions;

#include "colornames/ColorDefinitions.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "interface/Interface.h"

namespace vkcl::testing {
namespace {

static_assert(kIsRecord<ColorDefinitions>);
static_assert(std::is_same_v<decltype(ColorDefinitions::names), std::vector<AString>>);
static_assert(std::is_same_v<decltype(ColorDefinitions::flags), std::vector<std::uint32_t>>);
static_assert(std::is_same_v<decltype(ColorDefinitions::secondHex), std::vector<std::uint32_t>>);
static_assert(std::is_same_v<decltype(ColorDefinitions::firstDecimal), std::vector<std::int32_t>>);
static_assert(std::is_same_v<decltype(ColorDefinitions::secondDecimal), std::vector<std::int32_t>>);

static_assert(Function<std::string(const std::string&, char)>::Is(&ColorDefinitionsPath));
static_assert(Function<void(ColorDefinitions&)>::Is(&LoadColorDefinitions));
static_assert(Function<AString(int)>::Is(&GetColorNameByIndex));
static_assert(Function<const AStringArray&()>::Is(&StandardColorNames));

TEST(ColorDefinitionsInterface, TheFileIsBesideTheProgramsFolder) {
  EXPECT_EQ(ColorDefinitionsPath("C:\\Apps\\Bin\\host.exe", '\\'), "C:\\Apps//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("/opt/apps/bin/host", '/'), "/opt/apps//Program//Colors.ini");
}

TEST(ColorDefinitionsInterface, ALoadBeginsWithEmptySequences) {
  ColorDefinitions definitions;
  definitions.names = {"left over"};
  definitions.flags = {0x10000};
  definitions.secondHex = {1};
  definitions.firstDecimal = {-2};
  definitions.secondDecimal = {-3};
  LoadColorDefinitions(definitions);  // no such file beside the test program
  EXPECT_EQ(definitions.names.size(), 0u);
  EXPECT_EQ(definitions.flags.size(), 0u);
  EXPECT_EQ(definitions.secondHex.size(), 0u);
  EXPECT_EQ(definitions.firstDecimal.size(), 0u);
  EXPECT_EQ(definitions.secondDecimal.size(), 0u);
}

TEST(ColorDefinitionsInterface, NamesByIndex) {
  EXPECT_TRUE(GetColorNameByIndex(0) == "Cyan");
  EXPECT_TRUE(GetColorNameByIndex(22) == "MBlack");
  EXPECT_TRUE(GetColorNameByIndex(12).empty());
  const AStringArray& names = StandardColorNames();
  EXPECT_EQ(names.size(), 20u);
  EXPECT_TRUE(names[0] == "Gray");
  EXPECT_TRUE(names[19] == "B*");
}

}  // namespace
}  // namespace vkcl::testing
