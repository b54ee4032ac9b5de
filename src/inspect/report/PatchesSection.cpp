// The patches of the characterisation.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>

#include "handler/TargetParser.h"
#include "inspect/report/ReportSections.h"
#include "inspect/report/SampleList.h"
#include "inspect/report/SvgChart.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

constexpr std::size_t kMostTarget = std::size_t{32} << 20;  // bytes of a target that is parsed
constexpr std::uint64_t kMostRows = 50;
constexpr double kMostLab = 1000;  // what lies beyond is no colour

struct Patches {
  SampleList device;
  SampleList measurement;
  const char* source = "lists QX60 and QX59";
  std::string refused;  // why the target text gives none
};

const icTag* FindTarget(const ShownFile& file) {
  const std::vector<icTag>& table = file.table();
  const auto found = std::find_if(table.begin(), table.end(),
                                  [](const icTag& tag) { return tag.sig == icSigCharTargetTag; });
  return found == table.end() ? nullptr : &*found;
}

void ReadTarget(const ShownFile& file, Patches& patches) {
  const icTag* tag = FindTarget(file);
  if (tag == nullptr) return;
  patches.source = "target text 'targ'";
  if (tag->size > kMostTarget) {
    patches.refused = "it is longer than 32 MiB";
    return;
  }
  unsigned long size = 0;
  const std::unique_ptr<char[]> text(file.profile().ReadtargTag(size));
  if (!text) {
    patches.refused = "it is no text that is wholly in the file";
    return;
  }
  auto device = std::make_unique<ProfileDataList>();
  auto measurement = std::make_unique<ProfileDataList>();
  const std::string_view whole(text.get(), size);
  const TargetRule rule = ParseTarget(whole.substr(0, whole.find('\0')), *device, *measurement);
  if (rule != TargetRule::Accepted) {
    patches.refused = TargetRuleText(rule);
    return;
  }
  patches.device = SampleList(std::move(device));
  patches.measurement = SampleList(std::move(measurement));
}

// The lists of the file where there are any, else its target.
Patches ReadPatches(const ShownFile& file) {
  Patches patches;
  patches.device = SampleList(file.Read(QX60), file.colorMode());
  patches.measurement = SampleList(file.Read(QX59), file.colorMode());
  if (!patches.measurement.hasValues() && !patches.device.hasValues()) ReadTarget(file, patches);
  return patches;
}

bool IsColor(const Lab& color) {
  return std::fabs(color.L) <= kMostLab && std::fabs(color.a) <= kMostLab &&
         std::fabs(color.b) <= kMostLab;
}

// The samples at the ends of what was measured.
class Extremes {
 public:
  void Take(const Lab& color, std::uint64_t sample) {
    if (!IsColor(color)) return;
    const std::array<double, kEnds> rank = {color.L, -color.L, color.a,        -color.a,
                                            color.b, -color.b, ChromaOf(color)};
    for (std::size_t i = 0; i < kEnds; ++i) {
      if (any_ && rank[i] <= rank_[i]) continue;
      rank_[i] = rank[i];
      samples_[i] = sample;
    }
    any_ = true;
  }

  void Write(HtmlWriter& out, const Patches& patches, const ShownFile& file) const;

 private:
  static constexpr std::size_t kEnds = 7;

  std::array<double, kEnds> rank_ = {};
  std::array<std::uint64_t, kEnds> samples_ = {};
  bool any_ = false;
};

void Extremes::Write(HtmlWriter& out, const Patches& patches, const ShownFile& file) const {
  constexpr const char* kNames[kEnds] = {"lightest",       "darkest",         "reddest (+a*)",
                                         "greenest (-a*)", "yellowest (+b*)", "bluest (-b*)",
                                         "most chromatic"};
  if (!any_) return;
  const bool paired =
      patches.device.hasValues() && patches.device.samples() == patches.measurement.samples();
  const std::vector<std::string> names = patches.device.names();
  out << "<div class=\"scroll\" role=\"group\" tabindex=\"0\" aria-labelledby=\""_html
      << file.Id("ends-c") << "\"><table><caption id=\""_html << file.Id("ends-c")
      << "\">Patches at the ends</caption><thead><tr><th scope=\"col\">End</th>"
         "<th scope=\"col\">Sample</th><th scope=\"col\">L*, a*, b*</th>"
         "<th scope=\"col\">C*ab</th><th scope=\"col\">Device values</th></tr></thead>"
         "<tbody>"_html;
  for (std::size_t i = 0; i < kEnds; ++i) {
    const Lab color = patches.measurement.LabAt(samples_[i]);
    out << "<tr><th scope=\"row\">"_html << kNames[i] << "</th><td>"_html << samples_[i] + 1
        << "</td><td><svg class=\"chip\" viewBox=\"0 0 12 12\" aria-hidden=\"true\"><rect "
           "width=\"12\" height=\"12\" fill=\""_html
        << ColorCode(SrgbOf(color)) << "\"/></svg> "_html << ShownNumber(color.L) << ", "_html
        << ShownNumber(color.a) << ", "_html << ShownNumber(color.b) << "</td><td>"_html
        << ShownNumber(ChromaOf(color)) << "</td><td>"_html
        << (paired ? SampleText(patches.device, names, samples_[i]) : std::string("not stored"))
        << "</td></tr>"_html;
  }
  out << "</tbody></table></div>"_html;
}

