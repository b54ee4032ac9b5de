#include "platform/axml/XmlText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "platform/plinth/TextEncoding.h"
#include "platform/plinth/Utf8.h"

namespace vkcl {
namespace {

using Byte = unsigned char;

// The characters for single bytes, U+EF00 to U+EFFF, are EE BC 80 to EE BF BF.
constexpr std::size_t kRawLength = 3;

void AppendRaw(std::string& xml, Byte byte) {
  xml += '\xEE';
  xml += static_cast<char>(0xBC | byte >> 6);
  xml += static_cast<char>(0x80 | (byte & 0x3F));
}

bool IsRaw(std::string_view character) {
  return character.size() == kRawLength && static_cast<Byte>(character[0]) == 0xEE &&
         static_cast<Byte>(character[1]) >= 0xBC;
}

char ByteOfRaw(std::string_view character) {
  return static_cast<char>(static_cast<Byte>(character[1]) << 6 |
                           (static_cast<Byte>(character[2]) & 0x3F));
}

constexpr std::array<bool, 256> MakePlain() {
  std::array<bool, 256> plain = {};
  for (unsigned c = 0; c < 256; ++c)
    plain[c] = (c >= 0x20 && c < 0x80) || c == '\t' || c == '\n' || c == '\r';
  return plain;
}
constexpr std::array<bool, 256> kPlain = MakePlain();

// Whether one of eight bytes is above 0x7F or below 0x20.
bool HasSpecial(const char* bytes) {
  constexpr std::uint64_t kTop = 0x8080808080808080u;
  constexpr std::uint64_t kBlanks = 0x2020202020202020u;
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return ((word | (word - kBlanks)) & kTop) != 0;
}

// Whether the text is ASCII that means the same everywhere; most texts are, and long ones of digits
// are looked at eight at a time.
bool IsPlain(std::string_view text) {
  while (text.size() >= 8 && !HasSpecial(text.data())) text.remove_prefix(8);
  return std::all_of(text.begin(), text.end(), [](char c) { return kPlain[static_cast<Byte>(c)]; });
}

// Whether a character of UTF-8 may stand in a document, and stands for itself.
bool IsXmlCharacter(std::string_view character) {
  if (character.size() == 1) return kPlain[static_cast<Byte>(character[0])];
  return !IsRaw(character) && character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF";
}

std::string Utf8ToXml(std::string_view text) {
  std::string xml;
  xml.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
    if (length != 0 && IsXmlCharacter(character)) {
      xml += character;
    } else {
      for (const char c : character) AppendRaw(xml, static_cast<Byte>(c));
    }
    text.remove_prefix(character.size());
  }
  return xml;
}

std::string WithRawBytes(std::string_view text) {
  std::string xml;
  for (const char c : text) {
    if (kPlain[static_cast<Byte>(c)]) {
      xml += c;
    } else {
      AppendRaw(xml, static_cast<Byte>(c));
    }
  }
  return xml;
}

// A piece of a document without characters for single bytes, which is valid UTF-8.
std::string PieceToHost(std::string_view piece) {
  if (IsPlain(piece)) return std::string(piece);
  std::string text = Utf8ToHostText(piece);
  if (!text.empty()) return text;
  while (!piece.empty()) {  // the host lacks one of the characters, at least
    const std::string_view character = piece.substr(0, Utf8Length(piece));
    const std::string converted = Utf8ToHostText(character);
    text += converted.empty() ? character : converted;
    piece.remove_prefix(character.size());
  }
  return text;
}

struct Range {
  char32_t first;
  char32_t last;
};
// XML 1.0 (fifth edition), 2.3: NameStartChar, and what NameChar has beside it. Without U+FEFF,
// which readers of the older editions take for a byte-order mark.
constexpr Range kNameStart[] = {
    {':', ':'},       {'A', 'Z'},        {'_', '_'},       {'a', 'z'},       {0xC0, 0xD6},
    {0xD8, 0xF6},     {0xF8, 0x2FF},     {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D},
    {0x2070, 0x218F}, {0x2C00, 0x2FEF},  {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFEFE},
    {0xFF00, 0xFFFD}, {0x10000, 0xEFFFF}};
constexpr Range kNameMore[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t count>
bool IsIn(const Range (&ranges)[count], char32_t character) {
  return std::any_of(std::begin(ranges), std::end(ranges), [=](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

// The character at the front of valid UTF-8.
char32_t Decode(std::string_view character) {
  const auto lead = static_cast<Byte>(character[0]);
  if (character.size() == 1) return lead;
  char32_t value = lead & (0xFFu >> (character.size() + 1));
  for (const char c : character.substr(1)) value = value << 6 | (static_cast<Byte>(c) & 0x3F);
  return value;
}

}  // namespace

bool IsXmlText(std::string_view text) {
  if (IsPlain(text)) return true;
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    const std::string_view character = text.substr(0, length);
    if (length == 0 || !(IsXmlCharacter(character) || IsRaw(character))) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string_view HostTextToXml(std::string_view text, std::string& room) {
  if (IsPlain(text)) return text;
  if (HostIsUtf8()) {
    room = Utf8ToXml(text);
    return room == text ? text : room;
  }
  room = Utf8ToXml(HostTextToUtf8(text));
  if (XmlToHostText(room) != text) room = WithRawBytes(text);
  return room;
}

std::string XmlToHostText(std::string_view xml) {
  if (IsPlain(xml)) return std::string(xml);
  const bool utf8 = HostIsUtf8();
  std::string text;
  std::string piece;  // what has been seen since the last character for a byte
  const auto flush = [&] {
    text += utf8 ? piece : PieceToHost(piece);
    piece.clear();
  };
  while (!xml.empty()) {
    const std::string_view character = xml.substr(0, std::max<std::size_t>(Utf8Length(xml), 1));
    const bool isByte = Utf8Length(xml) == 0;  // a document of a host that did not write UTF-8
    if (isByte || IsRaw(character)) {
      flush();
      text += isByte ? character[0] : ByteOfRaw(character);
    } else {
      piece += character;
    }
    xml.remove_prefix(character.size());
  }
  flush();
  return text;
}

std::string_view XmlToHostText(std::string_view xml, std::string& room) {
  if (IsPlain(xml)) return xml;
  room = XmlToHostText(xml);
  return room == xml ? xml : room;
}

bool IsXmlName(std::string_view name) {
  for (bool first = true; !name.empty(); first = false) {
    const std::size_t length = Utf8Length(name);
    if (length == 0) return false;
    const char32_t character = Decode(name.substr(0, length));
    if (!IsIn(kNameStart, character) && (first || !IsIn(kNameMore, character))) return false;
    name.remove_prefix(length);
    if (name.empty()) return true;
  }
  return false;
}

}  // namespace vkcl
