// Where dots start, the scale of the large dot, and the ink limits in the VSD document.
#include <algorithm>
#include <limits>

#include "vsd/VSDDocuments.h"

namespace {

using vkcl::testing::BitsOf;
using vkcl::testing::BytesOf;
using vkcl::testing::CommaLocale;
using vkcl::testing::CommaThreads;
using vkcl::testing::Element;
using vkcl::testing::FileText;
using vkcl::testing::HexOf;
using vkcl::testing::kBitPatternCount;
using vkcl::testing::kBitPatterns;
using vkcl::testing::LimitsOf;
using vkcl::testing::MemoryLimit;
using vkcl::testing::OtherText;
using vkcl::testing::OtherTexts;
using vkcl::testing::Outline;
using vkcl::testing::PatternDigits;
using vkcl::testing::PatternValues;
using vkcl::testing::PythonView;
using vkcl::testing::Repeated;
using vkcl::testing::Sidecar;
using vkcl::testing::SingleLimits;
using vkcl::testing::TempDir;
using vkcl::testing::Utf8Host;
using vkcl::testing::VsdText;
using vkcl::testing::WithTwoDecimals;

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();
constexpr double kOld = -7.5;  // what arrays hold before a read

using Doubles = std::vector<double>;

std::string Starts(const std::string& count, const std::string& medium, const std::string& large) {
  return "<MediumStart><NumOfColors>" + count + "</NumOfColors><DataList>" + medium +
         "</DataList></MediumStart><LargeStart><DataList>" + large + "</DataList></LargeStart>";
}

std::string Scale(const std::string& count, const std::string& digits) {
  return "<LargeDotScale><NumOfColors>" + count + "</NumOfColors><DataList>" + digits +
         "</DataList></LargeDotScale>";
}

std::string Single(const std::string& count, const std::string& values) {
  return "<VK_VSD_SINGLE_INKLIMITS><Num_of_Channels>" + count + "</Num_of_Channels><Values>" +
         values + "</Values></VK_VSD_SINGLE_INKLIMITS>";
}

std::string SpotElement(const std::string& count, const std::string& name,
                        const std::string& values) {
  return "<VK_VSD_SPOT_SINGLE_INKLIMITS><Num_of_Channels>" + count +
         "</Num_of_Channels><ChannelS>" + name + "</ChannelS><Values>" + values +
         "</Values></VK_VSD_SPOT_SINGLE_INKLIMITS>";
}

constexpr char kOne[] = "000000000000f03f";
constexpr char kTwo[] = "0000000000000040";
constexpr char kThree[] = "0000000000000840";
constexpr char kFour[] = "0000000000001040";

/// A small write that makes a document modified.
int WriteLimit(VSDProfileHandler& handler) {
  return handler.WriteVKSingleInkLimits(SingleLimits({50}));
}
const std::string kLimit = Single("1", "50.00");

/// Results and values of one reading of starts or scale.
struct Dots {
  int result = -1;
  int count = 99;
  Doubles medium = Doubles(4, kOld);  // or the scale
  Doubles large = Doubles(4, kOld);
};

Dots ReadStarts(const std::string& elements) {
  Sidecar file(VsdText(elements));
  EXPECT_EQ(file.handler.IsValid(), 1);
  Dots dots;
  dots.result =
      file.handler.ReadMediumAndLargeStart(dots.medium.data(), dots.large.data(), dots.count);
  return dots;
}

Dots ReadScale(const std::string& elements) {
  Sidecar file(VsdText(elements));
  EXPECT_EQ(file.handler.IsValid(), 1);
  Dots dots;
  dots.result = file.handler.ReadLargeDotScale(dots.medium.data(), dots.count);
  return dots;
}

// Starts and scale: writing.

TEST(VSDDotStarts, AreWrittenAsTwoElementsTheSecondWithoutACount) {
  double medium[] = {1.0, -0.0};
  double large[] = {0.1, 100.0};
  Sidecar file;
  ASSERT_EQ(file.handler.WriteMediumAndLargeStart(medium, large, 2), 1);
  ASSERT_EQ(WriteLimit(file.handler), 1);
  EXPECT_EQ(file.SavedOutline(),
            "VK_VSD_PROFILE=\n"
            "  MediumStart=\n"
            "    NumOfColors=2\n"
            "    DataList=000000000000f03f0000000000000080\n"
            "  LargeStart=\n"
            "    DataList=9a9999999999b93f0000000000005940\n"
            "  VK_VSD_SINGLE_INKLIMITS=\n"
            "    Num_of_Channels=1\n"
            "    Values=50.00\n");
}

TEST(VSDLargeDotScale, IsWrittenAsOneElement) {
  double scale[] = {1.0, -0.0, 0.1};
  Sidecar file;
  ASSERT_EQ(file.handler.WriteLargeDotScale(scale, 3), 1);
  ASSERT_EQ(WriteLimit(file.handler), 1);
  EXPECT_EQ(file.SavedOutline(),
            "VK_VSD_PROFILE=\n"
            "  LargeDotScale=\n"
            "    NumOfColors=3\n"
            "    DataList=000000000000f03f00000000000000809a9999999999b93f\n"
            "  VK_VSD_SINGLE_INKLIMITS=\n"
            "    Num_of_Channels=1\n"
            "    Values=50.00\n");
}

TEST(VSDDotStarts, OfNoChannelsHaveEmptyTexts) {
  Sidecar file;
  double none = 0;
  ASSERT_EQ(file.handler.WriteMediumAndLargeStart(&none, &none, 0), 1);
  ASSERT_EQ(file.handler.WriteLargeDotScale(&none, 0), 1);
  ASSERT_EQ(WriteLimit(file.handler), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(Starts("0", "", "") + Scale("0", "") + kLimit)));
  const Dots starts = ReadStarts(Starts("0", "", ""));
  EXPECT_EQ(starts.result, 1);
  EXPECT_EQ(starts.count, 0);
  EXPECT_EQ(starts.medium, Doubles(4, kOld));
  EXPECT_EQ(starts.large, Doubles(4, kOld));
}

TEST(VSDDotStarts, OfNoChannelsNeedNoArrays) {
  Sidecar file;
  EXPECT_EQ(file.handler.WriteMediumAndLargeStart(nullptr, nullptr, 0), 1);
  EXPECT_EQ(file.handler.WriteLargeDotScale(nullptr, 0), 1);
}

// There is nothing to copy, and an array to leave alone.
TEST(VSDLargeDotScale, OfNoChannelsOrFewerLeavesTheArray) {
  for (const char* const number : {"0", "-1", "-2147483648"}) {
    Sidecar file(VsdText(Element("LargeDotScale", Element("NumOfColors", number) +
                                                      Element("DataList", "0000000000000840"))));
    double scale[] = {7};
    int count = 9;
    EXPECT_EQ(file.handler.ReadLargeDotScale(scale, count), 1) << number;
    EXPECT_EQ(std::to_string(count), number);
    EXPECT_EQ(scale[0], 7);
  }
}

