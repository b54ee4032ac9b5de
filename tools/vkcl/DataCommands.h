// The verbs that show data: lists, target, options.
#pragma once

#include <string>

#include "Outcome.h"

namespace vkcl::tool {

/// The data lists of a profile: which there are and, with `values`, what they hold. The text of a
/// success is what is printed.
Result Lists(const std::string& path, bool values, bool json);
/// The parsed characterisation target, as a table or JSON.
Result Target(const std::string& path, bool json);
/// The options with which the profile was computed.
Result Options(const std::string& path, bool json);

}  // namespace vkcl::tool
