// Version 2 knots to version 3 and 4 curves. Single precision after every operation, in the order
// written: the curves are stored, and the same record gives the same bytes on every machine.
#include <algorithm>

#include "split/SplitParam.h"

namespace {

constexpr float kTailEnd = 0.99f;  // a tail ink is kept up to here and drops to 0 at the top
constexpr int kMostPoints = 256;

bool HasLight(const SplitTypeV2& v2) {
  return v2.lightPeakInput > 0 && v2.lightTailAmount >= 0 && v2.lightPeakAmount > 0 &&
         v2.lightEndInput > 0;
}

// Asks for a light knot below the medium one, whether or not the light ink is used.
bool HasMedium(const SplitTypeV2& v2) {
  return v2.mediumPeakInput > 0 && v2.mediumPeakAmount > 0 && v2.mediumEndInput > 0 &&
         v2.mediumTailAmount >= 0 && v2.lightPeakInput > 0 &&
         v2.mediumPeakInput > v2.lightPeakInput;
}

bool HasDark(const SplitTypeV2& v2) { return v2.darkAmount > 0; }

// Input at which the line that falls from the peak to 0 at the end has reached the tail amount.
float TailInput(float peakInput, float endInput, float peakAmount, float tailAmount) {
  const float width = endInput - peakInput;
  const float rise = tailAmount - peakAmount;
  const float product = width * rise;
  const float fall = 0.0f - peakAmount;
  const float distance = product / fall;
  return peakInput + distance;
}

float Third(float shape) { return shape / 3.0f; }

// Appends the peak and what follows it: straight to the end, or into a tail.
struct Falling {
  float peakInput;
  float endInput;
  float peakAmount;
  float tailAmount;
  float peakShape;
  float endShape;
};

std::int32_t FillFalling(SplitDotInfo2* points, const Falling& ink) {
  points[1] = {ink.peakInput, ink.peakAmount, Third(ink.peakShape)};
  if (!(ink.tailAmount > 0)) {
    points[2] = {ink.endInput, 0.0f, Third(ink.endShape)};
    return 3;
  }
  points[2] = {TailInput(ink.peakInput, ink.endInput, ink.peakAmount, ink.tailAmount),
               ink.tailAmount, Third(ink.endShape)};
  points[3] = {kTailEnd, ink.tailAmount, 0.0f};
  points[4] = {1.0f, 0.0f, 0.0f};
  return 5;
}

std::int32_t CopyPoints(SplitDotInfo2* to, const SplitDotInfo* from, std::int32_t count) {
  const std::int32_t used = std::clamp(count, 0, kMostPoints);
  for (std::int32_t i = 0; i < used; ++i) to[i] = {from[i].input, from[i].amount, 0.0f};
  return used;
}

}  // namespace

SplitTypeV3::SplitTypeV3(const SplitTypeV2& v2) : SplitTypeV3() {
  colorantIndex = v2.colorantIndex;
  float start = 0.0f;
  float end = 0.0f;
  if (HasLight(v2)) {
    light[1] = {v2.lightPeakInput, v2.lightPeakAmount};
    light[2] = {v2.lightEndInput, 0.0f};
    lightCount = 3;
    start = v2.lightPeakInput;
    end = v2.lightEndInput;
  }
  if (HasMedium(v2)) {
    medium[0] = {v2.lightPeakInput, 0.0f};  // also without a light curve
    medium[1] = {v2.mediumPeakInput, v2.mediumPeakAmount};
    medium[2] = {v2.mediumEndInput, 0.0f};
    mediumCount = 3;
    start = v2.mediumPeakInput;
    end = v2.mediumEndInput;
  }
  if (HasDark(v2)) {
    dark[0] = {start, 0.0f};
    dark[1] = {end, v2.darkAmount};
    dark[2] = {1.0f, 1.0f};
    darkCount = 3;
  }
}

SplitTypeV4::SplitTypeV4(const SplitTypeV2& v2) : SplitTypeV4() {
  colorantIndex = v2.colorantIndex;
  float start = 0.0f;
  float end = 0.0f;
  const bool hasLight = HasLight(v2);
  if (hasLight) {
    lightCount = FillFalling(light, {v2.lightPeakInput, v2.lightEndInput, v2.lightPeakAmount,
                                     v2.lightTailAmount, v2.lightPeakShape, v2.lightEndShape});
    start = v2.lightPeakInput;
    end = v2.lightEndInput;
  }
  if (HasMedium(v2)) {
    medium[0] = {hasLight ? v2.lightPeakInput : 0.0f, 0.0f, Third(v2.mediumStartShape)};
    mediumCount = FillFalling(medium, {v2.mediumPeakInput, v2.mediumEndInput, v2.mediumPeakAmount,
                                       v2.mediumTailAmount, v2.mediumPeakShape, v2.mediumEndShape});
    start = v2.mediumPeakInput;
    end = v2.mediumEndInput;
  }
  if (HasDark(v2)) {
    dark[0] = {start, 0.0f, Third(v2.darkStartShape)};
    dark[1] = {end, v2.darkAmount, Third(v2.darkEndShape)};
    dark[2] = {1.0f, 1.0f, 0.0f};
    darkCount = 3;
  }
}

SplitTypeV4::SplitTypeV4(const SplitTypeV3& v3) : SplitTypeV4() {
  colorantIndex = v3.colorantIndex;
  interpolation = v3.interpolation;
  lightCount = CopyPoints(light, v3.light, v3.lightCount);
  mediumCount = CopyPoints(medium, v3.medium, v3.mediumCount);
  darkCount = CopyPoints(dark, v3.dark, v3.darkCount);
}
