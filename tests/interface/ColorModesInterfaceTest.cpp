// The colour modes as a caller uses them.
#pragma GCC diagnostic error "-Wmismatched-tags"
class AStringArray;

#include "colornames/ColorModes.h"

#include <gtest/gtest.h>

#include "interface/Interface.h"

namespace vkcl::testing {
namespace {

static_assert(Function<int(const AStringArray&, AStringArray&)>::Is(&GetColorModeByNames));
static_assert(Function<int(const char**, int)>::Is(&GetColorModeFromNames));
static_assert(Function<void(int, AStringArray&)>::Is(&GetStandardColorNamesByColorMode));
static_assert(Function<int(int)>::Is(&GetNumberOfChannels));
static_assert(Function<int(int)>::Is(&GetNumberOfDarkChannels));
static_assert(Function<int(int)>::Is(&GetNumberOfNonDarkChannels));
static_assert(Function<bool(const int&, AStringArray&)>::Is(&GetDarkNames));
static_assert(Function<unsigned int(unsigned int, int)>::Is(&GetColorSpaceFromNumberOfColors));

TEST(ColorModesInterface, NamesBecomeAMode) {
  AStringArray ordered;
  const AStringArray names = {"Yellow", "Black", "Cyan", "Magenta"};
  EXPECT_EQ(GetColorModeByNames(names, ordered), 1);
  EXPECT_EQ(ordered.size(), 4u);
  EXPECT_TRUE(ordered[0] == "Cyan");
  EXPECT_EQ(GetColorModeByNames({"Gray"}, ordered), 8);
  EXPECT_EQ(GetColorModeByNames({"White"}, ordered), 0);
  EXPECT_EQ(ordered.size(), 0u);
  const char* inks[] = {"Cyan", "Magenta", "Yellow"};
  EXPECT_EQ(GetColorModeFromNames(inks, 3), 16);
}

TEST(ColorModesInterface, AModeBecomesNames) {
  AStringArray names;
  GetStandardColorNamesByColorMode(8200, names);
  EXPECT_EQ(names.size(), 7u);
  const int mode = 512;
  EXPECT_TRUE(GetDarkNames(mode, names));
  EXPECT_TRUE(names[0] == "Red");
  EXPECT_TRUE(GetDarkNames(8, names));
  EXPECT_TRUE(names[0] == "Gray");
  EXPECT_FALSE(GetDarkNames(3, names));
  EXPECT_EQ(names.size(), 0u);
}

TEST(ColorModesInterface, ChannelsAreCounted) {
  EXPECT_EQ(GetNumberOfChannels(8224), 11);
  EXPECT_EQ(GetNumberOfDarkChannels(8224), 7);
  EXPECT_EQ(GetNumberOfNonDarkChannels(8224), 4);
  EXPECT_EQ(GetNumberOfChannels(0), 0);
  EXPECT_EQ(GetNumberOfDarkChannels(0), 0);
  EXPECT_EQ(GetNumberOfNonDarkChannels(0), 0);
  EXPECT_EQ(GetColorSpaceFromNumberOfColors(2, 0), 0xFFFFFFFFu);
  EXPECT_EQ(GetColorSpaceFromNumberOfColors(3, 1), 0x434D5920u);
  EXPECT_EQ(GetColorSpaceFromNumberOfColors(3, 0), 0x52474220u);
}

}  // namespace
}  // namespace vkcl::testing
