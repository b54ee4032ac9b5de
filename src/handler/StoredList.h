// A data list as it is stored.
#pragma once

#include "platform/Export.h"
#include "privatetags/ProfileDataList.h"
#include "profile/VKCLProfile.h"

namespace vkcl {

/// Reads the data list of a tag. 1 on success. 0, and the list as it was, without a readable tag of
/// at least 24 bytes; 0, and the list cleared, when its counters are negative or announce another
/// number of values than the tag holds.
VKCL_API int ReadStoredList(const VKCLProfile& profile, VKPrivateTagSignature signature,
                            ProfileDataList& list);

}  // namespace vkcl
