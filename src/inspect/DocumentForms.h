// The two forms of a document: what is written of one tag.
#pragma once

#include <string>
#include <string_view>

#include "inspect/JsonWriter.h"
#include "inspect/StoredTags.h"
#include "inspect/TagView.h"
#include "profile/VKCLProfile.h"

namespace vkcl {

/// A tag on its way into a document.
struct ShownTag {
  const StoredTag& stored;
  const TagSchema* schema;     ///< null for a tag that is not known
  const RecordView* record;    ///< the payload's fields; null when it does not have the form
  ByteSource& bytes;           ///< the payload; of a tag that is no 'data' element, the element
  const std::string& problem;  ///< in words; empty when nothing is wrong
};

/// Names that a document has beside the fields of a tag.
inline constexpr std::string_view kPayloadKey = "payload";
inline constexpr std::string_view kElementKey = "element";
inline constexpr std::string_view kProblemKey = "problem";
inline constexpr std::string_view kBytesKey = "bytes";

/// "format" and "formatVersion" of a document.
inline constexpr std::string_view kDocumentFormat = "vkcl-private-tags";
inline constexpr int kDocumentVersion = 1;

/// Bytes in a line of base64.
inline constexpr std::size_t kBase64Line = 96;

class DocumentWriter {
 public:
  virtual ~DocumentWriter() = default;
  virtual void Begin(const VKCLProfile& profile) = 0;
  virtual void Tag(const ShownTag& tag) = 0;
  virtual void End() = 0;
};

class JsonDocument : public DocumentWriter {
 public:
  explicit JsonDocument(SinkBuffer& out) : json_(out) {}
  void Begin(const VKCLProfile& profile) override;
  void Tag(const ShownTag& tag) override;
  void End() override;

 private:
  void Record(const RecordView& record);
  void Field(const FieldView& field);
  void Value(const FieldView& field, std::uint64_t index);
  void Text(const FieldView& field);
  template <class Fetch>
  void Base64(std::uint64_t length, const Fetch& fetch);

  JsonWriter json_;
};

class TextDocument : public DocumentWriter {
 public:
  explicit TextDocument(SinkBuffer& out) : out_(out) {}
  void Begin(const VKCLProfile& profile) override;
  void Tag(const ShownTag& tag) override;
  void End() override {}

 private:
  void Record(const RecordView& record, std::size_t indent);
  void Field(const FieldView& field, std::size_t indent);
  void List(const FieldView& field, std::size_t indent, const std::string& unit);
  void Rows(const FieldView& field, std::size_t indent);
  template <class Fetch>
  void Dump(std::uint64_t length, std::size_t indent, const Fetch& fetch);
  void Line(std::size_t indent, std::string_view label, std::string_view text);

  SinkBuffer& out_;
};

}  // namespace vkcl
