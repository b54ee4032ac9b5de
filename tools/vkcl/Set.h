// vkcl set: fields of the fixed records by name.
#pragma once

#include <string>
#include <vector>

#include "ChangeProfile.h"
#include "Outcome.h"

namespace vkcl::tool {

/// Applies assignments "RECORD.FIELD=VALUE" or "RECORD.FIELD[INDEX]=VALUE" to the profile at
/// `path`. All of them are checked before anything is written, and all are stored or none.
/// `createChannels` above 0 makes a minimal profile of as many channels where there is no file yet.
Result SetFields(const std::string& path, const std::vector<std::string>& assignments, int channels,
                 int createChannels, const ChangeOptions& how);

/// The fields that can be set, one line each.
std::string SettableFields();
/// How an assignment to each of them begins: "RECORD.FIELD=".
std::vector<std::string> AssignableNames();

}  // namespace vkcl::tool
