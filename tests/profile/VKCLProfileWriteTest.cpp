#include "profile/VKCLProfile.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <optional>

#include "support/ImageBuilder.h"
#include "support/ProfilePeer.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::ProfilePeer;
using vkcl::testing::Big32;
using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::Head;
using vkcl::testing::HexBytes;
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
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TableOf;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;
using vkcl::testing::WriteFile;

constexpr bool kWideLong = ULONG_MAX > 0xFFFFFFFFul;

VKPrivateTagSignature Private(std::uint32_t sig) { return static_cast<VKPrivateTagSignature>(sig); }

int Write(VKCLProfile& profile, std::uint32_t sig, const Bytes& payload) {
  // The writers promise to leave the payload alone; a copy of their own shows it.
  Bytes copy = payload;
  const int result =
      profile.WriteVKPrivateTag(Private(sig), copy.data(), static_cast<unsigned long>(copy.size()));
  EXPECT_EQ(copy, payload);
  return result;
}

// Tags for WriteMultiVKPrivateTags, released together.
class TagArray {
 public:
  explicit TagArray(const std::vector<std::pair<std::uint32_t, Bytes>>& tags) : tags_(tags.size()) {
    for (std::size_t i = 0; i < tags.size(); ++i) {
      tags_[i].SetSignature(Private(tags[i].first));
      tags_[i].size = static_cast<std::uint32_t>(tags[i].second.size());
      tags_[i].data = new char[tags[i].second.size() + 1];
      for (std::size_t k = 0; k < tags[i].second.size(); ++k) {
        tags_[i].data[k] = static_cast<char>(tags[i].second[k]);
      }
    }
  }

  VKPrivateTag* get() { return tags_.data(); }
  int count() const { return static_cast<int>(tags_.size()); }
  VKPrivateTag& operator[](std::size_t i) { return tags_[i]; }

 private:
  std::vector<VKPrivateTag> tags_;
};

int WriteMulti(VKCLProfile& profile, const std::vector<std::pair<std::uint32_t, Bytes>>& tags) {
  TagArray array(tags);
  return profile.WriteMultiVKPrivateTags(array.get(), array.count());
}

// Tags of several types and of every padding, private ones first, in the middle and last.
std::vector<ImageTag> FiveTags() {
  return {{Sig("QX51"), DataTag(Pattern(6, 1))},
          {Sig("desc"), TextTag("some words")},
          {Sig("QX53"), DataTag(Pattern(8, 2))},
          {Sig("A2B0"), Pattern(29, 3)},
          {Sig("QX60"), DataTag(Pattern(3, 4))}};
}

// A file that a mistaken write made gigabytes long is not read to be compared.
void ExpectFile(const std::string& path, const Bytes& image) {
  ASSERT_EQ(std::filesystem::file_size(path), image.size());
  EXPECT_TRUE(SameBytes(ReadFile(path), image));
}

// What a differently sized update that failed leaves: all as before, but for the entry's size.
void ExpectOnlyTheLiveSizeChanged(const VKCLProfile& profile, const Bytes& image, std::size_t index,
                                  std::uint32_t size) {
  Bytes live = image;
  SetBig32(live, 132 + 12 * index + 8, size);
  EXPECT_TRUE(HoldsTableOf(profile, live));
  ExpectFile(profile.filePath.str(), image);
}

void ExpectNothingChanged(const VKCLProfile& profile, const Bytes& image) {
  EXPECT_TRUE(HoldsTableOf(profile, image));
  ExpectFile(profile.filePath.str(), image);
}

class VKCLProfileWrite : public ::testing::Test {
 protected:
  std::string Store(const Bytes& image) const { return dir_.Write("a.icc", image); }

  Bytes OneTag(const Bytes& payload) const {
    return ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag(payload)}});
  }

  const TempDir dir_;
};

// ---------------------------------------------------------------------------------------------
// Images worked out by hand

// Bytes 4 to 127 of a header of class 'prtr' and colour space 'CMYK'.
const char kHeaderRest[] =
    "4142434402400000 70727472434D594B 4C616220 07D10002 0003000400050006 61637370 504C4154"
    "00000000 4D414B45 4D4F444C 0000000000000001 00000000 0000F6D6 00010000 0000D32D 43524541"
    "A0A1A2A3A4A5A6A7A8A9AAABACADAEAF B0B1B2B3B4B5B6B7B8B9BABBBCBDBEBF C0C1C2C3C4C5C6C7C8C9CACB";

Bytes ByHand(const std::string& size, const std::string& behindHeader) {
  return HexBytes(size + kHeaderRest + behindHeader);
}

TEST_F(VKCLProfileWrite, AppendingToAnEmptyTableByHand) {
  const std::string path = Store(ByHand("00000084", "00000000"));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX64"), {1, 2, 3, 4}), 1);
  EXPECT_TRUE(SameBytes(ReadFile(path), ByHand("000000A0",
                                               "00000001"
                                               "51583634 00000090 00000010"
                                               "64617461 00000000 00000001 01020304")));
}

TEST_F(VKCLProfileWrite, AppendingByHand) {
  const std::string path = Store(ByHand("000000A0",
                                        "00000001"
                                        "51583634 00000090 0000000F"
                                        "64617461 00000000 00000001 01020300"));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX74"), {5, 6, 7, 8, 9}), 1);
  EXPECT_TRUE(SameBytes(ReadFile(path), ByHand("000000C0",
                                               "00000002"
                                               "51583634 0000009C 0000000F"
                                               "51583734 000000AC 00000011"
                                               "64617461 00000000 00000001 01020300"
                                               "64617461 00000000 00000001 05060708 09000000")));
}

TEST_F(VKCLProfileWrite, ReplacingAMiddleTagByHand) {
  const std::string path = Store(ByHand("000000D8",
                                        "00000003"
                                        "51583634 000000A8 00000010"
                                        "51583734 000000B8 0000000D"
                                        "63707274 000000C8 0000000E"
                                        "64617461 00000000 00000001 11121314"
                                        "64617461 00000000 00000001 21000000"
                                        "74657874 00000000 616263646566 0000"));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX74"), {0x31, 0x32, 0x33, 0x34, 0x35, 0x36}), 1);
  EXPECT_TRUE(SameBytes(ReadFile(path), ByHand("000000DC",
                                               "00000003"
                                               "51583634 000000A8 00000010"
                                               "51583734 000000B8 00000012"
                                               "63707274 000000CC 0000000E"
                                               "64617461 00000000 00000001 11121314"
                                               "64617461 00000000 00000001 31323334 35360000"
                                               "74657874 00000000 616263646566 0000")));
}

TEST_F(VKCLProfileWrite, AppendingSeveralByHand) {
  const std::string path = Store(ByHand("000000A0",
                                        "00000001"
                                        "51583634 00000090 00000010"
                                        "64617461 00000000 00000001 11121314"));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(WriteMulti(profile, {{Sig("QX64"), {0x21}}, {Sig("QX75"), {}}}), 1);
  EXPECT_TRUE(SameBytes(ReadFile(path), ByHand("000000D4",
                                               "00000003"
                                               "51583634 000000A8 00000010"
                                               "51583634 000000B8 0000000D"
                                               "51583735 000000C8 0000000C"
                                               "64617461 00000000 00000001 11121314"
                                               "64617461 00000000 00000001 21000000"
                                               "64617461 00000000 00000001")));
}

// ---------------------------------------------------------------------------------------------
// Replacing

TEST_F(VKCLProfileWrite, ReplacingWithTheSameLengthRewritesOnlyThatTag) {
  for (const std::size_t index : {0u, 2u, 4u}) {
    std::vector<ImageTag> tags = FiveTags();
    const Bytes before = ProfileImage(ProfileHeader(), tags);
    const std::string path = Store(before);
    VKCLProfile profile(path, 0);
    const Bytes payload = Pattern(tags[index].data.size() - 12, 77);
    tags[index].data = DataTag(payload);
    const Bytes expected = ProfileImage(ProfileHeader(), tags);
    ASSERT_NE(expected, before);
    EXPECT_EQ(Write(profile, tags[index].sig, payload), 1) << index;
    EXPECT_TRUE(SameBytes(ReadFile(path), expected)) << index;
    EXPECT_TRUE(HoldsTableOf(profile, expected)) << index;
  }
}

