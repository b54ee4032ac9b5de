// Reading files as a whole, and stretches of them.
#include "platform/plinth/WholeFile.h"

#include <limits>

#include "support/SparseFile.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::FileContent;
using vkcl::ReadStretch;
using vkcl::ReadWholeFile;
using vkcl::testing::Bytes;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::OpenHandles;
using vkcl::testing::TempDir;

std::string TextOf(const FileContent& content) {
  return content.bytes ? std::string(content.bytes.get(), content.size) : "nothing";
}

const Bytes kText = {'a', 'b', 'c', 'd', 'e'};

TEST(WholeFile, IsReadBehindZeros) {
  const TempDir dir;
  const AFilePath path(dir.Write("f", kText));
  EXPECT_EQ(TextOf(ReadWholeFile(path)), "abcde");
  // More than once: the block is not zeroed by chance.
  std::string expected(300, '\0');
  expected += "abcde";
  for (int i = 0; i < 20; ++i) EXPECT_EQ(TextOf(ReadWholeFile(path, 300)), expected);
}

TEST(WholeFile, MayBeEmpty) {
  const TempDir dir;
  const AFilePath path(dir.Write("f", {}));
  EXPECT_EQ(TextOf(ReadWholeFile(path)), "");
  EXPECT_EQ(TextOf(ReadWholeFile(path, 3)), std::string(3, '\0'));
  EXPECT_EQ(TextOf(ReadWholeFile(path, 0, 0)), "");
  EXPECT_EQ(TextOf(ReadStretch(path, 0, 5)), "");
}

TEST(WholeFile, IsNotReadAboveTheLimit) {
  const TempDir dir;
  const AFilePath path(dir.Write("f", kText));
  EXPECT_EQ(ReadWholeFile(path, 2, 5).size, 7u);
  EXPECT_EQ(TextOf(ReadWholeFile(path, 0, 4)), "nothing");
}

TEST(WholeFile, AStretchEndsWithTheFile) {
  const TempDir dir;
  const AFilePath path(dir.Write("f", kText));
  EXPECT_EQ(TextOf(ReadStretch(path, 0, 5)), "abcde");
  EXPECT_EQ(TextOf(ReadStretch(path, 1, 3)), "bc");
  EXPECT_EQ(TextOf(ReadStretch(path, 4, std::numeric_limits<std::uint64_t>::max())), "e");
  EXPECT_EQ(TextOf(ReadStretch(path, 5, 9)), "");
  EXPECT_EQ(TextOf(ReadStretch(path, 9, 20)), "");
  EXPECT_EQ(TextOf(ReadStretch(path, 3, 2)), "");
}

TEST(WholeFile, NeedsAFileThatCanBeRead) {
  const TempDir dir;
  for (const AFilePath& path : {AFilePath(dir.path().string()), AFilePath(dir.File("none"))}) {
    EXPECT_EQ(TextOf(ReadWholeFile(path)), "nothing");
    EXPECT_EQ(TextOf(ReadStretch(path, 0, 5)), "nothing");
  }
  // Larger than any profile, and without a byte on the medium.
  const AFilePath large(dir.Write("large", {}));
  if (!vkcl::testing::Lengthen(large.str(), std::uintmax_t{1} << 32)) GTEST_SKIP();
  EXPECT_EQ(TextOf(ReadWholeFile(large)), "nothing");
  EXPECT_EQ(TextOf(ReadStretch(large, 0, 5)), "nothing");
}

TEST(WholeFile, IsWholeOrNotThere) {
  const TempDir dir;
  const AFilePath path(dir.Write("f", kText));
  for (const Fault fault : {Fault::Error, Fault::Short, Fault::Interrupted}) {
    bool reached = true;
    for (std::size_t k = 0; reached; ++k) {
      ASSERT_LT(k, 20u);
      const int open = OpenHandles();
      std::string whole;
      std::string part;
      {
        const FaultAt at(k, fault);
        whole = TextOf(ReadWholeFile(path));
        reached = FaultAt::Reached();
      }
      {
        const FaultAt at(k, fault);
        part = TextOf(ReadStretch(path, 1, 4));
        reached = reached || FaultAt::Reached();
      }
      EXPECT_TRUE(whole == "abcde" || (whole == "nothing" && fault == Fault::Error)) << k;
      EXPECT_TRUE(part == "bcd" || (part == "nothing" && fault == Fault::Error)) << k;
      EXPECT_EQ(OpenHandles(), open);
    }
  }
}

}  // namespace
