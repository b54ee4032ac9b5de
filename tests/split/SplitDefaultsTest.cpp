// The default split of a colour mode.
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "split/SplitParam.h"
#include "support/Installation.h"
#include "support/TagFile.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::ImageOf;
using vkcl::testing::InOwnProcess;
using vkcl::testing::Installation;
using vkcl::testing::Payload;
using vkcl::testing::SameBytes;

int Mode(std::uint32_t bits) { return static_cast<int>(bits); }

/// What is split: a colorant, and the inks that it is split into.
struct Planned {
  int colorant;
  int kind;  ///< 0 light and dark, 1 medium and dark, 2 all three
};
using Plan = std::vector<Planned>;

struct ModePlan {
  int mode;
  Plan plan;
};

const std::vector<ModePlan>& Plans() {
  static const std::vector<ModePlan> plans = {
      {2, {{0, 0}, {1, 0}}},
      {32, {{0, 0}, {1, 0}}},
      {64, {{0, 1}, {1, 1}}},
      {128, {{0, 1}, {1, 1}}},
      {256, {{0, 2}, {1, 2}}},
      {1024, {{0, 0}, {1, 0}, {3, 0}}},
      {4096, {{0, 0}, {1, 0}, {2, 0}, {3, 0}}},
      {8192, {{0, 0}, {1, 0}, {3, 2}}},
      {8224, {{0, 0}, {1, 0}, {3, 2}}},
      {8196, {{0, 1}, {1, 1}, {3, 1}}},
      // Deliberately: the black of this set has no colorant.
      {8200, {{1, 0}, {-1, 2}}},
      {8208, {{1, 0}, {3, 2}}},
      {8256, {{3, 2}}},
      {8320, {{1, 0}, {3, 0}}},
  };
  return plans;
}

/// The records that a set holds, by its count and version.
Bytes RecordsOf(const SplitParam& split) {
  std::size_t recordSize = 0;
  if (split.version == 2) recordSize = 76;
  if (split.version == 3) recordSize = 6168;
  if (split.version == 4) recordSize = 9240;
  if (split.splits == nullptr) return {};
  Bytes image(recordSize * static_cast<std::size_t>(split.count));
  if (!image.empty()) {
    std::memcpy(image.data(), static_cast<const void*>(split.splits), image.size());
  }
  return image;
}

void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

// Version 2.

/// A record with the values of its kind, field by field.
Bytes RecordV2(const Planned& planned) {
  Payload record;
  record.Int(76).Int(planned.colorant).Float(0.0f);
  switch (planned.kind) {
    case 0:
      record.Float(0.3f).Float(0.6f).Float(-0.1f).Float(-0.1f);  // inputs
      record.Float(0.4f).Float(-0.1f).Float(0.6f);               // amounts
      record.Float(0.0f).Float(1.0f).Float(1.0f);                // light tail and shapes
      record.Float(0.0f).Float(0.0f).Float(0.0f).Float(0.0f);    // medium tail and shapes
      break;
    case 1:
      record.Float(0.0f).Float(0.0f).Float(0.3f).Float(0.6f);
      record.Float(-1.0f).Float(0.4f).Float(0.6f);
      record.Float(0.0f).Float(0.0f).Float(0.0f);
      record.Float(0.0f).Float(0.0f).Float(1.0f).Float(1.0f);
      break;
    default:
      record.Float(0.2f).Float(0.4f).Float(0.5f).Float(0.8f);
      record.Float(0.2f).Float(0.4f).Float(0.75f);
      record.Float(0.0f).Float(1.0f).Float(1.0f);
      record.Float(0.0f).Float(0.0f).Float(1.0f).Float(1.0f);
      break;
  }
  record.Float(1.0f).Float(1.0f);  // dark shapes
  return record;
}

// Versions 3 and 4: curves of points.

using Curve = std::vector<float>;  ///< the numbers of its points, one behind the other

Bytes CurveImage(const Curve& curve, int numbersAPoint) {
  Payload image;
  for (const float number : curve) image.Float(number);
  return image.Fill(static_cast<std::size_t>(256 * numbersAPoint) * 4 - curve.size() * 4);
}

Bytes CurvesRecord(int size, int colorant, int numbersAPoint, const Curve& light,
                   const Curve& medium, const Curve& dark) {
  Payload record;
  record.Int(size).Int(colorant);
  for (const Curve* curve : {&light, &medium, &dark}) record.Raw(CurveImage(*curve, numbersAPoint));
  for (const Curve* curve : {&light, &medium, &dark}) {
    record.Int(static_cast<int>(curve->size()) / numbersAPoint);
  }
  return record.Int(0);
}

Bytes RecordV3(const Planned& planned) {
  const Curve wide = {0, 0, 0.3f, 0.4f, 0.6f, 0};
  const Curve behindWide = {0.3f, 0, 0.6f, 0.6f, 1, 1};
  switch (planned.kind) {
    case 0: return CurvesRecord(6168, planned.colorant, 2, wide, {}, behindWide);
    case 1: return CurvesRecord(6168, planned.colorant, 2, {}, wide, behindWide);
    default:
      return CurvesRecord(6168, planned.colorant, 2, {0, 0, 0.2f, 0.2f, 0.4f, 0},
                          {0.2f, 0, 0.5f, 0.4f, 0.8f, 0}, {0.5f, 0, 0.8f, 0.75f, 1, 1});
  }
}

