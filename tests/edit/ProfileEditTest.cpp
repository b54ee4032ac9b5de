// Edits of profiles: what they make, what they refuse, and what is left of them when they fail.
#include "edit/ProfileEdit.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>

#include "platform/plinth/SiblingFile.h"
#include "support/FolderNames.h"
#include "support/ImageBuilder.h"
#include "support/OtherProcess.h"
#include "support/RealProfiles.h"
#include "support/SystemCalls.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif
#if defined(__linux__)
#include <sys/inotify.h>
#endif

namespace vkcl {

// For GoogleTest, which looks for it beside the state.
static void PrintTo(EditState state, std::ostream* out) { *out << EditStateText(state); }

}  // namespace vkcl

namespace {

using vkcl::EditState;
using vkcl::EditStateText;
using vkcl::ProfileEdit;
using vkcl::testing::ActionAt;
using vkcl::testing::ActionAtLocks;
using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::ConvertWithLcms;
using vkcl::testing::CurrentFolder;
using vkcl::testing::DataTag;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FoldersInMemory;
using vkcl::testing::ImageEntry;
using vkcl::testing::ImageTag;
using vkcl::testing::Join;
using vkcl::testing::LcmsView;
using vkcl::testing::Names;
using vkcl::testing::NamesIn;
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
using vkcl::testing::UnfinishedIn;
using vkcl::testing::WriteFile;

using Tags = std::vector<ImageTag>;
using HardLinks = ProfileEdit::HardLinks;

constexpr EditState kStates[] = {
    EditState::Open,        EditState::Done,       EditState::NoProfile,
    EditState::NotWritable, EditState::HardLinked, EditState::NoCopy,
    EditState::Changed,     EditState::Damaged,    EditState::NotPlaced};

/// The tags of the profiles below; the first private one has 8 bytes, the second 12.
Tags SomeTags() {
  return {{Sig("desc"), TextTag("a profile")},
          {Sig("QX53"), DataTag(Pattern(8, 1))},
          {Sig("A2B0"), DataTag(Pattern(61, 2))},
          {Sig("QX52"), DataTag(Pattern(12, 3))},
          {Sig("cprt"), TextTag("nobody's")}};
}

Bytes OrderedImage() { return ProfileImage(ProfileHeader(), SomeTags()); }

/// The same tags with the private one that is meant replaced, or added at the end.
Tags With(Tags tags, std::uint32_t sig, const Bytes& payload) {
  for (ImageTag& tag : tags) {
    if (tag.sig == sig) {
      tag.data = DataTag(payload);
      return tags;
    }
  }
  tags.push_back({sig, DataTag(payload)});
  return tags;
}

struct Layout {
  const char* name;
  Tags tags;
  Bytes image;
};

/// Profiles that the store would damage by one work or another.
std::vector<Layout> OtherLayouts() {
  std::vector<Layout> layouts;
  const auto add = [&](const char* name, const Tags& tags, const std::vector<std::uint32_t>& at,
                       std::size_t length) {
    std::vector<ImageEntry> table;
    const std::size_t head = 132 + 12 * tags.size();
    Bytes body(length - head, 0xEE);  // what no tag refers to
    for (std::size_t i = 0; i < tags.size(); ++i) {
      const Bytes& data = tags[i].data;
      table.push_back({tags[i].sig, at[i], static_cast<std::uint32_t>(data.size())});
      std::copy(data.begin(), data.end(), body.begin() + (at[i] - static_cast<long>(head)));
    }
    layouts.push_back({name, tags, RawImage(ProfileHeader(), table, body)});
  };
  // Head 192; data of 17, 20, 73, 24 and 16 bytes.
  const Tags tags = SomeTags();
  add("gap behind the table", tags, {200, 220, 240, 316, 340}, 356);
  add("gap between the data", tags, {192, 212, 240, 316, 340}, 356);
  add("gap at the end", tags, {192, 212, 232, 308, 332}, 360);
  add("data not at multiples of 4", tags, {193, 211, 231, 305, 329}, 348);
  add("another order", tags, {332, 312, 236, 212, 192}, 352);
  {
    Tags unpadded = tags;
    std::swap(unpadded[2], unpadded[4]);  // the tag of 73 bytes at the end
    add("unpadded end", unpadded, {192, 212, 232, 248, 272}, 345);
  }
  {
    Tags shared = tags;
    shared[4].data = shared[0].data;
    shared.push_back({Sig("QX75"), shared[1].data});
    // Head 204; 'cprt' is 'desc', 'QX75' is 'QX53'.
    add("shared blocks", shared, {204, 224, 244, 320, 204, 224}, 344);
    Tags both = tags;
    both[1].data = both[2].data;  // a private tag and a standard one
    add("a block shared by a private tag and another", both, {192, 212, 212, 288, 312}, 328);
    Tags part = tags;
    part[3].data = Slice(part[2].data, 12, 24);
    add("a tag within another", part, {192, 212, 232, 244, 308}, 324);
  }
  {
    Tags twice = tags;
    twice.push_back({Sig("A2B0"), DataTag(Pattern(30, 9))});
    twice.push_back({Sig("wtpt"), {}});
    // Head 216.
    add("one signature twice, and an empty tag", twice, {216, 236, 256, 332, 356, 376, 216}, 418);
  }
  Bytes longer = OrderedImage();
  longer.insert(longer.end(), 7, 0xEE);
  layouts.push_back({"a file longer than the profile", tags, longer});
  Bytes size = OrderedImage();
  SetBig32(size, 0, 200);
  layouts.push_back({"a size that is too small", tags, size});
  SetBig32(size, 0, 100000);
  layouts.push_back({"a size that is too large", tags, size});
  return layouts;
}

std::vector<Layout> AllLayouts() {
  std::vector<Layout> layouts = OtherLayouts();
  layouts.push_back({"in order", SomeTags(), OrderedImage()});
  return layouts;
}

bool IsPrivate(std::uint32_t sig) { return sig >> 16 == 0x5158; }

/// The bytes of every tag that is not private, in table order, as the file's own table tells them.
std::vector<std::pair<std::uint32_t, Bytes>> StandardTags(const Bytes& image) {
  std::vector<std::pair<std::uint32_t, Bytes>> tags;
  for (const ImageEntry& entry : TableOf(image)) {
    if (!IsPrivate(entry.sig)) tags.emplace_back(entry.sig, Slice(image, entry.offset, entry.size));
  }
  return tags;
}

VKCLProfile& ProfileOf(ProfileEdit& edit) { return *edit.handler()->GetProfilePtr(); }
std::string CopyOf(ProfileEdit& edit) { return ProfileOf(edit).filePath.str(); }

int Store(ProfileEdit& edit, VKPrivateTagSignature sig, const Bytes& payload) {
  return ProfileOf(edit).WriteVKPrivateTag(sig, payload.data(),
                                           static_cast<unsigned long>(payload.size()));
}

/// A profile alone in a folder.
class OneProfile {
 public:
  explicit OneProfile(const Bytes& image, const std::string& name = "p.icc")
      : name_(name), path(dir.Write(name, image)) {}

  AFilePath At() const { return AFilePath(path); }
  Bytes Content() const { return ReadFile(path); }
  /// The profile has the content, and nothing else is in the folder.
  void Expect(const Bytes& content) const {
    EXPECT_TRUE(SameBytes(Content(), content));
    EXPECT_EQ(NamesIn(dir.path()), Names{name_});
  }

 private:
  const std::string name_;

