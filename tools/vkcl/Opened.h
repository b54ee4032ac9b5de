// Profiles as the tool opens them.
#pragma once

#include "handler/VKCLProfileHandler.h"

namespace vkcl::tool {

/// Opens profiles of any colour space, for work that no channel takes part in.
inline constexpr int kAnyChannels = 3;

/// A profile whose file outlives the object. The library removes a file named ".tmp" with the
/// object on it, for hosts that load temporary copies; a tool that is shown a file must not.
class OpenedProfile : public VKCLProfile {
 public:
  OpenedProfile(const std::string& path, int channels) : VKCLProfile(AFilePath(path), channels) {}
  ~OpenedProfile() { filePath = AFilePath(); }
  OpenedProfile(const OpenedProfile&) = delete;
  OpenedProfile& operator=(const OpenedProfile&) = delete;
};

/// The same, with the handler's operations.
class OpenedHandler : public VKCLProfileHandler {
 public:
  OpenedHandler(const std::string& path, int channels)
      : VKCLProfileHandler(AFilePath(path), channels) {}
  ~OpenedHandler() { GetProfilePtr()->filePath = AFilePath(); }
  OpenedHandler(const OpenedHandler&) = delete;
  OpenedHandler& operator=(const OpenedHandler&) = delete;
};

}  // namespace vkcl::tool
