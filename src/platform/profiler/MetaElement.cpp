#include "platform/profiler/MetaElement.h"

#include <lcms2.h>

#include <algorithm>
#include <map>
#include <utility>

#include "platform/Bytes.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/FileRewrite.h"
#include "platform/plinth/WholeFile.h"

namespace vkcl::profiler {
namespace {

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

constexpr std::size_t kHeader = 128;
constexpr std::size_t kTableStart = kHeader + 4;
constexpr std::size_t kEntrySize = 12;
constexpr std::size_t kFirstRead = 4096;
constexpr std::uint32_t kLargestElement = std::uint32_t{64} << 20;
// Little CMS opens no profile with more.
constexpr std::size_t kMostTags = 100;

struct Entry {
  std::uint32_t sig;
  std::uint32_t offset;
  std::uint32_t size;

  // Readers pass over an entry without data.
  bool hasData() const { return offset != 0 && size != 0; }
  std::uint64_t end() const { return std::uint64_t{offset} + size; }
};

// Length of header and table as the file's start tells it; 0 for a file of that length that is no
// profile.
std::uint64_t HeadLength(View start, std::uint64_t length) {
  if (start.size() < kTableStart || LoadBig32(&start[36]) != cmsMagicNumber) return 0;
  const std::uint64_t head = kTableStart + kEntrySize * std::uint64_t{LoadBig32(&start[kHeader])};
  return head <= length ? head : 0;
}

Entry EntryAt(View head, std::size_t index) {
  const std::uint8_t* row = &head[kTableStart + kEntrySize * index];
  return {LoadBig32(row), LoadBig32(row + 4), LoadBig32(row + 8)};
}

// The table of a head that is whole; no entries for an empty one.
std::vector<Entry> TableIn(View head) {
  std::vector<Entry> table;
  for (std::size_t i = 0; kTableStart + kEntrySize * (i + 1) <= head.size(); ++i) {
    table.push_back(EntryAt(head, i));
  }
  return table;
}

std::vector<Entry>::iterator FindMeta(std::vector<Entry>& table) {
  return std::find_if(table.begin(), table.end(), [](const Entry& entry) {
    return entry.sig == cmsSigMetaTag && entry.hasData();
  });
}

// The entry whose element is read; none that is not wholly in the file, or too large.
bool FindReadable(View head, std::uint64_t length, Entry& meta) {
  std::vector<Entry> table = TableIn(head);
  const auto found = FindMeta(table);
  if (found == table.end() || found->end() > length || found->size > kLargestElement) return false;
  meta = *found;
  return true;
}

// Puts the entries' data one after another; entries that share a block go on sharing it, and
// those without data stay as they are: with a place they would be read.
std::vector<FilePiece> LayOut(std::vector<Entry>& table, const std::vector<View>& data,
                              std::uint64_t& end) {
  static constexpr std::uint8_t kZeros[4] = {};
  std::map<std::pair<const std::uint8_t*, std::size_t>, std::uint32_t> placed;
  std::vector<FilePiece> pieces;
  end = kTableStart + kEntrySize * table.size();
  for (std::size_t i = 0; i < table.size(); ++i) {
    if (data[i].empty()) continue;
    const std::uint64_t size = data[i].size();
    const auto [place, isNew] =
        placed.try_emplace({data[i].data(), size}, static_cast<std::uint32_t>(end));
    table[i].offset = place->second;
    table[i].size = static_cast<std::uint32_t>(size);
    if (!isNew) continue;
    pieces.push_back({end, size, data[i].data(), 0});
    pieces.push_back({end + size, PadTo4(size) - size, kZeros, 0});
    end += PadTo4(size);
    if (end > UINT32_MAX) return {};
  }
  return pieces;
}

Bytes HeadOf(View header, const std::vector<Entry>& table, std::uint64_t end) {
  Bytes head(header.begin(), header.end());
  head.resize(kTableStart + kEntrySize * table.size());
  StoreBig32(head.data(), static_cast<std::uint32_t>(end));
  StoreBig32(&head[kHeader], static_cast<std::uint32_t>(table.size()));
  std::uint8_t* row = &head[kTableStart - kEntrySize];
  for (const Entry& entry : table) {
    row += kEntrySize;
    StoreBig32(row, entry.sig);
    StoreBig32(row + 4, entry.offset);
    StoreBig32(row + 8, entry.size);
  }
  return head;
}

}  // namespace

Bytes ReadMetaElement(const std::string& path) {
  AFile file;
  const std::int64_t told = OpenRegular(path, file);
  if (told < 0 || told > std::int64_t{UINT32_MAX}) return {};
  const auto length = static_cast<std::uint64_t>(told);
  Bytes head(static_cast<std::size_t>(std::min<std::uint64_t>(length, kFirstRead)));
  if (file.read(head.data(), head.size()) != head.size()) return {};
  const std::size_t known = head.size();
  const std::uint64_t headLength = HeadLength(head, length);
  if (headLength > known) {
    head.resize(static_cast<std::size_t>(headLength));
    if (file.read(&head[known], head.size() - known) != head.size() - known) return {};
  }
  Entry meta = {};
  const View table(head.data(), static_cast<std::size_t>(headLength));
  if (!FindReadable(table, length, meta)) return {};
  if (meta.end() <= head.size()) return {&head[meta.offset], &head[meta.offset] + meta.size};
  Bytes element(meta.size);
  const bool read = file.seek(meta.offset) && file.read(element.data(), meta.size) == meta.size;
  return read ? element : Bytes();
}

Bytes MetaElementIn(View file) {
  Entry meta = {};
  const auto headLength = static_cast<std::size_t>(HeadLength(file, file.size()));
  if (!FindReadable(file.first(headLength), file.size(), meta)) return {};
  const View element = file.subspan(meta.offset, meta.size);
  return {element.begin(), element.end()};
}

bool HasMetaElement(View file) {
  std::vector<Entry> table =
      TableIn(file.first(static_cast<std::size_t>(HeadLength(file, file.size()))));
  return FindMeta(table) != table.end();
}

bool ReplaceMetaElement(const std::string& path, View file, View element) {
  const auto headLength = static_cast<std::size_t>(HeadLength(file, file.size()));
  if (headLength == 0 || element.empty() || element.size() > UINT32_MAX) return false;
  std::vector<Entry> table = TableIn(file.first(headLength));
  auto meta = FindMeta(table);
  // One without data is given some before an entry is added.
  if (meta == table.end())
    meta = std::find_if(table.begin(), table.end(),
                        [](const Entry& entry) { return entry.sig == cmsSigMetaTag; });
  if (meta == table.end()) {
    if (table.size() == kMostTags) return false;
    meta = table.insert(table.end(), Entry{cmsSigMetaTag, 0, 0});
  }
  std::vector<View> data;
  for (const Entry& entry : table) {
    if (entry.end() > file.size()) return false;
    data.push_back(entry.hasData() ? file.subspan(entry.offset, entry.size) : View());
  }
  data[static_cast<std::size_t>(meta - table.begin())] = element;

  std::uint64_t end = 0;
  std::vector<FilePiece> pieces = LayOut(table, data, end);
  if (pieces.empty()) return false;
  const Bytes head = HeadOf(file.first(kHeader), table, end);
  pieces.push_back({0, head.size(), head.data(), 0});
  std::uint64_t length = 0;
  return RewriteFile(path, pieces, FileEnd::Cut, FileOrigin::Existing, length);
}

}  // namespace vkcl::profiler
