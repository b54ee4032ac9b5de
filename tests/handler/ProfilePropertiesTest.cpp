// The properties record, and how one call fills it from a profile.
#include "handler/VKCLProfileProperties.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <ostream>

#include "handler/VKCLProfileHandler.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "support/CommaLocale.h"
#include "support/ImageBuilder.h"
#include "support/RealProfiles.h"
#include "support/TagFile.h"

namespace {

using vkcl::testing::Big32;
using vkcl::testing::Bytes;
using vkcl::testing::CommaLocale;
using vkcl::testing::DataTag;
using vkcl::testing::ImageOf;
using vkcl::testing::ImageTag;
using vkcl::testing::Join;
using vkcl::testing::Pattern;
using vkcl::testing::Payload;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::ReadFile;
using vkcl::testing::RealProfile;
using vkcl::testing::SameBytes;
using vkcl::testing::Sig;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

using Row = std::vector<double>;

constexpr int kColorMode = 64;
constexpr std::uint32_t kPlaceholder = 0xFFFFFFFF;

// Payloads.

ImageTag Tag(const char (&signature)[5], const Bytes& payload) {
  return {Sig(signature), DataTag(payload)};
}

ImageTag Limits(std::size_t size = 140) {
  Payload payload;
  payload.Int(1).Int(140).Int(16);
  for (int i = 0; i < 16; ++i) payload.Double(50.5 + i);
  return Tag("QX51", payload.Fill(size - 140));
}

ImageTag Settings(int status = 1) {
  Payload payload;
  payload.Int(1).Int(1068).Int(status).Int(4711);
  payload.Field("Maker", 128).Field("Model", 128).Field("Glossy", 128);
  payload.Int(3).Float(720.0f).Float(1440.0f).Int(kColorMode).Fill(1068 - 416);
  return Tag("QX53", payload);
}

Bytes ContentOf(const ImageTag& tag) { return {tag.data.begin() + 12, tag.data.end()}; }

/// What a list holds, but for what is never stored.
struct Samples {
  std::uint32_t format = 0;
  int samples = 0;
  int mode = 0;
  int colors = 0;
  int measured = 0;
  Row values = {};

  friend bool operator==(const Samples&, const Samples&) = default;
};

void PrintTo(const Samples& list, std::ostream* out) {
  *out << std::hex << list.format << std::dec << ", samples " << list.samples << ", mode "
       << list.mode << ", colours " << list.colors << ", measured " << list.measured << ", values "
       << ::testing::PrintToString(list.values);
}

Samples SamplesOf(const ProfileDataList& list) {
  Samples found{list.DataFormat, list.NumOfSamples, list.ColorMode, list.NumOfColors,
                list.Measured};
  if (list.DataList != nullptr) {
    found.values.assign(list.DataList,
                        list.DataList + std::ptrdiff_t{list.NumOfSamples} * list.NumOfColors);
  }
  return found;
}

Payload ListPayload(const Samples& list, int presence = 1) {
  Payload payload;
  payload.Int(static_cast<std::int32_t>(list.format)).Int(list.samples).Int(list.mode);
  payload.Int(list.colors).Int(list.measured).Int(presence);
  for (const double value : list.values) payload.Double(value);
  return payload;
}

/// Two samples of three values, told apart by a number.
Samples ListNumber(int number) {
  Samples list{Sig("Lab "), 2, number, 3, 1};
  for (int i = 0; i < 6; ++i) list.values.push_back(number + 0.125 * i);
  return list;
}

void Put(ProfileDataList& list, const Samples& samples) {
  list.DataFormat = samples.format;
  list.ColorMode = samples.mode;
  list.NumOfColors = samples.colors;
  ASSERT_EQ(list.RefreshList(samples.samples), 1);
  list.Measured = samples.measured;
  for (std::size_t i = 0; i < samples.values.size(); ++i) list.DataList[i] = samples.values[i];
}

constexpr char kTarget[] =
    "CGATS.17\nBEGIN_DATA_FORMAT\nCMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B\n"
    "END_DATA_FORMAT\nBEGIN_DATA\n1 2 3 4 50.5 -6 7\n11 12 13 14 51 -16 17\nEND_DATA\n";
const Samples kTargetDevice{Sig("CMYK"), 2, 0, 4, 0, {1, 2, 3, 4, 11, 12, 13, 14}};
const Samples kTargetMeasured{Sig("Lab "), 2, 0, 3, 2, {50.5, -6, 7, 51, -16, 17}};

ImageTag TargetTag(const std::string& text = std::string(kTarget) + '\0') {
  return {Sig("targ"), TextTag(text)};
}

Samples WithMode(Samples list, int mode) {
  list.mode = mode;
  return list;
}

/// A profile file and a handler on it.
class OnFile {
 public:
  explicit OnFile(const std::vector<ImageTag>& tags)
      : OnFile(ProfileImage(ProfileHeader(), tags)) {}
  explicit OnFile(const Bytes& file)
      : path_(dir_.Write("profile.icc", file)), handler(AFilePath(path_), 0) {}

  const std::string& path() const { return path_; }
  Bytes File() const { return ReadFile(path_); }

 private:
  TempDir dir_;
  std::string path_;

