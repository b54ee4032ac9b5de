// Writing tags. The file that every writer produces, and takes to be there, numbers big-endian:
//
//        0  header, 128 bytes; its size field is the length of the file
//      128  tag count
//      132  tag table, 12 bytes an entry: signature, offset, size
//   132 + 12 x count   the data region: each tag on a multiple of 4, in table order
//
// A private tag is a 'data' tag: 'data', four zero bytes, flag 1 (binary), payload; its size is
// payload + 12, and zeros fill it up to the next multiple of 4.
//
// A writer states the new file as pieces (FileRewrite.h): a head from memory, what moves of the
// data region, the new tags. Offsets are followed as the table has them, also where tag data do not
// lie in table order; vkcl::ArrangeTagData (TagLayout.h) brings such a file into order first.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "platform/Bytes.h"
#include "platform/Guarded.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/ATime.h"
#include "platform/plinth/FileRewrite.h"
#include "profile/TableInFile.h"
#include "profile/TableLayout.h"
#include "profile/VKCLProfile.h"

using vkcl::FileEnd;
using vkcl::FileOrigin;
using vkcl::FilePiece;
using vkcl::kDataHead;
using vkcl::kTableEntry;
using vkcl::kTableStart;
using vkcl::PadTo4;
using vkcl::TableEnd;

namespace {

constexpr std::uint64_t kMost = UINT32_MAX;

FilePiece FromMemory(std::uint64_t at, const std::vector<char>& bytes) {
  return {at, bytes.size(), bytes.data()};
}

// A whole tag at `at`: the head of binary data, the payload where the caller has it, the padding.
void AppendTag(std::vector<FilePiece>& pieces, std::uint64_t at, const void* data,
               std::uint32_t length) {
  static constexpr std::uint8_t kZeros[4] = {};
  const std::uint64_t end = at + kDataHead + length;
  pieces.push_back({at, kDataHead, vkcl::kBinaryHead});
  pieces.push_back({at + kDataHead, length, data});
  pieces.push_back({end, PadTo4(end - at) - (end - at), kZeros});
}

FilePiece Moved(std::uint64_t from, std::uint64_t length, std::uint64_t to) {
  return {to, length, nullptr, from};
}

bool CanStore(const void* data, std::uint64_t length) {
  return (data != nullptr || length == 0) && length <= kMost - kDataHead;
}

// Moves entries back by `distance`. False when an offset no longer fits its field.
bool Shift(std::vector<icTag>& table, std::uint64_t distance) {
  return std::all_of(table.begin(), table.end(), [&](icTag& tag) {
    const std::uint64_t moved = tag.offset + distance;
    tag.offset = static_cast<std::uint32_t>(moved);
    return moved <= kMost;
  });
}

// Lays the entries from `first` on one behind the other, after the entry before them. False when
// an offset no longer fits its field.
bool Chain(std::vector<icTag>& table, std::size_t first) {
  for (std::size_t i = first; i < table.size(); ++i) {
    const std::uint64_t offset = table[i - 1].offset + PadTo4(table[i - 1].size);
    if (offset > kMost) return false;
    table[i].offset = static_cast<std::uint32_t>(offset);
  }
  return true;
}

icColorSpaceSignature SpaceOfChannels(int channels) {
  if (channels == 3) return icSigRgbData;
  if (channels == 4) return icSigCmykData;
  const std::uint32_t digit = channels <= 9 ? 0x30u + static_cast<std::uint32_t>(channels)
                                            : 0x37u + static_cast<std::uint32_t>(channels);
  return static_cast<icColorSpaceSignature>(digit << 24 | 0x434C52u);  // '?CLR'
}

// D50 as it has always been stored here: the fraction times 65535, not 65536, truncated; the
// integer part stands in the high 16 bits.
constexpr std::int32_t StoredFraction(double value) {
  const int whole = static_cast<int>(value);
  return whole * 65536 + static_cast<std::int32_t>((value - whole) * 65535.0);
}
static_assert(StoredFraction(0.9642) == 0xF6D4 && StoredFraction(1.0) == 0x10000 &&
              StoredFraction(0.8249) == 0xD32B);

}  // namespace

void VKCLProfile::WriteTagTableEntry(void* dest, const icTag* tag) {
  auto* bytes = static_cast<char*>(dest);
  vkcl::StoreBig32(bytes, tag->sig);
  vkcl::StoreBig32(bytes + 4, tag->offset);
  vkcl::StoreBig32(bytes + 8, tag->size);
}

