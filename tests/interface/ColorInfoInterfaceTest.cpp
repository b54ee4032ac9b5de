// The question for the dilutions of an ink as a caller asks it.
#include "colornames/ColorInfo.h"

#include <gtest/gtest.h>

#include "interface/Interface.h"

namespace vkcl::testing {
namespace {

static_assert(Function<int(int, int, int&, int&)>::Is(&ColorUtils::ColorInfo::GetLightMediumIndex));

TEST(ColorInfoInterface, TellsTheChannelsOfTheDilutions) {
  int light = 9;
  int medium = 9;
  EXPECT_EQ(ColorUtils::ColorInfo::GetLightMediumIndex(8192, 3, light, medium), 1);
  EXPECT_EQ(light, 7);
  EXPECT_EQ(medium, 6);
  EXPECT_EQ(ColorUtils::ColorInfo::GetLightMediumIndex(8192, 2, light, medium), 1);
  EXPECT_EQ(light, -1);
  EXPECT_EQ(medium, -1);
}

TEST(ColorInfoInterface, AColorantOutsideTheFourHasNone) {
  for (const int colorant : {-1, 4}) {
    int light = 9;
    int medium = 9;
    ColorUtils::ColorInfo::GetLightMediumIndex(8192, colorant, light, medium);
    EXPECT_EQ(light, -1) << colorant;
    EXPECT_EQ(medium, -1) << colorant;
  }
}

}  // namespace
}  // namespace vkcl::testing
