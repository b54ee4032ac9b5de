// Bytes as base64 text (RFC 4648, clause 4).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vkcl {

/// Four characters for three bytes, padded with "=".
std::string Base64Text(std::string_view bytes);

/// Appends the bytes that a text stands for. False, and nothing appended, for a text that is none:
/// another character than the 64, a length that is no multiple of 4, padding elsewhere than at the
/// end, or bits beyond the last byte.
bool AppendBase64(std::string_view text, std::vector<char>& bytes);

}  // namespace vkcl
