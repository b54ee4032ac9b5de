// Scripts with which shells complete command lines, made from the tree of what these may be.
#pragma once

#include <string>

#include "CommandTree.h"

namespace vkcl::tool {

std::string BashCompletion(const Command& root);
std::string ZshCompletion(const Command& root);
std::string FishCompletion(const Command& root);

/// The text as one word of a script for bash or zsh.
std::string ShellQuoted(const std::string& text);

}  // namespace vkcl::tool
