// A private tag that is to be stored as it is.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/Export.h"

namespace vkcl {

/// One private tag to store, or to remove.
struct VKCL_API TagChange {
  std::uint32_t signature = 0;   ///< of the tag, as a number
  std::uint32_t occurrence = 1;  ///< 1 for the first table entry of the signature
  bool remove = false;           ///< whether to remove the tag; `element` then has no meaning
  std::vector<char> element;     ///< the whole tag, its head included
};

}  // namespace vkcl
