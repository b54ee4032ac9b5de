// Text for people: quoted strings, numbers, and signatures (SignatureText).
#pragma once

#include <string>
#include <string_view>

#include "profile/SignatureText.h"  // IWYU pragma: export

namespace vkcl::tool {

/// The bytes as they may safely go to a terminal: control characters, quotes and backslashes are
/// escaped, and so are bytes that are no UTF-8.
std::string Printable(std::string_view bytes);

/// The bytes as valid UTF-8: what is none becomes U+FFFD.
std::string Utf8(std::string_view bytes);

/// JSON goes out in ASCII: no byte of a file's texts reaches a terminal as it is.
inline constexpr bool kAsciiOnly = true;

/// A zero-terminated field of fixed width as text; the whole field without a terminator.
std::string_view FieldText(const char* field, std::size_t width);

/// The shortest decimal text that reads back to the same number, with a point whatever the locale.
std::string NumberText(float number);
std::string NumberText(double number);

/// Two lower-case hexadecimal digits a byte.
std::string HexText(const unsigned char* bytes, std::size_t count);

}  // namespace vkcl::tool
