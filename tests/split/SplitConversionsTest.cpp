#include <array>
#include <cmath>
#include <limits>
#include <memory>

#include "split/SplitParam.h"

namespace {

using Pair = std::array<float, 2>;
using Triple = std::array<float, 3>;

constexpr float kTail = 0x1.fae148p-1f;  // 0.99, the knot where a tail ends

/// The first `count` points of a curve. The test fails when a later one is not zero.
std::vector<Pair> Points(const SplitDotInfo (&curve)[256], int count) {
  std::vector<Pair> points;
  for (int i = 0; i < 256; ++i) {
    const Pair point = {curve[i].input, curve[i].amount};
    if (i < count) {
      points.push_back(point);
    } else {
      EXPECT_EQ(point, Pair({0, 0})) << "unused point " << i;
    }
  }
  return points;
}

std::vector<Triple> Points(const SplitDotInfo2 (&curve)[256], int count) {
  std::vector<Triple> points;
  for (int i = 0; i < 256; ++i) {
    const Triple point = {curve[i].input, curve[i].amount, curve[i].shape};
    if (i < count) {
      points.push_back(point);
    } else {
      EXPECT_EQ(point, Triple({0, 0, 0})) << "unused point " << i;
    }
  }
  return points;
}

/// The three curves of a converted record.
template <class Point>
struct Curves {
  std::vector<Point> light, medium, dark;
};

Curves<Pair> CurvesOf(const SplitTypeV3& v3) {
  return {Points(v3.light, v3.lightCount), Points(v3.medium, v3.mediumCount),
          Points(v3.dark, v3.darkCount)};
}

Curves<Triple> CurvesOf(const SplitTypeV4& v4) {
  return {Points(v4.light, v4.lightCount), Points(v4.medium, v4.mediumCount),
          Points(v4.dark, v4.darkCount)};
}

Curves<Pair> InV3(const SplitTypeV2& v2) { return CurvesOf(*std::make_unique<SplitTypeV3>(v2)); }
Curves<Triple> InV4(const SplitTypeV2& v2) { return CurvesOf(*std::make_unique<SplitTypeV4>(v2)); }

/// All three inks, no tails; every number is exact.
SplitTypeV2 ThreeInks() {
  SplitTypeV2 v2;
  v2.colorantIndex = 3;
  v2.lightPeakInput = 0.25f;
  v2.lightEndInput = 0.75f;
  v2.mediumPeakInput = 0.5f;
  v2.mediumEndInput = 0.875f;
  v2.lightPeakAmount = 0.5f;
  v2.mediumPeakAmount = 0.625f;
  v2.darkAmount = 0.375f;
  v2.lightPeakShape = 1.5f;
  v2.lightEndShape = 3.0f;
  v2.mediumStartShape = 4.5f;
  v2.mediumPeakShape = 6.0f;
  v2.mediumEndShape = 7.5f;
  v2.darkStartShape = 9.0f;
  v2.darkEndShape = 10.5f;
  return v2;
}

enum Ink { kLight = 1, kMedium = 2, kDark = 4 };

/// Which inks the conversions find in a record; the test fails when they do not agree.
int Inks(const SplitTypeV2& v2) {
  const Curves<Pair> v3 = InV3(v2);
  const Curves<Triple> v4 = InV4(v2);
  EXPECT_EQ(v3.light.empty(), v4.light.empty());
  EXPECT_EQ(v3.medium.empty(), v4.medium.empty());
  EXPECT_EQ(v3.dark.empty(), v4.dark.empty());
  return (v4.light.empty() ? 0 : kLight) | (v4.medium.empty() ? 0 : kMedium) |
         (v4.dark.empty() ? 0 : kDark);
}

int InksWith(float SplitTypeV2::*field, float value) {
  SplitTypeV2 v2 = ThreeInks();
  v2.*field = value;
  return Inks(v2);
}

constexpr float kAboveZero = std::numeric_limits<float>::denorm_min();

// Which inks a record uses.

TEST(SplitPresence, ADefaultRecordUsesNoInk) { EXPECT_EQ(Inks(SplitTypeV2()), 0); }

TEST(SplitPresence, AFullRecordUsesThreeInks) {
  EXPECT_EQ(Inks(ThreeInks()), kLight | kMedium | kDark);
}

TEST(SplitPresence, LightNeedsAPeakAnEndAndAnAmountAboveZero) {
  for (const auto field : {&SplitTypeV2::lightPeakAmount, &SplitTypeV2::lightEndInput}) {
    EXPECT_EQ(InksWith(field, 0.0f), kMedium | kDark);
    EXPECT_EQ(InksWith(field, -1.0f), kMedium | kDark);
    EXPECT_EQ(InksWith(field, kAboveZero), kLight | kMedium | kDark);
    EXPECT_EQ(InksWith(field, std::nanf("")), kMedium | kDark);
  }
  // Medium starts where light peaks and needs that input as well.
  EXPECT_EQ(InksWith(&SplitTypeV2::lightPeakInput, 0.0f), kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::lightPeakInput, -1.0f), kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::lightPeakInput, kAboveZero), kLight | kMedium | kDark);
}

