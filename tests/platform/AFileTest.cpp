#include "platform/plinth/AFile.h"

#include <chrono>
#include <cstring>
#include <thread>

#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::OpenHandles;
using vkcl::testing::ReadFile;
using vkcl::testing::TempDir;

TEST(AFile, OpensOnlyWhatExistsUnlessToldToCreate) {
  const TempDir dir;
  const std::string path = dir.File("absent");
  for (const int flags : {1, 2, 3}) {
    AFile file;
    EXPECT_FALSE(file.open(path, flags)) << flags;
  }
  EXPECT_FALSE(std::filesystem::exists(path));
  AFile file;
  EXPECT_TRUE(file.open(path, 2 | 256));
  EXPECT_TRUE(file.close());
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(AFile, KeepsContentOrTruncates) {
  const TempDir dir;
  const std::string path = dir.Write("f", {1, 2, 3, 4});
  {
    AFile file;
    ASSERT_TRUE(file.open(path, 2));
    ASSERT_TRUE(file.seek(1));
    EXPECT_EQ(file.write("\x09", 1), 1u);
    EXPECT_TRUE(file.close());
  }
  EXPECT_EQ(ReadFile(path), (Bytes{1, 9, 3, 4}));
  {
    AFile file;
    ASSERT_TRUE(file.open(path, 3 | 256));
    EXPECT_EQ(file.length(), 0);
  }
  EXPECT_EQ(ReadFile(path), Bytes{});
}

TEST(AFile, ReadsAndWritesAtThePosition) {
  const TempDir dir;
  const std::string path = dir.Write("f", {10, 11, 12, 13, 14});
  AFile file;
  ASSERT_TRUE(file.open(path, 3));
  EXPECT_EQ(file.length(), 5);
  unsigned char buffer[8] = {};
  EXPECT_EQ(file.read(buffer, 2), 2u);
  EXPECT_EQ(buffer[1], 11);
  EXPECT_EQ(file.read(buffer, 8), 3u);  // the end of the file
  EXPECT_EQ(buffer[2], 14);
  EXPECT_EQ(file.read(buffer, 8), 0u);
  ASSERT_TRUE(file.seek(7));
  EXPECT_EQ(file.write("\x01", 1), 1u);
  EXPECT_TRUE(file.close());
  EXPECT_EQ(ReadFile(path), (Bytes{10, 11, 12, 13, 14, 0, 0, 1}));
}

TEST(AFile, WithoutAFileNothingMoves) {
  AFile file;
  char byte = 0;
  EXPECT_EQ(file.read(&byte, 1), 0u);
  EXPECT_EQ(file.write(&byte, 1), 0u);
  EXPECT_EQ(file.length(), -1);
  EXPECT_FALSE(file.seek(0));
  EXPECT_FALSE(file.setLength(0));
  EXPECT_FALSE(file.sync());
  EXPECT_FALSE(file.tryLock());
  EXPECT_FALSE(file.waitForLock(std::chrono::milliseconds(0)));
  EXPECT_FALSE(file.hasName());
  EXPECT_TRUE(file.close());
}

TEST(AFile, WaitsForALockAsLongAsItIsTold) {
  const TempDir dir;
  const AFilePath path(dir.Write("f", {1, 2}));
  AFile first;
  AFile second;
  ASSERT_TRUE(first.open(path, AFile::Read));
  ASSERT_TRUE(second.open(path, AFile::ReadWrite));
  ASSERT_TRUE(first.tryLock());
  EXPECT_FALSE(second.tryLock());
  EXPECT_FALSE(second.waitForLock(std::chrono::milliseconds(0)));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(second.waitForLock(std::chrono::milliseconds(30)));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));

  std::thread release([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    first.close();
  });
  EXPECT_TRUE(second.waitForLock(std::chrono::minutes(1)));
  release.join();
  ASSERT_TRUE(first.open(path, AFile::Read));
  EXPECT_FALSE(first.tryLock());
}

TEST(AFile, WaitsForNobodyWhereThereAreNoLocks) {
  const TempDir dir;
  const AFilePath path(dir.Write("f", {1, 2}));
  AFile file;
  ASSERT_TRUE(file.open(path, AFile::Read));
  {
    const FaultAt fault(0, Fault::Error);
    EXPECT_TRUE(file.waitForLock(std::chrono::minutes(1)));
    ASSERT_TRUE(FaultAt::Reached());
  }
  AFile other;
  ASSERT_TRUE(other.open(path, AFile::Read));
  EXPECT_TRUE(other.tryLock());
}

TEST(AFile, OpensNothingThatIsNeitherReadNorWritten) {
  const TempDir dir;
  const std::string path = dir.Write("f", {1, 2});
  AFile file;
  for (const int flags : {0, 256, 512}) EXPECT_FALSE(file.open(path, flags)) << flags;
  EXPECT_EQ(ReadFile(path), (Bytes{1, 2}));
}