 public:
  VKCLProfileHandler handler;
};

// A record in which nothing has its initial value.

constexpr std::int32_t kPerSample[] = {5, 6};

void GivePerSample(ProfileDataList& list) {
  list.PerSample = new std::int32_t[2]{kPerSample[0], kPerSample[1]};
  list.Extra1 = 21;
  list.Extra2 = 22;
}

struct List {
  const char* name;
  ProfileDataList VKCLProfileProperties::*list;
};
constexpr List kLists[] = {
    {"linearisation reference", &VKCLProfileProperties::linReference},
    {"linearisation measurement", &VKCLProfileProperties::linMeasurement},
    {"gray balance reference", &VKCLProfileProperties::gbReference},
    {"gray balance measurement", &VKCLProfileProperties::gbMeasurement},
    {"characterisation reference", &VKCLProfileProperties::charReference},
    {"characterisation measurement", &VKCLProfileProperties::charMeasurement},
};

void Fill(VKCLProfileProperties& properties) {
  properties.singleInkLimit.count = 7;
  properties.singleInkLimit.limits[15] = 71.5;
  properties.multiInkLimit.version = 3;
  properties.multiInkLimit.limits[35] = 72.5;
  SplitTypeV2 splits[2];
  splits[0].colorantIndex = 1;
  splits[1].darkAmount = 0.75f;
  ASSERT_EQ(properties.split.InitSplitParam(2, 2, splits), 1);
  DitherTypeV1 table;
  for (std::size_t i = 0; i < sizeof table.table; ++i) {
    table.table[i] = static_cast<unsigned char>(i % 251 + 1);
  }
  ASSERT_EQ(properties.dither.InitDitherParam(1, &table), 1);
  properties.colorParam.status = 12;
  std::strcpy(properties.colorParam.Make, "Someone");
  properties.colorParam.reservedText3[127] = 'z';
  properties.compatibility.bytes[63] = 63;
  int number = 101;
  for (const List& list : kLists) {
    Put(properties.*list.list, ListNumber(number++));
    GivePerSample(properties.*list.list);
  }
  properties.options.ProfileSize = "9";
  properties.options.ProfileFormat = "8";
  properties.options.BlackGeneration = "UCR";
  properties.options.BlackWidth = "77";
  properties.options.BlackStart = "6";
  properties.options.BrightenerCorrection = "0.5";
  properties.options.InkTotal = "320";
  double limits[] = {30.5, 40.5, 50.5};
  properties.spotInkLimit.version = 2;
  properties.spotInkLimit.SetData(3, CString("Gold"), limits);
  properties.vsdParam.version = 4;
  std::strcpy(properties.vsdParam.fileName, "sidecar.vsd");
  properties.hasChromaAdjust = 1;
  properties.chromaAdjust = "chroma";
  properties.extraParam.value = 42;
}

void ExpectFilledSpot(const VKSpotSingleInkLimit& spot) {
  EXPECT_EQ(spot.version, 2);
  EXPECT_EQ(spot.size, 4 + 8 * 3 + 12);
  EXPECT_EQ(spot.count, 3);
  ASSERT_NE(spot.name, nullptr);
  EXPECT_STREQ(spot.name, "Gold");
  ASSERT_NE(spot.limits, nullptr);
  EXPECT_EQ(Row(spot.limits, spot.limits + 3), (Row{30.5, 40.5, 50.5}));
}

/// Everything that Fill set, but for the dither record and the list's arrays beside the values.
void ExpectFilled(const VKCLProfileProperties& properties) {
  EXPECT_EQ(properties.singleInkLimit.count + 0, 7);
  const double single = properties.singleInkLimit.limits[15];
  EXPECT_EQ(single, 71.5);
  EXPECT_EQ(properties.multiInkLimit.version + 0, 3);
  const double multi = properties.multiInkLimit.limits[35];
  EXPECT_EQ(multi, 72.5);
  EXPECT_EQ(properties.split.version, 2);
  EXPECT_EQ(properties.split.size, 20 + 2 * 76);
  EXPECT_EQ(properties.split.count, 2);
  ASSERT_NE(properties.split.splits, nullptr);
  const auto* splits = static_cast<const SplitTypeV2*>(properties.split.splits);
  EXPECT_EQ(splits[0].colorantIndex + 0, 1);
  EXPECT_EQ(splits[1].darkAmount + 0.0f, 0.75f);
  EXPECT_EQ(properties.colorParam.status + 0, 12);
  EXPECT_STREQ(properties.colorParam.Make, "Someone");
  EXPECT_EQ(properties.colorParam.reservedText3[127], 'z');
  EXPECT_EQ(properties.compatibility.bytes[63], 63);
  int number = 101;
  for (const List& list : kLists) {
    EXPECT_EQ(SamplesOf(properties.*list.list), ListNumber(number++)) << list.name;
  }
  EXPECT_EQ(properties.options.ProfileSize.str(), "9");
  EXPECT_EQ(properties.options.ProfileFormat.str(), "8");
  EXPECT_EQ(properties.options.BlackGeneration.str(), "UCR");
  EXPECT_EQ(properties.options.BlackWidth.str(), "77");
  EXPECT_EQ(properties.options.BlackStart.str(), "6");
  EXPECT_EQ(properties.options.BrightenerCorrection.str(), "0.5");
  EXPECT_EQ(properties.options.InkTotal.str(), "320");
  ExpectFilledSpot(properties.spotInkLimit);
  EXPECT_EQ(properties.vsdParam.version + 0, 4);
  EXPECT_STREQ(properties.vsdParam.fileName, "sidecar.vsd");
  EXPECT_EQ(properties.hasChromaAdjust, 1);
  EXPECT_EQ(properties.chromaAdjust.str(), "chroma");
  EXPECT_EQ(properties.extraParam.value + 0, 42);
}

void ExpectFilledDither(const VKDitherParam& dither) {
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.size, 4132);
  ASSERT_NE(dither.table, nullptr);
  EXPECT_EQ(dither.table->size + 0, 4116u);
  for (std::size_t i = 0; i < sizeof dither.table->table; ++i) {
    ASSERT_EQ(dither.table->table[i], i % 251 + 1) << i;
  }
}

void ExpectCopiedDither(const VKDitherParam& dither) {
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.size, 24);
  ASSERT_NE(dither.table, nullptr);
  EXPECT_EQ(dither.table->size + 0, 4116u);
  for (std::size_t i = 0; i < sizeof dither.table->table; ++i) {
    ASSERT_EQ(dither.table->table[i], i < 4 ? i + 1 : 0) << i;
  }
}

void ExpectCopiedLists(const VKCLProfileProperties& copy, const VKCLProfileProperties& original) {
  for (const List& list : kLists) {
    const ProfileDataList& from = original.*list.list;
    const ProfileDataList& to = copy.*list.list;
    EXPECT_NE(to.DataList, from.DataList) << list.name;
    EXPECT_NE(to.PerSample, from.PerSample) << list.name;
    ASSERT_NE(to.PerSample, nullptr) << list.name;
    EXPECT_EQ(to.PerSample[0], kPerSample[0]) << list.name;
    EXPECT_EQ(to.PerSample[1], kPerSample[1]) << list.name;
    EXPECT_EQ(to.Extra1, 21) << list.name;
    EXPECT_EQ(to.Extra2, 22) << list.name;
  }
}

// The record.

TEST(ProfileProperties, HaveTheirInitialValues) {
  const VKCLProfileProperties properties;
  Payload single;
  single.Int(1).Int(140).Int(16);
  for (int i = 0; i < 16; ++i) single.Double(100.0);
  EXPECT_TRUE(SameBytes(ImageOf(properties.singleInkLimit), single));
  Payload multi;
  multi.Int(4).Int(300).Int(36);
  for (int i = 0; i < 36; ++i) multi.Double(100.0);
  EXPECT_TRUE(SameBytes(ImageOf(properties.multiInkLimit), multi));
  EXPECT_EQ(properties.split.version, 4);
  EXPECT_EQ(properties.split.size, 20);
  EXPECT_EQ(properties.split.count, 0);
  EXPECT_EQ(properties.split.splits, nullptr);
  EXPECT_EQ(properties.dither.type, 1);
  EXPECT_EQ(properties.dither.size, 16);
  EXPECT_EQ(properties.dither.table, nullptr);
  EXPECT_TRUE(SameBytes(ImageOf(properties.colorParam), Payload().Int(1).Int(1068).Fill(1060)));
  EXPECT_TRUE(SameBytes(ImageOf(properties.compatibility), Bytes(64)));
  for (const List& list : kLists) {
    const ProfileDataList& empty = properties.*list.list;
    EXPECT_EQ(SamplesOf(empty), Samples{}) << list.name;
    EXPECT_EQ(empty.DataList, nullptr) << list.name;
    EXPECT_EQ(empty.PerSample, nullptr) << list.name;
    EXPECT_EQ(empty.Extra1, 0) << list.name;
    EXPECT_EQ(empty.Extra2, -1) << list.name;
  }
  EXPECT_EQ(properties.options.ProfileSize.str(), "2");
  EXPECT_EQ(properties.options.ProfileFormat.str(), "4");
  EXPECT_EQ(properties.options.BlackGeneration.str(), "GCRSmooth");
  EXPECT_EQ(properties.options.BlackWidth.str(), "100");
  EXPECT_EQ(properties.options.BlackStart.str(), "0");
  EXPECT_EQ(properties.options.BrightenerCorrection.str(), "0.0");
  EXPECT_EQ(properties.options.InkTotal.str(), "");
  EXPECT_EQ(properties.spotInkLimit.version, 1);
  EXPECT_EQ(properties.spotInkLimit.size, 0);
  EXPECT_EQ(properties.spotInkLimit.count, 0);
  EXPECT_EQ(properties.spotInkLimit.name, nullptr);
  EXPECT_EQ(properties.spotInkLimit.limits, nullptr);
  EXPECT_TRUE(SameBytes(ImageOf(properties.vsdParam), Payload().Int(1).Fill(128)));
  EXPECT_EQ(properties.hasChromaAdjust, 0);
  EXPECT_EQ(properties.chromaAdjust.str(), "");
  EXPECT_TRUE(SameBytes(ImageOf(properties.extraParam), Payload().Int(1).Int(0)));
}

