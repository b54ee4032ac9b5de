// Writing HTML so that no text of a file can become markup.
//
// Markup is what stands in the source as a literal with the suffix _html. Everything else that goes
// into a page goes through AppendHtmlText.
#pragma once

#include <concepts>  // IWYU pragma: keep
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace vkcl {

/// A piece of markup that stands in the source.
class Html {
 public:
  constexpr Html(const char* text, std::size_t length) : text_(text, length) {}
  std::string_view text() const { return text_; }

 private:
  std::string_view text_;
};

inline namespace html_literals {
constexpr Html operator""_html(const char* text, std::size_t length) { return {text, length}; }
}  // namespace html_literals

/// Appends bytes as text of an element or of a quoted attribute. Markup characters become
/// references and bytes that are no UTF-8 U+FFFD. Characters that are not seen, or turn the order
/// of others about, are made visible: control characters as their pictures (U+2400 and above) or,
/// like those of the bidirectional algorithm, as their number: [U+202E]. Tabs and line feeds stay.
void AppendHtmlText(std::string& html, std::string_view bytes);

/// Text of a file, in a direction of its own; only its first `most` bytes, and then how many there
/// are.
struct Isolated {
  std::string_view bytes;
  std::size_t most = 2000;
};

/// A number for people: two decimals at most, more digits where it would be 0 else, and none that
/// say nothing; "no number" for NaN, "infinite" and "-infinite".
std::string ShownNumber(double number);

/// A signature without the blanks that fill it up.
std::string PlainSignature(std::uint32_t signature);
/// "1,234,567 bytes"
std::string ShownBytes(std::uint64_t bytes);
std::string ShownCount(std::uint64_t count);
/// "1 point", "2 points"
std::string Counted(std::uint64_t count, std::string_view one);

/// Hands a page on to a sink in pieces of some size. After a piece that the sink refuses nothing
/// more is handed on.
class HtmlWriter {
 public:
  using Sink = std::function<bool(std::string_view)>;

  explicit HtmlWriter(const Sink& sink) : sink_(sink) {}

  HtmlWriter& operator<<(Html markup);
  HtmlWriter& operator<<(std::string_view text);
  HtmlWriter& operator<<(const std::string& text) { return *this << std::string_view(text); }
  HtmlWriter& operator<<(const char* text) { return *this << std::string_view(text); }
  HtmlWriter& operator<<(Isolated text);
  HtmlWriter& operator<<(bool) = delete;
  HtmlWriter& operator<<(char) = delete;
  HtmlWriter& operator<<(std::integral auto number) { return *this << std::to_string(number); }

  /// Hands on what is left. False when the sink refused a piece.
  bool Finish();

 private:
  void HandOn();

  const Sink& sink_;
  std::string held_;
  bool good_ = true;
};

}  // namespace vkcl