TEST_F(VKCLProfileWrite, ReplacingWithTheSameLengthZeroesThePadding) {
  Bytes image = ProfileImage(ProfileHeader(), FiveTags());
  const std::vector<ImageEntry> table = TableOf(image);
  for (std::uint32_t at = table[0].offset + table[0].size; at < table[1].offset; ++at) {
    image[at] = 0xEE;
  }
  Bytes expected = image;
  const std::string path = Store(image);
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(6, 50)), 1);
  const Bytes tag = Join({DataTag(Pattern(6, 50)), {0, 0}});
  std::copy(tag.begin(), tag.end(), expected.begin() + table[0].offset);
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
}

TEST_F(VKCLProfileWrite, ReplacingWithTheSameLengthLeavesTheHeaderInTheFile) {
  const Bytes image = ProfileImage(ProfileHeader(), FiveTags());
  const std::string path = Store(image);
  VKCLProfile profile(path, 0);
  profile.UpdateHeaderColorSpace(16);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(6, 50)), 1);
  EXPECT_TRUE(SameBytes(Slice(ReadFile(path), 0, 132), Slice(image, 0, 132)));
}

TEST_F(VKCLProfileWrite, ReplacingGivesTheTagTheDataTypeWhateverItWas) {
  std::vector<ImageTag> tags = {{Sig("QX52"), TextTag("text")},
                                {Sig("QX55"), Pattern(16, 1)},
                                {Sig("QX56"), DataTag(Pattern(4, 2), 0)}};
  const std::string path = Store(ProfileImage(ProfileHeader(), tags));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX52"), {}), 1);  // of the same size
  ASSERT_EQ(Write(profile, Sig("QX55"), Pattern(9, 3)), 1);
  ASSERT_EQ(Write(profile, Sig("QX56"), Pattern(4, 4)), 1);
  EXPECT_TRUE(SameBytes(ReadFile(path),
                        ProfileImage(ProfileHeader(), {{Sig("QX52"), DataTag({})},
                                                       {Sig("QX55"), DataTag(Pattern(9, 3))},
                                                       {Sig("QX56"), DataTag(Pattern(4, 4))}})));
}

TEST_F(VKCLProfileWrite, AnUnpaddedLastTagIsPaddedByAWriteOfTheSameLength) {
  const Bytes head = Head(ProfileHeader(), 157, {{Sig("QX51"), 144, 13}});
  const std::string path = Store(Join({head, DataTag({1})}));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX51"), {2}), 1);
  EXPECT_TRUE(SameBytes(ReadFile(path), Join({head, DataTag({2}), {0, 0, 0}})));
  EXPECT_EQ(profile.header.size, 157u);
}

TEST_F(VKCLProfileWrite, ReplacingWithAnotherLengthMovesTheLaterTags) {
  for (std::size_t count = 1; count <= 5; ++count) {
    for (std::size_t index = 0; index < count; ++index) {
      for (std::size_t length = 0; length <= 40; ++length) {
        SCOPED_TRACE(::testing::Message() << count << " tags, " << length << " bytes at " << index);
        std::vector<ImageTag> tags = FiveTags();
        tags.resize(count);
        const std::string path = Store(ProfileImage(ProfileHeader(), tags));
        VKCLProfile profile(path, 0);
        tags[index].data = DataTag(Pattern(length, 99));
        const Bytes expected = ProfileImage(ProfileHeader(), tags);
        ASSERT_EQ(Write(profile, tags[index].sig, Pattern(length, 99)), 1);
        ASSERT_TRUE(SameBytes(ReadFile(path), expected));
        ASSERT_TRUE(HoldsTableOf(profile, expected));
        ASSERT_EQ(profile.isValidICC(), 1);
      }
    }
  }
}

TEST_F(VKCLProfileWrite, LongerAndShorterMoveByTheDifferenceOfPaddedLengths) {
  const Bytes image = ProfileImage(ProfileHeader(), FiveTags());
  const std::vector<ImageEntry> old = TableOf(image);
  const std::string path = Store(image);
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX53"), Pattern(13, 1)), 1);  // 20 of 20 becomes 25 of 28
  EXPECT_EQ(profile.tagTable[2].offset, old[2].offset);
  EXPECT_EQ(profile.tagTable[3].offset, old[3].offset + 8);
  EXPECT_EQ(profile.tagTable[4].offset, old[4].offset + 8);
  EXPECT_EQ(profile.header.size, image.size() + 8);
  EXPECT_EQ(ReadFile(path).size(), image.size() + 8);
  ASSERT_EQ(Write(profile, Sig("QX53"), Pattern(1, 1)), 1);  // 13 of 16
  EXPECT_EQ(profile.tagTable[3].offset, old[3].offset - 4);
  EXPECT_EQ(profile.header.size, image.size() - 4);
  EXPECT_EQ(ReadFile(path).size(), image.size() - 4);
}

TEST_F(VKCLProfileWrite, OtherTagsKeepTheirPaddingBytes) {
  Bytes image = ProfileImage(ProfileHeader(), FiveTags());
  const std::vector<ImageEntry> table = TableOf(image);
  const std::uint32_t pad1 = table[1].offset + table[1].size;
  const std::uint32_t pad3 = table[3].offset + table[3].size;
  ASSERT_NE(pad1 % 4, 0u);
  ASSERT_NE(pad3 % 4, 0u);
  image[pad1] = 0xE1;
  image[pad3] = 0xE3;
  const std::string path = Store(image);
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX53"), Pattern(40, 7)), 1);  // 32 longer
  std::vector<ImageTag> tags = FiveTags();
  tags[2].data = DataTag(Pattern(40, 7));
  Bytes expected = ProfileImage(ProfileHeader(), tags);
  expected[pad1] = 0xE1;
  expected[pad3 + 32] = 0xE3;
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  ASSERT_EQ(Write(profile, Sig("QX50"), {}), 1);  // appended
  EXPECT_EQ(ReadFile(path)[pad1 + 12], 0xE1);
  EXPECT_EQ(ReadFile(path)[pad3 + 32 + 12], 0xE3);
}

TEST_F(VKCLProfileWrite, TheFirstOfTwoEqualSignaturesIsReplaced) {
  std::vector<ImageTag> tags = {{Sig("QX51"), DataTag(Pattern(4, 1))},
                                {Sig("QX51"), DataTag(Pattern(4, 2))}};
  const std::string path = Store(ProfileImage(ProfileHeader(), tags));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(4, 3)), 1);
  tags[0].data = DataTag(Pattern(4, 3));
  EXPECT_TRUE(SameBytes(ReadFile(path), ProfileImage(ProfileHeader(), tags)));
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(9, 4)), 1);
  tags[0].data = DataTag(Pattern(9, 4));
  EXPECT_TRUE(SameBytes(ReadFile(path), ProfileImage(ProfileHeader(), tags)));
}

TEST_F(VKCLProfileWrite, AnEntryTooSmallForAHeadIsReplacedByItsPaddedSize) {
  for (std::uint32_t size = 0; size < 12; ++size) {
    const Bytes old = Pattern((size + 3) / 4 * 4, 5);
    const Bytes tail = DataTag(Pattern(4, 6));
    const auto behind = static_cast<std::uint32_t>(156 + old.size());
    const std::string path = Store(RawImage(
        ProfileHeader(), {{Sig("QX51"), 156, size}, {Sig("QX53"), behind, 16}}, Join({old, tail})));
    VKCLProfile profile(path, 0);
    ASSERT_EQ(Write(profile, Sig("QX51"), {}), 1) << size;
    const Bytes expected =
        ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag({})}, {Sig("QX53"), tail}});
    EXPECT_TRUE(SameBytes(ReadFile(path), expected)) << size;
    EXPECT_TRUE(HoldsTableOf(profile, expected)) << size;
  }
}

// ---------------------------------------------------------------------------------------------
// Appending

