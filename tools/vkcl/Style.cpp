#include "Style.h"

#include <cstdlib>

#include "Host.h"

namespace vkcl::tool {
namespace {

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): set once, by the options
ColorWhen g_when = ColorWhen::Auto;

bool ShowsColor(Stream stream) {
  if (g_when != ColorWhen::Auto) return g_when == ColorWhen::Always;
  const char* refused = std::getenv("NO_COLOR");
  if (refused != nullptr && *refused != '\0') return false;
  return host::IsTerminal(stream == Stream::Output ? stdout : stderr);
}

const char* CodeOf(Ink ink) {
  switch (ink) {
    case Ink::Error: return "1;31";
    case Ink::Warning: return "33";
    case Ink::Note: return "36";
    case Ink::Title: break;
  }
  return "1";
}

}  // namespace

void SetColor(ColorWhen when) { g_when = when; }

std::string Painted(Stream stream, Ink ink, const std::string& text) {
  if (text.empty() || !ShowsColor(stream)) return text;
  return std::string("\x1b[") + CodeOf(ink) + "m" + text + "\x1b[0m";
}

}  // namespace vkcl::tool
