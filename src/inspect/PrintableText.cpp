#include "inspect/PrintableText.h"

#include <algorithm>

#include "platform/plinth/HexText.h"
#include "platform/plinth/Utf8.h"

namespace vkcl {
namespace {

// Marks that turn the direction of the text around them, so that it reads as another one.
constexpr std::string_view kTurns[] = {
    "\u061C", "\u200E", "\u200F", "\u202A", "\u202B", "\u202C",
    "\u202D", "\u202E", "\u2066", "\u2067", "\u2068", "\u2069",
};

// C1 controls (U+0080 to U+009F) drive terminals, too.
bool IsControl(std::string_view character) {
  const auto lead = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return lead < 0x20 || lead == 0x7F;
  if (lead == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0) return true;
  return std::find(std::begin(kTurns), std::end(kTurns), character) != std::end(kTurns);
}

}  // namespace

std::string PrintableText(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const std::size_t length = std::max<std::size_t>(Utf8Length(bytes), 1);
    const std::string_view character = bytes.substr(0, length);
    const bool plain = Utf8Length(bytes) != 0 && !IsControl(character);
    if (character == "\\" || character == "\"") text += '\\';
    if (plain) {
      text += character;
    } else {
      for (const char c : character) text += "\\x" + HexText(&c, 1);
    }
    bytes.remove_prefix(length);
  }
  return text;
}

}  // namespace vkcl
