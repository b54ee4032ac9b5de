#include <cstring>
#include <memory>

#include "platform/profiler/TesselColorProfiler.h"
#include "privatetags/InkLimitRecords.h"
#include "privatetags/ParameterRecords.h"
#include "privatetags/ProfileDataList.h"
#include "privatetags/VKPrivateTag.h"
#include "split/SplitParam.h"
#include "support/ProfilerCalls.h"
#include "support/RealProfiles.h"
#include "support/SystemCalls.h"
#include "support/TagFile.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::HexBytes;
using vkcl::testing::OpenHandles;
using vkcl::testing::Payload;
using vkcl::testing::ReadFile;
using vkcl::testing::RealProfile;
using vkcl::testing::TempDir;

constexpr char k100[] = "0000000000005940";  // 100.0 as a double
constexpr char kMinusOne[] = "000080BF";     // -1.0 as a float

Bytes BytesOf(const VKPrivateTag& tag) {
  const auto* first = reinterpret_cast<const unsigned char*>(tag.data);
  return tag.size == 0 ? Bytes() : Bytes(first, first + tag.size);
}

/// What a builder that works gives; empty bytes and a failed test for one that does not.
template <class Build>
Bytes Built(VKPrivateTagSignature signature, Build build) {
  VKPrivateTag tag;
  EXPECT_EQ(build(tag), 1);
  EXPECT_EQ(tag.signature, signature);
  EXPECT_EQ(tag.GetTagSize(), tag.size);
  EXPECT_EQ(tag.GetData(), tag.data);
  return BytesOf(tag);
}

// The envelope.

TEST(PrivateTagEnvelope, ByDefaultIsEmpty) {
  const VKPrivateTag tag;
  EXPECT_EQ(static_cast<std::uint32_t>(tag.signature), 0u);
  EXPECT_EQ(tag.data, nullptr);
  EXPECT_EQ(tag.size, 0u);
  EXPECT_EQ(tag.GetTagSize(), 0u);
  EXPECT_EQ(tag.GetData(), nullptr);
}

TEST(PrivateTagEnvelope, KeepsTheSignatureGiven) {
  VKPrivateTag tag;
  tag.SetSignature(QX53);
  EXPECT_EQ(tag.signature, QX53);
  tag.SetSignature(static_cast<VKPrivateTagSignature>(0xFFFFFFFF));
  EXPECT_EQ(static_cast<std::uint32_t>(tag.signature), 0xFFFFFFFFu);
}

TEST(PrivateTagEnvelope, CopiesShareTheBlock) {
  VKPrivateTag from;
  from.SetSignature(QX64);
  from.data = new char[3]{'a', 'b', 'c'};
  from.size = 3;
  VKPrivateTag assigned;
  assigned = from;
  VKPrivateTag constructed(from);
  for (VKPrivateTag* copy : {&assigned, &constructed}) {
    EXPECT_EQ(copy->signature, QX64);
    EXPECT_EQ(copy->GetData(), from.data);
    EXPECT_EQ(copy->GetTagSize(), 3u);
    copy->data = nullptr;  // only one of the three may be destroyed with the block in it
  }
}

TEST(PrivateTagEnvelope, NamesTheCatalogueOfSignatures) {
  const struct {
    VKPrivateTagSignature signature;
    std::uint32_t value;
  } catalogue[] = {{QX50, 0x51583530}, {QX51, 0x51583531}, {QX52, 0x51583532}, {QX53, 0x51583533},
                   {QX54, 0x51583534}, {QX55, 0x51583535}, {QX56, 0x51583536}, {QX57, 0x51583537},
                   {QX58, 0x51583538}, {QX59, 0x51583539}, {QX60, 0x51583630}, {QX61, 0x51583631},
                   {QX62, 0x51583632}, {QX63, 0x51583633}, {QX64, 0x51583634}, {QX65, 0x51583635},
                   {QX66, 0x51583636}, {QX67, 0x51583637}, {QX68, 0x51583638}, {QX69, 0x51583639},
                   {QX70, 0x51583730}, {QX71, 0x51583731}, {QX72, 0x51583732}, {QX73, 0x51583733},
                   {QX74, 0x51583734}, {QX75, 0x51583735}, {QX76, 0x51583736}};
  for (const auto& entry : catalogue) {
    EXPECT_EQ(static_cast<std::uint32_t>(entry.signature), entry.value);
  }
  EXPECT_EQ(std::size(catalogue), 27u);
}

// Data lists.

constexpr VKPrivateTagSignature kListSignatures[] = {QX54, QX55, QX56, QX57,
                                                     QX59, QX60, QX72, QX73};

void FillList(ProfileDataList& list) {
  list.DataFormat = 0x434D594B;  // 'CMYK'
  list.ColorMode = -2147483647;
  list.NumOfColors = 2;
  ASSERT_EQ(list.RefreshList(2), 1);
  list.Measured = 1;
  const double values[] = {100.0, 0.5, -2.0, 50.0};
  for (int i = 0; i < 4; ++i) list.DataList[i] = values[i];
}

