#include "handler/TargetParser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "platform/Shortage.h"
#include "platform/plinth/AString.h"
#include "platform/plinth/NumberText.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

constexpr std::string_view kBeginFormat = "BEGIN_DATA_FORMAT";
constexpr std::string_view kEndFormat = "END_DATA_FORMAT";
constexpr std::string_view kBeginData = "BEGIN_DATA";
constexpr std::string_view kEndData = "END_DATA";

// A keyword is followed by one separator.
constexpr std::size_t Behind(std::string_view keyword) { return keyword.size() + 1; }

struct FormatWord {
  const char* word;
  std::uint32_t format;
};
constexpr FormatWord kFormatWords[] = {
    {"CMYK", icSigCmykData},     {"5CLR", icSig5colorData},   {"PC5", icSig5colorData},
    {"CMYKOG", icSig6colorData}, {"CMYKRB", icSig6colorData}, {"6CLR", icSig6colorData},
    {"7CLR", icSig7colorData},   {"CMY", icSigCmyData},       {"RGB", icSigRgbData},
    {"GRAY", icSig1colorData},
};

// A field that contains the text begins the measured values.
struct MeasurementField {
  std::string_view text;
  std::uint32_t format;
  std::int32_t values;
};
constexpr MeasurementField kMeasurementFields[] = {
    {"XYZ", icSigXYZData, 3}, {"LAB", icSigLabData, 3}, {"R_380", icSignature("refl"), 36}};

std::string_view From(std::string_view text, std::size_t position) {
  return text.substr(std::min(position, text.size()));
}

std::string_view FirstWord(std::string_view text) {
  text = SkipSpace(text);
  std::size_t length = 0;
  while (length < text.size() && !IsSpace(text[length])) ++length;
  return text.substr(0, length);
}

const MeasurementField* MeasurementOf(std::string_view word) {
  for (const MeasurementField& field : kMeasurementFields) {
    if (word.find(field.text) != std::string_view::npos) return &field;
  }
  return nullptr;
}

// Sets the number of values per sample. A list that keeps its values is given zeros behind them
// where the new number asks for more, so that nobody reads past them. False when that is too much.
bool SetColors(ProfileDataList& list, std::int32_t colors) {
  if (list.DataList != nullptr && list.NumOfSamples > 0 && colors > list.NumOfColors) {
    const auto samples = static_cast<std::size_t>(list.NumOfSamples);
    const std::size_t held = samples * static_cast<std::size_t>(std::max(list.NumOfColors, 0));
    const std::size_t values = samples * static_cast<std::size_t>(colors);
    constexpr std::size_t kMostValues = UINT32_MAX / sizeof(double);  // as of any list
    if (values > kMostValues) return false;
    std::unique_ptr<double[]> grown(vkcl::NotedIfNull(new (std::nothrow) double[values]()));
    if (!grown) return false;
    std::copy_n(list.DataList, held, grown.get());
    delete[] list.DataList;
    list.DataList = grown.release();
  }
  list.NumOfColors = colors;
  return true;
}

// Counts the device fields of the field list at `start` up to the first measured one. Each word
// is taken to be followed by exactly one separator.
TargetRule ReadFields(std::string_view text, std::size_t start, std::size_t end,
                      ProfileDataList& device, ProfileDataList& measurement) {
  std::int32_t count = 0;
  for (std::size_t position = start; position < end;) {
    const std::string_view word = FirstWord(From(text, position));
    if (const MeasurementField* field = MeasurementOf(word)) {
      if (!SetColors(device, count) || !SetColors(measurement, field->values)) {
        return TargetRule::TooLarge;
      }
      measurement.DataFormat = field->format;
      return TargetRule::Accepted;
    }
    ++count;
    position += Behind(word);
  }
  return TargetRule::NoMeasurement;
}

void ReadSample(std::string_view line, double* device, std::int32_t deviceColors, double* measured,
                std::int32_t measuredColors) {
  float number = 0;
  for (std::int32_t k = 0; k < deviceColors + measuredColors; ++k) {
    if (!NextNumber(line, number)) return;
    if (k < deviceColors) {
      device[k] = number;
    } else {
      measured[k - deviceColors] = number;
    }
  }
}

// Lines of `data`, counted while their running length is below `bound`.
std::int64_t CountLines(std::string_view data, std::size_t bound) {
  std::int64_t lines = 0;
  for (std::size_t length = 0; length < bound; ++lines) {
    const std::size_t feed = data.find('\n', length);
    if (feed == std::string_view::npos) break;
    length = feed + 1;
  }
  return lines;
}

