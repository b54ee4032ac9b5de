#include "inspect/report/SvgChart.h"

#include <algorithm>
#include <cmath>

#include "inspect/report/LabColor.h"
#include "platform/plinth/NumberText.h"

namespace vkcl {
namespace {

constexpr double kLeft = 46;
constexpr double kRight = 348;
constexpr double kTop = 26;
constexpr double kBelow = 40;  // ticks and title of the lower axis
constexpr int kTicks = 7;
constexpr int kStyles = 8;
constexpr std::size_t kMostMarked = 48;  // points of a curve that are marked one by one

// A coordinate. Whatever is drawn is finite.
struct At {
  double value;
};

HtmlWriter& operator<<(HtmlWriter& out, At at) {
  std::string text;
  AppendFixed(text, at.value, 1);
  return out << text;
}

// 1, 2 or 5 times a power of ten, and the next larger of them.
double RoundStep(double least) {
  const double power = std::pow(10.0, std::floor(std::log10(least)));
  for (const double times : {1.0, 2.0, 5.0}) {
    if (times * power >= least * (1 - 1e-9)) return times * power;
  }
  return 10 * power;
}

double StepOf(double low, double high, int most) { return RoundStep((high - low) / (most - 1)); }

// Places on the drawing.
class Plane {
 public:
  explicit Plane(const Chart& chart)
      : x_(chart.x), y_(chart.y), bottom_(kTop + (chart.square ? kRight - kLeft : 190)) {}

  bool Holds(const ChartPoint& point) const {  // false for NaN
    return point.x >= x_.low && point.x <= x_.high && point.y >= y_.low && point.y <= y_.high;
  }
  double X(double value) const {
    return kLeft + (value - x_.low) / (x_.high - x_.low) * (kRight - kLeft);
  }
  double Y(double value) const {
    return bottom_ - (value - y_.low) / (y_.high - y_.low) * (bottom_ - kTop);
  }
  double bottom() const { return bottom_; }