TEST(SplitPresence, LightTakesATailOfZeroButNoneBelow) {
  EXPECT_EQ(InksWith(&SplitTypeV2::lightTailAmount, 0.0f), kLight | kMedium | kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::lightTailAmount, -0.0f), kLight | kMedium | kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::lightTailAmount, 0.25f), kLight | kMedium | kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::lightTailAmount, -kAboveZero), kMedium | kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::lightTailAmount, std::nanf("")), kMedium | kDark);
}

TEST(SplitPresence, MediumNeedsAnEndAndAnAmountAboveZero) {
  for (const auto field : {&SplitTypeV2::mediumPeakAmount, &SplitTypeV2::mediumEndInput}) {
    EXPECT_EQ(InksWith(field, 0.0f), kLight | kDark);
    EXPECT_EQ(InksWith(field, -1.0f), kLight | kDark);
    EXPECT_EQ(InksWith(field, kAboveZero), kLight | kMedium | kDark);
    EXPECT_EQ(InksWith(field, std::nanf("")), kLight | kDark);
  }
}

TEST(SplitPresence, MediumTakesATailOfZeroButNoneBelow) {
  EXPECT_EQ(InksWith(&SplitTypeV2::mediumTailAmount, -0.0f), kLight | kMedium | kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::mediumTailAmount, 0.25f), kLight | kMedium | kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::mediumTailAmount, -kAboveZero), kLight | kDark);
}

TEST(SplitPresence, MediumPeaksBehindLight) {
  EXPECT_EQ(InksWith(&SplitTypeV2::mediumPeakInput, 0.25f), kLight | kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::mediumPeakInput, 0.125f), kLight | kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::mediumPeakInput, std::nextafter(0.25f, 1.0f)),
            kLight | kMedium | kDark);
  EXPECT_EQ(InksWith(&SplitTypeV2::mediumPeakInput, 0.0f), kLight | kDark);
}

TEST(SplitPresence, DarkNeedsAnAmountAboveZero) {
  EXPECT_EQ(InksWith(&SplitTypeV2::darkAmount, 0.0f), kLight | kMedium);
  EXPECT_EQ(InksWith(&SplitTypeV2::darkAmount, -1.0f), kLight | kMedium);
  EXPECT_EQ(InksWith(&SplitTypeV2::darkAmount, kAboveZero), kLight | kMedium | kDark);
}

// Version 2 to version 3.

TEST(SplitV2ToV3, HeadIsThatOfVersionThree) {
  const auto v3 = std::make_unique<SplitTypeV3>(ThreeInks());
  EXPECT_EQ(v3->size, 6168u);
  EXPECT_EQ(v3->colorantIndex, 3);
  EXPECT_EQ(v3->interpolation, 0);
}

