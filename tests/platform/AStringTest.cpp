#include "platform/plinth/AString.h"

#include "platform/mfc/CString.h"
#include "platform/plinth/AStringArray.h"

namespace {

TEST(AString, KeepsBytesAsTheyAre) {
  const AString text("a\0b\xFF", 4);
  EXPECT_EQ(text.length(), 4u);
  EXPECT_EQ(text.str(), std::string("a\0b\xFF", 4));
  EXPECT_EQ(AString(nullptr).length(), 0u);
  EXPECT_EQ(CString(nullptr).GetLength(), 0);
  EXPECT_STREQ(CString("Gold").GetString(), "Gold");
  EXPECT_TRUE(AString().empty());
}

TEST(AString, ComparesByteByByte) {
  EXPECT_EQ(AString("Cyan"), AString(std::string("Cyan")));
  EXPECT_NE(AString("Cyan"), AString("cyan"));
  EXPECT_TRUE(AString("A") < AString("B"));
  EXPECT_FALSE(AString("B") < AString("A"));
}

TEST(AString, ComparesWithoutCaseOfAsciiLettersOnly) {
  EXPECT_EQ(AString("CmYk").compareNoCase("cMyK"), 0);
  EXPECT_LT(AString("CMY").compareNoCase("cmyk"), 0);
  EXPECT_GT(AString("CMYK").compareNoCase("cmy"), 0);
  EXPECT_LT(AString("a").compareNoCase("B"), 0);
  EXPECT_GT(AString("b").compareNoCase("A"), 0);
  EXPECT_NE(AString("\xC4").compareNoCase("\xE4"), 0);
  EXPECT_NE(AString("@").compareNoCase("`"), 0);  // the neighbours of A and a
  EXPECT_NE(AString("[").compareNoCase("{"), 0);  // the neighbours of Z and z
  EXPECT_EQ(AString("AZ").compareNoCase("az"), 0);
}

TEST(AString, AppendsAndFinds) {
  AString text("one");
  text += AString(" two");
  EXPECT_EQ(text, "one two");
  EXPECT_EQ(AString("a") + "b", "ab");
  EXPECT_EQ(text.find("two"), 4u);
  EXPECT_EQ(text.find("o", 1), 6u);
  EXPECT_EQ(text.find("three"), AString::npos);
}

TEST(AString, TrimsOneCharacterFromBothEnds) {
  AString text("  a b  ");
  text.trim(' ');
  EXPECT_EQ(text, "a b");
  AString tabs("\t a \t");
  tabs.trim(' ');
  EXPECT_EQ(tabs, "\t a \t");
  AString blanks("   ");
  blanks.trim(' ');
  EXPECT_TRUE(blanks.empty());
  AString none("");
  none.trim(' ');
  EXPECT_TRUE(none.empty());
}

TEST(AStringArray, AppendsInsertsAndClears) {
  AStringArray names{"Cyan", "Yellow"};
  names.insert(1, "Magenta");
  names.append("Black");
  names.insert(99, "Orange");
  names.insert(0, "White");
  EXPECT_EQ(names, (AStringArray{"White", "Cyan", "Magenta", "Yellow", "Black", "Orange"}));
  EXPECT_EQ(names[5], "Orange");
  EXPECT_EQ(names.size(), 6u);
  std::string joined;
  for (const AString& name : names) joined += name.str();
  EXPECT_EQ(joined, "WhiteCyanMagentaYellowBlackOrange");
  names.removeAll();
  EXPECT_TRUE(names.empty());
  EXPECT_NE(names, AStringArray{"x"});
}

}  // namespace
