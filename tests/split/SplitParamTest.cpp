#include "split/SplitParam.h"

#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

#include "support/TagFile.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::HexBytes;
using vkcl::testing::Payload;
using vkcl::testing::SameBytes;

constexpr char kMinusOne[] = "000080BF";  // -1.0 as a float

template <class Record>
Bytes RecordImage(const Record& record) {
  Bytes image(sizeof record);
  std::memcpy(image.data(), static_cast<const void*>(&record), sizeof record);
  return image;
}

/// The bytes of the records that a set holds, by its count and version.
Bytes RecordsOf(const SplitParam& split) {
  std::size_t recordSize = 0;
  if (split.version == 2) recordSize = 76;
  if (split.version == 3) recordSize = 6168;
  if (split.version == 4) recordSize = 9240;
  if (split.splits == nullptr) return {};
  Bytes image(recordSize * static_cast<std::size_t>(split.count));
  std::memcpy(image.data(), static_cast<const void*>(split.splits), image.size());
  return image;
}

/// Two records that differ in every byte that is compared.
template <class Record>
std::vector<Record> TwoRecords() {
  std::vector<Record> records(2);
  std::memset(static_cast<void*>(records.data()), 0x3A, sizeof(Record));
  std::memset(static_cast<void*>(&records[1]), 0x3B, sizeof(Record));
  return records;
}

Bytes TwoRecordImages(std::size_t recordSize) {
  return Payload().Fill(recordSize, 0x3A).Fill(recordSize, 0x3B);
}

int Init(SplitParam& split, int version, int count) {
  switch (version) {
    case 2: return split.InitSplitParam(2, count, TwoRecords<SplitTypeV2>().data());
    case 3: return split.InitSplitParam(3, count, TwoRecords<SplitTypeV3>().data());
    default: return split.InitSplitParam(4, count, TwoRecords<SplitTypeV4>().data());
  }
}

constexpr struct {
  int version;
  std::size_t recordSize;
} kVersions[] = {{2, 76}, {3, 6168}, {4, 9240}};

/// Makes a set forget an array that is not its own.
void Detach(SplitParam& split) { split.splits = nullptr; }

// The records.

TEST(SplitTypeV2, ByDefaultHasNoKnotsAndNoShapes) {
  const SplitTypeV2 record;
  EXPECT_EQ(record.size, 76u);
  EXPECT_EQ(record.colorantIndex, -1);
  EXPECT_EQ(RecordImage(record),
            Payload().HexDigits("4C000000 FFFFFFFF").HexDigits(kMinusOne, 8).Fill(36).bytes());
}

TEST(SplitTypeV2, LiesInMemoryAsItIsStored) {
  SplitTypeV2 record;
  record.size = 0x01020304;
  record.colorantIndex = 0x11121314;
  record.reserved = 1.0f;
  record.lightPeakInput = 2.0f;
  record.lightEndInput = 3.0f;
  record.mediumPeakInput = 4.0f;
  record.mediumEndInput = 5.0f;
  record.lightPeakAmount = 6.0f;
  record.mediumPeakAmount = 7.0f;
  record.darkAmount = 8.0f;
  record.lightTailAmount = 9.0f;
  record.lightPeakShape = 10.0f;
  record.lightEndShape = 11.0f;
  record.mediumTailAmount = 12.0f;
  record.mediumStartShape = 13.0f;
  record.mediumPeakShape = 14.0f;
  record.mediumEndShape = 15.0f;
  record.darkStartShape = 16.0f;
  record.darkEndShape = 17.0f;
  EXPECT_EQ(RecordImage(record),
            HexBytes("04030201 14131211"
                     "0000803F 00000040 00004040 00008040 0000A040 0000C040 0000E040 00000041"
                     "00001041 00002041 00003041 00004041 00005041 00006041 00007041 00008041"
                     "00008841"));
}

TEST(SplitTypeV3, ByDefaultStatesItsSizeAndHasNoPoints) {
  const auto record = std::make_unique<SplitTypeV3>();
  const Bytes image = RecordImage(*record);
  ASSERT_EQ(image.size(), 6168u);
  EXPECT_EQ(Bytes(image.begin(), image.begin() + 8), HexBytes("18180000 FFFFFFFF"));
  EXPECT_EQ(Bytes(image.begin() + 6152, image.end()), Bytes(16, 0));
}

