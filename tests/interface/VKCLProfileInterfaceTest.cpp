// VKCLProfile as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class VKCLProfile;
class VKPrivateTag;

#include "profile/VKCLProfile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>

#include "interface/Interface.h"
#include "support/ImageBuilder.h"
#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

static_assert(std::is_enum_v<VKCLProfileFinishedState> && sizeof(VKCLProfileFinishedState) == 4);
static_assert(std::is_convertible_v<VKCLProfileFinishedState, int>);
static_assert(FinishedNone == 0 && FinishedInkLimit == 1 && FinishedInkSplit == 2);
static_assert(FinishedLinearisation == 3 && FinishedMultiInkLimit == 4);
static_assert(FinishedGrayBalance == 5 && FinishedCharacterisation == 6 && FinishedProfile == 7);

// Members, all of them public.
static_assert(std::is_same_v<decltype(VKCLProfile::valid), std::int32_t>);
static_assert(std::is_same_v<decltype(VKCLProfile::channelCount), std::int32_t>);
static_assert(std::is_same_v<decltype(VKCLProfile::filePath), AFilePath>);
static_assert(std::is_same_v<decltype(VKCLProfile::header), icHeader>);
static_assert(std::is_same_v<decltype(VKCLProfile::tagCount), std::uint32_t>);
static_assert(std::is_same_v<decltype(VKCLProfile::tagTable), icTag*>);

// Whatever converts into a path opens a profile.
static_assert(std::is_constructible_v<VKCLProfile, AFilePath&, int>);
static_assert(std::is_constructible_v<VKCLProfile, const AFilePath&, int>);
static_assert(std::is_constructible_v<VKCLProfile, const char*, int>);
static_assert(std::is_constructible_v<VKCLProfile, const std::string&, int>);
static_assert(std::is_constructible_v<VKCLProfile, const AString&, int>);
static_assert(std::is_copy_constructible_v<VKCLProfile>);
static_assert(std::is_copy_assignable_v<VKCLProfile>);

static_assert(Query<int()>::Is(&VKCLProfile::isValidICC));
static_assert(Query<int()>::Is(&VKCLProfile::isValidOutputICC));
static_assert(Query<int()>::Is(&VKCLProfile::isVKCLProfile));
static_assert(
    Query<int(VKCLProfileFinishedState&, int)>::Is(&VKCLProfile::GetVKCLProfileFinishedState));
static_assert(Query<icProfileClassSignature()>::Is(&VKCLProfile::GetDeviceClass));
static_assert(Query<icColorSpaceSignature()>::Is(&VKCLProfile::GetColorSpace));
static_assert(Query<icColorSpaceSignature()>::Is(&VKCLProfile::GetPCS));
static_assert(Query<unsigned long(icTagSignature)>::Is(&VKCLProfile::GetTagSize));
static_assert(Query<void(AFilePath&)>::Is(&VKCLProfile::GetICCFilePath));
static_assert(Operation<void(int)>::Is(&VKCLProfile::UpdateHeaderColorSpace));
static_assert(Operation<int(VKPrivateTagSignature, void*, unsigned long*)>::Is(
    &VKCLProfile::ReadVKPrivateTag));
static_assert(Operation<int(VKPrivateTag*, int)>::Is(&VKCLProfile::ReadVKPrivateTag));
static_assert(Operation<char*(unsigned long&)>::Is(&VKCLProfile::ReadtargTag));
static_assert(Operation<int(VKCLProfile&)>::Is(&VKCLProfile::MergeVKPrivateTagIntoStandICC));
static_assert(Operation<int(const char*)>::Is(&VKCLProfile::WriteICCWithoutVKiTags));

// What is written is read only, so a caller's pointers need not be to constants.
static_assert(requires(VKCLProfile & profile, VKPrivateTagSignature signature, void* data,
                       unsigned long length, VKPrivateTag* tags, int count) {
  requires std::is_same_v<decltype(profile.WriteVKPrivateTag(signature, data, length)), int>;
  requires std::is_same_v<decltype(profile.WriteVKPrivateTag(tags)), int>;
  requires std::is_same_v<decltype(profile.WriteMultiVKPrivateTags(tags, count)), int>;
});

