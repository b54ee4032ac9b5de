// Errors, as the tool tells them.
#pragma once

#include <string>

namespace vkcl::tool {

/// One line on the error output, whether or not anybody takes it. The text is safe for a terminal
/// already.
void Complain(const std::string& text);

}  // namespace vkcl::tool
