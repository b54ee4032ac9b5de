// ATime as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class ATime;

#include "platform/plinth/ATime.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace vkcl::testing {
namespace {

static_assert(std::is_class_v<ATime> && std::is_default_constructible_v<ATime>);
static_assert(std::is_integral_v<decltype(std::declval<const ATime&>().year())>);
static_assert(std::is_integral_v<decltype(std::declval<const ATime&>().month())>);
static_assert(std::is_integral_v<decltype(std::declval<const ATime&>().day())>);
static_assert(std::is_integral_v<decltype(std::declval<const ATime&>().hour())>);
static_assert(std::is_integral_v<decltype(std::declval<const ATime&>().minute())>);
static_assert(std::is_integral_v<decltype(std::declval<const ATime&>().second())>);

TEST(ATimeInterface, TellsTheTime) {
  const ATime now;
  EXPECT_GT(now.year(), 2000);
  EXPECT_GE(now.month(), 1);
  EXPECT_LE(now.month(), 12);
  EXPECT_GE(now.day(), 1);
  EXPECT_LE(now.day(), 31);
  EXPECT_GE(now.hour(), 0);
  EXPECT_LE(now.hour(), 23);
  EXPECT_GE(now.minute(), 0);
  EXPECT_LE(now.minute(), 59);
  EXPECT_GE(now.second(), 0);
  EXPECT_LE(now.second(), 60);
}

}  // namespace
}  // namespace vkcl::testing