Bytes CurvesV4(int colorant, const Curve& light, const Curve& medium, const Curve& dark) {
  return CurvesRecord(9240, colorant, 3, light, medium, dark);
}

/// The record of version 4 without strengths.
Bytes RecordV4(const Planned& planned) {
  const Curve wide = {0, 0, 0, 0.3f, 0.4f, 0.25f, 0.6f, 0, 0.25f};
  const Curve behindWide = {0.3f, 0, 0.25f, 0.6f, 0.6f, 0.25f, 1, 1, 0};
  switch (planned.kind) {
    case 0: return CurvesV4(planned.colorant, wide, {}, behindWide);
    case 1: return CurvesV4(planned.colorant, {}, wide, behindWide);
    default:
      return CurvesV4(planned.colorant, {0, 0, 0, 0.2f, 0.2f, 0.25f, 0.4f, 0, 0.25f},
                      {0.2f, 0, 0.25f, 0.5f, 0.4f, 0.25f, 0.8f, 0, 0.25f},
                      {0.5f, 0, 0.25f, 0.8f, 0.75f, 0.25f, 1, 1, 0});
  }
}

Bytes FixedRecords(int version, const Plan& plan) {
  Bytes records;
  for (const Planned& planned : plan) {
    Append(records, version == 2   ? RecordV2(planned)
                    : version == 3 ? RecordV3(planned)
                                   : RecordV4(planned));
  }
  return records;
}

constexpr struct {
  int version;
  int recordSize;
} kVersions[] = {{2, 76}, {3, 6168}, {4, 9240}};

/// Whether a set of a version holds the default split of that plan without strengths.
::testing::AssertionResult IsFixed(const SplitParam& split, int version, const Plan& plan) {
  const int count = static_cast<int>(plan.size());
  const int recordSize = version == 2 ? 76 : version == 3 ? 6168 : 9240;
  if (split.version != version || split.count != count || split.size != 20 + count * recordSize) {
    return ::testing::AssertionFailure()
           << "version " << split.version << ", count " << split.count << ", size " << split.size;
  }
  return SameBytes(RecordsOf(split), FixedRecords(version, plan));
}

TEST(SplitDefaults, FollowThePlanOfEachNamedInkSet) {
  const Installation installation;
  for (const auto& [version, recordSize] : kVersions) {
    for (const ModePlan& row : Plans()) {
      SCOPED_TRACE("mode " + std::to_string(row.mode) + " version " + std::to_string(version));
      SplitParam split;
      split.version = version;
      EXPECT_EQ(split.SetDefaultValues(row.mode, nullptr), 1);
      EXPECT_TRUE(IsFixed(split, version, row.plan));
    }
  }
}

