#include "inspect/report/LabColor.h"

#include <algorithm>
#include <cmath>

namespace vkcl {
namespace {

// The inverse of the function of CIE 15, 8.2.1.
double Linear(double f) {
  constexpr double kBend = 6.0 / 29.0;
  return f > kBend ? f * f * f : 3 * kBend * kBend * (f - 4.0 / 29.0);
}

// XYZ under D50 to linear sRGB: Bradford to D65, then the matrix of IEC 61966-2-1.
constexpr double kToSrgb[3][3] = {{3.1338561, -1.6168667, -0.4906146},
                                  {-0.9787684, 1.9161415, 0.0334540},
                                  {0.0719453, -0.2289914, 1.4052427}};
constexpr double kD50[3] = {0.96422, 1.0, 0.82521};

std::uint32_t Encoded(double linear) {
  const double value = std::clamp(linear, 0.0, 1.0);
  const double curve =
      value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
  return static_cast<std::uint32_t>(std::lround(curve * 255));
}

}  // namespace

std::uint32_t SrgbOf(const Lab& color) {
  constexpr std::uint32_t kGray = 0x808080;
  if (!std::isfinite(color.L) || !std::isfinite(color.a) || !std::isfinite(color.b)) return kGray;
  // Far beyond every colour the cubes would not be finite.
  const auto within = [](double value) { return std::clamp(value, -1000.0, 1000.0); };
  const double fy = (within(color.L) + 16) / 116;
  const double xyz[3] = {kD50[0] * Linear(fy + within(color.a) / 500), kD50[1] * Linear(fy),
                         kD50[2] * Linear(fy - within(color.b) / 200)};
  std::uint32_t rgb = 0;
  for (const auto& row : kToSrgb) {
    rgb = rgb << 8 | Encoded(row[0] * xyz[0] + row[1] * xyz[1] + row[2] * xyz[2]);
  }
  return rgb;
}

std::string ColorCode(std::uint32_t rgb) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "#";
  for (int shift = 20; shift >= 0; shift -= 4) text += kDigits[rgb >> shift & 15];
  return text;
}

double ChromaOf(const Lab& color) { return std::hypot(color.a, color.b); }

double DeltaE(const Lab& first, const Lab& second) {
  return std::hypot(first.L - second.L, first.a - second.a, first.b - second.b);
}

}  // namespace vkcl