TEST(SplitV2ToV3, ThreeInksAreThreeCurvesOfThreePoints) {
  const Curves<Pair> curves = InV3(ThreeInks());
  EXPECT_EQ(curves.light, (std::vector<Pair>{{0, 0}, {0.25f, 0.5f}, {0.75f, 0}}));
  EXPECT_EQ(curves.medium, (std::vector<Pair>{{0.25f, 0}, {0.5f, 0.625f}, {0.875f, 0}}));
  EXPECT_EQ(curves.dark, (std::vector<Pair>{{0.5f, 0}, {0.875f, 0.375f}, {1, 1}}));
}

TEST(SplitV2ToV3, TailsAreLost) {
  SplitTypeV2 v2 = ThreeInks();
  v2.lightTailAmount = 0.125f;
  v2.mediumTailAmount = 0.125f;
  const Curves<Pair> curves = InV3(v2);
  EXPECT_EQ(curves.light, (std::vector<Pair>{{0, 0}, {0.25f, 0.5f}, {0.75f, 0}}));
  EXPECT_EQ(curves.medium, (std::vector<Pair>{{0.25f, 0}, {0.5f, 0.625f}, {0.875f, 0}}));
}

TEST(SplitV2ToV3, WithoutMediumDarkStartsFromTheLightKnots) {
  SplitTypeV2 v2 = ThreeInks();
  v2.mediumPeakInput = 0.25f;
  const Curves<Pair> curves = InV3(v2);
  EXPECT_TRUE(curves.medium.empty());
  EXPECT_EQ(curves.dark, (std::vector<Pair>{{0.25f, 0}, {0.75f, 0.375f}, {1, 1}}));
}

TEST(SplitV2ToV3, WithoutLightMediumStillStartsAtTheLightPeak) {
  SplitTypeV2 v2 = ThreeInks();
  v2.lightTailAmount = -1.0f;
  const Curves<Pair> curves = InV3(v2);
  EXPECT_TRUE(curves.light.empty());
  EXPECT_EQ(curves.medium, (std::vector<Pair>{{0.25f, 0}, {0.5f, 0.625f}, {0.875f, 0}}));
  EXPECT_EQ(curves.dark, (std::vector<Pair>{{0.5f, 0}, {0.875f, 0.375f}, {1, 1}}));
}

TEST(SplitV2ToV3, DarkAloneStartsAtZero) {
  SplitTypeV2 v2;
  v2.darkAmount = 0.375f;
  const Curves<Pair> curves = InV3(v2);
  EXPECT_TRUE(curves.light.empty());
  EXPECT_TRUE(curves.medium.empty());
  EXPECT_EQ(curves.dark, (std::vector<Pair>{{0, 0}, {0, 0.375f}, {1, 1}}));
}

TEST(SplitV2ToV3, ADefaultRecordHasNoCurves) {
  const auto v3 = std::make_unique<SplitTypeV3>(SplitTypeV2());
  EXPECT_EQ(v3->size, 6168u);
  EXPECT_EQ(v3->colorantIndex, -1);
  EXPECT_EQ(v3->lightCount, 0);
  EXPECT_EQ(v3->mediumCount, 0);
  EXPECT_EQ(v3->darkCount, 0);
  const Curves<Pair> curves = CurvesOf(*v3);  // finds that all points are zero
  EXPECT_TRUE(curves.light.empty());
}

// Version 2 to version 4.

TEST(SplitV2ToV4, HeadIsThatOfVersionFour) {
  const auto v4 = std::make_unique<SplitTypeV4>(ThreeInks());
  EXPECT_EQ(v4->size, 9240u);
  EXPECT_EQ(v4->colorantIndex, 3);
  EXPECT_EQ(v4->interpolation, 0);
}