TEST(PayloadBuilders, DataListHoldsCountersPresenceAndValues) {
  ProfileDataList list;
  FillList(list);
  const Bytes expected = HexBytes(
      "4B594D43 02000000 01000080 02000000 01000000"
      "01000000"
      "0000000000005940 000000000000E03F"
      "00000000000000C0 0000000000004940");
  for (const VKPrivateTagSignature signature : kListSignatures) {
    const auto build = [&list, signature](VKPrivateTag& tag) {
      return tag.InitFromProfileDataList(list, signature);
    };
    EXPECT_EQ(Built(signature, build), expected);
  }
}

TEST(PayloadBuilders, DataListWithoutValuesIs24Bytes) {
  ProfileDataList list;
  list.DataFormat = 0x4C616220;  // 'Lab '
  list.NumOfSamples = 5;
  list.ColorMode = 16;
  list.NumOfColors = 3;
  list.Measured = 4;
  EXPECT_EQ(Built(QX55, [&](VKPrivateTag& tag) { return tag.InitFromProfileDataList(list, QX55); }),
            HexBytes("2062614C 05000000 10000000 03000000 04000000 00000000"));
}

// The presence word says whether values follow, not whether there is an array.
TEST(PayloadBuilders, DataListOfAnEmptyArrayHasNoPresenceWord) {
  for (const bool ofSamples : {true, false}) {
    ProfileDataList list;
    list.NumOfColors = ofSamples ? 3 : 0;
    ASSERT_EQ(list.RefreshList(ofSamples ? 0 : 5), 1);
    EXPECT_EQ(
        Built(QX55, [&](VKPrivateTag& tag) { return tag.InitFromProfileDataList(list, QX55); }),
        ofSamples ? HexBytes("00000000 00000000 00000000 03000000 00000000 00000000")
                  : HexBytes("00000000 05000000 00000000 00000000 00000000 00000000"));
  }
}

TEST(PayloadBuilders, DataListStoresNeitherPerSampleArrayNorTrailingIntegers) {
  ProfileDataList list;
  FillList(list);
  const auto build = [&list](VKPrivateTag& tag) { return tag.InitFromProfileDataList(list, QX72); };
  const Bytes plain = Built(QX72, build);
  EXPECT_EQ(plain.size(), 24u + 32u);
  list.PerSample = new std::int32_t[2]{8, 9};
  list.Extra1 = 7;
  list.Extra2 = 6;
  EXPECT_EQ(Built(QX72, build), plain);
}

TEST(PayloadBuilders, DataListIsRefusedUnderEveryOtherSignature) {
  ProfileDataList list;
  FillList(list);
  const std::uint32_t others[] = {QX50,      QX51, QX52, QX53, QX58, QX61, QX62,
                                  QX63,      QX64, QX65, QX66, QX67, QX68, QX69,
                                  QX70,      QX71, QX74, QX75, QX76, 0,    0x51583737,  // 'QX77'
                                  0x51583439};                                          // 'QX49'
  for (const std::uint32_t other : others) {
    VKPrivateTag tag;
    EXPECT_EQ(tag.InitFromProfileDataList(list, static_cast<VKPrivateTagSignature>(other)), 0)
        << std::hex << other;
    EXPECT_EQ(tag.data, nullptr);
    EXPECT_EQ(tag.size, 0u);
  }
}

TEST(PayloadBuilders, DataListWhoseSizeIsNegativeAsASignedNumberIsRefused) {
  const struct {
    std::int32_t samples, colors;
  } cases[] = {{0x8000, 0x2000},  // 2^31 bytes
               {0x8000, 0x3FFF},
               {-1, 1},
               {1, -1}};
  for (const auto& one : cases) {
    ProfileDataList list;
    list.NumOfColors = 1;
    ASSERT_EQ(list.RefreshList(1), 1);
    list.NumOfSamples = one.samples;
    list.NumOfColors = one.colors;
    VKPrivateTag tag;
    EXPECT_EQ(tag.InitFromProfileDataList(list, QX54), 0) << one.samples << ' ' << one.colors;
    EXPECT_EQ(tag.size, 0u);
  }
}

// The split.

TEST(PayloadBuilders, SplitOfVersionTwoIsHeadAndRecords) {
  SplitTypeV2 records[2];
  records[0].colorantIndex = 3;
  records[0].lightPeakInput = 0.5f;
  records[1].colorantIndex = -1;
  records[1].darkEndShape = 2.0f;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(2, 2, records), 1);
  EXPECT_EQ(Built(QX50, [&](VKPrivateTag& tag) { return tag.InitFromSplitParam(split); }),
            Payload()
                .HexDigits("02000000 AC000000 02000000 0000000000000000")
                .HexDigits("4C000000 03000000")
                .HexDigits(kMinusOne)
                .HexDigits("0000003F")
                .HexDigits(kMinusOne, 6)
                .Fill(36)
                .HexDigits("4C000000 FFFFFFFF")
                .HexDigits(kMinusOne, 8)
                .Fill(32)
                .HexDigits("00000040")
                .bytes());
}

