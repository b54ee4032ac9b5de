#include <algorithm>
#include <functional>

#include "profile/VKCLProfile.h"
#include "support/ImageBuilder.h"
#include "support/RealProfiles.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace {

using vkcl::testing::Big32At;
using vkcl::testing::Bytes;
using vkcl::testing::ConvertWithLcms;
using vkcl::testing::DataTag;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::Head;
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
using vkcl::testing::RealProfiles;
using vkcl::testing::SameBytes;
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TableOf;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

using Tags = std::vector<ImageTag>;

/// Private and standard tags, mixed, with lengths that need 0 to 3 padding bytes.
Tags MixedTags() {
  return {
      {Sig("QX53"), DataTag(Pattern(1068, 1))},
      {Sig("desc"), TextTag("description")},
      {Sig("A2B0"), DataTag(Pattern(50, 2))},
      {Sig("QX51"), DataTag(Pattern(141, 3))},
      {Sig("QX00"), DataTag({})},
      {Sig("QY51"), DataTag(Pattern(5, 4))},
      {Sig("XQ51"), DataTag(Pattern(7, 5))},
      {Sig("QXzz"), TextTag("newer")},
      {Sig("cprt"), TextTag("copyright")},
      {Sig("QX75"), DataTag(Pattern(3, 6))},
      {Sig("qx51"), DataTag({})},
      {Sig("Qx51"), DataTag({1})},
      {Sig("desc"), TextTag("a second one")},
  };
}

Tags WithoutPrivate(const Tags& tags) {
  Tags kept;
  for (const ImageTag& tag : tags) {
    if (tag.sig >> 16 != 0x5158) kept.push_back(tag);  // 'QX'
  }
  return kept;
}

Bytes MixedImage() { return ProfileImage(ProfileHeader(), MixedTags()); }

std::string Memory(const VKCLProfile& profile) {
  std::string text(reinterpret_cast<const char*>(&profile.header), sizeof profile.header);
  text.append(reinterpret_cast<const char*>(profile.tagTable), profile.tagCount * sizeof(icTag));
  return text + '/' + std::to_string(profile.valid) + '/' + std::to_string(profile.tagCount) + '/' +
         std::to_string(profile.channelCount) + '/' + profile.filePath.str();
}

/// A profile file and the object on it, and a place for the copy.
class OnFile {
 public:
  explicit OnFile(const Bytes& image, int channels = 4)
      : path(dir.Write("profile.icc", image)),
        output(dir.File("output.icc")),
        profile(AFilePath(path), channels) {}

  int Strip() { return profile.WriteICCWithoutVKiTags(output.c_str()); }
  bool HasOutput() const { return std::filesystem::exists(output); }

  const TempDir dir;
  const std::string path;
  const std::string output;
  VKCLProfile profile;
};

void ExpectStripped(const Bytes& image, const Bytes& expected) {
  OnFile file(image);
  const std::string memory = Memory(file.profile);
  EXPECT_EQ(file.Strip(), 1);
  ASSERT_TRUE(file.HasOutput());
  EXPECT_TRUE(SameBytes(ReadFile(file.output), expected));
  EXPECT_TRUE(SameBytes(ReadFile(file.path), image));
  EXPECT_EQ(Memory(file.profile), memory);
}

// The copy.

TEST(VKCLProfileStrip, ByHand) {
  // 'QX51' of 13 bytes at 168, 'cprt' of 10 at 184, 'QX53' of 12 at 196.
  ExpectStripped(
      Join({Head(ProfileHeader(), 208,
                 {{Sig("QX51"), 168, 13}, {Sig("cprt"), 184, 10}, {Sig("QX53"), 196, 12}}),
            DataTag({0xAA}),
            {0, 0, 0},
            TextTag("ab"),
            {0, 0},
            DataTag({})}),
      Join({Head(ProfileHeader(), 156, {{Sig("cprt"), 144, 10}}), TextTag("ab"), {0, 0}}));
}

TEST(VKCLProfileStrip, KeepsTheOtherTagsInTheirOrder) {
  ExpectStripped(MixedImage(), ProfileImage(ProfileHeader(), WithoutPrivate(MixedTags())));
  ASSERT_EQ(WithoutPrivate(MixedTags()).size(), 8u);
}

