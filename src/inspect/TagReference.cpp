#include <optional>

#include "inspect/SchemaText.h"
#include "inspect/StoredTags.h"
#include "inspect/TagSchema.h"
#include "platform/Guarded.h"

namespace vkcl {
namespace {

constexpr const char* kHead =
    "# The private tags, field by field\n"
    "\n"
    "Made from the library's schema by `vkcl schema --markdown`. Numbers are little-endian; "
    "offsets\n"
    "and lengths are in bytes, from the start of the payload, which stands behind the 12 bytes of\n"
    "the head of a 'data' tag. [format.md](format.md) says more about each.\n";

const char* TypeName(FieldType type) {
  switch (type) {
    case FieldType::Int32: return "int32";
    case FieldType::UInt32: return "uint32";
    case FieldType::Float32: return "float32";
    case FieldType::Float64: return "float64";
    case FieldType::Signature: return "signature";
    case FieldType::Text: return "text";
    case FieldType::Bytes: return "bytes";
    case FieldType::Record: break;
  }
  return "records";
}

std::string AmountText(const Amount& amount) {
  switch (amount.kind) {
    case Amount::Kind::Constant: return std::to_string(amount.number);
    case Amount::Kind::Field: return std::string("`") + amount.field + "`";
    case Amount::Kind::Rest: break;
  }
  return "the rest";
}

bool IsOne(const Amount& amount) {
  return amount.kind == Amount::Kind::Constant && amount.number == 1;
}

std::string TypeText(const FieldSchema& field) {
  std::string text = TypeName(field.type);
  if (field.type == FieldType::Text || field.type == FieldType::Bytes) {
    return text + "[" + AmountText(field.amount) + "]";
  }
  if (!IsOne(field.amount)) text += " x " + AmountText(field.amount);
  if (!IsOne(field.columns)) text += " x " + AmountText(field.columns);
  return text;
}

// Bytes that a field always takes; nothing when that depends.
std::optional<std::uint64_t> FixedSize(const FieldSchema& field) {
  if (field.amount.kind != Amount::Kind::Constant || field.type == FieldType::Record ||
      field.columns.kind != Amount::Kind::Constant) {
    return std::nullopt;
  }
  return std::uint64_t{field.amount.number} * field.columns.number * SizeOf(field.type);
}

std::string RoleText(const FieldSchema& field) {
  std::string text;
  if (field.role != FieldRole::Data) text += "; may be left out of documents";
  if (field.reserved) text += "; zeros when left out of documents";
  if (field.presence != nullptr)
    text += std::string("; there when `") + field.presence + "` is not 0";
  return text;
}

std::string FieldTable(std::span<const FieldSchema> fields) {
  std::string text = "\n| offset | field | type | unit | meaning |\n|---|---|---|---|---|\n";
  std::optional<std::uint64_t> offset = 0;
  for (const FieldSchema& field : fields) {
    text += "| " + (offset ? std::to_string(*offset) : std::string()) + " | `" + field.name +
            "` | " + TypeText(field) + " | " + field.unit + " | " + field.meaning +
            RoleText(field) + " |\n";
    const std::optional<std::uint64_t> size = FixedSize(field);
    offset = offset && size ? std::optional(*offset + *size) : std::nullopt;
  }
  if (offset) text += "\n" + std::to_string(*offset) + " bytes.\n";
  return text;
}

// Tags with the same fields are described once.
bool IsDescribed(const TagSchema& tag) {
  for (const TagSchema& earlier : TagSchemas()) {
    if (&earlier == &tag) return false;
    if (earlier.fields.data() == tag.fields.data()) return true;
  }
  return false;
}

std::string Heading(const TagSchema& tag) {
  return StoredTagName(tag.signature, 1) + " `" + tag.name + "`, " + tag.title;
}

std::string Section(const TagSchema& tag) {
  std::string text = "\n## " + Heading(tag) + "\n";
  std::string same;
  for (const TagSchema& other : TagSchemas()) {
    if (&other == &tag || other.fields.data() != tag.fields.data()) continue;
    same += "- " + Heading(other) + "\n";
  }
  if (!same.empty()) text += "\nThe same fields have\n\n" + same;
  text += FieldTable(tag.fields);
  for (const RecordForm& form : tag.forms) {
    text += "\n### A record of version " + std::to_string(form.version) + "\n";
    text += FieldTable(form.fields);
  }
  return text;
}

}  // namespace

std::string TagReference() {
  return Guarded([] {
    std::string text = kHead;
    for (const TagSchema& tag : TagSchemas()) {
      if (!IsDescribed(tag)) text += Section(tag);
    }
    return text;
  });
}

}  // namespace vkcl
