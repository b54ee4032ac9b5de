// A record that is put together from the values of its fields, in whatever order these come.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "inspect/TagSchema.h"

namespace vkcl {

class RecordValue;

/// What was given for a field: its bytes as they are stored, and how many values they are.
struct FieldValue {
  std::vector<char> bytes;
  std::uint64_t count = 0;            ///< values, rows, blocks, or bytes of a text or block
  std::uint64_t columns = 0;          ///< of the rows, which all have as many
  bool isText = false;                ///< a text, which is stored with what its form asks for
  std::vector<std::int32_t> lengths;  ///< of blocks
  std::vector<RecordValue> records;   ///< of a list of records
};

/// Turns one number or text of a document into the bytes of a value. The reason when it is none,
/// else an empty text. `text` is a number as it stands in the document, or the content of a string.
std::string AppendValue(FieldType type, bool isString, std::string_view text,
                        std::vector<char>& bytes);

class RecordValue {
 public:
  // Fields hold records, and records fields: these stand where both are known.
  RecordValue();
  ~RecordValue();
  RecordValue(RecordValue&& other) noexcept;

  /// The value of a field that was not given before; null when it was.
  FieldValue* Add(const FieldSchema& field);

  /// Appends the record to `payload`: the fields in the order of `fields`, those that were not
  /// given and follow from others filled in. The reason when that is not possible, else an empty
  /// text. `notes` receives what is odd about the given values.
  std::string Assemble(std::span<const FieldSchema> fields, const TagSchema& schema,
                       std::vector<char>& payload, std::vector<std::string>& notes) const;

 private:
  class Assembly;

  const FieldValue* Find(std::string_view name) const;

  std::vector<std::pair<const FieldSchema*, FieldValue>> values_;
};

}  // namespace vkcl
