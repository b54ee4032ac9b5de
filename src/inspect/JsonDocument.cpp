#include <algorithm>

#include "inspect/DocumentForms.h"
#include "platform/plinth/Base64.h"
#include "profile/SignatureText.h"

namespace vkcl {
namespace {

// JSON has no infinities and no NaNs, and programs that read it lose the sign of zero: these are
// texts.
bool IsJsonNumber(std::string_view text) {
  const char last = text.back();
  return text != "-0" && last >= '0' && last <= '9' && !text.starts_with("nan");
}

}  // namespace

void JsonDocument::Begin(const VKCLProfile& profile) {
  json_.OpenObject();
  json_.Key("format");
  json_.String(kDocumentFormat);
  json_.Key("formatVersion");
  json_.Number(std::to_string(kDocumentVersion));
  json_.Key("profile");
  json_.OpenObject();
  json_.Key("class");
  json_.String(SignatureText(profile.GetDeviceClass()));
  json_.Key("colorSpace");
  json_.String(SignatureText(profile.GetColorSpace()));
  json_.Key("pcs");
  json_.String(SignatureText(profile.GetPCS()));
  json_.CloseObject();
  json_.Key("tags");
  json_.OpenObject();
}

void JsonDocument::End() {
  json_.CloseObject();
  json_.CloseObject();
  json_.End();
}

void JsonDocument::Tag(const ShownTag& tag) {
  json_.Key(StoredTagName(tag.stored.signature, tag.stored.occurrence));
  json_.OpenObject();
  if (tag.record != nullptr) {
    Record(*tag.record);
  } else {
    if (!tag.problem.empty()) {
      json_.Key(kProblemKey);
      json_.String(tag.problem);
    }
    json_.Key(tag.stored.isData ? kPayloadKey : kElementKey);
    Base64(tag.bytes.size(),
           [&](std::uint64_t from, std::size_t length) { return tag.bytes.At(from, length); });
  }
  json_.CloseObject();
}

void JsonDocument::Record(const RecordView& record) {
  for (const FieldView& field : record.fields()) {
    json_.Key(field.schema().name);
    Field(field);
  }
}

void JsonDocument::Field(const FieldView& field) {
  using Style = JsonWriter::Style;
  const FieldSchema& schema = field.schema();
  switch (schema.shape) {
    case FieldShape::Single:
      if (schema.type == FieldType::Text) return Text(field);
      if (schema.type != FieldType::Bytes) return Value(field, 0);
      return Base64(field.UsedCount(), [&](std::uint64_t from, std::size_t length) {
        return field.Bytes(from, length);
      });
    case FieldShape::List:
      json_.OpenArray(schema.type == FieldType::Record ? Style::Lines : Style::Inline);
      for (std::uint64_t i = 0; i < field.count(); ++i) {
        if (schema.type != FieldType::Record) {
          Value(field, i);
          continue;
        }
        json_.OpenObject();
        Record(field.Record(i));
        json_.CloseObject();
      }
      break;
    case FieldShape::Rows:
      json_.OpenArray(Style::Lines);
      for (std::uint64_t row = 0, rows = field.UsedCount(); row < rows; ++row) {
        json_.OpenArray(Style::Inline);
        for (std::uint64_t i = 0; i < field.columns(); ++i) Value(field, row * field.columns() + i);
        json_.CloseArray();
      }
      break;
    case FieldShape::Blocks: {
      json_.OpenArray(Style::Lines);
      FieldView::Extent block = {};
      for (std::uint64_t i = 0; i < field.count(); ++i) {
        block = field.Block(i, block);
        Base64(block.length, [&](std::uint64_t from, std::size_t length) {
          return field.Bytes(block.from + from, length);
        });
      }
      break;
    }
  }
  json_.CloseArray();
}

void JsonDocument::Value(const FieldView& field, std::uint64_t index) {
  const FieldType type = field.schema().type;
  if (type == FieldType::Signature &&
      IsPrintableSignature(static_cast<std::uint32_t>(field.Integer(index)))) {
    return json_.String(SignatureText(static_cast<std::uint32_t>(field.Integer(index))));
  }
  const std::string text = field.NumberText(index);
  if (IsJsonNumber(text)) {
    json_.Number(text);
  } else {
    json_.String(text);
  }
}

void JsonDocument::Text(const FieldView& field) {
  if (const auto text = field.Text()) return json_.String(*text);
  json_.OpenObject();
  json_.Key(kBytesKey);
  Base64(field.UsedCount(),
         [&](std::uint64_t from, std::size_t length) { return field.Bytes(from, length); });
  json_.CloseObject();
}

// An array of lines, so that no text is longer than a reader can bear.
template <class Fetch>
void JsonDocument::Base64(std::uint64_t length, const Fetch& fetch) {
  using Style = JsonWriter::Style;
  json_.OpenArray(length > kBase64Line ? Style::Lines : Style::Inline);
  for (std::uint64_t from = 0; from < length; from += kBase64Line) {
    const std::uint64_t left = length - from;
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, kBase64Line));
    json_.String(Base64Text(fetch(from, count)));
  }
  json_.CloseArray();
}

}  // namespace vkcl