TEST(SplitV2ToV4, ThreeInksAreThreeCurvesWithAThirdOfTheShapes) {
  const Curves<Triple> curves = InV4(ThreeInks());
  EXPECT_EQ(curves.light, (std::vector<Triple>{{0, 0, 0}, {0.25f, 0.5f, 0.5f}, {0.75f, 0, 1.0f}}));
  EXPECT_EQ(curves.medium,
            (std::vector<Triple>{{0.25f, 0, 1.5f}, {0.5f, 0.625f, 2.0f}, {0.875f, 0, 2.5f}}));
  EXPECT_EQ(curves.dark, (std::vector<Triple>{{0.5f, 0, 3.0f}, {0.875f, 0.375f, 3.5f}, {1, 1, 0}}));
}

TEST(SplitV2ToV4, ShapesAreDividedAndRoundedOnce) {
  SplitTypeV2 v2 = ThreeInks();
  v2.lightPeakShape = 1.3f;
  v2.lightEndShape = 2.6f;
  v2.mediumStartShape = 1.3f;
  v2.mediumPeakShape = 2.6f;
  v2.mediumEndShape = -1.3f;
  v2.darkStartShape = -2.6f;
  v2.darkEndShape = 1.3f;
  const Curves<Triple> curves = InV4(v2);
  EXPECT_EQ(curves.light.at(1)[2], 0x1.bbbbbap-2f);  // a product with 1/3 ends in bc
  EXPECT_EQ(curves.light.at(2)[2], 0x1.bbbbbap-1f);
  EXPECT_EQ(curves.medium.at(0)[2], 0x1.bbbbbap-2f);
  EXPECT_EQ(curves.medium.at(1)[2], 0x1.bbbbbap-1f);
  EXPECT_EQ(curves.medium.at(2)[2], -0x1.bbbbbap-2f);
  EXPECT_EQ(curves.dark.at(0)[2], -0x1.bbbbbap-1f);
  EXPECT_EQ(curves.dark.at(1)[2], 0x1.bbbbbap-2f);
}

TEST(SplitV2ToV4, ALightTailIsKeptUpToTheTop) {
  SplitTypeV2 v2 = ThreeInks();
  v2.lightTailAmount = 0.125f;
  const Curves<Triple> curves = InV4(v2);
  // From 0.25 falls by 0.5 over 0.5, and is at 0.125 after 0.375 of it.
  EXPECT_EQ(
      curves.light,
      (std::vector<Triple>{
          {0, 0, 0}, {0.25f, 0.5f, 0.5f}, {0.625f, 0.125f, 1.0f}, {kTail, 0.125f, 0}, {1, 0, 0}}));
  // The others start from the knots of the record, as without a tail.
  EXPECT_EQ(curves.medium,
            (std::vector<Triple>{{0.25f, 0, 1.5f}, {0.5f, 0.625f, 2.0f}, {0.875f, 0, 2.5f}}));
}

TEST(SplitV2ToV4, AMediumTailIsKeptUpToTheTop) {
  SplitTypeV2 v2 = ThreeInks();
  v2.mediumEndInput = 1.0f;
  v2.mediumPeakAmount = 0.5f;
  v2.mediumTailAmount = 0.125f;
  const Curves<Triple> curves = InV4(v2);
  EXPECT_EQ(curves.medium, (std::vector<Triple>{{0.25f, 0, 1.5f},
                                                {0.5f, 0.5f, 2.0f},
                                                {0.875f, 0.125f, 2.5f},
                                                {kTail, 0.125f, 0},
                                                {1, 0, 0}}));
  EXPECT_EQ(curves.dark, (std::vector<Triple>{{0.5f, 0, 3.0f}, {1, 0.375f, 3.5f}, {1, 1, 0}}));
  EXPECT_EQ(curves.light.size(), 3u);
}

