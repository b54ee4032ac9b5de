#include <cstring>

#include "profile/VKCLProfile.h"
#include "support/ImageBuilder.h"
#include "support/OtherProcess.h"
#include "support/RealProfiles.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::ConvertWithLcms;
using vkcl::testing::DataTag;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::Head;
using vkcl::testing::HoldsTableOf;
using vkcl::testing::ImageEntry;
using vkcl::testing::ImageTag;
using vkcl::testing::Join;
using vkcl::testing::LcmsView;
using vkcl::testing::OpenHandles;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RawImage;
using vkcl::testing::ReadFile;
using vkcl::testing::ReadWithLcms;
using vkcl::testing::RealProfile;
using vkcl::testing::SameBytes;
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TableOf;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;
using vkcl::testing::WriteFile;

using Tags = std::vector<ImageTag>;

Tags operator+(Tags a, const Tags& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

/// Private tags of one of the system's own profiles, with lengths that need 0 to 3 padding bytes,
/// an empty one, one that is no 'data', and one signature twice.
Tags PrivateTags() {
  return {
      {Sig("QX53"), DataTag(Pattern(1068, 1))},
      {Sig("QX51"), DataTag(Pattern(140, 2))},
      {Sig("QX75"), DataTag(Pattern(1, 3))},
      {Sig("QX00"), DataTag(Pattern(2, 4), 0)},
      {Sig("QX58"), DataTag({})},
      {Sig("QX5z"), TextTag("seven b")},
      {Sig("QX75"), DataTag(Pattern(7, 5))},
  };
}

/// The private tags between standard ones.
Tags SourceTags() {
  Tags tags = PrivateTags();
  tags.insert(tags.begin() + 4, {Sig("QY51"), DataTag(Pattern(9, 13))});
  tags.insert(tags.begin() + 2, {Sig("A2B0"), DataTag(Pattern(33, 12))});
  tags.insert(tags.begin(), {Sig("desc"), TextTag("source")});
  tags.push_back({Sig("cprt"), TextTag("source!")});
  return tags;
}

Bytes SourceImage() { return ProfileImage(ProfileHeader(), SourceTags()); }

Bytes TargetHeader() {
  Bytes header = ProfileHeader(Sig("prtr"), Sig("RGB "));
  SetBig32(header, 4, Sig("cmm2"));
  SetBig32(header, 84, 0xD1D2D3D4);
  return header;
}

Tags TargetTags() {
  return {
      {Sig("desc"), TextTag("target")},
      {Sig("A2B0"), DataTag(Pattern(50, 22))},
      {Sig("XQ51"), DataTag(Pattern(5, 23))},
  };
}

Bytes TargetImage() { return ProfileImage(TargetHeader(), TargetTags()); }

/// What an object tells of itself.
std::string Memory(const VKCLProfile& profile) {
  std::string text(reinterpret_cast<const char*>(&profile.header), sizeof profile.header);
  text.append(reinterpret_cast<const char*>(profile.tagTable), profile.tagCount * sizeof(icTag));
  return text + '/' + std::to_string(profile.valid) + '/' + std::to_string(profile.tagCount) + '/' +
         std::to_string(profile.channelCount) + '/' + profile.filePath.str();
}

/// Two files in a folder, and the objects on them.
class Pair {
 public:
  Pair(const Bytes& sourceImage, const Bytes& targetImage, int targetChannels = 4)
      : sourcePath(dir.Write("source.icc", sourceImage)),
        targetPath(dir.Write("target.icc", targetImage)),
        source(AFilePath(sourcePath), 4),
        target(AFilePath(targetPath), targetChannels) {}

  int Merge() { return source.MergeVKPrivateTagIntoStandICC(target); }

  const TempDir dir;
  const std::string sourcePath;
  const std::string targetPath;
  VKCLProfile source;
  VKCLProfile target;
};

/// A merge that gives `result` and changes neither file nor object.
void ExpectNothingChanged(Pair& pair, int result) {
  const Bytes sourceFile = ReadFile(pair.sourcePath);
  const Bytes targetFile = ReadFile(pair.targetPath);
  const std::string source = Memory(pair.source);
  const std::string target = Memory(pair.target);
  EXPECT_EQ(pair.Merge(), result);
  EXPECT_TRUE(SameBytes(ReadFile(pair.sourcePath), sourceFile));
  EXPECT_TRUE(SameBytes(ReadFile(pair.targetPath), targetFile));
  EXPECT_EQ(Memory(pair.source), source);
  EXPECT_EQ(Memory(pair.target), target);
}

/// A merge that gives the target's file these bytes and leaves the source's alone.
void ExpectMerged(Pair& pair, const Bytes& expected) {
  const Bytes sourceFile = ReadFile(pair.sourcePath);
  EXPECT_EQ(pair.Merge(), 1);
  EXPECT_TRUE(SameBytes(ReadFile(pair.targetPath), expected));
  EXPECT_TRUE(SameBytes(ReadFile(pair.sourcePath), sourceFile));
}

// The resulting file.

TEST(VKCLProfileMerge, ByHand) {
  // Source: 'QX51' of 13 bytes at 156, 'QX53' of 12 bytes at 172.
  const Bytes source =
      Join({Head(ProfileHeader(), 184, {{Sig("QX51"), 156, 13}, {Sig("QX53"), 172, 12}}),
            DataTag({0xAA}),
            {0, 0, 0},
            DataTag({})});
  const Bytes target =
      Join({Head(TargetHeader(), 156, {{Sig("cprt"), 144, 10}}), TextTag("ab"), {0, 0}});
  Pair pair(source, target);
  // 24 bytes of table and 16 + 12 of tags more.
  ExpectMerged(pair,
               Join({Head(TargetHeader(), 208,
                          {{Sig("cprt"), 168, 10}, {Sig("QX51"), 180, 13}, {Sig("QX53"), 196, 12}}),
                     TextTag("ab"),
                     {0, 0},
                     DataTag({0xAA}),
                     {0, 0, 0},
                     DataTag({})}));
}

TEST(VKCLProfileMerge, PutsThePrivateTagsBehindTheTargetsOwnInTheSourcesOrder) {
  Pair pair(SourceImage(), TargetImage());
  ExpectMerged(pair, ProfileImage(TargetHeader(), TargetTags() + PrivateTags()));
}

TEST(VKCLProfileMerge, GrowsTheTargetByTwelveBytesATagAndThePaddedTags) {
  Pair pair(SourceImage(), TargetImage());
  ASSERT_EQ(pair.Merge(), 1);
  // Seven tags: 1080, 152, 13 (16), 14 (16), 12, 15 (16), 19 (20).
  EXPECT_EQ(std::filesystem::file_size(pair.targetPath),
            TargetImage().size() + 7 * 12 + 1080 + 152 + 16 + 16 + 12 + 16 + 20);
}

TEST(VKCLProfileMerge, IsReadBackAsTheSourcesPayloads) {
  Pair pair(SourceImage(), TargetImage());
  ASSERT_EQ(pair.Merge(), 1);
  const VKCLProfile merged(AFilePath(pair.targetPath), 0);
  EXPECT_EQ(merged.isVKCLProfile(), 1);
  const VKCLProfile& target = pair.target;
  for (const VKCLProfile* const profile : {&merged, &target}) {
    for (const auto& [sig, payload] :
         {std::pair(QX53, Pattern(1068, 1)), std::pair(QX51, Pattern(140, 2)),
          std::pair(QX75, Pattern(1, 3)), std::pair(QX58, Bytes())}) {
      Bytes read(payload.size() + 1, 0x5A);
      unsigned long size = 4711;
      EXPECT_EQ(profile->ReadVKPrivateTag(sig, read.data(), &size), 1);
      EXPECT_EQ(size, payload.size());
      read.pop_back();
      EXPECT_TRUE(SameBytes(read, payload));
    }
  }
}

TEST(VKCLProfileMerge, IntoAnEmptyTableStartsBehindTheHead) {
  Pair pair(SourceImage(), ProfileImage(TargetHeader(), {}));
  ExpectMerged(pair, ProfileImage(TargetHeader(), PrivateTags()));
}

TEST(VKCLProfileMerge, IntoAnEmptyTableKeepsTheDataBehindIt) {
  const Bytes data = Pattern(20, 40);
  Pair pair(ProfileImage(ProfileHeader(),
                         {{Sig("QX51"), DataTag({1})}, {Sig("QX53"), DataTag({2, 3, 4, 5})}}),
            RawImage(TargetHeader(), {}, data));
  // The old size, 152, and 24 bytes of table.
  ExpectMerged(pair,
               Join({Head(TargetHeader(), 208, {{Sig("QX51"), 176, 13}, {Sig("QX53"), 192, 16}}),
                     data,
                     DataTag({1}),
                     {0, 0, 0},
                     DataTag({2, 3, 4, 5})}));
}

TEST(VKCLProfileMerge, CopiesPaddingBytesAsTheyAreStored) {
  const Bytes source =
      RawImage(ProfileHeader(), {{Sig("QX51"), 156, 13}, {Sig("QX53"), 172, 14}},
               Join({DataTag({0xAA}), {0xE1, 0xE2, 0xE3}, DataTag({0xBB, 0xBC}), {0xE4, 0xE5}}));
  const Bytes target =
      RawImage(TargetHeader(), {{Sig("cprt"), 144, 9}}, Join({TextTag("a"), {0xF1, 0xF2, 0xF3}}));
  Pair pair(source, target);
  ExpectMerged(pair,
               RawImage(TargetHeader(),
                        {{Sig("cprt"), 168, 9}, {Sig("QX51"), 180, 13}, {Sig("QX53"), 196, 14}},
                        Join({TextTag("a"),
                              {0xF1, 0xF2, 0xF3},
                              DataTag({0xAA}),
                              {0xE1, 0xE2, 0xE3},
                              DataTag({0xBB, 0xBC}),
                              {0xE4, 0xE5}})));
}

TEST(VKCLProfileMerge, TakesWhateverFollowsAnUnpaddedSourceTagAsItsPadding) {
  // 'QX51' of 13 bytes, 'QX53' directly behind it.
  const Bytes source = RawImage(ProfileHeader(), {{Sig("QX51"), 156, 13}, {Sig("QX53"), 169, 15}},
                                Join({DataTag({0xAA}), DataTag({0xBB, 0xBC, 0xBD})}));
  Pair pair(source, ProfileImage(TargetHeader(), {}));
  ExpectMerged(
      pair, RawImage(TargetHeader(), {{Sig("QX51"), 156, 13}, {Sig("QX53"), 172, 15}},
                     Join({DataTag({0xAA}), {'d', 'a', 't'}, DataTag({0xBB, 0xBC, 0xBD}), {0}})));
}

TEST(VKCLProfileMerge, CountsPaddingThatTheSourceLacksAsZeros) {
  for (std::size_t missing = 1; missing <= 3; ++missing) {
    const Tags tags = {{Sig("QX53"), DataTag({1, 2, 3, 4})}, {Sig("QX51"), DataTag({0xAA})}};
    Bytes source = ProfileImage(ProfileHeader(), tags);
    source.resize(source.size() - missing);
    SetBig32(source, 0, static_cast<std::uint32_t>(source.size()));
    Pair pair(source, TargetImage());
    ExpectMerged(pair, ProfileImage(TargetHeader(), TargetTags() + tags));
  }
}

TEST(VKCLProfileMerge, CopiesATagFromWhereverItLiesInTheSource) {
  // Out of table order, behind a gap, and two entries on one block.
  const Bytes source = RawImage(
      ProfileHeader(), {{Sig("QX53"), 208, 16}, {Sig("QX51"), 184, 16}, {Sig("QX75"), 184, 16}},
      Join({Pattern(16, 50), DataTag({1, 2, 3, 4}), Pattern(8, 51), DataTag({5, 6, 7, 8}),
            Pattern(4, 52)}));
  Pair pair(source, TargetImage());
  ExpectMerged(pair, ProfileImage(TargetHeader(),
                                  TargetTags() + Tags{{Sig("QX53"), DataTag({5, 6, 7, 8})},
                                                      {Sig("QX51"), DataTag({1, 2, 3, 4})},
                                                      {Sig("QX75"), DataTag({1, 2, 3, 4})}}));
}

TEST(VKCLProfileMerge, KeepsPrivateTagsThatTheTargetHasAlready) {
  const Tags own = {{Sig("QX75"), DataTag({9})}, {Sig("QX53"), DataTag({8, 8})}};
  Pair pair(SourceImage(), ProfileImage(TargetHeader(), TargetTags() + own));
  ExpectMerged(pair, ProfileImage(TargetHeader(), TargetTags() + own + PrivateTags()));
}

TEST(VKCLProfileMerge, TakesATargetWithANewerSystemsTagForAStandardOne) {
  const Tags newer = {
      {Sig("QX51"), DataTag({9})}, {Sig("QX53"), DataTag({8})}, {Sig("QX77"), DataTag({7})}};
  Pair pair(SourceImage(), ProfileImage(TargetHeader(), newer));
  ExpectMerged(pair, ProfileImage(TargetHeader(), newer + PrivateTags()));
}

TEST(VKCLProfileMerge, MovesTheTargetsDataAsTheyLie) {
  // A gap between table and data: the region begins with the first entry's data, and the gap
  // lies behind the file's old end now, where it is empty.
  const Bytes target = RawImage(TargetHeader(), {{Sig("cprt"), 152, 16}},
                                Join({Pattern(8, 20), TextTag("12345678")}));
  Pair pair(ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag({1, 2, 3, 4})},
                                           {Sig("QX53"), DataTag({5, 6, 7, 8})}}),
            target);
  ExpectMerged(pair,
               Join({Head(TargetHeader(), 224,
                          {{Sig("cprt"), 176, 16}, {Sig("QX51"), 192, 16}, {Sig("QX53"), 208, 16}}),
                     Bytes(8), TextTag("12345678"), DataTag({1, 2, 3, 4}), DataTag({5, 6, 7, 8})}));
}

