// The verb that writes a page about profiles.
#pragma once

#include <string>

#include "Files.h"
#include "Outcome.h"

namespace vkcl::tool {

/// Writes the page into the file `output`, "-" for the standard output. A file that exists is
/// replaced with `force` only. Files that are no profiles are in the page with what is wrong
/// with them.
Result Report(const FilesOptions& profiles, const std::string& output, bool force);

}  // namespace vkcl::tool
