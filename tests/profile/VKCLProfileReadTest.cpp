#include "profile/VKCLProfile.h"

#include <cstring>
#include <memory>

#include "support/ImageBuilder.h"
#include "support/ProfilePeer.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::ProfilePeer;
using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::HoldsTableOf;
using vkcl::testing::ImageEntry;
using vkcl::testing::ImageTag;
using vkcl::testing::Join;
using vkcl::testing::OpenHandles;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RawImage;
using vkcl::testing::ReadFile;
using vkcl::testing::SameBytes;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

constexpr unsigned char kUntouched = 0xCC;

VKPrivateTagSignature Private(std::uint32_t sig) { return static_cast<VKPrivateTagSignature>(sig); }

icTag Entry(std::uint32_t sig, std::uint32_t offset, std::uint32_t size) {
  return {static_cast<icTagSignature>(sig), offset, size};
}

// What one read by signature gave. The buffer is longer than any content here and filled with a
// value of its own, so that the test sees what was written to it.
struct ReadResult {
  int result = -1;
  unsigned long size = 0xABCD;
  Bytes buffer = Bytes(256, kUntouched);

  Bytes Content() const { return Slice(buffer, 0, size); }
  bool Untouched() const { return buffer == Bytes(256, kUntouched); }
};

ReadResult Read(const VKCLProfile& profile, std::uint32_t sig) {
  ReadResult read;
  read.result = profile.ReadVKPrivateTag(Private(sig), read.buffer.data(), &read.size);
  return read;
}

std::vector<ImageTag> SomeTags() {
  return {{Sig("desc"), TextTag("a description")},
          {Sig("QX50"), DataTag(Pattern(5, 1))},
          {Sig("QX51"), DataTag({})},
          {Sig("QX52"), TextTag("0123456789")},
          {Sig("QX53"), DataTag(Pattern(7, 2), 0)},
          {Sig("QX54"), Join({{'m', 'l', 'u', 'c'}, Pattern(20, 3)})},
          {Sig("QX50"), DataTag(Pattern(9, 4))},
          {Sig("mine"), DataTag(Pattern(4, 5))},
          {Sig("QX76"), DataTag(Pattern(1, 6))},
          {Sig("targ"), TextTag("BEGIN_DATA")}};
}

class VKCLProfileRead : public ::testing::Test {
 protected:
  // A profile of one tag with the given place and size, over a body that is 'data' or 'text' with
  // 16 bytes of content; the tag's data begin at byte 144.
  VKCLProfile OneTag(std::uint32_t sig, std::uint32_t offset, std::uint32_t size) {
    const Bytes body = sig == Sig("targ") ? TextTag("0123456789ABCDEF") : DataTag(Pattern(16, 9));
    return {dir_.Write("one.icc", RawImage(ProfileHeader(), {{sig, offset, size}}, body)), 0};
  }

  const TempDir dir_;
  const std::string path_ = dir_.Write("a.icc", ProfileImage(ProfileHeader(), SomeTags()));
  VKCLProfile profile_{path_, 0};
};

TEST_F(VKCLProfileRead, GivesTheContentWithoutHeadAndPadding) {
  const ReadResult read = Read(profile_, Sig("QX50"));
  EXPECT_EQ(read.result, 1);
  ASSERT_EQ(read.size, 5u);
  EXPECT_EQ(read.Content(), Pattern(5, 1));
  EXPECT_EQ(read.buffer[5], kUntouched);  // the padding is not part of it
}

TEST_F(VKCLProfileRead, TheFirstOfTwoEqualSignaturesIsRead) {
  const ReadResult read = Read(profile_, Sig("QX50"));
  EXPECT_EQ(read.size, 5u);
  VKPrivateTag tag;
  tag.SetSignature(QX50);
  ASSERT_EQ(profile_.ReadVKPrivateTag(&tag, 1), 1);
  EXPECT_EQ(tag.GetTagSize(), 5u);
}