TEST_F(VKCLProfileWrite, AppendsANewTagLastInTableAndFile) {
  for (std::size_t count = 0; count <= 5; ++count) {
    for (std::size_t length = 0; length <= 9; ++length) {
      SCOPED_TRACE(::testing::Message() << count << " tags, " << length << " bytes");
      std::vector<ImageTag> tags = FiveTags();
      tags.resize(count);
      const Bytes before = ProfileImage(ProfileHeader(), tags);
      const std::string path = Store(before);
      VKCLProfile profile(path, 0);
      tags.push_back({Sig("QX70"), DataTag(Pattern(length, 8))});
      const Bytes expected = ProfileImage(ProfileHeader(), tags);
      ASSERT_EQ(expected.size(), before.size() + 12 + (length + 12 + 3) / 4 * 4);
      ASSERT_EQ(Write(profile, Sig("QX70"), Pattern(length, 8)), 1);
      ASSERT_TRUE(SameBytes(ReadFile(path), expected));
      ASSERT_TRUE(HoldsTableOf(profile, expected));
    }
  }
}

TEST_F(VKCLProfileWrite, TheSignatureNeedNotBeAPrivateOne) {
  std::vector<ImageTag> tags = FiveTags();
  const std::string path = Store(ProfileImage(ProfileHeader(), tags));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("mine"), Pattern(4, 1)), 1);
  ASSERT_EQ(Write(profile, Sig("desc"), Pattern(2, 2)), 1);
  ASSERT_EQ(Write(profile, 0, Pattern(1, 3)), 1);
  tags[1].data = DataTag(Pattern(2, 2));
  tags.push_back({Sig("mine"), DataTag(Pattern(4, 1))});
  tags.push_back({0, DataTag(Pattern(1, 3))});
  EXPECT_TRUE(SameBytes(ReadFile(path), ProfileImage(ProfileHeader(), tags)));
}

TEST_F(VKCLProfileWrite, AppendingToAnEmptyTableWithDataPutsTheTagBehindIt) {
  const std::string path = Store(RawImage(ProfileHeader(), {}, Pattern(8, 1)));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(12, 2)), 1);
  const Bytes image = ReadFile(path);
  EXPECT_TRUE(
      SameBytes(Slice(image, 0, 144), Head(ProfileHeader(), 176, {{Sig("QX51"), 152, 24}})));
  EXPECT_TRUE(SameBytes(Slice(image, 152, image.size() - 152), DataTag(Pattern(12, 2))));
  EXPECT_TRUE(HoldsTableOf(profile, image));
}

TEST_F(VKCLProfileWrite, AnEmptyPayloadIsATagOfTwelveBytes) {
  const std::string path = Store(OneTag(Pattern(8, 1)));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(profile.WriteVKPrivateTag(QX53, nullptr, 0), 1);
  EXPECT_EQ(profile.GetTagSize(static_cast<icTagSignature>(Sig("QX53"))), 12u);
  EXPECT_TRUE(SameBytes(ReadFile(path),
                        ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag(Pattern(8, 1))},
                                                       {Sig("QX53"), DataTag({})}})));
  ASSERT_EQ(profile.WriteVKPrivateTag(QX51, nullptr, 0), 1);  // shorter
  ASSERT_EQ(profile.WriteVKPrivateTag(QX51, nullptr, 0), 1);  // as long
  EXPECT_TRUE(SameBytes(
      ReadFile(path),
      ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag({})}, {Sig("QX53"), DataTag({})}})));
}

TEST_F(VKCLProfileWrite, ATagIsWrittenFromItsEnvelope) {
  const std::string path = Store(OneTag(Pattern(8, 1)));
  VKCLProfile profile(path, 0);
  TagArray tags({{Sig("QX53"), Pattern(5, 2)}, {Sig("QX51"), Pattern(9, 3)}, {Sig("QX75"), {}}});
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(profile.WriteVKPrivateTag(&tags[i]), 1);
  const VKPrivateTag empty;  // no block and no signature is a tag like others
  EXPECT_EQ(profile.WriteVKPrivateTag(&empty), 1);
  EXPECT_TRUE(SameBytes(ReadFile(path),
                        ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag(Pattern(9, 3))},
                                                       {Sig("QX53"), DataTag(Pattern(5, 2))},
                                                       {Sig("QX75"), DataTag({})},
                                                       {0, DataTag({})}})));
}

TEST_F(VKCLProfileWrite, TheColourSpaceInMemoryReachesTheFileWithTheNextRewrite) {
  const std::vector<std::function<int(VKCLProfile&)>> rewrites = {
      [](VKCLProfile& p) { return Write(p, Sig("QX51"), Pattern(1, 1)); },
      [](VKCLProfile& p) { return Write(p, Sig("QX70"), Pattern(1, 1)); },
      [](VKCLProfile& p) {
        return WriteMulti(p, {{Sig("QX70"), {1}}});
      }};
  for (const auto& rewrite : rewrites) {
    const std::string path = Store(ProfileImage(ProfileHeader(), FiveTags()));
    VKCLProfile profile(path, 0);
    profile.UpdateHeaderColorSpace(512);
    ASSERT_EQ(rewrite(profile), 1);
    const Bytes header = Slice(ReadFile(path), 4, 124);
    EXPECT_TRUE(SameBytes(header, Slice(ProfileHeader(Sig("prtr"), Sig("RGB ")), 4, 124)));
  }
}

TEST_F(VKCLProfileWrite, WhatWasWrittenIsReadByThisObjectAndByOthers) {
  const std::string path = Store(ProfileImage(ProfileHeader(), FiveTags()));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX53"), Pattern(30, 1)), 1);
  ASSERT_EQ(Write(profile, Sig("QX70"), Pattern(7, 2)), 1);
  const VKCLProfile other(path, 0);
  for (const VKCLProfile* reader : {static_cast<const VKCLProfile*>(&profile), &other}) {
    Bytes buffer(30);
    unsigned long size = 0;
    EXPECT_EQ(reader->ReadVKPrivateTag(QX53, buffer.data(), &size), 1);
    EXPECT_EQ(buffer, Pattern(30, 1));
    EXPECT_EQ(reader->ReadVKPrivateTag(QX70, buffer.data(), &size), 1);
    EXPECT_EQ(Slice(buffer, 0, size), Pattern(7, 2));
    EXPECT_EQ(reader->ReadVKPrivateTag(QX60, buffer.data(), &size), 1);
    EXPECT_EQ(Slice(buffer, 0, size), Pattern(3, 4));
  }
}

// ---------------------------------------------------------------------------------------------
// Appending several

TEST_F(VKCLProfileWrite, AppendsSeveralInTheOrderGiven) {
  for (std::size_t count = 0; count <= 5; ++count) {
    for (std::size_t added = 1; added <= 4; ++added) {
      SCOPED_TRACE(::testing::Message() << added << " to " << count);
      std::vector<ImageTag> tags = FiveTags();
      tags.resize(count);
      const std::string path = Store(ProfileImage(ProfileHeader(), tags));
      VKCLProfile profile(path, 0);
      std::vector<std::pair<std::uint32_t, Bytes>> news = {{Sig("QX75"), Pattern(5, 11)},
                                                           {Sig("QX51"), Pattern(6, 12)},
                                                           {Sig("QX75"), {}},
                                                           {Sig("mine"), Pattern(3, 13)}};
      news.resize(added);
      for (const auto& [sig, payload] : news) tags.push_back({sig, DataTag(payload)});
      const Bytes expected = ProfileImage(ProfileHeader(), tags);
      ASSERT_EQ(WriteMulti(profile, news), 1);
      ASSERT_TRUE(SameBytes(ReadFile(path), expected));
      ASSERT_TRUE(HoldsTableOf(profile, expected));
    }
  }
}

TEST_F(VKCLProfileWrite, SeveralAlwaysAppendAndReadsFindTheOlderFirst) {
  std::vector<ImageTag> tags = FiveTags();
  const std::string path = Store(ProfileImage(ProfileHeader(), tags));
  VKCLProfile profile(path, 0);
  for (const unsigned seed : {60u, 61u}) {
    ASSERT_EQ(WriteMulti(profile, {{Sig("QX51"), Pattern(20, seed)}}), 1);
    tags.push_back({Sig("QX51"), DataTag(Pattern(20, seed))});
  }
  EXPECT_TRUE(SameBytes(ReadFile(path), ProfileImage(ProfileHeader(), tags)));
  EXPECT_EQ(profile.tagCount, 7u);
  Bytes buffer(20);
  unsigned long size = 0;
  ASSERT_EQ(profile.ReadVKPrivateTag(QX51, buffer.data(), &size), 1);
  EXPECT_EQ(size, 6u);
  EXPECT_EQ(Slice(buffer, 0, 6), Pattern(6, 1));
}

