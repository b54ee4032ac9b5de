// The verbs about other makers' profiles: check, compact.
#pragma once

#include <string>
#include <vector>

#include "Outcome.h"

namespace vkcl::tool {

/// What is wrong with files, or unusual about them. Refused, with the text all the same, when one
/// has a finding of severity error.
Result Check(const std::vector<std::string>& paths, bool json);
/// Writes a copy with the tag data in table order, each tag's bytes kept.
Result Compact(const std::string& input, const std::string& output);

}  // namespace vkcl::tool
