// What the private tags hold, field by field: the one description from which they are shown,
// written as documents, read back, compared and documented.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/Export.h"
#include "privatetags/VKPrivateTag.h"

namespace vkcl {

/// What one value of a field is. Numbers are little-endian.
enum class FieldType {
  Int32,
  UInt32,
  Float32,
  Float64,
  Signature,  ///< four characters as one number
  Text,       ///< bytes up to the first zero, or up to the end of the field
  Bytes,      ///< carried and never interpreted
  Record,     ///< a record of its own, with fields
};

/// Bytes of one value; 1 for Text and Bytes, whose fields hold as many as their amount says; 0 for
/// records.
constexpr std::size_t SizeOf(FieldType type) {
  switch (type) {
    case FieldType::Float64: return 8;
    case FieldType::Text:
    case FieldType::Bytes: return 1;
    case FieldType::Record: return 0;
    default: return 4;
  }
}

/// How the values of a field are put together.
enum class FieldShape {
  Single,  ///< one number, text or block
  List,    ///< numbers or records one behind the other
  Rows,    ///< numbers, row by row
  Blocks,  ///< blocks of bytes of different lengths, which another field lists
};

/// How many values there are: a number, what an earlier field says, or all that is left of the
/// payload once the fields behind have theirs.
struct Amount {
  /// Where the amount comes from: `number`, the earlier field of name `field`, or what is left.
  enum class Kind { Constant, Field, Rest };

  Kind kind = Kind::Constant;   ///< where the amount comes from
  std::uint32_t number = 1;     ///< the amount, where it is constant
  const char* field = nullptr;  ///< name of the field that says it
};

/// What a field says about others. Documents may leave such fields out: they follow.
enum class FieldRole {
  Data,         ///< nothing: it is data
  PayloadSize,  ///< length of the payload, or of the record that it is in
  Count,        ///< amount of another field
  Lengths,      ///< lengths of the blocks of another field
  Presence,     ///< not 0 when another field is there
};

/// One field of a record.
struct FieldSchema {
  const char* name = nullptr;             ///< for programs and documents
  FieldType type = {};                    ///< of each value
  FieldShape shape = FieldShape::Single;  ///< how its values are put together
  Amount amount = {};   ///< bytes of a text or block, values of a list, rows; 1 for a number
  Amount columns = {};  ///< values of a row
  FieldRole role = FieldRole::Data;  ///< what it says about other fields
  const char* presence = nullptr;    ///< field that is not 0 where this one is there
  const char* used = nullptr;        ///< field that says how many of the rows mean something
  bool frames = false;               ///< says how the record is stored, and is not set by hand
  bool reserved = false;             ///< carried for the host; shown in documents only
  bool terminated = false;           ///< a text of any length that a zero ends
  const char* unit = "";             ///< "%", "dpi"; empty without one
  const char* meaning = "";          ///< in words, for people; may be empty
};

/// One form of the records of a tag whose version decides it.
struct RecordForm {
  std::int32_t version;                 ///< of the records that have this form
  std::span<const FieldSchema> fields;  ///< of a record, in the order of the bytes
};

/// What one private tag holds.
struct TagSchema {
  VKPrivateTagSignature signature;      ///< of the tag
  const char* name;                     ///< for programs: "ColorParam"
  const char* title;                    ///< for people: "colour parameters"
  std::span<const FieldSchema> fields;  ///< of the payload, in the order of the bytes
  /// Forms of the records in the fields, chosen by the number in the field "version".
  std::span<const RecordForm> forms = {};
};

/// All private tags that are known, QX50 to QX76, by signature.
VKCL_API std::span<const TagSchema> TagSchemas();
/// Null for a signature that is not known.
VKCL_API const TagSchema* FindTagSchema(std::uint32_t signature);
/// Null when there is no such field.
VKCL_API const FieldSchema* FindField(std::span<const FieldSchema> fields, std::string_view name);

}  // namespace vkcl