TEST_F(VKCLProfileWrite, SeveralIntoAnEmptyTableKeepTheDataBehindIt) {
  const std::string path = Store(RawImage(ProfileHeader(), {}, Pattern(8, 1)));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(WriteMulti(profile, {{Sig("QX51"), {1, 2}}, {Sig("QX53"), Pattern(4, 2)}}), 1);
  // 132 + 8 bytes, and 24 for the two entries
  const Bytes expected =
      RawImage(ProfileHeader(), {{Sig("QX51"), 164, 14}, {Sig("QX53"), 180, 16}},
               Join({Pattern(8, 1), DataTag({1, 2}), {0, 0}, DataTag(Pattern(4, 2))}));
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, NoTagsAreNothingToAppend) {
  const Bytes image = ProfileImage(ProfileHeader(), FiveTags());
  VKCLProfile profile(Store(image), 0);
  TagArray tags({{Sig("QX70"), {1}}});
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(tags.get(), 0), 0);
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(tags.get(), -1), 0);
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(tags.get(), INT_MIN), 0);
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(nullptr, 1), 0);
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(nullptr, 0), 0);
  ExpectNothingChanged(profile, image);
}

TEST_F(VKCLProfileWrite, SeveralDoNotCreateAProfile) {
  const std::string path = dir_.File("absent.icc");
  VKCLProfile absent(path, 4);
  EXPECT_EQ(WriteMulti(absent, {{Sig("QX51"), {1}}}), 0);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(absent.isValidICC(), 0);
  VKCLProfile broken(dir_.Write("b.icc", {1, 2, 3}), 4);
  EXPECT_EQ(WriteMulti(broken, {{Sig("QX51"), {1}}}), 0);
  EXPECT_EQ(ReadFile(dir_.File("b.icc")), (Bytes{1, 2, 3}));
}

// ---------------------------------------------------------------------------------------------
// Layouts that the writers do not make themselves

// Two tags with 8 bytes between the table and the first of them.
Bytes WithGap() {
  return RawImage(ProfileHeader(), {{Sig("QX51"), 164, 16}, {Sig("QX53"), 180, 16}},
                  Join({Pattern(8, 20), DataTag(Pattern(4, 21)), DataTag(Pattern(4, 22))}));
}

// Two tags of which the table names the later one first.
Bytes OutOfOrder() {
  return RawImage(ProfileHeader(), {{Sig("QX51"), 172, 16}, {Sig("QX53"), 156, 16}},
                  Join({DataTag(Pattern(4, 22)), DataTag(Pattern(4, 21))}));
}

TEST_F(VKCLProfileWrite, ReplacingTheFirstTagDropsAGapBeforeIt) {
  const std::string path = Store(WithGap());
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(12, 30)), 1);
  // The offsets stay those of a file with the gap, and so does the size.
  const Bytes head = Head(ProfileHeader(), 204, {{Sig("QX51"), 164, 24}, {Sig("QX53"), 188, 16}});
  const Bytes expected = Join({head, DataTag(Pattern(12, 30)), DataTag(Pattern(4, 22))});
  ASSERT_EQ(expected.size(), 196u);
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, ReplacingALaterTagKeepsAGapBeforeTheFirst) {
  const std::string path = Store(WithGap());
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX53"), Pattern(12, 30)), 1);
  const Bytes expected =
      RawImage(ProfileHeader(), {{Sig("QX51"), 164, 16}, {Sig("QX53"), 180, 24}},
               Join({Pattern(8, 20), DataTag(Pattern(4, 21)), DataTag(Pattern(12, 30))}));
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, ReplacingClosesAGapBehindTheTag) {
  const std::string path = Store(RawImage(
      ProfileHeader(), {{Sig("QX51"), 168, 16}, {Sig("QX53"), 192, 16}, {1, 208, 4}},
      Join({DataTag(Pattern(4, 21)), Pattern(8, 20), DataTag(Pattern(4, 22)), Pattern(4, 23)})));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(12, 30)), 1);
  // The gap is not carried over, but stays in the size.
  const Bytes expected = Join(
      {Head(ProfileHeader(), 220, {{Sig("QX51"), 168, 24}, {Sig("QX53"), 192, 16}, {1, 208, 4}}),
       DataTag(Pattern(12, 30)), DataTag(Pattern(4, 22)), Pattern(4, 23)});
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, AppendingToAFileWithAGapWritesTheDataRegionAtTheFirstOffset) {
  const Bytes old = RawImage(ProfileHeader(), {{Sig("QX51"), 152, 16}},
                             Join({Pattern(8, 20), DataTag(Pattern(4, 21))}));
  const std::string path = Store(old);
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX53"), Pattern(4, 30)), 1);
  // The region begins with the gap and so lands 8 bytes too late; its end is overwritten by the
  // new tag, and what the head leaves free keeps its old bytes.
  const Bytes expected =
      Join({Head(ProfileHeader(), 196, {{Sig("QX51"), 164, 16}, {Sig("QX53"), 180, 16}}),
            Slice(old, 156, 8), Pattern(8, 20), Slice(DataTag(Pattern(4, 21)), 0, 8),
            DataTag(Pattern(4, 30))});
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, AppendingSeveralToAFileWithAGapMovesTheTagsAsTheyLie) {
  const Bytes old = RawImage(ProfileHeader(), {{Sig("QX51"), 152, 16}},
                             Join({Pattern(8, 20), DataTag(Pattern(4, 21))}));
  const std::string path = Store(old);
  VKCLProfile profile(path, 0);
  ASSERT_EQ(WriteMulti(profile, {{Sig("QX53"), Pattern(4, 30)}}), 1);
  const Bytes expected =
      Join({Head(ProfileHeader(), 196, {{Sig("QX51"), 164, 16}, {Sig("QX53"), 180, 16}}),
            Slice(old, 156, 8), DataTag(Pattern(4, 21)), DataTag(Pattern(4, 30))});
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, ReplacingTheFirstOfDataOutOfTableOrder) {
  const std::string path = Store(OutOfOrder());
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(12, 30)), 1);
  const Bytes expected =
      Join({Head(ProfileHeader(), 196, {{Sig("QX51"), 172, 24}, {Sig("QX53"), 196, 16}}),
            DataTag(Pattern(12, 30)), DataTag(Pattern(4, 22)), DataTag(Pattern(4, 21))});
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, ReplacingTheLastOfDataOutOfTableOrderEndsTheFileWithIt) {
  const std::string path = Store(OutOfOrder());
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX53"), Pattern(12, 30)), 1);
  const Bytes expected =
      Join({Head(ProfileHeader(), 196, {{Sig("QX51"), 172, 16}, {Sig("QX53"), 156, 24}}),
            DataTag(Pattern(12, 30))});
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, AppendingToDataOutOfTableOrder) {
  const Bytes old = OutOfOrder();
  const std::string path = Store(old);
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX60"), Pattern(4, 30)), 1);
  const Bytes expected =
      Join({Head(ProfileHeader(), 216,
                 {{Sig("QX51"), 184, 16}, {Sig("QX53"), 168, 16}, {Sig("QX60"), 200, 16}}),
            Slice(old, 168, 16), DataTag(Pattern(4, 22)), DataTag(Pattern(4, 30))});
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, AppendingSeveralToDataOutOfTableOrderChainsBehindTheLastEntry) {
  const Bytes old = OutOfOrder();
  const std::string path = Store(old);
  VKCLProfile profile(path, 0);
  ASSERT_EQ(WriteMulti(profile, {{Sig("QX60"), Pattern(4, 30)}}), 1);
  const Bytes expected =
      Join({Head(ProfileHeader(), 216,
                 {{Sig("QX51"), 184, 16}, {Sig("QX53"), 168, 16}, {Sig("QX60"), 184, 16}}),
            Slice(old, 168, 16), DataTag(Pattern(4, 30))});
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, BytesBehindTheStatedSizeAreCutByAReplacement) {
  const std::vector<ImageTag> tags = {{Sig("QX51"), DataTag(Pattern(4, 1))},
                                      {Sig("QX53"), DataTag(Pattern(4, 2))}};
  const std::string path = Store(Join({ProfileImage(ProfileHeader(), tags), Pattern(100, 40)}));
  VKCLProfile profile(path, 0);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(5, 3)), 1);
  const Bytes expected = ProfileImage(
      ProfileHeader(), {{Sig("QX51"), DataTag(Pattern(5, 3))}, {Sig("QX53"), tags[1].data}});
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, BytesBehindTheStatedSizeStayWhereNothingIsAppendedOverThem) {
  const Bytes stated = OneTag(Pattern(4, 1));
  const Bytes old = Join({stated, Pattern(100, 40)});
  const Bytes expected = ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag(Pattern(4, 1))},
                                                        {Sig("QX53"), DataTag(Pattern(4, 2))}});
  for (const bool several : {false, true}) {
    const std::string path = Store(old);
    VKCLProfile profile(path, 0);
    ASSERT_EQ(several ? WriteMulti(profile, {{Sig("QX53"), Pattern(4, 2)}})
                      : Write(profile, Sig("QX53"), Pattern(4, 2)),
              1);
    const Bytes rest = Slice(old, expected.size(), old.size() - expected.size());
    EXPECT_TRUE(SameBytes(ReadFile(path), Join({expected, rest}))) << several;
    EXPECT_TRUE(HoldsTableOf(profile, expected)) << several;
  }
}