// Writes entries at the cursor and moves it behind them.
void VKCLProfile::WriteTagTable(void** cursor, const icTag* tags, unsigned long count) {
  auto* bytes = static_cast<char*>(*cursor);
  for (unsigned long i = 0; i < count; ++i, bytes += kTableEntry) {
    WriteTagTableEntry(bytes, &tags[i]);
  }
  *cursor = bytes;
}

// Header, count and table as they stand in the file.
std::vector<char> VKCLProfile::BuildHead(const icHeader& newHeader,
                                         const std::vector<icTag>& table) {
  std::vector<char> head(TableEnd(table.size()));
  icHeader fileHeader = newHeader;
  ReverseICCHeader(&fileHeader);
  std::memcpy(head.data(), &fileHeader, sizeof fileHeader);
  vkcl::StoreBig32(head.data() + sizeof fileHeader, static_cast<std::uint32_t>(table.size()));
  void* cursor = head.data() + kTableStart;
  WriteTagTable(&cursor, table.data(), static_cast<unsigned long>(table.size()));
  return head;
}

icTag VKCLProfile::EntryInFile(std::uint32_t index) const {
  icTag entry = tagTable[index];
  for (const auto& [failed, size] : sizesInFile_) {
    if (failed == index) entry.size = size;
  }
  return entry;
}

vkcl::TableInFile::TableInFile(const VKCLProfile& profile)
    : isWhole(profile.tableIsWhole_), size(profile.sizeInFile_) {
  if (!isWhole) return;
  tags.assign(profile.tagTable, profile.tagTable + profile.tagCount);
  for (const auto& [index, sizeInFile] : profile.sizesInFile_) tags[index].size = sizeInFile;
}

// The table of a profile that can be rewritten: the header's size leaves room for it.
bool VKCLProfile::RewritableTable(std::vector<icTag>& table) const {
  vkcl::TableInFile stored(*this);
  table = std::move(stored.tags);
  return stored.isWhole && stored.size >= TableEnd(table.size());
}

// Applies the pieces behind a head that is built here, and then brings the object up to date.
int VKCLProfile::Rewrite(const std::vector<FilePiece>& body, bool cut, std::uint64_t newSize,
                         std::vector<icTag>& table) {
  icHeader newHeader = header;
  newHeader.size = static_cast<std::uint32_t>(newSize);
  const std::vector<char> head = BuildHead(newHeader, table);
  std::vector<FilePiece> pieces = {FromMemory(0, head)};
  pieces.insert(pieces.end(), body.begin(), body.end());
  std::unique_ptr<icTag[]> newTable(new icTag[table.size()]);
  std::copy(table.begin(), table.end(), newTable.get());

  std::uint64_t newLength = 0;
  if (!vkcl::RewriteFile(filePath, pieces, cut ? FileEnd::Cut : FileEnd::Keep, FileOrigin::Existing,
                         newLength)) {
    return 0;
  }
  delete[] tagTable;
  tagTable = newTable.release();
  tagCount = static_cast<std::uint32_t>(table.size());
  header.size = newHeader.size;
  sizeInFile_ = newHeader.size;
  fileLength_ = newLength;
  sizesInFile_.clear();
  return 1;
}

int VKCLProfile::WriteVKPrivateTag(VKPrivateTagSignature sig, const void* data,
                                   unsigned long length) {
  if (!CanStore(data, length)) return 0;
  icTag tag = {static_cast<icTagSignature>(sig), 144,
               static_cast<std::uint32_t>(length) + kDataHead};
  return vkcl::Guarded([&] {
    if (valid == 0) return CreateDummyICC(&tag, data);
    unsigned long index = 0;
    return GetTagIndex(tag, index) != 0 ? UpdateVKPrivateTag(static_cast<int>(index), data, length)
                                        : AddVKPrivateTag(sig, data, length);
  });
}

int VKCLProfile::WriteVKPrivateTag(const VKPrivateTag* tag) {
  return tag != nullptr ? WriteVKPrivateTag(tag->signature, tag->data, tag->size) : 0;
}

int VKCLProfile::UpdateVKPrivateTag(int index, const void* data, unsigned long length) {
  const auto position = static_cast<std::uint32_t>(index);
  const auto newSize = static_cast<std::uint32_t>(length) + kDataHead;
  const icTag stored = EntryInFile(position);
  std::uint32_t& reported = tagTable[position].size;
  if (stored.size == newSize) {
    if (OverwriteTag(stored, data) == 0) return 0;
    reported = newSize;  // an earlier update may have failed
    std::erase_if(sizesInFile_, [&](const auto& failed) { return failed.first == position; });
    return 1;
  }
  // From here on the object reports the new size, also when the update fails: a deliberate
  // asymmetry. The size in the file is remembered.
  if (reported == stored.size) sizesInFile_.emplace_back(position, stored.size);
  reported = newSize;
  return RebuildFrom(position, data, static_cast<std::uint32_t>(length));
}