class LabCharts {
 public:
  LabCharts(const ShownFile& file, const Patches& patches) : file_(file), patches_(patches) {
    const std::uint64_t samples = patches.measurement.samples();
    step_ = ThinningStep(samples, kMostMarks);
    Collect(samples);
  }

  void Write(HtmlWriter& out) {
    out << "<div class=\"charts wide\">"_html;
    WritePlane(out);
    WriteLightness(out);
    out << "</div>"_html;
    extremes_.Write(out, patches_, file_);
  }

 private:
  void Collect(std::uint64_t samples) {
    const SampleList& measured = patches_.measurement;
    const bool paired =
        patches_.device.hasValues() && patches_.device.samples() == measured.samples();
    const std::vector<std::string> names = patches_.device.names();
    const std::vector<std::string> axes = measured.names();
    for (std::uint64_t sample = 0; sample < samples; ++sample) {
      const Lab color = measured.LabAt(sample);
      extremes_.Take(color, sample);
      if (sample % step_ != 0) continue;
      std::string title =
          "Sample " + std::to_string(sample + 1) + ": " + SampleText(measured, axes, sample);
      if (paired) title += "; " + SampleText(patches_.device, names, sample);
      const std::uint32_t rgb = SrgbOf(color);
      const bool good = IsColor(color);
      if (good) {
        chroma_.Take(color.a);
        chroma_.Take(color.b);
        radius_.Take(ChromaOf(color));
        lightness_.Take(color.L);
      }
      plane_.push_back({{color.a, color.b}, rgb, title});
      profile_.push_back({{ChromaOf(color), color.L}, rgb, std::move(title)});
    }
  }

  std::string Note() const {
    const std::string thinned =
        step_ == 1 ? std::string() : "One patch in " + std::to_string(step_) + " is drawn. ";
    return thinned +
           "Each dot has the colour of its patch as far as sRGB reaches; point at one for its "
           "values.";
  }

  void WritePlane(HtmlWriter& out) {
    Chart chart;
    chart.id = file_.Id("ab");
    chart.title = "Patches in the chroma plane";
    chart.about = Counted(plane_.size(), "patch mark") + " at their a* and b*";
    chroma_.Take(0);
    chart.x = chroma_.Axis("a*");
    chart.y = chroma_.Axis("b*");
    chart.dots = std::move(plane_);
    chart.square = true;
    chart.note = Note();
    BeginChart(out, chart);
    out << "</figure>"_html;
  }

  void WriteLightness(HtmlWriter& out) {
    Chart chart;
    chart.id = file_.Id("lc");
    chart.title = "Lightness over chroma";
    chart.about = Counted(profile_.size(), "patch mark") + " at their C*ab and L*";
    radius_.Take(0);
    lightness_.Take(0);
    lightness_.Take(100);
    chart.x = radius_.Axis("C*ab");
    chart.y = lightness_.Axis("L*");
    chart.dots = std::move(profile_);
    chart.square = true;
    BeginChart(out, chart);
    out << "</figure>"_html;
  }

  const ShownFile& file_;
  const Patches& patches_;
  std::uint64_t step_ = 1;
  std::vector<ChartDot> plane_;
  std::vector<ChartDot> profile_;
  AxisRange chroma_;
  AxisRange radius_;
  AxisRange lightness_;
  Extremes extremes_;
};

}  // namespace

bool HasCharacterisation(const ShownFile& file) {
  return file.Has(QX59) || file.Has(QX60) || FindTarget(file) != nullptr;
}

void WriteCharacterisation(HtmlWriter& out, const ShownFile& file) {
  const Patches patches = ReadPatches(file);
  out << "<dl class=\"facts\"><div><dt>Source</dt><dd>"_html << patches.source
      << "</dd></div>"_html;
  WriteListFact(out, "Device values", patches.device);
  WriteListFact(out, "Measurement", patches.measurement);
  if (!patches.refused.empty()) {
    out << "<div><dt>Target</dt><dd>cannot be read: "_html << patches.refused << "</dd></div>"_html;
  }
  out << "</dl>"_html;
  if (patches.measurement.hasValues()) {
    if (patches.measurement.isLab()) {
      LabCharts(file, patches).Write(out);
    } else if (patches.measurement.isReflectance()) {
      out << "<div class=\"charts\">"_html;
      WriteSpectra(out, file.Id("refl"), "Reflectances", patches.measurement);
      out << "</div>"_html;
    }
  }
  std::vector<NamedList> lists;
  if (patches.device.hasValues()) lists.push_back({"device", &patches.device});
  if (patches.measurement.hasValues()) lists.push_back({"measured", &patches.measurement});
  if (!lists.empty()) WriteSampleTable(out, "Patches", lists, kMostRows);
}

}  // namespace vkcl