TEST(PayloadBuilders, SplitOfVersionThreeIsHeadAndRecords) {
  const auto record = std::make_unique<SplitTypeV3>();
  record->colorantIndex = 1;
  record->light[0] = {0.5f, 2.0f};
  record->medium[0] = {2.0f, 0.5f};
  record->dark[255] = {-1.0f, 0.5f};
  record->lightCount = 1;
  record->mediumCount = 2;
  record->darkCount = 256;
  record->interpolation = 9;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(3, 1, record.get()), 1);
  EXPECT_EQ(Built(QX50, [&](VKPrivateTag& tag) { return tag.InitFromSplitParam(split); }),
            Payload()
                .HexDigits("03000000 2C180000 01000000 0000000000000000")
                .HexDigits("18180000 01000000")
                .HexDigits("0000003F 00000040")
                .Fill(255 * 8)
                .HexDigits("00000040 0000003F")
                .Fill(255 * 8 + 255 * 8)
                .HexDigits("000080BF 0000003F")
                .HexDigits("01000000 02000000 00010000 09000000")
                .bytes());
}

TEST(PayloadBuilders, SplitOfVersionFourIsHeadAndRecords) {
  const auto record = std::make_unique<SplitTypeV4>();
  record->colorantIndex = 2;
  record->light[255] = {0.5f, 2.0f, -1.0f};
  record->medium[0] = {2.0f, 0.5f, -1.0f};
  record->dark[0] = {-1.0f, 0.5f, 2.0f};
  record->lightCount = 256;
  record->mediumCount = 1;
  record->darkCount = 3;
  record->interpolation = -1;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(4, 1, record.get()), 1);
  EXPECT_EQ(Built(QX50, [&](VKPrivateTag& tag) { return tag.InitFromSplitParam(split); }),
            Payload()
                .HexDigits("04000000 2C240000 01000000 0000000000000000")
                .HexDigits("18240000 02000000")
                .Fill(255 * 12)
                .HexDigits("0000003F 00000040 000080BF")
                .HexDigits("00000040 0000003F 000080BF")
                .Fill(255 * 12)
                .HexDigits("000080BF 0000003F 00000040")
                .Fill(255 * 12)
                .HexDigits("00010000 01000000 03000000 FFFFFFFF")
                .bytes());
}

TEST(PayloadBuilders, SplitWithoutRecordsIsRefused) {
  VKPrivateTag tag;
  SplitParam split;
  EXPECT_EQ(tag.InitFromSplitParam(split), 0);

  split.count = 2;
  split.size = 20 + 2 * 76;
  split.version = 2;
  EXPECT_EQ(tag.InitFromSplitParam(split), 0);  // a count alone is no record

  SplitTypeV2 record;
  ASSERT_EQ(split.InitSplitParam(2, 1, &record), 1);
  split.count = 0;
  split.size = 20;
  EXPECT_EQ(tag.InitFromSplitParam(split), 0);
  split.count = -1;
  EXPECT_EQ(tag.InitFromSplitParam(split), 0);

  EXPECT_EQ(split.InitSplitParam(5, 1, &record), 0);
  EXPECT_EQ(tag.InitFromSplitParam(split), 0);
  EXPECT_EQ(tag.size, 0u);
}

TEST(PayloadBuilders, SplitOfAnUnknownVersionIsRefusedAlsoWhenItStatesItsHeadAlone) {
  SplitTypeV2 record;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(2, 1, &record), 1);
  split.size = 20;
  VKPrivateTag known;
  EXPECT_EQ(known.InitFromSplitParam(split), 1);
  EXPECT_EQ(known.size, 20u);
  for (const int version : {1, 5, -2}) {
    split.version = version;
    VKPrivateTag tag;
    EXPECT_EQ(tag.InitFromSplitParam(split), 0) << version;
    EXPECT_EQ(tag.size, 0u);
  }
  split.version = 2;
}

TEST(PayloadBuilders, SplitThatStatesMoreThanItHoldsOrLessThanNothingIsRefused) {
  SplitTypeV2 record;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(2, 1, &record), 1);
  for (const int size : {97, 9260, 2147483647, -1, -2147483647 - 1}) {
    split.size = size;
    VKPrivateTag tag;
    EXPECT_EQ(tag.InitFromSplitParam(split), 0) << size;
    EXPECT_EQ(tag.size, 0u);
  }
}

// Dither.

TEST(PayloadBuilders, DitherIsHeadAndTable) {
  const auto table = std::make_unique<DitherTypeV1>();
  std::memset(table->table, 0xD1, 4112);
  table->table[4111] = 0xD2;
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(1, table.get()), 1);
  EXPECT_EQ(Built(QX66, [&](VKPrivateTag& tag) { return tag.InitFromDitherParam(dither); }),
            Payload()
                .HexDigits("01000000 24100000 0000000000000000 14100000")
                .HexDigits("D1", 4111)
                .HexDigits("D2")
                .bytes());
}

TEST(PayloadBuilders, DitherThatWasAssignedIs24Bytes) {
  const auto table = std::make_unique<DitherTypeV1>();
  std::memset(table->table, 0xD1, 4112);
  VKDitherParam whole;
  ASSERT_EQ(whole.InitDitherParam(1, table.get()), 1);
  VKDitherParam dither;
  dither = whole;
  EXPECT_EQ(Built(QX66, [&](VKPrivateTag& tag) { return tag.InitFromDitherParam(dither); }),
            HexBytes("01000000 18000000 0000000000000000 14100000 D1D1D1D1"));
}