TEST_F(VKCLProfileRead, EmptyContentIsReadBySignature) {
  const ReadResult read = Read(profile_, Sig("QX51"));
  EXPECT_EQ(read.result, 1);
  EXPECT_EQ(read.size, 0u);
  EXPECT_TRUE(read.Untouched());
}

TEST_F(VKCLProfileRead, TheDataFlagIsNotLookedAt) {
  const ReadResult read = Read(profile_, Sig("QX53"));
  EXPECT_EQ(read.result, 1);
  EXPECT_EQ(read.size, 7u);
  EXPECT_EQ(read.Content(), Pattern(7, 2));
}

TEST_F(VKCLProfileRead, OtherTypesAreNoPrivateData) {
  for (const std::uint32_t sig : {Sig("QX52"), Sig("QX54"), Sig("targ"), Sig("desc")}) {
    const ReadResult read = Read(profile_, sig);
    EXPECT_EQ(read.result, 0) << std::hex << sig;
    EXPECT_EQ(read.size, 0u) << std::hex << sig;
    EXPECT_TRUE(read.Untouched()) << std::hex << sig;
    VKPrivateTag tag;
    tag.SetSignature(Private(sig));
    tag.size = 99;
    EXPECT_EQ(profile_.ReadVKPrivateTag(&tag, 1), 0) << std::hex << sig;
    EXPECT_EQ(tag.data, nullptr) << std::hex << sig;
    EXPECT_EQ(tag.size, 0u) << std::hex << sig;
  }
}

TEST_F(VKCLProfileRead, ATypeThatDiffersInOneByteIsNoData) {
  for (std::size_t at = 0; at < 4; ++at) {
    Bytes data = DataTag(Pattern(6, 1));
    data[at] ^= 0x20;
    const VKCLProfile profile(
        dir_.Write("b.icc", ProfileImage(ProfileHeader(), {{Sig("QX50"), data}})), 0);
    EXPECT_EQ(Read(profile, Sig("QX50")).result, 0) << at;
  }
}

TEST_F(VKCLProfileRead, TheReservedWordIsNotLookedAt) {
  Bytes data = DataTag(Pattern(6, 1));
  data[4] = data[7] = 0xFF;
  const VKCLProfile profile(
      dir_.Write("b.icc", ProfileImage(ProfileHeader(), {{Sig("QX50"), data}})), 0);
  EXPECT_EQ(Read(profile, Sig("QX50")).Content(), Pattern(6, 1));
}

TEST_F(VKCLProfileRead, TheSignatureNeedNotBeAPrivateOne) {
  const ReadResult read = Read(profile_, Sig("mine"));
  EXPECT_EQ(read.result, 1);
  EXPECT_EQ(read.Content(), Pattern(4, 5));
}

TEST_F(VKCLProfileRead, AnAbsentTagGivesSizeNull) {
  const ReadResult read = Read(profile_, Sig("QX60"));
  EXPECT_EQ(read.result, 0);
  EXPECT_EQ(read.size, 0u);
  EXPECT_TRUE(read.Untouched());
}

TEST_F(VKCLProfileRead, WithoutABufferTheSizeIsNotTouched) {
  unsigned long size = 77;
  EXPECT_EQ(profile_.ReadVKPrivateTag(QX50, nullptr, &size), 0);
  EXPECT_EQ(size, 77u);
  EXPECT_EQ(profile_.ReadVKPrivateTag(QX60, nullptr, &size), 0);
  EXPECT_EQ(size, 77u);
}

TEST_F(VKCLProfileRead, TheSizeNeedNotBeAskedFor) {
  Bytes buffer(16, kUntouched);
  EXPECT_EQ(profile_.ReadVKPrivateTag(QX50, buffer.data(), nullptr), 1);
  EXPECT_EQ(Slice(buffer, 0, 5), Pattern(5, 1));
  EXPECT_EQ(buffer[5], kUntouched);
  EXPECT_EQ(profile_.ReadVKPrivateTag(QX60, buffer.data(), nullptr), 0);
}

