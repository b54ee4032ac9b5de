// The colour, sidecar, compatibility, extra, angle and dither records as a caller uses them.
#pragma GCC diagnostic error "-Wmismatched-tags"
class VKColorParam;
class VKVSDProfileParam;
class VKCompatibilityParam;
class VKProfileExtraParam;
class VKAngleScreenParam;
class DitherTypeBase;
class DitherTypeV1;
class VKDitherParam;

#include "privatetags/ParameterRecords.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "interface/Interface.h"

namespace vkcl::testing {
namespace {

template <class Member, class Type>
constexpr bool kIs = std::is_same_v<Member, Type>;

using Text = char[128];

static_assert(kIsRecord<VKColorParam> && sizeof(VKColorParam) == 1068);
static_assert(offsetof(VKColorParam, version) == 0);
static_assert(offsetof(VKColorParam, size) == 4);
static_assert(offsetof(VKColorParam, status) == 8);
static_assert(offsetof(VKColorParam, MediaID) == 12);
static_assert(offsetof(VKColorParam, Make) == 16);
static_assert(offsetof(VKColorParam, Model) == 144);
static_assert(offsetof(VKColorParam, MediaName) == 272);
static_assert(offsetof(VKColorParam, ResolutionID) == 400);
static_assert(offsetof(VKColorParam, ResolutionX) == 404);
static_assert(offsetof(VKColorParam, ResolutionY) == 408);
static_assert(offsetof(VKColorParam, ColorMode) == 412);
static_assert(offsetof(VKColorParam, DriverColorMode) == 416);
static_assert(offsetof(VKColorParam, DitherMethod) == 420);
static_assert(offsetof(VKColorParam, PrintMode) == 424);
static_assert(offsetof(VKColorParam, DriverOption) == 428);
static_assert(offsetof(VKColorParam, reservedText1) == 684);
static_assert(offsetof(VKColorParam, reservedText2) == 812);
static_assert(offsetof(VKColorParam, reservedText3) == 940);
static_assert(kIs<decltype(VKColorParam::version), std::int32_t>);
static_assert(kIs<decltype(VKColorParam::size), std::int32_t>);
static_assert(kIs<decltype(VKColorParam::status), std::int32_t>);
static_assert(kIs<decltype(VKColorParam::MediaID), std::int32_t>);
static_assert(kIs<decltype(VKColorParam::Make), Text>);
static_assert(kIs<decltype(VKColorParam::Model), Text>);
static_assert(kIs<decltype(VKColorParam::MediaName), Text>);
static_assert(kIs<decltype(VKColorParam::ResolutionID), std::int32_t>);
static_assert(kIs<decltype(VKColorParam::ResolutionX), float>);
static_assert(kIs<decltype(VKColorParam::ResolutionY), float>);
static_assert(kIs<decltype(VKColorParam::ColorMode), std::int32_t>);
static_assert(kIs<decltype(VKColorParam::DriverColorMode), std::int32_t>);
static_assert(kIs<decltype(VKColorParam::DitherMethod), std::int32_t>);
static_assert(kIs<decltype(VKColorParam::PrintMode), std::int32_t>);
static_assert(kIsBytes<decltype(VKColorParam::DriverOption), 256>);
static_assert(kIs<decltype(VKColorParam::reservedText1), Text>);
static_assert(kIs<decltype(VKColorParam::reservedText2), Text>);
static_assert(kIs<decltype(VKColorParam::reservedText3), Text>);

static_assert(kIsRecord<VKVSDProfileParam> && sizeof(VKVSDProfileParam) == 132);
static_assert(offsetof(VKVSDProfileParam, version) == 0);
static_assert(offsetof(VKVSDProfileParam, fileName) == 4);
static_assert(kIs<decltype(VKVSDProfileParam::version), std::int32_t>);
static_assert(kIs<decltype(VKVSDProfileParam::fileName), Text>);

static_assert(kIsRecord<VKCompatibilityParam> && sizeof(VKCompatibilityParam) == 64);
static_assert(offsetof(VKCompatibilityParam, bytes) == 0);
static_assert(kIsBytes<decltype(VKCompatibilityParam::bytes), 64>);

static_assert(kIsRecord<VKProfileExtraParam> && sizeof(VKProfileExtraParam) == 8);
static_assert(offsetof(VKProfileExtraParam, version) == 0);
static_assert(offsetof(VKProfileExtraParam, value) == 4);
static_assert(kIs<decltype(VKProfileExtraParam::version), std::int32_t>);
static_assert(kIs<decltype(VKProfileExtraParam::value), std::int32_t>);

static_assert(kIsRecord<VKAngleScreenParam> && sizeof(VKAngleScreenParam) == 384);
static_assert(offsetof(VKAngleScreenParam, text1) == 0);
static_assert(offsetof(VKAngleScreenParam, text2) == 128);
static_assert(offsetof(VKAngleScreenParam, text3) == 256);
static_assert(kIs<decltype(VKAngleScreenParam::text1), Text>);
static_assert(kIs<decltype(VKAngleScreenParam::text2), Text>);
static_assert(kIs<decltype(VKAngleScreenParam::text3), Text>);

static_assert(kIsRecord<DitherTypeBase> && sizeof(DitherTypeBase) == 4);
static_assert(kIs<decltype(DitherTypeBase::size), std::uint32_t>);
static_assert(kIsRecord<DitherTypeV1> && sizeof(DitherTypeV1) == 4116);
static_assert(std::is_convertible_v<DitherTypeV1*, DitherTypeBase*>);
static_assert(kIsBytes<decltype(DitherTypeV1::table), 4112>);

static_assert(kIsRecord<VKDitherParam>);
static_assert(kIs<decltype(VKDitherParam::type), std::int32_t>);
static_assert(kIs<decltype(VKDitherParam::size), std::int32_t>);
static_assert(kIs<decltype(VKDitherParam::table), DitherTypeV1*>);
static_assert(Operation<int(const int&, DitherTypeBase*)>::Is(&VKDitherParam::InitDitherParam));

template <class Block>
bool IsZero(const Block& block) {
  const Block zeros = {};
  return std::memcmp(&block, &zeros, sizeof block) == 0;
}

TEST(ParameterRecordsInterface, ColorParam) {
  VKColorParam param;
  EXPECT_EQ(param.version, 1);
  EXPECT_EQ(param.size, 1068);
  EXPECT_TRUE(IsZero(param.Make) && IsZero(param.Model) && IsZero(param.MediaName));
  EXPECT_TRUE(IsZero(param.DriverOption) && IsZero(param.reservedText1));
  EXPECT_TRUE(IsZero(param.reservedText2) && IsZero(param.reservedText3));
  std::strcpy(param.Make, "Press");
  param.ResolutionX = 720.5f;
  param.ColorMode = -2147483647;
  const VKColorParam copy(param);
  VKColorParam assigned;
  assigned = copy;
  EXPECT_EQ(0, std::memcmp(static_cast<const void*>(&assigned), &param, sizeof param));
}

TEST(ParameterRecordsInterface, OtherFixedRecords) {
  VKVSDProfileParam sidecar;
  EXPECT_EQ(sidecar.version, 1);
  EXPECT_TRUE(IsZero(sidecar.fileName));
  sidecar.fileName[0] = 'x';
  VKCompatibilityParam compatibility;
  EXPECT_TRUE(IsZero(compatibility.bytes));
  compatibility.bytes[63] = 7;
  VKProfileExtraParam extra;
  EXPECT_EQ(extra.version, 1);
  EXPECT_EQ(extra.value, 0);
  extra.value = 9;
  VKAngleScreenParam angles;
  EXPECT_TRUE(IsZero(angles.text1) && IsZero(angles.text2) && IsZero(angles.text3));
  angles.text3[127] = 'z';

  const VKVSDProfileParam sidecarCopy = sidecar;
  EXPECT_STREQ(sidecarCopy.fileName, "x");
  const VKCompatibilityParam compatibilityCopy = compatibility;
  EXPECT_EQ(compatibilityCopy.bytes[63], 7);
  const VKProfileExtraParam extraCopy = extra;
  EXPECT_EQ(extraCopy.value, 9);
  const VKAngleScreenParam anglesCopy = angles;
  EXPECT_EQ(anglesCopy.text3[127], 'z');
}

TEST(ParameterRecordsInterface, DitherTable) {
  DitherTypeV1 table;
  EXPECT_EQ(table.size, 4116u);
  EXPECT_EQ(OffsetIn(table, table.size), 0u);
  EXPECT_EQ(OffsetIn(table, table.table), 4u);
  table.table[4111] = 5;
  const DitherTypeV1 copy = table;
  EXPECT_EQ(copy.table[4111], 5);
  DitherTypeBase base = table;
  DitherTypeBase other;
  other = base;
  EXPECT_EQ(other.size, 4116u);
}

TEST(ParameterRecordsInterface, DitherParam) {
  VKDitherParam dither;
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.size, 16);
  EXPECT_EQ(dither.table, nullptr);
  DitherTypeV1 table;
  table.table[0] = 3;
  EXPECT_EQ(dither.InitDitherParam(1, &table), 1);
  EXPECT_EQ(dither.size, 4132);
  ASSERT_NE(dither.table, nullptr);
  EXPECT_NE(dither.table, &table);
  EXPECT_EQ(dither.table->table[0], 3);
  const VKDitherParam copy(dither);
  EXPECT_EQ(copy.size, 24);
  EXPECT_NE(copy.table, dither.table);
  VKDitherParam assigned;
  assigned = dither;
  EXPECT_EQ(assigned.size, 24);
  const int type = 2;
  EXPECT_EQ(dither.InitDitherParam(type, &table), 0);
  EXPECT_EQ(dither.type, 2);
  EXPECT_EQ(dither.size, 4132);
  EXPECT_EQ(dither.table, nullptr);
}

}  // namespace
}  // namespace vkcl::testing
