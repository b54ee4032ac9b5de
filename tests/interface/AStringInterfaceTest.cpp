// AString as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class AString;

#include "platform/plinth/AString.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>

#include "interface/Interface.h"

namespace vkcl::testing {
namespace {

static_assert(std::is_class_v<AString> && kIsRecord<AString>);
static_assert(std::is_convertible_v<const char*, AString>);
static_assert(std::is_convertible_v<std::string, AString>);
static_assert(std::is_convertible_v<const std::string&, AString>);
static_assert(std::is_constructible_v<AString, const char*, std::size_t>);

static_assert(Query<const char*()>::Is(&AString::c_str));
static_assert(Query<const std::string&()>::Is(&AString::str));
static_assert(std::is_integral_v<decltype(std::declval<const AString&>().length())>);
static_assert(std::is_convertible_v<decltype(std::declval<const AString&>().empty()), bool>);
static_assert(std::is_same_v<decltype(std::declval<AString&>() += AString()), AString&>);

std::string Taken(const AString& text) { return text.str(); }

TEST(AStringInterface, IsMadeOfWhateverHoldsBytes) {
  const AString nothing;
  EXPECT_TRUE(nothing.empty());
  EXPECT_EQ(nothing.length(), 0u);
  EXPECT_STREQ(nothing.c_str(), "");
  EXPECT_EQ(Taken("Make"), "Make");
  EXPECT_EQ(Taken(std::string("Model")), "Model");
  EXPECT_EQ(Taken({"a\0b and more", 3}), std::string("a\0b", 3));
  EXPECT_EQ(AString("a\0b and more", 3).length(), 3u);
  const AString initialised = "text";
  EXPECT_STREQ(initialised.c_str(), "text");
}

TEST(AStringInterface, IsCompared) {
  const AString cyan = "Cyan";
  const AString magenta = std::string("Magenta");
  EXPECT_TRUE(cyan == AString("Cyan"));
  EXPECT_FALSE(cyan == magenta);
  EXPECT_TRUE(cyan == "Cyan");
  EXPECT_TRUE(cyan != magenta);
  EXPECT_FALSE(cyan != "Cyan");
  EXPECT_TRUE(cyan < magenta);
  EXPECT_FALSE(magenta < cyan);
  EXPECT_EQ(cyan.compareNoCase("cYAN"), 0);
  EXPECT_NE(cyan.compareNoCase(magenta), 0);
}

TEST(AStringInterface, IsSearchedAndChanged) {
  AString text = "a;b;c";
  EXPECT_EQ(text.find(";"), 1u);
  EXPECT_EQ(text.find(AString("b;c")), 2u);
  text += AString(";d");
  text += ";e";
  EXPECT_EQ(text.str(), "a;b;c;d;e");
  AString blanks = "  Baryta Gloss ";
  blanks.trim(' ');
  EXPECT_EQ(blanks.str(), "Baryta Gloss");
  const AString copy = blanks;
  text = copy;
  EXPECT_TRUE(text == blanks);
}

}  // namespace
}  // namespace vkcl::testing