TEST_F(VKCLProfileRead, TheSizeIsOnlyAnOutput) {
  Bytes buffer(16, kUntouched);
  unsigned long size = 2;  // smaller than the content: the room is the caller's matter
  EXPECT_EQ(profile_.ReadVKPrivateTag(QX50, buffer.data(), &size), 1);
  EXPECT_EQ(size, 5u);
  EXPECT_EQ(Slice(buffer, 0, 5), Pattern(5, 1));
}

TEST_F(VKCLProfileRead, TheBoundedReadCopiesNoMoreThanItsCapacity) {
  for (unsigned long capacity = 0; capacity <= 8; ++capacity) {
    Bytes buffer(16, kUntouched);
    unsigned long size = 77;
    EXPECT_EQ(profile_.ReadVKPrivateTag(QX50, buffer.data(), capacity, &size), 1) << capacity;
    const unsigned long copied = capacity < 5 ? capacity : 5;
    EXPECT_EQ(size, copied) << capacity;
    EXPECT_EQ(buffer, Join({Slice(Pattern(5, 1), 0, copied), Bytes(16 - copied, kUntouched)}))
        << capacity;
  }
}

TEST_F(VKCLProfileRead, AnEmptyOrMissingTableHoldsNothing) {
  const VKCLProfile empty(dir_.Write("b.icc", RawImage(ProfileHeader(), {}, Bytes(40))), 0);
  const VKCLProfile absent(dir_.File("absent.icc"), 0);
  for (const VKCLProfile* profile : {&empty, &absent}) {
    const ReadResult read = Read(*profile, Sig("QX50"));
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.size, 0u);
    VKPrivateTag tag;
    tag.SetSignature(QX50);
    tag.size = 99;
    EXPECT_EQ(profile->ReadVKPrivateTag(&tag, 1), 0);
    EXPECT_EQ(tag.data, nullptr);
    EXPECT_EQ(tag.size, 99u);
    unsigned long size = 77;
    EXPECT_EQ(profile->ReadtargTag(size), nullptr);
    EXPECT_EQ(size, 77u);
  }
}

TEST_F(VKCLProfileRead, AProfileWithoutADeviceColourSpaceIsStillRead) {
  const VKCLProfile profile(
      dir_.Write("b.icc", ProfileImage(ProfileHeader(Sig("prtr"), Sig("Lab ")), SomeTags())), 0);
  ASSERT_EQ(profile.isValidICC(), 0);
  EXPECT_EQ(Read(profile, Sig("QX50")).Content(), Pattern(5, 1));
}

TEST_F(VKCLProfileRead, EveryReadGoesToTheFileAgain) {
  Bytes image = ReadFile(path_);
  const ImageEntry entry = vkcl::testing::TableOf(image)[1];
  image[entry.offset + 12] ^= 0xFF;
  vkcl::testing::WriteFile(path_, image);
  Bytes changed = Pattern(5, 1);
  changed[0] ^= 0xFF;
  EXPECT_EQ(Read(profile_, Sig("QX50")).Content(), changed);
  std::filesystem::remove(path_);
  EXPECT_EQ(Read(profile_, Sig("QX50")).result, 0);
  unsigned long size = 77;
  EXPECT_EQ(profile_.ReadtargTag(size), nullptr);
  EXPECT_EQ(size, 77u);
}

TEST_F(VKCLProfileRead, ReadsChangeNeitherObjectNorFile) {
  const Bytes image = ReadFile(path_);
  const int handles = OpenHandles();
  for (const ImageTag& tag : SomeTags()) {
    Read(profile_, tag.sig);
    VKPrivateTag into;
    into.SetSignature(Private(tag.sig));
    profile_.ReadVKPrivateTag(&into, 1);
  }
  unsigned long size = 0;
  const std::unique_ptr<char[]> text(profile_.ReadtargTag(size));
  EXPECT_EQ(profile_.isValidICC(), 1);
  EXPECT_TRUE(HoldsTableOf(profile_, image));
  EXPECT_TRUE(SameBytes(ReadFile(path_), image));
  EXPECT_EQ(OpenHandles(), handles);
}

