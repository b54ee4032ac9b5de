#include "platform/plinth/NumberText.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <optional>
#include <thread>

#include "support/CommaLocale.h"

namespace {

using vkcl::AppendFixed;
using vkcl::IntegerOf;
using vkcl::IntegerText;
using vkcl::IsSpace;
using vkcl::NextHex;
using vkcl::NextInteger;
using vkcl::NextNumber;
using vkcl::NumberOf;
using vkcl::ShortestText;
using vkcl::SkipSpace;
using vkcl::WholeNumber;
using vkcl::testing::CommaLocale;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Gives this thread the "C" locale while it lives, for what the C library is asked.
class PointLocale {
 public:
  PointLocale() : locale_(::newlocale(LC_ALL_MASK, "C", nullptr)), before_(::uselocale(locale_)) {}
  ~PointLocale() {
    ::uselocale(before_);
    ::freelocale(locale_);
  }
  PointLocale(const PointLocale&) = delete;
  PointLocale& operator=(const PointLocale&) = delete;

 private:
  locale_t locale_;
  locale_t before_;
};

/// A number without loss, as text; all numbers that are none alike.
template <class Float>
std::string Exact(Float number) {
  const PointLocale point;
  std::array<char, 64> buffer = {};
  std::snprintf(buffer.data(), buffer.size(), "%a", static_cast<double>(number));
  return std::isnan(number) ? "nan" : buffer.data();
}

/// What the conversions find: the number, "|", and the rest of the text; "none" without a number.
std::string Next(std::string_view text) {
  double number = -77;
  return NextNumber(text, number) ? Exact(number) + "|" + std::string(text) : "none";
}

std::string NextFloat(std::string_view text) {
  float number = -77;
  return NextNumber(text, number) ? Exact(number) + "|" + std::string(text) : "none";
}

std::string Found(double number, const std::string& rest) { return Exact(number) + "|" + rest; }

std::string Hex(std::string_view text) {
  std::uint32_t number = 0;
  if (!NextHex(text, number)) return "none";
  return std::to_string(number) + "|" + std::string(text);
}

std::string Integer(std::string_view text) {
  std::int32_t number = 0;
  if (!NextInteger(text, number)) return "none";
  return std::to_string(number) + "|" + std::string(text);
}

std::string Fixed(double number, int decimals) {
  std::string text;
  AppendFixed(text, number, decimals);
  return text;
}

std::string Printed(double number, int decimals) {
  const PointLocale point;
  std::array<char, 512> buffer = {};
  std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, number);
  return buffer.data();
}

// White space.

TEST(NumberText, KnowsTheWhiteSpaceOfTheCLibrary) {
  const std::string spaces = " \t\n\v\f\r";
  for (int i = 0; i < 256; ++i) {
    const char c = static_cast<char>(i);
    EXPECT_EQ(IsSpace(c), spaces.find(c) != std::string::npos) << i;
  }
}

TEST(NumberText, SkipsLeadingWhiteSpaceOnly) {
  EXPECT_EQ(SkipSpace(" \t\n\v\f\r7 x "), "7 x ");
  EXPECT_EQ(SkipSpace("7"), "7");
  EXPECT_EQ(SkipSpace("  "), "");
  EXPECT_EQ(SkipSpace(""), "");
  EXPECT_EQ(SkipSpace("\xC2\xA0 7"), "\xC2\xA0 7") << "a blank of Unicode is none";
  EXPECT_EQ(SkipSpace(std::string_view("\0 7", 3)), std::string_view("\0 7", 3));
}

// The next number.

TEST(NextNumber, ReadsUpToTheFirstCharacterBehindIt) {
  EXPECT_EQ(Next("1"), Found(1, ""));
  EXPECT_EQ(Next("  7x"), Found(7, "x"));
  EXPECT_EQ(Next("\t\n\v\f\r -7"), Found(-7, ""));
  EXPECT_EQ(Next("+5 "), Found(5, " "));
  EXPECT_EQ(Next("0.25;0.5"), Found(0.25, ";0.5"));
  EXPECT_EQ(Next("1.5.25"), Found(1.5, ".25"));
  EXPECT_EQ(Next("1-2"), Found(1, "-2"));
  EXPECT_EQ(Next("1,5"), Found(1, ",5")) << "a comma is no decimal separator";
  EXPECT_EQ(Next("007"), Found(7, ""));
  EXPECT_EQ(Next("1_000"), Found(1, "_000"));
  EXPECT_EQ(Next("1 000"), Found(1, " 000"));
  EXPECT_EQ(Next(std::string_view("1\0002", 3)), Found(1, std::string("\0002", 2)));
}

