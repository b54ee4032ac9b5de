// Any bytes as an XML file with a split: what is loaded is saved, and loads again.
#include "Fuzz.h"
#include "platform/axml/AXMLTree.h"
#include "split/SplitParam.h"

using vkcl::fuzz::Demand;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("split.xml");
  vkcl::fuzz::WriteFile(path, data, size);
  AXMLTree tree("Any");
  if (tree.LoadFromFile(AFilePath(path), 0) == 0) return 0;
  AXMLTreeNode root = tree.GetRoot();
  SplitParam split;
  if (split.Serialize(tree, root, 1) == 0) return 0;
  if (split.version != 4) split.ConvertToV4();
  AXMLTree saved("Split");
  AXMLTreeNode element = saved.GetRoot();
  Demand(split.Serialize(saved, element, 0) == 1, "what was loaded can be saved");
  SplitParam again;
  Demand(again.Serialize(saved, element, 1) == 1, "what was saved can be loaded");
  Demand(again.version == 4 && again.count == split.count, "it is the same split");
  return 0;
}
