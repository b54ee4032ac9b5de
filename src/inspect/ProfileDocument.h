// The private data of a profile as one document, for people and programs to read, keep, compare
// and edit: written from a profile, and read back into tags that are, byte for byte, the same.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "inspect/TextSink.h"
#include "platform/Export.h"
#include "profile/TagChange.h"
#include "profile/VKCLProfile.h"

namespace vkcl {

/// How a document is written.
enum class DocumentForm {
  Json,  ///< everything, exact; docs/profile-document.schema.json describes it
  Text,  ///< for people; long blocks of bytes are shortened
};

/// Writes the private tags of a profile to `sink`, in table order, as they are stored: fields where
/// the payload has the form of the tag, base64 where it has not. `only` names the tags that are
/// meant, by signature ("QX53", of a later entry of it "QX53#2") or by name ("ColorParam"); empty
/// means all. True on success; otherwise `why` says what is wrong, and what was written is no whole
/// document. Memory does not grow with the profile.
VKCL_API bool WriteDocument(const VKCLProfile& profile, const std::vector<std::string>& only,
                            DocumentForm form, const TextSink& sink, std::string& why) noexcept;

/// What a document asks for.
struct VKCL_API Document {
  std::vector<TagChange> tags;     ///< what to store and to remove
  std::vector<std::string> notes;  ///< what is stored as given, though it looks like a mistake
};

/// Reads a JSON document. The order of the fields does not matter, and fields that follow from
/// others (lengths and counts) may be left out; a tag that is null is to be removed. False, and
/// `document` empty, for anything else than a document: `why` names the place and what is wrong.
VKCL_API bool ReadDocument(std::istream& from, Document& document, std::string& why) noexcept;

}  // namespace vkcl
