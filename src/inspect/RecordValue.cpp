#include "inspect/RecordValue.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <type_traits>

#include "platform/Bytes.h"
#include "platform/plinth/HexText.h"
#include "platform/plinth/NumberText.h"

namespace vkcl {
namespace {

template <class Number>
void Append(std::vector<char>& bytes, Number number) {
  const auto* first = reinterpret_cast<const char*>(&number);
  bytes.insert(bytes.end(), first, first + sizeof number);
}

template <class Whole>
bool ParseWhole(std::string_view text, Whole& number) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

template <class Bits>
bool ParseBits(std::string_view digits, Bits& bits) {
  unsigned char big[sizeof bits];
  if (digits.size() != 2 * sizeof bits || ReadHex(digits, big, sizeof big) != sizeof big) {
    return false;
  }
  bits = 0;
  for (const unsigned char byte : big) bits = static_cast<Bits>(bits << 8) | byte;
  return true;
}

// The words for numbers that JSON does not have, as the views write them.
template <class Real>
bool ParseWord(std::string_view text, Real& number) {
  constexpr std::string_view kNan = "nan:";
  using Limits = std::numeric_limits<Real>;
  if (text == "-0") {
    number = -Real(0);
  } else if (text == "inf") {
    number = Limits::infinity();
  } else if (text == "-inf") {
    number = -Limits::infinity();
  } else if (text == "nan") {
    number = Limits::quiet_NaN();
  } else if (text.starts_with(kNan)) {
    std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t> bits = 0;
    if (!ParseBits(text.substr(kNan.size()), bits)) return false;
    number = std::bit_cast<Real>(bits);
    return std::isnan(number);
  } else {
    return false;
  }
  return true;
}

template <class Real>
std::string AppendReal(bool isString, std::string_view text, std::vector<char>& bytes) {
  Real number = 0;
  if (isString ? !ParseWord(text, number) : !WholeNumber(text, number)) {
    return R"(takes a number, or "inf", "-inf", "nan", "-0")";
  }
  Append(bytes, number);
  return {};
}

template <class Whole>
std::string AppendWhole(bool isString, std::string_view text, std::vector<char>& bytes) {
  Whole number = 0;
  if (isString || !ParseWhole(text, number)) {
    return "takes a whole number from " + std::to_string(std::numeric_limits<Whole>::min()) +
           " to " + std::to_string(std::numeric_limits<Whole>::max());
  }
  Append(bytes, number);
  return {};
}

std::string AppendSignature(bool isString, std::string_view text, std::vector<char>& bytes) {
  std::uint32_t number = 0;
  if (isString ? text.size() != sizeof number : !ParseWhole(text, number)) {
    return "takes a text of four characters, or a whole number from 0 to 4294967295";
  }
  Append(bytes, isString ? LoadBig32(text.data()) : number);
  return {};
}

std::string Quoted(const char* name) { return std::string("\"") + name + "\""; }

}  // namespace

std::string AppendValue(FieldType type, bool isString, std::string_view text,
                        std::vector<char>& bytes) {
  switch (type) {
    case FieldType::Int32: return AppendWhole<std::int32_t>(isString, text, bytes);
    case FieldType::UInt32: return AppendWhole<std::uint32_t>(isString, text, bytes);
    case FieldType::Float32: return AppendReal<float>(isString, text, bytes);
    case FieldType::Float64: return AppendReal<double>(isString, text, bytes);
    case FieldType::Signature: return AppendSignature(isString, text, bytes);
    case FieldType::Text:
    case FieldType::Bytes:
    case FieldType::Record: break;
  }
  return "takes no number";
}

RecordValue::RecordValue() = default;
RecordValue::~RecordValue() = default;
RecordValue::RecordValue(RecordValue&& other) noexcept = default;

FieldValue* RecordValue::Add(const FieldSchema& field) {
  if (Find(field.name) != nullptr) return nullptr;
  return &values_.emplace_back(&field, FieldValue()).second;
}

const FieldValue* RecordValue::Find(std::string_view name) const {
  const auto found = std::find_if(values_.begin(), values_.end(),
                                  [&](const auto& value) { return value.first->name == name; });
  return found == values_.end() ? nullptr : &found->second;
}

// One record on its way into a payload.
class RecordValue::Assembly {
 public:
  Assembly(const RecordValue& record, std::span<const FieldSchema> fields, const TagSchema& schema,
           std::vector<char>& payload, std::vector<std::string>& notes)
      : record_(record), fields_(fields), schema_(schema), payload_(payload), notes_(notes) {}

  std::string Run() {
    const std::size_t start = payload_.size();
    std::optional<std::size_t> sizeAt;
    for (const FieldSchema& field : fields_) {
      if (field.role == FieldRole::PayloadSize) sizeAt = payload_.size();
      std::string why = Put(field);
      if (!why.empty()) return why;
    }
    if (sizeAt) SettleSize(*sizeAt, payload_.size() - start);
    return {};
  }

