#include "inspect/PrintableText.h"

#include <gtest/gtest.h>

namespace {

using vkcl::PrintableText;

TEST(PrintableText, LeavesWhatAPersonReads) {
  EXPECT_EQ(PrintableText(""), "");
  EXPECT_EQ(PrintableText("Baryta 310"), "Baryta 310");
  EXPECT_EQ(PrintableText("Gr\u00FC\u00DFe, \u5370\u5237, \U0001F600"),
            "Gr\u00FC\u00DFe, \u5370\u5237, \U0001F600");
  EXPECT_EQ(PrintableText("a\u00A0b"), "a\u00A0b");  // the first character behind the controls
}

TEST(PrintableText, EscapesItsOwnMarks) { EXPECT_EQ(PrintableText("a\"b\\c"), "a\\\"b\\\\c"); }

TEST(PrintableText, ShowsControlsByTheirBytes) {
  EXPECT_EQ(PrintableText("a\nb\x1B[31m"), "a\\x0ab\\x1b[31m");
  EXPECT_EQ(PrintableText("\x7F"), "\\x7f");
  EXPECT_EQ(PrintableText("\xC2\x80\xC2\x9F"), "\\xc2\\x80\\xc2\\x9f");
  EXPECT_EQ(PrintableText("a\u202Eb"), "a\\xe2\\x80\\xaeb");  // text that runs the other way
}

TEST(PrintableText, ShowsWhatIsNoUtf8ByItsBytes) {
  EXPECT_EQ(PrintableText("\xFF"), "\\xff");
  EXPECT_EQ(PrintableText("a\xE5\x8D"), "a\\xe5\\x8d");
  EXPECT_EQ(PrintableText("\xC2"), "\\xc2");
}

}  // namespace
