// The records without a chart of their own, field by field through the schema.
#include <algorithm>

#include "inspect/report/ReportSections.h"
#include "platform/plinth/HexText.h"
#include "profile/SignatureText.h"

namespace vkcl {
namespace {

constexpr std::uint64_t kMostValues = 64;
constexpr std::size_t kMostBytes = 32;
constexpr std::size_t kMostTags = 100;

// Tags with sections of their own.
bool IsShownElsewhere(std::uint32_t signature) {
  switch (signature) {
    case QX50:
    case QX51:
    case QX52:
    case QX54:
    case QX55:
    case QX56:
    case QX57:
    case QX59:
    case QX60:
    case QX68:
    case QX72:
    case QX73: return true;
    default: return false;
  }
}

void WriteBytes(HtmlWriter& out, const FieldView& field) {
  // Zeros at the end are left out of blocks of constant length, which are short.
  const std::uint64_t used = field.UsedCount();
  if (field.length() == 0) {
    out << "none"_html;
  } else if (used == 0) {
    out << "<span class=\"muted\">"_html << ShownBytes(field.length()) << ", all zero</span>"_html;
  } else {
    const std::string_view start =
        field.Bytes(0, static_cast<std::size_t>(std::min<std::uint64_t>(used, kMostBytes)));
    const char* rest = start.size() < used             ? " ..."
                       : start.size() < field.length() ? " and zeros"
                                                       : "";
    out << ShownBytes(field.length()) << "<br><code>"_html << HexText(start.data(), start.size())
        << rest << "</code>"_html;
  }
}

void WriteNumbers(HtmlWriter& out, const FieldView& field) {
  const std::uint64_t count = field.count() * std::max<std::uint64_t>(field.columns(), 1);
  for (std::uint64_t i = 0; i < std::min(count, kMostValues); ++i) {
    if (i != 0) out << ", "_html;
    out << field.NumberText(i);
  }
  if (count > kMostValues) out << ", ... ("_html << ShownCount(count) << ")"_html;
  if (count == 0) out << "none"_html;
}

void WriteBlocks(HtmlWriter& out, const FieldView& field) {
  out << ShownCount(field.count());
  FieldView::Extent block = {};
  for (std::uint64_t i = 0; i < std::min<std::uint64_t>(field.count(), kMostValues); ++i) {
    block = field.Block(i, block);
    out << (i == 0 ? ": " : ", ") << ShownBytes(block.length);
  }
}

void WriteValue(HtmlWriter& out, const FieldView& field) {
  const FieldSchema& schema = field.schema();
  if (schema.shape == FieldShape::Blocks) return WriteBlocks(out, field);
  switch (schema.type) {
    case FieldType::Text: {
      const std::string text = field.TextBytes();
      if (text.empty()) {
        out << "<span class=\"muted\">empty</span>"_html;
      } else {
        out << "<span class=\"text\">"_html << Isolated{text} << "</span>"_html;
      }
      break;
    }
    case FieldType::Bytes: WriteBytes(out, field); break;
    case FieldType::Signature:
      out << "<code>"_html << Isolated{SignatureText(static_cast<std::uint32_t>(field.Integer()))}
          << "</code>"_html;
      break;
    default: WriteNumbers(out, field); break;
  }
}

void WriteRow(HtmlWriter& out, const FieldView& field) {
  const FieldSchema& schema = field.schema();
  out << "<tr><th scope=\"row\">"_html << schema.name << "</th><td>"_html;
  WriteValue(out, field);
  if (schema.unit[0] != '\0') out << " <span class=\"unit\">"_html << schema.unit << "</span>"_html;
  out << "</td><td class=\"muted\">"_html << schema.meaning;
  if (std::string_view(schema.name) == "ColorMode") {
    const std::string inks = InkNames(static_cast<std::int32_t>(field.Integer()));
    out << (inks.empty() ? std::string(": no ink set that is known") : ": " + inks);
  }
  out << "</td></tr>"_html;
}

void WriteFields(HtmlWriter& out, const RecordView& record, const char* caption, bool folded) {
  out << "<table class=\"fields\"><caption class=\"unseen\">"_html << caption
      << "</caption><thead><tr><th scope=\"col\">Field</th><th scope=\"col\">Value</th>"
         "<th scope=\"col\">Meaning</th></tr></thead><tbody>"_html;
  for (const FieldView& field : record.fields()) {
    const bool isFolded = field.schema().frames || field.schema().reserved;
    if (isFolded == folded) WriteRow(out, field);
  }
  out << "</tbody></table>"_html;
}

void WriteRecord(HtmlWriter& out, const RecordView& record, const char* title) {
  const auto& fields = record.fields();
  WriteFields(out, record, title, false);
  const bool anyFolded = std::any_of(fields.begin(), fields.end(), [](const FieldView& field) {
    return field.schema().frames || field.schema().reserved;
  });
  if (!anyFolded) return;
  out << "<details><summary>Framing and reserved fields</summary>"_html;
  WriteFields(out, record, "fields that say how the record is stored", true);
  out << "</details>"_html;
}

}  // namespace

bool HasSettings(const ShownFile& file) {
  return std::any_of(
      file.privateTags().begin(), file.privateTags().end(),
      [](const StoredTag& tag) { return !IsShownElsewhere(tag.signature) || tag.occurrence > 1; });
}

void WriteUnreadable(HtmlWriter& out, const ReadTag& read) {
  if (read.tag == nullptr) return;
  const std::string name = StoredTagName(read.tag->signature, read.tag->occurrence);
  out << "<p class=\"warn\"><code>"_html << Isolated{name} << "</code> cannot be read: "_html
      << Isolated{read.why} << ".</p>"_html;
}

void WriteSettings(HtmlWriter& out, const ShownFile& file) {
  std::size_t shown = 0;
  out << "<div class=\"records\">"_html;
  for (const StoredTag& tag : file.privateTags()) {
    if (tag.occurrence == 1 && IsShownElsewhere(tag.signature)) continue;
    if (++shown > kMostTags) break;
    const TagSchema* schema = FindTagSchema(tag.signature);
    const char* title = schema != nullptr ? schema->title : "unknown private tag";
    const ReadTag read = file.Read(tag);
    out << "<section class=\"record\"><h4><code>"_html
        << Isolated{StoredTagName(tag.signature, tag.occurrence)} << "</code> "_html << title
        << "</h4>"_html;
    if (tag.occurrence > 1) {
      out << "<p class=\"note\">Readers take the first tag of a signature; this one is "
             "hidden.</p>"_html;
    }
    if (!read.view) {
      WriteUnreadable(out, read);
    } else if (tag.occurrence == 1) {
      WriteRecord(out, *read.view, title);
    }
    out << "</section>"_html;
  }
  out << "</div>"_html;
  if (shown > kMostTags) out << "<p class=\"note\">More tags are left out.</p>"_html;
}

}  // namespace vkcl