TEST(VKCLProfileMerge, AppendsBehindTheLastEntryNotBehindTheFile) {
  // Twenty bytes behind the last tag belong to none; the size counts them all the same.
  const Bytes target = RawImage(TargetHeader(), {{Sig("cprt"), 144, 16}},
                                Join({TextTag("12345678"), Pattern(20, 21)}));
  Pair pair(ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag({5, 5, 5, 5})},
                                           {Sig("QX53"), DataTag({6, 6, 6, 6})}}),
            target);
  ExpectMerged(pair,
               Join({Head(TargetHeader(), 180 + 24 + 32,
                          {{Sig("cprt"), 168, 16}, {Sig("QX51"), 184, 16}, {Sig("QX53"), 200, 16}}),
                     TextTag("12345678"), DataTag({5, 5, 5, 5}), DataTag({6, 6, 6, 6})}));
}

TEST(VKCLProfileMerge, IntoDataOutOfTableOrderChainsBehindTheLastEntry) {
  const Bytes target = RawImage(TargetHeader(), {{Sig("aaaa"), 172, 16}, {Sig("bbbb"), 156, 16}},
                                Join({TextTag("bbbbbbbb"), TextTag("aaaaaaaa")}));
  Pair pair(ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag({5, 5, 5, 5})},
                                           {Sig("QX53"), DataTag({6, 6, 6, 6})}}),
            target);
  // The region begins with the first entry's data, so the last entry's stay where they were and
  // are covered by the longer table, and what is appended covers the first entry's.
  ExpectMerged(
      pair, Join({Head(TargetHeader(), 188 + 24 + 32,
                       {{Sig("aaaa"), 196, 16},
                        {Sig("bbbb"), 180, 16},
                        {Sig("QX51"), 196, 16},
                        {Sig("QX53"), 212, 16}}),
                  Slice(target, 180, 8), Bytes(8), DataTag({5, 5, 5, 5}), DataTag({6, 6, 6, 6})}));
}

