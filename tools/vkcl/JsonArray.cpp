#include "JsonArray.h"

#include <fmt/format.h>

#include "Text.h"

namespace vkcl::tool {

void JsonArray::Print(const nlohmann::ordered_json& document) {
  std::string text = last_.empty() ? "[\n  " : last_ + ",\n  ";
  // A text has no line ends of its own: they are escaped.
  for (const char c : document.dump(2, ' ', kAsciiOnly)) {
    text += c;
    if (c == '\n') text += "  ";
  }
  const std::size_t lines = text.rfind('\n') + 1;
  last_ = text.substr(lines);
  fmt::print("{}", text.substr(0, lines));
}

void JsonArray::End() { fmt::print("{}", last_.empty() ? "[]\n" : last_ + "\n]\n"); }

}  // namespace vkcl::tool
