#include "privatetags/InkLimitRecords.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <initializer_list>

#include "platform/profiler/TesselColorProfiler.h"
#include "support/TagFile.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::HexBytes;
using vkcl::testing::ImageOf;
using vkcl::testing::Payload;

constexpr char k100[] = "0000000000005940";  // 100.0 as a double

/// A version 1 record whose first limits are the given ones; the others are 1000 and their index,
/// so that one that moved is told from one that stayed.
VKMultiInklimit VersionOne(std::initializer_list<double> first) {
  VKMultiInklimit limits;
  limits.version = 1;
  for (int i = 0; i < 36; ++i) limits.limits[i] = 1000.0 + i;
  int i = 0;
  for (const double limit : first) limits.limits[i++] = limit;
  return limits;
}

/// The first `count` limits, as values: the doubles of a packed record are not to be referred to.
std::vector<double> FirstLimits(const VKMultiInklimit& record, int count) {
  std::vector<double> limits;
  for (int i = 0; i < count; ++i) {
    const double limit = record.limits[i];
    limits.push_back(limit);
  }
  return limits;
}

/// The converted limit at `to` for a version 1 record that holds `value` at `from`.
double Converted(int from, double value, int to) {
  VKMultiInklimit limits = VersionOne({});
  limits.limits[from] = value;
  EXPECT_EQ(limits.ConvertToCurrentVersion(1), 1);
  return limits.limits[to];
}

// Multiple ink limits.

TEST(VKMultiInklimit, ByDefaultHolds36LimitsOf100) {
  EXPECT_EQ(ImageOf(VKMultiInklimit()),
            Payload().HexDigits("04000000 2C010000 24000000").HexDigits(k100, 36).bytes());
}

TEST(VKMultiInklimit, LiesInMemoryAsItIsStored) {
  VKMultiInklimit limits;
  limits.version = 0x01020304;
  limits.size = 0x11121314;
  limits.count = 0x21222324;
  limits.limits[0] = 50.0;
  limits.limits[1] = -2.0;
  limits.limits[35] = 0.5;
  EXPECT_EQ(sizeof limits, 300u);
  EXPECT_EQ(ImageOf(limits), Payload()
                                 .HexDigits("04030201 14131211 24232221")
                                 .HexDigits("0000000000004940 00000000000000C0")
                                 .HexDigits(k100, 33)
                                 .HexDigits("000000000000E03F")
                                 .bytes());
}

TEST(VKMultiInklimit, CopiesEveryByte) {
  VKMultiInklimit from;
  std::memset(static_cast<void*>(&from), 0x5B, sizeof from);
  VKMultiInklimit to;
  to = from;
  EXPECT_EQ(ImageOf(to), Bytes(300, 0x5B));
}

TEST(VKMultiInklimit, VersionOneBecomesVersionTwoLimitByLimit) {
  VKMultiInklimit limits =
      VersionOne({10.0, 20.5, 30.25, 40.49, 50.0, 70.0, 80.0, 15.0, 25.0, 60.0, 30.0});
  EXPECT_EQ(limits.ConvertToCurrentVersion(1), 1);
  EXPECT_EQ(limits.version, 2);
  EXPECT_EQ(FirstLimits(limits, 14), (std::vector<double>{
                                         30.0,  // 30.25 of the third limit
                                         21.0,  // 20.5
                                         10.0,  // of the first limit
                                         40.0,  // 40.49
                                         42.0,  // 50 x 50 / 60 = 41.67
                                         60.0,  // 60, at the threshold
                                         15.0,  // 30 x 30 / 60
                                         25.0,  // 50 x 50 / 100
                                         49.0,  // 70 x 70 / 100
                                         64.0,  // 80 x 80 / 100
                                         36.0,  // 60 x 60 / 100
                                         6.0,   // 25 x 25 / 100 = 6.25, of the ninth limit
                                         2.0,   // 15 x 15 / 100 = 2.25, of the eighth limit
                                         9.0,   // 30 x 30 / 100
                                     }));
}