TEST(SplitDefaults, OfOtherModesAreEmpty) {
  const Installation installation;
  double values[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  for (const auto& [version, recordSize] : kVersions) {
    for (const int mode : {0,    1,    3,    4,    5,     8,     16,    31,     34,     48,   63,
                           65,   127,  129,  255,  257,   512,   1023,  1025,   2048,   4095, 4097,
                           8191, 8193, 8194, 8195, 8197,  8198,  8204,  8209,   8225,   8257, 8319,
                           8321, 8448, 8704, 9216, 12288, 16384, 65536, 0x2012, INT_MAX}) {
      SCOPED_TRACE("mode " + std::to_string(mode) + " version " + std::to_string(version));
      for (double* const given : {static_cast<double*>(nullptr), values}) {
        SplitParam split;
        split.version = version;
        EXPECT_EQ(split.SetDefaultValues(mode, given), 1);
        EXPECT_EQ(split.version, version);
        EXPECT_EQ(split.count, 0);
        EXPECT_EQ(split.size, 20);
      }
    }
  }
}

/// The plan of the seven dilutions, colorant by colorant: the light inks come first, in the order
/// of the colours, then the medium inks that have no light one, with black before cyan and magenta.
Plan PlanOfDilutions(bool lightC, bool lightM, bool lightY, bool lightK, bool mediumC, bool mediumM,
                     bool mediumK) {
  Plan plan;
  if (lightC) plan.push_back({0, mediumC ? 2 : 0});
  if (lightM) plan.push_back({1, mediumM ? 2 : 0});
  if (lightY) plan.push_back({2, 0});
  if (lightK) plan.push_back({3, mediumK ? 2 : 0});
  if (mediumK && !lightK) plan.push_back({3, 1});
  if (mediumC && !lightC) plan.push_back({0, 1});
  if (mediumM && !lightM) plan.push_back({1, 1});
  return plan;
}

struct Dilutions {
  std::uint32_t bits;
  Plan plan;
};

/// All 128 combinations.
std::vector<Dilutions> AllDilutions() {
  std::vector<Dilutions> all;
  for (unsigned i = 0; i < 128; ++i) {
    const auto has = [&](unsigned bit) { return (i & 1u << bit) != 0; };
    std::uint32_t bits = 0;
    bits += has(0) ? 0x10u : 0;
    bits += has(1) ? 0x20u : 0;
    bits += has(2) ? 0x800u : 0;
    bits += has(3) ? 0x400u : 0;
    bits += has(4) ? 0x100u : 0;
    bits += has(5) ? 0x200u : 0;
    bits += has(6) ? 0x1000u : 0;
    all.push_back({bits, PlanOfDilutions(has(0), has(1), has(2), has(3), has(4), has(5), has(6))});
  }
  return all;
}

TEST(SplitDefaults, FollowTheDilutionsOfAFlagSet) {
  const Installation installation;
  for (const Dilutions& row : AllDilutions()) {
    // The other inks have no say.
    for (const std::uint32_t others : {0x80000000u, 0x8000000Fu, 0x8000E0C0u, 0xFFFFE0CFu}) {
      SCOPED_TRACE(::testing::Message() << std::hex << (others | row.bits));
      SplitParam split;
      split.version = 2;
      ASSERT_EQ(split.SetDefaultValues(Mode(others | row.bits), nullptr), 1);
      ASSERT_TRUE(IsFixed(split, 2, row.plan));
    }
  }
}

TEST(SplitDefaults, FollowTheDilutionsOfAFlagSetInPointCurves) {
  const Installation installation;
  for (const Dilutions& row : AllDilutions()) {
    SCOPED_TRACE(::testing::Message() << std::hex << row.bits);
    for (const int version : {3, 4}) {
      SplitParam split;
      split.version = version;
      ASSERT_EQ(split.SetDefaultValues(Mode(0x8000000Fu | row.bits), nullptr), 1);
      ASSERT_TRUE(IsFixed(split, version, row.plan));
    }
  }
}

TEST(SplitDefaults, OfSomeFlagSetsInWords) {
  const Installation installation;
  const std::vector<ModePlan> rows = {
      {Mode(0x8000000F), {}},
      {INT_MIN, {}},
      {Mode(0x80000010), {{0, 0}}},
      {Mode(0x80000020), {{1, 0}}},
      {Mode(0x80000800), {{2, 0}}},
      {Mode(0x80000400), {{3, 0}}},
      {Mode(0x80001000), {{3, 1}}},
      {Mode(0x80000100), {{0, 1}}},
      {Mode(0x80000200), {{1, 1}}},
      {Mode(0x80000110), {{0, 2}}},
      {Mode(0x80000220), {{1, 2}}},
      {Mode(0x80001400), {{3, 2}}},
      // Medium black comes before medium cyan and magenta.
      {Mode(0x80001300), {{3, 1}, {0, 1}, {1, 1}}},
      {Mode(0x80001B10), {{0, 2}, {2, 0}, {3, 1}, {1, 1}}},
      {Mode(0x80001FFF), {{0, 2}, {1, 2}, {2, 0}, {3, 2}}},
      {-1, {{0, 2}, {1, 2}, {2, 0}, {3, 2}}},
  };
  for (const ModePlan& row : rows) {
    for (const auto& [version, recordSize] : kVersions) {
      SCOPED_TRACE("mode " + std::to_string(row.mode) + " version " + std::to_string(version));
      SplitParam split;
      split.version = version;
      EXPECT_EQ(split.SetDefaultValues(row.mode, nullptr), 1);
      EXPECT_TRUE(IsFixed(split, version, row.plan));
    }
  }
}

// Records by their fields, for the reader.

const SplitTypeV2& V2(const SplitParam& split, int i) {
  return static_cast<const SplitTypeV2*>(split.splits)[i];
}
const SplitTypeV3& V3(const SplitParam& split, int i) {
  return static_cast<const SplitTypeV3*>(split.splits)[i];
}
const SplitTypeV4& V4(const SplitParam& split, int i) {
  return static_cast<const SplitTypeV4*>(split.splits)[i];
}

TEST(SplitDefaults, OfVersionTwoAreKnots) {
  const Installation installation;
  SplitParam split;
  split.version = 2;
  ASSERT_EQ(split.SetDefaultValues(Mode(0x80000310), nullptr), 1);
  ASSERT_EQ(split.count, 2);
  EXPECT_EQ(split.size, 172);
  const SplitTypeV2& three = V2(split, 0);
  EXPECT_EQ(three.size, 76u);
  EXPECT_EQ(three.colorantIndex, 0);
  EXPECT_EQ(three.reserved, 0.0f);
  EXPECT_EQ(three.lightPeakInput, 0.2f);
  EXPECT_EQ(three.lightEndInput, 0.4f);
  EXPECT_EQ(three.lightPeakAmount, 0.2f);
  EXPECT_EQ(three.mediumPeakInput, 0.5f);
  EXPECT_EQ(three.mediumEndInput, 0.8f);
  EXPECT_EQ(three.mediumPeakAmount, 0.4f);
  EXPECT_EQ(three.darkAmount, 0.75f);
  const SplitTypeV2& medium = V2(split, 1);
  EXPECT_EQ(medium.colorantIndex, 1);
  EXPECT_EQ(medium.lightPeakInput, 0.0f);
  EXPECT_EQ(medium.lightPeakAmount, -1.0f);
  EXPECT_EQ(medium.mediumPeakShape, 1.0f);
  EXPECT_EQ(medium.darkStartShape, 1.0f);
}

TEST(SplitDefaults, OfFourLightInksInVersionThree) {
  const Installation installation;
  SplitParam split;
  split.version = 3;
  ASSERT_EQ(split.SetDefaultValues(4096, nullptr), 1);
  ASSERT_EQ(split.count, 4);
  EXPECT_EQ(split.size, 24692);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(V3(split, i).colorantIndex, i);
    EXPECT_EQ(V3(split, i).lightCount, 3);
    EXPECT_EQ(V3(split, i).mediumCount, 0);
    EXPECT_EQ(V3(split, i).darkCount, 3);
    EXPECT_EQ(V3(split, i).light[1].input, 0.3f);
    EXPECT_EQ(V3(split, i).light[1].amount, 0.4f);
    EXPECT_EQ(V3(split, i).dark[2].amount, 1.0f);
  }
}

