// The data lists of the VSD document.
#include <functional>
#include <limits>

#include "vsd/VSDDocuments.h"

namespace {

using vkcl::testing::BitsOf;
using vkcl::testing::Cat;
using vkcl::testing::CommaLocale;
using vkcl::testing::CommaThreads;
using vkcl::testing::Element;
using vkcl::testing::kBitPatternCount;
using vkcl::testing::kBitPatterns;
using vkcl::testing::ListElements;
using vkcl::testing::MakeList;
using vkcl::testing::MemoryLimit;
using vkcl::testing::Outline;
using vkcl::testing::PatternDigits;
using vkcl::testing::PatternValues;
using vkcl::testing::Repeated;
using vkcl::testing::Sidecar;
using vkcl::testing::VsdText;

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

/// A place of a list in the document, with its two operations.
struct Place {
  std::string container;
  std::string size;  ///< empty for the lists of the verification
  std::function<int(VSDProfileHandler&, const ProfileDataList&)> write;
  std::function<int(VSDProfileHandler&, ProfileDataList&)> read;

  std::string Around(const std::string& elements) const {
    return Element(container, Inner(elements));
  }
  std::string Inner(const std::string& elements) const {
    return size.empty() ? elements : Element(size, elements);
  }
};

using Writer = int (VSDProfileHandler::*)(int, const ProfileDataList&);
using Reader = int (VSDProfileHandler::*)(int, ProfileDataList&);

constexpr struct {
  const char* container;
  Writer write;
  Reader read;
} kBySize[] = {
    {"ReferenceData", &VSDProfileHandler::WriteVSDReferenceData,
     &VSDProfileHandler::ReadVSDReferenceData},
    {"MeasurementData", &VSDProfileHandler::WriteVSDMeasurementData,
     &VSDProfileHandler::ReadVSDMeasurementData},
    {"InvertedData", &VSDProfileHandler::WriteVSDInvertedData,
     &VSDProfileHandler::ReadVSDInvertedData},
};

std::vector<Place> Places() {
  std::vector<Place> places;
  const char* const sizes[] = {"Small", "Medium", "Large"};
  for (const auto& row : kBySize) {
    for (int size = 0; size < 3; ++size) {
      places.push_back({row.container, sizes[size],
                        [row, size](VSDProfileHandler& handler, const ProfileDataList& list) {
                          return (handler.*row.write)(size, list);
                        },
                        [row, size](VSDProfileHandler& handler, ProfileDataList& list) {
                          return (handler.*row.read)(size, list);
                        }});
    }
  }
  places.push_back({"ReferenceDataVerify", "",
                    [](VSDProfileHandler& handler, const ProfileDataList& list) {
                      return handler.WriteVerifyReferenceData(list);
                    },
                    [](VSDProfileHandler& handler, ProfileDataList& list) {
                      return handler.ReadVerifyReferenceData(list);
                    }});
  places.push_back({"MeasurementDataVerify", "",
                    [](VSDProfileHandler& handler, const ProfileDataList& list) {
                      return handler.WriteVerifyMeasurementData(list);
                    },
                    [](VSDProfileHandler& handler, ProfileDataList& list) {
                      return handler.ReadVerifyMeasurementData(list);
                    }});
  return places;
}

/// A list that holds something of everything.
ProfileDataList UsedList() {
  ProfileDataList list = MakeList(0x11111111, 3, 0x22, 1, 2, {7, 8, 9});
  list.PerSample = new std::int32_t[3]{4, 5, 6};
  list.Extra1 = 77;
  list.Extra2 = 78;
  return list;
}

void ExpectUsed(const ProfileDataList& list) {
  EXPECT_EQ(list.DataFormat, 0x11111111u);
  EXPECT_EQ(list.NumOfSamples, 3);
  EXPECT_EQ(list.ColorMode, 0x22);
  EXPECT_EQ(list.NumOfColors, 1);
  EXPECT_EQ(list.Measured, 2);
  ASSERT_NE(list.DataList, nullptr);
  EXPECT_EQ(list.DataList[0], 7);
  EXPECT_EQ(list.DataList[2], 9);
  ASSERT_NE(list.PerSample, nullptr);
  EXPECT_EQ(list.PerSample[2], 6);
  EXPECT_EQ(list.Extra1, 77);
  EXPECT_EQ(list.Extra2, 78);
}

std::vector<std::int32_t> Counters(const ProfileDataList& list) {
  return {std::bit_cast<std::int32_t>(list.DataFormat), list.NumOfSamples, list.ColorMode,
          list.NumOfColors, list.Measured};
}

/// The values of a list, as many as its counters say.
std::vector<std::uint64_t> Values(const ProfileDataList& list) {
  if (list.DataList == nullptr || list.NumOfSamples < 0 || list.NumOfColors < 0) return {};
  return BitsOf(list.DataList, static_cast<std::size_t>(list.NumOfSamples) *
                                   static_cast<std::size_t>(list.NumOfColors));
}

std::vector<std::uint64_t> Bits(const std::vector<double>& values) {
  return BitsOf(values.data(), values.size());
}

/// Reads the small measurements of a document that has these elements there.
int ReadSmall(const std::string& elements, ProfileDataList& list) {
  Sidecar file(VsdText("<MeasurementData><Small>" + elements + "</Small></MeasurementData>"));
  return file.handler.ReadVSDMeasurementData(0, list);
}

// Writing.

TEST(VSDDataLists, AListIsSixElementsInOrder) {
  const ProfileDataList list =
      MakeList(0x434D594B, 2, -2147483647, 4, 1, {1.0, -2.0, 0.5, 100.0, 1e300, -0.0, 0.0, 0.1});
  const std::string digits =
      "000000000000f03f00000000000000c0000000000000e03f0000000000005940"
      "9c7500883ce4377e000000000000008000000000000000009a9999999999b93f";
  ASSERT_EQ(digits.size(), 128u);
  for (const Place& place : Places()) {
    Sidecar file;
    ASSERT_EQ(place.write(file.handler, list), 1) << place.container << place.size;
    const std::string indent = place.size.empty() ? "    " : "      ";
    const std::string sizeLine = place.size.empty() ? "" : Cat("    ", place.size, "=\n");
    EXPECT_EQ(file.SavedOutline(),
              Cat("VK_VSD_PROFILE=\n  ", place.container, "=\n", sizeLine, indent,
                  "DataFormat=1129142603\n", indent, "NumOfSamples=2\n", indent,
                  "ColorMode=-2147483647\n", indent, "NumOfColors=4\n", indent, "Measured=1\n",
                  indent, "DataList=", digits, "\n"));
  }
}

TEST(VSDDataLists, AreReadFromTheirPlaces) {
  for (const Place& place : Places()) {
    Sidecar file(VsdText(place.Around(
        ListElements("1129142603", "2", "-2147483647", "2", "1",
                     "000000000000f03f00000000000000c0000000000000e03f0000000000005940"))));
    for (const Place& other : Places()) {
      ProfileDataList list = UsedList();
      const bool same = other.container == place.container && other.size == place.size;
      EXPECT_EQ(other.read(file.handler, list), same ? 1 : 0)
          << place.container << place.size << " " << other.container << other.size;
      if (!same) {
        ExpectUsed(list);
        continue;
      }
      EXPECT_EQ(Counters(list), (std::vector<std::int32_t>{1129142603, 2, -2147483647, 2, 1}));
      EXPECT_EQ(Values(list), Bits({1.0, -2.0, 0.5, 100.0}));
      EXPECT_EQ(list.Extra1, 77);
      EXPECT_EQ(list.Extra2, 78);
    }
  }
}

TEST(VSDDataLists, SurviveTheFileInEveryPlace) {
  Sidecar file;
  double number = 1;
  for (const Place& place : Places()) {
    ASSERT_EQ(place.write(file.handler, MakeList(1, 1, 2, 2, 3, {number, -number})), 1);
    ++number;
  }
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  VSDProfileHandler opened(AFilePath(file.path), 1);
  number = 1;
  for (const Place& place : Places()) {
    ProfileDataList list;
    ASSERT_EQ(place.read(opened, list), 1);
    EXPECT_EQ(Values(list), Bits({number, -number})) << place.container << place.size;
    ++number;
  }
}

TEST(VSDDataLists, FormatsAreWrittenAsSignedNumbers) {
  const struct {
    std::uint32_t format;
    const char* text;
  } rows[] = {
      {0x4C616220, "1281450528"},  // 'Lab '
      {0x434D594B, "1129142603"},  // 'CMYK'
      {0xFFFFFFFF, "-1"},         {0x80000000, "-2147483648"}, {0x7FFFFFFF, "2147483647"}, {0, "0"},
  };
  for (const auto& row : rows) {
    Sidecar file;
    ASSERT_EQ(file.handler.WriteVSDReferenceData(0, MakeList(row.format, 1, 0, 1, 0, {1})), 1);
    EXPECT_NE(file.SavedOutline().find("      DataFormat=" + std::string(row.text) + "\n"),
              std::string::npos)
        << row.text;
    ProfileDataList list;
    ASSERT_EQ(file.handler.ReadVSDReferenceData(0, list), 1);
    EXPECT_EQ(list.DataFormat, row.format);
    EXPECT_EQ(ReadSmall(ListElements(row.text, "1", "0", "1", "0", ""), list), 1);
    EXPECT_EQ(list.DataFormat, row.format);
  }
}

TEST(VSDDataLists, EveryBitOfAValueSurvives) {
  const std::vector<double> values = PatternValues();
  const int count = static_cast<int>(kBitPatternCount);
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVSDInvertedData(1, MakeList(1, count, 0, 1, 0, values)), 1);
  EXPECT_NE(file.SavedOutline().find("DataList=" + PatternDigits() + "\n"), std::string::npos);
  VSDProfileHandler opened(AFilePath(file.path), 1);
  ProfileDataList list;
  ASSERT_EQ(opened.ReadVSDInvertedData(1, list), 1);
  const std::vector<std::uint64_t> read = Values(list);
  ASSERT_EQ(read.size(), kBitPatternCount);
  for (std::size_t i = 0; i < kBitPatternCount; ++i) {
    EXPECT_EQ(read[i], kBitPatterns[i].bits) << kBitPatterns[i].digits;
  }
  EXPECT_EQ(
      ReadSmall(ListElements("1", std::to_string(count), "0", "1", "0", PatternDigits()), list), 1);
  EXPECT_EQ(Values(list), read);
}

