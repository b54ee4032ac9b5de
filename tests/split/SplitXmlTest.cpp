// A split as elements of an XML document.
#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "platform/axml/AXMLTree.h"
#include "split/SplitParam.h"
#include "support/CommaLocale.h"
#include "support/TempDir.h"
#include "support/XmlReader.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::CommaLocale;
using vkcl::testing::ReadFile;
using vkcl::testing::ReadWithPython;
using vkcl::testing::TempDir;
using vkcl::testing::XmlReaderWorks;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr int kMax = std::numeric_limits<std::int32_t>::max();
constexpr int kMin = std::numeric_limits<std::int32_t>::min();

std::string TextOf(const std::string& path) {
  const Bytes bytes = ReadFile(path);
  return {bytes.begin(), bytes.end()};
}

/// A document whose root is the caller's element.
class Document {
 public:
  Document() : tree("Split"), root(tree.GetRoot()) {}

  /// Adds what a saved set has: the attributes and the list. Texts are as they would stand there.
  AXMLTreeNode Head(const char* version, const char* count) {
    root.SetAttribute("Version", version);
    root.SetAttribute("NumofColor2Split", count);
    return root.AddChild("ListSplit", "");
  }

  AXMLTree tree;
  AXMLTreeNode root;
};

/// A set of one version 4 record.
class OneRecord {
 public:
  OneRecord() {
    SplitTypeV4 record;
    EXPECT_EQ(split.InitSplitParam(4, 1, &record), 1);
  }
  SplitTypeV4& record() { return *static_cast<SplitTypeV4*>(split.splits); }

  SplitParam split;
};

SplitTypeV2& V2(SplitParam& split, int i) { return static_cast<SplitTypeV2*>(split.splits)[i]; }
SplitTypeV3& V3(SplitParam& split, int i) { return static_cast<SplitTypeV3*>(split.splits)[i]; }
SplitTypeV4& V4(SplitParam& split, int i) { return static_cast<SplitTypeV4*>(split.splits)[i]; }

/// A curve as text, every number without loss.
std::string Points(const SplitDotInfo2* points, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    for (const float number : {points[i].input, points[i].amount, points[i].shape}) {
      std::array<char, 64> buffer = {};
      std::snprintf(buffer.data(), buffer.size(), "%.9g ", static_cast<double>(number));
      text += std::isnan(number) ? "nan " : buffer.data();
    }
    text.back() = '|';
  }
  return text;
}

/// The points that a version 4 record gets from a light curve's text.
std::string Read(const std::string& text) {
  Document document;
  document.root.AddChild("light", AString(text));
  const auto record = std::make_unique<SplitTypeV4>();
  EXPECT_EQ(record->Serialize(document.tree, document.root, 1), 1);
  EXPECT_EQ(record->mediumCount, 0);
  EXPECT_EQ(record->darkCount, 0);
  return Points(record->light, record->lightCount);
}

/// The text of a light curve of one point.
std::string Written(const SplitDotInfo2& point) {
  Document document;
  const auto record = std::make_unique<SplitTypeV4>();
  record->light[0] = point;
  record->lightCount = 1;
  EXPECT_EQ(record->Serialize(document.tree, document.root, 0), 1);
  return document.root.GetChild("light").GetValue().str();
}

/// Records of any version, with colorants 3, 1 and 2.
void FillThree(SplitParam& split, int version) {
  SplitTypeV2 v2[3];
  const auto v3 = std::make_unique<SplitTypeV3[]>(3);
  const auto v4 = std::make_unique<SplitTypeV4[]>(3);
  constexpr std::int32_t kColorants[] = {3, 1, 2};
  for (std::size_t i = 0; i < 3; ++i) {
    v2[i].colorantIndex = v3[i].colorantIndex = v4[i].colorantIndex = kColorants[i];
    v2[i].darkAmount = 0.5f;
    v3[i].lightCount = v4[i].lightCount = 1;
    v3[i].interpolation = 7;
  }
  SplitTypeBase* first = version == 2   ? static_cast<SplitTypeBase*>(v2)
                         : version == 3 ? static_cast<SplitTypeBase*>(v3.get())
                                        : static_cast<SplitTypeBase*>(v4.get());
  ASSERT_EQ(split.InitSplitParam(version, 3, first), 1);
}

// Saving.

TEST(SplitXml, SavesCurvesAsText) {
  SplitTypeV4 records[2];
  records[0].colorantIndex = 1;
  records[0].interpolation = 2;
  records[0].light[0] = {0, 0, 0};
  records[0].light[1] = {0.25f, 0.8f, 0};
  records[0].lightCount = 2;
  records[0].dark[0] = {1, -1.5f, 0.333333f};
  records[0].darkCount = 1;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(4, 2, records), 1);
  Document document;
  EXPECT_EQ(split.Serialize(document.tree, document.root, 0), 1);

  EXPECT_EQ(document.root.GetName().str(), "Split") << "the name is the caller's";
  EXPECT_EQ(document.root.GetValue().str(), "");
  EXPECT_EQ(document.root.GetAttribute("Version").str(), "4");
  EXPECT_EQ(document.root.GetAttribute("NumofColor2Split").str(), "2");
  ASSERT_EQ(document.root.GetChildCount(), 1);
  const AXMLTreeNode list = document.root.GetChild(0);
  EXPECT_EQ(list.GetName().str(), "ListSplit");
  EXPECT_EQ(list.GetValue().str(), "");
  ASSERT_EQ(list.GetChildCount(), 2);

  const AXMLTreeNode first = list.GetChild(0);
  EXPECT_EQ(first.GetName().str(), "item");
  EXPECT_EQ(first.GetValue().str(), "");
  EXPECT_EQ(first.GetAttribute("interpolation").str(), "2");
  EXPECT_EQ(first.GetAttribute("colorantIndex").str(), "1");
  ASSERT_EQ(first.GetChildCount(), 3);
  EXPECT_EQ(first.GetChild(0).GetName().str(), "light");
  EXPECT_EQ(first.GetChild(0).GetValue().str(),
            "0.000000 0.000000 0.000000;0.250000 0.800000 0.000000;");
  EXPECT_EQ(first.GetChild(1).GetName().str(), "medium");
  EXPECT_EQ(first.GetChild(1).GetValue().str(), "") << "a curve without points";
  EXPECT_EQ(first.GetChild(2).GetName().str(), "dark");
  EXPECT_EQ(first.GetChild(2).GetValue().str(), "1.000000 -1.500000 0.333333;");

  const AXMLTreeNode second = list.GetChild(1);
  EXPECT_EQ(second.GetName().str(), "item");
  EXPECT_EQ(second.GetAttribute("interpolation").str(), "0");
  EXPECT_EQ(second.GetAttribute("colorantIndex").str(), "-1");
  ASSERT_EQ(second.GetChildCount(), 3);
  for (const int i : {0, 1, 2}) EXPECT_EQ(second.GetChild(i).GetValue().str(), "");
}

