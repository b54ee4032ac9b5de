// AFilePath as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class AFilePath;

#include "platform/plinth/AFilePath.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <type_traits>
#include <utility>

#include "interface/Interface.h"
#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

static_assert(kIsRecord<AFilePath>);
static_assert(std::is_convertible_v<const char*, AFilePath>);
static_assert(std::is_convertible_v<std::string, AFilePath>);
static_assert(std::is_convertible_v<const std::string&, AFilePath>);
static_assert(std::is_convertible_v<AString, AFilePath>);
static_assert(std::is_convertible_v<const AString&, AFilePath>);

static_assert(Query<const char*()>::Is(&AFilePath::c_str));
static_assert(Query<const std::string&()>::Is(&AFilePath::str));
static_assert(Query<AString()>::Is(&AFilePath::getExtension));
static_assert(Query<AString()>::Is(&AFilePath::GetFullPath));
static_assert(Query<AString()>::Is(&AFilePath::getFileName));
static_assert(std::is_convertible_v<decltype(std::declval<const AFilePath&>().exists()), bool>);
static_assert(
    std::is_convertible_v<decltype(std::declval<const AFilePath&>().isDirectory()), bool>);

std::string Taken(const AFilePath& path) { return path.str(); }

TEST(AFilePathInterface, IsMadeOfWhateverHoldsAPath) {
  EXPECT_EQ(Taken("ICC/paper.icc"), "ICC/paper.icc");
  EXPECT_EQ(Taken(std::string("paper.icc")), "paper.icc");
  EXPECT_EQ(Taken(AString("paper.icc")), "paper.icc");
  const AFilePath initialised = "paper.icc";
  EXPECT_STREQ(initialised.c_str(), "paper.icc");
  AFilePath assigned;
  EXPECT_EQ(assigned.str(), "");
  assigned = initialised;
  assigned = "other.icc";
  assigned = AString("third.icc");
  EXPECT_EQ(assigned.str(), "third.icc");
}

TEST(AFilePathInterface, GivesItsComponents) {
  const AFilePath path = "Printer/ICC/paper.v2.icc";
  EXPECT_TRUE(path.getExtension() == ".icc");
  EXPECT_TRUE(path.getFileName() == "paper.v2.icc");
  EXPECT_TRUE(AFilePath("Printer.old/paper").getExtension().empty());
  EXPECT_EQ(AFilePath("here/../paper.icc").GetFullPath().str(),
            (std::filesystem::current_path() / "paper.icc").string());
}

TEST(AFilePathInterface, IsChangedComponentByComponent) {
  AFilePath path = "Printer/ICC/paper.icc";
  path.removeLastComponent();
  path.removeLastComponent();
  EXPECT_EQ(path.str(), "Printer");
  path.appendComponent("VSDProfile");
  path.appendComponent(AString("paper.icc"));
  EXPECT_EQ(std::filesystem::path(path.str()),
            std::filesystem::path("Printer") / "VSDProfile" / "paper.icc");
}

TEST(AFilePathInterface, AsksTheFileSystem) {
  const TempDir dir;
  const AFilePath missing = dir.File("missing.icc");
  EXPECT_FALSE(missing.exists());
  EXPECT_FALSE(missing.isDirectory());
  AFilePath there = dir.Write("there.icc", {1, 2, 3});
  EXPECT_TRUE(there.exists());
  EXPECT_FALSE(there.isDirectory());
  EXPECT_TRUE(AFilePath(dir.path().string()).isDirectory());
  there.remove();
  EXPECT_FALSE(there.exists());
}

}  // namespace
}  // namespace vkcl::testing
