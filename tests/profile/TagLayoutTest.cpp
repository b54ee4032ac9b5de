#include "profile/TagLayout.h"

#include <algorithm>
#include <string>

#include "profile/TableInFile.h"
#include "support/ImageBuilder.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::ArrangeTagData;
using vkcl::TagDataSuitWriting;
using vkcl::testing::Bytes;
using vkcl::testing::ReadFile;
using vkcl::testing::TempDir;

struct Tag {
  std::string sig;
  std::uint32_t offset;
  std::uint32_t size;
};

void Put32(Bytes& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i)
    bytes[at + i] = static_cast<unsigned char>(value >> (24 - 8 * i));
}

void PutText(Bytes& bytes, std::size_t at, const std::string& text) {
  std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

// A profile of the given length whose data bytes tell their place in the file.
Bytes Profile(const std::vector<Tag>& tags, std::uint32_t length) {
  Bytes bytes(length);
  for (std::size_t i = 132; i < length; ++i) bytes[i] = static_cast<unsigned char>(i * 31);
  Put32(bytes, 0, length);
  PutText(bytes, 12, "prtrCMYKLab ");
  PutText(bytes, 36, "acsp");
  PutText(bytes, 84, "reserved bytes stay");
  Put32(bytes, 128, static_cast<std::uint32_t>(tags.size()));
  for (std::size_t i = 0; i < tags.size(); ++i) {
    PutText(bytes, 132 + 12 * i, tags[i].sig);
    Put32(bytes, 136 + 12 * i, tags[i].offset);
    Put32(bytes, 140 + 12 * i, tags[i].size);
  }
  return bytes;
}

bool Suits(const Bytes& bytes, VKPrivateTagSignature sig, unsigned long length) {
  const TempDir dir;
  return TagDataSuitWriting(VKCLProfile(AFilePath(dir.Write("p.icc", bytes)), 4), sig, length);
}

// Three tags from byte 168 on: 20, 13 (padded to 16) and 32 bytes.
const std::vector<Tag> kOrdered = {{"aaaa", 168, 20}, {"QX51", 188, 13}, {"cccc", 204, 32}};

TEST(TagLayout, AFileInOrderSuitsEveryWrite) {
  const Bytes bytes = Profile(kOrdered, 236);
  EXPECT_TRUE(Suits(bytes, QX60, 100));  // append
  EXPECT_TRUE(Suits(bytes, QX51, 1));    // the same size
  EXPECT_TRUE(Suits(bytes, QX51, 100));  // rebuild
  EXPECT_TRUE(Suits(Profile({}, 132), QX51, 1));
  EXPECT_TRUE(Suits(Profile({{"QX51", 156, 20}, {"aaaa", 176, 16}}, 192), QX51, 40));  // of all
}

TEST(TagLayout, AGapBehindTheTableForbidsAppending) {
  const Bytes bytes = Profile({{"aaaa", 160, 20}, {"QX51", 180, 16}}, 196);
  EXPECT_FALSE(Suits(bytes, QX60, 4));
  EXPECT_TRUE(Suits(bytes, QX51, 4));   // in place
  EXPECT_TRUE(Suits(bytes, QX51, 40));  // nothing before it is touched
  EXPECT_FALSE(Suits(Profile({{"QX51", 160, 20}, {"aaaa", 180, 16}}, 196), QX51, 40));
}

TEST(TagLayout, AnotherOrderForbidsRebuilding) {
  const Bytes bytes = Profile({{"aaaa", 168, 20}, {"QX51", 220, 16}, {"cccc", 188, 32}}, 236);
  EXPECT_TRUE(Suits(bytes, QX60, 4));
  EXPECT_FALSE(Suits(bytes, QX51, 5));
  // The last of the table, but not of the file: what lies behind it would be lost.
  EXPECT_FALSE(
      Suits(Profile({{"aaaa", 168, 20}, {"cccc", 204, 32}, {"QX51", 188, 16}}, 236), QX51, 5));
}

TEST(TagLayout, AGapBehindTheTagForbidsRebuilding) {
  const std::vector<Tag> tags = {{"QX51", 168, 20}, {"aaaa", 192, 16}, {"bbbb", 208, 16}};
  EXPECT_TRUE(Suits(Profile(tags, 224), QX51, 8));  // in place
  EXPECT_FALSE(Suits(Profile(tags, 224), QX51, 9));
  const std::vector<Tag> later = {{"QX51", 168, 20}, {"aaaa", 188, 16}, {"bbbb", 208, 16}};
  EXPECT_FALSE(Suits(Profile(later, 224), QX51, 9));
}

TEST(TagLayout, ATagIsNoLongerThanItsSizeFieldCanTell) {
  const Bytes bytes = Profile(kOrdered, 236);
  EXPECT_TRUE(Suits(bytes, QX60, 0xFFFFFFF3));  // 12 bytes of head come before it
  EXPECT_FALSE(Suits(bytes, QX60, 0xFFFFFFF4));
}

TEST(TagLayout, ASharedBlockForbidsReplacing) {
  const Bytes bytes = Profile({{"QX50", 156, 20}, {"QX51", 156, 20}}, 176);
  EXPECT_TRUE(Suits(bytes, QX60, 4));
  EXPECT_FALSE(Suits(bytes, QX50, 8));
  EXPECT_FALSE(Suits(bytes, QX51, 8));
  EXPECT_FALSE(Suits(bytes, QX51, 30));
}

TEST(TagLayout, SharedBlocksBehindTheTagForbidRebuilding) {
  const std::vector<Tag> tags = {{"QX51", 168, 20}, {"A2B0", 188, 16}, {"A2B1", 188, 16}};
  EXPECT_FALSE(Suits(Profile(tags, 204), QX51, 30));
  const std::vector<Tag> before = {{"A2B0", 168, 16}, {"A2B1", 168, 16}, {"QX51", 184, 20}};
  EXPECT_TRUE(Suits(Profile(before, 204), QX51, 30));
}

TEST(TagLayout, AnyTagBeforeItThatSharesWithOneBehindItForbidsRebuilding) {
  // The second of the table has the block of the last one; the rebuilt tag lies before both.
  const std::vector<Tag> tags = {
      {"aaaa", 180, 20}, {"A2B0", 216, 16}, {"QX51", 200, 16}, {"A2B1", 216, 16}};
  EXPECT_TRUE(Suits(Profile(tags, 232), QX51, 4));
  EXPECT_FALSE(Suits(Profile(tags, 232), QX51, 30));
}

TEST(TagLayout, EndsThatDisagreeForbidWriting) {
  Bytes longer = Profile(kOrdered, 236);
  longer.resize(240);  // the file goes on behind the profile
  EXPECT_FALSE(Suits(longer, QX60, 4));
  Bytes shorter = Profile(kOrdered, 236);
  shorter.resize(232);
  EXPECT_FALSE(Suits(shorter, QX60, 4));
  EXPECT_FALSE(Suits(Profile({{"aaaa", 144, 21}}, 165), QX60, 4));  // an unpadded end
  EXPECT_FALSE(Suits(Profile({{"aaaa", 144, 0xFFFFFFFF}}, 164), QX60, 4));
  EXPECT_FALSE(Suits(Profile({{"aaaa", 140, 20}}, 164), QX60, 4));  // data within the table
  EXPECT_FALSE(Suits({1, 2, 3}, QX60, 4));
}

TEST(TagLayout, ArrangingKeepsEveryTag) {
  const std::vector<Tag> tags = {
      {"aaaa", 260, 13}, {"bbbb", 200, 20}, {"cccc", 260, 13}, {"QX51", 225, 30}, {"dddd", 200, 0}};
  const Bytes before = Profile(tags, 281);
  const TempDir dir;
  const VKCLProfile profile(AFilePath(dir.Write("p.icc", before)), 4);
  const std::string to = dir.File("q.icc");
  ASSERT_TRUE(ArrangeTagData(profile, AFilePath(to)));

  // Head 192, then 16 + 20 + 16 + 32 + 0.
  const std::vector<Tag> laid = {
      {"aaaa", 192, 13}, {"bbbb", 208, 20}, {"cccc", 228, 13}, {"QX51", 244, 30}, {"dddd", 276, 0}};
  Bytes expected = Profile(laid, 276);
  std::fill(expected.begin() + 192, expected.end(), static_cast<unsigned char>(0));
  for (std::size_t i = 0; i < tags.size(); ++i) {
    std::copy_n(before.begin() + tags[i].offset, tags[i].size, expected.begin() + laid[i].offset);
  }
  EXPECT_EQ(ReadFile(to), expected);
  EXPECT_EQ(ReadFile(dir.File("p.icc")), before);
  const VKCLProfile arranged(AFilePath(to), 4);
  EXPECT_TRUE(TagDataSuitWriting(arranged, QX51, 999));
  EXPECT_TRUE(TagDataSuitWriting(arranged, QX60, 999));
}

// One block of 4,000 bytes for all tags: 4,336 bytes of 17 become 68,336, not 16 times as many;
// 4,348 of 18 would become 72,348.
TEST(TagLayout, ArrangingGrowsAFileAtMost16Times) {
  const TempDir dir;
  for (const std::uint32_t count : {17u, 18u}) {
    std::vector<Tag> tags;
    for (std::uint32_t i = 0; i < count; ++i) {
      tags.push_back({"tag" + std::string(1, static_cast<char>('a' + i)), 132 + 12 * count, 4000});
    }
    const std::uint32_t length = 132 + 12 * count + 4000;
    const VKCLProfile profile(AFilePath(dir.Write("p.icc", Profile(tags, length))), 4);
    const AFilePath to(dir.File(std::to_string(count)));
    EXPECT_EQ(ArrangeTagData(profile, to), count == 17);
    EXPECT_EQ(to.exists(), count == 17);
  }
  EXPECT_EQ(std::filesystem::file_size(dir.File("17")), 68336u);
}

TEST(TagLayout, ArrangingRefusesAndLeavesNothing) {
  const TempDir dir;
  const std::string to = dir.File("q.icc");
  const VKCLProfile cut(AFilePath(dir.Write("cut.icc", Profile({{"aaaa", 144, 99}}, 164))), 4);
  EXPECT_FALSE(ArrangeTagData(cut, AFilePath(to)));
  const VKCLProfile invalid(AFilePath(dir.Write("no.icc", {1, 2, 3})), 4);
  EXPECT_FALSE(ArrangeTagData(invalid, AFilePath(to)));
  EXPECT_FALSE(std::filesystem::exists(to));

  const Bytes bytes = Profile(kOrdered, 236);
  const std::string path = dir.Write("p.icc", bytes);
  const VKCLProfile profile{AFilePath(path), 4};
  EXPECT_FALSE(ArrangeTagData(profile, AFilePath(path)));  // exists
  EXPECT_EQ(ReadFile(path), bytes);
}

// After an update that failed the object reports the new size, and the file has the old one.
// Whatever lays out or judges goes by the file.

using vkcl::TagDataSuitAppending;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::Pattern;
using vkcl::testing::SameBytes;
using vkcl::testing::Slice;

constexpr auto kLimits = static_cast<icTagSignature>(QX51);

// Fails to store a payload of that length.
void FailToStore(VKCLProfile& profile, VKPrivateTagSignature sig, std::size_t length) {
  const Bytes payload = Pattern(length, 3);
  const FaultAt at(0, Fault::Error);
  ASSERT_EQ(profile.WriteVKPrivateTag(sig, payload.data(), length), 0);
}

TEST(TagLayout, ASecondTryIsJudgedByTheSizeInTheFile) {
  // The last of the table, but not of the file: only a write of the same length leaves "cccc"
  // whole.
  const Bytes bytes = Profile({{"aaaa", 168, 20}, {"cccc", 208, 32}, {"QX51", 188, 20}}, 240);
  const TempDir dir;
  VKCLProfile profile(AFilePath(dir.Write("p.icc", bytes)), 4);
  ASSERT_FALSE(TagDataSuitWriting(profile, QX51, 20));
  FailToStore(profile, QX51, 20);
  ASSERT_EQ(profile.GetTagSize(kLimits), 32u);
  EXPECT_FALSE(TagDataSuitWriting(profile, QX51, 20));  // would rebuild
  EXPECT_TRUE(TagDataSuitWriting(profile, QX51, 8));    // in place
}

TEST(TagLayout, AnEndThatOnlyTheObjectReportsForbidsNothing) {
  const TempDir dir;
  VKCLProfile profile(AFilePath(dir.Write("p.icc", Profile(kOrdered, 236))), 4);
  FailToStore(profile, static_cast<VKPrivateTagSignature>(vkcl::testing::Sig("cccc")), 4000);
  EXPECT_TRUE(TagDataSuitAppending(profile));
  EXPECT_TRUE(TagDataSuitWriting(profile, QX51, 9));
  EXPECT_TRUE(TagDataSuitWriting(profile, QX60, 9));
}

TEST(TagLayout, ASecondTryOfTheStoredLengthIsWrittenInPlace) {
  Bytes expected = Profile({{"aaaa", 168, 20}, {"cccc", 208, 32}, {"QX51", 188, 20}}, 240);
  const TempDir dir;
  const std::string path = dir.Write("p.icc", expected);
  VKCLProfile profile{AFilePath(path), 4};
  FailToStore(profile, QX51, 20);
  const Bytes payload = Pattern(8, 5);
  {
    const CallLog log;
    ASSERT_EQ(profile.WriteVKPrivateTag(QX51, payload.data(), 8), 1);
    EXPECT_EQ(log.Kinds(), (std::vector<CallKind>{CallKind::Open, CallKind::Read, CallKind::Write,
                                                  CallKind::Close}));
  }
  const Bytes element = vkcl::testing::DataTag(payload);
  std::copy(element.begin(), element.end(), expected.begin() + 188);
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_EQ(profile.GetTagSize(kLimits), 20u);  // the object reports what the file has again
  EXPECT_TRUE(TagDataSuitWriting(profile, QX51, 8));
  EXPECT_FALSE(TagDataSuitWriting(profile, QX51, 20));
}

// A shorter size that only the object reports loses no byte of a copy, a longer one adds none.
TEST(TagLayout, CopiesHoldWhatTheFileHolds) {
  for (const std::size_t length : {8u, 60u}) {
    const Bytes bytes = Profile({{"aaaa", 168, 20}, {"QX51", 188, 32}, {"cccc", 220, 32}}, 252);
    const TempDir dir;
    VKCLProfile profile(AFilePath(dir.Write("p.icc", bytes)), 4);
    FailToStore(profile, QX51, length);
    ASSERT_TRUE(ArrangeTagData(profile, AFilePath(dir.File("arranged.icc"))));
    EXPECT_TRUE(SameBytes(ReadFile(dir.File("arranged.icc")), bytes));

    AFile changed;
    ASSERT_TRUE(changed.open(AFilePath(dir.File("changed.icc")), AFile::Write | AFile::New));
    ASSERT_TRUE(vkcl::WriteChanged(profile, {}, changed));
    EXPECT_TRUE(changed.close());
    EXPECT_TRUE(SameBytes(ReadFile(dir.File("changed.icc")), bytes));

    const vkcl::TableInFile stored(profile);
    EXPECT_TRUE(stored.isWhole);
    EXPECT_EQ(stored.size, 252u);
    ASSERT_EQ(stored.tags.size(), 3u);
    EXPECT_EQ(stored.tags[1].size, 32u);
    EXPECT_EQ(profile.GetTagSize(kLimits), length + 12);
  }
}

// A merge sets the size that the source reports to that of the target's file, and leaves the one
// that the target reports.
TEST(TagLayout, BothSidesOfAMergeAreJudgedByTheirFiles) {
  const TempDir dir;
  const Bytes own = Profile({{"QX51", 156, 20}, {"QX53", 176, 16}}, 192);
  VKCLProfile source(AFilePath(dir.Write("own.icc", own)), 4);
  VKCLProfile target(AFilePath(dir.Write("p.icc", Profile({{"aaaa", 144, 20}}, 164))), 4);
  ASSERT_EQ(source.MergeVKPrivateTagIntoStandICC(target), 1);
  ASSERT_EQ(source.header.size, 224u);
  ASSERT_EQ(target.header.size, 164u);
  EXPECT_EQ(vkcl::TableInFile(source).size, 192u);
  EXPECT_EQ(vkcl::TableInFile(target).size, 224u);
  for (const VKCLProfile* profile : {&source, &target}) {
    EXPECT_TRUE(TagDataSuitAppending(*profile));
    EXPECT_TRUE(TagDataSuitWriting(*profile, QX51, 99));
    EXPECT_TRUE(TagDataSuitWriting(*profile, QX60, 99));
  }
}

TEST(TagLayout, AnObjectWithoutATableHasNoneInItsFile) {
  const TempDir dir;
  const vkcl::TableInFile stored(VKCLProfile(AFilePath(dir.Write("no.icc", {1, 2, 3})), 4));
  EXPECT_FALSE(stored.isWhole);
  EXPECT_EQ(stored.size, 0u);
  EXPECT_TRUE(stored.tags.empty());
}

}  // namespace
