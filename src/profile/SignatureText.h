// Signatures as people read them.
#pragma once

#include <cstdint>
#include <string>

namespace vkcl {

/// Whether a byte is a printable character of ASCII; a blank is.
constexpr bool IsPrintable(unsigned char c) { return c >= 0x20 && c < 0x7F; }

/// Whether all four characters of a signature are printable ASCII.
constexpr bool IsPrintableSignature(std::uint32_t signature) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    if (!IsPrintable(static_cast<unsigned char>(signature >> shift))) return false;
  }
  return true;
}

/// Four characters of a signature; what is not printable ASCII becomes "?".
inline std::string SignatureText(std::uint32_t signature) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto c = static_cast<unsigned char>(signature >> shift);
    text += IsPrintable(c) ? static_cast<char>(c) : '?';
  }
  return text;
}

}  // namespace vkcl
