#include "profile/VKCLProfile.h"

#include <filesystem>

#include "profile/ProfileIdentity.h"
#include "support/ImageBuilder.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::ImageEntry;
using vkcl::testing::ImageTag;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RawImage;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

// Colour parameters whose status, at byte 8, is `status`; little-endian.
Bytes ColorParam(std::uint32_t status, std::size_t length = 1068) {
  Bytes payload(1068);
  payload[0] = 1;
  payload[4] = 0x2C;
  payload[5] = 0x04;
  for (std::size_t i = 0; i < 4; ++i) {
    payload[8 + i] = static_cast<unsigned char>(status >> (8 * i) & 0xFF);
  }
  return Slice(payload, 0, length);
}

ImageTag Qx51(std::size_t length = 140) { return {Sig("QX51"), DataTag(Pattern(length, 1))}; }
ImageTag Qx53(std::uint32_t status = 0, std::size_t length = 1068) {
  return {Sig("QX53"), DataTag(ColorParam(status, length))};
}
ImageTag Small(std::uint32_t sig) { return {sig, DataTag({1})}; }

class VKCLProfileState : public ::testing::Test {
 protected:
  VKCLProfile Profile(const std::vector<ImageTag>& tags) const {
    return {dir_.Write("a.icc", ProfileImage(ProfileHeader(), tags)), 0};
  }

  // The state, after a check that the result says whether there is one.
  static int State(const VKCLProfile& profile, int ignoreStatus) {
    auto state = static_cast<VKCLProfileFinishedState>(77);
    const int result = profile.GetVKCLProfileFinishedState(state, ignoreStatus);
    EXPECT_EQ(result, state != FinishedNone ? 1 : 0);
    // The same is told of the file by itself.
    vkcl::ProfileIdentity identity;
    if (std::filesystem::exists(profile.filePath.str())) {
      EXPECT_EQ(vkcl::IdentifyProfile(profile.filePath, 0, identity), profile.isValidICC() != 0);
      EXPECT_EQ(identity.isOwn, profile.isVKCLProfile() != 0);
      EXPECT_EQ(ignoreStatus != 0 ? identity.byTags : identity.byStatus, state);
    }
    return state;
  }
  int State(const std::vector<ImageTag>& tags, int ignoreStatus) const {
    return State(Profile(tags), ignoreStatus);
  }

  const TempDir dir_;
};

TEST_F(VKCLProfileState, TheStatesAreNumberedInOrder) {
  static_assert(sizeof(VKCLProfileFinishedState) == 4);
  EXPECT_EQ(FinishedNone, 0);
  EXPECT_EQ(FinishedInkLimit, 1);
  EXPECT_EQ(FinishedInkSplit, 2);
  EXPECT_EQ(FinishedLinearisation, 3);
  EXPECT_EQ(FinishedMultiInkLimit, 4);
  EXPECT_EQ(FinishedGrayBalance, 5);
  EXPECT_EQ(FinishedCharacterisation, 6);
  EXPECT_EQ(FinishedProfile, 7);
}

TEST_F(VKCLProfileState, TheSystemsOwnHoldInkLimitsAndColourParameters) {
  EXPECT_EQ(Profile({Qx51(), Qx53()}).isVKCLProfile(), 1);
  EXPECT_EQ(Profile({Qx53(), Small(Sig("desc")), Qx51()}).isVKCLProfile(), 1);
  EXPECT_EQ(Profile({Qx51()}).isVKCLProfile(), 0);
  EXPECT_EQ(Profile({Qx53()}).isVKCLProfile(), 0);
  EXPECT_EQ(Profile({Small(Sig("QX50")), Small(Sig("QX52"))}).isVKCLProfile(), 0);
  EXPECT_EQ(Profile({}).isVKCLProfile(), 0);
}

TEST_F(VKCLProfileState, AnInvalidProfileIsNoneOfTheSystemsOwn) {
  const VKCLProfile absent(dir_.File("absent.icc"), 4);
  EXPECT_EQ(absent.isVKCLProfile(), 0);
  EXPECT_EQ(State(absent, 1), 0);
  // Its table is there, and has what it takes.
  const VKCLProfile lab(
      dir_.Write("b.icc", ProfileImage(ProfileHeader(Sig("prtr"), Sig("Lab ")), {Qx51(), Qx53()})),
      0);
  ASSERT_EQ(lab.tagCount, 2u);
  EXPECT_EQ(lab.isVKCLProfile(), 0);
  EXPECT_EQ(State(lab, 0), 0);
  EXPECT_EQ(State(lab, 1), 0);
}

