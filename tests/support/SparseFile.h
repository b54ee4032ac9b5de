// Files that announce more than they hold.
#pragma once

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

namespace vkcl::testing {

/// Gives a file a length without writing to the medium. False where there are no such files, or
/// none of that length may be made.
inline bool Lengthen(const std::string& path, std::uintmax_t length) {
#if !defined(_WIN32)
  void (*const before)(int) = std::signal(SIGXFSZ, SIG_IGN);
#endif
  std::error_code error;
  std::filesystem::resize_file(path, length, error);
#if !defined(_WIN32)
  std::signal(SIGXFSZ, before);
#endif
  return !error;
}

}  // namespace vkcl::testing