TEST(SplitXml, IsTheSameForOtherReaders) {
  OneRecord one;
  one.record().colorantIndex = 0;
  one.record().medium[0] = {0.125f, 1, -0.5f};
  one.record().mediumCount = 1;
  Document document;
  AXMLTreeNode element = document.root.AddChild("Mine", "");
  ASSERT_EQ(one.split.Serialize(document.tree, element, 0), 1);
  const TempDir dir;
  const std::string path = dir.File("split.xml");
  ASSERT_EQ(document.tree.SaveToFile(AFilePath(path)), 1);
  const std::string saved = TextOf(path);
  EXPECT_NE(saved.find("\n  <Mine Version=\"4\" NumofColor2Split=\"1\">\n    <ListSplit>\n"),
            std::string::npos)
      << saved;
  EXPECT_NE(saved.find("\n        <medium>0.125000 1.000000 -0.500000;</medium>\n"),
            std::string::npos)
      << saved;
  if (!XmlReaderWorks()) GTEST_SKIP() << "python3 is not there";
  EXPECT_EQ(ReadWithPython(path),
            "Split : \"\"\n"
            "  Mine NumofColor2Split=\"1\" Version=\"4\" : \"\"\n"
            "    ListSplit : \"\"\n"
            "      item colorantIndex=\"0\" interpolation=\"0\" : \"\"\n"
            "        light : \"\"\n"
            "        medium : \"0.125000 1.000000 -0.500000;\"\n"
            "        dark : \"\"\n");
}

TEST(SplitXml, SavesOnlyTheColorantOfOlderVersions) {
  for (const int version : {2, 3}) {
    SplitParam split;
    FillThree(split, version);
    Document document;
    EXPECT_EQ(split.Serialize(document.tree, document.root, 0), 1);
    EXPECT_EQ(document.root.GetAttribute("Version").str(), std::to_string(version));
    EXPECT_EQ(document.root.GetAttribute("NumofColor2Split").str(), "3");
    const AXMLTreeNode list = document.root.GetChild("ListSplit");
    ASSERT_EQ(list.GetChildCount(), 3);
    const char* const colorants[] = {"3", "1", "2"};
    for (const int i : {0, 1, 2}) {
      EXPECT_EQ(list.GetChild(i).GetName().str(), "item");
      EXPECT_EQ(list.GetChild(i).GetAttribute("colorantIndex").str(), colorants[i]);
      EXPECT_EQ(list.GetChild(i).GetAttribute("interpolation").str(), "");
      EXPECT_EQ(list.GetChild(i).GetChildCount(), 0);
    }
  }
}

TEST(SplitXml, SavesNoCurvesOfARecordWhoseSizeIsZero) {
  OneRecord one;
  one.record().size = 0;
  one.record().colorantIndex = 2;
  one.record().interpolation = 5;
  one.record().lightCount = 3;
  Document document;
  EXPECT_EQ(one.split.Serialize(document.tree, document.root, 0), 1);
  const AXMLTreeNode item = document.root.GetChild("ListSplit").GetChild(0);
  ASSERT_TRUE(item);
  EXPECT_EQ(item.GetAttribute("interpolation").str(), "5");
  EXPECT_EQ(item.GetAttribute("colorantIndex").str(), "2");
  EXPECT_EQ(item.GetChildCount(), 0);
}

TEST(SplitXml, AnyOtherSizeFieldIsNoMatter) {
  for (const std::uint32_t size : {1u, 76u, 0xFFFFFFFFu}) {
    OneRecord one;
    one.record().size = size;
    Document document;
    EXPECT_EQ(one.split.Serialize(document.tree, document.root, 0), 1);
    EXPECT_EQ(document.root.GetChild("ListSplit").GetChild(0).GetChildCount(), 3);
  }
}

TEST(SplitXml, SavesAnEmptySet) {
  for (const int version : {2, 3, 4}) {
    SplitParam split;
    split.version = version;
    Document document;
    EXPECT_EQ(split.Serialize(document.tree, document.root, 0), 1);
    EXPECT_EQ(document.root.GetAttribute("Version").str(), std::to_string(version));
    EXPECT_EQ(document.root.GetAttribute("NumofColor2Split").str(), "0");
    ASSERT_TRUE(document.root.GetChild("ListSplit"));
    EXPECT_EQ(document.root.GetChild("ListSplit").GetChildCount(), 0);
  }
}