TEST(ProfileProperties, ConstructedFromOthersHoldTheSame) {
  VKCLProfileProperties original;
  Fill(original);
  const VKCLProfileProperties copy(original);
  ExpectFilled(copy);
  ExpectCopiedLists(copy, original);
  EXPECT_NE(copy.split.splits, original.split.splits);
  ExpectFilled(original);
}

TEST(ProfileProperties, AssignedFromOthersHoldTheSame) {
  VKCLProfileProperties original;
  Fill(original);
  VKCLProfileProperties copy;
  // What the target held is released: a second assignment over a full record.
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(&(copy = original), &copy);
    ExpectFilled(copy);
    ExpectCopiedLists(copy, original);
    EXPECT_NE(copy.split.splits, original.split.splits);
  }
  copy = VKCLProfileProperties();
  EXPECT_EQ(copy.spotInkLimit.name, nullptr);
  EXPECT_EQ(copy.spotInkLimit.limits, nullptr);
  EXPECT_EQ(copy.spotInkLimit.count, 0);
  EXPECT_EQ(copy.split.splits, nullptr);
  EXPECT_EQ(copy.dither.table, nullptr);
  EXPECT_EQ(copy.hasChromaAdjust, 0);
  EXPECT_EQ(SamplesOf(copy.charMeasurement), Samples{});
}

TEST(ProfileProperties, CopySpotLimitsIntoArraysOfTheirOwn) {
  auto original = std::make_unique<VKCLProfileProperties>();
  Fill(*original);
  const VKCLProfileProperties constructed(*original);
  VKCLProfileProperties assigned;
  assigned = *original;
  EXPECT_NE(constructed.spotInkLimit.name, original->spotInkLimit.name);
  EXPECT_NE(constructed.spotInkLimit.limits, original->spotInkLimit.limits);
  EXPECT_NE(assigned.spotInkLimit.name, original->spotInkLimit.name);
  EXPECT_NE(assigned.spotInkLimit.limits, original->spotInkLimit.limits);
  original->spotInkLimit.name[0] = 'B';
  original->spotInkLimit.limits[0] = -1;
  original.reset();
  ExpectFilledSpot(constructed.spotInkLimit);
  ExpectFilledSpot(assigned.spotInkLimit);
}

TEST(ProfileProperties, CopySpotLimitsThatLackArrays) {
  VKCLProfileProperties original;
  original.spotInkLimit.SetData(0, CString("counted"), nullptr);
  original.spotInkLimit.version = 5;
  VKCLProfileProperties copy(original);
  EXPECT_EQ(copy.spotInkLimit.version, 5);
  EXPECT_EQ(copy.spotInkLimit.size, 19);
  EXPECT_EQ(copy.spotInkLimit.name, nullptr);
  EXPECT_EQ(copy.spotInkLimit.limits, nullptr);

  // A count without values, as a caller may leave it.
  original.spotInkLimit.count = 4;
  copy = original;
  EXPECT_EQ(copy.spotInkLimit.count, 4);
  EXPECT_EQ(copy.spotInkLimit.limits, nullptr);
}

TEST(ProfileProperties, CopyOnlyTheHeadOfADitherTable) {
  // The dither record's own assignment says so; a whole copy would be stored with another length.
  VKCLProfileProperties original;
  Fill(original);
  const VKCLProfileProperties constructed(original);
  VKCLProfileProperties assigned;
  assigned = original;
  ExpectCopiedDither(constructed.dither);
  ExpectCopiedDither(assigned.dither);
  ExpectFilledDither(original.dither);
}

TEST(ProfileProperties, AssignedToThemselvesStayAsTheyAre) {
  VKCLProfileProperties properties;
  Fill(properties);
  const char* const name = properties.spotInkLimit.name;
  const VKCLProfileProperties& same = properties;
  properties = same;
  ExpectFilled(properties);
  ExpectFilledDither(properties.dither);
  EXPECT_EQ(properties.spotInkLimit.name, name);
  for (const List& list : kLists) {
    ASSERT_NE((properties.*list.list).PerSample, nullptr) << list.name;
    EXPECT_EQ((properties.*list.list).PerSample[1], kPerSample[1]) << list.name;
  }
}

// Filling.

TEST(GetProperties, WithoutAFinishedStateFailsAndChangesNothing) {
  const std::vector<std::vector<ImageTag>> profiles = {
      {},
      {Limits(), TargetTag()},
      {Settings(), TargetTag(), Tag("QX75", Payload().Text("x").Fill(1))},
      {Limits(), Settings(), TargetTag(), Tag("QX77", {1})},
  };
  for (const auto& tags : profiles) {
    const OnFile file(tags);
    for (const int flag : {0, 1}) {
      VKCLProfileProperties properties;
      Fill(properties);
      EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, flag), 0);
      ExpectFilled(properties);
      ExpectFilledDither(properties.dither);
    }
  }
  const OnFile noProfile(Bytes(100, 1));
  VKCLProfileProperties properties;
  Fill(properties);
  EXPECT_EQ(noProfile.handler.GetVKCLProfileProperties(properties, 1), 0);
  ExpectFilled(properties);
}

TEST(GetProperties, NeedsReadableSettingsOnlyWhenTheStatusTakesPart) {
  const OnFile file(
      std::vector<ImageTag>{Limits(), {Sig("QX53"), TextTag(std::string(1060, 'x'))}});
  VKCLProfileProperties properties;
  properties.colorParam.MediaID = 5;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 0);
  EXPECT_EQ(properties.singleInkLimit.limits[0] + 0.0, 100.0);
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 1), 1);
  EXPECT_EQ(properties.singleInkLimit.limits[0] + 0.0, 50.5);
  EXPECT_EQ(properties.colorParam.MediaID + 0, 5);
}

