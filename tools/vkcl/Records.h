// The fixed records, field by field: what can be shown and set by name.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <vector>

#include "handler/VKCLProfileHandler.h"
#include "inspect/TagSchema.h"

namespace vkcl::tool {

struct Field {
  const char* name;
  FieldType kind;        ///< blocks of bytes are written in hexadecimal digits
  std::size_t offset;    ///< in the record's image
  std::size_t length;    ///< of one element: bytes of a text or block
  std::size_t elements;  ///< above 1 for an array of numbers
  bool settable;
};

/// The image of a record: its bytes as they are stored.
using Image = std::vector<char>;

/// One kind of fixed record: where it is stored, which fields it has, how it goes through the
/// handler.
struct RecordType {
  const char* name;   ///< as in RECORD.FIELD
  const char* title;  ///< for people
  VKPrivateTagSignature signature;
  bool isText;  ///< stored as long as its text, with the terminator; else as its image is
  std::vector<Field> fields;
  Image (*make)();  ///< the default record
  int (*get)(const VKCLProfileHandler& handler, Image& image);
  int (*put)(VKCLProfileHandler& handler, const Image& image);
};

std::span<const RecordType> RecordTypes();
const RecordType* FindRecord(const std::string& name);
const RecordType* FindRecord(VKPrivateTagSignature signature);
const Field* FindField(const RecordType& record, const std::string& name);

/// A number as JSON with the fewest digits that read back to the same one; JSON has no infinities
/// and no NaN, so these become text.
nlohmann::ordered_json RealValue(double number);
nlohmann::ordered_json RealValue(float number);

/// The value of a field as JSON: a number, a text, hexadecimal digits, or an array of numbers.
nlohmann::ordered_json FieldValue(const Field& field, const Image& image);

/// Parses `text` into the field; `index` chooses one element of an array, or is -1 for the field
/// as a whole (an array takes a list with commas, and leaves the elements behind it alone). An
/// empty result is success; otherwise the reason, and the image is unchanged.
std::string SetField(const Field& field, int index, const std::string& text, Image& image);

}  // namespace vkcl::tool