TEST_F(VKCLProfileRead, AllocatesABlockThatTheTagThenOwns) {
  VKPrivateTag tag;
  tag.SetSignature(QX50);
  ASSERT_EQ(profile_.ReadVKPrivateTag(&tag, 1), 1);
  ASSERT_NE(tag.GetData(), nullptr);
  ASSERT_EQ(tag.GetTagSize(), 5u);
  EXPECT_EQ(std::memcmp(tag.GetData(), Pattern(5, 1).data(), 5), 0);
  EXPECT_EQ(tag.signature, QX50);
}

TEST_F(VKCLProfileRead, AnyNonZeroValueAllocates) {
  for (const int allocate : {1, 2, -1}) {
    VKPrivateTag tag;
    tag.SetSignature(QX76);
    ASSERT_EQ(profile_.ReadVKPrivateTag(&tag, allocate), 1) << allocate;
    EXPECT_EQ(tag.GetTagSize(), 1u);
    EXPECT_EQ(static_cast<unsigned char>(tag.GetData()[0]), Pattern(1, 6)[0]);
  }
}

TEST_F(VKCLProfileRead, AllocatingLeavesAnEarlierBlockToTheCaller) {
  const std::unique_ptr<char[]> earlier(new char[1]{'e'});
  VKPrivateTag tag;
  tag.SetSignature(QX50);
  tag.data = earlier.get();
  ASSERT_EQ(profile_.ReadVKPrivateTag(&tag, 1), 1);
  EXPECT_NE(tag.GetData(), earlier.get());
  EXPECT_EQ(earlier[0], 'e');

  VKPrivateTag wrongType;
  wrongType.SetSignature(QX52);
  wrongType.data = earlier.get();
  EXPECT_EQ(profile_.ReadVKPrivateTag(&wrongType, 1), 0);
  EXPECT_EQ(wrongType.data, nullptr);
  EXPECT_EQ(earlier[0], 'e');
}

TEST_F(VKCLProfileRead, TheAllocatingReadRefusesEmptyContent) {
  char block[1] = {'k'};
  VKPrivateTag tag;
  tag.SetSignature(QX51);
  tag.data = block;
  tag.size = 99;
  EXPECT_EQ(profile_.ReadVKPrivateTag(&tag, 1), 0);
  EXPECT_EQ(tag.data, block);
  EXPECT_EQ(tag.size, 99u);
  tag.SetSignature(QX60);  // absent
  EXPECT_EQ(profile_.ReadVKPrivateTag(&tag, 1), 0);
  EXPECT_EQ(tag.data, block);
  EXPECT_EQ(tag.size, 99u);
  tag.data = nullptr;
}

TEST_F(VKCLProfileRead, WithoutAllocatingTheTagsOwnBlockIsFilled) {
  char block[16];
  std::memset(block, kUntouched, sizeof block);
  VKPrivateTag tag;
  tag.SetSignature(QX50);
  tag.data = block;
  tag.size = 1;
  EXPECT_EQ(profile_.ReadVKPrivateTag(&tag, 0), 1);
  EXPECT_EQ(tag.data, block);
  EXPECT_EQ(tag.size, 5u);
  EXPECT_EQ(std::memcmp(block, Pattern(5, 1).data(), 5), 0);
  EXPECT_EQ(static_cast<unsigned char>(block[5]), kUntouched);

  tag.SetSignature(QX51);
  EXPECT_EQ(profile_.ReadVKPrivateTag(&tag, 0), 1);  // empty content is no failure here
  EXPECT_EQ(tag.size, 0u);
  tag.size = 99;
  tag.SetSignature(QX52);
  EXPECT_EQ(profile_.ReadVKPrivateTag(&tag, 0), 0);
  EXPECT_EQ(tag.data, block);
  EXPECT_EQ(tag.size, 0u);
  tag.data = nullptr;
}