TEST(VKCLProfileStrip, OfAProfileWithoutPrivateTagsIsACopy) {
  const Bytes image = ProfileImage(ProfileHeader(), WithoutPrivate(MixedTags()));
  ExpectStripped(image, image);
}

#if !defined(_WIN32)
TEST(VKCLProfileStrip, DoesNotWriteIntoADeviceOrAPipe) {
  OnFile file(MixedImage());
  const std::string pipe = file.dir.File("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& to : {std::string("/dev/null"), pipe}) {
    EXPECT_EQ(file.profile.WriteICCWithoutVKiTags(to.c_str()), 0) << to;
    EXPECT_FALSE(std::filesystem::is_regular_file(to));
  }
}
#endif

TEST(VKCLProfileStrip, TellsPrivateTagsByTheirFirstTwoCharacters) {
  for (const std::uint32_t sig : {Sig("QX50"), Sig("QX00"), Sig("QXzz"), Sig("QX76"), Sig("QX77"),
                                  0x51580000u, 0x5158FFFFu}) {
    ExpectStripped(ProfileImage(ProfileHeader(), {{sig, DataTag({1})}, {1, DataTag({2})}}),
                   ProfileImage(ProfileHeader(), {{1, DataTag({2})}}));
  }
  for (const std::uint32_t sig :
       {Sig("XQ50"), Sig("Qx50"), Sig("qX50"), Sig(" QX5"), 0x5157FFFFu, 0x51590000u}) {
    const Bytes image = ProfileImage(ProfileHeader(), {{sig, DataTag({1})}, {1, DataTag({2})}});
    ExpectStripped(image, image);
  }
}

TEST(VKCLProfileStrip, CopiesPaddingBytesAsTheyAreStored) {
  const Bytes body = Join({TextTag("a"),
                           {0xE1, 0xE2, 0xE3},
                           DataTag({1}),
                           {0xE4, 0xE5, 0xE6},
                           TextTag("bc"),
                           {0xE7, 0xE8}});
  ExpectStripped(
      RawImage(ProfileHeader(),
               {{Sig("aaaa"), 168, 9}, {Sig("QX51"), 180, 13}, {Sig("bbbb"), 196, 10}}, body),
      RawImage(ProfileHeader(), {{Sig("aaaa"), 156, 9}, {Sig("bbbb"), 168, 10}},
               Join({TextTag("a"), {0xE1, 0xE2, 0xE3}, TextTag("bc"), {0xE7, 0xE8}})));
}

TEST(VKCLProfileStrip, TakesWhateverFollowsAnUnpaddedTagAsItsPadding) {
  ExpectStripped(
      RawImage(ProfileHeader(), {{Sig("aaaa"), 156, 9}, {Sig("QX51"), 165, 15}},
               Join({TextTag("a"), DataTag({7, 8, 9})})),
      RawImage(ProfileHeader(), {{Sig("aaaa"), 144, 9}}, Join({TextTag("a"), {'d', 'a', 't'}})));
}

TEST(VKCLProfileStrip, ClosesGapsAndKeepsTableOrder) {
  // Out of table order, with gaps, in a file that goes on behind the last tag.
  ExpectStripped(
      RawImage(ProfileHeader(),
               {{Sig("bbbb"), 216, 16}, {Sig("QX51"), 196, 16}, {Sig("aaaa"), 176, 16}},
               Join({Pattern(8, 1), TextTag("aaaaaaaa"), Pattern(4, 2), DataTag({1, 2, 3, 4}),
                     Pattern(4, 3), TextTag("bbbbbbbb"), Pattern(40, 4)})),
      ProfileImage(ProfileHeader(),
                   {{Sig("bbbb"), TextTag("bbbbbbbb")}, {Sig("aaaa"), TextTag("aaaaaaaa")}}));
}

TEST(VKCLProfileStrip, WritesTheHeaderAsItStandsInMemory) {
  OnFile file(MixedImage());
  file.profile.UpdateHeaderColorSpace(512);
  ASSERT_EQ(file.Strip(), 1);
  Bytes header = ProfileHeader();
  SetBig32(header, 16, Sig("RGB "));
  EXPECT_TRUE(SameBytes(ReadFile(file.output), ProfileImage(header, WithoutPrivate(MixedTags()))));
  EXPECT_TRUE(SameBytes(ReadFile(file.path), MixedImage()));
}

