// The eight lists of colour samples that a profile carries.
#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <random>

#include "handler/VKCLProfileHandler.h"
#include "support/SystemCalls.h"
#include "support/PeakMemory.h"
#include "support/TagFile.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FileTag;
using vkcl::testing::HexBytes;
using vkcl::testing::ImageTag;
using vkcl::testing::Join;
using vkcl::testing::OpenHandles;
using vkcl::testing::Payload;
using vkcl::testing::PayloadOf;
using vkcl::testing::ProfileFile;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::ReadFile;
using vkcl::testing::SameBytes;
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::SignaturesOf;
using vkcl::testing::Slice;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

using Writer = int (VKCLProfileHandler::*)(const ProfileDataList&);

struct ListTag {
  const char* signature;
  Writer write;
};

constexpr ListTag kLists[] = {
    {"QX54", &VKCLProfileHandler::WriteLinMeasurementData},
    {"QX55", &VKCLProfileHandler::WriteLinReferenceData},
    {"QX56", &VKCLProfileHandler::WriteGBMeasurementData},
    {"QX57", &VKCLProfileHandler::WriteGBReferenceData},
    {"QX59", &VKCLProfileHandler::WriteCharMeasurementData},
    {"QX60", &VKCLProfileHandler::WriteCharReferenceData},
    {"QX72", &VKCLProfileHandler::WriteVKLinRefData},
    {"QX73", &VKCLProfileHandler::WriteVKLinOutputData},
};

/// A profile file with the given tags and a handler on it.
class OnFile {
 public:
  explicit OnFile(const std::vector<FileTag>& tags = {})
      : path(dir.Write("profile.icc", ProfileFile(tags))), handler(AFilePath(path), 0) {}

  std::optional<Bytes> Stored(const std::string& signature) const {
    return PayloadOf(ReadFile(path), signature);
  }

  const TempDir dir;
  const std::string path;
  VKCLProfileHandler handler;
};

/// Two samples of three values, two of them measured.
void FillSmall(ProfileDataList& list) {
  list.DataFormat = Sig("Lab ");
  list.NumOfSamples = 2;
  list.ColorMode = -2147483647;
  list.NumOfColors = 3;
  list.Measured = 1;
  list.DataList = new double[6]{1.0, -2.0, 0.5, 100.0, 1e300, -0.0};
}

const char kSmallPayload[] =
    "2062614C 02000000 01000080 03000000 01000000 01000000"
    "000000000000F03F 00000000000000C0 000000000000E03F"
    "0000000000005940 9C7500883CE4377E 0000000000000080";

/// A payload with values that count up from 1.
Bytes ListPayload(std::uint32_t format, int samples, int mode, int colors, int measured,
                  int presence, int values) {
  Payload payload;
  payload.Int(static_cast<std::int32_t>(format)).Int(samples).Int(mode).Int(colors).Int(measured);
  payload.Int(presence);
  for (int i = 1; i <= values; ++i) payload.Double(i);
  return payload;
}

/// A list that holds something of everything.
void FillUsed(ProfileDataList& list) {
  list.Clear();
  list.DataFormat = 0x11111111;
  list.NumOfSamples = 3;
  list.ColorMode = 0x22;
  list.NumOfColors = 1;
  list.Measured = 2;
  list.DataList = new double[3]{7, 8, 9};
  list.PerSample = new std::int32_t[3]{4, 5, 6};
  list.Extra1 = 77;
  list.Extra2 = 78;
}

void ExpectUsed(const ProfileDataList& list) {
  EXPECT_EQ(list.DataFormat, 0x11111111u);
  EXPECT_EQ(list.NumOfSamples, 3);
  EXPECT_EQ(list.ColorMode, 0x22);
  EXPECT_EQ(list.NumOfColors, 1);
  EXPECT_EQ(list.Measured, 2);
  ASSERT_NE(list.DataList, nullptr);
  EXPECT_EQ(list.DataList[2], 9);
  ASSERT_NE(list.PerSample, nullptr);
  EXPECT_EQ(list.PerSample[2], 6);
  EXPECT_EQ(list.Extra1, 77);
  EXPECT_EQ(list.Extra2, 78);
}

/// Without values and counters; the two trailing integers of FillUsed stay.
void ExpectCleared(const ProfileDataList& list) {
  EXPECT_EQ(list.DataFormat, 0u);
  EXPECT_EQ(list.NumOfSamples, 0);
  EXPECT_EQ(list.ColorMode, 0);
  EXPECT_EQ(list.NumOfColors, 0);
  EXPECT_EQ(list.Measured, 0);
  EXPECT_EQ(list.DataList, nullptr);
  EXPECT_EQ(list.PerSample, nullptr);
  EXPECT_EQ(list.Extra1, 77);
  EXPECT_EQ(list.Extra2, 78);
}

// Writing.

TEST(DataListWrites, EachListUnderItsOwnTag) {
  for (const ListTag& tag : kLists) {
    SCOPED_TRACE(tag.signature);
    OnFile file({{"desc", HexBytes("DD")}});
    ProfileDataList list;
    FillSmall(list);
    EXPECT_EQ((file.handler.*tag.write)(list), 1);
    EXPECT_TRUE(SameBytes(
        ReadFile(file.path),
        ProfileFile({{"desc", HexBytes("DD")}, {tag.signature, HexBytes(kSmallPayload)}})));
  }
}

