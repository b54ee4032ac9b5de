#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>

namespace vkcl::testing {

TempDir::TempDir() {
  std::random_device random;
  do {
    path_ = std::filesystem::temp_directory_path() /
            ("vkcl-test-" + std::to_string(random()) + std::to_string(random()));
  } while (!std::filesystem::create_directory(path_));
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::Write(const std::string& name, const Bytes& content) const {
  WriteFile(path_ / name, content);
  return File(name);
}

Bytes ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::filesystem::path& path, const Bytes& content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(content.data()),
             static_cast<std::streamsize>(content.size()));
  file.close();
  ASSERT_TRUE(file.good()) << path;
}

}  // namespace vkcl::testing
