// What a file is, told without an object: always what an object that is opened then answers.
#include "profile/ProfileIdentity.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "handler/VKCLProfileHandler.h"
#include "support/ImageBuilder.h"
#include "support/RealProfiles.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::IdentifyProfile;
using vkcl::ProfileIdentity;
using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::DataTag;
using vkcl::testing::ImageTag;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RealProfiles;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TempDir;

using Kinds = std::vector<CallKind>;

// Colour parameters with status 9, at byte 8, little-endian.
Bytes HeldBack() {
  Bytes payload(1068);
  payload[8] = 9;
  return payload;
}

// A finished CMYK profile of the system's own that is held back, longer than what is read first.
Bytes Finished() {
  return ProfileImage(ProfileHeader(), {{Sig("B2A0"), DataTag(Pattern(5000, 1))},
                                        {Sig("QX51"), DataTag(Pattern(140, 2))},
                                        {Sig("QX53"), DataTag(HeldBack())},
                                        {Sig("QX54"), DataTag(Pattern(9, 3))}});
}

// All of it as numbers, so that a failure shows which one differs.
std::vector<std::int64_t> NumbersOf(const ProfileIdentity& identity) {
  return {static_cast<std::int64_t>(identity.deviceClass),
          static_cast<std::int64_t>(identity.colorSpace),
          static_cast<std::int64_t>(identity.pcs),
          identity.channelCount,
          identity.tagCount,
          identity.isOutput ? 1 : 0,
          identity.isOwn ? 1 : 0,
          identity.byTags,
          identity.byStatus};
}

// What no file is, to see whether anything was set.
ProfileIdentity Untouched() {
  return {static_cast<icProfileClassSignature>(1),
          static_cast<icColorSpaceSignature>(2),
          static_cast<icColorSpaceSignature>(3),
          4,
          5,
          true,
          true,
          FinishedInkSplit,
          FinishedGrayBalance};
}

// Whether the file is told to be what an object on it answers.
void ExpectAsAnObjectAnswers(const std::string& path, int channels) {
  VKCLProfileHandler handler(AFilePath(path), channels);
  const VKCLProfile& profile = *handler.GetProfilePtr();
  ProfileIdentity identity = Untouched();
  ASSERT_EQ(IdentifyProfile(AFilePath(path), channels, identity), handler.IsICCFile() != 0);
  if (handler.IsICCFile() == 0) {
    EXPECT_EQ(NumbersOf(identity), NumbersOf(Untouched()));
    return;
  }
  VKCLProfileFinishedState byTags = FinishedNone;
  VKCLProfileFinishedState byStatus = FinishedNone;
  handler.GetVKCLProfileFinishedState(byTags, 1);
  handler.GetVKCLProfileFinishedState(byStatus, 0);
  EXPECT_EQ(NumbersOf(identity),
            NumbersOf({profile.GetDeviceClass(), profile.GetColorSpace(), profile.GetPCS(),
                       profile.channelCount, profile.tagCount, handler.IsOutputICCFile() != 0,
                       handler.IsVKCLProfile() != 0, byTags, byStatus}));
}

TEST(ProfileIdentity, TellsWhatAProfileIs) {
  const TempDir dir;
  ProfileIdentity identity;
  ASSERT_TRUE(IdentifyProfile(AFilePath(dir.Write("p.icc", Finished())), 0, identity));
  EXPECT_EQ(identity.deviceClass, 0x70727472);  // 'prtr'
  EXPECT_EQ(identity.colorSpace, 0x434D594B);   // 'CMYK'
  EXPECT_EQ(identity.pcs, 0x4C616220);          // 'Lab '
  EXPECT_EQ(identity.channelCount, 4);
  EXPECT_EQ(identity.tagCount, 4u);
  EXPECT_TRUE(identity.isOutput);
  EXPECT_TRUE(identity.isOwn);
  EXPECT_EQ(identity.byTags, FinishedProfile);
  EXPECT_EQ(identity.byStatus, FinishedLinearisation);
}

