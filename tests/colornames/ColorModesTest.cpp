#include "colornames/ColorModes.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/Installation.h"

namespace {

using vkcl::testing::CallLog;
using vkcl::testing::DefinitionLine;
using vkcl::testing::InOwnProcess;
using vkcl::testing::Installation;

using Names = std::vector<std::string>;

AStringArray ArrayOf(const Names& names) {
  AStringArray array;
  for (const std::string& name : names) array.append(name);
  return array;
}

Names NamesIn(const AStringArray& array) {
  Names names;
  for (const AString& name : array) names.push_back(name.str());
  return names;
}

int Mode(std::uint32_t bits) { return static_cast<int>(bits); }

/// What is recognised: the mode and the ordered names.
struct Recognised {
  int mode;
  Names ordered;

  friend bool operator==(const Recognised&, const Recognised&) = default;
};

void PrintTo(const Recognised& recognised, std::ostream* out) {
  *out << "mode " << recognised.mode << std::hex << " (0x" << recognised.mode << std::dec << ") "
       << ::testing::PrintToString(recognised.ordered);
}

const Recognised kUnacceptable = {0, {}};

Recognised Recognise(const Names& names) {
  AStringArray ordered = {"left", "over"};
  const int mode = GetColorModeByNames(ArrayOf(names), ordered);
  return {mode, NamesIn(ordered)};
}

Recognised FlagSet(std::uint32_t bits, Names ordered) { return {Mode(bits), std::move(ordered)}; }

Names StandardNames(int mode) {
  AStringArray names = {"left", "over"};
  GetStandardColorNamesByColorMode(mode, names);
  return NamesIn(names);
}

Names DarkNames(int mode) {
  AStringArray names = {"left", "over"};
  const bool any = GetDarkNames(mode, names);
  EXPECT_EQ(any, names.size() > 0);
  return NamesIn(names);
}

// The named ink sets.

struct InkSetRow {
  int mode;
  Names names;
  int channels;
  int dark;
  int nonDark;
  Names darkNames;
};

const std::vector<InkSetRow>& InkSetRows() {
  static const std::vector<InkSetRow> rows = {
      {1, {"Cyan", "Magenta", "Yellow", "Black"}, 4, 4, 0, {"Cyan", "Magenta", "Yellow", "Black"}},
      {2,
       {"Cyan", "Magenta", "Yellow", "Black", "LCyan", "LMagenta"},
       6,
       4,
       2,
       {"Cyan", "Magenta", "Yellow", "Black"}},
      {4,
       {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green"},
       6,
       6,
       0,
       {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green"}},
      // One channel, called black in the set and grey among the dark inks.
      {8, {"Black"}, 1, 1, 0, {"Gray"}},
      {16, {"Cyan", "Magenta", "Yellow"}, 3, 3, 0, {"Cyan", "Magenta", "Yellow"}},
      {32,
       {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green", "LCyan", "LMagenta"},
       8,
       6,
       2,
       {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green"}},
      {64,
       {"Cyan", "Magenta", "Yellow", "Black", "MCyan", "MMagenta"},
       6,
       4,
       2,
       {"Cyan", "Magenta", "Yellow", "Black"}},
      {128,
       {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green", "MCyan", "MMagenta"},
       8,
       6,
       2,
       {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green"}},
      {256,
       {"Cyan", "Magenta", "Yellow", "Black", "LCyan", "LMagenta", "MCyan", "MMagenta"},
       8,
       4,
       4,
       {"Cyan", "Magenta", "Yellow", "Black"}},
      // The dark inks are the plain colours, not the process ones.
      {512, {"Process_Red", "Process_Green", "Process_Blue"}, 3, 3, 0, {"Red", "Green", "Blue"}},
      {1024,
       {"Cyan", "Magenta", "Yellow", "Black", "LCyan", "LMagenta", "LBlack"},
       7,
       4,
       3,
       {"Cyan", "Magenta", "Yellow", "Black"}},
      {2048,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "Blue"},
       6,
       6,
       0,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "Blue"}},
      {4096,
       {"Cyan", "Magenta", "Yellow", "Black", "LCyan", "LMagenta", "LYellow", "LBlack"},
       8,
       4,
       4,
       {"Cyan", "Magenta", "Yellow", "Black"}},
      {8192,
       {"Cyan", "Magenta", "Yellow", "Black", "LCyan", "LMagenta", "MBlack", "LBlack"},
       8,
       4,
       4,
       {"Cyan", "Magenta", "Yellow", "Black"}},
      {8194,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "Green", "Blue"},
       7,
       7,
       0,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "Green", "Blue"}},
      {8196,
       {"Cyan", "Magenta", "Yellow", "Black", "MCyan", "MMagenta", "MBlack"},
       7,
       4,
       3,
       {"Cyan", "Magenta", "Yellow", "Black"}},
      {8200,
       {"Cyan", "Magenta", "Yellow", "Black", "LMagenta", "MBlack", "LBlack"},
       7,
       4,
       3,
       {"Cyan", "Magenta", "Yellow", "Black"}},
      {8208,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "Green", "Blue", "LMagenta", "MBlack",
        "LBlack"},
       10,
       7,
       3,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "Green", "Blue"}},
      {8224,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "Green", "Blue", "LCyan", "LMagenta", "MBlack",
        "LBlack"},
       11,
       7,
       4,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "Green", "Blue"}},
      {8256,
       {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green", "MBlack", "LBlack"},
       8,
       6,
       2,
       {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green"}},
      {8320,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "LMagenta", "LBlack"},
       7,
       5,
       2,
       {"Cyan", "Magenta", "Yellow", "Black", "Red"}},
  };
  return rows;
}

TEST(NamedInkSets, HaveTheirNamesAndCounts) {
  const Installation installation;
  for (const InkSetRow& row : InkSetRows()) {
    SCOPED_TRACE(row.mode);
    EXPECT_EQ(StandardNames(row.mode), row.names);
    EXPECT_EQ(GetNumberOfChannels(row.mode), row.channels);
    EXPECT_EQ(GetNumberOfDarkChannels(row.mode), row.dark);
    EXPECT_EQ(GetNumberOfNonDarkChannels(row.mode), row.nonDark);
    EXPECT_EQ(DarkNames(row.mode), row.darkNames);
  }
}

TEST(NamedInkSets, AreRecognisedByTheirNamesInAnyOrder) {
  const Installation installation;
  std::mt19937 random(5);
  for (const InkSetRow& row : InkSetRows()) {
    SCOPED_TRACE(row.mode);
    const Recognised expected = {row.mode, row.names};
    Names names = row.names;
    EXPECT_EQ(Recognise(names), expected);
    std::reverse(names.begin(), names.end());
    EXPECT_EQ(Recognise(names), expected);
    for (int i = 0; i < 20; ++i) {
      std::shuffle(names.begin(), names.end(), random);
      EXPECT_EQ(Recognise(names), expected);
    }
  }
}

TEST(NamedInkSets, AreNoOtherPositiveModes) {
  const Installation installation;
  std::set<int> known;
  for (const InkSetRow& row : InkSetRows()) known.insert(row.mode);
  ASSERT_EQ(known.size(), 21u);
  std::vector<int> others = {16384, 32768, 65536, 0x10001, 0x40000000, INT_MAX};
  for (int mode = 0; mode <= 8500; ++mode) {
    if (!known.contains(mode)) others.push_back(mode);
  }
  for (const int mode : others) {
    SCOPED_TRACE(mode);
    ASSERT_EQ(StandardNames(mode), Names());
    ASSERT_EQ(GetNumberOfChannels(mode), 0);
    ASSERT_EQ(GetNumberOfDarkChannels(mode), 0);
    ASSERT_EQ(GetNumberOfNonDarkChannels(mode), 0);
    ASSERT_EQ(DarkNames(mode), Names());
  }
}

TEST(NamedInkSets, DoNotDependOnTheDefinitions) {
  InOwnProcess([] {
    std::string text = "Top 80000000 0 0 0\nAll FFFFFFFF 0 0 0\n";
    for (const InkSetRow& row : InkSetRows()) {
      text +=
          DefinitionLine("Ink" + std::to_string(row.mode), static_cast<std::uint32_t>(row.mode));
    }
    const Installation installation(text);
    ASSERT_EQ(GetNumberOfDarkChannels(INT_MIN), 2);  // the file is in use
    for (const InkSetRow& row : InkSetRows()) {
      SCOPED_TRACE(row.mode);
      EXPECT_EQ(StandardNames(row.mode), row.names);
      EXPECT_EQ(GetNumberOfChannels(row.mode), row.channels);
      EXPECT_EQ(GetNumberOfDarkChannels(row.mode), row.dark);
      EXPECT_EQ(GetNumberOfNonDarkChannels(row.mode), row.nonDark);
      EXPECT_EQ(DarkNames(row.mode), row.darkNames);
      EXPECT_EQ(Recognise(row.names), (Recognised{row.mode, row.names}));
    }
  });
}

TEST(NamedInkSets, AreRecognisedWithoutALookAtTheDefinitions) {
  const Installation installation;
  for (const InkSetRow& row : InkSetRows()) {
    const AStringArray names = ArrayOf(row.names);
    AStringArray ordered;
    const CallLog log;
    EXPECT_EQ(GetColorModeByNames(names, ordered), row.mode);
    EXPECT_TRUE(log.calls().empty()) << row.mode;
  }
}

// Recognition by number and key names.

// The set is decided by the number of names and a few of them, so the rest may be anything.
struct KeyRow {
  std::size_t count;
  Names keys;
  int mode;
};

const std::vector<KeyRow>& KeyRows() {
  static const std::vector<KeyRow> rows = {
      {3, {"Cyan"}, 16},
      {3, {"Cyan", "Red"}, 16},
      {3, {"Cyan", "Process_Red"}, 16},
      {3, {"Process_Red"}, 512},
      {3, {"Red"}, 512},
      {3, {"Red", "Process_Red"}, 512},
      {4, {"Cyan"}, 1},
      {6, {"Orange", "Green"}, 4},
      {6, {"Orange", "Green", "Red", "Blue"}, 4},
      {6, {"Orange", "Green", "LCyan", "LMagenta"}, 4},
      {6, {"Orange", "Green", "MCyan", "MMagenta"}, 4},
      {6, {"Red", "Blue"}, 2048},
      {6, {"Process_Red", "Blue"}, 2048},
      {6, {"Red", "Blue", "LCyan", "LMagenta"}, 2048},
      {6, {"Red", "Blue", "MCyan", "MMagenta"}, 2048},
      {6, {"LCyan", "LMagenta"}, 2},
      {6, {"LCyan", "LMagenta", "MCyan", "MMagenta"}, 2},
      {6, {"MCyan", "MMagenta"}, 64},
      {6, {"MCyan", "MMagenta", "LCyan", "Orange", "Red"}, 64},
      {7, {"Red", "LMagenta", "LBlack"}, 8320},
      {7, {"Process_Red", "LMagenta", "LBlack"}, 8320},
      {7, {"Red", "LMagenta", "LBlack", "Green", "Blue"}, 8320},
      {7, {"Red", "LMagenta", "LBlack", "LCyan"}, 8320},
      {7, {"Red", "LMagenta", "LBlack", "MBlack"}, 8320},
      {7, {"Red", "Green", "Blue"}, 8194},
      {7, {"Process_Red", "Process_Green", "Process_Blue"}, 8194},
      {7, {"Process_Red", "Green", "Process_Blue"}, 8194},
      {7, {"Red", "Process_Green", "Blue"}, 8194},
      {7, {"Red", "Green", "Blue", "LCyan", "LMagenta"}, 8194},
      {7, {"Red", "Green", "Blue", "MCyan", "MMagenta", "MBlack"}, 8194},
      {7, {"LCyan", "LMagenta", "LBlack"}, 1024},
      {7, {"LCyan", "LMagenta", "LBlack", "MCyan", "MMagenta", "MBlack"}, 1024},
      {7, {"LCyan", "LMagenta", "LBlack", "Green", "Blue"}, 1024},
      {7, {"MCyan", "MMagenta", "MBlack"}, 8196},
      {7, {"MCyan", "MMagenta", "MBlack", "LMagenta", "LBlack"}, 8196},
      {7, {"LMagenta", "MBlack", "LBlack"}, 8200},
      {7, {"LMagenta", "MBlack", "LBlack", "MMagenta"}, 8200},
      {8, {"Orange", "Green", "LCyan"}, 32},
      {8, {"Orange", "Green", "LCyan", "MCyan", "MBlack"}, 32},
      {8, {"Orange", "Green", "LCyan", "LYellow", "LBlack", "MBlack"}, 32},
      {8, {"Orange", "Green", "MCyan"}, 128},
      {8, {"Orange", "Green", "MCyan", "MBlack", "LBlack"}, 128},
      {8, {"Orange", "Green", "MBlack"}, 8256},
      {8, {"Orange", "Green", "MBlack", "LBlack", "LYellow"}, 8256},
      {8, {"LYellow", "LBlack"}, 4096},
      {8, {"LYellow", "LBlack", "MBlack", "LCyan", "MCyan"}, 4096},
      {8, {"LYellow", "LBlack", "Orange"}, 4096},
      {8, {"LYellow", "LBlack", "Green"}, 4096},
      {8, {"MBlack", "LBlack"}, 8192},
      {8, {"MBlack", "LBlack", "LCyan", "MCyan"}, 8192},
      {8, {"LCyan", "MCyan"}, 256},
      {8, {"LCyan", "MCyan", "LYellow", "MBlack"}, 256},
      {8, {"LCyan", "MCyan", "LBlack"}, 256},
      {10, {"MBlack", "LBlack", "Red"}, 8208},
      {11, {"MBlack", "LBlack", "Red"}, 8224},
  };
  return rows;
}

Names NamesOfSet(int mode) {
  for (const InkSetRow& row : InkSetRows()) {
    if (row.mode == mode) return row.names;
  }
  return {};
}

TEST(Recognition, LooksAtTheNumberAndTheKeyNamesAlone) {
  const Installation installation;
  for (const KeyRow& row : KeyRows()) {
    SCOPED_TRACE(::testing::PrintToString(row.keys) + " of " + std::to_string(row.count));
    Names names = row.keys;
    while (names.size() < row.count) names.push_back("Ink" + std::to_string(names.size()));
    const Recognised expected = {row.mode, NamesOfSet(row.mode)};
    EXPECT_EQ(Recognise(names), expected);
    std::reverse(names.begin(), names.end());
    EXPECT_EQ(Recognise(names), expected);
    // The others may be given twice, too.
    names = row.keys;
    while (names.size() < row.count) names.insert(names.begin(), row.keys[0]);
    EXPECT_EQ(Recognise(names), expected);
  }
}

TEST(Recognition, TakesNoOtherNumberOfNames) {
  const Installation installation;
  const Names keys = {"Cyan",   "Red",      "Process_Red", "Orange",   "Green",
                      "LCyan",  "LMagenta", "MCyan",       "MMagenta", "Blue",
                      "MBlack", "LBlack",   "LYellow",     "Black",    "Gray"};
  for (const std::size_t count : {2u, 5u, 9u, 12u, 13u, 14u, 15u, 20u}) {
    SCOPED_TRACE(count);
    for (std::size_t from = 0; from + 2 <= keys.size(); ++from) {
      Names names;
      for (std::size_t i = 1; i < count; ++i) names.push_back(keys[(from + i) % keys.size()]);
      names.push_back("X");
      EXPECT_EQ(Recognise(names), kUnacceptable);
    }
  }
}

TEST(Recognition, NeedsEveryKeyName) {
  const Installation installation;
  const std::vector<std::pair<std::size_t, Names>> lists = {
      {3, {"Process_Green", "Process_Blue"}},
      {3, {"Magenta", "Yellow"}},
      {4, {"Red", "Magenta", "Yellow"}},
      {6, {"Orange", "Red"}},
      {6, {"Green", "Blue"}},
      {6, {"Process_Green", "Orange"}},
      {6, {"Red", "Process_Blue"}},
      {6, {"LCyan", "MMagenta"}},
      {6, {"MCyan", "LMagenta"}},
      {7, {"LMagenta", "LBlack"}},
      {7, {"Red", "Green", "LBlack"}},
      {7, {"Green", "Blue", "LBlack", "MBlack"}},
      // The first of the light cyan, the medium cyan and the light magenta decides alone.
      {7, {"LCyan", "MCyan", "MMagenta", "MBlack"}},
      {7, {"LCyan", "LMagenta", "MBlack"}},
      {7, {"LCyan", "LBlack", "MBlack"}},
      {7, {"MCyan", "LMagenta", "MBlack", "LBlack"}},
      {7, {"MCyan", "MMagenta", "LMagenta", "LBlack"}},
      {7, {"MMagenta", "MBlack", "LBlack"}},
      {8, {"Orange", "LCyan", "LMagenta"}},
      {8, {"Green", "LCyan", "LMagenta"}},
      // With orange and green, the sets without them are not tried.
      {8, {"Orange", "Green", "LYellow", "LBlack"}},
      {8, {"Orange", "Green", "LBlack", "LMagenta", "MMagenta"}},
      {8, {"LYellow", "MBlack"}},
      {8, {"LBlack", "LCyan"}},
      {8, {"LMagenta", "MMagenta"}},
      {10, {"MBlack", "LBlack", "Process_Red"}},
      {10, {"MBlack", "Red"}},
      {10, {"LBlack", "Red"}},
      {11, {"MBlack", "LBlack", "Process_Red"}},
      {11, {"MBlack", "Red"}},
      {11, {"LBlack", "Red"}},
  };
  for (const auto& [count, keys] : lists) {
    SCOPED_TRACE(::testing::PrintToString(keys));
    Names names = keys;
    while (names.size() < count) names.push_back("Ink" + std::to_string(names.size()));
    EXPECT_EQ(Recognise(names), kUnacceptable);
  }
}

TEST(Recognition, KeepsASingleBlackOrGrayAsItIsCalled) {
  const Installation installation;
  EXPECT_EQ(Recognise({"Gray"}), (Recognised{8, {"Gray"}}));
  EXPECT_EQ(Recognise({"Black"}), (Recognised{8, {"Black"}}));
}

TEST(Recognition, CompletesSetsThatItKnowsByAKeyName) {
  const Installation installation;
  EXPECT_EQ(Recognise({"X", "Cyan", "Y"}), (Recognised{16, {"Cyan", "Magenta", "Yellow"}}));
  EXPECT_EQ(Recognise({"Red", "X", "Y"}),
            (Recognised{512, {"Process_Red", "Process_Green", "Process_Blue"}}));
  EXPECT_EQ(Recognise({"Yellow", "Black", "Cyan", "Magenta"}),
            (Recognised{1, {"Cyan", "Magenta", "Yellow", "Black"}}));
}

// Recognition as a set of flags.

struct FlagRow {
  const char* name;
  std::uint32_t bit;
  bool dark;
};

/// In canonical order.
constexpr FlagRow kFlags[] = {
    {"Cyan", 0x1, true},        {"Magenta", 0x2, true},    {"Yellow", 0x4, true},
    {"Black", 0x8, true},       {"Orange", 0x40, true},    {"Gray", 0x80, true},
    {"Red", 0x2000, true},      {"Green", 0x4000, true},   {"Blue", 0x8000, true},
    {"LCyan", 0x10, false},     {"LMagenta", 0x20, false}, {"MCyan", 0x100, false},
    {"MMagenta", 0x200, false}, {"LBlack", 0x400, false},  {"LYellow", 0x800, false},
    {"MBlack", 0x1000, false},
};

TEST(FlagSets, OfOneColorant) {
  const Installation installation;
  for (const FlagRow& row : kFlags) {
    SCOPED_TRACE(row.name);
    const int mode = Mode(0x80000000u | row.bit);
    const Names names = {row.name};
    EXPECT_EQ(StandardNames(mode), names);
    EXPECT_EQ(DarkNames(mode), row.dark ? names : Names());
    EXPECT_EQ(GetNumberOfChannels(mode), 1);
    EXPECT_EQ(GetNumberOfDarkChannels(mode), row.dark ? 1 : 0);
    EXPECT_EQ(GetNumberOfNonDarkChannels(mode), row.dark ? 0 : 1);
    const bool named = names[0] == "Black" || names[0] == "Gray";
    EXPECT_EQ(Recognise(names), (Recognised{named ? 8 : mode, names}));
    // Twice the same is one flag for two names.
    EXPECT_EQ(Recognise({row.name, row.name}), kUnacceptable);
    EXPECT_EQ(Recognise({row.name, "X"}), kUnacceptable);
  }
}

TEST(FlagSets, OfTwoColorantsAreInCanonicalOrder) {
  const Installation installation;
  for (std::size_t a = 0; a < std::size(kFlags); ++a) {
    for (std::size_t b = a + 1; b < std::size(kFlags); ++b) {
      const Recognised expected =
          FlagSet(0x80000000u | kFlags[a].bit | kFlags[b].bit, {kFlags[a].name, kFlags[b].name});
      EXPECT_EQ(Recognise({kFlags[a].name, kFlags[b].name}), expected);
      EXPECT_EQ(Recognise({kFlags[b].name, kFlags[a].name}), expected);
      EXPECT_EQ(StandardNames(expected.mode), expected.ordered);
    }
  }
  EXPECT_EQ(Recognise({"Cyan", "Magenta"}), FlagSet(0x80000003, {"Cyan", "Magenta"}));
  EXPECT_EQ(Recognise({"LCyan", "Cyan"}), FlagSet(0x80000011, {"Cyan", "LCyan"}));
  EXPECT_EQ(Recognise({"Cyan", "Cyan"}), kUnacceptable);
}

TEST(FlagSets, TakeWhatIsNoNamedSet) {
  const Installation installation;
  EXPECT_EQ(
      Recognise({"Cyan", "Magenta", "Yellow", "Black", "LCyan", "LMagenta", "MBlack"}),
      FlagSet(0x8000103F, {"Cyan", "Magenta", "Yellow", "Black", "LCyan", "LMagenta", "MBlack"}));
  EXPECT_EQ(
      Recognise({"Cyan", "Magenta", "Yellow", "Black", "LBlack", "LYellow", "Green", "Orange"}),
      FlagSet(0x80004C4F,
              {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green", "LBlack", "LYellow"}));
  EXPECT_EQ(Recognise({"Black", "Yellow", "Magenta"}),
            FlagSet(0x8000000E, {"Magenta", "Yellow", "Black"}));
  EXPECT_EQ(Recognise({"Magenta", "Red", "Yellow", "Black"}),
            FlagSet(0x8000200E, {"Magenta", "Yellow", "Black", "Red"}));
  EXPECT_EQ(Recognise({"Orange", "Cyan", "Magenta", "Yellow", "Black"}),
            FlagSet(0x8000004F, {"Cyan", "Magenta", "Yellow", "Black", "Orange"}));
}

TEST(FlagSets, MayHaveAllColorants) {
  const Installation installation;
  Names canonical;
  for (const FlagRow& row : kFlags) canonical.emplace_back(row.name);
  EXPECT_EQ(StandardNames(Mode(0x8000FFFF)), canonical);
  EXPECT_EQ(DarkNames(Mode(0x8000FFFF)), Names(canonical.begin(), canonical.begin() + 9));
  EXPECT_EQ(GetNumberOfChannels(Mode(0x8000FFFF)), 16);
  EXPECT_EQ(GetNumberOfDarkChannels(Mode(0x8000FFFF)), 9);
  EXPECT_EQ(GetNumberOfNonDarkChannels(Mode(0x8000FFFF)), 7);
  Names names(canonical.rbegin(), canonical.rend());
  EXPECT_EQ(Recognise(names), FlagSet(0x8000FFFF, canonical));
  for (const char* more : {"X", "White", "Cyan", "MBlack", ""}) {
    names.emplace_back(more);
    EXPECT_EQ(Recognise(names), kUnacceptable) << more;
    names.pop_back();
  }
}

TEST(FlagSets, HaveNoFlagForWhiteAndTheProcessColours) {
  const Installation installation;
  for (const char* name : {"White", "Process_Red", "Process_Green", "Process_Blue"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Recognise({name}), kUnacceptable);
    EXPECT_EQ(Recognise({name, "Cyan"}), kUnacceptable);
    EXPECT_EQ(Recognise({name, "Cyan", "Magenta", "Yellow", "Black"}), kUnacceptable);
  }
  EXPECT_EQ(Recognise({"Process_Green", "Process_Blue", "White"}), kUnacceptable);
}

TEST(FlagSets, OfNoNamesIsTheSetOfNoInks) {
  const Installation installation;
  EXPECT_EQ(Recognise({}), FlagSet(0x80000000, {}));
  EXPECT_EQ(StandardNames(INT_MIN), Names());
  EXPECT_EQ(DarkNames(INT_MIN), Names());
  EXPECT_EQ(GetNumberOfChannels(INT_MIN), 0);
  EXPECT_EQ(GetNumberOfDarkChannels(INT_MIN), 0);
  EXPECT_EQ(GetNumberOfNonDarkChannels(INT_MIN), 0);
  EXPECT_EQ(GetNumberOfChannels(0), 0);
}

// Channels are counted by their bits, known or not.
TEST(FlagSets, CountUnknownBitsAsChannelsOnly) {
  const Installation installation;
  EXPECT_EQ(GetNumberOfChannels(Mode(0x80010000)), 1);
  EXPECT_EQ(GetNumberOfDarkChannels(Mode(0x80010000)), 0);
  EXPECT_EQ(GetNumberOfNonDarkChannels(Mode(0x80010000)), 0);
  EXPECT_EQ(StandardNames(Mode(0x80010000)), Names());
  EXPECT_EQ(DarkNames(Mode(0x80010000)), Names());
  EXPECT_EQ(GetNumberOfChannels(-1), 31);
  EXPECT_EQ(GetNumberOfDarkChannels(-1), 9);
  EXPECT_EQ(GetNumberOfNonDarkChannels(-1), 7);
  EXPECT_EQ(StandardNames(-1).size(), 16u);
}

TEST(FlagSets, CompareNamesByteByByte) {
  const Installation installation;
  for (const std::string& name :
       {std::string("cyan"), std::string("CYAN"), std::string(" Cyan"), std::string("Cyan "),
        std::string("Cya"), std::string("Cyann"), std::string("Cyan\0", 5), std::string(),
        std::string("Grey"), std::string("black"), std::string("Black\0x", 7)}) {
    SCOPED_TRACE(::testing::PrintToString(name));
    EXPECT_EQ(Recognise({name}), kUnacceptable);
    EXPECT_EQ(Recognise({name, "Magenta"}), kUnacceptable);
    EXPECT_EQ(Recognise({name, "X", "Y"}), kUnacceptable);
    EXPECT_EQ(Recognise({name, "Magenta", "Yellow", "Black"}), kUnacceptable);
  }
}

// Every combination of the flags, or a good part of it: names and counts follow the flags.
void CheckCombinations(std::uint32_t first, std::uint32_t step) {
  for (std::uint32_t bits = first; bits < 0x10000; bits += step) {
    const int mode = Mode(0x80000000u | bits);
    Names names;
    Names dark;
    for (const FlagRow& row : kFlags) {
      if ((bits & row.bit) == 0) continue;
      names.emplace_back(row.name);
      if (row.dark) dark.emplace_back(row.name);
    }
    ASSERT_EQ(StandardNames(mode), names) << std::hex << bits;
    ASSERT_EQ(DarkNames(mode), dark) << std::hex << bits;
    ASSERT_EQ(GetNumberOfChannels(mode), static_cast<int>(names.size()));
    ASSERT_EQ(GetNumberOfDarkChannels(mode), static_cast<int>(dark.size()));
    ASSERT_EQ(GetNumberOfNonDarkChannels(mode), static_cast<int>(names.size() - dark.size()));
  }
}

TEST(FlagSets, FollowTheirFlagsWithoutDefinitions) {
  const Installation installation;
  CheckCombinations(3, 13);
}

TEST(FlagSets, FollowTheirFlagsWithDefinitionsOfOtherFlags) {
  InOwnProcess([] {
    const Installation installation("Violet 10000 0 0 0\nSilver 7FFF0000 0 0 0\n");
    CheckCombinations(0, 3);
  });
}

// Recognition against a plain reading of the rules.

struct Extra {
  std::string name;
  std::uint32_t flag;
};
using Extras = std::vector<Extra>;

class Model {
 public:
  Model(const Names& names, const Extras& extras) : names_(names), extras_(extras) {}

  Recognised Answer() const {
    if (names_.size() == 1 && (Has("Black") || Has("Gray"))) return {8, names_};
    const int named = Named();
    if (named != 0) return {named, NamesOfSet(named)};
    return Flags();
  }

 private:
  bool Has(const char* name) const {
    for (const std::string& given : names_) {
      if (given == name) return true;
    }
    return false;
  }
  bool Reddish() const { return Has("Red") || Has("Process_Red"); }

  int Named() const {
    switch (names_.size()) {
      case 3: return Has("Cyan") ? 16 : Reddish() ? 512 : 0;
      case 4: return Has("Cyan") ? 1 : 0;
      case 6: return Six();
      case 7: return Seven();
      case 8: return Eight();
      case 10: return Has("MBlack") && Has("LBlack") && Has("Red") ? 8208 : 0;
      case 11: return Has("MBlack") && Has("LBlack") && Has("Red") ? 8224 : 0;
      default: return 0;
    }
  }

  int Six() const {
    if (Has("Orange") && Has("Green")) return 4;
    if (Reddish() && Has("Blue")) return 2048;
    if (Has("LCyan") && Has("LMagenta")) return 2;
    if (Has("MCyan") && Has("MMagenta")) return 64;
    return 0;
  }

  int Seven() const {
    if (Reddish() && Has("LMagenta") && Has("LBlack")) return 8320;
    if (Reddish() && (Has("Green") || Has("Process_Green")) &&
        (Has("Blue") || Has("Process_Blue"))) {
      return 8194;
    }
    if (Has("LCyan")) return Has("LMagenta") && Has("LBlack") ? 1024 : 0;
    if (Has("MCyan")) return Has("MBlack") && Has("MMagenta") ? 8196 : 0;
    if (Has("LMagenta")) return Has("MBlack") && Has("LBlack") ? 8200 : 0;
    return 0;
  }

  int Eight() const {
    if (Has("Orange") && Has("Green")) {
      if (Has("LCyan")) return 32;
      if (Has("MCyan")) return 128;
      if (Has("MBlack")) return 8256;
      return 0;
    }
    if (Has("LYellow") && Has("LBlack")) return 4096;
    if (Has("MBlack") && Has("LBlack")) return 8192;
    if (Has("LCyan") && Has("MCyan")) return 256;
    return 0;
  }

  Recognised Flags() const {
    std::uint32_t mode = 0x80000000u;
    Names dark;
    Names middle;
    Names pale;
    for (const FlagRow& row : kFlags) {
      if (!Has(row.name)) continue;
      (row.dark ? dark : pale).emplace_back(row.name);
      mode |= row.bit;
    }
    for (const std::string& given : names_) {
      for (const Extra& extra : extras_) {
        if (extra.name != given) continue;
        middle.push_back(extra.name);
        mode |= extra.flag;
      }
    }
    std::size_t bits = 0;
    for (int bit = 0; bit < 31; ++bit) bits += mode >> bit & 1u;
    if (bits != names_.size()) return kUnacceptable;
    dark.insert(dark.end(), middle.begin(), middle.end());
    dark.insert(dark.end(), pale.begin(), pale.end());
    return FlagSet(mode, dark);
  }

  const Names& names_;
  const Extras& extras_;
};

/// A number below `limit` that is the same on every system.
std::size_t Below(std::mt19937& random, std::size_t limit) { return random() % limit; }

void Shuffle(Names& names, std::mt19937& random) {
  for (std::size_t i = names.size(); i > 1; --i) std::swap(names[i - 1], names[Below(random, i)]);
}

::testing::AssertionResult MatchesModel(const Names& names, const Extras& extras) {
  const Recognised actual = Recognise(names);
  const Recognised expected = Model(names, extras).Answer();
  if (actual == expected) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << ::testing::PrintToString(names) << " gives " << ::testing::PrintToString(actual)
         << " instead of " << ::testing::PrintToString(expected);
}

const Names& BuiltInNames() {
  static const Names names = {"Cyan",          "Magenta",      "Yellow", "Black",    "LCyan",
                              "LMagenta",      "Green",        "Orange", "Gray",     "Red",
                              "Blue",          "White",        "MCyan",  "MMagenta", "Process_Red",
                              "Process_Green", "Process_Blue", "LBlack", "LYellow",  "MBlack"};
  return names;
}

/// Checks the subsets of `count` of the built-in names that contain all of `always`, every
/// `parts`-th of them from the `part`-th on. Gives the number of subsets that were checked.
int CheckSubsets(std::size_t count, const Names& always, int parts, int part,
                 const Extras& extras) {
  Names pool;
  for (const std::string& name : BuiltInNames()) {
    if (std::find(always.begin(), always.end(), name) == always.end()) pool.push_back(name);
  }
  std::mt19937 random(static_cast<std::mt19937::result_type>(1000 + 10 * count) +
                      static_cast<std::mt19937::result_type>(part));
  // The chosen ones of the pool, as the permutations of a row of marks.
  std::vector<char> chosen(pool.size(), 0);
  std::fill(chosen.end() - static_cast<std::ptrdiff_t>(count - always.size()), chosen.end(), 1);
  int seen = 0;
  int checked = 0;
  do {
    if (seen++ % parts != part) continue;
    Names names = always;
    for (std::size_t i = 0; i < pool.size(); ++i) {
      if (chosen[i] != 0) names.push_back(pool[i]);
    }
    Shuffle(names, random);
    const ::testing::AssertionResult match = MatchesModel(names, extras);
    if (!match) {
      ADD_FAILURE() << match.message();
      return checked;
    }
    ++checked;
  } while (std::next_permutation(chosen.begin(), chosen.end()));
  return checked;
}

TEST(RecognitionOfSubsets, OfUpToFiveNames) {
  const Installation installation;
  const int counts[] = {1, 20, 190, 1140, 4845, 15504};
  for (std::size_t count = 0; count <= 5; ++count) {
    EXPECT_EQ(CheckSubsets(count, {}, 1, 0, {}), counts[count]);
  }
}

TEST(RecognitionOfSubsets, OfSixNames) {
  const Installation installation;
  EXPECT_EQ(CheckSubsets(6, {}, 1, 0, {}), 38760);
}

// The many subsets of seven and eight names are checked in parts.
TEST(RecognitionOfSubsets, OfSevenNamesFirstHalf) {
  const Installation installation;
  EXPECT_EQ(CheckSubsets(7, {}, 2, 0, {}), 38760);
}

TEST(RecognitionOfSubsets, OfSevenNamesSecondHalf) {
  const Installation installation;
  EXPECT_EQ(CheckSubsets(7, {}, 2, 1, {}), 38760);
}

TEST(RecognitionOfSubsets, OfEightNamesFirstThird) {
  const Installation installation;
  EXPECT_EQ(CheckSubsets(8, {}, 3, 0, {}), 41990);
}

TEST(RecognitionOfSubsets, OfEightNamesSecondThird) {
  const Installation installation;
  EXPECT_EQ(CheckSubsets(8, {}, 3, 1, {}), 41990);
}

TEST(RecognitionOfSubsets, OfEightNamesLastThird) {
  const Installation installation;
  EXPECT_EQ(CheckSubsets(8, {}, 3, 2, {}), 41990);
}

TEST(RecognitionOfSubsets, OfTenNamesWithTheKeysOfTheSetOfTen) {
  const Installation installation;
  EXPECT_EQ(CheckSubsets(10, {"MBlack", "LBlack", "Red"}, 1, 0, {}), 19448);
}

TEST(RecognitionOfSubsets, OfElevenNamesWithTheKeysOfTheSetOfEleven) {
  const Installation installation;
  EXPECT_EQ(CheckSubsets(11, {"MBlack", "LBlack", "Red"}, 1, 0, {}), 24310);
}

TEST(RecognitionOfSubsets, OfNineToThirteenNamesHereAndThere) {
  const Installation installation;
  for (const std::size_t count : {9u, 10u, 11u, 12u, 13u}) {
    EXPECT_GT(CheckSubsets(count, {}, 41, 7, {}), 1800);
  }
}

void CheckRandomLists(int lists, const Extras& extras, std::mt19937::result_type seed) {
  Names pool = BuiltInNames();
  for (const Extra& extra : extras) pool.push_back(extra.name);
  for (const Extra& extra : extras) pool.push_back(extra.name);
  for (const char* unknown : {"X", "", "cyan", "Violet", "Luminance", "A*"}) {
    pool.emplace_back(unknown);
  }
  std::mt19937 random(seed);
  int acceptable = 0;
  for (int i = 0; i < lists; ++i) {
    Names names;
    const std::size_t count = Below(random, 14);
    // Half of the lists have no name twice.
    if (i % 2 == 0) Shuffle(pool, random);
    for (std::size_t n = 0; n < count; ++n) {
      names.push_back(pool[i % 2 == 0 ? n : Below(random, pool.size())]);
    }
    const ::testing::AssertionResult match = MatchesModel(names, extras);
    ASSERT_TRUE(match) << match.message();
    acceptable += Model(names, extras).Answer().mode != 0;
  }
  EXPECT_GT(acceptable, lists / 20);
}

TEST(RecognitionOfLists, WithUnknownAndRepeatedNames) {
  const Installation installation;
  CheckRandomLists(40000, {}, 11);
}

/// A file that has something of everything: single flags, several bits, equal flags, equal names,
/// built-in names and flags, no flag, and bit 31.
const Extras& OddExtras() {
  static const Extras extras = {
      {"Violet", 0x10000},   {"Silver", 0x20000}, {"Duo", 0xC0000},     {"Twin", 0x100000},
      {"Twin2", 0x100000},   {"Twice", 0x200000}, {"Twice", 0x400000},  {"Same", 0x800000},
      {"Same", 0x800000},    {"Cyan", 0x1000000}, {"LBlack", 0x400},    {"White", 0x2000000},
      {"Pale", 0x10},        {"None", 0},         {"Top", 0x80000000u}, {"Process_Red", 0x4000000},
      {"Tall", 0x80000001u},
  };
  return extras;
}

std::string FileOf(const Extras& extras) {
  std::string text;
  for (const Extra& extra : extras) {
    text += DefinitionLine(extra.name, extra.flag);
  }
  return text;
}

TEST(RecognitionOfLists, WithPlainDefinitions) {
  InOwnProcess([] {
    const Extras extras = {{"Violet", 0x10000}, {"Silver", 0x20000}, {"Brown", 0x40000}};
    const Installation installation(FileOf(extras));
    CheckRandomLists(40000, extras, 12);
  });
}

TEST(RecognitionOfLists, WithOddDefinitions) {
  InOwnProcess([] {
    const Installation installation(FileOf(OddExtras()));
    CheckRandomLists(40000, OddExtras(), 13);
  });
}

TEST(RecognitionOfSubsets, WithOddDefinitions) {
  InOwnProcess([] {
    const Installation installation(FileOf(OddExtras()));
    for (std::size_t count = 0; count <= 4; ++count) CheckSubsets(count, {}, 1, 0, OddExtras());
    for (std::size_t count = 5; count <= 9; ++count) CheckSubsets(count, {}, 17, 3, OddExtras());
  });
}

TEST(FlagSets, FollowTheirFlagsWithOddDefinitions) {
  InOwnProcess([] {
    const Installation installation(FileOf(OddExtras()));
    std::mt19937 random(14);
    for (int i = 0; i < 20000; ++i) {
      const auto bits = 0x80000000u | static_cast<std::uint32_t>(random()) |
                        (i % 2 == 0 ? 0u : static_cast<std::uint32_t>(random()));
      Names dark;
      Names pale;
      int darkCount = 0;
      for (const FlagRow& row : kFlags) {
        if ((bits & row.bit) != 0) (row.dark ? dark : pale).emplace_back(row.name);
      }
      for (const Extra& extra : OddExtras()) {
        if ((bits & extra.flag) != 0) dark.push_back(extra.name);
      }
      darkCount = static_cast<int>(dark.size());
      ASSERT_EQ(DarkNames(Mode(bits)), dark) << std::hex << bits;
      ASSERT_EQ(GetNumberOfDarkChannels(Mode(bits)), darkCount) << std::hex << bits;
      ASSERT_EQ(GetNumberOfNonDarkChannels(Mode(bits)), static_cast<int>(pale.size()));
      dark.insert(dark.end(), pale.begin(), pale.end());
      ASSERT_EQ(StandardNames(Mode(bits)), dark) << std::hex << bits;
      int set = 0;
      for (int bit = 0; bit < 31; ++bit) set += static_cast<int>(bits >> bit & 1u);
      ASSERT_EQ(GetNumberOfChannels(Mode(bits)), set);
    }
  });
}

// Extra colorants.

TEST(ExtraColorants, GoBeforeTheLightInks) {
  InOwnProcess([] {
    const Installation installation("Violet 10000 0 0 0\n");
    const Recognised expected = FlagSet(0x80010010, {"Violet", "LCyan"});
    EXPECT_EQ(Recognise({"Violet", "LCyan"}), expected);
    EXPECT_EQ(Recognise({"LCyan", "Violet"}), expected);
    EXPECT_EQ(StandardNames(expected.mode), expected.ordered);
    EXPECT_EQ(DarkNames(expected.mode), Names({"Violet"}));
    EXPECT_EQ(GetNumberOfChannels(expected.mode), 2);
    EXPECT_EQ(GetNumberOfDarkChannels(expected.mode), 1);
    EXPECT_EQ(GetNumberOfNonDarkChannels(expected.mode), 1);
    // Three names with cyan are a named set, whatever the others are.
    EXPECT_EQ(Recognise({"Cyan", "Violet", "LCyan"}),
              (Recognised{16, {"Cyan", "Magenta", "Yellow"}}));
    EXPECT_EQ(Recognise({"MBlack", "Violet", "Blue", "Magenta", "LCyan"}),
              FlagSet(0x80019012, {"Magenta", "Blue", "Violet", "LCyan", "MBlack"}));
    EXPECT_EQ(Recognise({"Violet"}), FlagSet(0x80010000, {"Violet"}));
    EXPECT_EQ(Recognise({"violet"}), kUnacceptable);
    EXPECT_EQ(Recognise({"Violet", "Violet"}), kUnacceptable);
    EXPECT_EQ(Recognise({"Violet", "X"}), kUnacceptable);
  });
}

// Among each other they keep the order of the caller when names are put in order, and that of the
// file when a mode is spelt out.
TEST(ExtraColorants, KeepTheOrderOfTheCallerOrTheFile) {
  InOwnProcess([] {
    const Installation installation("Violet 10000 0 0 0\nSilver 20000 0 0 0\nBrown 40000 0 0 0\n");
    EXPECT_EQ(Recognise({"Brown", "LCyan", "Silver", "Cyan", "Violet"}),
              FlagSet(0x80070011, {"Cyan", "Brown", "Silver", "Violet", "LCyan"}));
    EXPECT_EQ(StandardNames(Mode(0x80070011)),
              Names({"Cyan", "Violet", "Silver", "Brown", "LCyan"}));
    EXPECT_EQ(DarkNames(Mode(0x80070011)), Names({"Cyan", "Violet", "Silver", "Brown"}));
    EXPECT_EQ(StandardNames(Mode(0x80060000)), Names({"Silver", "Brown"}));
  });
}

TEST(ExtraColorants, OfANameThatOccursTwiceAreTakenTwice) {
  InOwnProcess([] {
    const Installation installation(
        "Twice 10000 0 0 0\nSame 40000 0 0 0\nTwice 20000 0 0 0\nSame 40000 0 0 0\n");
    // Two flags for one name.
    EXPECT_EQ(Recognise({"Twice"}), kUnacceptable);
    EXPECT_EQ(Recognise({"Twice", "X"}), FlagSet(0x80030000, {"Twice", "Twice"}));
    // One flag for one name, listed twice.
    EXPECT_EQ(Recognise({"Same"}), FlagSet(0x80040000, {"Same", "Same"}));
    EXPECT_EQ(StandardNames(Mode(0x80070000)), Names({"Twice", "Same", "Twice", "Same"}));
    EXPECT_EQ(GetNumberOfDarkChannels(Mode(0x80070000)), 4);
    EXPECT_EQ(GetNumberOfChannels(Mode(0x80070000)), 3);
  });
}

TEST(ExtraColorants, OfOneFlagCannotStandTogether) {
  InOwnProcess([] {
    const Installation installation("A 10000 0 0 0\nB 10000 0 0 0\n");
    EXPECT_EQ(Recognise({"A"}), FlagSet(0x80010000, {"A"}));
    EXPECT_EQ(Recognise({"B"}), FlagSet(0x80010000, {"B"}));
    EXPECT_EQ(Recognise({"A", "B"}), kUnacceptable);
    EXPECT_EQ(StandardNames(Mode(0x80010000)), Names({"A", "B"}));
    EXPECT_EQ(DarkNames(Mode(0x80010000)), Names({"A", "B"}));
    EXPECT_EQ(GetNumberOfChannels(Mode(0x80010000)), 1);
    EXPECT_EQ(GetNumberOfDarkChannels(Mode(0x80010000)), 2);
  });
}

TEST(ExtraColorants, OfABuiltInNameStandBesideIt) {
  InOwnProcess([] {
    const Installation installation("Cyan 10000 0 0 0\nGreen 4000 0 0 0\nWhite 20000 0 0 0\n");
    EXPECT_EQ(Recognise({"Cyan"}), kUnacceptable);
    EXPECT_EQ(Recognise({"Cyan", "X"}), FlagSet(0x80010001, {"Cyan", "Cyan"}));
    EXPECT_EQ(Recognise({"Green"}), FlagSet(0x80004000, {"Green", "Green"}));
    EXPECT_EQ(Recognise({"White"}), FlagSet(0x80020000, {"White"}));
  });
}

TEST(ExtraColorants, MayHaveSeveralFlagsOrNone) {
  InOwnProcess([] {
    const Installation installation("Duo 30000 0 0 0\nNone 0 0 0 0\nPale 10 0 0 0\n");
    EXPECT_EQ(Recognise({"Duo"}), kUnacceptable);
    EXPECT_EQ(Recognise({"Duo", "X"}), FlagSet(0x80030000, {"Duo"}));
    EXPECT_EQ(Recognise({"Duo", "None"}), FlagSet(0x80030000, {"Duo", "None"}));
    EXPECT_EQ(Recognise({"None"}), kUnacceptable);
    EXPECT_EQ(StandardNames(Mode(0x80020000)), Names({"Duo"}));
    EXPECT_EQ(DarkNames(Mode(0x80010001)), Names({"Cyan", "Duo"}));
    EXPECT_EQ(GetNumberOfDarkChannels(Mode(0x80010001)), 2);
    // A built-in flag stands for both.
    EXPECT_EQ(Recognise({"Pale"}), FlagSet(0x80000010, {"Pale"}));
    EXPECT_EQ(StandardNames(Mode(0x80000010)), Names({"Pale", "LCyan"}));
    EXPECT_EQ(GetNumberOfDarkChannels(Mode(0x80000010)), 1);
    EXPECT_EQ(GetNumberOfNonDarkChannels(Mode(0x80000010)), 1);
    EXPECT_EQ(DarkNames(Mode(0x80000010)), Names({"Pale"}));
    EXPECT_EQ(Recognise({"Pale", "LCyan"}), kUnacceptable);
  });
}

// Every flag-set mode shares bit 31 with such a flag.
TEST(ExtraColorants, OfTheTopBitAreInEveryFlagSet) {
  InOwnProcess([] {
    const Installation installation("Top 80000000 0 0 0\n");
    EXPECT_EQ(Recognise({"Top"}), kUnacceptable);
    EXPECT_EQ(StandardNames(Mode(0x80000011)), Names({"Cyan", "Top", "LCyan"}));
    EXPECT_EQ(DarkNames(INT_MIN), Names({"Top"}));
    EXPECT_EQ(GetNumberOfDarkChannels(INT_MIN), 1);
    EXPECT_EQ(GetNumberOfChannels(INT_MIN), 0);
    EXPECT_EQ(Recognise({"Magenta", "Cyan"}), FlagSet(0x80000003, {"Cyan", "Magenta"}));
  });
}

// Names as C strings.

TEST(ColorModeFromNames, TakesTheFirstStrings) {
  const Installation installation;
  const char* names[] = {"Yellow", "Black", "Cyan", "Magenta", "LMagenta", "LCyan"};
  EXPECT_EQ(GetColorModeFromNames(names, 1), Mode(0x80000004));
  EXPECT_EQ(GetColorModeFromNames(names, 2), Mode(0x8000000C));
  EXPECT_EQ(GetColorModeFromNames(names, 3), 16);
  EXPECT_EQ(GetColorModeFromNames(names, 4), 1);
  EXPECT_EQ(GetColorModeFromNames(names, 5), Mode(0x8000002F));
  EXPECT_EQ(GetColorModeFromNames(names, 6), 2);
  EXPECT_EQ(GetColorModeFromNames(names + 1, 1), 8);
  const char* unknown[] = {"Cyan", "X"};
  EXPECT_EQ(GetColorModeFromNames(unknown, 2), 0);
}

TEST(ColorModeFromNames, OfNoNamesIsTheSetOfNoInks) {
  const Installation installation;
  const char* names[] = {"Cyan"};
  EXPECT_EQ(GetColorModeFromNames(names, 0), INT_MIN);
  EXPECT_EQ(GetColorModeFromNames(names, -1), INT_MIN);
  EXPECT_EQ(GetColorModeFromNames(names, INT_MIN), INT_MIN);
  EXPECT_EQ(GetColorModeFromNames(nullptr, 0), INT_MIN);
  EXPECT_EQ(GetColorModeFromNames(nullptr, -5), INT_MIN);
}

TEST(ColorModeFromNames, OfMissingStringsIsNone) {
  const Installation installation;
  EXPECT_EQ(GetColorModeFromNames(nullptr, 1), 0);
  const char* names[] = {"Cyan", nullptr};
  EXPECT_EQ(GetColorModeFromNames(names, 2), 0);
}

TEST(ColorModeFromNames, AgreesWithTheListOfNames) {
  const Installation installation;
  std::mt19937 random(15);
  for (int i = 0; i < 5000; ++i) {
    Names names;
    const std::size_t count = Below(random, 12);
    for (std::size_t n = 0; n < count; ++n) {
      names.push_back(BuiltInNames()[Below(random, BuiltInNames().size())]);
    }
    std::vector<const char*> pointers;
    for (const std::string& name : names) pointers.push_back(name.c_str());
    ASSERT_EQ(GetColorModeFromNames(pointers.data(), static_cast<int>(count)),
              Model(names, {}).Answer().mode);
  }
}

// Colour spaces.

TEST(ColorSpace, OfANumberOfColors) {
  struct Row {
    unsigned int colors;
    unsigned int plain;
    unsigned int cmy;
  };
  constexpr unsigned int kUnsupported = 0xFFFFFFFF;
  constexpr Row kRows[] = {
      {0, kUnsupported, kUnsupported},
      {1, 0x31434C52, 0x31434C52},
      {2, kUnsupported, kUnsupported},
      {3, 0x52474220, 0x434D5920},
      {4, 0x434D594B, 0x434D594B},
      {5, 0x35434C52, 0x35434C52},
      {6, 0x36434C52, 0x36434C52},
      {7, 0x37434C52, 0x37434C52},
      {8, 0x38434C52, 0x38434C52},
      {9, 0x39434C52, 0x39434C52},
      {10, 0x41434C52, 0x41434C52},
      {11, 0x42434C52, 0x42434C52},
      {12, 0x43434C52, 0x43434C52},
      {13, 0x44434C52, 0x44434C52},
      {14, 0x45434C52, 0x45434C52},
      {15, 0x46434C52, 0x46434C52},
      {16, kUnsupported, kUnsupported},
      {17, kUnsupported, kUnsupported},
      {18, kUnsupported, kUnsupported},
      {19, kUnsupported, kUnsupported},
      {20, kUnsupported, kUnsupported},
      {256 + 3, kUnsupported, kUnsupported},
      {0x80000004, kUnsupported, kUnsupported},
      {0xFFFFFFFF, kUnsupported, kUnsupported},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.colors);
    EXPECT_EQ(GetColorSpaceFromNumberOfColors(row.colors, 0), row.plain);
    EXPECT_EQ(GetColorSpaceFromNumberOfColors(row.colors, 1), row.cmy);
    EXPECT_EQ(GetColorSpaceFromNumberOfColors(row.colors, -1), row.cmy);
    EXPECT_EQ(GetColorSpaceFromNumberOfColors(row.colors, 256), row.cmy);
  }
}

}  // namespace