 public:
  const TempDir dir;
  const std::string path;
};

// ---- States ----

TEST(ProfileEdit, StatesHaveTextsOfTheirOwn) {
  std::set<std::string> texts;
  for (const EditState state : kStates) {
    const char* text = EditStateText(state);
    ASSERT_NE(text, nullptr);
    EXPECT_STRNE(text, "");
    texts.insert(text);
  }
  EXPECT_EQ(texts.size(), std::size(kStates));
}

TEST(ProfileEdit, OpenHasACopyBesideTheProfile) {
  const OneProfile p(OrderedImage());
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  ASSERT_NE(edit.handler(), nullptr);
  EXPECT_FALSE(edit.wasArranged());
  const std::filesystem::path copy = CopyOf(edit);
  EXPECT_TRUE(std::filesystem::equivalent(copy.parent_path(), p.dir.path()));
  EXPECT_EQ(UnfinishedIn(p.dir.path()), Names{copy.filename().string()});
  EXPECT_EQ(NamesIn(p.dir.path()).size(), 2u);
  EXPECT_TRUE(SameBytes(ReadFile(copy), OrderedImage()));
  EXPECT_EQ(edit.handler()->IsICCFile(), 1);
  EXPECT_EQ(ProfileOf(edit).channelCount, 4);
  EXPECT_TRUE(SameBytes(p.Content(), OrderedImage()));
}

TEST(ProfileEdit, ADroppedEditChangesNothing) {
  for (const Layout& layout : AllLayouts()) {
    SCOPED_TRACE(layout.name);
    const OneProfile p(layout.image);
    const int open = OpenHandles();
    {
      ProfileEdit edit(p.At());
      ASSERT_EQ(edit.state(), EditState::Open);
      EXPECT_EQ(Store(edit, QX53, Pattern(99, 7)), 1);
      EXPECT_TRUE(SameBytes(p.Content(), layout.image));
    }
    p.Expect(layout.image);
    EXPECT_EQ(OpenHandles(), open);
  }
}

void ExpectRefused(const OneProfile& p, const Bytes& image, EditState state, int channels = 0,
                   const ProfileEdit::LayoutTest& suits = {}) {
  const int open = OpenHandles();
  {
    ProfileEdit edit(p.At(), channels, suits);
    EXPECT_EQ(edit.state(), state);
    EXPECT_EQ(edit.handler(), nullptr);
    p.Expect(image);
    EXPECT_EQ(edit.Commit(), state);
    EXPECT_EQ(edit.state(), state);
    EXPECT_EQ(edit.handler(), nullptr);
  }
  p.Expect(image);
  EXPECT_EQ(OpenHandles(), open);
}

TEST(ProfileEdit, WhatIsNoProfileIsRefused) {
  Bytes noMagic = OrderedImage();
  noMagic[36] = 'b';
  Bytes longTable = OrderedImage();
  SetBig32(longTable, 128, 0x00FFFFFF);
  const Bytes cut = Slice(OrderedImage(), 0, 131);
  for (const Bytes& image : {Bytes{}, Bytes{1, 2, 3}, noMagic, longTable, cut}) {
    // With a number of channels the store would put a minimal profile there.
    for (const int channels : {0, 4}) {
      ExpectRefused(OneProfile(image), image, EditState::NoProfile, channels);
    }
  }
  const Bytes lab = ProfileImage(ProfileHeader(Sig("abst"), Sig("Lab ")), SomeTags());
  ExpectRefused(OneProfile(lab), lab, EditState::NoProfile);
}

TEST(ProfileEdit, WhereThereIsNoFileIsNoProfile) {
  const TempDir dir;
  std::filesystem::create_directory(dir.path() / "folder");
  dir.Write("file", {1});
  for (const std::string& path : {dir.File("absent"), dir.File("folder"), dir.File("absent/p.icc"),
                                  dir.File("file/p.icc"), std::string()}) {
    SCOPED_TRACE(path);
    for (const int channels : {0, 4}) {
      ProfileEdit edit(AFilePath(path), channels);
      EXPECT_EQ(edit.state(), EditState::NoProfile);
      EXPECT_EQ(edit.handler(), nullptr);
      EXPECT_EQ(edit.Commit(), EditState::NoProfile);
    }
    EXPECT_EQ(NamesIn(dir.path()), (Names{"file", "folder"}));
  }
}

TEST(ProfileEdit, ATagThatIsNotWhollyInTheFileForbidsACopy) {
  Bytes image = OrderedImage();
  image.pop_back();  // the last tag is 16 bytes long and needs no padding
  ExpectRefused(OneProfile(image), image, EditState::NoCopy);
  Bytes far = OrderedImage();
  SetBig32(far, 132 + 4, 0xFFFFFFF0);
  ExpectRefused(OneProfile(far), far, EditState::NoCopy);
  Bytes large = OrderedImage();
  SetBig32(large, 132 + 8, 0xFFFFFFFF);
  ExpectRefused(OneProfile(large), large, EditState::NoCopy);
}

TEST(ProfileEdit, ACopyOfSixteenTimesTheProfileIsRefused) {
  // 100 tags that share one block of 4000 bytes.
  std::vector<ImageEntry> table;
  for (std::uint32_t i = 0; i < 100; ++i) table.push_back({0x61000000 + i, 1332, 4000});
  const Bytes image = RawImage(ProfileHeader(), table, Pattern(4000, 5));
  ExpectRefused(OneProfile(image), image, EditState::NoCopy, 0,
                [](const VKCLProfile&) { return false; });
  // The store could not damage it: there is no private tag to be replaced.
  const OneProfile p(image);
  const ProfileEdit edit(p.At());
  EXPECT_EQ(edit.state(), EditState::Open);
  EXPECT_FALSE(edit.wasArranged());
  EXPECT_EQ(edit.bytesNow(), image.size());
}

TEST(ProfileEdit, NoRoomForTheCopyIsNoCopy) {
  const OneProfile p(OrderedImage());
  for (const Fault fault : {Fault::Error, Fault::FullDisk}) {
    bool reached = true;
    int noRoom = 0;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(k);
      ASSERT_LT(k, 100u);
      const CallLog log;
      const FaultAt at(k, fault);
      {
        ProfileEdit edit(p.At());
        reached = FaultAt::Reached();
        // As no write is ever short otherwise, this one was the call that failed.
        if (log.Count(CallKind::Write) != 0 && log.Bytes(CallKind::Write) < OrderedImage().size()) {
          ++noRoom;
          EXPECT_EQ(edit.state(), EditState::NoCopy);
          EXPECT_EQ(edit.handler(), nullptr);
          EXPECT_EQ(edit.Commit(), EditState::NoCopy);
        }
      }
      p.Expect(OrderedImage());
    }
    EXPECT_GE(noRoom, 1);
  }
}

TEST(ProfileEdit, ACopyThatCannotTakeThePlaceIsGone) {
  const FoldersInMemory memory;
  bool syncFailed = false;
  bool renameFailed = false;
  bool reached = true;
  for (std::size_t k = 0; reached; ++k) {
    SCOPED_TRACE(k);
    ASSERT_LT(k, 100u);
    const OneProfile p(OrderedImage());
    ProfileEdit edit(p.At());
    ASSERT_EQ(edit.state(), EditState::Open);
    ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
    const CallLog log;
    const FaultAt fault(k, Fault::Error);
    const EditState state = edit.Commit();
    reached = FaultAt::Reached();
    if (state == EditState::Done) continue;
    EXPECT_EQ(edit.handler(), nullptr);
    EXPECT_EQ(edit.state(), state);
    p.Expect(OrderedImage());
    if (state != EditState::NotPlaced) continue;
    if (log.Count(CallKind::Rename) == 1) renameFailed = true;
    if (log.Count(CallKind::Rename) == 0 && log.Count(CallKind::Sync) == 1) syncFailed = true;
  }
  EXPECT_TRUE(syncFailed);
  EXPECT_TRUE(renameFailed);
}

// ---- Done ----

struct Work {
  const char* name;
  int (*run)(ProfileEdit& edit);
  Tags (*result)(const Tags& tags);
};

const Bytes kSeven = {7, 0, 0, 0};
const Bytes kNine = {9, 0, 0, 0};
const Bytes kEmbedded = Pattern(333, 8);

int EmbedFile(ProfileEdit& edit) {
  const TempDir dir;
  return edit.handler()->WriteTrcTag(AFilePath(dir.Write("curves.trc", kEmbedded)));
}

/// One of the system's own profiles, to be merged.
Tags OwnTags() {
  return {{Sig("desc"), TextTag("own")},
          {Sig("QX51"), DataTag(Pattern(140, 21))},
          {Sig("QX53"), DataTag(Pattern(1068, 22))},
          {Sig("QX60"), DataTag(Pattern(1, 23))}};
}

int MergeOwn(ProfileEdit& edit) {
  const TempDir dir;
  VKCLProfile own(AFilePath(dir.Write("own.icc", ProfileImage(ProfileHeader(), OwnTags()))), 0);
  return own.MergeVKPrivateTagIntoStandICC(ProfileOf(edit));
}

const Work kWorks[] = {
    {"nothing", [](ProfileEdit&) { return 1; }, [](const Tags& tags) { return tags; }},
    {"one new record", [](ProfileEdit& edit) { return edit.handler()->WriteVKWizardFlag(7); },
     [](const Tags& tags) { return With(tags, Sig("QX74"), kSeven); }},
    {"the same length", [](ProfileEdit& edit) { return Store(edit, QX53, Pattern(8, 31)); },
     [](const Tags& tags) { return With(tags, Sig("QX53"), Pattern(8, 31)); }},
    {"longer", [](ProfileEdit& edit) { return Store(edit, QX53, Pattern(1068, 32)); },
     [](const Tags& tags) { return With(tags, Sig("QX53"), Pattern(1068, 32)); }},
    {"shorter, and empty",
     [](ProfileEdit& edit) {
       return Store(edit, QX53, Pattern(1, 33)) & Store(edit, QX52, Bytes{});
     },
     [](const Tags& tags) {
       return With(With(tags, Sig("QX53"), Pattern(1, 33)), Sig("QX52"), {});
     }},
    {"several records",
     [](ProfileEdit& edit) {
       return edit.handler()->WriteVKWizardFlag(9) & Store(edit, QX52, Pattern(77, 34)) &
              edit.handler()->WriteVKCMStoDither(9) & Store(edit, QX53, Pattern(8, 35)) &
              edit.handler()->WriteVKWizardFlag(7);
     },
     [](const Tags& tags) {
       return With(With(With(With(tags, Sig("QX74"), kSeven), Sig("QX52"), Pattern(77, 34)),
                        Sig("QX64"), kNine),
                   Sig("QX53"), Pattern(8, 35));
     }},
    {"an embedded file", EmbedFile,
     [](const Tags& tags) { return With(tags, Sig("QX58"), kEmbedded); }},
    {"a merge", MergeOwn,
     [](const Tags& tags) {
       Tags merged = tags;
       const Tags own = OwnTags();
       merged.insert(merged.end(), own.begin() + 1, own.end());
       return merged;
     }},
};

TEST(ProfileEdit, DoneIsTheProfileInTableOrderWithTheNewTags) {
  const FoldersInMemory memory;
  for (const Layout& layout : AllLayouts()) {
    for (const Work& work : kWorks) {
      SCOPED_TRACE(std::string(layout.name) + ": " + work.name);
      const OneProfile p(layout.image);
      const int open = OpenHandles();
      const Bytes expected = ProfileImage(ProfileHeader(), work.result(layout.tags));
      {
        ProfileEdit edit(p.At());
        ASSERT_EQ(edit.state(), EditState::Open);
        EXPECT_EQ(edit.wasArranged(), layout.image != OrderedImage());
        ASSERT_EQ(work.run(edit), 1);
        EXPECT_EQ(edit.bytesBefore(), layout.image.size());
        EXPECT_EQ(edit.bytesNow(), expected.size());
        EXPECT_TRUE(SameBytes(p.Content(), layout.image));
        EXPECT_EQ(edit.Commit(), EditState::Done);
        EXPECT_EQ(edit.state(), EditState::Done);
        EXPECT_EQ(edit.handler(), nullptr);
        EXPECT_EQ(edit.bytesBefore(), layout.image.size());
        p.Expect(expected);
      }
      p.Expect(expected);
      EXPECT_EQ(OpenHandles(), open);
    }
  }
}

TEST(ProfileEdit, ADoneEditIsDoneOnce) {
  const OneProfile p(OrderedImage());
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
  ASSERT_EQ(edit.Commit(), EditState::Done);
  WriteFile(p.path, OrderedImage());
  EXPECT_EQ(edit.Commit(), EditState::Done);
  p.Expect(OrderedImage());
}

