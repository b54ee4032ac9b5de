// XML documents and their elements.
#include <optional>

#include "faults/Operations.h"

namespace vkcl::testing {
namespace {

// Texts are longer than a string holds in itself, and some are not of the host's characters alone.
struct Tree {
  explicit Tree(const TempDir& dir)
      : path(dir.File("tree.xml")), tree(AString("a root of that name is none")) {
    EXPECT_EQ(tree.LoadFromFile(path, 0), 1);
    first = tree.GetRoot().GetChild(0);
  }

  const AString name = "name-of-more-than-sixteen-letters";
  const AString value = "a value of more than sixteen letters";
  const AString raw = "bytes \x01 that XML does not have \xFF as they are";
  AFilePath path;
  AXMLTree tree;
  AXMLTreeNode first;
  std::optional<AXMLTree> made;
  std::string room;
};

template <class Run>
Operation On(const char* names, Run run, const char* what = "", Faults shortages = Faults::Refuse) {
  Operation operation = {
      names, [=](const TempDir& dir) {
        return With<Tree>(
            run, [](Tree& t) { return Show(t.tree) + (t.made ? Show(*t.made) : ""); }, dir);
      }};
  operation.what = what;
  operation.shortages = shortages;
  return operation;
}

void AddTrees(std::vector<Operation>& all) {
  all.push_back(On("AXMLTree::AXMLTree AXMLTree::~AXMLTree AXMLTree::GetRoot", [](Tree& t) {
    t.made.emplace(t.name);
    return static_cast<bool>(t.made->GetRoot());
  }));
  all.back().objectsLeft = ObjectsLeft::Documented;  // there is no root
  all.push_back(
      On("AXMLTree::LoadFromFile", [](Tree& t) { return t.tree.LoadFromFile(t.path, 0); }));
  all.push_back(On("AXMLTree::SaveToFile", [](Tree& t) {
    return t.first.SetValue(t.value) && t.tree.SaveToFile(t.path) != 0;
  }));
  all.back().objectsLeft = ObjectsLeft::Documented;
}

void AddElements(std::vector<Operation>& all) {
  all.push_back(
      On("AXMLTreeNode::GetName", [](Tree& t) { return t.first.GetName().length() != 0; }));
  all.push_back(On("AXMLTreeNode::GetValue",
                   [](Tree& t) { return t.first.GetValue().length() == t.raw.length(); }));
  all.push_back(On(
      "AXMLTreeNode::ViewValue", [](Tree& t) { return t.first.ViewValue(t.room) == t.raw.str(); },
      "", Faults::Throw));
  all.push_back(On("AXMLTreeNode::GetAttribute", [](Tree& t) {
    return t.first.GetAttribute(t.name).length() == t.raw.length();
  }));
  all.push_back(On(
      "AXMLTreeNode::ViewAttribute",
      [](Tree& t) { return t.first.ViewAttribute(t.name, t.room) == t.raw.str(); }, "",
      Faults::Throw));
  all.push_back(
      On("AXMLTreeNode::GetChild AXMLTreeNode::GetNext AXMLTreeNode::GetChildCount", [](Tree& t) {
        AXMLTreeNode root = t.tree.GetRoot();
        return root.GetChildCount() == 2 && root.GetChild(t.name) && root.GetChild(1) &&
               root.GetChild(0).GetNext();
      }));
  for (const bool plain : {true, false}) {
    const char* what = plain ? "a text" : "bytes that are none";
    all.push_back(On(
        "AXMLTreeNode::SetValue",
        [=](Tree& t) { return t.tree.GetRoot().GetChild(1).SetValue(plain ? t.value : t.raw); },
        what));
    all.push_back(On(
        "AXMLTreeNode::SetAttribute",
        [=](Tree& t) {
          return t.tree.GetRoot().GetChild(1).SetAttribute(t.name, plain ? t.value : t.raw);
        },
        what));
    all.push_back(On(
        "AXMLTreeNode::AddChild",
        [=](Tree& t) {
          return static_cast<bool>(t.first.AddChild(t.name, plain ? t.value : t.raw));
        },
        what));
  }
}

void Lay(const TempDir& dir) {
  static const Bytes document = [&] {
    AXMLTree tree(AString("root"));
    AXMLTreeNode first = tree.GetRoot().AddChild("name-of-more-than-sixteen-letters", "");
    const AString raw = "bytes \x01 that XML does not have \xFF as they are";
    EXPECT_TRUE(first.SetValue(raw));
    EXPECT_TRUE(first.SetAttribute("name-of-more-than-sixteen-letters", raw));
    EXPECT_TRUE(tree.GetRoot().AddChild("second", "&<>"));
    EXPECT_EQ(tree.SaveToFile(AFilePath(dir.File("made.xml"))), 1);
    const Bytes made = ReadFile(dir.File("made.xml"));
    std::filesystem::remove(dir.File("made.xml"));
    return made;
  }();
  dir.Write("tree.xml", document);
}

}  // namespace

Group XmlOperations() {
  Group group = {Lay, {}};
  AddTrees(group.operations);
  AddElements(group.operations);
  return group;
}

}  // namespace vkcl::testing