static_assert(VKCL_IS_PUBLIC(VKCLProfile, isValidICC), "what is public is told from what is not");
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, GetTagIndex));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, GetPadSize));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, ReverseICCHeader));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, isVKCLPrivateTag));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, ReadDataType));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, ReadDataTypeContent));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, ReadTextType));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, ReadTextTypeContent));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, UpdateVKPrivateTag));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, AddVKPrivateTag));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, CreateDummyICC));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, WriteTagTable));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, WriteTagTableEntry));
static_assert(!VKCL_IS_PUBLIC(VKCLProfile, WriteDataType));

// A CMYK output profile with one tag, made by the first write to a path that names nothing.
VKCLProfile Made(const std::string& path) {
  VKCLProfile profile(path, 4);
  int wizard = 1;
  EXPECT_EQ(profile.WriteVKPrivateTag(QX74, &wizard, sizeof wizard), 1);
  return profile;
}

TEST(VKCLProfileInterface, AMissingFileIsNoProfile) {
  const TempDir dir;
  VKCLProfile opened(dir.File("missing.icc"), 0);
  const VKCLProfile& profile = opened;
  EXPECT_EQ(profile.valid, 0);
  EXPECT_EQ(profile.channelCount, 0);
  EXPECT_EQ(profile.tagTable, nullptr);
  EXPECT_EQ(profile.isValidICC(), 0);
  EXPECT_EQ(profile.isValidOutputICC(), 0);
  EXPECT_EQ(profile.isVKCLProfile(), 0);
  VKCLProfileFinishedState state = FinishedProfile;
  EXPECT_EQ(profile.GetVKCLProfileFinishedState(state, 1), 0);
  EXPECT_EQ(state, FinishedNone);
  EXPECT_EQ(profile.GetTagSize(icSigCharTargetTag), 0ul);
  AFilePath path;
  profile.GetICCFilePath(path);
  EXPECT_EQ(path.str(), dir.File("missing.icc"));

  char buffer[4] = {};
  unsigned long size = 3;
  EXPECT_EQ(opened.ReadVKPrivateTag(QX53, nullptr, &size), 0);
  EXPECT_EQ(size, 3ul);
  EXPECT_EQ(opened.ReadVKPrivateTag(QX53, buffer, &size), 0);
  EXPECT_EQ(size, 0ul);
  EXPECT_EQ(opened.ReadVKPrivateTag(nullptr, 1), 0);
  EXPECT_EQ(opened.ReadtargTag(size), nullptr);
  EXPECT_EQ(opened.WriteVKPrivateTag(QX74, buffer, sizeof buffer), 0);
  EXPECT_EQ(opened.WriteMultiVKPrivateTags(nullptr, 0), 0);
  EXPECT_EQ(opened.WriteICCWithoutVKiTags(dir.File("copy.icc").c_str()), 0);
  VKCLProfile other(dir.File("other.icc").c_str(), 0);
  EXPECT_EQ(opened.MergeVKPrivateTagIntoStandICC(other), 0);
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST(VKCLProfileInterface, AProfileIsWrittenAndRead) {
  const TempDir dir;
  AFilePath path = dir.File("paper.icc");
  VKCLProfile profile = Made(path.str());
  EXPECT_EQ(profile.isValidICC(), 1);
  EXPECT_EQ(profile.isValidOutputICC(), 1);
  EXPECT_EQ(profile.GetDeviceClass(), icSigOutputClass);
  EXPECT_EQ(profile.GetColorSpace(), icSigCmykData);
  EXPECT_EQ(profile.GetPCS(), icSigLabData);
  EXPECT_EQ(profile.GetTagSize(static_cast<icTagSignature>(QX74)), 16ul);

  int flag = 0;
  unsigned long size = 0;
  EXPECT_EQ(profile.ReadVKPrivateTag(QX74, &flag, &size), 1);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(size, 4ul);
  EXPECT_EQ(profile.ReadVKPrivateTag(QX74, &flag, nullptr), 1);
  VKPrivateTag tag;
  tag.SetSignature(QX74);
  EXPECT_EQ(profile.ReadVKPrivateTag(&tag, 1), 1);
  EXPECT_EQ(tag.size, 4u);

  tag.SetSignature(QX64);
  EXPECT_EQ(profile.WriteVKPrivateTag(&tag), 1);
  EXPECT_EQ(profile.WriteMultiVKPrivateTags(&tag, 1), 1);
  EXPECT_EQ(profile.tagCount, 3u);
  EXPECT_EQ(VKCLProfile(path, 0).tagCount, 3u);
  EXPECT_EQ(profile.isVKCLProfile(), 0) << "without 'QX51' and 'QX53'";
  EXPECT_EQ(profile.WriteICCWithoutVKiTags(dir.File("copy.icc").c_str()), 0) << "no other tag";

  profile.UpdateHeaderColorSpace(16);
  EXPECT_EQ(profile.GetColorSpace(), icSigCmyData);
  EXPECT_EQ(profile.header.colorSpace, icSigCmyData);
}

TEST(VKCLProfileInterface, TheTargetTextIsHandedOut) {
  const TempDir dir;
  const std::string path =
      dir.Write("paper.icc", ProfileImage(ProfileHeader(), {{Sig("targ"), TextTag("TARGET")}}));
  VKCLProfile profile(path, 0);
  unsigned long size = 0;
  const std::unique_ptr<char[]> text(profile.ReadtargTag(size));
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(std::string(text.get(), size), "TARGET");
  EXPECT_EQ(profile.WriteICCWithoutVKiTags(dir.File("copy.icc").c_str()), 1);
}

TEST(VKCLProfileInterface, PrivateTagsGoIntoAStandardProfile) {
  const TempDir dir;
  VKCLProfile own = Made(dir.File("own.icc"));
  char record[8] = {};
  EXPECT_EQ(own.WriteVKPrivateTag(QX51, record, sizeof record), 1);
  EXPECT_EQ(own.WriteVKPrivateTag(QX53, record, sizeof record), 1);
  VKCLProfileFinishedState state = FinishedNone;
  EXPECT_EQ(own.GetVKCLProfileFinishedState(state, 1), 1);
  EXPECT_EQ(state, FinishedInkLimit);
  const std::string path =
      dir.Write("standard.icc", ProfileImage(ProfileHeader(), {{Sig("desc"), Pattern(8, 1)}}));
  VKCLProfile target(path, 0);
  EXPECT_EQ(own.MergeVKPrivateTagIntoStandICC(target), 1);
  EXPECT_EQ(target.tagCount, 4u);
}

TEST(VKCLProfileInterface, CopiesHaveTablesOfTheirOwn) {
  const TempDir dir;
  const VKCLProfile profile = Made(dir.File("paper.icc"));
  const VKCLProfile copy(profile);
  VKCLProfile assigned(dir.File("other.icc"), 3);
  assigned = profile;
  for (const VKCLProfile* other : {&copy, static_cast<const VKCLProfile*>(&assigned)}) {
    EXPECT_NE(other->tagTable, profile.tagTable);
    EXPECT_EQ(other->tagTable[0].sig, profile.tagTable[0].sig);
    EXPECT_EQ(other->channelCount, 4);
    EXPECT_EQ(other->filePath.str(), profile.filePath.str());
  }
}

TEST(VKCLProfileInterface, MembersStandInTheirOrder) {
  const VKCLProfile profile("", 0);
  EXPECT_LT(OffsetIn(profile, profile.valid), OffsetIn(profile, profile.channelCount));
  EXPECT_LT(OffsetIn(profile, profile.channelCount), OffsetIn(profile, profile.filePath));
  EXPECT_LT(OffsetIn(profile, profile.filePath), OffsetIn(profile, profile.header));
  EXPECT_LT(OffsetIn(profile, profile.header), OffsetIn(profile, profile.tagCount));
  EXPECT_LT(OffsetIn(profile, profile.tagCount), OffsetIn(profile, profile.tagTable));
}

TEST(VKCLProfileInterface, ATemporaryFileGoesWithItsObject) {
  const TempDir dir;
  { const VKCLProfile profile(dir.Write("paper.tmp", {1}), 0); }
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

}  // namespace
}  // namespace vkcl::testing
