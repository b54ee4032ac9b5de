#include "privatetags/ProfileDataList.h"

#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr std::uint32_t kCmyk = 0x434D594B;
constexpr std::uint32_t kLab = 0x4C616220;

/// Three samples of two values each, 0.5 upwards in steps of 1, all counters set.
void Fill(ProfileDataList& list) {
  list.DataFormat = kCmyk;
  list.ColorMode = 64;
  list.NumOfColors = 2;
  ASSERT_EQ(list.RefreshList(3), 1);
  list.Measured = 2;
  for (int i = 0; i < 6; ++i) list.DataList[i] = i + 0.5;
}

void GivePerSample(ProfileDataList& list, std::int32_t first) {
  list.PerSample = new std::int32_t[static_cast<std::size_t>(list.NumOfSamples)];
  for (int i = 0; i < list.NumOfSamples; ++i) list.PerSample[i] = first + i;
}

void ExpectFilled(const ProfileDataList& list) {
  EXPECT_EQ(list.DataFormat, kCmyk);
  EXPECT_EQ(list.NumOfSamples, 3);
  EXPECT_EQ(list.ColorMode, 64);
  EXPECT_EQ(list.NumOfColors, 2);
  EXPECT_EQ(list.Measured, 2);
  ASSERT_NE(list.DataList, nullptr);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(list.DataList[i], i + 0.5) << i;
}

TEST(ProfileDataList, ByDefaultIsEmpty) {
  const ProfileDataList list;
  EXPECT_EQ(list.DataFormat, 0u);
  EXPECT_EQ(list.NumOfSamples, 0);
  EXPECT_EQ(list.ColorMode, 0);
  EXPECT_EQ(list.NumOfColors, 0);
  EXPECT_EQ(list.Measured, 0);
  EXPECT_EQ(list.DataList, nullptr);
  EXPECT_EQ(list.PerSample, nullptr);
  EXPECT_EQ(list.Extra1, 0);
  EXPECT_EQ(list.Extra2, -1);
  EXPECT_EQ(list.GetDataSize(), 0u);
}

TEST(ProfileDataList, RefreshMakesZeroValues) {
  ProfileDataList list;
  list.NumOfColors = 4;
  list.Measured = 9;
  EXPECT_EQ(list.RefreshList(10), 1);
  EXPECT_EQ(list.NumOfSamples, 10);
  EXPECT_EQ(list.NumOfColors, 4);
  EXPECT_EQ(list.Measured, 0);
  EXPECT_EQ(list.PerSample, nullptr);
  ASSERT_NE(list.DataList, nullptr);
  for (int i = 0; i < 40; ++i) EXPECT_EQ(list.DataList[i], 0.0) << i;
  EXPECT_EQ(list.GetDataSize(), 320u);
}

TEST(ProfileDataList, RefreshReplacesValuesAndDropsThePerSampleArray) {
  ProfileDataList list;
  Fill(list);
  GivePerSample(list, 5);
  list.Extra1 = 7;
  list.Extra2 = 8;
  EXPECT_EQ(list.RefreshList(4), 1);
  EXPECT_EQ(list.NumOfSamples, 4);
  EXPECT_EQ(list.Measured, 0);
  EXPECT_EQ(list.PerSample, nullptr);
  ASSERT_NE(list.DataList, nullptr);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(list.DataList[i], 0.0) << i;
  EXPECT_EQ(list.DataFormat, kCmyk);
  EXPECT_EQ(list.ColorMode, 64);
  EXPECT_EQ(list.Extra1, 7);
  EXPECT_EQ(list.Extra2, 8);
}