TEST(VSDDotStarts, EveryBitOfAValueSurvives) {
  Doubles medium = PatternValues();
  Doubles large = PatternValues();
  std::reverse(large.begin(), large.end());
  Doubles scale = PatternValues();
  const int count = static_cast<int>(kBitPatternCount);
  Sidecar file;
  ASSERT_EQ(file.handler.WriteMediumAndLargeStart(medium.data(), large.data(), count), 1);
  ASSERT_EQ(file.handler.WriteLargeDotScale(scale.data(), count), 1);
  ASSERT_EQ(WriteLimit(file.handler), 1);
  std::string reversed;
  for (std::size_t i = kBitPatternCount; i-- > 0;) reversed += kBitPatterns[i].digits;
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(Starts("12", PatternDigits(), reversed) +
                                                 Scale("12", PatternDigits()) + kLimit)));
  VSDProfileHandler opened(AFilePath(file.path), 1);
  Doubles readMedium(kBitPatternCount);
  Doubles readLarge(kBitPatternCount);
  Doubles readScale(kBitPatternCount);
  int read = 0;
  ASSERT_EQ(opened.ReadMediumAndLargeStart(readMedium.data(), readLarge.data(), read), 1);
  EXPECT_EQ(read, count);
  ASSERT_EQ(opened.ReadLargeDotScale(readScale.data(), read), 1);
  EXPECT_EQ(read, count);
  for (std::size_t i = 0; i < kBitPatternCount; ++i) {
    const std::uint64_t bits = kBitPatterns[i].bits;
    EXPECT_EQ(BitsOf(&readMedium[i], 1)[0], bits) << kBitPatterns[i].digits;
    EXPECT_EQ(BitsOf(&readLarge[kBitPatternCount - 1 - i], 1)[0], bits);
    EXPECT_EQ(BitsOf(&readScale[i], 1)[0], bits);
  }
}

TEST(VSDDotStarts, DoNotMakeADocumentModified) {
  const std::string text = VsdText("<Unasked/>");
  const TempDir dir;
  const std::string path = dir.Write("paper.icc", BytesOf(text));
  double values[] = {1.0};
  double large[] = {2.0};
  {
    VSDProfileHandler handler(AFilePath(path), 1);
    ASSERT_EQ(handler.WriteMediumAndLargeStart(values, large, 1), 1);
    EXPECT_EQ(handler.SaveToFile(), 1);
    EXPECT_EQ(FileText(path), text);
  }
  EXPECT_EQ(FileText(path), text) << "nor does the end of the document save them";
  {
    VSDProfileHandler handler(AFilePath(path), 1);
    ASSERT_EQ(handler.WriteLargeDotScale(values, 1), 1);
    EXPECT_EQ(handler.SaveToFile(), 1);
    EXPECT_EQ(FileText(path), text);
  }
  EXPECT_EQ(FileText(path), text);
  {
    VSDProfileHandler handler(AFilePath(path), 0);
    ASSERT_EQ(handler.WriteMediumAndLargeStart(values, large, 1), 1);
    ASSERT_EQ(handler.WriteLargeDotScale(values, 1), 1);
  }
  EXPECT_EQ(FileText(path), text) << "nor a document that was begun anew";
}

TEST(VSDDotStarts, AreSavedWithAnotherWrite) {
  double medium[] = {1.0};
  double large[] = {2.0};
  double scale[] = {3.0};
  Sidecar file(VsdText("<Unasked/>"));
  ASSERT_EQ(file.handler.WriteMediumAndLargeStart(medium, large, 1), 1);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  EXPECT_EQ(file.Text(), VsdText("<Unasked/>"));
  ASSERT_EQ(WriteLimit(file.handler), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText("<Unasked/>" + Starts("1", kOne, kTwo) + kLimit)));
  ASSERT_EQ(WriteLimit(file.handler), 1);
  ASSERT_EQ(file.handler.WriteLargeDotScale(scale, 1), 1) << "behind the write";
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText("<Unasked/>" + Starts("1", kOne, kTwo) + kLimit +
                                                 kLimit + Scale("1", kThree))));
}

TEST(VSDDotStarts, AreReadBeforeTheyAreSaved) {
  double medium[] = {1.0, 2.0};
  double large[] = {3.0, 4.0};
  Sidecar file;
  ASSERT_EQ(file.handler.WriteMediumAndLargeStart(medium, large, 2), 1);
  double readMedium[2] = {};
  double readLarge[2] = {};
  int count = 0;
  ASSERT_EQ(file.handler.ReadMediumAndLargeStart(readMedium, readLarge, count), 1);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(readMedium[1], 2.0);
  EXPECT_EQ(readLarge[0], 3.0);
  EXPECT_EQ(readLarge[1], 4.0);
}

TEST(VSDDotStarts, WrittenTwiceStandTwiceAndTheFirstAreRead) {
  double one[] = {1.0};
  double two[] = {2.0};
  double three[] = {3.0};
  double four[] = {4.0};
  Sidecar file;
  ASSERT_EQ(file.handler.WriteMediumAndLargeStart(one, two, 1), 1);
  ASSERT_EQ(file.handler.WriteMediumAndLargeStart(three, four, 1), 1);
  ASSERT_EQ(file.handler.WriteLargeDotScale(one, 1), 1);
  ASSERT_EQ(file.handler.WriteLargeDotScale(two, 1), 1);
  ASSERT_EQ(WriteLimit(file.handler), 1);
  EXPECT_EQ(file.SavedOutline(),
            Outline(VsdText(Starts("1", kOne, kTwo) + Starts("1", kThree, kFour) +
                            Scale("1", kOne) + Scale("1", kTwo) + kLimit)));
  double medium = 0;
  double large = 0;
  int count = 0;
  ASSERT_EQ(file.handler.ReadMediumAndLargeStart(&medium, &large, count), 1);
  EXPECT_EQ(medium, 1.0);
  EXPECT_EQ(large, 2.0);
  ASSERT_EQ(file.handler.ReadLargeDotScale(&medium, count), 1);
  EXPECT_EQ(medium, 1.0);
}

TEST(VSDDotStarts, RefusedOnesDoNotHideThoseThatFollow) {
  double one[] = {1.0};
  Sidecar file;
  for (const int count : {-1, -2, kMin}) {
    EXPECT_EQ(file.handler.WriteMediumAndLargeStart(one, one, count), 0);
    EXPECT_EQ(file.handler.WriteLargeDotScale(one, count), 0);
    EXPECT_EQ(file.handler.WriteMediumAndLargeStart(nullptr, nullptr, count), 0);
    EXPECT_EQ(file.handler.WriteLargeDotScale(nullptr, count), 0);
  }
  for (const int count : {1, 1000, kMax}) {
    EXPECT_EQ(file.handler.WriteMediumAndLargeStart(nullptr, one, count), 0);
    EXPECT_EQ(file.handler.WriteMediumAndLargeStart(one, nullptr, count), 0);
    EXPECT_EQ(file.handler.WriteMediumAndLargeStart(nullptr, nullptr, count), 0);
    EXPECT_EQ(file.handler.WriteLargeDotScale(nullptr, count), 0);
  }
  ASSERT_EQ(file.handler.WriteMediumAndLargeStart(one, one, 1), 1);
  ASSERT_EQ(file.handler.WriteLargeDotScale(one, 1), 1);
  double medium = 0;
  double large = 0;
  int count = 0;
  ASSERT_EQ(file.handler.ReadMediumAndLargeStart(&medium, &large, count), 1);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(medium, 1.0);
  EXPECT_EQ(large, 1.0);
  ASSERT_EQ(file.handler.ReadLargeDotScale(&medium, count), 1);
  EXPECT_EQ(count, 1);
}

// Starts and scale: reading.

