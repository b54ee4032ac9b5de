// A tag's payload seen through its schema. A view holds no values: it fetches them from the bytes
// when asked, so a tag of any length takes no memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/TagSchema.h"
#include "platform/Export.h"
#include "platform/plinth/AFile.h"

namespace vkcl {

/// Bytes that are fetched piece by piece: of a block in memory, or of a part of a file.
class VKCL_API ByteSource {
 public:
  /// Longest piece that can be asked for.
  static constexpr std::size_t kWindow = std::size_t{64} << 10;

  /// `bytes` stay the caller's, and must outlive the source.
  explicit ByteSource(std::string_view bytes) : memory_(bytes), size_(bytes.size()) {}
  /// `size` bytes from `start` of an open file, which must outlive the source and is moved about.
  /// Each time that the file is read, `ahead` bytes are, or what is asked for where that is more.
  ByteSource(AFile& file, std::uint64_t start, std::uint64_t size, std::size_t ahead = kWindow)
      : file_(&file), start_(start), size_(size), ahead_(ahead) {}

  /// Length in bytes.
  std::uint64_t size() const { return size_; }
  /// False once a piece could not be read; everything after it is empty.
  bool good() const { return good_; }

  /// Up to `length` bytes from `offset`, fewer at the end; valid until the next call.
  std::string_view At(std::uint64_t offset, std::size_t length);

 private:
  std::string_view memory_;
  AFile* file_ = nullptr;
  std::uint64_t start_ = 0;
  std::uint64_t size_ = 0;
  std::size_t ahead_ = kWindow;
  bool good_ = true;
  std::vector<char> window_;
  std::uint64_t windowAt_ = 0;
};

class RecordView;

/// One field of a record.
class VKCL_API FieldView {
 public:
  /// What the field is.
  const FieldSchema& schema() const { return *schema_; }
  ///@{
  /// Place in the payload, and length, in bytes.
  std::uint64_t offset() const { return offset_; }
  std::uint64_t length() const { return length_; }
  ///@}
  /// Values of a list, rows, blocks; bytes of a text or block of bytes; 1 for a number.
  std::uint64_t count() const { return count_; }
  /// Values of a row; else 1.
  std::uint64_t columns() const { return columns_; }

  /// Value `index` of a number, a list or rows (row by row): exact for each type.
  double Number(std::uint64_t index = 0) const;
  /// The same as text: the fewest digits that read back to the same number; "inf", "-inf", and
  /// "nan" with its bits where they are not the usual ones ("nan:7fc00001").
  std::string NumberText(std::uint64_t index = 0) const;
  /// An integer; 0 for other types.
  std::int64_t Integer(std::uint64_t index = 0) const;
  /// The text without its terminator, when it is UTF-8, only zeros follow, and it has at most
  /// ByteSource::kWindow bytes; nothing otherwise.
  std::optional<std::string> Text() const;
  /// The text up to its terminator, whatever it is: at most ByteSource::kWindow bytes of it.
  std::string TextBytes() const;
  /// Up to `length` of the field's bytes from `from`; valid until the payload is read again.
  std::string_view Bytes(std::uint64_t from, std::size_t length) const;
  /// How many of the values (of the bytes of a block) there are up to the last that is not zero;
  /// of rows, how many rows. Only where the schema's amount is constant; else count().
  std::uint64_t UsedCount() const;
  /// Record `index` of a list of records.
  RecordView Record(std::uint64_t index) const;
  /// Where a block of bytes is.
  struct Extent {
    std::uint64_t from;    ///< place within the field
    std::uint64_t length;  ///< length in bytes
  };
  /// Block `index` of a field that has the shape of blocks; `before` is the one before it, and
  /// anything for the first.
  Extent Block(std::uint64_t index, const Extent& before) const;

 private:
  friend class RecordView;

  const FieldSchema* schema_ = nullptr;
  ByteSource* source_ = nullptr;
  std::uint64_t offset_ = 0;
  std::uint64_t length_ = 0;
  std::uint64_t count_ = 1;
  std::uint64_t columns_ = 1;
  std::span<const FieldSchema> recordFields_;
  std::uint64_t recordLength_ = 0;
  std::uint64_t lengthsAt_ = 0;  // place of the lengths of blocks
  // Some of them, so that lengths and blocks are not fetched in turn.
  mutable std::vector<std::int32_t> lengths_;
  mutable std::uint64_t firstLength_ = 0;
};

/// A record: a whole payload, or one of a list.
class VKCL_API RecordView {
 public:
  /// The payload through its schema. Nothing when it does not have the form: another length than
  /// its counts ask for, or a version that has no form. `why` then tells what is wrong, in words.
  static std::optional<RecordView> Of(const TagSchema& schema, ByteSource& payload,
                                      std::string& why);

  /// The fields in the order of the bytes.
  const std::vector<FieldView>& fields() const { return fields_; }
  /// Null when there is no such field.
  const FieldView* Find(std::string_view name) const;

 private:
  friend class FieldView;
  class Layout;

  std::vector<FieldView> fields_;
};

}  // namespace vkcl
