#include "platform/plinth/FileRewrite.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>

#include "platform/plinth/AFile.h"
#include "platform/plinth/LargeBlock.h"
#include "platform/plinth/SiblingFile.h"

namespace vkcl {
namespace {

constexpr std::uint64_t kLongestFile = UINT32_MAX;  // what the header's size field can tell

struct Range {
  std::uint64_t begin;
  std::uint64_t end;
};

std::uint64_t EndOf(const FilePiece& piece) { return piece.at + piece.length; }

// The part of a piece that lies within a range of the new file; empty when there is none.
FilePiece Clip(const FilePiece& piece, const Range& range) {
  const std::uint64_t begin = std::max(piece.at, range.begin);
  const std::uint64_t end = std::min(EndOf(piece), range.end);
  if (begin >= end) return {begin, 0, piece.bytes, piece.from};
  const std::uint64_t skipped = begin - piece.at;
  const void* bytes =
      piece.bytes != nullptr ? static_cast<const std::byte*>(piece.bytes) + skipped : nullptr;
  return {begin, end - begin, bytes, piece.from + skipped};
}

bool StandsBefore(const FilePiece& a, const FilePiece& b) { return a.at < b.at; }

// What has been painted so far: disjoint ranges that do not touch, by their beginning.
class Covered {
 public:
  // Calls `show` for each part of the range that is not covered yet, and covers the range.
  template <class Show>
  void Cover(std::uint64_t begin, std::uint64_t end, Show show) {
    auto next = ranges_.upper_bound(begin);
    if (next != ranges_.begin() && std::prev(next)->second >= begin) --next;
    std::uint64_t from = begin;
    std::uint64_t last = end;
    const std::uint64_t first = next != ranges_.end() ? std::min(begin, next->first) : begin;
    while (next != ranges_.end() && next->first <= end) {
      if (from < next->first) show(from, next->first);
      from = std::max(from, next->second);
      last = std::max(last, next->second);
      next = ranges_.erase(next);
    }
    if (from < end) show(from, end);
    ranges_[first] = last;
  }

 private:
  std::map<std::uint64_t, std::uint64_t> ranges_;
};

// Whether the pieces are in the order of the file and none lies over another.
bool AreDisjoint(const std::vector<FilePiece>& pieces) {
  return std::adjacent_find(pieces.begin(), pieces.end(),
                            [](const FilePiece& piece, const FilePiece& next) {
                              return next.at < EndOf(piece);
                            }) == pieces.end();
}

// What is visible of each piece when the later ones lie over the earlier ones: disjoint pieces in
// the order of the file, as most callers give them.
std::vector<FilePiece> Visible(std::vector<FilePiece> pieces) {
  std::erase_if(pieces, [](const FilePiece& piece) { return piece.length == 0; });
  if (AreDisjoint(pieces)) return pieces;
  std::vector<FilePiece> shown;
  Covered covered;
  for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece) {
    covered.Cover(piece->at, EndOf(*piece), [&](std::uint64_t begin, std::uint64_t end) {
      shown.push_back(Clip(*piece, {begin, end}));
    });
  }
  std::sort(shown.begin(), shown.end(), StandsBefore);
  return shown;
}

// Joins ranges that overlap or touch.
std::vector<Range> Joined(std::vector<Range> ranges) {
  std::erase_if(ranges, [](const Range& range) { return range.begin >= range.end; });
  std::sort(ranges.begin(), ranges.end(),
            [](const Range& a, const Range& b) { return a.begin < b.begin; });
  std::size_t joined = 0;  // so many, in place
  for (const Range& range : ranges) {
    if (joined == 0 || range.begin > ranges[joined - 1].end) {
      ranges[joined++] = range;
    } else {
      ranges[joined - 1].end = std::max(ranges[joined - 1].end, range.end);
    }
  }
  ranges.resize(joined);
  return ranges;
}

// A transfer that fails on the way is retried a few times: half of the old bytes are worse than
// late ones. One that moves nothing at all is given up at once.
void PutBytesBack(AFile& file, std::uint64_t offset, const char* bytes, std::size_t size) {
  constexpr int kTries = 4;
  host::Slice slice = {bytes, size};
  std::uint64_t moved = 0;
  for (int i = 0; i < kTries && moved < size; ++i) {
    moved += file.writeAt(offset + moved, {&slice, 1});
    if (moved == 0) break;
  }
}

// One rewrite of one file, from opening to closing.
class Rewrite {
 public:
  Rewrite(const AFilePath& path, const std::vector<FilePiece>& pieces, FileEnd end)
      : path_(path), pieces_(Visible(pieces)), end_(end) {
    for (const FilePiece& piece : pieces) {  // also of what lies under other pieces
      if (piece.bytes == nullptr) held_ = std::max(held_, piece.from + piece.length);
    }
  }