TEST(VSDDotStarts, AreReadFromADocument) {
  const Dots dots =
      ReadStarts("<LargeStart><NumOfColors>7</NumOfColors><DataList>" + std::string(kThree) +
                 kFour + "</DataList></LargeStart><MediumStart><DataList>" + kOne + kTwo +
                 "</DataList><NumOfColors>2</NumOfColors></MediumStart>");
  EXPECT_EQ(dots.result, 1) << "in any order, and the count of MediumStart applies";
  EXPECT_EQ(dots.count, 2);
  EXPECT_EQ(dots.medium, (Doubles{1, 2, kOld, kOld}));
  EXPECT_EQ(dots.large, (Doubles{3, 4, kOld, kOld}));
}

TEST(VSDLargeDotScale, IsReadFromADocument) {
  const Dots dots = ReadScale(Scale(" 2", std::string(kOne) + kTwo));
  EXPECT_EQ(dots.result, 1);
  EXPECT_EQ(dots.count, 2);
  EXPECT_EQ(dots.medium, (Doubles{1, 2, kOld, kOld}));
}

TEST(VSDDotStarts, AMissingElementEndsTheReadBehindWhatWasRead) {
  const std::string count = "<NumOfColors>2</NumOfColors>";
  const std::string data = "<DataList>" + std::string(kOne) + kTwo + "</DataList>";
  const std::string large = "<LargeStart>" + data + "</LargeStart>";
  const auto medium = [](const std::string& inner) {
    return "<MediumStart>" + inner + "</MediumStart>";
  };
  const Doubles read = {1, 2, kOld, kOld};
  const Doubles old(4, kOld);
  const struct {
    std::string elements;
    int count;
    Doubles medium;
  } rows[] = {
      {"", 99, old},
      {large, 99, old},
      {medium("") + large, 99, old},
      {medium(data) + large, 99, old},
      {medium("") + medium(count + data) + large, 99, old},
      {medium(count) + large, 2, old},
      {medium(count + data), 2, read},
      {medium(count + data) + "<LargeStart/>", 2, read},
      {medium(count + data) + "<LargeStart/>" + large, 2, read},
      {medium(count + data) + "<largeStart>" + data + "</largeStart>", 2, read},
      {medium(count + data + large), 2, read},
  };
  for (const auto& row : rows) {
    const Dots dots = ReadStarts(row.elements);
    EXPECT_EQ(dots.result, 0) << row.elements;
    EXPECT_EQ(dots.count, row.count) << row.elements;
    EXPECT_EQ(dots.medium, row.medium) << row.elements;
    EXPECT_EQ(dots.large, old) << row.elements;
  }
}

TEST(VSDLargeDotScale, AMissingElementEndsTheReadBehindWhatWasRead) {
  const Doubles old(4, kOld);
  for (const std::string elements : {"", "<LargeDotScale/>",
                                     "<LargeDotScale><DataList>000000000000f03f</DataList>"
                                     "</LargeDotScale>"}) {
    const Dots dots = ReadScale(elements);
    EXPECT_EQ(dots.result, 0);
    EXPECT_EQ(dots.count, 99);
    EXPECT_EQ(dots.medium, old);
  }
  const Dots dots =
      ReadScale("<LargeDotScale><NumOfColors>2</NumOfColors></LargeDotScale>" + Scale("1", kOne));
  EXPECT_EQ(dots.result, 0);
  EXPECT_EQ(dots.count, 2);
  EXPECT_EQ(dots.medium, old);
}

TEST(VSDDotStarts, BytesWithoutDigitsKeepTheirValues) {
  const struct {
    std::string digits;
    std::vector<std::uint64_t> bits;  // over 0x8877665544332211 twice
  } rows[] = {
      {"", {0x8877665544332211, 0x8877665544332211}},
      {"f", {0x8877665544332211, 0x8877665544332211}},
      {"ff", {0x88776655443322FF, 0x8877665544332211}},
      {"fff", {0x88776655443322FF, 0x8877665544332211}},
      {"ffffffffffffff", {0x88FFFFFFFFFFFFFF, 0x8877665544332211}},
      {"0000000000000000", {0, 0x8877665544332211}},
      {"000000000000000001", {0, 0x8877665544332201}},
      {Repeated("00", 15), {0, 0x8800000000000000}},
      {Repeated("00", 16), {0, 0}},
      {Repeated("00", 16) + "no digits", {0, 0}},
      {Repeated("00", 100), {0, 0}},
      {"ABCDEFABCDEFABCD", {0xCDABEFCDABEFCDAB, 0x8877665544332211}},
      {"\n  0000\n  000000 000000\n", {0, 0x8877665544332211}},
  };
  constexpr std::uint64_t kBefore = 0x8877665544332211;
  const double before = std::bit_cast<double>(kBefore);
  for (const auto& row : rows) {
    Sidecar file(VsdText(Starts("2", row.digits, row.digits) + Scale("2", row.digits)));
    Doubles medium(3, before);
    Doubles large(3, before);
    Doubles scale(3, before);
    int count = 0;
    EXPECT_EQ(file.handler.ReadMediumAndLargeStart(medium.data(), large.data(), count), 1)
        << row.digits;
    EXPECT_EQ(file.handler.ReadLargeDotScale(scale.data(), count), 1) << row.digits;
    for (const Doubles* values : {&medium, &large, &scale}) {
      EXPECT_EQ(BitsOf(values->data(), 2), row.bits) << row.digits;
      EXPECT_EQ(BitsOf(&(*values)[2], 1)[0], kBefore) << "never beyond the count";
    }
  }
}

TEST(VSDDotStarts, TextsThatAreNoDigitsFail) {
  for (const std::string bad : {"zz", "000000000000f03g", "0x00", "+1", "-1", "1.0"}) {
    const Dots medium = ReadStarts(Starts("1", bad, kOne));
    EXPECT_EQ(medium.result, 0) << bad;
    EXPECT_EQ(medium.count, 1);
    EXPECT_EQ(medium.large, Doubles(4, kOld));
    const Dots large = ReadStarts(Starts("1", kOne, bad));
    EXPECT_EQ(large.result, 0) << bad;
    EXPECT_EQ(large.medium, (Doubles{1, kOld, kOld, kOld}));
    EXPECT_EQ(ReadScale(Scale("1", bad)).result, 0) << bad;
  }
}

TEST(VSDDotStarts, OfANegativeCountAreNone) {
  for (const int count : {-1, -2, kMin}) {
    const Dots starts = ReadStarts(Starts(std::to_string(count), kOne, kTwo));
    EXPECT_EQ(starts.count, count) << "a negative count is stored";
    EXPECT_EQ(starts.medium, Doubles(4, kOld));
    EXPECT_EQ(starts.large, Doubles(4, kOld));
    const Dots scale = ReadScale(Scale(std::to_string(count), kOne));
    EXPECT_EQ(scale.count, count);
    EXPECT_EQ(scale.medium, Doubles(4, kOld));
  }
}

TEST(VSDDotStarts, OfAHugeCountFillOnlyWhatHasDigits) {
  for (const std::string count : {"2147483647", "268435456", "536870912", "99999999999"}) {
    const MemoryLimit limit;
    const Dots starts = ReadStarts(Starts(count, kOne, kTwo));
    EXPECT_EQ(starts.medium, (Doubles{1, kOld, kOld, kOld})) << count;
    EXPECT_EQ(starts.large, (Doubles{2, kOld, kOld, kOld})) << count;
    const Dots scale = ReadScale(Scale(count, kOne));
    EXPECT_EQ(scale.medium, (Doubles{1, kOld, kOld, kOld})) << count;
  }
}

