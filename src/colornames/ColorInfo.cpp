#include "colornames/ColorInfo.h"

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

int ChannelOf(std::string_view name, const AStringArray& inks) {
  if (name.empty()) return -1;
  for (std::size_t i = 0; i < inks.size(); ++i) {
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
    lightIndex = ChannelOf(kDilutions[colorantIndex].light, inks);
    mediumIndex = ChannelOf(kDilutions[colorantIndex].medium, inks);
    return 1;
  });
}
