// Files that verbs write: what stands in their way, in words.
#pragma once

#include <string>

#include "Outcome.h"

namespace vkcl::tool {

/// Why the file is not written where something is already: no file, or, without `force`, anything.
/// Empty when it may be written.
std::string WhyKept(const std::string& path, bool force);

/// What keeps a file from being written, as far as it can be seen without writing: a folder that is
/// not there, a permission. Empty when nothing is seen.
std::string WhyNotWritable(const std::string& path);

/// The refusal of a verb that could not write the file, with the reason as far as it can be seen
/// afterwards.
Result NotWritten(const std::string& path);

}  // namespace vkcl::tool
