// Bytes as they may safely go to a terminal.
#pragma once

#include <string>
#include <string_view>

#include "platform/Export.h"

namespace vkcl {

/// Control characters, marks that turn the direction of text, quotes, backslashes, and bytes that
/// are no UTF-8 are escaped.
VKCL_API std::string PrintableText(std::string_view bytes);

}  // namespace vkcl
