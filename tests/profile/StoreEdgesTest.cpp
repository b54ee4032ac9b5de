// Corners of the store that only a careless change would reach.
#include <algorithm>
#include <cstring>
#include <string>

#include "handler/VKCLProfileHandler.h"
#include "platform/plinth/AFile.h"
#include "profile/TagLayout.h"
#include "support/ImageBuilder.h"
#include "support/OtherProcess.h"
#include "support/SystemCalls.h"
#include "support/TagFile.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FileTag;
using vkcl::testing::Payload;
using vkcl::testing::ProfileFile;
using vkcl::testing::ReadFile;
using vkcl::testing::Slice;
using vkcl::testing::TempDir;

using Kinds = std::vector<CallKind>;
const Kinds kOneRead = {CallKind::Open, CallKind::Read, CallKind::Close};

void Put32(Bytes& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) {
    bytes[at + i] = static_cast<unsigned char>(value >> (24 - 8 * i));
  }
}

// Three private tags of 8, 12 and 16 bytes; the table stands at 132, the data begin at 168.
Bytes ThreeTags() {
  return ProfileFile({{"QX50", Payload().Fill(8, 0x50)},
                      {"QX51", Payload().Fill(12, 0x51)},
                      {"QX52", Payload().Fill(16, 0x52)}});
}

std::size_t OffsetField(std::size_t entry) { return 132 + 12 * entry + 4; }
std::size_t SizeField(std::size_t entry) { return 132 + 12 * entry + 8; }

std::string Content(const VKCLProfile& profile, VKPrivateTagSignature sig) {
  VKPrivateTag tag;
  tag.SetSignature(sig);
  return profile.ReadVKPrivateTag(&tag, 1) != 0 ? std::string(tag.data, tag.size) : "none";
}

// An object that was made before its file came.
struct Early {
  explicit Early(const Bytes& come) { dir.Write("p.icc", come); }
  TempDir dir;
  const std::string path = dir.File("p.icc");
  VKCLProfile profile{AFilePath(path), 4};
};

TEST(StoreEdges, AProfileThatHasComeSinceIsNotOverwritten) {
  const Bytes come = ThreeTags();
  Early early(come);
  ASSERT_EQ(early.profile.isValidICC(), 0);
  EXPECT_EQ(early.profile.WriteVKPrivateTag(QX74, "abcd", 4), 0);
  EXPECT_EQ(ReadFile(early.path), come);
  EXPECT_EQ(early.profile.isValidICC(), 0);
}

TEST(StoreEdges, WhatCannotBeReadMayBeAProfileAndIsNotOverwritten) {
  const Bytes come = ThreeTags();
  Early early(come);
  ASSERT_EQ(early.profile.isValidICC(), 0);
  bool reached = true;
  std::size_t calls = 0;
  for (; reached; ++calls) {
    ASSERT_LT(calls, 20u);
    const FaultAt at(calls, Fault::Error);
    EXPECT_EQ(early.profile.WriteVKPrivateTag(QX74, "abcd", 4), 0);
    reached = FaultAt::Reached();
    EXPECT_EQ(ReadFile(early.path), come) << calls;
  }
  EXPECT_GT(calls, 3u);  // it was opened, asked for its length, and read
}

TEST(StoreEdges, ATagIsAppendedBehindAnEmptyOneAtTheEnd) {
  const TempDir dir;
  const std::string path =
      dir.Write("p.icc", vkcl::testing::RawImage(vkcl::testing::ProfileHeader(),
                                                 {{vkcl::testing::Sig("aaaa"), 144, 0}}, {}));
  VKCLProfile profile(AFilePath(path), 4);
  ASSERT_EQ(profile.WriteVKPrivateTag(QX74, "abcd", 4), 1);
  const Bytes after = ReadFile(path);
  EXPECT_EQ(Slice(after, 128, 28),
            (Bytes{0, 0, 0,   2,   'a', 'a', 'a', 'a', 0, 0,   0, 156, 0, 0,
                   0, 0, 'Q', 'X', '7', '4', 0,   0,   0, 156, 0, 0,   0, 16}));
  EXPECT_EQ(after.size(), 172u);
}