TEST(VSDDataLists, ValuesStandSampleBySample) {
  Sidecar file(VsdText("<MeasurementData><Large>" +
                       ListElements("1", "3", "0", "2", "0",
                                    "000000000000f03f"
                                    "0000000000000040"
                                    "0000000000000840"
                                    "0000000000001040"
                                    "0000000000001440"
                                    "0000000000001840") +
                       "</Large></MeasurementData>"));
  ProfileDataList list;
  ASSERT_EQ(file.handler.ReadVSDMeasurementData(2, list), 1);
  EXPECT_EQ(Values(list), Bits({1, 2, 3, 4, 5, 6}));
}

TEST(VSDDataLists, WithoutValuesHaveAnEmptyText) {
  for (const auto& [samples, colors] : {std::pair{0, 0}, {0, 4}, {5, 0}}) {
    Sidecar file;
    ASSERT_EQ(file.handler.WriteVSDReferenceData(0, MakeList(1, samples, 0, colors, 0, {})), 1);
    EXPECT_EQ(file.SavedOutline(), Outline(VsdText("<ReferenceData><Small>" +
                                                   ListElements("1", std::to_string(samples), "0",
                                                                std::to_string(colors), "0", "") +
                                                   "</Small></ReferenceData>")));
    VSDProfileHandler opened(AFilePath(file.path), 1);
    ProfileDataList list = UsedList();
    EXPECT_EQ(opened.ReadVSDReferenceData(0, list), 1);
    EXPECT_EQ(list.NumOfSamples, samples);
    EXPECT_EQ(list.NumOfColors, colors);
    EXPECT_EQ(list.GetDataSize(), 0u);
    const ProfileDataList copy(list);
    EXPECT_TRUE(copy == list);
  }
}

