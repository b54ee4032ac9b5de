// The verb split: the ink split of a profile or an XML file, or the default one of an ink set.
#pragma once

#include <string>

#include "ChangeProfile.h"
#include "Outcome.h"

namespace vkcl::tool {

struct SplitOptions {
  std::string file;       ///< a profile, or an XML file with a split; empty with a mode
  std::string mode;       ///< colour mode whose default split is meant
  std::string strengths;  ///< of its inks, with commas between them; empty for none
  int version = 4;        ///< of the default split
  std::string toXml;      ///< XML file that is written
  std::string fromXml;    ///< XML file whose split is stored in the profile
  bool force = false;     ///< replace an existing XML file
  bool json = false;
  ChangeOptions how = {};
};

Result Split(const SplitOptions& options);

}  // namespace vkcl::tool