TEST(StoreEdges, AProfileWithoutTagsThatHasComeSinceIsNotOverwritten) {
  const Bytes come = ProfileFile({});
  ASSERT_EQ(come.size(), 132u);
  Early early(come);
  ASSERT_EQ(early.profile.isValidICC(), 0);
  EXPECT_EQ(early.profile.WriteVKPrivateTag(QX74, "abcd", 4), 0);
  EXPECT_EQ(ReadFile(early.path), come);
}

TEST(StoreEdges, AnOffsetMovesUpToTheLastThatItsFieldCanTell) {
  for (const std::uint32_t offset : {0xFFFFFFF3u, 0xFFFFFFF4u}) {
    Bytes file = ThreeTags();
    Put32(file, OffsetField(1), offset);
    const TempDir dir;
    const std::string path = dir.Write("p.icc", file);
    VKCLProfile profile(AFilePath(path), 4);
    const bool fits = offset == 0xFFFFFFF3u;
    EXPECT_EQ(profile.WriteVKPrivateTag(QX74, "abcd", 4), fits ? 1 : 0);
    const Bytes after = ReadFile(path);
    if (fits) {
      EXPECT_EQ(Slice(after, OffsetField(1), 4), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
    } else {
      EXPECT_EQ(after, file);
    }
  }
}

TEST(StoreEdges, AFileThatIsNoProfileIsReplacedWhateverItHolds) {
  Bytes longTable = ThreeTags();
  Put32(longTable, 128, 0x00FFFFFF);
  Bytes noMagic = ThreeTags();
  noMagic[36] = 'b';
  for (const Bytes& content : {Bytes{}, Bytes(131, 7), longTable, noMagic}) {
    const TempDir dir;
    const std::string path = dir.Write("p.icc", content);
    VKCLProfile profile(AFilePath(path), 4);
    ASSERT_EQ(profile.isValidICC(), 0);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX74, "abcd", 4), 1);
    EXPECT_EQ(ReadFile(path).size(), 160u);
    EXPECT_EQ(Content(profile, QX74), "abcd");
  }
}

TEST(StoreEdges, CreatingATemporaryProfileKeepsItUntilTheObjectDies) {
  const TempDir dir;
  const std::string path = dir.File("copy.tmp");
  {
    VKCLProfile profile(AFilePath(path), 4);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX74, "abcd", 4), 1);
    EXPECT_TRUE(std::filesystem::exists(path));
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(StoreEdges, AFailedCloseOfASameSizeWriteIsReportedAndTheOldTagPutBack) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", ThreeTags());
  VKCLProfile profile{AFilePath(path), 4};
  {
    const FaultAt at(3, Fault::FailedClose);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX51, "123456789012", 12), 0);
    EXPECT_TRUE(FaultAt::Reached());
  }
  EXPECT_EQ(ReadFile(path), ThreeTags());
}

TEST(StoreEdges, ALongTableThatIsCutIsInvalid) {
  // 12 x 400 bytes are fewer than the file has, but behind byte 132 they are not all there.
  Bytes bytes = ThreeTags();
  bytes.resize(4850);
  Put32(bytes, 128, 400);
  const TempDir dir;
  EXPECT_EQ(VKCLProfile(AFilePath(dir.Write("p.icc", bytes)), 4).isValidICC(), 0);
  bytes.resize(132 + 4800);
  EXPECT_EQ(VKCLProfile(AFilePath(dir.Write("q.icc", bytes)), 4).isValidICC(), 1);
}

TEST(StoreEdges, ALargeTagOfAnotherTypeLeavesTheBufferAlone) {
  const TempDir dir;
  const Bytes file = ProfileFile({{"QX58", Payload().Fill(100000, 1), "text"}});
  const VKCLProfile profile(AFilePath(dir.Write("p.icc", file)), 4);
  Bytes buffer(100000, 9);
  unsigned long size = 5;
  EXPECT_EQ(profile.ReadVKPrivateTag(QX58, buffer.data(), &size), 0);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(buffer, Bytes(100000, 9));
}