TEST(SplitV2ToV4, ATailIsToldFromNoneExactlyAtZero) {
  SplitTypeV2 v2 = ThreeInks();
  v2.lightTailAmount = 0.0f;
  v2.mediumTailAmount = 0.0f;
  EXPECT_EQ(InV4(v2).light.size(), 3u);
  EXPECT_EQ(InV4(v2).medium.size(), 3u);
  v2.lightTailAmount = kAboveZero;
  v2.mediumTailAmount = kAboveZero;
  EXPECT_EQ(InV4(v2).light.size(), 5u);
  EXPECT_EQ(InV4(v2).medium.size(), 5u);
}

/// The input at which the falling line reaches the tail amount: every operation of its own, each
/// rounded to single precision.
float TailKnot(float peakInput, float endInput, float peakAmount, float tailAmount) {
  volatile float width = endInput - peakInput;
  volatile float fall = tailAmount - peakAmount;
  volatile float product = width * fall;
  volatile float divisor = 0.0f - peakAmount;
  volatile float quotient = product / divisor;
  volatile float knot = peakInput + quotient;
  return knot;
}

TEST(SplitV2ToV4, TailKnotsAreRoundedAfterEachOperation) {
  // Values at which a wider intermediate, or another order, gives a neighbouring number.
  const struct {
    float peakInput, endInput, tailAmount, peakAmount, knot;
  } cases[] = {{0.05f, 0.1f, 0.15f, 0.85f, 0x1.757578p-4f},
               {0.05f, 0.15f, 0.05f, 0.6f, 0x1.222224p-3f},
               {0.05f, 0.15f, 0.15f, 0.35f, 0x1.b6db70p-4f},
               {0.05f, 0.2f, 0.05f, 0.35f, 0x1.6db6dap-3f},
               {0.05f, 0.2f, 0.15f, 0.55f, 0x1.45d174p-3f}};
  for (const auto& one : cases) {
    EXPECT_EQ(TailKnot(one.peakInput, one.endInput, one.peakAmount, one.tailAmount), one.knot);

    SplitTypeV2 light = ThreeInks();
    light.lightPeakInput = one.peakInput;
    light.lightEndInput = one.endInput;
    light.lightPeakAmount = one.peakAmount;
    light.lightTailAmount = one.tailAmount;
    EXPECT_EQ(InV4(light).light.at(2)[0], one.knot);
    EXPECT_EQ(InV4(light).light.at(2)[1], one.tailAmount);

    SplitTypeV2 medium = ThreeInks();
    medium.lightPeakInput = 0.01f;
    medium.mediumPeakInput = one.peakInput;
    medium.mediumEndInput = one.endInput;
    medium.mediumPeakAmount = one.peakAmount;
    medium.mediumTailAmount = one.tailAmount;
    EXPECT_EQ(InV4(medium).medium.at(2)[0], one.knot);
    EXPECT_EQ(InV4(medium).medium.at(2)[1], one.tailAmount);
  }
}

TEST(SplitV2ToV4, ATailOfATenthHasItsKnotBetweenPeakAndEnd) {
  SplitTypeV2 v2 = ThreeInks();
  v2.lightTailAmount = 0.1f;
  const Curves<Triple> curves = InV4(v2);
  ASSERT_EQ(curves.light.size(), 5u);
  EXPECT_GT(curves.light[2][0], 0.25f);
  EXPECT_LT(curves.light[2][0], 0.75f);
}

TEST(SplitV2ToV4, WithoutMediumDarkStartsFromTheLightKnots) {
  SplitTypeV2 v2 = ThreeInks();
  v2.mediumPeakInput = 0.125f;
  v2.lightTailAmount = 0.125f;
  const Curves<Triple> curves = InV4(v2);
  EXPECT_TRUE(curves.medium.empty());
  EXPECT_EQ(curves.dark, (std::vector<Triple>{{0.25f, 0, 3.0f}, {0.75f, 0.375f, 3.5f}, {1, 1, 0}}));
}