TEST(DataListWrites, LeaveTheListAsItIs) {
  OnFile file;
  ProfileDataList list;
  FillSmall(list);
  const double* const values = list.DataList;
  ASSERT_EQ(file.handler.WriteVKLinRefData(list), 1);
  EXPECT_EQ(list.DataList, values);
  EXPECT_EQ(list.NumOfSamples, 2);
  EXPECT_EQ(list.NumOfColors, 3);
  EXPECT_EQ(list.Measured, 1);
  EXPECT_EQ(list.DataFormat, Sig("Lab "));
  EXPECT_EQ(list.ColorMode, -2147483647);
  EXPECT_EQ(list.DataList[3], 100.0);
}

TEST(DataListWrites, AllEightBesideEachOther) {
  OnFile file;
  std::vector<std::string> order;
  for (std::size_t i = 0; i < std::size(kLists); ++i) {
    ProfileDataList list;
    FillSmall(list);
    list.Measured = static_cast<int>(i);
    ASSERT_EQ((file.handler.*kLists[i].write)(list), 1);
    order.emplace_back(kLists[i].signature);
  }
  EXPECT_EQ(SignaturesOf(ReadFile(file.path)), order);
  for (std::size_t i = 0; i < std::size(kLists); ++i) {
    Bytes expected = HexBytes(kSmallPayload);
    expected[16] = static_cast<unsigned char>(i);
    EXPECT_EQ(file.Stored(kLists[i].signature), expected);
  }
}

TEST(DataListWrites, ReplaceTheListThatWasThere) {
  for (const ListTag& tag : kLists) {
    OnFile file({{tag.signature, HexBytes("0102")}, {"QX53", HexBytes("AABBCC")}});
    ProfileDataList list;
    FillSmall(list);
    EXPECT_EQ((file.handler.*tag.write)(list), 1);
    EXPECT_TRUE(SameBytes(
        ReadFile(file.path),
        ProfileFile({{tag.signature, HexBytes(kSmallPayload)}, {"QX53", HexBytes("AABBCC")}})));
  }
}

TEST(DataListWrites, AListWithoutValuesAsItsCountersAndPresenceWord0) {
  OnFile file;
  ProfileDataList list;
  list.DataFormat = 0xFFFFFFFF;
  list.NumOfSamples = 5;
  list.ColorMode = 16;
  list.NumOfColors = 3;
  list.Measured = 5;
  EXPECT_EQ(file.handler.WriteLinMeasurementData(list), 1);
  EXPECT_EQ(file.Stored("QX54"), HexBytes("FFFFFFFF 05000000 10000000 03000000 05000000 00000000"));
  ProfileDataList read;
  FillUsed(read);
  EXPECT_EQ(file.handler.WriteVKLinOutputData(list), 1);
  EXPECT_EQ(file.handler.GetVKLinOutputData(read), 1);
  EXPECT_EQ(read.DataFormat, 0xFFFFFFFFu);
  EXPECT_EQ(read.NumOfSamples, 5);
  EXPECT_EQ(read.ColorMode, 16);
  EXPECT_EQ(read.NumOfColors, 3);
  EXPECT_EQ(read.Measured, 5);
  EXPECT_EQ(read.DataList, nullptr);
  EXPECT_EQ(read.PerSample, nullptr);
}

TEST(DataListWrites, AnEmptyListAsZeros) {
  OnFile file;
  EXPECT_EQ(file.handler.WriteVKLinRefData(ProfileDataList()), 1);
  EXPECT_EQ(file.Stored("QX72"), Bytes(24));
}

TEST(DataListWrites, AListOfNoSamplesReadsBackWithoutValues) {
  OnFile file;
  ProfileDataList list;
  list.NumOfColors = 4;
  ASSERT_EQ(list.RefreshList(0), 1);
  EXPECT_EQ(file.handler.WriteVKLinRefData(list), 1);
  ASSERT_EQ(file.Stored("QX72").value_or(Bytes()).size(), 24u);
  ProfileDataList read;
  FillUsed(read);
  EXPECT_EQ(file.handler.GetVKLinRefData(read), 1);
  EXPECT_EQ(read.DataList, nullptr);
  EXPECT_EQ(read.NumOfSamples, 0);
  EXPECT_EQ(read.NumOfColors, 4);
}

TEST(DataListWrites, NeitherThePerSampleArrayNorTheTrailingIntegers) {
  OnFile file;
  ProfileDataList list;
  FillSmall(list);
  list.PerSample = new std::int32_t[2]{0x0BADBAD0, 0x0BADBAD1};
  list.Extra1 = 0x0BADBAD2;
  list.Extra2 = 0x0BADBAD3;
  EXPECT_EQ(file.handler.WriteVKLinRefData(list), 1);
  EXPECT_EQ(file.Stored("QX72"), HexBytes(kSmallPayload));
}

TEST(DataListWrites, EqualListsAsEqualBytes) {
  // The presence word must not be an address of memory.
  std::vector<Bytes> files;
  std::vector<std::unique_ptr<ProfileDataList>> lists;
  for (int i = 0; i < 3; ++i) {
    OnFile file;
    lists.push_back(std::make_unique<ProfileDataList>());
    FillSmall(*lists.back());
    ASSERT_EQ(file.handler.WriteCharReferenceData(*lists.back()), 1);
    files.push_back(ReadFile(file.path));
  }
  EXPECT_EQ(files[0], files[1]);
  EXPECT_EQ(files[0], files[2]);
}