TEST(AFile, AReadOnlyFileRefusesWritesAndAWriteOnlyFileReads) {
  const TempDir dir;
  const std::string path = dir.Write("f", {1, 2});
  AFile reader;
  ASSERT_TRUE(reader.open(path, 1));
  EXPECT_EQ(reader.write("x", 1), 0u);
  AFile writer;
  ASSERT_TRUE(writer.open(path, 2));
  char byte = 0;
  EXPECT_EQ(writer.read(&byte, 1), 0u);
}

TEST(AFile, ContinuesShortAndInterruptedTransfers) {
  const TempDir dir;
  const std::string path = dir.Write("f", {1, 2, 3, 4, 5, 6});
  for (const Fault fault : {Fault::Short, Fault::Interrupted}) {
    AFile file;
    ASSERT_TRUE(file.open(path, 3));
    unsigned char buffer[6] = {};
    {
      const FaultAt at(0, fault);
      EXPECT_EQ(file.read(buffer, 6), 6u);
      EXPECT_TRUE(FaultAt::Reached());
    }
    EXPECT_EQ(buffer[5], 6);
    ASSERT_TRUE(file.seek(0));
    const FaultAt at(0, fault);
    EXPECT_EQ(file.write("abcdef", 6), 6u);
    EXPECT_TRUE(file.close());
    EXPECT_EQ(ReadFile(path), (Bytes{'a', 'b', 'c', 'd', 'e', 'f'}));
    vkcl::testing::WriteFile(path, {1, 2, 3, 4, 5, 6});
  }
}

TEST(AFile, ReportsWhatWasReallyWritten) {
  const TempDir dir;
  const std::string path = dir.Write("f", {});
  AFile file;
  ASSERT_TRUE(file.open(path, 2));
  {
    const FaultAt at(0, Fault::FullDisk);
    EXPECT_EQ(file.write("abcdef", 6), 3u);
  }
  {
    const FaultAt at(0, Fault::Error);
    EXPECT_EQ(file.write("abcdef", 6), 0u);
  }
}

TEST(AFile, ReportsAFailedFlushAtClose) {
  const TempDir dir;
  AFile file;
  ASSERT_TRUE(file.open(dir.File("f"), 2 | 256));
  const FaultAt at(0, Fault::FailedClose);
  EXPECT_FALSE(file.close());
  EXPECT_TRUE(file.close());  // it is closed, all the same
}

TEST(AFile, ClosesItselfAndWhatWasOpenBefore) {
  const TempDir dir;
  const std::string path = dir.Write("f", {1});
  const int before = OpenHandles();
  {
    AFile file;
    ASSERT_TRUE(file.open(path, 1));
    ASSERT_TRUE(file.open(path, 1));
    EXPECT_EQ(OpenHandles(), before + 1);
  }
  EXPECT_EQ(OpenHandles(), before);
}

TEST(AFile, GathersInOneCall) {
  const TempDir dir;
  const std::string path = dir.Write("f", {});
  AFile file;
  ASSERT_TRUE(file.open(path, 3));
  {
    const CallLog log;
    vkcl::host::Slice slices[] = {{"ab", 2}, {"", 0}, {"cde", 3}};
    EXPECT_EQ(file.writeAt(1, slices), 5u);
    EXPECT_EQ(log.Count(CallKind::Write), 1u);
  }
  char a[3] = {};
  char b[3] = {};
  vkcl::host::MutableSlice slices[] = {{a, 3}, {b, 3}};
  EXPECT_EQ(file.readAt(0, slices), 6u);
  EXPECT_EQ(std::memcmp(a, "\0ab", 3), 0);
  EXPECT_EQ(std::memcmp(b, "cde", 3), 0);
}

TEST(AFile, GathersMoreSlicesThanOneCallTakes) {
  const TempDir dir;
  const std::string path = dir.Write("f", {});
  AFile file;
  ASSERT_TRUE(file.open(path, 2));
  std::vector<vkcl::host::Slice> slices(1000, vkcl::host::Slice{"xy", 2});
  EXPECT_EQ(file.writeAt(0, slices), 2000u);
  ASSERT_TRUE(file.close());
  const Bytes content = ReadFile(path);
  ASSERT_EQ(content.size(), 2000u);
  EXPECT_EQ(content[1998], 'x');
  EXPECT_EQ(content[1999], 'y');
}

TEST(AFile, AFolderAndAPipeAreNoFiles) {
  const TempDir dir;
  AFile file;
  char byte = 0;
  if (file.open(dir.path().string(), 1)) {
    EXPECT_EQ(file.read(&byte, 1), 0u);
    EXPECT_EQ(file.length(), -1);
  }
#if !defined(_WIN32)
  const std::string pipe = dir.File("pipe");
  ASSERT_EQ(std::system(("mkfifo '" + pipe + "'").c_str()), 0);
  if (file.open(pipe, 1)) {  // does not wait for a writer
    EXPECT_EQ(file.read(&byte, 1), 0u);
    EXPECT_EQ(file.length(), -1);
  }
  ASSERT_TRUE(file.open(AFilePath("/dev/null"), AFile::ReadWrite));
  EXPECT_EQ(file.length(), -1);
#endif
}

}  // namespace
