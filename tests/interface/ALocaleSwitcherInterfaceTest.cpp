// ALocaleSwitcher as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class ALocaleSwitcher;

#include "platform/plinth/ALocaleSwitcher.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "support/CommaLocale.h"

namespace vkcl::testing {
namespace {

static_assert(std::is_class_v<ALocaleSwitcher>);
static_assert(std::is_default_constructible_v<ALocaleSwitcher>);

std::string Written(double number) {
  char text[16] = {};
  std::snprintf(text, sizeof text, "%.2f", number);
  return text;
}

TEST(ALocaleSwitcherInterface, NumbersHaveAPointWithinItsScope) {
  const CommaLocale comma;
  if (!comma.works()) GTEST_SKIP() << "no locale with a decimal comma";
  EXPECT_EQ(Written(95.5), "95,50");
  {
    const ALocaleSwitcher neutral;
    EXPECT_EQ(Written(95.5), "95.50");
    EXPECT_EQ(std::strtod("95.5", nullptr), 95.5);
  }
  EXPECT_EQ(Written(95.5), "95,50");
}

}  // namespace
}  // namespace vkcl::testing