TEST(VSDDataLists, PerSampleAndTrailingIntegersAreNotStored) {
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVSDReferenceData(0, UsedList()), 1);
  EXPECT_EQ(file.SavedOutline(),
            Outline(VsdText("<ReferenceData><Small>" +
                            ListElements("286331153", "3", "34", "1", "2",
                                         "0000000000001c4000000000000020400000000000002240") +
                            "</Small></ReferenceData>")));
  ProfileDataList list;
  list.PerSample = new std::int32_t[2]{1, 2};
  list.Extra1 = 5;
  ASSERT_EQ(file.handler.ReadVSDReferenceData(0, list), 1);
  EXPECT_EQ(list.PerSample, nullptr) << "they belong to other samples";
  EXPECT_EQ(list.Extra1, 5);
  EXPECT_EQ(list.Extra2, -1);
}

TEST(VSDDataLists, ThatLackTheValuesTheyCountAreRefused) {
  for (const Place& place : Places()) {
    Sidecar file;
    EXPECT_EQ(place.write(file.handler, MakeList(1, 2, 0, 3, 0, {})), 0);
    EXPECT_EQ(place.write(file.handler, MakeList(1, kMax, 0, kMax, 0, {})), 0);
    EXPECT_EQ(place.write(file.handler, MakeList(1, 65536, 0, 65536, 0, {})), 0);
    EXPECT_EQ(file.SavedOutline(), "no file") << "a write that fails does not modify";
  }
}