// ---------------------------------------------------------------------------------------------
// Failure

TEST_F(VKCLProfileWrite, AFailedUpdateOfAnotherSizeReportsTheNewSize) {
  const Bytes image = ProfileImage(ProfileHeader(), FiveTags());
  const std::string path = Store(image);
  VKCLProfile profile(path, 0);
  std::filesystem::remove(path);
  for (const std::size_t length : {31u, 2u}) {
    EXPECT_EQ(Write(profile, Sig("QX53"), Pattern(length, 9)), 0);
    Bytes live = image;
    SetBig32(live, 132 + 12 * 2 + 8, static_cast<std::uint32_t>(length + 12));
    EXPECT_TRUE(HoldsTableOf(profile, live));  // no offset, no other size, not the file's size
    EXPECT_EQ(profile.GetTagSize(static_cast<icTagSignature>(Sig("QX53"))), length + 12);
    EXPECT_EQ(profile.isValidICC(), 1);
    EXPECT_FALSE(std::filesystem::exists(path));
  }
}

TEST_F(VKCLProfileWrite, OtherFailuresLeaveTheObjectAsItWas) {
  const Bytes image = ProfileImage(ProfileHeader(), FiveTags());
  const std::string path = Store(image);
  VKCLProfile profile(path, 0);
  std::filesystem::remove(path);
  EXPECT_EQ(Write(profile, Sig("QX53"), Pattern(8, 9)), 0);  // of the same size
  EXPECT_EQ(Write(profile, Sig("QX70"), Pattern(8, 9)), 0);
  EXPECT_EQ(WriteMulti(profile, {{Sig("QX70"), {1}}}), 0);
  EXPECT_TRUE(HoldsTableOf(profile, image));
  EXPECT_FALSE(std::filesystem::exists(path));  // no write creates what was a valid profile
}

TEST_F(VKCLProfileWrite, AStatedSizeBeyondTheFileStopsEveryRewrite) {
  for (const std::uint32_t more : {1u, 4u, 1000u, 0x7FFFFFFFu, 0xFFFFFFFFu - 400u}) {
    Bytes image = ProfileImage(ProfileHeader(), FiveTags());
    SetBig32(image, 0, static_cast<std::uint32_t>(image.size()) + more);
    const std::string path = Store(image);
    VKCLProfile profile(path, 0);
    EXPECT_EQ(Write(profile, Sig("QX70"), {1}), 0) << more;
    EXPECT_EQ(WriteMulti(profile, {{Sig("QX70"), {1}}}), 0) << more;
    ExpectNothingChanged(profile, image);
    EXPECT_EQ(Write(profile, Sig("QX53"), Pattern(30, 9)), 0) << more;
    ExpectOnlyTheLiveSizeChanged(profile, image, 2, 42);
  }
}

TEST_F(VKCLProfileWrite, AStatedSizeSmallerThanTheTableStopsEveryRewrite) {
  for (const std::uint32_t size : {0u, 1u, 131u, 132u, 132u + 5 * 12 - 1}) {
    Bytes image = ProfileImage(ProfileHeader(), FiveTags());
    SetBig32(image, 0, size);
    const std::string path = Store(image);
    VKCLProfile profile(path, 0);
    EXPECT_EQ(Write(profile, Sig("QX70"), {1}), 0) << size;
    EXPECT_EQ(WriteMulti(profile, {{Sig("QX70"), {1}}}), 0) << size;
    ExpectNothingChanged(profile, image);
    EXPECT_EQ(Write(profile, Sig("QX53"), Pattern(30, 9)), 0) << size;
    ExpectOnlyTheLiveSizeChanged(profile, image, 2, 42);
  }
}

TEST_F(VKCLProfileWrite, AStatedSizeSmallerThanAnEmptyTableStopsAppends) {
  for (const std::uint32_t size : {0u, 131u}) {
    Bytes image = RawImage(ProfileHeader(), {}, Pattern(8, 1));
    SetBig32(image, 0, size);
    VKCLProfile profile(Store(image), 0);
    EXPECT_EQ(Write(profile, Sig("QX70"), {1}), 0) << size;
    EXPECT_EQ(WriteMulti(profile, {{Sig("QX70"), {1}}}), 0) << size;
    ExpectNothingChanged(profile, image);
  }
}

TEST_F(VKCLProfileWrite, AWriteOfTheSameLengthDoesNotNeedTheStatedSize) {
  for (const std::uint32_t size : {0u, 131u, 0xFFFFFFFFu}) {
    Bytes image = OneTag(Pattern(4, 1));
    SetBig32(image, 0, size);
    Bytes expected = OneTag(Pattern(4, 2));
    SetBig32(expected, 0, size);
    const std::string path = Store(image);
    VKCLProfile profile(path, 0);
    EXPECT_EQ(Write(profile, Sig("QX51"), Pattern(4, 2)), 1) << size;
    EXPECT_TRUE(SameBytes(ReadFile(path), expected)) << size;
  }
}

TEST_F(VKCLProfileWrite, AFileThatShrankSinceItWasOpenedIsNotRewritten) {
  const Bytes image = ProfileImage(ProfileHeader(), FiveTags());
  const Bytes cut = Slice(image, 0, image.size() - 1);
  const std::string path = Store(image);
  VKCLProfile profile(path, 0);
  WriteFile(path, cut);
  EXPECT_EQ(Write(profile, Sig("QX70"), {1}), 0);
  EXPECT_EQ(WriteMulti(profile, {{Sig("QX70"), {1}}}), 0);
  EXPECT_EQ(Write(profile, Sig("QX51"), Pattern(30, 9)), 0);
  EXPECT_TRUE(SameBytes(ReadFile(path), cut));
}

