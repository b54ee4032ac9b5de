// vkcl set: fields of the fixed records by name.
#pragma once

#include <string>
#include <vector>

#include "Outcome.h"

namespace vkcl::tool {

/// Applies assignments "RECORD.FIELD=VALUE" or "RECORD.FIELD[INDEX]=VALUE" to the profile at
/// `path`. All of them are checked before anything is written. A profile whose tag data the store
/// would damage is first written anew, in order, beside itself, and takes the place of the old
/// one when everything is stored. `createChannels` above 0 makes a minimal profile of as many
/// channels where there is no file yet.
Result SetFields(const std::string& path, const std::vector<std::string>& assignments, int channels,
                 int createChannels);

/// The fields that can be set, one line each.
std::string SettableFields();

}  // namespace vkcl::tool
