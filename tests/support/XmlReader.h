// XML files as a reader that the library has no part in (Python's) sees them.
#pragma once

#include <string>

namespace vkcl::testing {

/// Whether python3 can be run here.
bool XmlReaderWorks();

/// What the reader finds in a file, a line for each node, indented by two blanks a level:
///
///     element name="value" other="value" : "text"
///     #comment "text"
///     #pi target "data"
///
/// Attributes are in alphabetical order. The text of an element is all its character data; blanks
/// alone count as layout where the element has children. Texts are written as JSON strings, in
/// ASCII. "refused" and the reason when the file is no well-formed document.
std::string ReadWithPython(const std::string& path);

}  // namespace vkcl::testing
