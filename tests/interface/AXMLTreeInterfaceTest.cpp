// AXMLTree and AXMLTreeNode as a caller uses them.
#pragma GCC diagnostic error "-Wmismatched-tags"
class AXMLTree;
class AXMLTreeNode;

#include "platform/axml/AXMLTree.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

#include "interface/Interface.h"
#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

static_assert(std::is_class_v<AXMLTree>);
static_assert(std::is_constructible_v<AXMLTree, const AString&>);
static_assert(std::is_constructible_v<AXMLTree, const char*>);
static_assert(std::is_constructible_v<AXMLTree, std::string>);
static_assert(Operation<int(const AFilePath&, int)>::Is(&AXMLTree::LoadFromFile));
static_assert(Operation<int(const AFilePath&)>::Is(&AXMLTree::SaveToFile));
static_assert(Operation<AXMLTreeNode()>::Is(&AXMLTree::GetRoot));

static_assert(std::is_class_v<AXMLTreeNode>);
static_assert(std::is_copy_constructible_v<AXMLTreeNode> &&
              std::is_copy_assignable_v<AXMLTreeNode>);
static_assert(std::is_constructible_v<bool, AXMLTreeNode>);
static_assert(!std::is_convertible_v<AXMLTreeNode, bool>);
static_assert(Operation<AXMLTreeNode(const AString&)>::Is(&AXMLTreeNode::GetChild));
static_assert(Operation<AXMLTreeNode(int)>::Is(&AXMLTreeNode::GetChild));
static_assert(std::is_convertible_v<decltype(std::declval<AXMLTreeNode&>().GetChildCount()), int>);

TEST(AXMLTreeInterface, HoldsElements) {
  AXMLTree tree("VK_VSD_PROFILE");
  AXMLTreeNode root = tree.GetRoot();
  ASSERT_TRUE(root);
  EXPECT_EQ(AString(root.GetName()).str(), "VK_VSD_PROFILE");
  EXPECT_EQ(root.GetChildCount(), 0);
  EXPECT_FALSE(root.GetChild("Make"));
  EXPECT_FALSE(root.GetChild(0));

  AXMLTreeNode make = root.AddChild("Make", "Press");
  ASSERT_TRUE(make);
  const AString name = "Model";
  const AString value = "Z9";
  EXPECT_TRUE(root.AddChild(name, value));
  EXPECT_EQ(root.GetChildCount(), 2);
  EXPECT_EQ(AString(root.GetChild(0).GetName()).str(), "Make");
  EXPECT_EQ(AString(root.GetChild(name).GetValue()).str(), "Z9");
  make.SetValue("Canvas");
  EXPECT_EQ(AString(root.GetChild("Make").GetValue()).str(), "Canvas");
  make.SetAttribute("Version", "4");
  make.SetAttribute(name, value);
  EXPECT_EQ(AString(make.GetAttribute("Version")).str(), "4");
  EXPECT_EQ(AString(make.GetAttribute(name)).str(), "Z9");
  make = root.GetChild(1);
  EXPECT_EQ(AString(make.GetName()).str(), "Model");
}

TEST(AXMLTreeInterface, LivesInAFile) {
  const TempDir dir;
  const std::string path = dir.File("tree.xml");
  AXMLTree missing("RootElement");
  EXPECT_EQ(missing.LoadFromFile(path, 1), 0);

  AXMLTree saved("Root");
  saved.GetRoot().AddChild("item", "1");
  EXPECT_EQ(saved.SaveToFile(AFilePath(path)), 1);
  AXMLTree loaded(std::string("RootElement"));
  EXPECT_EQ(loaded.LoadFromFile(path.c_str(), 1), 1);
  EXPECT_EQ(AString(loaded.GetRoot().GetName()).str(), "Root");
  EXPECT_EQ(AString(loaded.GetRoot().GetChild("item").GetValue()).str(), "1");
  EXPECT_EQ(saved.SaveToFile(dir.File("no/such/folder.xml")), 0);
}

}  // namespace
}  // namespace vkcl::testing
