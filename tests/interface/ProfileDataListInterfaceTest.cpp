// ProfileDataList as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class ProfileDataList;

#include "privatetags/ProfileDataList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>
#include <utility>

#include "interface/Interface.h"

namespace vkcl::testing {
namespace {

static_assert(kIsRecord<ProfileDataList>);
static_assert(std::is_same_v<decltype(ProfileDataList::DataFormat), std::uint32_t>);
static_assert(std::is_same_v<decltype(ProfileDataList::NumOfSamples), std::int32_t>);
static_assert(std::is_same_v<decltype(ProfileDataList::ColorMode), std::int32_t>);
static_assert(std::is_same_v<decltype(ProfileDataList::NumOfColors), std::int32_t>);
static_assert(std::is_same_v<decltype(ProfileDataList::Measured), std::int32_t>);
static_assert(std::is_same_v<decltype(ProfileDataList::DataList), double*>);
static_assert(std::is_same_v<decltype(ProfileDataList::PerSample), std::int32_t*>);
static_assert(std::is_same_v<decltype(ProfileDataList::Extra1), std::int32_t>);
static_assert(std::is_same_v<decltype(ProfileDataList::Extra2), std::int32_t>);

static_assert(Query<std::uint32_t()>::Is(&ProfileDataList::GetDataSize));
static_assert(Operation<int(int)>::Is(&ProfileDataList::RefreshList));
static_assert(std::is_convertible_v<decltype(std::declval<const ProfileDataList&>() ==
                                             std::declval<const ProfileDataList&>()),
                                    bool>);
static_assert(std::is_convertible_v<decltype(std::declval<const ProfileDataList&>() !=
                                             std::declval<const ProfileDataList&>()),
                                    bool>);

TEST(ProfileDataListInterface, StartsEmpty) {
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

TEST(ProfileDataListInterface, MembersStandInTheirOrder) {
  const ProfileDataList list;
  EXPECT_LT(OffsetIn(list, list.DataFormat), OffsetIn(list, list.NumOfSamples));
  EXPECT_LT(OffsetIn(list, list.NumOfSamples), OffsetIn(list, list.ColorMode));
  EXPECT_LT(OffsetIn(list, list.ColorMode), OffsetIn(list, list.NumOfColors));
  EXPECT_LT(OffsetIn(list, list.NumOfColors), OffsetIn(list, list.Measured));
  EXPECT_LT(OffsetIn(list, list.Measured), OffsetIn(list, list.DataList));
  EXPECT_LT(OffsetIn(list, list.DataList), OffsetIn(list, list.PerSample));
  EXPECT_LT(OffsetIn(list, list.PerSample), OffsetIn(list, list.Extra1));
  EXPECT_LT(OffsetIn(list, list.Extra1), OffsetIn(list, list.Extra2));
}

TEST(ProfileDataListInterface, HoldsSamples) {
  ProfileDataList list;
  list.NumOfColors = 4;
  list.Measured = 3;
  EXPECT_EQ(list.RefreshList(10), 1);
  EXPECT_EQ(list.NumOfSamples, 10);
  EXPECT_EQ(list.Measured, 0);
  EXPECT_EQ(list.GetDataSize(), 320u);
  ASSERT_NE(list.DataList, nullptr);
  EXPECT_EQ(list.DataList[39], 0.0);
  list.PerSample = new std::int32_t[10]{};
  list.DataList[0] = 12.5;

  const ProfileDataList copy(list);
  ProfileDataList assigned;
  assigned = copy;
  EXPECT_NE(copy.DataList, list.DataList);
  EXPECT_NE(assigned.PerSample, list.PerSample);
  EXPECT_TRUE(copy == assigned);
  EXPECT_FALSE(copy != list);
  assigned.DataList[0] = 13;
  EXPECT_TRUE(copy != assigned);

  list.Extra1 = 5;
  list.Clear();
  EXPECT_EQ(list.DataList, nullptr);
  EXPECT_EQ(list.PerSample, nullptr);
  EXPECT_EQ(list.NumOfColors, 0);
  EXPECT_EQ(list.Extra1, 5);
  EXPECT_EQ(list.Extra2, -1);
}

}  // namespace
}  // namespace vkcl::testing
