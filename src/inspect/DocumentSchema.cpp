#include "inspect/DocumentForms.h"
#include "inspect/JsonWriter.h"
#include "inspect/SchemaText.h"
#include "platform/Guarded.h"

namespace vkcl {
namespace {

using Style = JsonWriter::Style;

// A pattern for numbers that JSON does not have.
constexpr std::string_view kNumberWords = "^(inf|-inf|-0|nan(:([0-9a-f]{8}|[0-9a-f]{16}))?)$";
constexpr std::string_view kBase64Pattern =
    "^([A-Za-z0-9+/]{4})*([A-Za-z0-9+/]{2}([A-Za-z0-9+/]|=)=)?$";

class SchemaWriter {
 public:
  explicit SchemaWriter(SinkBuffer& out) : json_(out) {}

  void Write() {
    json_.OpenObject();
    Pair("$schema", "https://json-schema.org/draft/2020-12/schema");
    Pair("title", "Private tags of an ICC profile");
    ObjectOf({"format", "formatVersion", "tags"});
    Nested("properties", [&] {
      Nested("$schema", [] {});
      Nested("format", [&] { Pair("const", kDocumentFormat); });
      Nested("formatVersion", [&] { Number("const", kDocumentVersion); });
      Nested("profile", [&] {
        Pair("description", "what the profile was; for people");
        Pair("type", "object");
      });
      Nested("tags", [&] { Tags(); });
    });
    Nested("$defs", [&] { Definitions(); });
    json_.CloseObject();
    json_.End();
  }

 private:
  template <class Body>
  void Nested(std::string_view key, const Body& body) {
    json_.Key(key);
    json_.OpenObject();
    body();
    json_.CloseObject();
  }
  template <class Body>
  void AnyOf(const Body& body) {
    json_.Key("anyOf");
    json_.OpenArray(Style::Lines);
    body();
    json_.CloseArray();
  }
  template <class Body>
  void Item(const Body& body) {
    json_.OpenObject();
    body();
    json_.CloseObject();
  }
  void Pair(std::string_view key, std::string_view text) {
    json_.Key(key);
    json_.String(text);
  }
  void Number(std::string_view key, std::int64_t number) {
    json_.Key(key);
    json_.Number(std::to_string(number));
  }
  void Refer(std::string_view name) { Pair("$ref", "#/$defs/" + std::string(name)); }

  // An object that has these and nothing that is not listed.
  void ObjectOf(const std::vector<std::string>& required) {
    Pair("type", "object");
    if (!required.empty()) {
      json_.Key("required");
      json_.OpenArray(Style::Inline);
      for (const std::string& name : required) json_.String(name);
      json_.CloseArray();
    }
    json_.Key("additionalProperties");
    json_.Number("false");
  }

  void Tags() {
    ObjectOf({});
    std::string known;
    Nested("patternProperties", [&] {
      for (const TagSchema& tag : TagSchemas()) {
        const std::string name = StoredTagName(tag.signature, 1);
        known += (known.empty() ? "" : "|") + name;
        Nested("^" + name + "(#[1-9][0-9]*)?$", [&] { TagOrRaw(name); });
      }
      Nested("^(?!" + known + ")(QX[!-~]{2}|0x5158[0-9a-f]{4})(#[1-9][0-9]*)?$",
             [&] { TagOrRaw({}); });
    });
  }

  // A tag may be removed, and may be given as its bytes.
  void TagOrRaw(const std::string& name) {
    AnyOf([&] {
      if (!name.empty()) Item([&] { Refer(name); });
      Item([&] { Refer(kPayloadKey); });
      Item([&] { Refer(kElementKey); });
      Item([&] { Pair("type", "null"); });
    });
  }