TEST(GetProperties, LeavesWhatHasNoTagAsItWas) {
  const OnFile file(std::vector<ImageTag>{Limits(), Settings()});
  VKCLProfileProperties properties;
  Fill(properties);
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  // Two records have their tags.
  EXPECT_TRUE(SameBytes(ImageOf(properties.singleInkLimit), ContentOf(Limits())));
  EXPECT_TRUE(SameBytes(ImageOf(properties.colorParam), ContentOf(Settings())));
  // The flag says whether this profile has a chroma adjustment; the text stays all the same.
  EXPECT_EQ(properties.hasChromaAdjust, 0);
  EXPECT_EQ(properties.chromaAdjust.str(), "chroma");

  VKCLProfileProperties expected;
  Fill(expected);
  properties.singleInkLimit = expected.singleInkLimit;
  properties.colorParam = expected.colorParam;
  properties.hasChromaAdjust = 1;
  ExpectFilled(properties);
  ExpectFilledDither(properties.dither);
}

TEST(GetProperties, ReadsEveryRecordThatHasATag) {
  Payload multi;
  multi.Int(2).Int(300).Int(36);
  for (int i = 0; i < 36; ++i) multi.Double(60.25 + i);
  SplitTypeV4 split;
  split.colorantIndex = 2;
  const OnFile file(std::vector<ImageTag>{
      {Sig("desc"), DataTag({1, 2, 3})},
      TargetTag(),
      Tag("QX50", Payload().Int(4).Int(20 + 9240).Int(1).Fill(8).Raw(ImageOf(split))),
      Limits(),
      Tag("QX52", multi),
      Settings(),
      Tag("QX54", ListPayload(ListNumber(54))),
      Tag("QX55", ListPayload(ListNumber(55))),
      Tag("QX56", ListPayload(ListNumber(56))),
      Tag("QX57", ListPayload(ListNumber(57))),
      Tag("QX59", ListPayload(ListNumber(59))),
      Tag("QX60", ListPayload(ListNumber(60))),
      Tag("QX66", Payload().Int(1).Int(4132).Fill(8).Int(4116).Raw(Pattern(4112, 66))),
      Tag("QX67", Pattern(64, 67)),
      Tag("QX68", Payload().Int(1).Int(12 + 4 + 16).Int(2).Text("Gold").Double(55.5).Double(75.5)),
      Tag("QX71", Payload().Int(1).Field("print.vsd", 128).Text("<VSD/>")),
      Tag("QX75", Payload().Text("a=1;b=2").Fill(1)),
      Tag("QX76", Payload().Int(1).Int(76)),
      {Sig("B2A0"), DataTag({9})},
  });
  const Bytes before = file.File();
  VKCLProfileProperties properties;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);

  EXPECT_TRUE(SameBytes(ImageOf(properties.compatibility), Pattern(64, 67)));
  EXPECT_EQ(properties.colorParam.MediaID + 0, 4711);
  EXPECT_STREQ(properties.colorParam.MediaName, "Glossy");
  EXPECT_EQ(properties.split.version, 4);
  EXPECT_EQ(properties.split.count, 1);
  EXPECT_NE(properties.split.splits, nullptr);
  EXPECT_EQ(properties.dither.type, 1);
  EXPECT_EQ(properties.dither.size, 4132);
  ASSERT_NE(properties.dither.table, nullptr);
  EXPECT_TRUE(
      SameBytes(ImageOf(*properties.dither.table), Payload().Int(4116).Raw(Pattern(4112, 66))));
  EXPECT_EQ(properties.singleInkLimit.limits[15] + 0.0, 65.5);
  EXPECT_TRUE(SameBytes(ImageOf(properties.multiInkLimit), multi));
  EXPECT_EQ(properties.spotInkLimit.count, 2);
  ASSERT_NE(properties.spotInkLimit.name, nullptr);
  EXPECT_STREQ(properties.spotInkLimit.name, "Gold");
  ASSERT_NE(properties.spotInkLimit.limits, nullptr);
  EXPECT_EQ(properties.spotInkLimit.limits[1], 75.5);
  EXPECT_STREQ(properties.vsdParam.fileName, "print.vsd");
  EXPECT_EQ(properties.hasChromaAdjust, 1);
  EXPECT_EQ(properties.chromaAdjust.str(), "a=1;b=2");
  EXPECT_EQ(properties.extraParam.value + 0, 76);
  EXPECT_EQ(SamplesOf(properties.linReference), ListNumber(55));
  EXPECT_EQ(SamplesOf(properties.linMeasurement), ListNumber(54));
  EXPECT_EQ(SamplesOf(properties.gbReference), ListNumber(57));
  EXPECT_EQ(SamplesOf(properties.gbMeasurement), ListNumber(56));
  EXPECT_EQ(SamplesOf(properties.charReference), ListNumber(60));
  EXPECT_EQ(SamplesOf(properties.charMeasurement), ListNumber(59));
  // The profile has no options: the defaults stay.
  EXPECT_EQ(properties.options.BlackGeneration.str(), "GCRSmooth");
  EXPECT_TRUE(SameBytes(file.File(), before)) << "nothing is written";
}

TEST(GetProperties, BringsOlderSplitsToVersionFour) {
  SplitTypeV2 two;
  SplitTypeV3 three;
  for (const auto& [version, image] : {std::pair(2, ImageOf(two)), std::pair(3, ImageOf(three))}) {
    const int size = 20 + static_cast<int>(image.size());
    const OnFile file(std::vector<ImageTag>{
        Limits(), Settings(),
        Tag("QX50", Payload().Int(version).Int(size).Int(1).Fill(8).Raw(image))});
    VKCLProfileProperties properties;
    EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1) << version;
    EXPECT_EQ(properties.split.version, 4) << version;
    EXPECT_EQ(properties.split.count, 1) << version;
    EXPECT_NE(properties.split.splits, nullptr) << version;
  }
}

TEST(GetProperties, TakesMultipleInkLimitsFromVersionTwoOn) {
  for (const int version : {-1, 0, 1, 2, 3, 4, 5}) {
    Payload multi;
    multi.Int(version).Int(300).Int(36);
    for (int i = 0; i < 36; ++i) multi.Double(20.5);
    const OnFile file(std::vector<ImageTag>{Limits(), Settings(), Tag("QX52", multi)});
    VKCLProfileProperties properties;
    EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1) << version;
    EXPECT_EQ(properties.multiInkLimit.version + 0, version >= 2 ? version : 4);
    EXPECT_EQ(properties.multiInkLimit.limits[0] + 0.0, version >= 2 ? 20.5 : 100.0) << version;
  }
}

TEST(GetProperties, SaysWhetherThereIsAChromaAdjustment) {
  const auto chroma = [](const std::vector<ImageTag>& more, VKCLProfileProperties& properties) {
    std::vector<ImageTag> tags = {Limits(), Settings()};
    tags.insert(tags.end(), more.begin(), more.end());
    EXPECT_EQ(OnFile(tags).handler.GetVKCLProfileProperties(properties, 0), 1);
    return properties.hasChromaAdjust;
  };
  for (const int before : {0, 1, 77}) {
    VKCLProfileProperties properties;
    properties.hasChromaAdjust = before;
    properties.chromaAdjust = "old";
    EXPECT_EQ(chroma({}, properties), 0) << before;
    EXPECT_EQ(properties.chromaAdjust.str(), "old");
    EXPECT_EQ(chroma({Tag("QX75", Payload().Text("new").Fill(1))}, properties), 1) << before;
    EXPECT_EQ(properties.chromaAdjust.str(), "new");
    EXPECT_EQ(chroma({Tag("QX75", {0})}, properties), 0) << "read, but empty";
    EXPECT_EQ(properties.chromaAdjust.str(), "");
  }
}

