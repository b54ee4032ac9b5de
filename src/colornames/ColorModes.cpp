#include "colornames/ColorModes.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

#include "colornames/ColorDefinitions.h"
#include "colornames/Colorants.h"
#include "colornames/LazyDefinitions.h"
#include "platform/Guarded.h"

namespace {

using vkcl::Colorant;
using vkcl::ColorantRow;
using vkcl::InkKind;
using vkcl::InkSet;
using vkcl::kColorants;
using vkcl::RowOf;
using vkcl::SetOf;
using enum vkcl::Colorant;

constexpr std::uint32_t kFlagSet = 0x80000000u;
constexpr std::uint32_t kNoColorSpace = 0xFFFFFFFFu;
constexpr int kNone = 0;

constexpr std::uint32_t LightAndMediumBits() {
  std::uint32_t bits = 0;
  for (const ColorantRow& row : kColorants) bits |= row.kind != InkKind::Dark ? row.bit : 0;
  return bits;
}

// How a set known by name is told. The first row whose number of names is right, and of whose key
// colorants (each of them a choice) all are there, decides: also where it says that there is none.
struct Recognition {
  std::size_t names;
  std::uint32_t keys[3];
  int mode;
};

constexpr std::uint32_t kAny = ~0u;  // asks for nothing: every list of names has it
constexpr std::uint32_t kRed = Red | ProcessRed;
constexpr std::uint32_t kGreen = Green | ProcessGreen;
constexpr std::uint32_t kBlue = Blue | ProcessBlue;

constexpr Recognition kRecognitions[] = {
    {3, {SetOf(Cyan), kAny, kAny}, 16},
    {3, {kRed, kAny, kAny}, 512},
    {4, {SetOf(Cyan), kAny, kAny}, 1},
    {6, {SetOf(Orange), SetOf(Green), kAny}, 4},
    {6, {kRed, SetOf(Blue), kAny}, 2048},
    {6, {SetOf(LCyan), SetOf(LMagenta), kAny}, 2},
    {6, {SetOf(MCyan), SetOf(MMagenta), kAny}, 64},
    {7, {kRed, SetOf(LMagenta), SetOf(LBlack)}, 8320},
    {7, {kRed, kGreen, kBlue}, 8194},
    // The first of light cyan, medium cyan and light magenta decides alone.
    {7, {SetOf(LCyan), SetOf(LMagenta), SetOf(LBlack)}, 1024},
    {7, {SetOf(LCyan), kAny, kAny}, kNone},
    {7, {SetOf(MCyan), SetOf(MBlack), SetOf(MMagenta)}, 8196},
    {7, {SetOf(MCyan), kAny, kAny}, kNone},
    {7, {SetOf(LMagenta), SetOf(MBlack), SetOf(LBlack)}, 8200},
    // With orange and green only these three are tried.
    {8, {SetOf(Orange), SetOf(Green), SetOf(LCyan)}, 32},
    {8, {SetOf(Orange), SetOf(Green), SetOf(MCyan)}, 128},
    {8, {SetOf(Orange), SetOf(Green), SetOf(MBlack)}, 8256},
    {8, {SetOf(Orange), SetOf(Green), kAny}, kNone},
    {8, {SetOf(LYellow), SetOf(LBlack), kAny}, 4096},
    {8, {SetOf(MBlack), SetOf(LBlack), kAny}, 8192},
    {8, {SetOf(LCyan), SetOf(MCyan), kAny}, 256},
    {10, {SetOf(MBlack), SetOf(LBlack), SetOf(Red)}, 8208},
    {11, {SetOf(MBlack), SetOf(LBlack), SetOf(Red)}, 8224},
};

// Names that differ from the full-strength inks of the set, kept for the callers that know them.
struct DarkNames {
  int mode = 0;
  std::initializer_list<const char*> names;
};
const DarkNames kOtherDarkNames[] = {{8, {"Gray"}}, {512, {"Red", "Green", "Blue"}}};

// The built-in colorants among the names.
std::uint32_t ColorantsIn(const AStringArray& names) {
  std::uint32_t present = 0;
  for (const AString& name : names) {
    for (const ColorantRow& row : kColorants) {
      if (name.str() == row.name) present |= SetOf(row.colorant);
    }
  }
  return present;
}

int RecognizeNamed(std::size_t count, std::uint32_t present) {
  for (const Recognition& row : kRecognitions) {
    const bool found =
        row.names == count &&
        std::all_of(std::begin(row.keys), std::end(row.keys),
                    [&](std::uint32_t key) { return key == kAny || (present & key) != 0; });
    if (found) return row.mode;
  }
  return kNone;
}

void AppendSet(const InkSet& set, AStringArray& names) {
  for (const Colorant colorant : set.inks()) names.append(RowOf(colorant).name);
}

// Whether a mode is a set of flags, not a code.
bool IsFlagSet(int mode) { return mode < 0; }

int ChannelsOfFlags(std::uint32_t flags) { return std::popcount(flags) - 1; }

// The colorants of the file that share a bit with the mode, in file order.
void AppendExtra(std::uint32_t mode, const ColorDefinitions& extra, AStringArray& names) {
  for (std::size_t i = 0; i < extra.names.size(); ++i) {
    if ((extra.flags[i] & mode) != 0) names.append(extra.names[i]);
  }
}

// The built-in colorants of a flag set, dark ones or the others.
void AppendBuiltIn(std::uint32_t mode, bool dark, AStringArray& names) {
  for (const ColorantRow& row : kColorants) {
    if ((row.bit & mode) != 0 && (row.kind == InkKind::Dark) == dark) names.append(row.name);
  }
}

std::uint32_t FlagsOf(const AStringArray& names, std::uint32_t present,
                      AStringArray& orderedNames) {
  std::uint32_t flags = kFlagSet;
  for (const ColorantRow& row : kColorants) {
    if ((present & SetOf(row.colorant)) != 0) flags |= row.bit;
  }
  AppendBuiltIn(flags & ~kFlagSet, true, orderedNames);
  std::size_t place = orderedNames.size();
  AppendBuiltIn(flags & ~kFlagSet, false, orderedNames);

  static vkcl::LazyDefinitions lazy;
  const ColorDefinitions& extra = lazy.Get();
  for (const AString& name : names) {
    for (std::size_t i = 0; i < extra.names.size(); ++i) {
      if (extra.names[i] != name) continue;
      orderedNames.insert(place++, extra.names[i]);
      flags |= extra.flags[i];
    }
  }
  return flags;
}

// The caller drops the ordered names when there is no mode.
int Recognize(const AStringArray& names, AStringArray& orderedNames) {
  const std::uint32_t present = ColorantsIn(names);
  if (names.size() == 1 && (present & (Black | Gray)) != 0) {
    orderedNames.append(names[0]);  // as the caller calls it
    return 8;
  }
  if (const int mode = RecognizeNamed(names.size(), present); mode != kNone) {
    AppendSet(*vkcl::FindInkSet(mode), orderedNames);
    return mode;
  }
  const std::uint32_t flags = FlagsOf(names, present, orderedNames);
  if (static_cast<std::size_t>(ChannelsOfFlags(flags)) == names.size()) {
    return static_cast<int>(flags);
  }
  return 0;
}

void AppendDark(int mode, AStringArray& names) {
  if (IsFlagSet(mode)) {
    const auto flags = static_cast<std::uint32_t>(mode);
    static vkcl::LazyDefinitions lazy;
    AppendBuiltIn(flags, true, names);
    AppendExtra(flags, lazy.Get(), names);
    return;
  }
  for (const DarkNames& other : kOtherDarkNames) {
    if (other.mode != mode) continue;
    for (const char* name : other.names) names.append(name);
    return;
  }
  const InkSet* set = vkcl::FindInkSet(mode);
  if (set == nullptr) return;
  for (const Colorant colorant : set->inks()) {
    if (RowOf(colorant).kind == InkKind::Dark) names.append(RowOf(colorant).name);
  }
}

}  // namespace

