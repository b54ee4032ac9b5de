#include "platform/plinth/Base64.h"

#include <array>
#include <cstdint>

namespace vkcl {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<int, 256> MakeDigits() {
  std::array<int, 256> digits = {};
  digits.fill(-1);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    digits[static_cast<unsigned char>(kAlphabet[i])] = static_cast<int>(i);
  }
  return digits;
}

constexpr std::array<int, 256> kDigits = MakeDigits();

}  // namespace

std::string Base64Text(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t left = bytes.size() - i;
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < left ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= left ? kAlphabet[group >> (18 - 6 * k) & 63] : '=';
    }
  }
  return text;
}

bool AppendBase64(std::string_view text, std::vector<char>& bytes) {
  if (text.size() % 4 != 0) return false;
  std::size_t digits = text.size();
  while (digits > 0 && text.size() - digits < 2 && text[digits - 1] == '=') --digits;
  const std::size_t before = bytes.size();
  std::uint32_t group = 0;
  unsigned bits = 0;
  for (const char c : text.substr(0, digits)) {
    const int digit = kDigits[static_cast<unsigned char>(c)];
    if (digit < 0) {
      bytes.resize(before);
      return false;
    }
    group = group << 6 | static_cast<std::uint32_t>(digit);
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes.push_back(static_cast<char>(group >> bits & 0xFF));
  }
  if ((group & ((1U << bits) - 1)) == 0) return true;
  bytes.resize(before);
  return false;
}

}  // namespace vkcl