// The gates.

/// The finished state, from the rules.
struct Deciding {
  bool longLimits, split, multi, linearisation, grayBalance, characterisation, table;
  int StateOf(int status, int flag) const {
    if (status != 9 || flag != 0) {
      if (table) return 7;
      if (characterisation) return 6;
      if (grayBalance) return 5;
      if (multi) return 4;
    }
    if (longLimits || linearisation) return 3;
    return split ? 2 : 1;
  }
};

TEST(GetProperties, ReadsTheListsThatTheFinishedStateHas) {
  const Samples marker{0xABCD, 1, -5, 1, 1, {-123.5}};
  int seen[8] = {};
  for (unsigned set = 0; set < 1024; ++set) {
    const auto has = [set](unsigned bit) { return (set >> bit & 1) != 0; };
    const Deciding deciding{has(0), has(1), has(2), has(3), has(5), has(7), has(9)};
    for (const int status : {1, 9}) {
      std::vector<ImageTag> tags = {Limits(deciding.longLimits ? 148 : 140), Settings(status)};
      if (deciding.split) tags.push_back(Tag("QX50", Bytes(30)));
      if (deciding.multi) tags.push_back(Tag("QX52", Bytes(30)));
      if (has(3)) tags.push_back(Tag("QX54", ListPayload(ListNumber(54))));
      if (has(4)) tags.push_back(Tag("QX55", ListPayload(ListNumber(55))));
      if (has(5)) tags.push_back(Tag("QX56", ListPayload(ListNumber(56))));
      if (has(6)) tags.push_back(Tag("QX57", ListPayload(ListNumber(57))));
      if (has(7)) tags.push_back(Tag("QX59", ListPayload(ListNumber(59))));
      if (has(8)) tags.push_back(Tag("QX60", ListPayload(ListNumber(60))));
      if (deciding.table) tags.push_back(Tag("B2A0", Bytes(5)));
      const OnFile file(tags);
      for (const int flag : {0, 1, 2}) {
        VKCLProfileProperties properties;
        for (const List& list : kLists) Put(properties.*list.list, marker);
        ASSERT_EQ(file.handler.GetVKCLProfileProperties(properties, flag), 1);

        const int state = deciding.StateOf(status, flag);
        ++seen[state];
        const struct {
          bool open, hasReference, hasMeasurement;
          int reference, measurement;
        } pairs[] = {{state >= 3, has(4), has(3), 55, 54},
                     {state >= 5, has(6), has(5), 57, 56},
                     {state >= 6, has(8), has(7), 60, 59}};
        for (std::size_t pair = 0; pair < 3; ++pair) {
          const auto& [open, hasReference, hasMeasurement, reference, measurement] = pairs[pair];
          // Without its reference a measurement is not read.
          const Samples first = !open          ? marker
                                : hasReference ? ListNumber(reference)
                                               : WithMode(marker, kColorMode);
          const Samples second =
              open && hasReference && hasMeasurement ? ListNumber(measurement) : marker;
          ASSERT_EQ(SamplesOf(properties.*kLists[2 * pair].list), first)
              << kLists[2 * pair].name << ", state " << state << ", set " << set;
          ASSERT_EQ(SamplesOf(properties.*kLists[2 * pair + 1].list), second)
              << kLists[2 * pair + 1].name << ", state " << state << ", set " << set;
        }
      }
    }
  }
  for (int state = 1; state <= 7; ++state) EXPECT_GT(seen[state], 0) << state;
}

TEST(GetProperties, BeforeLinearisationReadsNoListAlsoWhenItsTagIsThere) {
  const OnFile file(std::vector<ImageTag>{
      Limits(), Settings(), Tag("QX50", Bytes(30)), Tag("QX55", ListPayload(ListNumber(55))),
      Tag("QX57", ListPayload(ListNumber(57))), Tag("QX60", ListPayload(ListNumber(60)))});
  VKCLProfileFinishedState state = FinishedNone;
  ASSERT_EQ(file.handler.GetVKCLProfileFinishedState(state, 0), 1);
  ASSERT_EQ(state, FinishedInkSplit);
  VKCLProfileProperties properties;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  for (const List& list : kLists)
    EXPECT_EQ(SamplesOf(properties.*list.list), Samples{}) << list.name;
}

TEST(GetProperties, OfALockedFirstKindStopsAtLinearisationUnlessTheFlagSaysOtherwise) {
  const OnFile file(std::vector<ImageTag>{
      Limits(), Settings(9), Tag("QX54", ListPayload(ListNumber(54))),
      Tag("QX55", ListPayload(ListNumber(55))), Tag("QX56", ListPayload(ListNumber(56))),
      Tag("QX57", ListPayload(ListNumber(57))), Tag("QX59", ListPayload(ListNumber(59))),
      Tag("QX60", ListPayload(ListNumber(60))), Tag("B2A0", Bytes(5))});
  VKCLProfileProperties properties;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(SamplesOf(properties.linReference), ListNumber(55));
  EXPECT_EQ(SamplesOf(properties.linMeasurement), ListNumber(54));
  EXPECT_EQ(SamplesOf(properties.gbReference), Samples{});
  EXPECT_EQ(SamplesOf(properties.charReference), Samples{});
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 1), 1);
  EXPECT_EQ(SamplesOf(properties.gbMeasurement), ListNumber(56));
  EXPECT_EQ(SamplesOf(properties.charMeasurement), ListNumber(59));
}

TEST(GetProperties, TakesTheModeFromTheRecordWhenTheSettingsCannotBeRead) {
  const OnFile file(std::vector<ImageTag>{
      Limits(), {Sig("QX53"), TextTag("none")}, Tag("QX54", ListPayload(ListNumber(54)))});
  VKCLProfileProperties properties;
  properties.colorParam.ColorMode = 256;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 1), 1);
  EXPECT_EQ(SamplesOf(properties.linReference), WithMode({}, 256));
  EXPECT_EQ(SamplesOf(properties.linMeasurement), Samples{});
}

// Target and lists.

TEST(GetProperties, ReadsTheTargetWhateverTheState) {
  const OnFile file(std::vector<ImageTag>{Limits(), Settings(), TargetTag()});
  VKCLProfileProperties properties;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(SamplesOf(properties.charReference), kTargetDevice);
  EXPECT_EQ(SamplesOf(properties.charMeasurement), kTargetMeasured);
}

TEST(GetProperties, ReplacesTheTargetByTheStoredPair) {
  const OnFile file(std::vector<ImageTag>{Limits(), Settings(), TargetTag(),
                                          Tag("QX59", ListPayload(ListNumber(59))),
                                          Tag("QX60", ListPayload(ListNumber(60)))});
  VKCLProfileProperties properties;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(SamplesOf(properties.charReference), ListNumber(60));
  EXPECT_EQ(SamplesOf(properties.charMeasurement), ListNumber(59));
}