TEST(SpotRecords, SetDataLeavesTheVersion) {
  double values[] = {1.0};
  VKSpotSingleInkLimit limits;
  limits.version = 5;
  limits.SetData(1, "Red", values);
  EXPECT_EQ(limits.version, 5);
  limits.SetData(0, "Red", nullptr);
  EXPECT_EQ(limits.version, 5);
  VKSpotLinDLParam links;
  links.version = 6;
  links.SetData(1, "Red");
  EXPECT_EQ(links.version, 6);
  links.SetData(0, "Red");
  EXPECT_EQ(links.version, 6);
}

TEST(VKMultiInklimit, ConversionGivesNoNegativeZero) {
  for (const double limit : {-1.4, -0.9, -0.6}) {
    EXPECT_EQ(Converted(1, limit, 1), 0.0) << limit;
    EXPECT_FALSE(std::signbit(Converted(1, limit, 1))) << limit;
  }
  EXPECT_EQ(Converted(1, -1.6, 1), -1.0);
}

TEST(VKMultiInklimit, ConversionLeavesTheOtherLimitsCountAndSize) {
  VKMultiInklimit limits = VersionOne({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14});
  limits.count = 14;
  limits.size = 124;
  for (int i = 14; i < 36; ++i) limits.limits[i] = i + 0.75;  // would be rounded
  ASSERT_EQ(limits.ConvertToCurrentVersion(2), 1);
  EXPECT_EQ(limits.count, 14);
  EXPECT_EQ(limits.size, 124);
  const std::vector<double> all = FirstLimits(limits, 36);
  for (int i = 14; i < 36; ++i) EXPECT_EQ(all[static_cast<std::size_t>(i)], i + 0.75) << i;
}

TEST(VKMultiInklimit, ConversionSwapsTheFirstAndThirdLimitAndKeepsTheOthers) {
  EXPECT_EQ(Converted(0, 77.0, 2), 77.0);
  EXPECT_EQ(Converted(2, 78.0, 0), 78.0);
  EXPECT_EQ(Converted(1, 79.0, 1), 79.0);
  EXPECT_EQ(Converted(3, 81.0, 3), 81.0);
}

TEST(VKMultiInklimit, ConversionKeepsThreeLimitsFrom60OnAndSquaresThemBelow) {
  const struct { int from, to; } pairs[] = {{4, 4}, {9, 5}, {10, 6}};
  for (const auto& pair : pairs) {
    EXPECT_EQ(Converted(pair.from, 60.0, pair.to), 60.0) << pair.from;
    EXPECT_EQ(Converted(pair.from, 61.0, pair.to), 61.0) << pair.from;  // not 62.02
    EXPECT_EQ(Converted(pair.from, 100.0, pair.to), 100.0) << pair.from;
    EXPECT_EQ(Converted(pair.from, 400.0, pair.to), 400.0) << pair.from;
    EXPECT_EQ(Converted(pair.from, 59.0, pair.to), 58.0) << pair.from;  // 58.02
    EXPECT_EQ(Converted(pair.from, 50.0, pair.to), 42.0) << pair.from;  // 41.67
    EXPECT_EQ(Converted(pair.from, 10.0, pair.to), 2.0) << pair.from;   // 1.67
    EXPECT_EQ(Converted(pair.from, 0.0, pair.to), 0.0) << pair.from;
    EXPECT_EQ(Converted(pair.from, -50.0, pair.to), 42.0) << pair.from;
    EXPECT_EQ(Converted(pair.from, -90.0, pair.to), 135.0) << pair.from;  // below 60 all the same
  }
}

TEST(VKMultiInklimit, ConversionSquaresSevenLimitsByHundredWithoutThreshold) {
  const struct {
    int from, to;
  } pairs[] = {{4, 7}, {5, 8}, {6, 9}, {9, 10}, {8, 11}, {7, 12}, {10, 13}};
  for (const auto& pair : pairs) {
    EXPECT_EQ(Converted(pair.from, 100.0, pair.to), 100.0) << pair.to;
    EXPECT_EQ(Converted(pair.from, 90.0, pair.to), 81.0) << pair.to;
    EXPECT_EQ(Converted(pair.from, 60.0, pair.to), 36.0) << pair.to;
    EXPECT_EQ(Converted(pair.from, 35.0, pair.to), 12.0) << pair.to;  // 12.25
    EXPECT_EQ(Converted(pair.from, 5.0, pair.to), 0.0) << pair.to;    // 0.25
    EXPECT_EQ(Converted(pair.from, 7.5, pair.to), 1.0) << pair.to;    // 0.5625
    EXPECT_EQ(Converted(pair.from, -40.0, pair.to), 16.0) << pair.to;
    EXPECT_EQ(Converted(pair.from, 120.0, pair.to), 144.0) << pair.to;
  }
}