TEST(StoreEdges, ALargeTagIsReadWhole) {
  const TempDir dir;
  const Bytes file = ProfileFile({{"QX58", Payload().Fill(70000, 3).Fill(1, 4)}});
  const VKCLProfile profile(AFilePath(dir.Write("p.icc", file)), 4);
  Bytes buffer(70001);
  EXPECT_EQ(profile.ReadVKPrivateTag(QX58, buffer.data(), nullptr), 1);
  EXPECT_EQ(buffer.front(), 3);
  EXPECT_EQ(buffer.back(), 4);
}

TEST(StoreEdges, AFailedUpdateIsLaidOutByTheFilesSizeLaterAlsoInACopy) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", ThreeTags());
  VKCLProfile profile(AFilePath(path), 4);
  {
    const FaultAt at(0, Fault::Error);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX51, "a", 1), 0);
  }
  EXPECT_EQ(profile.GetTagSize(static_cast<icTagSignature>(QX51)), 13u);
  VKCLProfile copy(profile);
  VKCLProfile assigned(AFilePath(dir.File("absent")), 4);
  assigned = profile;
  EXPECT_EQ(copy.WriteVKPrivateTag(QX60, "new", 3), 1);
  VKCLProfile reopened(AFilePath(path), 4);
  EXPECT_EQ(Content(reopened, QX51), std::string(12, 0x51));
  EXPECT_EQ(Content(reopened, QX52), std::string(16, 0x52));
  EXPECT_EQ(Content(reopened, QX60), "new");
}

TEST(StoreEdges, ARetryOfAFailedUpdateDoesNotGoOverTheNextTag) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", ThreeTags());
  VKCLProfile profile(AFilePath(path), 4);
  const Bytes longer(40, 0x77);
  {
    const FaultAt at(0, Fault::Error);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX50, longer.data(), 40), 0);
  }
  EXPECT_EQ(profile.WriteVKPrivateTag(QX50, longer.data(), 40), 1);
  const VKCLProfile reopened(AFilePath(path), 4);
  EXPECT_EQ(Content(reopened, QX50), std::string(40, 0x77));
  EXPECT_EQ(Content(reopened, QX51), std::string(12, 0x51));
  EXPECT_EQ(Content(reopened, QX52), std::string(16, 0x52));
}

// Runs every writer on a damaged file: each refuses, or leaves header and table whole.
void ExpectHeadSurvives(const Bytes& damaged) {
  const Bytes payload(64, 1);
  for (int writer = 0; writer < 8; ++writer) {
    const TempDir dir;
    const std::string path = dir.Write("p.icc", damaged);
    VKCLProfile profile(AFilePath(path), 4);
    ASSERT_EQ(profile.isValidICC(), 1);
    VKPrivateTag tag;
    tag.InitWizardTag(1);
    constexpr VKPrivateTagSignature kSigs[] = {QX50, QX51, QX52};
    constexpr unsigned long kLengths[] = {8, 12, 16};
    int result = 0;
    if (writer < 3)
      result = profile.WriteVKPrivateTag(kSigs[writer], payload.data(), kLengths[writer]);
    if (writer >= 3 && writer < 6)
      result = profile.WriteVKPrivateTag(kSigs[writer - 3], payload.data(), 64);
    if (writer == 6) result = profile.WriteVKPrivateTag(QX60, payload.data(), 64);
    if (writer == 7) result = profile.WriteMultiVKPrivateTags(&tag, 1);
    SCOPED_TRACE(writer);
    if (result == 0) {
      EXPECT_EQ(ReadFile(path), damaged);
    } else {
      EXPECT_EQ(VKCLProfile(AFilePath(path), 4).isValidICC(), 1);
      EXPECT_LT(ReadFile(path).size(), 4096u);
    }
  }
}

TEST(StoreEdges, OffsetsWithinTheHeadNeverCostTheHead) {
  for (std::size_t entry = 0; entry < 3; ++entry) {
    for (const std::uint32_t offset : {0u, 1u, 36u, 128u, 132u, 167u}) {
      SCOPED_TRACE(std::to_string(entry) + " at " + std::to_string(offset));
      Bytes damaged = ThreeTags();
      Put32(damaged, OffsetField(entry), offset);
      ExpectHeadSurvives(damaged);
    }
  }
}