TEST(SplitXml, SavingAnUnknownVersionFailsAtItsFirstRecord) {
  for (const int version : {5, 1, 0, -1, kMax, kMin}) {
    SplitTypeV4 foreign[2];
    SplitParam split;
    split.version = version;
    split.count = 2;
    split.splits = foreign;
    Document document;
    EXPECT_EQ(split.Serialize(document.tree, document.root, 0), 0) << version;
    // What was saved up to there stays.
    EXPECT_EQ(document.root.GetAttribute("Version").str(), std::to_string(version));
    EXPECT_EQ(document.root.GetAttribute("NumofColor2Split").str(), "2");
    const AXMLTreeNode list = document.root.GetChild("ListSplit");
    EXPECT_TRUE(list);
    EXPECT_EQ(list.GetChildCount(), 1);
    EXPECT_EQ(list.GetChild(0).GetName().str(), "item");
    EXPECT_EQ(list.GetChild(0).GetAttribute("colorantIndex").str(), "");
    EXPECT_EQ(list.GetChild(0).GetChildCount(), 0);
  }
}

TEST(SplitXml, SavingAnUnknownVersionFailsWithoutRecords) {
  for (const int version : {5, 1, 0, -1}) {
    SplitParam split;
    split.version = version;
    Document document;
    EXPECT_EQ(split.Serialize(document.tree, document.root, 0), 0) << version;
    EXPECT_EQ(document.root.GetAttribute("NumofColor2Split").str(), "0");
  }
}

TEST(SplitXml, SavesNumbersOfEverySize) {
  for (const int number : {0, 1, -1, 255, kMax, kMin}) {
    OneRecord one;
    one.record().colorantIndex = number;
    one.record().interpolation = number;
    Document document;
    ASSERT_EQ(one.split.Serialize(document.tree, document.root, 0), 1);
    const AXMLTreeNode item = document.root.GetChild("ListSplit").GetChild(0);
    EXPECT_EQ(item.GetAttribute("colorantIndex").str(), std::to_string(number));
    EXPECT_EQ(item.GetAttribute("interpolation").str(), std::to_string(number));
    SplitParam loaded;
    ASSERT_EQ(loaded.Serialize(document.tree, document.root, 1), 1);
    EXPECT_EQ(V4(loaded, 0).colorantIndex, number);
    EXPECT_EQ(V4(loaded, 0).interpolation, number);
  }
}

TEST(SplitXml, SavesSixDecimals) {
  EXPECT_EQ(Written({0, 0, 0}), "0.000000 0.000000 0.000000;");
  EXPECT_EQ(Written({0.25f, 0.8f, 0}), "0.250000 0.800000 0.000000;");
  EXPECT_EQ(Written({1.0f / 3, 2.0f / 3, -1.0f / 3}), "0.333333 0.666667 -0.333333;");
  EXPECT_EQ(Written({0.0000005f, 0.0000004f, 0.0000015f}), "0.000000 0.000000 0.000002;")
      << "the float next to 5e-7 is below it, that next to 1.5e-6 above";
  EXPECT_EQ(Written({123456.789f, -1e6f, 16777216}),
            "123456.789062 -1000000.000000 16777216.000000;");
  EXPECT_EQ(Written({-0.0f, 1e-7f, -1e-7f}), "-0.000000 0.000000 -0.000000;");
}

TEST(SplitXml, SavesExtremeNumbers) {
  EXPECT_EQ(Written({kInfinity, -kInfinity, kNaN}), "inf -inf nan;");
  EXPECT_EQ(Written({std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest(),
                     std::numeric_limits<float>::denorm_min()}),
            "340282346638528859811704183484516925440.000000 "
            "-340282346638528859811704183484516925440.000000 0.000000;");
}

TEST(SplitXml, SavesOnlyThePointsThatACurveHas) {
  OneRecord one;
  for (int i = 0; i < 256; ++i) one.record().light[i] = {1, 2, 3};
  for (const auto& [count, saved] : {std::pair{0, 0},
                                     {1, 1},
                                     {255, 255},
                                     {256, 256},
                                     // There is no room for others.
                                     {257, 256},
                                     {kMax, 256},
                                     {-1, 0},
                                     {kMin, 0}}) {
    one.record().lightCount = count;
    Document document;
    EXPECT_EQ(one.split.Serialize(document.tree, document.root, 0), 1);
    std::string expected;
    for (int i = 0; i < saved; ++i) expected += "1.000000 2.000000 3.000000;";
    const AXMLTreeNode item = document.root.GetChild("ListSplit").GetChild(0);
    EXPECT_EQ(item.GetChild("light").GetValue().str(), expected) << count;
    EXPECT_EQ(item.GetChild("medium").GetValue().str(), "");
  }
}

TEST(SplitXml, OfNoElementIsNotSaved) {
  SplitParam split;
  FillThree(split, 4);
  Document document;
  AXMLTreeNode nothing;
  EXPECT_EQ(split.Serialize(document.tree, nothing, 0), 0);
  EXPECT_EQ(document.root.GetChildCount(), 0);
}

TEST(SplitXml, OfAnyNumberOfRecordsIsSavedAndLoaded) {
  for (const int count : {1024, 1025, 2000}) {
    std::vector<SplitTypeV2> records(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) records[static_cast<std::size_t>(i)].colorantIndex = i + 7;
    SplitParam split;
    ASSERT_EQ(split.InitSplitParam(2, count, records.data()), 1);
    Document document;
    EXPECT_EQ(split.Serialize(document.tree, document.root, 0), 1);
    SplitParam loaded;
    EXPECT_EQ(loaded.Serialize(document.tree, document.root, 1), 1);
    EXPECT_EQ(loaded.count, count);
    EXPECT_EQ(loaded.size, 20 + 76 * count);
    ASSERT_NE(loaded.splits, nullptr);
    EXPECT_EQ(static_cast<SplitTypeV2*>(loaded.splits)[count - 1].colorantIndex, count + 6);
  }
}