TEST(VKCLProfileStrip, DoesNotGoByTheStatedSize) {
  // Smaller than the file by all its data, a little smaller, and larger.
  for (const std::uint32_t stated : {132u + 12 * 13, 1000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    Bytes image = MixedImage();
    SetBig32(image, 0, stated);
    ExpectStripped(image, ProfileImage(ProfileHeader(), WithoutPrivate(MixedTags())));
  }
}

TEST(VKCLProfileStrip, GivesAProfileThatLoads) {
  OnFile file(MixedImage());
  ASSERT_EQ(file.Strip(), 1);
  const VKCLProfile stripped(AFilePath(file.output), 0);
  EXPECT_EQ(stripped.isValidOutputICC(), 1);
  EXPECT_EQ(stripped.isVKCLProfile(), 0);
  EXPECT_EQ(stripped.tagCount, 8u);
  EXPECT_EQ(stripped.header.size, std::filesystem::file_size(file.output));
}

// Shared blocks.

TEST(VKCLProfileStrip, KeepsSharedBlocksShared) {
  const Bytes block = DataTag(Pattern(21, 9));  // 33 bytes
  ExpectStripped(
      RawImage(ProfileHeader(),
               {{Sig("A2B0"), 208, 33},
                {Sig("QX51"), 192, 16},
                {Sig("A2B1"), 208, 33},
                {Sig("cprt"), 244, 12},
                {Sig("A2B2"), 208, 33}},
               Join({DataTag({1, 2, 3, 4}), block, {0xE1, 0xE2, 0xE3}, TextTag("text")})),
      RawImage(ProfileHeader(),
               {{Sig("A2B0"), 180, 33},
                {Sig("A2B1"), 180, 33},
                {Sig("cprt"), 216, 12},
                {Sig("A2B2"), 180, 33}},
               Join({block, {0xE1, 0xE2, 0xE3}, TextTag("text")})));
}

TEST(VKCLProfileStrip, KeepsTwoSharedBlocksApart) {
  ExpectStripped(RawImage(ProfileHeader(),
                          {{Sig("A2B0"), 192, 16},
                           {Sig("B2A0"), 208, 16},
                           {Sig("A2B1"), 192, 16},
                           {Sig("B2A1"), 208, 16},
                           {Sig("QX51"), 224, 16}},
                          Join({TextTag("aaaaaaaa"), TextTag("bbbbbbbb"), DataTag({1, 2, 3, 4})})),
                 RawImage(ProfileHeader(),
                          {{Sig("A2B0"), 180, 16},
                           {Sig("B2A0"), 196, 16},
                           {Sig("A2B1"), 180, 16},
                           {Sig("B2A1"), 196, 16}},
                          Join({TextTag("aaaaaaaa"), TextTag("bbbbbbbb")})));
}

TEST(VKCLProfileStrip, KeepsABlockThatTheLongerTagNamesFirst) {
  const Bytes block = DataTag(Pattern(28, 9));  // 40 bytes
  ExpectStripped(RawImage(ProfileHeader(),
                          {{Sig("A2B0"), 180, 40},
                           {Sig("A2B1"), 180, 20},
                           {Sig("cprt"), 220, 12},
                           {Sig("QX51"), 232, 12}},
                          Join({block, TextTag("text"), DataTag({})})),
                 RawImage(ProfileHeader(),
                          {{Sig("A2B0"), 168, 40}, {Sig("A2B1"), 168, 20}, {Sig("cprt"), 208, 12}},
                          Join({block, TextTag("text")})));
}

TEST(VKCLProfileStrip, LeavesRoomForTheFirstTagOfASharedBlockAlone) {
  // The first tag that names the block sets its room; the longer one runs into what follows.
  const Bytes block = DataTag(Pattern(28, 9));  // 40 bytes
  ExpectStripped(RawImage(ProfileHeader(),
                          {{Sig("A2B0"), 180, 20},
                           {Sig("A2B1"), 180, 40},
                           {Sig("cprt"), 220, 20},
                           {Sig("QX51"), 240, 12}},
                          Join({block, TextTag("text of 12 b"), DataTag({})})),
                 RawImage(ProfileHeader(),
                          {{Sig("A2B0"), 168, 20}, {Sig("A2B1"), 168, 40}, {Sig("cprt"), 188, 20}},
                          Join({Slice(block, 0, 20), TextTag("text of 12 b")})));
}

TEST(VKCLProfileStrip, LooksForSharedBlocksAmongTheKeptTagsOnly) {
  // Two tags share their blocks with private ones.
  ExpectStripped(RawImage(ProfileHeader(),
                          {{Sig("QX51"), 180, 16},
                           {Sig("aaaa"), 180, 16},
                           {Sig("bbbb"), 196, 16},
                           {Sig("QX53"), 196, 16}},
                          Join({TextTag("aaaaaaaa"), TextTag("bbbbbbbb")})),
                 ProfileImage(ProfileHeader(), {{Sig("aaaa"), TextTag("aaaaaaaa")},
                                                {Sig("bbbb"), TextTag("bbbbbbbb")}}));
}

TEST(VKCLProfileStrip, GivesTagsThatOverlapBlocksOfTheirOwn) {
  const Bytes body = Pattern(40, 9);
  ExpectStripped(
      RawImage(ProfileHeader(),
               {{Sig("aaaa"), 168, 24}, {Sig("bbbb"), 180, 20}, {Sig("QX51"), 168, 8}}, body),
      RawImage(ProfileHeader(), {{Sig("aaaa"), 156, 24}, {Sig("bbbb"), 180, 20}},
               Join({Slice(body, 0, 24), Slice(body, 12, 20)})));
}

// Bytes that the file does not hold.

TEST(VKCLProfileStrip, WritesZerosForMissingPadding) {
  const Tags tags = {{Sig("QX51"), DataTag({1})}, {Sig("cprt"), TextTag("a")}};
  const Bytes whole = ProfileImage(ProfileHeader(), tags);
  for (std::size_t missing = 1; missing <= 3; ++missing) {
    Bytes image = whole;
    image.resize(whole.size() - missing);
    ExpectStripped(image, ProfileImage(ProfileHeader(), WithoutPrivate(tags)));
  }
}

TEST(VKCLProfileStrip, WritesZerosForMissingBytesOfATag) {
  const Tags tags = {
      {Sig("QX51"), DataTag({1})}, {Sig("aaaa"), Pattern(40, 1)}, {Sig("bbbb"), Pattern(30, 2)}};
  const Bytes whole = ProfileImage(ProfileHeader(), tags);
  for (std::size_t missing = 1; missing <= 72; ++missing) {
    Bytes image = whole;
    image.resize(whole.size() - missing);
    Bytes expected = ProfileImage(ProfileHeader(), WithoutPrivate(tags));
    std::fill(expected.end() - static_cast<std::ptrdiff_t>(missing), expected.end(),
              static_cast<unsigned char>(0));
    ExpectStripped(image, expected);
  }
}

TEST(VKCLProfileStrip, WritesZerosForATagOutsideTheFile) {
  for (const std::uint32_t offset : {1000u, 0x80000000u, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
    ExpectStripped(
        RawImage(ProfileHeader(),
                 {{Sig("aaaa"), offset, 10}, {Sig("QX51"), 168, 12}, {Sig("cprt"), 180, 12}},
                 Join({DataTag({}), TextTag("text")})),
        RawImage(ProfileHeader(), {{Sig("aaaa"), 156, 10}, {Sig("cprt"), 168, 12}},
                 Join({Bytes(12), TextTag("text")})));
  }
}

TEST(VKCLProfileStrip, WritesAsManyZerosAsATagSays) {
  const Tags tags = {{Sig("QX51"), DataTag({1})}, {Sig("aaaa"), Pattern(200000, 1)}};
  Bytes image = ProfileImage(ProfileHeader(), tags);
  image.resize(image.size() - 199000);
  Bytes expected = ProfileImage(ProfileHeader(), WithoutPrivate(tags));
  std::fill(expected.end() - 199000, expected.end(), static_cast<unsigned char>(0));
  ExpectStripped(image, expected);
}

TEST(VKCLProfileStrip, DoesNotNeedTheDataOfPrivateTags) {
  ExpectStripped(
      RawImage(ProfileHeader(), {{Sig("cprt"), 156, 12}, {Sig("QX51"), 0xFFFFFFF0, 0xFFFFFFFF}},
               TextTag("text")),
      ProfileImage(ProfileHeader(), {{Sig("cprt"), TextTag("text")}}));
}

TEST(VKCLProfileStrip, TakesATagWithoutAnyBytes) {
  ExpectStripped(
      RawImage(ProfileHeader(),
               {{Sig("aaaa"), 168, 0}, {Sig("QX51"), 168, 12}, {Sig("cprt"), 180, 12}},
               Join({DataTag({}), TextTag("text")})),
      RawImage(ProfileHeader(), {{Sig("aaaa"), 156, 0}, {Sig("cprt"), 156, 12}}, TextTag("text")));
}

TEST(VKCLProfileStrip, RefusesMoreThan32BitsCanState) {
  for (const std::vector<ImageEntry>& table : std::vector<std::vector<ImageEntry>>{
           {{Sig("aaaa"), 144, 0xFFFFFFFF}},
           {{Sig("aaaa"), 144, 0xFFFFFFF0}},
           {{Sig("aaaa"), 160, 0x80000000}, {Sig("bbbb"), 164, 0x80000000}},
           {{Sig("aaaa"), 164, 0xFFFFFF00},
            {Sig("bbbb"), 168, 0xFFFFFF00},
            {Sig("cccc"), 168, 4}}}) {
    OnFile file(RawImage(ProfileHeader(), table, Pattern(40, 1)));
    const std::string memory = Memory(file.profile);
    EXPECT_EQ(file.Strip(), 0);
    EXPECT_FALSE(file.HasOutput());
    EXPECT_EQ(Memory(file.profile), memory);
  }
}

// Where the copy goes.

TEST(VKCLProfileStrip, ReplacesAnExistingFileWhole) {
  const Bytes expected = ProfileImage(ProfileHeader(), WithoutPrivate(MixedTags()));
  for (const std::size_t length : {std::size_t{0}, std::size_t{10}, expected.size() + 500}) {
    OnFile file(MixedImage());
    vkcl::testing::WriteFile(file.output, Pattern(length, 3));
    EXPECT_EQ(file.Strip(), 1);
    EXPECT_TRUE(SameBytes(ReadFile(file.output), expected));
  }
}

TEST(VKCLProfileStrip, GivesTheSameBytesEachTime) {
  OnFile file(MixedImage());
  ASSERT_EQ(file.Strip(), 1);
  const Bytes first = ReadFile(file.output);
  ASSERT_EQ(file.Strip(), 1);
  EXPECT_TRUE(SameBytes(ReadFile(file.output), first));
}

TEST(VKCLProfileStrip, OfPrivateTagsOnlyWritesNothing) {
  for (const Tags& tags :
       {Tags{}, Tags{{Sig("QX51"), DataTag({1})}},
        Tags{{Sig("QX51"), DataTag({1})}, {Sig("QX53"), DataTag({2})}, {Sig("QXzz"), Bytes()}}}) {
    OnFile file(ProfileImage(ProfileHeader(), tags));
    ASSERT_EQ(file.profile.isValidICC(), 1);
    EXPECT_EQ(file.Strip(), 0);
    EXPECT_FALSE(file.HasOutput());
    vkcl::testing::WriteFile(file.output, Pattern(10, 3));
    EXPECT_EQ(file.Strip(), 0);
    EXPECT_TRUE(SameBytes(ReadFile(file.output), Pattern(10, 3)));
  }
}

TEST(VKCLProfileStrip, OntoTheProfilesOwnFileIsRefused) {
  OnFile file(MixedImage());
  std::filesystem::create_directory(file.dir.path() / "sub");
  std::filesystem::create_symlink(file.path, file.dir.path() / "symbolic.icc");
  std::filesystem::create_hard_link(file.path, file.dir.path() / "hard.icc");
  const std::string memory = Memory(file.profile);
  for (const std::string& name :
       {file.path, file.dir.File("sub/../profile.icc"), file.dir.File("./profile.icc"),
        std::filesystem::relative(file.path).string(), file.dir.File("symbolic.icc"),
        file.dir.File("hard.icc")}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(file.profile.WriteICCWithoutVKiTags(name.c_str()), 0);
    EXPECT_TRUE(SameBytes(ReadFile(file.path), MixedImage()));
    EXPECT_EQ(Memory(file.profile), memory);
  }
}

TEST(VKCLProfileStrip, RefusesPlacesThatTakeNoFile) {
  OnFile file(MixedImage());
  EXPECT_EQ(file.profile.WriteICCWithoutVKiTags(nullptr), 0);
  EXPECT_EQ(file.profile.WriteICCWithoutVKiTags(""), 0);
  EXPECT_EQ(file.profile.WriteICCWithoutVKiTags(file.dir.File("missing/out.icc").c_str()), 0);
  EXPECT_FALSE(std::filesystem::exists(file.dir.path() / "missing"));
  EXPECT_EQ(file.profile.WriteICCWithoutVKiTags(file.dir.path().string().c_str()), 0);
  EXPECT_EQ(file.profile.WriteICCWithoutVKiTags((file.path + "/out.icc").c_str()), 0);
  EXPECT_TRUE(SameBytes(ReadFile(file.path), MixedImage()));
}

TEST(VKCLProfileStrip, OfAnInvalidProfileIsRefused) {
  Bytes wrongMagic = MixedImage();
  wrongMagic[36] = 'b';
  OnFile noProfile(wrongMagic);
  EXPECT_EQ(noProfile.Strip(), 0);
  EXPECT_FALSE(noProfile.HasOutput());

  // The table is there, but the colour space has no channels.
  OnFile noDevice(ProfileImage(ProfileHeader(Sig("spac"), Sig("Lab ")), MixedTags()), 0);
  ASSERT_EQ(noDevice.profile.isValidICC(), 0);
  ASSERT_EQ(noDevice.profile.tagCount, MixedTags().size());
  EXPECT_EQ(noDevice.Strip(), 0);
  EXPECT_FALSE(noDevice.HasOutput());

  const TempDir dir;
  VKCLProfile missing(AFilePath(dir.File("missing.icc")), 4);
  EXPECT_EQ(missing.WriteICCWithoutVKiTags(dir.File("out.icc").c_str()), 0);
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "out.icc"));
}

