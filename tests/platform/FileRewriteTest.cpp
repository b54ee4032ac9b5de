#include "platform/plinth/FileRewrite.h"

#include "platform/plinth/AFile.h"
#include "support/SparseFile.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

#if !defined(_WIN32)
#include <sys/resource.h>

#include <csignal>
#endif

namespace {

using vkcl::FileEnd;
using vkcl::FileOrigin;
using vkcl::FilePiece;
using vkcl::RewriteFile;
using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::ReadFile;
using vkcl::testing::TempDir;

// Of a literal: a piece refers to its bytes.
template <std::size_t size>
FilePiece Text(std::uint64_t at, const char (&literal)[size]) {
  return {at, size - 1, literal, 0};
}

FilePiece Move(std::uint64_t from, std::uint64_t length, std::uint64_t to) {
  return {to, length, nullptr, from};
}

Bytes BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

std::string Rewritten(const std::string& before, const std::vector<FilePiece>& pieces,
                      FileEnd end) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf(before));
  std::uint64_t length = 0;
  if (!RewriteFile(path, pieces, end, FileOrigin::Existing, length)) return "refused";
  const Bytes after = ReadFile(path);
  EXPECT_EQ(after.size(), length);
  return {after.begin(), after.end()};
}

#if !defined(_WIN32)
/// While it lives, no file can be written behind its first `bytes` bytes.
class ShortFiles {
 public:
  explicit ShortFiles(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~ShortFiles() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  ShortFiles(const ShortFiles&) = delete;
  ShortFiles& operator=(const ShortFiles&) = delete;

 private:
  void (*handler_)(int);
  rlimit before_ = {};
};
#endif

// Writes texts over a file.
bool Overwritten(const std::string& path, std::uint64_t offset,
                 const std::vector<std::string>& texts, std::uint64_t held) {
  std::vector<vkcl::host::Slice> slices;
  for (const std::string& text : texts) slices.push_back({text.data(), text.size()});
  return vkcl::OverwriteFile(AFilePath(path), offset, slices, held);
}

TEST(FileRewrite, OverwritesByOneReadAndOneWrite) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("abcdefghij"));
  const CallLog log;
  EXPECT_TRUE(Overwritten(path, 3, {"01", "", "234"}, 5));
  EXPECT_EQ(log.Kinds(), (std::vector<CallKind>{CallKind::Open, CallKind::Read, CallKind::Write,
                                                CallKind::Close}));
  EXPECT_EQ(log.calls()[1].offset, 3u);
  EXPECT_EQ(log.Bytes(CallKind::Read), 5u);
  EXPECT_EQ(ReadFile(path), BytesOf("abc01234ij"));
}

TEST(FileRewrite, OverwritingGoesBeyondTheEndButNotBeyondWhatMustBeHeld) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("abcdefghij"));
  EXPECT_FALSE(Overwritten(path, 6, {"012345"}, 5));
  EXPECT_FALSE(Overwritten(path, 12, {"012345"}, 1));
  EXPECT_EQ(ReadFile(path), BytesOf("abcdefghij"));
  EXPECT_TRUE(Overwritten(path, 6, {"012345"}, 4));
  EXPECT_EQ(ReadFile(path), BytesOf("abcdef012345"));
  EXPECT_FALSE(Overwritten(dir.File("absent"), 0, {"0"}, 0));
  EXPECT_FALSE(std::filesystem::exists(dir.File("absent")));
}

// Within the file and beyond its end: done, or the file is as it was.
TEST(FileRewrite, OverwritingIsDoneInFullOrNotAtAll) {
  for (const std::uint64_t offset : {2u, 6u}) {
    const Bytes after = BytesOf(offset == 2 ? "ab012345ij" : "abcdef012345");
    for (const Fault fault :
         {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
      int failures = 0;
      for (std::size_t which = 0;; ++which) {
        const TempDir dir;
        const std::string path = dir.Write("f", BytesOf("abcdefghij"));
        bool done = false;
        bool reached = false;
        {
          const FaultAt at(which, fault);
          done = Overwritten(path, offset, {"012", "345"}, 4);
          reached = FaultAt::Reached();
        }
        EXPECT_EQ(ReadFile(path), done ? after : BytesOf("abcdefghij")) << which;
        failures += done ? 0 : 1;
        if (!reached) break;
      }
      EXPECT_EQ(failures == 0, fault == Fault::Short || fault == Fault::Interrupted);
    }
  }
}

// A file that does not give what it holds is not taken for a shorter one.
TEST(FileRewrite, OverwritingTakesNoFailedReadForTheEnd) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("abcdefghij"));
  const FaultAt at(1, Fault::Error);  // the read
  EXPECT_FALSE(Overwritten(path, 2, {"012345"}, 0));
  EXPECT_EQ(ReadFile(path), BytesOf("abcdefghij"));
}