TEST(VSDDataLists, OfNegativeCountsStoreNoValues) {
  for (const std::vector<double>& values : {std::vector<double>(), std::vector<double>{1.0}}) {
    for (const auto& [samples, colors] :
         {std::pair{-1, 3}, {1, -3}, {-2, -3}, {kMin, 1}, {-1, kMin}, {kMin, kMin}, {-1, -1}}) {
      Sidecar file;
      const ProfileDataList list = MakeList(1, samples, 0, colors, 0, values);
      const int written = file.handler.WriteVerifyReferenceData(list);
      EXPECT_EQ(file.SavedOutline(),
                written == 0 ? "no file"
                             : Outline(VsdText("<ReferenceDataVerify>" +
                                               ListElements("1", std::to_string(samples), "0",
                                                            std::to_string(colors), "0", "") +
                                               "</ReferenceDataVerify>")));
    }
  }
}

TEST(VSDDataLists, OfASizeThatIsNoneAreRefused) {
  for (const auto& row : kBySize) {
    for (const int size : {-1, 3, 4, 100, kMin, kMax}) {
      Sidecar file(VsdText("<Unasked/>"));
      EXPECT_EQ((file.handler.*row.write)(size, MakeList(1, 1, 0, 1, 0, {1})), 0) << size;
      ProfileDataList list = UsedList();
      EXPECT_EQ((file.handler.*row.read)(size, list), 0) << size;
      ExpectUsed(list);
      // Nothing was added: what is saved with another write is that alone.
      ASSERT_EQ(file.handler.WriteVerifyReferenceData(MakeList(1, 0, 0, 0, 0, {})), 1);
      EXPECT_EQ(file.SavedOutline(), Outline(VsdText("<Unasked/><ReferenceDataVerify>" +
                                                     ListElements("1", "0", "0", "0", "0", "") +
                                                     "</ReferenceDataVerify>")));
    }
  }
}

TEST(VSDDataLists, AnUnknownSizeIsRefusedInADocumentWithLists) {
  std::string all;
  for (const auto& row : kBySize) {
    const std::string list = ListElements("1", "1", "0", "1", "0", "");
    all += Element(row.container,
                   Cat(Element("Small", list), Element("Medium", list), Element("Large", list)));
  }
  Sidecar file(VsdText(all));
  ASSERT_EQ(file.handler.IsValid(), 1);
  for (const auto& row : kBySize) {
    for (const int size : {-1, 3, kMin, kMax}) {
      ProfileDataList list = UsedList();
      EXPECT_EQ((file.handler.*row.read)(size, list), 0);
      ExpectUsed(list);
    }
  }
}