  void Definitions() {
    Nested("base64", [&] {
      Pair("type", "array");
      Nested("items", [&] {
        Pair("type", "string");
        Pair("pattern", kBase64Pattern);
      });
    });
    Nested("real", [&] {
      AnyOf([&] {
        Item([&] { Pair("type", "number"); });
        Item([&] {
          Pair("type", "string");
          Pair("pattern", kNumberWords);
        });
      });
    });
    Nested("textBytes", [&] {
      ObjectOf({std::string(kBytesKey)});
      Nested("properties", [&] { Nested(kBytesKey, [&] { Refer("base64"); }); });
    });
    for (const std::string_view key : {kPayloadKey, kElementKey}) {
      Nested(key, [&] {
        ObjectOf({std::string(key)});
        Nested("properties", [&] {
          Nested(key, [&] { Refer("base64"); });
          Nested(kProblemKey, [&] { Pair("type", "string"); });
        });
      });
    }
    for (const TagSchema& tag : TagSchemas()) {
      Nested(StoredTagName(tag.signature, 1), [&] {
        Pair("title", tag.title);
        Record(tag.fields, tag);
      });
    }
  }

  void Record(std::span<const FieldSchema> fields, const TagSchema& tag) {
    std::vector<std::string> required;
    for (const FieldSchema& field : fields) {
      if (field.role == FieldRole::Data && !field.reserved) required.emplace_back(field.name);
    }
    ObjectOf(required);
    Nested("properties", [&] {
      for (const FieldSchema& field : fields) {
        Nested(field.name, [&] {
          const std::string unit = *field.unit == '\0' ? "" : std::string(" (") + field.unit + ")";
          Pair("description", field.meaning + unit);
          Field(field, tag);
        });
      }
    });
  }

  void Field(const FieldSchema& field, const TagSchema& tag) {
    switch (field.shape) {
      case FieldShape::Single: return Value(field);
      case FieldShape::Blocks: return ArrayOf({}, [&] { Refer("base64"); });
      case FieldShape::List:
        return ArrayOf(field.amount, [&] {
          if (field.type != FieldType::Record) return Value(field);
          AnyOf([&] {
            for (const RecordForm& form : tag.forms) Item([&] { Record(form.fields, tag); });
          });
        });
      case FieldShape::Rows: break;
    }
    Pair("type", "array");
    if (field.amount.kind == Amount::Kind::Constant) Number("maxItems", field.amount.number);
    Nested("items", [&] { ArrayOf(field.columns, [&] { Value(field); }); });
  }

  template <class Body>
  void ArrayOf(const Amount& amount, const Body& item) {
    Pair("type", "array");
    // An amount of one, the default, says nothing of arrays.
    if (amount.kind == Amount::Kind::Constant && amount.number > 1) {
      Number("minItems", amount.number);
      Number("maxItems", amount.number);
    }
    Nested("items", item);
  }

  void Value(const FieldSchema& field) {
    switch (field.type) {
      case FieldType::Int32: return Whole(INT32_MIN, INT32_MAX);
      case FieldType::UInt32: return Whole(0, UINT32_MAX);
      case FieldType::Float32:
      case FieldType::Float64: return Refer("real");
      case FieldType::Signature:
        return AnyOf([&] {
          Item([&] { Whole(0, UINT32_MAX); });
          Item([&] { Pair("type", "string"), Pair("pattern", "^[ -~]{4}$"); });
        });
      case FieldType::Text:
        return AnyOf([&] {
          Item([&] {
            Pair("type", "string");
            if (field.amount.kind == Amount::Kind::Constant) {
              Number("maxLength", field.amount.number);
            }
          });
          Item([&] { Refer("textBytes"); });
        });
      case FieldType::Bytes:
      case FieldType::Record: break;
    }
    Refer("base64");
  }

  void Whole(std::int64_t least, std::int64_t most) {
    Pair("type", "integer");
    Number("minimum", least);
    Number("maximum", most);
  }

  JsonWriter json_;
};

}  // namespace

std::string DocumentSchema() {
  return Guarded([] {
    std::string text;
    const TextSink sink = [&](std::string_view piece) {
      text += piece;
      return true;
    };
    SinkBuffer out(sink);
    SchemaWriter(out).Write();
    out.Flush();
    return text;
  });
}

}  // namespace vkcl
