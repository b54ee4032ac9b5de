#include "handler/TargetParser.h"

#include <locale.h>

#include <array>
#include <atomic>
#include <cctype>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string_view>
#include <thread>

#include "platform/Shortage.h"
#include "support/CommaLocale.h"
#include "support/ImageBuilder.h"

namespace {

using vkcl::DataFormatOfWord;
using vkcl::ParseTarget;
using vkcl::TargetRule;
using vkcl::TargetRuleText;
using vkcl::testing::CommaLocale;
using vkcl::testing::Sig;

using Row = std::vector<double>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

/// Gives this thread the "C" locale while it lives, so that the models below read a point whatever
/// locale the test runs under.
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

/// A locale of the whole process while it lives.
class ProcessLocale {
 public:
  explicit ProcessLocale(const char* name) : before_(std::setlocale(LC_ALL, nullptr)) {
    works_ = std::setlocale(LC_ALL, name) != nullptr;
  }
  ~ProcessLocale() { std::setlocale(LC_ALL, before_.c_str()); }
  ProcessLocale(const ProcessLocale&) = delete;
  ProcessLocale& operator=(const ProcessLocale&) = delete;

  bool works() const { return works_; }

 private:
  std::string before_;
  bool works_ = false;
};

// The models: what a text means, worked out slowly and without any of the library's code.

bool IsBlank(char c) { return std::strchr(" \t\n\v\f\r", c) != nullptr && c != '\0'; }

/// One number in single precision.
double SingleOf(const std::string& token) {
  const PointLocale point;
  return static_cast<double>(std::strtof(token.c_str(), nullptr));
}

/// One conversion of "%f" by the rules of ISO C for scanf: the longest text that could begin a
/// number is taken, and it is a failure when that text is no number yet ("1e", "0x", "infi").
std::optional<double> TakeNumber(const std::string& line, std::size_t& at) {
  const auto lower = [&line](std::size_t i) {
    return i < line.size() ? static_cast<char>(std::tolower(static_cast<unsigned char>(line[i])))
                           : '\0';
  };
  const auto isDigit = [&](std::size_t i, bool hex) {
    const char c = lower(i);
    return (c >= '0' && c <= '9') || (hex && c >= 'a' && c <= 'f');
  };
  const auto isSign = [&](std::size_t i) { return lower(i) == '+' || lower(i) == '-'; };

  while (at < line.size() && IsBlank(line[at])) ++at;
  const std::size_t first = at;
  if (isSign(at)) ++at;
  bool whole = false;
  if (lower(at) == 'i' || lower(at) == 'n') {
    const std::string word = lower(at) == 'i' ? "infinity" : "nan";
    std::size_t same = 0;
    while (same < word.size() && lower(at + same) == word[same]) ++same;
    at += same;
    whole = same == word.size() || (word == "infinity" && same == 3);
  } else {
    const bool hex = lower(at) == '0' && lower(at + 1) == 'x';
    if (hex) at += 2;
    std::size_t digits = 0;
    for (; isDigit(at, hex); ++at) ++digits;
    if (lower(at) == '.') ++at;
    for (; isDigit(at, hex); ++at) ++digits;
    whole = digits > 0;
    if (whole && lower(at) == (hex ? 'p' : 'e')) {
      ++at;
      if (isSign(at)) ++at;
      whole = isDigit(at, false);
      while (isDigit(at, false)) ++at;
    }
  }
  if (!whole) return std::nullopt;
  return SingleOf(line.substr(first, at - first));
}

Row NumbersOf(const std::string& line) {
  Row numbers;
  std::size_t at = 0;
  while (const std::optional<double> number = TakeNumber(line, at)) numbers.push_back(*number);
  return numbers;
}

/// The numbers of a line as the format reads them that grows by a skip for each number read.
Row NumbersByGrowingFormat(const std::string& line) {
  const PointLocale point;
  Row numbers;
  std::string format = "%f";
  for (float number = 0; std::sscanf(line.c_str(), format.c_str(), &number) == 1;) {
    numbers.push_back(static_cast<double>(number));
    format.insert(0, "%*f ");
  }
  return numbers;
}

struct Meaning {
  TargetRule rule = TargetRule::Accepted;
  std::uint32_t deviceFormat = 0;
  int deviceColors = 0;
  std::uint32_t measuredFormat = 0;
  int measuredColors = 0;
  int samples = 0;
  Row device;
  Row measured;
};

std::uint32_t FormatOfDevice(std::string word) {
  static const std::vector<std::pair<std::string, std::uint32_t>> formats = {
      {"CMYK", Sig("CMYK")},   {"5CLR", Sig("5CLR")},   {"PC5", Sig("5CLR")},
      {"CMYKOG", Sig("6CLR")}, {"CMYKRB", Sig("6CLR")}, {"6CLR", Sig("6CLR")},
      {"7CLR", Sig("7CLR")},   {"CMY", Sig("CMY ")},    {"RGB", Sig("RGB ")},
      {"GRAY", Sig("1CLR")},
  };
  for (char& c : word) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  for (const auto& [name, format] : formats) {
    if (name == word) return format;
  }
  return 0;
}

std::string WordAt(const std::string& text, std::size_t at) {
  while (at < text.size() && IsBlank(text[at])) ++at;
  std::size_t end = at;
  while (end < text.size() && !IsBlank(text[end])) ++end;
  return text.substr(at, end - at);
}

Meaning FieldsOf(const std::string& text, std::size_t first, std::size_t end) {
  Meaning meaning;
  const std::string word = WordAt(text, first);
  meaning.deviceFormat = FormatOfDevice(word.substr(0, word.find('_')));
  if (meaning.deviceFormat == 0) {
    meaning.rule = TargetRule::UnknownDeviceFormat;
    return meaning;
  }
  int count = 0;
  for (std::size_t at = first; at < end;) {
    const std::string field = WordAt(text, at);
    const bool xyz = field.find("XYZ") != std::string::npos;
    const bool lab = field.find("LAB") != std::string::npos;
    if (xyz || lab || field.find("R_380") != std::string::npos) {
      meaning.deviceColors = count;
      meaning.measuredFormat = xyz ? Sig("XYZ ") : lab ? Sig("Lab ") : Sig("refl");
      meaning.measuredColors = xyz || lab ? 3 : 36;
      return meaning;
    }
    ++count;
    at += field.size() + 1;
  }
  meaning.rule = TargetRule::NoMeasurement;
  return meaning;
}

void ReadLines(const std::string& text, std::size_t at, Meaning& meaning) {
  const int columns = meaning.deviceColors + meaning.measuredColors;
  for (int sample = 0; sample < meaning.samples; ++sample) {
    const std::size_t feed = text.find('\n', at);
    Row numbers = NumbersOf(text.substr(at, feed - at));
    numbers.resize(static_cast<std::size_t>(columns), 0.0);
    const auto split = numbers.begin() + meaning.deviceColors;
    meaning.device.insert(meaning.device.end(), numbers.begin(), split);
    meaning.measured.insert(meaning.measured.end(), split, numbers.end());
    at = feed + 1;
  }
}

/// What a whole text means. A text ends at its first zero byte.
Meaning MeaningOf(std::string text) {
  constexpr std::size_t none = std::string::npos;
  text.resize(std::min(text.size(), text.find('\0')));
  Meaning meaning;
  const auto refused = [&meaning](TargetRule rule) {
    meaning.rule = rule;
    return meaning;
  };

  const std::size_t format = text.find("BEGIN_DATA_FORMAT");
  if (format == none) return refused(TargetRule::NoFormat);
  const std::size_t formatEnd = text.find("END_DATA_FORMAT");
  if (formatEnd == none || formatEnd < format) return refused(TargetRule::FormatNotClosed);
  meaning = FieldsOf(text, format + 18, formatEnd);
  if (meaning.rule != TargetRule::Accepted) return meaning;

  const std::string rest = formatEnd + 16 <= text.size() ? text.substr(formatEnd + 16) : "";
  const std::size_t data = rest.find("BEGIN_DATA");
  if (data == none) return refused(TargetRule::NoData);
  const std::size_t dataEnd = rest.find("END_DATA");
  if (dataEnd == none || dataEnd < data) return refused(TargetRule::DataNotClosed);

  int lines = 0;
  for (std::size_t at = data + 11; at - (data + 11) < dataEnd; ++lines) {
    const std::size_t feed = rest.find('\n', at);
    if (feed == none) break;
    at = feed + 1;
  }
  if (lines == 0) return refused(TargetRule::NoSamples);
  meaning.samples = lines - 1;
  ReadLines(rest, data + 11, meaning);
  return meaning;
}

// What the parser made of a text.

Row ValuesOf(const ProfileDataList& list) {
  const auto count =
      static_cast<std::size_t>(list.NumOfSamples) * static_cast<std::size_t>(list.NumOfColors);
  return list.DataList != nullptr ? Row(list.DataList, list.DataList + count) : Row();
}

bool SameNumber(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b && std::signbit(a) == std::signbit(b);
}

::testing::AssertionResult SameValues(const Row& actual, const Row& expected) {
  if (actual.size() != expected.size()) {
    return ::testing::AssertionFailure()
           << actual.size() << " values instead of " << expected.size();
  }
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (SameNumber(actual[i], expected[i])) continue;
    return ::testing::AssertionFailure()
           << "value " << i << " is " << actual[i] << " instead of " << expected[i];
  }
  return ::testing::AssertionSuccess();
}

struct Target {
  explicit Target(std::string_view text) : rule(ParseTarget(text, device, measured)) {}

  Row DeviceValues() const { return ValuesOf(device); }
  Row MeasuredValues() const { return ValuesOf(measured); }
  /// Device and measured values of one sample.
  Row Sample(int sample) const {
    Row row;
    for (const ProfileDataList* list : {&device, &measured}) {
      if (list->DataList == nullptr) continue;
      const double* from = list->DataList + std::ptrdiff_t{sample} * list->NumOfColors;
      row.insert(row.end(), from, from + list->NumOfColors);
    }
    return row;
  }

  ProfileDataList device;
  ProfileDataList measured;
  TargetRule rule;
};