TEST(SplitDefaults, LeaveABlackWithoutAColorant) {
  const Installation installation;
  for (const auto& [version, recordSize] : kVersions) {
    SplitParam split;
    split.version = version;
    ASSERT_EQ(split.SetDefaultValues(8200, nullptr), 1);
    ASSERT_EQ(split.count, 2);
    EXPECT_EQ(split.size, 20 + 2 * recordSize);
    std::int32_t colorant = 0;
    std::memcpy(&colorant, RecordsOf(split).data() + recordSize + 4, 4);
    EXPECT_EQ(colorant, -1);
  }
}

// Strengths. Only version 4 looks at them.

TEST(SplitDefaults, OfVersionsTwoAndThreeIgnoreTheStrengths) {
  const Installation installation;
  double values[] = {1.0, 0.9, 0.8, 0.7, 0.6, 0.5, 0.4, 0.3, 0.2, 0.1, 0.05};
  const std::vector<double> before(std::begin(values), std::end(values));
  for (const int version : {2, 3}) {
    for (const ModePlan& row : Plans()) {
      SCOPED_TRACE("mode " + std::to_string(row.mode) + " version " + std::to_string(version));
      SplitParam split;
      split.version = version;
      EXPECT_EQ(split.SetDefaultValues(row.mode, values), 1);
      EXPECT_TRUE(IsFixed(split, version, row.plan));
    }
  }
  EXPECT_EQ(std::vector<double>(std::begin(values), std::end(values)), before);
}

/// The split of version 4 by strengths; the array is exactly as long as given.
class Scaled {
 public:
  Scaled(int mode, const std::vector<double>& strengths) {
    const auto values = std::make_unique<double[]>(strengths.size());
    std::copy(strengths.begin(), strengths.end(), values.get());
    EXPECT_EQ(split.SetDefaultValues(mode, values.get()), 1);
    EXPECT_EQ(std::vector<double>(values.get(), values.get() + strengths.size()), strengths);
    EXPECT_EQ(split.version, 4);
    EXPECT_EQ(split.size, 20 + 9240 * split.count);
  }

  Bytes Record(int i) const {
    if (i >= split.count) return {};
    return ImageOf(static_cast<const SplitTypeV4*>(split.splits)[i]);
  }

  SplitParam split;
};

TEST(ScaledSplitDefaults, OfALightInkOfHalfTheStrength) {
  const Installation installation;
  const Scaled scaled(2, {1.0, 2.0, 1.0, 1.0, 0.5, 1.0});
  ASSERT_EQ(scaled.split.count, 2);
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(
        SameBytes(scaled.Record(i), CurvesV4(i, {0, 0, 0, 0.4f, 0.8f, 0.25f, 0.8f, 0, 0.25f}, {},
                                             {0.4f, 0, 0.25f, 0.8f, 0.8f, 0.25f, 1, 1, 0})));
  }
}

TEST(ScaledSplitDefaults, OfAMediumInkOfHalfTheStrength) {
  const Installation installation;
  const Scaled scaled(64, {1.0, 2.0, 1.0, 1.0, 0.5, 1.0});
  ASSERT_EQ(scaled.split.count, 2);
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(
        SameBytes(scaled.Record(i), CurvesV4(i, {}, {0, 0, 0, 0.4f, 0.8f, 0.25f, 0.8f, 0, 0.25f},
                                             {0.4f, 0, 0.25f, 0.8f, 0.8f, 0.25f, 1, 1, 0})));
  }
}

// The peak is at the ink's strength up to 0.3, then at 0.3, then at 0.8 of the strength, and at 0.5
// at most.
TEST(ScaledSplitDefaults, BoundThePeakOfTwoInks) {
  const Installation installation;
  const struct {
    double strength;
    float peak;
    float amount;
    float end;
  } rows[] = {
      {0.125, 0.125f, 1.0f, 0.25f}, {0.25, 0.25f, 1.0f, 0.5f}, {0.375, 0.3f, 0.8f, 0.6f},
      {0.5, 0.4f, 0.8f, 0.8f},      {0.625, 0.5f, 0.8f, 1.0f}, {1.0, 0.5f, 0.5f, 1.0f},
      {2.0, 0.5f, 0.25f, 1.0f},     {4.0, 0.5f, 0.125f, 1.0f},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.strength);
    const Curve diluted = {0, 0, 0, row.peak, row.amount, 0.25f, row.end, 0, 0.25f};
    const Curve dark = {row.peak, 0, 0.25f, row.end, row.end, 0.25f, 1, 1, 0};
    EXPECT_TRUE(SameBytes(Scaled(8320, {9, 1, 9, 9, 9, row.strength, 9}).Record(0),
                          CurvesV4(1, diluted, {}, dark)));
    EXPECT_TRUE(SameBytes(Scaled(8196, {9, 9, 9, 4, 9, 9, 4 * row.strength}).Record(2),
                          CurvesV4(3, {}, diluted, dark)));
  }
}

