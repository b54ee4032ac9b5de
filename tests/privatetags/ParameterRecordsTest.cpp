#include "privatetags/ParameterRecords.h"

#include <cstring>
#include <memory>

#include "support/TagFile.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::ImageOf;
using vkcl::testing::Payload;

/// A table whose bytes are all different from their neighbours'.
std::unique_ptr<DitherTypeV1> CountingTable() {
  auto table = std::make_unique<DitherTypeV1>();
  for (int i = 0; i < 4112; ++i) table->table[i] = static_cast<unsigned char>(i % 251 + 1);
  return table;
}

Bytes CountingTableImage() {
  Bytes image = vkcl::testing::HexBytes("14100000");
  for (int i = 0; i < 4112; ++i) image.push_back(static_cast<unsigned char>(i % 251 + 1));
  return image;
}

/// The record's own copy of the table, so that a release shows as a change of its bytes.
Bytes TableImage(const VKDitherParam& dither) {
  if (dither.table == nullptr) return {};
  return ImageOf(*dither.table);
}

// Colour parameters.

TEST(VKColorParam, ByDefaultHoldsVersionAndSizeAndZeros) {
  EXPECT_EQ(ImageOf(VKColorParam()), Payload().HexDigits("01000000 2C040000").Fill(1060).bytes());
}

TEST(VKColorParam, LiesInMemoryAsItIsStored) {
  VKColorParam param;
  param.version = 0x01020304;
  param.size = 0x11121314;
  param.status = 0x21222324;
  param.MediaID = 0x31323334;
  std::memset(param.Make, 'a', 128);
  std::memset(param.Model, 'b', 128);
  std::memset(param.MediaName, 'c', 128);
  param.ResolutionID = 0x41424344;
  param.ResolutionX = 720.0f;
  param.ResolutionY = 1440.0f;
  param.ColorMode = -2;
  param.DriverColorMode = 0x51525354;
  param.DitherMethod = 0x61626364;
  param.PrintMode = 0x71727374;
  std::memset(param.DriverOption, 0xF1, 256);
  std::memset(param.reservedText1, 'd', 128);
  std::memset(param.reservedText2, 'e', 128);
  std::memset(param.reservedText3, 'f', 128);
  EXPECT_EQ(ImageOf(param), Payload()
                                .HexDigits("04030201 14131211 24232221 34333231")
                                .HexDigits("61", 128)
                                .HexDigits("62", 128)
                                .HexDigits("63", 128)
                                .HexDigits("44434241 00003444 0000B444")
                                .HexDigits("FEFFFFFF 54535251 64636261 74737271")
                                .HexDigits("F1", 256)
                                .HexDigits("64", 128)
                                .HexDigits("65", 128)
                                .HexDigits("66", 128)
                                .bytes());
}

TEST(VKColorParam, EveryFieldHasItsPlace) {
  EXPECT_EQ(offsetof(VKColorParam, version), 0u);
  EXPECT_EQ(offsetof(VKColorParam, size), 4u);
  EXPECT_EQ(offsetof(VKColorParam, status), 8u);
  EXPECT_EQ(offsetof(VKColorParam, MediaID), 12u);
  EXPECT_EQ(offsetof(VKColorParam, Make), 16u);
  EXPECT_EQ(offsetof(VKColorParam, Model), 144u);
  EXPECT_EQ(offsetof(VKColorParam, MediaName), 272u);
  EXPECT_EQ(offsetof(VKColorParam, ResolutionID), 400u);
  EXPECT_EQ(offsetof(VKColorParam, ResolutionX), 404u);
  EXPECT_EQ(offsetof(VKColorParam, ResolutionY), 408u);
  EXPECT_EQ(offsetof(VKColorParam, ColorMode), 412u);
  EXPECT_EQ(offsetof(VKColorParam, DriverColorMode), 416u);
  EXPECT_EQ(offsetof(VKColorParam, DitherMethod), 420u);
  EXPECT_EQ(offsetof(VKColorParam, PrintMode), 424u);
  EXPECT_EQ(offsetof(VKColorParam, DriverOption), 428u);
  EXPECT_EQ(offsetof(VKColorParam, reservedText1), 684u);
  EXPECT_EQ(offsetof(VKColorParam, reservedText2), 812u);
  EXPECT_EQ(offsetof(VKColorParam, reservedText3), 940u);
  EXPECT_EQ(sizeof(VKColorParam), 1068u);
}