::testing::AssertionResult Means(std::string_view text, const Meaning& expected) {
  const Target target(text);
  const auto differ = [](const char* what) { return ::testing::AssertionFailure() << what; };
  if (target.rule != expected.rule) {
    return differ("rule ") << TargetRuleText(target.rule) << " instead of "
                           << TargetRuleText(expected.rule);
  }
  if (target.device.DataFormat != expected.deviceFormat) return differ("device format");
  if (target.device.NumOfColors != expected.deviceColors) {
    return differ("device fields ")
           << target.device.NumOfColors << " instead of " << expected.deviceColors;
  }
  if (target.measured.DataFormat != expected.measuredFormat) return differ("measured format");
  if (target.measured.NumOfColors != expected.measuredColors) return differ("measured fields");
  if (target.device.NumOfSamples != expected.samples ||
      target.measured.NumOfSamples != expected.samples) {
    return differ("samples ") << target.device.NumOfSamples << " and "
                              << target.measured.NumOfSamples << " instead of " << expected.samples;
  }
  if (target.device.Measured != 0) return differ("measured samples of the device list");
  if (target.measured.Measured != expected.samples) return differ("measured samples");
  if (target.device.ColorMode != 0 || target.measured.ColorMode != 0) return differ("mode");
  const auto device = SameValues(target.DeviceValues(), expected.device);
  if (!device) return differ("device ") << device.message();
  const auto measured = SameValues(target.MeasuredValues(), expected.measured);
  if (!measured) return differ("measured ") << measured.message();
  return ::testing::AssertionSuccess();
}

// Texts, piece by piece.

/// A small text with two samples; a test changes the piece that it is about.
struct Pieces {
  std::string before = "CGATS.17\n";
  std::string begin = "BEGIN_DATA_FORMAT";
  std::string fields = "\nRGB_R RGB_G RGB_B LAB_L LAB_A LAB_B\n";
  std::string end = "END_DATA_FORMAT";
  std::string between = "\n";
  std::string beginData = "BEGIN_DATA";
  std::string afterBegin = "\n";
  std::string lines = "10 20 30 40 50 60\n11 21 31 41 51 61\n";
  std::string endData = "END_DATA";
  std::string tail = "\n";

  std::string Text() const {
    return before + begin + fields + end + between + beginData + afterBegin + lines + endData +
           tail;
  }
};

const Row kFirst = {10, 20, 30, 40, 50, 60};
const Row kSecond = {11, 21, 31, 41, 51, 61};
const Row kZeros(6, 0.0);

void ExpectSamples(const Pieces& pieces, const std::vector<Row>& expected) {
  const Target target(pieces.Text());
  ASSERT_EQ(target.rule, TargetRule::Accepted) << TargetRuleText(target.rule);
  ASSERT_EQ(target.device.NumOfSamples, static_cast<int>(expected.size()));
  ASSERT_EQ(target.measured.NumOfSamples, static_cast<int>(expected.size()));
  EXPECT_EQ(target.measured.Measured, static_cast<int>(expected.size()));
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_TRUE(SameValues(target.Sample(static_cast<int>(i)), expected[i])) << "sample " << i;
  }
}

/// The seven values that one line of a CMYK and Lab text gives.
Row ValuesOfLine(const std::string& line) {
  const Target target(
      Pieces{.fields = "\nCMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B\n", .lines = line + "\n"}
          .Text());
  EXPECT_EQ(target.rule, TargetRule::Accepted) << line;
  EXPECT_EQ(target.device.NumOfSamples, 1) << line;
  return target.rule == TargetRule::Accepted ? target.Sample(0) : Row();
}

void ExpectLine(const std::string& line, Row expected) {
  expected.resize(7, 0.0);
  EXPECT_TRUE(SameValues(ValuesOfLine(line), expected)) << "line: " << line;
}

// Texts as measuring tools write them (CGATS.17): head, fields, data, every line closed by a feed.

struct Space {
  const char* fields;
  std::uint32_t format;
  int colors;
};

constexpr Space kDeviceSpaces[] = {
    {"CMYK_C CMYK_M CMYK_Y CMYK_K", Sig("CMYK"), 4},
    {"RGB_R RGB_G RGB_B", Sig("RGB "), 3},
    {"CMY_C CMY_M CMY_Y", Sig("CMY "), 3},
    {"GRAY_K", Sig("1CLR"), 1},
    {"PC5_1 PC5_2 PC5_3 PC5_4 PC5_5", Sig("5CLR"), 5},
    {"5CLR_1 5CLR_2 5CLR_3 5CLR_4 5CLR_5", Sig("5CLR"), 5},
    {"CMYKOG_C CMYKOG_M CMYKOG_Y CMYKOG_K CMYKOG_O CMYKOG_G", Sig("6CLR"), 6},
    {"CMYKRB_C CMYKRB_M CMYKRB_Y CMYKRB_K CMYKRB_R CMYKRB_B", Sig("6CLR"), 6},
    {"6CLR_1 6CLR_2 6CLR_3 6CLR_4 6CLR_5 6CLR_6", Sig("6CLR"), 6},
    {"7CLR_1 7CLR_2 7CLR_3 7CLR_4 7CLR_5 7CLR_6 7CLR_7", Sig("7CLR"), 7},
};

constexpr Space kMeasuredSpaces[] = {
    {"LAB_L LAB_A LAB_B", Sig("Lab "), 3},
    {"XYZ_X XYZ_Y XYZ_Z", Sig("XYZ "), 3},
    {"R_380 R_390 R_400 R_410 R_420 R_430 R_440 R_450 R_460 R_470 R_480 R_490 R_500 R_510 R_520 "
     "R_530 R_540 R_550 R_560 R_570 R_580 R_590 R_600 R_610 R_620 R_630 R_640 R_650 R_660 R_670 "
     "R_680 R_690 R_700 R_710 R_720 R_730",
     Sig("refl"), 36},
};

struct Style {
  const char* feed = "\n";
  char separator = ' ';
};

/// A number as an instrument prints it, with a point: "57.03", "-12.40", "0.0716".
std::string TokenOf(const Space& space, std::mt19937& random) {
  const auto fraction = [](unsigned value, unsigned digits) {
    std::string text = std::to_string(value);
    while (text.size() < digits) text.insert(0, 1, '0');
    return "." + text;
  };
  const unsigned any = static_cast<unsigned>(random());
  switch (space.format) {
    case Sig("refl"): return std::to_string(any % 2) + fraction(any / 2 % 10000, 4);
    case Sig("RGB "): return std::to_string(any % 256);
    case Sig("Lab "):
      return (any % 2 != 0 ? "-" : "") + std::to_string(any / 2 % 101) +
             fraction(any / 202 % 100, 2);
    default: return std::to_string(any % 101) + fraction(any / 101 % 1000, 3);
  }
}

struct Made {
  std::string text;
  Meaning meaning;
};

Made MakeTarget(const Space& device, const Space& measured, int samples, const Style& style = {}) {
  std::mt19937 random(static_cast<unsigned>(samples) * 131u + device.format + measured.format);
  const std::string feed = style.feed;
  Made made;
  made.meaning.deviceFormat = device.format;
  made.meaning.deviceColors = device.colors;
  made.meaning.measuredFormat = measured.format;
  made.meaning.measuredColors = measured.colors;
  made.meaning.samples = samples;

  std::string fields = std::string(device.fields) + " " + measured.fields;
  for (char& c : fields) c = c == ' ' ? style.separator : c;
  made.text = "CGATS.17" + feed + feed + "ORIGINATOR\t\"Chart reader\"" + feed +
              "INSTRUMENTATION\t\"Spectrophotometer 45/0, 2 degrees, D50\"" + feed +
              "NUMBER_OF_FIELDS\t" + std::to_string(device.colors + measured.colors) + feed +
              "BEGIN_DATA_FORMAT" + feed + fields + feed + "END_DATA_FORMAT" + feed + feed +
              "NUMBER_OF_SETS\t" + std::to_string(samples) + feed + "BEGIN_DATA" + feed;
  const PointLocale point;
  for (int sample = 0; sample < samples; ++sample) {
    for (const Space* space : {&device, &measured}) {
      Row& values = space == &device ? made.meaning.device : made.meaning.measured;
      for (int color = 0; color < space->colors; ++color) {
        const std::string token = TokenOf(*space, random);
        values.push_back(static_cast<double>(std::strtof(token.c_str(), nullptr)));
        made.text += token;
        made.text += style.separator;
      }
    }
    made.text.pop_back();
    made.text += feed;
  }
  made.text += "END_DATA" + feed;
  return made;
}

std::string NameOf(const Space& device, const Space& measured) {
  return std::string(device.fields) + " with " + std::string(measured.fields).substr(0, 5);
}

void ExpectEveryPair(int samples, const Style& style = {}) {
  for (const Space& device : kDeviceSpaces) {
    for (const Space& measured : kMeasuredSpaces) {
      const Made made = MakeTarget(device, measured, samples, style);
      EXPECT_TRUE(Means(made.text, made.meaning)) << NameOf(device, measured);
    }
  }
}

const Space& kCmyk = kDeviceSpaces[0];
const Space& kRgb = kDeviceSpaces[1];
const Space& k7Clr = kDeviceSpaces[9];
const Space& kLab = kMeasuredSpaces[0];
const Space& kXyz = kMeasuredSpaces[1];
const Space& kSpectrum = kMeasuredSpaces[2];

// Words and rules.

TEST(TargetFormatWord, HasTheSignatureOfItsColourSpace) {
  EXPECT_EQ(DataFormatOfWord("CMYK"), 0x434D594Bu);
  EXPECT_EQ(DataFormatOfWord("5CLR"), 0x35434C52u);
  EXPECT_EQ(DataFormatOfWord("PC5"), 0x35434C52u);
  EXPECT_EQ(DataFormatOfWord("CMYKOG"), 0x36434C52u);
  EXPECT_EQ(DataFormatOfWord("CMYKRB"), 0x36434C52u);
  EXPECT_EQ(DataFormatOfWord("6CLR"), 0x36434C52u);
  EXPECT_EQ(DataFormatOfWord("7CLR"), 0x37434C52u);
  EXPECT_EQ(DataFormatOfWord("CMY"), 0x434D5920u);
  EXPECT_EQ(DataFormatOfWord("RGB"), 0x52474220u);
}

