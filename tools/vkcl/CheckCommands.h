// The verbs about other makers' profiles: check, compact.
#pragma once

#include <string>

#include "Files.h"
#include "Outcome.h"

namespace vkcl::tool {

/// Prints what is wrong with the files, or unusual about them, with `json` as one array with a
/// document for each file. Refused when one has a finding of severity error.
Outcome Check(const FilesOptions& files, bool json);
/// Writes a copy with the tag data in table order, each tag's bytes kept.
Result Compact(const std::string& input, const std::string& output);

}  // namespace vkcl::tool
