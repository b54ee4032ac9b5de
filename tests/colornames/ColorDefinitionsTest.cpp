#include "colornames/ColorDefinitions.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <latch>
#include <new>
#include <ostream>
#include <thread>
#include <vector>

#include "colornames/ColorModes.h"
#include "support/Allocations.h"
#include "support/Installation.h"

namespace {

using vkcl::testing::AllocationFailsAt;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::DefinitionLine;
using vkcl::testing::ExecutableAt;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::InOwnProcess;
using vkcl::testing::Installation;
using vkcl::testing::OpenHandles;
using vkcl::testing::Shortage;

struct Entry {
  std::string name;
  std::uint32_t flag = 0;
  std::uint32_t secondHex = 0;
  std::int32_t firstDecimal = 0;
  std::int32_t secondDecimal = 0;

  friend bool operator==(const Entry&, const Entry&) = default;
};

void PrintTo(const Entry& entry, std::ostream* out) {
  *out << "{" << ::testing::PrintToString(entry.name) << std::hex << ", 0x" << entry.flag << ", 0x"
       << entry.secondHex << std::dec << ", " << entry.firstDecimal << ", " << entry.secondDecimal
       << "}";
}

using Entries = std::vector<Entry>;

/// The sequences side by side; they must be of one length.
Entries EntriesOf(const ColorDefinitions& definitions) {
  Entries entries;
  const std::size_t count = definitions.names.size();
  const std::vector<std::size_t> lengths = {definitions.flags.size(), definitions.secondHex.size(),
                                            definitions.firstDecimal.size(),
                                            definitions.secondDecimal.size()};
  EXPECT_EQ(lengths, std::vector<std::size_t>(4, count));
  if (lengths != std::vector<std::size_t>(4, count)) return entries;
  for (std::size_t i = 0; i < count; ++i) {
    entries.push_back({definitions.names[i].str(), definitions.flags[i], definitions.secondHex[i],
                       definitions.firstDecimal[i], definitions.secondDecimal[i]});
  }
  return entries;
}

Entries Load() {
  ColorDefinitions definitions;
  LoadColorDefinitions(definitions);
  return EntriesOf(definitions);
}

/// What is loaded from a file of that content.
Entries LoadText(std::string_view text) {
  const Installation installation(text);
  return Load();
}

const Entries kNone;

AStringArray NamesOf(int mode) {
  AStringArray names;
  GetStandardColorNamesByColorMode(mode, names);
  return names;
}

AStringArray DarkNamesOf(int mode) {
  AStringArray names;
  GetDarkNames(mode, names);
  return names;
}

int Mode(std::uint32_t bits) { return static_cast<int>(bits); }

// Where the file is.

TEST(ColorDefinitionsPath, IsBesideTheFolderOfTheProgram) {
  EXPECT_EQ(ColorDefinitionsPath("C:\\Apps\\Bin\\host.exe", '\\'), "C:\\Apps//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("D:\\One Two\\Three\\Bin\\x64\\host.exe", '\\'),
            "D:\\One Two\\Three\\Bin//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("/opt/maker/bin/host", '/'), "/opt/maker//Program//Colors.ini");
}

TEST(ColorDefinitionsPath, KeepsTheSeparatorOfADriveRoot) {
  EXPECT_EQ(ColorDefinitionsPath("C:\\host.exe", '\\'), "C:\\//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("C:\\Bin\\host.exe", '\\'), "C:\\//Program//Colors.ini");
}

TEST(ColorDefinitionsPath, KeepsASeparatorThatBeginsThePath) {
  EXPECT_EQ(ColorDefinitionsPath("/host", '/'), "///Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("/bin/host", '/'), "///Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("\\host.exe", '\\'), "\\//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("\\Bin\\host.exe", '\\'), "\\//Program//Colors.ini");
}

TEST(ColorDefinitionsPath, OfAProgramThatTheSystemDoesNotTellHasNoBase) {
  EXPECT_EQ(ColorDefinitionsPath("", '\\'), "//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("", '/'), "//Program//Colors.ini");
}

TEST(ColorDefinitionsPath, IsNotCutWhereThereIsNoSeparator) {
  EXPECT_EQ(ColorDefinitionsPath("host.exe", '\\'), "host.exe//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("Bin\\host.exe", '\\'), "Bin//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("C:host.exe", '\\'), "C:host.exe//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("bin/host", '/'), "bin//Program//Colors.ini");
}

// The other kind of slash is a character like any other.
TEST(ColorDefinitionsPath, IsCutAtTheGivenSeparatorAlone) {
  EXPECT_EQ(ColorDefinitionsPath("C:/Apps\\Bin\\host.exe", '\\'), "C:/Apps//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("C:\\Apps/Bin/host.exe", '\\'), "C:\\//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("/opt/a\\b/bin/host", '/'), "/opt/a\\b//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("/opt\\bin\\host", '/'), "///Program//Colors.ini");
}

TEST(ColorDefinitionsPath, IsCutAtTheLastOfTwoSeparators) {
  EXPECT_EQ(ColorDefinitionsPath("C:\\Apps\\\\Bin\\host.exe", '\\'),
            "C:\\Apps\\//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("C:\\Apps\\Bin\\\\host.exe", '\\'),
            "C:\\Apps\\Bin//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("\\\\server\\share\\Bin\\host.exe", '\\'),
            "\\\\server\\share//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("\\\\server\\host.exe", '\\'), "\\//Program//Colors.ini");
}

TEST(ColorDefinitionsPath, OfAFolderIsThatOfItsParent) {
  EXPECT_EQ(ColorDefinitionsPath("C:\\Apps\\Bin\\", '\\'), "C:\\Apps//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("C:\\", '\\'), "C:\\//Program//Colors.ini");
  EXPECT_EQ(ColorDefinitionsPath("/", '/'), "///Program//Colors.ini");
}

TEST(ColorDefinitionsPath, HasNoLimitOfLength) {
  const std::string folder = "/" + std::string(6000, 'a');
  EXPECT_EQ(ColorDefinitionsPath(folder + "/bin/host", '/'), folder + "//Program//Colors.ini");
}

#if !defined(_WIN32)
// Short names are a habit of one system; elsewhere the character has no meaning.
TEST(ColorDefinitionsPath, KeepsATilde) {
  EXPECT_EQ(ColorDefinitionsPath("/home/~user/bin/host", '/'), "/home/~user//Program//Colors.ini");
}

TEST(LoadColorDefinitions, TakesATildeInThePathAsItIs) {
  const vkcl::testing::TempDir dir;
  std::filesystem::create_directories(dir.path() / "SHORT~1" / "Program");
  dir.Write("SHORT~1/Program/Colors.ini", {'V', ' ', '1', ' ', '2', ' ', '3', ' ', '4'});
  const ExecutableAt executable(dir.File("SHORT~1/Bin/host"));
  EXPECT_EQ(Load(), Entries({{"V", 1, 2, 3, 4}}));
}
#endif

// What is read.

TEST(LoadColorDefinitions, ReadsAnEntryALine) {
  EXPECT_EQ(LoadText("Violet 10000 0 0 0\nOrange2 20000 0 0 0\n"),
            Entries({{"Violet", 0x10000, 0, 0, 0}, {"Orange2", 0x20000, 0, 0, 0}}));
}

TEST(LoadColorDefinitions, KeepsAllFiveValues) {
  EXPECT_EQ(LoadText("Violet 10000 ABCDEF 12 -34\nB 40000000 7 2147483647 -2147483648\n"),
            Entries({{"Violet", 0x10000, 0xABCDEF, 12, -34},
                     {"B", 0x40000000, 7, INT32_MAX, INT32_MIN}}));
}

TEST(LoadColorDefinitions, TakesTheLastLineWithoutALineFeed) {
  EXPECT_EQ(LoadText("A 10000 1 2 3\nB 20000 4 5 6"),
            Entries({{"A", 0x10000, 1, 2, 3}, {"B", 0x20000, 4, 5, 6}}));
  EXPECT_EQ(LoadText("A 10000 1 2 3"), Entries({{"A", 0x10000, 1, 2, 3}}));
  EXPECT_EQ(LoadText("A 10000 1 2 3\nB 20000 4 5"), Entries({{"A", 0x10000, 1, 2, 3}}));
}

TEST(LoadColorDefinitions, ReadsHexadecimalNumbersWithOrWithoutAPrefix) {
  EXPECT_EQ(LoadText("A 0x10000 0X2fF 0 0\nB fFfFfFfF FFFFFFFF 0 0\nC 10 20 0 0\n"),
            Entries({{"A", 0x10000, 0x2FF, 0, 0},
                     {"B", 0xFFFFFFFF, 0xFFFFFFFF, 0, 0},
                     {"C", 0x10, 0x20, 0, 0}}));
}

TEST(LoadColorDefinitions, IgnoresLeadingZeros) {
  EXPECT_EQ(LoadText("A 000000000000000010000 0x0000000000000000002 007 -0000000000000000008\n"
                     "B 0 0x0 00 -0\n"),
            Entries({{"A", 0x10000, 2, 7, -8}, {"B", 0, 0, 0, 0}}));
}

// A hexadecimal number with a sign is taken modulo 2^32.
TEST(LoadColorDefinitions, TakesSignsOfAllNumbers) {
  EXPECT_EQ(LoadText("A +10000 -1 +5 -7\nB -0x10 +0xF -0 +0\nC -ffffffff -80000000 1 1\n"),
            Entries({{"A", 0x10000, 0xFFFFFFFF, 5, -7},
                     {"B", 0xFFFFFFF0, 0xF, 0, 0},
                     {"C", 1, 0x80000000, 1, 1}}));
}

TEST(LoadColorDefinitions, TakesAnyWhiteSpaceBetweenTheFields) {
  EXPECT_EQ(LoadText("\t  A\t10000   1\v2\f3\n \r B\r20000\r \r4 5\t6 \t \n"),
            Entries({{"A", 0x10000, 1, 2, 3}, {"B", 0x20000, 4, 5, 6}}));
}

TEST(LoadColorDefinitions, TakesLinesThatEndWithCarriageReturnAndLineFeed) {
  EXPECT_EQ(LoadText("A 10000 1 2 3\r\n\r\nB 20000 4 5\r\nC 40000 7 8 9\r\n"),
            Entries({{"A", 0x10000, 1, 2, 3}, {"C", 0x40000, 7, 8, 9}}));
}

TEST(LoadColorDefinitions, PassesOverAByteOrderMark) {
  EXPECT_EQ(LoadText("\xEF\xBB\xBF"
                     "A 10000 1 2 3\nB 20000 4 5 6\n"),
            Entries({{"A", 0x10000, 1, 2, 3}, {"B", 0x20000, 4, 5, 6}}));
  EXPECT_EQ(LoadText("\xEF\xBB\xBF"), kNone);
}

// A carriage return alone ends no line: what stands behind the five values is not looked at.
TEST(LoadColorDefinitions, EndsLinesAtLineFeedsAlone) {
  EXPECT_EQ(LoadText("A 10000 1 2 3\rB 20000 4 5 6\rC 40000 7 8 9\n"),
            Entries({{"A", 0x10000, 1, 2, 3}}));
}

TEST(LoadColorDefinitions, NeverTakesAValueFromTheNextLine) {
  EXPECT_EQ(LoadText("A 10000 1 2\n3\nB 20000 4 5 6\n"), Entries({{"B", 0x20000, 4, 5, 6}}));
  EXPECT_EQ(LoadText("A\n10000 1 2 3\n"), kNone);
}

// A sign begins the next number, so nothing need stand before it.
TEST(LoadColorDefinitions, TakesNumbersThatTouch) {
  EXPECT_EQ(LoadText("A 10000-1 5-3\nB 1+2+3+4\n"),
            Entries({{"A", 0x10000, 0xFFFFFFFF, 5, -3}, {"B", 1, 2, 3, 4}}));
}

TEST(LoadColorDefinitions, IgnoresWhatFollowsTheFiveValues) {
  EXPECT_EQ(LoadText("A 10000 1 2 3 ; a remark\nB 20000 4 5 6rest\nC 40000 7 8 9.75\n"
                     "D 80000 A B C\nE 80000 A 11 0x5\nF 100000 1 2 3 4 5 6 7\n"),
            Entries({{"A", 0x10000, 1, 2, 3},
                     {"B", 0x20000, 4, 5, 6},
                     {"C", 0x40000, 7, 8, 9},
                     {"E", 0x80000, 0xA, 11, 0},
                     {"F", 0x100000, 1, 2, 3}}));
}

TEST(LoadColorDefinitions, SkipsLinesOfFewerThanFiveValues) {
  for (const char* line : {"", " ", "\t\v\f\r", "[Colors]", "A", "A 10000", "A 10000 0",
                           "A 10000 0 0", "Violet 10000 0 0", "10000 0 0 0"}) {
    SCOPED_TRACE(line);
    EXPECT_EQ(LoadText(line), kNone);
    EXPECT_EQ(LoadText(std::string(line) + "\nB 20000 4 5 6\n"),
              Entries({{"B", 0x20000, 4, 5, 6}}));
  }
}

TEST(LoadColorDefinitions, SkipsLinesWithAFieldThatIsNoNumber) {
  for (const char* line :
       {"A xyz 1 2 3",         "A 10000 xyz 2 3",   "A 10000 1 x 3",    "A 10000 1 2 x",
        "A g 1 2 3",           "A 1g 2 3 4",        "A 10000 1 A B",    "A 10000 1 2.5 3",
        "A 10000 1 0x2 3",     "A 10000,1,2,3",     "A 10000, 1, 2, 3", "A - 1 2 3",
        "A + 1 2 3",           "A 10000 1 - 3",     "A 10000 1 2 -",    "A 10000 1 2 +",
        "A 10000 1 2 --3",     "A -+1 1 2 3",       "A 10000 1 +-2 3",  "A # 10000 1 2 3",
        "# Ink 10000 1 2 3",   "A \"10000\" 1 2 3", "A 0xg 1 2 3",      "A x10000 1 2 3",
        "A 10000 1 2 \xD9\xA3"}) {
    SCOPED_TRACE(line);
    EXPECT_EQ(LoadText(line), kNone);
  }
}

// Letters up to F are digits, so a name of two words may be one of a single word and its flag.
TEST(LoadColorDefinitions, TakesAWordThatIsAHexadecimalNumberForOne) {
  EXPECT_EQ(
      LoadText("A B 10000 1 2 3\nDark Fade 1 2 3 4\nDeep Faded 1 2 3 4\n"),
      Entries({{"A", 0xB, 0x10000, 1, 2}, {"Dark", 0xFADE, 1, 2, 3}, {"Deep", 0xFADED, 1, 2, 3}}));
}

// A prefix without a digit behind it is no number.
TEST(LoadColorDefinitions, SkipsLinesWithAPrefixAlone) {
  EXPECT_EQ(LoadText("A 0x 1 2 3\n"), kNone);
  EXPECT_EQ(LoadText("A 1 0X 2 3\n"), kNone);
  EXPECT_EQ(LoadText("A -0x 1 2 3\n"), kNone);
  EXPECT_EQ(LoadText("A 0x 1 2 3 4\n"), kNone);
}

TEST(LoadColorDefinitions, SkipsLinesWithANumberThatDoesNotFit) {
  for (const char* line :
       {"A 100000000 1 2 3", "A 0x1FFFFFFFF 1 2 3", "A 10000 100000000 2 3", "A -100000000 1 2 3",
        "A 10000000000000000 1 2 3", "A 123456789012345678901234567890 1 2 3",
        "A 10000 1 2147483648 3", "A 10000 1 2 2147483648", "A 10000 1 -2147483649 3",
        "A 10000 1 2 -2147483649", "A 10000 1 4294967296 3", "A 10000 1 18446744073709551616 3",
        "A 10000 1 2 99999999999999999999999999"}) {
    SCOPED_TRACE(line);
    EXPECT_EQ(LoadText(std::string(line) + "\nB 20000 4 5 6\n"),
              Entries({{"B", 0x20000, 4, 5, 6}}));
  }
}

// There are neither comments nor sections: such lines are only skipped when they are no entries.
TEST(LoadColorDefinitions, KnowsNoCommentsAndNoSections) {
  EXPECT_EQ(LoadText("; colours\n;A 10000 1 2 3\n[Ink] 20000 4 5 6\n# a b 7 8\n// 1 2 3 4\n"),
            Entries({{";A", 0x10000, 1, 2, 3},
                     {"[Ink]", 0x20000, 4, 5, 6},
                     {"#", 0xA, 0xB, 7, 8},
                     {"//", 1, 2, 3, 4}}));
}

TEST(LoadColorDefinitions, KeepsNamesAsTheyStand) {
  EXPECT_EQ(
      LoadText("\"Violet\" 1 0 0 0\nA*,%s 2 0 0 0\n\xC3\xA4rger 4 0 0 0\nV\xA0i\x85o 8 0 0 0\n"
               "\xEF\xBB\xBF"
               "BOM 10 0 0 0\n0x10 20 0 0 0\n"),
      Entries({{"\"Violet\"", 1},
               {"A*,%s", 2},
               {"\xC3\xA4rger", 4},
               {"V\xA0i\x85o", 8},
               {"\xEF\xBB\xBF"
                "BOM",
                0x10},
               {"0x10", 0x20}}));
}

// The 256th character of a name must not be taken for a number.
TEST(LoadColorDefinitions, TakesNamesOfUpTo255Characters) {
  const std::string longest(255, 'a');
  EXPECT_EQ(LoadText(longest + " 10000 1 2 3\n"), Entries({{longest, 0x10000, 1, 2, 3}}));
  EXPECT_EQ(LoadText(longest + "a 10000 1 2 3\nB 20000 4 5 6\n"),
            Entries({{"B", 0x20000, 4, 5, 6}}));
  EXPECT_EQ(LoadText(longest + "1 1 2 3\n"), kNone);
  std::string text(100000, 'a');
  text += " 10000 1 2 3\nB 20000 4 5 6";
  EXPECT_EQ(LoadText(text), Entries({{"B", 0x20000, 4, 5, 6}}));
}

TEST(LoadColorDefinitions, TakesLinesOfAnyLength) {
  const std::string gap(70000, ' ');
  EXPECT_EQ(LoadText(gap + "A" + gap + "10000" + gap + "1" + gap + "2" + gap + "3" + gap +
                     "\nB 20000 4 5 6" + gap + "\nC 40000 7 8 9\n"),
            Entries({{"A", 0x10000, 1, 2, 3}, {"B", 0x20000, 4, 5, 6}, {"C", 0x40000, 7, 8, 9}}));
}

// A line is a text, so it ends at a zero byte.
TEST(LoadColorDefinitions, ReadsALineUpToAZeroByte) {
  using std::string_literals::operator""s;
  EXPECT_EQ(LoadText("A 10000 1 2 3\0 4\nB\0 20000 4 5 6\nC 40000 7 8 \0 9\nD 80000 1 2 3\0004\n"s),
            Entries({{"A", 0x10000, 1, 2, 3}, {"D", 0x80000, 1, 2, 3}}));
  EXPECT_EQ(LoadText("\0A 10000 1 2 3\n"s), kNone);
}

TEST(LoadColorDefinitions, TakesDuplicatesAndBuiltInNamesAsTheyStand) {
  EXPECT_EQ(LoadText("A 1 0 0 0\nA 1 0 0 0\nCyan 2 0 0 0\nB 1 0 0 0\nC 30000 0 0 0\nD 0 0 0 0\n"),
            Entries({{"A", 1}, {"A", 1}, {"Cyan", 2}, {"B", 1}, {"C", 0x30000}, {"D", 0}}));
}

TEST(LoadColorDefinitions, ReadsManyEntriesInFileOrder) {
  std::string text;
  Entries expected;
  for (int i = 0; i < 20000; ++i) {
    text += "Ink" + std::to_string(i) + " 10000 0 " + std::to_string(i) + " " + std::to_string(-i) +
            (i % 3 == 0 ? "\n\nno ink\n" : "\r\n");
    expected.push_back({"Ink" + std::to_string(i), 0x10000, 0, i, -i});
  }
  EXPECT_TRUE(LoadText(text) == expected);
}

// No sensible file is that long; its front holds what can be used.
TEST(LoadColorDefinitions, TakesTheFrontOfAHugeFile) {
  const Installation installation("A 10000 1 2 3\n");
  std::filesystem::resize_file(installation.DefinitionsPath(), 20u << 20);
  EXPECT_EQ(Load(), Entries({{"A", 0x10000, 1, 2, 3}}));
}

TEST(LoadColorDefinitions, TakesTheLinesThatEndWithinSixteenMebibytes) {
  const std::string a = "A 10000 1 2 3\n";
  const std::string b = "B 20000 1 2 3\n";
  const std::string filler((16u << 20) - a.size() - b.size() - 1, 'x');
  EXPECT_EQ(LoadText(a + filler + "\n" + b + "C 40000 1 2 3\n"),
            Entries({{"A", 0x10000, 1, 2, 3}, {"B", 0x20000, 1, 2, 3}}));
  EXPECT_EQ(LoadText(a + filler + "x\n" + b + "C 40000 1 2 3\n"),
            Entries({{"A", 0x10000, 1, 2, 3}}));
}

TEST(LoadColorDefinitions, ClearsWhatWasThere) {
  ColorDefinitions definitions;
  const auto fill = [&] {
    definitions.names = {"X", "Y"};
    definitions.flags = {1};
    definitions.secondHex = {2, 3, 4};
    definitions.firstDecimal = {5};
    definitions.secondDecimal = {6, 7};
  };
  fill();
  {
    const Installation installation("A 10000 1 2 3\n");
    LoadColorDefinitions(definitions);
    EXPECT_EQ(EntriesOf(definitions), Entries({{"A", 0x10000, 1, 2, 3}}));
    LoadColorDefinitions(definitions);
    EXPECT_EQ(EntriesOf(definitions), Entries({{"A", 0x10000, 1, 2, 3}}));
  }
  fill();
  const Installation withoutFile;
  LoadColorDefinitions(definitions);
  EXPECT_EQ(EntriesOf(definitions), kNone);
}

TEST(LoadColorDefinitions, WithoutAFileGivesNothing) {
  const Installation installation;
  EXPECT_EQ(Load(), kNone);
  std::filesystem::create_directories(installation.DefinitionsPath().parent_path());
  EXPECT_EQ(Load(), kNone);
  installation.Define("");
  EXPECT_EQ(Load(), kNone);
  installation.Define("\n\n\n");
  EXPECT_EQ(Load(), kNone);
}

TEST(LoadColorDefinitions, FromAFolderGivesNothing) {
  const Installation installation;
  std::filesystem::create_directories(installation.DefinitionsPath());
  const int handles = OpenHandles();
  EXPECT_EQ(Load(), kNone);
  EXPECT_EQ(OpenHandles(), handles);
}

TEST(LoadColorDefinitions, AsksForTheProgramEachTime) {
  const Installation first("A 10000 1 2 3\n");
  EXPECT_EQ(Load(), Entries({{"A", 0x10000, 1, 2, 3}}));
  const Installation second("B 20000 4 5 6\n");
  EXPECT_EQ(Load(), Entries({{"B", 0x20000, 4, 5, 6}}));
}

TEST(LoadColorDefinitions, LooksBelowTheRootWhenTheSystemDoesNotTellTheProgram) {
  if (std::filesystem::exists("//Program//Colors.ini")) GTEST_SKIP() << "somebody's file is there";
  const ExecutableAt nowhere("");
  const CallLog log;
  EXPECT_EQ(Load(), kNone);
  EXPECT_EQ(log.Count(CallKind::Program), 1u);
}

TEST(LoadColorDefinitions, ReleasesTheFile) {
  const Installation installation("A 10000 1 2 3\n");
  const int handles = OpenHandles();
  EXPECT_EQ(Load().size(), 1u);
  EXPECT_EQ(OpenHandles(), handles);
}

/// A file that is larger than any reasonable buffer.
std::string LongFile(int lines, Entries& entries) {
  std::string text;
  for (int i = 0; i < lines; ++i) {
    text += "Ink" + std::to_string(i) + " 10000 0 0 0\n";
    entries.push_back({"Ink" + std::to_string(i), 0x10000, 0, 0, 0});
  }
  return text;
}

// Whatever fails, the whole lines that were read by then are kept, and nothing else happens.
TEST(LoadColorDefinitions, KeepsTheLinesBeforeAReadError) {
  Entries all;
  const std::string text = LongFile(20000, all);
  const Installation installation(text);
  const int handles = OpenHandles();
  bool reached = true;
  for (std::size_t which = 0; reached; ++which) {
    ASSERT_LT(which, 1000u);
    SCOPED_TRACE(which);
    const CallLog log;
    Entries loaded;
    {
      const FaultAt fault(which, Fault::Error);
      loaded = Load();
      reached = FaultAt::Reached();
    }
    std::size_t whole = 0;
    for (std::uint64_t i = 0; i < log.Bytes(CallKind::Read); ++i) whole += text[i] == '\n';
    ASSERT_EQ(loaded.size(), whole);
    EXPECT_TRUE(std::equal(loaded.begin(), loaded.end(), all.begin()));
    EXPECT_EQ(OpenHandles(), handles);
    if (!reached) {
      EXPECT_EQ(loaded.size(), all.size());
    }
  }
}

TEST(LoadColorDefinitions, GoesOnAfterAShortOrInterruptedRead) {
  Entries all;
  const std::string text = LongFile(5000, all);
  const Installation installation(text);
  for (const Fault kind : {Fault::Short, Fault::Interrupted, Fault::FailedClose}) {
    bool reached = true;
    for (std::size_t which = 0; reached; ++which) {
      ASSERT_LT(which, 1000u);
      SCOPED_TRACE(which);
      const FaultAt fault(which, kind);
      EXPECT_TRUE(Load() == all);
      reached = FaultAt::Reached();
    }
  }
}

// Names by index.

struct Named {
  int index;
  const char* name;
};

constexpr Named kIndexes[] = {
    {0, "Cyan"},          {1, "Magenta"},   {2, "Yellow"},       {3, "Black"},
    {4, "LCyan"},         {5, "LMagenta"},  {6, "Green"},        {7, "Orange"},
    {8, "Gray"},          {9, "Red"},       {10, "Blue"},        {11, "White"},
    {15, "MCyan"},        {16, "MMagenta"}, {17, "Process_Red"}, {18, "Process_Green"},
    {19, "Process_Blue"}, {20, "LBlack"},   {21, "LYellow"},     {22, "MBlack"},
};

TEST(ColorNameByIndex, GivesTheBuiltInNames) {
  const Installation installation;
  for (const Named& row : kIndexes) EXPECT_EQ(GetColorNameByIndex(row.index).str(), row.name);
}

TEST(ColorNameByIndex, IsEmptyForOtherIndexesWithoutDefinitions) {
  const Installation installation;
  for (const int index : {12, 13, 14, 23, 24, 100, 0x10000, INT_MAX, -1, -2, -65536, INT_MIN}) {
    EXPECT_EQ(GetColorNameByIndex(index).str(), "") << index;
  }
}

TEST(ColorNameByIndex, LooksOtherIndexesUpInTheDefinitions) {
  InOwnProcess([] {
    const Installation installation(
        "Violet 10000 0 0 0\nTwelve C 0 0 0\nThirteen D 0 0 0\nFourteen E 0 0 0\n"
        "TwentyThree 17 0 0 0\nTop 80000000 0 0 0\nAll FFFFFFFF 0 0 0\nLargest 7FFFFFFF 0 0 0\n");
    EXPECT_EQ(GetColorNameByIndex(0x10000).str(), "Violet");
    EXPECT_EQ(GetColorNameByIndex(12).str(), "Twelve");
    EXPECT_EQ(GetColorNameByIndex(13).str(), "Thirteen");
    EXPECT_EQ(GetColorNameByIndex(14).str(), "Fourteen");
    EXPECT_EQ(GetColorNameByIndex(23).str(), "TwentyThree");
    EXPECT_EQ(GetColorNameByIndex(INT_MAX).str(), "Largest");
    // Flag and index are compared as patterns of 32 bits.
    EXPECT_EQ(GetColorNameByIndex(INT_MIN).str(), "Top");
    EXPECT_EQ(GetColorNameByIndex(-1).str(), "All");
    // A flag is looked up as a whole, not by its bits.
    EXPECT_EQ(GetColorNameByIndex(0x10001).str(), "");
    EXPECT_EQ(GetColorNameByIndex(-2).str(), "");
    EXPECT_EQ(GetColorNameByIndex(24).str(), "");
  });
}

TEST(ColorNameByIndex, PrefersTheBuiltInNames) {
  InOwnProcess([] {
    std::string text;
    for (const Named& row : kIndexes) {
      text += DefinitionLine("Mine", static_cast<std::uint32_t>(row.index));
    }
    const Installation installation(text + "Mine 17 0 0 0\n");
    EXPECT_EQ(GetColorNameByIndex(23).str(), "Mine");
    for (const Named& row : kIndexes) EXPECT_EQ(GetColorNameByIndex(row.index).str(), row.name);
  });
}

TEST(ColorNameByIndex, GivesTheFirstOfEqualFlags) {
  InOwnProcess([] {
    const Installation installation("A 20000 0 0 0\nB 10000 0 0 0\nC 10000 0 0 0\nB 20000 0 0 0\n");
    EXPECT_EQ(GetColorNameByIndex(0x10000).str(), "B");
    EXPECT_EQ(GetColorNameByIndex(0x20000).str(), "A");
  });
}

// The list of the standard names.

TEST(StandardColorNames, AreTwentyInAFixedOrder) {
  EXPECT_EQ(
      StandardColorNames(),
      AStringArray({"Gray",  "Black",  "Cyan",     "Magenta",   "Yellow", "Red",      "Green",
                    "Blue",  "LCyan",  "LMagenta", "Orange",    "MCyan",  "MMagenta", "LBlack",
                    "White", "MBlack", "LYellow",  "Luminance", "A*",     "B*"}));
  EXPECT_EQ(StandardColorNames().size(), 20u);
  EXPECT_EQ(&StandardColorNames(), &StandardColorNames());
}

TEST(StandardColorNames, DoNotDependOnTheDefinitions) {
  const Installation installation("Violet 10000 0 0 0\n");
  const CallLog log;
  EXPECT_EQ(StandardColorNames().size(), 20u);
  EXPECT_TRUE(log.calls().empty());
}

// The tables. Each of the five operations has one of its own.

struct Use {
  const char* what;
  /// Uses the operation's table; true when the colorant "Violet" of flag 0x10000 is in it.
  bool (*knowsViolet)();
};

constexpr Use kUses[] = {
    {"index", [] { return GetColorNameByIndex(0x10000) == AString("Violet"); }},
    {"dark count", [] { return GetNumberOfDarkChannels(Mode(0x80010000)) == 1; }},
    {"by names",
     [] {
       AStringArray ordered;
       return GetColorModeByNames({"Violet"}, ordered) == Mode(0x80010000);
     }},
    {"standard names", [] { return NamesOf(Mode(0x80010000)) == AStringArray({"Violet"}); }},
    {"dark names", [] { return DarkNamesOf(Mode(0x80010000)) == AStringArray({"Violet"}); }},
};

TEST(ColorTables, AreLookedForAtEachUseUntilThereIsAFile) {
  for (const Use& use : kUses) {
    SCOPED_TRACE(use.what);
    InOwnProcess([&] {
      const Installation installation;
      for (int i = 0; i < 3; ++i) {
        const CallLog log;
        EXPECT_FALSE(use.knowsViolet());
        EXPECT_GE(log.Count(CallKind::Program), 1u);
        EXPECT_GE(log.Count(CallKind::Open) + log.Count(CallKind::Look), 1u);
      }
      installation.Define("[Violet]\nViolet 10000 0 0\n");
      EXPECT_FALSE(use.knowsViolet());
      installation.Define("Violet 10000 0 0 0\n");
      EXPECT_TRUE(use.knowsViolet());
    });
  }
}

TEST(ColorTables, AreNeverReadAgainOnceTheyHoldEntries) {
  for (const Use& use : kUses) {
    SCOPED_TRACE(use.what);
    InOwnProcess([&] {
      const Installation installation("Violet 10000 0 0 0\n");
      EXPECT_TRUE(use.knowsViolet());
      const CallLog log;
      installation.Define("Other 20000 0 0 0\n");
      EXPECT_TRUE(use.knowsViolet());
      installation.Undefine();
      EXPECT_TRUE(use.knowsViolet());
      EXPECT_TRUE(log.calls().empty());
    });
    InOwnProcess([&] {
      const Installation installation("Other 20000 0 0 0\n");
      EXPECT_FALSE(use.knowsViolet());
      installation.Define("Violet 10000 0 0 0\n");
      EXPECT_FALSE(use.knowsViolet());
    });
  }
}

// An operation that has used its table leaves those of the others as they are, whichever it is.
TEST(ColorTables, AreOneAnOperation) {
  for (const Use& first : kUses) {
    SCOPED_TRACE(first.what);
    InOwnProcess([&] {
      const Installation installation("Violet 10000 0 0 0\n");
      EXPECT_TRUE(first.knowsViolet());
      installation.Define("Other 20000 0 0 0\n");
      for (const Use& use : kUses) {
        SCOPED_TRACE(use.what);
        EXPECT_EQ(use.knowsViolet(), use.what == first.what);
      }
    });
  }
}

TEST(ColorTables, HoldWhatTheFileHeldAtTheFirstUseOfEach) {
  InOwnProcess([] {
    const Installation installation("A 10000 0 0 0\n");
    EXPECT_EQ(GetColorNameByIndex(0x10000).str(), "A");
    installation.Define("B 10000 0 0 0\nB2 10000 0 0 0\n");
    EXPECT_EQ(GetNumberOfDarkChannels(Mode(0x80010000)), 2);
    installation.Define("C 10000 0 0 0\n");
    AStringArray ordered;
    EXPECT_EQ(GetColorModeByNames({"C"}, ordered), Mode(0x80010000));
    installation.Define("D 10000 0 0 0\n");
    EXPECT_EQ(NamesOf(Mode(0x80010000)), AStringArray({"D"}));
    installation.Define("E 10000 0 0 0\n");
    EXPECT_EQ(DarkNamesOf(Mode(0x80010000)), AStringArray({"E"}));

    EXPECT_EQ(GetColorNameByIndex(0x10000).str(), "A");
    EXPECT_EQ(GetNumberOfDarkChannels(Mode(0x80010000)), 2);
    EXPECT_EQ(GetColorModeByNames({"E"}, ordered), 0);
    EXPECT_EQ(GetColorModeByNames({"C"}, ordered), Mode(0x80010000));
    EXPECT_EQ(ordered, AStringArray({"C"}));
    EXPECT_EQ(NamesOf(Mode(0x80010000)), AStringArray({"D"}));
    EXPECT_EQ(DarkNamesOf(Mode(0x80010000)), AStringArray({"E"}));
  });
}

// A table that could not be filled stays empty, and the next use fills it.
template <class Failure, class... Kind>
void FillWithFailures(const Use& use, Kind... kind) {
  InOwnProcess([&] {
    const Installation installation("A-violet-of-a-long-name 20000 0 0 0\nViolet 10000 0 0 0\n");
    bool known = false;
    std::size_t which = 0;
    for (; !known && which < 100; ++which) {
      const Failure failure(which, kind...);
      try {
        known = use.knowsViolet();
      } catch (const std::bad_alloc&) {  // of what the use itself makes
        known = false;
      }
    }
    EXPECT_TRUE(known);
    EXPECT_GT(which, 2u) << "nothing has failed";
    EXPECT_TRUE(use.knowsViolet());
  });
}

TEST(ColorTables, AreFilledByTheNextUseAfterAnyFailure) {
  for (const Use& use : kUses) {
    SCOPED_TRACE(use.what);
    FillWithFailures<AllocationFailsAt>(use, Shortage::Once);
    FillWithFailures<AllocationFailsAt>(use, Shortage::Lasting);
    FillWithFailures<FaultAt>(use, Fault::Error);
  }
}

TEST(StandardColorNames, AreMissingOnlyWhileMemoryIsShort) {
  InOwnProcess([] {
    std::size_t during = 0;
    {
      const AllocationFailsAt first(0);
      during = StandardColorNames().size();
    }
    EXPECT_TRUE(during == 0 || during == 20) << "unless somebody has asked before";
    EXPECT_EQ(StandardColorNames().size(), 20u);
  });
}

TEST(ColorTables, AreLookedForAgainAfterAFault) {
  InOwnProcess([] {
    const Installation installation("Violet 10000 0 0 0\n");
    {
      const FaultAt fault(0, Fault::Error);  // the file cannot be opened
      EXPECT_EQ(GetColorNameByIndex(0x10000).str(), "");
      EXPECT_TRUE(FaultAt::Reached());
    }
    EXPECT_EQ(GetColorNameByIndex(0x10000).str(), "Violet");
  });
}

TEST(ColorTables, AreFilledByManyThreadsAtOnce) {
  InOwnProcess([] {
    Entries all;
    const Installation installation(LongFile(300, all) + "Violet 20000 0 0 0\n");
    constexpr int kThreads = 16;
    std::latch start(kThreads);
    std::vector<int> good(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&, i] {
        start.arrive_and_wait();
        int& sum = good[static_cast<std::size_t>(i)];
        for (int use = 0; use < 5; ++use) {
          switch ((use + i) % 5) {
            case 0: sum += GetColorNameByIndex(0x20000) == AString("Violet"); break;
            case 1: sum += GetNumberOfDarkChannels(Mode(0x80030001)) == 302; break;
            case 2: {
              AStringArray ordered;
              sum += GetColorModeByNames({"LCyan", "Violet"}, ordered) == Mode(0x80020010) &&
                     ordered == AStringArray({"Violet", "LCyan"});
              break;
            }
            case 3: sum += NamesOf(Mode(0x80020010)) == AStringArray({"Violet", "LCyan"}); break;
            default: sum += DarkNamesOf(Mode(0x80030001)).size() == 302; break;
          }
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(good, std::vector<int>(kThreads, 5));
  });
}

TEST(ColorTables, MayBeMissingForManyThreadsAtOnce) {
  const Installation installation;
  constexpr int kThreads = 16;
  std::latch start(kThreads);
  std::vector<int> good(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      for (const Use& use : kUses) good[static_cast<std::size_t>(i)] += !use.knowsViolet();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(good, std::vector<int>(kThreads, 5));
}

}  // namespace