TEST(VKMultiInklimit, ConversionRoundsByAddingAHalfAndCuttingTowardsZero) {
  const struct {
    double before, after;
  } cases[] = {{0.49, 0.0},  {0.5, 1.0},   {2.5, 3.0},   {99.5, 100.0}, {-0.4, 0.0},
               {-0.6, 0.0},  {-1.4, 0.0},  {-1.5, -1.0}, {-1.6, -1.0},  {-2.5, -2.0},
               {-2.6, -2.0}, {-3.0, -2.0}, {-10.4, -9.0}};
  for (const auto& one : cases) {
    EXPECT_EQ(Converted(0, one.before, 2), one.after) << one.before;
    EXPECT_EQ(Converted(1, one.before, 1), one.after) << one.before;
    EXPECT_EQ(Converted(2, one.before, 0), one.after) << one.before;
    EXPECT_EQ(Converted(3, one.before, 3), one.after) << one.before;
  }
}

TEST(VKMultiInklimit, ConversionKeepsLimitsThatNoIntegerTypeHolds) {
  EXPECT_EQ(Converted(1, 3e9, 1), 3e9);
  EXPECT_EQ(Converted(1, -3e9, 1), -3e9 + 1);
  EXPECT_EQ(Converted(4, 3e9, 4), 3e9);
  EXPECT_EQ(Converted(4, 3e9, 7), 9e16);
  EXPECT_EQ(Converted(3, 1e300, 3), 1e300);
}

TEST(VKMultiInklimit, ConvertsForTheColorModesOfTheCmykFamilyOnly) {
  for (const int mode : {1, 2, 64, 256, 1024, 4096, 8192}) {
    VKMultiInklimit limits = VersionOne({5.0, 6.0, 7.0});
    EXPECT_EQ(limits.ConvertToCurrentVersion(mode), 1) << mode;
    EXPECT_EQ(limits.version, 2) << mode;
    EXPECT_EQ(FirstLimits(limits, 3), (std::vector<double>{7.0, 6.0, 5.0})) << mode;
  }
  const Bytes before = ImageOf(VersionOne({5.0, 6.0, 7.0}));
  for (const int mode : {512, 0, 3, 4, 8, 16, 32, 65, 128, 2048, 16384, 32768, -1, -2147483647}) {
    VKMultiInklimit limits = VersionOne({5.0, 6.0, 7.0});
    EXPECT_EQ(limits.ConvertToCurrentVersion(mode), 0) << mode;
    EXPECT_EQ(ImageOf(limits), before) << mode;
  }
}

TEST(VKMultiInklimit, FromVersionTwoOnIsCurrentInEveryColorMode) {
  for (const int version : {2, 3, 4, 5, 1000}) {
    for (const int mode : {1, 512, 0, -1}) {
      VKMultiInklimit limits = VersionOne({5.5, 6.5, 7.5, 8.5, 50.0});
      limits.version = version;
      const Bytes before = ImageOf(limits);
      EXPECT_EQ(limits.ConvertToCurrentVersion(mode), 1) << version << ' ' << mode;
      EXPECT_EQ(ImageOf(limits), before) << version << ' ' << mode;
    }
  }
}

TEST(VKMultiInklimit, BelowVersionTwoIsConverted) {
  for (const int version : {0, -7}) {
    VKMultiInklimit limits = VersionOne({5.0, 6.0, 7.0});
    limits.version = version;
    EXPECT_EQ(limits.ConvertToCurrentVersion(1), 1) << version;
    EXPECT_EQ(limits.version, 2) << version;
    EXPECT_EQ(FirstLimits(limits, 3), (std::vector<double>{7.0, 6.0, 5.0})) << version;
  }
}

TEST(VKMultiInklimit, ConvertedOnceStaysAsItIs) {
  VKMultiInklimit limits = VersionOne({5.0, 6.0, 7.0, 8.0, 50.0});
  ASSERT_EQ(limits.ConvertToCurrentVersion(64), 1);
  const Bytes once = ImageOf(limits);
  EXPECT_EQ(limits.ConvertToCurrentVersion(64), 1);
  EXPECT_EQ(ImageOf(limits), once);
}

