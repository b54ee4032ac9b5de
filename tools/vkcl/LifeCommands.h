// The verbs that move a profile through its life: merge, strip, lock, embed, extract.
#pragma once

#include <string>
#include <vector>

#include "ChangeProfile.h"
#include "Outcome.h"

namespace vkcl::tool {

/// Appends the private tags of one of the system's own profiles to a standard one.
Result Merge(const std::string& source, const std::string& target, const ChangeOptions& how);
/// Writes a copy without private tags. An existing output is replaced only with `force`.
Result Strip(const std::string& input, const std::string& output, bool force);
Result Lock(const std::string& path, const ChangeOptions& how);
Result Unlock(const std::string& path, const ChangeOptions& how);
/// Stores a file under a kind of embedded file.
Result Embed(const std::string& path, const std::string& kind, const std::string& file,
             const ChangeOptions& how);
/// Writes an embedded file. An existing file is replaced only with `force`.
Result Extract(const std::string& path, const std::string& kind, const std::string& file,
               bool force);
/// The kinds of embedded file, one line each.
std::string EmbeddedKinds();
/// Their names.
std::vector<std::string> EmbeddedKindNames();

}  // namespace vkcl::tool
