// Builds profile files byte by byte, without any help from the library, so that the library's
// files can be held against bytes that it had no part in.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/TempDir.h"

namespace vkcl::testing {

/// Four characters as one number, the first in the high byte.
constexpr std::uint32_t Sig(const char (&text)[5]) {
  return std::uint32_t{static_cast<unsigned char>(text[0])} * 0x1000000u +
         std::uint32_t{static_cast<unsigned char>(text[1])} * 0x10000u +
         std::uint32_t{static_cast<unsigned char>(text[2])} * 0x100u +
         std::uint32_t{static_cast<unsigned char>(text[3])};
}

Bytes Big32(std::uint32_t value);
std::uint32_t Big32At(const Bytes& bytes, std::size_t at);
void SetBig32(Bytes& bytes, std::size_t at, std::uint32_t value);
/// Bytes written as hexadecimal digits; blanks between them are skipped.
Bytes HexBytes(const std::string& digits);
Bytes Join(std::initializer_list<Bytes> parts);
/// `length` bytes of `bytes` from `from` on.
Bytes Slice(const Bytes& bytes, std::size_t from, std::size_t length);
/// `length` bytes, none of them 0, that differ from one seed to the next.
Bytes Pattern(std::size_t length, unsigned seed);

/// A tag's data of type 'data': type, reserved word, flag, content. Without padding.
Bytes DataTag(const Bytes& content, std::uint32_t flag = 1);
/// A tag's data of type 'text'. Nothing is added to the text.
Bytes TextTag(const std::string& text);

/// The 128 bytes of a header whose fields all differ, bytes 84 to 127 among them. `size` is 0.
Bytes ProfileHeader(std::uint32_t deviceClass = Sig("prtr"),
                    std::uint32_t colorSpace = Sig("CMYK"));

struct ImageTag {
  std::uint32_t sig;
  Bytes data;  ///< all of it, from the type on, without padding
};

/// A whole file: header with its size, count, table, and the data in table order, each padded
/// with zeros to a multiple of 4.
Bytes ProfileImage(const Bytes& header, const std::vector<ImageTag>& tags);

struct ImageEntry {
  std::uint32_t sig;
  std::uint32_t offset;
  std::uint32_t size;

  friend bool operator==(const ImageEntry&, const ImageEntry&) = default;
};
void PrintTo(const ImageEntry& entry, std::ostream* out);

/// Header, count and table as given; the header's size is `size`.
Bytes Head(Bytes header, std::uint32_t size, const std::vector<ImageEntry>& table);
/// A file of any layout: head and body, with the header's size that of the whole.
Bytes RawImage(const Bytes& header, const std::vector<ImageEntry>& table, const Bytes& body);
std::vector<ImageEntry> TableOf(const Bytes& image);

/// Whether both are equal; if not, says where they differ first.
::testing::AssertionResult SameBytes(const Bytes& actual, const Bytes& expected);

/// Whether a profile object holds the table and the size that `image` states.
template <class Profile>
::testing::AssertionResult HoldsTableOf(const Profile& profile, const Bytes& image) {
  if (profile.header.size != Big32At(image, 0)) {
    return ::testing::AssertionFailure()
           << "size " << profile.header.size << " instead of " << Big32At(image, 0);
  }
  std::vector<ImageEntry> held;
  for (std::uint32_t i = 0; i < profile.tagCount; ++i) {
    const auto& entry = profile.tagTable[i];
    held.push_back({static_cast<std::uint32_t>(entry.sig), entry.offset, entry.size});
  }
  const std::vector<ImageEntry> expected = TableOf(image);
  if (held == expected) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "table " << ::testing::PrintToString(held)
                                       << " instead of " << ::testing::PrintToString(expected);
}

}  // namespace vkcl::testing