TEST(VSDDotStarts, CountsAreReadUpToTheFirstCharacterThatIsNoDigit) {
  EXPECT_EQ(ReadStarts(Starts("\n 1 \n", kOne, kTwo)).count, 1);
  EXPECT_EQ(ReadStarts(Starts("1.9", kOne, kTwo)).count, 1);
  for (const std::string none : {"", "x", "-", " "}) {
    const Dots dots = ReadStarts(Starts(none, kOne, kTwo));
    EXPECT_EQ(dots.result, 1);
    EXPECT_EQ(dots.count, 0);
    EXPECT_EQ(dots.medium, Doubles(4, kOld));
    EXPECT_EQ(ReadScale(Scale(none, kOne)).count, 0);
  }
}

TEST(VSDDotStarts, TheirNumberCanBeAskedForWithoutArrays) {
  Sidecar file(VsdText(Starts("2", std::string(kOne) + kTwo, std::string(kThree) + kFour) +
                       Scale("3", kOne)));
  int count = 0;
  EXPECT_EQ(file.handler.ReadMediumAndLargeStart(nullptr, nullptr, count), 1);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(file.handler.ReadLargeDotScale(nullptr, count), 1);
  EXPECT_EQ(count, 3);
  double values[2] = {kOld, kOld};
  EXPECT_EQ(file.handler.ReadMediumAndLargeStart(nullptr, values, count), 1);
  EXPECT_EQ(values[1], 4.0);
  EXPECT_EQ(file.handler.ReadMediumAndLargeStart(values, nullptr, count), 1);
  EXPECT_EQ(values[1], 2.0);
}

TEST(VSDDotStarts, FillNoMoreThanTheRoomThatIsStated) {
  Sidecar file(
      VsdText(Starts("3", std::string(kOne) + kTwo + kThree, std::string(kFour) + kThree + kTwo) +
              Scale("3", std::string(kTwo) + kThree + kFour)));
  const Doubles medium = {1, 2, 3};
  const Doubles large = {4, 3, 2};
  const Doubles scale = {2, 3, 4};
  for (const int room : {kMin, -1, 0, 1, 2, 3, 4, kMax}) {
    const std::size_t filled = static_cast<std::size_t>(std::clamp(room, 0, 3));
    const auto part = [&](const Doubles& of) {
      Doubles expected(4, kOld);
      std::copy_n(of.begin(), filled, expected.begin());
      return expected;
    };
    Dots dots;
    int count = 99;
    const int starts =
        file.handler.ReadMediumAndLargeStart(dots.medium.data(), dots.large.data(), room, count);
    EXPECT_EQ(dots.medium, part(medium)) << room;
    EXPECT_EQ(dots.large, part(large)) << room;
    if (room >= 3) {
      EXPECT_EQ(starts, 1) << room;
      EXPECT_EQ(count, 3) << room;
    }
    dots = Dots();
    const int scales = file.handler.ReadLargeDotScale(dots.medium.data(), room, count);
    EXPECT_EQ(dots.medium, part(scale)) << room;
    if (room >= 3) {
      EXPECT_EQ(scales, 1) << room;
      EXPECT_EQ(count, 3) << room;
    }
  }
}

// Single ink limits.

/// A record whose limits are 1000, 1001, and so on, and whose count is 77.
VKSingleInkLimitWithLinRef UsedLimits() {
  VKSingleInkLimitWithLinRef limits;
  limits.version = 71;
  limits.size = 72;
  limits.count = 77;
  for (int i = 0; i < 16; ++i) limits.limits[i] = 1000 + i;
  return limits;
}

/// The limits of UsedLimits with these from `first` on.
Doubles UsedWith(std::size_t first, const Doubles& limits) {
  Doubles all = LimitsOf(UsedLimits());
  std::copy(limits.begin(), limits.end(), all.begin() + static_cast<std::ptrdiff_t>(first));
  return all;
}

/// Reads single ink limits into a used record.
VKSingleInkLimitWithLinRef ReadSingle(const std::string& elements, int expected = 1) {
  Sidecar file(VsdText(elements));
  EXPECT_EQ(file.handler.IsValid(), 1);
  VKSingleInkLimitWithLinRef limits = UsedLimits();
  EXPECT_EQ(file.handler.ReadVKSingleInkLimits(limits), expected) << elements;
  EXPECT_EQ(limits.version, 71);
  EXPECT_EQ(limits.size, 72);
  return limits;
}

/// The text of `Values` that a record of single ink limits gives.
std::string SingleText(const Doubles& limits) {
  Sidecar file;
  EXPECT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits(limits)), 1);
  const std::string saved = file.SavedOutline();
  const std::string head = "VK_VSD_PROFILE=\n  VK_VSD_SINGLE_INKLIMITS=\n    Num_of_Channels=" +
                           std::to_string(limits.size()) + "\n    Values=";
  EXPECT_TRUE(saved.starts_with(head)) << saved;
  return saved.substr(head.size(), saved.size() - head.size() - 1);
}

TEST(VSDSingleInkLimits, AreWrittenAsTwoElements) {
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits({100, 95.5, 80})), 1);
  EXPECT_EQ(file.SavedOutline(),
            "VK_VSD_PROFILE=\n"
            "  VK_VSD_SINGLE_INKLIMITS=\n"
            "    Num_of_Channels=3\n"
            "    Values=100.00;95.50;80.00\n");
  VSDProfileHandler opened(AFilePath(file.path), 1);
  VKSingleInkLimitWithLinRef limits = UsedLimits();
  ASSERT_EQ(opened.ReadVKSingleInkLimits(limits), 1);
  EXPECT_EQ(limits.count, 3);
  EXPECT_EQ(LimitsOf(limits), UsedWith(0, {100, 95.5, 80}));
}

TEST(VSDSingleInkLimits, OfADefaultRecordAreSixteenHundreds) {
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKSingleInkLimits(VKSingleInkLimitWithLinRef()), 1);
  EXPECT_EQ(file.SavedOutline(),
            "VK_VSD_PROFILE=\n"
            "  VK_VSD_SINGLE_INKLIMITS=\n"
            "    Num_of_Channels=16\n"
            "    Values=100.00;100.00;100.00;100.00;100.00;100.00;100.00;100.00;"
            "100.00;100.00;100.00;100.00;100.00;100.00;100.00;100.00\n");
}

TEST(VSDSingleInkLimits, AreWrittenWithTwoDecimals) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(SingleText({0}), "0.00");
  EXPECT_EQ(SingleText({-0.0}), "-0.00");
  EXPECT_EQ(SingleText({0.125, 0.375}), "0.12;0.38") << "ties go to the even digit";
  EXPECT_EQ(SingleText({99.994, 99.996, 99.999}), "99.99;100.00;100.00");
  EXPECT_EQ(SingleText({-1.5, 1e-300, 12345678.9}), "-1.50;0.00;12345678.90");
  EXPECT_EQ(SingleText({kInfinity, -kInfinity, 1}), "inf;-inf;1.00");
  EXPECT_EQ(SingleText({1e22}), "10000000000000000000000.00");
}

TEST(VSDSingleInkLimits, OfNoChannelsHaveAnEmptyText) {
  EXPECT_EQ(SingleText({}), "");
  const VKSingleInkLimitWithLinRef limits = ReadSingle(Single("0", ""));
  EXPECT_EQ(limits.count, 0);
  EXPECT_EQ(LimitsOf(limits), LimitsOf(UsedLimits()));
}

