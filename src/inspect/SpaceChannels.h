// Channels of the colour spaces (ICC.1:2001-04, 6.1.5).
#pragma once

#include <cstdint>

#include "profile/icc.h"

namespace vkcl {

/// Channels of a colour space; 0 for one that the standard does not have.
constexpr std::uint32_t ChannelsOf(std::uint32_t space) {
  switch (space) {
    case icSigGrayData: return 1;
    case icSigXYZData:
    case icSigLabData:
    case icSigRgbData:
    case icSigCmyData:
    case icSignature("Luv "):
    case icSignature("YCbr"):
    case icSignature("Yxy "):
    case icSignature("HSV "):
    case icSignature("HLS "): return 3;
    case icSigCmykData: return 4;
    default: break;
  }
  const std::uint32_t digit = space >> 24;
  if ((space & 0xFFFFFF) != (icSig2colorData & 0xFFFFFF)) return 0;
  if (digit >= '1' && digit <= '9') return digit - '0';
  return digit >= 'A' && digit <= 'G' ? digit - 'A' + 10 : 0;
}

}  // namespace vkcl
