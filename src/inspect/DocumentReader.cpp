#include <algorithm>
#include <istream>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

#include "inspect/DocumentForms.h"
#include "inspect/PrintableText.h"
#include "inspect/ProfileDocument.h"
#include "inspect/RecordValue.h"
#include "platform/Guarded.h"
#include "platform/plinth/Base64.h"
#include "profile/TableLayout.h"

namespace vkcl {
namespace {

/// A number, as it stands in the document, or the content of a string; or one of the words.
struct Scalar {
  enum class Kind { Number, String, Null, Other };
  Kind kind;
  std::string_view text;
};

std::string Quoted(std::string_view name) { return "\"" + PrintableText(name) + "\""; }

// What may stand at a place of the document. Each operation returns why it may not, else an empty
// text. An array or object gets a node of its own, which ends before the one around it goes on.
class Node {
 public:
  Node() = default;
  virtual ~Node() = default;
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  virtual std::string OnScalar(const Scalar& /*scalar*/) { return "takes no such value"; }
  virtual std::string OnArray(std::unique_ptr<Node>& /*child*/) { return "takes no array"; }
  virtual std::string OnObject(std::unique_ptr<Node>& /*child*/) { return "takes no object"; }
  virtual std::string OnKey(const std::string& /*key*/) { return {}; }
  virtual std::string OnEnd() { return {}; }
  /// Where in the node the document is: ".key", "[3]" or nothing.
  virtual std::string Place() const { return {}; }
};

// Whatever it holds says nothing.
class Ignored : public Node {
 public:
  std::string OnScalar(const Scalar& /*scalar*/) override { return {}; }
  std::string OnArray(std::unique_ptr<Node>& child) override { return Nest(child); }
  std::string OnObject(std::unique_ptr<Node>& child) override { return Nest(child); }

 private:
  static std::string Nest(std::unique_ptr<Node>& child) {
    child = std::make_unique<Ignored>();
    return {};
  }
};

// Entries of an array have numbers.
class Array : public Node {
 public:
  std::string Place() const override { return "[" + std::to_string(index_) + "]"; }

 protected:
  void Next() { ++index_; }
  std::uint64_t index_ = 0;
};

// Base64, in any number of texts.
class Base64Array : public Array {
 public:
  explicit Base64Array(std::vector<char>& bytes) : bytes_(bytes) {}
  std::string OnScalar(const Scalar& scalar) override {
    if (scalar.kind != Scalar::Kind::String || !AppendBase64(scalar.text, bytes_)) {
      return "takes a text of base64";
    }
    Next();
    return {};
  }

 private:
  std::vector<char>& bytes_;
};

// The bytes of a field.
class BytesOf : public Base64Array {
 public:
  explicit BytesOf(FieldValue& value) : Base64Array(value.bytes), value_(value) {}
  std::string OnEnd() override {
    value_.count = value_.bytes.size();
    return {};
  }

 private:
  FieldValue& value_;
};

// A text that is no text: {"bytes": [...]}.
class TextBytes : public Node {
 public:
  explicit TextBytes(FieldValue& value) : value_(value) {}
  std::string OnKey(const std::string& key) override {
    if (key != kBytesKey || open_) return "takes " + Quoted(kBytesKey) + " alone";
    open_ = true;
    return {};
  }
  std::string OnArray(std::unique_ptr<Node>& child) override {
    child = std::make_unique<BytesOf>(value_);
    return {};
  }
  std::string OnEnd() override { return open_ ? "" : Quoted(kBytesKey) + " is missing"; }
  std::string Place() const override { return open_ ? "." + std::string(kBytesKey) : ""; }

 private:
  FieldValue& value_;
  bool open_ = false;
};

class Numbers : public Array {
 public:
  Numbers(FieldType type, FieldValue& value) : type_(type), value_(value) {}
  std::string OnScalar(const Scalar& scalar) override {
    if (scalar.kind > Scalar::Kind::String) return "takes a number";
    std::string why =
        AppendValue(type_, scalar.kind == Scalar::Kind::String, scalar.text, value_.bytes);
    if (why.empty()) Next();
    return why;
  }
  std::string OnEnd() override {
    value_.count = index_;
    return {};
  }