TEST(SplitXml, OfASetWithoutItsRecordsIsNotSaved) {
  for (const int count : {1, 2, 1000}) {
    SplitParam split;
    split.count = count;
    Document document;
    EXPECT_EQ(split.Serialize(document.tree, document.root, 0), 0);
    EXPECT_EQ(document.root.GetChild("ListSplit").GetChildCount(), 0);
  }
  SplitParam none;
  Document document;
  EXPECT_EQ(none.Serialize(document.tree, document.root, 0), 1);
}

TEST(SplitXml, OfASetWithoutItsRecordsEndsWell) {
  SplitParam split;
  split.count = 3;
  Document document;
  const int result = split.Serialize(document.tree, document.root, 0);
  EXPECT_TRUE(result == 0 || result == 1);
  SplitParam loaded;
  EXPECT_EQ(loaded.Serialize(document.tree, document.root, 1), 1);
}

// Loading.

TEST(SplitXml, LoadsWhatWasSaved) {
  SplitParam split;
  FillThree(split, 4);
  V4(split, 1).interpolation = -3;
  V4(split, 1).medium[0] = {0.25f, 0.5f, -0.125f};
  V4(split, 1).medium[1] = {0.75f, 1, 2};
  V4(split, 1).mediumCount = 2;
  V4(split, 2).dark[0] = {1, 1, 0};
  V4(split, 2).darkCount = 1;
  Document document;
  ASSERT_EQ(split.Serialize(document.tree, document.root, 0), 1);
  const TempDir dir;
  ASSERT_EQ(document.tree.SaveToFile(AFilePath(dir.File("f"))), 1);
  AXMLTree tree("Other");
  ASSERT_EQ(tree.LoadFromFile(AFilePath(dir.File("f")), 0), 1);
  AXMLTreeNode root = tree.GetRoot();
  for (const int load : {1, 2, -1}) {
    SplitParam loaded;
    EXPECT_EQ(loaded.Serialize(tree, root, load), 1) << load;
    EXPECT_EQ(loaded.version, 4);
    EXPECT_EQ(loaded.count, 3);
    EXPECT_EQ(loaded.size, 20 + 3 * 9240);
    ASSERT_NE(loaded.splits, nullptr);
    EXPECT_EQ(
        std::memcmp(static_cast<void*>(loaded.splits), static_cast<void*>(split.splits), 3 * 9240),
        0);
  }
  Document again;
  SplitParam loaded;
  ASSERT_EQ(loaded.Serialize(tree, root, 1), 1);
  ASSERT_EQ(loaded.Serialize(again.tree, again.root, 0), 1);
  ASSERT_EQ(again.tree.SaveToFile(AFilePath(dir.File("g"))), 1);
  EXPECT_EQ(TextOf(dir.File("g")), TextOf(dir.File("f")));
}

TEST(SplitXml, LoadsTheColorantsOfVersionTwoAndDefaultsForAllElse) {
  SplitParam split;
  FillThree(split, 2);
  Document document;
  ASSERT_EQ(split.Serialize(document.tree, document.root, 0), 1);
  SplitParam loaded;
  ASSERT_EQ(loaded.Serialize(document.tree, document.root, 1), 1);
  EXPECT_EQ(loaded.version, 2);
  EXPECT_EQ(loaded.count, 3);
  EXPECT_EQ(loaded.size, 20 + 3 * 76);
  for (const int i : {0, 1, 2}) {
    SplitTypeV2 expected;
    expected.colorantIndex = V2(split, i).colorantIndex;
    EXPECT_EQ(std::memcmp(static_cast<void*>(&V2(loaded, i)), static_cast<void*>(&expected), 76), 0)
        << i;
    EXPECT_EQ(V2(loaded, i).darkAmount, -1.0f);
  }
}

TEST(SplitXml, LoadsTheColorantsOfVersionThreeAndDefaultsForAllElse) {
  SplitParam split;
  FillThree(split, 3);
  Document document;
  ASSERT_EQ(split.Serialize(document.tree, document.root, 0), 1);
  // Nothing else is read, though it stands there.
  AXMLTreeNode item = document.root.GetChild("ListSplit").GetChild(0);
  item.SetAttribute("interpolation", "5");
  item.AddChild("light", "1 2 3;");
  SplitParam loaded;
  ASSERT_EQ(loaded.Serialize(document.tree, document.root, 1), 1);
  EXPECT_EQ(loaded.version, 3);
  EXPECT_EQ(loaded.size, 20 + 3 * 6168);
  for (const int i : {0, 1, 2}) {
    EXPECT_EQ(V3(loaded, i).size, 6168u);
    EXPECT_EQ(V3(loaded, i).colorantIndex, V3(split, i).colorantIndex);
    EXPECT_EQ(V3(loaded, i).lightCount, 0);
    EXPECT_EQ(V3(loaded, i).interpolation, 0);
  }
}

TEST(SplitXml, LoadingReplacesWhatASetHeld) {
  for (const int before : {2, 3, 4}) {
    for (const int after : {2, 3, 4}) {
      SplitParam saved;
      FillThree(saved, after);
      Document document;
      ASSERT_EQ(saved.Serialize(document.tree, document.root, 0), 1);
      SplitParam loaded;
      FillThree(loaded, before);
      EXPECT_EQ(loaded.Serialize(document.tree, document.root, 1), 1);
      EXPECT_EQ(loaded.version, after);
      EXPECT_EQ(loaded.count, 3);
    }
  }
}

