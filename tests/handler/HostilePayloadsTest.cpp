// Every reader against every truncation and random damage of every payload. What is right here is
// that nothing is read or written out of bounds (the sanitizers watch), that a refusal leaves the
// record as it is promised to, and that whatever a record holds afterwards may be copied, compared
// and destroyed.
#include <cstring>
#include <random>

#include "handler/StoredList.h"
#include "handler/StoredSplit.h"
#include "handler/TargetParser.h"
#include "handler/VKCLProfileHandler.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "support/RealProfiles.h"
#include "support/TagFile.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::FileTag;
using vkcl::testing::ImageOf;
using vkcl::testing::Payload;
using vkcl::testing::ProfileFile;
using vkcl::testing::RealProfile;
using vkcl::testing::TempDir;

constexpr VKPrivateTagSignature kLists[] = {QX54, QX55, QX56, QX57, QX59, QX60, QX72, QX73};

// A small real device link: one is enough for all tests here.
const Bytes& RealLink() {
  static const Bytes link = [] {
    const Bytes profile = vkcl::testing::ReadFile(RealProfile("Gray.icc"));
    void* gray = CLNewCLProfileRef();
    void* built = CLNewCLLink8Ref();
    CLLoadProfileFromMemory(gray, profile.data(), static_cast<unsigned int>(profile.size()));
    EXPECT_EQ(CLBuildLink8(built, gray, gray, 0), 0);
    unsigned int size = 0;
    CLSaveLink8ToMemory(built, nullptr, 0, &size);
    Bytes bytes(size);
    CLSaveLink8ToMemory(built, bytes.data(), size, nullptr);
    CLFreeCLLink8Ref(built);
    CLFreeCLProfileRef(gray);
    return bytes;
  }();
  return link;
}

Bytes SplitPayload() {
  const SplitTypeV2 records[3];
  return Payload()
      .Int(2)
      .Int(20 + 3 * 76)
      .Int(3)
      .Fill(8)
      .Raw(ImageOf(records[0]))
      .Raw(ImageOf(records[1]))
      .Raw(ImageOf(records[2]));
}

Bytes ListPayload() {
  Payload payload;
  payload.Int(0x434D594B).Int(3).Int(1).Int(4).Int(0).Int(1);
  for (int i = 0; i < 12; ++i) payload.Double(i * 1.5);
  return payload;
}

Bytes LinksPayload() {
  const auto size = static_cast<std::int32_t>(RealLink().size());
  return Payload()
      .Int(1)
      .Int(16 + 4 + 12 + 2 * size)
      .Int(3)
      .Int(4)
      .Text("Spot")
      .Int(size)
      .Int(0)
      .Int(size)
      .Raw(RealLink())
      .Raw(RealLink());
}

std::string TargetText() {
  return "BEGIN_DATA_FORMAT\nCMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\n"
         "BEGIN_DATA\n1 2 3 4 5.5 -6 7e1\n8 9 10 11 12 13 14\nEND_DATA\n";
}

// A profile of the last state before its final tables, with every kind of payload.
std::vector<FileTag> AllTags() {
  VKColorParam param;
  std::strcpy(param.Make, "Hewlett-Packard");
  std::strcpy(param.MediaName, "  two blanks  ");
  std::vector<FileTag> tags = {
      {"QX50", SplitPayload()},
      {"QX51", ImageOf(VKSingleInkLimitWithLinRef())},
      {"QX52", ImageOf(VKMultiInklimit())},
      {"QX53", ImageOf(param)},
      {"QX64", Payload().Int(5)},
      {"QX66", Payload().Int(1).Int(4132).Fill(8).Int(4116).Fill(4112, 7)},
      {"QX67", ImageOf(VKCompatibilityParam())},
      {"QX68", Payload().Int(1).Int(12 + 4 + 16).Int(2).Text("Spot").Double(50).Double(60)},
      {"QX69", LinksPayload()},
      {"QX70", ImageOf(VKLinExtraDataParam())},
      {"QX71", Payload().Raw(ImageOf(VKVSDProfileParam())).Text("<VK_VSD_PROFILE/>")},
      {"QX74", Payload().Int(6)},
      {"QX75", Payload().Text("soft").Fill(1)},
      {"QX76", ImageOf(VKProfileExtraParam())},
      {"QX58", Payload().Text("curves")},
      {"targ", Payload().Text(TargetText()), "text"},
  };
  for (const char* list : {"QX54", "QX55", "QX56", "QX57", "QX59", "QX60", "QX72", "QX73"}) {
    tags.emplace_back(list, ListPayload());
  }
  return tags;
}

// Lives through what a host may do with a record.
template <class Record>
void Use(const Record& record) {
  const Record copy(record);
  Record assigned;
  assigned = copy;
}

constexpr int kReads = 26;  // of ReadEverything that succeed when every payload is whole

