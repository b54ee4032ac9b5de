#include "SplitCommands.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>

#include "ColorCommands.h"
#include "Opened.h"
#include "Records.h"
#include "OutputFile.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "colornames/ColorDefinitions.h"
#include "colornames/ColorModes.h"
#include "handler/StoredSplit.h"
#include "platform/axml/AXMLTree.h"
#include "profile/TagLayout.h"

namespace vkcl::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kRoot = "InkSplit";

struct CurveOf {
  const char* name;
  char mark;
  SplitDotInfo2 (SplitTypeV4::*points)[256];
  std::int32_t SplitTypeV4::*count;
};
constexpr CurveOf kCurves[] = {
    {"light", 'l', &SplitTypeV4::light, &SplitTypeV4::lightCount},
    {"medium", 'm', &SplitTypeV4::medium, &SplitTypeV4::mediumCount},
    {"dark", 'd', &SplitTypeV4::dark, &SplitTypeV4::darkCount},
};

std::span<const SplitDotInfo2> PointsOf(const SplitTypeV4& record, const CurveOf& curve) {
  return {record.*curve.points, static_cast<std::size_t>(std::clamp(record.*curve.count, 0, 256))};
}

std::span<const SplitTypeV4> RecordsOf(const SplitParam& split) {
  return {static_cast<const SplitTypeV4*>(split.splits), static_cast<std::size_t>(split.count)};
}

std::string ColorantText(std::int32_t index) {
  if (index == -1) return "no colorant (-1)";
  const std::string name = GetColorNameByIndex(index).str();
  return fmt::format("{} ({})", name.empty() ? "unknown colorant" : Printable(name), index);
}

// A plot of fixed size: input from 0 to 1 to the right, amount from 0 to 1 upwards.
class Plot {
 public:
  Plot() { rows_.fill(std::string(kWidth + 1, ' ')); }

  // Straight lines between the points: how they are really joined is the consumer's business.
  void Draw(std::span<const SplitDotInfo2> points, char mark) {
    for (std::size_t i = 1; i < points.size(); ++i) DrawLine(points[i - 1], points[i], mark);
    for (const SplitDotInfo2& point : points) {
      Put(point.input, point.amount, static_cast<char>(mark - 'a' + 'A'));
    }
  }

  std::string Text() const {
    std::string text;
    for (int row = 0; row <= kHeight; ++row) {
      const char* label = row == 0             ? "1.0"
                          : row == kHeight / 2 ? "0.5"
                          : row == kHeight     ? "0.0"
                                               : "";
      std::string line = rows_[static_cast<std::size_t>(row)];
      line.erase(line.find_last_not_of(' ') + 1);
      text += fmt::format("  {:>3} |{}\n", label, line);
    }
    const std::string half(kWidth / 2 - 3, ' ');
    return text + fmt::format("      +{}\n       0.0{}0.5{}1.0 input\n",
                              std::string(kWidth + 1, '-'), half, half);
  }

 private:
  static constexpr int kWidth = 60;
  static constexpr int kHeight = 12;

  static int Place(float value, int length) {
    if (!(value >= 0.0f && value <= 1.0f)) return -1;  // NaN, too
    return static_cast<int>(std::lround(value * static_cast<float>(length)));
  }

  void Put(float input, float amount, char mark) {
    const int column = Place(input, kWidth);
    const int row = Place(amount, kHeight);
    if (column < 0 || row < 0) return;
    rows_[static_cast<std::size_t>(kHeight - row)][static_cast<std::size_t>(column)] = mark;
  }

  void DrawLine(const SplitDotInfo2& from, const SplitDotInfo2& to, char mark) {
    constexpr int kSteps = 2 * kWidth;
    for (int i = 0; i <= kSteps; ++i) {
      const float part = static_cast<float>(i) / kSteps;
      Put(from.input + part * (to.input - from.input),
          from.amount + part * (to.amount - from.amount), mark);
    }
  }