TEST(VKCLProfileStrip, OfAFileThatIsGoneIsRefused) {
  OnFile file(MixedImage());
  std::filesystem::remove(file.path);
  EXPECT_EQ(file.Strip(), 0);
  EXPECT_FALSE(std::filesystem::exists(file.path));
}

// Failures on the way: the copy is whole, or everything is as before.

void ExpectInFullOrNotAtAll(const std::function<void(const OnFile&)>& prepare,
                            const std::function<void(const OnFile&)>& expectUntouched) {
  const Bytes stripped = ProfileImage(ProfileHeader(), WithoutPrivate(MixedTags()));
  const int handles = OpenHandles();
  for (const Fault fault :
       {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
    int failures = 0;
    bool reached = true;
    for (std::size_t which = 0; reached && which < 200; ++which) {
      SCOPED_TRACE(::testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      OnFile file(MixedImage());
      prepare(file);
      const std::string memory = Memory(file.profile);
      int result = -1;
      {
        const FaultAt at(which, fault);
        result = file.Strip();
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(OpenHandles(), handles);
      EXPECT_TRUE(SameBytes(ReadFile(file.path), MixedImage()));
      EXPECT_EQ(Memory(file.profile), memory);
      if (result == 1) {
        EXPECT_TRUE(SameBytes(ReadFile(file.output), stripped));
        continue;
      }
      ++failures;
      EXPECT_EQ(result, 0);
      expectUntouched(file);
    }
    EXPECT_FALSE(reached);  // every call had its turn
    const bool harmless = fault == Fault::Short || fault == Fault::Interrupted;
    EXPECT_EQ(failures == 0, harmless) << "fault " << static_cast<int>(fault);
  }
}

TEST(VKCLProfileStrip, ToANewFileIsDoneInFullOrNotAtAll) {
  ExpectInFullOrNotAtAll([](const OnFile&) {},
                         [](const OnFile& file) { EXPECT_FALSE(file.HasOutput()); });
}

TEST(VKCLProfileStrip, OverAFileIsDoneInFullOrNotAtAll) {
  for (const std::size_t length : {std::size_t{20}, std::size_t{5000}}) {
    ExpectInFullOrNotAtAll(
        [length](const OnFile& file) { vkcl::testing::WriteFile(file.output, Pattern(length, 3)); },
        [length](const OnFile& file) {
          EXPECT_TRUE(SameBytes(ReadFile(file.output), Pattern(length, 3)));
        });
  }
}

// Real profiles.

/// A profile with private tags put in by hand: two before its own tags in the table, two behind.
Bytes WithPrivateTags(const Bytes& image) {
  std::vector<ImageEntry> table = TableOf(image);
  Bytes body = Slice(image, 132 + 12 * table.size(), image.size() - 132 - 12 * table.size());
  while (body.size() % 4 != 0) body.push_back(0);
  for (ImageEntry& entry : table) entry.offset += 4 * 12;
  const std::size_t start = 132 + 12 * (table.size() + 4);
  const Tags tags = {{Sig("QX53"), DataTag(Pattern(1068, 1))},
                     {Sig("QX51"), DataTag(Pattern(140, 2))},
                     {Sig("QX61"), DataTag(Pattern(5001, 3))},
                     {Sig("QX75"), DataTag(Pattern(2, 4))}};
  for (std::size_t i = 0; i < tags.size(); ++i) {
    const ImageEntry entry{tags[i].sig, static_cast<std::uint32_t>(start + body.size()),
                           static_cast<std::uint32_t>(tags[i].data.size())};
    table.insert(i < 2 ? table.begin() : table.end(), entry);
    body.insert(body.end(), tags[i].data.begin(), tags[i].data.end());
    while (body.size() % 4 != 0) body.push_back(0);
  }
  return RawImage(Slice(image, 0, 128), table, body);
}

/// Which entries lie on the block of an earlier one, as the index of the first that does.
std::vector<std::size_t> Sharing(const Bytes& image) {
  std::vector<std::size_t> first;
  const std::vector<ImageEntry> table = TableOf(image);
  for (std::size_t i = 0; i < table.size(); ++i) {
    std::size_t j = 0;
    while (table[j].offset != table[i].offset) ++j;
    first.push_back(j);
  }
  return first;
}

TEST(VKCLProfileStrip, GivesBackRealProfilesTagByTag) {
  std::size_t shared = 0;
  for (const auto& path : RealProfiles()) {
    SCOPED_TRACE(path);
    const LcmsView before = ReadWithLcms(path);
    const Bytes original = ReadFile(path);
    OnFile file(WithPrivateTags(original));
    ASSERT_EQ(file.profile.isVKCLProfile(), 1);
    ASSERT_EQ(file.Strip(), 1);
    const Bytes stripped = ReadFile(file.output);
    EXPECT_EQ(Big32At(stripped, 0), stripped.size());
    EXPECT_TRUE(SameBytes(Slice(stripped, 4, 124), Slice(original, 4, 124)));
    EXPECT_EQ(Sharing(stripped), Sharing(original));
    const std::vector<std::size_t> sharing = Sharing(original);
    const bool apart =
        std::adjacent_find(sharing.begin(), sharing.end(), std::greater_equal<>()) == sharing.end();
    shared += apart ? 0u : 1u;
    const LcmsView after = ReadWithLcms(file.output);
    ASSERT_TRUE(after.opens);
    EXPECT_EQ(after.order, before.order);
    for (const auto& [sig, bytes] : before.tags) {
      EXPECT_TRUE(SameBytes(after.tags.at(sig), bytes)) << std::hex << sig;
    }
    EXPECT_EQ(ConvertWithLcms(file.output), ConvertWithLcms(path));
  }
  EXPECT_GT(shared, 0u);  // or nothing was said about shared blocks
}

TEST(VKCLProfileStrip, UndoesAMergeIntoARealProfile) {
  for (const char* const name : {"default_cmyk.icc", "srgb.icc"}) {
    SCOPED_TRACE(name);
    const Bytes original = ReadFile(RealProfile(name));
    OnFile file(original);
    const Bytes own = ProfileImage(ProfileHeader(), {{Sig("desc"), TextTag("source")},
                                                     {Sig("QX51"), DataTag(Pattern(141, 1))},
                                                     {Sig("QX53"), DataTag(Pattern(1068, 2))}});
    VKCLProfile source(AFilePath(file.dir.Write("own.icc", own)), 4);
    ASSERT_EQ(source.MergeVKPrivateTagIntoStandICC(file.profile), 1);
    ASSERT_GT(ReadFile(file.path).size(), original.size());
    VKCLProfile merged(AFilePath(file.path), 0);
    ASSERT_EQ(merged.WriteICCWithoutVKiTags(file.output.c_str()), 1);
    EXPECT_TRUE(SameBytes(ReadFile(file.output), original));
  }
}

}  // namespace