TEST(DataListWrites, RefuseValuesTooLongForATag) {
  struct Counters {
    std::int32_t samples;
    std::int32_t colors;
  };
  // The length in bytes is negative as a 32-bit number, or does not fit 32 bits at all.
  for (const Counters& counters : {Counters{0x10000000, 1},
                                   {1, 0x10000000},
                                   {0x1FFFFFFF, 1},
                                   {16384, 16384},
                                   {65536, 65536},
                                   {0x20000000, 1},
                                   {0x20000001, 1},
                                   {0x7FFFFFFF, 0x7FFFFFFF},
                                   {-1, 2},
                                   {2, -1},
                                   {std::numeric_limits<std::int32_t>::min(), 1}}) {
    SCOPED_TRACE(::testing::Message() << counters.samples << " x " << counters.colors);
    for (const ListTag& tag : kLists) {
      OnFile file({{"QX53", HexBytes("AABBCC")}});
      const Bytes before = ReadFile(file.path);
      ProfileDataList list;
      list.NumOfSamples = counters.samples;
      list.NumOfColors = counters.colors;
      list.DataList = new double[2]{1, 2};
      EXPECT_EQ((file.handler.*tag.write)(list), 0);
      EXPECT_TRUE(SameBytes(ReadFile(file.path), before));
    }
  }
}

TEST(DataListWrites, IntoNoProfileCreateOneOrFail) {
  const TempDir dir;
  ProfileDataList list;
  FillSmall(list);
  VKCLProfileHandler unknown(AFilePath(dir.File("a.icc")), 0);
  EXPECT_EQ(unknown.WriteLinReferenceData(list), 0);
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "a.icc"));
  VKCLProfileHandler cmyk(AFilePath(dir.File("b.icc")), 4);
  EXPECT_EQ(cmyk.WriteLinReferenceData(list), 1);
  EXPECT_EQ(PayloadOf(ReadFile(dir.File("b.icc")), "QX55"), HexBytes(kSmallPayload));
}

TEST(DataListWrites, ThatFailLeaveTheFileAsItWas) {
  for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
    int failures = 0;
    bool reached = true;
    for (std::size_t which = 0; reached && which < 100; ++which) {
      OnFile file({{"QX53", HexBytes("AABBCC")}});
      const Bytes before = ReadFile(file.path);
      ProfileDataList list;
      FillSmall(list);
      int result = -1;
      {
        const FaultAt at(which, fault);
        result = file.handler.WriteGBMeasurementData(list);
        reached = FaultAt::Reached();
      }
      if (result == 1) continue;
      ++failures;
      EXPECT_TRUE(SameBytes(ReadFile(file.path), before));
    }
    EXPECT_FALSE(reached);
    EXPECT_GT(failures, 0);
  }
}

// Reading through the two public readers.

using Reader = int (VKCLProfileHandler::*)(ProfileDataList&) const;

struct ReadTag {
  const char* signature;
  Reader read;
};

constexpr ReadTag kReaders[] = {
    {"QX72", &VKCLProfileHandler::GetVKLinRefData},
    {"QX73", &VKCLProfileHandler::GetVKLinOutputData},
};

/// What becomes of a used list when `payload` is read into it.
int ReadInto(ProfileDataList& list, const ReadTag& tag, const Bytes& payload) {
  const OnFile file({{"desc", HexBytes("DD")}, {tag.signature, payload}});
  FillUsed(list);
  return (file.handler.*tag.read)(list);
}

void ExpectRefusedAndCleared(const Bytes& payload) {
  for (const ReadTag& tag : kReaders) {
    ProfileDataList list;
    EXPECT_EQ(ReadInto(list, tag, payload), 0);
    ExpectCleared(list);
  }
}

void ExpectRefusedAndUntouched(const Bytes& payload) {
  for (const ReadTag& tag : kReaders) {
    ProfileDataList list;
    EXPECT_EQ(ReadInto(list, tag, payload), 0);
    ExpectUsed(list);
  }
}

TEST(DataListReads, AListFromItsPayload) {
  for (const ReadTag& tag : kReaders) {
    ProfileDataList list;
    ASSERT_EQ(ReadInto(list, tag, HexBytes(kSmallPayload)), 1);
    EXPECT_EQ(list.DataFormat, 0x4C616220u);
    EXPECT_EQ(list.NumOfSamples, 2);
    EXPECT_EQ(list.ColorMode, -2147483647);
    EXPECT_EQ(list.NumOfColors, 3);
    EXPECT_EQ(list.Measured, 1);
    ASSERT_NE(list.DataList, nullptr);
    EXPECT_EQ(std::vector<double>(list.DataList, list.DataList + 6),
              (std::vector<double>{1.0, -2.0, 0.5, 100.0, 1e300, 0.0}));
    EXPECT_TRUE(std::signbit(list.DataList[5]));
    // Not stored, so not read: the array goes, the two integers stay.
    EXPECT_EQ(list.PerSample, nullptr);
    EXPECT_EQ(list.Extra1, 77);
    EXPECT_EQ(list.Extra2, 78);
  }
}