TEST(SplitXml, LoadingAnUnknownVersionFailsAndLeavesNoRecords) {
  for (const char* version : {"5", "1", "0", "-4", "", "abc", "0x4", "IV", "44", "2147483652",
                              "4294967300", "-2147483644", ".4", "- 4"}) {
    Document document;
    document.Head(version, "1").AddChild("item", "");
    for (const int before : {0, 2, 4}) {
      SplitParam split;
      if (before != 0) FillThree(split, before);
      EXPECT_EQ(split.Serialize(document.tree, document.root, 1), 0) << version;
      EXPECT_EQ(split.splits, nullptr);
    }
  }
}

TEST(SplitXml, LoadingWithoutAVersionFails) {
  Document document;
  SplitParam split;
  FillThree(split, 4);
  EXPECT_EQ(split.Serialize(document.tree, document.root, 1), 0);
  EXPECT_EQ(split.splits, nullptr);
  FillThree(split, 2);
  AXMLTreeNode nothing;
  EXPECT_EQ(split.Serialize(document.tree, nothing, 1), 0);
  EXPECT_EQ(split.splits, nullptr);
}

TEST(SplitXml, ReadsTheDecimalNumberAtTheFrontOfAnAttribute) {
  const std::pair<const char*, int> cases[] = {{"4", 4},  {" 4", 4},  {"\t\n4", 4}, {"+4", 4},
                                               {"4x", 4}, {"4 5", 4}, {"4.9", 4},   {"004", 4}};
  for (const auto& [text, version] : cases) {
    Document document;
    AXMLTreeNode item = document.Head(text, "1").AddChild("item", "");
    item.SetAttribute("colorantIndex", text);
    item.SetAttribute("interpolation", text);
    SplitParam split;
    ASSERT_EQ(split.Serialize(document.tree, document.root, 1), 1) << text;
    EXPECT_EQ(split.version, version);
    EXPECT_EQ(V4(split, 0).colorantIndex, 4);
    EXPECT_EQ(V4(split, 0).interpolation, 4);
  }
}

TEST(SplitXml, ReadsMissingAndOtherAttributesAsZero) {
  for (const char* text : {"", "x", "-", " ", "0x7", ",5"}) {
    Document document;
    AXMLTreeNode list = document.Head("4", "2");
    list.AddChild("item", "");
    AXMLTreeNode other = list.AddChild("item", "");
    other.SetAttribute("colorantIndex", text);
    other.SetAttribute("interpolation", text);
    SplitParam split;
    ASSERT_EQ(split.Serialize(document.tree, document.root, 1), 1);
    for (const int i : {0, 1}) {
      EXPECT_EQ(V4(split, i).colorantIndex, 0) << "not the default of -1";
      EXPECT_EQ(V4(split, i).interpolation, 0);
    }
  }
  for (const char* version : {"2", "3"}) {
    Document document;
    document.Head(version, "1").AddChild("item", "");
    SplitParam split;
    ASSERT_EQ(split.Serialize(document.tree, document.root, 1), 1);
    EXPECT_EQ(split.splits->colorantIndex, 0);
  }
}

TEST(SplitXml, WithoutACountIsEmpty) {
  for (const char* version : {"2", "3", "4"}) {
    for (const char* count : {"", "0", "x", "-0"}) {
      Document document;
      document.Head(version, count).AddChild("item", "");
      SplitParam split;
      FillThree(split, 4);
      EXPECT_EQ(split.Serialize(document.tree, document.root, 1), 1);
      EXPECT_EQ(split.version, version[0] - '0');
      EXPECT_EQ(split.count, 0);
      EXPECT_EQ(split.size, 20);
    }
  }
}

TEST(SplitXml, RecordsWithoutAnElementKeepTheirDefaults) {
  for (const char* version : {"2", "3", "4"}) {
    Document document;
    AXMLTreeNode item = document.Head(version, "3").AddChild("item", "");
    item.SetAttribute("colorantIndex", "2");
    SplitParam split;
    ASSERT_EQ(split.Serialize(document.tree, document.root, 1), 1);
    EXPECT_EQ(split.count, 3);
    const std::size_t size = SplitParam::RecordSize(version[0] - '0');
    EXPECT_EQ(split.size, static_cast<int>(20 + 3 * size));
    EXPECT_EQ(split.splits->colorantIndex, 2);
    for (const std::size_t i : {1u, 2u}) {
      const char* record = reinterpret_cast<const char*>(split.splits) + i * size;
      std::int32_t colorant = 0;
      std::memcpy(&colorant, record + 4, sizeof colorant);
      EXPECT_EQ(colorant, -1) << "the default, not a missing attribute";
    }
  }
}

TEST(SplitXml, WithoutTheListKeepsDefaults) {
  for (const char* version : {"2", "3", "4"}) {
    Document document;
    document.root.SetAttribute("Version", version);
    document.root.SetAttribute("NumofColor2Split", "2");
    AXMLTreeNode other = document.root.AddChild("listsplit", "");
    other.AddChild("item", "").SetAttribute("colorantIndex", "2");
    SplitParam split;
    ASSERT_EQ(split.Serialize(document.tree, document.root, 1), 1);
    EXPECT_EQ(split.count, 2);
    EXPECT_EQ(split.splits->colorantIndex, -1);
  }
}

TEST(SplitXml, TakesElementsByTheirPlaceWhateverTheirName) {
  const TempDir dir;
  const std::string document =
      "<s NumofColor2Split='3' Version='4'><before/><ListSplit>x<!-- item --><thing "
      "colorantIndex='7'/><?item colorantIndex='1'?><item colorantIndex='8'/>\n<ITEM "
      "colorantIndex='9'><dark>1 2 3;</dark><light>4 5 6;</light><light>7 8 9;</light></ITEM><item "
      "colorantIndex='10'/></ListSplit><ListSplit><item/></ListSplit></s>";
  const std::string path = dir.Write("f", Bytes(document.begin(), document.end()));
  AXMLTree tree("Other");
  ASSERT_EQ(tree.LoadFromFile(AFilePath(path), 0), 1);
  AXMLTreeNode root = tree.GetRoot();
  SplitParam split;
  ASSERT_EQ(split.Serialize(tree, root, 1), 1);
  EXPECT_EQ(split.count, 3) << "what lies behind the count is nobody's";
  EXPECT_EQ(V4(split, 0).colorantIndex, 7);
  EXPECT_EQ(V4(split, 1).colorantIndex, 8);
  EXPECT_EQ(V4(split, 2).colorantIndex, 9);
  EXPECT_EQ(Points(V4(split, 2).light, V4(split, 2).lightCount), "4 5 6|") << "the first of a name";
  EXPECT_EQ(Points(V4(split, 2).dark, V4(split, 2).darkCount), "1 2 3|");
}

