// What a profile is, learned by opening it once: for lists of many files.
#pragma once

#include <cstdint>

#include "platform/Export.h"
#include "platform/plinth/AFilePath.h"
#include "profile/VKCLProfile.h"
#include "profile/icc.h"

namespace vkcl {

/// What a VKCLProfile that has just been opened answers, without the object.
struct ProfileIdentity {
  icProfileClassSignature deviceClass = {};  ///< VKCLProfile::GetDeviceClass
  icColorSpaceSignature colorSpace = {};     ///< VKCLProfile::GetColorSpace
  icColorSpaceSignature pcs = {};            ///< VKCLProfile::GetPCS
  std::int32_t channelCount = 0;             ///< VKCLProfile::channelCount
  std::uint32_t tagCount = 0;                ///< entries of the tag table
  bool isOutput = false;                     ///< VKCLProfile::isValidOutputICC
  bool isOwn = false;                        ///< VKCLProfile::isVKCLProfile
  /// How far its making has come, by its tags alone; VKCLProfile::GetVKCLProfileFinishedState.
  VKCLProfileFinishedState byTags = FinishedNone;
  /// The same with the status of the colour parameters; FinishedNone, too, when they cannot be
  /// read.
  VKCLProfileFinishedState byStatus = FinishedNone;
};

/// Fills `identity` with what the file at `path` is; `channelCount` as with VKCLProfile. False, and
/// `identity` is left alone, for a file that VKCLProfile would not take for a profile.
///
/// Opens the file once, where an object opens it once more for the status, and keeps nothing; a
/// file named ".tmp" is not removed. Reads the first 4,096 bytes, what of the tag table lies behind
/// them, and 24 bytes of the colour parameters.
VKCL_API bool IdentifyProfile(const AFilePath& path, int channelCount,
                              ProfileIdentity& identity) noexcept;

}  // namespace vkcl