 private:
  const ChartAxis& x_;
  const ChartAxis& y_;
  double bottom_;
};

void WriteFrame(HtmlWriter& out, const Chart& chart, const Plane& plane) {
  out << "<g class=\"grid\">"_html;
  const auto xTicks = AxisTicks(chart.x.low, chart.x.high, kTicks);
  const auto yTicks = AxisTicks(chart.y.low, chart.y.high, kTicks);
  for (const double tick : xTicks) {
    out << "<path class=\""_html << (tick == 0 ? "zero" : "tick") << "\" d=\"M"_html
        << At{plane.X(tick)} << " "_html << At{kTop} << "V"_html << At{plane.bottom()}
        << "\"/>"_html;
  }
  for (const double tick : yTicks) {
    out << "<path class=\""_html << (tick == 0 ? "zero" : "tick") << "\" d=\"M"_html << At{kLeft}
        << " "_html << At{plane.Y(tick)} << "H"_html << At{kRight} << "\"/>"_html;
  }
  out << "</g><g class=\"label\">"_html;
  for (const double tick : xTicks) {
    out << "<text class=\"mid\" x=\""_html << At{plane.X(tick)} << "\" y=\""_html
        << At{plane.bottom() + 15} << "\">"_html << ShownNumber(tick) << "</text>"_html;
  }
  for (const double tick : yTicks) {
    out << "<text class=\"end\" x=\""_html << At{kLeft - 6} << "\" y=\""_html
        << At{plane.Y(tick) + 4} << "\">"_html << ShownNumber(tick) << "</text>"_html;
  }
  out << "<text class=\"axis\" x=\"4\" y=\"12\">"_html << chart.y.title
      << "</text><text class=\"axis end\" x=\""_html << At{kRight} << "\" y=\""_html
      << At{plane.bottom() + 32} << "\">"_html << chart.x.title << "</text></g>"_html;
}

// The mark of a style: circle, square, triangle, diamond, and again.
void WriteMark(HtmlWriter& out, int style, double x, double y) {
  out << "<path d=\"M"_html << At{x} << " "_html << At{y};
  switch (style % 4) {
    case 0: out << "m-3 0a3 3 0 1 0 6 0a3 3 0 1 0 -6 0"_html; break;
    case 1: out << "m-2.7 -2.7h5.4v5.4h-5.4z"_html; break;
    case 2: out << "m0 -3.6l3.4 6h-6.8z"_html; break;
    default: out << "m0 -3.8l3.8 3.8l-3.8 3.8l-3.8 -3.8z"_html; break;
  }
  out << "\"/>"_html;
}

void WriteSeries(HtmlWriter& out, const ChartSeries& series, const Plane& plane) {
  out << "<g class=\"s"_html << series.style % kStyles << "\">"_html;
  if (series.joined) {
    out << "<path class=\"line\" d=\""_html;
    bool pen = false;  // on the paper
    for (const ChartPoint& point : series.points) {
      const bool held = plane.Holds(point);
      if (held) {
        out << (pen ? "L" : "M") << At{plane.X(point.x)} << " "_html << At{plane.Y(point.y)};
      }
      pen = held;
    }
    out << "\"/>"_html;
  }
  if (!series.joined || series.points.size() <= kMostMarked) {
    out << "<g class=\"mark\">"_html;
    for (const ChartPoint& point : series.points) {
      if (plane.Holds(point)) {
        WriteMark(out, series.style, plane.X(point.x), plane.Y(point.y));
      }
    }
    out << "</g>"_html;
  }
  out << "</g>"_html;
}

void WriteDots(HtmlWriter& out, const Chart& chart, const Plane& plane) {
  out << "<g class=\"dots\">"_html;
  for (const ChartDot& dot : chart.dots) {
    if (!plane.Holds(dot.at)) continue;
    out << "<circle cx=\""_html << At{plane.X(dot.at.x)} << "\" cy=\""_html << At{plane.Y(dot.at.y)}
        << "\" r=\"3\" fill=\""_html << ColorCode(dot.rgb) << "\"><title>"_html << dot.title
        << "</title></circle>"_html;
  }
  out << "</g>"_html;
}

void WriteLegend(HtmlWriter& out, const std::vector<ChartSeries>& series) {
  if (series.empty()) return;
  out << "<ul class=\"legend\">"_html;
  for (const ChartSeries& one : series) {
    out << "<li><svg class=\"swatch s"_html << one.style % kStyles
        << "\" viewBox=\"0 0 34 10\" aria-hidden=\"true\">"_html;
    if (one.joined) out << "<path class=\"line\" d=\"M1 5H33\"/>"_html;
    out << "<g class=\"mark\">"_html;
    WriteMark(out, one.style, 17, 5);
    out << "</g></svg>"_html << Isolated{one.name, 80} << "</li>"_html;
  }
  out << "</ul>"_html;
}

// Marks that the axes do not hold.
std::uint64_t Undrawn(const Chart& chart, const Plane& plane) {
  std::uint64_t count = 0;
  for (const ChartSeries& series : chart.series) {
    for (const ChartPoint& point : series.points) count += plane.Holds(point) ? 0 : 1;
  }
  for (const ChartDot& dot : chart.dots) count += plane.Holds(dot.at) ? 0 : 1;
  return count;
}

void BeginFigure(HtmlWriter& out, const std::string& id, const std::string& title,
                 const std::string& about, double height) {
  out << "<figure class=\"chart\"><figcaption>"_html << title
      << "</figcaption><svg class=\"plot\" role=\"img\" viewBox=\"0 0 360 "_html << At{height}
      << "\" aria-labelledby=\""_html << id << "-t "_html << id << "-d\"><title id=\""_html << id
      << "-t\">"_html << title << "</title><desc id=\""_html << id << "-d\">"_html << about
      << "</desc>"_html;
}

void WriteNote(HtmlWriter& out, const std::string& note) {
  if (!note.empty()) out << "<p class=\"note\">"_html << note << "</p>"_html;
}

}  // namespace

std::vector<double> AxisTicks(double low, double high, int most) {
  const double step = StepOf(low, high, most);
  std::vector<double> ticks;
  const double first = std::ceil(low / step - 1e-9);
  for (int i = 0; i < most; ++i) {
    const double tick = (first + i) * step;
    if (tick > high + step * 1e-9) break;
    ticks.push_back(tick == 0 ? 0.0 : tick);  // no negative zero
  }
  return ticks;
}

void AxisRange::Take(double value) {
  if (!(std::fabs(value) <= most_)) return;  // NaN, too
  low_ = any_ ? std::min(low_, value) : value;
  high_ = any_ ? std::max(high_, value) : value;
  any_ = true;
}

ChartAxis AxisRange::Axis(std::string title) const {
  if (!any_) return {std::move(title), 0, 1};
  // Ends that lie closer together than they can be told apart on an axis are one.
  const double least = std::max({1e-6, std::fabs(low_) * 1e-6, std::fabs(high_) * 1e-6});
  if (high_ - low_ < least) {
    const double margin = std::max(0.5, std::fabs(high_) * 0.1);
    return {std::move(title), low_ - margin, high_ + margin};
  }
  const double step = StepOf(low_, high_, kTicks);
  return {std::move(title), std::floor(low_ / step + 1e-9) * step,
          std::ceil(high_ / step - 1e-9) * step};
}

void BeginChart(HtmlWriter& out, const Chart& chart) {
  const Plane plane(chart);
  BeginFigure(out, chart.id, chart.title, chart.about, plane.bottom() + kBelow);
  WriteFrame(out, chart, plane);
  if (chart.diagonal) {
    const double low = std::max(chart.x.low, chart.y.low);
    const double high = std::min(chart.x.high, chart.y.high);
    if (low < high) {
      out << "<path class=\"diagonal\" d=\"M"_html << At{plane.X(low)} << " "_html
          << At{plane.Y(low)} << "L"_html << At{plane.X(high)} << " "_html << At{plane.Y(high)}
          << "\"/>"_html;
    }
  }
  for (const ChartSeries& series : chart.series) WriteSeries(out, series, plane);
  if (!chart.dots.empty()) WriteDots(out, chart, plane);
  out << "</svg>"_html;
  WriteLegend(out, chart.series);
  const std::uint64_t undrawn = Undrawn(chart, plane);
  WriteNote(out, chart.note);
  if (undrawn != 0) {
    WriteNote(out, Counted(undrawn, "mark") + " left out: no numbers, or beyond the axes.");
  }
}

void BeginBars(HtmlWriter& out, const BarChart& chart) {
  constexpr double kBarLeft = 96;
  constexpr double kBarRight = 300;
  constexpr double kRow = 20;
  constexpr double kMost = 400;
  double high = 100;
  for (const ChartBar& bar : chart.bars) {
    if (bar.value > high) high = std::min(bar.value, kMost);  // false for NaN
  }
  high = std::ceil(high / 50) * 50;
  const double bottom = 4 + kRow * static_cast<double>(chart.bars.size());
  const auto place = [&](double value) { return kBarLeft + value / high * (kBarRight - kBarLeft); };
  BeginFigure(out, chart.id, chart.title, chart.about, bottom + 36);
  out << "<g class=\"grid\">"_html;
  for (const double tick : AxisTicks(0, high, 6)) {
    out << "<path class=\""_html << (tick == 0 ? "zero" : "tick") << "\" d=\"M"_html
        << At{place(tick)} << " 2V"_html << At{bottom} << "\"/><text class=\"mid\" x=\""_html
        << At{place(tick)} << "\" y=\""_html << At{bottom + 14} << "\">"_html << ShownNumber(tick)
        << "</text>"_html;
  }
  out << "</g><g class=\"label\"><text class=\"axis end\" x=\""_html << At{kBarRight}
      << "\" y=\""_html << At{bottom + 31} << "\">"_html << chart.unit << "</text></g>"_html;
  double y = 4;
  for (const ChartBar& bar : chart.bars) {
    const bool drawn = bar.value > 0;
    const double end = drawn ? place(std::min(bar.value, high)) : kBarLeft;
    std::string shown = ShownNumber(bar.value);
    if (bar.value > high) shown.insert(0, "\xE2\x96\xB6 ");  // goes on
    out << "<g class=\"bar s"_html << bar.style % kStyles << "\"><text class=\"end\" x=\""_html
        << At{kBarLeft - 6} << "\" y=\""_html << At{y + 13} << "\">"_html << bar.label
        << "</text><rect x=\""_html << At{kBarLeft} << "\" y=\""_html << At{y + 3}
        << "\" width=\""_html << At{end - kBarLeft} << "\" height=\""_html << At{kRow - 7}
        << "\"/><text x=\""_html << At{end + 5} << "\" y=\""_html << At{y + 13} << "\">"_html
        << shown << "</text></g>"_html;
    y += kRow;
  }
  out << "</svg>"_html;
  WriteNote(out, chart.note);
}

}  // namespace vkcl