TEST(StoreEdges, OffsetsAndSizesNearTheTopNeverGrowTheFile) {
  for (std::size_t entry = 0; entry < 3; ++entry) {
    for (const std::uint32_t value : {0x10000u, 0x7FFFFFFFu, 0xFFFFFF00u, 0xFFFFFFFFu}) {
      SCOPED_TRACE(std::to_string(entry) + " is " + std::to_string(value));
      Bytes damaged = ThreeTags();
      Put32(damaged, OffsetField(entry), value);
      ExpectHeadSurvives(damaged);
      damaged = ThreeTags();
      Put32(damaged, SizeField(entry), value);
      ExpectHeadSurvives(damaged);
    }
  }
}

TEST(StoreEdges, AReadAfterAWriteIsStillOneOpenOneReadOneClose) {
  const TempDir dir;
  VKCLProfile profile(AFilePath(dir.Write("p.icc", ThreeTags())), 4);
  const Bytes payload(500, 8);
  ASSERT_EQ(profile.WriteVKPrivateTag(QX60, payload.data(), 500), 1);
  ASSERT_EQ(profile.WriteVKPrivateTag(QX51, payload.data(), 400), 1);
  VKCLProfile made(AFilePath(dir.File("made.icc")), 4);
  ASSERT_EQ(made.WriteVKPrivateTag(QX60, payload.data(), 500), 1);
  const VKCLProfile copy(profile);
  for (const VKCLProfile* object :
       {&static_cast<const VKCLProfile&>(profile), &copy, &static_cast<const VKCLProfile&>(made)}) {
    const CallLog log;
    EXPECT_EQ(Content(*object, QX60), std::string(500, 8));
    EXPECT_EQ(log.Kinds(), kOneRead);
  }
}

TEST(StoreEdges, ATagThatAnotherObjectMadeLongerIsReadFromTheGrownFile) {
  const TempDir dir;
  Bytes file = ThreeTags();
  const std::size_t end = file.size();
  Put32(file, SizeField(2), 28 + 100);  // announces what the file does not hold yet
  const std::string path = dir.Write("p.icc", file);
  const VKCLProfile profile(AFilePath(path), 4);
  EXPECT_EQ(Content(profile, QX52), "none");
  file.resize(end + 100, 0x52);
  dir.Write("p.icc", file);
  EXPECT_EQ(Content(profile, QX52), std::string(116, 0x52));
}

TEST(StoreEdges, AHugeSizeIsRefusedBeforeItIsAllocated) {
  Bytes file = ProfileFile({{"QX50", Payload().Fill(8)}, {"targ", Payload().Text("text"), "text"}});
  Put32(file, SizeField(0), 0xFFFFFFF0);
  Put32(file, SizeField(1), 0xFFFFFFF0);
  const TempDir dir;
  const VKCLProfile profile(AFilePath(dir.Write("p.icc", file)), 4);
  const CallLog log;
  VKPrivateTag tag;
  tag.SetSignature(QX50);
  EXPECT_EQ(profile.ReadVKPrivateTag(&tag, 1), 0);
  unsigned long size = 3;
  EXPECT_EQ(profile.ReadtargTag(size), nullptr);
  EXPECT_EQ(size, 3u);
  EXPECT_EQ(log.Count(CallKind::Read), 0u);  // refused by the length of the file alone
}

TEST(StoreEdges, NeighboursWithinThePaddingForbidReplacing) {
  // 'QX50' ends at 181 and is padded to 184; 'QX51' begins at 182.
  Bytes file = ProfileFile({{"QX50", Payload().Fill(1)}, {"QX51", Payload().Fill(14)}});
  const std::size_t start = 132 + 24;
  Put32(file, OffsetField(1), static_cast<std::uint32_t>(start + 14));
  const TempDir dir;
  const VKCLProfile profile(AFilePath(dir.Write("p.icc", file)), 4);
  EXPECT_FALSE(vkcl::TagDataSuitWriting(profile, QX50, 1));
}