TEST(VSDSingleInkLimits, OfACountThatTheRecordCannotHoldAreRefused) {
  for (const int count : {-1, -16, 17, 100, kMin, kMax}) {
    Sidecar file;
    VKSingleInkLimitWithLinRef limits;
    limits.count = count;
    EXPECT_EQ(file.handler.WriteVKSingleInkLimits(limits), 0) << count;
    EXPECT_EQ(file.SavedOutline(), "no file");
    ASSERT_EQ(WriteLimit(file.handler), 1);
    ASSERT_EQ(file.handler.ReadVKSingleInkLimits(limits), 1) << "nothing stands before it";
    EXPECT_EQ(limits.count, 1);
  }
}

TEST(VSDSingleInkLimits, ALongTextIsCutAtTheLastWholeValue) {
  const std::string big = "1000000000000000.00";
  std::string expected = big;
  for (int i = 1; i < 12; ++i) expected += ";" + big;  // 12 x 19 and 11 separators
  EXPECT_EQ(expected.size(), 239u);
  EXPECT_EQ(SingleText(Doubles(16, 1e15)), expected);
  EXPECT_EQ(SingleText({1, 2, 1e300, 3}), "1.00;2.00") << "and what is behind the cut is left out";
  EXPECT_EQ(SingleText({1e300, 1}), "");
  EXPECT_EQ(SingleText(Doubles(16, -std::numeric_limits<double>::max())), "");
}

TEST(VSDSingleInkLimits, ATextHoldsAtMost255Characters) {
  const std::string ten = Repeated("10000000000000000000.00;", 10);
  ASSERT_EQ(ten.size(), 240u);
  Doubles limits(10, 1e19);
  limits.push_back(1e11);
  EXPECT_EQ(SingleText(limits), ten + "100000000000.00") << "255 characters";
  limits.push_back(1);
  EXPECT_EQ(SingleText(limits), ten + "100000000000.00");
  limits[10] = 1e12;
  EXPECT_EQ(SingleText(limits), ten.substr(0, 239)) << "256 characters";
  limits[10] = 1e10;
  EXPECT_EQ(SingleText(limits), ten + "10000000000.00") << "254 characters and no room for more";
}

TEST(VSDSingleInkLimits, CutTextsAreAlignedWithTheLastChannelWhenRead) {
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits(Doubles(16, 1e15))), 1);
  VKSingleInkLimitWithLinRef limits = UsedLimits();
  ASSERT_EQ(file.handler.ReadVKSingleInkLimits(limits), 1);
  EXPECT_EQ(limits.count, 16);
  EXPECT_EQ(LimitsOf(limits), UsedWith(4, Doubles(12, 1e15)));
}

TEST(VSDSingleInkLimits, WrittenTwiceStandTwiceAndTheFirstAreRead) {
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits({1, 2})), 1);
  ASSERT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits({3})), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(Single("2", "1.00;2.00") + Single("1", "3.00"))));
  VKSingleInkLimitWithLinRef limits = UsedLimits();
  ASSERT_EQ(file.handler.ReadVKSingleInkLimits(limits), 1);
  EXPECT_EQ(LimitsOf(limits), UsedWith(0, {1, 2}));
}

TEST(VSDSingleInkLimits, AMissingElementEndsTheReadBehindTheCount) {
  const auto in = [](const std::string& inner) {
    return "<VK_VSD_SINGLE_INKLIMITS>" + inner + "</VK_VSD_SINGLE_INKLIMITS>";
  };
  for (const std::string& elements :
       {std::string(), in(""), in("<Values>1.00</Values>"),
        in("<num_of_channels>1</num_of_channels><Values>1.00</Values>"),
        in("") + Single("1", "1.00"), SpotElement("1", "Spot", "1.00")}) {
    const VKSingleInkLimitWithLinRef limits = ReadSingle(elements, 0);
    EXPECT_EQ(limits.count, 77) << elements;
    EXPECT_EQ(LimitsOf(limits), LimitsOf(UsedLimits())) << elements;
  }
  const VKSingleInkLimitWithLinRef limits =
      ReadSingle(in("<Num_of_Channels>3</Num_of_Channels>") + Single("1", "1.00"), 0);
  EXPECT_EQ(limits.count, 3);
  EXPECT_EQ(LimitsOf(limits), LimitsOf(UsedLimits()));
}

TEST(VSDSingleInkLimits, TheFirstElementOfANameIsRead) {
  const VKSingleInkLimitWithLinRef limits = ReadSingle(
      "<VK_VSD_SINGLE_INKLIMITS><Values>1;2</Values><Num_of_Channels>2</Num_of_Channels>"
      "<Values>3;4</Values><Num_of_Channels>1</Num_of_Channels></VK_VSD_SINGLE_INKLIMITS>");
  EXPECT_EQ(limits.count, 2);
  EXPECT_EQ(LimitsOf(limits), UsedWith(0, {1, 2}));
}

/// How texts of values are read, for records of single limits and of spot colours alike.
struct ValuesRow {
  const char* count;
  const char* values;
  int number;         ///< of channels, as it is stored
  std::size_t first;  ///< channel of the first limit that is stored
  Doubles stored;
};
const ValuesRow kValuesRows[] = {
    {"3", "100.00;95.50;80.00", 3, 0, {100, 95.5, 80}},
    // Fewer values than channels are those of the last channels.
    {"4", "70.00;60.00", 4, 2, {70, 60}},
    {"4", "60.00", 4, 3, {60}},
    {"16", "1.00", 16, 15, {1}},
    // Of more values than channels the first are dropped.
    {"2", "1;2;3;4", 2, 0, {3, 4}},
    {"1", "1;2;3;4", 1, 0, {4}},
    {"1", ";;;4", 1, 0, {4}},
    {"0", "1;2;3", 0, 0, {}},
    {"0", "", 0, 0, {}},
    // What is left of the last separator that is not the first character is one text.
    {"3", "", 3, 2, {0}},
    {"3", ";95.50;80.00", 3, 1, {0, 80}},
    {"3", ";80.00", 3, 2, {0}},
    {"3", ";", 3, 2, {0}},
    {"3", ";;", 3, 1, {0, 0}},
    {"3", ";;5", 3, 1, {0, 5}},
    {"3", "1;;3", 3, 0, {1, 0, 3}},
    {"3", "1;2;", 3, 0, {1, 2, 0}},
    {"4", "1;2;;", 4, 0, {1, 2, 0, 0}},
    // Blanks and line feeds before numbers, and what stands behind them.
    {"3", " 100.00; 95.50;\n   80.00\n", 3, 0, {100, 95.5, 80}},
    {"3", "100.00 ;95.50 % ;80.00 percent", 3, 0, {100, 95.5, 80}},
    {"3", "abc;1e2;-2.5e-1", 3, 0, {0, 100, -0.25}},
    {"3", "95,50;+1;.5", 3, 0, {95, 1, 0.5}},
    {"2", "1:2;3", 2, 0, {1, 3}},
    {" 3x", "1;2;3", 3, 0, {1, 2, 3}},
    {"x", "1;2;3", 0, 0, {}},
    {"", "1;2;3", 0, 0, {}},
    {"-1", "1;2;3", -1, 0, {}},
    {"-2147483648", "1;2;3", kMin, 0, {}},
};

TEST(VSDSingleInkLimits, ValuesAreAlignedWithTheLastChannel) {
  for (const ValuesRow& row : kValuesRows) {
    const VKSingleInkLimitWithLinRef limits = ReadSingle(Single(row.count, row.values));
    EXPECT_EQ(limits.count, row.number);
    EXPECT_EQ(LimitsOf(limits), UsedWith(row.first, row.stored)) << row.count << ": " << row.values;
  }
}

