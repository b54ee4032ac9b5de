// The verbs about ink sets: colors mode, colors names.
#pragma once

#include <string>
#include <vector>

#include "Outcome.h"

namespace vkcl::tool {

/// The colour mode of an ink set.
Result ColorMode(const std::vector<std::string>& names, bool json);
/// The inks of a colour mode, which is given as a decimal or, behind "0x", hexadecimal number.
Result ColorNames(const std::string& mode, bool json);

/// Reads a colour mode as people write it; false when it is no number of 32 bits.
bool ParseMode(const std::string& text, int& mode);
/// A colour mode as people read it: flag sets in hexadecimal.
std::string ModeText(int mode);

}  // namespace vkcl::tool