TEST(ProfileEdit, EditsFollowEachOther) {
  const OneProfile p(OtherLayouts().front().image);
  Tags tags = SomeTags();
  for (unsigned i = 0; i < 20; ++i) {
    ProfileEdit edit(p.At());
    ASSERT_EQ(edit.state(), EditState::Open);
    EXPECT_EQ(edit.wasArranged(), i == 0);
    const Bytes payload = Pattern(i * i % 50, i);
    ASSERT_EQ(Store(edit, i % 3 == 0 ? QX52 : QX53, payload), 1);
    ASSERT_EQ(edit.Commit(), EditState::Done);
    tags = With(tags, i % 3 == 0 ? Sig("QX52") : Sig("QX53"), payload);
    p.Expect(ProfileImage(ProfileHeader(), tags));
  }
}

TEST(ProfileEdit, ProfilesWithoutTagsAreProfiles) {
  const OneProfile p(ProfileImage(ProfileHeader(), {}));
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  EXPECT_EQ(edit.bytesBefore(), 132u);
  ASSERT_EQ(edit.handler()->WriteVKWizardFlag(7), 1);
  EXPECT_EQ(edit.bytesNow(), 160u);
  EXPECT_EQ(edit.Commit(), EditState::Done);
  p.Expect(ProfileImage(ProfileHeader(), {{Sig("QX74"), DataTag(kSeven)}}));
}

TEST(ProfileEdit, TheChannelCountIsThatOfTheHandler) {
  const Bytes lab = ProfileImage(ProfileHeader(Sig("abst"), Sig("Lab ")), SomeTags());
  const OneProfile p(lab);
  ProfileEdit edit(p.At(), 7);
  ASSERT_EQ(edit.state(), EditState::Open);
  EXPECT_EQ(ProfileOf(edit).channelCount, 7);
  EXPECT_EQ(edit.Commit(), EditState::Done);
  p.Expect(lab);
}

TEST(ProfileEdit, TheColourSpaceMayChange) {
  const Tags tags = {{Sig("desc"), TextTag("a profile")}};
  const OneProfile p(ProfileImage(ProfileHeader(), tags));
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  VKColorParam param;
  param.ColorMode = 512;
  ASSERT_EQ(edit.handler()->WriteVKColorParamTag(param), 1);
  EXPECT_EQ(edit.Commit(), EditState::Done);
  const Bytes after = p.Content();
  EXPECT_EQ(after.size(), 132u + 24 + 20 + 1080);
  const Bytes header = ProfileHeader(Sig("prtr"), Sig("RGB "));
  EXPECT_TRUE(SameBytes(Slice(after, 4, 124), Slice(header, 4, 124)));
  EXPECT_EQ(StandardTags(after), StandardTags(ProfileImage(header, tags)));
}

TEST(ProfileEdit, TheCallerMayJudgeTheLayout) {
  // In place nothing is moved, so a gap does no harm.
  const Layout gap = OtherLayouts().front();
  const OneProfile p(gap.image);
  int asked = 0;
  ProfileEdit edit(p.At(), 0, [&](const VKCLProfile& profile) {
    ++asked;
    EXPECT_TRUE(vkcl::testing::HoldsTableOf(profile, gap.image));
    return true;
  });
  EXPECT_GE(asked, 1);
  ASSERT_EQ(edit.state(), EditState::Open);
  EXPECT_FALSE(edit.wasArranged());
  EXPECT_TRUE(SameBytes(ReadFile(CopyOf(edit)), gap.image));
  ASSERT_EQ(Store(edit, QX53, Pattern(8, 40)), 1);
  EXPECT_EQ(edit.bytesNow(), gap.image.size());
  EXPECT_EQ(edit.Commit(), EditState::Done);
  Bytes expected = gap.image;
  const Bytes element = DataTag(Pattern(8, 40));
  std::copy(element.begin(), element.end(), expected.begin() + 220);
  p.Expect(expected);
}

TEST(ProfileEdit, WhatTheCallerRefusesIsArranged) {
  const OneProfile p(OrderedImage());
  ProfileEdit edit(p.At(), 0, [](const VKCLProfile&) { return false; });
  ASSERT_EQ(edit.state(), EditState::Open);
  EXPECT_TRUE(edit.wasArranged());
  EXPECT_TRUE(SameBytes(ReadFile(CopyOf(edit)), OrderedImage()));
  EXPECT_EQ(edit.Commit(), EditState::Done);
  p.Expect(OrderedImage());
}

TEST(ProfileEdit, ACallerThatCannotJudgeTheLayoutGetsNoEdit) {
  const OneProfile p(OrderedImage());
  const int open = OpenHandles();
  {
    ProfileEdit edit(p.At(), 0,
                     [](const VKCLProfile&) -> bool { throw std::runtime_error("no idea"); });
    EXPECT_NE(edit.state(), EditState::Open);
    EXPECT_EQ(edit.handler(), nullptr);
    EXPECT_NE(edit.Commit(), EditState::Done);
  }
  p.Expect(OrderedImage());
  EXPECT_EQ(OpenHandles(), open);
}

TEST(ProfileEdit, TemporaryNamesAreNamesLikeOthers) {
  // An object of the store removes such a file when it dies.
  for (const char* name : {".tmp", "p.tmp", "p.icc.tmp"}) {
    SCOPED_TRACE(name);
    const OneProfile p(OrderedImage(), name);
    {
      ProfileEdit edit(p.At(), 0, [](const VKCLProfile&) { return true; });
      ASSERT_EQ(edit.state(), EditState::Open);
    }
    p.Expect(OrderedImage());
    {
      ProfileEdit edit(p.At());
      ASSERT_EQ(edit.state(), EditState::Open);
      ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
      EXPECT_EQ(edit.Commit(), EditState::Done);
    }
    p.Expect(ProfileImage(ProfileHeader(), With(SomeTags(), Sig("QX53"), Pattern(20, 4))));
    const OneProfile invalid(Bytes{1, 2, 3}, name);
    EXPECT_EQ(ProfileEdit(invalid.At(), 4).state(), EditState::NoProfile);
    invalid.Expect(Bytes{1, 2, 3});
    Bytes cut = OrderedImage();
    cut.pop_back();
    const OneProfile noCopy(cut, name);
    EXPECT_EQ(ProfileEdit(noCopy.At()).state(), EditState::NoCopy);
    noCopy.Expect(cut);
  }
}

TEST(ProfileEdit, APathWithoutAFolderIsInTheCurrentOne) {
  const OneProfile p(OrderedImage());
  const CurrentFolder current(p.dir.path());
  for (const char* path : {"p.icc", "./p.icc"}) {
    WriteFile("p.icc", OrderedImage());
    ProfileEdit edit{AFilePath(path)};
    ASSERT_EQ(edit.state(), EditState::Open);
    EXPECT_EQ(UnfinishedIn(p.dir.path()).size(), 1u);
    ASSERT_EQ(edit.handler()->WriteVKWizardFlag(7), 1);
    EXPECT_EQ(edit.Commit(), EditState::Done);
    p.Expect(ProfileImage(ProfileHeader(), With(SomeTags(), Sig("QX74"), kSeven)));
  }
}

// ---- Real profiles ----

TEST(ProfileEdit, RealProfilesKeepEveryTagOfTheirs) {
  const FoldersInMemory memory;
  std::size_t arranged = 0;
  for (const auto& source : RealProfiles()) {
    SCOPED_TRACE(source);
    const Bytes before = ReadFile(source);
    const OneProfile p(before);
    const LcmsView view = ReadWithLcms(source);
    {
      ProfileEdit edit(p.At(), 4);
      ASSERT_EQ(edit.state(), EditState::Open);
      EXPECT_EQ(edit.bytesBefore(), before.size());
      arranged += edit.wasArranged() ? 1u : 0u;
      ASSERT_EQ(edit.handler()->WriteVKWizardFlag(7), 1);
      ASSERT_EQ(Store(edit, QX51, Pattern(139, 50)), 1);
      ASSERT_EQ(Store(edit, QX74, Pattern(9, 51)), 1);
      ASSERT_EQ(EmbedFile(edit), 1);
      ASSERT_EQ(Store(edit, QX51, Pattern(139, 52)), 1);
      ASSERT_EQ(edit.Commit(), EditState::Done);
    }
    const Bytes after = p.Content();
    p.Expect(after);
    EXPECT_EQ(vkcl::testing::Big32At(after, 0), after.size());
    EXPECT_TRUE(SameBytes(Slice(after, 4, 124), Slice(before, 4, 124)));
    EXPECT_TRUE(StandardTags(after) == StandardTags(before));
    const LcmsView now = ReadWithLcms(p.path);
    ASSERT_TRUE(now.opens);
    std::vector<std::uint32_t> order = view.order;
    order.insert(order.end(), {Sig("QX74"), Sig("QX51"), Sig("QX58")});
    EXPECT_EQ(now.order, order);
    std::map<std::uint32_t, Bytes> tags = view.tags;
    tags[Sig("QX74")] = DataTag(Pattern(9, 51));
    tags[Sig("QX51")] = DataTag(Pattern(139, 52));
    tags[Sig("QX58")] = DataTag(kEmbedded);
    EXPECT_TRUE(now.tags == tags);
    // Every tag has a block of its own, within the file.
    std::uint64_t end = 132 + 12 * std::uint64_t{vkcl::testing::Big32At(after, 128)};
    std::vector<ImageEntry> table = TableOf(after);
    std::sort(table.begin(), table.end(),
              [](const ImageEntry& a, const ImageEntry& b) { return a.offset < b.offset; });
    if (TableOf(after) == table) {
      for (const ImageEntry& entry : table) {
        end = std::max(end, std::uint64_t{entry.offset} + entry.size);
      }
      EXPECT_LE(end, after.size());
    }
  }
  EXPECT_GT(arranged, 0u);
}

TEST(ProfileEdit, RealProfilesTakeAMerge) {
  for (const char* name : {"default_cmyk.icc", "LStar-RGB.icc", "SwappedRedAndGreen.icc"}) {
    SCOPED_TRACE(name);
    const std::filesystem::path source = RealProfile(name);
    const OneProfile p(ReadFile(source));
    ProfileEdit edit(p.At());
    ASSERT_EQ(edit.state(), EditState::Open);
    ASSERT_EQ(MergeOwn(edit), 1);
    EXPECT_EQ(edit.Commit(), EditState::Done);
    LcmsView expected = ReadWithLcms(source);
    for (const ImageTag& tag : OwnTags()) {
      if (IsPrivate(tag.sig)) {
        expected.order.push_back(tag.sig);
        expected.tags[tag.sig] = tag.data;
      }
    }
    const LcmsView now = ReadWithLcms(p.path);
    EXPECT_EQ(now.order, expected.order);
    EXPECT_TRUE(now.tags == expected.tags);
    EXPECT_EQ(ConvertWithLcms(p.path), ConvertWithLcms(source));
  }
}