TEST(VSDSingleInkLimits, OfMoreThanSixteenChannelsFillTheSlotsThatThereAre) {
  Doubles sixteen;
  std::string twenty;
  for (int i = 1; i <= 20; ++i) {
    if (i <= 16) sixteen.push_back(i);
    twenty += (i == 1 ? "" : ";") + std::to_string(i);
  }
  VKSingleInkLimitWithLinRef limits = ReadSingle(Single("20", twenty));
  EXPECT_EQ(limits.count, 20);
  EXPECT_EQ(LimitsOf(limits), sixteen);
  limits = ReadSingle(Single("20", "18;19"));
  EXPECT_EQ(LimitsOf(limits), LimitsOf(UsedLimits())) << "they are those of channels 18 and 19";
  limits = ReadSingle(Single("18", "1;2;3;4"));
  EXPECT_EQ(LimitsOf(limits), UsedWith(14, {1, 2}));
  limits = ReadSingle(Single("17", "0;" + twenty.substr(0, twenty.find(";17"))));
  EXPECT_EQ(LimitsOf(limits)[0], 0);
  EXPECT_EQ(LimitsOf(limits)[15], 15);
  for (const int huge : {kMax, 1000000000}) {
    limits = ReadSingle(Single(std::to_string(huge), twenty));
    EXPECT_EQ(limits.count, huge);
    EXPECT_EQ(LimitsOf(limits), LimitsOf(UsedLimits()));
  }
}

TEST(VSDSingleInkLimits, OfAVeryLongTextAreReadInReasonableTime) {
  const std::string text = Repeated("1;", 400000) + "2";
  const VKSingleInkLimitWithLinRef limits = ReadSingle(Single("16", text));
  EXPECT_EQ(LimitsOf(limits)[15], 2);
  EXPECT_EQ(LimitsOf(limits)[0], 1);
  EXPECT_EQ(LimitsOf(ReadSingle(Single("16", Repeated(";", 400000))))[15], 0);
}

// Ink limits of a spot colour.

void SetSpot(VKSpotSingleInkLimit& spot, const char* name, Doubles limits) {
  spot.SetData(static_cast<int>(limits.size()), CString(name), limits.data());
}

Doubles SpotLimitsOf(const VKSpotSingleInkLimit& spot) {
  if (spot.limits == nullptr || spot.count < 0) return {};
  return Doubles(spot.limits, spot.limits + spot.count);
}

/// The text of `Values` that a record of a spot colour gives.
std::string SpotText(const Doubles& limits) {
  Sidecar file;
  VKSpotSingleInkLimit spot;
  SetSpot(spot, "S", limits);
  EXPECT_EQ(file.handler.WriteVKSpotSIL(spot), 1);
  const std::string saved = file.SavedOutline();
  const std::string head =
      "VK_VSD_PROFILE=\n  VK_VSD_SPOT_SINGLE_INKLIMITS=\n    Num_of_Channels=" +
      std::to_string(limits.size()) + "\n    ChannelS=S\n    Values=";
  EXPECT_TRUE(saved.starts_with(head)) << saved;
  return saved.substr(head.size(), saved.size() - head.size() - 1);
}

TEST(VSDSpotInkLimits, AreWrittenAsThreeElements) {
  Sidecar file;
  VKSpotSingleInkLimit spot;
  SetSpot(spot, "Spot 1", {100, 95.5, 80});
  ASSERT_EQ(file.handler.WriteVKSpotSIL(spot), 1);
  EXPECT_EQ(file.SavedOutline(),
            "VK_VSD_PROFILE=\n"
            "  VK_VSD_SPOT_SINGLE_INKLIMITS=\n"
            "    Num_of_Channels=3\n"
            "    ChannelS=Spot 1\n"
            "    Values=100.00;95.50;80.00\n");
}

TEST(VSDSpotInkLimits, AreReadWithATabBehindTheName) {
  Sidecar file;
  VKSpotSingleInkLimit written;
  SetSpot(written, "Spot 1", {100, 95.5, 80});
  ASSERT_EQ(file.handler.WriteVKSpotSIL(written), 1);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  VSDProfileHandler opened(AFilePath(file.path), 1);
  VKSpotSingleInkLimit spot;
  spot.version = 5;
  ASSERT_EQ(opened.ReadVKSpotSIL(spot), 1);
  EXPECT_EQ(spot.version, 5);
  EXPECT_EQ(spot.count, 3);
  EXPECT_STREQ(spot.name, "Spot 1\t");
  EXPECT_EQ(SpotLimitsOf(spot), (Doubles{100, 95.5, 80}));
  EXPECT_EQ(spot.size, 7 + 8 * 3 + 12) << "the size that goes with name and limits";
}

TEST(VSDSpotInkLimits, EveryReadAddsATab) {
  for (const auto& [text, name] : {std::pair{"Spot\t", "Spot\t\t"},
                                   {"", "\t"},
                                   {" Spot ", " Spot \t"},
                                   {"\t", "\t\t"},
                                   {"a;b", "a;b\t"}}) {
    Sidecar file(VsdText(SpotElement("1", text, "1.00")));
    VKSpotSingleInkLimit spot;
    ASSERT_EQ(file.handler.ReadVKSpotSIL(spot), 1);
    EXPECT_STREQ(spot.name, name);
    Sidecar next;
    ASSERT_EQ(next.handler.WriteVKSpotSIL(spot), 1);
    VKSpotSingleInkLimit again;
    ASSERT_EQ(next.handler.ReadVKSpotSIL(again), 1);
    EXPECT_EQ(std::string(again.name), std::string(name) + "\t");
  }
}

TEST(VSDSpotInkLimits, AReadDoesNotReleaseWhatTheRecordHeld) {
  Sidecar file(VsdText(SpotElement("2", "Spot 1", "1;2")));
  VKSpotSingleInkLimit spot;
  SetSpot(spot, "Old name", {11, 12, 13});
  char* const oldName = spot.name;
  double* const oldLimits = spot.limits;
  ASSERT_EQ(file.handler.ReadVKSpotSIL(spot), 1);
  ASSERT_FALSE(spot.name == oldName);
  ASSERT_FALSE(spot.limits == oldLimits);
  EXPECT_STREQ(oldName, "Old name");
  EXPECT_EQ(Doubles(oldLimits, oldLimits + 3), (Doubles{11, 12, 13}));
  EXPECT_STREQ(spot.name, "Spot 1\t");
  EXPECT_EQ(SpotLimitsOf(spot), (Doubles{1, 2}));
  VKSpotSingleInkLimit owner;  // releases them
  owner.name = oldName;
  owner.limits = oldLimits;
}