TEST(VKCLProfileMerge, FollowsTheStatedSizeOfTheTarget) {
  Pair pair(SourceImage(), Join({TargetImage(), Pattern(30, 60)}));
  ExpectMerged(pair, ProfileImage(TargetHeader(), TargetTags() + PrivateTags()));
}

TEST(VKCLProfileMerge, TakesTheTargetsHeaderFromMemory) {
  Pair pair(SourceImage(), TargetImage());
  pair.target.UpdateHeaderColorSpace(16);
  pair.source.UpdateHeaderColorSpace(512);
  Bytes header = TargetHeader();
  SetBig32(header, 16, Sig("CMY "));
  ExpectMerged(pair, ProfileImage(header, TargetTags() + PrivateTags()));
}

TEST(VKCLProfileMerge, GivesTheSameBytesInAnyNumberOfTargets) {
  // The size that the source object takes over belongs to the first target, not to the source.
  Pair pair(SourceImage(), TargetImage());
  const Bytes expected = ProfileImage(TargetHeader(), TargetTags() + PrivateTags());
  ExpectMerged(pair, expected);
  VKCLProfile second(AFilePath(pair.dir.Write("second.icc", TargetImage())), 4);
  EXPECT_EQ(pair.source.MergeVKPrivateTagIntoStandICC(second), 1);
  EXPECT_TRUE(SameBytes(ReadFile(pair.dir.File("second.icc")), expected));
  EXPECT_TRUE(SameBytes(ReadFile(pair.sourcePath), SourceImage()));
}