TEST(SplitTypeV3, LiesInMemoryAsItIsStored) {
  const auto record = std::make_unique<SplitTypeV3>();
  record->colorantIndex = 5;
  record->light[0] = {1.0f, 2.0f};
  record->light[255] = {3.0f, 4.0f};
  record->medium[0] = {5.0f, 6.0f};
  record->medium[255] = {7.0f, 8.0f};
  record->dark[0] = {9.0f, 10.0f};
  record->dark[255] = {11.0f, 12.0f};
  record->lightCount = 0x01020304;
  record->mediumCount = 0x11121314;
  record->darkCount = 0x21222324;
  record->interpolation = 0x31323334;
  EXPECT_TRUE(SameBytes(RecordImage(*record), Payload()
                                                  .HexDigits("18180000 05000000")
                                                  .HexDigits("0000803F 00000040")
                                                  .Fill(254 * 8)
                                                  .HexDigits("00004040 00008040")
                                                  .HexDigits("0000A040 0000C040")
                                                  .Fill(254 * 8)
                                                  .HexDigits("0000E040 00000041")
                                                  .HexDigits("00001041 00002041")
                                                  .Fill(254 * 8)
                                                  .HexDigits("00003041 00004041")
                                                  .HexDigits("04030201 14131211")
                                                  .HexDigits("24232221 34333231")));
}

TEST(SplitTypeV4, ByDefaultStatesItsSizeAndHasNoPoints) {
  const auto record = std::make_unique<SplitTypeV4>();
  const Bytes image = RecordImage(*record);
  ASSERT_EQ(image.size(), 9240u);
  EXPECT_EQ(Bytes(image.begin(), image.begin() + 8), HexBytes("18240000 FFFFFFFF"));
  EXPECT_EQ(Bytes(image.begin() + 9224, image.end()), Bytes(16, 0));
}

TEST(SplitTypeV4, LiesInMemoryAsItIsStored) {
  const auto record = std::make_unique<SplitTypeV4>();
  record->colorantIndex = 5;
  record->light[0] = {1.0f, 2.0f, 3.0f};
  record->light[255] = {4.0f, 5.0f, 6.0f};
  record->medium[0] = {7.0f, 8.0f, 9.0f};
  record->medium[255] = {10.0f, 11.0f, 12.0f};
  record->dark[0] = {13.0f, 14.0f, 15.0f};
  record->dark[255] = {16.0f, 17.0f, -1.0f};
  record->lightCount = 0x01020304;
  record->mediumCount = 0x11121314;
  record->darkCount = 0x21222324;
  record->interpolation = 0x31323334;
  EXPECT_TRUE(SameBytes(RecordImage(*record), Payload()
                                                  .HexDigits("18240000 05000000")
                                                  .HexDigits("0000803F 00000040 00004040")
                                                  .Fill(254 * 12)
                                                  .HexDigits("00008040 0000A040 0000C040")
                                                  .HexDigits("0000E040 00000041 00001041")
                                                  .Fill(254 * 12)
                                                  .HexDigits("00002041 00003041 00004041")
                                                  .HexDigits("00005041 00006041 00007041")
                                                  .Fill(254 * 12)
                                                  .HexDigits("00008041 00008841 000080BF")
                                                  .HexDigits("04030201 14131211")
                                                  .HexDigits("24232221 34333231")));
}

TEST(SplitTypes, AreCopiedWhole) {
  SplitTypeV2 v2;
  v2 = TwoRecords<SplitTypeV2>()[0];
  EXPECT_EQ(RecordImage(v2), Bytes(76, 0x3A));
  const auto v3 = std::make_unique<SplitTypeV3>();
  *v3 = TwoRecords<SplitTypeV3>()[0];
  EXPECT_TRUE(SameBytes(RecordImage(*v3), Bytes(6168, 0x3A)));
  const auto v4 = std::make_unique<SplitTypeV4>();
  *v4 = TwoRecords<SplitTypeV4>()[0];
  EXPECT_TRUE(SameBytes(RecordImage(*v4), Bytes(9240, 0x3A)));
}

