// Runs a fuzz target over the files of folders, or over single files: the way to look at a finding,
// and how the ordinary tests run the seeds. What is not there, and a folder without files, is an
// error: a test must not pass because nothing was run.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "Fuzz.h"

namespace fs = std::filesystem;

namespace {

// Adds the file, or the files of the folder; false when there is none.
bool AddFiles(const fs::path& path, std::vector<fs::path>& files) {
  if (fs::is_regular_file(path)) {
    files.push_back(path);
    return true;
  }
  if (!fs::is_directory(path)) return false;
  const std::size_t before = files.size();
  for (const auto& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  return files.size() > before;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<fs::path> files;
  for (int i = 1; i < argc; ++i) {
    if (!AddFiles(argv[i], files)) {
      std::fprintf(stderr, "%s: no input is there\n", argv[i]);
      return 2;
    }
  }
  std::sort(files.begin(), files.end());
  if (files.empty()) {
    std::fprintf(stderr, "usage: %s FILE_OR_FOLDER...\n", argv[0]);
    return 2;
  }
  for (const fs::path& file : files) {
    std::printf("%s\n", file.string().c_str());
    std::fflush(stdout);
    const vkcl::fuzz::Bytes bytes = vkcl::fuzz::ReadFile(file.string());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  std::printf("%zu inputs\n", files.size());
  return 0;
}
