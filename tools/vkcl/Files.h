// The files that a verb is given, one after the other or several at once.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "InOrder.h"

namespace vkcl::tool {

struct FilesOptions {
  std::vector<std::string> names;  ///< as they stand on the command line
  bool recursive = false;          ///< folders stand for the profiles in and below them
  unsigned jobs = 0;               ///< threads; 0 for one a processor core
};

struct NamedFile {
  std::string name;     ///< for people; not made printable
  std::string path;     ///< where it is opened
  std::string problem;  ///< why it is not to be opened; empty when it is
};

/// The files that are meant, folders put into the order of their names.
std::vector<NamedFile> FilesOf(const FilesOptions& options);

/// Calls `work` with each file, in several threads, and what it returns in the files' order in this
/// one. Shows the progress while it lasts.
void ForEachFile(const FilesOptions& options, const std::function<Finish(const NamedFile&)>& work);

}  // namespace vkcl::tool