TEST(VSDDataLists, ContainersThatAreThereAreAddedTo) {
  for (const Place& place : Places()) {
    const auto around = [&](const std::string& first) {
      return VsdText(Cat("<Before/>", Element(place.container, first), "<Between/>",
                         Element(place.container, "")));
    };
    Sidecar file(around("<Unasked/>"));
    ASSERT_EQ(place.write(file.handler, MakeList(1, 1, 0, 1, 0, {1})), 1);
    EXPECT_EQ(file.SavedOutline(),
              Outline(around("<Unasked/>" + place.Inner(ListElements("1", "1", "0", "1", "0",
                                                                     "000000000000f03f")))));
  }
}

TEST(VSDDataLists, SizesOfOneKindShareAContainer) {
  for (const auto& row : kBySize) {
    Sidecar file;
    for (const int size : {2, 0, 1}) {
      ASSERT_EQ((file.handler.*row.write)(size, MakeList(1, 0, 0, 0, size, {})), 1);
    }
    const auto list = [](const char* measured) {
      return ListElements("1", "0", "0", "0", measured, "");
    };
    EXPECT_EQ(file.SavedOutline(),
              Outline(VsdText(Element(row.container,
                                      Cat(Element("Large", list("2")), Element("Small", list("0")),
                                          Element("Medium", list("1")))))));
  }
}

TEST(VSDDataLists, WrittenTwiceStandTwiceAndTheFirstIsRead) {
  for (const Place& place : Places()) {
    Sidecar file;
    ASSERT_EQ(place.write(file.handler, MakeList(1, 1, 2, 1, 3, {1.0})), 1);
    ASSERT_EQ(place.write(file.handler, MakeList(4, 2, 5, 1, 6, {2.0, -0.0})), 1);
    const std::string first = ListElements("1", "1", "2", "1", "3", "000000000000f03f");
    const std::string second =
        ListElements("4", "2", "5", "1", "6", "00000000000000400000000000000080");
    EXPECT_EQ(file.SavedOutline(),
              Outline(VsdText("<" + place.container + ">" + place.Inner(first) +
                              place.Inner(second) + "</" + place.container + ">")));
    VSDProfileHandler opened(AFilePath(file.path), 1);
    for (VSDProfileHandler* handler : {&file.handler, &opened}) {
      ProfileDataList list = UsedList();
      ASSERT_EQ(place.read(*handler, list), 1);
      EXPECT_EQ(Counters(list), (std::vector<std::int32_t>{1, 1, 2, 1, 3}));
      EXPECT_EQ(Values(list), Bits({1.0}));
    }
  }
}

TEST(VSDDataLists, AWriteModifies) {
  for (const Place& place : Places()) {
    Sidecar file(VsdText(""));
    ASSERT_EQ(place.write(file.handler, MakeList(1, 0, 0, 0, 0, {})), 1);
    EXPECT_EQ(file.SavedOutline(),
              Outline(VsdText(place.Around(ListElements("1", "0", "0", "0", "0", "")))));
  }
}

TEST(VSDDataLists, AWriteThatFailsDoesNotModify) {
  Sidecar file(VsdText("<Unasked/>"));
  EXPECT_EQ(file.handler.WriteVSDMeasurementData(0, MakeList(1, 1, 0, 1, 0, {})), 0);
  EXPECT_EQ(file.handler.WriteVerifyReferenceData(MakeList(1, 1, 0, 1, 0, {})), 0);
  EXPECT_EQ(file.handler.SaveToFile(), 1);
  EXPECT_EQ(file.Text(), VsdText("<Unasked/>"));
}

// Reading.

TEST(VSDDataLists, OfAMissingSizeLeaveTheListUntouched) {
  const std::string list = ListElements("1", "1", "0", "1", "0", "000000000000f03f");
  for (const auto& row : kBySize) {
    const std::string name = row.container;
    const std::string medium = Element("Medium", list);
    Sidecar file(VsdText(Cat(
        Element(name, Cat(Element("Small", list), Element("Large", list), Element("medium", list))),
        medium, Element(name, medium))));
    ProfileDataList used = UsedList();
    EXPECT_EQ((file.handler.*row.read)(1, used), 0) << "the first container counts";
    ExpectUsed(used);
    EXPECT_EQ((file.handler.*row.read)(0, used), 1);
    EXPECT_EQ((file.handler.*row.read)(2, used), 1);
  }
}

