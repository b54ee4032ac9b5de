#include "profile/TagLayout.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <span>
#include <utility>
#include <vector>

#include "platform/Bytes.h"
#include "platform/Guarded.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/WholeFile.h"
#include "privatetags/ParameterRecords.h"
#include "profile/TableInFile.h"
#include "profile/TableLayout.h"

namespace vkcl {
namespace {

std::uint64_t RegionStart(std::span<const icTag> table) { return TableEnd(table.size()); }

std::uint64_t EndOf(const icTag& tag) { return std::uint64_t{tag.offset} + tag.size; }

std::uint64_t PaddedEndOf(const icTag& tag) { return std::uint64_t{tag.offset} + PadTo4(tag.size); }

// Header size, file and tags agree on where the profile ends, and the end is padded.
bool EndsAgree(const TableInFile& stored, std::uint64_t fileLength) {
  const std::uint64_t size = stored.size;
  const std::span<const icTag> table = stored.tags;
  return size == fileLength && size % 4 == 0 && size >= RegionStart(table) &&
         std::all_of(table.begin(), table.end(), [&](const icTag& tag) {
           return tag.offset >= RegionStart(table) && EndOf(tag) <= size;
         });
}

// The block that a replacement writes belongs to this tag alone.
bool OwnsBlock(std::span<const icTag> table, std::size_t index) {
  for (std::size_t i = 0; i < table.size(); ++i) {
    const bool apart =
        EndOf(table[i]) <= table[index].offset || PaddedEndOf(table[index]) <= table[i].offset;
    if (i != index && !apart) return false;
  }
  return true;
}

// The tags behind the one that changes its length lie one behind the other up to the end, and
// those before it lie before it.
bool CanBeRebuiltFrom(std::span<const icTag> table, std::size_t index, std::uint64_t size) {
  if (index == 0 && table[0].offset != RegionStart(table)) return false;
  for (std::size_t i = 0; i < index; ++i) {
    if (EndOf(table[i]) > table[index].offset) return false;
  }
  for (std::size_t i = index + 1; i < table.size(); ++i) {
    if (table[i].offset != PaddedEndOf(table[i - 1])) return false;
  }
  return PaddedEndOf(table.back()) == size;
}

// A tag on its way into a new file.
struct Piece {
  std::uint32_t signature;
  std::span<const char> bytes;
  bool isWhole;  // all of it is there
};

std::vector<Piece> PiecesOf(const VKCLProfile& profile, const FileContent& source) {
  std::vector<Piece> pieces;
  for (const icTag& tag : TableInFile(profile).tags) {
    const bool isWhole = EndOf(tag) <= source.size;
    pieces.push_back(
        {tag.sig,
         isWhole ? std::span(source.bytes.get() + tag.offset, tag.size) : std::span<const char>(),
         isWhole});
  }
  return pieces;
}

// Where the entries of a profile's table are.
class Entries {
 public:
  static constexpr std::size_t kNone = SIZE_MAX;

  explicit Entries(const std::vector<Piece>& pieces) {
    std::map<std::uint32_t, std::uint32_t> seen;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      places_[{pieces[i].signature, ++seen[pieces[i].signature]}] = i;
    }
  }

  // The entry that a change means; kNone when there is none.
  std::size_t Find(const TagChange& change) const {
    const auto found = places_.find({change.signature, change.occurrence});
    return found == places_.end() ? kNone : found->second;
  }

 private:
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::size_t> places_;
};

// Leaves each signature the places that it has, and gives them to its entries by occurrence.
void OrderByOccurrence(std::vector<const TagChange*>& added) {
  std::map<std::uint32_t, std::vector<const TagChange*>> left;
  for (const TagChange* change : added) left[change->signature].push_back(change);
  for (auto& [signature, changes] : left) {
    std::sort(changes.begin(), changes.end(),
              [](const TagChange* a, const TagChange* b) { return a->occurrence > b->occurrence; });
  }
  for (const TagChange*& change : added) {
    std::vector<const TagChange*>& rest = left[change->signature];
    change = rest.back();
    rest.pop_back();
  }
}

// The tags of a profile as the changes want them.
std::vector<Piece> Changed(std::vector<Piece> pieces, const Entries& entries,
                           std::span<const TagChange> changes) {
  std::vector<bool> removed(pieces.size());
  std::vector<const TagChange*> added;
  for (const TagChange& change : changes) {
    const std::size_t index = entries.Find(change);
    if (index == Entries::kNone) {
      if (!change.remove) added.push_back(&change);
    } else if (change.remove) {
      removed[index] = true;
    } else {
      pieces[index] = {change.signature, change.element, true};
    }
  }
  std::vector<Piece> all;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (!removed[i]) all.push_back(pieces[i]);
  }
  OrderByOccurrence(added);
  for (const TagChange* change : added) all.push_back({change->signature, change->element, true});
  return all;
}

// Room that the changes take at most, in the table and behind it.
std::uint64_t LengthOf(std::span<const TagChange> changes) {
  std::uint64_t length = 0;
  for (const TagChange& change : changes) length += kTableEntry + PadTo4(change.element.size());
  return length;
}

// The colour mode in a tag of colour parameters; 0 where it is too short for one.
std::int32_t ColorModeIn(std::span<const char> element) {
  constexpr std::size_t kColorMode = kDataHead + offsetof(VKColorParam, ColorMode);
  std::int32_t mode = 0;
  if (element.size() >= kColorMode + sizeof mode) {
    std::memcpy(&mode, element.data() + kColorMode, sizeof mode);
  }
  return mode;
}

