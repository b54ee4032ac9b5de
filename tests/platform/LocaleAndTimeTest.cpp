#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <thread>

#include "platform/plinth/ALocaleSwitcher.h"
#include "platform/plinth/ATime.h"
#include "support/CommaLocale.h"

namespace {

using vkcl::testing::CommaLocale;

std::string Formatted(double value) {
  std::array<char, 32> buffer = {};
  std::snprintf(buffer.data(), buffer.size(), "%.2f", value);
  return buffer.data();
}

TEST(ALocaleSwitcher, GivesThisThreadAPointAndRestoresWhatWas) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.works()) << "the build makes the locale from Debian's package locales";
  const std::string before = Formatted(1.5);
  ASSERT_EQ(before, "1,50");
  {
    const ALocaleSwitcher outer;
    EXPECT_EQ(Formatted(1.5), "1.50");
    {
      const ALocaleSwitcher inner;
      EXPECT_EQ(Formatted(1.5), "1.50");
    }
    EXPECT_EQ(Formatted(1.5), "1.50");
    EXPECT_EQ(std::strtod("2.25", nullptr), 2.25);
  }
  EXPECT_EQ(Formatted(1.5), before);
}

TEST(ALocaleSwitcher, LeavesOtherThreadsAlone) {
  const ALocaleSwitcher here;
  std::string there;
  std::thread([&] {
    const CommaLocale comma;
    there = Formatted(1.5);
  }).join();
  EXPECT_EQ(there, "1,50");
  EXPECT_EQ(Formatted(1.5), "1.50");
}

TEST(ATime, IsTheLocalTime) {
  const std::time_t earliest = std::time(nullptr);
  const ATime now;
  const std::time_t latest = std::time(nullptr);
  std::tm parts = {};
  parts.tm_year = now.year() - 1900;
  parts.tm_mon = now.month() - 1;
  parts.tm_mday = now.day();
  parts.tm_hour = now.hour();
  parts.tm_min = now.minute();
  parts.tm_sec = now.second();
  parts.tm_isdst = -1;
  const std::time_t told = std::mktime(&parts);
  // An hour may stand twice when the clocks go back.
  const bool same = told >= earliest && told <= latest;
  const bool repeatedHour = told + 3600 >= earliest && told - 3600 <= latest;
  EXPECT_TRUE(same || repeatedHour);
  EXPECT_GE(now.year(), 2024);
}

}  // namespace
