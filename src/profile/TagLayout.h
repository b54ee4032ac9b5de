// How tag data lie in a profile file, and whether the store's writers may touch it.
//
// The writers take tag data to lie in table order, one behind the other. Profiles of other makers
// may share a block between tags, leave gaps, keep another order or end unpadded; a write may then
// damage a tag. Callers that write into profiles they did not make ask TagDataSuitWriting first,
// and bring the profile into order with ArrangeTagData where the answer is no.
#pragma once

#include <span>

#include "platform/Export.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/AFilePath.h"
#include "profile/TagChange.h"
#include "profile/VKCLProfile.h"

namespace vkcl {

/// True when storing `length` bytes of payload under `sig` (VKCLProfile::WriteVKPrivateTag) leaves
/// the bytes of every other tag as they are. False too for an invalid profile.
VKCL_API bool TagDataSuitWriting(const VKCLProfile& profile, VKPrivateTagSignature sig,
                                 unsigned long length);

/// True when appending several tags in one pass, or merging into this profile, leaves the bytes of
/// every other tag as they are (VKCLProfile::WriteMultiVKPrivateTags,
/// VKCLProfile::MergeVKPrivateTagIntoStandICC). False too for an invalid profile.
VKCL_API bool TagDataSuitAppending(const VKCLProfile& profile);

/// Writes the profile to a new file at `to` with its tag data in table order, each tag with a
/// block of its own, padded with zeros: the layout that the writers take to be there. Header (but
/// for its size), table order and every tag's bytes are kept; bytes that no tag refers to are not.
/// False when the profile is not valid, a tag is not wholly in the file, the result would exceed
/// 2^32 - 1 bytes or 16 times the file, `to` exists, or the file cannot be written; then there is
/// no file at `to` that was not there before.
VKCL_API bool ArrangeTagData(const VKCLProfile& profile, const AFilePath& to);
/// The same into an open, empty file, which may be left half written on failure.
VKCL_API bool WriteArranged(const VKCLProfile& profile, AFile& to);
/// The same with private tags changed on the way. `changes` name entries of the profile, each once:
/// one that there is keeps its place in the table, others are put behind it in the order of
/// `changes`, but those of one signature by their occurrence. The header stays as it is, but where
/// other colour parameters take the place of stored ones it follows their colour mode
/// (VKCLProfile::UpdateHeaderColorSpace). Tags that share their data, and are not changed, go on
/// sharing them. Only a tag that is changed may be damaged. False, too, when no tag is left.
VKCL_API bool WriteChanged(const VKCLProfile& profile, std::span<const TagChange> changes,
                           AFile& to);

}  // namespace vkcl