TEST(PayloadBuilders, DitherWithoutATableIsRefused) {
  VKPrivateTag tag;
  VKDitherParam dither;
  EXPECT_EQ(tag.InitFromDitherParam(dither), 0);
  DitherTypeV1 table;
  EXPECT_EQ(dither.InitDitherParam(2, &table), 0);
  EXPECT_EQ(tag.InitFromDitherParam(dither), 0);
  EXPECT_EQ(tag.data, nullptr);
  EXPECT_EQ(tag.size, 0u);
}

TEST(PayloadBuilders, DitherThatStatesMoreThanItHoldsOrLessThanNothingIsRefused) {
  DitherTypeV1 table;
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(1, &table), 1);
  for (const int size : {4133, 2147483647, -1, -2147483647 - 1}) {
    dither.size = size;
    VKPrivateTag tag;
    EXPECT_EQ(tag.InitFromDitherParam(dither), 0) << size;
    EXPECT_EQ(tag.size, 0u);
  }
}

// Numbers and text.

TEST(PayloadBuilders, DitherFlagAndWizardFlagAreOneNumber) {
  const struct {
    int flag;
    const char* bytes;
  } cases[] = {{1, "01000000"}, {0, "00000000"}, {-2, "FEFFFFFF"}, {0x01020304, "04030201"}};
  for (const auto& one : cases) {
    const Bytes expected = HexBytes(one.bytes);
    EXPECT_EQ(Built(QX64, [&](VKPrivateTag& tag) { return tag.InitCMStoDither(one.flag); }),
              expected);
    EXPECT_EQ(Built(QX74, [&](VKPrivateTag& tag) { return tag.InitWizardTag(one.flag); }),
              expected);
  }
}

TEST(PayloadBuilders, ChromaAdjustIsTheTextAndAZero) {
  const auto built = [](const AString& text) {
    return Built(QX75, [&](VKPrivateTag& tag) { return tag.InitVKChromaAdjust(text); });
  };
  EXPECT_EQ(built("a=1;b"), HexBytes("613D313B6200"));
  EXPECT_EQ(built(""), HexBytes("00"));
  EXPECT_EQ(built("\xC3\xA9"), HexBytes("C3A900"));
  EXPECT_EQ(built(AString("a\0b", 3)), HexBytes("61006200"));
}

// Fixed records.

TEST(PayloadBuilders, CompatibilityIsTheRecord) {
  VKCompatibilityParam param;
  std::memset(param.bytes, 0xC1, 63);
  param.bytes[63] = 0xC2;
  EXPECT_EQ(Built(QX67, [&](VKPrivateTag& tag) { return tag.InitFromVKCompatibilityParam(param); }),
            Payload().HexDigits("C1", 63).HexDigits("C2").bytes());
}

VKColorParam SomeColorParam() {
  VKColorParam param;
  param.status = 10;
  param.MediaID = 0x01020304;
  std::strcpy(param.Make, "Hewlett-Packard");  // cleaned up by the reader, stored as it is
  std::strcpy(param.Model, "M");
  std::strcpy(param.MediaName, "  n ");
  param.ResolutionID = 7;
  param.ResolutionX = 720.0f;
  param.ResolutionY = 1440.0f;
  param.ColorMode = 64;
  param.DriverColorMode = 2;
  param.DitherMethod = 3;
  param.PrintMode = 4;
  std::memset(param.DriverOption, 0xF1, 256);
  std::memset(param.reservedText1, 'x', 128);
  std::memset(param.reservedText3, 'z', 128);
  return param;
}

Payload SomeColorParamPayload() {
  return Payload()
      .HexDigits("01000000 2C040000 0A000000 04030201")
      .HexDigits("4865776C6574742D5061636B617264")
      .Fill(113)
      .HexDigits("4D")
      .Fill(127)
      .HexDigits("20206E20")
      .Fill(124)
      .HexDigits("07000000 00003444 0000B444 40000000 02000000 03000000 04000000")
      .HexDigits("F1", 256)
      .HexDigits("78", 128)
      .Fill(128)
      .HexDigits("7A", 128);
}

TEST(PayloadBuilders, ColorParamIsTheRecord) {
  const VKColorParam param = SomeColorParam();
  EXPECT_EQ(Built(QX53, [&](VKPrivateTag& tag) { return tag.InitFromVKColorParam(param); }),
            SomeColorParamPayload().bytes());
}

TEST(PayloadBuilders, ColorParamOfASmallerSizeIsCut) {
  VKColorParam param = SomeColorParam();
  const auto built = [&param](int size) {
    param.size = size;
    return Built(QX53, [&](VKPrivateTag& tag) { return tag.InitFromVKColorParam(param); });
  };
  EXPECT_EQ(built(18), HexBytes("01000000 12000000 0A000000 04030201 4865"));
  EXPECT_EQ(built(6), HexBytes("01000000 0600"));
  EXPECT_EQ(built(0), Bytes());
}

TEST(PayloadBuilders, ColorParamThatStatesMoreThanItHoldsOrLessThanNothingIsRefused) {
  VKColorParam param;
  for (const int size : {1069, 2147483647, -1, -2147483647 - 1}) {
    param.size = size;
    VKPrivateTag tag;
    EXPECT_EQ(tag.InitFromVKColorParam(param), 0) << size;
    EXPECT_EQ(tag.size, 0u);
  }
}

