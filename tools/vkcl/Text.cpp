#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/plinth/Utf8.h"

namespace vkcl::tool {
namespace {

// C1 controls (U+0080 to U+009F) drive terminals, too.
bool IsControl(std::string_view character) {
  const auto lead = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return lead < 0x20 || lead == 0x7F;
  return lead == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

template <class Number>
std::string Shortest(Number number) {
  std::array<char, 64> buffer = {};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  return {buffer.data(), result.ptr};
}

}  // namespace

std::string Printable(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const std::size_t length = std::max<std::size_t>(Utf8Length(bytes), 1);
    const std::string_view character = bytes.substr(0, length);
    const bool plain = Utf8Length(bytes) != 0 && !IsControl(character);
    if (character == "\\" || character == "\"") text += '\\';
    if (plain) {
      text += character;
    } else {
      for (const char c : character) {
        text += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
      }
    }
    bytes.remove_prefix(length);
  }
  return text;
}

std::string Utf8(std::string_view bytes) { return ValidUtf8(bytes); }

std::string_view FieldText(const char* field, std::size_t width) {
  return {field, static_cast<std::size_t>(std::find(field, field + width, '\0') - field)};
}

std::string NumberText(float number) { return Shortest(number); }

std::string NumberText(double number) { return Shortest(number); }

std::string HexText(const unsigned char* bytes, std::size_t count) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * count);
  for (std::size_t i = 0; i < count; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}

}  // namespace vkcl::tool
