// "-" for the standard input, where a profile is read.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vkcl::tool {

/// Why nothing can be had through the standard input.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The path at which a file of the command line is opened: the name itself, or, for "-", a private
/// file with what comes through the standard input. That is read at the first call and gone when
/// the tool is. Throws InputError when nothing comes, more
/// than a profile can hold (4 GiB), or it cannot be kept.
std::string InputPath(const std::string& name);

/// The same for any descriptor and limit.
std::string KeptInput(int descriptor, std::uint64_t most);

}  // namespace vkcl::tool