TEST_F(VKCLProfileState, APrivateTagAboveQX76MakesItANewerSystemsProfile) {
  for (const std::uint32_t newer :
       {Sig("QX77"), Sig("QX78"), Sig("QX7:"), Sig("QX80"), Sig("QXzz"), Sig("QX8\0"), 0x51583737u,
        0x51583780u, 0x515837FFu, 0x51588000u, 0x5158FF00u, 0x5158FFFFu}) {
    EXPECT_EQ(Profile({Qx51(), Qx53(), Small(newer)}).isVKCLProfile(), 0) << std::hex << newer;
    EXPECT_EQ(Profile({Small(newer), Qx51(), Qx53()}).isVKCLProfile(), 0) << std::hex << newer;
    EXPECT_EQ(State({Small(newer), Qx51(), Qx53(), Small(Sig("B2A0"))}, 1), 0) << std::hex << newer;
  }
}

TEST_F(VKCLProfileState, OtherSignaturesDoNotMakeItANewerSystemsProfile) {
  for (const std::uint32_t other :
       {Sig("QX76"), Sig("QX75"),  Sig("QX49"), Sig("QX00"), Sig("QX\0\0"), Sig("QX  "),
        Sig("QX6z"), Sig("QX7\0"), 0x515800FFu, 0x515836FFu, Sig("QY77"),   Sig("QYzz"),
        Sig("RX77"), Sig("Qx77"),  Sig("qX77"), Sig("XQ77"), Sig("zzzz"),   0x7FFFFFFFu,
        0x80000000u, 0xFFFFFFFFu,  0u}) {
    EXPECT_EQ(Profile({Qx51(), Qx53(), Small(other)}).isVKCLProfile(), 1) << std::hex << other;
  }
}

TEST_F(VKCLProfileState, EveryStateHasItsTag) {
  std::vector<ImageTag> tags = {Qx51(), Qx53()};
  const std::pair<std::uint32_t, int> rows[] = {
      {Sig("QX50"), 2}, {Sig("QX54"), 3}, {Sig("QX52"), 4}, {Sig("QX56"), 5},
      {Sig("QX59"), 6}, {Sig("B2A0"), 7}, {Sig("B2A1"), 7}, {Sig("B2A2"), 7}};
  EXPECT_EQ(State(tags, 0), 1);
  EXPECT_EQ(State(tags, 1), 1);
  for (const auto& [sig, state] : rows) {  // each alone
    EXPECT_EQ(State({Qx51(), Small(sig), Qx53()}, 0), state) << std::hex << sig;
    EXPECT_EQ(State({Qx51(), Small(sig), Qx53()}, 1), state) << std::hex << sig;
  }
  for (const auto& [sig, state] : rows) {  // each on top of the earlier ones
    tags.push_back(Small(sig));
    EXPECT_EQ(State(tags, 0), state) << std::hex << sig;
    EXPECT_EQ(State(tags, 1), state) << std::hex << sig;
  }
}

TEST_F(VKCLProfileState, OtherTagsDecideNothing) {
  std::vector<ImageTag> tags = {Qx51(), Qx53()};
  for (const std::uint32_t sig :
       {Sig("QX55"), Sig("QX57"), Sig("QX60"), Sig("QX58"), Sig("QX72"), Sig("QX73"), Sig("A2B0"),
        Sig("A2B1"), Sig("B2A3"), Sig("b2a0"), Sig("targ"), Sig("gamt")}) {
    tags.push_back(Small(sig));
  }
  EXPECT_EQ(State(tags, 0), 1);
}

TEST_F(VKCLProfileState, InkLimitsLongerThanTheBareRecordCountAsLinearised) {
  for (const std::size_t length : {0u, 1u, 139u, 140u}) {
    EXPECT_EQ(State({Qx51(length), Qx53()}, 1), 1) << length;
    EXPECT_EQ(State({Qx51(length), Qx53(), Small(Sig("QX50"))}, 1), 2) << length;
  }
  for (const std::size_t length : {141u, 142u, 1000u}) {
    EXPECT_EQ(State({Qx51(length), Qx53()}, 1), 3) << length;
    EXPECT_EQ(State({Qx51(length), Qx53(), Small(Sig("QX50"))}, 1), 3) << length;
  }
}