  std::array<std::string, kHeight + 1> rows_;
};

std::string RecordText(const SplitTypeV4& record) {
  std::string text = fmt::format("{}, interpolation {}\n", ColorantText(record.colorantIndex),
                                 record.interpolation);
  Plot plot;
  for (const CurveOf& curve : kCurves) {
    const auto points = PointsOf(record, curve);
    if (points.empty()) continue;
    plot.Draw(points, curve.mark);
    text += fmt::format("  {:<6} ", curve.name);
    for (const SplitDotInfo2& point : points) {
      text += fmt::format(" {}:{}/{}", NumberText(point.input), NumberText(point.amount),
                          NumberText(point.shape));
    }
    text += '\n';
  }
  return text + plot.Text();
}

std::string Colorants(const SplitParam& split) {
  return fmt::format("{} split colorant{}", split.count, split.count == 1 ? "" : "s");
}

std::string SplitText(const SplitParam& split, std::int32_t version) {
  std::string text =
      fmt::format("{} split colorant{}, version {}{}\n", split.count, split.count == 1 ? "" : "s",
                  version, version == 4 ? "" : ", shown as the curves of version 4");
  if (split.count > 0) text += "points are input:amount/shape\n";
  for (const SplitTypeV4& record : RecordsOf(split)) text += '\n' + RecordText(record);
  return text;
}

Json SplitJson(const SplitParam& split, std::int32_t version) {
  Json records = Json::array();
  for (const SplitTypeV4& record : RecordsOf(split)) {
    Json row = {{"colorantIndex", record.colorantIndex}, {"interpolation", record.interpolation}};
    for (const CurveOf& curve : kCurves) {
      Json points = Json::array();
      for (const SplitDotInfo2& point : PointsOf(record, curve)) {
        points.push_back({RealValue(point.input), RealValue(point.amount), RealValue(point.shape)});
      }
      row[curve.name] = std::move(points);
    }
    records.push_back(std::move(row));
  }
  return {{"version", version}, {"colorants", std::move(records)}};
}

// Reads the XML form, whatever its root is called.
bool ReadXml(const std::string& path, SplitParam& split) {
  AXMLTree tree(kRoot);
  if (tree.LoadFromFile(AFilePath(path), 1) == 0) return false;
  AXMLTreeNode root = tree.GetRoot();
  return split.Serialize(tree, root, 1) != 0;
}

bool WriteXml(SplitParam& split, const std::string& path) {
  AXMLTree tree(kRoot);
  AXMLTreeNode root = tree.GetRoot();
  return split.Serialize(tree, root, 0) != 0 && tree.SaveToFile(AFilePath(path)) != 0;
}

// Numbers with commas between them; none in an empty text.
bool ParseNumbers(std::string_view text, std::vector<double>& numbers) {
  while (!text.empty()) {
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || !std::isfinite(number)) return false;
    numbers.push_back(number);
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    if (text.empty()) return true;
    if (text.front() != ',' || text.size() == 1) return false;
    text.remove_prefix(1);
  }
  return true;
}

Result DefaultSplit(const SplitOptions& options, SplitParam& split) {
  int mode = 0;
  if (!ParseMode(options.mode, mode)) {
    return Usage(fmt::format("\"{}\" is no colour mode", Printable(options.mode)));
  }
  const int channels = GetNumberOfChannels(mode);
  if (channels <= 0) return Refused(fmt::format("colour mode {} has no inks", ModeText(mode)));
  std::vector<double> values;
  if (!ParseNumbers(options.strengths, values)) {
    return Usage(fmt::format("\"{}\" are no numbers with commas between them",
                             Printable(options.strengths)));
  }
  if (!values.empty() && values.size() != static_cast<std::size_t>(channels)) {
    return Usage(fmt::format("colour mode {} has {} channels, and {} strengths are given",
                             ModeText(mode), channels, values.size()));
  }
  split.version = options.version;
  if (split.SetDefaultValues(mode, values.empty() ? nullptr : values.data()) == 0) {
    return Usage(fmt::format("there is no split of version {}", options.version));
  }
  return {};
}

