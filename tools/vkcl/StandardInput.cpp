#include "StandardInput.h"

#include <cerrno>
#include <system_error>

#include "Host.h"

namespace vkcl::tool {

std::string KeptInput(int descriptor, std::uint64_t most) {
  std::string path;
  const std::int64_t length = host::KeepInput(descriptor, most, path);
  if (length < 0) {
    throw InputError("the standard input cannot be read and kept: " +
                     std::generic_category().message(errno));
  }
  if (length == 0) throw InputError("nothing comes through the standard input");
  if (static_cast<std::uint64_t>(length) > most) {
    throw InputError("more comes through the standard input than a profile can hold");
  }
  return path;
}

std::string InputPath(const std::string& name) {
  if (name != "-") return name;
  constexpr std::uint64_t kLongestProfile = 0xFFFFFFFF;
  constexpr int kStandardInput = 0;
  static const std::string path = KeptInput(kStandardInput, kLongestProfile);
  return path;
}

}  // namespace vkcl::tool