// ---- Somebody else ----

// Some systems date writes by a clock of a few milliseconds.
void WaitForTheClock() { std::this_thread::sleep_for(std::chrono::milliseconds(12)); }

void ExpectChanged(const Bytes& image, const std::function<void(const OneProfile&)>& change,
                   const std::optional<Bytes>& then) {
  const FoldersInMemory memory;
  const OneProfile p(image);
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
  change(p);
  EXPECT_EQ(edit.Commit(), EditState::Changed);
  EXPECT_EQ(edit.state(), EditState::Changed);
  EXPECT_EQ(edit.handler(), nullptr);
  if (then) {
    p.Expect(*then);
  } else {
    EXPECT_EQ(NamesIn(p.dir.path()), Names{});
  }
}

TEST(ProfileEdit, WhatSomebodyElseWroteStays) {
  const Bytes image = OrderedImage();
  Bytes privateByte = image;
  privateByte[212 + 12] ^= 1;  // in the payload of 'QX53', which the edit replaces
  Bytes standardByte = image;
  standardByte[232 + 40] ^= 1;
  Bytes headerByte = image;
  headerByte[67] ^= 1;
  Bytes sizeByte = image;
  sizeByte[0] ^= 1;
  Bytes paddingByte = image;
  paddingByte[192 + 17] ^= 1;
  Bytes longer = image;
  longer.push_back(0);
  const Bytes shorter = Slice(image, 0, 300);
  const Bytes other = ProfileImage(ProfileHeader(), With(SomeTags(), Sig("QX74"), kNine));
  for (const Bytes& then : {privateByte, standardByte, headerByte, sizeByte, paddingByte, longer,
                            shorter, other, Bytes{}, Bytes{1, 2, 3}}) {
    SCOPED_TRACE(then.size());
    ExpectChanged(
        image,
        [&](const OneProfile& p) {
          WaitForTheClock();
          WriteFile(p.path, then);
        },
        then);
    ExpectChanged(
        image,
        [&](const OneProfile& p) { std::filesystem::rename(p.dir.Write("other", then), p.path); },
        then);
  }
}

TEST(ProfileEdit, AWriteThatHidesItsTimeIsSeen) {
  Bytes then = OrderedImage();
  then[212 + 12] ^= 1;
  ExpectChanged(
      OrderedImage(),
      [&](const OneProfile& p) {
        const auto time = std::filesystem::last_write_time(p.path);
        WriteFile(p.path, then);
        std::filesystem::last_write_time(p.path, time);
      },
      then);
}

TEST(ProfileEdit, AnArrangedProfileIsWatchedToo) {
  for (const Layout& layout : OtherLayouts()) {
    SCOPED_TRACE(layout.name);
    Bytes then = layout.image;
    then[200] ^= 1;
    ExpectChanged(
        layout.image,
        [&](const OneProfile& p) {
          WaitForTheClock();
          WriteFile(p.path, then);
        },
        then);
  }
}

TEST(ProfileEdit, AProfileThatWasRemovedDoesNotComeBack) {
  ExpectChanged(
      OrderedImage(), [](const OneProfile& p) { std::filesystem::remove(p.path); }, std::nullopt);
}

TEST(ProfileEdit, AFolderInThePlaceOfTheProfileStays) {
  const OneProfile p(OrderedImage());
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  std::filesystem::remove(p.path);
  std::filesystem::create_directory(p.path);
  EXPECT_EQ(edit.Commit(), EditState::Changed);
  EXPECT_TRUE(std::filesystem::is_directory(p.path));
  EXPECT_EQ(NamesIn(p.dir.path()), Names{"p.icc"});
}

TEST(ProfileEdit, TheSecondOfTwoEditsIsToldOfTheFirst) {
  const OneProfile p(OrderedImage());
  ProfileEdit first(p.At());
  ProfileEdit second(p.At());
  ASSERT_EQ(first.state(), EditState::Open);
  ASSERT_EQ(second.state(), EditState::Open);
  EXPECT_NE(CopyOf(first), CopyOf(second));
  ASSERT_EQ(Store(first, QX53, Pattern(20, 1)), 1);
  ASSERT_EQ(Store(second, QX53, Pattern(20, 2)), 1);
  EXPECT_EQ(second.Commit(), EditState::Done);
  EXPECT_EQ(first.Commit(), EditState::Changed);
  p.Expect(ProfileImage(ProfileHeader(), With(SomeTags(), Sig("QX53"), Pattern(20, 2))));
}

// ---- A damaged copy ----

/// An edit whose copy is damaged behind its back: written directly, by its path.
void ExpectDamaged(const Bytes& image, const std::function<void(Bytes& copy)>& damage) {
  const FoldersInMemory memory;
  const OneProfile p(image);
  ProfileEdit edit(p.At(), 0, [](const VKCLProfile&) { return true; });
  ASSERT_EQ(edit.state(), EditState::Open);
  const std::string path = CopyOf(edit);
  Bytes copy = ReadFile(path);
  damage(copy);
  WriteFile(path, copy);
  EXPECT_EQ(edit.Commit(), EditState::Damaged);
  EXPECT_EQ(edit.state(), EditState::Damaged);
  EXPECT_EQ(edit.handler(), nullptr);
  p.Expect(image);
}

TEST(ProfileEdit, EveryByteOfAStandardTagCounts) {
  const Bytes image = OrderedImage();
  for (const std::size_t entry : {0u, 2u, 4u}) {
    const ImageEntry tag = TableOf(image)[entry];
    for (std::size_t at = tag.offset; at < tag.offset + tag.size; ++at) {
      SCOPED_TRACE(at);
      ExpectDamaged(image, [&](Bytes& copy) { copy[at] ^= 0x80; });
    }
  }
}

TEST(ProfileEdit, EveryByteOfTheHeaderCountsButSizeAndColourSpace) {
  for (std::size_t at = 4; at < 128; ++at) {
    if (at >= 16 && at < 20) continue;
    SCOPED_TRACE(at);
    ExpectDamaged(OrderedImage(), [&](Bytes& copy) { copy[at] ^= 1; });
  }
}

TEST(ProfileEdit, ATagThatIsNotThereAnyMoreIsMissed) {
  const Bytes image = OrderedImage();
  for (const std::size_t entry : {0u, 2u, 4u}) {
    const std::size_t at = 132 + 12 * entry;
    SCOPED_TRACE(entry);
    ExpectDamaged(image, [&](Bytes& copy) { copy[at] = 'z'; });       // another signature
    ExpectDamaged(image, [&](Bytes& copy) { copy[at + 7] ^= 4; });    // another place
    ExpectDamaged(image, [&](Bytes& copy) { copy[at + 4] = 0xFF; });  // behind the file
    ExpectDamaged(image, [&](Bytes& copy) { copy[at + 11] -= 1; });   // another size
    ExpectDamaged(image, [&](Bytes& copy) { copy[at + 11] += 1; });
    ExpectDamaged(image, [&](Bytes& copy) { SetBig32(copy, at + 8, 0); });
  }
  ExpectDamaged(image, [](Bytes& copy) { copy[131] = 4; });  // one tag fewer
  ExpectDamaged(image, [](Bytes& copy) { copy[131] = 0; });
  ExpectDamaged(image, [](Bytes& copy) { copy.pop_back(); });
  ExpectDamaged(image, [](Bytes& copy) { copy.resize(200); });
  ExpectDamaged(image, [](Bytes& copy) { copy.resize(100); });
  ExpectDamaged(image, [](Bytes& copy) { copy.clear(); });
}

TEST(ProfileEdit, TwoTagsOfOneSignatureCountBoth) {
  Tags tags = SomeTags();
  tags.push_back({Sig("A2B0"), DataTag(Pattern(64, 9))});
  const Bytes image = ProfileImage(ProfileHeader(), tags);
  const ImageEntry second = TableOf(image).back();
  ExpectDamaged(image, [&](Bytes& copy) { copy[second.offset + 20] ^= 1; });
  // Both entries lead to the first.
  const ImageEntry first = TableOf(image)[2];
  ExpectDamaged(image, [&](Bytes& copy) {
    SetBig32(copy, 132 + 12 * 5 + 4, first.offset);
    SetBig32(copy, 132 + 12 * 5 + 8, first.size);
  });
}

TEST(ProfileEdit, LargeTagsAreComparedToTheirEnds) {
  for (const std::size_t length : {std::size_t{65536}, std::size_t{200003}}) {
    const Bytes image = ProfileImage(ProfileHeader(), {{Sig("A2B0"), DataTag(Pattern(length, 3))}});
    const ImageEntry tag = TableOf(image)[0];
    for (const std::size_t at : {std::size_t{0}, std::size_t{65535}, std::size_t{tag.size} - 1}) {
      ExpectDamaged(image, [&](Bytes& copy) { copy[tag.offset + at] ^= 1; });
    }
  }
}

TEST(ProfileEdit, PrivateTagsAreTheCallersAffair) {
  const OneProfile p(OrderedImage());
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  Bytes copy = ReadFile(CopyOf(edit));
  const ImageEntry tag = TableOf(copy)[1];
  for (std::size_t i = 0; i < tag.size; ++i) copy[tag.offset + i] ^= 0xFF;
  copy[132 + 12 * 3 + 3] = '0';  // 'QX52' becomes 'QX50'
  WriteFile(CopyOf(edit), copy);
  EXPECT_EQ(edit.Commit(), EditState::Done);
  p.Expect(copy);
}

TEST(ProfileEdit, WorkThatTheLayoutDidNotSuitIsFound) {
  // A private tag and a standard one share a block, and the private one is written in place.
  for (const Layout& layout : OtherLayouts()) {
    if (layout.name != std::string("a block shared by a private tag and another")) continue;
    const OneProfile p(layout.image);
    ProfileEdit edit(p.At(), 0, [](const VKCLProfile&) { return true; });
    ASSERT_EQ(edit.state(), EditState::Open);
    ASSERT_EQ(Store(edit, QX53, Pattern(61, 60)), 1);
    EXPECT_EQ(edit.Commit(), EditState::Damaged);
    p.Expect(layout.image);
    return;
  }
  FAIL() << "no such layout";
}

