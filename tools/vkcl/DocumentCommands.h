// vkcl dump and apply: the private data of a profile as a document, and back.
#pragma once

#include <string>
#include <vector>

#include "ChangeProfile.h"
#include "Outcome.h"

namespace vkcl::tool {

struct DumpOptions {
  std::string file;
  std::vector<std::string> tags;  ///< the ones that are meant; none means all
  bool json = false;
  std::string output;  ///< a file to write; empty for the standard output
  bool force = false;  ///< replace an existing file
};

/// Writes the document of a profile as it goes.
Result Dump(const DumpOptions& options);

struct ApplyOptions {
  std::string file;
  std::string document;  ///< its name, for people
  std::string path;      ///< where it is opened
  std::string output;    ///< a copy to write instead of changing the file; empty without one
  bool force = false;    ///< replace an existing copy
};

/// Stores what a JSON document holds.
Result Apply(const ApplyOptions& options, const ChangeOptions& how);

}  // namespace vkcl::tool
