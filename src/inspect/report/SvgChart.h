// Charts as SVG that needs no script: curves, dots in their own colours, bars.
//
// A chart is drawn for a width of 360 and grows with the page, so its texts are read on a telephone
// as they stand. Numbers that cannot be drawn are left out, and the chart says how many they are;
// no coordinate is ever other than finite.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "inspect/report/HtmlText.h"

namespace vkcl {

/// Most marks of one chart; longer lists are thinned out.
inline constexpr std::uint64_t kMostMarks = 2000;

/// Every how many-th of `count` marks is drawn so that there are at most `most`; 1 for all.
constexpr std::uint64_t ThinningStep(std::uint64_t count, std::uint64_t most) {
  return count <= most ? 1 : (count + most - 1) / most;
}

/// Round numbers from the first one at or above `low` to the last at or below `high`, at most
/// `most`, which is 2 or more. Both are finite, and `low` is below `high`.
std::vector<double> AxisTicks(double low, double high, int most);

struct ChartAxis {
  std::string title;  ///< with the unit
  double low = 0;
  double high = 1;
};

/// Finds the ends of an axis from the values on it.
class AxisRange {
 public:
  /// Values of a size beyond `most`, and what is no number, are not taken.
  explicit AxisRange(double most = 1e6) : most_(most) {}

  void Take(double value);
  /// An axis that has all values taken, widened to round numbers; 0 to 1 without values.
  ChartAxis Axis(std::string title) const;

 private:
  double most_;
  double low_ = 0;
  double high_ = 0;
  bool any_ = false;
};

struct ChartPoint {
  double x = 0;
  double y = 0;
};

struct ChartSeries {
  std::string name;
  int style = 0;  ///< colour, dash and mark; see the page's style
  std::vector<ChartPoint> points;
  bool joined = true;  ///< by straight lines
};

/// A mark in a colour of its own, with what it tells when it is pointed at.
struct ChartDot {
  ChartPoint at;
  std::uint32_t rgb = 0;
  std::string title;
};

struct Chart {
  std::string id;  ///< of the page
  std::string title;
  std::string about;  ///< what is to be seen, for those who do not see it
  ChartAxis x;
  ChartAxis y;
  std::vector<ChartSeries> series;
  std::vector<ChartDot> dots;
  bool square = false;    ///< the drawing is as high as it is wide
  bool diagonal = false;  ///< with the line of equal values
  std::string note;       ///< below the chart
};

/// Begins a figure with the chart in it; the caller may add to it, and ends it with </figure>.
void BeginChart(HtmlWriter& out, const Chart& chart);

struct ChartBar {
  std::string label;
  double value = 0;
  int style = 0;
};

struct BarChart {
  std::string id;
  std::string title;
  std::string about;
  std::string unit;
  std::vector<ChartBar> bars;
  std::string note;
};

/// The same with a bar from 0 for each value. Bars beyond 400 end there, marked; bars of negative
/// values and of what is no number are empty. The value stands behind each bar.
void BeginBars(HtmlWriter& out, const BarChart& chart);

}  // namespace vkcl