TEST(ProfileEdit, NoLayoutIsDamagedUnnoticed) {
  const FoldersInMemory memory;
  // Whatever a caller believes of a layout, what is placed has every standard tag.
  for (const Layout& layout : OtherLayouts()) {
    for (const Work& work : kWorks) {
      SCOPED_TRACE(std::string(layout.name) + ": " + work.name);
      const OneProfile p(layout.image);
      ProfileEdit edit(p.At(), 0, [](const VKCLProfile&) { return true; });
      if (edit.state() == EditState::Open) {
        EXPECT_FALSE(edit.wasArranged());
        work.run(edit);
        edit.Commit();
      }
      const Bytes after = p.Content();
      if (edit.state() == EditState::Done) {
        EXPECT_TRUE(SameBytes(Slice(after, 4, 124), Slice(layout.image, 4, 124)));
        EXPECT_TRUE(StandardTags(after) == StandardTags(layout.image));
        p.Expect(after);
      } else {
        p.Expect(layout.image);
      }
    }
  }
}

TEST(ProfileEdit, ACopyThatIsGoneIsNotPlaced) {
  const OneProfile p(OrderedImage());
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  ASSERT_TRUE(std::filesystem::remove(CopyOf(edit)));
  EXPECT_NE(edit.Commit(), EditState::Done);
  p.Expect(OrderedImage());
}

// ---- Leftovers ----

std::string UnfinishedName() {
  const TempDir dir;
  return std::filesystem::path(vkcl::SiblingFile{AFilePath(dir.File("f"))}.path().str())
      .filename()
      .string();
}

TEST(ProfileEdit, RemovesWhatNobodyWorksOn) {
  const OneProfile p(OrderedImage());
  for (int i = 0; i < 5; ++i) p.dir.Write(UnfinishedName(), Bytes(100, 1));
  const Names others = {"vkcl-1.new", ".vkcl-1.old", ".vkcl", "x.new"};
  for (const std::string& name : others) p.dir.Write(name, {1});
  const ProfileEdit edit(p.At());
  EXPECT_EQ(UnfinishedIn(p.dir.path()).size(), 1u);
  for (const std::string& name : others) {
    EXPECT_TRUE(std::filesystem::exists(p.dir.File(name))) << name;
  }
}

TEST(ProfileEdit, LeavesTheCopiesOfOtherEdits) {
  const OneProfile p(OrderedImage());
  const std::string path = p.dir.Write("q.icc", OrderedImage());
  ProfileEdit first(p.At());
  ProfileEdit second{AFilePath(path)};
  ProfileEdit third(p.At());
  EXPECT_EQ(UnfinishedIn(p.dir.path()).size(), 3u);
  ASSERT_EQ(Store(first, QX53, Pattern(20, 1)), 1);
  EXPECT_EQ(ProfileEdit(p.At()).state(), EditState::Open);
  EXPECT_EQ(UnfinishedIn(p.dir.path()).size(), 3u);
  ASSERT_EQ(Store(second, QX53, Pattern(20, 2)), 1);
  EXPECT_EQ(first.Commit(), EditState::Done);
  EXPECT_EQ(second.Commit(), EditState::Done);
  EXPECT_EQ(third.Commit(), EditState::Changed);
  EXPECT_EQ(NamesIn(p.dir.path()), (Names{"p.icc", "q.icc"}));
  EXPECT_TRUE(SameBytes(ReadFile(path), ProfileImage(ProfileHeader(), With(SomeTags(), Sig("QX53"),
                                                                           Pattern(20, 2)))));
}

TEST(ProfileEdit, AProfileThatIsNamedLikeALeftoverIsNone) {
  const OneProfile p(OrderedImage(), UnfinishedName());
  {
    ProfileEdit edit(p.At());
    ASSERT_EQ(edit.state(), EditState::Open);
    ASSERT_EQ(edit.handler()->WriteVKWizardFlag(7), 1);
    EXPECT_EQ(edit.Commit(), EditState::Done);
  }
  p.Expect(ProfileImage(ProfileHeader(), With(SomeTags(), Sig("QX74"), kSeven)));
}

TEST(ProfileEdit, FoldersOfSuchNamesStay) {
  const OneProfile p(OrderedImage());
  const std::string name = UnfinishedName();
  std::filesystem::create_directory(p.dir.path() / name);
  {
    ProfileEdit edit(p.At());
    ASSERT_EQ(edit.state(), EditState::Open);
    ASSERT_EQ(edit.handler()->WriteVKWizardFlag(7), 1);
    EXPECT_EQ(edit.Commit(), EditState::Done);
  }
  EXPECT_EQ(NamesIn(p.dir.path()), (Names{name, "p.icc"}));
}

// ---- Calls and failures ----

TEST(ProfileEdit, TheNameIsTheLastThingThatChanges) {
  for (const Layout& layout : AllLayouts()) {
    SCOPED_TRACE(layout.name);
    const OneProfile p(layout.image);
    ProfileEdit edit(p.At());
    ASSERT_EQ(edit.state(), EditState::Open);
    ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
    const CallLog log;
    ASSERT_EQ(edit.Commit(), EditState::Done);
    const auto& calls = log.calls();
    const auto isRename = [](const auto& call) { return call.kind == CallKind::Rename; };
    const auto name = std::find_if(calls.begin(), calls.end(), isRename);
    ASSERT_NE(name, calls.end());
    EXPECT_EQ(log.Count(CallKind::Rename), 1u);
    // Comparing changes nothing.
    EXPECT_EQ(log.Count(CallKind::Write), 0u);
    EXPECT_EQ(log.Count(CallKind::SetLength), 0u);
    EXPECT_EQ(log.Count(CallKind::Remove), 0u);
    // The file is carried to the medium before, the folder behind.
    EXPECT_EQ(log.Count(CallKind::Sync), 2u);
    const auto isSync = [](const auto& call) { return call.kind == CallKind::Sync; };
    EXPECT_EQ(std::count_if(calls.begin(), name, isSync), 1);
    for (auto call = name + 1; call != calls.end(); ++call) {
      EXPECT_TRUE(call->kind == CallKind::Sync || call->kind == CallKind::Close ||
                  call->kind == CallKind::Look);
    }
  }
}

TEST(ProfileEdit, AnEditReadsAndWritesLittleMoreThanItMust) {
  // Read: for the copy, by the store, and both files for the comparison. Written: the copy, and by
  // the store.
  const Bytes image = ProfileImage(ProfileHeader(), {{Sig("A2B0"), DataTag(Pattern(500000, 3))}});
  const OneProfile p(image);
  const CallLog log;
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  ASSERT_EQ(edit.handler()->WriteVKWizardFlag(7), 1);
  ASSERT_EQ(edit.Commit(), EditState::Done);
  EXPECT_LT(log.Bytes(CallKind::Read), 5 * image.size());
  EXPECT_LT(log.Bytes(CallKind::Write), 3 * image.size());
  EXPECT_LT(log.calls().size(), 100u);
}

/// A whole edit: 'QX53' gets a payload of 20 bytes.
EditState EditOnce(const std::string& path) {
  ProfileEdit edit{AFilePath(path)};
  if (edit.state() != EditState::Open) return edit.state();
  if (Store(edit, QX53, Pattern(20, 4)) == 0) return EditState::Open;
  return edit.Commit();
}

Bytes Edited(const Tags& tags) {
  return ProfileImage(ProfileHeader(), With(tags, Sig("QX53"), Pattern(20, 4)));
}

/// One profile that is copied, and one that is arranged.
std::vector<Layout> TwoLayouts() {
  return {{"in order", SomeTags(), OrderedImage()}, OtherLayouts()[4]};
}

TEST(ProfileEdit, AnyFailureLeavesTheOldProfileOrTheNewOne) {
  const FoldersInMemory memory;
  std::set<EditState> seen;
  for (const Layout& layout : TwoLayouts()) {
    for (const Fault fault :
         {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
      const TempDir dir;
      const int open = OpenHandles();
      bool reached = true;
      for (std::size_t k = 0; reached; ++k) {
        SCOPED_TRACE(::testing::Message()
                     << layout.name << ", fault " << static_cast<int>(fault) << " at " << k);
        ASSERT_LT(k, 1000u);
        const std::string path = dir.Write("p.icc", layout.image);
#if !defined(_WIN32)
        ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
#endif
        EditState state = EditState::Open;
        {
          const FaultAt at(k, fault);
          state = EditOnce(path);
          reached = FaultAt::Reached();
        }
        seen.insert(state);
        const bool done = state == EditState::Done;
        EXPECT_TRUE(SameBytes(ReadFile(path), done ? Edited(layout.tags) : layout.image));
        EXPECT_EQ(NamesIn(dir.path()), Names{"p.icc"});
        EXPECT_EQ(OpenHandles(), open);
        // Transfers are gone on with.
        if (fault == Fault::Short || fault == Fault::Interrupted || !reached) {
          EXPECT_TRUE(done);
        }
#if !defined(_WIN32)
        EXPECT_EQ(vkcl::testing::ModeOf(path), 0640u);
#endif
      }
    }
  }
  EXPECT_TRUE(seen.contains(EditState::NoCopy));
  EXPECT_TRUE(seen.contains(EditState::NotPlaced));
}

TEST(ProfileEdit, AnyFailureInClearingUpLeavesTheProfile) {
  const FoldersInMemory memory;
  const std::string name = UnfinishedName();
  for (const bool commit : {false, true}) {
    const TempDir dir;
    const int open = OpenHandles();
    bool reached = true;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(k);
      ASSERT_LT(k, 1000u);
      const std::string path = dir.Write("p.icc", OrderedImage());
      dir.Write(name, Bytes(50, 1));
      EditState state = EditState::Open;
      {
        const FaultAt at(k, Fault::Error);
        {
          ProfileEdit edit{AFilePath(path)};
          if (edit.state() == EditState::Open && Store(edit, QX53, Pattern(20, 4)) == 1 && commit) {
            edit.Commit();
          }
          state = edit.state();
        }
        reached = FaultAt::Reached();
      }
      const bool done = state == EditState::Done;
      if (!commit) {
        EXPECT_FALSE(done);
      }
      EXPECT_TRUE(SameBytes(ReadFile(path), done ? Edited(SomeTags()) : OrderedImage()));
      EXPECT_EQ(OpenHandles(), open);
      // What could not be removed goes with the next edit.
      EXPECT_EQ(NamesIn(dir.path()).size(), 1 + UnfinishedIn(dir.path()).size());
      EXPECT_LE(UnfinishedIn(dir.path()).size(), 1u);
      EXPECT_EQ(EditOnce(path), EditState::Done);
      EXPECT_EQ(NamesIn(dir.path()), Names{"p.icc"});
    }
  }
}

