// What two profiles differ in: header, tags, and the fields of the private tags.
#pragma once

#include <functional>
#include <string>

#include "platform/Export.h"
#include "profile/VKCLProfile.h"

namespace vkcl {

struct VKCL_API Difference {
  /// "header.creator", "cprt", "QX53.MediaName", "QX50.splits[1].dark[2][0]", "QX99#2".
  std::string place;
  /// The values in words; empty for something that is only in the other profile.
  std::string before;
  std::string after;
};

/// Takes one difference; false ends the comparison.
using DifferenceSink = std::function<bool(const Difference& difference)>;

/// Compares two valid profiles. Private tags are compared field by field as they are stored, other
/// tags byte by byte; tags of one signature are told apart by their order. Where in the file a tag
/// lies is no difference. True when both could be read; otherwise `why` says which could not.
VKCL_API bool CompareProfiles(const VKCLProfile& before, const VKCLProfile& after,
                              const DifferenceSink& sink, std::string& why) noexcept;

}  // namespace vkcl
