// What is a character of UTF-8 (RFC 3629), and what is none.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace vkcl {

/// Length of the character at the front of `text`, which is not empty; 0 when the bytes there are
/// none: overlong forms, surrogates and numbers above U+10FFFF included.
constexpr std::size_t Utf8Length(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const unsigned char second = byte(1);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool beyond = (lead == 0xED && second > 0x9F) || (lead == 0xF4 && second > 0x8F);
  return overlong || beyond ? 0 : length;
}

/// The bytes as valid UTF-8: each byte that belongs to no character becomes U+FFFD.
inline std::string ValidUtf8(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const std::size_t length = Utf8Length(bytes);
    text += length != 0 ? bytes.substr(0, length) : std::string_view("\xEF\xBF\xBD");
    bytes.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

}  // namespace vkcl