TEST(ProfileEdit, OthersMayClearUpAtAnyMoment) {
  const FoldersInMemory memory;
  for (const Layout& layout : TwoLayouts()) {
    const OneProfile p(layout.image);
    const int open = OpenHandles();
    bool reached = true;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(::testing::Message() << layout.name << ", at " << k);
      ASSERT_LT(k, 1000u);
      WriteFile(p.path, layout.image);
      {
        const ActionAt at(k, [&] { vkcl::SiblingFile::RemoveLeftovers(p.At()); });
        EXPECT_EQ(EditOnce(p.path), EditState::Done);
        reached = ActionAt::Reached();
      }
      p.Expect(Edited(layout.tags));
      EXPECT_EQ(OpenHandles(), open);
    }
  }
}

// Somebody else's whole edit may come at any moment of this one. Whoever is told that his edit is
// done finds it in the profile: none is lost, also when both end at the same moment.
TEST(ProfileEdit, AnotherEditMayComeAtAnyMoment) {
  const FoldersInMemory memory;
  const auto with = [](Tags tags, bool theirs, bool own) {
    if (theirs) tags = With(tags, Sig("QX52"), Pattern(50, 6));
    if (own) tags = With(tags, Sig("QX53"), Pattern(20, 4));
    return ProfileImage(ProfileHeader(), tags);
  };
  for (const Layout& layout : TwoLayouts()) {
    const OneProfile p(layout.image);
    std::atomic<int> locks = 0;
    const auto editOfOther = [&] {
      const ActionAtLocks at([&] { ++locks; });
      ProfileEdit edit(p.At());
      if (edit.state() == EditState::Open) {
        EXPECT_EQ(Store(edit, QX52, Pattern(50, 6)), 1);
      }
      return edit.Commit();
    };
    bool reached = true;
    int both = 0;
    int toldOther = 0;
    int told = 0;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(::testing::Message() << layout.name << ", at " << k);
      ASSERT_LT(k, 1000u);
      WriteFile(p.path, layout.image);
      std::future<EditState> other;
      EditState state = EditState::Open;
      {
        locks = 0;
        const ActionAt at(k, [&] {
          other = std::async(std::launch::async, editOfOther);
          const auto isDone = [&] {
            return other.wait_for(std::chrono::milliseconds(1)) == std::future_status::ready;
          };
          // It may wait for this one; without waiting it asks for three locks.
          while (!isDone() && locks < 20) {
          }
        });
        state = EditOnce(p.path);
        reached = ActionAt::Reached();
      }
      if (!reached) {
        EXPECT_EQ(state, EditState::Done);
        continue;
      }
      const EditState stateOfOther = other.get();
      EXPECT_TRUE(SameBytes(p.Content(), with(layout.tags, stateOfOther == EditState::Done,
                                              state == EditState::Done)));
      EXPECT_EQ(NamesIn(p.dir.path()), Names{"p.icc"});
      both += state == EditState::Done && stateOfOther == EditState::Done ? 1 : 0;
      told += state == EditState::Changed ? 1 : 0;
      toldOther += stateOfOther == EditState::Changed ? 1 : 0;
      EXPECT_TRUE(state == EditState::Done || state == EditState::Changed);
      EXPECT_TRUE(stateOfOther == EditState::Done || stateOfOther == EditState::Changed);
      EXPECT_TRUE(state == EditState::Done || stateOfOther == EditState::Done);
    }
    EXPECT_GE(both, 2);
    EXPECT_GE(told, 10);
    EXPECT_GE(toldOther, 3);  // who came between the last look at the profile and the rename
  }
}

// Whoever finds that the profile has changed begins anew: then nobody's change is lost.
TEST(ProfileEdit, ManyThreadsMayChangeOneProfileAtTheSameMoment) {
  const FoldersInMemory memory;
  const OneProfile p(OrderedImage());
  constexpr int kThreads = 8;
  constexpr int kEdits = 12;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < kEdits; ++i) {
        EditState state = EditState::Changed;
        while (state == EditState::Changed) {
          ProfileEdit edit(p.At());
          if (edit.state() == EditState::Open) {
            VKPrivateTag tag;
            tag.InitWizardTag(100 * thread + i);
            EXPECT_EQ(edit.handler()->GetProfilePtr()->WriteMultiVKPrivateTags(&tag, 1), 1);
          }
          state = edit.Commit();
        }
        EXPECT_EQ(state, EditState::Done) << vkcl::EditStateText(state);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<int> stored;  // numbers of less than two bytes, little-endian
  const Bytes image = p.Content();
  for (const auto& entry : TableOf(image)) {
    if (entry.sig != Sig("QX74")) continue;
    stored.insert(image[entry.offset + 12] + 256 * image[entry.offset + 13]);
  }
  EXPECT_EQ(stored.size(), std::size_t{kThreads} * kEdits);
}

// Of file systems without locks, and of profiles that are not to be opened for writing any more.
TEST(ProfileEdit, WhereTheProfileCannotBeHeldNobodyWaits) {
  const OneProfile p(OrderedImage());
  const auto begin = [&] {
    WriteFile(p.path, OrderedImage());
    auto edit = std::make_unique<ProfileEdit>(p.At());
    EXPECT_EQ(Store(*edit, QX53, Pattern(20, 4)), 1);
    return edit;
  };
  std::size_t lock = 0;  // the call, of those of Commit
  {
    const auto edit = begin();
    const CallLog log;
    ASSERT_EQ(edit->Commit(), EditState::Done);
    const std::vector<CallKind> kinds = log.Kinds();
    ASSERT_EQ(log.Count(CallKind::Lock), 1u);
    lock = static_cast<std::size_t>(std::find(kinds.begin(), kinds.end(), CallKind::Lock) -
                                    kinds.begin());
    ASSERT_EQ(kinds.at(lock - 1), CallKind::Open);
  }
  for (const std::size_t call : {lock - 1, lock}) {
    const auto edit = begin();
    const FaultAt fault(call, Fault::Error);
    EXPECT_EQ(edit->Commit(), EditState::Done);
    ASSERT_TRUE(FaultAt::Reached());
    p.Expect(Edited(SomeTags()));
  }
}

TEST(ProfileEdit, SomebodyMayWriteAtAnyMoment) {
  const FoldersInMemory memory;
  const Tags tags = With(SomeTags(), Sig("QX52"), Pattern(50, 6));
  const Bytes theirs = ProfileImage(ProfileHeader(), tags);
  for (const Layout& layout : TwoLayouts()) {
    const OneProfile p(layout.image);
    bool reached = true;
    int lost = 0;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(::testing::Message() << layout.name << ", at " << k);
      ASSERT_LT(k, 1000u);
      WriteFile(p.path, layout.image);
      EditState state = EditState::Open;
      {
        const ActionAt at(k, [&] { WriteFile(p.path, theirs); });
        state = EditOnce(p.path);
        reached = ActionAt::Reached();
      }
      EXPECT_EQ(NamesIn(p.dir.path()), Names{"p.icc"});
      if (!reached) continue;
      const Bytes left = p.Content();
      if (state != EditState::Done) {
        EXPECT_TRUE(SameBytes(left, theirs)) << EditStateText(state);
        continue;
      }
      // They wrote before the copy was made, behind the rename, or just before it.
      lost += left == Edited(layout.tags) ? 1 : 0;
      EXPECT_TRUE(left == Edited(tags) || left == theirs || left == Edited(layout.tags));
    }
    EXPECT_LE(lost, 4);
  }
}

TEST(ProfileEdit, AFailedCommitIsNotRepeated) {
  const FoldersInMemory memory;
  const OneProfile p(OrderedImage());
  bool reached = true;
  for (std::size_t k = 0; reached; ++k) {
    SCOPED_TRACE(k);
    ASSERT_LT(k, 1000u);
    WriteFile(p.path, OrderedImage());
    ProfileEdit edit(p.At());
    ASSERT_EQ(edit.state(), EditState::Open);
    ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
    EditState state = EditState::Open;
    {
      const FaultAt at(k, Fault::Error);
      state = edit.Commit();
      reached = FaultAt::Reached();
    }
    EXPECT_NE(state, EditState::Open);
    EXPECT_EQ(edit.Commit(), state);
    p.Expect(state == EditState::Done ? Edited(SomeTags()) : OrderedImage());
  }
}

#if !defined(_WIN32)

using vkcl::testing::AsOrdinaryUser;
using vkcl::testing::GiveToOrdinaryUser;
using vkcl::testing::InChild;
using vkcl::testing::ModeOf;
using vkcl::testing::OtherProcess;

// A program that edits the profile dies at each of its calls in turn, and another edit follows.
void DieAtEveryCall(const Layout& layout) {
  const FoldersInMemory memory;
  for (const Fault fault : {Fault::Death, Fault::DeathWithin}) {
    const TempDir dir;
    bool reached = true;
    std::size_t deaths = 0;
    std::size_t leftovers = 0;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(::testing::Message()
                   << layout.name << ", fault " << static_cast<int>(fault) << " at " << k);
      ASSERT_LT(k, 1000u);
      const std::string path = dir.Write("p.icc", layout.image);
      ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
      const int code = InChild([&] {
        const FaultAt at(k, fault);
        if (EditOnce(path) != EditState::Done) return 2;
        return FaultAt::Reached() ? 1 : 0;
      });
      ASSERT_TRUE(code == 0 || code == 1 || code == 77) << code;
      reached = code != 0;
      deaths += code == 77 ? 1u : 0u;
      const Bytes left = ReadFile(path);
      EXPECT_TRUE(left == layout.image || left == Edited(layout.tags));
      if (code != 77) {
        EXPECT_TRUE(SameBytes(left, Edited(layout.tags)));
      }
      EXPECT_EQ(ModeOf(path), 0600u);
      const Names unfinished = UnfinishedIn(dir.path());
      EXPECT_EQ(NamesIn(dir.path()).size(), 1 + unfinished.size());
      leftovers += unfinished.size();
      for (const std::string& name : unfinished) {
        // Nobody reads in a copy what he may not read in the profile.
        if (std::filesystem::file_size(dir.File(name)) != 0) {
          EXPECT_EQ(ModeOf(dir.File(name)) & 077, 0u);
        }
      }
      {
        ProfileEdit edit{AFilePath(path)};
        ASSERT_EQ(edit.state(), EditState::Open);
        EXPECT_EQ(UnfinishedIn(dir.path()).size(), 1u);
        ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
        EXPECT_EQ(edit.Commit(), EditState::Done);
      }
      EXPECT_TRUE(SameBytes(ReadFile(path), Edited(layout.tags)));
      EXPECT_EQ(NamesIn(dir.path()), Names{"p.icc"});
    }
    EXPECT_GE(deaths, fault == Fault::Death ? 15u : 4u);
    EXPECT_GE(leftovers, 2u);
  }
}

