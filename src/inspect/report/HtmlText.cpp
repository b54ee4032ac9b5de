#include "inspect/report/HtmlText.h"

#include <algorithm>
#include <cmath>

#include "platform/plinth/NumberText.h"
#include "platform/plinth/Utf8.h"
#include "profile/SignatureText.h"

namespace vkcl {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::size_t kPiece = std::size_t{32} << 10;

constexpr char32_t CodePoint(std::string_view character) {
  const auto lead = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return lead;
  char32_t code = lead & (0x7Fu >> character.size());
  for (const char c : character.substr(1))
    code = code << 6 | (static_cast<unsigned char>(c) & 0x3F);
  return code;
}

struct Span {
  char32_t first;
  char32_t last;
};

// What has no picture of its own, yet hides, joins or turns about what is around it.
constexpr Span kHidden[] = {{0x80, 0x9F},     {0xAD, 0xAD},     {0x61C, 0x61C},
                            {0x180E, 0x180E}, {0x200B, 0x200B}, {0x200E, 0x200F},
                            {0x2028, 0x202E}, {0x2060, 0x206F}, {0xFEFF, 0xFEFF},
                            {0xFFF9, 0xFFFB}, {0xFFFE, 0xFFFF}, {0xE0000, 0xE0FFF}};

bool IsHidden(char32_t code) {
  return std::any_of(std::begin(kHidden), std::end(kHidden),
                     [&](const Span& span) { return code >= span.first && code <= span.last; });
}

// The picture of a control character: U+2400 and its number; U+2421 for the last one.
void AppendPicture(std::string& html, unsigned char control) {
  html += "\xE2\x90";
  html += static_cast<char>(control == 0x7F ? 0xA1 : 0x80 + control);
}

void AppendNumber(std::string& html, char32_t code) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  html += "[U+";
  for (int shift = code > 0xFFFF ? 20 : 12; shift >= 0; shift -= 4) {
    html += kDigits[code >> shift & 15];
  }
  html += ']';
}

void AppendAscii(std::string& html, char c) {
  switch (c) {
    case '&': html += "&amp;"; return;
    case '<': html += "&lt;"; return;
    case '>': html += "&gt;"; return;
    case '"': html += "&quot;"; return;
    case '\'': html += "&#39;"; return;
    case '\t':
    case '\n': html += c; return;
    default: break;
  }
  const auto byte = static_cast<unsigned char>(c);
  if (byte < 0x20 || byte == 0x7F) {
    AppendPicture(html, byte);
  } else {
    html += c;
  }
}

// "1234567" as "1,234,567".
std::string Grouped(std::string digits) {
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
  return digits;
}

}  // namespace

void AppendHtmlText(std::string& html, std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = Utf8Length(bytes);
    const std::string_view character = bytes.substr(0, std::max<std::size_t>(length, 1));
    if (length == 0) {
      html += kReplacement;
    } else if (length == 1) {
      AppendAscii(html, character[0]);
    } else if (const char32_t code = CodePoint(character); IsHidden(code)) {
      AppendNumber(html, code);
    } else {
      html += character;
    }
    bytes.remove_prefix(character.size());
  }
}

std::string ShownNumber(double number) {
  if (std::isnan(number)) return "no number";
  if (std::isinf(number)) return number > 0 ? "infinite" : "-infinite";
  constexpr double kPlain = 1e7;
  constexpr double kLeast = 0.005;
  const double size = std::fabs(number);
  if (size >= kPlain || (size != 0 && size < kLeast)) return ShortestText(number);
  std::string text;
  AppendFixed(text, number, 2);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text == "-0" ? "0" : text;
}

std::string PlainSignature(std::uint32_t signature) {
  std::string text = SignatureText(signature);
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string ShownCount(std::uint64_t count) { return Grouped(std::to_string(count)); }

std::string ShownBytes(std::uint64_t bytes) { return Counted(bytes, "byte"); }

std::string Counted(std::uint64_t count, std::string_view one) {
  return ShownCount(count) + ' ' + std::string(one) + (count == 1 ? "" : "s");
}

HtmlWriter& HtmlWriter::operator<<(Html markup) {
  held_ += markup.text();
  if (held_.size() >= kPiece) HandOn();
  return *this;
}

HtmlWriter& HtmlWriter::operator<<(std::string_view text) {
  AppendHtmlText(held_, text);
  if (held_.size() >= kPiece) HandOn();
  return *this;
}

HtmlWriter& HtmlWriter::operator<<(Isolated text) {
  std::string_view shown = text.bytes.substr(0, text.most);
  if (shown.size() < text.bytes.size()) {  // at the start of a character
    for (int i = 0; i < 3 && !shown.empty(); ++i) {
      if ((static_cast<unsigned char>(text.bytes[shown.size()]) & 0xC0) != 0x80) break;
      shown.remove_suffix(1);
    }
  }
  *this << "<bdi>"_html << shown << "</bdi>"_html;
  if (shown.size() < text.bytes.size()) {
    *this << " <span class=\"muted\">... ("_html << ShownBytes(text.bytes.size())
          << ")</span>"_html;
  }
  return *this;
}

void HtmlWriter::HandOn() {
  if (good_ && !held_.empty()) good_ = sink_(held_);
  held_.clear();
}

bool HtmlWriter::Finish() {
  HandOn();
  return good_;
}

}  // namespace vkcl
