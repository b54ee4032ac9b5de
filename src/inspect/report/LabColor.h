// Measured colours as a screen shows them.
#pragma once

#include <cstdint>
#include <string>

namespace vkcl {

/// A colour of CIE L*a*b* under D50.
struct Lab {
  double L = 0;
  double a = 0;
  double b = 0;
};

/// 0xRRGGBB of sRGB (IEC 61966-2-1), adapted to D65 by the Bradford matrix; each channel that the
/// screen does not reach at its nearest end. Gray for a colour with a value that is no number.
std::uint32_t SrgbOf(const Lab& color);

/// "#rrggbb"
std::string ColorCode(std::uint32_t rgb);

double ChromaOf(const Lab& color);
/// The distance of two colours by CIE 1976.
double DeltaE(const Lab& first, const Lab& second);

}  // namespace vkcl