TEST(ProfileEdit, AProgramMayDieAtAnyMoment) { DieAtEveryCall(TwoLayouts()[0]); }

TEST(ProfileEdit, AProgramThatArrangesMayDieAtAnyMoment) { DieAtEveryCall(TwoLayouts()[1]); }

TEST(ProfileEdit, TellsTheNamesOfUnfinishedCopies) {
  EXPECT_TRUE(vkcl::IsUnfinishedCopy(AFilePath(".vkcl-0123456789abcdef-0.new")));
  EXPECT_TRUE(vkcl::IsUnfinishedCopy(AFilePath("a/b/.vkcl-0123456789abcdef-4711.new")));
  for (const char* name : {"", "p.icc", ".vkcl-.new", ".vkcl-0123456789abcdef-0.new/p.icc"}) {
    EXPECT_FALSE(vkcl::IsUnfinishedCopy(AFilePath(name))) << name;
  }
}

TEST(ProfileEdit, WhatAKilledProgramLeftIsRemoved) {
  const OneProfile p(OrderedImage());
  const auto work = [&](const auto& wait) {
    ProfileEdit edit(p.At());
    if (edit.state() != EditState::Open || Store(edit, QX53, Pattern(20, 4)) == 0) return 1;
    wait();
    return edit.Commit() == EditState::Done ? 0 : 2;
  };
  OtherProcess killed(work);
  OtherProcess alive(work);
  ASSERT_TRUE(killed.waits());
  ASSERT_TRUE(alive.waits());
  EXPECT_EQ(UnfinishedIn(p.dir.path()).size(), 2u);
  killed.Kill();
  EXPECT_EQ(UnfinishedIn(p.dir.path()).size(), 2u);
  { const ProfileEdit edit(p.At()); }
  EXPECT_EQ(UnfinishedIn(p.dir.path()).size(), 1u);
  EXPECT_EQ(alive.Finish(), 0);
  p.Expect(Edited(SomeTags()));
}

TEST(ProfileEdit, TwoProgramsAtOneProfileLeaveAWholeOne) {
  const FoldersInMemory memory;
  for (unsigned round = 0; round < 15; ++round) {
    const OneProfile p(OrderedImage());
    const auto work = [&](unsigned seed) {
      return [&p, seed](const auto& wait) {
        ProfileEdit edit(p.At());
        if (edit.state() != EditState::Open) return 1;
        if (Store(edit, QX53, Pattern(900, seed)) == 0) return 2;
        wait();
        const EditState state = edit.Commit();
        return state == EditState::Done ? 10 : state == EditState::Changed ? 11 : 3;
      };
    };
    OtherProcess one(work(1));
    OtherProcess two(work(2));
    one.Go();
    two.Go();
    const int first = one.Finish();
    const int second = two.Finish();
    EXPECT_TRUE(first == 10 || first == 11) << first;
    EXPECT_TRUE(second == 10 || second == 11) << second;
    EXPECT_TRUE(first == 10 || second == 10);
    const auto result = [](unsigned seed) {
      return ProfileImage(ProfileHeader(), With(SomeTags(), Sig("QX53"), Pattern(900, seed)));
    };
    const Bytes left = p.Content();
    EXPECT_TRUE((first == 10 && left == result(1)) || (second == 10 && left == result(2)));
    EXPECT_EQ(NamesIn(p.dir.path()), Names{"p.icc"});
  }
}

// Two programs in one folder clear up and begin all the time, and never lose a copy.
TEST(ProfileEdit, ProgramsInOneFolderDoNotDisturbEachOther) {
  const FoldersInMemory memory;
  const TempDir dir;
  const auto work = [&](const std::string& name) {
    const std::string path = dir.File(name);
    WriteFile(path, OrderedImage());
    for (unsigned i = 0; i < 60; ++i) {
      ProfileEdit edit{AFilePath(path)};
      if (edit.state() != EditState::Open) return 1;
      if (Store(edit, QX53, Pattern(i, i)) == 0) return 2;
      if (edit.Commit() != EditState::Done) return 3;
    }
    return 0;
  };
  const auto other = [&](const auto& wait) {
    wait();
    return work("q.icc");
  };
  OtherProcess second(other);
  second.Go();
  EXPECT_EQ(work("p.icc"), 0);
  EXPECT_EQ(second.Finish(), 0);
  EXPECT_EQ(NamesIn(dir.path()), (Names{"p.icc", "q.icc"}));
}

TEST(ProfileEdit, LinksAndPipesOfSuchNamesStay) {
  const OneProfile p(OrderedImage());
  const Names names = {UnfinishedName(), UnfinishedName(), UnfinishedName()};
  std::filesystem::create_symlink("p.icc", p.dir.path() / names[0]);
  std::filesystem::create_symlink("absent", p.dir.path() / names[1]);
  ASSERT_EQ(::mkfifo(p.dir.File(names[2]).c_str(), 0600), 0);
  EXPECT_EQ(EditOnce(p.path), EditState::Done);
  EXPECT_TRUE(SameBytes(p.Content(), Edited(SomeTags())));
  for (const std::string& name : names) {
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::symlink_status(p.dir.path() / name)));
  }
  EXPECT_EQ(NamesIn(p.dir.path()).size(), 4u);
}

TEST(ProfileEdit, LongNamesAreNoObstacle) {
  for (const std::size_t length : {std::size_t{250}, std::size_t{255}}) {
    const OneProfile p(OrderedImage(), std::string(length, 'n'));
    ProfileEdit edit(p.At());
    ASSERT_EQ(edit.state(), EditState::Open) << length;
    ASSERT_EQ(edit.handler()->WriteVKWizardFlag(7), 1);
    EXPECT_EQ(edit.Commit(), EditState::Done);
    p.Expect(ProfileImage(ProfileHeader(), With(SomeTags(), Sig("QX74"), kSeven)));
  }
}

TEST(ProfileEdit, PermissionsStay) {
  for (const mode_t mask : {mode_t{0}, mode_t{077}}) {
    const mode_t before = ::umask(mask);
    for (const unsigned mode : {0600u, 0640u, 0644u, 0666u, 0755u}) {
      SCOPED_TRACE(::testing::Message() << std::oct << mode << " " << mask);
      const OneProfile p(OrderedImage());
      ASSERT_EQ(::chmod(p.path.c_str(), mode), 0);
      ProfileEdit edit(p.At());
      ASSERT_EQ(edit.state(), EditState::Open);
      EXPECT_EQ(ModeOf(CopyOf(edit)), mode);
      ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
      EXPECT_EQ(edit.Commit(), EditState::Done);
      EXPECT_EQ(ModeOf(p.path), mode);
      p.Expect(Edited(SomeTags()));
    }
    ::umask(before);
  }
}

TEST(ProfileEdit, AProfileThatIsClosedToOthersInTheMeantimeStaysClosed) {
  const OneProfile p(OrderedImage());
  ASSERT_EQ(::chmod(p.path.c_str(), 0644), 0);
  ProfileEdit edit(p.At());
  ASSERT_EQ(edit.state(), EditState::Open);
  ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
  ASSERT_EQ(::chmod(p.path.c_str(), 0600), 0);
  const EditState state = edit.Commit();
  EXPECT_TRUE(state == EditState::Changed || state == EditState::Done) << EditStateText(state);
  EXPECT_EQ(ModeOf(p.path), 0600u);
  p.Expect(state == EditState::Done ? Edited(SomeTags()) : OrderedImage());
}

TEST(ProfileEdit, NamesThatAreNoTextAreNoObstacle) {
  const OneProfile p(OrderedImage(), "\xFF\xFE.icc");
  p.dir.Write("\xC3.new", {1});
  p.dir.Write(".vkcl-\xFF.new", {1});
  EXPECT_EQ(EditOnce(p.path), EditState::Done);
  EXPECT_TRUE(SameBytes(p.Content(), Edited(SomeTags())));
  EXPECT_EQ(NamesIn(p.dir.path()).size(), 3u);
}

TEST(ProfileEdit, TheOwnerStays) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  for (const unsigned mode : {0444u, 0640u}) {
    const OneProfile p(OrderedImage());
    ASSERT_EQ(::chown(p.path.c_str(), 1234, 2345), 0);
    ASSERT_EQ(::chmod(p.path.c_str(), mode), 0);
    EXPECT_EQ(EditOnce(p.path), EditState::Done);
    struct stat status = {};
    ASSERT_EQ(::stat(p.path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234u);
    EXPECT_EQ(status.st_gid, 2345u);
    EXPECT_EQ(ModeOf(p.path), mode);
    p.Expect(Edited(SomeTags()));
  }
}

TEST(ProfileEdit, AnotherOwnersProfileMayBecomeOnesOwn) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  const OneProfile p(OrderedImage());
  ASSERT_EQ(::chmod(p.path.c_str(), 0666), 0);
  // A leftover that may not be opened is in nobody's way.
  const std::string leftover = p.dir.Write(UnfinishedName(), {1});
  ASSERT_EQ(::chmod(leftover.c_str(), 0600), 0);
  GiveToOrdinaryUser(p.dir.path());
  AsOrdinaryUser([&] {
    EXPECT_EQ(EditOnce(p.path), EditState::Done);
    EXPECT_TRUE(SameBytes(p.Content(), Edited(SomeTags())));
    EXPECT_EQ(ModeOf(p.path), 0666u);
    EXPECT_LE(UnfinishedIn(p.dir.path()).size(), 1u);
  });
}