TEST(StoreEdges, ATagBeforeItsPredecessorForbidsRebuilding) {
  // The first tag of the table lies behind the second: a rebuild of the second would cover it.
  Bytes file = ProfileFile({{"QX50", Payload().Fill(4)}, {"QX51", Payload().Fill(4)}});
  const std::uint32_t start = 132 + 24;
  Put32(file, OffsetField(0), start + 16);
  Put32(file, OffsetField(1), start);
  const TempDir dir;
  const VKCLProfile profile(AFilePath(dir.Write("p.icc", file)), 4);
  EXPECT_FALSE(vkcl::TagDataSuitWriting(profile, QX51, 40));
  EXPECT_FALSE(vkcl::TagDataSuitAppending(profile));
}

TEST(StoreEdges, HundredsOfTagsOnOneBlockAreNotPulledApart) {
  std::vector<FileTag> tags;
  for (int i = 0; i < 100; ++i) tags.emplace_back("t" + std::to_string(100 + i), Payload());
  tags.emplace_back("data", Payload().Fill(50000));
  Bytes file = ProfileFile(tags);
  for (std::size_t i = 0; i < 100; ++i) {
    std::copy_n(file.begin() + static_cast<std::ptrdiff_t>(OffsetField(100)), 8,
                file.begin() + static_cast<std::ptrdiff_t>(OffsetField(i)));
  }
  const TempDir dir;
  const VKCLProfile profile(AFilePath(dir.Write("p.icc", file)), 4);
  EXPECT_FALSE(vkcl::ArrangeTagData(profile, AFilePath(dir.File("q.icc"))));
  EXPECT_FALSE(std::filesystem::exists(dir.File("q.icc")));
}

TEST(StoreEdges, ASidecarThatCannotBeWrittenWholeIsNotLeft) {
  const Bytes file = ProfileFile({{"QX71", Payload().Fill(132).Text("the sidecar's text")}});
  for (const Fault fault : {Fault::FullDisk, Fault::FailedClose}) {
    int failures = 0;
    for (std::size_t which = 0;; ++which) {
      const TempDir dir;
      const VKCLProfileHandler handler(AFilePath(dir.Write("p.icc", file)), 4);
      const std::string out = dir.File("out");
      int result = 0;
      bool reached = false;
      {
        const FaultAt at(which, fault);
        result = handler.GetVSDProfile(AFilePath(out));
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(std::filesystem::exists(out), result == 1) << which;
      failures += result == 0 ? 1 : 0;
      if (!reached) break;
    }
    EXPECT_EQ(failures, 1);
  }
}

TEST(StoreEdges, LinksThatDoNotFitLeaveTheRecordAlone) {
  for (const std::int32_t bad : {-1, 1, 0x7FFFFFFF}) {
    const Bytes file = ProfileFile(
        {{"QX69", Payload().Int(1).Int(28).Int(2).Int(4).Text("Spot").Int(0).Int(bad)}});
    const TempDir dir;
    const VKCLProfileHandler handler(AFilePath(dir.Write("p.icc", file)), 4);
    VKSpotLinDLParam links;
    links.SetData(1, CString("Mine"));
    EXPECT_EQ(handler.GetVKSpotLinDL(links), 0);
    EXPECT_EQ(links.count, 1);
    EXPECT_STREQ(links.name, "Mine");
  }
}

TEST(StoreEdges, ManyEmptyLinksAreRead) {
  for (const std::int32_t count : {5, 1024, 1025, 2000, 100000}) {
    Payload payload;
    payload.Int(1).Int(16 + 4 * count).Int(count).Int(0).Fill(4 * static_cast<std::size_t>(count));
    const TempDir dir;
    const VKCLProfileHandler handler(
        AFilePath(dir.Write("p.icc", ProfileFile({{"QX69", payload}}))), 4);
    VKSpotLinDLParam links;
    EXPECT_EQ(handler.GetVKSpotLinDL(links), 1) << count;
    EXPECT_EQ(links.count, count);
  }
}

#if !defined(_WIN32)
// A file that its user may write and not read, for a copy without private tags and for a new
// profile: writing is all that either asks for.
TEST(StoreEdges, WhatIsMadeAnewNeedsWritePermissionOnly) {
  const TempDir dir;
  const std::string path = dir.Write(
      "p.icc", ProfileFile({{"QX51", Payload().Fill(8, 1)}, {"cprt", Payload().Fill(9, 2)}}));
  const std::string copy = dir.Write("copy.icc", Bytes(9000, 3));
  const std::string made = dir.Write("made.icc", Bytes(9000, 4));
  for (const std::string& name : {copy, made}) {
    vkcl::testing::GiveToOrdinaryUser(name);
    ASSERT_EQ(::chmod(name.c_str(), 0200), 0);
  }
  std::filesystem::permissions(dir.path(), std::filesystem::perms::others_exec,
                               std::filesystem::perm_options::add);
  vkcl::testing::AsOrdinaryUser([&] {
    EXPECT_EQ(VKCLProfile(AFilePath(path), 4).WriteICCWithoutVKiTags(copy.c_str()), 1);
    VKCLProfile profile(AFilePath(made), 4);
    EXPECT_EQ(profile.isValidICC(), 0);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX74, "abcd", 4), 1);
    EXPECT_EQ(profile.isValidICC(), 1);
  });
  ASSERT_EQ(::chmod(copy.c_str(), 0600), 0);
  ASSERT_EQ(::chmod(made.c_str(), 0600), 0);
  EXPECT_EQ(ReadFile(copy), ProfileFile({{"cprt", Payload().Fill(9, 2)}}));
  EXPECT_EQ(ReadFile(made).size(), 160u);
  EXPECT_EQ(VKCLProfile(AFilePath(made), 4).GetTagSize(static_cast<icTagSignature>(QX74)), 16u);
}