TEST_F(VKCLProfileWrite, OffsetsOutsideTheFileStopTheWritesThatNeedThem) {
  // 188 bytes: head of 156, two tags of 16.
  const Bytes body = Join({DataTag(Pattern(4, 1)), DataTag(Pattern(4, 2))});
  for (const std::uint32_t offset : {189u, 5000u, 0x7FFFFFFFu, 0xFFFFFFF3u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(offset);
    const Bytes first =
        RawImage(ProfileHeader(), {{Sig("QX51"), offset, 16}, {Sig("QX53"), 172, 16}}, body);
    VKCLProfile profile(Store(first), 0);
    EXPECT_EQ(Write(profile, Sig("QX51"), Pattern(4, 9)), 0);
    EXPECT_EQ(Write(profile, Sig("QX70"), {1}), 0);
    EXPECT_EQ(WriteMulti(profile, {{Sig("QX70"), {1}}}), 0);
    ExpectNothingChanged(profile, first);

    const Bytes last =
        RawImage(ProfileHeader(), {{Sig("QX51"), 156, 16}, {Sig("QX53"), offset, 16}}, body);
    VKCLProfile updated(Store(last), 0);
    EXPECT_EQ(Write(updated, Sig("QX53"), Pattern(30, 9)), 0);
    ExpectOnlyTheLiveSizeChanged(updated, last, 1, 42);
    VKCLProfile before(Store(last), 0);
    EXPECT_EQ(Write(before, Sig("QX51"), Pattern(30, 9)), 0);
    ExpectOnlyTheLiveSizeChanged(before, last, 0, 42);
  }
}

TEST_F(VKCLProfileWrite, AnOffsetInTheHeadCannotBeReplacedByAnotherSize) {
  const Bytes image = RawImage(ProfileHeader(), {{Sig("QX51"), 156, 16}, {Sig("QX53"), 100, 16}},
                               Join({DataTag(Pattern(4, 1)), DataTag(Pattern(4, 2))}));
  VKCLProfile profile(Store(image), 0);
  EXPECT_EQ(Write(profile, Sig("QX53"), Pattern(30, 9)), 0);
  ExpectOnlyTheLiveSizeChanged(profile, image, 1, 42);
}

TEST_F(VKCLProfileWrite, AHostileSizeOfTheTagItselfIsNotReplaced) {
  for (const std::uint32_t size : {0xFFFFFFFFu, 0xFFFFFFF0u, 0x80000000u}) {
    const Bytes image = RawImage(ProfileHeader(), {{Sig("QX51"), 144, size}}, Pattern(16, 1));
    VKCLProfile profile(Store(image), 0);
    EXPECT_EQ(Write(profile, Sig("QX51"), Pattern(4, 9)), 0) << size;
    ExpectOnlyTheLiveSizeChanged(profile, image, 0, 16);
  }
}

TEST_F(VKCLProfileWrite, AnAppendBeyondWhat32BitsCanStateIsRefused) {
  const Bytes image = OneTag(Pattern(4, 1));
  const auto size = static_cast<std::uint32_t>(image.size());
  const std::string path = Store(image);
  // There is only one byte: nothing of a payload is looked at before its length is refused.
  const char byte = 'x';
  // 12 for the entry and 12 for the head; the longest payload that fits, and one byte more.
  const std::uint32_t overTheLimit = (0xFFFFFFFFu - size - 24) / 4 * 4 + 1;
  for (const std::uint32_t length :
       {overTheLimit, 0xFFFFFFF0u, 0xFFFFFFF1u, 0xFFFFFFF3u, 0xFFFFFFF4u, 0xFFFFFFFFu}) {
    VKCLProfile profile(path, 0);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX53, &byte, length), 0) << length;
    ExpectNothingChanged(profile, image);
  }
}

TEST_F(VKCLProfileWrite, AnEntrySizeBeyond32BitsIsRefused) {
  const Bytes image = OneTag(Pattern(4, 1));
  const std::string path = Store(image);
  const char byte = 'x';
  for (const std::uint32_t length : {0xFFFFFFF4u, 0xFFFFFFFFu}) {
    VKCLProfile profile(path, 0);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX51, &byte, length), 0) << length;
    ExpectNothingChanged(profile, image);  // the live table has no room for such a size
  }
}

TEST_F(VKCLProfileWrite, AReplacementBeyondWhat32BitsCanStateIsRefused) {
  const Bytes image = OneTag(Pattern(4, 1));
  const std::string path = Store(image);
  const char byte = 'x';
  for (const std::uint32_t size : {0xFFFFFFF3u, 0xFFFFFFF0u, 0xFFFFFFFFu - 143}) {
    VKCLProfile profile(path, 0);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX51, &byte, size - 12), 0) << size;
    EXPECT_TRUE(SameBytes(ReadFile(path), image)) << size;
    EXPECT_EQ(profile.header.size, image.size()) << size;
  }
}

TEST_F(VKCLProfileWrite, SeveralThatAreTogetherTooLongAreRefused) {
  const Bytes image = OneTag(Pattern(4, 1));
  VKCLProfile profile(Store(image), 0);
  char byte = 'x';
  VKPrivateTag tags[3];
  for (VKPrivateTag& tag : tags) {
    tag.SetSignature(QX53);
    tag.data = &byte;
    tag.size = 0x55555550;  // three of them, with their heads, are just too many
  }
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(tags, 3), 0);
  tags[1].size = 0xFFFFFFFF;
  tags[0].size = tags[2].size = 1;
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(tags, 3), 0);
  tags[1].size = 0xFFFFFFF4;  // with its head it is 0 in 32 bits
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(tags, 3), 0);
  ExpectNothingChanged(profile, image);
  for (VKPrivateTag& tag : tags) tag.data = nullptr;
}

TEST_F(VKCLProfileWrite, LengthsAbove32BitsAreNotCut) {
  if constexpr (kWideLong) {
    const unsigned long tooLong = static_cast<unsigned long>(0x100000000ull + 4);
    const Bytes image = OneTag(Pattern(4, 1));
    const std::string path = Store(image);
    Bytes payload = Pattern(4, 2);
    VKCLProfile profile(path, 0);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX51, payload.data(), tooLong), 0);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX53, payload.data(), tooLong), 0);
    ExpectNothingChanged(profile, image);
    const std::string absent = dir_.File("absent.icc");
    VKCLProfile created(absent, 4);
    EXPECT_EQ(created.WriteVKPrivateTag(QX53, payload.data(), tooLong), 0);
    EXPECT_FALSE(std::filesystem::exists(absent));
  }
}

TEST_F(VKCLProfileWrite, NullArgumentsAreRefused) {
  const Bytes image = ProfileImage(ProfileHeader(), FiveTags());
  VKCLProfile profile(Store(image), 0);
  EXPECT_EQ(profile.WriteVKPrivateTag(nullptr), 0);
  EXPECT_EQ(profile.WriteVKPrivateTag(QX70, nullptr, 1), 0);
  EXPECT_EQ(profile.WriteVKPrivateTag(QX51, nullptr, 6), 0);
  EXPECT_EQ(profile.WriteVKPrivateTag(QX51, nullptr, 7), 0);
  VKPrivateTag tag;
  tag.SetSignature(QX70);
  tag.size = 1;
  EXPECT_EQ(profile.WriteVKPrivateTag(&tag), 0);
  TagArray tags({{Sig("QX70"), {1}}, {Sig("QX71"), {2}}});
  delete[] tags[1].data;
  tags[1].data = nullptr;
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(tags.get(), 2), 0);
  ExpectNothingChanged(profile, image);

  const std::string absent = dir_.File("absent.icc");
  VKCLProfile created(absent, 4);
  EXPECT_EQ(created.WriteVKPrivateTag(QX70, nullptr, 1), 0);
  EXPECT_EQ(created.WriteVKPrivateTag(nullptr), 0);
  EXPECT_EQ(created.isValidICC(), 0);
  EXPECT_FALSE(std::filesystem::exists(absent));
}

// One kind of write into the profile of FiveTags, and what it makes of them.
struct WriteKind {
  std::function<int(VKCLProfile&)> write;
  std::function<void(std::vector<ImageTag>&)> change;
  int resized;  // index of the entry whose live size a failure changes, or -1
};

