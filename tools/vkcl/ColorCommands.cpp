#include "ColorCommands.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "Text.h"
#include "colornames/ColorModes.h"

namespace vkcl::tool {
namespace {

using Json = nlohmann::ordered_json;

std::string Joined(const AStringArray& names) {
  std::string text;
  for (const AString& name : names) {
    if (!text.empty()) text += ", ";
    text += Printable(name.str());
  }
  return text.empty() ? "none" : text;
}

Json Listed(const AStringArray& names) {
  Json list = Json::array();
  for (const AString& name : names) list.push_back(Utf8(name.str()));
  return list;
}

bool Contains(const AStringArray& names, const AString& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// The inks of the mode that are not of full strength, by its names and its dark ones.
AStringArray Dilutions(const AStringArray& names, int dark) {
  AStringArray dilutions;
  for (std::size_t i = static_cast<std::size_t>(dark); i < names.size(); ++i) {
    dilutions.append(names[i]);
  }
  return dilutions;
}

// Three channels are red, green and blue in one ink set alone.
std::string SpaceOf(int mode, int channels) {
  constexpr int kProcessRgb = 512;
  const unsigned int space = GetColorSpaceFromNumberOfColors(static_cast<unsigned int>(channels),
                                                             mode != kProcessRgb ? 1 : 0);
  return space == 0xFFFFFFFFu ? std::string() : SignatureText(space);
}

// Names that were given, though the set that they were taken for does not have them.
AStringArray NotInSet(const AStringArray& given, const AStringArray& ordered) {
  AStringArray others;
  for (const AString& name : given) {
    if (!Contains(ordered, name)) others.append(name);
  }
  return others;
}

// What keeps a list of names from being an ink set.
std::string WhyNoSet(const AStringArray& names) {
  std::string why;
  AStringArray seen;
  for (const AString& name : names) {
    AStringArray ordered;
    const bool known = GetColorModeByNames({name}, ordered) != 0;
    if (!known) why += fmt::format("; \"{}\" alone is no known ink", Printable(name.str()));
    if (Contains(seen, name)) why += fmt::format("; {} is given twice", Printable(name.str()));
    seen.append(name);
  }
  return "these names are no ink set" + why;
}

}  // namespace

bool ParseMode(const std::string& text, int& mode) {
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  const char* first = text.data() + (hex ? 2 : 0);
  const char* last = text.data() + text.size();
  std::int64_t value = 0;
  const auto result = std::from_chars(first, last, value, hex ? 16 : 10);
  if (result.ec != std::errc() || result.ptr != last || (hex && *first == '-')) return false;
  if (value < INT32_MIN || value > (hex ? std::int64_t{UINT32_MAX} : INT32_MAX)) return false;
  mode = static_cast<int>(static_cast<std::uint32_t>(value));
  return true;
}

std::string ModeText(int mode) {
  return mode < 0 ? fmt::format("0x{:08X}", static_cast<std::uint32_t>(mode))
                  : fmt::format("{}", mode);
}

Result ColorMode(const std::vector<std::string>& names, bool json) {
  AStringArray given;
  for (const std::string& name : names) given.append(name);
  AStringArray ordered;
  const int mode = GetColorModeByNames(given, ordered);
  if (mode == 0) return Refused(WhyNoSet(given));
  const AStringArray others = NotInSet(given, ordered);
  if (json) {
    const Json document = {
        {"mode", mode}, {"names", Listed(ordered)}, {"notInSet", Listed(others)}};
    return Done(document.dump(2, ' ', kAsciiOnly) + '\n');
  }
  std::string text = fmt::format("mode {}: {}\n", ModeText(mode), Joined(ordered));
  if (!others.empty()) {
    text += fmt::format("  told by the number of names and some of them; not in the set: {}\n",
                        Joined(others));
  }
  return Done(text);
}

Result ColorNames(const std::string& modeText, bool json) {
  int mode = 0;
  if (!ParseMode(modeText, mode)) {
    return Usage(
        fmt::format("\"{}\" is no colour mode: a decimal number, or 0x and a hexadecimal "
                    "one, of 32 bits",
                    Printable(modeText)));
  }
  AStringArray names;
  AStringArray dark;
  GetStandardColorNamesByColorMode(mode, names);
  GetDarkNames(mode, dark);
  if (names.empty()) return Refused(fmt::format("colour mode {} has no inks", ModeText(mode)));
  const int channels = GetNumberOfChannels(mode);
  const AStringArray dilutions = Dilutions(names, GetNumberOfDarkChannels(mode));
  const std::string space = SpaceOf(mode, channels);
  if (json) {
    const Json document = {{"mode", mode},
                           {"names", Listed(names)},
                           {"dark", Listed(dark)},
                           {"lightAndMedium", Listed(dilutions)},
                           {"channels", channels},
                           {"darkChannels", GetNumberOfDarkChannels(mode)},
                           {"nonDarkChannels", GetNumberOfNonDarkChannels(mode)},
                           {"colorSpace", space.empty() ? Json() : Json(space)}};
    return Done(document.dump(2, ' ', kAsciiOnly) + '\n');
  }
  return Done(fmt::format(
      "mode {}\n  inks              {}\n  dark              {} ({})\n"
      "  light and medium  {} ({})\n  channels          {}\n"
      "  ICC colour space  {}\n",
      ModeText(mode), Joined(names), Joined(dark), GetNumberOfDarkChannels(mode), Joined(dilutions),
      GetNumberOfNonDarkChannels(mode), channels, space.empty() ? "none" : space));
}

}  // namespace vkcl::tool