// The colour mode that takes the place of another one; 0 when none does.
std::int32_t NewColorMode(const std::vector<Piece>& pieces, const Entries& entries,
                          std::span<const TagChange> changes) {
  const auto change = std::find_if(changes.begin(), changes.end(), [](const TagChange& each) {
    // Readers take the first entry.
    return each.signature == QX53 && each.occurrence == 1 && !each.remove;
  });
  const std::size_t index = change != changes.end() ? entries.Find(*change) : Entries::kNone;
  if (index == Entries::kNone) return 0;
  const std::int32_t mode = ColorModeIn(change->element);
  return mode != ColorModeIn(pieces[index].bytes) ? mode : 0;
}

std::uint64_t LengthOf(const AFilePath& path) {
  AFile file;
  const std::int64_t length = file.open(path, AFile::Read) ? file.length() : -1;
  return length < 0 ? 0 : static_cast<std::uint64_t>(length);
}

}  // namespace

bool TagDataSuitWriting(const VKCLProfile& profile, VKPrivateTagSignature sig,
                        unsigned long length) {
  if (profile.isValidICC() == 0 || length > UINT32_MAX - kDataHead) return false;
  return Guarded([&] {
    const TableInFile stored(profile);
    const std::span<const icTag> table = stored.tags;
    if (!EndsAgree(stored, LengthOf(profile.filePath))) return false;
    const auto found = std::find_if(table.begin(), table.end(), [&](const icTag& tag) {
      return static_cast<std::uint32_t>(tag.sig) == static_cast<std::uint32_t>(sig);
    });
    if (found == table.end()) {
      return table.empty() || table.front().offset == RegionStart(table);
    }
    const auto index = static_cast<std::size_t>(found - table.begin());
    if (!OwnsBlock(table, index)) return false;
    return found->size == length + kDataHead || CanBeRebuiltFrom(table, index, stored.size);
  });
}

bool TagDataSuitAppending(const VKCLProfile& profile) {
  if (profile.isValidICC() == 0) return false;
  return Guarded([&] {
    const TableInFile stored(profile);
    const std::span<const icTag> table = stored.tags;
    if (!EndsAgree(stored, LengthOf(profile.filePath))) return false;
    return table.empty() ||
           (table.front().offset == RegionStart(table) && PaddedEndOf(table.back()) == stored.size);
  });
}

bool WriteArranged(const VKCLProfile& profile, AFile& to) {
  return WriteTags(profile, {}, TagBlocks::Own, to);
}

bool WriteChanged(const VKCLProfile& profile, std::span<const TagChange> changes, AFile& to) {
  return WriteTags(profile, changes, TagBlocks::Shared, to);
}

bool WriteTags(const VKCLProfile& profile, std::span<const TagChange> changes, TagBlocks blocks,
               AFile& to) {
  if (profile.isValidICC() == 0) return false;
  return Guarded([&] {
    const FileContent source = ReadWholeFile(profile.filePath);
    if (!source.bytes) return false;
    const std::vector<Piece> before = PiecesOf(profile, source);
    const Entries entries(before);
    icHeader header = profile.header;
    SetColorSpaceOf(NewColorMode(before, entries, changes), header);
    const std::vector<Piece> pieces = Changed(before, entries, changes);
    const bool isWhole =
        std::all_of(pieces.begin(), pieces.end(), [](const Piece& piece) { return piece.isWhole; });
    if (!isWhole || pieces.empty()) return false;
    std::vector<icTag> table;
    std::vector<host::Slice> slices(1);  // the head, when it is known
    std::uint64_t position = TableEnd(pieces.size());
    const char zeros[4] = {};
    std::map<std::pair<const char*, std::size_t>, std::uint32_t> placed;
    for (const Piece& piece : pieces) {
      if (position > UINT32_MAX || piece.bytes.size() > UINT32_MAX) return false;
      const auto size = static_cast<std::uint32_t>(piece.bytes.size());
      const auto at = static_cast<std::uint32_t>(position);
      const auto [first, isNew] = placed.try_emplace({piece.bytes.data(), size}, at);
      if (!isNew && blocks == TagBlocks::Shared && size > 0) {
        table.push_back({static_cast<icTagSignature>(piece.signature), first->second, size});
        continue;
      }
      slices.push_back({piece.bytes.data(), size});
      slices.push_back({zeros, static_cast<std::size_t>(PadTo4(size) - size)});
      table.push_back({static_cast<icTagSignature>(piece.signature), at, size});
      position += PadTo4(size);
    }
    // Tags that share a block are given one each; hundreds of tags on one block are no profile.
    constexpr std::uint64_t kMostGrowth = 16;
    if (position > UINT32_MAX || position > kMostGrowth * source.size + LengthOf(changes)) {
      return false;
    }
    header.size = static_cast<std::uint32_t>(position);
    const std::vector<char> head = VKCLProfile::BuildHead(header, table);
    slices.front() = {head.data(), head.size()};
    return to.writeAt(0, slices) == position;
  });
}

bool ArrangeTagData(const VKCLProfile& profile, const AFilePath& to) {
  AFile file;
  if (profile.isValidICC() == 0 || to.exists()) return false;
  if (!file.open(to, AFile::Write | AFile::New)) return false;
  const bool written = WriteArranged(profile, file);
  if (file.close() && written) return true;
  to.remove();
  return false;
}

}  // namespace vkcl