 protected:
  FieldType type_;
  FieldValue& value_;
};

class Row : public Numbers {
 public:
  using Numbers::Numbers;
  std::string OnEnd() override {
    if (value_.count > 0 && index_ != value_.columns) {
      return "takes rows of one length: this one has " + std::to_string(index_) +
             " values, and those before it " + std::to_string(value_.columns);
    }
    value_.columns = index_;
    ++value_.count;
    return {};
  }
};

class Rows : public Array {
 public:
  Rows(FieldType type, FieldValue& value) : type_(type), value_(value) {}
  std::string OnArray(std::unique_ptr<Node>& child) override {
    index_ = value_.count;
    child = std::make_unique<Row>(type_, value_);
    return {};
  }
  std::string Place() const override { return "[" + std::to_string(value_.count) + "]"; }

 private:
  FieldType type_;
  FieldValue& value_;
};

// One of the blocks of a field.
class BlockOf : public Base64Array {
 public:
  explicit BlockOf(FieldValue& value)
      : Base64Array(value.bytes), value_(value), before_(value.bytes.size()) {}
  std::string OnEnd() override {
    const std::size_t length = value_.bytes.size() - before_;
    if (length > INT32_MAX) return "is too long";
    value_.lengths.push_back(static_cast<std::int32_t>(length));
    ++value_.count;
    return {};
  }

 private:
  FieldValue& value_;
  std::size_t before_;
};

class Blocks : public Array {
 public:
  explicit Blocks(FieldValue& value) : value_(value) {}
  std::string OnArray(std::unique_ptr<Node>& child) override {
    child = std::make_unique<BlockOf>(value_);
    return {};
  }
  std::string Place() const override { return "[" + std::to_string(value_.count) + "]"; }

 private:
  FieldValue& value_;
};

// The fields of a record, whose form may not be known yet.
class RecordNode : public Node {
 public:
  RecordNode(RecordValue& record, std::vector<std::span<const FieldSchema>> forms,
             const TagSchema* schema)
      : record_(record), forms_(std::move(forms)), schema_(schema) {}

  std::string OnKey(const std::string& key) override {
    key_ = key;
    field_ = nullptr;
    for (const auto& form : forms_) {
      if (field_ == nullptr) field_ = FindField(form, key);
    }
    if (field_ == nullptr) return "there is no such field";
    value_ = record_.Add(*field_);
    return value_ != nullptr ? "" : "is there twice";
  }

  std::string OnScalar(const Scalar& scalar) override {
    if (field_->type == FieldType::Text) return OnText(scalar);
    if (field_->shape != FieldShape::Single || field_->type == FieldType::Bytes ||
        scalar.kind > Scalar::Kind::String) {
      return field_->shape != FieldShape::Single || field_->type == FieldType::Bytes
                 ? "takes an array"
                 : "takes a number";
    }
    value_->count = 1;
    return AppendValue(field_->type, scalar.kind == Scalar::Kind::String, scalar.text,
                       value_->bytes);
  }

  std::string OnArray(std::unique_ptr<Node>& child) override;

  std::string OnObject(std::unique_ptr<Node>& child) override {
    if (field_->type != FieldType::Text) return "takes no object";
    child = std::make_unique<TextBytes>(*value_);
    return {};
  }

  std::string Place() const override { return key_.empty() ? "" : "." + PrintableText(key_); }

 protected:
  std::string key_;

 private:
  std::string OnText(const Scalar& scalar) {
    if (scalar.kind != Scalar::Kind::String) return "takes a text";
    if (scalar.text.find('\0') != std::string_view::npos) {
      return "takes no zero within a text; give it as " + Quoted(kBytesKey);
    }
    if (field_->amount.kind == Amount::Kind::Constant &&
        scalar.text.size() > field_->amount.number) {
      return "takes at most " + std::to_string(field_->amount.number) + " bytes of text, not " +
             std::to_string(scalar.text.size());
    }
    value_->bytes.assign(scalar.text.begin(), scalar.text.end());
    value_->count = scalar.text.size();
    value_->isText = true;
    return {};
  }

