#include "profile/VKCLProfile.h"

#include <cstring>
#include <memory>
#include <utility>

#include "support/ImageBuilder.h"
#include "support/ProfilePeer.h"
#include "support/TempDir.h"

namespace {

using vkcl::ProfilePeer;
using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::HoldsTableOf;
using vkcl::testing::ImageEntry;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RawImage;
using vkcl::testing::ReadFile;
using vkcl::testing::SameBytes;
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TempDir;

icTagSignature Tag(std::uint32_t sig) { return static_cast<icTagSignature>(sig); }

Bytes ThreeTags(std::uint32_t deviceClass = Sig("prtr"), std::uint32_t colorSpace = Sig("CMYK")) {
  return ProfileImage(ProfileHeader(deviceClass, colorSpace),
                      {{Sig("QX51"), DataTag(Pattern(5, 1))},
                       {Sig("desc"), Pattern(18, 2)},
                       {Sig("QX53"), DataTag(Pattern(8, 3))}});
}

TEST(VKCLProfileLoad, ReadsEveryHeaderFieldAtItsOffset) {
  const TempDir dir;
  Bytes image = RawImage(Bytes(128), {}, {});
  // Each byte of the header is its own offset plus one, so a field read from a wrong place, of a
  // wrong width or in a wrong order shows.
  for (std::size_t i = 0; i < 128; ++i) image[i] = static_cast<unsigned char>(i + 1);
  SetBig32(image, 36, Sig("acsp"));
  const VKCLProfile profile(dir.Write("a.icc", image), 4);
  ASSERT_EQ(profile.isValidICC(), 1);
  const icHeader& h = profile.header;
  EXPECT_EQ(h.size, 0x01020304u);
  EXPECT_EQ(h.cmmId, 0x05060708u);
  EXPECT_EQ(h.version, 0x090A0B0Cu);
  EXPECT_EQ(static_cast<std::uint32_t>(h.deviceClass), 0x0D0E0F10u);
  EXPECT_EQ(static_cast<std::uint32_t>(h.colorSpace), 0x11121314u);
  EXPECT_EQ(static_cast<std::uint32_t>(h.pcs), 0x15161718u);
  EXPECT_EQ(h.date.year, 0x191A);
  EXPECT_EQ(h.date.month, 0x1B1C);
  EXPECT_EQ(h.date.day, 0x1D1E);
  EXPECT_EQ(h.date.hours, 0x1F20);
  EXPECT_EQ(h.date.minutes, 0x2122);
  EXPECT_EQ(h.date.seconds, 0x2324);
  EXPECT_EQ(h.magic, 0x61637370u);
  EXPECT_EQ(h.platform, 0x292A2B2Cu);
  EXPECT_EQ(h.flags, 0x2D2E2F30u);
  EXPECT_EQ(h.manufacturer, 0x31323334u);
  EXPECT_EQ(h.model, 0x35363738u);
  EXPECT_EQ(h.attributes[0], 0x393A3B3Cu);
  EXPECT_EQ(h.attributes[1], 0x3D3E3F40u);
  EXPECT_EQ(h.renderingIntent, 0x41424344u);
  EXPECT_EQ(h.illuminant.X, 0x45464748);
  EXPECT_EQ(h.illuminant.Y, 0x494A4B4C);
  EXPECT_EQ(h.illuminant.Z, 0x4D4E4F50);
  EXPECT_EQ(h.creator, 0x51525354u);
  EXPECT_EQ(std::memcmp(h.reserved, image.data() + 84, 44), 0);
  EXPECT_EQ(static_cast<std::uint32_t>(profile.GetDeviceClass()), 0x0D0E0F10u);
  EXPECT_EQ(static_cast<std::uint32_t>(profile.GetColorSpace()), 0x11121314u);
  EXPECT_EQ(static_cast<std::uint32_t>(profile.GetPCS()), 0x15161718u);
}

TEST(VKCLProfileLoad, ReadsTheTagTable) {
  const TempDir dir;
  const Bytes image = RawImage(
      ProfileHeader(),
      {{0x51583531, 0x01020304, 0x05060708}, {0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD}, {0, 0, 0}}, {});
  const VKCLProfile profile(dir.Write("a.icc", image), 0);
  ASSERT_EQ(profile.isValidICC(), 1);  // where entries point to is not looked at
  ASSERT_EQ(profile.tagCount, 3u);
  EXPECT_TRUE(HoldsTableOf(profile, image));
  EXPECT_EQ(profile.tagTable[0].sig, 0x51583531u);
  EXPECT_EQ(profile.tagTable[0].offset, 0x01020304u);
  EXPECT_EQ(profile.tagTable[0].size, 0x05060708u);
}

TEST(VKCLProfileLoad, TheStatedSizeIsNotHeldAgainstTheFile) {
  const TempDir dir;
  for (const std::uint32_t size : {0u, 1u, 131u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    Bytes image = ThreeTags();
    SetBig32(image, 0, size);
    const VKCLProfile profile(dir.Write("a.icc", image), 0);
    EXPECT_EQ(profile.isValidICC(), 1) << size;
    EXPECT_EQ(profile.header.size, size);
  }
}

TEST(VKCLProfileLoad, AnEmptyTableIsValid) {
  const TempDir dir;
  const VKCLProfile profile(dir.Write("a.icc", RawImage(ProfileHeader(), {}, {})), 0);
  EXPECT_EQ(profile.isValidICC(), 1);
  EXPECT_EQ(profile.tagCount, 0u);
  EXPECT_EQ(profile.channelCount, 4);
  EXPECT_EQ(profile.GetTagSize(Tag(Sig("QX51"))), 0u);
}

TEST(VKCLProfileLoad, TakesTheChannelCountFromTheColourSpace) {
  const std::pair<std::uint32_t, int> rows[] = {
      {Sig("GRAY"), 1},  {Sig("1CLR"), 1},  {Sig("RGB "), 3},  {Sig("CMY "), 3},  {Sig("CMYK"), 4},
      {Sig("4CLR"), 4},  {Sig("5CLR"), 5},  {Sig("6CLR"), 6},  {Sig("7CLR"), 7},  {Sig("8CLR"), 8},
      {Sig("9CLR"), 9},  {Sig("ACLR"), 10}, {Sig("BCLR"), 11}, {Sig("CCLR"), 12}, {Sig("DCLR"), 13},
      {Sig("ECLR"), 14}, {Sig("FCLR"), 15}, {Sig("GCLR"), 16}};
  const TempDir dir;
  for (const auto& [space, channels] : rows) {
    const VKCLProfile profile(dir.Write("a.icc", ThreeTags(Sig("prtr"), space)), 0);
    EXPECT_EQ(profile.isValidICC(), 1) << std::hex << space;
    EXPECT_EQ(profile.channelCount, channels) << std::hex << space;
    EXPECT_EQ(profile.isValidOutputICC(), 1) << std::hex << space;
  }
}

TEST(VKCLProfileLoad, AColourSpaceWithoutAChannelCountIsInvalidWhenNoneIsGiven) {
  const std::uint32_t spaces[] = {Sig("2CLR"),  Sig("3CLR"), Sig("Lab "), Sig("XYZ "), Sig("Luv "),
                                  Sig("YCbr"),  Sig("HSV "), Sig("HCLR"), Sig("0CLR"), Sig("cmyk"),
                                  Sig("RGB\0"), Sig("aCLR"), 0u,          0xFFFFFFFFu};
  const TempDir dir;
  for (const std::uint32_t space : spaces) {
    const std::string path = dir.Write("a.icc", ThreeTags(Sig("prtr"), space));
    const VKCLProfile derived(path, 0);
    EXPECT_EQ(derived.isValidICC(), 0) << std::hex << space;
    EXPECT_EQ(derived.isValidOutputICC(), 0) << std::hex << space;
    const VKCLProfile given(path, 2);
    EXPECT_EQ(given.isValidICC(), 1) << std::hex << space;
    EXPECT_EQ(given.channelCount, 2) << std::hex << space;
  }
}

TEST(VKCLProfileLoad, AProfileWithoutADeviceColourSpaceStillAnswersFromItsTable) {
  const TempDir dir;
  const Bytes image = ThreeTags(Sig("prtr"), Sig("Lab "));
  const VKCLProfile profile(dir.Write("a.icc", image), 0);
  ASSERT_EQ(profile.isValidICC(), 0);
  EXPECT_TRUE(HoldsTableOf(profile, image));
  EXPECT_EQ(profile.GetTagSize(Tag(Sig("desc"))), 18u);
  EXPECT_EQ(profile.GetColorSpace(), Sig("Lab "));
  EXPECT_EQ(profile.GetDeviceClass(), Sig("prtr"));
}

TEST(VKCLProfileLoad, AGivenChannelCountIsKeptWhateverTheColourSpace) {
  const TempDir dir;
  const std::string path = dir.Write("a.icc", ThreeTags());
  for (const int channels : {1, 2, 3, 17, 1000, -1}) {
    const VKCLProfile profile(path, channels);
    EXPECT_EQ(profile.isValidICC(), 1) << channels;
    EXPECT_EQ(profile.channelCount, channels);
  }
}

TEST(VKCLProfileLoad, OnlyTheOutputClassMakesAnOutputProfile) {
  const TempDir dir;
  for (const std::uint32_t other : {Sig("mntr"), Sig("scnr"), Sig("link"), Sig("spac"), Sig("abst"),
                                    Sig("nmcl"), Sig("PRTR"), 0u}) {
    const VKCLProfile profile(dir.Write("a.icc", ThreeTags(other)), 0);
    EXPECT_EQ(profile.isValidICC(), 1) << std::hex << other;
    EXPECT_EQ(profile.isValidOutputICC(), 0) << std::hex << other;
    EXPECT_EQ(static_cast<std::uint32_t>(profile.GetDeviceClass()), other);
  }
  Bytes xyz = ThreeTags(Sig("prtr"), Sig("Lab "));
  SetBig32(xyz, 20, Sig("RGB "));
  const VKCLProfile odd(dir.Write("a.icc", xyz), 3);
  EXPECT_EQ(odd.isValidOutputICC(), 1);  // neither colour space plays a part
  EXPECT_EQ(odd.GetPCS(), Sig("RGB "));
}

TEST(VKCLProfileLoad, ANonZeroValidFlagCountsForTheOutputQuestion) {
  const TempDir dir;
  VKCLProfile profile(dir.Write("a.icc", ThreeTags()), 0);
  profile.valid = 0;
  EXPECT_EQ(profile.isValidICC(), 0);
  EXPECT_EQ(profile.isValidOutputICC(), 0);
  EXPECT_EQ(profile.GetDeviceClass(), Sig("prtr"));
}

TEST(VKCLProfileLoad, WhatIsNoReadableFileIsInvalid) {
  const TempDir dir;
  for (const std::string& path : {dir.File("absent.icc"), dir.path().string(), std::string()}) {
    for (const int channels : {0, 4}) {
      const VKCLProfile profile(path, channels);
      EXPECT_EQ(profile.isValidICC(), 0) << path;
      EXPECT_EQ(profile.isValidOutputICC(), 0) << path;
      EXPECT_EQ(profile.channelCount, channels) << path;
      EXPECT_EQ(profile.tagTable, nullptr) << path;
      EXPECT_EQ(profile.GetTagSize(Tag(Sig("QX51"))), 0u) << path;
    }
  }
  EXPECT_FALSE(std::filesystem::exists(dir.File("absent.icc")));
}

TEST(VKCLProfileLoad, IsInvalidWhenCutAnywhereInHeaderOrTable) {
  const TempDir dir;
  const Bytes whole = ThreeTags();
  const std::size_t tableEnd = 132 + 3 * 12;
  ASSERT_GT(whole.size(), tableEnd);
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    const std::string path = dir.Write("a.icc", Slice(whole, 0, length));
    for (const int channels : {0, 4}) {
      const VKCLProfile profile(path, channels);
      EXPECT_EQ(profile.isValidICC(), length >= tableEnd ? 1 : 0) << length;
      EXPECT_EQ(profile.channelCount, length >= tableEnd ? 4 : channels) << length;
      if (length < 132) {
        unsigned long index = 77;
        EXPECT_EQ(profile.tagTable, nullptr) << length;
        EXPECT_EQ(ProfilePeer::GetTagIndex(profile, Sig("QX51"), index), 0) << length;
        EXPECT_EQ(index, 77u) << length;
        EXPECT_EQ(profile.GetTagSize(Tag(Sig("QX51"))), 0u) << length;
      }
      if (length >= 128) {
        // The header answers, whatever became of the table.
        EXPECT_EQ(profile.GetDeviceClass(), Sig("prtr")) << length;
        EXPECT_EQ(profile.GetColorSpace(), Sig("CMYK")) << length;
        EXPECT_EQ(profile.GetPCS(), Sig("Lab ")) << length;
      }
    }
  }
}

TEST(VKCLProfileLoad, TheMagicMustStandInFull) {
  const TempDir dir;
  const Bytes whole = ThreeTags();
  for (std::size_t at = 36; at < 40; ++at) {
    Bytes image = whole;
    image[at] ^= 0x20;
    const VKCLProfile profile(dir.Write("a.icc", image), 4);
    EXPECT_EQ(profile.isValidICC(), 0) << at;
    EXPECT_EQ(profile.isValidOutputICC(), 0) << at;
    EXPECT_EQ(profile.tagTable, nullptr) << at;
    EXPECT_EQ(profile.GetColorSpace(), Sig("CMYK")) << at;
  }
}

TEST(VKCLProfileLoad, ACountThatTheFileCannotHoldIsInvalid) {
  const TempDir dir;
  Bytes image = RawImage(ProfileHeader(), {}, Bytes(84));
  ASSERT_EQ(image.size(), 216u);
  const std::pair<std::uint32_t, bool> counts[] = {
      {7, true},            // 132 + 84 fits
      {8, false},           // 96 bytes are fewer than 216, but the table is cut short
      {17, false},          // 204 of 216
      {18, false},          // 216 of 216
      {19, false},          // 228 of 216
      {0x15555555, false},  // 12 times it is 0xFFFFFFFC
      {0x15555556, false},  // 12 times it is 8 in 32 bits
      {0x2AAAAAAB, false},  // 12 times it is 4 in 32 bits
      {0x40000000, false},  // 12 times it is 0 in 32 bits
      {0x7FFFFFFF, false}, {0x80000000, false}, {0xFFFFFFFE, false}, {0xFFFFFFFF, false}};
  for (const auto& [count, good] : counts) {
    SetBig32(image, 128, count);
    const VKCLProfile profile(dir.Write("a.icc", image), 0);
    EXPECT_EQ(profile.isValidICC(), good ? 1 : 0) << count;
    EXPECT_EQ(profile.channelCount, good ? 4 : 0) << count;
    if (12 * std::uint64_t{count} >= image.size()) {
      EXPECT_EQ(profile.tagTable, nullptr) << count;
      EXPECT_EQ(profile.GetTagSize(Tag(0)), 0u) << count;
    }
  }
}

TEST(VKCLProfileLoad, AnImplausibleCountIsKept) {
  const TempDir dir;
  Bytes image = ThreeTags();
  const auto most = static_cast<std::uint32_t>(image.size() / 12);
  for (const std::uint32_t count : {most + 1, 0x40000000u, 0xFFFFFFFFu}) {
    SetBig32(image, 128, count);
    const VKCLProfile profile(dir.Write("a.icc", image), 0);
    EXPECT_EQ(profile.isValidICC(), 0);
    EXPECT_EQ(profile.tagCount, count);
    EXPECT_EQ(profile.tagTable, nullptr);
    unsigned long index = 77;
    EXPECT_EQ(ProfilePeer::GetTagIndex(profile, Sig("QX51"), index), 0);
    EXPECT_EQ(index, 77u);
    EXPECT_EQ(profile.header.magic, Sig("acsp"));
  }
}

// The object keeps the table as it was read, and finds nothing in it: neither the signatures that
// the file has, nor those that the same bytes would be in the host's order, nor the zeros behind.
TEST(VKCLProfileLoad, ATableCutShortIsKeptAsItIsAndNothingIsFoundInIt) {
  const TempDir dir;
  const Bytes whole = ThreeTags();
  for (const std::size_t length : {144u, 150u, 156u, 167u}) {
    const std::string path = dir.Write("a.icc", Slice(whole, 0, length));
    const VKCLProfile loaded(path, 4);
    const VKCLProfile copied(loaded);
    VKCLProfile assigned(dir.Write("b.icc", whole), 0);
    assigned = loaded;
    for (const VKCLProfile* profile :
         {&loaded, &copied, const_cast<const VKCLProfile*>(&assigned)}) {
      EXPECT_EQ(profile->isValidICC(), 0);
      EXPECT_EQ(profile->tagCount, 3u);
      ASSERT_NE(profile->tagTable, nullptr);
      Bytes table(36);
      std::copy(whole.begin() + 132, whole.begin() + static_cast<std::ptrdiff_t>(length),
                table.begin());
      EXPECT_EQ(std::memcmp(profile->tagTable, table.data(), table.size()), 0) << length;
      for (const std::uint32_t sig :
           {Sig("QX51"), Sig("desc"), Sig("QX53"), Sig("15XQ"), Sig("csed"), 0u}) {
        EXPECT_EQ(profile->GetTagSize(Tag(sig)), 0u) << length;
        unsigned long index = 77;
        EXPECT_EQ(ProfilePeer::GetTagIndex(*profile, sig, index), 0);
        EXPECT_EQ(index, 3u);  // where a new entry would go
        char byte = 9;
        unsigned long size = 9;
        EXPECT_EQ(profile->ReadVKPrivateTag(static_cast<VKPrivateTagSignature>(sig), &byte, &size),
                  0);
        EXPECT_EQ(byte, 9);
      }
      EXPECT_EQ(profile->isVKCLProfile(), 0);
    }
  }
}

// The header of an object that is not valid is copied like any other.
TEST(VKCLProfileLoad, ACopyOfAnInvalidObjectHasItsHeader) {
  const TempDir dir;
  Bytes image = ThreeTags();
  image[36] = 'x';
  const VKCLProfile invalid(dir.Write("a.icc", image), 0);
  ASSERT_EQ(invalid.isValidICC(), 0);
  const VKCLProfile copy(invalid);
  EXPECT_EQ(std::memcmp(&copy.header, &invalid.header, 128), 0);
  VKCLProfile assigned(dir.Write("b.icc", ThreeTags()), 0);
  assigned = invalid;
  EXPECT_EQ(std::memcmp(&assigned.header, &invalid.header, 128), 0);
  EXPECT_EQ(assigned.header.creator, Sig("crea"));
  EXPECT_EQ(std::memcmp(assigned.header.reserved, image.data() + 84, 44), 0);
  EXPECT_EQ(assigned.tagCount, 0u);
}

TEST(VKCLProfileLoad, ATableThatEndsWithTheFileIsWhole) {
  const TempDir dir;
  const Bytes image =
      RawImage(ProfileHeader(), std::vector<ImageEntry>(40, {Sig("tagx"), 8, 9}), {});
  EXPECT_EQ(VKCLProfile(dir.Write("a.icc", image), 0).isValidICC(), 1);
  const Bytes cut = Slice(image, 0, image.size() - 1);
  EXPECT_EQ(VKCLProfile(dir.Write("a.icc", cut), 0).isValidICC(), 0);
}

TEST(VKCLProfileLoad, LoadingChangesNothingInTheFile) {
  const TempDir dir;
  const Bytes image = ThreeTags();
  const std::string path = dir.Write("a.icc", image);
  { const VKCLProfile profile(path, 0); }
  EXPECT_TRUE(SameBytes(ReadFile(path), image));
}

TEST(VKCLProfileLoad, GivesThePathItWasMadeWith) {
  const TempDir dir;
  const std::string path = dir.File("absent.icc");
  const VKCLProfile profile(path, 0);
  AFilePath out("other");
  profile.GetICCFilePath(out);
  EXPECT_EQ(out.str(), path);
}

TEST(VKCLProfileLoad, TheFirstOfTwoEqualSignaturesCounts) {
  const TempDir dir;
  const Bytes image = RawImage(ProfileHeader(),
                               {{Sig("desc"), 180, 1},
                                {Sig("QX51"), 180, 22},
                                {Sig("QX53"), 180, 3},
                                {Sig("QX51"), 180, 44}},
                               Bytes(80));
  const VKCLProfile profile(dir.Write("a.icc", image), 0);
  unsigned long index = 77;
  EXPECT_EQ(ProfilePeer::GetTagIndex(profile, Sig("QX51"), index), 1);
  EXPECT_EQ(index, 1u);
  EXPECT_EQ(profile.GetTagSize(Tag(Sig("QX51"))), 22u);
  EXPECT_EQ(ProfilePeer::GetTagIndex(profile, Sig("desc"), index), 1);
  EXPECT_EQ(index, 0u);
  EXPECT_EQ(ProfilePeer::GetTagIndex(profile, Sig("QX53"), index), 1);
  EXPECT_EQ(index, 2u);
  EXPECT_EQ(profile.GetTagSize(Tag(Sig("QX53"))), 3u);
}

TEST(VKCLProfileLoad, TheIndexOfAnAbsentTagIsTheCount) {
  const TempDir dir;
  const VKCLProfile profile(dir.Write("a.icc", ThreeTags()), 0);
  unsigned long index = 77;
  EXPECT_EQ(ProfilePeer::GetTagIndex(profile, Sig("QX52"), index), 0);
  EXPECT_EQ(index, 3u);
  EXPECT_EQ(profile.GetTagSize(Tag(Sig("QX52"))), 0u);

  const VKCLProfile empty(dir.Write("b.icc", RawImage(ProfileHeader(), {}, {})), 0);
  index = 77;
  EXPECT_EQ(ProfilePeer::GetTagIndex(empty, Sig("QX52"), index), 0);
  EXPECT_EQ(index, 0u);
}

TEST(VKCLProfileLoad, PadSizeIsTheNextMultipleOfFour) {
  const std::pair<unsigned long, unsigned long> rows[] = {
      {0, 0},   {1, 4},   {2, 4},   {3, 4},   {4, 4},   {5, 8},
      {12, 12}, {13, 16}, {15, 16}, {16, 16}, {17, 20}, {0xFFFFFFF9, 0xFFFFFFFC}};
  for (const auto& [n, padded] : rows) EXPECT_EQ(ProfilePeer::GetPadSize(n), padded) << n;
}

TEST(VKCLProfileLoad, ReversingAHeaderTwiceGivesItBack) {
  Bytes file(128);
  for (std::size_t i = 0; i < 128; ++i) file[i] = static_cast<unsigned char>(i + 1);
  icHeader header;
  std::memcpy(&header, file.data(), 128);
  ProfilePeer::ReverseICCHeader(header);
  EXPECT_EQ(header.size, 0x01020304u);
  EXPECT_EQ(header.date.year, 0x191A);
  EXPECT_EQ(header.date.month, 0x1B1C);  // each word by itself: the pairs are not exchanged
  EXPECT_EQ(header.attributes[0], 0x393A3B3Cu);
  EXPECT_EQ(header.attributes[1], 0x3D3E3F40u);
  EXPECT_EQ(header.creator, 0x51525354u);
  EXPECT_EQ(std::memcmp(header.reserved, file.data() + 84, 44), 0);
  ProfilePeer::ReverseICCHeader(header);
  EXPECT_EQ(std::memcmp(&header, file.data(), 128), 0);
}

TEST(VKCLProfileLoad, ColourModes16And512SetTheColourSpaceInMemoryOnly) {
  const TempDir dir;
  const Bytes image = ThreeTags();
  const std::string path = dir.Write("a.icc", image);
  VKCLProfile profile(path, 0);
  profile.UpdateHeaderColorSpace(16);
  EXPECT_EQ(profile.GetColorSpace(), 0x434D5920u);
  profile.UpdateHeaderColorSpace(512);
  EXPECT_EQ(profile.GetColorSpace(), 0x52474220u);
  EXPECT_EQ(profile.channelCount, 4);
  EXPECT_TRUE(SameBytes(ReadFile(path), image));
}

TEST(VKCLProfileLoad, OtherColourModesLeaveTheColourSpace) {
  const TempDir dir;
  VKCLProfile profile(dir.Write("a.icc", ThreeTags()), 0);
  const int kBit31 = -2147483647 - 1;
  for (const int mode : {0, 1, 15, 17, 32, 511, 513, 528, 1024, -1, -16, -512, 16 + kBit31,
                         512 + kBit31, 2147483647}) {
    profile.UpdateHeaderColorSpace(mode);
    EXPECT_EQ(profile.GetColorSpace(), Sig("CMYK")) << mode;
  }
}

TEST(VKCLProfileLoad, ACopyHasATableOfItsOwn) {
  const TempDir dir;
  const Bytes image = ThreeTags();
  const std::string path = dir.Write("a.icc", image);
  auto original = std::make_unique<VKCLProfile>(path, 0);
  const VKCLProfile copy(*original);
  ASSERT_NE(copy.tagTable, original->tagTable);
  original->tagTable[0].size = 1;
  original->header.size = 1;
  original.reset();
  EXPECT_EQ(copy.isValidICC(), 1);
  EXPECT_EQ(copy.channelCount, 4);
  EXPECT_EQ(copy.filePath.str(), path);
  EXPECT_TRUE(HoldsTableOf(copy, image));
  EXPECT_EQ(copy.GetTagSize(Tag(Sig("QX51"))), 17u);
  EXPECT_EQ(copy.header.creator, Sig("crea"));
  EXPECT_EQ(std::memcmp(copy.header.reserved, image.data() + 84, 44), 0);
}

TEST(VKCLProfileLoad, AnAssignedProfileHasATableOfItsOwn) {
  const TempDir dir;
  const Bytes image = ThreeTags();
  auto original = std::make_unique<VKCLProfile>(dir.Write("a.icc", image), 7);
  VKCLProfile other(dir.Write("b.icc", RawImage(ProfileHeader(), {{1, 2, 3}}, {})), 0);
  other = *original;
  ASSERT_NE(other.tagTable, original->tagTable);
  original.reset();
  EXPECT_EQ(other.isValidICC(), 1);
  EXPECT_EQ(other.channelCount, 7);
  EXPECT_EQ(other.filePath.str(), dir.File("a.icc"));
  EXPECT_TRUE(HoldsTableOf(other, image));

  const VKCLProfile absent(dir.File("absent.icc"), 5);
  other = absent;
  EXPECT_EQ(other.isValidICC(), 0);
  EXPECT_EQ(other.channelCount, 5);
  EXPECT_EQ(other.tagTable, nullptr);
  EXPECT_EQ(other.filePath.str(), dir.File("absent.icc"));
  const VKCLProfile copy(other);
  EXPECT_EQ(copy.isValidICC(), 0);
  EXPECT_EQ(copy.tagTable, nullptr);
}

TEST(VKCLProfileLoad, AssigningAProfileToItselfChangesNothing) {
  const TempDir dir;
  const Bytes image = ThreeTags();
  VKCLProfile profile(dir.Write("a.icc", image), 0);
  const VKCLProfile& same = profile;
  profile = same;
  EXPECT_EQ(profile.isValidICC(), 1);
  EXPECT_TRUE(HoldsTableOf(profile, image));
}

TEST(VKCLProfileLoad, RemovesItsFileWhenTheExtensionIsExactlyTmp) {
  const std::pair<std::string, bool> rows[] = {
      {"a.tmp", true},   {"a.icc.tmp", true}, {".tmp", true},    {"a.TMP", false},
      {"a.Tmp", false},  {"a.tmpx", false},   {"a.tmp1", false}, {"a.tmp.icc", false},
      {"a.xtmp", false}, {"atmp", false},     {"tmp", false},    {"a.icc", false}};
  for (const auto& [name, removed] : rows) {
    const TempDir dir;
    const std::string path = dir.Write(name, ThreeTags());
    {
      const VKCLProfile profile(path, 0);
      EXPECT_EQ(profile.isValidICC(), 1) << name;
      EXPECT_TRUE(std::filesystem::exists(path)) << name;
    }
    EXPECT_EQ(std::filesystem::exists(path), !removed) << name;
  }
}

TEST(VKCLProfileLoad, AFolderNamedTmpDoesNotMakeItsFilesTemporary) {
  const TempDir dir;
  std::filesystem::create_directory(dir.path() / "x.tmp");
  const std::string path = dir.Write("x.tmp/profile", ThreeTags());
  { const VKCLProfile profile(path, 0); }
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(VKCLProfileLoad, AFolderIsNotRemovedWhateverItsName) {
  const TempDir dir;
  const auto folder = dir.path() / "empty.tmp";
  std::filesystem::create_directory(folder);
  { const VKCLProfile profile(AFilePath(folder.string()), 0); }
  EXPECT_TRUE(std::filesystem::is_directory(folder));
}

TEST(VKCLProfileLoad, RemovesATemporaryFileThatIsNoProfile) {
  const TempDir dir;
  const std::string path = dir.Write("a.tmp", {1, 2, 3});
  {
    const VKCLProfile profile(path, 0);
    EXPECT_EQ(profile.isValidICC(), 0);
    EXPECT_TRUE(std::filesystem::exists(path));
  }
  EXPECT_FALSE(std::filesystem::exists(path));
  { const VKCLProfile absent(dir.File("absent.tmp"), 0); }  // nothing to remove is no matter
}

TEST(VKCLProfileLoad, TheLastPathOfAnAssignedObjectIsTheOneRemoved) {
  const TempDir dir;
  const std::string temporary = dir.Write("a.tmp", ThreeTags());
  const std::string kept = dir.Write("b.icc", ThreeTags());
  {
    const VKCLProfile stays(kept, 0);
    VKCLProfile first(temporary, 0);
    first = stays;
  }
  EXPECT_TRUE(std::filesystem::exists(temporary));
  {
    VKCLProfile second(temporary, 0);
    { const VKCLProfile copy(second); }
    EXPECT_FALSE(std::filesystem::exists(temporary));  // a copy names the same file
  }
  EXPECT_TRUE(std::filesystem::exists(kept));
}

}  // namespace