TEST(VSDDataLists, OfAnEmptyDocumentLeaveTheListUntouched) {
  Sidecar begun;
  Sidecar opened(VsdText(""));
  for (const Place& place : Places()) {
    ProfileDataList list = UsedList();
    EXPECT_EQ(place.read(begun.handler, list), 0);
    EXPECT_EQ(place.read(opened.handler, list), 0);
    ExpectUsed(list);
  }
}

TEST(VSDDataLists, AMissingElementEndsTheReadBehindTheCountersBeforeIt) {
  const char* const names[] = {"DataFormat",  "NumOfSamples", "ColorMode",
                               "NumOfColors", "Measured",     "DataList"};
  for (const Place& place : Places()) {
    for (std::size_t missing = 0; missing < 6; ++missing) {
      std::string elements = ListElements("-9", "2", "10", "1", "1", Repeated("00", 16));
      const std::string open = "<" + std::string(names[missing]) + ">";
      const std::string close = "</" + std::string(names[missing]) + ">";
      elements.replace(elements.find(open), open.size(), "<Unasked>");
      elements.replace(elements.find(close), close.size(), "</Unasked>");
      Sidecar file(VsdText(place.Around(elements)));
      ASSERT_EQ(file.handler.IsValid(), 1);
      ProfileDataList list = UsedList();
      EXPECT_EQ(place.read(file.handler, list), 0) << names[missing];
      std::vector<std::int32_t> expected = {0x11111111, 3, 0x22, 1, 2};
      const std::int32_t stored[] = {-9, 2, 10, 1, 1};
      for (std::size_t i = 0; i < missing && i < 5; ++i) expected[i] = stored[i];
      EXPECT_EQ(Counters(list), expected) << names[missing];
      EXPECT_EQ(list.Extra1, 77);
    }
  }
}

// Counters and values that do not belong together would lead copies and comparisons out of the
// array, so that the values go with the first counter that a failed read replaces.
TEST(VSDDataLists, AFailedReadLeavesNoValuesThatTheCountersDoNotDescribe) {
  for (const std::string& elements :
       {std::string("<DataFormat>1</DataFormat><NumOfSamples>1000000</NumOfSamples>"),
        std::string("<DataFormat>1</DataFormat><NumOfSamples>1000</NumOfSamples>"
                    "<ColorMode>1</ColorMode><NumOfColors>1000</NumOfColors>"
                    "<Measured>1</Measured>"),
        ListElements("1", "1000", "0", "1000", "0", "no digits"),
        ListElements("1", "2147483647", "0", "2147483647", "0", "00")}) {
    ProfileDataList list = UsedList();
    EXPECT_EQ(ReadSmall(elements, list), 0);
    EXPECT_EQ(list.DataList, nullptr);
    EXPECT_EQ(list.PerSample, nullptr);
    const ProfileDataList copy(list);
    EXPECT_EQ(copy.DataList, nullptr);
    EXPECT_TRUE(copy == list);
  }
}

TEST(VSDDataLists, TheFirstElementOfANameIsRead) {
  const std::string first = ListElements("1", "1", "2", "1", "3", "000000000000f03f");
  const std::string second = ListElements("4", "2", "5", "2", "6", Repeated("11", 32));
  ProfileDataList list;
  ASSERT_EQ(ReadSmall(first + second, list), 1);
  EXPECT_EQ(Counters(list), (std::vector<std::int32_t>{1, 1, 2, 1, 3}));
  EXPECT_EQ(Values(list), Bits({1.0}));
  ASSERT_EQ(ReadSmall("<DataList>000000000000f03f</DataList><Measured>9</Measured>" + first, list),
            1)
      << "their order plays no part";
  EXPECT_EQ(list.Measured, 9);
  EXPECT_EQ(Values(list), Bits({1.0}));
}

