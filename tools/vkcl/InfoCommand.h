// The verb info.
#pragma once

#include "Files.h"
#include "Outcome.h"

namespace vkcl::tool {

/// Prints what the files are and hold, and complains of those that are no profiles. With `json`
/// one array with a document for each file.
Outcome Info(const FilesOptions& files, bool json, int channels);

}  // namespace vkcl::tool
