#include "platform/profiler/MetaElement.h"

#include <algorithm>
#include <string>

#include "support/ImageBuilder.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

using profiler::HasMetaElement;
using profiler::MetaElementIn;
using profiler::ReadMetaElement;
using profiler::ReplaceMetaElement;

// What the file says and what its bytes say is the same.
Bytes MetaOf(const Bytes& image) {
  const TempDir dir;
  const Bytes read = ReadMetaElement(dir.Write("p.icc", image));
  EXPECT_EQ(MetaElementIn(image), read);
  return read;
}

// The file after a replacement; empty when it was refused, and then the file is as it was.
Bytes Replaced(const Bytes& image, const Bytes& element) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", image);
  if (ReplaceMetaElement(path, image, element)) return ReadFile(path);
  EXPECT_TRUE(SameBytes(ReadFile(path), image));
  return {};
}

const Bytes kElement = Pattern(22, 1);
const Bytes kNew = Pattern(35, 2);

TEST(MetaElement, IsTheDataOfItsEntry) {
  EXPECT_EQ(MetaOf(ProfileImage(ProfileHeader(), {{Sig("desc"), Pattern(9, 3)},
                                                  {Sig("meta"), kElement},
                                                  {Sig("cprt"), Pattern(5, 4)}})),
            kElement);
  EXPECT_TRUE(MetaOf(ProfileImage(ProfileHeader(), {{Sig("desc"), Pattern(9, 3)}})).empty());
  EXPECT_TRUE(MetaOf(ProfileImage(ProfileHeader(), {})).empty());
}

// What Little CMS refuses a whole profile for is nothing to an element that is not concerned.
TEST(MetaElement, IsReadWhateverTheOtherEntriesAre) {
  std::vector<ImageTag> tags;
  for (int i = 0; i < 3; ++i) tags.push_back({Sig("QX51"), DataTag(Pattern(8, 5))});
  for (std::uint32_t i = 0; i < 400; ++i) tags.push_back({Sig("aaaa") + i, Pattern(1, 6)});
  tags.push_back({Sig("meta"), kElement});
  const Bytes many = ProfileImage(ProfileHeader(), tags);
  EXPECT_EQ(MetaOf(many), kElement);

  Bytes beyond = ProfileImage(ProfileHeader(), {{Sig("QX51"), {1}}, {Sig("meta"), kElement}});
  SetBig32(beyond, 140, 0xFFFFFFF0);
  EXPECT_EQ(MetaOf(beyond), kElement);
}

TEST(MetaElement, OfSeveralEntriesIsTheFirstOneWithData) {
  const Bytes image = RawImage(
      ProfileHeader(),
      {{Sig("meta"), 0, 9}, {Sig("meta"), 192, 0}, {Sig("meta"), 196, 4}, {Sig("meta"), 192, 4}},
      Join({Bytes(12), Pattern(8, 7)}));
  EXPECT_EQ(MetaOf(image), Slice(image, 196, 4));
  EXPECT_TRUE(HasMetaElement(image));
  EXPECT_FALSE(HasMetaElement(RawImage(ProfileHeader(), {{Sig("meta"), 0, 9}}, Bytes(20))));
  EXPECT_FALSE(HasMetaElement({}));
}

TEST(MetaElement, IsNotReadWhereItIsNotWhole) {
  Bytes image = ProfileImage(ProfileHeader(), {{Sig("meta"), kElement}});
  const std::size_t end = 144 + kElement.size();
  image.resize(end);
  EXPECT_EQ(MetaOf(image), kElement);
  image.resize(end - 1);
  EXPECT_TRUE(MetaOf(image).empty());
  EXPECT_TRUE(HasMetaElement(image));
  EXPECT_TRUE(Replaced(image, kNew).empty());
  SetBig32(image, 136, 0xFFFFFFFF);
  EXPECT_TRUE(MetaOf(image).empty());
}

TEST(MetaElement, OfWhatIsNoProfileIsNone) {
  const Bytes whole = ProfileImage(ProfileHeader(), {{Sig("meta"), kElement}});
  for (std::size_t length = 0; length < 144; ++length) {
    EXPECT_TRUE(MetaOf(Slice(whole, 0, length)).empty()) << length;
    EXPECT_TRUE(Replaced(Slice(whole, 0, length), kNew).empty()) << length;
  }
  Bytes other = whole;
  other[39] = 'q';
  EXPECT_TRUE(MetaOf(other).empty());
  EXPECT_TRUE(Replaced(other, kNew).empty());
  const TempDir dir;
  EXPECT_TRUE(ReadMetaElement(dir.File("absent")).empty());
  EXPECT_TRUE(ReadMetaElement(dir.path().string()).empty());
}

// The start of the file, the rest of a long table, the element where it lies beyond.
TEST(MetaElement, IsReadByAsFewCallsAsThereAreStretches) {
  struct Row {
    std::uint32_t others;
    std::size_t before;  // bytes of another tag
    std::size_t reads;
  };
  for (const Row& row : {Row{0, 0, 1}, Row{0, 5000, 2}, Row{400, 5000, 3}}) {
    const TempDir dir;
    std::vector<ImageTag> tags(row.others, {Sig("none"), {}});
    if (row.before > 0) tags.push_back({Sig("big "), Pattern(row.before, 8)});
    tags.push_back({Sig("meta"), kElement});
    const std::string path = dir.Write("p.icc", ProfileImage(ProfileHeader(), tags));
    const CallLog log;
    EXPECT_EQ(ReadMetaElement(path), kElement);
    EXPECT_EQ(log.Count(CallKind::Read), row.reads);
    EXPECT_EQ(log.Count(CallKind::Open), 1u);
    EXPECT_EQ(log.Count(CallKind::Close), 1u);
  }
}