TEST(SplitXml, RefusesCountsOutOfRange) {
  for (const char* version : {"2", "3", "4"}) {
    for (const char* count : {"-1", "-1024", "1025", "2147483647", "-2147483648", "99999999999999",
                              "4294967295", "4294967296"}) {
      Document document;
      AXMLTreeNode list = document.Head(version, count);
      for (int i = 0; i < 3; ++i) list.AddChild("item", "");
      SplitParam split;
      FillThree(split, 4);
      EXPECT_EQ(split.Serialize(document.tree, document.root, 1), 0) << count;
      EXPECT_EQ(split.splits, nullptr);
      Document bare;
      bare.root.SetAttribute("Version", version);
      bare.root.SetAttribute("NumofColor2Split", count);
      EXPECT_EQ(split.Serialize(bare.tree, bare.root, 1), 0) << count;
    }
  }
}

TEST(SplitXml, RecordsWithoutAnElementAreTakenUpTo1024) {
  Document document;
  document.Head("4", "1024").AddChild("item", "").SetAttribute("colorantIndex", "3");
  SplitParam split;
  ASSERT_EQ(split.Serialize(document.tree, document.root, 1), 1);
  EXPECT_EQ(split.count, 1024);
  EXPECT_EQ(split.size, 20 + 1024 * 9240);
  EXPECT_EQ(V4(split, 0).colorantIndex, 3);
  EXPECT_EQ(V4(split, 1023).colorantIndex, -1);

  // Above, only where each has its element.
  document.root.SetAttribute("NumofColor2Split", "1025");
  AXMLTreeNode list = document.root.GetChild("ListSplit");
  for (int i = 1; i < 1024; ++i) list.AddChild("item", "");
  EXPECT_EQ(split.Serialize(document.tree, document.root, 1), 0);
  EXPECT_EQ(split.splits, nullptr);
  list.AddChild("other", "").SetAttribute("colorantIndex", "5");
  EXPECT_EQ(split.Serialize(document.tree, document.root, 1), 1);
  EXPECT_EQ(split.count, 1025);
  EXPECT_EQ(V4(split, 1024).colorantIndex, 5);
}

// One record.

TEST(SplitXml, ARecordForgetsWhatItHeldWhenLoaded) {
  const auto record = std::make_unique<SplitTypeV4>();
  record->lightCount = record->mediumCount = record->darkCount = 9;
  record->interpolation = 9;
  record->colorantIndex = 9;
  Document document;
  EXPECT_EQ(record->Serialize(document.tree, document.root, 1), 1);
  EXPECT_EQ(record->lightCount, 0);
  EXPECT_EQ(record->mediumCount, 0);
  EXPECT_EQ(record->darkCount, 0);
  EXPECT_EQ(record->interpolation, 0);
  EXPECT_EQ(record->colorantIndex, 0);
  EXPECT_EQ(document.root.GetChildCount(), 0) << "loading changes no document";
}

TEST(SplitXml, ARecordLoadsEachCurveFromTheElementOfItsName) {
  Document document;
  document.root.AddChild("dark", "5 5 5;6 6 6;");
  document.root.AddChild("Light", "9 9 9;");
  document.root.AddChild("medium", "3 3 3;4 4 4;7 7 7;");
  document.root.AddChild("light", "1 1 1;");
  document.root.AddChild("light", "8 8 8;8 8 8;");
  document.root.SetAttribute("interpolation", "6");
  document.root.SetAttribute("colorantIndex", "2");
  const auto record = std::make_unique<SplitTypeV4>();
  record->size = 0;  // of no matter here
  EXPECT_EQ(record->Serialize(document.tree, document.root, 1), 1);
  EXPECT_EQ(Points(record->light, record->lightCount), "1 1 1|");
  EXPECT_EQ(Points(record->medium, record->mediumCount), "3 3 3|4 4 4|7 7 7|");
  EXPECT_EQ(Points(record->dark, record->darkCount), "5 5 5|6 6 6|");
  EXPECT_EQ(record->interpolation, 6);
  EXPECT_EQ(record->colorantIndex, 2);
}

TEST(SplitXml, TheHeadOfARecordIsItsColorant) {
  for (const int colorant : {0, -1, 7, kMax, kMin}) {
    SplitTypeBase head;
    head.colorantIndex = colorant;
    Document document;
    EXPECT_EQ(head.Serialize(document.tree, document.root, 0), 1);
    EXPECT_EQ(document.root.GetAttribute("colorantIndex").str(), std::to_string(colorant));
    EXPECT_EQ(document.root.GetChildCount(), 0);
    SplitTypeBase loaded;
    EXPECT_EQ(loaded.Serialize(document.tree, document.root, 1), 1);
    EXPECT_EQ(loaded.colorantIndex, colorant);
    EXPECT_EQ(loaded.size, 0u);
  }
  SplitTypeBase head;
  Document document;
  EXPECT_EQ(head.Serialize(document.tree, document.root, 1), 1);
  EXPECT_EQ(head.colorantIndex, 0);
}

// The text of a curve.