TEST(ProfileEdit, WhatMayNotBeWrittenIsRefused) {
  const OneProfile p(OrderedImage());
  GiveToOrdinaryUser(p.path);
  GiveToOrdinaryUser(p.dir.path());
  AsOrdinaryUser([&] {
    for (const unsigned mode : {0444u, 0400u}) {
      ::chmod(p.path.c_str(), mode);
      ExpectRefused(p, OrderedImage(), EditState::NotWritable);
      EXPECT_EQ(ModeOf(p.path), mode);
    }
    ::chmod(p.path.c_str(), 0644);
    ::chmod(p.dir.path().c_str(), 0555);
    ExpectRefused(p, OrderedImage(), EditState::NotWritable);
    ::chmod(p.dir.path().c_str(), 0755);
    ::chmod(p.path.c_str(), 0200);  // not readable
    {
      ProfileEdit edit(p.At());
      EXPECT_EQ(edit.state(), EditState::NoProfile);
    }
    ::chmod(p.path.c_str(), 0644);
    p.Expect(OrderedImage());
    EXPECT_EQ(EditOnce(p.path), EditState::Done);
  });
}

TEST(ProfileEdit, AFolderThatIsClosedInTheMeantimeKeepsTheProfile) {
  const OneProfile p(OrderedImage());
  GiveToOrdinaryUser(p.path);
  GiveToOrdinaryUser(p.dir.path());
  AsOrdinaryUser([&] {
    {
      ProfileEdit edit(p.At());
      ASSERT_EQ(edit.state(), EditState::Open);
      ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
      ::chmod(p.dir.path().c_str(), 0555);
      EXPECT_EQ(edit.Commit(), EditState::NotPlaced);
      EXPECT_TRUE(SameBytes(p.Content(), OrderedImage()));
      ::chmod(p.dir.path().c_str(), 0755);
    }
    EXPECT_EQ(EditOnce(p.path), EditState::Done);
    p.Expect(Edited(SomeTags()));
  });
}

TEST(ProfileEdit, SymbolicLinksAreFollowed) {
  const TempDir dir;
  for (const char* folder : {"here", "there"}) {
    std::filesystem::create_directory(dir.path() / folder);
  }
  const std::filesystem::path here = dir.path() / "here";
  const std::string target = dir.File("there/p.icc");
  std::filesystem::create_symlink("../there/p.icc", here / "relative");
  std::filesystem::create_symlink(target, here / "absolute");
  std::filesystem::create_symlink("relative", here / "chained");
  std::filesystem::create_symlink(here / "chained", here / "longer");
  std::filesystem::create_directory_symlink("there", dir.path() / "folder");
  const Names links = NamesIn(here);
  const std::string leftover = UnfinishedName();
  for (const char* name :
       {"here/relative", "here/absolute", "here/chained", "here/longer", "folder/p.icc"}) {
    SCOPED_TRACE(name);
    WriteFile(target, OrderedImage());
    dir.Write("there/" + leftover, {1});
    {
      ProfileEdit edit{AFilePath(dir.File(name))};
      ASSERT_EQ(edit.state(), EditState::Open);
      EXPECT_EQ(NamesIn(here), links);
      EXPECT_EQ(NamesIn(dir.path() / "there").size(), 2u);
      ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
      EXPECT_EQ(edit.Commit(), EditState::Done);
    }
    EXPECT_TRUE(SameBytes(ReadFile(target), Edited(SomeTags())));
    EXPECT_FALSE(std::filesystem::is_symlink(target));
    EXPECT_EQ(NamesIn(dir.path() / "there"), Names{"p.icc"});
    EXPECT_EQ(NamesIn(here), links);
    for (const std::string& link : links) EXPECT_TRUE(std::filesystem::is_symlink(here / link));
  }
  EXPECT_EQ(std::filesystem::read_symlink(here / "relative"), "../there/p.icc");
}

TEST(ProfileEdit, ALinkToALinkWithoutAFolderIsFollowed) {
  const TempDir dir;
  dir.Write("p.icc", OrderedImage());
  std::filesystem::create_symlink("p.icc", dir.path() / "link");
  const CurrentFolder current(dir.path());
  EXPECT_EQ(EditOnce("link"), EditState::Done);
  EXPECT_TRUE(SameBytes(ReadFile("p.icc"), Edited(SomeTags())));
  EXPECT_EQ(NamesIn("."), (Names{"link", "p.icc"}));
  EXPECT_TRUE(std::filesystem::is_symlink("link"));
}

TEST(ProfileEdit, LinksThatLeadNowhereAreNoProfiles) {
  const TempDir dir;
  std::filesystem::create_symlink("b", dir.path() / "a");
  std::filesystem::create_symlink("a", dir.path() / "b");
  std::filesystem::create_symlink("absent", dir.path() / "dangling");
  ASSERT_EQ(::mkfifo(dir.File("fifo").c_str(), 0600), 0);
  for (const char* name : {"a", "b", "dangling", "fifo"}) {
    SCOPED_TRACE(name);
    for (const int channels : {0, 4}) {
      ProfileEdit edit(AFilePath(dir.File(name)), channels);
      EXPECT_EQ(edit.state(), EditState::NoProfile);
      EXPECT_EQ(edit.Commit(), EditState::NoProfile);
    }
    EXPECT_EQ(NamesIn(dir.path()), (Names{"a", "b", "dangling", "fifo"}));
  }
}

TEST(ProfileEdit, HardLinksAreRefusedUnlessTold) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", OrderedImage());
  const std::string other = dir.File("other.icc");
  std::filesystem::create_hard_link(path, other);
  {
    ProfileEdit edit{AFilePath(path)};
    EXPECT_EQ(edit.state(), EditState::HardLinked);
    EXPECT_EQ(edit.handler(), nullptr);
    EXPECT_EQ(edit.Commit(), EditState::HardLinked);
  }
  EXPECT_EQ(std::filesystem::hard_link_count(path), 2u);
  EXPECT_TRUE(SameBytes(ReadFile(path), OrderedImage()));
  EXPECT_EQ(NamesIn(dir.path()), (Names{"other.icc", "p.icc"}));
  // Also through a symbolic link.
  std::filesystem::create_symlink("p.icc", dir.path() / "z");
  EXPECT_EQ(ProfileEdit(AFilePath(dir.File("z"))).state(), EditState::HardLinked);
  {
    ProfileEdit edit(AFilePath(path), 0, {}, HardLinks::Replace);
    ASSERT_EQ(edit.state(), EditState::Open);
    ASSERT_EQ(Store(edit, QX53, Pattern(20, 4)), 1);
    EXPECT_EQ(edit.Commit(), EditState::Done);
  }
  EXPECT_TRUE(SameBytes(ReadFile(path), Edited(SomeTags())));
  EXPECT_TRUE(SameBytes(ReadFile(other), OrderedImage()));
  EXPECT_EQ(std::filesystem::hard_link_count(other), 1u);
  EXPECT_EQ(NamesIn(dir.path()), (Names{"other.icc", "p.icc", "z"}));
  EXPECT_EQ(ProfileEdit(AFilePath(path)).state(), EditState::Open);
}

TEST(ProfileEdit, TheOldFileIsNeverWritten) {
  for (const Layout& layout : AllLayouts()) {
    SCOPED_TRACE(layout.name);
    const OneProfile p(layout.image);
    const int old = ::open(p.path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(old, 0);
    struct stat before = {};
    ASSERT_EQ(::fstat(old, &before), 0);
    EXPECT_EQ(EditOnce(p.path), EditState::Done);
    struct stat after = {};
    ASSERT_EQ(::fstat(old, &after), 0);
    EXPECT_EQ(after.st_nlink, 0u);
    EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    Bytes content(layout.image.size() + 1);
    ASSERT_EQ(::read(old, content.data(), content.size()),
              static_cast<ssize_t>(layout.image.size()));
    content.pop_back();
    EXPECT_TRUE(SameBytes(content, layout.image));
    ::close(old);
  }
}

TEST(ProfileEdit, AFolderThatMayNotBeListedIsNoObstacle) {
  const OneProfile p(OrderedImage());
  GiveToOrdinaryUser(p.path);
  GiveToOrdinaryUser(p.dir.path());
  AsOrdinaryUser([&] {
    ::chmod(p.dir.path().c_str(), 0300);
    EXPECT_EQ(EditOnce(p.path), EditState::Done);
    ::chmod(p.dir.path().c_str(), 0700);
    p.Expect(Edited(SomeTags()));
  });
}

#endif

#if defined(__linux__)

TEST(ProfileEdit, TheProfileChangesByOneRename) {
  const OneProfile p(OrderedImage());
  const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(watch, 0);
  ASSERT_GE(::inotify_add_watch(
                watch, p.dir.path().c_str(),
                IN_MODIFY | IN_ATTRIB | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO),
            0);
  EXPECT_EQ(EditOnce(p.path), EditState::Done);
  struct Event {
    std::string name;
    std::uint32_t mask;
  };
  std::vector<Event> events;
  alignas(inotify_event) char buffer[65536];
  for (ssize_t got = 0; (got = ::read(watch, buffer, sizeof buffer)) > 0;) {
    for (char* at = buffer; at < buffer + got;) {
      inotify_event event;
      std::memcpy(&event, at, sizeof event);
      events.push_back(
          {event.len != 0 ? std::string(at + sizeof event) : std::string(), event.mask});
      at += sizeof event + event.len;
    }
  }
  ::close(watch);
  ASSERT_GE(events.size(), 3u);
  EXPECT_EQ(events.back().name, "p.icc");
  EXPECT_EQ(events.back().mask, std::uint32_t{IN_MOVED_TO});
  events.pop_back();
  const std::string copy = events.back().name;
  EXPECT_TRUE(copy.starts_with(".vkcl-") && copy.ends_with(".new")) << copy;
  EXPECT_EQ(events.back().mask, std::uint32_t{IN_MOVED_FROM});
  for (const Event& event : events) EXPECT_EQ(event.name, copy) << std::hex << event.mask;
}

#endif

}  // namespace