TEST(DataListReads, EachReaderItsOwnTag) {
  const OnFile file(
      {{"QX72", ListPayload(1, 0, 0, 0, 0, 0, 0)}, {"QX73", ListPayload(2, 0, 0, 0, 0, 0, 0)}});
  ProfileDataList list;
  EXPECT_EQ(file.handler.GetVKLinRefData(list), 1);
  EXPECT_EQ(list.DataFormat, 1u);
  EXPECT_EQ(file.handler.GetVKLinOutputData(list), 1);
  EXPECT_EQ(list.DataFormat, 2u);
}

TEST(DataListReads, AnyPresenceWordButZero) {
  for (const int presence : {1, 2, -1, 0x01000000, std::numeric_limits<int>::min()}) {
    for (const ReadTag& tag : kReaders) {
      ProfileDataList list;
      ASSERT_EQ(ReadInto(list, tag, ListPayload(1, 2, 3, 2, 5, presence, 4)), 1) << presence;
      ASSERT_NE(list.DataList, nullptr);
      EXPECT_EQ(list.DataList[3], 4.0);
    }
  }
}

TEST(DataListReads, NoValuesWherePresenceIsZero) {
  for (const ReadTag& tag : kReaders) {
    ProfileDataList list;
    ASSERT_EQ(ReadInto(list, tag, ListPayload(0xFFFFFFFF, 10, 16, 4, 10, 0, 0)), 1);
    EXPECT_EQ(list.DataFormat, 0xFFFFFFFFu);
    EXPECT_EQ(list.NumOfSamples, 10);
    EXPECT_EQ(list.ColorMode, 16);
    EXPECT_EQ(list.NumOfColors, 4);
    EXPECT_EQ(list.Measured, 10);
    EXPECT_EQ(list.DataList, nullptr);
    EXPECT_EQ(list.PerSample, nullptr);
  }
}

TEST(DataListReads, NoValuesWhereACounterIsZero) {
  for (const auto& [samples, colors] : {std::pair(0, 4), std::pair(4, 0), std::pair(0, 0)}) {
    for (const ReadTag& tag : kReaders) {
      ProfileDataList list;
      ASSERT_EQ(ReadInto(list, tag, ListPayload(1, samples, 3, colors, 5, 1, 0)), 1);
      EXPECT_EQ(list.NumOfSamples, samples);
      EXPECT_EQ(list.NumOfColors, colors);
      EXPECT_EQ(list.DataList, nullptr);
    }
  }
}

TEST(DataListReads, MeasuredAndColourModeAsStored) {
  for (const int value : {0, 3, 1000, -1, std::numeric_limits<int>::min()}) {
    for (const ReadTag& tag : kReaders) {
      ProfileDataList list;
      ASSERT_EQ(ReadInto(list, tag, ListPayload(1, 2, value, 1, value, 1, 2)), 1);
      EXPECT_EQ(list.Measured, value);
      EXPECT_EQ(list.ColorMode, value);
    }
  }
}

TEST(DataListReads, BytesOfValuesAsStored) {
  // Not-a-number with a payload, infinity, the smallest denormal.
  const Bytes values = HexBytes("EFBEADDE0000F87F 000000000000F0FF 0100000000000000");
  const Bytes payload = Join({ListPayload(1, 3, 0, 1, 0, 1, 0), values});
  ProfileDataList list;
  ASSERT_EQ(ReadInto(list, kReaders[0], payload), 1);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(list.DataList[0]), 0x7FF80000DEADBEEFu);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(list.DataList[1]), 0xFFF0000000000000u);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(list.DataList[2]), 1u);
}

TEST(DataListReads, LeaveTheListWithoutAReadableTag) {
  for (const ReadTag& tag : kReaders) {
    const Bytes good = HexBytes(kSmallPayload);
    Bytes cut = ProfileFile({{tag.signature, good}});
    cut.resize(cut.size() - 4);
    const Bytes images[] = {
        ProfileFile({}),                                // no such tag
        ProfileFile({{"QX71", good}, {"QX74", good}}),  // others
        ProfileFile({{tag.signature, good, "text"}}),   // not 'data'
        ProfileFile({{tag.signature, {}}}),             // nothing in it
        cut,                                            // not wholly in the file
        Bytes{1, 2, 3},                                 // no profile
    };
    for (const Bytes& image : images) {
      const TempDir dir;
      const VKCLProfileHandler handler(AFilePath(dir.Write("p.icc", image)), 4);
      ProfileDataList list;
      FillUsed(list);
      EXPECT_EQ((handler.*tag.read)(list), 0);
      ExpectUsed(list);
    }
  }
}

TEST(DataListReads, LeaveTheListWhereTheFileCannotBeRead) {
  const OnFile file({{"QX72", HexBytes(kSmallPayload)}});
  const int handles = OpenHandles();
  int failures = 0;
  bool reached = true;
  for (std::size_t which = 0; reached && which < 50; ++which) {
    ProfileDataList list;
    FillUsed(list);
    int result = -1;
    {
      const FaultAt at(which, Fault::Error);
      result = file.handler.GetVKLinRefData(list);
      reached = FaultAt::Reached();
    }
    EXPECT_EQ(OpenHandles(), handles);
    if (result == 1) continue;
    ++failures;
    ExpectUsed(list);
  }
  EXPECT_FALSE(reached);
  EXPECT_GT(failures, 0);
}

TEST(DataListReads, LeaveTheListWhereThePayloadHasNoWholeHead) {
  const Bytes good = HexBytes(kSmallPayload);
  for (std::size_t length = 0; length < 24; ++length) {
    ExpectRefusedAndUntouched(Slice(good, 0, length));
  }
}

