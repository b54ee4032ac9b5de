// Where things stand in a profile file (ICC.1:2001-04, 6.1 and 6.2).
#pragma once

#include <cstdint>

#include "profile/icc.h"

namespace vkcl {

inline constexpr std::uint32_t kTableStart = 132;  ///< behind the header and the count
inline constexpr std::uint32_t kTableEntry = 12;   ///< signature, offset, size
inline constexpr std::uint32_t kDataHead = 12;     ///< head of a 'data' tag
/// The head of a binary 'data' tag: type, four reserved bytes, flag (6.5.4).
inline constexpr char kBinaryHead[kDataHead] = {'d', 'a', 't', 'a', 0, 0, 0, 0, 0, 0, 0, 1};

/// First byte behind a table of `count` entries.
constexpr std::uint64_t TableEnd(std::uint64_t count) { return kTableStart + kTableEntry * count; }

/// What storing colour parameters of a mode makes of the header; see
/// VKCLProfile::UpdateHeaderColorSpace.
inline void SetColorSpaceOf(int colorMode, icHeader& header) {
  constexpr int kCyanMagentaYellow = 16;
  constexpr int kProcessRedGreenBlue = 512;
  if (colorMode == kCyanMagentaYellow) header.colorSpace = icSigCmyData;
  if (colorMode == kProcessRedGreenBlue) header.colorSpace = icSigRgbData;
}

}  // namespace vkcl
