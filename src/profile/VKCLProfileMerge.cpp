// Moving private tags into a profile made elsewhere, and leaving them out of a copy. Tag data are
// copied as they are in the file: type, payload and padding.
#include <algorithm>
#include <memory>
#include <unordered_map>

#include "platform/Bytes.h"
#include "platform/Guarded.h"
#include "platform/plinth/FileRewrite.h"
#include "platform/plinth/WholeFile.h"
#include "profile/TableInFile.h"
#include "profile/TableLayout.h"
#include "profile/VKCLProfile.h"

using vkcl::FileEnd;
using vkcl::FileOrigin;
using vkcl::FilePiece;
using vkcl::PadTo4;

namespace {

// Zeros in the place of bytes that a file does not hold, in pieces of one block.
void AppendZeros(std::vector<FilePiece>& pieces, std::uint64_t at, std::uint64_t length) {
  static constexpr std::uint8_t kZeros[65536] = {};
  while (length > 0) {
    const std::uint64_t part = std::min<std::uint64_t>(length, sizeof kZeros);
    pieces.push_back({at, part, kZeros});
    at += part;
    length -= part;
  }
}

// The stretch of a file that holds all of some tags, padding included where it is there.
struct Stretch {
  std::uint64_t begin = UINT64_MAX;
  std::uint64_t end = 0;
};

Stretch StretchOf(const std::vector<icTag>& tags) {
  Stretch stretch;
  for (const icTag& tag : tags) {
    stretch.begin = std::min<std::uint64_t>(stretch.begin, tag.offset);
    stretch.end = std::max(stretch.end, std::uint64_t{tag.offset} + PadTo4(tag.size));
  }
  return stretch;
}

// The bytes of a stretch, as far as the file holds them.
class Held {
 public:
  Held(const AFilePath& path, const Stretch& stretch)
      : content_(vkcl::ReadStretch(path, stretch.begin, stretch.end)),
        begin_(stretch.begin),
        end_(stretch.begin + content_.size) {}

  explicit operator bool() const { return content_.bytes != nullptr; }
  std::uint64_t begin() const { return begin_; }
  std::uint64_t end() const { return end_; }
  const char* at(std::uint64_t offset) const { return content_.bytes.get() + (offset - begin_); }

 private:
  vkcl::FileContent content_;
  std::uint64_t begin_;
  std::uint64_t end_;
};

// A tag with its padding, put to `at`; zeros where the file has ended.
void AppendStored(std::vector<FilePiece>& pieces, const icTag& tag, std::uint64_t at,
                  const Held& held) {
  const std::uint64_t padded = PadTo4(tag.size);
  const std::uint64_t begin = std::clamp<std::uint64_t>(tag.offset, held.begin(), held.end());
  const std::uint64_t there = std::min(padded, held.end() - begin);
  pieces.push_back({at, there, held.at(begin)});
  AppendZeros(pieces, at + there, padded - there);
}

}  // namespace

// The entries whose signature is a private one, or those whose is not, in table order.
std::vector<icTag> VKCLProfile::SelectTags(bool isPrivate) const {
  std::vector<icTag> selected = vkcl::TableInFile(*this).tags;
  std::erase_if(selected,
                [&](const icTag& tag) { return (isVKCLPrivateTag(tag.sig) != 0) != isPrivate; });
  return selected;
}

int VKCLProfile::MergeVKPrivateTagIntoStandICC(VKCLProfile& target) {
  if (valid == 0 || target.valid == 0 || isVKCLProfile() == 0) return 0;
  return vkcl::Guarded([&] {
    if (filePath.isSameFileOrThrow(target.filePath)) return 1;
    if (target.isVKCLProfile() != 0) return 0;
    const std::vector<icTag> tags = SelectTags(true);
    const bool whole =
        std::all_of(tags.begin(), tags.end(), [&](const icTag& tag) { return FileHolds(tag); });
    if (!whole) return 0;
    const Stretch stretch = StretchOf(tags);
    const Held held(filePath, stretch);
    if (!held || (held.begin() == held.end() && stretch.begin != stretch.end)) return 0;

    const auto append = [&](std::vector<FilePiece>& pieces, std::size_t i, std::uint64_t at) {
      AppendStored(pieces, tags[i], at, held);
    };
    const std::uint32_t targetSize = target.header.size;
    if (target.AppendTags(tags, append) == 0) return 0;
    // What is brought up to date is this object's size, not the target's: deliberate. Whoever goes
    // on writing to the target opens it anew.
    header.size = target.header.size;
    target.header.size = targetSize;
    return 1;
  });
}

int VKCLProfile::WriteICCWithoutVKiTags(const char* outputPath) {
  if (outputPath == nullptr || valid == 0) return 0;
  return vkcl::Guarded([&] {
    const AFilePath output(outputPath);
    if (output.isSameFileOrThrow(filePath)) return 0;
    const std::vector<icTag> kept = SelectTags(false);
    if (kept.empty()) return 0;
    const Held held(filePath, StretchOf(kept));
    if (!held) return 0;

    // A tag that shares its data with an earlier one goes on doing so.
    std::vector<icTag> table = kept;
    std::uint64_t position = vkcl::TableEnd(kept.size());
    std::vector<FilePiece> pieces(1);                         // the head, when the size is known
    std::unordered_map<std::uint32_t, std::uint32_t> placed;  // from old offset to new
    for (std::size_t i = 0; i < kept.size(); ++i) {
      if (position > UINT32_MAX) return 0;
      const auto [place, isNew] =
          placed.try_emplace(kept[i].offset, static_cast<std::uint32_t>(position));
      if (isNew) position += PadTo4(kept[i].size);
      table[i].offset = place->second;
      AppendStored(pieces, kept[i], table[i].offset, held);
    }
    if (position > UINT32_MAX) return 0;
    icHeader newHeader = header;
    newHeader.size = static_cast<std::uint32_t>(position);
    const std::vector<char> head = BuildHead(newHeader, table);
    pieces.front() = {0, head.size(), head.data()};
    std::uint64_t length = 0;
    return vkcl::RewriteFile(output, pieces, FileEnd::Cut, FileOrigin::Any, length) ? 1 : 0;
  });
}