TEST(DataListReads, ClearTheListWhereThePayloadIsCutBehindTheHead) {
  const Bytes good = HexBytes(kSmallPayload);
  ASSERT_EQ(good.size(), 72u);
  for (std::size_t length = 24; length < good.size(); ++length) {
    SCOPED_TRACE(length);
    ExpectRefusedAndCleared(Slice(good, 0, length));
  }
}

TEST(DataListReads, ClearTheListWhereThePayloadIsTooLong) {
  for (std::size_t more = 1; more <= 24; ++more) {
    Bytes longer = HexBytes(kSmallPayload);
    longer.resize(longer.size() + more);
    ExpectRefusedAndCleared(longer);
    ExpectRefusedAndCleared(Bytes(24 + more));  // zero counters and no presence
  }
}

TEST(DataListReads, ClearTheListWhereValuesFollowWithoutPresence) {
  ExpectRefusedAndCleared(ListPayload(1, 2, 3, 2, 5, 0, 4));
  ExpectRefusedAndCleared(ListPayload(1, 1, 3, 1, 5, 0, 1));
}

TEST(DataListReads, ClearTheListWherePresentValuesDoNotFollow) {
  ExpectRefusedAndCleared(ListPayload(1, 2, 3, 2, 5, 1, 0));
  ExpectRefusedAndCleared(ListPayload(1, 10000, 3, 36, 5, -1, 0));
}

TEST(DataListReads, RefuseNegativeCounters) {
  constexpr int kMin = std::numeric_limits<int>::min();
  for (const auto& [samples, colors] :
       {std::pair(-1, 1), std::pair(1, -1), std::pair(-2, 3), std::pair(kMin, 1),
        std::pair(1, kMin), std::pair(kMin, kMin), std::pair(-1, kMin)}) {
    ExpectRefusedAndCleared(ListPayload(1, samples, 3, colors, 5, 1, 0));
    ExpectRefusedAndCleared(ListPayload(1, samples, 3, colors, 5, 1, 1));
  }
  // Two wrongs: the product is what follows.
  ExpectRefusedAndCleared(ListPayload(1, -2, 3, -3, 5, 1, 6));
  ExpectRefusedAndCleared(ListPayload(1, -1, 3, -1, 5, 1, 1));
}

TEST(DataListReads, RefuseCountersWhoseProductIsRightOnlyIn32Bits) {
  // Lengths that are 0, 8 and 16 when only their low 32 bits are kept.
  ExpectRefusedAndCleared(ListPayload(1, 65536, 3, 65536, 5, 1, 0));
  ExpectRefusedAndCleared(ListPayload(1, 0x20000000, 3, 1, 5, 1, 0));
  ExpectRefusedAndCleared(ListPayload(1, 0x20000000, 3, 8, 5, 1, 0));
  ExpectRefusedAndCleared(ListPayload(1, 0x20000001, 3, 1, 5, 1, 1));
  ExpectRefusedAndCleared(ListPayload(1, 1, 3, 0x20000002, 5, 1, 2));
  ExpectRefusedAndCleared(ListPayload(1, 0x40000000, 3, 0x40000000, 5, 1, 0));
  ExpectRefusedAndCleared(ListPayload(1, 0x7FFFFFFF, 3, 0x7FFFFFFF, 5, 1, 1));
}

TEST(DataListReads, WhatWasWritten) {
  std::mt19937 random(4711);
  OnFile file;
  for (const auto& [samples, colors] :
       {std::pair(1, 1), std::pair(20, 4), std::pair(7, 43), std::pair(100, 36)}) {
    ProfileDataList list;
    list.DataFormat = Sig("refl");
    list.ColorMode = 64;
    list.NumOfColors = colors;
    ASSERT_EQ(list.RefreshList(samples), 1);
    list.Measured = samples / 2;
    for (int i = 0; i < samples * colors; ++i)
      list.DataList[i] = static_cast<double>(random()) / 7.0;
    ASSERT_EQ(file.handler.WriteVKLinOutputData(list), 1);
    ProfileDataList read;
    ASSERT_EQ(file.handler.GetVKLinOutputData(read), 1);
    EXPECT_TRUE(read == list);
    ASSERT_NE(read.DataList, nullptr);
    EXPECT_TRUE(std::equal(list.DataList, list.DataList + samples * colors, read.DataList));
    EXPECT_EQ(read.Measured, samples / 2);
  }
}

// Damage. Whatever stands in a payload, a reader answers by the rule of the lengths and stays
// within the payload (the sanitizers watch).

