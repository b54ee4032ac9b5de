#include "inspect/RecordNode.h"

#include "inspect/DocumentForms.h"

namespace vkcl {
namespace {

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

}  // namespace

std::string RecordNode::OnKey(const std::string& key) {
  key_ = key;
  field_ = nullptr;
  for (const auto& form : forms_) {
    if (field_ == nullptr) field_ = FindField(form, key);
  }
  if (field_ == nullptr) return "there is no such field";
  value_ = record_.Add(*field_);
  return value_ != nullptr ? "" : "is there twice";
}

std::string RecordNode::OnScalar(const Scalar& scalar) {
  if (field_->type == FieldType::Text) return OnText(scalar);
  if (field_->shape != FieldShape::Single || field_->type == FieldType::Bytes ||
      scalar.kind > Scalar::Kind::String) {
    return field_->shape != FieldShape::Single || field_->type == FieldType::Bytes
               ? "takes an array"
               : "takes a number";
  }
  value_->count = 1;
  return AppendValue(field_->type, scalar.kind == Scalar::Kind::String, scalar.text, value_->bytes);
}

std::string RecordNode::OnObject(std::unique_ptr<Node>& child) {
  if (field_->type != FieldType::Text) return "takes no object";
  child = std::make_unique<TextBytes>(*value_);
  return {};
}

std::string RecordNode::OnText(const Scalar& scalar) {
  if (scalar.kind != Scalar::Kind::String) return "takes a text";
  if (scalar.text.find('\0') != std::string_view::npos) {
    return "takes no zero within a text; give it as " + Quoted(kBytesKey);
  }
  if (field_->amount.kind == Amount::Kind::Constant && scalar.text.size() > field_->amount.number) {
    return "takes at most " + std::to_string(field_->amount.number) + " bytes of text, not " +
           std::to_string(scalar.text.size());
  }
  value_->bytes.assign(scalar.text.begin(), scalar.text.end());
  value_->count = scalar.text.size();
  value_->isText = true;
  return {};
}

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

}  // namespace vkcl
