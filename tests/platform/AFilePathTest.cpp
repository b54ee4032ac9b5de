#include "platform/plinth/AFilePath.h"

#include "support/TempDir.h"

namespace {

using vkcl::testing::TempDir;

TEST(AFilePath, ExtensionIsWhatFollowsTheLastDotOfTheLastComponent) {
  EXPECT_EQ(AFilePath("/a/b.icc").getExtension(), ".icc");
  EXPECT_EQ(AFilePath("b.tar.gz").getExtension(), ".gz");
  EXPECT_EQ(AFilePath("/a.d/b").getExtension(), "");
  EXPECT_EQ(AFilePath("/a/.tmp").getExtension(), ".tmp");
  EXPECT_EQ(AFilePath("/a/b.TMP").getExtension(), ".TMP");
  EXPECT_EQ(AFilePath("/a/b.").getExtension(), ".");
  EXPECT_EQ(AFilePath("").getExtension(), "");
  EXPECT_EQ(AFilePath(static_cast<const char*>(nullptr)).getExtension(), "");
  EXPECT_EQ(AFilePath("/a.b/").getExtension(), "");
}

TEST(AFilePath, TakesComponentsApartAndTogether) {
  AFilePath path("/Printer/ICC/paper.icc");
  EXPECT_EQ(path.getFileName(), "paper.icc");
  path.removeLastComponent();
  EXPECT_EQ(path.str(), "/Printer/ICC");
  path.removeLastComponent();
  EXPECT_EQ(path.str(), "/Printer");
  path.appendComponent("VSDProfile");
  path.appendComponent("paper.icc");
  EXPECT_EQ(path.getFileName(), "paper.icc");
  AFilePath root("/x");
  root.removeLastComponent();
  EXPECT_EQ(root.str(), "/");
  root.appendComponent("y");
  EXPECT_EQ(root.str(), "/y");
  AFilePath bare("x");
  bare.removeLastComponent();
  EXPECT_EQ(bare.str(), "");
  bare.appendComponent("z");
  EXPECT_EQ(bare.str(), "z");
}

TEST(AFilePath, FullPathIsAbsoluteAndNormalised) {
  const std::filesystem::path here = std::filesystem::current_path();
  EXPECT_EQ(AFilePath("a/./b/../c").GetFullPath(), (here / "a" / "c").string().c_str());
  EXPECT_EQ(AFilePath("/x/../y//z").GetFullPath(), AFilePath("/y/z").GetFullPath());
}

TEST(AFilePath, KnowsFilesAndFolders) {
  const TempDir dir;
  const AFilePath file(dir.Write("f", {1}));
  EXPECT_TRUE(file.exists());
  EXPECT_FALSE(file.isDirectory());
  EXPECT_TRUE(AFilePath(dir.path().string()).isDirectory());
  EXPECT_FALSE(AFilePath(dir.File("absent")).exists());
  EXPECT_TRUE(file.remove());
  EXPECT_FALSE(file.exists());
  EXPECT_FALSE(file.remove());
}

TEST(AFilePath, KnowsOneFileUnderTwoNames) {
  const TempDir dir;
  const AFilePath file(dir.Write("f", {1}));
  const AFilePath other(dir.Write("g", {1}));
  std::filesystem::create_hard_link(dir.File("f"), dir.File("h"));
  EXPECT_TRUE(file.isSameFile(file));
  EXPECT_TRUE(file.isSameFile(AFilePath(dir.File("./f"))));
  EXPECT_TRUE(file.isSameFile(AFilePath(dir.File("h"))));
  EXPECT_FALSE(file.isSameFile(other));
  EXPECT_FALSE(file.isSameFile(AFilePath(dir.File("absent"))));
  EXPECT_TRUE(AFilePath(dir.File("absent")).isSameFile(AFilePath(dir.File("absent"))));
  EXPECT_FALSE(AFilePath(dir.File("absent")).isSameFile(AFilePath(dir.File("absent too"))));
}

TEST(AFilePath, OfOneFullPathIsOneFileWhateverTheSystemFindsThere) {
  const TempDir dir;
  const AFilePath file(dir.Write("f", {1}));
  // A folder that is not there, and one behind a link, where ".." leads elsewhere.
  EXPECT_TRUE(file.isSameFile(AFilePath(dir.File("nowhere/../f"))));
  std::filesystem::create_directories(dir.File("a/b"));
  dir.Write("a/f", {2});
  std::filesystem::create_directory_symlink("a/b", dir.File("link"));
  EXPECT_TRUE(file.isSameFile(AFilePath(dir.File("link/../f"))));
  EXPECT_TRUE(AFilePath(dir.File("a/f")).isSameFile(AFilePath(dir.File("link/../f"))));
  // Last components that are no names.
  const AFilePath folder(dir.path().string() + "/absent/");
  EXPECT_TRUE(folder.isSameFile(AFilePath(dir.path().string() + "/absent/.")));
  EXPECT_TRUE(AFilePath(dir.path().string() + "/absent/x/..").isSameFile(folder));
  EXPECT_TRUE(AFilePath(dir.File("a/.")).isSameFile(AFilePath(dir.File("a"))));
  EXPECT_TRUE(AFilePath(dir.File("a/b/..")).isSameFile(AFilePath(dir.File("a"))));
}

}  // namespace
