// The ink split: a chart for each colorant.
#include <algorithm>
#include <cstring>

#include "colornames/ColorDefinitions.h"
#include "inspect/report/ReportSections.h"
#include "inspect/report/SvgChart.h"
#include "platform/plinth/NumberText.h"
#include "split/SplitParam.h"

namespace vkcl {
namespace {

constexpr std::uint64_t kMostColorants = 32;

struct CurveOf {
  const char* name;
  int style;
  SplitDotInfo2 (SplitTypeV4::*points)[256];
  std::int32_t SplitTypeV4::*count;
};
constexpr CurveOf kCurves[] = {
    {"light", 0, &SplitTypeV4::light, &SplitTypeV4::lightCount},
    {"medium", 4, &SplitTypeV4::medium, &SplitTypeV4::mediumCount},
    {"dark", 3, &SplitTypeV4::dark, &SplitTypeV4::darkCount},
};

std::span<const SplitDotInfo2> PointsOf(const SplitTypeV4& record, const CurveOf& curve) {
  return {record.*curve.points, static_cast<std::size_t>(std::clamp(record.*curve.count, 0, 256))};
}

template <class Record>
Record Loaded(std::string_view bytes) {
  Record record;
  std::memcpy(static_cast<void*>(&record), bytes.data(), std::min(bytes.size(), sizeof record));
  return record;
}

// A record as the curves of version 4, whatever its own version.
SplitTypeV4 AsCurves(std::string_view bytes, std::int64_t version) {
  switch (version) {
    case 2: return SplitTypeV4(Loaded<SplitTypeV2>(bytes));
    case 3: return SplitTypeV4(Loaded<SplitTypeV3>(bytes));
    default: return Loaded<SplitTypeV4>(bytes);
  }
}

std::string ColorantText(std::int32_t index) {
  if (index == -1) return "no colorant (-1)";
  const std::string name = GetColorNameByIndex(index).str();
  return (name.empty() ? "unknown colorant" : name) + " (" + std::to_string(index) + ")";
}

void WritePoints(HtmlWriter& out, const SplitTypeV4& record, const std::string& title) {
  out << "<details><summary>Points</summary><table class=\"numbers\"><caption>"_html << title
      << ": points as stored</caption><thead><tr><th scope=\"col\">Curve</th>"
         "<th scope=\"col\">Input</th><th scope=\"col\">Amount</th><th scope=\"col\">Shape</th>"
         "</tr></thead><tbody>"_html;
  for (const CurveOf& curve : kCurves) {
    for (const SplitDotInfo2& point : PointsOf(record, curve)) {
      out << "<tr><th scope=\"row\">"_html << curve.name << "</th><td>"_html
          << ShortestText(point.input) << "</td><td>"_html << ShortestText(point.amount)
          << "</td><td>"_html << ShortestText(point.shape) << "</td></tr>"_html;
    }
  }
  out << "</tbody></table></details>"_html;
}

void WriteColorant(HtmlWriter& out, const std::string& id, const SplitTypeV4& record) {
  Chart chart;
  chart.id = id;
  chart.title = ColorantText(record.colorantIndex);
  chart.x = {"input", 0, 1};
  chart.y = {"amount of ink", 0, 1};
  for (const CurveOf& curve : kCurves) {
    const auto points = PointsOf(record, curve);
    chart.about += (chart.about.empty() ? "" : ", ") + std::string(curve.name) + ": " +
                   Counted(points.size(), "point");
    if (points.empty()) continue;
    ChartSeries series{curve.name, curve.style, {}};
    for (const SplitDotInfo2& point : points) series.points.push_back({point.input, point.amount});
    chart.series.push_back(std::move(series));
  }
  chart.note = "Interpolation " + std::to_string(record.interpolation) + ".";
  BeginChart(out, chart);
  WritePoints(out, record, chart.title);
  out << "</figure>"_html;
}

}  // namespace

void WriteSplit(HtmlWriter& out, const ShownFile& file) {
  const ReadTag read = file.Read(QX50);
  const FieldView* records = read.Find("splits");
  if (records == nullptr) return WriteUnreadable(out, read);
  const std::int64_t version = read.Find("version")->Integer();
  out << "<p>"_html << Counted(records->count(), "colorant") << ", stored in version "_html
      << version << (version == 4 ? "" : ", shown as the curves of version 4")
      << ". Straight lines lead from point to point; whoever prints decides by the kind of "
         "interpolation and the shapes how they are really joined.</p><div class=\"charts\">"_html;
  const std::uint64_t shown = std::min(records->count(), kMostColorants);
  const std::size_t length = SplitParam::RecordSize(static_cast<long>(version));
  for (std::uint64_t i = 0; i < shown; ++i) {
    const std::string place = "split" + std::to_string(i + 1);
    WriteColorant(out, file.Id(place), AsCurves(records->Bytes(i * length, length), version));
  }
  out << "</div>"_html;
  if (shown < records->count()) {
    out << "<p class=\"note\">"_html << Counted(records->count() - shown, "more colorant")
        << " left out.</p>"_html;
  }
}

}  // namespace vkcl
