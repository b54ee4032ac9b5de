// What a report writes: text that stays text, numbers for people, colours, and charts whose numbers
// are finite whatever they are made from.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "inspect/report/HtmlText.h"
#include "inspect/report/LabColor.h"
#include "inspect/report/SvgChart.h"

namespace {

using namespace vkcl::html_literals;
using vkcl::AxisRange;
using vkcl::AxisTicks;
using vkcl::Chart;
using vkcl::HtmlWriter;
using vkcl::Isolated;
using vkcl::Lab;
using vkcl::ShownNumber;
using vkcl::SrgbOf;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

std::string Escaped(std::string_view bytes) {
  std::string html;
  vkcl::AppendHtmlText(html, bytes);
  return html;
}

// What a writer hands on.
template <class Write>
std::string Written(Write write) {
  std::string page;
  const HtmlWriter::Sink sink = [&](std::string_view piece) {
    page += piece;
    return true;
  };
  HtmlWriter out(sink);
  write(out);
  EXPECT_TRUE(out.Finish());
  return page;
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST(HtmlText, MarkupBecomesReferences) {
  EXPECT_EQ(Escaped("<script>alert(1)</script>"), "&lt;script&gt;alert(1)&lt;/script&gt;");
  EXPECT_EQ(Escaped("\" onload='x' &amp;"), "&quot; onload=&#39;x&#39; &amp;amp;");
  EXPECT_EQ(Escaped("]]><!--"), "]]&gt;&lt;!--");
  EXPECT_EQ(Escaped(""), "");
}

TEST(HtmlText, WhatIsNoUtf8BecomesTheReplacementCharacter) {
  EXPECT_EQ(Escaped("a\xFF"
                    "b"),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(Escaped("\xC0\xBC"), "\xEF\xBF\xBD\xEF\xBF\xBD");  // an overlong "<"
  EXPECT_EQ(Escaped("\xED\xA0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(Escaped("\xE7\xB4"), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(Escaped("B\xC3\xBCtten \xE7\xB4\x99 \xF0\x9F\x8E\xA8"),
            "B\xC3\xBCtten \xE7\xB4\x99 \xF0\x9F\x8E\xA8");
}

TEST(HtmlText, WhatIsNotSeenBecomesVisible) {
  EXPECT_EQ(Escaped(std::string_view("\0\x1b\x7f", 3)), "\xE2\x90\x80\xE2\x90\x9B\xE2\x90\xA1");
  EXPECT_EQ(Escaped("a\tb\nc\r"), "a\tb\nc\xE2\x90\x8D");
  EXPECT_EQ(Escaped("\xE2\x80\xAEgnp.exe"), "[U+202E]gnp.exe");
  EXPECT_EQ(Escaped("\xE2\x81\xA6x\xE2\x81\xA9"), "[U+2066]x[U+2069]");
  EXPECT_EQ(Escaped("\xC2\x85\xE2\x80\x8B\xEF\xBB\xBF"), "[U+0085][U+200B][U+FEFF]");
  EXPECT_EQ(Escaped("\xF3\xA0\x81\x81"), "[U+0E0041]");
}

TEST(HtmlText, WriterEscapesAllButLiterals) {
  EXPECT_EQ(Written([](HtmlWriter& out) {
              out << "<b title=\""_html
                  << "a\"b"
                  << "\">"_html << std::string("<i>") << 7 << "</b>"_html;
            }),
            "<b title=\"a&quot;b\">&lt;i&gt;7</b>");
}

TEST(HtmlText, LongTextIsCutAtACharacter) {
  EXPECT_EQ(Written([](HtmlWriter& out) {
              out << Isolated{
                  "ab\xC3\xBC"
                  "cd",
                  3};
            }),
            "<bdi>ab</bdi> <span class=\"muted\">... (6 bytes)</span>");
  EXPECT_EQ(Written([](HtmlWriter& out) { out << Isolated{"abc", 3}; }), "<bdi>abc</bdi>");
}

TEST(HtmlText, NothingFollowsAPieceThatWasRefused) {
  int pieces = 0;
  const HtmlWriter::Sink sink = [&](std::string_view) {
    ++pieces;
    return false;
  };
  HtmlWriter out(sink);
  for (int i = 0; i < 100000; ++i) out << "some text"_html;
  EXPECT_FALSE(out.Finish());
  EXPECT_EQ(pieces, 1);
}

TEST(HtmlText, NumbersForPeople) {
  EXPECT_EQ(ShownNumber(0.1 + 0.2), "0.3");
  EXPECT_EQ(ShownNumber(85.5), "85.5");
  EXPECT_EQ(ShownNumber(100), "100");
  EXPECT_EQ(ShownNumber(-0.0), "0");
  EXPECT_EQ(ShownNumber(-4.999), "-5");
  EXPECT_EQ(ShownNumber(0.001), "0.001");
  EXPECT_EQ(ShownNumber(1e308), "1e+308");
  EXPECT_EQ(ShownNumber(5e-324), "5e-324");
  EXPECT_EQ(ShownNumber(kNan), "no number");
  EXPECT_EQ(ShownNumber(kInf), "infinite");
  EXPECT_EQ(ShownNumber(-kInf), "-infinite");
  EXPECT_EQ(vkcl::ShownBytes(1), "1 byte");
  EXPECT_EQ(vkcl::ShownBytes(1234567), "1,234,567 bytes");
  EXPECT_EQ(vkcl::ShownCount(999), "999");
}

// The primaries of sRGB under D50, from the matrix of its profile.
TEST(LabColor, IsWhatAScreenShows) {
  EXPECT_EQ(SrgbOf({100, 0, 0}), 0xFFFFFFu);
  EXPECT_EQ(SrgbOf({0, 0, 0}), 0x000000u);
  EXPECT_EQ(SrgbOf({53.585, 0, 0}), 0x808080u);
  const auto near = [](const Lab& color, std::uint32_t expected) {
    const std::uint32_t rgb = SrgbOf(color);
    for (int shift = 0; shift < 24; shift += 8) {
      const int difference =
          static_cast<int>(rgb >> shift & 255) - static_cast<int>(expected >> shift & 255);
      if (std::abs(difference) > 2) return false;
    }
    return true;
  };
  EXPECT_TRUE(near({54.29, 80.81, 69.89}, 0xFF0000));
  EXPECT_TRUE(near({87.82, -79.27, 80.99}, 0x00FF00));
  EXPECT_TRUE(near({29.57, 68.30, -112.03}, 0x0000FF));
  EXPECT_EQ(vkcl::ColorCode(0x00A0FF), "#00a0ff");
}

TEST(LabColor, OfHostileNumbersIsAColor) {
  EXPECT_EQ(SrgbOf({kNan, 0, 0}), 0x808080u);
  EXPECT_EQ(SrgbOf({50, kInf, 0}), 0x808080u);
  EXPECT_EQ(SrgbOf({1e308, 0, 0}), 0xFFFFFFu);
  EXPECT_LE(SrgbOf({-1e308, 1e308, -1e308}), 0xFFFFFFu);
  EXPECT_DOUBLE_EQ(vkcl::ChromaOf({0, 3, 4}), 5);
  EXPECT_DOUBLE_EQ(vkcl::DeltaE({1, 0, 0}, {1, 3, 4}), 5);
}

TEST(SvgChart, TicksAreRoundNumbers) {
  EXPECT_EQ(AxisTicks(0, 100, 6), (std::vector<double>{0, 20, 40, 60, 80, 100}));
  EXPECT_EQ(AxisTicks(-100, 100, 5), (std::vector<double>{-100, -50, 0, 50, 100}));
  const auto fifths = AxisTicks(0, 1, 6);
  ASSERT_EQ(fifths.size(), 6u);
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(fifths[i], 0.2 * static_cast<double>(i), 1e-12);
  EXPECT_EQ(AxisTicks(3, 47, 6), (std::vector<double>{10, 20, 30, 40}));
  EXPECT_LE(AxisTicks(-1e6, 1e6, 7).size(), 7u);
}

TEST(SvgChart, AxesHoldWhatTheyWereGiven) {
  AxisRange range;
  EXPECT_EQ(range.Axis("").high, 1);
  for (const double value : {kNan, kInf, -kInf, 1e308, -1e308}) range.Take(value);
  EXPECT_EQ(range.Axis("").low, 0);
  range.Take(3);
  EXPECT_LT(range.Axis("").low, 3);
  EXPECT_GT(range.Axis("").high, 3);
  range.Take(97);
  EXPECT_EQ(range.Axis("").low, 0);
  EXPECT_EQ(range.Axis("").high, 100);
}

Chart SmallChart() {
  Chart chart;
  chart.id = "c";
  chart.title = "a < b";
  chart.x = {"x & y", 0, 1};
  chart.y = {"y", 0, 1};
  return chart;
}

TEST(SvgChart, CurveIsDrawnWhereItsPointsAre) {
  Chart chart = SmallChart();
  chart.series.push_back({"one", 0, {{0, 0}, {0.5, 1}, {1, 0.5}}});
  const std::string svg = Written([&](HtmlWriter& out) { vkcl::BeginChart(out, chart); });
  EXPECT_NE(svg.find("d=\"M46.0 216.0L197.0 26.0L348.0 121.0\""), std::string::npos) << svg;
  EXPECT_NE(svg.find("role=\"img\""), std::string::npos);
  EXPECT_NE(svg.find("<title id=\"c-t\">a &lt; b</title>"), std::string::npos);
  EXPECT_NE(svg.find(">x &amp; y</text>"), std::string::npos);
  EXPECT_EQ(svg.find("left out"), std::string::npos);
}

TEST(SvgChart, LeavesOutWhatCannotBeDrawnAndSaysSo) {
  Chart chart = SmallChart();
  chart.series.push_back(
      {"<one>", 1, {{0, 0}, {kNan, 0}, {0.5, kInf}, {1e308, 1}, {0.5, -0.1}, {1, 1}}});
  chart.dots.push_back({{kNan, kNan}, 0, "\"></svg><script>"});
  chart.dots.push_back({{0.5, 0.5}, 0xFF0000, "\"></svg><script>"});
  const std::string svg = Written([&](HtmlWriter& out) { vkcl::BeginChart(out, chart); });
  EXPECT_NE(svg.find("d=\"M46.0 216.0M348.0 26.0\""), std::string::npos) << svg;
  EXPECT_NE(svg.find("5 marks left out"), std::string::npos);
  EXPECT_EQ(Count(svg, "<circle"), 1u);
  EXPECT_EQ(svg.find("nan"), std::string::npos);
  EXPECT_EQ(svg.find("inf"), std::string::npos);
  EXPECT_EQ(svg.find("<script"), std::string::npos);
  EXPECT_EQ(svg.find("<one>"), std::string::npos);
}

TEST(SvgChart, BarsEndWhereTheirValuesAre) {
  vkcl::BarChart chart;
  chart.id = "b";
  chart.title = "limits";
  chart.bars = {{"Cyan", 50, 0}, {"Magenta", 100, 1}, {"n", kNan, 0},
                {"i", kInf, 0},  {"h", 1e308, 0},     {"m", -5, 0}};
  const std::string svg = Written([&](HtmlWriter& out) { vkcl::BeginBars(out, chart); });
  // The axis ends at 400 and is 204 wide.
  EXPECT_NE(svg.find("y=\"7.0\" width=\"25.5\""), std::string::npos) << svg;
  EXPECT_NE(svg.find("y=\"27.0\" width=\"51.0\""), std::string::npos);
  EXPECT_EQ(Count(svg, "width=\"204.0\""), 2u);
  EXPECT_EQ(Count(svg, "width=\"0.0\""), 2u);
  EXPECT_EQ(Count(svg, "\xE2\x96\xB6 "), 2u);
  EXPECT_NE(svg.find(">no number</text>"), std::string::npos);
  EXPECT_NE(svg.find(">-5</text>"), std::string::npos);
}

TEST(SvgChart, ThinsOutEvenly) {
  EXPECT_EQ(vkcl::ThinningStep(0, 2000), 1u);
  EXPECT_EQ(vkcl::ThinningStep(2000, 2000), 1u);
  EXPECT_EQ(vkcl::ThinningStep(2001, 2000), 2u);
  EXPECT_EQ(vkcl::ThinningStep(1000000, 2000), 500u);
}

}  // namespace