TEST(ProfileIdentity, ForgetsWhatWasThereBefore) {
  const TempDir dir;
  const Bytes foreign =
      ProfileImage(ProfileHeader(Sig("mntr"), Sig("RGB ")), {{Sig("B2A0"), DataTag({1})}});
  ProfileIdentity identity = Untouched();
  ASSERT_TRUE(IdentifyProfile(AFilePath(dir.Write("p.icc", foreign)), 0, identity));
  EXPECT_EQ(NumbersOf(identity), NumbersOf({icSigDisplayClass, icSigRgbData, icSigLabData, 3, 1,
                                            false, false, FinishedNone, FinishedNone}));
}

TEST(ProfileIdentity, TakesTheNumberOfChannelsWhereTheHeaderDoesNotTell) {
  const TempDir dir;
  const AFilePath path(
      dir.Write("p.icc", ProfileImage(ProfileHeader(Sig("prtr"), Sig("3CLR")), {})));
  ProfileIdentity identity = Untouched();
  EXPECT_FALSE(IdentifyProfile(path, 0, identity));
  EXPECT_EQ(NumbersOf(identity), NumbersOf(Untouched()));
  EXPECT_TRUE(IdentifyProfile(path, 7, identity));
  EXPECT_EQ(identity.channelCount, 7);
}

TEST(ProfileIdentity, AgreesWithAnObjectAtEveryLengthOfTheFile) {
  const TempDir dir;
  const Bytes whole = ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag(Pattern(140, 2))},
                                                     {Sig("QX53"), DataTag(HeldBack())},
                                                     {Sig("B2A0"), DataTag({1})}});
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    const std::string path = dir.Write("p.icc", Slice(whole, 0, length));
    ExpectAsAnObjectAnswers(path, 0);
    ExpectAsAnObjectAnswers(path, 3);
  }
}

TEST(ProfileIdentity, AgreesWithAnObjectOnRealProfiles) {
  for (const auto& path : RealProfiles()) {
    SCOPED_TRACE(path);
    ExpectAsAnObjectAnswers(path.string(), 0);
    ExpectAsAnObjectAnswers(path.string(), 5);
  }
}

TEST(ProfileIdentity, WhatIsNoFileIsNoProfile) {
  const TempDir dir;
  for (const std::string& path : {dir.File("absent.icc"), dir.path().string(), std::string()}) {
    ExpectAsAnObjectAnswers(path, 0);
    ProfileIdentity identity;
    EXPECT_FALSE(IdentifyProfile(AFilePath(path), 4, identity)) << path;
  }
}

TEST(ProfileIdentity, LeavesATemporaryProfileWhereItIs) {
  const TempDir dir;
  const std::string path = dir.Write("p.tmp", Finished());
  ProfileIdentity identity;
  EXPECT_TRUE(IdentifyProfile(AFilePath(path), 0, identity));
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(ProfileIdentity, OpensTheFileOnce) {
  const TempDir dir;
  const AFilePath path(dir.Write("p.icc", Finished()));
  const CallLog log;
  ProfileIdentity identity;
  ASSERT_TRUE(IdentifyProfile(path, 0, identity));
  EXPECT_EQ(log.Kinds(), (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Read,
                                CallKind::Close}));
  // Head of the tag, version, size and status of the colour parameters.
  EXPECT_EQ(log.Bytes(CallKind::Read), 4096u + 12 + 12);
}

TEST(ProfileIdentity, AsksForNoStatusWhereThereIsNoState) {
  const TempDir dir;
  const AFilePath path(
      dir.Write("p.icc", ProfileImage(ProfileHeader(), {{Sig("QX53"), DataTag(HeldBack())}})));
  const CallLog log;
  ProfileIdentity identity;
  ASSERT_TRUE(IdentifyProfile(path, 0, identity));
  EXPECT_FALSE(identity.isOwn);
  EXPECT_EQ(log.Kinds(),
            (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Close}));
}

}  // namespace