// Single ink limits.

TEST(VKSingleInkLimitWithLinRef, ByDefaultHolds16LimitsOf100) {
  EXPECT_EQ(ImageOf(VKSingleInkLimitWithLinRef()),
            Payload().HexDigits("01000000 8C000000 10000000").HexDigits(k100, 16).bytes());
}

TEST(VKSingleInkLimitWithLinRef, LiesInMemoryAsItIsStored) {
  VKSingleInkLimitWithLinRef limits;
  limits.version = 0x01020304;
  limits.size = 0x11121314;
  limits.count = 0x21222324;
  limits.limits[0] = 50.0;
  limits.limits[15] = -2.0;
  EXPECT_EQ(sizeof limits, 140u);
  const Bytes expected = Payload()
                             .HexDigits("04030201 14131211 24232221 0000000000004940")
                             .HexDigits(k100, 14)
                             .HexDigits("00000000000000C0");
  EXPECT_EQ(ImageOf(limits), expected);
  VKSingleInkLimitWithLinRef copy;
  copy = limits;
  EXPECT_EQ(ImageOf(copy), expected);
}

// Extra data of the linearisation.

TEST(VKLinExtraDataParam, ByDefaultHoldsVersionOneAndNothingElse) {
  // The second block is named a block without a value of its own; the first 284 bytes are not.
  Bytes image = ImageOf(VKLinExtraDataParam());
  EXPECT_EQ(image.size(), 572u);
  image.resize(284);
  EXPECT_EQ(image, Payload().HexDigits("01000000").Fill(280).bytes());
}

TEST(VKLinExtraDataParam, LiesInMemoryAsItIsStored) {
  VKLinExtraDataParam param;
  param.version = 0x01020304;
  std::memset(param.text, 't', 129);
  param.value = 0x11121314;
  std::memset(param.blockA, 0xA1, 144);
  std::memset(param.blockB, 0xB2, 288);
  const Bytes expected = Payload()
                             .HexDigits("04030201")
                             .HexDigits("74", 129)
                             .Fill(3)
                             .HexDigits("14131211")
                             .HexDigits("A1", 144)
                             .HexDigits("B2", 288);
  EXPECT_EQ(ImageOf(param), expected);
  VKLinExtraDataParam copy;
  copy = param;
  EXPECT_EQ(ImageOf(copy), expected);
}

// Limits of a spot colour.

TEST(VKSpotSingleInkLimit, ByDefaultIsOfVersionOneAndEmpty) {
  const VKSpotSingleInkLimit spot;
  EXPECT_EQ(spot.version, 1);
  EXPECT_EQ(spot.size, 0);
  EXPECT_EQ(spot.count, 0);
  EXPECT_EQ(spot.name, nullptr);
  EXPECT_EQ(spot.limits, nullptr);
}

TEST(VKSpotSingleInkLimit, KeepsCopiesOfNameAndLimits) {
  VKSpotSingleInkLimit spot;
  double values[] = {12.5, -3.0, 100.0};
  spot.SetData(3, "Warm Red", values);
  values[0] = 0;
  EXPECT_EQ(spot.version, 1);
  EXPECT_EQ(spot.count, 3);
  EXPECT_EQ(spot.size, 8 + 8 * 3 + 12);
  EXPECT_STREQ(spot.name, "Warm Red");
  ASSERT_NE(spot.limits, nullptr);
  EXPECT_NE(spot.limits, values);
  EXPECT_EQ(spot.limits[0], 12.5);
  EXPECT_EQ(spot.limits[1], -3.0);
  EXPECT_EQ(spot.limits[2], 100.0);
}

TEST(VKSpotSingleInkLimit, ReplacesWhatItHeld) {
  VKSpotSingleInkLimit spot;
  double values[] = {1.0, 2.0};
  spot.SetData(2, "A longer name", values);
  spot.SetData(1, "B", values + 1);
  EXPECT_EQ(spot.count, 1);
  EXPECT_EQ(spot.size, 1 + 8 + 12);
  EXPECT_STREQ(spot.name, "B");
  EXPECT_EQ(spot.limits[0], 2.0);
}