TEST(GetProperties, KeepsTheTargetWithTheColourModeWhenTheReferenceIsMissing) {
  const OnFile file(std::vector<ImageTag>{Limits(), Settings(), TargetTag(),
                                          Tag("QX59", ListPayload(ListNumber(59)))});
  VKCLProfileProperties properties;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(SamplesOf(properties.charReference), WithMode(kTargetDevice, kColorMode));
  EXPECT_EQ(SamplesOf(properties.charMeasurement), kTargetMeasured) << "QX59 is not read alone";
}

TEST(GetProperties, KeepsTheTargetsMeasurementWhenOnlyTheReferenceIsStored) {
  const OnFile file(std::vector<ImageTag>{Limits(), Settings(), TargetTag(),
                                          Tag("QX60", ListPayload(ListNumber(60))),
                                          Tag("B2A1", Bytes(5))});
  VKCLProfileProperties properties;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(SamplesOf(properties.charReference), ListNumber(60));
  EXPECT_EQ(SamplesOf(properties.charMeasurement), kTargetMeasured);
}

TEST(GetProperties, ClearsWhatADamagedListReplaces) {
  // A payload that is not as long as it announces clears the list.
  const Bytes damaged = ListPayload(ListNumber(60)).Fill(1);
  const OnFile reference(std::vector<ImageTag>{Limits(), Settings(), TargetTag(),
                                               Tag("QX59", ListPayload(ListNumber(59))),
                                               Tag("QX60", damaged)});
  VKCLProfileProperties properties;
  EXPECT_EQ(reference.handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(SamplesOf(properties.charReference), WithMode({}, kColorMode));
  EXPECT_EQ(SamplesOf(properties.charMeasurement), kTargetMeasured);

  const OnFile measurement(std::vector<ImageTag>{Limits(), Settings(), TargetTag(),
                                                 Tag("QX59", damaged),
                                                 Tag("QX60", ListPayload(ListNumber(60)))});
  EXPECT_EQ(measurement.handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(SamplesOf(properties.charReference), ListNumber(60));
  EXPECT_EQ(SamplesOf(properties.charMeasurement), Samples{});
}

TEST(GetProperties, OfARefusedTargetKeepTheListsValues) {
  const std::string cut = std::string(kTarget).substr(0, std::strlen(kTarget) - 10);
  for (const std::string& text : {cut, std::string("\0", 1), std::string(), cut + '\0'}) {
    const OnFile file(std::vector<ImageTag>{Limits(), Settings(), TargetTag(text)});
    VKCLProfileProperties properties;
    Put(properties.charReference, {1, 2, 3, 4, 5, {1, 2, 3, 4, 5, 6, 7, 8}});
    EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
    const bool formatSeen = text.size() > 1;
    EXPECT_EQ(SamplesOf(properties.charReference),
              (Samples{formatSeen ? Sig("CMYK") : 1, 2, 3, 4, 5, {1, 2, 3, 4, 5, 6, 7, 8}}));
    EXPECT_EQ(properties.charMeasurement.DataFormat, formatSeen ? Sig("Lab ") : 0);
    EXPECT_EQ(properties.charMeasurement.NumOfColors, formatSeen ? 3 : 0);
    EXPECT_EQ(properties.charMeasurement.DataList, nullptr);
  }
}

TEST(GetProperties, ReadsATargetThatIsNotTerminated) {
  const OnFile file(std::vector<ImageTag>{Limits(), Settings(), TargetTag(kTarget)});
  VKCLProfileProperties properties;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(SamplesOf(properties.charMeasurement), kTargetMeasured);
}

TEST(GetProperties, ReadsATargetUpToItsFirstZeroByte) {
  // Two line feeds behind the zero would be two more samples.
  for (const auto& [tail, samples] :
       {std::pair(std::string("\0\n\n\n", 4), 2), std::pair(std::string("\n\n\0", 3), 4)}) {
    const OnFile file(std::vector<ImageTag>{Limits(), Settings(), TargetTag(kTarget + tail)});
    VKCLProfileProperties properties;
    EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
    EXPECT_EQ(properties.charMeasurement.NumOfSamples, samples);
    EXPECT_EQ(properties.charMeasurement.Measured, samples);
  }
}

TEST(GetProperties, IgnoresATargetOfAnotherTypeOrCut) {
  const std::string text = std::string(kTarget) + '\0';
  const ImageTag binary = Tag("targ", Bytes(text.begin(), text.end()));
  Bytes cut = ProfileImage(ProfileHeader(), {Limits(), Settings(), TargetTag()});
  cut.erase(cut.end() - 8, cut.end());
  for (const Bytes& file : {ProfileImage(ProfileHeader(), {Limits(), Settings(), binary}), cut}) {
    VKCLProfileProperties properties;
    EXPECT_EQ(OnFile(file).handler.GetVKCLProfileProperties(properties, 0), 1);
    EXPECT_EQ(SamplesOf(properties.charReference), Samples{});
    EXPECT_EQ(SamplesOf(properties.charMeasurement), Samples{});
  }
}

TEST(GetProperties, ReadsTheTargetsNumbersWithAPointUnderALocaleWithAComma) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.works()) << "the build makes the locale from Debian's package locales";
  const OnFile file(std::vector<ImageTag>{Limits(), Settings(), TargetTag()});
  VKCLProfileProperties properties;
  EXPECT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(SamplesOf(properties.charMeasurement), kTargetMeasured);
}

// Options.

using Options = std::vector<std::pair<std::string, std::string>>;

void ExportOptions(const std::string& path, const Options& options) {
  void* const profiler = CLNewCLProfilerRef();
  void* const spec = CLNewFileSpecRef();
  EXPECT_EQ(CLName2FileSpec(spec, path.c_str()), 0);
  for (const auto& [key, value] : options) {
    EXPECT_EQ(CLSetProfilerOption(profiler, key.c_str(), value.c_str()), 0) << key;
  }
  EXPECT_EQ(CLExportProfilerOptions(profiler, spec), 0);
  CLFreeFileSpecRef(spec);
  CLFreeCLProfilerRef(profiler);
}

const Options kAllOptions = {
    {"ProfileSize", "3"}, {"ProfileFormat", "5"}, {"BlackGeneration", "GCRMax"},
    {"BlackWidth", "80"}, {"BlackStart", "15"},   {"BrightenerCorrection", "0.25"},
    {"InkTotal", "300"},
};

Options Listed(const VKCLProfileOptions& options) {
  return {{"ProfileSize", options.ProfileSize.str()},
          {"ProfileFormat", options.ProfileFormat.str()},
          {"BlackGeneration", options.BlackGeneration.str()},
          {"BlackWidth", options.BlackWidth.str()},
          {"BlackStart", options.BlackStart.str()},
          {"BrightenerCorrection", options.BrightenerCorrection.str()},
          {"InkTotal", options.InkTotal.str()}};
}

const Options kDefaults = {
    {"ProfileSize", "2"},  {"ProfileFormat", "4"}, {"BlackGeneration", "GCRSmooth"},
    {"BlackWidth", "100"}, {"BlackStart", "0"},    {"BrightenerCorrection", "0.0"},
    {"InkTotal", ""},
};

