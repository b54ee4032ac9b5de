// Ink limits as bars.
#include <algorithm>
#include <iterator>
#include <string_view>

#include "inspect/report/ReportSections.h"
#include "inspect/report/SvgChart.h"

namespace vkcl {
namespace {

constexpr std::uint64_t kMostBars = 64;
constexpr int kPlainStyle = 3;

// The style of an ink, the same for its lighter ones.
int StyleOf(std::string_view ink) {
  constexpr std::string_view kInks[] = {"Cyan",   "Magenta", "Yellow", "Black",
                                        "Orange", "Blue",    "Red",    "Green"};
  for (std::size_t i = 0; i < std::size(kInks); ++i) {
    if (ink.ends_with(kInks[i])) return static_cast<int>(i);
  }
  return kPlainStyle;
}

// Values up to those at the end that all repeat the last one, but at least as many as asked for: a
// long run of defaults takes one line of text.
std::uint64_t ShownLimits(const FieldView& limits, std::uint64_t least) {
  const std::uint64_t count = limits.count();
  if (count == 0) return 0;
  const std::string last = limits.NumberText(count - 1);
  std::uint64_t run = count - 1;  // begin of the run
  while (run > 0 && limits.NumberText(run - 1) == last) --run;
  const std::uint64_t shown = run == count - 1 ? count : std::max<std::uint64_t>({run, least, 1});
  return std::min({shown, count, kMostBars});
}

std::string RestText(const FieldView& limits, std::uint64_t shown) {
  const std::uint64_t count = limits.count();
  if (shown >= count) return {};
  if (count > kMostBars && shown == kMostBars) {
    return ShownCount(count - shown) + " more limits are left out.";
  }
  return "limits[" + std::to_string(shown) + "] to limits[" + std::to_string(count - 1) + "] are " +
         ShownNumber(limits.Number(count - 1)) + " each.";
}

void WriteBarsOf(HtmlWriter& out, const ShownFile& file, const char* place, const char* title,
                 const FieldView& limits, const std::vector<std::string>& names,
                 std::uint64_t shown) {
  BarChart chart;
  chart.id = file.Id(place);
  chart.title = title;
  chart.unit = "limit in %";
  chart.note = RestText(limits, shown);
  for (std::uint64_t i = 0; i < shown; ++i) {
    const auto at = static_cast<std::size_t>(i);
    const bool named = at < names.size();
    const double value = limits.Number(i);
    chart.bars.push_back({named ? names[at] : "limits[" + std::to_string(i) + "]", value,
                          named ? StyleOf(names[at]) : kPlainStyle});
    chart.about += (i == 0 ? "" : ", ") + chart.bars.back().label + ' ' + ShownNumber(value);
  }
  BeginBars(out, chart);
  out << "</figure>"_html;
}

void WriteSingle(HtmlWriter& out, const ShownFile& file) {
  const ReadTag read = file.Read(QX51);
  const FieldView* limits = read.Find("limits");
  if (limits == nullptr) return WriteUnreadable(out, read);
  const auto space = static_cast<std::uint32_t>(file.profile().GetColorSpace());
  const std::string inks = InkNames(file.colorMode());
  const auto inkCount = static_cast<std::uint64_t>(std::count(inks.begin(), inks.end(), ',')) + 1;
  const auto channels = inks.empty() ? static_cast<std::uint64_t>(file.channels()) : inkCount;
  std::vector<std::string> names;
  if (channels != 0) names = ChannelNames(space, file.colorMode(), channels);
  const std::uint64_t shown = ShownLimits(*limits, std::min(channels, limits->count()));
  WriteBarsOf(out, file, "single", "Single ink limits (QX51)", *limits, names, shown);
}

void WriteMultiple(HtmlWriter& out, const ShownFile& file) {
  const ReadTag read = file.Read(QX52);
  const FieldView* limits = read.Find("limits");
  if (limits == nullptr) return WriteUnreadable(out, read);
  const std::string title =
      "Multiple ink limits (QX52), version " + read.Find("version")->NumberText();
  WriteBarsOf(out, file, "multi", title.c_str(), *limits, {}, ShownLimits(*limits, 1));
}

void WriteSpot(HtmlWriter& out, const ShownFile& file) {
  const ReadTag read = file.Read(QX68);
  const FieldView* limits = read.Find("limits");
  if (limits == nullptr) return WriteUnreadable(out, read);
  const std::string name = read.Find("name")->TextBytes();
  const std::string title = "Spot colour limits (QX68): " + name.substr(0, 200);
  WriteBarsOf(out, file, "spot", title.c_str(), *limits, {}, ShownLimits(*limits, 1));
}

}  // namespace

bool HasLimits(const ShownFile& file) { return file.Has(QX51) || file.Has(QX52) || file.Has(QX68); }

void WriteLimits(HtmlWriter& out, const ShownFile& file) {
  out << "<div class=\"charts\">"_html;
  if (file.Has(QX51)) WriteSingle(out, file);
  if (file.Has(QX52)) WriteMultiple(out, file);
  if (file.Has(QX68)) WriteSpot(out, file);
  out << "</div>"_html;
}

}  // namespace vkcl