TEST(VKSpotSingleInkLimit, TakesAnEmptyName) {
  VKSpotSingleInkLimit spot;
  double values[] = {1.0};
  spot.SetData(1, "", values);
  EXPECT_STREQ(spot.name, "");
  EXPECT_EQ(spot.size, 20);
}

TEST(VKSpotSingleInkLimit, TakesItsOwnLimits) {
  VKSpotSingleInkLimit spot;
  double values[] = {1.0, 2.0};
  spot.SetData(2, "A", values);
  spot.SetData(2, "B", spot.limits);
  EXPECT_STREQ(spot.name, "B");
  ASSERT_NE(spot.limits, nullptr);
  EXPECT_EQ(spot.limits[0], 1.0);
  EXPECT_EQ(spot.limits[1], 2.0);
}

TEST(VKSpotSingleInkLimit, WithoutLimitsKeepsNoNameButCountsItsLength) {
  VKSpotSingleInkLimit spot;
  double values[] = {1.0, 2.0};
  spot.SetData(2, "Before", values);
  spot.SetData(0, "Orange", values);
  EXPECT_EQ(spot.count, 0);
  EXPECT_EQ(spot.name, nullptr);
  EXPECT_EQ(spot.limits, nullptr);
  EXPECT_EQ(spot.size, 6 + 12);
  spot.SetData(0, "", values);
  EXPECT_EQ(spot.size, 12);
}

TEST(VKSpotSingleInkLimit, TakesANegativeCountAsZero) {
  VKSpotSingleInkLimit spot;
  double values[] = {1.0};
  spot.SetData(1, "Before", values);
  for (const int count : {-1, -3, -2147483647 - 1}) {
    spot.SetData(count, "Orange", values);
    EXPECT_EQ(spot.count, 0) << count;
    EXPECT_EQ(spot.name, nullptr);
    EXPECT_EQ(spot.limits, nullptr);
    EXPECT_EQ(spot.size, 6 + 12) << count;
  }
}

TEST(VKSpotSingleInkLimit, CopiesShareTheArrays) {
  VKSpotSingleInkLimit from;
  double values[] = {1.0, 2.0};
  from.SetData(2, "Gold", values);
  from.version = 5;
  VKSpotSingleInkLimit assigned;
  assigned = from;
  VKSpotSingleInkLimit constructed(from);
  for (VKSpotSingleInkLimit* copy : {&assigned, &constructed}) {
    EXPECT_EQ(copy->version, 5);
    EXPECT_EQ(copy->size, 32);
    EXPECT_EQ(copy->count, 2);
    EXPECT_EQ(copy->name, from.name);
    EXPECT_EQ(copy->limits, from.limits);
    // Only one of the three may be destroyed with the arrays in it.
    copy->name = nullptr;
    copy->limits = nullptr;
  }
}

TEST(VKSpotSingleInkLimit, AssignedToItselfKeepsTheArrays) {
  VKSpotSingleInkLimit spot;
  double values[] = {1.0, 2.0};
  spot.SetData(2, "Gold", values);
  const VKSpotSingleInkLimit& itself = spot;
  spot = itself;
  EXPECT_STREQ(spot.name, "Gold");
  EXPECT_EQ(spot.limits[1], 2.0);
}

// Links of a spot colour.

/// What a link serialises to: its length, or -1 when the handle is refused.
long SavedLength(void* link) {
  unsigned int length = 12345;
  return CLSaveLink8ToMemory(link, nullptr, 0, &length) == 0 ? static_cast<long>(length) : -1;
}

TEST(VKSpotLinDLParam, ByDefaultIsOfVersionOneAndEmpty) {
  const VKSpotLinDLParam spot;
  EXPECT_EQ(spot.version, 1);
  EXPECT_EQ(spot.size, 0);
  EXPECT_EQ(spot.count, 0);
  EXPECT_EQ(spot.nameLength, 0);
  EXPECT_EQ(spot.name, nullptr);
  EXPECT_EQ(spot.linkSizes, nullptr);
  EXPECT_EQ(spot.links, nullptr);
}

