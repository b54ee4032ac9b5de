// The built-in colorants and the ink sets known by name. All answers about colour modes are derived
// from these two tables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vkcl {

/// The colorants in canonical order: the dark inks that have a bit in flag-set modes, the light and
/// medium ones, and those without a bit.
enum class Colorant : std::uint8_t {
  Cyan,
  Magenta,
  Yellow,
  Black,
  Orange,
  Gray,
  Red,
  Green,
  Blue,
  LCyan,
  LMagenta,
  MCyan,
  MMagenta,
  LBlack,
  LYellow,
  MBlack,
  White,
  ProcessRed,
  ProcessGreen,
  ProcessBlue,
};

enum class InkKind : std::uint8_t { Dark, Light, Medium };

struct ColorantRow {
  Colorant colorant;
  const char* name;
  std::int32_t index;  ///< of the name-by-index lookup
  std::uint32_t bit;   ///< in flag-set modes; 0 for none
  InkKind kind;
};

inline constexpr ColorantRow kColorants[] = {
    {Colorant::Cyan, "Cyan", 0, 0x1, InkKind::Dark},
    {Colorant::Magenta, "Magenta", 1, 0x2, InkKind::Dark},
    {Colorant::Yellow, "Yellow", 2, 0x4, InkKind::Dark},
    {Colorant::Black, "Black", 3, 0x8, InkKind::Dark},
    {Colorant::Orange, "Orange", 7, 0x40, InkKind::Dark},
    {Colorant::Gray, "Gray", 8, 0x80, InkKind::Dark},
    {Colorant::Red, "Red", 9, 0x2000, InkKind::Dark},
    {Colorant::Green, "Green", 6, 0x4000, InkKind::Dark},
    {Colorant::Blue, "Blue", 10, 0x8000, InkKind::Dark},
    {Colorant::LCyan, "LCyan", 4, 0x10, InkKind::Light},
    {Colorant::LMagenta, "LMagenta", 5, 0x20, InkKind::Light},
    {Colorant::MCyan, "MCyan", 15, 0x100, InkKind::Medium},
    {Colorant::MMagenta, "MMagenta", 16, 0x200, InkKind::Medium},
    {Colorant::LBlack, "LBlack", 20, 0x400, InkKind::Light},
    {Colorant::LYellow, "LYellow", 21, 0x800, InkKind::Light},
    {Colorant::MBlack, "MBlack", 22, 0x1000, InkKind::Medium},
    {Colorant::White, "White", 11, 0, InkKind::Dark},
    {Colorant::ProcessRed, "Process_Red", 17, 0, InkKind::Dark},
    {Colorant::ProcessGreen, "Process_Green", 18, 0, InkKind::Dark},
    {Colorant::ProcessBlue, "Process_Blue", 19, 0, InkKind::Dark},
};

constexpr const ColorantRow& RowOf(Colorant colorant) {
  return kColorants[static_cast<std::size_t>(colorant)];
}

/// A set of colorants as one bit each.
constexpr std::uint32_t SetOf(Colorant colorant) { return 1u << static_cast<unsigned>(colorant); }
constexpr std::uint32_t operator|(Colorant a, Colorant b) { return SetOf(a) | SetOf(b); }

/// An ink set known by name: its code and its colorants in canonical order.
struct InkSet {
  std::int32_t mode;
  std::uint8_t count;
  Colorant colorants[11];

  constexpr std::span<const Colorant> inks() const { return {colorants, count}; }
};

/// The set with that code; null for codes of none.
const InkSet* FindInkSet(std::int32_t mode);

}  // namespace vkcl
