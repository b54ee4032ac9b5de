// Files that verbs write: what stands in their way, in words.
#pragma once

#include <functional>
#include <string>

#include "Outcome.h"
#include "profile/VKCLProfile.h"

namespace vkcl::tool {

/// Why the file is not written where something is already: no file, the standard input, or, without
/// `force`, anything. Empty when it may be written.
std::string WhyKept(const std::string& path, bool force);

/// What keeps a file from being written, as far as it can be seen without writing: a folder that is
/// not there, a permission. Empty when nothing is seen.
std::string WhyNotWritable(const std::string& path);

/// The refusal of a verb that could not write the file, with the reason as far as it can be seen
/// afterwards.
Result NotWritten(const std::string& path);

/// The same of a copy of the profile, for which each of its tags must be wholly in its file, but
/// for those that `counts` leaves out.
Result CopyNotWritten(const std::string& path, const VKCLProfile& profile,
                      const std::function<bool(const icTag& tag)>& counts);

}  // namespace vkcl::tool