// The two objects.

TEST(VKCLProfileMerge, GivesTheNewSizeToTheSourceObjectAndLeavesTheTargetItsOldOne) {
  Pair pair(SourceImage(), TargetImage());
  ASSERT_EQ(pair.Merge(), 1);
  const Bytes merged = ProfileImage(TargetHeader(), TargetTags() + PrivateTags());
  ASSERT_NE(merged.size(), SourceImage().size());
  EXPECT_EQ(pair.source.header.size, merged.size());
  EXPECT_EQ(pair.target.header.size, TargetImage().size());
}

TEST(VKCLProfileMerge, GivesTheTargetObjectTheNewTableAndLeavesTheSourceItsOwn) {
  Pair pair(SourceImage(), TargetImage());
  const VKCLProfile source = pair.source;
  const VKCLProfile target = pair.target;
  ASSERT_EQ(pair.Merge(), 1);
  Bytes merged = ProfileImage(TargetHeader(), TargetTags() + PrivateTags());
  SetBig32(merged, 0, static_cast<std::uint32_t>(TargetImage().size()));
  EXPECT_TRUE(HoldsTableOf(pair.target, merged));
  Bytes unmoved = SourceImage();
  SetBig32(unmoved, 0, pair.source.header.size);
  EXPECT_TRUE(HoldsTableOf(pair.source, unmoved));

  // Nothing but the size changed in the headers.
  pair.source.header.size = source.header.size;
  EXPECT_EQ(Memory(pair.source), Memory(source));
  EXPECT_EQ(std::memcmp(&pair.target.header, &target.header, sizeof target.header), 0);
  EXPECT_EQ(pair.target.valid, 1);
  EXPECT_EQ(pair.target.channelCount, 4);
}