TEST_F(VKCLProfileRead, WithoutABlockNothingIsRead) {
  VKPrivateTag tag;
  tag.SetSignature(QX50);
  tag.size = 99;
  EXPECT_EQ(profile_.ReadVKPrivateTag(&tag, 0), 0);
  EXPECT_EQ(tag.data, nullptr);
  EXPECT_EQ(tag.size, 99u);
  EXPECT_EQ(profile_.ReadVKPrivateTag(nullptr, 0), 0);
  EXPECT_EQ(profile_.ReadVKPrivateTag(nullptr, 1), 0);
}

TEST_F(VKCLProfileRead, EntrySizesBelowTheHeadAreRefused) {
  for (std::uint32_t size = 0; size <= 13; ++size) {
    const VKCLProfile profile = OneTag(Sig("QX50"), 144, size);
    const ReadResult read = Read(profile, Sig("QX50"));
    EXPECT_EQ(read.result, size < 12 ? 0 : 1) << size;
    EXPECT_EQ(read.size, size == 13 ? 1u : 0u) << size;
    EXPECT_EQ(read.Untouched(), size < 13) << size;
    VKPrivateTag tag;
    tag.SetSignature(QX50);
    tag.size = 99;
    EXPECT_EQ(profile.ReadVKPrivateTag(&tag, 1), size < 13 ? 0 : 1) << size;
    EXPECT_EQ(tag.data != nullptr, size == 13) << size;
    EXPECT_EQ(tag.size, size == 13 ? 1u : 99u) << size;
  }
}

TEST_F(VKCLProfileRead, ATagThatLeavesTheFileIsRefused) {
  // The file is 172 bytes long: head of 144, 'data' head of 12, 16 bytes of content.
  EXPECT_EQ(Read(OneTag(Sig("QX50"), 144, 28), Sig("QX50")).Content(), Pattern(16, 9));
  const ImageEntry outside[] = {
      {Sig("QX50"), 144, 29},         {Sig("QX50"), 144, 0x7FFFFFFF},
      {Sig("QX50"), 144, 0xFFFFFFFF}, {Sig("QX50"), 144, 0xFFFFFF70},
      {Sig("QX50"), 172, 12},         {Sig("QX50"), 173, 13},
      {Sig("QX50"), 0x7FFFFFFF, 13},  {Sig("QX50"), 0x80000000, 13},
      {Sig("QX50"), 0xFFFFFFF4, 12},  {Sig("QX50"), 0xFFFFFFF4, 28},
      {Sig("QX50"), 0xFFFFFFFF, 13},  {Sig("QX50"), 0xFFFFFFFF, 0xFFFFFFFF}};
  for (const ImageEntry& entry : outside) {
    const VKCLProfile profile = OneTag(entry.sig, entry.offset, entry.size);
    ASSERT_EQ(profile.isValidICC(), 1);
    const ReadResult read = Read(profile, entry.sig);
    EXPECT_EQ(read.result, 0) << ::testing::PrintToString(entry);
    EXPECT_EQ(read.size, 0u) << ::testing::PrintToString(entry);
    EXPECT_TRUE(read.Untouched()) << ::testing::PrintToString(entry);
    VKPrivateTag tag;
    tag.SetSignature(QX50);
    EXPECT_EQ(profile.ReadVKPrivateTag(&tag, 1), 0) << ::testing::PrintToString(entry);
    EXPECT_EQ(tag.data, nullptr) << ::testing::PrintToString(entry);
  }
}

TEST_F(VKCLProfileRead, AFileThatIsCutInTheTagGivesNothing) {
  const Bytes whole = RawImage(ProfileHeader(), {{Sig("QX50"), 144, 28}}, DataTag(Pattern(16, 9)));
  for (std::size_t length = 144; length < whole.size(); ++length) {
    const VKCLProfile profile(dir_.Write("b.icc", Slice(whole, 0, length)), 0);
    const ReadResult read = Read(profile, Sig("QX50"));
    EXPECT_EQ(read.result, 0) << length;
    EXPECT_EQ(read.size, 0u) << length;
    EXPECT_TRUE(read.Untouched()) << length;
  }
}

