// A folder of a test's own, and whole files in it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vkcl::testing {

using Bytes = std::vector<unsigned char>;

/// A new, empty folder that is removed, with everything in it, when the object dies.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  /// The path of a file in the folder; nothing is created.
  std::string File(const std::string& name) const { return (path_ / name).string(); }
  /// Writes a file in the folder and gives its path.
  std::string Write(const std::string& name, const Bytes& content) const;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// The content of a file; the test fails when it cannot be read.
Bytes ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const Bytes& content);

}  // namespace vkcl::testing
