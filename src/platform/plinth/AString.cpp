#include "platform/plinth/AString.h"

#include <algorithm>

namespace {

constexpr int LowerAscii(char c) {
  const int byte = static_cast<unsigned char>(c);
  return byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte;
}

}  // namespace

int AString::compareNoCase(const AString& other) const noexcept {
  const std::size_t shared = std::min(length(), other.length());
  for (std::size_t i = 0; i < shared; ++i) {
    const int difference = LowerAscii(text_[i]) - LowerAscii(other.text_[i]);
    if (difference != 0) return difference;
  }
  if (length() == other.length()) return 0;
  return length() < other.length() ? -1 : 1;
}

void AString::trim(char character) {
  const std::size_t first = text_.find_first_not_of(character);
  if (first == std::string::npos) {
    text_.clear();
    return;
  }
  text_.erase(text_.find_last_not_of(character) + 1);
  text_.erase(0, first);
}
