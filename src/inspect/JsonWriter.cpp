#include "inspect/JsonWriter.h"

#include <algorithm>
#include <cstdint>

#include "platform/plinth/HexText.h"
#include "platform/plinth/Utf8.h"

namespace vkcl {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

std::uint32_t CodePoint(std::string_view character) {
  const auto lead = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return lead;
  std::uint32_t code = lead & (0x7FU >> character.size());
  for (const char c : character.substr(1))
    code = code << 6 | (static_cast<unsigned char>(c) & 0x3F);
  return code;
}

std::string Escape(std::uint32_t unit) {
  const char big[2] = {static_cast<char>(unit >> 8), static_cast<char>(unit)};
  return "\\u" + HexText(big, sizeof big);
}

std::string Escaped(std::string_view character) {
  switch (character[0]) {
    case '"': return "\\\"";
    case '\\': return "\\\\";
    case '\n': return "\\n";
    case '\t': return "\\t";
    default: break;
  }
  const std::uint32_t code = CodePoint(character);
  if (code >= 0x20 && code < 0x7F) return std::string(character);
  if (code < 0x10000) return Escape(code);
  return Escape(0xD800 + ((code - 0x10000) >> 10)) + Escape(0xDC00 + (code & 0x3FF));
}

}  // namespace

void JsonWriter::Key(std::string_view name) {
  BeginValue();
  Quoted(name);
  out_.Put(": ");
  afterKey_ = true;
}

void JsonWriter::String(std::string_view utf8) {
  BeginValue();
  Quoted(utf8);
}

void JsonWriter::Number(std::string_view text) {
  BeginValue();
  out_.Put(text);
}

void JsonWriter::Open(char bracket, Style style) {
  BeginValue();
  out_.Put({&bracket, 1});
  levels_.push_back({style, true});
}

void JsonWriter::Close(char bracket) {
  const Level level = levels_.back();
  levels_.pop_back();
  if (level.style == Style::Lines && !level.empty) BreakLine();
  out_.Put({&bracket, 1});
}

void JsonWriter::BeginValue() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (levels_.empty()) return;
  Level& level = levels_.back();
  if (!level.empty) out_.Put(level.style == Style::Inline ? ", " : ",");
  if (level.style == Style::Lines) BreakLine();
  level.empty = false;
}

void JsonWriter::BreakLine() {
  out_.Put("\n");
  out_.Put(std::string(2 * levels_.size(), ' '));
}

void JsonWriter::Quoted(std::string_view utf8) {
  out_.Put("\"");
  while (!utf8.empty()) {
    const std::size_t length = Utf8Length(utf8);
    out_.Put(Escaped(length != 0 ? utf8.substr(0, length) : kReplacement));
    utf8.remove_prefix(std::max<std::size_t>(length, 1));
  }
  out_.Put("\"");
}

}  // namespace vkcl
