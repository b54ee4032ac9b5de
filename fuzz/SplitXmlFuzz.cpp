// Any bytes as an XML file with a split: what is loaded is saved, and loads again as the same
// split.
#include "Fuzz.h"
#include "platform/axml/AXMLTree.h"
#include "split/SplitParam.h"

using vkcl::fuzz::Demand;

namespace {

void Save(SplitParam& split, const std::string& path) {
  AXMLTree tree("Split");
  AXMLTreeNode root = tree.GetRoot();
  Demand(split.Serialize(tree, root, 0) == 1, "a split can be made a document");
  Demand(tree.SaveToFile(AFilePath(path)) == 1, "the document can be saved");
}

bool Load(SplitParam& split, const std::string& path) {
  AXMLTree tree("Any");
  if (tree.LoadFromFile(AFilePath(path), 0) == 0) return false;
  AXMLTreeNode root = tree.GetRoot();
  return split.Serialize(tree, root, 1) == 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("split.xml");
  static const std::string other = vkcl::fuzz::FilePath("again.xml");
  vkcl::fuzz::WriteFile(path, data, size);
  SplitParam split;
  if (!Load(split, path)) return 0;
  vkcl::fuzz::Digest(split);
  if (split.version != 4) split.ConvertToV4();
  Save(split, path);
  SplitParam again;
  Demand(Load(again, path), "what was saved can be loaded");
  Demand(again.version == 4 && again.count == split.count && again.size == split.size,
         "it has the same records");
  vkcl::fuzz::Digest(again);
  // Saving rounds the numbers once, and no further.
  Save(again, other);
  Demand(vkcl::fuzz::ReadFile(other) == vkcl::fuzz::ReadFile(path), "it is the same split");
  return 0;
}