  RecordValue& record_;
  std::vector<std::span<const FieldSchema>> forms_;
  const TagSchema* schema_;
  const FieldSchema* field_ = nullptr;
  FieldValue* value_ = nullptr;
};

class Records : public Array {
 public:
  Records(const TagSchema& schema, FieldValue& value) : schema_(schema), value_(value) {}
  std::string OnObject(std::unique_ptr<Node>& child) override {
    // The newest forms know the names of the curves; which form it is tells the version.
    std::vector<std::span<const FieldSchema>> forms;
    for (const RecordForm& form : schema_.forms) forms.push_back(form.fields);
    child = std::make_unique<RecordNode>(value_.records.emplace_back(), std::move(forms), nullptr);
    ++value_.count;
    return {};
  }
  std::string Place() const override {
    return "[" + std::to_string(value_.count == 0 ? 0 : value_.count - 1) + "]";
  }

 private:
  const TagSchema& schema_;
  FieldValue& value_;
};

std::string RecordNode::OnArray(std::unique_ptr<Node>& child) {
  if (field_->shape == FieldShape::Rows) {
    child = std::make_unique<Rows>(field_->type, *value_);
  } else if (field_->shape == FieldShape::Blocks) {
    child = std::make_unique<Blocks>(*value_);
  } else if (field_->type == FieldType::Bytes) {
    child = std::make_unique<BytesOf>(*value_);
  } else if (field_->type == FieldType::Record && schema_ != nullptr) {
    child = std::make_unique<Records>(*schema_, *value_);
  } else if (field_->shape == FieldShape::List) {
    child = std::make_unique<Numbers>(field_->type, *value_);
  } else {
    return "takes no array";
  }
  return {};
}

// One tag: its fields, or its payload, or the whole element.
class TagNode : public RecordNode {
 public:
  TagNode(Document& document, TagChange& change, const TagSchema* schema)
      : RecordNode(record_, {schema != nullptr ? schema->fields : std::span<const FieldSchema>()},
                   schema),
        document_(document),
        change_(change),
        schema_(schema) {}

  std::string OnKey(const std::string& key) override {
    key_ = key;
    if (key == kProblemKey) {
      raw_ = false;
      isProblem_ = true;
      return {};
    }
    isProblem_ = false;
    raw_ = key == kPayloadKey || key == kElementKey;
    if (raw_) {
      if (hasRaw_) return "there is a payload or element already";
      hasRaw_ = true;
      isElement_ = key == kElementKey;
      return hasFields_ ? "there are fields already" : "";
    }
    hasFields_ = true;
    if (hasRaw_) return "there is a payload or element already";
    return RecordNode::OnKey(key);
  }

  std::string OnScalar(const Scalar& scalar) override {
    if (isProblem_) return {};
    return raw_ ? "takes an array of base64 texts" : RecordNode::OnScalar(scalar);
  }
  std::string OnArray(std::unique_ptr<Node>& child) override {
    if (isProblem_) return "takes a text";
    if (!raw_) return RecordNode::OnArray(child);
    child = std::make_unique<Base64Array>(bytes_);
    return {};
  }
  std::string OnObject(std::unique_ptr<Node>& child) override {
    return raw_ || isProblem_ ? "takes no object" : RecordNode::OnObject(child);
  }

  std::string OnEnd() override {
    key_.clear();
    if (!hasRaw_ && !hasFields_) return "holds nothing";
    constexpr char kHead[kDataHead] = {'d', 'a', 't', 'a', 0, 0, 0, 0, 0, 0, 0, 1};
    std::vector<char>& element = change_.element;
    if (!isElement_) element.assign(std::begin(kHead), std::end(kHead));
    if (hasRaw_) {
      element.insert(element.end(), bytes_.begin(), bytes_.end());
      return element.size() > UINT32_MAX ? "is too long" : "";
    }
    return AssembleFields();
  }