TEST(ProfileDataList, RefreshThatFailsChangesNothing) {
  ProfileDataList list;
  Fill(list);
  GivePerSample(list, 5);
  for (const int samples : {-1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(list.RefreshList(samples), 0) << samples;
    ExpectFilled(list);
    ASSERT_NE(list.PerSample, nullptr);
    EXPECT_EQ(list.PerSample[2], 7);
  }
}

TEST(ProfileDataList, RefreshToMoreThanMemoryHoldsFailsAndChangesNothing) {
  ProfileDataList list;
  Fill(list);
  GivePerSample(list, 5);
  const double* const values = list.DataList;
  list.NumOfColors = std::numeric_limits<std::int32_t>::max();
  EXPECT_EQ(list.RefreshList(std::numeric_limits<int>::max()), 0);
  list.NumOfColors = -2;
  EXPECT_EQ(list.RefreshList(3), 0);
  list.NumOfColors = 2;
  EXPECT_EQ(list.DataList, values);
  ExpectFilled(list);
  ASSERT_NE(list.PerSample, nullptr);
  EXPECT_EQ(list.PerSample[2], 7);
}

TEST(ProfileDataList, RefreshToMoreThanTheDataSizeTellsFailsAndChangesNothing) {
  ProfileDataList list;
  list.NumOfColors = 8192;
  EXPECT_EQ(list.RefreshList(65536), 0);  // 2^32 bytes
  EXPECT_EQ(list.DataList, nullptr);
  EXPECT_EQ(list.NumOfSamples, 0);
}

TEST(ProfileDataList, NegativeCountersMeanNoValues) {
  for (const bool ofSamples : {true, false}) {
    ProfileDataList first;
    ProfileDataList second;
    Fill(first);
    Fill(second);
    second.DataList[0] = 99.0;
    for (ProfileDataList* list : {&first, &second}) {
      (ofSamples ? list->NumOfSamples : list->NumOfColors) = -1;
    }
    EXPECT_TRUE(first == second);
    const ProfileDataList copy(first);
    EXPECT_EQ(copy.NumOfSamples, ofSamples ? -1 : 3);
    EXPECT_TRUE(copy == first);
  }
}

TEST(ProfileDataList, DataSizeCountsOnlyAListWithValues) {
  ProfileDataList list;
  list.NumOfSamples = 3;
  list.NumOfColors = 2;
  EXPECT_EQ(list.GetDataSize(), 0u);
  Fill(list);
  EXPECT_EQ(list.GetDataSize(), 48u);
}

TEST(ProfileDataList, CopiesAreDeep) {
  ProfileDataList from;
  Fill(from);
  GivePerSample(from, 5);
  from.Extra1 = 7;
  from.Extra2 = 8;
  ProfileDataList assigned;
  assigned = from;
  const ProfileDataList constructed(from);
  from.DataList[0] = 99;
  from.PerSample[0] = 99;
  for (const ProfileDataList* copy : {&std::as_const(assigned), &constructed}) {
    ExpectFilled(*copy);
    EXPECT_NE(copy->DataList, from.DataList);
    ASSERT_NE(copy->PerSample, nullptr);
    EXPECT_NE(copy->PerSample, from.PerSample);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(copy->PerSample[i], 5 + i);
    EXPECT_EQ(copy->Extra1, 7);
    EXPECT_EQ(copy->Extra2, 8);
  }
}

TEST(ProfileDataList, AssignmentCopiesThePerSampleArrayOfAListWithoutValues) {
  ProfileDataList from;
  from.NumOfSamples = 2;
  GivePerSample(from, 5);
  ProfileDataList to;
  Fill(to);
  GivePerSample(to, 9);
  to = from;
  EXPECT_EQ(to.DataList, nullptr);
  ASSERT_NE(to.PerSample, nullptr);
  EXPECT_EQ(to.PerSample[0], 5);
  EXPECT_EQ(to.PerSample[1], 6);
  to = ProfileDataList();
  EXPECT_EQ(to.PerSample, nullptr);
}

TEST(ProfileDataList, AssignmentReplacesEverything) {
  ProfileDataList to;
  to.NumOfColors = 5;
  ASSERT_EQ(to.RefreshList(7), 1);
  GivePerSample(to, 1);
  to.Extra1 = 3;
  ProfileDataList from;
  Fill(from);
  to = from;
  ExpectFilled(to);
  EXPECT_EQ(to.PerSample, nullptr);
  EXPECT_EQ(to.Extra1, 0);
  EXPECT_EQ(to.Extra2, -1);
}

TEST(ProfileDataList, AssignedFromAListWithoutValuesHasItsCountersAndNoValues) {
  ProfileDataList from;
  from.DataFormat = kLab;
  from.NumOfSamples = 11;
  from.ColorMode = 12;
  from.NumOfColors = 13;
  from.Measured = 14;
  ProfileDataList to;
  Fill(to);
  GivePerSample(to, 5);
  to = from;
  EXPECT_EQ(to.DataFormat, kLab);
  EXPECT_EQ(to.NumOfSamples, 11);
  EXPECT_EQ(to.ColorMode, 12);
  EXPECT_EQ(to.NumOfColors, 13);
  EXPECT_EQ(to.Measured, 14);
  EXPECT_EQ(to.DataList, nullptr);
  EXPECT_EQ(to.PerSample, nullptr);
}

TEST(ProfileDataList, AssignedToItselfChangesNothing) {
  ProfileDataList list;
  Fill(list);
  GivePerSample(list, 5);
  const ProfileDataList& itself = list;
  list = itself;
  ExpectFilled(list);
  ASSERT_NE(list.PerSample, nullptr);
  EXPECT_EQ(list.PerSample[1], 6);
}

TEST(ProfileDataList, ClearKeepsTheTrailingIntegers) {
  ProfileDataList fresh;
  fresh.Clear();
  EXPECT_EQ(fresh.Extra1, 0);
  EXPECT_EQ(fresh.Extra2, -1);

  ProfileDataList list;
  Fill(list);
  GivePerSample(list, 5);
  list.Extra1 = 7;
  list.Extra2 = 8;
  for (int twice = 0; twice < 2; ++twice) {
    list.Clear();
    EXPECT_EQ(list.DataFormat, 0u);
    EXPECT_EQ(list.NumOfSamples, 0);
    EXPECT_EQ(list.ColorMode, 0);
    EXPECT_EQ(list.NumOfColors, 0);
    EXPECT_EQ(list.Measured, 0);
    EXPECT_EQ(list.DataList, nullptr);
    EXPECT_EQ(list.PerSample, nullptr);
    EXPECT_EQ(list.Extra1, 7);
    EXPECT_EQ(list.Extra2, 8);
  }
}

TEST(ProfileDataList, EqualsAListOfTheSameCountersAndValues) {
  ProfileDataList a;
  ProfileDataList b;
  Fill(a);
  Fill(b);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  EXPECT_TRUE(a == a);
  b.DataList[5] = 5.25;
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != b);
}