TEST(PayloadBuilders, MultipleInkLimitsAreTheRecord) {
  VKMultiInklimit limits;
  limits.version = 3;
  limits.count = 1;
  limits.limits[0] = 50.0;
  limits.limits[35] = -2.0;
  EXPECT_EQ(Built(QX52, [&](VKPrivateTag& tag) { return tag.InitFromVKMultiInklimit(limits); }),
            Payload()
                .HexDigits("03000000 2C010000 01000000 0000000000004940")
                .HexDigits(k100, 34)
                .HexDigits("00000000000000C0")
                .bytes());
}

TEST(PayloadBuilders, MultipleInkLimitsOfASmallerSizeAreCut) {
  VKMultiInklimit limits;
  limits.size = 20;
  EXPECT_EQ(Built(QX52, [&](VKPrivateTag& tag) { return tag.InitFromVKMultiInklimit(limits); }),
            HexBytes("04000000 14000000 24000000 0000000000005940"));
}

TEST(PayloadBuilders, MultipleInkLimitsThatStateMoreThanTheyHoldOrLessThanNothingAreRefused) {
  VKMultiInklimit limits;
  for (const int size : {301, 2147483647, -1, -2147483647 - 1}) {
    limits.size = size;
    VKPrivateTag tag;
    EXPECT_EQ(tag.InitFromVKMultiInklimit(limits), 0) << size;
    EXPECT_EQ(tag.size, 0u);
  }
}

TEST(PayloadBuilders, SingleInkLimitsAre140BytesWhateverTheirSizeSays) {
  VKSingleInkLimitWithLinRef limits;
  limits.limits[15] = 0.5;
  const struct {
    int size;
    const char* bytes;
  } sizes[] = {
      {140, "8C000000"}, {0, "00000000"}, {8, "08000000"}, {5000, "88130000"}, {-1, "FFFFFFFF"}};
  for (const auto& one : sizes) {
    limits.size = one.size;
    EXPECT_EQ(
        Built(QX51,
              [&](VKPrivateTag& tag) { return tag.InitFromVKSingleInkLimitWithLinRef(limits); }),
        Payload()
            .HexDigits("01000000")
            .HexDigits(one.bytes)
            .HexDigits("10000000")
            .HexDigits(k100, 15)
            .HexDigits("000000000000E03F")
            .bytes());
    EXPECT_EQ(limits.size, one.size);
  }
}

TEST(PayloadBuilders, LinExtraDataIs572Bytes) {
  VKLinExtraDataParam param;
  param.version = 2;
  std::memset(param.text, 't', 129);
  param.value = -2;
  std::memset(param.blockA, 0xA1, 144);
  std::memset(param.blockB, 0xB2, 288);
  EXPECT_EQ(Built(QX70, [&](VKPrivateTag& tag) { return tag.InitFromVKLinExtraDataParam(param); }),
            Payload()
                .HexDigits("02000000")
                .HexDigits("74", 129)
                .Fill(3)
                .HexDigits("FEFFFFFF")
                .HexDigits("A1", 144)
                .HexDigits("B2", 288)
                .bytes());
}

TEST(PayloadBuilders, ProfileExtraIsTheRecord) {
  VKProfileExtraParam param;
  param.value = 0x01020304;
  EXPECT_EQ(Built(QX76, [&](VKPrivateTag& tag) { return tag.InitFromVKProfileExtraParam(param); }),
            HexBytes("01000000 04030201"));
}

// Files.

TEST(PayloadBuilders, TrcFileIsTheWholeFile) {
  const TempDir dir;
  const Bytes content = HexBytes("00FF0A0D1A00");
  const AFilePath path = dir.Write("curve.trc", content);
  EXPECT_EQ(Built(QX58, [&](VKPrivateTag& tag) { return tag.InitFromTRCFile(path); }), content);
  EXPECT_EQ(ReadFile(path.str()), content);
}

TEST(PayloadBuilders, TrcFileThatIsEmptyGivesAnEmptyPayload) {
  const TempDir dir;
  const AFilePath path = dir.Write("empty.trc", {});
  EXPECT_EQ(Built(QX58, [&](VKPrivateTag& tag) { return tag.InitFromTRCFile(path); }), Bytes());
}

TEST(PayloadBuilders, FilesThatAreMissingOrFoldersAreRefused) {
  const TempDir dir;
  std::filesystem::create_directory(dir.path() / "folder");
  for (const std::string& path :
       {dir.File("missing"), dir.File("folder"), std::string(), dir.File("missing") + "/inside"}) {
    VKPrivateTag trc;
    EXPECT_EQ(trc.InitFromTRCFile(path), 0) << path;
    EXPECT_EQ(trc.size, 0u);
    VKPrivateTag vsd;
    EXPECT_EQ(vsd.InitFromVSDProfile(path), 0) << path;
    EXPECT_EQ(vsd.size, 0u);
  }
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "missing"));
}

