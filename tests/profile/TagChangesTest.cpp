// Profiles written anew with private tags stored and removed.
#include <algorithm>
#include <map>

#include "profile/TagLayout.h"
#include "support/ImageBuilder.h"
#include "support/PrivatePayloads.h"
#include "support/SystemCalls.h"

namespace {

using vkcl::TagChange;
using vkcl::WriteArranged;
using vkcl::WriteChanged;
using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::ImageEntry;
using vkcl::testing::ImageTag;
using vkcl::testing::Join;
using vkcl::testing::OpenHandles;
using vkcl::testing::Pattern;
using vkcl::testing::Payload;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RawImage;
using vkcl::testing::ReadFile;
using vkcl::testing::SameBytes;
using vkcl::testing::SamplePayload;
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

using Tags = std::vector<ImageTag>;
using Changes = std::vector<TagChange>;

TagChange Stored(std::uint32_t signature, const Bytes& element, std::uint32_t occurrence = 1) {
  return {.signature = signature,
          .occurrence = occurrence,
          .element = {element.begin(), element.end()}};
}

TagChange Removed(std::uint32_t signature, std::uint32_t occurrence = 1) {
  return {.signature = signature, .occurrence = occurrence, .remove = true, .element = {}};
}

Tags SomeTags() {
  return {{Sig("desc"), TextTag("a profile")},    {Sig("QX53"), DataTag(Pattern(8, 1))},
          {Sig("A2B0"), DataTag(Pattern(61, 2))}, {Sig("QX52"), DataTag(Pattern(13, 3))},
          {Sig("QX53"), DataTag(Pattern(9, 4))},  {Sig("cprt"), TextTag("nobody's")}};
}

/// What is written of a profile; nothing when it was refused. The profile stays as it is.
Bytes Changed(const Bytes& image, const Changes& changes) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", image);
  const int open = OpenHandles();
  bool good = false;
  {
    const VKCLProfile profile{AFilePath(path), 4};
    AFile to;
    EXPECT_TRUE(to.open(AFilePath(dir.File("to")), AFile::ReadWrite | AFile::New));
    good = WriteChanged(profile, changes, to);
    EXPECT_TRUE(to.close());
  }
  EXPECT_EQ(OpenHandles(), open);
  EXPECT_TRUE(SameBytes(ReadFile(path), image));
  return good ? ReadFile(dir.File("to")) : Bytes{};
}

Bytes Changed(const Changes& changes) {
  return Changed(ProfileImage(ProfileHeader(), SomeTags()), changes);
}

Bytes Image(const Tags& tags, const Bytes& header = ProfileHeader()) {
  return ProfileImage(header, tags);
}

TEST(TagChanges, ChangeNothingWhenThereAreNone) {
  EXPECT_TRUE(SameBytes(Changed({}), Image(SomeTags())));
}

