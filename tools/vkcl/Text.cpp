#include "Text.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "inspect/PrintableText.h"
#include "platform/plinth/Utf8.h"

namespace vkcl::tool {
namespace {

template <class Number>
std::string Shortest(Number number) {
  std::array<char, 64> buffer = {};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  return {buffer.data(), result.ptr};
}

}  // namespace

std::string Printable(std::string_view bytes) { return PrintableText(bytes); }

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
