// Numbers in bytes: big-endian for ICC files, and the check that records are their own
// little-endian image.
#pragma once

#include <bit>
#include <cstdint>

namespace vkcl {

// Private payloads are the little-endian images of packed records, copied as they are.
static_assert(std::endian::native == std::endian::little,
              "records are stored as their own memory image; this host would store them reversed");

inline std::uint16_t LoadBig16(const void* from) {
  const auto* b = static_cast<const std::uint8_t*>(from);
  return static_cast<std::uint16_t>(b[0] << 8 | b[1]);
}

inline std::uint32_t LoadBig32(const void* from) {
  const auto* b = static_cast<const std::uint8_t*>(from);
  return std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 | b[3];
}

inline void StoreBig32(void* to, std::uint32_t value) {
  auto* b = static_cast<std::uint8_t*>(to);
  b[0] = static_cast<std::uint8_t>(value >> 24);
  b[1] = static_cast<std::uint8_t>(value >> 16);
  b[2] = static_cast<std::uint8_t>(value >> 8);
  b[3] = static_cast<std::uint8_t>(value);
}

/// `n` rounded up to the next multiple of 4.
constexpr std::uint64_t PadTo4(std::uint64_t n) { return (n + 3) / 4 * 4; }

}  // namespace vkcl
