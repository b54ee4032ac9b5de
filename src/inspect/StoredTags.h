// The private tags of a profile as they stand in the file, whatever their state.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "platform/plinth/AFile.h"
#include "profile/VKCLProfile.h"

namespace vkcl {

/// One table entry with a signature that begins with "QX".
struct VKCL_API StoredTag {
  std::uint32_t signature = 0;   ///< of the entry, as a number
  std::uint32_t occurrence = 1;  ///< 1 for the first entry of that signature, which readers take
  std::uint32_t offset = 0;      ///< of the element in the file
  std::uint32_t size = 0;        ///< of the element, as the table says
  std::uint64_t held = 0;        ///< bytes of it that are in the file
  /// Whether it is a whole binary 'data' element, as the library writes them, so that what is
  /// behind its 12 bytes of head is the payload.
  bool isData = false;

  ///@{
  /// Place and length of the payload; of a 'data' element only.
  std::uint64_t payloadOffset() const { return std::uint64_t{offset} + 12; }
  std::uint64_t payloadSize() const { return size - std::uint64_t{12}; }
  ///@}
};

/// In table order. `file` is the profile's, open for reading. `good`, when given, tells whether it
/// could be read; if not, tags may look damaged that are not.
VKCL_API std::vector<StoredTag> StoredTagsOf(const VKCLProfile& profile, AFile& file,
                                             bool* good = nullptr);

/// The name under which a document has the tag: its signature, with "#2" and so on behind it for
/// later entries of the same one; signatures that are no text as "0x" and eight digits.
VKCL_API std::string StoredTagName(std::uint32_t signature, std::uint32_t occurrence);
/// The other way; false for a text that names no private tag.
VKCL_API bool ParseStoredTagName(std::string_view name, std::uint32_t& signature,
                                 std::uint32_t& occurrence);

}  // namespace vkcl
