// Texts in arrays that a record owns.
#pragma once

#include <cstring>
#include <memory>
#include <string_view>

namespace vkcl {

/// A zero-terminated copy of the text, with `tail` behind it, for a record that releases it with
/// array delete.
inline std::unique_ptr<char[]> OwnedText(std::string_view text, std::string_view tail = {}) {
  std::unique_ptr<char[]> copy(new char[text.size() + tail.size() + 1]);
  if (!text.empty()) std::memcpy(copy.get(), text.data(), text.size());
  if (!tail.empty()) std::memcpy(copy.get() + text.size(), tail.data(), tail.size());
  copy[text.size() + tail.size()] = '\0';
  return copy;
}

}  // namespace vkcl
