// What the fuzz targets share: one function a target, a file in memory, and numbers and bytes taken
// from an input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "privatetags/ProfileDataList.h"
#include "split/SplitParam.h"

/// Looks at one input. A finding ends the process: a sanitizer's report, or Demand.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vkcl::fuzz {

using Bytes = std::vector<std::uint8_t>;

/// Ends the process, and says so, when a promise is broken.
void Demand(bool kept, const char* promise);

/// The path of a file of this process, in memory where the system has that. Each name is one file.
std::string FilePath(const char* name);
void WriteFile(const std::string& path, const void* bytes, std::size_t size);
Bytes ReadFile(const std::string& path);

///@{
/// Reads everything that the counters of a record tell of, so that a sanitizer sees counters that
/// lie. The result depends on each value and on the counters that are stored.
std::uint64_t Digest(const ProfileDataList& list);
std::uint64_t Digest(const SplitParam& split);
///@}
/// The digest of bytes, going on with that of others.
std::uint64_t Digest(const void* bytes, std::size_t size, std::uint64_t before = 0);

/// Takes an input apart from its front; behind its end there are zeros.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool empty() const { return size_ == 0; }
  std::uint8_t Byte();
  std::uint32_t Number();
  Bytes Take(std::size_t length);
  std::string_view Rest() const { return {reinterpret_cast<const char*>(data_), size_}; }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
};

/// A profile with these tags, in table order, each padded; laid out by hand.
struct Tag {
  std::uint32_t signature;
  Bytes element;
};
Bytes Profile(const std::vector<Tag>& tags);
/// A binary 'data' element.
Bytes DataElement(const Bytes& payload);
/// The tags of a profile file, which must be sound: the process ends when one is not in the file.
std::vector<Tag> TagsOf(const Bytes& file);

}  // namespace vkcl::fuzz