TEST(ProfileDataList, DiffersByEachComparedCounter) {
  ProfileDataList a;
  Fill(a);
  const auto differs = [&a](auto change) {
    ProfileDataList b(a);
    change(b);
    const bool unlike = !(a == b) && !(b == a) && a != b && b != a;
    return unlike;
  };
  EXPECT_FALSE(differs([](ProfileDataList&) {}));
  EXPECT_TRUE(differs([](ProfileDataList& b) { b.ColorMode = 65; }));
  EXPECT_TRUE(differs([](ProfileDataList& b) { b.DataFormat = kLab; }));
  EXPECT_TRUE(differs([](ProfileDataList& b) { b.NumOfColors = 1; }));
  EXPECT_TRUE(differs([](ProfileDataList& b) { b.NumOfSamples = 2; }));
  // The values count as a whole, not the product of the counters.
  EXPECT_TRUE(differs([](ProfileDataList& b) {
    b.NumOfColors = 3;
    b.NumOfSamples = 2;
  }));
}

TEST(ProfileDataList, DoesNotCompareMeasuredPerSampleAndTrailingIntegers) {
  ProfileDataList a;
  ProfileDataList b;
  Fill(a);
  Fill(b);
  b.Measured = 3;
  GivePerSample(b, 5);
  b.Extra1 = 7;
  b.Extra2 = 8;
  EXPECT_TRUE(a == b);
  EXPECT_TRUE(b == a);
}

TEST(ProfileDataList, WithoutValuesOnTheLeftEqualsAnyValuesOfTheSameCounters) {
  ProfileDataList values;
  Fill(values);
  ProfileDataList none;
  none.DataFormat = kCmyk;
  none.NumOfSamples = 3;
  none.ColorMode = 64;
  none.NumOfColors = 2;
  EXPECT_TRUE(none == values);
  EXPECT_FALSE(none != values);
  values.DataList[0] = -1;
  EXPECT_TRUE(none == values);
  none.ColorMode = 65;
  EXPECT_FALSE(none == values);
}

TEST(ProfileDataList, WithValuesOnTheLeftDiffersFromAListWithoutAny) {
  ProfileDataList values;
  Fill(values);
  ProfileDataList none;
  none.DataFormat = kCmyk;
  none.NumOfSamples = 3;
  none.ColorMode = 64;
  none.NumOfColors = 2;
  EXPECT_FALSE(values == none);
  EXPECT_TRUE(values != none);
}

TEST(ProfileDataList, ComparesTheBytesOfTheValues) {
  ProfileDataList a;
  ProfileDataList b;
  Fill(a);
  Fill(b);
  a.DataList[0] = 0.0;
  b.DataList[0] = -0.0;  // an equal number of other bytes
  EXPECT_FALSE(a == b);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::memcpy(a.DataList, &nan, sizeof nan);
  std::memcpy(b.DataList, &nan, sizeof nan);
  EXPECT_TRUE(a == b);
}

TEST(ProfileDataList, EqualsItselfWhateverItsCountersSay) {
  ProfileDataList list;
  Fill(list);
  list.NumOfSamples = 1000000000;  // more than it has: the same object is not compared by values
  EXPECT_TRUE(list == list);
  list.NumOfSamples = 3;
}

}  // namespace
