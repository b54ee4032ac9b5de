#include "colornames/ColorInfo.h"

#include <climits>
#include <cstdint>

#include "support/Installation.h"

namespace {

using vkcl::testing::InOwnProcess;
using vkcl::testing::Installation;

struct Channels {
  int light;
  int medium;

  friend bool operator==(const Channels&, const Channels&) = default;
};

void PrintTo(const Channels& channels, std::ostream* out) {
  *out << "light " << channels.light << ", medium " << channels.medium;
}

constexpr Channels kNeither = {-1, -1};

/// The channels that are given, whatever was there; the result must be `result`.
Channels ChannelsOf(int mode, int colorant, int result) {
  int light = 77;
  int medium = 78;
  EXPECT_EQ(ColorUtils::ColorInfo::GetLightMediumIndex(mode, colorant, light, medium), result);
  return {light, medium};
}

int Mode(std::uint32_t bits) { return static_cast<int>(bits); }

struct Row {
  int mode;
  Channels cyan;
  Channels magenta;
  Channels yellow;
  Channels black;
};

constexpr Row kRows[] = {
    {1, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}},    {2, {4, -1}, {5, -1}, {-1, -1}, {-1, -1}},
    {4, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}},    {8, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}},
    {16, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}},   {32, {6, -1}, {7, -1}, {-1, -1}, {-1, -1}},
    {64, {-1, 4}, {-1, 5}, {-1, -1}, {-1, -1}},     {128, {-1, 6}, {-1, 7}, {-1, -1}, {-1, -1}},
    {256, {4, 6}, {5, 7}, {-1, -1}, {-1, -1}},      {512, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}},
    {1024, {4, -1}, {5, -1}, {-1, -1}, {6, -1}},    {2048, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}},
    {4096, {4, -1}, {5, -1}, {6, -1}, {7, -1}},     {8192, {4, -1}, {5, -1}, {-1, -1}, {7, 6}},
    {8194, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}}, {8196, {-1, 4}, {-1, 5}, {-1, -1}, {-1, 6}},
    {8200, {-1, -1}, {4, -1}, {-1, -1}, {6, 5}},    {8208, {-1, -1}, {7, -1}, {-1, -1}, {9, 8}},
    {8224, {7, -1}, {8, -1}, {-1, -1}, {10, 9}},    {8256, {-1, -1}, {-1, -1}, {-1, -1}, {7, 6}},
    {8320, {-1, -1}, {5, -1}, {-1, -1}, {6, -1}},
};

TEST(LightMediumIndex, OfNamedInkSets) {
  const Installation installation;
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.mode);
    EXPECT_EQ(ChannelsOf(row.mode, 0, 1), row.cyan);
    EXPECT_EQ(ChannelsOf(row.mode, 1, 1), row.magenta);
    EXPECT_EQ(ChannelsOf(row.mode, 2, 1), row.yellow);
    EXPECT_EQ(ChannelsOf(row.mode, 3, 1), row.black);
  }
}

TEST(LightMediumIndex, OfFlagSetsFollowsTheCanonicalOrder) {
  const Installation installation;
  // LCyan, LMagenta, MCyan, MMagenta, LBlack, LYellow, MBlack, behind the dark inks.
  const int all = Mode(0x80001F3F);
  EXPECT_EQ(ChannelsOf(all, 0, 1), (Channels{4, 6}));
  EXPECT_EQ(ChannelsOf(all, 1, 1), (Channels{5, 7}));
  EXPECT_EQ(ChannelsOf(all, 2, 1), (Channels{9, -1}));
  EXPECT_EQ(ChannelsOf(all, 3, 1), (Channels{8, 10}));

  const int every = Mode(0x8000FFFF);
  EXPECT_EQ(ChannelsOf(every, 0, 1), (Channels{9, 11}));
  EXPECT_EQ(ChannelsOf(every, 1, 1), (Channels{10, 12}));
  EXPECT_EQ(ChannelsOf(every, 2, 1), (Channels{14, -1}));
  EXPECT_EQ(ChannelsOf(every, 3, 1), (Channels{13, 15}));

  EXPECT_EQ(ChannelsOf(Mode(0x80000010), 0, 1), (Channels{0, -1}));
  EXPECT_EQ(ChannelsOf(Mode(0x80000100), 0, 1), (Channels{-1, 0}));
  EXPECT_EQ(ChannelsOf(Mode(0x80000020), 1, 1), (Channels{0, -1}));
  EXPECT_EQ(ChannelsOf(Mode(0x80000200), 1, 1), (Channels{-1, 0}));
  EXPECT_EQ(ChannelsOf(Mode(0x80000800), 2, 1), (Channels{0, -1}));
  EXPECT_EQ(ChannelsOf(Mode(0x80000400), 3, 1), (Channels{0, -1}));
  EXPECT_EQ(ChannelsOf(Mode(0x80001000), 3, 1), (Channels{-1, 0}));
  EXPECT_EQ(ChannelsOf(Mode(0x8000000F), 0, 1), kNeither);
  EXPECT_EQ(ChannelsOf(Mode(0x80001200), 0, 1), kNeither);
}

TEST(LightMediumIndex, OfOtherColorantsIsNone) {
  const Installation installation;
  for (const int colorant : {-1, 4, 5, 6, 20, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(colorant);
    for (const Row& row : kRows) EXPECT_EQ(ChannelsOf(row.mode, colorant, 0), kNeither);
    EXPECT_EQ(ChannelsOf(Mode(0x8000FFFF), colorant, 0), kNeither);
  }
}

TEST(LightMediumIndex, OfAModeWithoutInksIsNone) {
  const Installation installation;
  for (const int mode : {0, 3, 5, 8193, 8198, INT_MAX, INT_MIN, Mode(0x80010000)}) {
    SCOPED_TRACE(mode);
    for (int colorant = 0; colorant < 4; ++colorant) {
      EXPECT_EQ(ChannelsOf(mode, colorant, 0), kNeither);
    }
  }
}

TEST(LightMediumIndex, CountsTheExtraColorantsOfTheDefinitions) {
  InOwnProcess([] {
    const Installation installation(
        "Violet 10000 0 0 0\nBoth 60000 0 0 0\nPale 10 0 0 0\nBrown 80000 0 0 0\n");
    EXPECT_EQ(ChannelsOf(Mode(0x80010101), 0, 1), (Channels{-1, 2}));
    EXPECT_EQ(ChannelsOf(Mode(0x800B0201), 1, 1), (Channels{-1, 4}));
    EXPECT_EQ(ChannelsOf(Mode(0x80070C0F), 2, 1), (Channels{7, -1}));
    EXPECT_EQ(ChannelsOf(Mode(0x80070C0F), 3, 1), (Channels{6, -1}));
    EXPECT_EQ(ChannelsOf(Mode(0x80010000), 0, 1), kNeither);
    // An extra colorant that shares the flag of a built-in one stands beside it in the list; a
    // place beyond the channels of the mode names none of them.
    EXPECT_EQ(ChannelsOf(Mode(0x80000011), 0, 1), kNeither);
    EXPECT_EQ(ChannelsOf(Mode(0x80000111), 0, 1), (Channels{2, -1}));
    EXPECT_EQ(ChannelsOf(Mode(0x80000131), 0, 1), (Channels{2, -1}));
    EXPECT_EQ(ChannelsOf(Mode(0x80000131), 1, 1), (Channels{3, -1}));
    // Named ink sets have no extra colorants.
    EXPECT_EQ(ChannelsOf(2, 0, 1), (Channels{4, -1}));
  });
}

}  // namespace
