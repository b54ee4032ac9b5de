// A profile file as a report looks at it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inspect/StoredTags.h"
#include "inspect/TagView.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/AFilePath.h"
#include "profile/VKCLProfile.h"

namespace vkcl {

/// A private tag, seen through its schema.
struct ReadTag {
  const StoredTag* tag = nullptr;       ///< null when the file has none
  std::unique_ptr<ByteSource> payload;  ///< what `view` fetches from
  std::optional<RecordView> view;       ///< nothing when the payload does not have the form
  std::string why;                      ///< it has not

  /// A field of the record; null when there is no view, or no such field.
  const FieldView* Find(std::string_view name) const { return view ? view->Find(name) : nullptr; }
};

class ShownFile {
 public:
  /// `number` tells the file's marks in the page from those of others.
  ShownFile(const AFilePath& path, std::size_t number);

  const AFilePath& path() const { return path_; }
  /// The mark of a place in the page: "f1-" and the name of the place.
  std::string Id(std::string_view place) const { return id_ + '-' + std::string(place); }
  const std::string& id() const { return id_; }

  /// Whether header and tag table could be read.
  bool isProfile() const { return profile_.isValidICC() != 0; }
  const VKCLProfile& profile() const { return profile_; }
  /// 0 when the colour space does not tell.
  int channels() const { return channels_; }
  std::uint64_t length() const { return length_; }

  /// The tag table.
  const std::vector<icTag>& table() const { return table_; }
  const std::vector<StoredTag>& privateTags() const { return tags_; }
  bool Has(std::uint32_t signature) const;
  /// The first tag of a signature. It fetches from this file, which must outlive it.
  ReadTag Read(std::uint32_t signature) const;
  ReadTag Read(const StoredTag& tag) const;

  /// Up to `length` bytes from `offset` of the file.
  std::string Bytes(std::uint64_t offset, std::size_t length) const;

  /// The colour mode of the colour parameters; 0 without them.
  std::int32_t colorMode() const { return colorMode_; }
  /// Status of the colour parameters; nothing without them.
  std::optional<std::int32_t> status() const { return status_; }

 private:
  // The library removes a file named ".tmp" with the object on it; one that is shown must stay.
  struct KeptProfile : VKCLProfile {
    using VKCLProfile::VKCLProfile;
    KeptProfile(const KeptProfile&) = delete;
    KeptProfile& operator=(const KeptProfile&) = delete;
    ~KeptProfile() { filePath = AFilePath(); }
  };

  static int ChannelsOf(const AFilePath& path);

  AFilePath path_;
  std::string id_;
  int channels_;
  KeptProfile profile_;
  mutable AFile file_;
  std::uint64_t length_ = 0;
  std::vector<icTag> table_;
  std::vector<StoredTag> tags_;
  std::int32_t colorMode_ = 0;
  std::optional<std::int32_t> status_;
};

/// Names of the channels of a colour mode, when there are `count` of them; otherwise what the
/// colour space of the values says of them; otherwise "value 1" and so on, of the first 64.
std::vector<std::string> ChannelNames(std::uint32_t space, std::int32_t colorMode,
                                      std::uint64_t count);
/// Whether values of that colour space are amounts of colorants.
bool IsDeviceSpace(std::uint32_t space);
/// The inks of a colour mode with commas between them; empty for a mode that has none.
std::string InkNames(std::int32_t colorMode);

/// The text of a 'desc', 'text' or 'mluc' element of the standard; empty for what is none.
std::string StandardText(const std::string& element);

}  // namespace vkcl