TEST(VKCLProfileMerge, LeavesTheSourceObjectFitForItsOwnFile) {
  // Its header states another file's size now; a write must not lay out its own file by it.
  Pair pair(SourceImage(), TargetImage());
  ASSERT_EQ(pair.Merge(), 1);
  const Bytes payload = Pattern(31, 70);
  const int result = pair.source.WriteVKPrivateTag(QX60, payload.data(), 31);
  const Bytes appended =
      ProfileImage(ProfileHeader(), SourceTags() + Tags{{Sig("QX60"), DataTag(payload)}});
  EXPECT_TRUE(SameBytes(ReadFile(pair.sourcePath), result == 1 ? appended : SourceImage()));
}

TEST(VKCLProfileMerge, MayBeReadThroughTheTargetObject) {
  Pair pair(SourceImage(), TargetImage());
  ASSERT_EQ(pair.Merge(), 1);
  EXPECT_EQ(pair.target.isVKCLProfile(), 1);
  EXPECT_EQ(pair.target.GetTagSize(static_cast<icTagSignature>(Sig("QX53"))), 1080u);
}

// Which profiles take part, in the order in which it is asked.

TEST(VKCLProfileMerge, NeedsTwoValidProfiles) {
  Bytes wrongMagic = SourceImage();
  wrongMagic[36] = 'b';
  Pair invalidSource(wrongMagic, TargetImage());
  ExpectNothingChanged(invalidSource, 0);
  wrongMagic = TargetImage();
  wrongMagic[36] = 'b';
  Pair invalidTarget(SourceImage(), wrongMagic);
  ExpectNothingChanged(invalidTarget, 0);
  Pair emptyTarget(SourceImage(), {});
  ExpectNothingChanged(emptyTarget, 0);
  // One whose table is there, but whose header does not tell the number of channels.
  Pair labTarget(SourceImage(), ProfileImage(ProfileHeader(Sig("prtr"), Sig("Lab ")), TargetTags()),
                 0);
  ExpectNothingChanged(labTarget, 0);
}

TEST(VKCLProfileMerge, NeedsASourceOfTheSystemsOwn) {
  for (const Tags& tags :
       {TargetTags(), Tags{{Sig("QX51"), DataTag({1})}}, Tags{{Sig("QX53"), DataTag({1})}},
        PrivateTags() + Tags{{Sig("QX77"), DataTag({1})}}}) {
    Pair pair(ProfileImage(ProfileHeader(), tags), TargetImage());
    ExpectNothingChanged(pair, 0);
  }
}

TEST(VKCLProfileMerge, RefusesATargetOfTheSystemsOwn) {
  const Tags own = {{Sig("QX51"), DataTag({1})}, {Sig("QX53"), DataTag({2})}};
  Pair pair(SourceImage(), ProfileImage(TargetHeader(), TargetTags() + own));
  ExpectNothingChanged(pair, 0);
}