TEST_F(VKCLProfileState, InkLimitsTooSmallForAHeadCountAsLong) {
  for (std::uint32_t size = 0; size <= 13; ++size) {
    const VKCLProfile profile(
        dir_.Write("b.icc",
                   RawImage(ProfileHeader(), {{Sig("QX51"), 156, size}, {Sig("QX53"), 156, 12}},
                            DataTag({1, 2, 3, 4}))),
        0);
    EXPECT_EQ(State(profile, 1), size < 12 ? 3 : 1) << size;
    EXPECT_EQ(State(profile, 0), size < 12 ? 3 : 1) << size;
  }
}

TEST_F(VKCLProfileState, OnlyTheTablesSizeCountsNotTheFilesBytes) {
  const VKCLProfile profile(
      dir_.Write("b.icc", RawImage(ProfileHeader(),
                                   {{Sig("QX51"), 0xFFFFFFFF, 0xFFFFFFFF}, {Sig("QX53"), 156, 12}},
                                   DataTag({}))),
      0);
  EXPECT_EQ(profile.isVKCLProfile(), 1);
  EXPECT_EQ(State(profile, 0), 3);
}

TEST_F(VKCLProfileState, TheFirstInkLimitsDecide) {
  EXPECT_EQ(State({Qx51(140), Qx51(141), Qx53()}, 1), 1);
  EXPECT_EQ(State({Qx51(141), Qx51(140), Qx53()}, 1), 3);
}

TEST_F(VKCLProfileState, StatusNineIsNeverReportedAboveLinearisation) {
  const std::vector<ImageTag> tags = {Qx51(),
                                      Qx53(9),
                                      Small(Sig("QX50")),
                                      Small(Sig("QX54")),
                                      Small(Sig("QX52")),
                                      Small(Sig("QX56")),
                                      Small(Sig("QX59")),
                                      Small(Sig("B2A0"))};
  EXPECT_EQ(State(tags, 0), 3);
  EXPECT_EQ(State(tags, 1), 7);
  EXPECT_EQ(State(tags, -1), 7);
  EXPECT_EQ(State(tags, 2), 7);
  EXPECT_EQ(State({Qx51(), Qx53(9), Small(Sig("B2A0"))}, 0), 1);
  EXPECT_EQ(State({Qx51(), Qx53(9), Small(Sig("B2A0")), Small(Sig("QX50"))}, 0), 2);
}

TEST_F(VKCLProfileState, OnlyStatusNineTakesPart) {
  for (const std::uint32_t status : {0u, 1u, 8u, 10u, 11u, 12u, 13u, 0xFFFFFFF7u, 0x109u, 0x900u,
                                     0x09000000u, 0x80000009u, 0x00010009u}) {
    EXPECT_EQ(State({Qx51(), Qx53(status), Small(Sig("B2A0"))}, 0), 7) << status;
  }
}

TEST_F(VKCLProfileState, TheFirstColourParametersDecide) {
  EXPECT_EQ(State({Qx51(), Qx53(0), Qx53(9), Small(Sig("B2A0"))}, 0), 7);
  EXPECT_EQ(State({Qx51(), Qx53(9), Qx53(0), Small(Sig("B2A0"))}, 0), 1);
}

TEST_F(VKCLProfileState, ShortColourParametersHaveStatusNullUntilTheyHoldIt) {
  for (std::size_t length = 0; length <= 16; ++length) {
    EXPECT_EQ(State({Qx51(), Qx53(9, length), Small(Sig("B2A0"))}, 0), length < 12 ? 7 : 1)
        << length;
  }
}

TEST_F(VKCLProfileState, LongColourParametersFillTheRecord) {
  Bytes payload = ColorParam(9);
  payload.resize(5000, 0xFF);
  EXPECT_EQ(State({Qx51(), {Sig("QX53"), DataTag(payload)}, Small(Sig("B2A0"))}, 0), 1);
}

