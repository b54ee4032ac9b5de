// Any bytes as a JSON document: what is taken is stored, and reads back the same.
#include <sstream>

#include "Fuzz.h"
#include "edit/ProfileEdit.h"
#include "inspect/ProfileDocument.h"

using vkcl::fuzz::Demand;

namespace {

constexpr int kAnyChannels = 3;

std::string Dump(const std::string& path) {
  const VKCLProfile profile((AFilePath(path)), kAnyChannels);
  std::string text;
  std::string why;
  const auto sink = [&](std::string_view piece) {
    text += piece;
    return true;
  };
  Demand(vkcl::WriteDocument(profile, {}, vkcl::DocumentForm::Json, sink, why),
         "a profile that was written can be dumped");
  return text;
}

bool HasGaps(const vkcl::Document& document) {
  for (const vkcl::TagChange& change : document.tags) {
    if (change.occurrence > 1 || change.remove) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("document.icc");
  static const std::string stored = vkcl::fuzz::FilePath("stored.icc");
  std::istringstream text(std::string(reinterpret_cast<const char*>(data), size));
  vkcl::Document document;
  std::string why;
  if (!vkcl::ReadDocument(text, document, why)) {
    Demand(!why.empty() && document.tags.empty(), "a refusal has a reason, and nothing else");
    return 0;
  }
  Demand(why.empty(), "a document that was read has nothing to say");
  const vkcl::fuzz::Bytes plain =
      vkcl::fuzz::Profile({{0x63707274, vkcl::fuzz::DataElement({'x'})}});
  vkcl::fuzz::WriteFile(path, plain.data(), plain.size());
  const VKCLProfile profile((AFilePath(path)), kAnyChannels);
  Demand(vkcl::WriteChangedCopy(profile, document.tags, AFilePath(stored)),
         "a document that was read can be stored");
  const std::vector<vkcl::fuzz::Tag> tags = vkcl::fuzz::TagsOf(vkcl::fuzz::ReadFile(stored));
  if (!HasGaps(document)) {
    Demand(tags.size() == document.tags.size() + 1, "every tag is stored");
    for (std::size_t i = 0; i < document.tags.size(); ++i) {
      const vkcl::TagChange& change = document.tags[i];
      Demand(
          tags[i + 1].signature == change.signature &&
              std::equal(change.element.begin(), change.element.end(), tags[i + 1].element.begin(),
                         tags[i + 1].element.end(),
                         [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }),
          "a tag is stored byte for byte");
    }
  }
  const std::string dump = Dump(stored);
  std::istringstream again(dump);
  vkcl::Document second;
  Demand(vkcl::ReadDocument(again, second, why), "what was dumped can be read");
  Demand(second.tags.size() + 1 == tags.size(), "what was dumped is all there is");
  for (std::size_t i = 0; i < second.tags.size(); ++i) {
    const std::vector<char>& element = second.tags[i].element;
    Demand(element.size() == tags[i + 1].element.size() &&
               std::equal(element.begin(), element.end(), tags[i + 1].element.begin(),
                          [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }),
           "a dumped tag reads back byte for byte");
  }
  return 0;
}