// Rows may lack numbers, so the text does not bound the values exactly; this does roughly.
bool IsPlausible(std::int64_t samples, const ProfileDataList& device,
                 const ProfileDataList& measurement, std::size_t textSize) {
  constexpr std::int64_t kValuesPerCharacter = 64;
  constexpr std::int64_t kAlways = 65536;
  const std::int64_t columns = std::int64_t{device.NumOfColors} + measurement.NumOfColors;
  const std::int64_t most = kAlways + kValuesPerCharacter * static_cast<std::int64_t>(textSize);
  return samples <= INT32_MAX && columns * samples <= most;
}

TargetRule ReadData(std::string_view rest, std::size_t textSize, ProfileDataList& device,
                    ProfileDataList& measurement) {
  const std::size_t begin = rest.find(kBeginData);
  if (begin == std::string_view::npos) return TargetRule::NoData;
  const std::size_t end = rest.find(kEndData);
  if (end == std::string_view::npos || end < begin) return TargetRule::DataNotClosed;

  std::string_view data = From(rest, begin + Behind(kBeginData));
  const std::int64_t samples = CountLines(data, end) - 1;
  if (samples < 0) return TargetRule::NoSamples;
  if (!IsPlausible(samples, device, measurement, textSize)) return TargetRule::TooLarge;
  const auto count = static_cast<int>(samples);
  if (measurement.RefreshList(count) == 0 || device.RefreshList(count) == 0) {
    return TargetRule::TooLarge;
  }
  measurement.Measured = count;
  const auto deviceColors = static_cast<std::size_t>(device.NumOfColors);
  const auto measuredColors = static_cast<std::size_t>(measurement.NumOfColors);
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    const std::size_t feed = data.find('\n');
    ReadSample(data.substr(0, feed), device.DataList + i * deviceColors, device.NumOfColors,
               measurement.DataList + i * measuredColors, measurement.NumOfColors);
    data = From(data, feed + 1);
  }
  return TargetRule::Accepted;
}

}  // namespace

const char* TargetRuleText(TargetRule rule) {
  switch (rule) {
    case TargetRule::Accepted: return "the target is read";
    case TargetRule::NoFormat: return "there is no BEGIN_DATA_FORMAT";
    case TargetRule::FormatNotClosed:
      return "END_DATA_FORMAT is missing or stands before its BEGIN";
    case TargetRule::UnknownDeviceFormat:
      return "the first field names no known device colour space";
    case TargetRule::NoMeasurement:
      return "there is no field of XYZ, LAB or R_380 before END_DATA_FORMAT";
    case TargetRule::NoData: return "there is no BEGIN_DATA behind the format";
    case TargetRule::DataNotClosed: return "END_DATA is missing or stands before BEGIN_DATA";
    case TargetRule::NoSamples: return "not a single line follows BEGIN_DATA";
    case TargetRule::TooLarge: break;
  }
  return "the text announces more values than it can hold";
}

std::uint32_t DataFormatOfWord(std::string_view word) {
  constexpr std::size_t kLongestWord = 6;
  if (word.size() > kLongestWord) return 0;  // none is as long, and memory may be short for it
  const AString text(word.data(), word.size());
  for (const FormatWord& row : kFormatWords) {
    if (text.compareNoCase(row.word) == 0) return row.format;
  }
  return 0;
}

TargetRule ParseTarget(std::string_view text, ProfileDataList& device,
                       ProfileDataList& measurement) {
  text = text.substr(0, text.find('\0'));
  const std::size_t begin = text.find(kBeginFormat);
  if (begin == std::string_view::npos) return TargetRule::NoFormat;
  const std::size_t end = text.find(kEndFormat);
  if (end == std::string_view::npos || end < begin) return TargetRule::FormatNotClosed;

  const std::size_t fields = begin + Behind(kBeginFormat);
  const std::string_view first = FirstWord(From(text, fields));
  const std::uint32_t format = DataFormatOfWord(first.substr(0, first.find('_')));
  if (format == 0) return TargetRule::UnknownDeviceFormat;
  device.DataFormat = format;

  const TargetRule rule = ReadFields(text, fields, end, device, measurement);
  if (rule != TargetRule::Accepted) return rule;
  return ReadData(From(text, end + Behind(kEndFormat)), text.size(), device, measurement);
}

}  // namespace vkcl