// Puts a payload of the same length in the place of the old one.
int VKCLProfile::OverwriteTag(const icTag& entry, const void* data) {
  if (entry.offset < TableEnd(tagCount) || !FileHolds(entry)) return 0;
  std::vector<FilePiece> pieces;
  AppendTag(pieces, entry.offset, data, entry.size - kDataHead);
  std::array<vkcl::host::Slice, 3> slices = {};
  std::transform(pieces.begin(), pieces.end(), slices.begin(), [](const FilePiece& piece) {
    return vkcl::host::Slice{piece.bytes, static_cast<std::size_t>(piece.length)};
  });
  return vkcl::OverwriteFile(filePath, entry.offset, slices, entry.size) ? 1 : 0;
}

// Replaces a tag by one of another length. The entries before it keep their places; those behind
// it are laid out anew.
int VKCLProfile::RebuildFrom(std::uint32_t index, const void* data, std::uint32_t length) {
  std::vector<icTag> table;
  if (!RewritableTable(table)) return 0;
  const std::uint64_t regionStart = TableEnd(tagCount);
  const bool isFirst = index == 0;
  const bool isLast = index + 1 == tagCount;
  const std::uint64_t oldPadded = PadTo4(table[index].size);
  // The first tag follows the table at once: bytes that lay between are not carried over.
  const std::uint64_t tagStart = isFirst ? regionStart : table[index].offset;
  const std::uint64_t restFrom = isLast ? sizeInFile_ : table[index + 1].offset;
  if (tagStart < regionStart || tagStart > sizeInFile_) return 0;
  if (restFrom < regionStart || restFrom > sizeInFile_) return 0;
  if (!FileHolds(table[index])) return 0;

  const std::uint64_t newPadded = PadTo4(std::uint64_t{length} + kDataHead);
  const std::uint64_t grown = sizeInFile_ + newPadded;
  if (grown < oldPadded || grown - oldPadded > kMost) return 0;
  table[index].size = length + kDataHead;
  if (!Chain(table, index + 1)) return 0;
  // What stays in front of the tag moves nowhere, and must be there all the same.
  std::vector<FilePiece> body = {Moved(regionStart, tagStart - regionStart, regionStart)};
  AppendTag(body, tagStart, data, length);
  body.push_back(Moved(restFrom, sizeInFile_ - restFrom, tagStart + newPadded));
  return Rewrite(body, true, grown - oldPadded, table);
}

// Appends an entry and a tag. The table grows by 12 bytes, so everything behind it moves back by
// as much.
int VKCLProfile::AddVKPrivateTag(VKPrivateTagSignature sig, const void* data,
                                 unsigned long length) {
  std::vector<icTag> table;
  if (!RewritableTable(table)) return 0;
  if (!table.empty() && !FileHolds({table.front().sig, table.front().offset, 0})) return 0;
  if (!Shift(table, kTableEntry)) return 0;
  const std::uint64_t tagStart = std::uint64_t{sizeInFile_} + kTableEntry;
  const std::uint64_t newSize = tagStart + PadTo4(std::uint64_t{length} + kDataHead);
  if (newSize > kMost) return 0;
  table.push_back({static_cast<icTagSignature>(sig), static_cast<std::uint32_t>(tagStart),
                   static_cast<std::uint32_t>(length) + kDataHead});
  if (table.front().offset < TableEnd(table.size())) return 0;  // data within the table
  const std::uint64_t regionStart = TableEnd(tagCount);
  std::vector<FilePiece> body = {
      Moved(regionStart, sizeInFile_ - regionStart, table.front().offset)};
  AppendTag(body, tagStart, data, static_cast<std::uint32_t>(length));
  return Rewrite(body, false, newSize, table);
}

int VKCLProfile::WriteMultiVKPrivateTags(const VKPrivateTag* tags, int count) {
  if (valid == 0 || tags == nullptr || count <= 0) return 0;
  return vkcl::Guarded([&] {
    std::vector<icTag> added;
    for (int i = 0; i < count; ++i) {
      if (!CanStore(tags[i].data, tags[i].size)) return 0;
      added.push_back(
          {static_cast<icTagSignature>(tags[i].signature), 0, tags[i].size + kDataHead});
    }
    return AppendTags(added, [&](std::vector<FilePiece>& pieces, std::size_t i, std::uint64_t at) {
      AppendTag(pieces, at, tags[i].data, tags[i].size);
    });
  });
}