// Runs every reader; returns how many of them succeeded.
int ReadEverything(const std::string& path, const TempDir& dir) {
  VKCLProfileHandler handler(AFilePath(path), 4);
  const VKCLProfile& profile = *handler.GetProfilePtr();
  int read = 0;
  for (const int upgrade : {0, 1}) {
    SplitParam split;
    read += handler.GetSplitParam(split, upgrade);
    Use(split);
  }
  SplitParam stored;
  read += vkcl::ReadStoredSplit(profile, stored) ? 1 : 0;
  Use(stored);
  VKSingleInkLimitWithLinRef single;
  read += handler.GetVKSingleInkLimitWithLinRef(single);
  VKMultiInklimit multi;
  read += handler.GetVKMultiInklimit(multi, 0);
  VKColorParam param;
  read += handler.GetVKColorParam(param);
  handler.IsCMStoDither();
  handler.IsWizardICC();
  VKDitherParam dither;
  read += handler.GetVKDitherParam(dither);
  Use(dither);
  VKCompatibilityParam compatibility;
  read += handler.GetVKCompatibilityParam(compatibility);
  VKSpotSingleInkLimit spot;
  read += handler.GetVKSpotSIL(spot);
  VKSpotLinDLParam links;
  read += handler.GetVKSpotLinDL(links);
  VKLinExtraDataParam extraData;
  read += handler.GetVKLinExtraData(extraData);
  VKVSDProfileParam vsd;
  read += handler.GetVSDProfileParam(vsd);
  read += handler.GetVSDProfile(AFilePath(dir.File("out.vsd")));
  AString text;
  read += handler.GetVKChromaAdjust(text);
  VKProfileExtraParam extra;
  read += handler.GetVKProfileExtraParam(extra);
  for (const VKPrivateTagSignature list : kLists) {
    ProfileDataList values;
    const int done = vkcl::ReadStoredList(profile, list, values);
    read += done;
    if (done == 0) {
      EXPECT_EQ(values.DataList, nullptr);
    }
    Use(values);
    EXPECT_TRUE(values == ProfileDataList(values));
  }
  read += handler.GetEnbededFile(AFilePath(dir.File("out.trc")), VKCLProfileHandler::EnbedFileTRC);
  for (const int flag : {0, 1}) {
    VKCLProfileProperties properties;
    read += handler.GetVKCLProfileProperties(properties, flag);
    Use(properties);
  }
  handler.IsLinFake();
  handler.isVKCLUnLockedProfile();
  return read;
}

TEST(HostilePayloads, WholeOnesAreRead) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", ProfileFile(AllTags()));
  EXPECT_EQ(ReadEverything(path, dir), kReads);
}

TEST(HostilePayloads, EveryTruncationOfEveryPayload) {
  const TempDir dir;
  const std::vector<FileTag> tags = AllTags();
  for (std::size_t i = 0; i < tags.size(); ++i) {
    const std::size_t whole = tags[i].payload.size();
    // Long payloads are cut at every byte of their heads and tails, and at some between.
    for (std::size_t length = 0; length < whole;
         length += length < 300 || length + 40 > whole ? 1 : 97) {
      std::vector<FileTag> cut = tags;
      cut[i].payload.resize(length);
      SCOPED_TRACE(tags[i].signature + " cut to " + std::to_string(length));
      EXPECT_LE(ReadEverything(dir.Write("p.icc", ProfileFile(cut)), dir), kReads);
    }
  }
}

TEST(HostilePayloads, RandomDamage) {
  const TempDir dir;
  const std::vector<FileTag> tags = AllTags();
  constexpr unsigned kSeed = 20240229;
  std::mt19937 random(kSeed);
  const auto below = [&](std::size_t bound) { return random() % static_cast<unsigned>(bound); };
  constexpr std::uint32_t kNasty[] = {0,          1,          0x7FFFFFFF, 0x80000000, 0xFFFFFFFF,
                                      0xFFFFFFFE, 0x40000000, 0x10000000, 1024,       1025};
  for (int round = 0; round < 3000; ++round) {
    std::vector<FileTag> damaged = tags;
    for (int hit = 0; hit < 3; ++hit) {
      Bytes& payload = damaged[below(damaged.size())].payload;
      if (payload.size() < 4) continue;
      if (random() % 2 == 0) {
        payload[below(payload.size())] = static_cast<unsigned char>(random());
      } else {  // numbers stand in the first 32 bytes
        const std::size_t at = below(std::min<std::size_t>(payload.size() - 3, 32)) / 4 * 4;
        const std::uint32_t value = kNasty[below(std::size(kNasty))];
        std::memcpy(&payload[at], &value, sizeof value);
      }
    }
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", round " + std::to_string(round));
    EXPECT_LE(ReadEverything(dir.Write("p.icc", ProfileFile(damaged)), dir), kReads);
  }
}

}  // namespace
