// Whole private tags stored and removed by an edit, and in a copy.
#include <algorithm>

#include "edit/ProfileEdit.h"
#include "support/FolderNames.h"
#include "support/ImageBuilder.h"
#include "support/PrivatePayloads.h"
#include "support/SystemCalls.h"

namespace {

using vkcl::EditState;
using vkcl::ProfileEdit;
using vkcl::TagChange;
using vkcl::WriteChangedCopy;
using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FoldersInMemory;
using vkcl::testing::ImageTag;
using vkcl::testing::Names;
using vkcl::testing::NamesIn;
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
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

using Tags = std::vector<ImageTag>;

TagChange Stored(std::uint32_t signature, const Bytes& element) {
  return {.signature = signature, .element = {element.begin(), element.end()}};
}

Tags SomeTags() {
  return {{Sig("desc"), TextTag("a profile")},
          {Sig("QX53"), DataTag(Pattern(8, 1))},
          {Sig("A2B0"), DataTag(Pattern(61, 2))}};
}

/// Two of those stored, one of them new.
std::vector<TagChange> SomeChanges() {
  return {Stored(Sig("QX53"), DataTag(Pattern(30, 5))), Stored(Sig("QX99"), {1, 2, 3})};
}
Bytes ImageWithChanges() {
  Tags tags = SomeTags();
  tags[1].data = DataTag(Pattern(30, 5));
  tags.push_back({Sig("QX99"), {1, 2, 3}});
  return ProfileImage(ProfileHeader(), tags);
}
Bytes SomeImage() { return ProfileImage(ProfileHeader(), SomeTags()); }

TEST(StoreTags, TakeThePlaceWithTheEdit) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", SomeImage());
  ProfileEdit edit{AFilePath(path)};
  ASSERT_EQ(edit.state(), EditState::Open);
  ASSERT_TRUE(edit.StoreTags(SomeChanges()));
  EXPECT_EQ(edit.state(), EditState::Open);
  EXPECT_EQ(edit.bytesNow(), ImageWithChanges().size());
  EXPECT_TRUE(SameBytes(ReadFile(path), SomeImage())) << "not before Commit";
  EXPECT_EQ(edit.Commit(), EditState::Done);
  EXPECT_TRUE(SameBytes(ReadFile(path), ImageWithChanges()));
  EXPECT_EQ(NamesIn(dir.path()), Names{"p.icc"});
}

TEST(StoreTags, LeaveAHandlerOnTheNewCopy) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", SomeImage());
  ProfileEdit edit{AFilePath(path)};
  ASSERT_TRUE(edit.StoreTags(std::vector{Stored(Sig("QX74"), DataTag(Payload().Int(7)))}));
  ASSERT_NE(edit.handler(), nullptr);
  EXPECT_EQ(edit.handler()->IsWizardICC(), 7);
  // And the store goes on with it.
  EXPECT_EQ(edit.handler()->WriteVKWizardFlag(8), 1);
  ASSERT_TRUE(edit.StoreTags(std::vector{Stored(Sig("QX75"), DataTag({'x', 0}))}));
  EXPECT_EQ(edit.Commit(), EditState::Done);
  Tags tags = SomeTags();
  tags.push_back({Sig("QX74"), DataTag(Payload().Int(8))});
  tags.push_back({Sig("QX75"), DataTag({'x', 0})});
  EXPECT_TRUE(SameBytes(ReadFile(path), ProfileImage(ProfileHeader(), tags)));
}

TEST(StoreTags, DropTheWorkWithTheEdit) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", SomeImage());
  {
    ProfileEdit edit{AFilePath(path)};
    ASSERT_TRUE(edit.StoreTags(SomeChanges()));
  }
  EXPECT_TRUE(SameBytes(ReadFile(path), SomeImage()));
  EXPECT_EQ(NamesIn(dir.path()), Names{"p.icc"});
}

TEST(StoreTags, ThatAreNotPossibleFailTheEdit) {
  const TempDir dir;
  const Bytes image = ProfileImage(ProfileHeader(), {{Sig("QX53"), DataTag({1})}});
  const std::string path = dir.Write("p.icc", image);
  {
    ProfileEdit edit{AFilePath(path)};
    ASSERT_EQ(edit.state(), EditState::Open);
    EXPECT_FALSE(edit.StoreTags(
        std::vector<TagChange>{{.signature = Sig("QX53"), .remove = true, .element = {}}}))
        << "no tag is left";
    EXPECT_NE(edit.state(), EditState::Open);
    EXPECT_NE(edit.state(), EditState::Done);
    EXPECT_EQ(edit.handler(), nullptr);
    EXPECT_NE(edit.Commit(), EditState::Done);
    EXPECT_FALSE(edit.StoreTags(SomeChanges()));
  }
  EXPECT_TRUE(SameBytes(ReadFile(path), image));
  EXPECT_EQ(NamesIn(dir.path()), Names{"p.icc"});
}