TEST(TagChanges, LeaveATemporaryProfileToItsObject) {
  const TempDir dir;
  const std::string path = dir.Write("p.tmp", Image(SomeTags()));
  {
    const VKCLProfile profile{AFilePath(path), 4};
    AFile to;
    ASSERT_TRUE(to.open(AFilePath(dir.File("to")), AFile::ReadWrite | AFile::New));
    EXPECT_TRUE(WriteChanged(profile, {}, to));
    EXPECT_TRUE(std::filesystem::exists(path));
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TagChanges, MeanTheFirstEntryWhenNothingElseIsSaid) {
  Tags tags = SomeTags();
  tags[1].data = DataTag(Pattern(3, 7));
  TagChange change;
  change.signature = Sig("QX53");
  change.element.assign(tags[1].data.begin(), tags[1].data.end());
  EXPECT_TRUE(SameBytes(Changed({change}), Image(tags)));
}

TEST(TagChanges, KeepThePlaceOfAnEntry) {
  for (const std::size_t length : {0u, 1u, 8u, 11u, 500u}) {
    Tags tags = SomeTags();
    tags[1].data = DataTag(Pattern(length, 7));
    EXPECT_TRUE(SameBytes(Changed({Stored(Sig("QX53"), tags[1].data)}), Image(tags)));
    tags = SomeTags();
    tags[4].data = DataTag(Pattern(length, 7));
    EXPECT_TRUE(SameBytes(Changed({Stored(Sig("QX53"), tags[4].data, 2)}), Image(tags)));
  }
}

TEST(TagChanges, PutOtherEntriesBehindInTheirOrder) {
  Tags tags = SomeTags();
  tags.push_back({Sig("QX76"), DataTag(Pattern(8, 1))});
  tags.push_back({Sig("QX50"), DataTag(Pattern(3, 2))});
  tags.push_back({Sig("QX99"), {}});
  EXPECT_TRUE(SameBytes(Changed({Stored(Sig("QX76"), tags[6].data),
                                 Stored(Sig("QX50"), tags[7].data), Stored(Sig("QX99"), {})}),
                        Image(tags)));
}

TEST(TagChanges, PutLaterEntriesOfASignatureBehind) {
  Tags tags = SomeTags();
  tags.push_back({Sig("QX53"), DataTag({3})});
  tags.push_back({Sig("QX52"), DataTag({2})});
  EXPECT_TRUE(SameBytes(
      Changed({Stored(Sig("QX53"), tags[6].data, 3), Stored(Sig("QX52"), tags[7].data, 2)}),
      Image(tags)));
}

TEST(TagChanges, StoreEveryEntryInWhateverOrderTheyStand) {
  // As a program sorts their names: "QX53", "QX53#10", "QX53#11", "QX53#2" and so on.
  std::vector<std::string> names = {"1"};
  for (std::uint32_t i = 2; i <= 25; ++i) names.push_back(std::to_string(i));
  std::sort(names.begin(), names.end());
  Changes changes;
  for (const std::string& name : names) {
    const auto number = static_cast<std::uint32_t>(std::stoul(name));
    changes.push_back(Stored(Sig("QX53"), Pattern(number, number), number));
  }
  Tags tags = {{Sig("cprt"), TextTag("x")}};
  const Bytes clean = Image(tags);
  for (std::uint32_t i = 1; i <= 25; ++i) tags.push_back({Sig("QX53"), Pattern(i, i)});
  EXPECT_TRUE(SameBytes(Changed(clean, changes), Image(tags)));
  std::reverse(changes.begin(), changes.end());
  EXPECT_TRUE(SameBytes(Changed(clean, changes), Image(tags)));
  // Some are there already, and keep their places.
  EXPECT_TRUE(SameBytes(Changed(Image({{Sig("cprt"), TextTag("x")},
                                       {Sig("QX53"), {1}},
                                       {Sig("QX53"), DataTag(Pattern(90, 1))}}),
                                changes),
                        Image(tags)));
}

TEST(TagChanges, StoreALaterEntryWithoutThoseBeforeIt) {
  const Tags clean = {{Sig("cprt"), TextTag("x")}};
  EXPECT_TRUE(SameBytes(
      Changed(Image(clean),
              {Stored(Sig("QX53"), {2}, 2), Stored(Sig("QX74"), {3}), Stored(Sig("QX53"), {1})}),
      Image({clean[0], {Sig("QX53"), {1}}, {Sig("QX74"), {3}}, {Sig("QX53"), {2}}})));
  EXPECT_TRUE(SameBytes(Changed(Image(clean), {Stored(Sig("QX53"), {7}, 7)}),
                        Image({clean[0], {Sig("QX53"), {7}}})));
}

TEST(TagChanges, StoreThousandsOfTags) {
  Tags tags = {{Sig("cprt"), TextTag("x")}};
  const Bytes clean = Image(tags);
  Changes changes;
  Changes removals;
  std::map<std::uint32_t, std::uint32_t> seen;
  for (std::uint32_t i = 0; i < 60000; ++i) {
    const std::uint32_t signature = 0x51580000u + i * 7 % 5000;
    const Bytes element(i % 5, static_cast<unsigned char>(i));
    changes.push_back(Stored(signature, element, ++seen[signature]));
    removals.push_back(Removed(signature, seen[signature]));
    tags.push_back({signature, element});
  }
  const Bytes with = Changed(clean, changes);
  EXPECT_TRUE(with == Image(tags));
  EXPECT_TRUE(SameBytes(Changed(with, removals), clean));
}

TEST(TagChanges, RemoveEntries) {
  Tags tags = SomeTags();
  tags.erase(tags.begin() + 3);
  EXPECT_TRUE(SameBytes(Changed({Removed(Sig("QX52"))}), Image(tags)));
  tags.erase(tags.begin() + 3);
  EXPECT_TRUE(SameBytes(Changed({Removed(Sig("QX52")), Removed(Sig("QX53"), 2)}), Image(tags)));
  tags.erase(tags.begin() + 1);
  EXPECT_TRUE(SameBytes(
      Changed({Removed(Sig("QX53")), Removed(Sig("QX53"), 2), Removed(Sig("QX52"))}), Image(tags)));
}

TEST(TagChanges, RemoveTheFirstOfTwoAndKeepTheSecond) {
  Tags tags = SomeTags();
  tags.erase(tags.begin() + 1);
  EXPECT_TRUE(SameBytes(Changed({Removed(Sig("QX53"))}), Image(tags)));
  tags[3].data = DataTag({7});
  // Which one is meant is what it is in the profile, before anything is changed.
  EXPECT_TRUE(SameBytes(Changed({Removed(Sig("QX53")), Stored(Sig("QX53"), DataTag({7}), 2)}),
                        Image(tags)));
}

TEST(TagChanges, RemoveNothingWhereThereIsNothing) {
  EXPECT_TRUE(
      SameBytes(Changed({Removed(Sig("QX99")), Removed(Sig("QX53"), 3)}), Image(SomeTags())));
}

TEST(TagChanges, StoreAnyElement) {
  for (const Bytes& element : {Bytes{}, Bytes{1}, Pattern(11, 1), TextTag("x"), DataTag({}, 0)}) {
    Tags tags = SomeTags();
    tags[3].data = element;
    tags.push_back({0x51580001, element});
    EXPECT_TRUE(SameBytes(Changed({Stored(Sig("QX52"), element), Stored(0x51580001, element)}),
                          Image(tags)));
  }
}

TEST(TagChanges, StoreManyTagsInASmallProfile) {
  Tags tags = {{Sig("cprt"), TextTag("x")}};
  const Bytes clean = Image(tags);
  Changes changes;
  for (std::uint32_t i = 0; i < 600; ++i) {
    changes.push_back(Stored(0x51580000u + i, {}));
    tags.push_back({0x51580000u + i, {}});
  }
  EXPECT_TRUE(SameBytes(Changed(clean, changes), Image(tags)));
}

TEST(TagChanges, RefuseAProfileWithoutTags) {
  const Bytes image = Image({{Sig("QX53"), DataTag(Pattern(8, 1))}});
  EXPECT_TRUE(Changed(image, {Removed(Sig("QX53"))}).empty());
  EXPECT_FALSE(Changed(image, {Removed(Sig("QX53")), Stored(Sig("QX54"), {})}).empty());
}

TEST(TagChanges, KeepTheBytesOfOtherTagsWhateverTheLayout) {
  // Head 168; 'bbbb' is 'aaaa', gaps, and another order.
  const Bytes body = Pattern(200, 5);
  const Bytes image =
      RawImage(ProfileHeader(),
               {{Sig("aaaa"), 301, 13}, {Sig("QX53"), 168, 20}, {Sig("bbbb"), 301, 13}}, body);
  const Bytes shared = Slice(body, 301 - 168, 13);
  EXPECT_TRUE(
      SameBytes(Changed(image, {Stored(Sig("QX53"), {1, 2, 3})}),
                RawImage(ProfileHeader(),
                         {{Sig("aaaa"), 168, 13}, {Sig("QX53"), 184, 3}, {Sig("bbbb"), 168, 13}},
                         Join({shared, Bytes(3, 0), {1, 2, 3, 0}}))));
  EXPECT_TRUE(SameBytes(Changed(image, {Removed(Sig("QX53"))}),
                        RawImage(ProfileHeader(), {{Sig("aaaa"), 156, 13}, {Sig("bbbb"), 156, 13}},
                                 Join({shared, Bytes(3, 0)}))));
}

TEST(TagChanges, KeepSharedDataSharedUnlessTheyAreChanged) {
  const Bytes image = RawImage(
      ProfileHeader(), {{Sig("aaaa"), 168, 8}, {Sig("QX53"), 168, 8}, {Sig("bbbb"), 168, 8}},
      Pattern(8, 5));
  EXPECT_TRUE(SameBytes(Changed(image, {Stored(Sig("QX54"), {7})}),
                        RawImage(ProfileHeader(),
                                 {{Sig("aaaa"), 180, 8},
                                  {Sig("QX53"), 180, 8},
                                  {Sig("bbbb"), 180, 8},
                                  {Sig("QX54"), 188, 1}},
                                 Join({Pattern(8, 5), {7, 0, 0, 0}}))));
  EXPECT_TRUE(
      SameBytes(Changed(image, {Stored(Sig("QX53"), {7})}),
                RawImage(ProfileHeader(),
                         {{Sig("aaaa"), 168, 8}, {Sig("QX53"), 176, 1}, {Sig("bbbb"), 168, 8}},
                         Join({Pattern(8, 5), {7, 0, 0, 0}}))));
}

TEST(TagChanges, KeepASharedByteShared) {
  const Bytes image =
      RawImage(ProfileHeader(), {{Sig("aaaa"), 156, 1}, {Sig("bbbb"), 156, 1}}, {9, 0, 0, 0});
  EXPECT_TRUE(SameBytes(Changed(image, {}), image));
}

TEST(TagChanges, StoreATagThatIsMuchLongerThanTheProfile) {
  const Bytes image = Image({{Sig("cprt"), TextTag("x")}});
  const Bytes element = DataTag(Pattern(100 * image.size(), 3));
  EXPECT_TRUE(SameBytes(Changed(image, {Stored(Sig("QX60"), element)}),
                        Image({{Sig("cprt"), TextTag("x")}, {Sig("QX60"), element}})));
}

TEST(TagChanges, TakeThePlaceOfDamagedTagsOnly) {
  Bytes image = Image(SomeTags());
  SetBig32(image, 132 + 12 + 8, 0xFFFFFFF0);  // the first QX53
  Tags tags = SomeTags();
  tags[1].data = DataTag({9});
  EXPECT_TRUE(SameBytes(Changed(image, {Stored(Sig("QX53"), tags[1].data)}), Image(tags)));
  tags.erase(tags.begin() + 1);
  EXPECT_TRUE(SameBytes(Changed(image, {Removed(Sig("QX53"))}), Image(tags)));
  EXPECT_TRUE(Changed(image, {}).empty());
  EXPECT_TRUE(Changed(image, {Stored(Sig("QX52"), {1})}).empty());
  EXPECT_TRUE(Changed(image, {Stored(Sig("QX53"), {1}, 2)}).empty());
  Bytes standard = Image(SomeTags());
  SetBig32(standard, 132 + 8, 0xFFFFFFF0);
  EXPECT_TRUE(Changed(standard, {Stored(Sig("QX53"), {1})}).empty());
}

TEST(TagChanges, RefuseWhatIsNoProfile) {
  EXPECT_TRUE(Changed({1, 2, 3}, {Stored(Sig("QX53"), {1})}).empty());
  EXPECT_TRUE(Changed({}, {}).empty());
}

// The colour space of the header.

Bytes ColorParam(std::int32_t mode) {
  Bytes payload = SamplePayload("QX53");
  const Bytes number = Payload().Int(mode);
  std::copy(number.begin(), number.end(), payload.begin() + 412);
  return DataTag(payload);
}

std::string SpaceOf(const Bytes& image) {
  return image.empty() ? "refused" : std::string(image.begin() + 16, image.begin() + 20);
}

TEST(TagChanges, TheColourSpaceFollowsOtherColourParameters) {
  const Bytes header = ProfileHeader();
  const Bytes image = Image({{Sig("cprt"), TextTag("x")}, {Sig("QX53"), ColorParam(1)}});
  const auto space = [&](const Bytes& element) {
    return SpaceOf(Changed(image, {Stored(Sig("QX53"), element)}));
  };
  EXPECT_EQ(space(ColorParam(16)), "CMY ");
  EXPECT_EQ(space(ColorParam(512)), "RGB ");
  EXPECT_EQ(space(ColorParam(1)), "CMYK");
  EXPECT_EQ(space(ColorParam(17)), "CMYK");
  EXPECT_EQ(space(ColorParam(-1)), "CMYK");
  // Parameters that end with the colour mode have one; a byte less, and they have none.
  const Bytes parameters = ColorParam(16);
  EXPECT_EQ(space(Slice(parameters, 0, 12 + 412 + 4)), "CMY ");
  EXPECT_EQ(space(Slice(parameters, 0, 12 + 412 + 3)), "CMYK");
  EXPECT_EQ(space(DataTag({})), "CMYK");
  EXPECT_EQ(space({}), "CMYK");
  // Everything else of the header stays.
  const Bytes changed = Changed(image, {Stored(Sig("QX53"), ColorParam(16))});
  Bytes expected = Image({{Sig("cprt"), TextTag("x")}, {Sig("QX53"), ColorParam(16)}});
  const std::string cmy = "CMY ";
  std::copy(cmy.begin(), cmy.end(), expected.begin() + 16);
  EXPECT_TRUE(SameBytes(changed, expected));
}

TEST(TagChanges, TheColourSpaceStaysWhereNoOtherParametersAreStored) {
  const Tags tags = {{Sig("cprt"), TextTag("x")}, {Sig("QX53"), ColorParam(16)}};
  // A profile that says 'CMYK' although the mode is 16 comes back as it was.
  const Bytes image = Image(tags);
  EXPECT_EQ(SpaceOf(Changed(image, {})), "CMYK");
  EXPECT_EQ(SpaceOf(Changed(image, {Stored(Sig("QX53"), ColorParam(16))})), "CMYK");
  EXPECT_EQ(SpaceOf(Changed(image, {Removed(Sig("QX53"))})), "CMYK");
  EXPECT_EQ(SpaceOf(Changed(image, {Stored(Sig("QX53"), ColorParam(512), 2)})), "CMYK")
      << "readers take the first entry";
  Tags twice = tags;
  twice.push_back({Sig("QX53"), ColorParam(16)});
  EXPECT_EQ(SpaceOf(Changed(Image(twice), {Stored(Sig("QX53"), ColorParam(512), 2)})), "CMYK");
  // Into a profile without them.
  const Bytes clean = Image({{Sig("cprt"), TextTag("x")}});
  EXPECT_EQ(SpaceOf(Changed(clean, {Stored(Sig("QX53"), ColorParam(16))})), "CMYK");
}

// Faults.

TEST(TagChanges, EveryFaultIsTold) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", Image(SomeTags()));
  const Changes changes = {Stored(Sig("QX53"), DataTag(Pattern(100, 1))), Stored(Sig("QX54"), {1})};
  const Bytes expected = Changed(changes);
  ASSERT_FALSE(expected.empty());
  const VKCLProfile profile{AFilePath(path), 4};
  const int open = OpenHandles();
  for (std::size_t which = 0;; ++which) {
    ASSERT_LT(which, 1000u);
    std::filesystem::remove(dir.File("to"));
    AFile to;
    ASSERT_TRUE(to.open(AFilePath(dir.File("to")), AFile::ReadWrite | AFile::New));
    bool good = false;
    bool reached = false;
    {
      const FaultAt fault(which, Fault::Error);
      good = WriteChanged(profile, changes, to);
      reached = FaultAt::Reached();
    }
    EXPECT_TRUE(to.close());
    EXPECT_EQ(OpenHandles(), open);
    if (good) {
      EXPECT_TRUE(SameBytes(ReadFile(dir.File("to")), expected)) << "call " << which;
    }
    if (!reached) {
      EXPECT_TRUE(good);
      break;
    }
  }
}

}  // namespace