TEST_F(VKCLProfileRead, ALastTagNeedsNoPadding) {
  const VKCLProfile profile(dir_.Write("b.icc", RawImage(ProfileHeader(), {{Sig("QX50"), 144, 13}},
                                                         DataTag(Pattern(1, 7)))),
                            0);
  EXPECT_EQ(Read(profile, Sig("QX50")).Content(), Pattern(1, 7));
}

TEST_F(VKCLProfileRead, TheTargetTextIsGivenAsStored) {
  for (const std::string& text : {std::string("BEGIN_DATA"), std::string("a\0b\0", 4),
                                  std::string("x"), std::string(1000, 't')}) {
    const VKCLProfile profile(
        dir_.Write("b.icc", ProfileImage(ProfileHeader(), {{Sig("targ"), TextTag(text)}})), 0);
    unsigned long size = 77;
    const std::unique_ptr<char[]> read(profile.ReadtargTag(size));
    ASSERT_NE(read, nullptr);
    ASSERT_EQ(size, text.size());
    EXPECT_EQ(std::string(read.get(), size), text);
  }
}

TEST_F(VKCLProfileRead, AnEmptyTargetTextIsABufferOfNoBytes) {
  const VKCLProfile profile = OneTag(Sig("targ"), 144, 8);
  unsigned long size = 77;
  const std::unique_ptr<char[]> read(profile.ReadtargTag(size));
  EXPECT_NE(read, nullptr);
  EXPECT_EQ(size, 0u);
}

TEST_F(VKCLProfileRead, TheFirstOfTwoTargetsIsRead) {
  const VKCLProfile profile(
      dir_.Write("b.icc", ProfileImage(ProfileHeader(), {{Sig("targ"), TextTag("first")},
                                                         {Sig("targ"), TextTag("second one")}})),
      0);
  unsigned long size = 77;
  const std::unique_ptr<char[]> read(profile.ReadtargTag(size));
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(std::string(read.get(), size), "first");
}

TEST_F(VKCLProfileRead, WithoutAReadableTargetTheSizeIsNotTouched) {
  std::vector<VKCLProfile> profiles;
  profiles.emplace_back(
      dir_.Write("none.icc", ProfileImage(ProfileHeader(), {{Sig("QX50"), DataTag({1})}})), 0);
  profiles.emplace_back(
      dir_.Write("data.icc", ProfileImage(ProfileHeader(), {{Sig("targ"), DataTag({1, 2})}})), 0);
  profiles.emplace_back(
      dir_.Write("Targ.icc", ProfileImage(ProfileHeader(), {{Sig("Targ"), TextTag("t")}})), 0);
  for (const VKCLProfile& profile : profiles) {
    ASSERT_EQ(profile.isValidICC(), 1);
    unsigned long size = 77;
    EXPECT_EQ(profile.ReadtargTag(size), nullptr) << profile.filePath.str();
    EXPECT_EQ(size, 77u) << profile.filePath.str();
  }
}

TEST_F(VKCLProfileRead, ATargetThatLeavesTheFileOrLacksItsHeadIsRefused) {
  // The file is 168 bytes long: head of 144, 'text' head of 8, 16 bytes of text.
  unsigned long size = 77;
  const std::unique_ptr<char[]> whole(OneTag(Sig("targ"), 144, 24).ReadtargTag(size));
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(std::string(whole.get(), size), "0123456789ABCDEF");
  const std::pair<std::uint32_t, std::uint32_t> bad[] = {{144, 0},
                                                         {144, 1},
                                                         {144, 7},
                                                         {144, 25},
                                                         {144, 0x80000000},
                                                         {144, 0xFFFFFFFF},
                                                         {168, 8},
                                                         {169, 9},
                                                         {0xFFFFFFF8, 8},
                                                         {0xFFFFFFFF, 24},
                                                         {0xFFFFFFFF, 0xFFFFFFFF}};
  for (const auto& [offset, length] : bad) {
    size = 77;
    EXPECT_EQ(OneTag(Sig("targ"), offset, length).ReadtargTag(size), nullptr)
        << offset << " " << length;
    EXPECT_EQ(size, 77u) << offset << " " << length;
  }
}