TEST(VKSpotLinDLParam, HoldsANewEmptyLinkForEachEntry) {
  VKSpotLinDLParam spot;
  spot.SetData(3, "Green");
  EXPECT_EQ(spot.version, 1);
  EXPECT_EQ(spot.size, 0);
  EXPECT_EQ(spot.count, 3);
  EXPECT_EQ(spot.nameLength, 5);
  EXPECT_STREQ(spot.name, "Green");
  ASSERT_NE(spot.linkSizes, nullptr);
  ASSERT_NE(spot.links, nullptr);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(spot.linkSizes[i], 0) << i;
    ASSERT_NE(spot.links[i], nullptr) << i;
    EXPECT_EQ(SavedLength(spot.links[i]), 0) << i;
  }
  EXPECT_NE(spot.links[0], spot.links[1]);
  EXPECT_NE(spot.links[1], spot.links[2]);
}

TEST(VKSpotLinDLParam, ReplacesWhatItHeldAndForgetsTheSize) {
  VKSpotLinDLParam spot;
  spot.SetData(2, "A longer name");
  spot.size = 4711;
  spot.linkSizes[0] = 99;
  spot.SetData(1, "B");
  EXPECT_EQ(spot.size, 0);
  EXPECT_EQ(spot.count, 1);
  EXPECT_EQ(spot.nameLength, 1);
  EXPECT_STREQ(spot.name, "B");
  EXPECT_EQ(spot.linkSizes[0], 0);
  EXPECT_EQ(SavedLength(spot.links[0]), 0);
}

TEST(VKSpotLinDLParam, WithoutLinksKeepsNothing) {
  for (const int count : {0, -1, -2147483647 - 1}) {
    VKSpotLinDLParam spot;
    spot.SetData(2, "Before");
    spot.size = 4711;
    spot.SetData(count, "Green");
    EXPECT_EQ(spot.count, 0) << count;
    EXPECT_EQ(spot.size, 0);
    EXPECT_EQ(spot.nameLength, 0);
    EXPECT_EQ(spot.name, nullptr);
    EXPECT_EQ(spot.linkSizes, nullptr);
    EXPECT_EQ(spot.links, nullptr);
  }
}

TEST(VKSpotLinDLParam, ReleasedHoldsNothingAndKeepsVersionAndSize) {
  VKSpotLinDLParam spot;
  spot.SetData(2, "Gold");
  spot.version = 3;
  spot.size = 4711;
  for (int i = 0; i < 2; ++i) {
    spot.Release();
    EXPECT_EQ(spot.count, 0);
    EXPECT_EQ(spot.nameLength, 0);
    EXPECT_EQ(spot.name, nullptr);
    EXPECT_EQ(spot.linkSizes, nullptr);
    EXPECT_EQ(spot.links, nullptr);
    EXPECT_EQ(spot.version, 3);
    EXPECT_EQ(spot.size, 4711);
  }
}

TEST(VKSpotLinDLParam, CopiesShareTheArraysAndLinks) {
  VKSpotLinDLParam from;
  from.SetData(2, "Gold");
  from.size = 77;
  VKSpotLinDLParam assigned;
  assigned = from;
  VKSpotLinDLParam constructed(from);
  for (VKSpotLinDLParam* copy : {&assigned, &constructed}) {
    EXPECT_EQ(copy->version, 1);
    EXPECT_EQ(copy->size, 77);
    EXPECT_EQ(copy->count, 2);
    EXPECT_EQ(copy->nameLength, 4);
    EXPECT_EQ(copy->name, from.name);
    EXPECT_EQ(copy->linkSizes, from.linkSizes);
    EXPECT_EQ(copy->links, from.links);
    // Only one of the three may be destroyed with the arrays in it.
    *copy = VKSpotLinDLParam();
  }
}

TEST(VKSpotLinDLParam, AssignedToItselfKeepsTheLinks) {
  VKSpotLinDLParam spot;
  spot.SetData(2, "Gold");
  const VKSpotLinDLParam& itself = spot;
  spot = itself;
  EXPECT_STREQ(spot.name, "Gold");
  EXPECT_EQ(SavedLength(spot.links[1]), 0);
}

TEST(VKSpotLinDLParam, IsDestroyedAlsoWithLinksMissing) {
  VKSpotLinDLParam spot;
  spot.SetData(3, "Gold");
  CLFreeCLLink8Ref(spot.links[1]);
  spot.links[1] = nullptr;
  spot.SetData(1, "Silver");
  CLFreeCLLink8Ref(spot.links[0]);
  spot.links[0] = nullptr;
}

}  // namespace