int GetColorModeByNames(const AStringArray& names, AStringArray& orderedNames) {
  const int mode = vkcl::Guarded([&] {
    AStringArray ordered;  // the caller's list of names may be the one that is filled
    const int recognized = Recognize(names, ordered);
    orderedNames = std::move(ordered);
    return recognized;
  });
  if (mode == 0) orderedNames.removeAll();
  return mode;
}

int GetColorModeFromNames(const char** names, int count) {
  return vkcl::Guarded([&] {
    if (names == nullptr && count > 0) return 0;
    AStringArray list;
    for (int i = 0; i < count; ++i) list.append(names[i]);
    AStringArray ordered;
    return GetColorModeByNames(list, ordered);
  });
}

void GetStandardColorNamesByColorMode(int mode, AStringArray& names) {
  AStringArray all = vkcl::Guarded([&] {
    AStringArray found;
    if (const InkSet* set = vkcl::FindInkSet(mode)) AppendSet(*set, found);
    if (!IsFlagSet(mode)) return found;
    static vkcl::LazyDefinitions lazy;
    const auto flags = static_cast<std::uint32_t>(mode);
    AppendBuiltIn(flags, true, found);
    AppendExtra(flags, lazy.Get(), found);
    AppendBuiltIn(flags, false, found);
    return found;
  });
  names = std::move(all);
}