TEST(SplitV2ToV4, WithoutLightMediumStartsAtZero) {
  SplitTypeV2 v2 = ThreeInks();
  v2.lightTailAmount = -1.0f;
  const Curves<Triple> curves = InV4(v2);
  EXPECT_TRUE(curves.light.empty());
  EXPECT_EQ(curves.medium,
            (std::vector<Triple>{{0, 0, 1.5f}, {0.5f, 0.625f, 2.0f}, {0.875f, 0, 2.5f}}));
  EXPECT_EQ(curves.dark, (std::vector<Triple>{{0.5f, 0, 3.0f}, {0.875f, 0.375f, 3.5f}, {1, 1, 0}}));
}

TEST(SplitV2ToV4, DarkAloneStartsAtZero) {
  SplitTypeV2 v2;
  v2.darkAmount = 0.375f;
  v2.darkStartShape = 3.0f;
  v2.darkEndShape = 6.0f;
  const Curves<Triple> curves = InV4(v2);
  EXPECT_TRUE(curves.light.empty());
  EXPECT_TRUE(curves.medium.empty());
  EXPECT_EQ(curves.dark, (std::vector<Triple>{{0, 0, 1.0f}, {0, 0.375f, 2.0f}, {1, 1, 0}}));
}

TEST(SplitV2ToV4, ADefaultRecordHasNoCurves) {
  const auto v4 = std::make_unique<SplitTypeV4>(SplitTypeV2());
  EXPECT_EQ(v4->size, 9240u);
  EXPECT_EQ(v4->colorantIndex, -1);
  EXPECT_EQ(v4->lightCount, 0);
  EXPECT_EQ(v4->mediumCount, 0);
  EXPECT_EQ(v4->darkCount, 0);
  const Curves<Triple> curves = CurvesOf(*v4);  // finds that all points are zero
  EXPECT_TRUE(curves.light.empty());
}

// Version 3 to version 4.

TEST(SplitV3ToV4, PointsKeepInputAndAmountAndGetNoShape) {
  const auto v3 = std::make_unique<SplitTypeV3>();
  v3->size = 1;
  v3->colorantIndex = 4;
  v3->interpolation = 7;
  for (int i = 0; i < 256; ++i) {
    v3->light[i] = {static_cast<float>(i) + 0.25f, static_cast<float>(i) + 0.5f};
    v3->medium[i] = {static_cast<float>(i) + 1000.25f, static_cast<float>(i) + 1000.5f};
    v3->dark[i] = {static_cast<float>(i) + 2000.25f, static_cast<float>(i) + 2000.5f};
  }
  v3->lightCount = 1;
  v3->mediumCount = 0;
  v3->darkCount = 256;
  const auto v4 = std::make_unique<SplitTypeV4>(*v3);
  EXPECT_EQ(v4->size, 9240u);
  EXPECT_EQ(v4->colorantIndex, 4);
  EXPECT_EQ(v4->interpolation, 7);
  EXPECT_EQ(v4->lightCount, 1);
  EXPECT_EQ(v4->mediumCount, 0);
  EXPECT_EQ(v4->darkCount, 256);
  // Points behind the count are not taken over.
  const Curves<Triple> curves = CurvesOf(*v4);
  EXPECT_EQ(curves.light, (std::vector<Triple>{{0.25f, 0.5f, 0}}));
  EXPECT_TRUE(curves.medium.empty());
  ASSERT_EQ(curves.dark.size(), 256u);
  EXPECT_EQ(curves.dark[0], (Triple{2000.25f, 2000.5f, 0}));
  EXPECT_EQ(curves.dark[255], (Triple{2255.25f, 2255.5f, 0}));
}

