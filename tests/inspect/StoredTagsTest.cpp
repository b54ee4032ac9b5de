// The private tags of a profile as they stand in the file, and their names in documents.
#include "inspect/StoredTags.h"

#include "support/ImageBuilder.h"

namespace {

using vkcl::ParseStoredTagName;
using vkcl::StoredTag;
using vkcl::StoredTagName;
using vkcl::StoredTagsOf;
using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::HexBytes;
using vkcl::testing::ImageEntry;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RawImage;
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

/// The tags of a profile with this content; the file's length is given where it is another one.
std::vector<StoredTag> TagsOf(const Bytes& image) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", image);
  const VKCLProfile profile{AFilePath(path), 0};
  EXPECT_EQ(profile.isValidICC(), 1);
  AFile file;
  EXPECT_TRUE(file.open(AFilePath(path), AFile::Read));
  return StoredTagsOf(profile, file);
}

TEST(StoredTags, AreThePrivateOnesInTableOrder) {
  const auto tags = TagsOf(ProfileImage(ProfileHeader(), {{Sig("QX75"), DataTag(Pattern(5, 1))},
                                                          {Sig("cprt"), TextTag("x")},
                                                          {Sig("QX50"), DataTag({})},
                                                          {Sig("QZ50"), DataTag(Pattern(4, 1))},
                                                          {0x51580000, DataTag(Pattern(1, 1))}}));
  ASSERT_EQ(tags.size(), 3u);
  EXPECT_EQ(tags[0].signature, Sig("QX75"));
  EXPECT_EQ(tags[0].offset, 192u);
  EXPECT_EQ(tags[0].size, 17u);
  EXPECT_EQ(tags[0].held, 17u);
  EXPECT_TRUE(tags[0].isData);
  EXPECT_EQ(tags[0].payloadOffset(), 204u);
  EXPECT_EQ(tags[0].payloadSize(), 5u);
  EXPECT_EQ(tags[1].signature, Sig("QX50"));
  EXPECT_TRUE(tags[1].isData);
  EXPECT_EQ(tags[1].payloadSize(), 0u);
  EXPECT_EQ(tags[2].signature, 0x51580000u);
  EXPECT_TRUE(TagsOf(ProfileImage(ProfileHeader(), {{Sig("cprt"), TextTag("x")}})).empty());
}

TEST(StoredTags, CountTheEntriesOfOneSignature) {
  const auto tags = TagsOf(ProfileImage(ProfileHeader(), {{Sig("QX53"), DataTag({1})},
                                                          {Sig("QX54"), DataTag({2})},
                                                          {Sig("QX53"), DataTag({3})},
                                                          {Sig("QX53"), DataTag({4})},
                                                          {Sig("QX54"), DataTag({5})}}));
  ASSERT_EQ(tags.size(), 5u);
  std::vector<std::uint32_t> occurrences;
  for (const StoredTag& tag : tags) occurrences.push_back(tag.occurrence);
  EXPECT_EQ(occurrences, (std::vector<std::uint32_t>{1, 1, 2, 3, 2}));
}

TEST(StoredTags, KnowWhichAreBinaryData) {
  Bytes reserved = DataTag(Pattern(4, 1));
  reserved[7] = 1;
  Bytes high = DataTag(Pattern(4, 1));
  high[8] = 1;
  Bytes upper = DataTag(Pattern(4, 1));
  upper[0] = 'D';
  const std::vector<Bytes> others = {TextTag("a text"),
                                     DataTag({1}, 0),
                                     DataTag({1}, 2),
                                     reserved,
                                     high,
                                     upper,
                                     HexBytes("646174610000000000"),
                                     {},
                                     {'d', 'a', 't', 'a'},
                                     Bytes(12)};
  for (const Bytes& element : others) {
    const auto tags = TagsOf(ProfileImage(
        ProfileHeader(), {{Sig("cprt"), TextTag("some text")}, {Sig("QX60"), element}}));
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_FALSE(tags[0].isData) << ::testing::PrintToString(element);
    EXPECT_EQ(tags[0].held, element.size());
  }
}