TEST(VSDSpotInkLimits, AMissingElementEndsTheReadBehindWhatWasRead) {
  const auto in = [](const std::string& inner) {
    return "<VK_VSD_SPOT_SINGLE_INKLIMITS>" + inner + "</VK_VSD_SPOT_SINGLE_INKLIMITS>";
  };
  const std::string count = "<Num_of_Channels>1</Num_of_Channels>";
  const std::string name = "<ChannelS>New</ChannelS>";
  const std::string values = "<Values>5</Values>";
  const struct {
    std::string elements;
    int count;
    bool nameIsNew;
  } rows[] = {
      {"", 2, false},
      {Single("1", "5"), 2, false},
      {in(""), 2, false},
      {in(name + values), 2, false},
      {in("") + SpotElement("1", "New", "5"), 2, false},
      {in(count + values), 1, false},
      {in(count + "<Channels>New</Channels>" + values), 1, false},
      {in(count + name), 1, true},
      // The array that is there has two limits.
      {in("<Num_of_Channels>2</Num_of_Channels>" + values), 2, false},
      {in("<Num_of_Channels>3</Num_of_Channels>" + values), 2, false},
      {in("<Num_of_Channels>3</Num_of_Channels>" + name), 2, true},
      {in("<Num_of_Channels>65537</Num_of_Channels>" + name + values), 2, false},
      {in("<Num_of_Channels>-3</Num_of_Channels>" + values), -3, false},
  };
  for (const auto& row : rows) {
    Sidecar file(VsdText(row.elements));
    VKSpotSingleInkLimit spot;
    SetSpot(spot, "Old", {11, 12});
    VKSpotSingleInkLimit held;  // what the record held
    held.name = spot.name;
    held.limits = spot.limits;
    EXPECT_EQ(file.handler.ReadVKSpotSIL(spot), 0) << row.elements;
    EXPECT_EQ(spot.count, row.count) << row.elements;
    EXPECT_STREQ(held.name, "Old");
    EXPECT_EQ(held.limits[1], 12);
    if (row.nameIsNew) {
      EXPECT_STREQ(spot.name, "New\t");
    } else {
      EXPECT_TRUE(spot.name == held.name) << row.elements;
    }
    EXPECT_TRUE(spot.limits == held.limits) << row.elements;
    if (spot.name == held.name) spot.name = nullptr;
    if (spot.limits == held.limits) spot.limits = nullptr;
  }
}

TEST(VSDSpotInkLimits, OfUpTo65536ChannelsAreRead) {
  for (const int count : {0, 1, 65536, 65537}) {
    Sidecar file(VsdText(SpotElement(std::to_string(count), "Spot", "5;7")));
    VKSpotSingleInkLimit spot;
    EXPECT_EQ(file.handler.ReadVKSpotSIL(spot), count <= 65536 ? 1 : 0);
    EXPECT_EQ(spot.count, count <= 65536 ? count : 0);
    EXPECT_EQ(spot.size, count <= 65536 ? 12 + 5 + 8 * count : 0);
    if (count == 65536) {
      EXPECT_EQ(spot.limits[65535], 7);
      EXPECT_EQ(spot.limits[65534], 5);
      EXPECT_EQ(spot.limits[65533], 0);
    }
  }
}

TEST(VSDSpotInkLimits, AFailedReadCountsNoLimitsWhereThereAreNone) {
  for (const char* const inner : {"<Num_of_Channels>3</Num_of_Channels>",
                                  "<Num_of_Channels>3</Num_of_Channels><ChannelS>New</ChannelS>",
                                  "<Num_of_Channels>65537</Num_of_Channels><ChannelS>New</ChannelS>"
                                  "<Values>1</Values>"}) {
    Sidecar file(VsdText("<VK_VSD_SPOT_SINGLE_INKLIMITS>" + std::string(inner) +
                         "</VK_VSD_SPOT_SINGLE_INKLIMITS>"));
    VKSpotSingleInkLimit spot;
    spot.count = 7;  // of an array that is not there
    EXPECT_EQ(file.handler.ReadVKSpotSIL(spot), 0);
    EXPECT_EQ(spot.count, 0);
    EXPECT_EQ(spot.limits, nullptr);
  }
}

TEST(VSDSpotInkLimits, ValuesAreAlignedWithTheLastChannel) {
  for (const ValuesRow& row : kValuesRows) {
    Sidecar file(VsdText(SpotElement(row.count, "Spot", row.values)));
    VKSpotSingleInkLimit spot;
    ASSERT_EQ(file.handler.ReadVKSpotSIL(spot), 1) << row.count << ": " << row.values;
    EXPECT_EQ(spot.count, row.number);
    EXPECT_STREQ(spot.name, "Spot\t");
    if (row.number <= 0) continue;
    Doubles expected(static_cast<std::size_t>(row.number), 0);  // a new array has no earlier values
    std::copy(row.stored.begin(), row.stored.end(),
              expected.begin() + static_cast<std::ptrdiff_t>(row.first));
    EXPECT_EQ(SpotLimitsOf(spot), expected) << row.count << ": " << row.values;
  }
}

TEST(VSDSpotInkLimits, OfThirtySixHundredsFitAndOfThirtySevenTheFirst) {
  const std::string most = Repeated("100.00;", 35) + "100.00";
  ASSERT_EQ(most.size(), 251u);
  EXPECT_EQ(SpotText(Doubles(35, 100)), Repeated("100.00;", 34) + "100.00");
  EXPECT_EQ(SpotText(Doubles(36, 100)), most);
  EXPECT_EQ(SpotText(Doubles(37, 100)), most);
  EXPECT_EQ(SpotText(Doubles(1000, 100)), most);
  EXPECT_EQ(SpotText(Doubles(51, 1)), Repeated("1.00;", 50) + "1.00");
  EXPECT_EQ(SpotText(Doubles(52, 1)), Repeated("1.00;", 50) + "1.00") << "259 characters";
  Doubles limits(35, 100);
  limits.push_back(1e6);
  EXPECT_EQ(SpotText(limits), Repeated("100.00;", 35) + "1000000.00") << "255 characters";
  limits.back() = 1e7;
  EXPECT_EQ(SpotText(limits), Repeated("100.00;", 34) + "100.00") << "256 characters";
  limits.push_back(1);
  EXPECT_EQ(SpotText(limits), Repeated("100.00;", 34) + "100.00") << "no value is left out amid";
}

TEST(VSDSpotInkLimits, CutTextsAreAlignedWithTheLastChannelWhenRead) {
  Sidecar file;
  VKSpotSingleInkLimit written;
  SetSpot(written, "Spot", Doubles(37, 100));
  ASSERT_EQ(file.handler.WriteVKSpotSIL(written), 1);
  VKSpotSingleInkLimit spot;
  ASSERT_EQ(file.handler.ReadVKSpotSIL(spot), 1);
  EXPECT_EQ(spot.count, 37);
  Doubles expected(37, 100);
  expected[0] = 0;
  EXPECT_EQ(SpotLimitsOf(spot), expected);
}

TEST(VSDSpotInkLimits, OfManyChannelsAreReadWhole) {
  std::string text = "0";
  Doubles expected = {0};
  for (int i = 1; i < 300; ++i) {
    text += ";" + std::to_string(i);
    expected.push_back(i);
  }
  Sidecar file(VsdText(SpotElement("300", "Spot", text)));
  VKSpotSingleInkLimit spot;
  ASSERT_EQ(file.handler.ReadVKSpotSIL(spot), 1);
  EXPECT_EQ(SpotLimitsOf(spot), expected);
}

TEST(VSDSpotInkLimits, OfNoChannelsHaveAnEmptyText) {
  Sidecar file;
  VKSpotSingleInkLimit written;
  written.name = new char[5]{'S', 'p', 'o', 't', 0};
  ASSERT_EQ(file.handler.WriteVKSpotSIL(written), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(SpotElement("0", "Spot", ""))));
  VKSpotSingleInkLimit spot;
  ASSERT_EQ(file.handler.ReadVKSpotSIL(spot), 1);
  EXPECT_EQ(spot.count, 0);
  EXPECT_STREQ(spot.name, "Spot\t");
}

