// Where the tags of a profile lie in its file.
#pragma once

#include <cstdint>
#include <vector>

#include "profile/icc.h"

class VKCLProfile;

namespace vkcl {

/// The header's size and the tag table as the profile's file holds them, in host order.
///
/// VKCLProfile::header and VKCLProfile::tagTable are what the object reports. They differ from the
/// file after a merge, and for a tag whose replacement by another length failed. Whatever lays out,
/// copies, compares or judges a file takes these.
struct TableInFile {
  /// Throws std::bad_alloc.
  explicit TableInFile(const VKCLProfile& profile);

  bool isWhole = false;     ///< whether the object read the whole table; if not, `tags` is empty
  std::uint32_t size = 0;   ///< the header's size field
  std::vector<icTag> tags;  ///< in table order
};

}  // namespace vkcl
