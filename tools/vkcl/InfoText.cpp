#include "InfoText.h"

#include <fmt/format.h>

#include "Style.h"
#include "Text.h"

namespace vkcl::tool {
namespace {

using Json = nlohmann::ordered_json;

std::string Title(const std::string& text) { return Painted(Stream::Output, Ink::Title, text); }

std::string Grave(const std::string& text) { return Painted(Stream::Output, Ink::Error, text); }

std::string Shown(const Json& value) {
  if (value.is_string()) return fmt::format("\"{}\"", Printable(value.get<std::string>()));
  return value.dump();
}

// Without the blanks that fill up a signature.
std::string Plain(const Json& value) {
  std::string text = Printable(value.get<std::string>());
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

// "100 x 12, 95.5, 80": runs of equal numbers are folded.
std::string FoldedList(const Json& list) {
  std::string text;
  for (std::size_t i = 0; i < list.size();) {
    std::size_t end = i + 1;
    while (end < list.size() && list[end] == list[i]) ++end;
    if (!text.empty()) text += ", ";
    text += Shown(list[i]);
    if (end - i > 1) text += fmt::format(" x {}", end - i);
    i = end;
  }
  return text.empty() ? "none" : text;
}

// Blocks of nothing but zeros, empty texts, and numbers that only frame a fixed record say nothing.
bool IsDull(const Json& content, const std::string& key, const Json& value) {
  const bool isRecord = content.contains("size") || key == "size";
  if (key == "version" || key == "size" || key == "count") return isRecord;
  if (!value.is_string()) return false;
  const auto& text = value.get_ref<const std::string&>();
  constexpr std::size_t kShortestBlock = 32;  // digits
  return text.empty() ||
         (text.size() >= kShortestBlock && text.find_first_not_of('0') == std::string::npos);
}

std::string Shortened(std::string text) {
  constexpr std::size_t kMost = 48;
  if (text.size() <= kMost) return text;
  std::size_t cut = kMost;
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  return text.substr(0, cut) + "...\"";
}

std::string ContentText(const Json& content) {
  std::string text;
  for (const auto& [key, value] : content.items()) {
    if (IsDull(content, key, value)) continue;
    if (!text.empty()) text += ", ";
    if (key == "readable") {
      text += Grave("cannot be read");
    } else if (value.is_array() && !value.empty() && value[0].is_object()) {
      for (const Json& item : value) text += fmt::format("[{}]", ContentText(item));
    } else if (value.is_array()) {
      text += fmt::format("{} {}", key, FoldedList(value));
    } else {
      text += fmt::format("{} {}", key, value.is_string() ? Shortened(Shown(value)) : Shown(value));
    }
  }
  return text;
}

std::string Line(const std::string& label, const std::string& text) {
  return fmt::format("  {:<16}{}\n", label, text);
}

std::string HeaderText(const Json& document) {
  const Json& header = document["header"];
  std::string text;
  text += Line("profile", fmt::format("ICC {}, {} ('{}'), created {}", Plain(header["version"]),
                                      Plain(header["className"]), Plain(header["class"]),
                                      Plain(header["created"])));
  std::string spaces = fmt::format("{} to {}", Plain(header["colorSpace"]), Plain(header["pcs"]));
  if (document.contains("channels"))
    spaces += fmt::format(", {} channels", document["channels"].get<int>());
  text += Line("colour", spaces);
  text += Line("size", fmt::format("{} bytes", header["size"].get<std::uint32_t>()));
  return text;
}

std::string StateText(const Json& document) {
  std::string text = Line("own profile", document["own"].get<bool>() ? "yes" : "no");
  if (!document["own"].get<bool>()) return text;
  const Json& state = document["finishedState"];
  std::string line = fmt::format("{} ({})", Plain(state["name"]), state["value"].get<int>());
  const Json& held = state["withStatus"];
  if (held["value"] != state["value"]) {
    line += fmt::format("; with its status {} ({})", Plain(held["name"]), held["value"].get<int>());
  }
  return text + Line("finished state", line);
}

std::string TagsText(const Json& tags) {
  std::string text = Line("tags", std::to_string(tags.size()));
  if (!tags.empty()) text += "      #  tag      offset      size  type\n";
  for (std::size_t i = 0; i < tags.size(); ++i) {
    const Json& tag = tags[i];
    text += fmt::format("    {:>3}  {:<4} {:>10} {:>9}  {:<4}", i, Plain(tag["signature"]),
                        tag["offset"].get<std::uint32_t>(), tag["size"].get<std::uint32_t>(),
                        Plain(tag["type"]));
    if (tag.contains("sharesDataWith")) {
      text += fmt::format("  shares data with {}", Plain(tag["sharesDataWith"]));
    }
    if (tag.contains("beyondEndOfFile")) text += "  " + Grave("reaches beyond the end of the file");
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text;
}

std::string PrivateText(const Json& tags) {
  std::string text = Line("private tags", tags.empty() ? "none" : std::to_string(tags.size()));
  for (const Json& tag : tags) {
    text += fmt::format("    {}  {}, {} bytes\n", Plain(tag["signature"]), Plain(tag["name"]),
                        tag["payloadBytes"].get<std::uint32_t>());
    const std::string content = tag.contains("content")
                                    ? ContentText(tag["content"])
                                    : "hidden by an earlier one of the same signature";
    if (!content.empty()) text += fmt::format("          {}\n", content);
  }
  return text;
}

}  // namespace

std::string InfoText(const Json& document) {
  std::string text = Title(Plain(document["file"])) + '\n';
  if (document.contains("reason")) text += Line("not opened", Grave(Plain(document["reason"])));
  if (!document.contains("header")) return text;
  return text + HeaderText(document) + StateText(document) + TagsText(document["tags"]) +
         PrivateText(document["privateTags"]);
}

}  // namespace vkcl::tool