// With three inks the bounds are 0.25 and 0.4.
TEST(ScaledSplitDefaults, BoundThePeaksOfThreeInks) {
  const Installation installation;
  const struct {
    double light;
    double medium;
    float peak;
    float peakAmount;
    float mediumPeak;  ///< also where the light ink ends
    float mediumAmount;
    float end;  ///< also the dark ink's amount there
  } rows[] = {
      {0.125, 0.5, 0.125f, 1.0f, 0.25f, 0.5f, 0.375f},
      {0.25, 0.5, 0.25f, 1.0f, 0.5f, 1.0f, 0.75f},
      {0.28125, 0.625, 0.25f, 0.25f / 0.28125f, 0.5f, 0.8f, 0.75f},
      {0.5, 0.5, 0.4f, 0.8f, 0.8f, 1.6f, 1.2f},
      {1.0, 1.0, 0.4f, 0.4f, 0.8f, 0.8f, 1.2f},
      {2.0, 4.0, 0.4f, 0.2f, 0.8f, 0.2f, 1.2f},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.light);
    const Bytes expected =
        CurvesV4(3, {0, 0, 0, row.peak, row.peakAmount, 0.25f, row.mediumPeak, 0, 0.25f},
                 {row.peak, 0, 0.25f, row.mediumPeak, row.mediumAmount, 0.25f, row.end, 0, 0.25f},
                 {row.mediumPeak, 0, 0.25f, row.end, row.end, 0.25f, 1, 1, 0});
    // Orange and green, then medium and light black.
    EXPECT_TRUE(SameBytes(Scaled(8256, {9, 9, 9, 2, 9, 9, 2 * row.medium, 2 * row.light}).Record(0),
                          expected));
  }
}

// The black without a colorant has neither a light nor a medium ink, so it is split as if both were
// as strong as itself. Nothing is read in front of the strengths.
TEST(ScaledSplitDefaults, OfABlackWithoutAColorant) {
  const Installation installation;
  const Scaled scaled(8200, {3, 1, 3, 3, 0.5, 0.125, 0.125});
  ASSERT_EQ(scaled.split.count, 2);
  EXPECT_TRUE(
      SameBytes(scaled.Record(0), CurvesV4(1, {0, 0, 0, 0.4f, 0.8f, 0.25f, 0.8f, 0, 0.25f}, {},
                                           {0.4f, 0, 0.25f, 0.8f, 0.8f, 0.25f, 1, 1, 0})));
  EXPECT_TRUE(
      SameBytes(scaled.Record(1), CurvesV4(-1, {0, 0, 0, 0.4f, 0.4f, 0.25f, 0.8f, 0, 0.25f},
                                           {0.4f, 0, 0.25f, 0.8f, 0.8f, 0.25f, 1.2f, 0, 0.25f},
                                           {0.8f, 0, 0.25f, 1.2f, 1.2f, 0.25f, 1, 1, 0})));
}

// The ratio is taken of the numbers as they are given, and rounded once.
TEST(ScaledSplitDefaults, RoundTheRatioOnce) {
  const Installation installation;
  // 0.2 + 2^-27 and 1 + 2^-26 are both lost in single precision.
  const double light = 0.2 + 1.0 / 134217728;
  const double own = 1.0 - 1.0 / 67108864;
  const auto ratio = static_cast<float>(light / own);
  ASSERT_NE(ratio, static_cast<float>(light) / static_cast<float>(own));
  const Scaled scaled(8320, {9, own, 9, 9, 9, light, 9});
  ASSERT_EQ(scaled.split.count, 2);
  const SplitTypeV4& record = V4(scaled.split, 0);
  EXPECT_EQ(record.light[1].input, ratio);
  EXPECT_EQ(record.light[1].amount, 1.0f);
  EXPECT_EQ(record.light[2].input, 2.0f * ratio);
}

TEST(ScaledSplitDefaults, OfAColorantWithoutStrengthAreFixed) {
  const Installation installation;
  for (const double zero : {0.0, -0.0}) {
    const Scaled two(1024, {1, zero, 1, 2, 0.5, 0.5, 1});
    ASSERT_EQ(two.split.count, 3);
    const Curve half = {0, 0, 0, 0.4f, 0.8f, 0.25f, 0.8f, 0, 0.25f};
    const Curve dark = {0.4f, 0, 0.25f, 0.8f, 0.8f, 0.25f, 1, 1, 0};
    EXPECT_TRUE(SameBytes(two.Record(0), CurvesV4(0, half, {}, dark)));
    EXPECT_TRUE(SameBytes(two.Record(1), RecordV4({1, 0})));
    EXPECT_TRUE(SameBytes(two.Record(2), CurvesV4(3, half, {}, dark)));

    const Scaled medium(8196, {zero, zero, 1, zero, 0.5, 0.5, 0});
    ASSERT_EQ(medium.split.count, 3);
    EXPECT_TRUE(SameBytes(medium.Record(0), RecordV4({0, 1})));
    EXPECT_TRUE(SameBytes(medium.Record(1), RecordV4({1, 1})));
    EXPECT_TRUE(SameBytes(medium.Record(2), RecordV4({3, 1})));

    const Scaled three(256, {zero, zero, 1, 1, 0.5, 0.5, 0.75, 0.75});
    ASSERT_EQ(three.split.count, 2);
    EXPECT_TRUE(SameBytes(three.Record(0), RecordV4({0, 2})));
    EXPECT_TRUE(SameBytes(three.Record(1), RecordV4({1, 2})));
  }
}