TEST(VSDDataLists, CountersAreReadUpToTheFirstCharacterThatIsNoDigit) {
  ProfileDataList list;
  ASSERT_EQ(ReadSmall(ListElements(" 12x", "\n 1 \n", "-7.9", "+1", "", "000000000000f03f"), list),
            1);
  EXPECT_EQ(Counters(list), (std::vector<std::int32_t>{12, 1, -7, 1, 0}));
  EXPECT_EQ(Values(list), Bits({1.0}));
  ASSERT_EQ(ReadSmall(ListElements("abc", "one", "", "1", "-", "000000000000f03f"), list), 1);
  EXPECT_EQ(Counters(list), (std::vector<std::int32_t>{0, 0, 0, 1, 0}));
  EXPECT_EQ(list.GetDataSize(), 0u);
}

TEST(VSDDataLists, BytesWithoutDigitsAreZero) {
  const auto read = [](const std::string& digits) {
    ProfileDataList list = UsedList();
    EXPECT_EQ(ReadSmall(ListElements("1", "1", "0", "2", "0", digits), list), 1) << digits;
    return Values(list);
  };
  using Two = std::vector<std::uint64_t>;
  EXPECT_EQ(read(""), (Two{0, 0}));
  EXPECT_EQ(read("1"), (Two{0, 0})) << "half a byte is none";
  EXPECT_EQ(read("12"), (Two{0x12, 0}));
  EXPECT_EQ(read("123"), (Two{0x12, 0}));
  EXPECT_EQ(read("123456789abcde"), (Two{0x00DEBC9A78563412, 0}));
  EXPECT_EQ(read("123456789abcdef"), (Two{0x00DEBC9A78563412, 0}));
  EXPECT_EQ(read("123456789abcdef0"), (Two{0xF0DEBC9A78563412, 0}));
  EXPECT_EQ(read("123456789abcdef0"
                 "01"),
            (Two{0xF0DEBC9A78563412, 1}));
  EXPECT_EQ(read("123456789abcdef0"
                 "01020304050607"),
            (Two{0xF0DEBC9A78563412, 0x0007060504030201}));
  EXPECT_EQ(read(" \n "), (Two{0, 0}));
}

TEST(VSDDataLists, DigitsBehindTheLastValueAreIgnored) {
  for (const std::string behind : {"12", "1", "ffffffffffffffff", "no digits", "\n"}) {
    ProfileDataList list;
    ASSERT_EQ(ReadSmall(ListElements("1", "1", "0", "1", "0", "000000000000f03f" + behind), list),
              1)
        << behind;
    EXPECT_EQ(Values(list), Bits({1.0}));
  }
}

TEST(VSDDataLists, DigitsMayBeOfUpperCaseAndWrappedOverLines) {
  ProfileDataList list;
  ASSERT_EQ(ReadSmall(ListElements("1", "2", "0", "1", "0",
                                   "\n      000000000000\n      F03F9A9999\r\n\t9999 99B93F\n    "),
                      list),
            1);
  EXPECT_EQ(Values(list), Bits({1.0, 0.1}));
}

TEST(VSDDataLists, TextsThatAreNoDigitsFail) {
  for (const std::string bad : {"zz", "000000000000f03g", "000000000000f0-1", "0x00000000000000",
                                "000000000000,f03f", "000000000000f03\xC3\xA9", "1.0", "+1"}) {
    ProfileDataList list = UsedList();
    EXPECT_EQ(ReadSmall(ListElements("1", "1", "0", "1", "2", bad), list), 0) << bad;
    EXPECT_EQ(Counters(list), (std::vector<std::int32_t>{1, 1, 0, 1, 2}));
  }
}

TEST(VSDDataLists, OfNegativeCountsReadNoValues) {
  const struct {
    const char* samples;
    const char* colors;
    std::int32_t stored;
  } rows[] = {{"-1", "3", -1},
              {"3", "-1", 3},
              {"-2", "-3", -2},
              {"-2147483648", "1", kMin},
              {"1", "-2147483648", 1},
              {"-2147483648", "-2147483648", kMin},
              {"-1", "-2147483648", -1},
              {"4294967295", "4294967295", -1}};  // 32 bits, read as a signed number
  for (const auto& row : rows) {
    const MemoryLimit limit;
    ProfileDataList list = UsedList();
    ReadSmall(ListElements("1", row.samples, "0", row.colors, "0", Repeated("11", 64)), list);
    EXPECT_EQ(list.NumOfSamples, row.stored) << "a negative count is stored";
    EXPECT_EQ(list.DataList, nullptr) << row.samples << " " << row.colors;
    const ProfileDataList copy(list);
    EXPECT_TRUE(copy == list);
  }
}

