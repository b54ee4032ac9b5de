// AStringArray as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class AStringArray;

#include "platform/plinth/AStringArray.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>

#include "interface/Interface.h"

namespace vkcl::testing {
namespace {

static_assert(kIsRecord<AStringArray>);
static_assert(std::is_convertible_v<std::initializer_list<AString>, AStringArray>);
static_assert(std::is_integral_v<decltype(std::declval<const AStringArray&>().size())>);
static_assert(std::is_convertible_v<decltype(std::declval<const AStringArray&>()[std::size_t{0}]),
                                    const AString&>);
static_assert(
    std::is_convertible_v<decltype(*std::declval<const AStringArray&>().begin()), const AString&>);

std::string Joined(const AStringArray& names) {
  std::string joined;
  for (const AString& name : names) joined += name.str() + ' ';
  return joined;
}

TEST(AStringArrayInterface, IsMadeOfNames) {
  const AStringArray nothing;
  EXPECT_EQ(nothing.size(), 0u);
  EXPECT_TRUE(nothing.begin() == nothing.end());
  const AStringArray inks = {"Cyan", AString("Magenta"), std::string("Yellow")};
  EXPECT_EQ(inks.size(), 3u);
  EXPECT_EQ(inks[0].str(), "Cyan");
  EXPECT_EQ(Joined(inks), "Cyan Magenta Yellow ");
  EXPECT_EQ(Joined({"Black", "Gray"}), "Black Gray ");
}

TEST(AStringArrayInterface, IsChanged) {
  AStringArray inks;
  inks.append("Cyan");
  inks.append(AString("Yellow"));
  inks.insert(1, "Magenta");
  inks.insert(std::size_t{0}, std::string("Black"));
  EXPECT_EQ(Joined(inks), "Black Cyan Magenta Yellow ");
  const AStringArray copy = inks;
  inks.removeAll();
  EXPECT_EQ(inks.size(), 0u);
  EXPECT_EQ(copy.size(), 4u);
  inks = copy;
  EXPECT_TRUE(inks[3] == "Yellow");
}

}  // namespace
}  // namespace vkcl::testing
