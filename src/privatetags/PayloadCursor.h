// Bounds-checked walks over the little-endian bytes of a payload.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <type_traits>

#include "platform/Bytes.h"

namespace vkcl {

/// Reads a payload from the front. Once a read has asked for more than is left, everything after
/// it fails and `good()` stays false.
class PayloadReader {
 public:
  PayloadReader(const char* bytes, std::size_t size) : rest_(bytes, size) {}

  bool good() const { return good_; }
  std::size_t left() const { return rest_.size(); }

  std::int32_t Int32() {
    std::int32_t value = 0;
    Copy(&value, sizeof value);
    return value;
  }

  /// Copies exactly `size` bytes, or none.
  bool Copy(void* to, std::size_t size) {
    const char* from = Take(size);
    if (from != nullptr && size > 0) std::memcpy(to, from, size);
    return from != nullptr;
  }

  /// The next `size` bytes where they stand; null when there are fewer.
  const char* Take(std::size_t size) {
    if (!good_ || size > rest_.size()) {
      good_ = false;
      return nullptr;
    }
    const char* first = rest_.data();
    rest_ = rest_.subspan(size);
    return first;
  }

 private:
  std::span<const char> rest_;
  bool good_ = true;
};

/// Fills a block of a length given beforehand. What is put beyond its end is dropped, so a record
/// that states less than it holds is stored as far as it states.
class PayloadWriter {
 public:
  /// The block is null when memory is short.
  explicit PayloadWriter(std::size_t size) : block_(new (std::nothrow) char[size]()), size_(size) {}

  explicit operator bool() const { return block_ != nullptr; }
  std::size_t size() const { return size_; }
  char* release() { return block_.release(); }

  /// The next `size` bytes, for a callee to fill; null when there is less room.
  char* Room(std::size_t size) {
    if (size > size_ - used_) return nullptr;
    char* place = block_.get() + used_;
    used_ += size;
    return place;
  }

  PayloadWriter& Put(const void* from, std::size_t size) {
    const std::size_t taken = std::min(size, size_ - used_);
    if (taken > 0) std::memcpy(block_.get() + used_, from, taken);
    used_ += taken;
    return *this;
  }
  PayloadWriter& Put(std::int32_t value) { return Put(&value, sizeof value); }
  /// Bytes without meaning: zeros.
  PayloadWriter& Skip(std::size_t size) {
    used_ += std::min(size, size_ - used_);
    return *this;
  }

 private:
  std::unique_ptr<char[]> block_;
  std::size_t size_;
  std::size_t used_ = 0;
};

/// Copies as much of a payload into a record as both of them hold.
template <class Record>
void FillRecord(Record& record, const char* payload, std::size_t size) {
  static_assert(std::is_trivially_copyable_v<Record>);
  std::memcpy(static_cast<void*>(&record), payload, std::min(size, sizeof record));
}

}  // namespace vkcl
