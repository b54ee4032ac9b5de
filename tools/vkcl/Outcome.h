// How a verb ends.
#pragma once

#include <string>
#include <utility>

namespace vkcl::tool {

/// The exit codes of the tool.
enum class Outcome { Done = 0, Refused = 1, Usage = 2 };

struct Result {
  Outcome outcome = Outcome::Done;
  std::string message = {};  ///< what was done, or why not
};

inline Result Done(std::string message) { return {Outcome::Done, std::move(message)}; }
inline Result Refused(std::string message) { return {Outcome::Refused, std::move(message)}; }
inline Result Usage(std::string message) { return {Outcome::Usage, std::move(message)}; }

}  // namespace vkcl::tool
