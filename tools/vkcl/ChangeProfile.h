// Changing a profile without harm to the tags that are not meant.
#pragma once

#include <functional>
#include <string>

#include "Outcome.h"
#include "handler/VKCLProfileHandler.h"

namespace vkcl::tool {

using Operation = std::function<Result(VKCLProfileHandler& handler)>;
using LayoutTest = std::function<bool(const VKCLProfile& profile)>;

/// Runs `operation` on the profile at `path`, which is valid when opened with `channels`. Where
/// `suits` says that the store would damage a tag, the operation works on a copy in table order
/// beside the file, which takes the file's place when it has succeeded.
Result ChangeProfile(const std::string& path, int channels, const LayoutTest& suits,
                     const Operation& operation);

}  // namespace vkcl::tool