TEST(StoredTags, HoldWhatIsInTheFile) {
  const auto held = [](std::uint32_t offset, std::uint32_t size) {
    // Head 156, 20 bytes of data.
    const Bytes image =
        RawImage(ProfileHeader(), {{Sig("QX60"), offset, size}, {Sig("cprt"), 156, 4}},
                 DataTag(Pattern(8, 1)));
    const auto tags = TagsOf(image);
    EXPECT_EQ(tags.size(), 1u);
    return tags.empty() ? StoredTag() : tags[0];
  };
  EXPECT_EQ(held(156, 20).held, 20u);
  EXPECT_TRUE(held(156, 20).isData);
  EXPECT_EQ(held(156, 21).held, 20u);
  EXPECT_FALSE(held(156, 21).isData) << "it is not whole";
  EXPECT_EQ(held(156, 0xFFFFFFFF).held, 20u);
  EXPECT_EQ(held(176, 5).held, 0u);
  EXPECT_EQ(held(177, 5).held, 0u);
  EXPECT_EQ(held(0xFFFFFFFF, 0xFFFFFFFF).held, 0u);
  EXPECT_EQ(held(0xFFFFFFF0, 0x10).held, 0u);
  EXPECT_EQ(held(0, 132).held, 132u) << "the header's bytes are bytes of the file, too";
}

// Names.

TEST(StoredTagNames, AreTheSignatureAndWhichOneItIs) {
  EXPECT_EQ(StoredTagName(Sig("QX53"), 1), "QX53");
  EXPECT_EQ(StoredTagName(Sig("QX53"), 2), "QX53#2");
  EXPECT_EQ(StoredTagName(Sig("QX99"), 4294967295u), "QX99#4294967295");
  EXPECT_EQ(StoredTagName(0x51580001, 1), "0x51580001");
  EXPECT_EQ(StoredTagName(0x5158FFFF, 12), "0x5158ffff#12");
  EXPECT_EQ(StoredTagName(0x51581B07, 1), "0x51581b07");
  EXPECT_EQ(StoredTagName(0x51580A35, 1), "0x51580a35");
}

TEST(StoredTagNames, AreReadBack) {
  // Every signature that begins with "QX".
  for (std::uint32_t low = 0; low < 0x10000; ++low) {
    for (const std::uint32_t which : {1u, 2u, 10u, 4294967295u}) {
      const std::uint32_t signature = 0x51580000u | low;
      const std::string name = StoredTagName(signature, which);
      for (const char c : name) ASSERT_TRUE(c >= ' ' && c <= '~') << low;
      std::uint32_t back = 0;
      std::uint32_t occurrence = 0;
      ASSERT_TRUE(ParseStoredTagName(name, back, occurrence)) << name;
      ASSERT_EQ(back, signature) << name;
      ASSERT_EQ(occurrence, which) << name;
    }
  }
}

TEST(StoredTagNames, AreNothingElse) {
  const std::vector<std::string> wrong = {"",
                                          "QX5",
                                          "QX533",
                                          "cprt",
                                          "qx53",
                                          "QX53#",
                                          "QX53#0",
                                          "QX53#-1",
                                          "QX53#+2",
                                          "QX53# 2",
                                          "QX53#2 ",
                                          "QX53#4294967296",
                                          "QX53#x",
                                          "QX53#2#3",
                                          " QX53",
                                          "QX53 ",
                                          "0x5158",
                                          "0x515800011",
                                          "0x63707274",
                                          "0x5158000g",
                                          "51580001",
                                          "0x",
                                          "ColorParam#",
                                          "QX53#1x",
                                          std::string("QX5\0", 4) + "#2x",
                                          "QX53#99999999999999999999",
                                          "QX53#0x2",
                                          "Q\x1B[3"};
  for (const std::string& name : wrong) {
    std::uint32_t signature = 0;
    std::uint32_t occurrence = 0;
    EXPECT_FALSE(ParseStoredTagName(name, signature, occurrence)) << name;
  }
}

}  // namespace