// A link to nothing yet is followed where a file may be made; a failure leaves it as it was.
TEST(FileRewrite, ALinkToNothingYetIsFollowedWhereAFileMayBeMade) {
  for (const FileOrigin origin : {FileOrigin::Existing, FileOrigin::New, FileOrigin::Any}) {
    const TempDir dir;
    std::filesystem::create_symlink("far", dir.File("near"));
    std::uint64_t length = 0;
    const bool isAny = origin == FileOrigin::Any;
    EXPECT_EQ(RewriteFile(dir.File("near"), {Text(0, "abc")}, FileEnd::Cut, origin, length), isAny);
    EXPECT_EQ(std::filesystem::exists(dir.File("far")), isAny);
    EXPECT_TRUE(std::filesystem::is_symlink(dir.File("near")));
    if (isAny) {
      EXPECT_EQ(ReadFile(dir.File("far")), BytesOf("abc"));
    }
  }
  for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
    for (std::size_t which = 0;; ++which) {
      const TempDir dir;
      std::filesystem::create_symlink("far", dir.File("near"));
      std::uint64_t length = 0;
      const FaultAt at(which, fault);
      const bool done =
          RewriteFile(dir.File("near"), {Text(0, "abc")}, FileEnd::Cut, FileOrigin::Any, length);
      EXPECT_EQ(std::filesystem::exists(dir.File("far")), done) << which;
      EXPECT_TRUE(std::filesystem::is_symlink(dir.File("near"))) << which;
      if (!FaultAt::Reached()) break;
    }
  }
}

// The second call asks to read and write what is there.
TEST(FileRewrite, AFileThatMayOnlyBeWrittenIsWritten) {
  for (const std::size_t size : {2u, 3u, 8u}) {
    const TempDir dir;
    const std::string path = dir.Write("f", Bytes(size, 'x'));
    std::uint64_t length = 0;
    {
      const FaultAt at(1, Fault::Forbidden);
      EXPECT_TRUE(RewriteFile(path, {Text(0, "abc")}, FileEnd::Cut, FileOrigin::Any, length));
    }
    EXPECT_EQ(ReadFile(path), BytesOf("abc"));
    EXPECT_EQ(length, 3u);
  }
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("xyz"));
  std::uint64_t length = 0;
  {
    const FaultAt at(1, Fault::Error);  // refused for another reason
    EXPECT_FALSE(RewriteFile(path, {Text(0, "abc")}, FileEnd::Cut, FileOrigin::Any, length));
  }
  {
    const FaultAt at(1, Fault::Forbidden);  // what is moved must be read
    EXPECT_FALSE(
        RewriteFile(path, {Text(0, "abc"), Move(0, 3, 3)}, FileEnd::Cut, FileOrigin::Any, length));
  }
  {
    const FaultAt at(0, Fault::Forbidden);
    EXPECT_FALSE(RewriteFile(path, {Text(0, "abc")}, FileEnd::Cut, FileOrigin::Existing, length));
  }
  EXPECT_EQ(ReadFile(path), BytesOf("xyz"));
}

#if !defined(_WIN32)
// What goes beyond the old end is written first: a full disk costs a file that cannot be read
// nothing.
TEST(FileRewrite, AFileThatMayOnlyBeWrittenLosesNothingToAFullDisk) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("xyz"));
  std::uint64_t length = 0;
  {
    const ShortFiles limit(4);
    const FaultAt at(1, Fault::Forbidden);
    EXPECT_FALSE(RewriteFile(path, {Text(0, "abcdefgh")}, FileEnd::Cut, FileOrigin::Any, length));
  }
  EXPECT_EQ(ReadFile(path), BytesOf("xyz"));
}
#endif

TEST(FileRewrite, MovesAndWrites) {
  EXPECT_EQ(Rewritten("HHabcdef", {Text(0, "hhh"), Move(2, 6, 3), Text(9, "NEW")}, FileEnd::Keep),
            "hhhabcdefNEW");
}

TEST(FileRewrite, KeepsOrCutsTheEnd) {
  EXPECT_EQ(Rewritten("abcdefgh", {Text(0, "xy")}, FileEnd::Keep), "xycdefgh");
  EXPECT_EQ(Rewritten("abcdefgh", {Text(0, "xy"), Move(6, 2, 2)}, FileEnd::Cut), "xygh");
}

