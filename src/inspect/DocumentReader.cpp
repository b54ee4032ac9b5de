#include <algorithm>
#include <istream>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

#include "inspect/DocumentForms.h"
#include "inspect/DocumentNode.h"
#include "inspect/ProfileDocument.h"
#include "inspect/RecordNode.h"
#include "inspect/RecordValue.h"
#include "platform/Guarded.h"
#include "profile/TableLayout.h"

namespace vkcl {
namespace {

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
    std::vector<char>& element = change_.element;
    if (!isElement_) element.assign(std::begin(kBinaryHead), std::end(kBinaryHead));
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