TEST(SplitDotInfo, IsAPlainValue) {
  SplitDotInfo two;
  two = SplitDotInfo{0.5f, -1.0f};
  EXPECT_EQ(RecordImage(two), HexBytes("0000003F 000080BF"));
  SplitDotInfo2 three;
  three = SplitDotInfo2{0.5f, -1.0f, 2.0f};
  EXPECT_EQ(RecordImage(three), HexBytes("0000003F 000080BF 00000040"));
}

// The set.

TEST(SplitParam, ByDefaultIsOfVersionFourAndEmpty) {
  const SplitParam split;
  EXPECT_EQ(split.version, 4);
  EXPECT_EQ(split.size, 20);
  EXPECT_EQ(split.count, 0);
  EXPECT_EQ(split.splits, nullptr);
}

TEST(SplitParam, TakesCopiesOfTheRecords) {
  for (const auto& [version, recordSize] : kVersions) {
    SplitParam split;
    EXPECT_EQ(Init(split, version, 2), 1);
    EXPECT_EQ(split.version, version);
    EXPECT_EQ(split.count, 2);
    EXPECT_EQ(static_cast<std::size_t>(split.size), 20 + 2 * recordSize);
    EXPECT_TRUE(SameBytes(RecordsOf(split), TwoRecordImages(recordSize))) << version;
  }
}

TEST(SplitParam, StatesTheStoredSize) {
  SplitParam split;
  ASSERT_EQ(Init(split, 2, 1), 1);
  EXPECT_EQ(split.size, 96);
  ASSERT_EQ(Init(split, 3, 1), 1);
  EXPECT_EQ(split.size, 6188);
  ASSERT_EQ(Init(split, 4, 1), 1);
  EXPECT_EQ(split.size, 9260);
}

TEST(SplitParam, KeepsItsRecordsWhenTheGivenOnesChange) {
  std::vector<SplitTypeV2> records = TwoRecords<SplitTypeV2>();
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(2, 2, records.data()), 1);
  EXPECT_NE(static_cast<SplitTypeBase*>(records.data()), split.splits);
  records[0].colorantIndex = 0;
  EXPECT_TRUE(SameBytes(RecordsOf(split), TwoRecordImages(76)));
}

TEST(SplitParam, ReplacesRecordsOfAnotherVersion) {
  SplitParam split;
  for (const int version : {4, 2, 3, 2, 4, 3}) {
    ASSERT_EQ(Init(split, version, 2), 1);
    EXPECT_EQ(split.version, version);
  }
  EXPECT_TRUE(SameBytes(RecordsOf(split), TwoRecordImages(6168)));
}

TEST(SplitParam, OfAnUnknownVersionFailsAndHoldsVersionAndCountButNoRecords) {
  for (const int version : {5, 1, 0, -1, 260}) {
    SplitParam split;
    ASSERT_EQ(Init(split, 2, 2), 1);
    std::vector<SplitTypeV4> records = TwoRecords<SplitTypeV4>();
    EXPECT_EQ(split.InitSplitParam(version, 2, records.data()), 0) << version;
    EXPECT_EQ(split.version, version);
    EXPECT_EQ(split.count, 2);
    EXPECT_EQ(split.splits, nullptr);
  }
}

TEST(SplitParam, OfNoRecordsHasTheSizeOfTheHead) {
  SplitParam split;
  ASSERT_EQ(Init(split, 4, 2), 1);
  std::vector<SplitTypeV2> records = TwoRecords<SplitTypeV2>();
  EXPECT_EQ(split.InitSplitParam(2, 0, records.data()), 1);
  EXPECT_EQ(split.version, 2);
  EXPECT_EQ(split.count, 0);
  EXPECT_EQ(split.size, 20);
}

