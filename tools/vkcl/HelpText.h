// The help of a command, for a terminal of 80 columns.
#pragma once

#include <string>

#include "CommandTree.h"

namespace vkcl::tool {

/// Lines of text, the last one ended.
std::string HelpText(const Command& command);

}  // namespace vkcl::tool
