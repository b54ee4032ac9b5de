#include "platform/plinth/AFile.h"

#include <algorithm>
#include <thread>

namespace host = vkcl::host;

namespace {

host::Access AccessOf(int flags) {
  switch (flags & AFile::ReadWrite) {
    case AFile::Read: return host::Access::Read;
    case AFile::Write: return host::Access::Write;
    default: return host::Access::ReadWrite;
  }
}

host::Creation CreationOf(int flags) {
  if ((flags & AFile::New) != 0) return host::Creation::Exclusive;
  return (flags & AFile::Create) != 0 ? host::Creation::Truncate : host::Creation::Never;
}

void Advance(const void*& data, std::size_t bytes) {
  data = static_cast<const std::byte*>(data) + bytes;
}

void Advance(void*& data, std::size_t bytes) { data = static_cast<std::byte*>(data) + bytes; }

// Takes the first `bytes` bytes off the list of slices.
template <class Slices>
void Consume(Slices& slices, std::size_t bytes) {
  while (!slices.empty()) {
    auto& first = slices.front();
    const std::size_t taken = std::min(bytes, first.size);
    Advance(first.data, taken);
    first.size -= taken;
    bytes -= taken;
    if (first.size != 0) return;
    slices = slices.subspan(1);
  }
}

// Repeats `transfer` until the slices are used up, nothing more moves, or it fails.
template <class SliceType, class Transfer>
std::uint64_t MoveAll(std::span<SliceType> slices, Transfer transfer) {
  std::uint64_t total = 0;
  Consume(slices, 0);
  while (!slices.empty()) {
    const std::int64_t moved = transfer(total, slices);
    if (moved == host::kInterrupted) continue;
    if (moved <= 0) break;
    total += static_cast<std::uint64_t>(moved);
    Consume(slices, static_cast<std::size_t>(moved));
  }
  return total;
}

}  // namespace

AFile::~AFile() { close(); }

bool AFile::open(const AFilePath& path, int flags) {
  close();
  position_ = 0;
  if ((flags & ReadWrite) == 0) return false;
  handle_ = host::Open(path.c_str(), AccessOf(flags), CreationOf(flags));
  return isOpen();
}

std::size_t AFile::read(void* buffer, std::size_t n) {
  host::MutableSlice slice = {buffer, n};
  const std::uint64_t moved = readAt(position_, {&slice, 1});
  position_ += moved;
  return static_cast<std::size_t>(moved);
}

std::size_t AFile::write(const void* buffer, std::size_t n) {
  host::Slice slice = {buffer, n};
  const std::uint64_t moved = writeAt(position_, {&slice, 1});
  position_ += moved;
  return static_cast<std::size_t>(moved);
}

bool AFile::seek(std::uint64_t offset) {
  position_ = offset;
  return isOpen();
}

std::int64_t AFile::length() const { return isOpen() ? host::Length(handle_) : -1; }

bool AFile::setLength(std::uint64_t length) { return isOpen() && host::SetLength(handle_, length); }

bool AFile::sync() { return isOpen() && host::Sync(handle_); }

bool AFile::tryLock() { return isOpen() && host::TryLock(handle_) == host::Lock::Taken; }

bool AFile::waitForLock(std::chrono::milliseconds patience) {
  if (!isOpen()) return false;
  const auto end = std::chrono::steady_clock::now() + patience;
  while (host::TryLock(handle_) == host::Lock::Busy) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

bool AFile::hasName() const { return isOpen() && host::NameCount(handle_) != 0; }

bool AFile::close() {
  if (!isOpen()) return true;
  const host::Handle handle = handle_;
  handle_ = host::kNoHandle;
  return host::Close(handle);
}

std::uint64_t AFile::readAt(std::uint64_t offset, std::span<host::MutableSlice> slices) {
  if (!isOpen()) return 0;
  return MoveAll(slices, [&](std::uint64_t done, std::span<host::MutableSlice> rest) {
    return host::ReadAt(handle_, offset + done, rest.data(), rest.size());
  });
}

std::uint64_t AFile::writeAt(std::uint64_t offset, std::span<host::Slice> slices) {
  if (!isOpen()) return 0;
  return MoveAll(slices, [&](std::uint64_t done, std::span<host::Slice> rest) {
    return host::WriteAt(handle_, offset + done, rest.data(), rest.size());
  });
}
