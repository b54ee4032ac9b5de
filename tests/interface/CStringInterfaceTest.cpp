// CString as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class CString;

#include "platform/mfc/CString.h"

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <utility>

namespace vkcl::testing {
namespace {

static_assert(std::is_convertible_v<const char*, CString>);
static_assert(std::is_same_v<decltype(std::declval<const CString&>().GetLength()), int>);
static_assert(std::is_same_v<decltype(std::declval<const CString&>().GetString()), const char*>);

std::size_t LengthOf(const CString& text) { return std::strlen(text.GetString()); }

TEST(CStringInterface, HoldsAName) {
  const CString name("Spot 1");
  EXPECT_EQ(name.GetLength(), 6);
  EXPECT_STREQ(name.GetString(), "Spot 1");
  EXPECT_EQ(LengthOf("Spot 12"), 7u);
}

}  // namespace
}  // namespace vkcl::testing