TEST(NextNumber, NeedsNoDigitsOnOneSideOfThePoint) {
  EXPECT_EQ(Next(".5x"), Found(0.5, "x"));
  EXPECT_EQ(Next("5.x"), Found(5, "x"));
  EXPECT_EQ(Next("-.5"), Found(-0.5, ""));
  EXPECT_EQ(Next("5.e1"), Found(50, ""));
  EXPECT_EQ(Next("."), "none");
  EXPECT_EQ(Next("-."), "none");
  EXPECT_EQ(Next(".e5"), "none");
}

TEST(NextNumber, ReadsExponents) {
  EXPECT_EQ(Next("1e5"), Found(100000, ""));
  EXPECT_EQ(Next("1E+05x"), Found(100000, "x"));
  EXPECT_EQ(Next("25e-2"), Found(0.25, ""));
  EXPECT_EQ(Next("1e5e5"), Found(100000, "e5"));
  EXPECT_EQ(Next("1e5.5"), Found(100000, ".5"));
  EXPECT_EQ(Next("1e000000000000000000000000005"), Found(100000, ""));
}

TEST(NextNumber, AnExponentThatHasBegunMustHaveDigits) {
  for (const char* text : {"1e", "1E", "1e+", "1e-", "1ex", "1e+x", "1e 5", ".5e", "0e", "1e.5"}) {
    EXPECT_EQ(Next(text), "none") << text;
    EXPECT_EQ(NextFloat(text), "none") << text;
  }
}

TEST(NextNumber, ReadsHexadecimalNumbers) {
  EXPECT_EQ(Next("0x1p3"), Found(8, ""));
  EXPECT_EQ(Next("-0X1.8P1x"), Found(-3, "x"));
  EXPECT_EQ(Next("0xFf"), Found(255, ""));
  EXPECT_EQ(Next("0x.8"), Found(0.5, ""));
  EXPECT_EQ(Next("0x1p-2;"), Found(0.25, ";"));
  EXPECT_EQ(Next("00x1"), Found(0, "x1"));
  EXPECT_EQ(Next("0x"), "none");
  EXPECT_EQ(Next("0xg"), "none");
  EXPECT_EQ(Next("0x1p"), "none");
  EXPECT_EQ(Next("0x1p+"), "none");
  EXPECT_EQ(Next("0xp3"), "none");
  for (const char* text : {"0xinf", "0xnan", "-0xInfinity", "0x-5", "0x+5", "0x 5"}) {
    EXPECT_EQ(Next(text), "none") << text;
  }
  EXPECT_EQ(Next("0x0x5"), Found(0, "x5"));
}

TEST(NextNumber, ReadsInfinityAndWhatIsNoNumber) {
  EXPECT_EQ(Next("inf"), Found(kInfinity, ""));
  EXPECT_EQ(Next("  -INF;"), Found(-kInfinity, ";"));
  EXPECT_EQ(Next("+Infinity x"), Found(kInfinity, " x"));
  EXPECT_EQ(Next("infx"), Found(kInfinity, "x"));
  EXPECT_EQ(Next("nan 1"), "nan| 1");
  EXPECT_EQ(Next("NaNx"), "nan|x");
  EXPECT_EQ(Next("-nan"), "nan|");
  for (const char* text : {"i", "in", "n", "na", "infi", "infinit", "-infinit x", "ind"}) {
    EXPECT_EQ(Next(text), "none") << text;
  }
}

TEST(NextNumber, FindsNoneWhereThereIsNone) {
  for (const char* text : {"", " ", "x", "+", "-", "+-5", "--5", "- 5", ";", ",5", "e5", "$1"}) {
    EXPECT_EQ(Next(text), "none") << text;
    EXPECT_EQ(NextFloat(text), "none") << text;
  }
}

TEST(NextNumber, OutOfRangeIsInfinityOrZero) {
  EXPECT_EQ(Next("1e308"), Found(1e308, ""));
  EXPECT_EQ(Next("1e309x"), Found(kInfinity, "x"));
  EXPECT_EQ(Next("-1e999"), Found(-kInfinity, ""));
  EXPECT_EQ(Next("1e99999999999999999999;"), Found(kInfinity, ";"));
  EXPECT_EQ(Next("1e-999"), Found(0, ""));
  EXPECT_EQ(Next("-1e-99999999999999999999"), Found(-0.0, ""));
  EXPECT_EQ(Next("0e99999999999999999999"), Found(0, ""));
  EXPECT_EQ(Next("1" + std::string(400, '0')), Found(kInfinity, ""));
  EXPECT_EQ(NextFloat("3.4028235e38"), Found(0x1.fffffep127, ""));
  EXPECT_EQ(NextFloat("3.4028236e38"), Found(kInfinity, ""))
      << "beyond the rounding of the largest";
  EXPECT_EQ(NextFloat("1e39 "), Found(kInfinity, " "));
  EXPECT_EQ(NextFloat("-1e39"), Found(-kInfinity, ""));
  EXPECT_EQ(NextFloat("1e-60"), Found(0, ""));
}