TEST(SplitV3ToV4, TakesCountsThatNoCurveHoldsAsZeroOr256) {
  const auto v3 = std::make_unique<SplitTypeV3>();
  for (int i = 0; i < 256; ++i) v3->light[i] = v3->dark[i] = {0.5f, 0.25f};
  v3->lightCount = 257;
  v3->mediumCount = -1;
  v3->darkCount = std::numeric_limits<std::int32_t>::max();
  const auto v4 = std::make_unique<SplitTypeV4>(*v3);
  EXPECT_EQ(v4->lightCount, 256);
  EXPECT_EQ(v4->mediumCount, 0);
  EXPECT_EQ(v4->darkCount, 256);
  const Curves<Triple> curves = CurvesOf(*v4);
  EXPECT_EQ(curves.light, std::vector<Triple>(256, {0.5f, 0.25f, 0}));
  EXPECT_EQ(curves.dark, std::vector<Triple>(256, {0.5f, 0.25f, 0}));
}

// Whole sets.

SplitTypeV4& V4At(const SplitParam& split, int i) {
  return static_cast<SplitTypeV4*>(split.splits)[i];
}

/// Three inks, no inks, dark alone; a set of version 2.
SplitParam MixedSet() {
  SplitTypeV2 records[3];
  records[0] = ThreeInks();
  records[0].lightTailAmount = 0.125f;
  records[2].colorantIndex = 5;
  records[2].darkAmount = 0.375f;
  SplitParam split;
  EXPECT_EQ(split.InitSplitParam(2, 3, records), 1);
  return split;
}

TEST(SplitParamConversion, VersionTwoBecomesVersionThreeRecordByRecord) {
  SplitParam split = MixedSet();
  split.ConvertToV3();
  EXPECT_EQ(split.version, 3);
  EXPECT_EQ(split.count, 3);
  EXPECT_EQ(split.size, 3 * 6168 + 20);
  ASSERT_NE(split.splits, nullptr);
  const auto* records = static_cast<const SplitTypeV3*>(split.splits);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(records[i].size, 6168u) << i;
  EXPECT_EQ(records[0].colorantIndex, 3);
  EXPECT_EQ(records[1].colorantIndex, -1);
  EXPECT_EQ(records[2].colorantIndex, 5);
  EXPECT_EQ(CurvesOf(records[0]).light, (std::vector<Pair>{{0, 0}, {0.25f, 0.5f}, {0.75f, 0}}));
  EXPECT_TRUE(CurvesOf(records[1]).dark.empty());
  EXPECT_EQ(CurvesOf(records[2]).dark, (std::vector<Pair>{{0, 0}, {0, 0.375f}, {1, 1}}));
}

TEST(SplitParamConversion, VersionTwoBecomesVersionFourDirectly) {
  SplitParam split = MixedSet();
  split.ConvertToV4();
  EXPECT_EQ(split.version, 4);
  EXPECT_EQ(split.count, 3);
  EXPECT_EQ(split.size, 3 * 9240 + 20);
  ASSERT_NE(split.splits, nullptr);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(V4At(split, i).size, 9240u) << i;
  EXPECT_EQ(V4At(split, 0).colorantIndex, 3);
  // By way of version 3 the tail and the shapes would be lost.
  EXPECT_EQ(
      CurvesOf(V4At(split, 0)).light,
      (std::vector<Triple>{
          {0, 0, 0}, {0.25f, 0.5f, 0.5f}, {0.625f, 0.125f, 1.0f}, {kTail, 0.125f, 0}, {1, 0, 0}}));
  EXPECT_TRUE(CurvesOf(V4At(split, 1)).dark.empty());
  EXPECT_EQ(CurvesOf(V4At(split, 2)).dark,
            (std::vector<Triple>{{0, 0, 0}, {0, 0.375f, 0}, {1, 1, 0}}));
}