TEST(VSDDataLists, CountsThatTheTextDoesNotBearOutTakeNoMemory) {
  const struct {
    const char* samples;
    const char* colors;
  } rows[] = {{"2147483647", "1"},
              {"1", "2147483647"},
              {"2147483647", "2147483647"},
              {"65536", "65536"},
              {"46341", "46341"},
              {"536870912", "1"},
              {"536870912", "8"},
              {"1073741824", "2"},
              {"268435457", "16"},
              {"8388609", "1"},
              {"99999999999999999999", "3"},
              {"32768", "65537"},
              {"2147483647", "1073741826"}};
  for (const Place& place : Places()) {
    for (const auto& row : rows) {
      const MemoryLimit limit;
      Sidecar file(VsdText(
          place.Around(ListElements("1", row.samples, "0", row.colors, "0", Repeated("11", 64)))));
      ProfileDataList list = UsedList();
      EXPECT_EQ(place.read(file.handler, list), 0) << row.samples << " x " << row.colors;
      EXPECT_EQ(list.DataList, nullptr);
    }
  }
}

TEST(VSDDataLists, ManyValuesWithoutDigitsAreZerosUpTo64MiB) {
  ProfileDataList list;
  ASSERT_EQ(ReadSmall(ListElements("1", "2097152", "0", "4", "0", "000000000000f03f"), list), 1);
  ASSERT_NE(list.DataList, nullptr);
  EXPECT_EQ(list.DataList[0], 1.0);
  EXPECT_EQ(list.DataList[1], 0.0);
  EXPECT_EQ(list.DataList[8388607], 0.0);
  EXPECT_EQ(ReadSmall(ListElements("1", "8388609", "0", "1", "0", "000000000000f03f"), list), 0);
}

TEST(VSDDataLists, AChartOfTwoThousandSpectraSurvives) {
  ProfileDataList list;
  list.DataFormat = 0x7265666C;
  list.NumOfColors = 36;
  ASSERT_EQ(list.RefreshList(2000), 1);
  list.Measured = 2000;
  for (int i = 0; i < 2000 * 36; ++i) list.DataList[i] = 1.0 / (i + 1);
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVSDMeasurementData(1, list), 1);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  VSDProfileHandler opened(AFilePath(file.path), 1);
  ProfileDataList read;
  ASSERT_EQ(opened.ReadVSDMeasurementData(1, read), 1);
  EXPECT_TRUE(read == list);
  EXPECT_EQ(Values(read), Values(list));
  EXPECT_EQ(read.Measured, 2000);
}

TEST(VSDDataLists, AreTheSameInEveryLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.works()) << "the build makes the locale from Debian's package locales";
  const CommaThreads others;
  const std::string digits = "000000000000f83f";
  const std::string expected = Outline(VsdText(
      "<InvertedData><Medium>" + ListElements("-1", "1", "-1234567", "1", "1234567", digits) +
      "</Medium></InvertedData>"));
  for (int round = 0; round < 20; ++round) {
    Sidecar file;
    ASSERT_EQ(
        file.handler.WriteVSDInvertedData(1, MakeList(0xFFFFFFFF, 1, -1234567, 1, 1234567, {1.5})),
        1);
    ASSERT_EQ(file.SavedOutline(), expected);
    VSDProfileHandler opened(AFilePath(file.path), 1);
    ProfileDataList list;
    ASSERT_EQ(opened.ReadVSDInvertedData(1, list), 1);
    EXPECT_EQ(Counters(list), (std::vector<std::int32_t>{-1, 1, -1234567, 1, 1234567}));
    EXPECT_EQ(Values(list), Bits({1.5}));
  }
}

}  // namespace