TEST(NextNumber, KeepsTheSignOfZeroAndTheSmallestNumbers) {
  EXPECT_EQ(Next("-0.0"), Found(-0.0, ""));
  EXPECT_EQ(NextFloat("-0"), Found(-0.0, ""));
  EXPECT_EQ(Next("5e-324"), Found(0x1p-1074, ""));
  EXPECT_EQ(Next("2e-324"), Found(0, ""));
  EXPECT_EQ(Next("2.2250738585072011e-308"), Found(0x0.fffffffffffffp-1022, ""));
  EXPECT_EQ(NextFloat("1.4e-45"), Found(0x1p-149, ""));
  EXPECT_EQ(NextFloat("1e-40"), Found(0x1.16c2p-133, ""));
}

TEST(NextNumber, RoundsOnce) {
  // Just above the middle between 1 and the next float. Read as a double it is the middle itself,
  // which a second rounding would take down to 1.
  EXPECT_EQ(NextFloat("1.00000005960464477539062500000001"), Found(0x1.000002p0, ""));
  EXPECT_EQ(NextFloat("1.000000059604644775390625"), Found(1, ""));
  EXPECT_EQ(Next("1.00000005960464477539062500000001"), Found(0x1.000001p0, ""));
  EXPECT_EQ(Next("9007199254740993"), Found(9007199254740992.0, ""));
  EXPECT_EQ(Next("9007199254740993.00000000000000000001"), Found(9007199254740994.0, ""));
}

TEST(NextNumber, ReadsAllDigitsOfLongNumbers) {
  const std::string zeros(5000, '0');
  EXPECT_EQ(Next(zeros + "7" + "x"), Found(7, "x"));
  EXPECT_EQ(Next("0." + zeros + "25e5001;"), Found(2.5, ";"));
  EXPECT_EQ(Next("7." + zeros + "1"), Found(7, ""));
  EXPECT_EQ(Next("1" + zeros + "e-5000"), Found(1, ""));
}

TEST(NextNumber, ReadsNoFurtherThanTheText) {
  const std::string longer = "12345e5";
  EXPECT_EQ(Next(std::string_view(longer).substr(0, 2)), Found(12, ""));
  EXPECT_EQ(Next(std::string_view(longer).substr(0, 5)), Found(12345, ""));
  EXPECT_EQ(Next(std::string_view(longer).substr(0, 6)), "none");
  EXPECT_EQ(Next(std::string_view("-5", 1)), "none");
}

TEST(NextNumber, ReadsOneNumberAfterTheOther) {
  std::string_view text = " 1 2.5\n-3e0x";
  float number = 0;
  ASSERT_TRUE(NextNumber(text, number));
  EXPECT_EQ(number, 1.0f);
  ASSERT_TRUE(NextNumber(text, number));
  EXPECT_EQ(number, 2.5f);
  ASSERT_TRUE(NextNumber(text, number));
  EXPECT_EQ(number, -3.0f);
  EXPECT_EQ(text, "x");
  EXPECT_FALSE(NextNumber(text, number));
}

/// What sscanf finds, in the words of Next. Texts must be short.
template <class Float>
std::string Scanned(const std::string& text, const char* format) {
  const PointLocale point;
  Float number = 0;
  int end = 0;
  if (std::sscanf(text.c_str(), format, &number, &end) != 1) return "none";
  return Exact(number) + "|" + text.substr(static_cast<std::size_t>(end));
}

/// Whether the number at the front of a text stops within its exponent, where C libraries differ.
bool StopsInItsExponent(const std::string& text) {
  double number = 0;
  char* end = nullptr;
  {
    const PointLocale point;
    number = std::strtod(text.c_str(), &end);
  }
  static_cast<void>(number);
  return end != text.c_str() && (*end == 'e' || *end == 'E');
}

TEST(NextNumber, AgreesWithTheCLibrary) {
  std::mt19937 random(1);
  const std::string alphabet = "0123456789012345678901234567890...eE+-- ;";
  int found = 0;
  for (int i = 0; i < 60000; ++i) {
    std::string text;
    for (std::size_t left = 1 + random() % 14; left > 0; --left) {
      text += alphabet[random() % alphabet.size()];
    }
    if (StopsInItsExponent(text)) continue;
    const std::string expected = Scanned<double>(text, "%lf%n");
    ASSERT_EQ(Next(text), expected) << text;
    ASSERT_EQ(NextFloat(text), Scanned<float>(text, "%f%n")) << text;
    found += expected != "none";
  }
  EXPECT_GT(found, 20000);
}

