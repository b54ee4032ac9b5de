#include <algorithm>

#include "inspect/DocumentForms.h"
#include "inspect/PrintableText.h"
#include "platform/plinth/HexText.h"
#include "profile/SignatureText.h"

namespace vkcl {
namespace {

constexpr std::size_t kLabelWidth = 20;
/// Of longer blocks only the start is shown.
constexpr std::uint64_t kShownBytes = 256;

// The start of a line, up to where its text stands.
std::string Labelled(std::size_t indent, std::string_view label) {
  std::string line(indent, ' ');
  line += label;
  line.resize(std::max(line.size() + 1, kLabelWidth + 2), ' ');
  return line;
}

}  // namespace

void TextDocument::Begin(const VKCLProfile& profile) {
  out_.Put("'" + SignatureText(profile.GetDeviceClass()) + "' profile, '" +
           SignatureText(profile.GetColorSpace()) + "' to '" + SignatureText(profile.GetPCS()) +
           "'\n");
}

void TextDocument::Tag(const ShownTag& tag) {
  out_.Put("\n" + StoredTagName(tag.stored.signature, tag.stored.occurrence) + "  " +
           (tag.schema != nullptr ? tag.schema->title : "unknown") + ", " +
           std::to_string(tag.bytes.size()) + " bytes\n");
  if (tag.record != nullptr) return Record(*tag.record, 2);
  if (!tag.problem.empty()) out_.Put("  " + tag.problem + "\n");
  Dump(tag.bytes.size(), 2,
       [&](std::uint64_t from, std::size_t length) { return tag.bytes.At(from, length); });
}

void TextDocument::Record(const RecordView& record, std::size_t indent) {
  for (const FieldView& field : record.fields()) Field(field, indent);
}

void TextDocument::Line(std::size_t indent, std::string_view label, std::string_view text) {
  if (text.empty()) {
    out_.Put(std::string(indent, ' ') + std::string(label) + "\n");
  } else {
    out_.Put(Labelled(indent, label) + std::string(text) + "\n");
  }
}

void TextDocument::Field(const FieldView& field, std::size_t indent) {
  const FieldSchema& schema = field.schema();
  const std::string unit = *schema.unit == '\0' ? "" : std::string(" ") + schema.unit;
  if (schema.type == FieldType::Record) {
    for (std::uint64_t i = 0; i < field.count(); ++i) {
      Line(indent, std::string(schema.name) + "[" + std::to_string(i) + "]", "");
      Record(field.Record(i), indent + 2);
    }
    return;
  }
  if (schema.type == FieldType::Text) {
    return Line(indent, schema.name, "\"" + PrintableText(field.TextBytes()) + "\"");
  }
  if (schema.shape == FieldShape::Blocks) {
    FieldView::Extent block = {};
    for (std::uint64_t i = 0; i < field.count(); ++i) {
      block = field.Block(i, block);
      Line(indent, std::string(schema.name) + "[" + std::to_string(i) + "]",
           std::to_string(block.length) + " bytes");
      Dump(block.length, indent + 2, [&](std::uint64_t from, std::size_t length) {
        return field.Bytes(block.from + from, length);
      });
    }
    return;
  }
  if (schema.type == FieldType::Bytes) {
    const std::uint64_t used = field.UsedCount();
    Line(indent, schema.name,
         std::to_string(field.length()) + " bytes" +
             (used == 0 && field.length() > 0 ? ", zeros" : ""));
    return Dump(used, indent + 2,
                [&](std::uint64_t from, std::size_t length) { return field.Bytes(from, length); });
  }
  if (schema.shape == FieldShape::Rows) return Rows(field, indent);
  if (schema.shape == FieldShape::List) return List(field, indent, unit);
  const auto signature = static_cast<std::uint32_t>(field.Integer());
  if (schema.type == FieldType::Signature && IsPrintableSignature(signature)) {
    return Line(indent, schema.name, "'" + SignatureText(signature) + "'");
  }
  Line(indent, schema.name, field.NumberText() + unit);
}

// "95.5, 100 x 15": runs of equal numbers are folded.
void TextDocument::List(const FieldView& field, std::size_t indent, const std::string& unit) {
  if (field.count() == 0) return Line(indent, field.schema().name, "none");
  out_.Put(Labelled(indent, field.schema().name));
  std::string number = field.NumberText(0);
  for (std::uint64_t i = 0; i < field.count();) {
    const std::uint64_t first = i;
    std::string next;
    while (++i < field.count() && (next = field.NumberText(i)) == number) {
    }
    out_.Put((first > 0 ? ", " : "") + number);
    if (i - first > 1) out_.Put(" x " + std::to_string(i - first));
    number = std::move(next);
  }
  out_.Put(unit + "\n");
}

void TextDocument::Rows(const FieldView& field, std::size_t indent) {
  const std::uint64_t rows = field.UsedCount();
  Line(indent, field.schema().name, std::to_string(rows) + " rows");
  for (std::uint64_t row = 0; row < rows; ++row) {
    out_.Put(std::string(indent + 2, ' '));
    for (std::uint64_t i = 0; i < field.columns(); ++i) {
      if (i > 0) out_.Put(" ");
      out_.Put(field.NumberText(row * field.columns() + i));
    }
    out_.Put("\n");
  }
}

template <class Fetch>
void TextDocument::Dump(std::uint64_t length, std::size_t indent, const Fetch& fetch) {
  constexpr std::size_t kLine = 16;
  const std::uint64_t shown = std::min(length, kShownBytes);
  for (std::uint64_t from = 0; from < shown; from += kLine) {
    const std::string_view bytes =
        fetch(from, static_cast<std::size_t>(std::min<std::uint64_t>(kLine, shown - from)));
    std::string line(indent, ' ');
    for (const char byte : bytes) line += HexText(&byte, 1) + " ";
    line.resize(indent + 3 * kLine + 1, ' ');
    for (const char byte : bytes) line += byte >= ' ' && byte <= '~' ? byte : '.';
    out_.Put(line + "\n");
  }
  if (length > shown) {
    out_.Put(std::string(indent, ' ') + "and " + std::to_string(length - shown) + " bytes more\n");
  }
}

}  // namespace vkcl