TEST(StoreTags, AreRefusedByAnEditThatIsNotOpen) {
  const TempDir dir;
  ProfileEdit edit{AFilePath(dir.File("absent"))};
  EXPECT_FALSE(edit.StoreTags(SomeChanges()));
  EXPECT_EQ(edit.state(), EditState::NoProfile);
  EXPECT_TRUE(NamesIn(dir.path()).empty());
}

TEST(StoreTags, LetTheColourSpaceFollow) {
  const TempDir dir;
  Bytes payload = SamplePayload("QX53");
  const std::string path = dir.Write(
      "p.icc", ProfileImage(ProfileHeader(),
                            {{Sig("cprt"), TextTag("x")}, {Sig("QX53"), DataTag(payload)}}));
  const Bytes mode = Payload().Int(512);
  std::copy(mode.begin(), mode.end(), payload.begin() + 412);
  ProfileEdit edit{AFilePath(path)};
  ASSERT_TRUE(edit.StoreTags(std::vector{Stored(Sig("QX53"), DataTag(payload))}));
  ASSERT_EQ(edit.Commit(), EditState::Done);
  const Bytes stored = ReadFile(path);
  EXPECT_EQ(std::string(stored.begin() + 16, stored.begin() + 20), "RGB ");
}

TEST(StoreTags, EveryFaultLeavesTheOldProfileOrTheNew) {
  const FoldersInMemory inMemory;
  for (const Fault fault : {Fault::Error, Fault::Short, Fault::FullDisk, Fault::FailedClose}) {
    for (std::size_t which = 0;; ++which) {
      ASSERT_LT(which, 1000u);
      const TempDir dir;
      const std::string path = dir.Write("p.icc", SomeImage());
      const int open = OpenHandles();
      bool done = false;
      bool reached = false;
      {
        const FaultAt at(which, fault);
        {
          ProfileEdit edit{AFilePath(path)};
          const bool stored = edit.StoreTags(SomeChanges());
          EXPECT_TRUE(stored || edit.state() != EditState::Open);
          done = edit.Commit() == EditState::Done;
          EXPECT_TRUE(stored || !done);
        }
        reached = FaultAt::Reached();
      }
      EXPECT_TRUE(SameBytes(ReadFile(path), done ? ImageWithChanges() : SomeImage()))
          << "call " << which << ", fault " << static_cast<int>(fault);
      EXPECT_EQ(OpenHandles(), open);
      if (!reached) {
        EXPECT_TRUE(done);
        break;
      }
    }
  }
}

// Copies.

TEST(ChangedCopies, AreCreatedOrReplaced) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", SomeImage());
  const VKCLProfile profile{AFilePath(path), 0};
  for (const bool exists : {false, true}) {
    if (exists) dir.Write("to.icc", Pattern(5000, 1));
    ASSERT_TRUE(WriteChangedCopy(profile, SomeChanges(), AFilePath(dir.File("to.icc"))));
    EXPECT_TRUE(SameBytes(ReadFile(dir.File("to.icc")), ImageWithChanges()));
    EXPECT_TRUE(SameBytes(ReadFile(path), SomeImage()));
    EXPECT_EQ(NamesIn(dir.path()), (Names{"p.icc", "to.icc"}));
  }
}

TEST(ChangedCopies, ThatAreRefusedLeaveThePlaceAsItWas) {
  const TempDir dir;
  Bytes cut = SomeImage();
  SetBig32(cut, 132 + 8, 0xFFFFFFF0);
  const std::string path = dir.Write("p.icc", cut);
  const VKCLProfile profile{AFilePath(path), 0};
  EXPECT_FALSE(WriteChangedCopy(profile, SomeChanges(), AFilePath(dir.File("to.icc"))));
  EXPECT_EQ(NamesIn(dir.path()), Names{"p.icc"});
  dir.Write("to.icc", {1, 2, 3});
  EXPECT_FALSE(WriteChangedCopy(profile, SomeChanges(), AFilePath(dir.File("to.icc"))));
  EXPECT_TRUE(SameBytes(ReadFile(dir.File("to.icc")), {1, 2, 3}));
  EXPECT_FALSE(WriteChangedCopy(profile, {}, AFilePath(dir.File("none/to.icc"))));
  EXPECT_EQ(NamesIn(dir.path()), (Names{"p.icc", "to.icc"}));
}

TEST(ChangedCopies, EveryFaultLeavesTheOldFileOrTheNew) {
  const FoldersInMemory inMemory;
  for (std::size_t which = 0;; ++which) {
    ASSERT_LT(which, 1000u);
    const TempDir dir;
    const VKCLProfile profile{AFilePath(dir.Write("p.icc", SomeImage())), 0};
    const std::string to = dir.Write("to.icc", {1, 2, 3});
    bool good = false;
    bool reached = false;
    {
      const FaultAt at(which, Fault::Error);
      good = WriteChangedCopy(profile, SomeChanges(), AFilePath(to));
      reached = FaultAt::Reached();
    }
    EXPECT_TRUE(SameBytes(ReadFile(to), good ? ImageWithChanges() : Bytes{1, 2, 3})) << which;
    if (!reached) {
      EXPECT_TRUE(good);
      break;
    }
  }
}

}  // namespace