// Reads the split of the file: that of a profile, or an XML form.
Result LoadSplit(const std::string& path, SplitParam& split) {
  const std::string why = WhyInvalid(path, 0);
  if (!why.empty()) {
    if (ReadXml(path, split)) return {};
    return Refused(fmt::format("it is no ICC profile ({}), and no XML form of a split", why));
  }
  const OpenedProfile profile(path, 0);
  if (profile.GetTagSize(static_cast<icTagSignature>(QX50)) == 0) {
    return Refused("it holds no ink split (QX50)");
  }
  if (!ReadStoredSplit(profile, split)) {
    return Refused("its ink split (QX50) cannot be read: it does not hold what it announces");
  }
  return {};
}

Result StoreSplit(const SplitOptions& options) {
  const std::string why = WhyInvalid(options.file, 0);
  if (!why.empty()) return Refused(why);
  SplitParam split;
  if (const std::string no = WhyUnreadable(options.fromXml); !no.empty()) {
    return Refused(fmt::format("{}: {}", Printable(options.fromXml), no));
  }
  if (!ReadXml(options.fromXml, split)) {
    return Refused(fmt::format("{}: it is no XML form of a split", Printable(options.fromXml)));
  }
  if (split.count == 0) return Refused("a split of no colorant is not stored");
  const auto suits = [&](const VKCLProfile& profile) {
    return TagDataSuitWriting(profile, QX50, static_cast<unsigned long>(split.size));
  };
  return ChangeProfile(options.file, 0, suits, options.how, [&](VKCLProfileHandler& handler) {
    if (handler.WriteInkSplitTag(split) == 0) {
      return Refused("it could not be written; the file refuses it, or the disk is full");
    }
    return Done(fmt::format("{}: the split of {} stored, {}, version {}\n", Printable(options.file),
                            Printable(options.fromXml), Colorants(split), split.version));
  });
}

}  // namespace

Result Split(const SplitOptions& options) {
  if (options.file.empty() == options.mode.empty()) {
    return Usage("give a file, or --default and a colour mode");
  }
  if (!options.fromXml.empty()) {
    if (options.file.empty() || options.file == "-") {
      return Usage("--from-xml needs a profile to store into");
    }
    if (!options.toXml.empty() || options.json) {
      return Usage("--from-xml stores a split; --xml and --json show one");
    }
    return StoreSplit(options);
  }
  if (options.how.dryRun || options.how.inPlace || options.how.hardLinks) {
    return Usage("--dry-run, --in-place and --hard-links belong to --from-xml");
  }
  if (options.mode.empty() && (!options.strengths.empty() || options.version != 4)) {
    return Usage("--strengths and --version belong to --default");
  }
  if (!options.strengths.empty() && options.version != 4) {
    return Usage("--strengths scale the curves of version 4 only");
  }
  SplitParam split;
  Result loaded =
      options.file.empty() ? DefaultSplit(options, split) : LoadSplit(options.file, split);
  if (loaded.outcome != Outcome::Done) return loaded;
  const std::int32_t version = split.version;
  split.ConvertToV4();
  if (options.toXml.empty()) {
    return Done(options.json ? SplitJson(split, version).dump(2, ' ', kAsciiOnly) + '\n'
                             : SplitText(split, version));
  }
  if (AFilePath(options.toXml).isSameFile(AFilePath(options.file))) {
    return Refused("a file is not replaced by the split in it");
  }
  const std::string why = WhyKept(options.toXml, options.force);
  if (!why.empty()) return Refused(why);
  if (!WriteXml(split, options.toXml)) return NotWritten(options.toXml);
  return Done(fmt::format("{} written to {}{}\n", Colorants(split), Printable(options.toXml),
                          version == 4 ? "" : ", as the curves of version 4"));
}

}  // namespace vkcl::tool
