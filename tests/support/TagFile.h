// Profile files as lists of tags, and payloads put together value by value. Nothing here uses the
// library's own writers, so files made here judge its readers, and what is found here judges its
// writers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/ImageBuilder.h"
#include "support/TempDir.h"

namespace vkcl::testing {

/// A payload, put together from the front. Numbers are little-endian.
class Payload {
 public:
  Payload& Int(std::int32_t value);
  Payload& Float(float value);
  Payload& Double(double value);
  /// The characters alone.
  Payload& Text(std::string_view text);
  /// The characters, then zeros up to `width` bytes.
  Payload& Field(std::string_view text, std::size_t width);
  Payload& Fill(std::size_t count, unsigned char value = 0);
  Payload& Raw(const Bytes& bytes);
  /// Bytes as hexadecimal digits, `times` times over.
  Payload& HexDigits(const std::string& digits, std::size_t times = 1);

  std::size_t size() const { return bytes_.size(); }
  const Bytes& bytes() const { return bytes_; }
  operator const Bytes&() const { return bytes_; }

 private:
  Payload& Little(std::uint64_t value, int width);

  Bytes bytes_;
};

/// The bytes of a record as it lies in memory.
template <class Record>
Bytes ImageOf(const Record& record) {
  static_assert(std::is_trivially_copyable_v<Record>);
  const auto* first = reinterpret_cast<const unsigned char*>(&record);
  return Bytes(first, first + sizeof record);
}

/// One tag: its signature of four characters and the content behind the head of 12 bytes.
struct FileTag {
  FileTag(std::string tagSignature, Bytes tagPayload, std::string tagType = "data")
      : signature(std::move(tagSignature)),
        payload(std::move(tagPayload)),
        type(std::move(tagType)) {}

  std::string signature;
  Bytes payload;
  std::string type;  ///< type signature of the element

  friend bool operator==(const FileTag& a, const FileTag& b) = default;
};

struct FileHead {
  std::string deviceClass = "prtr";
  std::string colorSpace = "CMYK";
  std::string pcs = "Lab ";
};

/// A profile whose tags lie in table order behind the table, each padded with zeros to a multiple
/// of 4.
Bytes ProfileFile(const std::vector<FileTag>& tags, const FileHead& head = {});

/// The tags of a profile in table order. The test fails when the table leads out of the file.
std::vector<FileTag> TagsOf(const Bytes& file);
/// Their signatures.
std::vector<std::string> SignaturesOf(const Bytes& file);
/// The payload of the first tag of a signature, when there is one.
std::optional<Bytes> PayloadOf(const Bytes& file, const std::string& signature);

}  // namespace vkcl::testing
