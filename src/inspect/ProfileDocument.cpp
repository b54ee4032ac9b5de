#include "inspect/ProfileDocument.h"

#include <algorithm>
#include <memory>

#include "inspect/DocumentForms.h"
#include "inspect/PrintableText.h"
#include "platform/Guarded.h"
#include "profile/TableInFile.h"

namespace vkcl {
namespace {

// Whether a tag is meant by one of the names; the names that were used are marked.
class Selection {
 public:
  explicit Selection(const std::vector<std::string>& names) : names_(names), used_(names.size()) {}

  bool Takes(const StoredTag& tag) {
    bool taken = names_.empty();
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (!Means(names_[i], tag)) continue;
      used_[i] = true;
      taken = true;
    }
    return taken;
  }
  // The first name that no tag had; null when there is none.
  const std::string* Unused() const {
    const auto found = std::find(used_.begin(), used_.end(), false);
    return found == used_.end() ? nullptr
                                : &names_[static_cast<std::size_t>(found - used_.begin())];
  }

 private:
  static bool Means(const std::string& name, const StoredTag& tag) {
    const TagSchema* schema = FindTagSchema(tag.signature);
    return name == StoredTagName(tag.signature, 1) ||
           name == StoredTagName(tag.signature, tag.occurrence) ||
           (schema != nullptr && name == schema->name);
  }

  const std::vector<std::string>& names_;
  std::vector<bool> used_;
};

// False when the tag's bytes could not be read.
bool ShowTag(const StoredTag& stored, AFile& file, DocumentWriter& writer) {
  const TagSchema* schema = FindTagSchema(stored.signature);
  const std::uint64_t from = stored.isData ? stored.payloadOffset() : stored.offset;
  ByteSource bytes(file, from, stored.isData ? stored.payloadSize() : stored.held);
  std::optional<RecordView> record;
  std::string problem;
  if (stored.isData && schema != nullptr) record = RecordView::Of(*schema, bytes, problem);
  if (stored.held < stored.size) {
    problem = std::to_string(stored.size - stored.held) + " of its " + std::to_string(stored.size) +
              " bytes are not in the file";
  } else if (!stored.isData) {
    problem = "it is no binary 'data' element";
  }
  if (bytes.good()) writer.Tag({stored, schema, record ? &*record : nullptr, bytes, problem});
  return bytes.good();
}

bool Write(const VKCLProfile& profile, const std::vector<std::string>& only, DocumentWriter& writer,
           const SinkBuffer& out, std::string& why) {
  AFile file;
  bool good = TableInFile(profile).isWhole && file.open(profile.filePath, AFile::Read);
  std::vector<StoredTag> tags;
  if (good) tags = StoredTagsOf(profile, file, &good);
  if (!good) {
    why = "the profile cannot be read";
    return false;
  }
  Selection selection(only);
  std::vector<const StoredTag*> shown;
  for (const StoredTag& tag : tags) {
    if (selection.Takes(tag)) shown.push_back(&tag);
  }
  if (const std::string* name = selection.Unused()) {
    why = "it holds no private tag \"" + PrintableText(*name) + "\"";
    return false;
  }
  writer.Begin(profile);
  for (const StoredTag* tag : shown) {
    if (!ShowTag(*tag, file, writer)) {
      why = StoredTagName(tag->signature, tag->occurrence) + " cannot be read";
      return false;
    }
    if (!out.good()) break;
  }
  writer.End();
  return true;
}

}  // namespace

bool WriteDocument(const VKCLProfile& profile, const std::vector<std::string>& only,
                   DocumentForm form, const TextSink& sink, std::string& why) noexcept {
  return Guarded([&] {
    why.clear();
    SinkBuffer out(sink);
    std::unique_ptr<DocumentWriter> writer;
    if (form == DocumentForm::Json) {
      writer = std::make_unique<JsonDocument>(out);
    } else {
      writer = std::make_unique<TextDocument>(out);
    }
    if (!Write(profile, only, *writer, out, why)) {
      out.Flush();
      return false;
    }
    if (out.Flush()) return true;
    why = "the document could not be written";
    return false;
  });
}

}  // namespace vkcl