TEST_F(VKCLProfileRead, ReadsAWholeDataTag) {
  const VKCLProfile profile = OneTag(Sig("QX50"), 144, 28);
  // Words for the alignment of the structure; the content stays as stored.
  std::uint32_t room[8];
  std::memset(room, kUntouched, sizeof room);
  EXPECT_EQ(ProfilePeer::ReadDataType(profile, Entry(Sig("QX50"), 144, 28), room), 1);
  EXPECT_EQ(room[0], 0x64617461u);
  EXPECT_EQ(room[1], 0u);
  EXPECT_EQ(room[2], 1u);
  EXPECT_EQ(std::memcmp(room + 3, Pattern(16, 9).data(), 16), 0);
  EXPECT_EQ(room[7], 0xCCCCCCCCu);
}

TEST_F(VKCLProfileRead, ReadsAWholeTextTag) {
  const VKCLProfile profile = OneTag(Sig("targ"), 144, 24);
  std::uint32_t room[7];
  std::memset(room, kUntouched, sizeof room);
  EXPECT_EQ(ProfilePeer::ReadTextType(profile, Entry(Sig("targ"), 144, 24), room), 1);
  EXPECT_EQ(room[0], 0x74657874u);
  EXPECT_EQ(room[1], 0u);
  EXPECT_EQ(std::memcmp(room + 2, "0123456789ABCDEF", 16), 0);
  EXPECT_EQ(room[6], 0xCCCCCCCCu);
}

TEST_F(VKCLProfileRead, ReadsAWholeTagThatIsAHeadAlone) {
  std::uint32_t room[4];
  std::memset(room, kUntouched, sizeof room);
  const VKCLProfile data = OneTag(Sig("QX50"), 144, 28);
  EXPECT_EQ(ProfilePeer::ReadDataType(data, Entry(Sig("QX50"), 144, 12), room), 1);
  EXPECT_EQ(room[2], 1u);
  EXPECT_EQ(room[3], 0xCCCCCCCCu);
  char content = 'c';
  EXPECT_EQ(ProfilePeer::ReadDataTypeContent(data, Entry(Sig("QX50"), 144, 12), &content), 1);
  EXPECT_EQ(content, 'c');
  std::memset(room, kUntouched, sizeof room);
  const VKCLProfile text = OneTag(Sig("targ"), 144, 24);
  EXPECT_EQ(ProfilePeer::ReadTextType(text, Entry(Sig("targ"), 144, 8), room), 1);
  EXPECT_EQ(room[1], 0u);
  EXPECT_EQ(room[2], 0xCCCCCCCCu);
  EXPECT_EQ(ProfilePeer::ReadTextTypeContent(text, Entry(Sig("targ"), 144, 8), &content), 1);
  EXPECT_EQ(content, 'c');
}

TEST_F(VKCLProfileRead, WholeReadsRefuseOtherTypesAndWhatLeavesTheFile) {
  std::uint32_t room[16] = {};
  const VKCLProfile data = OneTag(Sig("QX50"), 144, 28);
  EXPECT_EQ(ProfilePeer::ReadTextType(data, Entry(Sig("QX50"), 144, 28), room), 0);
  for (const icTag& tag : {Entry(1, 144, 29), Entry(1, 172, 12), Entry(1, 0xFFFFFFFF, 28),
                           Entry(1, 144, 0xFFFFFFFF), Entry(1, 148, 24)}) {
    EXPECT_EQ(ProfilePeer::ReadDataType(data, tag, room), 0) << tag.offset << " " << tag.size;
  }
  for (std::uint32_t size = 0; size < 12; ++size) {  // not even the head is whole
    std::uint32_t empty[16] = {};
    EXPECT_EQ(ProfilePeer::ReadDataType(data, Entry(1, 144, size), empty), 0) << size;
  }
  const VKCLProfile text = OneTag(Sig("targ"), 144, 24);
  EXPECT_EQ(ProfilePeer::ReadDataType(text, Entry(Sig("targ"), 144, 24), room), 0);
  for (const icTag& tag : {Entry(1, 144, 25), Entry(1, 168, 8), Entry(1, 0xFFFFFFFF, 24),
                           Entry(1, 144, 0xFFFFFFFF), Entry(1, 148, 20)}) {
    EXPECT_EQ(ProfilePeer::ReadTextType(text, tag, room), 0) << tag.offset << " " << tag.size;
  }
}

