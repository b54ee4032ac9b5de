// The nodes of a document that hold the values of records.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "inspect/DocumentNode.h"
#include "inspect/RecordValue.h"
#include "inspect/TagSchema.h"
#include "platform/plinth/Base64.h"

namespace vkcl {

/// Base64, in any number of texts.
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

/// The fields of a record, whose form may not be known yet.
class RecordNode : public Node {
 public:
  /// `forms` are the fields that the record may have. `schema` gives the forms of records within
  /// it; null within such a record.
  RecordNode(RecordValue& record, std::vector<std::span<const FieldSchema>> forms,
             const TagSchema* schema)
      : record_(record), forms_(std::move(forms)), schema_(schema) {}

  std::string OnKey(const std::string& key) override;
  std::string OnScalar(const Scalar& scalar) override;
  std::string OnArray(std::unique_ptr<Node>& child) override;
  std::string OnObject(std::unique_ptr<Node>& child) override;
  std::string Place() const override { return key_.empty() ? "" : "." + PrintableText(key_); }

 protected:
  std::string key_;

 private:
  std::string OnText(const Scalar& scalar);

  RecordValue& record_;
  std::vector<std::span<const FieldSchema>> forms_;
  const TagSchema* schema_;
  const FieldSchema* field_ = nullptr;
  FieldValue* value_ = nullptr;
};

}  // namespace vkcl
