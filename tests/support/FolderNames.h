// What lies in a folder, and where the folders of a test lie.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#if defined(__linux__)
#include <unistd.h>
#endif

namespace vkcl::testing {

using Names = std::vector<std::string>;

/// The names of everything in a folder, sorted.
inline Names NamesIn(const std::filesystem::path& folder) {
  Names names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// The names of unfinished new files: ".vkcl-", something, ".new".
inline Names UnfinishedIn(const std::filesystem::path& folder) {
  Names names;
  for (const std::string& name : NamesIn(folder)) {
    if (name.starts_with(".vkcl-") && name.ends_with(".new")) names.push_back(name);
  }
  return names;
}

/// While it lives, the folder is the current one.
class CurrentFolder {
 public:
  explicit CurrentFolder(const std::filesystem::path& folder) {
    std::filesystem::current_path(folder);
  }
  ~CurrentFolder() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }
  CurrentFolder(const CurrentFolder&) = delete;
  CurrentFolder& operator=(const CurrentFolder&) = delete;

 private:
  const std::filesystem::path before_ = std::filesystem::current_path();
};

/// While it lives, new folders of tests lie in memory where the system has such a place: for tests
/// that have hundreds of files carried to the medium, and no need of the medium.
class FoldersInMemory {
 public:
#if defined(__linux__)
  FoldersInMemory() {
    std::error_code error;
    if (const char* before = std::getenv("TMPDIR")) before_ = before;
    if (std::filesystem::is_directory("/dev/shm", error) && ::access("/dev/shm", W_OK) == 0) {
      ::setenv("TMPDIR", "/dev/shm", 1);
    }
  }
  ~FoldersInMemory() {
    if (before_) {
      ::setenv("TMPDIR", before_->c_str(), 1);
    } else {
      ::unsetenv("TMPDIR");
    }
  }
#else
  FoldersInMemory() = default;
#endif
  FoldersInMemory(const FoldersInMemory&) = delete;
  FoldersInMemory& operator=(const FoldersInMemory&) = delete;

#if defined(__linux__)
 private:
  std::optional<std::string> before_;
#endif
};

}  // namespace vkcl::testing