 private:
  std::string Put(const FieldSchema& field) {
    const FieldValue* value = record_.Find(field.name);
    if (value == nullptr) return PutMissing(field);
    std::string why = Check(field, *value);
    if (!why.empty()) return why;
    if (field.type == FieldType::Record) return PutRecords(field, *value);
    NoteUnused(field, *value);
    payload_.insert(payload_.end(), value->bytes.begin(), value->bytes.end());
    if (field.amount.kind == Amount::Kind::Constant) FillUp(field, value->bytes.size());
    if (value->isText && field.terminated) payload_.push_back('\0');
    return {};
  }

  // Rows behind those that are used are stored, and mean nothing.
  void NoteUnused(const FieldSchema& field, const FieldValue& value) {
    if (field.used == nullptr || record_.Find(field.used) == nullptr) return;
    const std::int64_t used = IntegerOf(field.used);
    if (used >= static_cast<std::int64_t>(value.count)) return;
    notes_.push_back(Quoted(field.name) + " has " + std::to_string(value.count) +
                     " rows, of which " + Quoted(field.used) + " uses " + std::to_string(used));
  }

  // Fixed blocks, texts and rows may be given without the zeros at their end.
  void FillUp(const FieldSchema& field, std::size_t given) {
    const std::size_t whole =
        std::size_t{field.amount.number} * field.columns.number * SizeOf(field.type);
    payload_.resize(payload_.size() + (whole - given));
  }

  std::string PutMissing(const FieldSchema& field) {
    switch (field.role) {
      case FieldRole::Data: break;
      case FieldRole::PayloadSize: Append(payload_, std::int32_t{0}); return {};  // settled later
      case FieldRole::Count: return PutCount(CountedBy(field.name));
      case FieldRole::Presence: Append(payload_, std::int32_t{IsGiven(field)}); return {};
      case FieldRole::Lengths: return PutLengths(field);
    }
    if (!field.reserved) return Quoted(field.name) + " is missing";
    FillUp(field, 0);
    return {};
  }

  std::string PutCount(std::uint64_t count) {
    if (count > INT32_MAX) return "there are too many values";
    Append(payload_, static_cast<std::int32_t>(count));
    return {};
  }

  std::string PutLengths(const FieldSchema& lengths) {
    for (const FieldSchema& field : fields_) {
      const FieldValue* value = record_.Find(field.name);
      if (field.shape != FieldShape::Blocks || field.amount.field != lengths.name) continue;
      if (value == nullptr) return Quoted(field.name) + " is missing";
      for (const std::int32_t length : value->lengths) Append(payload_, length);
    }
    return {};
  }

  std::string PutRecords(const FieldSchema& field, const FieldValue& value) {
    const std::int64_t version = IntegerOf("version");
    for (const RecordForm& form : schema_.forms) {
      if (form.version != version) continue;
      for (std::size_t i = 0; i < value.records.size(); ++i) {
        const std::string place = std::string(field.name) + "[" + std::to_string(i) + "]: ";
        std::vector<std::string> notes;
        const std::string why = value.records[i].Assemble(form.fields, schema_, payload_, notes);
        if (!why.empty()) return place + why;
        for (const std::string& note : notes) notes_.push_back(place + note);
      }
      return {};
    }
    return "there are no records of version " + std::to_string(version);
  }

  std::string Check(const FieldSchema& field, const FieldValue& value) const {
    if (field.role == FieldRole::Count) return CheckCount(field, CountedBy(field.name));
    if (field.role == FieldRole::Presence) return CheckPresence(field, value);
    if (field.role == FieldRole::Lengths) return CheckLengths(field, value);
    if (field.amount.kind != Amount::Kind::Constant) return {};
    const bool mayBeShort = field.type == FieldType::Text || field.type == FieldType::Bytes ||
                            field.shape == FieldShape::Rows;
    const std::uint64_t whole = field.amount.number;
    if (mayBeShort ? value.count > whole : value.count != whole) {
      return Quoted(field.name) + " takes " + (mayBeShort ? "at most " : "") +
             std::to_string(whole) + " values, not " + std::to_string(value.count);
    }
    if (field.shape == FieldShape::Rows && value.count > 0 &&
        value.columns != field.columns.number) {
      return Quoted(field.name) + " takes rows of " + std::to_string(field.columns.number) +
             " values, not of " + std::to_string(value.columns);
    }
    return {};
  }

  // What a count must be: as many as were given of the field that it counts. Of values that are
  // not there it may be any.
  std::string CheckCount(const FieldSchema& count, std::uint64_t given) const {
    const std::int64_t said = IntegerOf(count.name);
    for (const FieldSchema& field : fields_) {
      const bool rows = Counts(field.amount, count);
      if (!rows && !Counts(field.columns, count)) continue;
      if (field.presence != nullptr && !IsPresent(field)) return {};
      // Rows without values are none.
      const bool empty = field.shape == FieldShape::Rows && given == 0 && IsEmptyRow(field);
      if (empty || said == static_cast<std::int64_t>(given)) return {};
      return Quoted(count.name) + " is " + std::to_string(said) + ", and " + Quoted(field.name) +
             " has " + std::to_string(given) + (rows ? "" : " values in a row") + "; without " +
             Quoted(count.name) + " it follows";
    }
    return {};
  }

