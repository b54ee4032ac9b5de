// vkcl diff: what two profiles differ in.
#pragma once

#include <string>

#include "Outcome.h"

namespace vkcl::tool {

struct DiffOptions {
  std::string before;
  std::string after;
  bool json = false;
  bool all = false;  ///< every value; else a few of each tag
};

/// Prints the differences as they are found. Refused, without a message, when there are some.
Result Diff(const DiffOptions& options);

}  // namespace vkcl::tool
