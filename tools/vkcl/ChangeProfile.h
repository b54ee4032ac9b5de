// Changing a profile without harm to the tags that are not meant.
#pragma once

#include <functional>
#include <span>
#include <string>

#include "Outcome.h"
#include "handler/VKCLProfileHandler.h"
#include "profile/TagChange.h"

namespace vkcl::tool {

using Operation = std::function<Result(VKCLProfileHandler& handler)>;
using LayoutTest = std::function<bool(const VKCLProfile& profile)>;

/// How the verbs that write into a profile do it.
struct ChangeOptions {
  bool inPlace = false;    ///< write into the file where it lies
  bool dryRun = false;     ///< only tell what would be done
  bool hardLinks = false;  ///< also a file that has other names, which keep the old content
};

/// Runs `operation` on the profile at `path`, which is valid when opened with `channels`: on a copy
/// beside it, which takes its place when the operation has succeeded, and which is in table order
/// where `suits` says that the store would damage a tag of the profile as it lies.
Result ChangeProfile(const std::string& path, int channels, const LayoutTest& suits,
                     const ChangeOptions& options, const Operation& operation);

/// Stores and removes whole private tags; says `done` when that is done. `inPlace` is the operation
/// that does the same in the file where it lies.
Result ChangeTags(const std::string& path, std::span<const TagChange> changes,
                  const ChangeOptions& options, const std::string& done, const Operation& inPlace);

}  // namespace vkcl::tool
