// A profile file as Little CMS reads it: piece by piece, so that nothing is read but what is asked
// for, however large the file is.
#pragma once

#include <lcms2.h>
#include <lcms2_plugin.h>

#include <array>
#include <cstdint>
#include <string>

#include "platform/plinth/AFile.h"
#include "platform/profiler/ProfilerObjects.h"

namespace vkcl::profiler {

/// An open file; it must outlive the profiles that are opened from it.
class ProfileSource {
 public:
  explicit ProfileSource(const std::string& path);
  ProfileSource(const ProfileSource&) = delete;
  ProfileSource& operator=(const ProfileSource&) = delete;

  /// Null for a file that cannot be read or is no ICC profile.
  OpenProfile Open(const Context& context);

 private:
  static ProfileSource& Of(cmsIOHANDLER* handler);
  static cmsUInt32Number Read(cmsIOHANDLER* handler, void* buffer, cmsUInt32Number size,
                              cmsUInt32Number count);
  static cmsBool Seek(cmsIOHANDLER* handler, cmsUInt32Number offset);
  static cmsUInt32Number Tell(cmsIOHANDLER* handler);

  bool Take(void* buffer, std::uint64_t size);

  AFile file_;
  std::uint64_t length_ = 0;
  std::uint64_t position_ = 0;
  // What was read last: Little CMS asks for a few bytes at a time.
  std::array<char, 4096> window_ = {};
  std::uint64_t windowStart_ = 0;
  std::uint64_t windowEnd_ = 0;
  cmsIOHANDLER handler_ = {};
};

}  // namespace vkcl::profiler