 private:
  std::string AssembleFields() {
    std::vector<char> payload;
    std::vector<std::string> notes;
    std::string why = record_.Assemble(schema_->fields, *schema_, payload, notes);
    if (!why.empty()) return why;
    if (payload.size() > UINT32_MAX - kDataHead) return "is too long";
    // What was put together must read as what was meant.
    ByteSource source(std::string_view(payload.data(), payload.size()));
    if (!RecordView::Of(*schema_, source, why)) return why;
    for (const std::string& note : notes) {
      document_.notes.push_back(StoredTagName(change_.signature, change_.occurrence) + ": " + note);
    }
    change_.element.insert(change_.element.end(), payload.begin(), payload.end());
    return {};
  }

  RecordValue record_;
  Document& document_;
  TagChange& change_;
  const TagSchema* schema_;
  std::vector<char> bytes_;
  bool raw_ = false;
  bool isProblem_ = false;
  bool isElement_ = false;
  bool hasRaw_ = false;
  bool hasFields_ = false;
};

class TagsNode : public Node {
 public:
  explicit TagsNode(Document& document) : document_(document) {}

  std::string OnKey(const std::string& key) override {
    key_ = key;
    TagChange change;
    if (!ParseStoredTagName(key, change.signature, change.occurrence)) {
      return "names no private tag";
    }
    const std::uint64_t both = std::uint64_t{change.signature} << 32 | change.occurrence;
    if (!seen_.insert(both).second) return "is there twice";
    document_.tags.push_back(std::move(change));
    return {};
  }
  std::string OnScalar(const Scalar& scalar) override {
    if (scalar.kind != Scalar::Kind::Null) return "takes an object, or null to remove the tag";
    document_.tags.back().remove = true;
    return {};
  }
  std::string OnObject(std::unique_ptr<Node>& child) override {
    TagChange& change = document_.tags.back();
    child = std::make_unique<TagNode>(document_, change, FindTagSchema(change.signature));
    return {};
  }
  std::string Place() const override { return key_.empty() ? "" : "." + PrintableText(key_); }

 private:
  Document& document_;
  std::string key_;
  std::set<std::uint64_t> seen_;
};

class RootNode : public Node {
 public:
  explicit RootNode(Document& document) : document_(document) {}

  std::string OnKey(const std::string& key) override {
    key_ = key;
    static constexpr std::string_view kKeys[] = {"format", "formatVersion", "profile", "tags",
                                                 "$schema"};
    if (std::find(std::begin(kKeys), std::end(kKeys), key) == std::end(kKeys)) {
      return "is nothing that a document has";
    }
    return seen_.insert(key).second ? "" : "is there twice";
  }
  std::string OnScalar(const Scalar& scalar) override {
    if (key_ == "$schema") return {};
    if (key_ == "format") {
      const bool ours = scalar.kind == Scalar::Kind::String && scalar.text == kDocumentFormat;
      return ours ? "" : "must be " + Quoted(kDocumentFormat);
    }
    if (key_ != "formatVersion") return "takes an object";
    const bool known =
        scalar.kind == Scalar::Kind::Number && scalar.text == std::to_string(kDocumentVersion);
    return known ? "" : "must be " + std::to_string(kDocumentVersion);
  }
  std::string OnObject(std::unique_ptr<Node>& child) override {
    if (key_ == "tags") {
      child = std::make_unique<TagsNode>(document_);
    } else if (key_ == "profile") {
      child = std::make_unique<Ignored>();
    } else {
      return "takes no object";
    }
    return {};
  }
  std::string OnEnd() override {
    key_.clear();
    for (const char* key : {"format", "formatVersion", "tags"}) {
      if (!seen_.contains(key)) return Quoted(key) + " is missing";
    }
    return {};
  }
  std::string Place() const override { return key_.empty() ? "" : PrintableText(key_); }

