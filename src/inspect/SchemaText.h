// The schema of the private tags as documents of its own.
#pragma once

#include <string>

#include "platform/Export.h"

namespace vkcl {

/// JSON Schema (draft 2020-12) of the documents that WriteDocument writes; docs holds it as
/// profile-document.schema.json.
VKCL_API std::string DocumentSchema();

/// The tags and their fields as Markdown; docs holds it as tags.md.
VKCL_API std::string TagReference();

}  // namespace vkcl
