// The ink-limit and linearisation records as a caller uses them.
#pragma GCC diagnostic error "-Wmismatched-tags"
class VKMultiInklimit;
class VKSingleInkLimitWithLinRef;
class VKSpotSingleInkLimit;
class VKSpotLinDLParam;
class VKLinExtraDataParam;

#include "privatetags/InkLimitRecords.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "interface/Interface.h"
#include "platform/mfc/CString.h"

namespace vkcl::testing {
namespace {

template <class Member, class Type>
constexpr bool kIs = std::is_same_v<Member, Type>;

static_assert(kIsRecord<VKMultiInklimit> && sizeof(VKMultiInklimit) == 300);
static_assert(offsetof(VKMultiInklimit, version) == 0);
static_assert(offsetof(VKMultiInklimit, size) == 4);
static_assert(offsetof(VKMultiInklimit, count) == 8);
static_assert(offsetof(VKMultiInklimit, limits) == 12);
static_assert(kIs<decltype(VKMultiInklimit::version), std::int32_t>);
static_assert(kIs<decltype(VKMultiInklimit::size), std::int32_t>);
static_assert(kIs<decltype(VKMultiInklimit::count), std::int32_t>);
static_assert(kIs<decltype(VKMultiInklimit::limits), double[36]>);
static_assert(Operation<int(int)>::Is(&VKMultiInklimit::ConvertToCurrentVersion));
static_assert(!VKCL_IS_PUBLIC(VKMultiInklimit, ConvertCMYKToVersionTwo));

static_assert(kIsRecord<VKSingleInkLimitWithLinRef> && sizeof(VKSingleInkLimitWithLinRef) == 140);
static_assert(offsetof(VKSingleInkLimitWithLinRef, version) == 0);
static_assert(offsetof(VKSingleInkLimitWithLinRef, size) == 4);
static_assert(offsetof(VKSingleInkLimitWithLinRef, count) == 8);
static_assert(offsetof(VKSingleInkLimitWithLinRef, limits) == 12);
static_assert(kIs<decltype(VKSingleInkLimitWithLinRef::version), std::int32_t>);
static_assert(kIs<decltype(VKSingleInkLimitWithLinRef::size), std::int32_t>);
static_assert(kIs<decltype(VKSingleInkLimitWithLinRef::count), std::int32_t>);
static_assert(kIs<decltype(VKSingleInkLimitWithLinRef::limits), double[16]>);

static_assert(kIsRecord<VKSpotSingleInkLimit>);
static_assert(kIs<decltype(VKSpotSingleInkLimit::version), std::int32_t>);
static_assert(kIs<decltype(VKSpotSingleInkLimit::size), std::int32_t>);
static_assert(kIs<decltype(VKSpotSingleInkLimit::count), std::int32_t>);
static_assert(kIs<decltype(VKSpotSingleInkLimit::name), char*>);
static_assert(kIs<decltype(VKSpotSingleInkLimit::limits), double*>);

static_assert(kIsRecord<VKSpotLinDLParam>);
static_assert(kIs<decltype(VKSpotLinDLParam::version), std::int32_t>);
static_assert(kIs<decltype(VKSpotLinDLParam::size), std::int32_t>);
static_assert(kIs<decltype(VKSpotLinDLParam::count), std::int32_t>);
static_assert(kIs<decltype(VKSpotLinDLParam::nameLength), std::int32_t>);
static_assert(kIs<decltype(VKSpotLinDLParam::name), char*>);
static_assert(kIs<decltype(VKSpotLinDLParam::linkSizes), std::int32_t*>);
static_assert(kIs<decltype(VKSpotLinDLParam::links), void**>);

static_assert(kIsRecord<VKLinExtraDataParam> && sizeof(VKLinExtraDataParam) == 572);
static_assert(offsetof(VKLinExtraDataParam, version) == 0);
static_assert(offsetof(VKLinExtraDataParam, text) == 4);
static_assert(offsetof(VKLinExtraDataParam, value) == 136);
static_assert(offsetof(VKLinExtraDataParam, blockA) == 140);
static_assert(offsetof(VKLinExtraDataParam, blockB) == 284);
static_assert(kIs<decltype(VKLinExtraDataParam::version), std::int32_t>);
static_assert(kIs<decltype(VKLinExtraDataParam::text), char[129]>);
static_assert(kIs<decltype(VKLinExtraDataParam::value), std::int32_t>);
static_assert(kIsBytes<decltype(VKLinExtraDataParam::blockA), 144>);
static_assert(kIsBytes<decltype(VKLinExtraDataParam::blockB), 288>);

TEST(InkLimitRecordsInterface, MultiInklimit) {
  VKMultiInklimit limits;
  EXPECT_EQ(limits.version, 4);
  EXPECT_EQ(limits.size, 300);
  EXPECT_EQ(limits.count, 36);
  for (int i = 0; i < 36; ++i) EXPECT_EQ(double{limits.limits[i]}, 100.0) << i;
  EXPECT_EQ(limits.ConvertToCurrentVersion(1), 1);
  EXPECT_EQ(limits.version, 4);
  limits.version = 1;
  limits.limits[4] = 50;
  VKMultiInklimit copy(limits);
  EXPECT_EQ(copy.ConvertToCurrentVersion(512), 0);
  EXPECT_EQ(copy.version, 1);
  EXPECT_EQ(copy.ConvertToCurrentVersion(1), 1);
  EXPECT_EQ(copy.version, 2);
  EXPECT_EQ(double{copy.limits[4]}, 42.0);
  limits = copy;
  EXPECT_EQ(limits.version, 2);
}

TEST(InkLimitRecordsInterface, SingleInkLimitWithLinRef) {
  VKSingleInkLimitWithLinRef limits;
  EXPECT_EQ(limits.version, 1);
  EXPECT_EQ(limits.size, 140);
  EXPECT_EQ(limits.count, 16);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(double{limits.limits[i]}, 100.0) << i;
  limits.limits[15] = 80.5;
  const VKSingleInkLimitWithLinRef copy = limits;
  EXPECT_EQ(double{copy.limits[15]}, 80.5);
}

TEST(InkLimitRecordsInterface, SpotSingleInkLimit) {
  VKSpotSingleInkLimit limits;
  EXPECT_EQ(limits.version, 1);
  EXPECT_EQ(limits.size, 0);
  EXPECT_EQ(limits.count, 0);
  EXPECT_EQ(limits.name, nullptr);
  EXPECT_EQ(limits.limits, nullptr);
  EXPECT_LT(OffsetIn(limits, limits.version), OffsetIn(limits, limits.size));
  EXPECT_LT(OffsetIn(limits, limits.size), OffsetIn(limits, limits.count));
  EXPECT_LT(OffsetIn(limits, limits.count), OffsetIn(limits, limits.name));
  EXPECT_LT(OffsetIn(limits, limits.name), OffsetIn(limits, limits.limits));

  double values[] = {95.5, 80};
  const CString name("Spot 1");
  limits.SetData(2, name, values);
  EXPECT_EQ(limits.size, 6 + 2 * 8 + 12);
  EXPECT_EQ(limits.count, 2);
  EXPECT_STREQ(limits.name, "Spot 1");
  EXPECT_EQ(limits.limits[0], 95.5);
  VKSpotSingleInkLimit shared;
  shared = limits;
  EXPECT_EQ(shared.limits, limits.limits);
  shared.name = nullptr;  // the other one keeps the arrays that both share
  shared.limits = nullptr;
  limits.SetData(0, "Spot", nullptr);
  EXPECT_EQ(limits.size, 4 + 12);
  EXPECT_EQ(limits.name, nullptr);
}

TEST(InkLimitRecordsInterface, SpotLinDLParam) {
  VKSpotLinDLParam links;
  EXPECT_EQ(links.version, 1);
  EXPECT_EQ(links.size, 0);
  EXPECT_EQ(links.count, 0);
  EXPECT_EQ(links.nameLength, 0);
  EXPECT_EQ(links.name, nullptr);
  EXPECT_EQ(links.linkSizes, nullptr);
  EXPECT_EQ(links.links, nullptr);

  const CString name("Spot 1");
  links.SetData(2, name);
  EXPECT_EQ(links.count, 2);
  EXPECT_EQ(links.nameLength, 6);
  EXPECT_STREQ(links.name, "Spot 1");
  ASSERT_NE(links.linkSizes, nullptr);
  EXPECT_EQ(links.linkSizes[1], 0);
  ASSERT_NE(links.links, nullptr);
  EXPECT_NE(links.links[0], nullptr);
  EXPECT_NE(links.links[1], links.links[0]);
  EXPECT_EQ(links.size, 0);
  links.SetData(0, "none");
  EXPECT_EQ(links.count, 0);
  EXPECT_EQ(links.links, nullptr);
}

TEST(InkLimitRecordsInterface, LinExtraDataParam) {
  VKLinExtraDataParam param;
  EXPECT_EQ(param.version, 1);
  EXPECT_STREQ(param.text, "");
  EXPECT_EQ(param.value, 0);
  param.text[128] = 'x';
  param.blockA[143] = 1;
  param.blockB[287] = 2;
  const VKLinExtraDataParam copy = param;
  EXPECT_EQ(0, std::memcmp(&copy.text, &param.text, sizeof copy.text));
  EXPECT_EQ(copy.blockA[143], 1);
  EXPECT_EQ(copy.blockB[287], 2);
}

}  // namespace
}  // namespace vkcl::testing