TEST(VKCLProfileMerge, IntoItselfIsNothingToDo) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", SourceImage());
  VKCLProfile profile(AFilePath(path), 4);
  const std::string before = Memory(profile);
  EXPECT_EQ(profile.MergeVKPrivateTagIntoStandICC(profile), 1);
  EXPECT_TRUE(SameBytes(ReadFile(path), SourceImage()));
  EXPECT_EQ(Memory(profile), before);
}

TEST(VKCLProfileMerge, IntoAnotherNameOfTheSameFileIsNothingToDo) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", SourceImage());
  std::filesystem::create_directory(dir.path() / "sub");
  std::filesystem::create_symlink(path, dir.path() / "symbolic.icc");
  std::filesystem::create_hard_link(path, dir.path() / "hard.icc");
  std::filesystem::create_directory_symlink(dir.path(), dir.path() / "folder");
  VKCLProfile source(AFilePath(path), 4);
  const std::string before = Memory(source);
  const std::filesystem::path relative = std::filesystem::relative(path);
  for (const std::string& name :
       {path, dir.File("sub/../p.icc"), dir.File("./p.icc"), dir.File("symbolic.icc"),
        dir.File("hard.icc"), dir.File("folder/p.icc"), relative.string()}) {
    SCOPED_TRACE(name);
    VKCLProfile target{AFilePath(name), 4};
    ASSERT_EQ(target.isValidICC(), 1);
    const std::string targetBefore = Memory(target);
    EXPECT_EQ(source.MergeVKPrivateTagIntoStandICC(target), 1);
    EXPECT_TRUE(SameBytes(ReadFile(path), SourceImage()));
    EXPECT_EQ(Memory(source), before);
    EXPECT_EQ(Memory(target), targetBefore);
  }
}

TEST(VKCLProfileMerge, OfAStandardProfileIntoItselfIsRefused) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", TargetImage());
  VKCLProfile profile(AFilePath(path), 4);
  VKCLProfile again(AFilePath(path), 4);
  EXPECT_EQ(profile.MergeVKPrivateTagIntoStandICC(profile), 0);
  EXPECT_EQ(profile.MergeVKPrivateTagIntoStandICC(again), 0);
  EXPECT_TRUE(SameBytes(ReadFile(path), TargetImage()));
}

TEST(VKCLProfileMerge, TellsPathsApartByCase) {
  // Where the file system does so too; else both names are one file, and there is nothing to do.
  const TempDir dir;
  VKCLProfile source(AFilePath(dir.Write("P.icc", SourceImage())), 4);
  dir.Write("p.icc", TargetImage());
  if (ReadFile(dir.File("P.icc")) != SourceImage()) GTEST_SKIP();
  VKCLProfile target(AFilePath(dir.File("p.icc")), 4);
  EXPECT_EQ(source.MergeVKPrivateTagIntoStandICC(target), 1);
  EXPECT_TRUE(SameBytes(ReadFile(dir.File("p.icc")),
                        ProfileImage(TargetHeader(), TargetTags() + PrivateTags())));
}

TEST(VKCLProfileMerge, TwoEqualFilesAreTwoFiles) {
  Pair pair(SourceImage(), SourceImage());
  ExpectNothingChanged(pair, 0);  // and the target is one of the system's own
}

// Failures before anything is written.

TEST(VKCLProfileMerge, RefusesASourceTagThatIsCutShort) {
  const Tags tags = {{Sig("QX51"), DataTag(Pattern(20, 1))},
                     {Sig("QX53"), DataTag(Pattern(21, 2))}};
  const Bytes whole = ProfileImage(ProfileHeader(), tags);
  // Three bytes are padding; with the fourth the content itself is short.
  for (std::size_t cut = 4; cut <= 68; ++cut) {
    Bytes source = whole;
    source.resize(whole.size() - cut);
    Pair pair(source, TargetImage());
    ASSERT_EQ(pair.source.isVKCLProfile(), 1);
    ExpectNothingChanged(pair, 0);
  }
}

