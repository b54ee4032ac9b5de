// What two profiles differ in: header, tags, and the fields of the private tags.
#pragma once

#include <functional>
#include <string>

#include "platform/Export.h"
#include "profile/VKCLProfile.h"

namespace vkcl {

/// One thing that two profiles differ in.
struct VKCL_API Difference {
  /// Where it is: "header.creator", "cprt", "QX53.MediaName", "QX50.splits[1].dark[2][0]",
  /// "QX99#2".
  std::string place;
  std::string before;  ///< the value in words; empty for what is only in the second profile
  std::string after;   ///< the value in words; empty for what is only in the first profile
};

/// Takes one difference; false ends the comparison.
using DifferenceSink = std::function<bool(const Difference& difference)>;

/// Compares two valid profiles. Private tags are compared field by field as they are stored, other
/// tags byte by byte; tags of one signature are told apart by their order. Where in the file a tag
/// lies is no difference. True when both could be read; otherwise `why` says which could not.
VKCL_API bool CompareProfiles(const VKCLProfile& before, const VKCLProfile& after,
                              const DifferenceSink& sink, std::string& why) noexcept;

}  // namespace vkcl
