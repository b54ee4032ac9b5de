// A byte string in the host's narrow encoding.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "platform/Export.h"

/// Text as the host keeps it: bytes, with a length of its own, that no operation here re-encodes.
/// What makes or lengthens a text throws std::bad_alloc when memory is short, as the standard's
/// strings do; a text that was there is then as it was.
class VKCL_API AString {
 public:
  /// No position: what `find` gives when there is none.
  static constexpr std::size_t npos = std::string::npos;

  AString() = default;
  /// A null pointer gives the empty string.
  AString(const char* text) : text_(text != nullptr ? text : "") {}
  /// Takes `length` bytes, zeros included.
  AString(const char* bytes, std::size_t length) : text_(bytes, length) {}
  /// Takes the bytes of `text`.
  AString(std::string text) : text_(std::move(text)) {}

  /// The bytes with a terminating zero, valid until the string changes.
  const char* c_str() const noexcept { return text_.c_str(); }
  /// Length in bytes.
  std::size_t length() const noexcept { return text_.length(); }
  /// Whether the length is 0.
  bool empty() const noexcept { return text_.empty(); }
  /// The bytes as a standard string.
  const std::string& str() const noexcept { return text_; }

  ///@{
  /// Compares byte by byte.
  friend bool operator==(const AString& a, const AString& b) noexcept { return a.text_ == b.text_; }
  friend bool operator!=(const AString& a, const AString& b) noexcept { return a.text_ != b.text_; }
  friend bool operator<(const AString& a, const AString& b) noexcept { return a.text_ < b.text_; }
  ///@}

  ///@{
  /// Puts `tail` behind the bytes.
  AString& operator+=(const AString& tail) {
    text_ += tail.text_;
    return *this;
  }
  friend AString operator+(AString head, const AString& tail) { return head += tail; }
  ///@}

  /// Compares without regard to the case of the letters A to Z; other bytes must be equal.
  /// Negative, zero or positive, as strcmp. Independent of the locale.
  int compareNoCase(const AString& other) const noexcept;

  ///@{
  /// Position of the first occurrence of `text` at or after `from`; npos when there is none. A null
  /// pointer is the empty text.
  std::size_t find(const AString& text, std::size_t from = 0) const noexcept {
    return text_.find(text.text_, from);
  }
  std::size_t find(const char* text, std::size_t from = 0) const noexcept {
    return text_.find(text != nullptr ? text : "", from);
  }
  ///@}

  /// Removes `character` from both ends, as often as it stands there.
  void trim(char character);

 private:
  std::string text_;
};