// Each system call fails once: the write either succeeds in full, or reports failure and leaves
// the file as it was.
void ExpectInFullOrNotAtAll(const TempDir& dir, const WriteKind& kind) {
  const Bytes before = ProfileImage(ProfileHeader(), FiveTags());
  std::vector<ImageTag> tags = FiveTags();
  kind.change(tags);
  const Bytes after = ProfileImage(ProfileHeader(), tags);
  const int handles = OpenHandles();
  for (const Fault fault :
       {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
    int failures = 0;
    bool reached = true;
    for (std::size_t which = 0; reached && which < 100; ++which) {
      SCOPED_TRACE(::testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      const std::string path = dir.Write("a.icc", before);
      VKCLProfile profile(path, 0);
      int result = -1;
      {
        const FaultAt at(which, fault);
        result = kind.write(profile);
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(OpenHandles(), handles);
      if (result == 1) {
        EXPECT_TRUE(SameBytes(ReadFile(path), after));
        EXPECT_TRUE(HoldsTableOf(profile, after));
        continue;
      }
      ++failures;
      EXPECT_EQ(result, 0);
      if (kind.resized < 0) {
        ExpectNothingChanged(profile, before);
      } else {
        const auto index = static_cast<std::size_t>(kind.resized);
        ExpectOnlyTheLiveSizeChanged(profile, before, index, TableOf(after)[index].size);
      }
    }
    EXPECT_FALSE(reached);  // every call had its turn
    const bool harmless = fault == Fault::Short || fault == Fault::Interrupted;
    EXPECT_EQ(failures == 0, harmless) << "fault " << static_cast<int>(fault);
  }
}

TEST_F(VKCLProfileWrite, ALongerReplacementIsDoneInFullOrNotAtAll) {
  ExpectInFullOrNotAtAll(
      dir_, {[](VKCLProfile& p) { return Write(p, Sig("QX53"), Pattern(90, 71)); },
             [](std::vector<ImageTag>& t) { t[2].data = DataTag(Pattern(90, 71)); }, 2});
}

TEST_F(VKCLProfileWrite, AShorterReplacementIsDoneInFullOrNotAtAll) {
  ExpectInFullOrNotAtAll(dir_, {[](VKCLProfile& p) { return Write(p, Sig("QX51"), {}); },
                                [](std::vector<ImageTag>& t) { t[0].data = DataTag({}); }, 0});
}

TEST_F(VKCLProfileWrite, AnAppendIsDoneInFullOrNotAtAll) {
  ExpectInFullOrNotAtAll(dir_,
                         {[](VKCLProfile& p) { return Write(p, Sig("QX70"), Pattern(33, 72)); },
                          [](std::vector<ImageTag>& t) {
                            t.push_back({Sig("QX70"), DataTag(Pattern(33, 72))});
                          },
                          -1});
}

TEST_F(VKCLProfileWrite, AnAppendOfSeveralIsDoneInFullOrNotAtAll) {
  ExpectInFullOrNotAtAll(
      dir_,
      {[](VKCLProfile& p) {
         return WriteMulti(p, {{Sig("QX70"), Pattern(33, 73)}, {Sig("QX71"), Pattern(2, 74)}});
       },
       [](std::vector<ImageTag>& t) {
         t.push_back({Sig("QX70"), DataTag(Pattern(33, 73))});
         t.push_back({Sig("QX71"), DataTag(Pattern(2, 74))});
       },
       -1});
}

// ---------------------------------------------------------------------------------------------
// Creating

// Puts the host east of Greenwich while it lives, so that local time and UTC differ everywhere.
class EasternTime {
 public:
#if defined(_WIN32)
  EasternTime() { Set(kZone); }
  ~EasternTime() { Set(""); }
#else
  EasternTime() {
    const char* const old = std::getenv("TZ");
    if (old != nullptr) old_ = old;
    Set(kZone);
  }
  ~EasternTime() { Set(old_ ? old_->c_str() : nullptr); }
#endif
  EasternTime(const EasternTime&) = delete;
  EasternTime& operator=(const EasternTime&) = delete;

 private:
#if defined(_WIN32)
  static constexpr const char* kZone = "EST-05:30";
  static void Set(const char* zone) {
    _putenv_s("TZ", zone);
    _tzset();
  }
#else
  static constexpr const char* kZone = "EAST-05:30";
  static void Set(const char* zone) {
    if (zone != nullptr) {
      setenv("TZ", zone, 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

  std::optional<std::string> old_;
#endif
};

// The moment that the date in a header means as local time.
std::time_t LocalDate(const Bytes& image) {
  const auto field = [&](std::size_t i) { return image[24 + 2 * i] * 256 + image[25 + 2 * i]; };
  std::tm local = {};
  local.tm_year = field(0) - 1900;
  local.tm_mon = field(1) - 1;
  local.tm_mday = field(2);
  local.tm_hour = field(3);
  local.tm_min = field(4);
  local.tm_sec = field(5);
  const std::tm stated = local;
  const std::time_t moment = std::mktime(&local);
  // A field out of its range (a month counted from 0, say) would have been carried.
  EXPECT_EQ(local.tm_mon, stated.tm_mon);
  EXPECT_EQ(local.tm_mday, stated.tm_mday);
  EXPECT_EQ(local.tm_hour, stated.tm_hour);
  return moment;
}

// The created header but for its size, colour space and date.
Bytes CreatedImage(std::uint32_t size, const std::string& colorSpace, const Bytes& date,
                   const Bytes& behindHeader) {
  return Join({Big32(size), HexBytes("4C696E6F 02000000 70727472"),
               Bytes(colorSpace.begin(), colorSpace.end()), HexBytes("4C616220"), date,
               HexBytes("61637370 4D534654 00000000 00000000 00000000 00000000 00000000 00000000"
                        "0000F6D4 00010000 0000D32B 51584352"),
               Bytes(44), behindHeader});
}

TEST_F(VKCLProfileWrite, CreatesAProfileWithJustTheTagByteForByte) {
  const EasternTime zone;
  const std::string path = dir_.File("new.icc");
  VKCLProfile profile(path, 4);
  ASSERT_EQ(profile.isValidICC(), 0);
  const std::time_t from = std::time(nullptr);
  ASSERT_EQ(Write(profile, Sig("QX64"), {1, 2, 3, 4, 5}), 1);
  const std::time_t to = std::time(nullptr);
  const Bytes image = ReadFile(path);
  ASSERT_EQ(image.size(), 164u);
  EXPECT_GE(LocalDate(image), from);
  EXPECT_LE(LocalDate(image), to);
  EXPECT_TRUE(
      SameBytes(image, CreatedImage(0xA4, "CMYK", Slice(image, 24, 12),
                                    HexBytes("00000001"
                                             "51583634 00000090 00000011"
                                             "64617461 00000000 00000001 01020304 05000000"))));
  EXPECT_EQ(profile.isValidICC(), 1);
  EXPECT_EQ(profile.isValidOutputICC(), 1);
  EXPECT_EQ(profile.channelCount, 4);
  EXPECT_TRUE(HoldsTableOf(profile, image));
  // The header in memory is the one in the file.
  icHeader header;
  std::memcpy(&header, image.data(), 128);
  ProfilePeer::ReverseICCHeader(header);
  EXPECT_EQ(std::memcmp(&profile.header, &header, 128), 0);
  const VKCLProfile reopened(path, 0);
  EXPECT_EQ(reopened.isValidOutputICC(), 1);
  EXPECT_EQ(reopened.channelCount, 4);
}

TEST_F(VKCLProfileWrite, ChannelCounts3To16GiveTheColourSpaceOfTheCreatedProfile) {
  const char* const spaces[] = {"RGB ", "CMYK", "5CLR", "6CLR", "7CLR", "8CLR", "9CLR",
                                "ACLR", "BCLR", "CCLR", "DCLR", "ECLR", "FCLR", "GCLR"};
  for (int channels = 3; channels <= 16; ++channels) {
    const std::string path = dir_.File(std::to_string(channels));
    VKCLProfile profile(path, channels);
    ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(4, 1)), 1) << channels;
    const Bytes image = ReadFile(path);
    EXPECT_TRUE(SameBytes(image, CreatedImage(160, spaces[channels - 3], Slice(image, 24, 12),
                                              Join({HexBytes("00000001 51583531 00000090 00000010"),
                                                    DataTag(Pattern(4, 1))}))))
        << channels;
    EXPECT_EQ(profile.channelCount, channels);
    const VKCLProfile reopened(path, 0);
    EXPECT_EQ(reopened.isValidOutputICC(), 1) << channels;
    EXPECT_EQ(reopened.channelCount, channels);
  }
}

// The channel count decides, not what the object's header was set to before.
TEST_F(VKCLProfileWrite, ACreatedProfileHasTheColourSpaceOfItsChannelsWhateverWasSetBefore) {
  for (const int mode : {16, 512}) {
    const std::string path = dir_.File("new.icc");
    VKCLProfile profile(path, 4);
    profile.UpdateHeaderColorSpace(mode);
    EXPECT_EQ(profile.GetColorSpace(), mode == 16 ? Sig("CMY ") : Sig("RGB "));
    ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(5, 1)), 1);
    EXPECT_EQ(profile.GetColorSpace(), Sig("CMYK"));
    EXPECT_EQ(vkcl::testing::Big32At(ReadFile(path), 16), Sig("CMYK"));
    std::filesystem::remove(path);
  }
}

TEST_F(VKCLProfileWrite, OtherChannelCountsCreateNothing) {
  for (const int channels : {0, 1, 2, 17, 18, 256 + 4, -1, -4, INT_MAX, INT_MIN}) {
    const std::string path = dir_.File("new.icc");
    VKCLProfile profile(path, channels);
    EXPECT_EQ(Write(profile, Sig("QX51"), {1}), 0) << channels;
    EXPECT_FALSE(std::filesystem::exists(path)) << channels;
    EXPECT_EQ(profile.isValidICC(), 0) << channels;
    EXPECT_EQ(profile.tagCount, 0u) << channels;
    EXPECT_EQ(profile.tagTable, nullptr) << channels;
    const std::string broken = dir_.Write("broken.icc", Pattern(200, 1));
    VKCLProfile other(broken, channels);
    EXPECT_EQ(Write(other, Sig("QX51"), {1}), 0) << channels;
    EXPECT_TRUE(SameBytes(ReadFile(broken), Pattern(200, 1))) << channels;
  }
}

TEST_F(VKCLProfileWrite, ACreatedProfileTakesThePlaceOfAFileThatIsNone) {
  Bytes wrongMagic = ProfileImage(ProfileHeader(), FiveTags());
  wrongMagic[36] = 'A';
  const Bytes whole = ProfileImage(ProfileHeader(), FiveTags());
  for (const Bytes& old : {Bytes(), Pattern(3, 1), Pattern(5000, 2), wrongMagic,
                           Slice(whole, 0, 127), Slice(whole, 0, 140)}) {
    const std::string path = Store(old);
    VKCLProfile profile(path, 4);
    ASSERT_EQ(profile.isValidICC(), 0);
    ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(2, 9)), 1);
    const Bytes image = ReadFile(path);
    EXPECT_TRUE(SameBytes(image, CreatedImage(160, "CMYK", Slice(image, 24, 12),
                                              Join({HexBytes("00000001 51583531 00000090 0000000E"),
                                                    DataTag(Pattern(2, 9)),
                                                    {0, 0}}))));
    EXPECT_TRUE(HoldsTableOf(profile, image));
  }
}