// Other reasons than permission do not make it writable: it may be a profile.
TEST(StoreEdges, OnlyAForbiddenReadLetsANewProfileTakeThePlaceOfAFile) {
  for (const Fault fault : {Fault::Error, Fault::Forbidden}) {
    const TempDir dir;
    const std::string path = dir.Write("p.icc", Bytes(500, 1));
    VKCLProfile profile(AFilePath(path), 4);
    const FaultAt at(0, fault);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX74, "abcd", 4), fault == Fault::Forbidden ? 1 : 0);
    EXPECT_EQ(ReadFile(path).size(), fault == Fault::Forbidden ? 160u : 500u);
  }
}

TEST(StoreEdges, WhatIsMadeAnewFollowsALinkToNothingYet) {
  const TempDir dir;
  const std::string path = dir.Write(
      "p.icc", ProfileFile({{"QX51", Payload().Fill(8, 1)}, {"cprt", Payload().Fill(9, 2)}}));
  std::filesystem::create_symlink("copy.icc", dir.File("copy"));
  std::filesystem::create_symlink("made.icc", dir.File("made"));
  EXPECT_EQ(VKCLProfile(AFilePath(path), 4).WriteICCWithoutVKiTags(dir.File("copy").c_str()), 1);
  VKCLProfile profile(AFilePath(dir.File("made")), 4);
  EXPECT_EQ(profile.WriteVKPrivateTag(QX74, "abcd", 4), 1);
  EXPECT_EQ(ReadFile(dir.File("copy.icc")), ProfileFile({{"cprt", Payload().Fill(9, 2)}}));
  EXPECT_EQ(ReadFile(dir.File("made.icc")).size(), 160u);
  EXPECT_TRUE(std::filesystem::is_symlink(dir.File("copy")));
  EXPECT_TRUE(std::filesystem::is_symlink(dir.File("made")));
}

TEST(StoreEdges, HandlesAreNotInherited) {
  const TempDir dir;
  const std::string path = dir.Write("f", {1});
  struct stat wanted = {};
  ASSERT_EQ(::stat(path.c_str(), &wanted), 0);
  AFile file;
  ASSERT_TRUE(file.open(path, 3));
  int found = 0;
  for (int descriptor = 3; descriptor < 256; ++descriptor) {
    struct stat open = {};
    if (::fstat(descriptor, &open) != 0 || open.st_ino != wanted.st_ino) continue;
    ++found;
    EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
  }
  EXPECT_EQ(found, 1);
}
#endif

}  // namespace