  bool IsEmptyRow(const FieldSchema& rows) const {
    return IntegerOf(rows.amount.field) == 0 || IntegerOf(rows.columns.field) == 0;
  }

  std::string CheckPresence(const FieldSchema& presence, const FieldValue& value) const {
    std::int32_t said = 0;
    std::memcpy(&said, value.bytes.data(), sizeof said);
    if (said == 0 && IsGiven(presence)) {
      return Quoted(presence.name) + " is 0, and there are values";
    }
    return {};
  }

  std::string CheckLengths(const FieldSchema& lengths, const FieldValue& value) const {
    for (const FieldSchema& field : fields_) {
      const FieldValue* blocks = record_.Find(field.name);
      if (field.shape != FieldShape::Blocks || blocks == nullptr) continue;
      const auto* first = reinterpret_cast<const char*>(blocks->lengths.data());
      const char* last = first + sizeof(std::int32_t) * blocks->lengths.size();
      if (!std::equal(value.bytes.begin(), value.bytes.end(), first, last)) {
        return Quoted(lengths.name) + " are not the lengths of " + Quoted(field.name);
      }
    }
    return {};
  }

  static bool Counts(const Amount& amount, const FieldSchema& count) {
    return amount.kind == Amount::Kind::Field && std::string_view(amount.field) == count.name;
  }

  // How many there are of what a field counts.
  std::uint64_t CountedBy(std::string_view name) const {
    for (const FieldSchema& field : fields_) {
      const FieldValue* value = record_.Find(field.name);
      const auto counts = [&](const Amount& amount) {
        return amount.kind == Amount::Kind::Field && name == amount.field;
      };
      if (counts(field.amount) && field.role == FieldRole::Lengths) return CountOfBlocks(field);
      if (value != nullptr && counts(field.amount)) return value->count;
      if (value != nullptr && counts(field.columns)) return value->columns;
    }
    return 0;
  }

  std::uint64_t CountOfBlocks(const FieldSchema& lengths) const {
    for (const FieldSchema& field : fields_) {
      const FieldValue* value = record_.Find(field.name);
      if (value != nullptr && Counts(field.amount, lengths)) return value->count;
    }
    return 0;
  }

  // Whether there are values of the field that a presence speaks of.
  bool IsGiven(const FieldSchema& presence) const {
    return std::any_of(fields_.begin(), fields_.end(), [&](const FieldSchema& field) {
      const FieldValue* value = record_.Find(field.name);
      return field.presence != nullptr && std::string_view(field.presence) == presence.name &&
             value != nullptr && value->count > 0;
    });
  }

  bool IsPresent(const FieldSchema& field) const {
    const FieldValue* presence = record_.Find(field.presence);
    if (presence != nullptr) return IntegerOf(field.presence) != 0;
    const FieldValue* value = record_.Find(field.name);
    return value != nullptr && value->count > 0;
  }

  // An integer that was given; 0 for one that was not.
  std::int64_t IntegerOf(std::string_view name) const {
    const FieldValue* value = record_.Find(name);
    std::int32_t number = 0;
    if (value == nullptr || value->bytes.size() != sizeof number) return 0;
    std::memcpy(&number, value->bytes.data(), sizeof number);
    return number;
  }

  // A size that was given stays as it is.
  void SettleSize(std::size_t at, std::size_t size) {
    const auto length = static_cast<std::int32_t>(size);
    const FieldSchema& field = *std::find_if(fields_.begin(), fields_.end(), [](const auto& f) {
      return f.role == FieldRole::PayloadSize;
    });
    if (record_.Find(field.name) == nullptr) {
      std::memcpy(payload_.data() + at, &length, sizeof length);
    } else if (IntegerOf(field.name) != length) {
      notes_.push_back(Quoted(field.name) + " is " + std::to_string(IntegerOf(field.name)) +
                       ", and it takes " + std::to_string(length) + " bytes");
    }
  }

  const RecordValue& record_;
  std::span<const FieldSchema> fields_;
  const TagSchema& schema_;
  std::vector<char>& payload_;
  std::vector<std::string>& notes_;
};

std::string RecordValue::Assemble(std::span<const FieldSchema> fields, const TagSchema& schema,
                                  std::vector<char>& payload,
                                  std::vector<std::string>& notes) const {
  for (const auto& [field, value] : values_) {
    if (FindField(fields, field->name) == nullptr) {
      return "a record of this version has no " + Quoted(field->name);
    }
  }
  return Assembly(*this, fields, schema, payload, notes).Run();
}

}  // namespace vkcl