  bool Run(FileOrigin origin);
  std::uint64_t newLength() const { return newLength_; }

 private:
  struct Kept {
    Range range;
    std::unique_ptr<char[]> bytes;
  };

  bool Open(FileOrigin origin);
  bool Plan();
  std::vector<Range> NeededRanges() const;
  bool ReadNeeded();
  bool Write();
  bool WriteRange(const Range& range);
  const void* BytesOf(const FilePiece& piece) const;
  void PutBack();

  AFilePath path_;
  std::vector<FilePiece> pieces_;
  FileEnd end_;
  AFile file_;
  bool created_ = false;
  bool isReadable_ = true;  // if not, nothing can be put back but the length
  std::uint64_t held_ = 0;  // what the pieces take the file to hold
  std::uint64_t oldLength_ = 0;
  std::uint64_t newLength_ = 0;
  std::vector<Kept> kept_;
  std::vector<host::Slice> slices_;
};

bool Rewrite::Open(FileOrigin origin) {
  created_ = origin != FileOrigin::Existing && file_.open(path_, AFile::ReadWrite | AFile::New);
  if (created_) return true;
  if (origin == FileOrigin::New) return false;
  if (file_.open(path_, AFile::ReadWrite)) return true;
  if (origin == FileOrigin::Existing) return false;
  isReadable_ = !host::WasForbidden();
  if (!isReadable_) return held_ == 0 && file_.open(path_, AFile::Write);
  path_ = BehindLinks(path_);  // a link may name a file that is yet to be made
  created_ = file_.open(path_, AFile::ReadWrite | AFile::New);
  return created_;
}

bool Rewrite::Plan() {
  const std::int64_t length = created_ ? 0 : file_.length();
  if (length < 0) return false;
  oldLength_ = static_cast<std::uint64_t>(length);
  newLength_ = end_ == FileEnd::Keep ? oldLength_ : 0;
  for (const FilePiece& piece : pieces_) {
    newLength_ = std::max(newLength_, EndOf(piece));
  }
  if (newLength_ > kLongestFile || held_ > oldLength_) return false;
  // What stays where it is has been checked, and is neither read nor written.
  std::erase_if(pieces_, [](const FilePiece& piece) {
    return piece.bytes == nullptr && piece.from == piece.at;
  });
  slices_.reserve(2 * pieces_.size());
  return true;
}

// What is moved, overwritten or cut off.
std::vector<Range> Rewrite::NeededRanges() const {
  std::vector<Range> ranges;
  ranges.reserve(2 * pieces_.size() + 1);
  for (const FilePiece& piece : pieces_) {
    ranges.push_back({piece.at, std::min(EndOf(piece), oldLength_)});
    if (piece.bytes == nullptr) ranges.push_back({piece.from, piece.from + piece.length});
  }
  ranges.push_back({newLength_, oldLength_});
  return Joined(std::move(ranges));
}

bool Rewrite::ReadNeeded() {
  const std::vector<Range> needed = NeededRanges();
  kept_.reserve(needed.size());
  for (const Range& range : needed) {
    const auto size = static_cast<std::size_t>(range.end - range.begin);
    kept_.push_back({range, NewLargeBlock(size)});
    host::MutableSlice slice = {kept_.back().bytes.get(), size};
    if (file_.readAt(range.begin, {&slice, 1}) != size) return false;
  }
  return true;
}

const void* Rewrite::BytesOf(const FilePiece& piece) const {
  if (piece.bytes != nullptr) return piece.bytes;
  const auto holder =  // the kept ranges are sorted, and one of them holds the whole piece
      std::prev(std::upper_bound(
          kept_.begin(), kept_.end(), piece.from,
          [](std::uint64_t from, const Kept& kept) { return from < kept.range.begin; }));
  return holder->bytes.get() + (piece.from - holder->range.begin);
}

// Writes what the pieces put into a range of the new file, one transfer for each run of pieces
// that follow one another.
bool Rewrite::WriteRange(const Range& range) {
  std::uint64_t start = 0;
  std::uint64_t next = 0;
  const auto flush = [&] {
    const bool written = file_.writeAt(start, slices_) == next - start;
    slices_.clear();
    return written;
  };
  for (const FilePiece& whole : pieces_) {
    const FilePiece piece = Clip(whole, range);
    if (piece.length == 0) continue;
    if (!slices_.empty() && piece.at != next && !flush()) return false;
    if (slices_.empty()) start = piece.at;
    slices_.push_back({BytesOf(piece), static_cast<std::size_t>(piece.length)});
    next = EndOf(piece);
  }
  return slices_.empty() || flush();
}

bool Rewrite::Write() {
  return WriteRange({oldLength_, UINT64_MAX}) && WriteRange({0, oldLength_}) &&
         (newLength_ >= oldLength_ || file_.setLength(newLength_)) && file_.close();
}

void Rewrite::PutBack() {
  if (created_) {
    file_.close();
    path_.remove();
    return;
  }
  if (!file_.isOpen() && !file_.open(path_, AFile::Write)) return;
  for (const Kept& kept : kept_) {
    const std::uint64_t size = kept.range.end - kept.range.begin;
    PutBytesBack(file_, kept.range.begin, kept.bytes.get(), static_cast<std::size_t>(size));
  }
  file_.setLength(oldLength_);
  file_.close();
}

bool Rewrite::Run(FileOrigin origin) {
  if (!Open(origin)) return false;
  bool ready = false;
  try {
    ready = Plan() && (!isReadable_ || ReadNeeded());
  } catch (...) {
    ready = false;  // memory is short; nothing has been written
  }
  if (!ready) {
    file_.close();
    if (created_) path_.remove();
    return false;
  }
  if (Write()) return true;
  PutBack();
  return false;
}

// Reads the bytes from `offset` on up to the end of the file; -1 when the file does not give what
// it holds.
std::int64_t ReadOld(AFile& file, std::uint64_t offset, std::span<char> old) {
  host::MutableSlice slice = {old.data(), old.size()};
  const std::uint64_t got = file.readAt(offset, {&slice, 1});
  const bool isWhole =
      got == old.size() || file.length() == static_cast<std::int64_t>(offset + got);
  return isWhole ? static_cast<std::int64_t>(got) : -1;
}

}  // namespace

bool OverwriteFile(const AFilePath& path, std::uint64_t offset, std::span<host::Slice> slices,
                   std::uint64_t held) {
  std::uint64_t total = 0;
  for (const host::Slice& slice : slices) total += slice.size;
  const auto most = static_cast<std::size_t>(total);
  const std::unique_ptr<char[]> old = NewLargeBlock(most);
  AFile file;
  if (!file.open(path, AFile::ReadWrite)) return false;
  const std::int64_t got = ReadOld(file, offset, {old.get(), most});
  if (got < static_cast<std::int64_t>(held)) return false;
  if (file.writeAt(offset, slices) == total && file.close()) return true;

  if (!file.isOpen() && !file.open(path, AFile::Write)) return false;
  const auto size = static_cast<std::size_t>(got);
  PutBytesBack(file, offset, old.get(), size);
  if (size < total) file.setLength(offset + size);
  file.close();
  return false;
}

bool RewriteFile(const AFilePath& path, const std::vector<FilePiece>& pieces, FileEnd end,
                 FileOrigin origin, std::uint64_t& newLength) {
  Rewrite rewrite(path, pieces, end);
  if (!rewrite.Run(origin)) return false;
  newLength = rewrite.newLength();
  return true;
}

}  // namespace vkcl