TEST(NextNumber, GivesBackEveryFloatAndDouble) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double wide = 0;
    std::memcpy(&wide, &bits, sizeof wide);
    float narrow = 0;
    std::memcpy(&narrow, &bits, sizeof narrow);
    std::array<char, 64> text = {};
    {
      const PointLocale point;
      std::snprintf(text.data(), text.size(), "%.17g", wide);
    }
    ASSERT_EQ(Next(text.data()), Exact(wide) + "|");
    {
      const PointLocale point;
      std::snprintf(text.data(), text.size(), "%.9g", static_cast<double>(narrow));
    }
    ASSERT_EQ(NextFloat(text.data()), Exact(narrow) + "|");
  }
}

// The next hexadecimal number and the next integer.

TEST(NextHex, ReadsDigitsOfEitherCaseWithAndWithoutAPrefix) {
  EXPECT_EQ(Hex("1f"), "31|");
  EXPECT_EQ(Hex("0x1F,2"), "31|,2");
  EXPECT_EQ(Hex("0X1fg"), "31|g");
  EXPECT_EQ(Hex(" \t\n7x"), "7|x");
  EXPECT_EQ(Hex("+A"), "10|");
  EXPECT_EQ(Hex("0"), "0|");
  EXPECT_EQ(Hex("00000000000000000001"), "1|");
  EXPECT_EQ(Hex("FFFFFFFF"), "4294967295|");
  EXPECT_EQ(Hex("0x80000000"), "2147483648|");
  EXPECT_EQ(Hex("12.5"), "18|.5");
  EXPECT_EQ(Hex("0x1x2"), "1|x2");
}

TEST(NextHex, ANegativeNumberIsItsComplement) {
  EXPECT_EQ(Hex("-1"), "4294967295|");
  EXPECT_EQ(Hex("-0x10 "), "4294967280| ");
  EXPECT_EQ(Hex("-FFFFFFFF"), "1|");
  EXPECT_EQ(Hex("-0"), "0|");
}

TEST(NextHex, RefusesNumbersAboveThirtyTwoBits) {
  for (const char* text : {"100000000", "0x100000000", "-100000000", "FFFFFFFFF",
                           "FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFFF", "10000000000000000"}) {
    EXPECT_EQ(Hex(text), "none") << text;
  }
}

TEST(NextHex, FindsNoneWhereThereIsNone) {
  for (const char* text : {"", " ", "g", "-", "+", "+-1", "- 1", ",1", "x1"}) {
    EXPECT_EQ(Hex(text), "none") << text;
  }
}

TEST(NextHex, ReadsNoFurtherThanTheText) {
  const std::string longer = "1234";
  EXPECT_EQ(Hex(std::string_view(longer).substr(0, 2)), "18|");
}

TEST(NextInteger, ReadsUpToTheFirstCharacterBehindIt) {
  EXPECT_EQ(Integer("12,3"), "12|,3");
  EXPECT_EQ(Integer("  7x"), "7|x");
  EXPECT_EQ(Integer("+5"), "5|");
  EXPECT_EQ(Integer("-5-6"), "-5|-6");
  EXPECT_EQ(Integer("12.5"), "12|.5");
  EXPECT_EQ(Integer("0x10"), "0|x10");
  EXPECT_EQ(Integer("010"), "10|") << "no octal number";
  EXPECT_EQ(Integer("1e3"), "1|e3");
  EXPECT_EQ(Integer("00000000000000000001"), "1|");
  EXPECT_EQ(Integer("2147483647"), "2147483647|");
  EXPECT_EQ(Integer("-2147483648"), "-2147483648|");
}

TEST(NextInteger, RefusesNumbersThatDoNotFit) {
  for (const char* text :
       {"2147483648", "-2147483649", "4294967295", "4294967296", "9223372036854775807",
        "99999999999999999999", "-99999999999999999999"}) {
    EXPECT_EQ(Integer(text), "none") << text;
  }
}

TEST(NextInteger, FindsNoneWhereThereIsNone) {
  for (const char* text : {"", " ", "x", "-", "+", "+-1", "- 1", ".5",
                           "\xC2\xA0"
                           "1"}) {
    EXPECT_EQ(Integer(text), "none") << text;
  }
}

// Whole texts.