TEST(SplitParamConversion, VersionThreeBecomesVersionFour) {
  SplitParam split = MixedSet();
  split.ConvertToV3();
  static_cast<SplitTypeV3*>(split.splits)[2].interpolation = 2;
  split.ConvertToV4();
  EXPECT_EQ(split.version, 4);
  EXPECT_EQ(split.count, 3);
  EXPECT_EQ(split.size, 3 * 9240 + 20);
  EXPECT_EQ(CurvesOf(V4At(split, 0)).light,
            (std::vector<Triple>{{0, 0, 0}, {0.25f, 0.5f, 0}, {0.75f, 0, 0}}));
  EXPECT_EQ(V4At(split, 0).interpolation, 0);
  EXPECT_EQ(V4At(split, 2).interpolation, 2);
  EXPECT_EQ(V4At(split, 2).colorantIndex, 5);
}

TEST(SplitParamConversion, NothingIsConvertedDownwardsOrTwice) {
  SplitParam split = MixedSet();
  split.ConvertToV4();
  const SplitTypeBase* const records = split.splits;
  split.ConvertToV3();
  split.ConvertToV4();
  EXPECT_EQ(split.version, 4);
  EXPECT_EQ(split.size, 3 * 9240 + 20);
  EXPECT_EQ(split.splits, records);

  SplitParam three = MixedSet();
  three.ConvertToV3();
  const SplitTypeBase* const threeRecords = three.splits;
  three.ConvertToV3();
  EXPECT_EQ(three.version, 3);
  EXPECT_EQ(three.splits, threeRecords);
}

TEST(SplitParamConversion, OtherVersionsAreLeftAlone) {
  SplitTypeV2 foreign;
  for (const int version : {1, 5, 0, -2}) {
    SplitParam split;
    split.version = version;
    split.count = 1;
    split.size = 96;
    split.splits = &foreign;
    split.ConvertToV3();
    split.ConvertToV4();
    EXPECT_EQ(split.version, version);
    EXPECT_EQ(split.size, 96);
    EXPECT_EQ(split.splits, &foreign);
    split.splits = nullptr;
  }
}

TEST(SplitParamConversion, ASetWithoutRecordsIsLeftAlone) {
  for (const int version : {2, 3}) {
    SplitParam split;
    split.version = version;
    split.count = 3;
    split.ConvertToV3();
    split.ConvertToV4();
    EXPECT_EQ(split.version, version);
    EXPECT_EQ(split.count, 3);
    EXPECT_EQ(split.size, 20);
    EXPECT_EQ(split.splits, nullptr);
  }
}

TEST(SplitV3ToV4, CopiesEachCurveWithItsOwnPoints) {
  const auto v3 = std::make_unique<SplitTypeV3>();
  v3->colorantIndex = 2;
  v3->interpolation = 9;
  v3->light[0] = {0.25f, 0.5f};
  v3->lightCount = 1;
  v3->medium[0] = {0.125f, 0.75f};
  v3->medium[1] = {0.375f, 0.0f};
  v3->mediumCount = 2;
  v3->dark[0] = {0.5f, 0.25f};
  v3->dark[1] = {0.625f, 0.5f};
  v3->dark[2] = {1.0f, 1.0f};
  v3->dark[3] = {9.0f, 9.0f};  // after the last one
  v3->darkCount = 3;
  const auto v4 = std::make_unique<SplitTypeV4>(*v3);
  EXPECT_EQ(v4->colorantIndex, 2);
  EXPECT_EQ(v4->interpolation, 9);
  EXPECT_EQ(v4->lightCount, 1);
  EXPECT_EQ(v4->light[0].input, 0.25f);
  EXPECT_EQ(v4->light[0].amount, 0.5f);
  EXPECT_EQ(v4->mediumCount, 2);
  EXPECT_EQ(v4->medium[0].amount, 0.75f);
  EXPECT_EQ(v4->medium[1].input, 0.375f);
  EXPECT_EQ(v4->medium[1].shape, 0.0f);
  EXPECT_EQ(v4->darkCount, 3);
  EXPECT_EQ(v4->dark[1].input, 0.625f);
  EXPECT_EQ(v4->dark[3].input, 0.0f);
}

}  // namespace