TEST(PayloadBuilders, FilesThatCannotBeReadAsAWholeAreRefusedAndClosed) {
  const TempDir dir;
  const AFilePath path = dir.Write("f", HexBytes("3C61003E"));
  const int handles = OpenHandles();
  const auto refusals = [&](const auto& build) {
    int refused = 0;
    bool reached = true;
    for (std::size_t call = 0; reached; ++call) {
      VKPrivateTag tag;
      int result = 0;
      {
        const FaultAt at(call, Fault::Error);
        result = build(tag);
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(OpenHandles(), handles) << call;
      if (result == 0) {
        ++refused;
        EXPECT_EQ(tag.size, 0u) << call;
      } else {
        const Bytes payload = BytesOf(tag);
        EXPECT_GE(payload.size(), 4u) << call;
        EXPECT_EQ(Bytes(payload.end() - 4, payload.end()), HexBytes("3C61003E")) << call;
      }
    }
    return refused;
  };
  EXPECT_GE(refusals([&](VKPrivateTag& tag) { return tag.InitFromTRCFile(path); }), 2);
  EXPECT_GE(refusals([&](VKPrivateTag& tag) { return tag.InitFromVSDProfile(path); }), 2);
}

Bytes BuiltVsd(const TempDir& dir, const std::string& name, const Bytes& content) {
  const AFilePath path = dir.Write(name, content);
  return Built(QX71, [&](VKPrivateTag& tag) { return tag.InitFromVSDProfile(path); });
}

TEST(PayloadBuilders, VsdProfileIsNameAndFile) {
  const TempDir dir;
  EXPECT_EQ(BuiltVsd(dir, "a.b.vsd", HexBytes("3C61003E")), Payload()
                                                                .HexDigits("01000000")
                                                                .HexDigits("612E622E767364")
                                                                .Fill(121)
                                                                .HexDigits("3C61003E")
                                                                .bytes());
}

TEST(PayloadBuilders, VsdProfileThatIsEmptyIsTheNameAlone) {
  const TempDir dir;
  EXPECT_EQ(BuiltVsd(dir, "x", {}), Payload().HexDigits("01000000 78").Fill(127).bytes());
}

TEST(PayloadBuilders, VsdNameOf127CharactersKeepsItsTerminator) {
  const TempDir dir;
  EXPECT_EQ(BuiltVsd(dir, std::string(127, 'n'), HexBytes("AABB")),
            Payload().HexDigits("01000000").HexDigits("6E", 127).HexDigits("00 AABB").bytes());
}

TEST(PayloadBuilders, VsdNameOf128CharactersLosesItsTerminatorToTheFile) {
  const TempDir dir;
  const std::string name = std::string(127, 'n') + 'z';
  EXPECT_EQ(BuiltVsd(dir, name, HexBytes("AABB")),
            Payload().HexDigits("01000000").HexDigits("6E", 127).HexDigits("7A AABB").bytes());
  EXPECT_EQ(BuiltVsd(dir, name, {}),
            Payload().HexDigits("01000000").HexDigits("6E", 127).HexDigits("7A").bytes());
}

TEST(PayloadBuilders, VsdNameOf140CharactersLosesItsEndToTheFile) {
  const TempDir dir;
  const std::string name = std::string(128, 'n') + std::string(12, 'z');
  for (const std::size_t length : {100u, 12u, 2u, 0u}) {
    EXPECT_EQ(BuiltVsd(dir, name, Bytes(length, 0xAB)),
              Payload().HexDigits("01000000").HexDigits("6E", 128).Fill(length, 0xAB).bytes())
        << length;
  }
}

// Spot colours.

TEST(PayloadBuilders, SpotInkLimitsAreHeadNameAndLimits) {
  VKSpotSingleInkLimit spot;
  double values[] = {100.0, -2.0};
  spot.SetData(2, "Red", values);
  EXPECT_EQ(Built(QX68, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotSIL(spot); }),
            HexBytes("01000000 1F000000 02000000 526564 0000000000005940 00000000000000C0"));
}

TEST(PayloadBuilders, SpotInkLimitsOfAnEmptyNameAreHeadAndLimits) {
  VKSpotSingleInkLimit spot;
  double values[] = {0.5};
  spot.SetData(1, "", values);
  EXPECT_EQ(Built(QX68, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotSIL(spot); }),
            HexBytes("01000000 14000000 01000000 000000000000E03F"));
}

TEST(PayloadBuilders, SpotInkLimitsWithoutLimitsAreRefusedWhenTheyCountAName) {
  VKSpotSingleInkLimit spot;
  spot.SetData(0, "Red", nullptr);
  VKPrivateTag tag;
  EXPECT_EQ(tag.InitFromVKSpotSIL(spot), 0);
  EXPECT_EQ(tag.size, 0u);
}

TEST(PayloadBuilders, SpotInkLimitsOfACountOfZeroAreTheHeadAndOfMoreNeedLimits) {
  VKSpotSingleInkLimit spot;
  spot.size = 12;
  EXPECT_EQ(Built(QX68, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotSIL(spot); }),
            HexBytes("01000000 0C000000 00000000"));
  spot.count = 1;
  spot.size = 20;
  VKPrivateTag tag;
  EXPECT_EQ(tag.InitFromVKSpotSIL(spot), 0);
  EXPECT_EQ(tag.size, 0u);
}

TEST(PayloadBuilders, SpotInkLimitsAreStoredAsFarAsTheyState) {
  VKSpotSingleInkLimit spot;
  double values[] = {0.5};
  spot.SetData(1, "Red", values);
  spot.size = 13;
  EXPECT_EQ(Built(QX68, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotSIL(spot); }),
            HexBytes("01000000 0D000000 01000000 52"));
  spot.size = 12;
  EXPECT_EQ(Built(QX68, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotSIL(spot); }),
            HexBytes("01000000 0C000000 01000000"));
}

