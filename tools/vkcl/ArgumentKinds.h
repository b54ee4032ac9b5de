// What arguments of the command line are, beyond their C++ types. CLI11 calls it their type name.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vkcl::tool {

/// A file that is written, or that must have a name.
inline constexpr const char* kFile = "FILE";
/// A file that is only read; "-" is the standard input.
inline constexpr const char* kInput = "INPUT";
/// A file that is written; "-" is the standard output.
inline constexpr const char* kOutput = "OUTPUT";
/// Names of inks, colour modes, and numbers with commas between them: no files.
inline constexpr const char* kName = "NAME";
inline constexpr const char* kMode = "MODE";
inline constexpr const char* kNumbers = "NUMBERS";

/// Words that an argument may be, for the help and the shells. It refuses no other: the verb does,
/// and says more. The words are asked for when somebody wants to see them.
class Words : public CLI::Validator {
 public:
  explicit Words(std::function<std::vector<std::string>()> words) {
    desc_function_ = [words = std::move(words)] {
      return "{" + CLI::detail::join(words(), ",") + "}";
    };
    func_ = [](std::string&) { return std::string(); };
  }
};

}  // namespace vkcl::tool
