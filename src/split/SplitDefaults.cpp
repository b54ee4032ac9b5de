// The default split of a colour mode: which colorants are split, and the curves of each kind.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

#include "colornames/ColorInfo.h"
#include "colornames/ColorModes.h"
#include "split/SplitParam.h"

namespace {

// The inks of a split colorant.
enum class Kind : std::uint8_t { LightDark, MediumDark, LightMediumDark };

struct Entry {
  std::int32_t colorant = -1;
  Kind kind = Kind::LightDark;
};

struct Plan {
  std::int32_t count = 0;
  std::array<Entry, 6> entries = {};
};

struct NamedPlan {
  std::int32_t mode = 0;
  Plan plan;
};

using enum Kind;

constexpr NamedPlan kPlans[] = {
    {2, {2, {{{0, LightDark}, {1, LightDark}}}}},
    {32, {2, {{{0, LightDark}, {1, LightDark}}}}},
    {64, {2, {{{0, MediumDark}, {1, MediumDark}}}}},
    {128, {2, {{{0, MediumDark}, {1, MediumDark}}}}},
    {256, {2, {{{0, LightMediumDark}, {1, LightMediumDark}}}}},
    {1024, {3, {{{0, LightDark}, {1, LightDark}, {3, LightDark}}}}},
    {4096, {4, {{{0, LightDark}, {1, LightDark}, {2, LightDark}, {3, LightDark}}}}},
    {8192, {3, {{{0, LightDark}, {1, LightDark}, {3, LightMediumDark}}}}},
    {8196, {3, {{{0, MediumDark}, {1, MediumDark}, {3, MediumDark}}}}},
    // The second entry is of no colorant, deliberately: hosts find their black by that.
    {8200, {2, {{{1, LightDark}, {-1, LightMediumDark}}}}},
    {8208, {2, {{{1, LightDark}, {3, LightMediumDark}}}}},
    {8224, {3, {{{0, LightDark}, {1, LightDark}, {3, LightMediumDark}}}}},
    {8256, {1, {{{3, LightMediumDark}}}}},
    {8320, {2, {{{1, LightDark}, {3, LightDark}}}}},
};

// The inks of a flag-set mode that make a split, in the order in which the plan is built.
struct DilutionBit {
  std::uint32_t bit = 0;
  Entry entry;
};
constexpr DilutionBit kDilutionBits[] = {
    {0x10, {0, LightDark}},   {0x20, {1, LightDark}},    {0x800, {2, LightDark}},
    {0x400, {3, LightDark}},  {0x1000, {3, MediumDark}}, {0x100, {0, MediumDark}},
    {0x200, {1, MediumDark}},
};

Plan PlanOfFlags(std::uint32_t flags) {
  Plan plan;
  for (const DilutionBit& row : kDilutionBits) {
    if ((flags & row.bit) == 0) continue;
    auto* const end = plan.entries.data() + plan.count;
    auto* const earlier = std::find_if(plan.entries.data(), end, [&](const Entry& entry) {
      return entry.colorant == row.entry.colorant;
    });
    if (earlier != end) {
      earlier->kind = LightMediumDark;
    } else {
      *end = row.entry;
      ++plan.count;
    }
  }
  return plan;
}

Plan PlanOf(std::int32_t mode) {
  if (mode < 0) return PlanOfFlags(static_cast<std::uint32_t>(mode));
  for (const NamedPlan& row : kPlans) {
    if (row.mode == mode) return row.plan;
  }
  return {};
}

// The knots of version 2, a row a kind.
struct Knots {
  float lightPeakInput, lightEndInput, lightPeakAmount;
  float mediumPeakInput, mediumEndInput, mediumPeakAmount;
  float darkAmount, lightShape, mediumShape;
};
constexpr Knots kKnots[] = {
    {0.3f, 0.6f, 0.4f, -0.1f, -0.1f, -0.1f, 0.6f, 1.0f, 0.0f},
    {0.0f, 0.0f, -1.0f, 0.3f, 0.6f, 0.4f, 0.6f, 0.0f, 1.0f},
    {0.2f, 0.4f, 0.2f, 0.5f, 0.8f, 0.4f, 0.75f, 1.0f, 1.0f},
};

void Fill(SplitTypeV2& record, Kind kind) {
  const Knots& knots = kKnots[static_cast<std::size_t>(kind)];
  record.reserved = 0.0f;
  record.lightPeakInput = knots.lightPeakInput;
  record.lightEndInput = knots.lightEndInput;
  record.lightPeakAmount = knots.lightPeakAmount;
  record.mediumPeakInput = knots.mediumPeakInput;
  record.mediumEndInput = knots.mediumEndInput;
  record.mediumPeakAmount = knots.mediumPeakAmount;
  record.darkAmount = knots.darkAmount;
  record.lightPeakShape = record.lightEndShape = knots.lightShape;
  record.mediumPeakShape = record.mediumEndShape = knots.mediumShape;
  record.darkStartShape = record.darkEndShape = 1.0f;
}

// Every default curve has three points.
using Curve3 = std::array<SplitDotInfo, 3>;
using Curve4 = std::array<SplitDotInfo2, 3>;

template <class Points, class Curve>
void SetCurve(Points& points, std::int32_t& count, const Curve& curve) {
  std::copy(curve.begin(), curve.end(), points);
  count = static_cast<std::int32_t>(curve.size());
}

void Fill(SplitTypeV3& record, Kind kind) {
  constexpr Curve3 kSingle = {{{0.0f, 0.0f}, {0.3f, 0.4f}, {0.6f, 0.0f}}};
  constexpr Curve3 kSingleDark = {{{0.3f, 0.0f}, {0.6f, 0.6f}, {1.0f, 1.0f}}};
  constexpr Curve3 kLight = {{{0.0f, 0.0f}, {0.2f, 0.2f}, {0.4f, 0.0f}}};
  constexpr Curve3 kMedium = {{{0.2f, 0.0f}, {0.5f, 0.4f}, {0.8f, 0.0f}}};
  constexpr Curve3 kDark = {{{0.5f, 0.0f}, {0.8f, 0.75f}, {1.0f, 1.0f}}};
  const bool three = kind == LightMediumDark;
  if (kind != MediumDark) SetCurve(record.light, record.lightCount, three ? kLight : kSingle);
  if (kind != LightDark) SetCurve(record.medium, record.mediumCount, three ? kMedium : kSingle);
  SetCurve(record.dark, record.darkCount, three ? kDark : kSingleDark);
}

// Strength of the lighter inks of a colorant, as fractions of the full-strength one.
struct Strengths {
  bool known = false;
  float light = 1.0f;
  float medium = 1.0f;
};

// One quotient, rounded once. False when it could not scale a curve.
bool Divide(const double* values, int channel, double own, float& ratio) {
  if (channel < 0) return true;
  ratio = static_cast<float>(values[channel] / own);
  return std::isfinite(ratio) && ratio > 0.0f;
}

// False when the channels could not be told, for want of memory.
bool FindStrengths(int colorMode, std::int32_t colorant, const double* values,
                   Strengths& strengths) {
  strengths = {};
  if (values == nullptr || colorant >= GetNumberOfChannels(colorMode)) return true;
  strengths.known = true;
  if (colorant < 0) return true;  // it has no lighter inks
  int light = -1;
  int medium = -1;
  if (ColorUtils::ColorInfo::GetLightMediumIndex(colorMode, colorant, light, medium) == 0) {
    return false;
  }
  const double own = values[colorant];
  const bool usable = std::isfinite(own) && own != 0.0 &&
                      Divide(values, light, own, strengths.light) &&
                      Divide(values, medium, own, strengths.medium);
  if (!usable) strengths = {};
  return true;
}

// Input at which the first lighter ink peaks.
float Peak(float strength, float low, float high) {
  return std::max(std::min(strength, low), std::min(0.8f * strength, high));
}

// All but the first point of a rise from 0 and the last one at 1 have this shape.
constexpr float kShape = 0.25f;

void FillTwo(SplitTypeV4& record, Kind kind, const Strengths& strengths) {
  const float strength = kind == LightDark ? strengths.light : strengths.medium;
  const float s = strengths.known ? Peak(strength, 0.3f, 0.5f) : 0.3f;
  const float amount = strengths.known ? s / strength : 0.4f;
  const float end = 2.0f * s;
  const Curve4 lighter = {{{0.0f, 0.0f, 0.0f}, {s, amount, kShape}, {end, 0.0f, kShape}}};
  if (kind == LightDark) SetCurve(record.light, record.lightCount, lighter);
  if (kind == MediumDark) SetCurve(record.medium, record.mediumCount, lighter);
  // The dark ink peaks at its own input, deliberately.
  SetCurve(record.dark, record.darkCount,
           Curve4{{{s, 0.0f, kShape}, {end, end, kShape}, {1.0f, 1.0f, 0.0f}}});
}

void FillThree(SplitTypeV4& record, const Strengths& strengths) {
  const bool known = strengths.known;
  const float s = known ? Peak(strengths.light, 0.25f, 0.4f) : 0.2f;
  const float m = known ? 2.0f * s : 0.5f;
  const float e = known ? m + s : 0.8f;
  const float mediumAmount = known ? m / strengths.medium : 0.4f;
  const float darkAmount = known ? m + s : 0.75f;
  SetCurve(
      record.light, record.lightCount,
      Curve4{{{0.0f, 0.0f, 0.0f}, {s, s / strengths.light, kShape}, {2.0f * s, 0.0f, kShape}}});
  SetCurve(record.medium, record.mediumCount,
           Curve4{{{s, 0.0f, kShape}, {m, mediumAmount, kShape}, {e, 0.0f, kShape}}});
  SetCurve(record.dark, record.darkCount,
           Curve4{{{m, 0.0f, kShape}, {e, darkAmount, kShape}, {1.0f, 1.0f, 0.0f}}});
}

void Fill(SplitTypeV4& record, Kind kind, const Strengths& strengths) {
  if (kind == LightMediumDark) {
    FillThree(record, strengths);
  } else {
    FillTwo(record, kind, strengths);
  }
}

// Calls `fill` for each record and its entry until it says no.
template <class Record, class Filler>
bool FillAll(SplitTypeBase* records, std::span<const Entry> plan, Filler fill) {
  auto* record = static_cast<Record*>(records);
  return std::all_of(plan.begin(), plan.end(), [&](const Entry& entry) {
    record->colorantIndex = entry.colorant;
    return fill(*record++, entry);
  });
}

bool FillRecords(SplitTypeBase* records, long version, std::span<const Entry> plan, int colorMode,
                 const double* values) {
  const auto byKind = [](auto& record, const Entry& entry) {
    Fill(record, entry.kind);
    return true;
  };
  if (version == 2) return FillAll<SplitTypeV2>(records, plan, byKind);
  if (version == 3) return FillAll<SplitTypeV3>(records, plan, byKind);
  return FillAll<SplitTypeV4>(records, plan, [&](SplitTypeV4& record, const Entry& entry) {
    Strengths strengths;
    if (!FindStrengths(colorMode, entry.colorant, values, strengths)) return false;
    Fill(record, entry.kind, strengths);
    return true;
  });
}

}  // namespace

int SplitParam::SetDefaultValues(int colorMode, double* values) {
  const Plan plan = PlanOf(colorMode);
  const std::span<const Entry> entries(plan.entries.data(), static_cast<std::size_t>(plan.count));
  const bool known = RecordSize(version) != 0;
  SplitTypeBase* records = NewRecords(version, plan.count);
  if (known && (records == nullptr || !FillRecords(records, version, entries, colorMode, values))) {
    DeleteRecords(version, records);
    return 0;  // memory is short; nothing has changed
  }
  DeleteRecords(version, splits);
  splits = records;
  count = plan.count;
  if (!known) return 0;
  size = static_cast<std::int32_t>(20 + static_cast<std::size_t>(count) * RecordSize(version));
  return 1;
}