// Nothing can be divided by such an ink: neither infinite amounts nor no numbers are stored.
TEST(ScaledSplitDefaults, OfADilutionWithoutStrengthAreFixed) {
  const Installation installation;
  const Scaled light(2, {1, 1, 1, 1, 0, 0.5});
  ASSERT_EQ(light.split.count, 2);
  EXPECT_TRUE(SameBytes(light.Record(0), RecordV4({0, 0})));
  EXPECT_TRUE(
      SameBytes(light.Record(1), CurvesV4(1, {0, 0, 0, 0.4f, 0.8f, 0.25f, 0.8f, 0, 0.25f}, {},
                                          {0.4f, 0, 0.25f, 0.8f, 0.8f, 0.25f, 1, 1, 0})));
  EXPECT_TRUE(SameBytes(Scaled(64, {1, 1, 1, 1, 0, 0.5}).Record(0), RecordV4({0, 1})));
  EXPECT_TRUE(SameBytes(Scaled(8256, {1, 1, 1, 1, 1, 1, 0, 0.5}).Record(0), RecordV4({3, 2})));
  EXPECT_TRUE(SameBytes(Scaled(8256, {1, 1, 1, 1, 1, 1, 0.5, 0}).Record(0), RecordV4({3, 2})));
}

// The set has fewer channels than the colorant's number, so it has no strength of its own. What the
// caller keeps behind the strengths is not looked at.
TEST(ScaledSplitDefaults, OfAColorantBeyondTheChannelsAreFixed) {
  const Installation installation;
  const struct {
    std::uint32_t bits;
    std::vector<double> strengths;
    Planned planned;
  } rows[] = {
      {0x80000400, {0.5}, {3, 0}},
      {0x80001000, {0.5}, {3, 1}},
      {0x80001400, {0.5, 0.5}, {3, 2}},
      {0x80000802, {1, 0.5}, {2, 0}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.planned.colorant);
    std::vector<double> more = row.strengths;
    more.resize(8, 0.75);
    for (const std::vector<double>& given : {more, row.strengths}) {
      const Scaled scaled(Mode(row.bits), given);
      ASSERT_EQ(scaled.split.count, 1);
      EXPECT_TRUE(SameBytes(scaled.Record(0), RecordV4(row.planned)));
    }
  }
}

// The channel is that of the colorant's number, whatever ink it holds in such a set.
TEST(ScaledSplitDefaults, TakeTheOwnStrengthFromTheChannelOfTheColorantsNumber) {
  const Installation installation;
  // Magenta, light cyan, light magenta.
  const Scaled scaled(Mode(0x80000032), {1, 0.5, 0.25});
  ASSERT_EQ(scaled.split.count, 2);
  EXPECT_TRUE(
      SameBytes(scaled.Record(0), CurvesV4(0, {0, 0, 0, 0.4f, 0.8f, 0.25f, 0.8f, 0, 0.25f}, {},
                                           {0.4f, 0, 0.25f, 0.8f, 0.8f, 0.25f, 1, 1, 0})));
  EXPECT_TRUE(
      SameBytes(scaled.Record(1), CurvesV4(1, {0, 0, 0, 0.4f, 0.8f, 0.25f, 0.8f, 0, 0.25f}, {},
                                           {0.4f, 0, 0.25f, 0.8f, 0.8f, 0.25f, 1, 1, 0})));
}

// The curves as they are described, in single precision throughout.

float PeakBetween(float ratio, float low, float high) {
  const float first = ratio < low ? ratio : low;
  const float scaled = 0.8f * ratio;
  const float second = scaled < high ? scaled : high;
  return first > second ? first : second;
}

Bytes ScaledRecord(const Planned& planned, std::optional<double> own, double light, double medium) {
  if (!own) return RecordV4(planned);
  const auto rL = static_cast<float>(light / *own);
  const auto rM = static_cast<float>(medium / *own);
  if (planned.kind == 2) {
    const float s = PeakBetween(rL, 0.25f, 0.4f);
    const float m = 2.0f * s;
    const float e = m + s;
    return CurvesV4(planned.colorant, {0, 0, 0, s, s / rL, 0.25f, 2.0f * s, 0, 0.25f},
                    {s, 0, 0.25f, m, m / rM, 0.25f, e, 0, 0.25f},
                    {m, 0, 0.25f, e, e, 0.25f, 1, 1, 0});
  }
  const float ratio = planned.kind == 0 ? rL : rM;
  const float s = PeakBetween(ratio, 0.3f, 0.5f);
  const Curve diluted = {0, 0, 0, s, s / ratio, 0.25f, 2.0f * s, 0, 0.25f};
  const Curve dark = {s, 0, 0.25f, 2.0f * s, 2.0f * s, 0.25f, 1, 1, 0};
  return planned.kind == 0 ? CurvesV4(planned.colorant, diluted, {}, dark)
                           : CurvesV4(planned.colorant, {}, diluted, dark);
}

/// Where the dilutions of cyan, magenta, yellow and black are in a set.
struct DilutionChannels {
  int light[4];
  int medium[4];
};

Bytes ScaledRecords(const Plan& plan, const DilutionChannels& channels,
                    const std::vector<double>& values) {
  Bytes records;
  for (const Planned& planned : plan) {
    if (planned.colorant < 0) {
      Append(records, ScaledRecord(planned, 1.0, 1.0, 1.0));
      continue;
    }
    const double own = values[static_cast<std::size_t>(planned.colorant)];
    const int light = channels.light[planned.colorant];
    const int medium = channels.medium[planned.colorant];
    Append(records,
           ScaledRecord(planned, own, light < 0 ? own : values[static_cast<std::size_t>(light)],
                        medium < 0 ? own : values[static_cast<std::size_t>(medium)]));
  }
  return records;
}

