// Reading one tag into memory of its own.
#pragma once

#include <cstring>

#include "privatetags/PayloadCursor.h"
#include "privatetags/VKPrivateTag.h"
#include "profile/TableLayout.h"
#include "profile/VKCLProfile.h"

namespace vkcl {

/// The payload of one tag, read whole; released with the object.
class TagPayload {
 public:
  TagPayload(const VKCLProfile& profile, VKPrivateTagSignature signature) {
    tag_.SetSignature(signature);
    read_ = profile.ReadVKPrivateTag(&tag_, 1) != 0;
  }
  TagPayload(const TagPayload&) = delete;
  TagPayload& operator=(const TagPayload&) = delete;

  explicit operator bool() const { return read_; }
  const char* bytes() const { return tag_.GetData(); }
  std::size_t size() const { return tag_.GetTagSize(); }
  PayloadReader Reader() const { return {bytes(), size()}; }

 private:
  VKPrivateTag tag_;
  bool read_ = false;
};

/// Length of the payload of a tag; 0 without the tag.
inline std::size_t PayloadSize(const VKCLProfile& profile, VKPrivateTagSignature signature) {
  const std::size_t size = profile.GetTagSize(static_cast<icTagSignature>(signature));
  return size > kDataHead ? size - kDataHead : 0;
}

/// Reads a tag that is the image of a record into the record, as far as both reach. Fails for a
/// payload of fewer than `least` bytes.
template <class Record>
int ReadRecord(const VKCLProfile& profile, VKPrivateTagSignature signature, Record& record,
               std::size_t least) {
  static_assert(std::is_trivially_copyable_v<Record>);
  if (PayloadSize(profile, signature) < least) return 0;
  return profile.ReadVKPrivateTag(signature, &record, static_cast<unsigned long>(sizeof record),
                                  nullptr);
}

/// Puts a new file in the place of an old one, if any: 1. The old one is gone also when the new
/// one cannot be created; a file that cannot be written whole is not left. A device or a pipe stays
/// as it is, and nothing is written: 0.
int WriteNewFile(const AFilePath& path, const char* bytes, std::size_t length);

}  // namespace vkcl