/// A 'dict' element (ICC.1:2010, 10.5) of plain ASCII entries.
Bytes Dictionary(const Options& entries) {
  const auto wide = [](const std::string& text) {
    Bytes bytes;
    for (const char c : text) {
      bytes.push_back(0);
      bytes.push_back(static_cast<unsigned char>(c));
    }
    return bytes;
  };
  Bytes table;
  Bytes texts;
  const std::size_t start = 16 + 16 * entries.size();
  for (const auto& [name, value] : entries) {
    for (const Bytes& text : {wide(name), wide(value)}) {
      table = Join({table, Big32(static_cast<std::uint32_t>(start + texts.size())),
                    Big32(static_cast<std::uint32_t>(text.size()))});
      texts = Join({texts, text});
      while (texts.size() % 4 != 0) texts.push_back(0);
    }
  }
  return Join({{'d', 'i', 'c', 't'},
               Big32(0),
               Big32(static_cast<std::uint32_t>(entries.size())),
               Big32(16),
               table,
               texts});
}

TEST(ProfileOptions, HaveTheirDefaults) { EXPECT_EQ(Listed(VKCLProfileOptions()), kDefaults); }

TEST(ProfileOptions, AreCopiedWhole) {
  VKCLProfileOptions options;
  options.ProfileSize = "a";
  options.ProfileFormat = "b";
  options.BlackGeneration = "c";
  options.BlackWidth = "d";
  options.BlackStart = "e";
  options.BrightenerCorrection = "f";
  options.InkTotal = "g";
  const VKCLProfileOptions constructed(options);
  VKCLProfileOptions assigned;
  assigned = options;
  options = VKCLProfileOptions();
  EXPECT_EQ(Listed(constructed), Listed(assigned));
  EXPECT_EQ(constructed.ProfileSize.str() + constructed.ProfileFormat.str() +
                constructed.BlackGeneration.str() + constructed.BlackWidth.str() +
                constructed.BlackStart.str() + constructed.BrightenerCorrection.str() +
                constructed.InkTotal.str(),
            "abcdefg");
  EXPECT_EQ(Listed(options), kDefaults);
}

TEST(ProfileOptions, AreReadFromAnExportedDictionary) {
  const TempDir dir;
  const std::string path = dir.Write("real.icc", ReadFile(RealProfile("default_cmyk.icc")));
  ExportOptions(path, kAllOptions);
  const VKCLProfileHandler handler(AFilePath(path), 0);
  VKCLProfileOptions options;
  EXPECT_EQ(handler.GetProfileOptions(options), 1);
  EXPECT_EQ(Listed(options), kAllOptions);
}

// Tags that are stored in one pass are appended, also a second time: their signatures stand twice.
TEST(ProfileOptions, AreKeptWhereOtherSignaturesStandTwice) {
  const TempDir dir;
  const std::string path = dir.Write("real.icc", ReadFile(RealProfile("default_cmyk.icc")));
  ExportOptions(path, kAllOptions);
  VKCLProfileHandler handler(AFilePath(path), 0);
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(handler.WriteAllVKPrivateTags(VKSingleInkLimitWithLinRef(), VKMultiInklimit(),
                                            VKColorParam(), nullptr),
              1);
    VKCLProfileOptions options;
    EXPECT_EQ(handler.GetProfileOptions(options), 1);
    EXPECT_EQ(Listed(options), kAllOptions);
  }
  ExportOptions(path, {{"InkTotal", "250"}});
  VKCLProfileOptions options;
  EXPECT_EQ(VKCLProfileHandler(AFilePath(path), 0).GetProfileOptions(options), 1);
  EXPECT_EQ(options.InkTotal.str(), "250");
  EXPECT_EQ(options.BlackGeneration.str(), "GCRMax");
}

TEST(ProfileOptions, AreReadFromADictionaryThatAnotherProgramMade) {
  const OnFile file(std::vector<ImageTag>{
      {Sig("meta"),
       Dictionary({{"Program", "Another"}, {"InkTotal", "280"}, {"BlackStart", "9"}})}});
  VKCLProfileOptions options;
  EXPECT_EQ(file.handler.GetProfileOptions(options), 1);
  EXPECT_EQ(options.InkTotal.str(), "280");
  EXPECT_EQ(options.BlackStart.str(), "9");
}

TEST(ProfileOptions, ThatTheProfileLacksBecomeEmptyAndNotTheirDefaults) {
  for (const auto& given : kAllOptions) {
    const OnFile file(std::vector<ImageTag>{Limits()});
    ExportOptions(file.path(), {given});
    const VKCLProfileHandler handler(AFilePath(file.path()), 0);
    VKCLProfileOptions options;
    EXPECT_EQ(handler.GetProfileOptions(options), 1) << given.first;
    Options expected = kDefaults;
    for (auto& [key, value] : expected) value = key == given.first ? given.second : "";
    EXPECT_EQ(Listed(options), expected) << given.first;
  }
}

TEST(ProfileOptions, OfTheGreatestLengthAreReadWhole) {
  const OnFile file(std::vector<ImageTag>{Limits()});
  const std::string longest = std::string(255, 'x');
  ExportOptions(file.path(), {{"BlackGeneration", longest}, {"InkTotal", "1"}});
  VKCLProfileOptions options;
  EXPECT_EQ(VKCLProfileHandler(AFilePath(file.path()), 0).GetProfileOptions(options), 1);
  EXPECT_EQ(options.BlackGeneration.str(), longest);
  EXPECT_EQ(options.InkTotal.str(), "1") << "each option has a buffer of its own";
}

TEST(ProfileOptions, OfAProfileWithoutThemLeaveTheRecordAsItIs) {
  const std::vector<std::vector<ImageTag>> profiles = {
      {Limits(), Settings()},
      {{Sig("meta"), Dictionary({{"Program", "Another"}})}},
      {{Sig("meta"), Dictionary({})}},
      {{Sig("meta"), TextTag("ProfileSize=3")}},
  };
  for (std::size_t i = 0; i < profiles.size(); ++i) {
    const OnFile file(profiles[i]);
    VKCLProfileOptions options;
    EXPECT_EQ(file.handler.GetProfileOptions(options), 0) << i;
    EXPECT_EQ(Listed(options), kDefaults) << i;
    options.InkTotal = "mine";
    EXPECT_EQ(file.handler.GetProfileOptions(options), 0) << i;
    EXPECT_EQ(options.InkTotal.str(), "mine") << i;
  }
}

TEST(ProfileOptions, OfAFileThatIsMissingOrNoProfileLeaveTheRecordAsItIs) {
  VKCLProfileOptions options;
  EXPECT_EQ(OnFile(Bytes(300, 7)).handler.GetProfileOptions(options), 0);
  EXPECT_EQ(Listed(options), kDefaults);
  const OnFile file(std::vector<ImageTag>{Limits()});
  ExportOptions(file.path(), kAllOptions);
  std::filesystem::remove(file.path());
  EXPECT_EQ(file.handler.GetProfileOptions(options), 0);
  EXPECT_EQ(Listed(options), kDefaults);
}