TEST(FileRewrite, LaterPiecesLieOverEarlierOnes) {
  EXPECT_EQ(Rewritten("abcdef", {Text(0, "11111111"), Text(2, "22"), Text(3, "3")}, FileEnd::Cut),
            "11231111");
  EXPECT_EQ(Rewritten("abcdef", {Text(2, "22"), Text(0, "111111")}, FileEnd::Cut), "111111");
  EXPECT_EQ(Rewritten("abcdef", {Move(0, 6, 2), Text(4, "X")}, FileEnd::Keep), "ababXdef");
}

TEST(FileRewrite, MovesOverlapInBothDirections) {
  EXPECT_EQ(Rewritten("abcdef", {Move(0, 6, 1)}, FileEnd::Keep), "aabcdef");
  EXPECT_EQ(Rewritten("abcdef", {Move(1, 5, 0)}, FileEnd::Cut), "bcdef");
}

TEST(FileRewrite, PiecesWithoutBytesAreNotThere) {
  EXPECT_EQ(Rewritten("abc", {Text(0, "x"), Text(9, "")}, FileEnd::Keep), "xbc");
  EXPECT_EQ(Rewritten("abc", {Text(0, "x"), Text(9, "")}, FileEnd::Cut), "x");
}

TEST(FileRewrite, FillsAGapWithZeros) {
  EXPECT_EQ(Rewritten("ab", {Text(4, "x")}, FileEnd::Keep), std::string("ab\0\0x", 5));
}

TEST(FileRewrite, RefusesWhatTheFileDoesNotHold) {
  EXPECT_EQ(Rewritten("abc", {Text(0, "x"), Move(1, 3, 1)}, FileEnd::Keep), "refused");
  EXPECT_EQ(Rewritten("abc", {Text(0, "x"), Move(4, 1, 1)}, FileEnd::Keep), "refused");
  // A piece that would stay where it is asks for its bytes, too.
  EXPECT_EQ(Rewritten("abc", {Text(0, "x"), Move(2, 2, 2)}, FileEnd::Keep), "refused");
}

TEST(FileRewrite, ReachesAsFarAsTheSizeFieldCanTell) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("abc"));
  if (!vkcl::testing::Lengthen(path, 0xFFFFFFFFu)) GTEST_SKIP() << "no files of holes here";
  ASSERT_TRUE(vkcl::testing::Lengthen(path, 3));
  std::uint64_t length = 0;
  ASSERT_TRUE(RewriteFile(path, {Text(0xFFFFFFFEu, "x")}, FileEnd::Keep, FileOrigin::Existing,
                          length));  // a hole, which takes no room
  EXPECT_EQ(length, 0xFFFFFFFFu);
  EXPECT_EQ(std::filesystem::file_size(path), 0xFFFFFFFFu);
}

TEST(FileRewrite, RefusesAFileLongerThanItsSizeFieldCanTell) {
  EXPECT_EQ(Rewritten("abc", {Text(0xFFFFFFFFu, "x")}, FileEnd::Keep), "refused");
  EXPECT_EQ(Rewritten("abc", {Text(UINT64_MAX - 1, "x")}, FileEnd::Keep), "refused");
}

TEST(FileRewrite, ReadsAndWritesEachByteOnce) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("HHHHabcdefghTAIL"));
  const CallLog log;
  std::uint64_t length = 0;
  ASSERT_TRUE(RewriteFile(path, {Text(0, "hhhh"), Move(4, 8, 4), Text(12, "new "), Move(12, 4, 16)},
                          FileEnd::Cut, FileOrigin::Existing, length));
  EXPECT_EQ(log.Kinds(), (std::vector<CallKind>{CallKind::Open, CallKind::Length, CallKind::Read,
                                                CallKind::Read, CallKind::Write, CallKind::Write,
                                                CallKind::Write, CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), 8u);  // what is overwritten and moved; not what stays
  EXPECT_EQ(log.Bytes(CallKind::Write), 12u);
  EXPECT_EQ(log.calls()[4].offset, 16u);  // the growth first
  EXPECT_EQ(ReadFile(path), BytesOf("hhhhabcdefghnew TAIL"));
}

