#include "colornames/ColorInfo.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "colornames/ColorModes.h"
#include "platform/Guarded.h"

namespace {

struct Dilutions {
  std::string_view light;
  std::string_view medium;
};
constexpr Dilutions kDilutions[] = {
    {"LCyan", "MCyan"}, {"LMagenta", "MMagenta"}, {"LYellow", {}}, {"LBlack", "MBlack"}};

// Colorants of a definitions file that share a bit make the list longer than the mode has channels;
// a place beyond those names no channel.
int ChannelOf(std::string_view name, const AStringArray& inks, int channels) {
  if (name.empty()) return -1;
  const auto count = std::min(inks.size(), static_cast<std::size_t>(channels));
  for (std::size_t i = 0; i < count; ++i) {
    if (inks[i].str() == name) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace

int ColorUtils::ColorInfo::GetLightMediumIndex(int colorMode, int colorantIndex, int& lightIndex,
                                               int& mediumIndex) {
  lightIndex = -1;
  mediumIndex = -1;
  if (colorantIndex < 0 || colorantIndex >= static_cast<int>(std::size(kDilutions))) return 0;
  return vkcl::Guarded([&] {
    AStringArray inks;
    GetStandardColorNamesByColorMode(colorMode, inks);
    if (inks.empty()) return 0;
    const int channels = GetNumberOfChannels(colorMode);
    lightIndex = ChannelOf(kDilutions[colorantIndex].light, inks, channels);
    mediumIndex = ChannelOf(kDilutions[colorantIndex].medium, inks, channels);
    return 1;
  });
}
