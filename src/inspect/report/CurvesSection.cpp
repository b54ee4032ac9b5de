// Linearisation and gray balance: the lists of references against those of measurements.
#include <algorithm>
#include <utility>

#include "inspect/report/ReportSections.h"
#include "inspect/report/SampleList.h"
#include "inspect/report/SvgChart.h"

namespace vkcl {
namespace {

constexpr std::uint64_t kMostLooked = 20000;  // samples of a list that are looked at
constexpr std::uint64_t kMostRows = 50;
constexpr std::uint64_t kMostSeries = 12;

// Samples of one ink alone, by its amount: (device value, sample).
using Ramp = std::vector<std::pair<double, std::uint64_t>>;

struct Ramps {
  std::vector<Ramp> channels;
  std::vector<std::uint64_t> unprinted;  // samples without any ink

  bool any() const {
    return std::any_of(channels.begin(), channels.end(),
                       [](const Ramp& ramp) { return ramp.size() >= 3; });
  }
};

// The channel of a sample of one ink; -1 for none, -2 for several and for what is no amount.
int OnlyInk(const SampleList& device, std::uint64_t sample) {
  int only = -1;
  for (std::uint64_t i = 0; i < device.columns(); ++i) {
    const double amount = device.Value(sample, i);
    if (amount == 0) continue;
    if (only != -1 || !(amount > 0)) return -2;
    only = static_cast<int>(i);
  }
  return only;
}

Ramps RampsOf(const SampleList& device, std::uint64_t samples) {
  Ramps ramps;
  ramps.channels.resize(static_cast<std::size_t>(device.columns()));
  for (std::uint64_t sample = 0; sample < samples; ++sample) {
    const int ink = OnlyInk(device, sample);
    if (ink == -2) continue;
    if (ink == -1) {
      ramps.unprinted.push_back(sample);
    } else {
      const auto channel = static_cast<std::size_t>(ink);
      ramps.channels[channel].emplace_back(device.Value(sample, channel), sample);
    }
  }
  for (Ramp& ramp : ramps.channels) {
    if (ramp.empty()) continue;
    if (!ramps.unprinted.empty()) ramp.insert(ramp.begin(), {0.0, ramps.unprinted.front()});
    std::stable_sort(ramp.begin(), ramp.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
  }
  return ramps;
}

// A chart under construction.
class Curves {
 public:
  Curves(std::string id, std::string title) {
    chart_.id = std::move(id);
    chart_.title = std::move(title);
  }

  void Begin(std::string name, std::uint64_t style, bool joined = true) {
    chart_.series.push_back({std::move(name), static_cast<int>(style % 8), {}, joined});
  }
  void Add(double x, double y) {
    x_.Take(x);
    y_.Take(y);
    chart_.series.back().points.push_back({x, y});
  }
  Chart& chart() { return chart_; }

  void Write(HtmlWriter& out, const char* xTitle, const std::string& yTitle) {
    chart_.x = x_.Axis(xTitle);
    chart_.y = y_.Axis(yTitle);
    chart_.about = yTitle + " over " + xTitle + ":";
    for (const ChartSeries& series : chart_.series) {
      chart_.about += " " + series.name + ", " + Counted(series.points.size(), "point") + ";";
    }
    BeginChart(out, chart_);
    out << "</figure>"_html;
  }

 private:
  Chart chart_;
  AxisRange x_;
  AxisRange y_;
};

struct Lists {
  const ShownFile& file;
  std::string place;
  const SampleList& reference;
  const SampleList& measurement;
};

std::string ThinnedText(std::uint64_t step) {
  return step == 1 ? std::string() : "One sample in " + std::to_string(step) + " is drawn.";
}

// What was measured of each ink alone, over its amount.
template <class Answer>
void WriteResponse(HtmlWriter& out, const Lists& lists, const Ramps& ramps, const char* place,
                   const char* title, const char* yTitle, Answer answer) {
  Curves curves(lists.file.Id(lists.place + place), title);
  const std::vector<std::string> names = lists.reference.names();
  std::uint64_t total = 0;
  for (const Ramp& ramp : ramps.channels) total += ramp.size();
  const std::uint64_t step = ThinningStep(total, kMostMarks);
  for (std::size_t channel = 0; channel < ramps.channels.size(); ++channel) {
    if (ramps.channels[channel].empty()) continue;
    curves.Begin(names[channel], channel);
    for (std::size_t i = 0; i < ramps.channels[channel].size(); i += step) {
      const auto& [amount, sample] = ramps.channels[channel][i];
      curves.Add(amount, answer(sample));
    }
  }
  curves.chart().note = ThinnedText(step);
  curves.Write(out, "device value, as stored", yTitle);
}

void WriteResponses(HtmlWriter& out, const Lists& lists, const Ramps& ramps) {
  const SampleList& measured = lists.measurement;
  if (!measured.isLab()) {
    const std::size_t column = measured.columns() == 3 ? 1 : 0;  // Y of X, Y, Z
    const std::string name = measured.names()[column];
    WriteResponse(out, lists, ramps, "r", "Response of each channel", name.c_str(),
                  [&](std::uint64_t sample) { return measured.Value(sample, column); });
    return;
  }
  WriteResponse(out, lists, ramps, "r", "Lightness of each channel", "L*",
                [&](std::uint64_t sample) { return measured.LabAt(sample).L; });
  if (ramps.unprinted.empty()) return;
  const Lab paper = measured.LabAt(ramps.unprinted.front());
  WriteResponse(out, lists, ramps, "d", "Distance of each channel from the unprinted sample",
                "\xCE\x94"
                "E*ab (1976)",
                [&](std::uint64_t sample) { return DeltaE(measured.LabAt(sample), paper); });
}

// All values of a list, sample by sample.
void WriteBySample(HtmlWriter& out, const Lists& lists, const SampleList& list, const char* place,
                   const char* title) {
  if (!list.hasValues()) return;
  const std::string id = lists.file.Id(lists.place + place);
  if (list.isReflectance()) return WriteSpectra(out, id, title, list);
  Curves curves(id, title);
  const std::uint64_t columns = std::min(list.columns(), kMostSeries);
  const std::uint64_t step = ThinningStep(list.samples(), kMostMarks / columns);
  const std::vector<std::string> names = list.names();
  for (std::uint64_t column = 0; column < columns; ++column) {
    curves.Begin(names[static_cast<std::size_t>(column)], column);
    for (std::uint64_t sample = 0; sample < list.samples(); sample += step) {
      curves.Add(static_cast<double>(sample + 1), list.Value(sample, column));
    }
  }
  curves.chart().note = ThinnedText(step);
  if (columns < list.columns()) {
    curves.chart().note += " The first " + std::to_string(columns) + " values of " +
                           ShownCount(list.columns()) + " are drawn.";
  }
  curves.Write(out, "sample", "value, as stored");
}

// Lists of the same kind: each value that was asked for against the one that was measured.
void WriteAgreement(HtmlWriter& out, const Lists& lists, std::uint64_t samples) {
  const std::vector<std::string> names = lists.reference.names();
  const std::uint64_t step = ThinningStep(samples, kMostMarks);
  for (std::uint64_t column = 0; column < std::min(lists.reference.columns(), kMostSeries);
       ++column) {
    const std::string& name = names[static_cast<std::size_t>(column)];
    Curves curves(lists.file.Id(lists.place + "c" + std::to_string(column)),
                  name + ": reference against measurement");
    curves.Begin(name, column, false);
    for (std::uint64_t sample = 0; sample < samples; sample += step) {
      curves.Add(lists.reference.Value(sample, column), lists.measurement.Value(sample, column));
    }
    curves.chart().diagonal = true;
    curves.chart().note = "The line is where both are equal. " + ThinnedText(step);
    curves.Write(out, "reference", "measurement");
  }
}

// How far from neutral the samples are.
void WriteNeutrality(HtmlWriter& out, const Lists& lists, std::uint64_t samples) {
  Curves curves(lists.file.Id(lists.place + "n"), "Measured a* and b* over L*");
  const std::uint64_t step = ThinningStep(samples, kMostMarks / 2);
  for (const int axis : {1, 2}) {
    curves.Begin(axis == 1 ? "a*" : "b*", axis == 1 ? 1 : 0, false);
    for (std::uint64_t sample = 0; sample < samples; sample += step) {
      const Lab color = lists.measurement.LabAt(sample);
      curves.Add(color.L, axis == 1 ? color.a : color.b);
    }
  }
  curves.chart().note = ThinnedText(step);
  curves.Write(out, "L*", "a*, b*");
}

void WriteCharts(HtmlWriter& out, const Lists& lists, bool isGray) {
  const SampleList& reference = lists.reference;
  const SampleList& measured = lists.measurement;
  const std::uint64_t samples =
      measured.hasValues() ? std::min(measured.samples(), kMostLooked) : 0;
  const bool paired = reference.hasValues() && samples != 0 && reference.columns() <= 64 &&
                      reference.samples() == measured.samples();
  if (isGray && measured.isLab() && samples != 0) WriteNeutrality(out, lists, samples);
  if (paired && reference.isDevice() && !measured.isReflectance()) {
    const Ramps ramps = RampsOf(reference, samples);
    if (ramps.any()) return WriteResponses(out, lists, ramps);
  }
  const bool alike = paired && reference.format() == measured.format() &&
                     reference.columns() == measured.columns() && !measured.isReflectance();
  if (alike) return WriteAgreement(out, lists, samples);
  WriteBySample(out, lists, reference, "s", "Reference, sample by sample");
  WriteBySample(out, lists, measured, "m", "Measurement, sample by sample");
}

struct Pair {
  const char* place;
  VKPrivateTagSignature reference;
  VKPrivateTagSignature measurement;
  bool isGray;
};

void WritePair(HtmlWriter& out, const ShownFile& file, const Pair& pair) {
  const SampleList reference(file.Read(pair.reference), file.colorMode());
  const SampleList measurement(file.Read(pair.measurement), file.colorMode());
  out << "<dl class=\"facts\">"_html;
  WriteListFact(out, "Reference", reference);
  WriteListFact(out, "Measurement", measurement);
  out << "</dl><div class=\"charts\">"_html;
  WriteCharts(out, {file, pair.place, reference, measurement}, pair.isGray);
  out << "</div>"_html;
  std::vector<NamedList> lists;
  if (reference.hasValues()) lists.push_back({"reference", &reference});
  if (measurement.hasValues()) lists.push_back({"measurement", &measurement});
  if (!lists.empty()) WriteSampleTable(out, "Values", lists, kMostRows);
}

void WriteAlone(HtmlWriter& out, const ShownFile& file, VKPrivateTagSignature signature,
                const char* place, const char* title) {
  if (!file.Has(signature)) return;
  const SampleList list(file.Read(signature), file.colorMode());
  const SampleList none;
  out << "<h4>"_html << title << "</h4><dl class=\"facts\">"_html;
  WriteListFact(out, "List", list);
  out << "</dl><div class=\"charts\">"_html;
  WriteBySample(out, {file, place, list, none}, list, "s", title);
  out << "</div>"_html;
}

}  // namespace

void WriteLinearisation(HtmlWriter& out, const ShownFile& file) {
  if (file.Has(QX54) || file.Has(QX55)) WritePair(out, file, {"lin", QX55, QX54, false});
  WriteAlone(out, file, QX72, "lin2", FindTagSchema(QX72)->title);
  WriteAlone(out, file, QX73, "lino", FindTagSchema(QX73)->title);
}

void WriteGrayBalance(HtmlWriter& out, const ShownFile& file) {
  WritePair(out, file, {"gray", QX57, QX56, true});
}

}  // namespace vkcl