TEST(DataListReads, RandomDamageByTheRuleOfLengths) {
  std::mt19937 random(20010203);
  const TempDir dir;
  const Bytes good = ListPayload(1, 5, 3, 2, 5, 1, 10);
  int accepted = 0;
  int refused = 0;
  for (int round = 0; round < 1500; ++round) {
    Bytes payload = good;
    for (auto hits = random() % 4 + 1; hits > 0; --hits) {
      // Mostly the head, which decides.
      const std::size_t at = random() % (random() % 4 == 0 ? payload.size() : 24);
      payload[at] = static_cast<unsigned char>(random() % 3 == 0 ? random() % 256 : random() % 12);
    }
    if (random() % 5 == 0) payload.resize(24 + random() % 120);
    const auto number = [&payload](std::size_t at) {
      std::uint32_t value = 0;
      for (std::size_t i = 4; i > 0; --i) value = value * 256 + payload[at + i - 1];
      return std::bit_cast<std::int32_t>(value);
    };
    const std::int64_t samples = number(4);
    const std::int64_t colors = number(12);
    const bool present = number(20) != 0;
    if (!present && (samples < 0 || colors < 0)) continue;  // no values, whatever the counters
    const auto follows = static_cast<std::int64_t>(payload.size()) - 24;
    const bool right = samples >= 0 && colors >= 0 && follows % 8 == 0 &&
                       (present ? samples * colors : 0) == follows / 8;
    const VKCLProfileHandler handler(
        AFilePath(dir.Write(std::to_string(round), ProfileFile({{"QX72", payload}}))), 0);
    ProfileDataList list;
    FillUsed(list);
    ASSERT_EQ(handler.GetVKLinRefData(list), right ? 1 : 0) << round;
    if (!right) {
      ++refused;
      ExpectCleared(list);
      continue;
    }
    ++accepted;
    EXPECT_EQ(list.NumOfSamples, samples);
    EXPECT_EQ(list.NumOfColors, colors);
    EXPECT_EQ(list.DataList != nullptr, payload.size() > 24);
    for (std::size_t i = 0; i < (payload.size() - 24) / 8; ++i) {
      std::uint64_t bits = 0;
      for (std::size_t b = 8; b > 0; --b) bits = bits * 256 + payload[24 + 8 * i + b - 1];
      EXPECT_EQ(std::bit_cast<std::uint64_t>(list.DataList[i]), bits);
    }
  }
  EXPECT_GT(accepted, 50);
  EXPECT_GT(refused, 500);
}

TEST(DataListReads, RandomBytesWithoutHarm) {
  std::mt19937 random(19991231);
  const TempDir dir;
  for (int round = 0; round < 500; ++round) {
    Bytes payload(random() % 100);
    for (unsigned char& byte : payload) byte = static_cast<unsigned char>(random());
    const VKCLProfileHandler handler(
        AFilePath(dir.Write(std::to_string(round), ProfileFile({{"QX73", payload}}))), 0);
    ProfileDataList list;
    FillUsed(list);
    // Four random bytes of presence are zero hardly ever, and the counters never fit.
    EXPECT_EQ(handler.GetVKLinOutputData(list), 0);
    if (payload.size() < 24) {
      ExpectUsed(list);
    } else {
      ExpectCleared(list);
    }
  }
}

// The other six lists come with the properties, as far as the profile is made.

struct Gathered {
  const char* reference;
  const char* measurement;
  ProfileDataList VKCLProfileProperties::*referenceList;
  ProfileDataList VKCLProfileProperties::*measurementList;
  int state;  ///< from which on they are read
};

constexpr Gathered kGathered[] = {
    {"QX55", "QX54", &VKCLProfileProperties::linReference, &VKCLProfileProperties::linMeasurement,
     3},
    {"QX57", "QX56", &VKCLProfileProperties::gbReference, &VKCLProfileProperties::gbMeasurement, 5},
    {"QX60", "QX59", &VKCLProfileProperties::charReference, &VKCLProfileProperties::charMeasurement,
     6},
};

/// One of the system's own profiles, with a tag that makes its state 7, and `tags`.
std::vector<FileTag> Finished(const std::vector<FileTag>& tags) {
  std::vector<FileTag> all = {
      {"QX51", Bytes(140)},
      {"QX53", Payload().HexDigits("01000000 2C040000").Fill(1060)},
      {"B2A0", HexBytes("B2A0")},
  };
  all.insert(all.end(), tags.begin(), tags.end());
  return all;
}

TEST(DataListReads, EachOfTheSixWithTheProperties) {
  std::vector<FileTag> tags;
  int format = 0;
  for (const Gathered& pair : kGathered) {
    tags.emplace_back(pair.reference,
                      ListPayload(100u + static_cast<unsigned>(++format), 2, 1, 3, 0, 1, 6));
    tags.emplace_back(pair.measurement,
                      ListPayload(100u + static_cast<unsigned>(++format), 2, 2, 4, 2, -1, 8));
  }
  const OnFile file(Finished(tags));
  VKCLProfileProperties properties;
  ASSERT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  unsigned expected = 100;
  for (const Gathered& pair : kGathered) {
    SCOPED_TRACE(pair.reference);
    const ProfileDataList& reference = properties.*pair.referenceList;
    EXPECT_EQ(reference.DataFormat, ++expected);
    EXPECT_EQ(reference.ColorMode, 1);
    EXPECT_EQ(reference.NumOfColors, 3);
    ASSERT_NE(reference.DataList, nullptr);
    EXPECT_EQ(reference.DataList[5], 6.0);
    const ProfileDataList& measurement = properties.*pair.measurementList;
    EXPECT_EQ(measurement.DataFormat, ++expected);
    EXPECT_EQ(measurement.ColorMode, 2);
    EXPECT_EQ(measurement.NumOfColors, 4);
    EXPECT_EQ(measurement.Measured, 2);
    ASSERT_NE(measurement.DataList, nullptr);
    EXPECT_EQ(measurement.DataList[7], 8.0);
  }
}

