// Bytes as hexadecimal text, two digits a byte.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vkcl {

/// Two lower-case digits a byte, in byte order.
std::string HexText(const void* bytes, std::size_t count);

/// Reads up to `count` bytes from the digits, of either case, at the front of a text, and returns
/// how many there were; a last digit that stands alone is none. White space between digits, as a
/// program that lays out text anew leaves it, is skipped. Nothing when another character stands
/// where a digit belongs; what `to` holds then means nothing.
std::optional<std::size_t> ReadHex(std::string_view text, void* to, std::size_t count);

}  // namespace vkcl