// The numbers of the head are the host's before the type is looked at: also of another type.
TEST_F(VKCLProfileRead, WholeReadsConvertTheHeadOfAnotherTypeToo) {
  std::uint32_t room[8] = {};
  const VKCLProfile text = OneTag(Sig("targ"), 144, 24);
  EXPECT_EQ(ProfilePeer::ReadDataType(text, Entry(Sig("targ"), 144, 24), room), 0);
  EXPECT_EQ(room[0], Sig("text"));
  EXPECT_EQ(room[2], Sig("0123"));  // where a 'data' tag has its flag
  EXPECT_EQ(std::memcmp(room + 3, "456789AB", 8), 0);
  const VKCLProfile data = OneTag(Sig("QX50"), 144, 28);
  EXPECT_EQ(ProfilePeer::ReadTextType(data, Entry(Sig("QX50"), 144, 28), room), 0);
  EXPECT_EQ(room[0], Sig("data"));
  EXPECT_EQ(room[2], 0x01000000u);  // as stored: a text begins here
}

// An object that is not valid for its colour space alone has its table, and reads by it.
TEST_F(VKCLProfileRead, TheTargetOfAProfileWithoutADeviceColourSpaceIsRead) {
  const Bytes image =
      ProfileImage(ProfileHeader(Sig("prtr"), Sig("Lab ")), {{Sig("targ"), TextTag("BEGIN")}});
  const VKCLProfile profile(dir_.Write("lab.icc", image), 0);
  ASSERT_EQ(profile.isValidICC(), 0);
  unsigned long size = 77;
  const std::unique_ptr<char[]> text(profile.ReadtargTag(size));
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(std::string(text.get(), size), "BEGIN");
}

TEST_F(VKCLProfileRead, ContentReadsTakeTheTagAsGiven) {
  const VKCLProfile data = OneTag(Sig("QX50"), 0, 0);  // the table's entry plays no part
  char room[32];
  std::memset(room, kUntouched, sizeof room);
  EXPECT_EQ(ProfilePeer::ReadDataTypeContent(data, Entry(0, 144, 20), room), 1);
  EXPECT_EQ(std::memcmp(room, Pattern(16, 9).data(), 8), 0);
  EXPECT_EQ(static_cast<unsigned char>(room[8]), kUntouched);
  const VKCLProfile text = OneTag(Sig("targ"), 0, 0);
  std::memset(room, kUntouched, sizeof room);
  EXPECT_EQ(ProfilePeer::ReadTextTypeContent(text, Entry(0, 144, 12), room), 1);
  EXPECT_EQ(std::memcmp(room, "0123", 4), 0);
  EXPECT_EQ(static_cast<unsigned char>(room[4]), kUntouched);
  EXPECT_EQ(ProfilePeer::ReadTextTypeContent(text, Entry(0, 144, 12), nullptr), 0);
}

TEST_F(VKCLProfileRead, PrivateTagsAreToldByTheirFirstTwoCharacters) {
  for (const std::uint32_t sig : {Sig("QX00"), Sig("QX50"), Sig("QX76"), Sig("QX77"), Sig("QXzz"),
                                  Sig("QX\0\0"), Sig("QX  "), 0x5158FFFFu}) {
    EXPECT_EQ(ProfilePeer::isVKCLPrivateTag(profile_, sig), 1) << std::hex << sig;
  }
  for (const std::uint32_t sig : {Sig("XQ50"), Sig("Qx50"), Sig("qX50"), Sig("qx50"), Sig("QY50"),
                                  Sig("PX50"), Sig("50QX"), Sig("targ"), 0u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ProfilePeer::isVKCLPrivateTag(profile_, sig), 0) << std::hex << sig;
  }
}

}  // namespace