TEST(DataListReads, TheSixAreClearedByAPayloadOfAnotherLength) {
  for (const Gathered& pair : kGathered) {
    for (const Bytes& bad :
         {ListPayload(1, 2, 3, 3, 5, 1, 5), ListPayload(1, 2, 3, 3, 5, 0, 6),
          ListPayload(1, 65536, 3, 65536, 5, 1, 0), ListPayload(1, -1, 3, -1, 5, 1, 1)}) {
      const OnFile file(
          Finished({{pair.reference, ListPayload(9, 1, 0, 1, 0, 1, 1)}, {pair.measurement, bad}}));
      VKCLProfileProperties properties;
      FillUsed(properties.*pair.measurementList);
      ASSERT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
      EXPECT_EQ((properties.*pair.referenceList).DataFormat, 9u);
      ExpectCleared(properties.*pair.measurementList);
    }
  }
}

TEST(DataListReads, TheSixStayWithoutATag) {
  const OnFile file(Finished({}));
  VKCLProfileProperties properties;
  for (const Gathered& pair : kGathered) FillUsed(properties.*pair.measurementList);
  ASSERT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
  for (const Gathered& pair : kGathered) ExpectUsed(properties.*pair.measurementList);
}

TEST(DataListReads, TheSixOnlyFromTheirStateOn) {
  struct Step {
    const char* tag;  ///< makes the state
    int state;
  };
  const Bytes list = ListPayload(9, 1, 0, 1, 0, 1, 1);
  for (const Step& step :
       {Step{"QX50", 2}, Step{"QX54", 3}, Step{"QX52", 4}, Step{"QX56", 5}, Step{"QX59", 6}}) {
    std::vector<FileTag> tags = {
        {"QX51", Bytes(140)}, {"QX53", Payload().HexDigits("01000000 2C040000").Fill(1060)},
        {"QX55", list},       {"QX57", list},
        {"QX60", list},       {step.tag, list}};
    const OnFile file(tags);
    VKCLProfileFinishedState state = FinishedNone;
    ASSERT_EQ(file.handler.GetVKCLProfileFinishedState(state, 0), 1);
    ASSERT_EQ(state, step.state);
    VKCLProfileProperties properties;
    ASSERT_EQ(file.handler.GetVKCLProfileProperties(properties, 0), 1);
    for (const Gathered& pair : kGathered) {
      EXPECT_EQ((properties.*pair.referenceList).DataFormat, step.state >= pair.state ? 9u : 0u)
          << step.tag << " " << pair.reference;
    }
  }
}

// The words of a target's format, through the target that a profile carries.

/// The device format that a first field of that name gives; `before` when there is none.
std::uint32_t FormatOf(const std::string& word, std::uint32_t before = 4711) {
  const std::string target =
      "BEGIN_DATA_FORMAT\n" + word + "_1 LAB_L\nEND_DATA_FORMAT\nBEGIN_DATA\n1 2 3 4\nEND_DATA\n";
  const TempDir dir;
  const std::string path =
      dir.Write("p.icc", ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag(Bytes(140))},
                                                        {Sig("QX53"), DataTag(Bytes(1068))},
                                                        {Sig("targ"), TextTag(target + '\0')}}));
  const VKCLProfileHandler handler(AFilePath(path), 0);
  VKCLProfileProperties properties;
  properties.charReference.DataFormat = before;
  EXPECT_EQ(handler.GetVKCLProfileProperties(properties, 0), 1);
  return properties.charReference.DataFormat;
}

TEST(DataFormatWords, HaveTheirSignatures) {
  const std::pair<const char*, std::uint32_t> words[] = {
      {"CMYK", Sig("CMYK")},   {"5CLR", Sig("5CLR")},   {"PC5", Sig("5CLR")},
      {"CMYKOG", Sig("6CLR")}, {"CMYKRB", Sig("6CLR")}, {"6CLR", Sig("6CLR")},
      {"7CLR", Sig("7CLR")},   {"CMY", Sig("CMY ")},    {"RGB", Sig("RGB ")},
  };
  for (const auto& [word, format] : words) EXPECT_EQ(FormatOf(word), format) << word;
}

TEST(DataFormatWords, MapGrayToOneColourNotToTheGrayOfIcc) {
  EXPECT_EQ(FormatOf("GRAY"), Sig("1CLR"));
}

TEST(DataFormatWords, CountWithoutRegardToCase) {
  for (int mask = 0; mask < 16; ++mask) {
    std::string word = "CMYK";
    for (int i = 0; i < 4; ++i) {
      if ((mask >> i & 1) != 0) {
        char& letter = word[static_cast<std::size_t>(i)];
        letter = static_cast<char>(letter + ('a' - 'A'));
      }
    }
    EXPECT_EQ(FormatOf(word), Sig("CMYK")) << word;
  }
  EXPECT_EQ(FormatOf("cmykog"), Sig("6CLR"));
  EXPECT_EQ(FormatOf("pC5"), Sig("5CLR"));
  EXPECT_EQ(FormatOf("Gray"), Sig("1CLR"));
}

TEST(DataFormatWords, OtherThanTheseLeaveTheFormat) {
  for (const char* const word :
       {"LAB", "XYZ", "SAMPLE", "1CLR", "2CLR", "3CLR", "4CLR", "8CLR", "PC4", "PC6", "CMYKO",
        "CMYKGO", "CM", "KCMY", "RGBA", "GREY", "CMYK5", "K"}) {
    EXPECT_EQ(FormatOf(word), 4711u) << word;
  }
}

// What the record itself promises to those who fill lists.