TEST(VKColorParam, CopiesEveryByteAlsoBehindTheTerminators) {
  VKColorParam from;
  std::memset(static_cast<void*>(&from), 0xA7, sizeof from);
  std::memcpy(from.Make, "x", 2);
  VKColorParam assigned;
  assigned = from;
  const VKColorParam constructed(from);
  Bytes expected(1068, 0xA7);
  expected[16] = 'x';
  expected[17] = 0;
  EXPECT_EQ(ImageOf(assigned), expected);
  EXPECT_EQ(ImageOf(constructed), expected);
}

// The small records.

TEST(VKVSDProfileParam, ByDefaultHoldsVersionAndAnEmptyName) {
  EXPECT_EQ(ImageOf(VKVSDProfileParam()), Payload().HexDigits("01000000").Fill(128).bytes());
}

TEST(VKVSDProfileParam, LiesInMemoryAsItIsStored) {
  VKVSDProfileParam param;
  param.version = 0x01020304;
  std::memset(param.fileName, 'n', 128);
  EXPECT_EQ(ImageOf(param), Payload().HexDigits("04030201").HexDigits("6E", 128).bytes());
  VKVSDProfileParam copy;
  copy = param;
  EXPECT_EQ(ImageOf(copy), ImageOf(param));
}

TEST(VKCompatibilityParam, Is64ZeroBytesByDefaultAndIsCopiedWhole) {
  EXPECT_EQ(ImageOf(VKCompatibilityParam()), Bytes(64, 0));
  VKCompatibilityParam param;
  Bytes expected;
  for (int i = 0; i < 64; ++i) {
    param.bytes[i] = static_cast<unsigned char>(200 - i);
    expected.push_back(static_cast<unsigned char>(200 - i));
  }
  EXPECT_EQ(ImageOf(param), expected);
  VKCompatibilityParam copy;
  copy = param;
  EXPECT_EQ(ImageOf(copy), expected);
}

TEST(VKProfileExtraParam, HoldsVersionOneAndValueZeroByDefault) {
  EXPECT_EQ(ImageOf(VKProfileExtraParam()), vkcl::testing::HexBytes("01000000 00000000"));
}

TEST(VKProfileExtraParam, LiesInMemoryAsItIsStored) {
  VKProfileExtraParam param;
  param.version = 0x01020304;
  param.value = -3;
  EXPECT_EQ(ImageOf(param), vkcl::testing::HexBytes("04030201 FDFFFFFF"));
  VKProfileExtraParam copy;
  copy = param;
  EXPECT_EQ(ImageOf(copy), vkcl::testing::HexBytes("04030201 FDFFFFFF"));
}

TEST(VKAngleScreenParam, IsThreeTextsWhoseBytesAreAllCopied) {
  EXPECT_EQ(ImageOf(VKAngleScreenParam()), Bytes(384, 0));
  VKAngleScreenParam param;
  std::memset(param.text1, '1', 128);
  std::memset(param.text2, '2', 128);
  std::memset(param.text3, '3', 128);
  VKAngleScreenParam copy;
  copy = param;
  EXPECT_EQ(ImageOf(copy),
            Payload().HexDigits("31", 128).HexDigits("32", 128).HexDigits("33", 128).bytes());
}

// The dither table.

TEST(DitherTypeBase, StatesNoLengthOfItsOwn) { EXPECT_EQ(DitherTypeBase().size, 0u); }

