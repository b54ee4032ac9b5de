// Byte strings of the host as characters of an XML document, and back, without loss.
#pragma once

#include <string>
#include <string_view>

namespace vkcl {

/// The byte string of the host as UTF-8 that holds only characters of XML 1.0 (2.2). Text of the
/// host's encoding becomes what it says. What cannot stand in a document becomes a character for
/// each byte, U+EF00 plus the byte, in Unicode's private use area: control characters other than
/// tab, line feed and carriage return, bytes that are no text of the host's encoding, and these
/// characters themselves. So XmlToHostText gives every byte string back. A carriage return must be
/// written as a reference: readers take one that stands as it is for a line feed.
///
/// The result is the text itself where nothing is to be changed, else it lies in `room`.
std::string_view HostTextToXml(std::string_view text, std::string& room);

/// The way back. Characters that the host's encoding does not have stay as their UTF-8 bytes.
std::string XmlToHostText(std::string_view xml);
/// The same, without a copy where nothing is to be changed; else the result lies in `room`.
std::string_view XmlToHostText(std::string_view xml, std::string& room);

/// Whether the text is UTF-8 and can stand in a document, to be read back as it is.
bool IsXmlText(std::string_view text);

/// Whether the UTF-8 text is a name that an element may have (XML 1.0, 2.3).
bool IsXmlName(std::string_view name);

}  // namespace vkcl
