// AFile as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class AFile;

#include "platform/plinth/AFile.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <type_traits>
#include <utility>

#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

static_assert(std::is_class_v<AFile> && std::is_default_constructible_v<AFile>);
static_assert(
    std::is_convertible_v<decltype(std::declval<AFile&>().read(nullptr, 0)), std::size_t>);
static_assert(
    std::is_convertible_v<decltype(std::declval<AFile&>().write(nullptr, 0)), std::size_t>);
static_assert(std::is_convertible_v<decltype(std::declval<AFile&>().open("", 1)), bool>);
static_assert(std::is_convertible_v<decltype(std::declval<AFile&>().close()), bool>);
static_assert(std::is_integral_v<decltype(std::declval<AFile&>().length())>);

constexpr int kRead = 1;
constexpr int kWrite = 2;
constexpr int kReadWrite = 3;
constexpr int kCreate = 256;

TEST(AFileInterface, CreatesNoFileByItself) {
  const TempDir dir;
  const std::string path = dir.File("missing");
  for (const int flags : {kRead, kWrite, kReadWrite}) {
    AFile file;
    EXPECT_FALSE(file.open(path, flags)) << flags;
    EXPECT_FALSE(std::filesystem::exists(path)) << flags;
  }
}

TEST(AFileInterface, WritesAndReads) {
  const TempDir dir;
  const AFilePath path = dir.File("file");
  const char written[] = {'p', 'r', 't', 'r'};
  AFile file;
  ASSERT_TRUE(file.open(path, kWrite | kCreate));
  EXPECT_EQ(file.write(written, sizeof written), 4u);
  EXPECT_EQ(file.length(), 4);
  EXPECT_TRUE(file.close());

  char bytes[8] = {};
  ASSERT_TRUE(file.open(path, kRead));
  EXPECT_EQ(file.read(bytes, sizeof bytes), 4u);
  EXPECT_STREQ(bytes, "prtr");
  EXPECT_TRUE(file.close());

  ASSERT_TRUE(file.open(path.c_str(), kReadWrite));
  file.seek(2);
  EXPECT_EQ(file.write("XY", 2), 2u);
  file.seek(0);
  EXPECT_EQ(file.read(bytes, 4), 4u);
  EXPECT_STREQ(bytes, "prXY");
  EXPECT_EQ(file.length(), 4);
  EXPECT_TRUE(file.close());
}

TEST(AFileInterface, TruncatesAndClosesItself) {
  const TempDir dir;
  const std::string path = dir.Write("file", {1, 2, 3});
  {
    AFile file;
    ASSERT_TRUE(file.open(AString(path), kReadWrite | kCreate));
    EXPECT_EQ(file.length(), 0);
    EXPECT_EQ(file.write("Z", 1), 1u);
  }
  EXPECT_EQ(ReadFile(path), Bytes{'Z'});
}

}  // namespace
}  // namespace vkcl::testing