TEST(DitherTypeV1, StatesItsOwnLengthOf4116Bytes) {
  const auto table = std::make_unique<DitherTypeV1>();
  EXPECT_EQ(sizeof(DitherTypeV1), 4116u);
  EXPECT_EQ(table->size, 4116u);
  EXPECT_EQ(ImageOf(*CountingTable()), CountingTableImage());
}

TEST(DitherTypeV1, IsCopiedWholeAndItsBaseByLengthOnly) {
  const auto from = CountingTable();
  from->size = 77;
  auto whole = std::make_unique<DitherTypeV1>();
  *whole = *from;
  EXPECT_EQ(ImageOf(*whole), ImageOf(*from));

  auto headOnly = std::make_unique<DitherTypeV1>();
  static_cast<DitherTypeBase&>(*headOnly) = *from;
  EXPECT_EQ(ImageOf(*headOnly), Payload().HexDigits("4D000000").Fill(4112).bytes());
}

// The dither record.

TEST(VKDitherParam, ByDefaultIsOfTypeOneAndHasNoTable) {
  const VKDitherParam dither;
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.size, 16);
  EXPECT_EQ(dither.table, nullptr);
}

TEST(VKDitherParam, TakesACopyOfATableWithItsLengthWord) {
  const auto table = CountingTable();
  table->size = 0x01020304;
  VKDitherParam dither;
  EXPECT_EQ(dither.InitDitherParam(1, table.get()), 1);
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.size, 4132);
  ASSERT_NE(dither.table, nullptr);
  EXPECT_NE(dither.table, table.get());
  EXPECT_EQ(ImageOf(*dither.table), ImageOf(*table));
  EXPECT_EQ(dither.table->size, 0x01020304u);
}

TEST(VKDitherParam, ReplacesTheTableThatItHeld) {
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(1, std::make_unique<DitherTypeV1>().get()), 1);
  ASSERT_EQ(dither.InitDitherParam(1, CountingTable().get()), 1);
  EXPECT_EQ(TableImage(dither), CountingTableImage());
}

TEST(VKDitherParam, OfAnotherTypeHasNoTableAndKeepsItsSize) {
  const auto table = CountingTable();
  for (const int type : {2, 0, -1}) {
    VKDitherParam empty;
    EXPECT_EQ(empty.InitDitherParam(type, table.get()), 0) << type;
    EXPECT_EQ(empty.type, type);
    EXPECT_EQ(empty.size, 16);
    EXPECT_EQ(empty.table, nullptr);

    VKDitherParam filled;
    ASSERT_EQ(filled.InitDitherParam(1, table.get()), 1);
    EXPECT_EQ(filled.InitDitherParam(type, table.get()), 0) << type;
    EXPECT_EQ(filled.type, type);
    EXPECT_EQ(filled.size, 4132);
    EXPECT_EQ(filled.table, nullptr);
  }
}

TEST(VKDitherParam, WithoutAGivenTableFailsAndIsLeftWithoutOne) {
  VKDitherParam dither;
  EXPECT_EQ(dither.InitDitherParam(1, nullptr), 0);
  EXPECT_EQ(dither.table, nullptr);
  ASSERT_EQ(dither.InitDitherParam(1, CountingTable().get()), 1);
  EXPECT_EQ(dither.InitDitherParam(1, nullptr), 0);
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.table, nullptr);
}

TEST(VKDitherParam, StoresTheTypeAlsoWithoutAGivenTable) {
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(2, nullptr), 0);
  ASSERT_EQ(dither.type, 2);
  EXPECT_EQ(dither.InitDitherParam(1, nullptr), 0);
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.size, 16);
}

TEST(VKDitherParam, GivenItsOwnTableKeepsTheContents) {
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(1, CountingTable().get()), 1);
  EXPECT_EQ(dither.InitDitherParam(1, dither.table), 1);
  EXPECT_EQ(dither.size, 4132);
  EXPECT_EQ(TableImage(dither), CountingTableImage());
}

