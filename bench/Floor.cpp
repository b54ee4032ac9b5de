#include "Floor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>

namespace vkcl::bench::bare {
namespace {

constexpr std::size_t kLargeBlock = 4'000'000;

thread_local Tally tally;

class File {
 public:
  File(const std::string& path, int flags) : descriptor_(::open(path.c_str(), flags, 0666)) {
    ++tally.calls;
  }
  ~File() { Close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  std::size_t Length() const {
    struct stat status = {};
    ++tally.calls;
    return ::fstat(descriptor_, &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
  }
  bool Read(void* to, Part part) const {
    ++tally.calls;
    tally.read += part.length;
    return ::pread(descriptor_, to, part.length, static_cast<off_t>(part.offset)) ==
           static_cast<ssize_t>(part.length);
  }
  bool Write(const void* from, Part part) const {
    ++tally.calls;
    tally.written += part.length;
    return ::pwrite(descriptor_, from, part.length, static_cast<off_t>(part.offset)) ==
           static_cast<ssize_t>(part.length);
  }
  bool Cut(std::size_t length) const {
    ++tally.calls;
    return ::ftruncate(descriptor_, static_cast<off_t>(length)) == 0;
  }
  bool Sync() const {
    ++tally.calls;
    return ::fsync(descriptor_) == 0;
  }
  bool Close() {
    if (descriptor_ < 0) return true;
    ++tally.calls;
    const bool closed = ::close(descriptor_) == 0;
    descriptor_ = -1;
    return closed;
  }

 private:
  int descriptor_;
};

using Block = std::unique_ptr<char[]>;

// Where the system has large pages for those who ask, a large block is given them: the first touch
// of a small page costs more than the bytes that are moved into it.
Block NewBlock(std::size_t length) {
  Block block(new char[length]);
#if defined(MADV_HUGEPAGE)
  constexpr std::uintptr_t kPage = 4096;
  if (length >= kLargeBlock) {
    char* const first =
        block.get() + (kPage - reinterpret_cast<std::uintptr_t>(block.get()) % kPage);
    ::madvise(first, (length - kPage) / kPage * kPage, MADV_HUGEPAGE);
  }
#endif
  return block;
}

}  // namespace

Tally& TheTally() { return tally; }

bool Look(const std::string& path, std::size_t table, Part part) {
  std::array<char, 4096> start;
  File file(path, O_RDONLY);
  const std::size_t first = std::min(file.Length(), start.size());
  if (!file.Read(start.data(), {0, first})) return false;
  if (table > first) {
    const Block rest = NewBlock(table - first);
    if (!file.Read(rest.get(), {first, table - first})) return false;
  }
  return (part.length == 0 || file.Read(start.data(), part)) && file.Close();
}

bool Read(const std::string& path, const std::vector<Part>& parts, char* to) {
  File file(path, O_RDONLY);
  for (const Part& part : parts) {
    if (!file.Read(to, part)) return false;
    to += part.length;
  }
  return file.Close();
}

bool Overwrite(const std::string& path, std::uint64_t offset, const Bytes& bytes) {
  File file(path, O_RDWR);
  const Block old = NewBlock(bytes.size());
  return file.Read(old.get(), {offset, bytes.size()}) &&
         file.Write(bytes.data(), {offset, bytes.size()}) && file.Close();
}

bool Append(const std::string& path, const Bytes& head, std::size_t moved, const Bytes& tail) {
  File file(path, O_RDWR);
  const std::size_t length = file.Length();
  const std::size_t distance = head.size() + moved - length;
  const std::size_t newLength = length + distance + tail.size();
  const Block block = NewBlock(newLength);
  if (!file.Read(block.get() + distance, {0, length})) return false;
  std::memcpy(block.get(), head.data(), head.size());
  std::memcpy(block.get() + length + distance, tail.data(), tail.size());
  return file.Write(block.get(), {0, newLength}) && file.Close();
}

bool Resize(const std::string& path, const Bytes& head, Part old, const Bytes& bytes) {
  File file(path, O_RDWR);
  const std::size_t length = file.Length();
  const std::uint64_t behind = old.offset + old.length;
  const std::size_t rest = length - behind;
  const Block block = NewBlock(std::max(bytes.size(), old.length) + rest);
  // What follows is read to where it is written from.
  char* const read = block.get() + std::max(bytes.size(), old.length) - old.length;
  char* const from = read + old.length - bytes.size();
  if (!file.Read(read, {old.offset, old.length + rest})) return false;
  std::memcpy(from, bytes.data(), bytes.size());
  const std::size_t newLength = old.offset + bytes.size() + rest;
  return file.Write(from, {old.offset, bytes.size() + rest}) &&
         file.Write(head.data(), {0, head.size()}) &&
         (newLength >= length || file.Cut(newLength)) && file.Close();
}

bool Merge(const std::string& from, Part part, const std::string& to, const Bytes& head,
           std::size_t moved) {
  File source(from, O_RDONLY);
  File file(to, O_RDWR);
  const std::size_t length = file.Length();
  const std::size_t distance = head.size() + moved - length;
  const std::size_t newLength = length + distance + part.length;
  const Block block = NewBlock(newLength);
  if (!file.Read(block.get() + distance, {0, length})) return false;
  if (!source.Read(block.get() + length + distance, part)) return false;
  std::memcpy(block.get(), head.data(), head.size());
  return file.Write(block.get(), {0, newLength}) && file.Close() && source.Close();
}

bool Copy(const std::string& from, Part part, const Bytes& head, const std::string& to) {
  File source(from, O_RDONLY);
  const Block block = NewBlock(head.size() + part.length);
  std::memcpy(block.get(), head.data(), head.size());
  if (!source.Read(block.get() + head.size(), part) || !source.Close()) return false;
  File file(to, O_WRONLY | O_CREAT | O_TRUNC);
  return file.Write(block.get(), {0, head.size() + part.length}) && file.Close();
}

bool Replace(const std::string& path, const char* bytes, std::size_t length) {
  const std::string beside = path + ".new";
  File file(beside, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.Write(bytes, {0, length}) || !file.Sync() || !file.Close()) return false;
  ++tally.calls;
  if (std::rename(beside.c_str(), path.c_str()) != 0) return false;
  File folder(path.substr(0, path.rfind('/')), O_RDONLY | O_DIRECTORY);
  return folder.Sync() && folder.Close();
}

bool ReadWhole(const std::string& path, Bytes& content) {
  File file(path, O_RDONLY);
  content.resize(file.Length());
  return file.Read(content.data(), {0, content.size()}) && file.Close();
}

}  // namespace vkcl::bench::bare