 private:
  Document& document_;
  std::string key_;
  std::set<std::string> seen_;
};

// The outermost value must be an object.
class Outside : public Node {
 public:
  explicit Outside(Document& document) : document_(document) {}
  std::string OnObject(std::unique_ptr<Node>& child) override {
    child = std::make_unique<RootNode>(document_);
    return {};
  }

 private:
  Document& document_;
};

// Takes what the parser finds to the nodes.
class Handler : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit Handler(Document& document) { nodes_.push_back(std::make_unique<Outside>(document)); }

  const std::string& why() const { return why_; }

  bool null() override { return Take({Scalar::Kind::Null, {}}); }
  bool boolean(bool /*value*/) override { return Take({Scalar::Kind::Other, {}}); }
  bool number_integer(number_integer_t value) override {
    return Take({Scalar::Kind::Number, std::to_string(value)});
  }
  bool number_unsigned(number_unsigned_t value) override {
    return Take({Scalar::Kind::Number, std::to_string(value)});
  }
  bool number_float(number_float_t /*value*/, const string_t& raw) override {
    // The parser puts the locale's decimal point where the document has its own.
    std::string text = raw;
    const std::size_t point = text.find_first_not_of("0123456789+-eE");
    if (point != std::string::npos) text[point] = '.';
    return Take({Scalar::Kind::Number, text});
  }
  bool string(string_t& value) override { return Take({Scalar::Kind::String, value}); }
  bool binary(binary_t& /*value*/) override { return Take({Scalar::Kind::Other, {}}); }
  bool start_object(std::size_t /*elements*/) override {
    return Push([&](std::unique_ptr<Node>& child) { return nodes_.back()->OnObject(child); });
  }
  bool start_array(std::size_t /*elements*/) override {
    return Push([&](std::unique_ptr<Node>& child) { return nodes_.back()->OnArray(child); });
  }
  bool end_object() override { return Pop(); }
  bool end_array() override { return Pop(); }
  bool key(string_t& name) override { return Settle(nodes_.back()->OnKey(name)); }
  bool parse_error(std::size_t position, const std::string& token,
                   const nlohmann::json::exception& error) override {
    // JSON, but for a number beyond those of the machine, which no field takes.
    constexpr int kOutOfRange = 406;
    if (error.id == kOutOfRange) {
      if (Take({Scalar::Kind::Number, token})) Settle("holds a number that is too large");
      return false;
    }
    why_ = "it is no JSON: byte " + std::to_string(position) +
           " does not belong where it stands, or the text ends there";
    return false;
  }

 private:
  bool Take(const Scalar& scalar) { return Settle(nodes_.back()->OnScalar(scalar)); }

  template <class Open>
  bool Push(const Open& open) {
    constexpr std::size_t kDeepest = 64;
    if (nodes_.size() > kDeepest) return Settle("is nested too deeply");
    std::unique_ptr<Node> child;
    if (!Settle(open(child))) return false;
    nodes_.push_back(std::move(child));
    return true;
  }

  bool Pop() {
    if (!Settle(nodes_.back()->OnEnd())) return false;
    nodes_.pop_back();
    return true;
  }

  bool Settle(const std::string& why) {
    if (why.empty()) return true;
    std::string place;
    for (const auto& node : nodes_) place += node->Place();
    why_ = (place.empty() ? "the document" : place) + ": " + why;
    return false;
  }

  std::vector<std::unique_ptr<Node>> nodes_;
  std::string why_;
};

}  // namespace

bool ReadDocument(std::istream& from, Document& document, std::string& why) noexcept {
  document = {};
  const char* failure = "it cannot be read";
  try {
    why.clear();
    if (from) {
      // One that throws nothing: the parser sets its state where no exception may pass.
      std::istream text(from.rdbuf());
      Handler handler(document);
      if (nlohmann::json::sax_parse(text, &handler)) return true;
      why = handler.why();
      failure = "";
    }
  } catch (const std::bad_alloc&) {
    failure = "memory is short";
  } catch (...) {  // of the stream
    failure = "it cannot be read";
  }
  document = {};
  if (*failure != '\0') Guarded([&] { return !(why = failure).empty(); });
  return false;
}

}  // namespace vkcl