TEST(IntegerOf, StopsAtTheFirstCharacterThatIsNoDigit) {
  EXPECT_EQ(IntegerOf("12"), 12);
  EXPECT_EQ(IntegerOf(" \t\r\n12 13"), 12);
  EXPECT_EQ(IntegerOf("-12x"), -12);
  EXPECT_EQ(IntegerOf("+12"), 12);
  EXPECT_EQ(IntegerOf("4.9"), 4);
  EXPECT_EQ(IntegerOf("0x10"), 0);
  EXPECT_EQ(IntegerOf("1e3"), 1);
  EXPECT_EQ(IntegerOf("010"), 10);
  EXPECT_EQ(IntegerOf(std::string_view("123", 2)), 12);
  EXPECT_EQ(IntegerOf(std::string_view("1\0002", 3)), 1);
}

TEST(IntegerOf, IsZeroWithoutDigits) {
  for (const char* text : {"", " ", "x", "-", "+", "+-5", "- 5", ".5", "abc",
                           "\xC2\xA0"
                           "5"}) {
    EXPECT_EQ(IntegerOf(text), 0) << text;
  }
}

TEST(IntegerOf, KeepsTheBitsOfUnsignedNumbers) {
  EXPECT_EQ(IntegerOf("2147483647"), 2147483647);
  EXPECT_EQ(IntegerOf("2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(IntegerOf("4294967295"), -1);
  EXPECT_EQ(IntegerOf("  4294967294 "), -2);
}

TEST(IntegerOf, GivesTheNearestToLargerNumbers) {
  EXPECT_EQ(IntegerOf("4294967296"), 2147483647);
  EXPECT_EQ(IntegerOf("99999999999999999999999"), 2147483647);
  EXPECT_EQ(IntegerOf("18446744073709551615"), 2147483647);
  EXPECT_EQ(IntegerOf("-2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(IntegerOf("-2147483649"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(IntegerOf("-4294967295"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(IntegerOf("-99999999999999999999999"), std::numeric_limits<std::int32_t>::min());
  // With a sign a number is none of 32 bits without one.
  EXPECT_EQ(IntegerOf("+2147483648"), 2147483647);
  EXPECT_EQ(IntegerOf("+4294967295"), 2147483647);
}

TEST(IntegerOf, AgreesWithTheCLibrary) {
  std::mt19937 random(3);
  const std::string alphabet = "0123456789+- \tx.";
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (std::size_t left = random() % 10; left > 0; --left) {
      text += alphabet[random() % alphabet.size()];
    }
    ASSERT_EQ(IntegerOf(text), std::strtol(text.c_str(), nullptr, 10)) << text;
  }
}

TEST(NumberOf, IsTheNumberAtTheFront) {
  EXPECT_EQ(Exact(NumberOf("  7x")), Exact(7.0));
  EXPECT_EQ(Exact(NumberOf("-0.0")), Exact(-0.0));
  EXPECT_EQ(Exact(NumberOf("0x1p3")), Exact(8.0));
  EXPECT_EQ(Exact(NumberOf("1e308")), Exact(1e308));
  EXPECT_EQ(Exact(NumberOf("1e309")), Exact(kInfinity));
  EXPECT_EQ(Exact(NumberOf("5e-324")), Exact(0x1p-1074));
  EXPECT_EQ(Exact(NumberOf("-inf")), Exact(-kInfinity));
  EXPECT_EQ(Exact(NumberOf("nan")), "nan");
  EXPECT_EQ(Exact(NumberOf("1,5")), Exact(1.0));
  EXPECT_EQ(Exact(NumberOf(std::string_view("1.55", 3))), Exact(1.5));
}

TEST(NumberOf, TakesWhatIsCompleteOfANumber) {
  EXPECT_EQ(Exact(NumberOf("1e")), Exact(1.0));
  EXPECT_EQ(Exact(NumberOf("2.5e+")), Exact(2.5));
  EXPECT_EQ(Exact(NumberOf("1e5e")), Exact(100000.0));
  EXPECT_EQ(Exact(NumberOf("infinit")), Exact(kInfinity));
  EXPECT_EQ(Exact(NumberOf("0x")), Exact(0.0));
  EXPECT_EQ(Exact(NumberOf("0x1p")), Exact(1.0));
  EXPECT_EQ(Exact(NumberOf("-0xg")), Exact(-0.0));
  EXPECT_EQ(Exact(NumberOf("0xinf")), Exact(0.0));
  EXPECT_EQ(Exact(NumberOf("0xnan")), Exact(0.0));
  EXPECT_EQ(Exact(NumberOf("0x-5")), Exact(0.0));
}

TEST(NumberOf, IsZeroWithoutANumber) {
  for (const char* text :
       {"", " ", "x", "-", "+", ".", "-.", "e5", "+-5", "- 5", ",5", "in", "na"}) {
    EXPECT_EQ(Exact(NumberOf(text)), Exact(0.0)) << text;
  }
}

TEST(NumberOf, AgreesWithTheCLibrary) {
  std::mt19937 random(4);
  const std::string alphabet = "0123456789012345678901234567890...eE+-- xXaAfpPinfIN";
  for (int i = 0; i < 60000; ++i) {
    std::string text = random() % 4 == 0 ? "0x" : "";
    for (std::size_t left = 1 + random() % 14; left > 0; --left) {
      text += alphabet[random() % alphabet.size()];
    }
    const PointLocale point;
    ASSERT_EQ(Exact(NumberOf(text)), Exact(std::strtod(text.c_str(), nullptr))) << text;
  }
}

// Numbers as text.

TEST(IntegerText, IsPlainDecimal) {
  EXPECT_EQ(IntegerText(0), "0");
  EXPECT_EQ(IntegerText(-1), "-1");
  EXPECT_EQ(IntegerText(1234567), "1234567");
  EXPECT_EQ(IntegerText(std::numeric_limits<std::int32_t>::max()), "2147483647");
  EXPECT_EQ(IntegerText(std::numeric_limits<std::int32_t>::min()), "-2147483648");
}

TEST(AppendFixed, AppendsTheNumberWithItsDecimals) {
  std::string text = "x=";
  AppendFixed(text, 0.25, 6);
  text += ' ';
  AppendFixed(text, -12.5, 1);
  EXPECT_EQ(text, "x=0.250000 -12.5");
}

TEST(AppendFixed, WithoutDecimalsHasNoPoint) {
  EXPECT_EQ(Fixed(7, 0), "7");
  EXPECT_EQ(Fixed(-7.6, 0), "-8");
}

TEST(AppendFixed, RoundsTheExactNumberAndATieToTheEvenDigit) {
  EXPECT_EQ(Fixed(0.5, 0), "0");
  EXPECT_EQ(Fixed(1.5, 0), "2");
  EXPECT_EQ(Fixed(2.5, 0), "2");
  EXPECT_EQ(Fixed(0.125, 2), "0.12");
  EXPECT_EQ(Fixed(0.375, 2), "0.38");
  EXPECT_EQ(Fixed(1.005, 2), "1.00");  // a little less than 1.005
  EXPECT_EQ(Fixed(0.9999996, 6), "1.000000");
  EXPECT_EQ(Fixed(0.1, 20), "0.10000000000000000555");
}

TEST(AppendFixed, KeepsTheSignOfZero) {
  EXPECT_EQ(Fixed(-0.0, 6), "-0.000000");
  EXPECT_EQ(Fixed(-1e-9, 6), "-0.000000");
  EXPECT_EQ(Fixed(0.0, 2), "0.00");
  EXPECT_EQ(Fixed(5e-324, 3), "0.000");
}

TEST(AppendFixed, WritesLargeNumbersInFull) {
  EXPECT_EQ(Fixed(1e22, 1), "10000000000000000000000.0");
  EXPECT_EQ(Fixed(0x1.fffffep127, 6), "340282346638528859811704183484516925440.000000");
  const std::string largest = Fixed(std::numeric_limits<double>::max(), 6);
  EXPECT_EQ(largest.size(), 316u);
  EXPECT_EQ(largest.substr(0, 20), "17976931348623157081");
  EXPECT_EQ(largest.substr(296), "6184124858368.000000");
}

TEST(AppendFixed, NamesInfinityAndWhatIsNoNumber) {
  EXPECT_EQ(Fixed(kInfinity, 6), "inf");
  EXPECT_EQ(Fixed(-kInfinity, 6), "-inf");
  EXPECT_EQ(Fixed(std::numeric_limits<double>::quiet_NaN(), 6), "nan");
}

TEST(AppendFixed, AgreesWithTheCLibrary) {
  std::mt19937_64 random(5);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    if (std::isnan(number)) continue;
    const int decimals = static_cast<int>(random() % 18);
    ASSERT_EQ(Fixed(number, decimals), Printed(number, decimals));
    const double ordinary = static_cast<double>(static_cast<std::int64_t>(bits)) * 1e-15;
    ASSERT_EQ(Fixed(ordinary, decimals), Printed(ordinary, decimals));
    const double tie = static_cast<double>(static_cast<std::int32_t>(bits)) / 64;
    ASSERT_EQ(Fixed(tie, decimals), Printed(tie, decimals));
  }
}

// The fewest digits, and whole texts.

/// A number of these bits, of any class.
template <class Float, class Bits>
Float OfBits(Bits bits) {
  static_assert(sizeof(Float) == sizeof(Bits));
  Float number = 0;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

/// What a text that is a number as a whole stands for; "none" when it is none.
template <class Float>
std::string Whole(std::string_view text) {
  Float number = -77;
  return WholeNumber(text, number) ? Exact(number) : "none";
}

/// The length of the shortest of the C library's "%.*e" that reads back to the same number.
template <class Float>
std::size_t ShortestScientific(Float number) {
  const PointLocale point;
  for (int decimals = 0;; ++decimals) {
    std::array<char, 64> text = {};
    std::snprintf(text.data(), text.size(), "%.*e", decimals, static_cast<double>(number));
    const Float back = sizeof(Float) == sizeof(float)
                           ? static_cast<Float>(std::strtof(text.data(), nullptr))
                           : static_cast<Float>(std::strtod(text.data(), nullptr));
    if (std::memcmp(&back, &number, sizeof number) == 0) return std::strlen(text.data());
  }
}

TEST(ShortestText, HasNoDigitTooMany) {
  EXPECT_EQ(ShortestText(0.0), "0");
  EXPECT_EQ(ShortestText(1.0), "1");
  EXPECT_EQ(ShortestText(-12.5), "-12.5");
  EXPECT_EQ(ShortestText(0.1), "0.1");
  EXPECT_EQ(ShortestText(0.1f), "0.1");
  EXPECT_EQ(ShortestText(static_cast<double>(0.1f)), "0.10000000149011612");
  EXPECT_EQ(ShortestText(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(ShortestText(1.0 / 3), "0.3333333333333333");
  EXPECT_EQ(ShortestText(1.0f / 3), "0.33333334");
  EXPECT_EQ(ShortestText(16777216.0f), "16777216");
  EXPECT_EQ(ShortestText(5e-324), "5e-324");
  EXPECT_EQ(ShortestText(0x1p-149f), "1e-45");
  EXPECT_EQ(ShortestText(std::numeric_limits<double>::max()), "1.7976931348623157e+308");
  EXPECT_EQ(ShortestText(std::numeric_limits<float>::max()), "3.4028235e+38");
}

TEST(ShortestText, KeepsTheSignOfZeroAndNamesWhatIsNoNumber) {
  EXPECT_EQ(ShortestText(-0.0), "-0");
  EXPECT_EQ(ShortestText(-0.0f), "-0");
  EXPECT_EQ(ShortestText(kInfinity), "inf");
  EXPECT_EQ(ShortestText(-kInfinity), "-inf");
  EXPECT_EQ(ShortestText(std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(ShortestText(std::numeric_limits<float>::infinity()), "inf");
  EXPECT_EQ(ShortestText(std::numeric_limits<float>::quiet_NaN()), "nan");
}

template <class Float, class Bits>
void ExpectShortestAndExact(Bits bits) {
  const Float number = OfBits<Float>(bits);
  if (!std::isfinite(number)) return;
  const std::string text = ShortestText(number);
  Float back = 77;
  ASSERT_TRUE(WholeNumber(text, back)) << text;
  ASSERT_EQ(std::memcmp(&back, &number, sizeof number), 0) << text;
  ASSERT_LE(text.size(), ShortestScientific(number)) << text;
}

TEST(ShortestText, GivesBackNumbersOfEveryExponent) {
  std::mt19937_64 random(7);
  for (std::uint32_t exponent = 0; exponent < 255; ++exponent) {
    for (const std::uint32_t sign : {0u, 1u}) {
      const std::uint32_t high = sign << 31 | exponent << 23;
      const auto any = static_cast<std::uint32_t>(random()) & 0x7FFFFFu;
      for (const std::uint32_t low : {0u, 1u, 0x400000u, 0x7FFFFFu, any}) {
        ExpectShortestAndExact<float>(high | low);
      }
    }
  }
  for (std::uint64_t exponent = 0; exponent < 2047; ++exponent) {
    const std::uint64_t high = (random() & 1) << 63 | exponent << 52;
    const std::uint64_t all = (std::uint64_t{1} << 52) - 1;
    for (const std::uint64_t low : {std::uint64_t{0}, std::uint64_t{1}, all, random() & all}) {
      ExpectShortestAndExact<double>(high | low);
    }
  }
}

TEST(WholeNumber, IsTheNumberThatTheTextIs) {
  EXPECT_EQ(Whole<double>("1.5"), Exact(1.5));
  EXPECT_EQ(Whole<double>("-0"), Exact(-0.0));
  EXPECT_EQ(Whole<double>("-0.0e7"), Exact(-0.0));
  EXPECT_EQ(Whole<double>("1E2"), Exact(100.0));
  EXPECT_EQ(Whole<double>("1e+02"), Exact(100.0));
  EXPECT_EQ(Whole<float>("0.1"), Exact(0.1f));
  EXPECT_EQ(Whole<float>("16777217"), Exact(16777216.0f));
  EXPECT_EQ(Whole<double>(std::string_view("1.55", 3)), Exact(1.5));
  EXPECT_EQ(Whole<double>("0." + std::string(5000, '0') + "1e5001"), Exact(1.0));
}

TEST(WholeNumber, RefusesTextsThatAreNoNumberAsAWhole) {
  for (const char* text : {"", " ", "x", "-", "+", ".", "e5", "1 ", "1x", "1,5", "1.5.5", "1e",
                           "1e+", "1-2", "- 1", "--1", "1_0", "1 0"}) {
    EXPECT_EQ(Whole<double>(text), "none") << text;
    EXPECT_EQ(Whole<float>(text), "none") << text;
  }
  EXPECT_EQ(Whole<double>(std::string_view("1\0", 2)), "none");
}

TEST(WholeNumber, RefusesWhatIsTooLargeOrTooSmall) {
  EXPECT_EQ(Whole<double>("1.7976931348623157e308"), Exact(0x1.fffffffffffffp1023));
  EXPECT_EQ(Whole<double>("1.7976931348623159e308"), "none");
  EXPECT_EQ(Whole<double>("-1e309"), "none");
  EXPECT_EQ(Whole<double>("1e99999999999999999999"), "none");
  EXPECT_EQ(Whole<double>("1" + std::string(400, '0')), "none");
  EXPECT_EQ(Whole<double>("5e-324"), Exact(0x1p-1074));
  EXPECT_EQ(Whole<double>("2e-324"), "none");
  EXPECT_EQ(Whole<double>("1e-99999999999999999999"), "none");
  EXPECT_EQ(Whole<float>("3.4028235e38"), Exact(0x1.fffffep127));
  EXPECT_EQ(Whole<float>("3.4028236e38"), "none");
  EXPECT_EQ(Whole<float>("1e39"), "none");
  EXPECT_EQ(Whole<float>("1e-45"), Exact(0x1p-149));
  EXPECT_EQ(Whole<float>("1e-46"), "none");
}

TEST(WholeNumber, ZeroIsNeverTooSmall) {
  EXPECT_EQ(Whole<double>("0e-999"), Exact(0.0));
  EXPECT_EQ(Whole<double>("-0e999"), Exact(-0.0));
  EXPECT_EQ(Whole<float>("0.000e-99999999999999999999"), Exact(0.0));
}

TEST(WholeNumber, RoundsOnce) {
  EXPECT_EQ(Whole<float>("1.00000005960464477539062500000001"), Exact(0x1.000002p0));
  EXPECT_EQ(Whole<float>("1.000000059604644775390625"), Exact(1.0));
  EXPECT_EQ(Whole<double>("9007199254740993"), Exact(9007199254740992.0));
}

// The locale.

TEST(NumberText, HasAPointWhateverTheLocaleAndLeavesThat) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.works()) << "the build makes the locale from Debian's package locales";
  EXPECT_EQ(Next("1.5 x"), Found(1.5, " x"));
  EXPECT_EQ(Next("1,5 x"), Found(1, ",5 x"));
  EXPECT_EQ(NextFloat("0.25;"), Found(0.25, ";"));
  EXPECT_EQ(Exact(NumberOf("2.75")), Exact(2.75));
  EXPECT_EQ(Fixed(1234567.875, 2), "1234567.88");
  EXPECT_EQ(ShortestText(0.25), "0.25");
  EXPECT_EQ(Whole<double>("0.25"), Exact(0.25));
  EXPECT_EQ(Whole<double>("0,25"), "none");
  EXPECT_EQ(IntegerText(1234567), "1234567");
  EXPECT_EQ(Integer("1.000.000"), "1|.000.000");
  EXPECT_EQ(IntegerOf("1.000"), 1);
  EXPECT_EQ(Hex("1.5"), "1|.5");
  std::array<char, 32> buffer = {};
  std::snprintf(buffer.data(), buffer.size(), "%.2f", 1.5);
  EXPECT_STREQ(buffer.data(), "1,50") << "the host's own numbers";
}

TEST(NumberText, IsTheSameInManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  std::vector<int> wrong(4);
  for (std::size_t t = 0; t < wrong.size(); ++t) {
    threads.emplace_back([t, &wrong] {
      std::optional<CommaLocale> comma;
      for (int i = 0; i < 2000; ++i) {
        if (i % 40 == 0) comma.emplace();
        if (i % 40 == 20) comma.reset();
        const double number = i + static_cast<double>(t) / 8;
        std::string text;
        AppendFixed(text, number, 6);
        if (text.find('.') == std::string::npos || NumberOf(text) != number) ++wrong[t];
        if (!comma) continue;
        std::array<char, 32> buffer = {};
        std::snprintf(buffer.data(), buffer.size(), "%.1f", 0.5);
        if (std::strcmp(buffer.data(), "0,5") != 0) ++wrong[t];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4));
}

}  // namespace
