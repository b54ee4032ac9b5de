// Colour modes where the list of names is given and filled in one, where memory is short, and where
// two operations share a table of extra colorants.
#include <climits>
#include <cstdint>

#include "colornames/ColorModes.h"
#include "support/Allocations.h"
#include "support/Installation.h"

namespace vkcl::testing {
namespace {

int ModeOf(std::uint32_t bits) { return static_cast<int>(bits); }

/// A list of names, the mode that it gives, and what it is then.
struct InPlaceRow {
  AStringArray given;
  int mode;
  AStringArray ordered;
};

void ExpectInPlace(const std::vector<InPlaceRow>& rows) {
  for (const InPlaceRow& row : rows) {
    AStringArray names = row.given;
    EXPECT_EQ(GetColorModeByNames(names, names), row.mode);
    EXPECT_TRUE(names == row.ordered) << row.mode << ": " << names.size() << " names, first "
                                      << (names.empty() ? "none" : names[0].str());
  }
}

// One list for both.

TEST(ColorModesInPlace, NamedSetsTakeTheirCanonicalNames) {
  const Installation installation;
  ExpectInPlace({
      {{"Yellow", "X", "Cyan"}, 16, {"Cyan", "Magenta", "Yellow"}},
      {{"X", "Red", "Y"}, 512, {"Process_Red", "Process_Green", "Process_Blue"}},
      {{"Yellow", "Black", "Cyan", "Magenta"}, 1, {"Cyan", "Magenta", "Yellow", "Black"}},
      {{"Green", "A", "B", "C", "D", "Orange"},
       4,
       {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Green"}},
      {{"LBlack", "LMagenta", "Red", "A", "B", "C", "D"},
       8320,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "LMagenta", "LBlack"}},
      {{"LBlack", "MBlack", "Red", "A", "B", "C", "D", "E", "F", "G", "H"},
       8224,
       {"Cyan", "Magenta", "Yellow", "Black", "Red", "Green", "Blue", "LCyan", "LMagenta", "MBlack",
        "LBlack"}},
  });
}

TEST(ColorModesInPlace, ASingleBlackOrGrayStaysAsItIsCalled) {
  const Installation installation;
  ExpectInPlace({{{"Gray"}, 8, {"Gray"}}, {{"Black"}, 8, {"Black"}}});
}

TEST(ColorModesInPlace, SetsOfFlagsArePutInOrder) {
  const Installation installation;
  ExpectInPlace({
      {{"LCyan", "Cyan"}, ModeOf(0x80000011), {"Cyan", "LCyan"}},
      {{"Magenta"}, ModeOf(0x80000002), {"Magenta"}},
      {{"MBlack", "LCyan", "Blue", "Gray", "Yellow"},
       ModeOf(0x80009094),
       {"Yellow", "Gray", "Blue", "LCyan", "MBlack"}},
      {{}, INT_MIN, {}},
  });
}

TEST(ColorModesInPlace, ExtraColorantsGoBeforeTheLightInks) {
  InOwnProcess([] {
    const Installation installation("Violet 10000 0 0 0\nSilver 20000 0 0 0\n");
    ExpectInPlace({
        {{"LCyan", "Violet"}, ModeOf(0x80010010), {"Violet", "LCyan"}},
        {{"LCyan", "Silver", "Cyan", "Black", "Violet"},
         ModeOf(0x80030019),
         {"Cyan", "Black", "Silver", "Violet", "LCyan"}},
        {{"Violet", "Violet"}, 0, {}},
    });
  });
}

TEST(ColorModesInPlace, RefusedListsBecomeEmpty) {
  const Installation installation;
  ExpectInPlace({
      {{"White"}, 0, {}},
      {{"X"}, 0, {}},
      {{"Cyan", "Cyan"}, 0, {}},
      {{"Magenta", "Yellow", "X"}, 0, {}},
      {{"Cyan", "Magenta", "Yellow", "Black", "White"}, 0, {}},
  });
}

// Short memory.

/// Runs an operation with each of its allocations failing; `check` is called after each run.
template <class Run, class Check>
void WithShortages(Run run, Check check) {
  bool reached = true;
  for (std::size_t which = 0; reached; ++which) {
    ASSERT_LT(which, 1000u);
    SCOPED_TRACE(which);
    AStringArray names = {"left", "over"};
    int result = 0;
    {
      const AllocationFailsAt shortage(which);
      result = run(names);
      reached = AllocationFailsAt::Reached();
    }
    check(result, names, reached);
  }
}

TEST(ColorModesWhereMemoryIsShort, LeaveNoNamesWithoutAMode) {
  const Installation installation;
  for (const InPlaceRow& row : std::vector<InPlaceRow>{
           {{"Yellow", "X", "Cyan"}, 16, {"Cyan", "Magenta", "Yellow"}},
           {{"Gray"}, 8, {"Gray"}},
           {{"MBlack", "Yellow"}, ModeOf(0x80001004), {"Yellow", "MBlack"}},
           {{"MBlack", "X"}, 0, {}},
       }) {
    int refusals = 0;
    WithShortages([&](AStringArray& names) { return GetColorModeByNames(row.given, names); },
                  [&](int mode, const AStringArray& names, bool reached) {
                    refusals += mode == 0;
                    EXPECT_TRUE(mode == row.mode || (mode == 0 && reached)) << mode;
                    EXPECT_TRUE(names == (mode == 0 ? AStringArray() : row.ordered));
                  });
    EXPECT_GT(refusals, 0);
  }
}

TEST(ColorModesWhereMemoryIsShort, GiveAllNamesOfAModeOrNone) {
  const Installation installation;
  const AStringArray standard = {"Cyan", "Gray", "Blue", "LCyan", "MBlack"};
  const AStringArray dark = {"Cyan", "Gray", "Blue"};
  constexpr std::uint32_t kBits = 0x80009091;
  int without = 0;
  WithShortages(
      [](AStringArray& names) {
        GetStandardColorNamesByColorMode(ModeOf(kBits), names);
        return 1;
      },
      [&](int, const AStringArray& names, bool reached) {
        EXPECT_TRUE(names == standard || (names.empty() && reached)) << names.size();
        without += names.empty();
      });
  EXPECT_GT(without, 0);
  without = 0;
  WithShortages([](AStringArray& names) { return GetDarkNames(ModeOf(kBits), names) ? 1 : 0; },
                [&](int any, const AStringArray& names, bool reached) {
                  EXPECT_TRUE(names == dark || (names.empty() && reached)) << names.size();
                  EXPECT_EQ(any, names.empty() ? 0 : 1);
                  without += names.empty();
                });
  EXPECT_GT(without, 0);
}

// Names as C strings.

TEST(ColorModeOfStrings, TakesTheTableOfTheListOfNames) {
  const char* violet[] = {"Violet"};
  const char* silver[] = {"LCyan", "Silver"};
  InOwnProcess([&] {
    const Installation installation("Violet 10000 0 0 0\n");
    EXPECT_EQ(GetColorModeFromNames(violet, 1), ModeOf(0x80010000));
    installation.Define("Silver 20000 0 0 0\n");
    AStringArray ordered;
    EXPECT_EQ(GetColorModeByNames({"Violet"}, ordered), ModeOf(0x80010000));
    EXPECT_EQ(GetColorModeByNames({"Silver"}, ordered), 0);
  });
  InOwnProcess([&] {
    const Installation installation("Silver 20000 0 0 0\n");
    AStringArray ordered;
    EXPECT_EQ(GetColorModeByNames({"Silver"}, ordered), ModeOf(0x80020000));
    installation.Define("Violet 10000 0 0 0\n");
    EXPECT_EQ(GetColorModeFromNames(silver, 2), ModeOf(0x80020010));
    EXPECT_EQ(GetColorModeFromNames(violet, 1), 0);
  });
}

}  // namespace
}  // namespace vkcl::testing
