#include "DataCommands.h"

#include <fmt/format.h>

#include <memory>
#include <nlohmann/json.hpp>

#include "Describe.h"
#include "Opened.h"
#include "Records.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "handler/StoredList.h"
#include "handler/TargetParser.h"

namespace vkcl::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr VKPrivateTagSignature kListTags[] = {QX55, QX54, QX57, QX56, QX60, QX59, QX72, QX73};

double ValueAt(const ProfileDataList& list, std::int32_t sample, std::int32_t color) {
  return list
      .DataList[static_cast<std::size_t>(sample) * static_cast<std::size_t>(list.NumOfColors) +
                static_cast<std::size_t>(color)];
}

// Values came from a text of single precision where `single` is set: shown with as many digits.
std::string ValueText(double value, bool single) {
  return single ? NumberText(static_cast<float>(value)) : NumberText(value);
}

Json RowJson(const ProfileDataList& list, std::int32_t sample, bool single) {
  Json row = Json::array();
  for (std::int32_t k = 0; k < list.NumOfColors; ++k) {
    const double value = ValueAt(list, sample, k);
    row.push_back(single ? RealValue(static_cast<float>(value)) : RealValue(value));
  }
  return row;
}

std::string RowText(const ProfileDataList& list, std::int32_t sample, bool single) {
  std::string text;
  for (std::int32_t k = 0; k < list.NumOfColors; ++k) {
    text += fmt::format(" {:>10}", ValueText(ValueAt(list, sample, k), single));
  }
  return text;
}

Json ListJson(const ProfileDataList& list, bool values) {
  Json document = {{"format", SignatureText(list.DataFormat)},
                   {"samples", list.NumOfSamples},
                   {"colorMode", list.ColorMode},
                   {"valuesPerSample", list.NumOfColors},
                   {"measured", list.Measured},
                   {"hasValues", list.DataList != nullptr}};
  if (!values || list.DataList == nullptr) return document;
  Json rows = Json::array();
  for (std::int32_t i = 0; i < list.NumOfSamples; ++i) rows.push_back(RowJson(list, i, false));
  document["values"] = std::move(rows);
  return document;
}

std::string ListText(const ProfileDataList& list, bool values) {
  std::string text = fmt::format("{} samples of {} values ({}), {} measured{}\n", list.NumOfSamples,
                                 list.NumOfColors, SignatureText(list.DataFormat), list.Measured,
                                 list.DataList == nullptr ? ", no values stored" : "");
  if (!values || list.DataList == nullptr) return text;
  for (std::int32_t i = 0; i < list.NumOfSamples; ++i) {
    text += fmt::format("  {:>6}{}\n", i, RowText(list, i, false));
  }
  return text;
}

std::string TargetText(const ProfileDataList& device, const ProfileDataList& measurement) {
  std::string text =
      fmt::format("{} samples: {} device values ({}), {} measured values ({})\n",
                  device.NumOfSamples, device.NumOfColors, SignatureText(device.DataFormat),
                  measurement.NumOfColors, SignatureText(measurement.DataFormat));
  for (std::int32_t i = 0; i < device.NumOfSamples; ++i) {
    text +=
        fmt::format("  {:>6}{}  |{}\n", i, RowText(device, i, true), RowText(measurement, i, true));
  }
  return text;
}

Json TargetJson(const ProfileDataList& device, const ProfileDataList& measurement) {
  Json samples = Json::array();
  for (std::int32_t i = 0; i < device.NumOfSamples; ++i) {
    samples.push_back(
        {{"device", RowJson(device, i, true)}, {"measured", RowJson(measurement, i, true)}});
  }
  return {{"deviceFormat", SignatureText(device.DataFormat)},
          {"deviceValues", device.NumOfColors},
          {"measuredFormat", SignatureText(measurement.DataFormat)},
          {"measuredValues", measurement.NumOfColors},
          {"samples", std::move(samples)}};
}

std::string Dumped(const Json& document) { return document.dump(2, ' ', kAsciiOnly) + '\n'; }

}  // namespace

Result Lists(const std::string& path, bool values, bool json) {
  const std::string why = WhyInvalid(path, 0);
  if (!why.empty()) return Refused(why);
  const OpenedProfile profile(path, 0);
  std::string text;
  Json document = Json::array();
  for (const VKPrivateTagSignature tag : kListTags) {
    if (profile.GetTagSize(static_cast<icTagSignature>(tag)) == 0) continue;
    ProfileDataList list;
    const bool readable = ReadStoredList(profile, tag, list) != 0;
    Json row = {{"signature", SignatureText(tag)}, {"name", TitleOf(tag)}, {"readable", readable}};
    if (readable) row.update(ListJson(list, values));
    document.push_back(std::move(row));
    text += fmt::format(
        "{}  {}: {}", SignatureText(tag), TitleOf(tag),
        readable ? ListText(list, values) : "cannot be read: it does not hold what it announces\n");
  }
  if (json) return Done(Dumped(document));
  return Done(text.empty() ? "no data lists\n" : text);
}

Result Target(const std::string& path, bool json) {
  const std::string why = WhyInvalid(path, 0);
  if (!why.empty()) return Refused(why);
  const OpenedProfile profile(path, 0);
  unsigned long size = 0;
  const std::unique_ptr<char[]> text(profile.ReadtargTag(size));
  if (text == nullptr) return Refused("it holds no readable characterisation target ('targ')");
  ProfileDataList device;
  ProfileDataList measurement;
  const TargetRule rule = ParseTarget({text.get(), size}, device, measurement);
  if (rule != TargetRule::Accepted) {
    return Refused(fmt::format("its target is refused: {}", TargetRuleText(rule)));
  }
  return Done(json ? Dumped(TargetJson(device, measurement)) : TargetText(device, measurement));
}

Result Options(const std::string& path, bool json) {
  const std::string why = WhyInvalid(path, 0);
  if (!why.empty()) return Refused(why);
  const OpenedHandler handler(path, 0);
  VKCLProfileOptions options;
  if (handler.GetProfileOptions(options) == 0) {
    return Refused(
        "it holds no profiler options (no 'meta' dictionary, or none of the keys in it)");
  }
  Json document = Json::object();
  std::string text;
  for (const ProfileOptionKey& option : kProfileOptionKeys) {
    const std::string value = (options.*option.member).str();
    document[option.key] = Utf8(value);
    text += fmt::format("  {:<22}{}\n", option.key, value.empty() ? "-" : Printable(value));
  }
  return Done(json ? Dumped(document) : text);
}

}  // namespace vkcl::tool
