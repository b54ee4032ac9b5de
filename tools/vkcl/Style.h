// Colour on a terminal: little, and for what is worth a look.
#pragma once

#include <string>

namespace vkcl::tool {

enum class ColorWhen { Auto, Always, Never };
enum class Stream { Output, Error };
enum class Ink { Error, Warning, Note, Title };

/// When texts are painted from now on. Auto, as at the start: on a terminal that can, unless
/// NO_COLOR is set (no-color.org). To be called before threads are started.
void SetColor(ColorWhen when);

/// The text, painted where the stream shows colours.
std::string Painted(Stream stream, Ink ink, const std::string& text);

}  // namespace vkcl::tool
