// The ink split records as a caller uses them.
#pragma GCC diagnostic error "-Wmismatched-tags"
class AXMLTree;
class AXMLTreeNode;
class SplitTypeBase;
class SplitTypeV2;
class SplitDotInfo;
class SplitDotInfo2;
class SplitTypeV3;
class SplitTypeV4;
class SplitParam;

#include "split/SplitParam.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "interface/Interface.h"
#include "platform/axml/AXMLTree.h"

namespace vkcl::testing {
namespace {

template <class Member, class Type>
constexpr bool kIs = std::is_same_v<Member, Type>;

static_assert(kIsRecord<SplitTypeBase> && sizeof(SplitTypeBase) == 8);
static_assert(kIs<decltype(SplitTypeBase::size), std::uint32_t>);
static_assert(kIs<decltype(SplitTypeBase::colorantIndex), std::int32_t>);
static_assert(Operation<int(AXMLTree&, AXMLTreeNode&, int)>::Is(&SplitTypeBase::Serialize));

static_assert(kIsRecord<SplitTypeV2> && sizeof(SplitTypeV2) == 76);
static_assert(std::is_convertible_v<SplitTypeV2*, SplitTypeBase*>);
static_assert(kIs<decltype(SplitTypeV2::reserved), float>);
static_assert(kIs<decltype(SplitTypeV2::lightPeakInput), float>);
static_assert(kIs<decltype(SplitTypeV2::lightEndInput), float>);
static_assert(kIs<decltype(SplitTypeV2::mediumPeakInput), float>);
static_assert(kIs<decltype(SplitTypeV2::mediumEndInput), float>);
static_assert(kIs<decltype(SplitTypeV2::lightPeakAmount), float>);
static_assert(kIs<decltype(SplitTypeV2::mediumPeakAmount), float>);
static_assert(kIs<decltype(SplitTypeV2::darkAmount), float>);
static_assert(kIs<decltype(SplitTypeV2::lightTailAmount), float>);
static_assert(kIs<decltype(SplitTypeV2::lightPeakShape), float>);
static_assert(kIs<decltype(SplitTypeV2::lightEndShape), float>);
static_assert(kIs<decltype(SplitTypeV2::mediumTailAmount), float>);
static_assert(kIs<decltype(SplitTypeV2::mediumStartShape), float>);
static_assert(kIs<decltype(SplitTypeV2::mediumPeakShape), float>);
static_assert(kIs<decltype(SplitTypeV2::mediumEndShape), float>);
static_assert(kIs<decltype(SplitTypeV2::darkStartShape), float>);
static_assert(kIs<decltype(SplitTypeV2::darkEndShape), float>);

static_assert(kIsRecord<SplitDotInfo> && sizeof(SplitDotInfo) == 8);
static_assert(kIs<decltype(SplitDotInfo::input), float>);
static_assert(kIs<decltype(SplitDotInfo::amount), float>);
static_assert(kIsRecord<SplitDotInfo2> && sizeof(SplitDotInfo2) == 12);
static_assert(kIs<decltype(SplitDotInfo2::input), float>);
static_assert(kIs<decltype(SplitDotInfo2::amount), float>);
static_assert(kIs<decltype(SplitDotInfo2::shape), float>);

static_assert(kIsRecord<SplitTypeV3> && sizeof(SplitTypeV3) == 6168);
static_assert(std::is_convertible_v<SplitTypeV3*, SplitTypeBase*>);
static_assert(kIs<decltype(SplitTypeV3::light), SplitDotInfo[256]>);
static_assert(kIs<decltype(SplitTypeV3::medium), SplitDotInfo[256]>);
static_assert(kIs<decltype(SplitTypeV3::dark), SplitDotInfo[256]>);
static_assert(kIs<decltype(SplitTypeV3::lightCount), std::int32_t>);
static_assert(kIs<decltype(SplitTypeV3::mediumCount), std::int32_t>);
static_assert(kIs<decltype(SplitTypeV3::darkCount), std::int32_t>);
static_assert(kIs<decltype(SplitTypeV3::interpolation), std::int32_t>);

static_assert(kIsRecord<SplitTypeV4> && sizeof(SplitTypeV4) == 9240);
static_assert(std::is_convertible_v<SplitTypeV4*, SplitTypeBase*>);
static_assert(kIs<decltype(SplitTypeV4::light), SplitDotInfo2[256]>);
static_assert(kIs<decltype(SplitTypeV4::medium), SplitDotInfo2[256]>);
static_assert(kIs<decltype(SplitTypeV4::dark), SplitDotInfo2[256]>);
static_assert(kIs<decltype(SplitTypeV4::lightCount), std::int32_t>);
static_assert(kIs<decltype(SplitTypeV4::mediumCount), std::int32_t>);
static_assert(kIs<decltype(SplitTypeV4::darkCount), std::int32_t>);
static_assert(kIs<decltype(SplitTypeV4::interpolation), std::int32_t>);
static_assert(Operation<int(AXMLTree&, AXMLTreeNode&, int)>::Is(&SplitTypeV4::Serialize));

// Older records become newer ones by themselves, and never the other way round.
static_assert(std::is_convertible_v<SplitTypeV2, SplitTypeV3>);
static_assert(std::is_convertible_v<SplitTypeV2, SplitTypeV4>);
static_assert(std::is_convertible_v<SplitTypeV3, SplitTypeV4>);
static_assert(std::is_convertible_v<const SplitTypeV2&, SplitTypeV4>);
static_assert(!std::is_constructible_v<SplitTypeV2, SplitTypeV3>);
static_assert(!std::is_constructible_v<SplitTypeV2, SplitTypeV4>);
static_assert(!std::is_constructible_v<SplitTypeV3, SplitTypeV4>);

static_assert(kIsRecord<SplitParam>);
static_assert(kIs<decltype(SplitParam::version), std::int32_t>);
static_assert(kIs<decltype(SplitParam::size), std::int32_t>);
static_assert(kIs<decltype(SplitParam::count), std::int32_t>);
static_assert(kIs<decltype(SplitParam::splits), SplitTypeBase*>);
static_assert(Operation<int(long, int, SplitTypeBase*)>::Is(&SplitParam::InitSplitParam));
static_assert(VKCL_IS_PUBLIC(SplitParam, ConvertToV3) && VKCL_IS_PUBLIC(SplitParam, ConvertToV4));
static_assert(Operation<int(int, double*)>::Is(&SplitParam::SetDefaultValues));
static_assert(Operation<int(AXMLTree&, AXMLTreeNode&, int)>::Is(&SplitParam::Serialize));

static_assert(Function<SplitTypeV2*(int)>::Is(&NewSplitTypeV2Array));
static_assert(Function<void(SplitTypeV2*)>::Is(&FreeSplitTypeV2Array));

TEST(SplitParamInterface, Version2IsItsBytes) {
  const SplitTypeV2 v2;
  EXPECT_EQ(v2.size, 76u);
  EXPECT_EQ(v2.colorantIndex, -1);
  EXPECT_EQ(OffsetIn(v2, v2.size), 0u);
  EXPECT_EQ(OffsetIn(v2, v2.colorantIndex), 4u);
  const float* const unset[] = {&v2.reserved,         &v2.lightPeakInput, &v2.lightEndInput,
                                &v2.mediumPeakInput,  &v2.mediumEndInput, &v2.lightPeakAmount,
                                &v2.mediumPeakAmount, &v2.darkAmount};
  std::size_t offset = 8;
  for (const float* const field : unset) {
    EXPECT_EQ(OffsetIn(v2, *field), offset);
    EXPECT_EQ(*field, -1.0f) << offset;
    offset += 4;
  }
  const float* const zero[] = {&v2.lightTailAmount,  &v2.lightPeakShape,   &v2.lightEndShape,
                               &v2.mediumTailAmount, &v2.mediumStartShape, &v2.mediumPeakShape,
                               &v2.mediumEndShape,   &v2.darkStartShape,   &v2.darkEndShape};
  for (const float* const field : zero) {
    EXPECT_EQ(OffsetIn(v2, *field), offset);
    EXPECT_EQ(*field, 0.0f) << offset;
    offset += 4;
  }
  EXPECT_EQ(offset, sizeof v2);
}

TEST(SplitParamInterface, Version3IsItsBytes) {
  const SplitTypeV3 v3;
  EXPECT_EQ(v3.size, 6168u);
  EXPECT_EQ(v3.lightCount + v3.mediumCount + v3.darkCount + v3.interpolation, 0);
  EXPECT_EQ(OffsetIn(v3, v3.light), 8u);
  EXPECT_EQ(OffsetIn(v3, v3.medium), 2056u);
  EXPECT_EQ(OffsetIn(v3, v3.dark), 4104u);
  EXPECT_EQ(OffsetIn(v3, v3.lightCount), 6152u);
  EXPECT_EQ(OffsetIn(v3, v3.mediumCount), 6156u);
  EXPECT_EQ(OffsetIn(v3, v3.darkCount), 6160u);
  EXPECT_EQ(OffsetIn(v3, v3.interpolation), 6164u);
  EXPECT_EQ(OffsetIn(v3, v3.light[1].amount), 20u);
}

TEST(SplitParamInterface, Version4IsItsBytes) {
  const SplitTypeV4 v4;
  EXPECT_EQ(v4.size, 9240u);
  EXPECT_EQ(v4.lightCount + v4.mediumCount + v4.darkCount + v4.interpolation, 0);
  EXPECT_EQ(OffsetIn(v4, v4.light), 8u);
  EXPECT_EQ(OffsetIn(v4, v4.medium), 3080u);
  EXPECT_EQ(OffsetIn(v4, v4.dark), 6152u);
  EXPECT_EQ(OffsetIn(v4, v4.lightCount), 9224u);
  EXPECT_EQ(OffsetIn(v4, v4.mediumCount), 9228u);
  EXPECT_EQ(OffsetIn(v4, v4.darkCount), 9232u);
  EXPECT_EQ(OffsetIn(v4, v4.interpolation), 9236u);
  EXPECT_EQ(OffsetIn(v4, v4.light[1].shape), 28u);
}

TEST(SplitParamInterface, RecordsConvertByThemselves) {
  SplitTypeV2 v2;
  v2.colorantIndex = 3;
  v2.darkAmount = 0.5f;
  const SplitTypeV3 v3 = v2;
  const SplitTypeV4 fromV2 = v2;
  SplitTypeV4 fromV3 = v3;
  EXPECT_EQ(v3.darkCount, 3);
  EXPECT_EQ(fromV2.darkCount, 3);
  EXPECT_EQ(fromV3.darkCount, 3);
  EXPECT_EQ(fromV3.colorantIndex, 3);
  EXPECT_EQ(v3.size, 6168u);
  EXPECT_EQ(fromV3.size, 9240u);
  fromV3 = v2;
  EXPECT_EQ(fromV3.dark[2].input, 1.0f);
}

TEST(SplitParamInterface, SetOfRecords) {
  SplitParam split;
  EXPECT_EQ(split.version, 4);
  EXPECT_EQ(split.size, 20);
  EXPECT_EQ(split.count, 0);
  EXPECT_EQ(split.splits, nullptr);
  EXPECT_LT(OffsetIn(split, split.version), OffsetIn(split, split.size));
  EXPECT_LT(OffsetIn(split, split.size), OffsetIn(split, split.count));
  EXPECT_LT(OffsetIn(split, split.count), OffsetIn(split, split.splits));

  SplitTypeV2 records[2];
  records[1].colorantIndex = 1;
  EXPECT_EQ(split.InitSplitParam(2, 2, records), 1);
  EXPECT_EQ(split.size, 2 * 76 + 20);
  EXPECT_EQ(static_cast<SplitTypeV2*>(split.splits)[1].colorantIndex, 1);
  const SplitParam copy(split);
  EXPECT_NE(copy.splits, split.splits);
  split.ConvertToV3();
  EXPECT_EQ(split.version, 3);
  EXPECT_EQ(split.size, 2 * 6168 + 20);
  EXPECT_EQ(static_cast<SplitTypeV3*>(split.splits)[1].colorantIndex, 1);
  split.ConvertToV4();
  EXPECT_EQ(split.version, 4);
  EXPECT_EQ(split.size, 2 * 9240 + 20);
  EXPECT_EQ(static_cast<SplitTypeV4*>(split.splits)[1].colorantIndex, 1);
  split = copy;
  EXPECT_EQ(split.version, 2);
  EXPECT_EQ(split.InitSplitParam(5L, 1, records), 0);
  EXPECT_EQ(split.version, 5);
  EXPECT_EQ(split.splits, nullptr);
}

TEST(SplitParamInterface, DefaultValues) {
  SplitParam split;
  EXPECT_EQ(split.SetDefaultValues(1024, nullptr), 1);
  EXPECT_EQ(split.count, 3);
  double values[] = {2, 2, 2, 2, 1, 1, 1};
  EXPECT_EQ(split.SetDefaultValues(1024, values), 1);
  EXPECT_EQ(static_cast<SplitTypeV4*>(split.splits)[2].colorantIndex, 3);
  EXPECT_EQ(split.SetDefaultValues(1, nullptr), 1);
  EXPECT_EQ(split.count, 0);
  SplitParam unknown;
  unknown.version = 5;
  EXPECT_EQ(unknown.SetDefaultValues(1024, nullptr), 0);
}

TEST(SplitParamInterface, XmlForm) {
  AXMLTree tree("Split");
  AXMLTreeNode root = tree.GetRoot();
  SplitParam split;
  ASSERT_EQ(split.SetDefaultValues(2, nullptr), 1);
  EXPECT_EQ(split.Serialize(tree, root, 0), 1);
  SplitParam loaded;
  EXPECT_EQ(loaded.Serialize(tree, root, 1), 1);
  EXPECT_EQ(loaded.count, 2);

  AXMLTreeNode item = root.AddChild("item", "");
  SplitTypeV4 saved;
  saved.colorantIndex = 2;
  EXPECT_EQ(saved.Serialize(tree, item, 0), 1);
  SplitTypeV4 v4;
  EXPECT_EQ(v4.Serialize(tree, item, 1), 1);
  EXPECT_EQ(v4.colorantIndex, 2);
  SplitTypeV2 v2;
  EXPECT_EQ(v2.Serialize(tree, item, 1), 1);
  EXPECT_EQ(v2.colorantIndex, 2);
  SplitTypeV3 v3;
  SplitTypeBase& base = v3;
  EXPECT_EQ(base.Serialize(tree, item, 1), 1);
  EXPECT_EQ(v3.colorantIndex, 2);
}

TEST(SplitParamInterface, ArraysOfVersion2) {
  SplitTypeV2* const records = NewSplitTypeV2Array(3);
  ASSERT_NE(records, nullptr);
  EXPECT_EQ(records[2].size, 76u);
  FreeSplitTypeV2Array(records);
  records[2].darkAmount = 0.5f;  // the array is still the caller's
  EXPECT_EQ(records[2].darkAmount, 0.5f);
  FreeSplitTypeV2Array(nullptr);
  delete[] records;
}

}  // namespace
}  // namespace vkcl::testing