TEST(VKDitherParam, GivenItsOwnTableAndAnotherTypeReleasesIt) {
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(1, CountingTable().get()), 1);
  EXPECT_EQ(dither.InitDitherParam(2, dither.table), 0);
  EXPECT_EQ(dither.table, nullptr);
}

TEST(VKDitherParam, GivenItsOwnTypeByReferenceTakesIt) {
  VKDitherParam dither;
  EXPECT_EQ(dither.InitDitherParam(dither.type, CountingTable().get()), 1);
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(TableImage(dither), CountingTableImage());
}

TEST(VKDitherParam, AssignedCarriesOnlyEightBytesOfTheTableAndSize24) {
  VKDitherParam from;
  ASSERT_EQ(from.InitDitherParam(1, CountingTable().get()), 1);
  VKDitherParam to;
  to = from;
  EXPECT_EQ(to.type, 1);
  EXPECT_EQ(to.size, 24);
  ASSERT_NE(to.table, nullptr);
  EXPECT_NE(to.table, from.table);
  EXPECT_EQ(TableImage(to), Payload().HexDigits("14100000 01020304").Fill(4108).bytes());
  EXPECT_EQ(TableImage(from), CountingTableImage());
  EXPECT_EQ(from.size, 4132);
}

TEST(VKDitherParam, CopyConstructedIsAsAssigned) {
  VKDitherParam from;
  ASSERT_EQ(from.InitDitherParam(1, CountingTable().get()), 1);
  const VKDitherParam to(from);
  EXPECT_EQ(to.type, 1);
  EXPECT_EQ(to.size, 24);
  EXPECT_NE(to.table, from.table);
  EXPECT_EQ(TableImage(to), Payload().HexDigits("14100000 01020304").Fill(4108).bytes());
}

TEST(VKDitherParam, AssignedTakesTheLengthWordOfTheSourceAsItIs) {
  const auto table = CountingTable();
  table->size = 0x0A0B0C0D;
  VKDitherParam from;
  ASSERT_EQ(from.InitDitherParam(1, table.get()), 1);
  const VKDitherParam to(from);
  EXPECT_EQ(TableImage(to), Payload().HexDigits("0D0C0B0A 01020304").Fill(4108).bytes());
}

TEST(VKDitherParam, AssignedOverATableLeavesNothingOfIt) {
  VKDitherParam to;
  ASSERT_EQ(to.InitDitherParam(1, CountingTable().get()), 1);
  VKDitherParam from;
  ASSERT_EQ(from.InitDitherParam(1, std::make_unique<DitherTypeV1>().get()), 1);
  to = from;
  EXPECT_EQ(TableImage(to), Payload().HexDigits("14100000").Fill(4112).bytes());
}

TEST(VKDitherParam, AssignedFromOneWithoutATableHasNone) {
  VKDitherParam to;
  ASSERT_EQ(to.InitDitherParam(1, CountingTable().get()), 1);
  VKDitherParam from;
  from.size = 999;
  to = from;
  EXPECT_EQ(to.type, 1);
  EXPECT_EQ(to.size, 16);
  EXPECT_EQ(to.table, nullptr);
}

TEST(VKDitherParam, AssignedFromOneOfAnotherTypeHasTheTypeAndNoTable) {
  VKDitherParam from;
  ASSERT_EQ(from.InitDitherParam(1, CountingTable().get()), 1);
  from.type = 2;
  VKDitherParam to;
  ASSERT_EQ(to.InitDitherParam(1, CountingTable().get()), 1);
  to = from;
  EXPECT_EQ(to.type, 2);
  EXPECT_EQ(to.size, 16);
  EXPECT_EQ(to.table, nullptr);
  EXPECT_EQ(TableImage(from), CountingTableImage());
}

TEST(VKDitherParam, AssignedToItselfChangesNothing) {
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(1, CountingTable().get()), 1);
  const VKDitherParam& itself = dither;
  dither = itself;
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.size, 4132);
  EXPECT_EQ(TableImage(dither), CountingTableImage());
}

}  // namespace