TEST_F(VKCLProfileWrite, AProfileMayBeCreatedWithAnEmptyPayload) {
  const std::string path = dir_.File("new.icc");
  VKCLProfile profile(path, 3);
  ASSERT_EQ(profile.WriteVKPrivateTag(Private(Sig("abcd")), nullptr, 0), 1);
  const Bytes image = ReadFile(path);
  EXPECT_TRUE(SameBytes(
      image, CreatedImage(156, "RGB ", Slice(image, 24, 12),
                          Join({HexBytes("00000001 61626364 00000090 0000000C"), DataTag({})}))));
}

TEST_F(VKCLProfileWrite, ACreatedProfileIsWrittenToLikeAnyOther) {
  const std::string path = dir_.File("new.icc");
  VKCLProfile profile(path, 16);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(5, 1)), 1);
  const Bytes header = Slice(ReadFile(path), 0, 128);
  ASSERT_EQ(Write(profile, Sig("QX53"), Pattern(6, 2)), 1);
  ASSERT_EQ(Write(profile, Sig("QX51"), Pattern(17, 3)), 1);
  ASSERT_EQ(WriteMulti(profile, {{Sig("QX54"), Pattern(1, 4)}}), 1);
  const Bytes expected = ProfileImage(header, {{Sig("QX51"), DataTag(Pattern(17, 3))},
                                               {Sig("QX53"), DataTag(Pattern(6, 2))},
                                               {Sig("QX54"), DataTag(Pattern(1, 4))}});
  EXPECT_TRUE(SameBytes(ReadFile(path), expected));
  EXPECT_TRUE(HoldsTableOf(profile, expected));
}

TEST_F(VKCLProfileWrite, AProfileThatCannotBeCreatedLeavesTheObjectAsItWas) {
  const std::string path = dir_.File("absent/new.icc");
  VKCLProfile profile(path, 4);
  const icHeader before = profile.header;
  EXPECT_EQ(Write(profile, Sig("QX51"), {1}), 0);
  EXPECT_EQ(profile.isValidICC(), 0);
  EXPECT_EQ(profile.tagCount, 0u);
  EXPECT_EQ(profile.tagTable, nullptr);
  EXPECT_EQ(std::memcmp(&profile.header, &before, 128), 0);
  EXPECT_EQ(profile.channelCount, 4);
}

TEST_F(VKCLProfileWrite, ACreatedProfileTooLongFor32BitsIsRefused) {
  const std::string path = dir_.File("new.icc");
  const char byte = 'x';
  for (const std::uint32_t length : {0xFFFFFFFFu - 155, 0xFFFFFFF0u, 0xFFFFFFF4u, 0xFFFFFFFFu}) {
    VKCLProfile profile(path, 4);
    EXPECT_EQ(profile.WriteVKPrivateTag(QX51, &byte, length), 0) << length;
    EXPECT_FALSE(std::filesystem::exists(path)) << length;
    EXPECT_EQ(profile.isValidICC(), 0) << length;
  }
}

TEST_F(VKCLProfileWrite, AProfileInvalidForItsColourSpaceCreatesNothing) {
  const Bytes image = ProfileImage(ProfileHeader(Sig("prtr"), Sig("Lab ")), FiveTags());
  VKCLProfile profile(Store(image), 0);
  ASSERT_EQ(profile.isValidICC(), 0);
  EXPECT_EQ(Write(profile, Sig("QX51"), {1}), 0);
  EXPECT_EQ(WriteMulti(profile, {{Sig("QX51"), {1}}}), 0);
  ExpectNothingChanged(profile, image);
}

TEST_F(VKCLProfileWrite, CreatingFailsInFullOrNotAtAll) {
  const Bytes old = Pattern(300, 1);
  const std::string path = dir_.File("b.icc");
  for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
    int failures = 0;
    bool reached = true;
    for (std::size_t which = 0; reached && which < 100; ++which) {
      SCOPED_TRACE(::testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      dir_.Write("b.icc", old);
      VKCLProfile profile(path, 4);
      int result = -1;
      {
        const FaultAt at(which, fault);
        result = Write(profile, Sig("QX51"), Pattern(400, 2));
        reached = FaultAt::Reached();
      }
      if (result == 1) {
        const Bytes image = ReadFile(path);
        ASSERT_EQ(image.size(), 144u + 412u);
        ASSERT_TRUE(SameBytes(Slice(image, 144, 412), DataTag(Pattern(400, 2))));
        ASSERT_EQ(profile.isValidICC(), 1);
      } else {
        ++failures;
        ASSERT_EQ(result, 0);
        ASSERT_TRUE(SameBytes(ReadFile(path), old));
        ASSERT_EQ(profile.isValidICC(), 0);
      }
    }
    ASSERT_FALSE(reached);
    EXPECT_GT(failures, 0);
  }
}

// ---------------------------------------------------------------------------------------------
// The pieces of an image

TEST_F(VKCLProfileWrite, TableEntriesAreBigEndianAndTheCursorAdvances) {
  const icTag tags[] = {{static_cast<icTagSignature>(0x01020304), 0x05060708, 0x090A0B0C},
                        {static_cast<icTagSignature>(0xF1F2F3F4), 0xF5F6F7F8, 0xF9FAFBFC}};
  Bytes room(28, 0xCC);
  void* cursor = room.data();
  ProfilePeer::WriteTagTable(&cursor, tags, 2);
  EXPECT_EQ(cursor, room.data() + 24);
  EXPECT_EQ(room, HexBytes("0102030405060708090A0B0C F1F2F3F4F5F6F7F8F9FAFBFC CCCCCCCC"));
  cursor = room.data();
  ProfilePeer::WriteTagTable(&cursor, tags, 0);
  EXPECT_EQ(cursor, room.data());
}

}  // namespace
