#include "colornames/Colorants.h"

#include <algorithm>
#include <initializer_list>

namespace vkcl {
namespace {

constexpr InkSet MakeSet(std::int32_t mode, std::initializer_list<Colorant> colorants) {
  InkSet set = {mode, 0, {}};
  for (const Colorant colorant : colorants) set.colorants[set.count++] = colorant;
  return set;
}

// Cyan, Magenta, Yellow, Black and what a set has beside them.
constexpr InkSet Cmyk(std::int32_t mode, std::initializer_list<Colorant> others) {
  InkSet set =
      MakeSet(mode, {Colorant::Cyan, Colorant::Magenta, Colorant::Yellow, Colorant::Black});
  for (const Colorant colorant : others) set.colorants[set.count++] = colorant;
  return set;
}

using enum Colorant;

constexpr InkSet kInkSets[] = {
    Cmyk(1, {}),
    Cmyk(2, {LCyan, LMagenta}),
    Cmyk(4, {Orange, Green}),
    MakeSet(8, {Black}),
    MakeSet(16, {Cyan, Magenta, Yellow}),
    Cmyk(32, {Orange, Green, LCyan, LMagenta}),
    Cmyk(64, {MCyan, MMagenta}),
    Cmyk(128, {Orange, Green, MCyan, MMagenta}),
    Cmyk(256, {LCyan, LMagenta, MCyan, MMagenta}),
    MakeSet(512, {ProcessRed, ProcessGreen, ProcessBlue}),
    Cmyk(1024, {LCyan, LMagenta, LBlack}),
    Cmyk(2048, {Red, Blue}),
    Cmyk(4096, {LCyan, LMagenta, LYellow, LBlack}),
    Cmyk(8192, {LCyan, LMagenta, MBlack, LBlack}),
    Cmyk(8194, {Red, Green, Blue}),
    Cmyk(8196, {MCyan, MMagenta, MBlack}),
    Cmyk(8200, {LMagenta, MBlack, LBlack}),
    Cmyk(8208, {Red, Green, Blue, LMagenta, MBlack, LBlack}),
    Cmyk(8224, {Red, Green, Blue, LCyan, LMagenta, MBlack, LBlack}),
    Cmyk(8256, {Orange, Green, MBlack, LBlack}),
    Cmyk(8320, {Red, LMagenta, LBlack}),
};

constexpr bool InOrder() {
  for (std::size_t i = 0; i < std::size(kColorants); ++i) {
    if (static_cast<std::size_t>(kColorants[i].colorant) != i) return false;
  }
  return std::is_sorted(std::begin(kInkSets), std::end(kInkSets),
                        [](const InkSet& a, const InkSet& b) { return a.mode < b.mode; });
}
static_assert(InOrder(), "the tables are looked up by position");

}  // namespace

const InkSet* FindInkSet(std::int32_t mode) {
  const auto* end = std::end(kInkSets);
  const auto* found =
      std::lower_bound(std::begin(kInkSets), end, mode,
                       [](const InkSet& set, std::int32_t code) { return set.mode < code; });
  return found != end && found->mode == mode ? found : nullptr;
}

}  // namespace vkcl