TEST(ProfileOptions, AreFoundUnderAPathWithCharactersOutsideAscii) {
  const CommaLocale utf8;
  ASSERT_TRUE(utf8.works()) << "the build makes the locale from Debian's package locales";
  const OnFile plain(std::vector<ImageTag>{Limits(), Settings(), TargetTag()});
  ExportOptions(plain.path(), kAllOptions);
  const TempDir dir;
  // "Profile für Größe", a snowman and a letter beyond the first plane, in UTF-8.
  const std::string folder =
      "Profile f\xC3\xBCr Gr\xC3\xB6\xC3\x9F"
      "e";
  std::filesystem::create_directory(dir.path() / folder);
  const std::string path = dir.Write(folder + "/\xE2\x98\x83 \xF0\x9D\x84\x9E.icc", plain.File());
  const VKCLProfileHandler handler(AFilePath(path), 0);
  VKCLProfileOptions options;
  EXPECT_EQ(handler.GetProfileOptions(options), 1);
  EXPECT_EQ(Listed(options), kAllOptions);
  VKCLProfileProperties properties;
  EXPECT_EQ(handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(Listed(properties.options), kAllOptions);
}

TEST(GetProperties, ReadsTheOptionsBehindATarget) {
  const OnFile file(std::vector<ImageTag>{Limits(), Settings(), TargetTag()});
  ExportOptions(file.path(), kAllOptions);
  const VKCLProfileHandler handler(AFilePath(file.path()), 0);
  VKCLProfileProperties properties;
  EXPECT_EQ(handler.GetVKCLProfileProperties(properties, 0), 1);
  EXPECT_EQ(Listed(properties.options), kAllOptions);
  EXPECT_EQ(SamplesOf(properties.charReference), kTargetDevice);
}

TEST(GetProperties, ReadsNoOptionsWithoutATargetThatIsAccepted) {
  // One helper reads both; a target that is missing or refused ends it before the options.
  const std::vector<std::vector<ImageTag>> profiles = {
      {Limits(), Settings()}, {Limits(), Settings(), TargetTag("no target")}};
  for (const auto& tags : profiles) {
    const OnFile file(tags);
    ExportOptions(file.path(), kAllOptions);
    const VKCLProfileHandler handler(AFilePath(file.path()), 0);
    VKCLProfileProperties properties;
    EXPECT_EQ(handler.GetVKCLProfileProperties(properties, 0), 1);
    EXPECT_EQ(Listed(properties.options), kDefaults);
    VKCLProfileOptions options;
    EXPECT_EQ(handler.GetProfileOptions(options), 1) << "though they are there";
  }
}

// Placeholder linearisation.

const Samples kFake{kPlaceholder, 5, 1, 4, 5};

int IsFake(const Bytes& measurement, const std::vector<ImageTag>& more) {
  std::vector<ImageTag> tags = {Limits(), Tag("QX54", measurement)};
  tags.insert(tags.end(), more.begin(), more.end());
  return OnFile(tags).handler.IsLinFake();
}

int IsFake(const Bytes& measurement) {
  return IsFake(measurement, {Settings(), Tag("QX55", ListPayload(ListNumber(55)))});
}

TEST(IsLinFake, SaysYesToAPlaceholder) {
  EXPECT_EQ(IsFake(ListPayload(kFake, 0)), 1);
  EXPECT_EQ(IsFake(ListPayload({kPlaceholder, 0, 0, 0, 0}, 0)), 1) << "none of no samples measured";
  EXPECT_EQ(IsFake(ListPayload({kPlaceholder, 5, 1, 0, 5}, 1)), 1) << "a presence word, no values";
}

TEST(IsLinFake, NeedsAsManyMeasuredSamplesAsThereAre) {
  for (const int measured : {0, 4, 6, -5}) {
    EXPECT_EQ(IsFake(ListPayload({kPlaceholder, 5, 1, 4, measured}, 0)), 0) << measured;
  }
}

TEST(IsLinFake, NeedsThePlaceholdersFormat) {
  for (const std::uint32_t format : {0u, 0xFFFFFFFEu, 0x7FFFFFFFu, Sig("Lab "), Sig("refl")}) {
    EXPECT_EQ(IsFake(ListPayload({format, 5, 1, 4, 5}, 0)), 0) << format;
  }
}

TEST(IsLinFake, NeedsAListWithoutValues) {
  EXPECT_EQ(IsFake(ListPayload({kPlaceholder, 2, 1, 2, 2, {1, 2, 3, 4}})), 0);
  EXPECT_EQ(IsFake(ListPayload({kPlaceholder, 1, 1, 1, 1, {0}})), 0);
}

TEST(IsLinFake, NeedsTheReferenceBecauseTheMeasurementIsReadBehindIt) {
  EXPECT_EQ(IsFake(ListPayload(kFake, 0), {Settings()}), 0);
  EXPECT_EQ(IsFake(ListPayload(kFake, 0), {Settings(), Tag("QX55", Bytes(23))}), 0);
  EXPECT_EQ(IsFake(ListPayload(kFake, 0), {Settings(), Tag("QX55", Bytes(25))}), 0);
  EXPECT_EQ(IsFake(ListPayload(kFake, 0), {Settings(), Tag("QX55", Bytes(24))}), 1);
}

TEST(IsLinFake, SaysNoToADamagedOrMissingMeasurement) {
  EXPECT_EQ(IsFake(ListPayload(kFake, 0).Fill(1)), 0);
  EXPECT_EQ(IsFake(Bytes(23, 0xFF)), 0);
  EXPECT_EQ(IsFake(ListPayload({kPlaceholder, -5, 1, 4, -5}, 0)), 0) << "equal, but negative";
  EXPECT_EQ(IsFake(ListPayload(kFake, 1)), 0) << "announces values that are not there";
  EXPECT_EQ(OnFile(std::vector<ImageTag>{Limits(200), Settings(),
                                         Tag("QX55", ListPayload(ListNumber(55)))})
                .handler.IsLinFake(),
            0);
}

TEST(IsLinFake, SaysNoWithoutAFinishedState) {
  const ImageTag reference = Tag("QX55", ListPayload(ListNumber(55)));
  const Bytes fake = ListPayload(kFake, 0);
  EXPECT_EQ(IsFake(fake, {reference}), 0) << "no settings";
  EXPECT_EQ(IsFake(fake, {Settings(), reference, Tag("QX77", {1})}), 0) << "of a newer system";
  EXPECT_EQ(
      OnFile(std::vector<ImageTag>{Settings(), Tag("QX54", fake), reference}).handler.IsLinFake(),
      0)
      << "no ink limits";
  EXPECT_EQ(OnFile(Bytes(10)).handler.IsLinFake(), 0);
  // The status takes part, so settings that cannot be read leave no state.
  EXPECT_EQ(IsFake(fake, {{Sig("QX53"), TextTag("text")}, reference}), 0);
}

TEST(IsLinFake, SaysYesAlsoToALockedOrWholeProfile) {
  const ImageTag reference = Tag("QX55", ListPayload(ListNumber(55)));
  const Bytes fake = ListPayload(kFake, 0);
  EXPECT_EQ(IsFake(fake, {Settings(9), reference}), 1);
  EXPECT_EQ(IsFake(fake, {Settings(9), reference, Tag("B2A0", Bytes(5))}), 1);
  EXPECT_EQ(IsFake(fake, {Settings(1), reference, Tag("B2A0", Bytes(5)), TargetTag()}), 1);
}

}  // namespace