// In whatever order the pieces are given, and however they lie over one another.
TEST(FileRewrite, WritesNeighboursTogetherAndNothingTwice) {
  const TempDir dir;
  std::uint64_t length = 0;
  for (const auto& pieces :
       {std::vector{Text(4, "body"), Text(8, "tail"), Text(0, "head")},
        std::vector{Text(0, "HEADBODY"), Text(8, "tail"), Text(4, "body"), Text(0, "head")}}) {
    const std::string path = dir.Write("f", BytesOf("...............x"));
    const CallLog log;
    ASSERT_TRUE(RewriteFile(path, pieces, FileEnd::Cut, FileOrigin::Existing, length));
    EXPECT_EQ(log.Count(CallKind::Write), 1u);
    EXPECT_EQ(log.Bytes(CallKind::Write), 12u);
    EXPECT_EQ(ReadFile(path), BytesOf("headbodytail"));
  }
}

TEST(FileRewrite, CreatesAMissingFileOnlyWhenTold) {
  const TempDir dir;
  const std::string path = dir.File("new");
  std::uint64_t length = 0;
  EXPECT_FALSE(RewriteFile(path, {Text(0, "x")}, FileEnd::Cut, FileOrigin::Existing, length));
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(RewriteFile(path, {Text(0, "x")}, FileEnd::Cut, FileOrigin::Any, length));
  EXPECT_EQ(ReadFile(path), BytesOf("x"));
}

// Every call in turn, every kind of fault: the file is as it was, or the rewrite has succeeded.
TEST(FileRewrite, AFailureLeavesTheFileAsItWas) {
  const std::vector<std::vector<FilePiece>> cases = {
      {Text(0, "hhh"), Move(2, 10, 3), Text(13, "NEWNEW")},
      {Text(0, "hh"), Move(8, 4, 4)},
      {Text(20, "far away")},
  };
  for (const FileEnd end : {FileEnd::Keep, FileEnd::Cut}) {
    for (const auto& pieces : cases) {
      for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
        for (std::size_t which = 0;; ++which) {
          const TempDir dir;
          const Bytes before = BytesOf("HHabcdefghij");
          const std::string path = dir.Write("f", before);
          std::uint64_t length = 0;
          bool done = false;
          bool reached = false;
          {
            const FaultAt at(which, fault);
            done = RewriteFile(path, pieces, end, FileOrigin::Existing, length);
            reached = FaultAt::Reached();
          }
          if (!done) {
            EXPECT_EQ(ReadFile(path), before) << which;
          }
          if (!reached) {
            EXPECT_TRUE(done);
            break;
          }
        }
      }
    }
  }
}

TEST(FileRewrite, AFailedCreationLeavesNoFile) {
  for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
    for (std::size_t which = 0;; ++which) {
      const TempDir dir;
      const std::string path = dir.File("new");
      std::uint64_t length = 0;
      const FaultAt at(which, fault);
      const bool done =
          RewriteFile(path, {Text(0, "abcdef")}, FileEnd::Cut, FileOrigin::Any, length);
      EXPECT_EQ(std::filesystem::exists(path), done) << which;
      if (!FaultAt::Reached()) break;
    }
  }
}

#if !defined(_WIN32)
// A write that stops in the middle and stays refused: what it overwrote is put back.
TEST(FileRewrite, OverwritingPutsBackWhatAFullFileRefuses) {
  for (const std::size_t taken : {0u, 1u, 4u, 9u}) {
    const TempDir dir;
    const std::string path = dir.Write("f", BytesOf("abcdefghij"));
    bool written = true;
    std::size_t writes = 0;
    {
      const ShortFiles limit(taken);
      const CallLog log;
      written = Overwritten(path, 0, {"01234", "56789"}, 10);
      writes = log.Count(CallKind::Write);
    }
    EXPECT_FALSE(written);
    EXPECT_EQ(ReadFile(path), BytesOf("abcdefghij")) << taken;
    // The rest of the old bytes is tried three times more where some could be put back.
    EXPECT_EQ(writes, taken > 0 ? 7u : 2u) << taken;
  }
}
#endif

TEST(FileRewrite, ShortAndInterruptedTransfersAreContinued) {
  for (const Fault fault : {Fault::Short, Fault::Interrupted}) {
    for (std::size_t which = 0;; ++which) {
      const TempDir dir;
      const std::string path = dir.Write("f", BytesOf("HHabcdefghij"));
      std::uint64_t length = 0;
      const FaultAt at(which, fault);
      ASSERT_TRUE(RewriteFile(path, {Text(0, "hhh"), Move(2, 10, 3), Text(13, "NEW")},
                              FileEnd::Keep, FileOrigin::Existing, length));
      EXPECT_EQ(ReadFile(path), BytesOf("hhhabcdefghijNEW")) << which;
      if (!FaultAt::Reached()) break;
    }
  }
}

}  // namespace
