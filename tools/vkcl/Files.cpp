#include "Files.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <thread>

#include "Progress.h"
#include "StandardInput.h"
#include "Text.h"

namespace vkcl::tool {
namespace {

namespace fs = std::filesystem;

bool IsProfileName(const fs::path& path) {
  std::string ending = path.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending == ".icc" || ending == ".icm";
}

// What lies in a folder, by name. Folders behind symbolic links are not gone into: they could lead
// back.
std::vector<fs::directory_entry> EntriesOf(const fs::path& folder, std::error_code& error) {
  std::vector<fs::directory_entry> entries;
  fs::directory_iterator at(folder, error);
  while (!error && at != fs::directory_iterator()) {
    entries.push_back(*at);
    at.increment(error);
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

void AddFolder(const fs::path& folder, std::vector<NamedFile>& files) {
  std::error_code error;
  const std::vector<fs::directory_entry> entries = EntriesOf(folder, error);
  const std::string name = folder.string();
  if (error) files.push_back({name, name, "it cannot be listed: " + error.message()});
  for (const fs::directory_entry& entry : entries) {
    std::error_code unknown;
    if (entry.is_directory(unknown) && !entry.is_symlink(unknown)) {
      AddFolder(entry.path(), files);
    } else if (IsProfileName(entry.path()) && !entry.is_directory(unknown)) {
      files.push_back({entry.path().string(), entry.path().string(), {}});
    }
  }
}

NamedFile InputOf(const std::string& name) {
  try {
    return {name, InputPath(name), {}};
  } catch (const InputError& error) {
    return {name, name, error.what()};
  }
}

unsigned ThreadsOf(const FilesOptions& options) {
  return options.jobs != 0 ? options.jobs : std::max(std::thread::hardware_concurrency(), 1u);
}

}  // namespace

std::vector<NamedFile> FilesOf(const FilesOptions& options) {
  std::vector<NamedFile> files;
  for (const std::string& name : options.names) {
    std::error_code error;
    if (name == "-" || !fs::is_directory(name, error)) {
      files.push_back(InputOf(name));
    } else if (!options.recursive) {
      files.push_back({name, name,
                       fmt::format("it is a folder; --recursive takes the profiles in it, and so "
                                   "does {}/*.icc",
                                   Printable(name))});
    } else {
      const std::size_t before = files.size();
      AddFolder(name, files);
      if (files.size() == before) {
        files.push_back({name, name, "it holds no files whose names end in .icc or .icm"});
      }
    }
  }
  return files;
}

void ForEachFile(const FilesOptions& options, const std::function<Finish(const NamedFile&)>& work) {
  const std::vector<NamedFile> files = FilesOf(options);
  Progress progress(files.size());
  InOrder(
      files.size(), ThreadsOf(options),
      [&](std::size_t i) -> Finish {
        return [&progress, finish = work(files[i])] {
          progress.Erase();
          finish();
        };
      },
      [&](std::size_t done) { progress.Show(done); });
}

}  // namespace vkcl::tool