// Appends entries, of which signature and size are given, and their data in one rewrite: the data
// region moves back as a whole, and the new tags are chained behind the last old entry.
int VKCLProfile::AppendTags(const std::vector<icTag>& added, const AppendPieces& append) {
  std::vector<icTag> table;
  if (!RewritableTable(table)) return 0;
  const std::uint64_t distance = std::uint64_t{kTableEntry} * added.size();
  // Without a tag the data region is all that lies behind the count.
  const std::uint64_t regionStart = table.empty() ? kTableStart : table.front().offset;
  if (regionStart < TableEnd(tagCount) || regionStart > sizeInFile_) return 0;
  if (!table.empty() && !FileHolds(table.back())) return 0;  // the new tags follow the last one
  std::uint64_t newSize = sizeInFile_ + distance;
  for (const icTag& tag : added) newSize += PadTo4(tag.size);
  if (newSize > kMost || !Shift(table, distance)) return 0;
  table.insert(table.end(), added.begin(), added.end());
  if (tagCount == 0) table.front().offset = static_cast<std::uint32_t>(sizeInFile_ + distance);
  if (!Chain(table, std::max<std::size_t>(tagCount, 1))) return 0;

  std::vector<FilePiece> body = {
      Moved(regionStart, sizeInFile_ - regionStart, regionStart + distance)};
  for (std::size_t i = 0; i < added.size(); ++i) append(body, i, table[tagCount + i].offset);
  return Rewrite(body, false, newSize, table);
}

icHeader VKCLProfile::DummyHeader(int channels, std::uint32_t tagSize) {
  const ATime now;
  const auto number = [](int value) { return static_cast<std::uint16_t>(value); };
  icHeader made = {};
  made.size = static_cast<std::uint32_t>(PadTo4(tagSize)) + 144;
  made.cmmId = icSignature("Lino");
  made.version = 0x02000000;
  made.deviceClass = icSigOutputClass;
  made.colorSpace = SpaceOfChannels(channels);
  made.pcs = icSigLabData;
  made.date = {number(now.year()), number(now.month()),  number(now.day()),
               number(now.hour()), number(now.minute()), number(now.second())};
  made.magic = icMagicNumber;
  made.platform = icSigMicrosoft;
  made.illuminant = {StoredFraction(0.9642), StoredFraction(1.0), StoredFraction(0.8249)};
  made.creator = icSignature("QXCR");
  return made;
}

// Whether the file is, or may be, a profile after all: one that has come since this object was
// loaded, or that could not be loaded for want of memory or handles. It must not be thrown away.
// A file that may only be written is taken for none. Applies the checks of Load, and asks for no
// memory: there may be none.
bool VKCLProfile::IsProfileNow() const {
  AFile file;
  if (!file.open(filePath, AFile::Read)) return !vkcl::host::WasForbidden() && filePath.exists();
  const std::int64_t length = file.length();
  std::array<std::uint8_t, kTableStart> start = {};
  if (length >= 0 && static_cast<std::uint64_t>(length) < start.size()) return false;
  if (file.read(start.data(), start.size()) != start.size()) return true;
  icHeader now = {};
  std::memcpy(&now, start.data(), sizeof now);
  ReverseICCHeader(&now);
  const std::uint64_t count = vkcl::LoadBig32(start.data() + sizeof now);
  return now.magic == icMagicNumber && TableEnd(count) <= static_cast<std::uint64_t>(length);
}

// Makes a minimal output profile of one tag.
int VKCLProfile::CreateDummyICC(icTag* tag, const void* data) {
  if (valid != 0 || channelCount < 3 || channelCount > 16) return 0;
  if (PadTo4(tag->size) + 144 > kMost) return 0;
  if (IsProfileNow()) return 0;

  const icHeader made = DummyHeader(channelCount, tag->size);
  const std::vector<char> head = BuildHead(made, {*tag});
  std::vector<FilePiece> pieces = {FromMemory(0, head)};
  AppendTag(pieces, head.size(), data, tag->size - kDataHead);
  std::unique_ptr<icTag[]> newTable(new icTag[1]{*tag});
  std::uint64_t newLength = 0;
  if (!vkcl::RewriteFile(filePath, pieces, FileEnd::Cut, FileOrigin::Any, newLength)) return 0;
  delete[] tagTable;
  tagTable = newTable.release();
  tagCount = 1;
  header = made;
  sizeInFile_ = made.size;
  fileLength_ = newLength;
  sizesInFile_.clear();
  tableIsWhole_ = true;
  valid = 1;
  return 1;
}