TEST(SplitXml, ReadsThePointsOfACurve) {
  EXPECT_EQ(Read("0.000000 0.000000 0.000000;0.250000 0.800000 0.000000;"),
            "0 0 0|0.25 0.800000012 0|");
  EXPECT_EQ(Read("1 2 3;4 5 6;7 8 9;"), "1 2 3|4 5 6|7 8 9|");
  EXPECT_EQ(Read("-1 +2 .5;1e1 2E-1 5.;"), "-1 2 0.5|10 0.200000003 5|");
}

TEST(SplitXml, ReadsALastPointThatLacksItsSemicolon) {
  EXPECT_EQ(Read("1 2 3"), "1 2 3|");
  EXPECT_EQ(Read("1 2 3;4 5 6"), "1 2 3|4 5 6|");
  EXPECT_EQ(Read("0.5 0.25 0.125;1.000000 1.000000 0.000000"), "0.5 0.25 0.125|1 1 0|");
}

TEST(SplitXml, ThreeCharactersOrFewerAreNoPoint) {
  for (const char* text : {"", " ", ";", "1", "12", "123", "1 2", "1;2", ";;;", "   "}) {
    EXPECT_EQ(Read(text), "") << text;
    EXPECT_EQ(Read(std::string("1 2 3;") + text), "1 2 3|") << text;
  }
}

TEST(SplitXml, EndsAtThePointThatHasFewerThanThreeNumbers) {
  for (const char* text :
       {"1 2;4 5 6;", "1;4 5 6;", ";4 5 6;", ";;;;;;", "x 5 6;7 8 9;", "1 x 3;7 8 9;",
        "1 2 x;7 8 9;", "1,5 2 3;7 8 9;", "1 2, 3;7 8 9;", "    ", "1e 2 3;", "1 2e+ 3;7 8 9;",
        "- 1 2;7 8 9;", "+ 1 2;", "1 - 2;", "ABC DEF GHI;", "1 2 ;3;", "1 2 &;", "1 2     "}) {
    EXPECT_EQ(Read(text), "") << text;
    EXPECT_EQ(Read(std::string("4 5 6;") + text), "4 5 6|") << text;
  }
}

TEST(SplitXml, GoesOnBehindTheNextSemicolon) {
  EXPECT_EQ(Read("1 2 3 4;5 6 7;"), "1 2 3|5 6 7|");
  EXPECT_EQ(Read("1 2 3 junk;5 6 7;"), "1 2 3|5 6 7|");
  EXPECT_EQ(Read("1 2 3,5;5 6 7;"), "1 2 3|5 6 7|") << "the comma ends a number";
  EXPECT_EQ(Read("1 2 3.5.5;5 6 7;"), "1 2 3.5|5 6 7|");
  EXPECT_EQ(Read("1 2 3x5 6 7"), "1 2 3|");
  EXPECT_EQ(Read("1 2 3;;5 6 7;"), "1 2 3|") << "an empty point is none";
}

TEST(SplitXml, TakesAnyWhiteSpaceBetweenNumbersAndNone) {
  EXPECT_EQ(Read("  1\t2\n3  ;\n  4 5 6 ;\n"), "1 2 3|4 5 6|");
  EXPECT_EQ(Read("\n\t1\v2\f3;"), "1 2 3|");
  EXPECT_EQ(Read("1\r2\r\n3;"), "1 2 3|");
  EXPECT_EQ(Read("1-2-3;"), "1 -2 -3|");
  EXPECT_EQ(Read("1+2+3;4-5 6;"), "1 2 3|4 -5 6|");
  EXPECT_EQ(Read("1.5.5.25;"), "1.5 0.5 0.25|");
  EXPECT_EQ(Read("1\xC2\xA0"
                 "2 3;"),
            "")
      << "a blank of Unicode is none";
}

TEST(SplitXml, ReadsExtremeNumbers) {
  EXPECT_EQ(Read("inf -inf nan;"), "inf -inf nan|");
  EXPECT_EQ(Read("INF Infinity NAN;1 2 3;"), "inf inf nan|1 2 3|");
  EXPECT_EQ(Read("340282346638528859811704183484516925440.000000 -3.4028235e38 1e39;"),
            "3.40282347e+38 -3.40282347e+38 inf|");
  EXPECT_EQ(Read("1.4e-45 1e-40 1e-60;"), "1.40129846e-45 9.9999461e-41 0|");
  EXPECT_EQ(Read("-0.000000 0 0;"), "-0 0 0|");
  EXPECT_EQ(Read("0x1p3 0X10 0x.8;"), "8 16 0.5|");
  EXPECT_EQ(Read("00000000000000000000000001 1e0 1e-0;"), "1 1 1|");
}

TEST(SplitXml, EndsACurveAt256Points) {
  for (const int count : {255, 256, 257, 300, 20000}) {
    std::string text;
    for (int i = 0; i < count; ++i) text += std::to_string(i) + " 1 2;";
    Document document;
    document.root.AddChild("light", AString(text));
    document.root.AddChild("medium", AString(text));
    document.root.AddChild("dark", AString(text));
    document.root.SetAttribute("interpolation", "6");
    const auto record = std::make_unique<SplitTypeV4>();
    EXPECT_EQ(record->Serialize(document.tree, document.root, 1), 1);
    const int kept = std::min(count, 256);
    EXPECT_EQ(record->lightCount, kept);
    EXPECT_EQ(record->mediumCount, kept);
    EXPECT_EQ(record->darkCount, kept);
    EXPECT_EQ(record->interpolation, 6);
    EXPECT_EQ(record->dark[0].input, 0.0f);
    EXPECT_EQ(record->dark[kept - 1].input, static_cast<float>(kept - 1));
    EXPECT_EQ(record->dark[kept - 1].shape, 2.0f);
  }
}