TEST(SplitParam, RefusesANegativeCount) {
  SplitParam split;
  ASSERT_EQ(Init(split, 2, 2), 1);
  std::vector<SplitTypeV4> records = TwoRecords<SplitTypeV4>();
  for (const int count : {-1, -28, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(split.InitSplitParam(4, count, records.data()), 0) << count;
    EXPECT_EQ(split.version, 2);
    EXPECT_EQ(split.count, 2);
    EXPECT_EQ(split.size, 172);
    EXPECT_TRUE(SameBytes(RecordsOf(split), TwoRecordImages(76)));
  }
}

TEST(SplitParam, RefusesMissingRecords) {
  SplitParam split;
  ASSERT_EQ(Init(split, 2, 2), 1);
  EXPECT_EQ(split.InitSplitParam(4, 1, nullptr), 0);
  EXPECT_TRUE(SameBytes(RecordsOf(split), TwoRecordImages(76)));
}

TEST(SplitParam, RefusesMoreRecordsThanItsSizeCanState) {
  SplitParam split;
  ASSERT_EQ(Init(split, 2, 2), 1);
  SplitTypeV4 record;
  // 232,412 records of 9,240 bytes are above 2^31 - 1; they are not there to be read.
  EXPECT_EQ(split.InitSplitParam(4, 232412, &record), 0);
  EXPECT_EQ(split.InitSplitParam(4, std::numeric_limits<int>::max(), &record), 0);
}

TEST(SplitParam, GivenItsOwnRecordsKeepsThem) {
  for (const auto& [version, recordSize] : kVersions) {
    SplitParam split;
    ASSERT_EQ(Init(split, version, 2), 1);
    EXPECT_EQ(split.InitSplitParam(version, 2, split.splits), 1);
    EXPECT_EQ(split.count, 2);
    EXPECT_TRUE(SameBytes(RecordsOf(split), TwoRecordImages(recordSize))) << version;
  }
}

TEST(SplitParam, GivenSomeOfItsOwnRecordsKeepsThose) {
  SplitParam split;
  ASSERT_EQ(Init(split, 2, 2), 1);
  EXPECT_EQ(split.InitSplitParam(2, 1, static_cast<SplitTypeV2*>(split.splits) + 1), 1);
  EXPECT_EQ(split.size, 96);
  EXPECT_EQ(RecordsOf(split), Bytes(76, 0x3B));
}

TEST(SplitParam, CopiesAreDeep) {
  for (const auto& [version, recordSize] : kVersions) {
    SplitParam from;
    ASSERT_EQ(Init(from, version, 2), 1);
    from.size = 1;  // computed anew in the copy
    SplitParam assigned;
    ASSERT_EQ(Init(assigned, version == 4 ? 2 : 4, 2), 1);
    assigned = from;
    const SplitParam constructed(from);
    from.splits->colorantIndex = 0;
    for (const SplitParam* copy : {&std::as_const(assigned), &constructed}) {
      EXPECT_EQ(copy->version, version);
      EXPECT_EQ(copy->count, 2);
      EXPECT_EQ(static_cast<std::size_t>(copy->size), 20 + 2 * recordSize);
      EXPECT_NE(copy->splits, from.splits);
      EXPECT_TRUE(SameBytes(RecordsOf(*copy), TwoRecordImages(recordSize))) << version;
    }
  }
}

TEST(SplitParam, CopiedFromOneWithoutRecordsHasNone) {
  SplitParam from;
  from.version = 3;
  from.count = 7;
  from.size = 4711;
  SplitParam to;
  ASSERT_EQ(Init(to, 2, 2), 1);
  to = from;
  EXPECT_EQ(to.version, 3);
  EXPECT_EQ(to.count, 7);
  EXPECT_EQ(to.size, 20);
  EXPECT_EQ(to.splits, nullptr);
}

TEST(SplitParam, CopiedFromRecordsOfAnUnknownVersionHasNoneAndKeepsItsSize) {
  SplitTypeV4 foreign;
  SplitParam from;
  from.version = 7;
  from.count = 1;
  from.size = 4711;
  from.splits = &foreign;
  SplitParam to;
  ASSERT_EQ(Init(to, 2, 2), 1);
  to = from;
  EXPECT_EQ(to.version, 7);
  EXPECT_EQ(to.count, 1);
  EXPECT_EQ(to.size, 172);
  EXPECT_EQ(to.splits, nullptr);
  EXPECT_EQ(from.splits, &foreign);
  Detach(from);
}

TEST(SplitParam, AssignedToItselfChangesNothing) {
  SplitParam split;
  ASSERT_EQ(Init(split, 3, 2), 1);
  const SplitParam& itself = split;
  split = itself;
  EXPECT_EQ(split.version, 3);
  EXPECT_EQ(split.count, 2);
  EXPECT_TRUE(SameBytes(RecordsOf(split), TwoRecordImages(6168)));
}

TEST(SplitParam, NeverReleasesRecordsOfAnUnknownVersion) {
  // The array is none that could be released, so whoever tries ends the test.
  SplitTypeV2 foreign[2];
  {
    SplitParam destroyed;
    destroyed.version = 5;
    destroyed.count = 2;
    destroyed.splits = foreign;
  }
  SplitParam replaced;
  replaced.version = 1;
  replaced.count = 2;
  replaced.splits = foreign;
  EXPECT_EQ(Init(replaced, 2, 2), 1);

  SplitParam assigned;
  assigned.version = 0;
  assigned.count = 2;
  assigned.splits = foreign;
  assigned = replaced;
  EXPECT_TRUE(SameBytes(RecordsOf(assigned), TwoRecordImages(76)));
  EXPECT_EQ(foreign[1].size, 76u);
}

// Arrays for callers.

TEST(SplitTypeV2Array, IsMadeOfDefaultRecords) {
  const std::unique_ptr<SplitTypeV2[]> array(NewSplitTypeV2Array(3));
  ASSERT_NE(array, nullptr);
  const Bytes expected = Payload().HexDigits("4C000000 FFFFFFFF").HexDigits(kMinusOne, 8).Fill(36);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(RecordImage(array[i]), expected) << i;
}

TEST(SplitTypeV2Array, OfANegativeCountIsNull) {
  EXPECT_EQ(NewSplitTypeV2Array(-1), nullptr);
  EXPECT_EQ(NewSplitTypeV2Array(std::numeric_limits<int>::min()), nullptr);
}

TEST(SplitTypeV2Array, StaysUsableAfterItsReleaseFunction) {
  SplitTypeV2* array = NewSplitTypeV2Array(2);
  ASSERT_NE(array, nullptr);
  array[1].darkAmount = 0.75f;
  FreeSplitTypeV2Array(array);
  FreeSplitTypeV2Array(array);
  EXPECT_EQ(array[0].size, 76u);
  EXPECT_EQ(array[1].darkAmount, 0.75f);
  array[0].darkAmount = 0.5f;
  EXPECT_EQ(array[0].darkAmount, 0.5f);
  delete[] array;
}

TEST(SplitTypeV2Array, ReleaseFunctionTakesANullPointer) { FreeSplitTypeV2Array(nullptr); }

TEST(SplitTypeV2Array, ReleaseFunctionLeavesMemoryThatIsNotOnTheHeap) {
  // Whoever releases this ends the test.
  SplitTypeV2 onTheStack[2];
  FreeSplitTypeV2Array(onTheStack);
  EXPECT_EQ(onTheStack[1].size, 76u);
}

TEST(SplitParam, AnUnknownVersionLeavesTheSize) {
  SplitTypeV2 record;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(2, 1, &record), 1);
  for (const long version : {5L, 1L, 0L, -1L}) {
    EXPECT_EQ(split.InitSplitParam(version, 3, &record), 0);
    EXPECT_EQ(split.version, version);
    EXPECT_EQ(split.count, 3);
    EXPECT_EQ(split.size, 96);
    EXPECT_EQ(split.splits, nullptr);
  }
}

TEST(SplitParam, OfNoRecordsNeedsNone) {
  for (const long version : {2L, 3L, 4L}) {
    SplitTypeV2 record;
    SplitParam split;
    ASSERT_EQ(split.InitSplitParam(2, 1, &record), 1);
    EXPECT_EQ(split.InitSplitParam(version, 0, nullptr), 1) << version;
    EXPECT_EQ(split.version, version);
    EXPECT_EQ(split.count, 0);
    EXPECT_EQ(split.size, 20);
    EXPECT_NE(split.splits, nullptr);
  }
}

TEST(SplitParam, ASetOfNoRecordsIsConverted) {
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(2, 0, nullptr), 1);
  split.ConvertToV3();
  EXPECT_EQ(split.version, 3);
  EXPECT_EQ(split.size, 20);
  split.ConvertToV4();
  EXPECT_EQ(split.version, 4);
  ASSERT_EQ(split.InitSplitParam(2, 0, nullptr), 1);
  split.ConvertToV4();
  EXPECT_EQ(split.version, 4);
  EXPECT_EQ(split.size, 20);
  EXPECT_NE(split.splits, nullptr);
}

}  // namespace