TEST(VSDSpotInkLimits, WithoutANameHaveAnEmptyOne) {
  Sidecar file;
  VKSpotSingleInkLimit written;
  written.count = 1;
  written.limits = new double[1]{5};
  ASSERT_EQ(file.handler.WriteVKSpotSIL(written), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(SpotElement("1", "", "5.00"))));
}

TEST(VSDSpotInkLimits, WithoutLimitsOrOfNegativeCountAreNoHarm) {
  for (const int count : {1, 1000, kMax, -1, kMin}) {
    Sidecar file;
    VKSpotSingleInkLimit written;
    written.count = count;
    written.name = new char[2]{'S', 0};
    if (file.handler.WriteVKSpotSIL(written) == 1) {
      EXPECT_EQ(file.SavedOutline(), Outline(VsdText(SpotElement(std::to_string(count), "S", ""))));
    } else {
      EXPECT_EQ(file.SavedOutline(), "no file");
    }
  }
}

TEST(VSDSpotInkLimits, ACountThatTheTextDoesNotBearOutTakesNoMemory) {
  for (const int count : {kMax, 1000000000, 268435456, 536870912}) {
    const MemoryLimit limit;
    Sidecar file(VsdText(SpotElement(std::to_string(count), "Spot", "1;2")));
    VKSpotSingleInkLimit spot;
    const int read = file.handler.ReadVKSpotSIL(spot);
    EXPECT_EQ(read, 0) << count;
    EXPECT_EQ(spot.count, 0) << "there is no array";
    EXPECT_EQ(spot.limits, nullptr);
  }
}

TEST(VSDSpotInkLimits, LongNamesAreKeptWhole) {
  const std::string name(10000, 'n');
  Sidecar file;
  VKSpotSingleInkLimit written;
  SetSpot(written, name.c_str(), {1});
  ASSERT_EQ(file.handler.WriteVKSpotSIL(written), 1);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  VSDProfileHandler opened(AFilePath(file.path), 1);
  VKSpotSingleInkLimit spot;
  ASSERT_EQ(opened.ReadVKSpotSIL(spot), 1);
  EXPECT_EQ(std::string(spot.name), name + "\t");
}

TEST(VSDSpotInkLimits, NamesOfOtherLanguagesAndNoTextsSurviveTheFile) {
  const Utf8Host host;
  std::string names;
  Sidecar all;
  for (const OtherText& text : OtherTexts()) {
    VKSpotSingleInkLimit written;
    SetSpot(written, text.bytes.c_str(), {1});
    Sidecar file;
    ASSERT_EQ(file.handler.WriteVKSpotSIL(written), 1);
    ASSERT_EQ(all.handler.WriteVKSpotSIL(written), 1);
    ASSERT_EQ(file.handler.SaveToFile(), 1);
    VSDProfileHandler opened(AFilePath(file.path), 1);
    ASSERT_EQ(opened.IsValid(), 1) << text.what;
    VKSpotSingleInkLimit spot;
    ASSERT_EQ(opened.ReadVKSpotSIL(spot), 1) << text.what;
    EXPECT_EQ(HexOf(spot.name), HexOf(text.bytes + "\t")) << text.what;
    if (text.isPlainText) names += "ChannelS " + HexOf(text.bytes) + "\n";
  }
  ASSERT_EQ(all.handler.SaveToFile(), 1);
  const std::optional<std::string> view = PythonView(all.path);
  if (!view) GTEST_SKIP() << "no python3";
  ASSERT_NE(*view, "malformed");
  std::size_t at = 0;
  std::string seen;
  for (const OtherText& text : OtherTexts()) {
    at = view->find("\nChannelS ", at) + 1;
    ASSERT_NE(at, 0u);
    const std::size_t end = view->find('\n', at);
    if (text.isPlainText) seen += view->substr(at, end - at) + "\n";
    at = end;
  }
  EXPECT_EQ(seen, names);
}

TEST(VSDSpotInkLimits, WrittenTwiceStandTwiceAndTheFirstIsRead) {
  Sidecar file;
  VKSpotSingleInkLimit first;
  VKSpotSingleInkLimit second;
  SetSpot(first, "First", {1});
  SetSpot(second, "Second", {2, 3});
  ASSERT_EQ(file.handler.WriteVKSpotSIL(first), 1);
  ASSERT_EQ(file.handler.WriteVKSpotSIL(second), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(SpotElement("1", "First", "1.00") +
                                                 SpotElement("2", "Second", "2.00;3.00"))));
  VKSpotSingleInkLimit spot;
  ASSERT_EQ(file.handler.ReadVKSpotSIL(spot), 1);
  EXPECT_STREQ(spot.name, "First\t");
  EXPECT_EQ(spot.count, 1);
}

TEST(VSDSpotInkLimits, SingleLimitsAreOthers) {
  Sidecar file(VsdText(SpotElement("1", "Spot", "5") + Single("1", "6")));
  VKSpotSingleInkLimit spot;
  VKSingleInkLimitWithLinRef single;
  ASSERT_EQ(file.handler.ReadVKSpotSIL(spot), 1);
  ASSERT_EQ(file.handler.ReadVKSingleInkLimits(single), 1);
  EXPECT_EQ(spot.limits[0], 5);
  EXPECT_EQ(LimitsOf(single)[0], 6);
}

TEST(VSDSpotInkLimits, AWriteModifies) {
  Sidecar file(VsdText(""));
  VKSpotSingleInkLimit spot;
  SetSpot(spot, "S", {1});
  ASSERT_EQ(file.handler.WriteVKSpotSIL(spot), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(SpotElement("1", "S", "1.00"))));
}

// Other locales.

TEST(VSDInkLimits, AreWrittenAndReadWithAPointWhateverTheLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.works()) << "the build makes the locale from Debian's package locales";
  const CommaThreads others;
  double start[] = {1.0};
  const std::string expected =
      Outline(VsdText(Starts("1", kOne, kOne) + Scale("1", kOne) +
                      Single("3", "100.00;95.50;1234.25") + SpotElement("2", "S", "0.50;99.25")));
  for (int round = 0; round < 50; ++round) {
    Sidecar file;
    VKSpotSingleInkLimit written;
    SetSpot(written, "S", {0.5, 99.25});
    ASSERT_EQ(file.handler.WriteMediumAndLargeStart(start, start, 1), 1);
    ASSERT_EQ(file.handler.WriteLargeDotScale(start, 1), 1);
    ASSERT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits({100, 95.5, 1234.25})), 1);
    ASSERT_EQ(file.handler.WriteVKSpotSIL(written), 1);
    ASSERT_EQ(file.SavedOutline(), expected);
    VSDProfileHandler opened(AFilePath(file.path), 1);
    VKSingleInkLimitWithLinRef limits = UsedLimits();
    ASSERT_EQ(opened.ReadVKSingleInkLimits(limits), 1);
    ASSERT_EQ(LimitsOf(limits), UsedWith(0, {100, 95.5, 1234.25}));
    VKSpotSingleInkLimit spot;
    ASSERT_EQ(opened.ReadVKSpotSIL(spot), 1);
    ASSERT_EQ(SpotLimitsOf(spot), (Doubles{0.5, 99.25}));
    EXPECT_EQ(WithTwoDecimals(95.5), "95,50") << "the caller's locale is as before";
  }
}

TEST(VSDInkLimits, ACommaEndsANumberWhateverTheLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.works());
  EXPECT_EQ(LimitsOf(ReadSingle(Single("2", "95,50;80.25"))), UsedWith(0, {95, 80.25}));
}

}  // namespace