TEST(TargetFormatWord, GrayIsOneColourAndNotTheGreySignature) {
  EXPECT_EQ(DataFormatOfWord("GRAY"), 0x31434C52u);
}

TEST(TargetFormatWord, IsComparedWithoutRegardToCase) {
  for (const char* word : {"cmyk", "Cmyk", "cMyK", "CMYk"}) {
    EXPECT_EQ(DataFormatOfWord(word), 0x434D594Bu) << word;
  }
  EXPECT_EQ(DataFormatOfWord("pc5"), 0x35434C52u);
  EXPECT_EQ(DataFormatOfWord("cmykOg"), 0x36434C52u);
  EXPECT_EQ(DataFormatOfWord("7clr"), 0x37434C52u);
  EXPECT_EQ(DataFormatOfWord("rGb"), 0x52474220u);
  EXPECT_EQ(DataFormatOfWord("gray"), 0x31434C52u);
}

TEST(TargetFormatWord, IsUnknownUnlessItStandsInTheTableWhole) {
  for (const char* word : {"",      "LAB", "XYZ",  "SAMPLE", "1CLR",   "2CLR",  "3CLR",    "4CLR",
                           "8CLR",  "PC4", "PC6",  "PC7",    "GREY",   "CMYKO", "CMYKOGV", "CMYK ",
                           " CMYK", "CM",  "RGBA", "R",      "CMYKGO", "CMYKBR"}) {
    EXPECT_EQ(DataFormatOfWord(word), 0u) << word;
  }
  EXPECT_EQ(DataFormatOfWord(std::string_view("CMYK\0", 5)), 0u);
  EXPECT_EQ(DataFormatOfWord(std::string_view("CMYKOG", 4)), 0x434D594Bu)
      << "the view's end counts";
}

TEST(TargetRuleText, IsThereForEveryRuleAndSaysSomethingElseForEach) {
  std::set<std::string> texts;
  for (const TargetRule rule :
       {TargetRule::Accepted, TargetRule::NoFormat, TargetRule::FormatNotClosed,
        TargetRule::UnknownDeviceFormat, TargetRule::NoMeasurement, TargetRule::NoData,
        TargetRule::DataNotClosed, TargetRule::NoSamples, TargetRule::TooLarge}) {
    const char* text = TargetRuleText(rule);
    ASSERT_NE(text, nullptr);
    EXPECT_STRNE(text, "");
    EXPECT_TRUE(texts.insert(text).second) << text;
  }
}

// Whole texts.

TEST(RealTarget, OfTwentySamplesGivesEveryValue) { ExpectEveryPair(20); }

TEST(RealTarget, OfAHundredSamplesGivesEveryValue) { ExpectEveryPair(100); }

TEST(RealTarget, OfTenThousandSamplesGivesEveryValue) {
  for (const auto& [device, measured] :
       {std::pair(kCmyk, kLab), std::pair(kRgb, kXyz), std::pair(k7Clr, kSpectrum)}) {
    const Made made = MakeTarget(device, measured, 10000);
    EXPECT_TRUE(Means(made.text, made.meaning)) << NameOf(device, measured);
  }
}

TEST(RealTarget, MayHaveTabsBetweenFieldsAndNumbers) {
  ExpectEveryPair(20, {.feed = "\n", .separator = '\t'});
}