std::vector<double> RandomStrengths(std::size_t count, std::mt19937& random) {
  std::vector<double> values;
  for (std::size_t i = 0; i < count; ++i) {
    values.push_back((1.0 + static_cast<double>(random() % 100000)) / 70000.0);
  }
  return values;
}

TEST(ScaledSplitDefaults, OfEveryNamedInkSetFollowItsChannels) {
  const Installation installation;
  const struct {
    int mode;
    std::size_t count;
    DilutionChannels channels;
  } rows[] = {
      {2, 6, {{4, 5, -1, -1}, {-1, -1, -1, -1}}},    {32, 8, {{6, 7, -1, -1}, {-1, -1, -1, -1}}},
      {64, 6, {{-1, -1, -1, -1}, {4, 5, -1, -1}}},   {128, 8, {{-1, -1, -1, -1}, {6, 7, -1, -1}}},
      {256, 8, {{4, 5, -1, -1}, {6, 7, -1, -1}}},    {1024, 7, {{4, 5, -1, 6}, {-1, -1, -1, -1}}},
      {4096, 8, {{4, 5, 6, 7}, {-1, -1, -1, -1}}},   {8192, 8, {{4, 5, -1, 7}, {-1, -1, -1, 6}}},
      {8196, 7, {{-1, -1, -1, -1}, {4, 5, -1, 6}}},  {8200, 7, {{-1, 4, -1, 6}, {-1, -1, -1, 5}}},
      {8208, 10, {{-1, 7, -1, 9}, {-1, -1, -1, 8}}}, {8224, 11, {{7, 8, -1, 10}, {-1, -1, -1, 9}}},
      {8256, 8, {{-1, -1, -1, 7}, {-1, -1, -1, 6}}}, {8320, 7, {{-1, 5, -1, 6}, {-1, -1, -1, -1}}},
  };
  ASSERT_EQ(std::size(rows), Plans().size());
  std::mt19937 random(21);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.mode);
    Plan plan;
    for (const ModePlan& known : Plans()) {
      if (known.mode == row.mode) plan = known.plan;
    }
    ASSERT_FALSE(plan.empty());
    for (int i = 0; i < 20; ++i) {
      const std::vector<double> values = RandomStrengths(row.count, random);
      const Scaled scaled(row.mode, values);
      ASSERT_EQ(scaled.split.count, static_cast<int>(plan.size()));
      ASSERT_TRUE(SameBytes(RecordsOf(scaled.split), ScaledRecords(plan, row.channels, values)));
    }
  }
}

TEST(ScaledSplitDefaults, OfEveryFlagSetFollowItsChannels) {
  const Installation installation;
  std::mt19937 random(22);
  for (const Dilutions& row : AllDilutions()) {
    for (const std::uint32_t dark : {0x8000000Fu, 0x8000E0CFu}) {
      SCOPED_TRACE(::testing::Message() << std::hex << (dark | row.bits));
      int next = dark == 0x8000000Fu ? 4 : 9;
      const auto channel = [&](std::uint32_t bit) { return (row.bits & bit) != 0 ? next++ : -1; };
      DilutionChannels channels{{-1, -1, -1, -1}, {-1, -1, -1, -1}};
      channels.light[0] = channel(0x10);
      channels.light[1] = channel(0x20);
      channels.medium[0] = channel(0x100);
      channels.medium[1] = channel(0x200);
      channels.light[3] = channel(0x400);
      channels.light[2] = channel(0x800);
      channels.medium[3] = channel(0x1000);
      const std::vector<double> values = RandomStrengths(static_cast<std::size_t>(next), random);
      const Scaled scaled(Mode(dark | row.bits), values);
      ASSERT_EQ(scaled.split.count, static_cast<int>(row.plan.size()));
      ASSERT_TRUE(SameBytes(RecordsOf(scaled.split), ScaledRecords(row.plan, channels, values)));
    }
  }
}

TEST(ScaledSplitDefaults, FindTheirInksBehindTheExtraColorants) {
  InOwnProcess([] {
    const Installation installation("Violet 10000 0 0 0\nSilver 20000 0 0 0\n");
    // Cyan, violet, silver, light cyan, medium cyan.
    const Scaled scaled(Mode(0x80030111), {1, 9, 9, 0.5, 0.625});
    ASSERT_EQ(scaled.split.count, 1);
    EXPECT_TRUE(
        SameBytes(scaled.Record(0), CurvesV4(0, {0, 0, 0, 0.4f, 0.8f, 0.25f, 0.8f, 0, 0.25f},
                                             {0.4f, 0, 0.25f, 0.8f, 1.28f, 0.25f, 1.2f, 0, 0.25f},
                                             {0.8f, 0, 0.25f, 1.2f, 1.2f, 0.25f, 1, 1, 0})));
  });
}

// What was there.

void Fill(SplitParam& split, int version, int count) {
  SplitTypeBase* const records = SplitParam::NewRecords(version, count);
  ASSERT_NE(records, nullptr);
  EXPECT_EQ(split.InitSplitParam(version, count, records), 1);
  SplitParam::DeleteRecords(version, records);
}