TEST(PayloadBuilders, SpotInkLimitsThatStateMoreThanTheyHoldOrLessThanTheirHeadAreRefused) {
  VKSpotSingleInkLimit spot;
  double values[] = {0.5};
  spot.SetData(1, "Red", values);
  for (const int size : {24, 2147483647, 11, 1, 0, -1, -2147483647 - 1}) {
    spot.size = size;
    VKPrivateTag tag;
    EXPECT_EQ(tag.InitFromVKSpotSIL(spot), 0) << size;
    EXPECT_EQ(tag.size, 0u);
  }
}

/// Builds a link from RGB to CMYK into an existing handle and gives its serialised bytes.
Bytes BuildRealLink(void* link) {
  void* handles[2];
  const char* const names[] = {"srgb.icc", "default_cmyk.icc"};
  for (int i = 0; i < 2; ++i) {
    const Bytes profile = ReadFile(RealProfile(names[i]));
    handles[i] = CLNewCLProfileRef();
    EXPECT_EQ(CLLoadProfileFromMemory(handles[i], profile.data(),
                                      static_cast<unsigned int>(profile.size())),
              0);
  }
  EXPECT_EQ(CLBuildLink8(link, handles[0], handles[1], 1), 0);
  for (void* handle : handles) CLFreeCLProfileRef(handle);
  unsigned int size = 0;
  EXPECT_EQ(CLSaveLink8ToMemory(link, nullptr, 0, &size), 0);
  Bytes bytes(size);
  EXPECT_EQ(CLSaveLink8ToMemory(link, bytes.data(), size, &size), 0);
  return bytes;
}

TEST(PayloadBuilders, SpotLinksThatAreEmptyAreHeadNameAndZeroLengths) {
  VKSpotLinDLParam spot;
  spot.SetData(2, "Gold");
  spot.size = 4711;
  spot.linkSizes[1] = 9;
  EXPECT_EQ(Built(QX69, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotLinDL(spot); }),
            HexBytes("01000000 1C000000 02000000 04000000 476F6C64 00000000 00000000"));
  EXPECT_EQ(spot.size, 28);
  EXPECT_EQ(spot.linkSizes[1], 0);
}

TEST(PayloadBuilders, SpotLinksOfACountOfZeroAreTheHead) {
  VKSpotLinDLParam spot;
  EXPECT_EQ(Built(QX69, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotLinDL(spot); }),
            HexBytes("01000000 10000000 00000000 00000000"));
  EXPECT_EQ(spot.size, 16);
}

TEST(PayloadBuilders, SpotLinksStandOneAfterTheOtherBehindTheirLengths) {
  VKSpotLinDLParam spot;
  spot.SetData(3, "Gold");
  const Bytes first = BuildRealLink(spot.links[0]);
  const Bytes third = BuildRealLink(spot.links[2]);
  ASSERT_GT(first.size(), 128u);
  ASSERT_EQ(Bytes(first.begin() + 36, first.begin() + 40), HexBytes("61637370"));  // "acsp"
  const auto length = static_cast<std::int32_t>(first.size());
  const auto lastLength = static_cast<std::int32_t>(third.size());
  const std::int32_t total = 16 + 4 + 12 + length + lastLength;
  EXPECT_EQ(Built(QX69, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotLinDL(spot); }),
            Payload()
                .HexDigits("01000000")
                .Int(total)
                .HexDigits("03000000 04000000 476F6C64")
                .Int(length)
                .HexDigits("00000000")
                .Int(lastLength)
                .Raw(first)
                .Raw(third)
                .bytes());
  EXPECT_EQ(spot.size, total);
  EXPECT_EQ(spot.linkSizes[0], length);
  EXPECT_EQ(spot.linkSizes[1], 0);
  EXPECT_EQ(spot.linkSizes[2], lastLength);
}

TEST(PayloadBuilders, SpotLinksOfWhichOneCannotBeSavedAreRefused) {
  VKSpotLinDLParam spot;
  spot.SetData(2, "Gold");
  CLFreeCLLink8Ref(spot.links[1]);
  spot.links[1] = nullptr;
  VKPrivateTag tag;
  EXPECT_EQ(tag.InitFromVKSpotLinDL(spot), 0);
  EXPECT_EQ(tag.size, 0u);
}

// Lengths are stored link by link, in the array and in the record's size, up to one that is
// refused.
TEST(PayloadBuilders, SpotLinksOfWhichOneIsRefusedHaveTheLengthsOfThoseBeforeIt) {
  VKSpotLinDLParam spot;
  spot.SetData(3, "Gold");
  const Bytes link = BuildRealLink(spot.links[0]);
  spot.linkSizes[1] = spot.linkSizes[2] = 4711;
  const vkcl::testing::RefusedProfilerCall refused(vkcl::testing::ProfilerCall::SaveLink8, 1);
  VKPrivateTag tag;
  EXPECT_EQ(tag.InitFromVKSpotLinDL(spot), 0);
  EXPECT_EQ(spot.linkSizes[0], static_cast<int>(link.size()));
  EXPECT_EQ(spot.linkSizes[1], 4711);
  EXPECT_EQ(spot.linkSizes[2], 4711);
  EXPECT_EQ(spot.size, 4 + 4 * 3 + 16 + static_cast<int>(link.size()));
  EXPECT_EQ(tag.data, nullptr);
  EXPECT_EQ(tag.size, 0u);
}