TEST_F(VKCLProfileState, UnreadableColourParametersGiveNoStateUnlessTheStatusIsLeftOut) {
  const ImageTag last = Small(Sig("B2A0"));
  EXPECT_EQ(State({Qx51(), {Sig("QX53"), TextTag("no data")}, last}, 0), 0);
  EXPECT_EQ(State({Qx51(), {Sig("QX53"), TextTag("no data")}, last}, 1), 7);
  const ImageEntry hostile[] = {{Sig("QX53"), 168, 0},          {Sig("QX53"), 168, 11},
                                {Sig("QX53"), 168, 0xFFFFFFFF}, {Sig("QX53"), 168, 0x80000000},
                                {Sig("QX53"), 168, 1081},       {Sig("QX53"), 0xFFFFFFFF, 12},
                                {Sig("QX53"), 0xFFFFFFF4, 1080}};
  for (const ImageEntry& entry : hostile) {
    const VKCLProfile profile(
        dir_.Write("b.icc", RawImage(ProfileHeader(),
                                     {{Sig("QX51"), 168, 152}, entry, {Sig("B2A0"), 168, 12}},
                                     DataTag(ColorParam(0)))),
        0);
    EXPECT_EQ(State(profile, 0), 0) << ::testing::PrintToString(entry);
    EXPECT_EQ(State(profile, 1), 7) << ::testing::PrintToString(entry);
  }
}

TEST_F(VKCLProfileState, AMissingFileLosesTheStatusOnly) {
  const VKCLProfile profile = Profile({Qx51(), Qx53(), Small(Sig("B2A0"))});
  std::filesystem::remove(profile.filePath.str());
  EXPECT_EQ(profile.isVKCLProfile(), 1);
  EXPECT_EQ(State(profile, 0), 0);
  EXPECT_EQ(State(profile, 1), 7);
}

// The tags that decide, and what a profile is made of.
enum Bit : unsigned {
  kQX51 = 1,
  kLongQX51 = 2,
  kQX53 = 4,
  kQX50 = 8,
  kQX54 = 16,
  kQX52 = 32,
  kQX56 = 64,
  kQX59 = 128,
  kB2A0 = 256,
  kB2A1 = 512,
  kB2A2 = 1024,
  kQX77 = 2048,
  kEnd = 4096,
};

int ExpectedState(unsigned set, bool statusNine, bool ignoreStatus) {
  const bool own = (set & kQX51) != 0 && (set & kQX53) != 0 && (set & kQX77) == 0;
  if (!own) return 0;
  const bool low = statusNine && !ignoreStatus;
  if (!low && (set & (kB2A0 | kB2A1 | kB2A2)) != 0) return 7;
  if (!low && (set & kQX59) != 0) return 6;
  if (!low && (set & kQX56) != 0) return 5;
  if (!low && (set & kQX52) != 0) return 4;
  if ((set & (kLongQX51 | kQX54)) != 0) return 3;
  if ((set & kQX50) != 0) return 2;
  return 1;
}

TEST_F(VKCLProfileState, EveryCombinationOfTheDecidingTags) {
  const std::pair<unsigned, std::uint32_t> small[] = {
      {kB2A2, Sig("B2A2")}, {kQX50, Sig("QX50")}, {kQX54, Sig("QX54")},
      {kQX52, Sig("QX52")}, {kQX56, Sig("QX56")}, {kB2A0, Sig("B2A0")},
      {kQX59, Sig("QX59")}, {kB2A1, Sig("B2A1")}, {kQX77, Sig("QX77")}};
  for (unsigned set = 0; set < kEnd; ++set) {
    if ((set & kLongQX51) != 0 && (set & kQX51) == 0) continue;
    for (const bool statusNine : {false, true}) {
      if (statusNine && (set & kQX53) == 0) continue;
      std::vector<ImageTag> tags;
      // Every other set begins with the tags of the higher states: the table's order is no matter.
      const bool early = set / 8 % 2 == 1;
      const auto addSmall = [&] {
        for (const auto& [bit, sig] : small) {
          if ((set & bit) != 0) tags.push_back(Small(sig));
        }
      };
      if (early) addSmall();
      if ((set & kQX53) != 0) tags.push_back(Qx53(statusNine ? 9 : 12, 16));
      if ((set & kQX51) != 0) tags.push_back(Qx51((set & kLongQX51) != 0 ? 141 : 140));
      if (!early) addSmall();
      const VKCLProfile profile = Profile(tags);
      for (const int ignoreStatus : {0, 1}) {
        ASSERT_EQ(State(profile, ignoreStatus), ExpectedState(set, statusNine, ignoreStatus != 0))
            << "set " << set << ", status nine " << statusNine << ", ignored " << ignoreStatus;
      }
    }
  }
}

}  // namespace
