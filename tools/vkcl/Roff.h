// Manual pages in the man macros of troff.
#pragma once

#include <string>
#include <string_view>

#include "CommandTree.h"

namespace vkcl::tool {

/// The text as troff prints it, sign by sign, wherever on a line it stands.
std::string RoffText(std::string_view text);

/// The page of the command: "vkcl-colors-mode", section 1.
std::string ManualPage(const Command& command);

}  // namespace vkcl::tool
