// The verbs about the VSD document: vsd, vsd create, vsd embed, vsd extract.
#pragma once

#include <string>

#include "ChangeProfile.h"
#include "Outcome.h"

namespace vkcl::tool {

/// What a document holds; `path` is the document, or a profile that has one beside it.
Result VsdShow(const std::string& path, bool json);
/// Makes the document of a profile, with the profile's colour parameters.
Result VsdCreate(const std::string& profile, bool force);
/// Stores the document of a profile in the profile.
Result VsdEmbed(const std::string& profile, const ChangeOptions& how);
/// Writes the document that is stored in a profile to its place beside the profile.
Result VsdExtract(const std::string& profile, bool force);

}  // namespace vkcl::tool
