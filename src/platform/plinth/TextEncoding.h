// The host's narrow text, UTF-8 and wide characters, by the system's own converters.
#pragma once

#include <string>
#include <string_view>

namespace vkcl {

/// Text of the host's narrow encoding as UTF-8, the whole length, zeros included. Bytes that are no
/// text of that encoding become U+FFFD. The encoding is the ANSI code page on Windows; elsewhere
/// the charset of the locale that the program has set, else of the environment's, and UTF-8 where
/// neither names one (the "C" locale).
std::string HostTextToUtf8(std::string_view text);

/// The way back. Characters that the host's encoding does not have, and bytes that are no UTF-8,
/// are lost: empty is the answer to a text that cannot be converted as a whole.
std::string Utf8ToHostText(std::string_view utf8);

/// Whether the host's encoding is UTF-8.
inline bool HostIsUtf8() {
  constexpr std::string_view kLetter = "\xC3\xA4";
  return Utf8ToHostText(kLetter) == kLetter;
}

///@{
/// UTF-8 and wide characters (UTF-16 on Windows, UTF-32 elsewhere). What is no text becomes U+FFFD.
std::wstring Utf8ToWide(std::string_view utf8);
std::string WideToUtf8(std::wstring_view wide);
///@}

}  // namespace vkcl