int GetNumberOfChannels(int mode) {
  if (IsFlagSet(mode)) return ChannelsOfFlags(static_cast<std::uint32_t>(mode));
  const InkSet* set = vkcl::FindInkSet(mode);
  return set != nullptr ? set->count : 0;
}

int GetNumberOfNonDarkChannels(int mode) {
  if (IsFlagSet(mode))
    return std::popcount(static_cast<std::uint32_t>(mode) & LightAndMediumBits());
  const InkSet* set = vkcl::FindInkSet(mode);
  if (set == nullptr) return 0;
  return static_cast<int>(
      std::count_if(set->inks().begin(), set->inks().end(),
                    [](Colorant colorant) { return RowOf(colorant).kind != InkKind::Dark; }));
}

int GetNumberOfDarkChannels(int mode) {
  if (!IsFlagSet(mode)) return GetNumberOfChannels(mode) - GetNumberOfNonDarkChannels(mode);
  return vkcl::Guarded([&] {
    static vkcl::LazyDefinitions lazy;
    const auto flags = static_cast<std::uint32_t>(mode);
    AStringArray names;
    AppendBuiltIn(flags, true, names);
    AppendExtra(flags, lazy.Get(), names);
    return static_cast<int>(names.size());
  });
}

bool GetDarkNames(const int& mode, AStringArray& names) {
  names = vkcl::Guarded([&] {
    AStringArray found;
    AppendDark(mode, found);
    return found;
  });
  return !names.empty();
}

unsigned int GetColorSpaceFromNumberOfColors(unsigned int numberOfColors, int cmy) {
  constexpr std::uint32_t kRgb = 0x52474220;     // 'RGB '
  constexpr std::uint32_t kCmy = 0x434D5920;     // 'CMY '
  constexpr std::uint32_t kCmyk = 0x434D594B;    // 'CMYK'
  constexpr std::uint32_t kDigit = 0x30434C52;   // '0CLR'
  constexpr std::uint32_t kLetter = 0x37434C52;  // '7CLR': 'A' stands seven behind the digits
  switch (numberOfColors) {
    case 0:
    case 2: return kNoColorSpace;
    case 3: return cmy != 0 ? kCmy : kRgb;
    case 4: return kCmyk;
    default: break;
  }
  if (numberOfColors > 15) return kNoColorSpace;
  return (numberOfColors << 24) + (numberOfColors < 10 ? kDigit : kLetter);
}