TEST(SplitDefaults, ReplaceTheRecordsOfTheSet) {
  const Installation installation;
  for (const auto& [version, recordSize] : kVersions) {
    SCOPED_TRACE(version);
    SplitParam split;
    Fill(split, version, 5);
    EXPECT_EQ(split.SetDefaultValues(256, nullptr), 1);
    EXPECT_TRUE(IsFixed(split, version, {{0, 2}, {1, 2}}));
    EXPECT_EQ(split.SetDefaultValues(4096, nullptr), 1);
    EXPECT_TRUE(IsFixed(split, version, {{0, 0}, {1, 0}, {2, 0}, {3, 0}}));
    EXPECT_EQ(split.SetDefaultValues(1, nullptr), 1);
    EXPECT_EQ(split.count, 0);
    EXPECT_EQ(split.size, 20);
    EXPECT_EQ(split.SetDefaultValues(8256, nullptr), 1);
    EXPECT_TRUE(IsFixed(split, version, {{3, 2}}));
  }
}

TEST(SplitDefaults, OfANewSetAreOfVersionFour) {
  const Installation installation;
  SplitParam split;
  EXPECT_EQ(split.SetDefaultValues(2, nullptr), 1);
  EXPECT_TRUE(IsFixed(split, 4, {{0, 0}, {1, 0}}));
}

TEST(SplitDefaults, CanBeConvertedUpwards) {
  const Installation installation;
  SplitParam split;
  split.version = 2;
  EXPECT_EQ(split.SetDefaultValues(2, nullptr), 1);
  split.ConvertToV4();
  EXPECT_EQ(split.version, 4);
  EXPECT_EQ(split.size, 18500);
  EXPECT_EQ(V4(split, 1).lightCount, 3);
  EXPECT_EQ(V4(split, 1).light[1].amount, 0.4f);
  EXPECT_EQ(V4(split, 1).mediumCount, 0);
}

TEST(SplitDefaults, OfAnotherVersionFailAndLeaveNoRecords) {
  const Installation installation;
  double values[] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  for (const int version : {0, 1, 5, 6, -1, -4, 256 + 4, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(version);
    for (double* const given : {static_cast<double*>(nullptr), values}) {
      SplitParam split;
      split.version = version;
      EXPECT_EQ(split.SetDefaultValues(8224, given), 0);
      EXPECT_EQ(split.version, version);
      EXPECT_EQ(split.count, 3);
      EXPECT_EQ(split.size, 20);
      EXPECT_EQ(split.splits, nullptr);
      EXPECT_EQ(split.SetDefaultValues(Mode(0x80001000), given), 0);
      EXPECT_EQ(split.count, 1);
      EXPECT_EQ(split.SetDefaultValues(1, given), 0);
      EXPECT_EQ(split.count, 0);
      EXPECT_EQ(split.splits, nullptr);
    }
  }
}

// Records of an unknown version cannot be released; their owner forgets them.
TEST(SplitDefaults, OfAnotherVersionForgetRecordsOfAVersionThatIsNotTheirs) {
  const Installation installation;
  SplitParam split;
  Fill(split, 4, 2);
  SplitTypeBase* const records = split.splits;
  split.version = 7;
  EXPECT_EQ(split.SetDefaultValues(4096, nullptr), 0);
  EXPECT_EQ(split.count, 4);
  EXPECT_EQ(split.size, 20 + 2 * 9240);
  EXPECT_EQ(split.splits, nullptr);
  split.splits = nullptr;
  SplitParam::DeleteRecords(4, records);
}

// The first channel of a mode may be that of a light ink.
TEST(ScaledSplitDefaults, OfALightInkInTheFirstChannelGoByItsStrength) {
  const Installation installation;
  // Light magenta and medium cyan; the strength of magenta is taken at its number, 1.
  const Scaled scaled(Mode(0x80000120), {1, 2});
  EXPECT_TRUE(SameBytes(scaled.Record(0), ScaledRecord({1, 0}, 2.0, 1.0, 2.0)));
}

// Colorants of one flag, or of a built-in one's, make the list of names longer than the mode has
// channels. The caller's array has a value a channel; the sanitizers see a read beyond it.
TEST(ScaledSplitDefaults, OfColorantsThatShareAFlagStayWithinTheChannels) {
  InOwnProcess([] {
    const Installation installation("Violet 10000 0 0 0\nLilac 10000 0 0 0\nPale 10 0 0 0\n");
    // Cyan, Violet, Lilac, Pale, LCyan, of three channels: no channel is that of light cyan.
    const Scaled shared(Mode(0x80010011), {1, 2, 3});
    EXPECT_TRUE(SameBytes(shared.Record(0), ScaledRecord({0, 0}, 1.0, 1.0, 1.0)));
    // Of four channels, with light magenta after it.
    const Scaled more(Mode(0x80010031), {1, 2, 3, 4});
    EXPECT_TRUE(SameBytes(more.Record(0), ScaledRecord({0, 0}, 1.0, 1.0, 1.0)));
    EXPECT_TRUE(SameBytes(more.Record(1), ScaledRecord({1, 0}, 2.0, 2.0, 2.0)));
    // Cyan, Pale, LCyan, MCyan, of three: light cyan is one of them, medium cyan none.
    const Scaled builtIn(Mode(0x80000111), {1, 2, 3});
    EXPECT_TRUE(SameBytes(builtIn.Record(0), ScaledRecord({0, 2}, 1.0, 3.0, 1.0)));
  });
}

}  // namespace
