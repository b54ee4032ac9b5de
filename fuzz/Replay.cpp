// Runs a fuzz target over the files of folders, or over single files: the way to look at a finding,
// and how the ordinary tests run the seeds.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "Fuzz.h"

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  std::vector<fs::path> files;
  for (int i = 1; i < argc; ++i) {
    if (!fs::is_directory(argv[i])) {
      files.emplace_back(argv[i]);
      continue;
    }
    for (const auto& entry : fs::recursive_directory_iterator(argv[i])) {
      if (entry.is_regular_file()) files.push_back(entry.path());
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