TEST(DataListRecord, IsRefreshedWithZeros) {
  ProfileDataList list;
  list.NumOfColors = 4;
  list.Measured = 3;
  list.DataList = new double[1]{1};
  list.PerSample = new std::int32_t[1]{1};
  ASSERT_EQ(list.RefreshList(10), 1);
  ASSERT_NE(list.DataList, nullptr);
  EXPECT_EQ(std::vector<double>(list.DataList, list.DataList + 40), std::vector<double>(40));
  EXPECT_EQ(list.NumOfSamples, 10);
  EXPECT_EQ(list.Measured, 0);
  EXPECT_EQ(list.PerSample, nullptr);
}

TEST(DataListRecord, EqualsAnyWithTheSameCountersWhenItHasNoValues) {
  ProfileDataList without;
  without.NumOfSamples = 2;
  without.NumOfColors = 1;
  ProfileDataList with = without;
  with.DataList = new double[2]{1, 2};
  EXPECT_TRUE(without == with);
  EXPECT_FALSE(without != with);
  EXPECT_FALSE(with == without);
  ProfileDataList other = with;
  other.Measured = 1;
  EXPECT_TRUE(with == other);
  other.DataList[1] = 3;
  EXPECT_TRUE(with != other);
}

// Memory.

#if VKCL_MEMORY_IS_MEASURABLE

using vkcl::testing::PeakGrowth;

constexpr int kManySamples = 10000;
constexpr int kManyColors = 36;
constexpr long kValueBytes = long{kManySamples} * kManyColors * 8;
constexpr long kNoise = 512 * 1024;  // stacks, tables, files' buffers

bool Use(std::vector<char>& block, long length) {
  block.assign(static_cast<std::size_t>(length), 'x');
  return block.back() == 'x';
}

TEST(DataListMemory, IsMeasured) {
  const auto one = [](long length) {
    std::vector<char> a;
    return Use(a, length);
  };
  const auto two = [](long length) {
    std::vector<char> a;
    std::vector<char> b;
    return Use(a, length) && Use(b, length);
  };
  const auto behind = [&one](long length) { return one(length) && one(length) && one(length); };
  const auto grown = [](const std::function<bool(long)>& use) {
    return static_cast<double>(
        PeakGrowth([&] { return use(100); }, [&] { return use(kValueBytes); }));
  };
  EXPECT_NEAR(grown(one), kValueBytes, kNoise);
  EXPECT_NEAR(grown(two), 2 * kValueBytes, kNoise);
  EXPECT_NEAR(grown(behind), kValueBytes, kNoise);
}

TEST(DataListMemory, WritingTakesAtMostOneCopyOfTheValues) {
  ProfileDataList small;
  FillSmall(small);
  ProfileDataList list;
  list.NumOfColors = kManyColors;
  ASSERT_EQ(list.RefreshList(kManySamples), 1);
  for (int i = 0; i < kManySamples * kManyColors; ++i) list.DataList[i] = i;
  for (const ListTag& tag : kLists) {
    OnFile other;
    OnFile file;
    const long growth = PeakGrowth([&] { return (other.handler.*tag.write)(small) == 1; },
                                   [&] { return (file.handler.*tag.write)(list) == 1; });
    EXPECT_EQ(file.Stored(tag.signature).value_or(Bytes()).size(), 24u + kValueBytes);
    EXPECT_GE(growth, 0) << tag.signature;
    EXPECT_LE(growth, kValueBytes + kNoise) << tag.signature;
  }
}

TEST(DataListMemory, ReadingTakesAtMostOneCopyOfTheValuesBesideTheList) {
  const OnFile small({{"QX72", HexBytes(kSmallPayload)}});
  const OnFile file(
      {{"QX72", ListPayload(1, kManySamples, 0, kManyColors, 0, 1, kManySamples * kManyColors)}});
  const long growth = PeakGrowth(
      [&] {
        ProfileDataList list;
        return small.handler.GetVKLinRefData(list) == 1;
      },
      [&] {
        ProfileDataList list;
        return file.handler.GetVKLinRefData(list) == 1 &&
               list.DataList[kManySamples * kManyColors - 1] == kManySamples * kManyColors;
      });
  EXPECT_GE(growth, kValueBytes - kNoise);  // the list itself
  EXPECT_LE(growth, 2 * kValueBytes + kNoise);
}

#endif

TEST(DataListWrites, TenThousandSamplesOf36Values) {
  constexpr int kSamples = 10000;
  constexpr int kColors = 36;
  OnFile file;
  ProfileDataList list;
  list.DataFormat = Sig("refl");
  list.NumOfColors = kColors;
  ASSERT_EQ(list.RefreshList(kSamples), 1);
  list.Measured = kSamples;
  for (int i = 0; i < kSamples * kColors; ++i) list.DataList[i] = i + 1;
  ASSERT_EQ(file.handler.WriteVKLinRefData(list), 1);
  EXPECT_TRUE(
      SameBytes(file.Stored("QX72").value_or(Bytes()),
                ListPayload(Sig("refl"), kSamples, 0, kColors, kSamples, 1, kSamples * kColors)));
  ProfileDataList read;
  ASSERT_EQ(file.handler.GetVKLinRefData(read), 1);
  EXPECT_TRUE(read == list);
  ASSERT_NE(read.DataList, nullptr);
  EXPECT_EQ(read.DataList[kSamples * kColors - 1], kSamples * kColors);
}

}  // namespace