TEST(VKCLProfileMerge, RefusesSourceTagsThatLeadOutOfTheFile) {
  const Tags tags = {{Sig("QX53"), DataTag({1, 2, 3, 4})}, {Sig("QX51"), DataTag({5, 6, 7, 8})}};
  for (const std::uint32_t offset : {189u, 0x7FFFFFFFu, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
    Bytes source = ProfileImage(ProfileHeader(), tags);
    SetBig32(source, 148, offset);
    Pair pair(source, TargetImage());
    ExpectNothingChanged(pair, 0);
  }
  for (const std::uint32_t size : {17u, 0x7FFFFFFFu, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
    Bytes source = ProfileImage(ProfileHeader(), tags);
    SetBig32(source, 152, size);
    Pair pair(source, TargetImage());
    ExpectNothingChanged(pair, 0);
  }
}

TEST(VKCLProfileMerge, RefusesAStatedTargetSizeThatCannotBe) {
  const auto size = static_cast<std::uint32_t>(TargetImage().size());
  const std::uint32_t head = 132 + 3 * 12;
  for (const std::uint32_t stated : {0u, 127u, 132u, head - 1, size + 1, 0xFFFFFFFFu}) {
    Bytes target = TargetImage();
    SetBig32(target, 0, stated);
    Pair pair(SourceImage(), target);
    SCOPED_TRACE(stated);
    ExpectNothingChanged(pair, 0);
  }
}

TEST(VKCLProfileMerge, RefusesAFirstTargetOffsetOutsideTheFile) {
  for (const std::uint32_t offset : {0xFFFFFFFFu, 0x80000000u, 1000000u}) {
    Bytes target = TargetImage();
    SetBig32(target, 136, offset);
    Pair pair(SourceImage(), target);
    ExpectNothingChanged(pair, 0);
  }
}

TEST(VKCLProfileMerge, RefusesATargetThatShrankSinceItWasOpened) {
  Pair pair(SourceImage(), TargetImage());
  Bytes shorter = TargetImage();
  shorter.pop_back();
  WriteFile(pair.targetPath, shorter);
  ExpectNothingChanged(pair, 0);
}

TEST(VKCLProfileMerge, RefusesFilesThatAreGone) {
  Pair noTarget(SourceImage(), TargetImage());
  const std::string source = Memory(noTarget.source);
  const std::string target = Memory(noTarget.target);
  std::filesystem::remove(noTarget.targetPath);
  EXPECT_EQ(noTarget.Merge(), 0);
  EXPECT_FALSE(std::filesystem::exists(noTarget.targetPath));
  EXPECT_EQ(Memory(noTarget.source), source);
  EXPECT_EQ(Memory(noTarget.target), target);

  Pair noSource(SourceImage(), TargetImage());
  std::filesystem::remove(noSource.sourcePath);
  EXPECT_EQ(noSource.Merge(), 0);
  EXPECT_TRUE(SameBytes(ReadFile(noSource.targetPath), TargetImage()));
  EXPECT_FALSE(std::filesystem::exists(noSource.sourcePath));
}

#if !defined(_WIN32)
TEST(VKCLProfileMerge, NeedsToReadTheSourceOnly) {
  const TempDir dir;
  const std::string source = dir.Write("source.icc", SourceImage());
  const std::string target = dir.Write("target.icc", TargetImage());
  for (const std::string& path : {source, target}) vkcl::testing::GiveToOrdinaryUser(path);
  std::filesystem::permissions(source, std::filesystem::perms::owner_read);
  std::filesystem::permissions(dir.path(), std::filesystem::perms::others_exec,
                               std::filesystem::perm_options::add);
  vkcl::testing::AsOrdinaryUser([&] {
    VKCLProfile from(AFilePath(source), 0);
    VKCLProfile to(AFilePath(target), 0);
    EXPECT_EQ(from.MergeVKPrivateTagIntoStandICC(to), 1);
  });
  EXPECT_TRUE(
      SameBytes(ReadFile(target), ProfileImage(TargetHeader(), TargetTags() + PrivateTags())));
}
#endif

TEST(VKCLProfileMerge, RefusesMoreThan32BitsCanState) {
  // 300 tags of 16 MB on one block, of zeros that take no room on disk.
  constexpr std::uint32_t kBlock = 16u << 20;
  const std::uint32_t offset = 132 + 12 * 302;
  std::vector<ImageEntry> table(300, {Sig("QX00"), offset, kBlock});
  table.push_back({Sig("QX51"), offset, 20});
  table.push_back({Sig("QX53"), offset, 20});
  Pair pair(Head(ProfileHeader(), offset + kBlock, table), TargetImage());
  std::filesystem::resize_file(pair.sourcePath, offset + kBlock);
  const std::string before = Memory(pair.target);
  EXPECT_EQ(pair.Merge(), 0);
  EXPECT_TRUE(SameBytes(ReadFile(pair.targetPath), TargetImage()));
  EXPECT_EQ(Memory(pair.target), before);
}

// Failures on the way.

TEST(VKCLProfileMerge, IsDoneInFullOrNotAtAll) {
  const Bytes merged = ProfileImage(TargetHeader(), TargetTags() + PrivateTags());
  const int handles = OpenHandles();
  for (const Fault fault :
       {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
    int failures = 0;
    bool reached = true;
    for (std::size_t which = 0; reached && which < 200; ++which) {
      SCOPED_TRACE(::testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      Pair pair(SourceImage(), TargetImage());
      const std::string source = Memory(pair.source);
      const std::string target = Memory(pair.target);
      int result = -1;
      {
        const FaultAt at(which, fault);
        result = pair.Merge();
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(OpenHandles(), handles);
      EXPECT_TRUE(SameBytes(ReadFile(pair.sourcePath), SourceImage()));
      if (result == 1) {
        EXPECT_TRUE(SameBytes(ReadFile(pair.targetPath), merged));
        EXPECT_EQ(pair.source.header.size, merged.size());
        continue;
      }
      ++failures;
      EXPECT_EQ(result, 0);
      EXPECT_TRUE(SameBytes(ReadFile(pair.targetPath), TargetImage()));
      EXPECT_EQ(Memory(pair.source), source);
      EXPECT_EQ(Memory(pair.target), target);
      // A second try finds everything in place.
      EXPECT_EQ(pair.Merge(), 1);
      EXPECT_TRUE(SameBytes(ReadFile(pair.targetPath), merged));
    }
    EXPECT_FALSE(reached);  // every call had its turn
    const bool harmless = fault == Fault::Short || fault == Fault::Interrupted;
    EXPECT_EQ(failures == 0, harmless) << "fault " << static_cast<int>(fault);
  }
}

// Real profiles.

/// All 27 private tags, of lengths from nothing to some thousand bytes.
Tags AllPrivateTags() {
  Tags tags;
  for (std::uint32_t i = 0; i < 27; ++i) {
    const std::uint32_t number = 50 + i;
    const std::uint32_t sig = Sig("QX00") + number / 10 * 0x100 + number % 10;
    tags.push_back({sig, DataTag(Pattern(i * i * 7, i))});
  }
  return tags;
}

TEST(VKCLProfileMerge, KeepsEveryTagOfARealProfileAndConvertsAsBefore) {
  for (const char* const name : {"default_cmyk.icc", "srgb.icc", "gray_to_k.icc", "Bluish.icc"}) {
    SCOPED_TRACE(name);
    Pair pair(ProfileImage(ProfileHeader(), AllPrivateTags()), ReadFile(RealProfile(name)));
    const LcmsView before = ReadWithLcms(pair.targetPath);
    const std::vector<double> colours = ConvertWithLcms(pair.targetPath);
    ASSERT_TRUE(before.opens);
    ASSERT_FALSE(colours.empty());
    const Bytes fileBefore = ReadFile(pair.targetPath);
    ASSERT_EQ(pair.Merge(), 1);

    const LcmsView after = ReadWithLcms(pair.targetPath);
    ASSERT_TRUE(after.opens);
    EXPECT_EQ(after.deviceClass, before.deviceClass);
    EXPECT_EQ(after.colorSpace, before.colorSpace);
    EXPECT_EQ(after.pcs, before.pcs);
    std::vector<std::uint32_t> order = before.order;
    for (const ImageTag& tag : AllPrivateTags()) order.push_back(tag.sig);
    EXPECT_EQ(after.order, order);
    for (const auto& [sig, bytes] : before.tags) {
      EXPECT_TRUE(SameBytes(after.tags.at(sig), bytes)) << std::hex << sig;
    }
    for (const ImageTag& tag : AllPrivateTags()) {
      EXPECT_TRUE(SameBytes(after.tags.at(tag.sig), tag.data)) << std::hex << tag.sig;
    }
    EXPECT_EQ(ConvertWithLcms(pair.targetPath), colours);

    // Header but for its size, and which tags share a block.
    const Bytes file = ReadFile(pair.targetPath);
    EXPECT_TRUE(SameBytes(Slice(file, 4, 124), Slice(fileBefore, 4, 124)));
    EXPECT_EQ(vkcl::testing::Big32At(file, 0), file.size());
    const std::vector<ImageEntry> old = TableOf(fileBefore);
    const std::vector<ImageEntry> now = TableOf(file);
    for (std::size_t i = 0; i < old.size(); ++i) {
      EXPECT_EQ(now[i], (ImageEntry{old[i].sig, old[i].offset + 27 * 12, old[i].size}));
    }
  }
}

}  // namespace
