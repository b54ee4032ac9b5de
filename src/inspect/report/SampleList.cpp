#include "inspect/report/SampleList.h"

#include <algorithm>
#include <utility>

#include "inspect/report/SvgChart.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

constexpr std::uint32_t kReflectance = icSignature("refl");
constexpr std::uint32_t kPlaceholder = 0xFFFFFFFF;
constexpr std::uint64_t kMostColumns = 40;
constexpr std::uint64_t kMostSpectra = 24;

std::uint64_t NumberIn(const ReadTag& tag, const char* field) {
  const FieldView* view = tag.Find(field);
  return view != nullptr ? static_cast<std::uint64_t>(std::max<std::int64_t>(view->Integer(), 0))
                         : 0;
}

}  // namespace

SampleList::SampleList(ReadTag tag, std::int32_t colorMode)
    : tag_(std::move(tag)), isThere_(tag_.tag != nullptr), why_(tag_.why) {
  if (!tag_.view) return;
  format_ = static_cast<std::uint32_t>(tag_.Find("DataFormat")->Integer());
  colorMode_ = static_cast<std::int32_t>(tag_.Find("ColorMode")->Integer());
  if (colorMode_ == 0) colorMode_ = colorMode;
  measured_ = tag_.Find("Measured")->Integer();
  const FieldView& values = *tag_.Find("values");
  hasValues_ = values.count() != 0 && values.columns() != 0;
  samples_ = hasValues_ ? values.count() : NumberIn(tag_, "NumOfSamples");
  columns_ = hasValues_ ? values.columns() : NumberIn(tag_, "NumOfColors");
  values_ = &values;
}

SampleList::SampleList(std::unique_ptr<ProfileDataList> list)
    : list_(std::move(list)), isThere_(true) {
  format_ = list_->DataFormat;
  colorMode_ = list_->ColorMode;
  measured_ = list_->Measured;
  samples_ = static_cast<std::uint64_t>(std::max(list_->NumOfSamples, 0));
  columns_ = static_cast<std::uint64_t>(std::max(list_->NumOfColors, 0));
  hasValues_ = list_->DataList != nullptr && samples_ != 0 && columns_ != 0;
}

bool SampleList::isLab() const { return format_ == icSigLabData && columns_ == 3; }
bool SampleList::isDevice() const { return IsDeviceSpace(format_); }
bool SampleList::isReflectance() const { return format_ == kReflectance; }

double SampleList::Value(std::uint64_t sample, std::uint64_t column) const {
  const std::uint64_t index = sample * columns_ + column;
  return list_ ? list_->DataList[index] : values_->Number(index);
}

Lab SampleList::LabAt(std::uint64_t sample) const {
  return {Value(sample, 0), Value(sample, 1), Value(sample, 2)};
}

std::string SampleList::About() const {
  std::string text = Counted(samples_, "sample") + " of " + Counted(columns_, "value") + " in " +
                     (format_ == kPlaceholder ? "no format" : PlainSignature(format_));
  if (measured_ != 0) text += ", " + std::to_string(measured_) + " measured";
  return hasValues_ ? text : text + ", without values";
}

std::string SampleText(const SampleList& list, const std::vector<std::string>& names,
                       std::uint64_t sample) {
  std::string text;
  for (std::uint64_t i = 0; i < std::min(list.columns(), kMostColumns); ++i) {
    if (i != 0) text += ", ";
    text += names[static_cast<std::size_t>(i)] + ' ' + ShownNumber(list.Value(sample, i));
  }
  return text;
}

void WriteListFact(HtmlWriter& out, const char* label, const SampleList& list) {
  if (!list.isThere()) return;
  out << "<div><dt>"_html << label << "</dt><dd>"_html
      << Isolated{list.why().empty() ? list.About() : "cannot be read: " + list.why()}
      << "</dd></div>"_html;
}

void WriteSampleTable(HtmlWriter& out, const std::string& caption, std::span<const NamedList> lists,
                      std::uint64_t most) {
  std::uint64_t samples = UINT64_MAX;
  for (const NamedList& one : lists) samples = std::min(samples, one.list->samples());
  const std::uint64_t shown = std::min(samples, most);
  out << "<details><summary>"_html << caption << ": "_html
      << (shown < samples ? "the first " + ShownCount(shown) + " of " + ShownCount(samples)
                          : "all " + ShownCount(samples))
      << "</summary><div class=\"scroll\" role=\"group\" tabindex=\"0\" aria-label=\""_html
      << caption << "\"><table class=\"numbers\"><caption>"_html << caption
      << "</caption><thead><tr><th scope=\"col\">Sample</th>"_html;
  for (const NamedList& one : lists) {
    const std::vector<std::string> names = one.list->names();
    for (std::uint64_t i = 0; i < std::min(one.list->columns(), kMostColumns); ++i) {
      out << "<th scope=\"col\">"_html << names[static_cast<std::size_t>(i)]
          << " <span class=\"muted\">"_html << one.title << "</span></th>"_html;
    }
  }
  out << "</tr></thead><tbody>"_html;
  for (std::uint64_t sample = 0; sample < shown; ++sample) {
    out << "<tr><th scope=\"row\">"_html << sample + 1 << "</th>"_html;
    for (const NamedList& one : lists) {
      for (std::uint64_t i = 0; i < std::min(one.list->columns(), kMostColumns); ++i) {
        out << "<td>"_html << ShownNumber(one.list->Value(sample, i)) << "</td>"_html;
      }
    }
    out << "</tr>"_html;
  }
  out << "</tbody></table></div></details>"_html;
}

void WriteSpectra(HtmlWriter& out, const std::string& id, const std::string& title,
                  const SampleList& list) {
  if (list.samples() > kMostSpectra || list.columns() < 2 || list.columns() > kMostMarks) {
    out << "<p>"_html << title << ": "_html << ShownCount(list.samples()) << " spectra of "_html
        << Counted(list.columns(), "band") << "; they are not drawn.</p>"_html;
    return;
  }
  Chart chart;
  chart.id = id;
  chart.title = title;
  chart.about = "Reflectance over band, a curve for each of " + Counted(list.samples(), "sample");
  AxisRange range;
  for (std::uint64_t sample = 0; sample < list.samples(); ++sample) {
    ChartSeries series{"sample " + std::to_string(sample + 1), static_cast<int>(sample % 8), {}};
    for (std::uint64_t band = 0; band < list.columns(); ++band) {
      const double value = list.Value(sample, band);
      range.Take(value);
      series.points.push_back({static_cast<double>(band + 1), value});
    }
    chart.series.push_back(std::move(series));
  }
  chart.x = {"band, in stored order", 1, static_cast<double>(list.columns())};
  chart.y = range.Axis("reflectance, as stored");
  BeginChart(out, chart);
  out << "</figure>"_html;
}

}  // namespace vkcl
