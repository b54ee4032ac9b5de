// Any text as a characterisation target, and what stands behind its first zero byte as one that is
// read into the same lists.
#include <algorithm>
#include <cmath>

#include "Fuzz.h"
#include "handler/TargetParser.h"

using vkcl::TargetRule;
using vkcl::fuzz::Demand;

namespace {

struct Lists {
  ProfileDataList device;
  ProfileDataList measurement;

  TargetRule Read(std::string_view text) { return vkcl::ParseTarget(text, device, measurement); }
};

std::size_t ValuesOf(const ProfileDataList& list) {
  return static_cast<std::size_t>(list.NumOfSamples) * static_cast<std::size_t>(list.NumOfColors);
}

// Every value is there, and of single precision.
void IsWhole(const ProfileDataList& list) {
  Demand(list.NumOfSamples >= 0 && list.NumOfColors >= 0, "counts are not negative");
  vkcl::fuzz::Digest(list);
  if (list.DataList == nullptr) return Demand(ValuesOf(list) == 0, "what is counted is there");
  Demand(std::all_of(list.DataList, list.DataList + ValuesOf(list),
                     [](double value) {
                       return std::isnan(value) ||
                              value == static_cast<double>(static_cast<float>(value));
                     }),
         "a number is rounded to single precision");
}

void IsTarget(const Lists& lists) {
  const auto& [device, measurement] = lists;
  Demand(device.NumOfSamples == measurement.NumOfSamples &&
             measurement.Measured == measurement.NumOfSamples && device.Measured == 0,
         "each sample is measured");
  Demand(measurement.NumOfColors == (measurement.DataFormat == 0x7265666C /* refl */ ? 36 : 3),
         "what was measured has its number of values");
  Demand(device.DataFormat != 0 && measurement.DataFormat != 0, "both formats are known");
}

// The values of a list that is not replaced stay, with zeros behind them.
void Stays(const ProfileDataList& before, const ProfileDataList& after) {
  Demand(after.NumOfSamples == before.NumOfSamples && after.Measured == before.Measured &&
             (after.DataList == nullptr) == (before.DataList == nullptr),
         "a refusal leaves the samples");
  if (after.DataList == nullptr) return;
  const std::size_t held = std::min(ValuesOf(before), ValuesOf(after));
  Demand(std::equal(after.DataList, after.DataList + held, before.DataList,
                    [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }),
         "a refusal leaves the values");
  Demand(std::all_of(after.DataList + held, after.DataList + ValuesOf(after),
                     [](double value) { return value == 0; }),
         "what is new are zeros");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  Lists lists;
  std::size_t from = 0;
  for (int i = 0; i < 2 && from <= size; ++i) {
    const std::string_view rest = text.substr(from);
    from += rest.substr(0, rest.find('\0')).size() + 1;
    const Lists before = lists;
    const TargetRule rule = lists.Read(rest);
    Demand(*vkcl::TargetRuleText(rule) != '\0', "every rule has words");
    IsWhole(lists.device);
    IsWhole(lists.measurement);
    Lists fresh;
    Demand(fresh.Read(rest) == rule, "the rule does not depend on the lists");
    if (rule == TargetRule::Accepted) {
      IsTarget(lists);
      Demand(vkcl::fuzz::Digest(fresh.device) == vkcl::fuzz::Digest(lists.device) &&
                 vkcl::fuzz::Digest(fresh.measurement) == vkcl::fuzz::Digest(lists.measurement),
             "what is read does not depend on the lists");
    } else {
      Stays(before.device, lists.device);
      Stays(before.measurement, lists.measurement);
    }
  }
  return 0;
}