TEST(RealTarget, OfAHundredLinesAndAClosedEndHasAHundredSamples) {
  std::string text =
      "BEGIN_DATA_FORMAT\nCMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\n"
      "BEGIN_DATA\n";
  for (int i = 1; i <= 100; ++i) text += std::to_string(i) + " 2 3 4 5 6 7\n";
  text += "END_DATA\n";
  const Target target(text);
  EXPECT_EQ(target.rule, TargetRule::Accepted);
  EXPECT_EQ(target.device.DataFormat, 0x434D594Bu);
  EXPECT_EQ(target.device.NumOfColors, 4);
  EXPECT_EQ(target.device.NumOfSamples, 100);
  EXPECT_EQ(target.device.Measured, 0);
  EXPECT_EQ(target.device.ColorMode, 0);
  EXPECT_EQ(target.measured.DataFormat, 0x4C616220u);
  EXPECT_EQ(target.measured.NumOfColors, 3);
  EXPECT_EQ(target.measured.NumOfSamples, 100);
  EXPECT_EQ(target.measured.Measured, 100);
  EXPECT_EQ(target.measured.ColorMode, 0);
  ASSERT_EQ(target.DeviceValues().size(), 400u);
  ASSERT_EQ(target.MeasuredValues().size(), 300u);
  EXPECT_EQ(target.Sample(0), (Row{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(target.Sample(99), (Row{100, 2, 3, 4, 5, 6, 7}));
}

TEST(RealTarget, WithCrLfBeginsWithASampleOfZerosAndKeepsAllOthers) {
  // The data begin one character behind BEGIN_DATA. With CR-LF that is the line feed, a line of its
  // own without numbers.
  for (const Space& device : kDeviceSpaces) {
    for (const Space& measured : kMeasuredSpaces) {
      Made made = MakeTarget(device, measured, 20, {.feed = "\r\n"});
      Meaning& meaning = made.meaning;
      meaning.samples = 21;
      meaning.device.insert(meaning.device.begin(), static_cast<std::size_t>(device.colors), 0.0);
      meaning.measured.insert(meaning.measured.begin(), static_cast<std::size_t>(measured.colors),
                              0.0);
      EXPECT_TRUE(Means(made.text, meaning)) << NameOf(device, measured);
    }
  }
}

TEST(RealTarget, MeansWhatTheModelSaysAlsoInTheModelsOwnWords) {
  // Holds the model of the damage tests against texts whose values are known.
  for (const char* feed : {"\n", "\r\n"}) {
    const Made made = MakeTarget(kCmyk, kXyz, 20, {.feed = feed});
    const Meaning meaning = MeaningOf(made.text);
    EXPECT_EQ(meaning.rule, TargetRule::Accepted);
    EXPECT_EQ(meaning.samples, feed[0] == '\n' ? 20 : 21);
    EXPECT_EQ(Row(meaning.device.end() - 80, meaning.device.end()), made.meaning.device);
    EXPECT_EQ(Row(meaning.measured.end() - 60, meaning.measured.end()), made.meaning.measured);
  }
}

// The fields.

struct FieldCase {
  const char* fields;
  std::uint32_t deviceFormat;
  int deviceColors;
  std::uint32_t measuredFormat;
  int measuredColors;
};

void ExpectFields(const FieldCase& expected) {
  const Target target(Pieces{.fields = expected.fields, .lines = ""}.Text());
  EXPECT_EQ(target.rule, TargetRule::Accepted) << expected.fields;
  EXPECT_EQ(target.device.DataFormat, expected.deviceFormat) << expected.fields;
  EXPECT_EQ(target.device.NumOfColors, expected.deviceColors) << expected.fields;
  EXPECT_EQ(target.measured.DataFormat, expected.measuredFormat) << expected.fields;
  EXPECT_EQ(target.measured.NumOfColors, expected.measuredColors) << expected.fields;
}

TEST(TargetFields, BeforeTheFirstMeasurementAreTheDeviceChannels) {
  ExpectFields(
      {"\nCMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B\n", Sig("CMYK"), 4, Sig("Lab "), 3});
  ExpectFields({"\nRGB_R XYZ_X\n", Sig("RGB "), 1, Sig("XYZ "), 3});
  ExpectFields({"\nRGB_R RGB_G RGB_B SAMPLE_ID R_380\n", Sig("RGB "), 4, Sig("refl"), 36});
}

TEST(TargetFields, OfReflectanceAre36HoweverManyAreNamed) {
  ExpectFields({"\nRGB_R RGB_G RGB_B R_380 R_390\n", Sig("RGB "), 3, Sig("refl"), 36});
}

TEST(TargetFields, BehindTheFirstMeasurementAreNotLookedAt) {
  ExpectFields({"\nCMY_C CMY_M CMY_Y XYZ_X XYZ_Y XYZ_Z LAB_L LAB_A LAB_B\n", Sig("CMY "), 3,
                Sig("XYZ "), 3});
  ExpectFields({"\nCMY_C CMY_M CMY_Y LAB_L\n", Sig("CMY "), 3, Sig("Lab "), 3});
  ExpectFields({"\nCMY_C CMY_M CMY_Y R_380 LAB_L XYZ_X\n", Sig("CMY "), 3, Sig("refl"), 36});
}

TEST(TargetFields, OfAMeasurementContainItsNameAnywhere) {
  ExpectFields({"\nRGB_R D50_XYZ_X\n", Sig("RGB "), 1, Sig("XYZ "), 3});
  ExpectFields({"\nRGB_R MEAN_LAB\n", Sig("RGB "), 1, Sig("Lab "), 3});
  ExpectFields({"\nRGB_R SPECTR_380\n", Sig("RGB "), 1, Sig("refl"), 36});
  ExpectFields({"\nRGB_R R_3800\n", Sig("RGB "), 1, Sig("refl"), 36});
}

TEST(TargetFields, WithTwoNamesInOneWordAreXyzBeforeLabBeforeReflectance) {
  ExpectFields({"\nRGB_R LABXYZ\n", Sig("RGB "), 1, Sig("XYZ "), 3});
  ExpectFields({"\nRGB_R R_380LAB\n", Sig("RGB "), 1, Sig("Lab "), 3});
  ExpectFields({"\nRGB_R R_380XYZ\n", Sig("RGB "), 1, Sig("XYZ "), 3});
}

TEST(TargetFields, NameTheDeviceByTheFirstWordUpToItsFirstUnderscoreInAnyCase) {
  ExpectFields({"\ncmyk_C_X Y LAB_L\n", Sig("CMYK"), 2, Sig("Lab "), 3});
  ExpectFields({"\nCMYKOG_CMYK LAB_L\n", Sig("6CLR"), 1, Sig("Lab "), 3});
  ExpectFields({"\nGray_K LAB_L\n", Sig("1CLR"), 1, Sig("Lab "), 3});
}

TEST(TargetFields, NameTheDeviceByTheWholeFirstWordWhenItHasNoUnderscore) {
  ExpectFields({"\nGRAY LAB_L\n", Sig("1CLR"), 1, Sig("Lab "), 3});
  ExpectFields({"\npc5 a b c d LAB_L\n", Sig("5CLR"), 5, Sig("Lab "), 3});
}

TEST(TargetFields, MayBeginWithAMeasurementOfAKnownDevice) {
  // A first field that names both is counted as the measurement: no channel is left.
  const Target target(Pieces{.fields = "\nRGB_XYZ B\n"}.Text());
  EXPECT_EQ(target.rule, TargetRule::Accepted);
  EXPECT_EQ(target.device.DataFormat, Sig("RGB "));
  EXPECT_EQ(target.device.NumOfColors, 0);
  EXPECT_EQ(target.device.NumOfSamples, 2);
  EXPECT_EQ(target.device.GetDataSize(), 0u);
  EXPECT_EQ(target.MeasuredValues(), (Row{10, 20, 30, 11, 21, 31}));
}

TEST(TargetFields, MayFollowBeginDataFormatAfterAnySingleSeparator) {
  for (const char* fields :
       {"\nRGB_R LAB_L\n", " RGB_R LAB_L\n", "\tRGB_R LAB_L ", "#RGB_R LAB_L\n"}) {
    ExpectFields({fields, Sig("RGB "), 1, Sig("Lab "), 3});
  }
}

TEST(TargetFields, LoseTheirFirstLetterWithoutASeparatorBeforeIt) {
  // The 18th character is the separator, whatever it is: "XCMY_C" would be the field.
  ExpectFields({"XCMY_C LAB_L\n", Sig("CMY "), 1, Sig("Lab "), 3});
  EXPECT_EQ(Target(Pieces{.fields = "CMY_C LAB_L\n"}.Text()).rule, TargetRule::UnknownDeviceFormat);
}

TEST(TargetFields, AreTakenToBeFollowedByOneSeparatorSoThatCrLfBetweenThemCountsSomeTwice) {
  // Each CR-LF leaves the scan one character further behind. After the first field it stands on
  // the CR, after the second on that field's last letter, which is then counted as a field.
  ExpectFields({"\r\nCMYK_C\r\nCMYK_M\r\nCMYK_Y\r\nCMYK_K\r\nLAB_L\r\nLAB_A\r\nLAB_B\r\n",
                Sig("CMYK"), 6, Sig("Lab "), 3});
  ExpectFields(
      {"\r\nCMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B\r\n", Sig("CMYK"), 4, Sig("Lab "), 3});
}

TEST(TargetFields, WithRunsOfBlanksBetweenThemCountSomeTwice) {
  ExpectFields({"\nCMYK_C  CMYK_M CMYK_Y CMYK_K LAB_L\n", Sig("CMYK"), 4, Sig("Lab "), 3});
  ExpectFields({"\nCMYK_C  CMYK_M  CMYK_Y CMYK_K LAB_L\n", Sig("CMYK"), 5, Sig("Lab "), 3});
  ExpectFields({"\nCMYK_C  CMYK_M  CMYK_Y  CMYK_K  LAB_L\n", Sig("CMYK"), 5, Sig("Lab "), 3});
  // Three line feeds before the first field: behind it the scan stands on "_C".
  ExpectFields({"\n\n\n\nCMYK_C CMYK_M CMYK_Y CMYK_K LAB_L\n", Sig("CMYK"), 5, Sig("Lab "), 3});
}

TEST(TargetFields, AreReadAcrossTheirEndWhenBlanksStandBeforeIt) {
  // Behind "RGB_R" the scan stands on the second line feed, before the end; the word read from
  // there is the closing one with what is glued to it.
  const Target target(
      Pieces{.fields = "\nRGB_R\n\n", .between = "LAB\n", .lines = "1 2 3 4\n"}.Text());
  EXPECT_EQ(target.rule, TargetRule::Accepted);
  EXPECT_EQ(target.device.NumOfColors, 1);
  EXPECT_EQ(target.measured.DataFormat, Sig("Lab "));
  EXPECT_EQ(target.Sample(0), (Row{1, 2, 3, 4}));
}

TEST(TargetFields, MayBeLongerThanAnyFixedBuffer) {
  for (const std::size_t length : {250u, 255u, 256u, 257u, 300u, 511u, 1024u, 70000u}) {
    const std::string tail(length, 'x');
    const Target target(
        Pieces{.fields = "\nCMYK_" + tail + " CMYK_M" + tail + " C" + tail + "LAB\n",
               .lines = "1 2 3 4 5\n"}
            .Text());
    EXPECT_EQ(target.rule, TargetRule::Accepted) << length;
    EXPECT_EQ(target.device.DataFormat, Sig("CMYK")) << length;
    EXPECT_EQ(target.device.NumOfColors, 2) << length;
    EXPECT_EQ(target.measured.DataFormat, Sig("Lab ")) << length;
  }
  const Target unknown(Pieces{.fields = "\n" + std::string(400, 'C') + " LAB_L\n"}.Text());
  EXPECT_EQ(unknown.rule, TargetRule::UnknownDeviceFormat);
}

TEST(TargetFields, MayBeThousands) {
  std::string fields = "\nRGB";
  std::string line = "0";
  Row expected = {0};
  for (int i = 1; i < 20000; ++i) {
    fields += " c";
    line += " " + std::to_string(i % 7);
    expected.push_back(i % 7);
  }
  const Target target(Pieces{.fields = fields + " LAB_L\n", .lines = line + " 7 8 9 10\n"}.Text());
  ASSERT_EQ(target.rule, TargetRule::Accepted);
  EXPECT_EQ(target.device.NumOfColors, 20000);
  EXPECT_EQ(target.DeviceValues(), expected);
  EXPECT_EQ(target.MeasuredValues(), (Row{7, 8, 9}));
}

// Where data begin and end.

TEST(TargetLines, AreOneSampleEach) {
  ExpectSamples({}, {kFirst, kSecond});
  ExpectSamples({.lines = ""}, {});
  ExpectSamples({.lines = "10 20 30 40 50 60\n"}, {kFirst});
}

TEST(TargetLines, WithoutAFinalFeedLackTheLastSample) {
  ExpectSamples({.tail = ""}, {kFirst});
  ExpectSamples({.tail = " "}, {kFirst});
  ExpectSamples({.tail = "\r"}, {kFirst});
}

TEST(TargetLines, BehindEndDataCountUntilTheirLengthReachesItsPlace) {
  // END_DATA stands 11 + 36 characters behind END_DATA_FORMAT's separator, the lines before it have
  // 36 characters and its own 9: two characters are left for lines behind it.
  ExpectSamples({.tail = "\n\n"}, {kFirst, kSecond, kZeros});
  ExpectSamples({.tail = "\n\n\n"}, {kFirst, kSecond, kZeros, kZeros});
  ExpectSamples({.tail = "\n\n\n\n\n\n"}, {kFirst, kSecond, kZeros, kZeros});
  ExpectSamples({.tail = "\n#\n\n\n"}, {kFirst, kSecond, kZeros});
  ExpectSamples({.tail = "\n# a remark of any length\n\n\n"}, {kFirst, kSecond, kZeros});
  ExpectSamples({.tail = " \n\n\n"}, {kFirst, kSecond, kZeros});
  ExpectSamples({.tail = "\nwithout a feed"}, {kFirst, kSecond});
}

TEST(TargetLines, BehindEndDataCountMoreTheMoreTextStandsBeforeBeginData) {
  // 17 characters between the two more: 19 are left behind END_DATA.
  const Target target(
      Pieces{.between = "\nNUMBER_OF_SETS 2\n", .tail = "\n" + std::string(30, '\n')}.Text());
  EXPECT_EQ(target.rule, TargetRule::Accepted);
  EXPECT_EQ(target.device.NumOfSamples, 21);
  EXPECT_EQ(target.measured.Measured, 21);
  EXPECT_EQ(target.Sample(0), kFirst);
  EXPECT_EQ(target.Sample(1), kSecond);
  for (int i = 2; i < 21; ++i) EXPECT_EQ(target.Sample(i), kZeros) << i;
}

TEST(TargetLines, BehindEndDataAreReadAsSamplesWhenTheyCount) {
  ExpectSamples({.between = "\nNUMBER_OF_SETS 2\n", .tail = "\n7 8 9\n\n\n"},
                {kFirst, kSecond, kZeros, {7, 8, 9, 0, 0, 0}, kZeros});
}

TEST(TargetLines, BeginOneCharacterBehindBeginData) {
  ExpectSamples({.afterBegin = " "}, {kFirst, kSecond});
  ExpectSamples({.afterBegin = "\t"}, {kFirst, kSecond});
  // Whatever the character is, also the first digit of a number.
  ExpectSamples({.afterBegin = ""}, {{0, 20, 30, 40, 50, 60}, kSecond});
}

TEST(TargetLines, BeginWithASampleOfZerosWhenBeginDataIsFollowedByTwoCharacters) {
  ExpectSamples({.afterBegin = " \n"}, {kZeros, kFirst, kSecond});
  ExpectSamples({.afterBegin = "\r\n"}, {kZeros, kFirst, kSecond});
  ExpectSamples({.afterBegin = "\n\n"}, {kZeros, kFirst, kSecond});
}

TEST(TargetLines, WithCrLfThroughoutGiveTheStatedSamples) {
  Pieces crlf{.before = "CGATS.17\r\n",
              .fields = "\r\nRGB_R RGB_G RGB_B LAB_L LAB_A LAB_B\r\n",
              .between = "\r\n",
              .afterBegin = "\r\n",
              .lines = "10 20 30 40 50 60\r\n11 21 31 41 51 61\r\n",
              .tail = "\r\n"};
  ExpectSamples(crlf, {kZeros, kFirst, kSecond});
  // END_DATA's place is 1 + 12 + 38, the lines up to it and its own make 1 + 38 + 10.
  crlf.tail = "\r\n\r\n\r\n";
  ExpectSamples(crlf, {kZeros, kFirst, kSecond, kZeros});
  crlf.tail = "\r\n\n\n\n";
  ExpectSamples(crlf, {kZeros, kFirst, kSecond, kZeros, kZeros});
  crlf.tail = "";
  ExpectSamples(crlf, {kZeros, kFirst});
}

TEST(TargetLines, OnlyEndAtALineFeed) {
  ExpectSamples({.lines = "10 20 30\r40 50 60\n11 21\v31\f41\t51 61\n"}, {kFirst, kSecond});
}

TEST(TargetLines, LackingNumbersLeaveZeros) {
  ExpectSamples({.lines = "1\n1 2\n1 2 3\n1 2 3 4\n1 2 3 4 5\n"}, {{1, 0, 0, 0, 0, 0},
                                                                   {1, 2, 0, 0, 0, 0},
                                                                   {1, 2, 3, 0, 0, 0},
                                                                   {1, 2, 3, 4, 0, 0},
                                                                   {1, 2, 3, 4, 5, 0}});
  ExpectSamples({.lines = "10 20 30 40 50 60\n\n \t \n11 21 31 41 51 61\n"},
                {kFirst, kZeros, kZeros, kSecond});
}

TEST(TargetLines, WithMoreNumbersThanFieldsDropThem) {
  ExpectSamples({.lines = "10 20 30 40 50 60 70\n11 21 31 41 51 61 71 81 91\n"}, {kFirst, kSecond});
}

TEST(TargetLines, WithMoreNumbersThanNamedFillAllBandsOfReflectance) {
  std::string line = "1 2 3";
  Row bands;
  for (int i = 0; i < 40; ++i) {
    line += " " + std::to_string(100 + i);
    if (i < 36) bands.push_back(100 + i);
  }
  const Target target(
      Pieces{.fields = "\nRGB_R RGB_G RGB_B R_380\n", .lines = line + "\n1 2 3 4\n"}.Text());
  ASSERT_EQ(target.rule, TargetRule::Accepted);
  EXPECT_EQ(target.DeviceValues(), (Row{1, 2, 3, 1, 2, 3}));
  Row expected = bands;
  expected.push_back(4);
  expected.resize(72, 0.0);
  EXPECT_EQ(target.MeasuredValues(), expected);
}

TEST(TargetLines, MayHaveWhiteSpaceAroundTheirNumbers) {
  ExpectSamples({.lines = " \t 10 \t20  30\t40 50 60   \n\v\f\r11 21 31 41 51 61\r\n"},
                {kFirst, kSecond});
}

TEST(TargetLines, StopAtWhatIsNoNumber) {
  ExpectSamples({.lines = "10 20 x 40 50 60\nA1 11 21 31 41 51 61\n11 21 31 41 \"51\" 61\n"},
                {{10, 20, 0, 0, 0, 0}, kZeros, {11, 21, 31, 41, 0, 0}});
}

TEST(TargetLines, WithoutNumbersCountByTheThousand) {
  const Target target(
      Pieces{.fields = "\nCMYK_C CMYK_M CMYK_Y CMYK_K R_380\n", .lines = std::string(1000, '\n')}
          .Text());
  EXPECT_EQ(target.rule, TargetRule::Accepted) << TargetRuleText(target.rule);
  EXPECT_EQ(target.device.NumOfSamples, 1000);
  EXPECT_EQ(target.DeviceValues(), Row(4000, 0.0));
  EXPECT_EQ(target.MeasuredValues(), Row(36000, 0.0));
}

TEST(TargetLines, OfFewerColumnsThanBandsAreKeptToTheLast) {
  std::string lines;
  for (int i = 0; i < 500; ++i) lines += "1\n";
  const Target target(Pieces{.fields = "\nRGB_R RGB_G RGB_B R_380\n", .lines = lines}.Text());
  EXPECT_EQ(target.rule, TargetRule::Accepted) << TargetRuleText(target.rule);
  EXPECT_EQ(target.device.NumOfSamples, 500);
}

// Numbers.

TEST(TargetNumbers, MayHaveSignsAndBarePoints) {
  ExpectLine("+1 -2 +.5 5. .5 -.25 -0", {1, -2, 0.5, 5, 0.5, -0.25, -0.0});
  ExpectLine("007 00.50 +5. -5. 0 0.0 -0.0", {7, 0.5, 5, -5, 0, 0, -0.0});
}

TEST(TargetNumbers, MayHaveExponents) {
  ExpectLine("1e2 1E2 1e+2 25e-2 -1.5E-1 .5e1 5.e1",
             {100, 100, 100, 0.25, -0.1500000059604644775390625, 5, 50});
  ExpectLine("1e0000000002 1e-0000000001 0e999999999999", {100, 0.100000001490116119384765625, 0});
}

TEST(TargetNumbers, AreRoundedOnceToSinglePrecision) {
  ExpectLine("0.1 16777217 16777219 33.3",
             {0.100000001490116119384765625, 16777216, 16777220, 33.299999237060546875});
  // Barely above the middle of two neighbours: by way of a double it would be the middle itself and
  // go down.
  ExpectLine("1.00000005960464477539062500000001", {1.00000011920928955078125});
  ExpectLine("1.000000059604644775390625", {1});
  ExpectLine("1.00000005960464477539062499999999", {1});
}

TEST(TargetNumbers, BeyondSinglePrecisionAreInfiniteOrNull) {
  ExpectLine("1e40 -1e40 1e-60 -1e-60 1e999999 -1e-999999 3",
             {kInfinity, -kInfinity, 0, -0.0, kInfinity, -0.0, 3});
  ExpectLine("3.4028234e38 3.4028236e38 1.17549435e-38 1e-45 7e-46",
             {3.4028234663852886e38, kInfinity, 1.1754943508222875e-38, 1.401298464324817e-45, 0});
}

TEST(TargetNumbers, MayBeHexadecimal) {
  ExpectLine("0x10 0X1F 0x1.8p1 0x.8 -0x1p-2 0xAp0 0x1e-2", {16, 31, 3, 0.5, -0.25, 10, 30});
}

TEST(TargetNumbers, MayBeInfiniteOrNoNumber) {
  ExpectLine("inf -inf INFINITY Infinity +inf 6 7",
             {kInfinity, -kInfinity, kInfinity, kInfinity, kInfinity, 6, 7});
  ExpectLine("nan NaN -nan NAN 5", {kNoNumber, kNoNumber, kNoNumber, kNoNumber, 5});
  ExpectLine("1 infi 3", {1});
  ExpectLine("1 infinit 3", {1});
  ExpectLine("1 na 3", {1});
  ExpectLine("1 i 3", {1});
  ExpectLine("1 infx 3", {1, kInfinity});
}

TEST(TargetNumbers, NeedNoBlankWhereOneCannotGoOn) {
  ExpectLine("1.5-2.5", {1.5, -2.5});
  ExpectLine("1+2-3", {1, 2, -3});
  ExpectLine("1.2.3", {1.2000000476837158203125, 0.300000011920928955078125});
  ExpectLine("1..5", {1, 0.5});
  ExpectLine("1e2.5", {100, 0.5});
  ExpectLine("1e-2-3", {0.00999999977648258209228515625, -3});
  // A second exponent ends the line, and not the number before it.
  ExpectLine("1e2e5 2", {100});
  ExpectLine("9e146E7 2", {kInfinity});
  ExpectLine("0x1p3p3 2", {8});
  ExpectLine("7 infe5 2", {7, kInfinity});
  ExpectLine("7 nanE 2", {7, kNoNumber});
}

TEST(TargetNumbers, HaveAPointAndNoComma) {
  ExpectLine("1,5 2", {1});
  ExpectLine("2 1,5", {2, 1});
  ExpectLine("1.000,5 2", {1});
  ExpectLine(",5", {});
  ExpectLine("1'000", {1});
  ExpectLine("1;2", {1});
}

TEST(TargetNumbers, EndTheLineWhenTheyBreakOff) {
  ExpectLine("7 + 2", {7});
  ExpectLine("7 - 2", {7});
  ExpectLine("7 . 2", {7});
  ExpectLine("7 -. 2", {7});
  ExpectLine("7 +-2", {7});
  ExpectLine("7 --2", {7});
  ExpectLine("7 e5", {7});
  ExpectLine("7 .e5 2", {7});
  ExpectLine("7 0x 2", {7});
  ExpectLine("7 0xg 2", {7});
  ExpectLine("7 # 2", {7});
}

TEST(TargetNumbers, WithAnExponentThatLacksDigitsAreNone) {
  // ISO C has this very case for scanf: "100ergs" does not match %f.
  for (const char* broken : {"1e", "1E", "1e+", "1e-", "1ergs", "1e x", "1.5e", "0x1p", "0x1p+"}) {
    ExpectLine(broken, {});
    ExpectLine(std::string("7 ") + broken + " 2", {7});
  }
}

TEST(TargetNumbers, MayBeLongerThanAnyFixedBuffer) {
  const std::string zeros(400, '0');
  ExpectLine("1" + zeros + " 2", {kInfinity, 2});
  ExpectLine("0." + zeros + "1 2", {0, 2});
  ExpectLine(zeros + "25 2", {25, 2});
  ExpectLine("0." + zeros + "5e401 2", {5, 2});
  ExpectLine("25" + zeros + "e-400 2", {25, 2});
  ExpectLine("-1." + zeros + zeros + "5 2", {-1, 2});
  ExpectLine("+1" + zeros + "." + zeros + "e-0000400 2", {1, 2});
  ExpectLine(std::string(5000, ' ') + "3" + std::string(5000, ' ') + "4", {3, 4});
  const std::string word(301, 'w');
  ExpectLine("5 " + word + " 6", {5});
  ExpectLine(word, {});
}

TEST(TargetNumbers, AreThoseOfTheGrowingFormat) {
  // Characters of numbers at random, most of them broken somewhere. Lines where C libraries differ
  // from ISO C (an exponent without digits) are left out.
  constexpr char kCharacters[] = "00112233445566778899....++--eE      \t,;xXpPaAfFiInN";
  std::mt19937 random(20240917);
  int compared = 0;
  for (int round = 0; round < 60; ++round) {
    std::vector<Row> expected;
    std::string lines;
    while (expected.size() < 400) {
      std::string line;
      const std::size_t length = random() % 70;
      for (std::size_t i = 0; i < length; ++i) {
        line += kCharacters[random() % (sizeof kCharacters - 1)];
      }
      const Row numbers = NumbersByGrowingFormat(line);
      if (!SameValues(NumbersOf(line), numbers)) continue;
      expected.push_back(numbers);
      lines += line + "\n";
    }
    const Target target(Pieces{.fields = "\n7CLR 2 3 4 5 6 7 R_380\n", .lines = lines}.Text());
    ASSERT_EQ(target.rule, TargetRule::Accepted);
    ASSERT_EQ(target.device.NumOfSamples, 400);
    std::size_t line = 0;
    for (int i = 0; i < 400; ++i) {
      Row& numbers = expected[static_cast<std::size_t>(i)];
      compared += numbers.empty() ? 0 : 1;
      numbers.resize(43, 0.0);
      const std::size_t feed = lines.find('\n', line);
      ASSERT_TRUE(SameValues(target.Sample(i), numbers)) << lines.substr(line, feed - line);
      line = feed + 1;
    }
  }
  EXPECT_GT(compared, 10000);
}

TEST(TargetNumbers, OfWholeTokensAreThoseOfTheGrowingFormat) {
  constexpr const char* kTokens[] = {
      "0",     "1",        "100",      "-1.25",    "+3.75",  "1e2",
      "1E-3",  "-.5",      "7.",       "1e40",     "-1e-60", "3.14159265358979323846",
      "0x1F",  "0x1.8p-3", "inf",      "-nan",     "1,5",    "1.5-2.5",
      "x",     "-",        "END_DATA", "16777217", "1e-45",  "0.1",
      "57.03", "0.0716",   "255",      "1.2.3",    "+-1",    "99999999999999999999"};
  constexpr const char* kBlanks[] = {" ", "  ", "\t", " \t ", "\r", "\v", "\f", ""};
  std::mt19937 random(7);
  std::size_t numbersSeen = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string line;
    const std::size_t tokens = random() % 50;
    for (std::size_t i = 0; i < tokens; ++i) {
      // Rarely something that ends the line, so that long lines are seen too.
      const std::size_t which = random() % (random() % 16 == 0 ? std::size(kTokens) : 14);
      line += std::string(kBlanks[random() % 8]) + kTokens[which] + " ";
    }
    if (line.find("END_DATA") != std::string::npos) continue;  // would close the data
    const Row numbers = NumbersByGrowingFormat(line);
    if (!SameValues(NumbersOf(line), numbers)) continue;
    numbersSeen += numbers.size();
    Row expected = numbers;
    expected.resize(43, 0.0);
    const Target target(
        Pieces{.fields = "\n7CLR 2 3 4 5 6 7 R_380\n", .lines = line + "\n"}.Text());
    ASSERT_EQ(target.rule, TargetRule::Accepted) << line;
    ASSERT_TRUE(SameValues(target.Sample(0), expected)) << line;
  }
  EXPECT_GT(numbersSeen, 20000u);
}

// Locales and threads.

TEST(TargetLocale, WithACommaInThisThreadChangesNoNumber) {
  const Made made = MakeTarget(kCmyk, kSpectrum, 100);
  const Meaning odd = MeaningOf(Pieces{.lines = "1,5 2\n1.5 2,5\n0x1.8p1 1e1\n"}.Text());
  const CommaLocale comma;
  ASSERT_TRUE(comma.works()) << "the build makes the locale from Debian's package locales";
  ASSERT_STREQ(::localeconv()->decimal_point, ",");
  EXPECT_TRUE(Means(made.text, made.meaning));
  EXPECT_TRUE(Means(Pieces{.lines = "1,5 2\n1.5 2,5\n0x1.8p1 1e1\n"}.Text(), odd));
  EXPECT_EQ(odd.device, (Row{1, 0, 0, 1.5, 2, 0, 3, 10, 0}));
  EXPECT_STREQ(::localeconv()->decimal_point, ",") << "the thread's locale is as it was";
}

TEST(TargetLocale, WithACommaInTheProcessChangesNoNumber) {
  const Made made = MakeTarget(kRgb, kLab, 100);
  { const CommaLocale tellsWhereTheLocaleIs; }
  const ProcessLocale german("de_DE.UTF-8");
  ASSERT_TRUE(german.works()) << "the build makes the locale from Debian's package locales";
  ASSERT_STREQ(std::localeconv()->decimal_point, ",");
  const std::string before = std::setlocale(LC_ALL, nullptr);
  EXPECT_TRUE(Means(made.text, made.meaning));
  EXPECT_FALSE(Means(made.text.substr(0, 40), made.meaning));
  EXPECT_EQ(before, std::setlocale(LC_ALL, nullptr)) << "also after a refusal";
}

TEST(TargetLocale, OfOtherThreadsIsNotDisturbed) {
  // Both threads format and read numbers all the time while this one parses.
  const Made made = MakeTarget(kCmyk, kLab, 100);
  std::atomic<bool> done = false;
  std::atomic<int> ready = 0;
  std::atomic<int> wrong = 0;
  const auto watch = [&](const char* expected) {
    ++ready;
    while (!done) {
      std::array<char, 32> text = {};
      std::snprintf(text.data(), text.size(), "%.2f", 1234.5);
      if (std::strcmp(text.data(), expected) != 0) ++wrong;
      if (std::strtod(expected, nullptr) != 1234.5) ++wrong;
    }
  };
  std::thread comma([&] {
    const CommaLocale locale;
    watch(locale.works() ? "1234,50" : "no such locale");
  });
  std::thread point([&] {
    const PointLocale locale;
    watch("1234.50");
  });
  std::thread process([&] { watch("1234.50"); });
  while (ready < 3) std::this_thread::yield();
  for (int i = 0; i < 100; ++i) {
    ASSERT_TRUE(Means(made.text, made.meaning)) << i;
    EXPECT_EQ(Target("no target").rule, TargetRule::NoFormat);
  }
  done = true;
  comma.join();
  point.join();
  process.join();
  EXPECT_EQ(wrong, 0);
}

// Refusals.

/// Lists that hold values, as a caller has them who parses a second text.
struct Used {
  Used() {
    Fill(device, 0x11111111, 2, 1.5);
    Fill(measured, 0x22222222, 4, 100.5);
  }

  static void Fill(ProfileDataList& list, std::uint32_t format, int colors, double first) {
    list.DataFormat = format;
    list.ColorMode = 64;
    list.NumOfColors = colors;
    ASSERT_EQ(list.RefreshList(3), 1);
    list.Measured = 2;
    list.Extra1 = 8;
    list.Extra2 = 9;
    for (int i = 0; i < 3 * colors; ++i) list.DataList[i] = first + i;
    list.PerSample = new std::int32_t[3]{5, 6, 7};
  }

  ProfileDataList device;
  ProfileDataList measured;
};

/// What a refusal leaves: everything but what the format told on the way.
void ExpectKept(const ProfileDataList& list, std::uint32_t format, int colors, int oldColors,
                double first) {
  EXPECT_EQ(list.DataFormat, format);
  EXPECT_EQ(list.NumOfColors, colors);
  EXPECT_EQ(list.NumOfSamples, 3);
  EXPECT_EQ(list.ColorMode, 64);
  EXPECT_EQ(list.Measured, 2);
  EXPECT_EQ(list.Extra1, 8);
  EXPECT_EQ(list.Extra2, 9);
  ASSERT_NE(list.PerSample, nullptr);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(list.PerSample[i], 5 + i);
  ASSERT_NE(list.DataList, nullptr);
  for (int i = 0; i < 3 * oldColors; ++i) EXPECT_EQ(list.DataList[i], first + i) << i;
  // Copying takes as many values as the counters say.
  const ProfileDataList copy = list;
  EXPECT_EQ(copy.GetDataSize(), static_cast<std::uint32_t>(3 * colors * 8));
  EXPECT_TRUE(copy == list);
}

struct Refusal {
  const char* defect;
  Pieces pieces;
  TargetRule rule;
};

const std::vector<Refusal>& Refusals() {
  static const std::vector<Refusal> refusals = {
      {"no begin of the format", {.begin = ""}, TargetRule::NoFormat},
      {"begin of the format in lower case", {.begin = "begin_data_format"}, TargetRule::NoFormat},
      {"begin of the format cut", {.begin = "BEGIN_DATA_FORMA"}, TargetRule::NoFormat},
      {"begin of the format in two words", {.begin = "BEGIN_DATA FORMAT"}, TargetRule::NoFormat},

      {"no end of the format", {.end = ""}, TargetRule::FormatNotClosed},
      {"end of the format in lower case", {.end = "end_data_format"}, TargetRule::FormatNotClosed},
      {"end of the format cut", {.end = "END_DATA_FORMA"}, TargetRule::FormatNotClosed},
      {"another end before the begin",
       {.before = "END_DATA_FORMAT\n"},
       TargetRule::FormatNotClosed},

      {"a number of the sample first",
       {.fields = "\nSAMPLE_ID RGB_R RGB_G RGB_B LAB_L\n"},
       TargetRule::UnknownDeviceFormat},
      {"a name of the sample first",
       {.fields = "\nSampleName RGB_R RGB_G RGB_B LAB_L\n"},
       TargetRule::UnknownDeviceFormat},
      {"a measurement first", {.fields = "\nLAB_L LAB_A LAB_B\n"}, TargetRule::UnknownDeviceFormat},
      {"two colours", {.fields = "\n2CLR_1 2CLR_2 LAB_L\n"}, TargetRule::UnknownDeviceFormat},
      {"four colours", {.fields = "\n4CLR_1 LAB_L\n"}, TargetRule::UnknownDeviceFormat},
      {"eight colours", {.fields = "\n8CLR_1 LAB_L\n"}, TargetRule::UnknownDeviceFormat},
      {"a longer word", {.fields = "\nRGBA_R LAB_L\n"}, TargetRule::UnknownDeviceFormat},
      {"an underscore first", {.fields = "\n_RGB_R LAB_L\n"}, TargetRule::UnknownDeviceFormat},
      {"quotes", {.fields = "\n\"RGB_R\" LAB_L\n"}, TargetRule::UnknownDeviceFormat},
      {"no fields", {.fields = "\n"}, TargetRule::UnknownDeviceFormat},
      {"not even a separator", {.fields = ""}, TargetRule::UnknownDeviceFormat},

      {"no measurement", {.fields = "\nRGB_R RGB_G RGB_B\n"}, TargetRule::NoMeasurement},
      {"a measurement in lower case", {.fields = "\nRGB_R lab_l\n"}, TargetRule::NoMeasurement},
      {"a measurement in mixed case",
       {.fields = "\nRGB_R Lab_L Xyz_X r_380\n"},
       TargetRule::NoMeasurement},
      {"bands from 390", {.fields = "\nRGB_R R_390 R_400\n"}, TargetRule::NoMeasurement},
      {"bands under another name", {.fields = "\nRGB_R SPECTRAL_380\n"}, TargetRule::NoMeasurement},
      {"a measurement behind the end",
       {.fields = "\nRGB_R\n", .between = "\nLAB_L\n"},
       TargetRule::NoMeasurement},

      {"no begin of the data", {.beginData = ""}, TargetRule::NoData},
      {"begin of the data in lower case", {.beginData = "begin_data"}, TargetRule::NoData},
      {"begin of the data before the format",
       {.before = "BEGIN_DATA\n", .beginData = ""},
       TargetRule::NoData},
      {"begin of the data glued to the format", {.between = ""}, TargetRule::NoData},
      {"nothing behind the format",
       {.between = "", .beginData = "", .afterBegin = "", .lines = "", .endData = "", .tail = ""},
       TargetRule::NoData},
      {"one character behind the format",
       {.beginData = "", .afterBegin = "", .lines = "", .endData = "", .tail = ""},
       TargetRule::NoData},

      {"no end of the data", {.endData = ""}, TargetRule::DataNotClosed},
      {"end of the data in lower case", {.endData = "end_data"}, TargetRule::DataNotClosed},
      {"end of the data cut", {.endData = "END_DAT"}, TargetRule::DataNotClosed},
      {"another end before the data", {.between = "\nEND_DATA\n"}, TargetRule::DataNotClosed},
      {"another end within a word", {.between = "\nTREND_DATA 5\n"}, TargetRule::DataNotClosed},
      {"the format closed twice", {.between = "\nEND_DATA_FORMAT\n"}, TargetRule::DataNotClosed},

      {"no line feed behind the data's begin", {.lines = "", .tail = ""}, TargetRule::NoSamples},
      {"one line for all",
       {.afterBegin = " ", .lines = "10 20 30 40 50 60 ", .tail = ""},
       TargetRule::NoSamples},
      {"carriage returns alone",
       {.afterBegin = "\r", .lines = "10 20\r", .tail = "\r"},
       TargetRule::NoSamples},
      {"begin and end glued", {.afterBegin = "", .lines = "", .tail = ""}, TargetRule::NoSamples},
  };
  return refusals;
}

TEST(TargetRefusal, IsByTheRuleThatTheDefectBreaks) {
  for (const Refusal& refusal : Refusals()) {
    const Target target(refusal.pieces.Text());
    EXPECT_EQ(target.rule, refusal.rule) << refusal.defect << ": " << TargetRuleText(target.rule);
    EXPECT_EQ(MeaningOf(refusal.pieces.Text()).rule, refusal.rule) << refusal.defect;
  }
  EXPECT_EQ(Target(Pieces{}.Text()).rule, TargetRule::Accepted) << "without a defect";
  EXPECT_EQ(Target("").rule, TargetRule::NoFormat);
  EXPECT_EQ(Target(std::string_view()).rule, TargetRule::NoFormat);
}

TEST(TargetRefusal, KeepsTheValuesAndWhatTheFormatTold) {
  for (const Refusal& refusal : Refusals()) {
    SCOPED_TRACE(refusal.defect);
    Used used;
    EXPECT_EQ(ParseTarget(refusal.pieces.Text(), used.device, used.measured), refusal.rule);
    // A refusal comes before the device is known, before its channels are counted, or behind that.
    const bool deviceKnown = refusal.rule > TargetRule::UnknownDeviceFormat;
    const bool counted = refusal.rule > TargetRule::NoMeasurement;
    ExpectKept(used.device, deviceKnown ? Sig("RGB ") : 0x11111111, counted ? 3 : 2, 2, 1.5);
    ExpectKept(used.measured, counted ? Sig("Lab ") : 0x22222222, counted ? 3 : 4, 4, 100.5);
  }
}

TEST(TargetRefusal, LeavesListsThatHoldWhatTheirCountersSay) {
  // More channels than the old values have: zeros stand behind them.
  Used used;
  EXPECT_EQ(ParseTarget(Pieces{.fields = "\n7CLR 2 3 4 5 6 7 R_380\n", .endData = ""}.Text(),
                        used.device, used.measured),
            TargetRule::DataNotClosed);
  ExpectKept(used.device, Sig("7CLR"), 7, 2, 1.5);
  ExpectKept(used.measured, Sig("refl"), 36, 4, 100.5);
  for (int i = 6; i < 21; ++i) EXPECT_EQ(used.device.DataList[i], 0.0) << i;
  for (int i = 12; i < 108; ++i) EXPECT_EQ(used.measured.DataList[i], 0.0) << i;

  ProfileDataList device;
  ProfileDataList measured;
  device = used.device;
  measured = used.measured;
  EXPECT_TRUE(device == used.device);
  EXPECT_TRUE(measured == used.measured);
}

TEST(TargetRefusal, MakesRoomForMoreChannelsOfOneSampleToo) {
  ProfileDataList device;
  ProfileDataList measured;
  for (ProfileDataList* list : {&device, &measured}) {
    list->NumOfColors = 1;
    ASSERT_EQ(list->RefreshList(1), 1);
    list->DataList[0] = 7.5;
  }
  const double* before[] = {device.DataList, measured.DataList};
  EXPECT_EQ(ParseTarget(Pieces{.endData = ""}.Text(), device, measured), TargetRule::DataNotClosed);
  EXPECT_NE(device.DataList, before[0]);  // one number had no room behind it
  EXPECT_NE(measured.DataList, before[1]);
  EXPECT_EQ(ValuesOf(device), (Row{7.5, 0, 0}));
  EXPECT_EQ(ValuesOf(measured), (Row{7.5, 0, 0}));
}

TEST(TargetRefusal, CarriesNoValuesOverThatTheCountersDoNotTell) {
  for (const std::int32_t colors : {0, -1}) {
    ProfileDataList device;
    ProfileDataList measured;
    for (ProfileDataList* list : {&device, &measured}) {
      list->DataList = new double[2]{1, 2};
      list->NumOfSamples = 2;
      list->NumOfColors = colors;
    }
    EXPECT_EQ(ParseTarget(Pieces{.endData = ""}.Text(), device, measured),
              TargetRule::DataNotClosed);
    EXPECT_EQ(ValuesOf(device), Row(6, 0.0));
    EXPECT_EQ(ValuesOf(measured), Row(6, 0.0));
  }
}

TEST(TargetRefusal, OfAWordThatIsTheLastOfTheText) {
  EXPECT_EQ(Target("BEGIN_DATA_FORMAT END_DATA_FORMAT").rule, TargetRule::UnknownDeviceFormat);
}

TEST(TargetRefusal, OfEmptyListsLeavesThemWithoutValues) {
  const Target target(Pieces{.endData = ""}.Text());
  EXPECT_EQ(target.rule, TargetRule::DataNotClosed);
  EXPECT_EQ(target.device.DataFormat, Sig("RGB "));
  EXPECT_EQ(target.device.NumOfColors, 3);
  EXPECT_EQ(target.device.NumOfSamples, 0);
  EXPECT_EQ(target.device.DataList, nullptr);
  EXPECT_EQ(target.measured.DataFormat, Sig("Lab "));
  EXPECT_EQ(target.measured.NumOfColors, 3);
  EXPECT_EQ(target.measured.NumOfSamples, 0);
  EXPECT_EQ(target.measured.Measured, 0);
  EXPECT_EQ(target.measured.DataList, nullptr);
}

TEST(TargetRefusal, DoesNotSpoilTheListsForTheNextText) {
  Used used;
  for (const Refusal& refusal : Refusals()) {
    EXPECT_EQ(ParseTarget(refusal.pieces.Text(), used.device, used.measured), refusal.rule)
        << refusal.defect;
  }
  EXPECT_EQ(ParseTarget(Pieces{}.Text(), used.device, used.measured), TargetRule::Accepted);
  EXPECT_EQ(ValuesOf(used.device), (Row{10, 20, 30, 11, 21, 31}));
  EXPECT_EQ(ValuesOf(used.measured), (Row{40, 50, 60, 41, 51, 61}));
}

TEST(TargetReuse, ReplacesValuesAndCountersAndKeepsTheRest) {
  Used used;
  EXPECT_EQ(ParseTarget(Pieces{}.Text(), used.device, used.measured), TargetRule::Accepted);
  EXPECT_EQ(used.device.DataFormat, Sig("RGB "));
  EXPECT_EQ(used.device.NumOfColors, 3);
  EXPECT_EQ(used.device.NumOfSamples, 2);
  EXPECT_EQ(used.device.Measured, 0);
  EXPECT_EQ(used.measured.Measured, 2);
  EXPECT_EQ(ValuesOf(used.device), (Row{10, 20, 30, 11, 21, 31}));
  EXPECT_EQ(ValuesOf(used.measured), (Row{40, 50, 60, 41, 51, 61}));
  for (const ProfileDataList* list : {&used.device, &used.measured}) {
    EXPECT_EQ(list->PerSample, nullptr);
    EXPECT_EQ(list->ColorMode, 64);
    EXPECT_EQ(list->Extra1, 8);
    EXPECT_EQ(list->Extra2, 9);
  }
}

TEST(TargetReuse, WithATextOfNoSamplesLeavesNone) {
  Used used;
  EXPECT_EQ(ParseTarget(Pieces{.lines = ""}.Text(), used.device, used.measured),
            TargetRule::Accepted);
  EXPECT_EQ(used.device.NumOfSamples, 0);
  EXPECT_EQ(used.measured.NumOfSamples, 0);
  EXPECT_EQ(used.measured.Measured, 0);
  EXPECT_EQ(used.device.GetDataSize(), 0u);
  EXPECT_EQ(used.measured.GetDataSize(), 0u);
}

// Hostile texts.

TEST(TargetText, EndsAtItsFirstZeroByte) {
  std::string text = Pieces{.tail = "\n\n\n\n"}.Text();
  ASSERT_EQ(Target(text).device.NumOfSamples, 4);
  text[text.size() - 3] = '\0';  // the one behind END_DATA's line feed
  EXPECT_EQ(Target(text).device.NumOfSamples, 2) << "lines behind the zero do not count";

  text = Pieces{}.Text() + '\0';
  EXPECT_EQ(Target(text).device.NumOfSamples, 2) << "as a text tag has it";

  text = Pieces{}.Text();
  text[text.find("41")] = '\0';
  EXPECT_EQ(Target(text).rule, TargetRule::DataNotClosed);
  text = Pieces{}.Text();
  text[text.find("RGB_G")] = '\0';
  EXPECT_EQ(Target(text).rule, TargetRule::FormatNotClosed);
  text = Pieces{}.Text();
  text[0] = '\0';
  EXPECT_EQ(Target(text).rule, TargetRule::NoFormat);
}

TEST(TargetText, EndsWhereItsViewEnds) {
  // What lies behind the view would change each of these.
  const std::string text = Pieces{}.Text();
  EXPECT_EQ(Target(std::string_view(text).substr(0, text.size() - 1)).device.NumOfSamples, 1);
  EXPECT_EQ(Target(std::string_view(text).substr(0, text.size() - 2)).rule,
            TargetRule::DataNotClosed);
  EXPECT_EQ(Target(std::string_view(text).substr(0, text.find("RGB_G"))).rule,
            TargetRule::FormatNotClosed);
}

/// The text in memory of exactly its length, so that a sanitizer sees a read behind it.
::testing::AssertionResult MeansExactly(const std::string& text) {
  const auto exact = std::make_unique<char[]>(text.size());
  std::memcpy(exact.get(), text.data(), text.size());
  return Means({exact.get(), text.size()}, MeaningOf(text));
}

TEST(HostileTarget, CutAtEveryByteMeansWhatTheRulesSay) {
  for (const char* feed : {"\n", "\r\n"}) {
    for (const auto& [device, measured, samples] :
         {std::tuple(kCmyk, kLab, 20), std::tuple(kRgb, kSpectrum, 4),
          std::tuple(k7Clr, kXyz, 6)}) {
      const std::string text = MakeTarget(device, measured, samples, {.feed = feed}).text;
      for (std::size_t length = 0; length <= text.size(); ++length) {
        ASSERT_TRUE(MeansExactly(text.substr(0, length))) << length << " bytes";
      }
    }
  }
}

TEST(HostileTarget, WithAnyByteLostMeansWhatTheRulesSay) {
  const std::string text = MakeTarget(kCmyk, kLab, 20).text;
  for (std::size_t at = 0; at < text.size(); ++at) {
    ASSERT_TRUE(MeansExactly(std::string(text).erase(at, 1))) << at;
    ASSERT_TRUE(MeansExactly(std::string(text).insert(at, 1, text[at]))) << at;
  }
}

TEST(HostileTarget, WithRandomDamageMeansWhatTheRulesSay) {
  constexpr char kNasty[] = "\n\n\r\t  \v_LABXYZR380.+-,0123456789\xFF\x80\x01#\"\0";
  std::mt19937 random(4711);
  int accepted = 0;
  int refused = 0;
  for (int round = 0; round < 6000; ++round) {
    std::string text = MakeTarget(round % 2 == 0 ? kCmyk : kRgb, round % 3 == 0 ? kXyz : kLab, 5,
                                  {.feed = round % 5 == 0 ? "\r\n" : "\n"})
                           .text;
    const unsigned hits = 1 + static_cast<unsigned>(random() % 8);
    for (unsigned hit = 0; hit < hits; ++hit) {
      const std::size_t at = random() % text.size();
      switch (random() % 4) {
        case 0: text[at] = kNasty[random() % (sizeof kNasty - 1)]; break;
        case 1: text.insert(at, random() % 5, kNasty[random() % (sizeof kNasty - 1)]); break;
        case 2: text.erase(at, random() % 20); break;
        default: text.insert(at, text.substr(random() % text.size(), random() % 40)); break;
      }
    }
    const Meaning meaning = MeaningOf(text);
    (meaning.rule == TargetRule::Accepted ? accepted : refused) += 1;
    ASSERT_TRUE(MeansExactly(text)) << "round " << round << ":\n" << text;
  }
  EXPECT_GT(accepted, 1000);
  EXPECT_GT(refused, 500);
}

TEST(HostileTarget, OfKeywordsInAnyOrderMeansWhatTheRulesSay) {
  constexpr const char* kWords[] = {"BEGIN_DATA_FORMAT",
                                    "END_DATA_FORMAT",
                                    "BEGIN_DATA",
                                    "END_DATA",
                                    "CMYK_C",
                                    "RGB_R",
                                    "LAB_L",
                                    "XYZ_X",
                                    "R_380",
                                    "GRAY",
                                    "1.5",
                                    "-2",
                                    "nan",
                                    "_",
                                    "END_DATA_FORMATLAB",
                                    "FORMAT",
                                    "7",
                                    "0x1F"};
  constexpr const char* kBetween[] = {" ", "\n", "\r\n", "\t", "  ", "\n\n", "", " \n"};
  // Keywords in their order, with a few of any kind between them: most texts get far.
  constexpr const char* kOrder[] = {"BEGIN_DATA_FORMAT", "RGB_R",    "LAB_L", "END_DATA_FORMAT",
                                    "BEGIN_DATA",        "END_DATA", ""};
  std::mt19937 random(99);
  std::set<TargetRule> seen;
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (const char* keyword : kOrder) {
      if (random() % 16 != 0) text += keyword;
      text += kBetween[random() % 8];
      while (random() % 3 == 0) {
        text += std::string(kWords[random() % std::size(kWords)]) + kBetween[random() % 8];
      }
    }
    seen.insert(MeaningOf(text).rule);
    ASSERT_TRUE(MeansExactly(text)) << "round " << round << ":\n" << text;
  }
  EXPECT_EQ(seen.size(), 8u) << "every rule but the one on size";
}

TEST(HostileTarget, OfRandomBytesIsRefused) {
  std::mt19937 random(1);
  for (int round = 0; round < 500; ++round) {
    std::string text(random() % 400, '\0');
    for (char& c : text) c = static_cast<char>(random() % 256);
    EXPECT_EQ(Target(text).rule, TargetRule::NoFormat);
  }
}

TEST(HostileTarget, MayHave65536ValuesAnd64ForEachCharacter) {
  // 62 and 3 columns: 65 values a line against 64 for its one character, so that these lines are
  // the most.
  std::string fields = "\nRGB";
  for (int i = 1; i < 62; ++i) fields += " c";
  fields += " LAB_L\n";
  const std::size_t rest = Pieces{.fields = fields, .lines = ""}.Text().size();
  const std::size_t most = 65536 + 64 * rest;
  const Target held(Pieces{.fields = fields, .lines = std::string(most, '\n')}.Text());
  EXPECT_EQ(held.rule, TargetRule::Accepted);
  EXPECT_EQ(held.device.NumOfSamples, static_cast<int>(most));
  EXPECT_EQ(Target(Pieces{.fields = fields, .lines = std::string(most + 1, '\n')}.Text()).rule,
            TargetRule::TooLarge);
}

TEST(HostileTarget, ThatAnnouncesFarMoreThanItCanHoldIsRefused) {
  // Fifty thousand fields and as many lines: 2,500,000,000 values in a text of 150 KB.
  std::string fields = "\nRGB";
  for (int i = 1; i < 50000; ++i) fields += " c";
  const std::string text =
      Pieces{.fields = fields + " LAB_L\n", .lines = std::string(50000, '\n')}.Text();
  const Target target(text);
  EXPECT_EQ(target.rule, TargetRule::TooLarge);
  EXPECT_EQ(target.device.DataFormat, Sig("RGB "));
  EXPECT_EQ(target.device.NumOfColors, 50000);
  EXPECT_EQ(target.measured.DataFormat, Sig("Lab "));
  EXPECT_EQ(target.measured.NumOfColors, 3);
  for (const ProfileDataList* list : {&target.device, &target.measured}) {
    EXPECT_EQ(list->NumOfSamples, 0);
    EXPECT_EQ(list->Measured, 0);
    EXPECT_EQ(list->DataList, nullptr);
    const ProfileDataList copy = *list;
    EXPECT_TRUE(copy == *list);
  }

  Used used;
  EXPECT_EQ(ParseTarget(text, used.device, used.measured), TargetRule::TooLarge);
  ExpectKept(used.device, Sig("RGB "), 50000, 2, 1.5);
  ExpectKept(used.measured, Sig("Lab "), 3, 4, 100.5);
}

TEST(HostileTarget, ThatWouldWidenAnOldListBeyondAllBoundsIsNoShortageOfMemory) {
  std::string fields = "\nRGB";
  for (int i = 1; i < 600; ++i) fields += " c";
  const std::string text = Pieces{.fields = fields + " LAB_L\n"}.Text();
  ProfileDataList device;
  ProfileDataList measured;
  device.NumOfColors = 1;
  ASSERT_EQ(device.RefreshList(1000000), 1);
  const vkcl::ShortageWatch shortage;
  EXPECT_EQ(ParseTarget(text, device, measured), TargetRule::TooLarge);  // 4.8 GB
  EXPECT_FALSE(shortage.Met());
  EXPECT_EQ(device.NumOfColors, 1);
  EXPECT_EQ(device.NumOfSamples, 1000000);
}

}  // namespace
