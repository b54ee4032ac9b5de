// The ink split as it is stored.
#pragma once

#include "platform/Export.h"
#include "profile/VKCLProfile.h"
#include "split/SplitParam.h"

namespace vkcl {

/// Reads tag 'QX50' with its records taken from payload offset 20, where the writer puts them.
///
/// VKCLProfileHandler::GetSplitParam takes them from offset 16, and its callers rely on the bytes
/// that this gives; so it stays, and whoever shows, plots, exports or checks a split reads it here.
///
/// True when the whole split is there: a version 2, 3 or 4, a count of 0 or more, and a payload
/// that holds as many records. Otherwise false, and `split` is unchanged. Nothing is converted.
VKCL_API bool ReadStoredSplit(const VKCLProfile& profile, SplitParam& split);

}  // namespace vkcl