// A link that reports its length and then cannot be saved: the block stays with the tag, as far as
// it was filled, and has no length, so that nobody writes it.
TEST(PayloadBuilders, ABlockOfWhichALinkCannotBeSavedStaysWithoutALength) {
  VKSpotLinDLParam spot;
  spot.SetData(1, "Gold");
  BuildRealLink(spot.links[0]);
  const vkcl::testing::RefusedProfilerCall refused(vkcl::testing::ProfilerCall::SaveLink8, 1);
  VKPrivateTag tag;
  tag.SetSignature(QX50);
  EXPECT_EQ(tag.InitFromVKSpotLinDL(spot), 0);
  EXPECT_EQ(tag.size, 0u);
  EXPECT_EQ(tag.signature, QX50);
  ASSERT_NE(tag.data, nullptr);
  EXPECT_EQ(std::string(tag.data + 16, 4), "Gold");
}

// A tag is meant to be filled once: the block that it held is its owner's.
TEST(PayloadBuilders, ABlockThatTheTagHeldIsNotReleased) {
  char* const held = new char[4]{'h', 'e', 'l', 'd'};
  VKPrivateTag tag;
  tag.data = held;
  tag.size = 4;
  EXPECT_EQ(tag.InitWizardTag(7), 1);
  EXPECT_NE(tag.data, held);
  EXPECT_EQ(std::string(held, 4), "held");
  delete[] held;
}

// Without values the counters are stored as they are.
TEST(PayloadBuilders, DataListWithoutValuesKeepsNegativeCounters) {
  ProfileDataList list;
  list.NumOfSamples = -5;
  list.NumOfColors = -1;
  list.Measured = -2;
  EXPECT_EQ(Built(QX54, [&](VKPrivateTag& tag) { return tag.InitFromProfileDataList(list, QX54); }),
            HexBytes("00000000 FBFFFFFF 00000000 FFFFFFFF FEFFFFFF 00000000"));
}

TEST(PayloadBuilders, SpotLinksThatLackWhatTheyCountAreRefused) {
  const auto refused = [](void (*damage)(VKSpotLinDLParam & spot)) {
    VKSpotLinDLParam spot;
    spot.SetData(1, "Gold");
    VKSpotLinDLParam damaged(spot);  // shares the arrays, and is left without them
    damage(damaged);
    damaged.size = 4711;
    VKPrivateTag tag;
    const bool isRefused = tag.InitFromVKSpotLinDL(damaged) == 0 && tag.size == 0 &&
                           tag.data == nullptr && damaged.size == 4711;
    damaged = VKSpotLinDLParam();
    return isRefused;
  };
  EXPECT_FALSE(refused([](VKSpotLinDLParam&) {}));
  EXPECT_TRUE(refused([](VKSpotLinDLParam& spot) { spot.count = -1; }));
  EXPECT_TRUE(refused([](VKSpotLinDLParam& spot) { spot.nameLength = -1; }));
  EXPECT_TRUE(refused([](VKSpotLinDLParam& spot) { spot.name = nullptr; }));
  EXPECT_TRUE(refused([](VKSpotLinDLParam& spot) { spot.links = nullptr; }));
  EXPECT_TRUE(refused([](VKSpotLinDLParam& spot) { spot.linkSizes = nullptr; }));
  EXPECT_FALSE(refused([](VKSpotLinDLParam& spot) {
    spot.nameLength = 0;
    spot.name = nullptr;
  }));
  EXPECT_FALSE(refused([](VKSpotLinDLParam& spot) {
    spot.count = 0;
    spot.links = nullptr;
    spot.linkSizes = nullptr;
  }));
}

// What is built does not depend on where the records lie.

TEST(PayloadBuilders, EqualRecordsGiveEqualBytes) {
  const auto table = std::make_unique<DitherTypeV1>();
  SplitTypeV2 record;
  double values[] = {1.0};
  const auto all = [&] {
    VKDitherParam dither;
    dither.InitDitherParam(1, table.get());
    SplitParam split;
    split.InitSplitParam(2, 1, &record);
    ProfileDataList list;
    FillList(list);
    VKSpotSingleInkLimit spot;
    spot.SetData(1, "Red", values);
    Payload bytes;
    bytes.Raw(Built(QX66, [&](VKPrivateTag& tag) { return tag.InitFromDitherParam(dither); }));
    bytes.Raw(Built(QX50, [&](VKPrivateTag& tag) { return tag.InitFromSplitParam(split); }));
    bytes.Raw(
        Built(QX54, [&](VKPrivateTag& tag) { return tag.InitFromProfileDataList(list, QX54); }));
    bytes.Raw(Built(QX68, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotSIL(spot); }));
    return bytes.bytes();
  };
  const Bytes once = all();
  const auto elsewhere = std::make_unique<char[]>(5000);  // moves the next allocations
  EXPECT_EQ(all(), once);
  EXPECT_EQ(once.size(), 4132u + 96u + 56u + 23u);
}

}  // namespace