TEST(SplitXml, EndsDamagedTextAtItsLastGoodPoint) {
  // Cut at every character: the points before the cut stay, a cut number may be shorter.
  const std::string text = "0.125000 0.250000 0.500000;1.000000 2.000000 4.000000;";
  for (std::size_t length = 0; length <= text.size(); ++length) {
    const std::string points = Read(text.substr(0, length));
    const bool first = length > 18;
    const bool second = length > 45;
    EXPECT_EQ(std::count(points.begin(), points.end(), '|'), first + second) << length;
    if (length >= 27) {
      EXPECT_EQ(points.substr(0, 15), "0.125 0.25 0.5|") << length;
    }
  }
  // A letter at every place.
  for (std::size_t at = 0; at < text.size(); ++at) {
    std::string damaged = text;
    damaged[at] = 'x';
    const std::string points = Read(damaged);
    if (at > 26) {
      EXPECT_EQ(points.substr(0, 15), "0.125 0.25 0.5|") << damaged;
    }
    EXPECT_LE(std::count(points.begin(), points.end(), '|'), 2) << damaged;
  }
}

TEST(SplitXml, TextKeepsWhatSixDecimalsHold) {
  const auto record = std::make_unique<SplitTypeV4>();
  for (int i = 0; i < 256; ++i) {
    const auto f = static_cast<float>(i);
    record->light[i] = {f / 255, f / 7919, -f * 0.001953125f};
    record->medium[i] = {f * 1e-6f, f * 65536, f * 1e-3f};
  }
  record->lightCount = record->mediumCount = 256;
  Document document;
  ASSERT_EQ(record->Serialize(document.tree, document.root, 0), 1);
  const auto loaded = std::make_unique<SplitTypeV4>();
  ASSERT_EQ(loaded->Serialize(document.tree, document.root, 1), 1);
  ASSERT_EQ(loaded->lightCount, 256);
  const auto nearest = [](float number) {
    return static_cast<float>(std::nearbyint(static_cast<double>(number) * 1e6) / 1e6);
  };
  for (int i = 0; i < 256; ++i) {
    EXPECT_EQ(loaded->light[i].input, nearest(record->light[i].input)) << i;
    EXPECT_EQ(loaded->light[i].amount, nearest(record->light[i].amount)) << i;
    EXPECT_EQ(loaded->light[i].shape, nearest(record->light[i].shape)) << i;
    EXPECT_EQ(loaded->medium[i].input, nearest(record->medium[i].input)) << i;
    EXPECT_EQ(loaded->medium[i].amount, record->medium[i].amount) << "whole numbers";
  }
  // A second time nothing is lost.
  Document again;
  ASSERT_EQ(loaded->Serialize(again.tree, again.root, 0), 1);
  for (const char* name : {"light", "medium", "dark"}) {
    EXPECT_EQ(again.root.GetChild(name).GetValue().str(),
              document.root.GetChild(name).GetValue().str());
  }
}

// The locale.

TEST(SplitXml, HasAPointWhateverTheLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.works()) << "the build makes the locale from Debian's package locales";
  EXPECT_EQ(Written({0.25f, 1.5f, -0.125f}), "0.250000 1.500000 -0.125000;");
  Document document;
  document.root.AddChild("light", "0.25 1.5 -0.125;1,5 2,5 3,5;");
  const auto record = std::make_unique<SplitTypeV4>();
  ASSERT_EQ(record->Serialize(document.tree, document.root, 1), 1);
  ASSERT_EQ(record->lightCount, 1);
  EXPECT_EQ(record->light[0].input, 0.25f);
  EXPECT_EQ(record->light[0].amount, 1.5f);
  EXPECT_EQ(record->light[0].shape, -0.125f);
  SplitParam split;
  FillThree(split, 4);
  EXPECT_EQ(split.Serialize(document.tree, document.root, 0), 1);
  EXPECT_EQ(split.Serialize(document.tree, document.root, 1), 1);
  split.version = 5;
  SplitTypeBase* const records = split.splits;
  EXPECT_EQ(split.Serialize(document.tree, document.root, 0), 0);
  split.version = 4;
  EXPECT_EQ(split.splits, records);
  std::array<char, 32> buffer = {};
  std::snprintf(buffer.data(), buffer.size(), "%.2f", 1.5);
  EXPECT_STREQ(buffer.data(), "1,50") << "the host's own numbers, after a failure, too";
}

TEST(SplitXml, LeavesTheLocaleOfOtherThreads) {
  std::atomic<bool> done = false;
  std::atomic<int> wrong = 0;
  std::atomic<int> printed = 0;
  std::vector<std::thread> others;
  for (int i = 0; i < 2; ++i) {
    others.emplace_back([&] {
      const CommaLocale comma;
      if (!comma.works()) ++wrong;
      while (!done || printed < 100) {
        std::array<char, 32> buffer = {};
        std::snprintf(buffer.data(), buffer.size(), "%.3f", 0.125);
        wrong += std::strcmp(buffer.data(), "0,125") != 0;
        wrong += std::strtod("2,5", nullptr) != 2.5;
        ++printed;
      }
    });
  }
  const CommaLocale comma;
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(Written({0.25f, 1.5f, -0.125f}), "0.250000 1.500000 -0.125000;");
    Document document;
    document.root.AddChild("dark", "0.5 0.25 0.125;");
    const auto record = std::make_unique<SplitTypeV4>();
    ASSERT_EQ(record->Serialize(document.tree, document.root, 1), 1);
    ASSERT_EQ(record->darkCount, 1);
    ASSERT_EQ(record->dark[0].shape, 0.125f);
  }
  done = true;
  for (std::thread& other : others) other.join();
  EXPECT_EQ(wrong, 0) << "of " << printed;
}

}  // namespace