TEST(MetaElement, ThatCannotBeReadIsNone) {
  const TempDir dir;
  std::vector<ImageTag> tags(400, {Sig("none"), {}});
  tags.push_back({Sig("big "), Pattern(5000, 8)});
  tags.push_back({Sig("meta"), kElement});
  const std::string path = dir.Write("p.icc", ProfileImage(ProfileHeader(), tags));
  for (std::size_t which = 0; which < 5; ++which) {  // open, length, three reads
    const FaultAt at(which, Fault::Error);
    EXPECT_TRUE(ReadMetaElement(path).empty()) << which;
  }
}

TEST(MetaElement, TakesThePlaceOfTheOldOneAndLeavesTheOthers) {
  const std::vector<ImageTag> tags = {{Sig("desc"), Pattern(9, 3)},
                                      {Sig("meta"), kElement},
                                      {Sig("QX51"), Pattern(20, 4)},
                                      {Sig("QX51"), Pattern(16, 5)}};
  std::vector<ImageTag> expected = tags;
  expected[1].data = kNew;
  EXPECT_TRUE(SameBytes(Replaced(ProfileImage(ProfileHeader(), tags), kNew),
                        ProfileImage(ProfileHeader(), expected)));
}

TEST(MetaElement, IsAddedBehindTheOthers) {
  std::vector<ImageTag> tags = {{Sig("QX51"), Pattern(9, 3)}, {Sig("QX51"), Pattern(9, 3)}};
  const Bytes before = ProfileImage(ProfileHeader(), tags);
  tags.push_back({Sig("meta"), kNew});
  EXPECT_TRUE(SameBytes(Replaced(before, kNew), ProfileImage(ProfileHeader(), tags)));
}

// Of the entries without data, which keep their numbers, it takes the first of its own.
TEST(MetaElement, IsGivenToAnEntryWithoutData) {
  const Bytes image = RawImage(
      ProfileHeader(),
      {{Sig("dead"), 0, 7}, {Sig("meta"), 0, 9}, {Sig("meta"), 180, 0}, {Sig("desc"), 180, 8}},
      Pattern(8, 9));
  EXPECT_TRUE(SameBytes(Replaced(image, kNew), RawImage(ProfileHeader(),
                                                        {{Sig("dead"), 0, 7},
                                                         {Sig("meta"), 180, 35},
                                                         {Sig("meta"), 180, 0},
                                                         {Sig("desc"), 216, 8}},
                                                        Join({kNew, {0}, Pattern(8, 9)}))));
}

TEST(MetaElement, LeavesSharedDataShared) {
  const Bytes image = RawImage(
      ProfileHeader(), {{Sig("A2B0"), 168, 8}, {Sig("meta"), 176, 4}, {Sig("A2B1"), 168, 8}},
      Pattern(12, 9));
  EXPECT_TRUE(
      SameBytes(Replaced(image, kNew),
                RawImage(ProfileHeader(),
                         {{Sig("A2B0"), 168, 8}, {Sig("meta"), 176, 35}, {Sig("A2B1"), 168, 8}},
                         Join({Pattern(8, 9), kNew, {0}}))));
}

// Another program's element that shares its bytes with the old one goes on having them.
TEST(MetaElement, LeavesBytesToWhoeverSharedThemWithTheOldOne) {
  const Bytes image =
      RawImage(ProfileHeader(), {{Sig("meta"), 156, 8}, {Sig("mine"), 156, 8}}, Pattern(8, 9));
  const Bytes after = Replaced(image, kNew);
  EXPECT_EQ(MetaElementIn(after), kNew);
  const ImageEntry mine = TableOf(after).at(1);
  EXPECT_EQ(Slice(after, mine.offset, mine.size), Pattern(8, 9));
}

TEST(MetaElement, IsNotAddedAsThe101stEntryButReplacedAmongMore) {
  std::vector<ImageTag> tags(99, {Sig("none"), Pattern(1, 2)});
  EXPECT_FALSE(Replaced(ProfileImage(ProfileHeader(), tags), kNew).empty());
  tags.push_back(tags.front());
  EXPECT_TRUE(Replaced(ProfileImage(ProfileHeader(), tags), kNew).empty());
  tags.push_back(tags.front());  // Little CMS does not open it before either
  EXPECT_FALSE(Replaced(ProfileImage(ProfileHeader(), tags), kNew).empty());
  tags.back() = {Sig("meta"), kElement};
  const Bytes after = Replaced(ProfileImage(ProfileHeader(), tags), kNew);
  EXPECT_EQ(TableOf(after).size(), 101u);
  EXPECT_EQ(MetaElementIn(after), kNew);
}

TEST(MetaElement, IsNotEmptyAndReplacesNothingWhereATagIsNotWhole) {
  Bytes image = ProfileImage(ProfileHeader(), {{Sig("desc"), Pattern(8, 1)}});
  EXPECT_TRUE(Replaced(image, {}).empty());
  image.pop_back();
  EXPECT_TRUE(Replaced(image, kNew).empty());
}

}  // namespace
}  // namespace vkcl::testing
