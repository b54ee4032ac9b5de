// The steps in which a split is saved as XML and loaded again: what stands in which order, which
// way a call goes, and what is left of what a record or a set held before.
#include <gtest/gtest.h>

#include <climits>
#include <memory>

#include "platform/axml/AXMLTree.h"
#include "split/SplitParam.h"
#include "support/Allocations.h"
#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

/// A document whose root is the caller's element.
struct CallersElement {
  AXMLTree tree{AString("Split")};
  AXMLTreeNode root = tree.GetRoot();
};

/// A record of version 4 with two points in each curve.
std::unique_ptr<SplitTypeV4> RecordWithCurves() {
  auto record = std::make_unique<SplitTypeV4>();
  record->colorantIndex = 7;
  record->interpolation = 3;
  for (auto* points : {record->light, record->medium, record->dark}) {
    points[0] = {0.25f, 0.5f, 0};
    points[1] = {1, 1, 0.125f};
  }
  record->lightCount = record->mediumCount = record->darkCount = 2;
  return record;
}
constexpr char kCurve[] = "0.250000 0.500000 0.000000;1.000000 1.000000 0.125000;";

SplitTypeBase& RecordAt(const SplitParam& split, int i) {
  if (split.version == 2) return static_cast<SplitTypeV2*>(split.splits)[i];
  if (split.version == 3) return static_cast<SplitTypeV3*>(split.splits)[i];
  return static_cast<SplitTypeV4*>(split.splits)[i];
}

/// A set of records that hold nothing but their colorants, counted from `first`.
void FillWithDefaults(SplitParam& split, int version, int count, int first) {
  SplitTypeBase* records = SplitParam::NewRecords(version, count);
  ASSERT_EQ(split.InitSplitParam(version, count, records), 1);
  SplitParam::DeleteRecords(version, records);
  for (int i = 0; i < count; ++i) RecordAt(split, i).colorantIndex = first + i;
}

/// How many numbers of a curve's points are not 0, from the given place on.
int NumbersFrom(int from, const SplitDotInfo2* points) {
  int numbers = 0;
  for (int i = from; i < 256; ++i) {
    numbers += points[i].input != 0.0f;
    numbers += points[i].amount != 0.0f;
    numbers += points[i].shape != 0.0f;
  }
  return numbers;
}

// Saving.

TEST(SplitXmlSteps, AnItemHasItsInterpolationBeforeItsColorant) {
  const auto record = RecordWithCurves();
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(4, 1, record.get()), 1);
  CallersElement element;
  ASSERT_EQ(split.Serialize(element.tree, element.root, 0), 1);
  const TempDir dir;
  const std::string path = dir.File("split.xml");
  ASSERT_EQ(element.tree.SaveToFile(AFilePath(path)), 1);
  const Bytes bytes = ReadFile(path);
  const std::string saved(bytes.begin(), bytes.end());
  EXPECT_NE(saved.find("<Split Version=\"4\" NumofColor2Split=\"1\">"), std::string::npos) << saved;
  EXPECT_NE(saved.find("<item interpolation=\"3\" colorantIndex=\"7\">"), std::string::npos)
      << saved;
}

// A save that memory ends early shows the steps: what is there was set before what is not.
TEST(SplitXmlSteps, TheColorantIsSetAfterTheCurves) {
  const auto record = RecordWithCurves();
  int withoutCurves = 0;
  int withSomeCurves = 0;
  bool reached = true;
  for (std::size_t which = 0; reached; ++which) {
    ASSERT_LT(which, 200u);
    SCOPED_TRACE(which);
    CallersElement element;
    int saved = -1;
    {
      const AllocationFailsAt shortage(which);
      saved = record->Serialize(element.tree, element.root, 0);
      reached = AllocationFailsAt::Reached();
    }
    const int curves = element.root.GetChildCount();
    const char* const names[] = {"light", "medium", "dark"};
    for (int i = 0; i < curves; ++i) {
      EXPECT_EQ(element.root.GetChild(i).GetName().str(), names[i]);
      EXPECT_EQ(element.root.GetChild(i).GetValue().str(), kCurve);
    }
    if (curves > 0) {
      EXPECT_EQ(element.root.GetAttribute("interpolation").str(), "3");
    }
    EXPECT_EQ(element.root.GetAttribute("colorantIndex").str(), saved == 1 ? "7" : "");
    if (saved == 1) {
      EXPECT_EQ(curves, 3);
    } else {
      EXPECT_EQ(saved, 0);
      EXPECT_TRUE(reached);
      withoutCurves += curves == 0;
      withSomeCurves += curves == 1 || curves == 2;
    }
  }
  EXPECT_GT(withoutCurves, 0);
  EXPECT_GT(withSomeCurves, 0);
}

TEST(SplitXmlSteps, SavedTwiceTheListStandsTwiceAndTheFirstIsLoaded) {
  SplitParam first;
  SplitParam second;
  FillWithDefaults(first, 4, 3, 10);
  FillWithDefaults(second, 2, 2, 20);
  CallersElement element;
  ASSERT_EQ(first.Serialize(element.tree, element.root, 0), 1);
  ASSERT_EQ(second.Serialize(element.tree, element.root, 0), 1);
  EXPECT_EQ(element.root.GetAttribute("Version").str(), "2");
  EXPECT_EQ(element.root.GetAttribute("NumofColor2Split").str(), "2");
  ASSERT_EQ(element.root.GetChildCount(), 2);
  EXPECT_EQ(element.root.GetChild(0).GetChildCount(), 3);
  EXPECT_EQ(element.root.GetChild(1).GetChildCount(), 2);
  SplitParam loaded;
  ASSERT_EQ(loaded.Serialize(element.tree, element.root, 1), 1);
  EXPECT_EQ(loaded.version, 2);
  ASSERT_EQ(loaded.count, 2);
  EXPECT_EQ(RecordAt(loaded, 0).colorantIndex, 10);
  EXPECT_EQ(RecordAt(loaded, 1).colorantIndex, 11);
}

// Which way a call goes.

constexpr int kLoads[] = {1, 2, -1, 3, 256, 0x10000, INT_MAX, INT_MIN};

TEST(SplitXmlSteps, TheHeadOfARecordIsLoadedByAnyArgumentButZero) {
  for (const int load : kLoads) {
    SCOPED_TRACE(load);
    CallersElement element;
    ASSERT_TRUE(element.root.SetAttribute("colorantIndex", "5"));
    SplitTypeBase head;
    head.colorantIndex = 9;
    EXPECT_EQ(head.Serialize(element.tree, element.root, load), 1);
    EXPECT_EQ(head.colorantIndex, 5);
    EXPECT_EQ(element.root.GetAttribute("colorantIndex").str(), "5");
  }
}

TEST(SplitXmlSteps, ARecordIsLoadedByAnyArgumentButZero) {
  for (const int load : kLoads) {
    SCOPED_TRACE(load);
    CallersElement element;
    ASSERT_TRUE(element.root.SetAttribute("interpolation", "4"));
    ASSERT_TRUE(element.root.SetAttribute("colorantIndex", "5"));
    ASSERT_TRUE(element.root.AddChild("medium", "1 2 3;"));
    const auto record = RecordWithCurves();
    EXPECT_EQ(record->Serialize(element.tree, element.root, load), 1);
    EXPECT_EQ(record->colorantIndex, 5);
    EXPECT_EQ(record->interpolation, 4);
    EXPECT_EQ(record->lightCount, 0);
    EXPECT_EQ(record->mediumCount, 1);
    EXPECT_EQ(record->medium[0].shape, 3.0f);
    EXPECT_EQ(record->darkCount, 0);
    EXPECT_EQ(element.root.GetChildCount(), 1) << "loading adds nothing";
    EXPECT_EQ(element.root.GetAttribute("colorantIndex").str(), "5");
  }
}

TEST(SplitXmlSteps, ASetIsLoadedByAnyArgumentButZero) {
  for (const int version : {2, 3, 4}) {
    SplitParam saved;
    FillWithDefaults(saved, version, 2, 10);
    CallersElement element;
    ASSERT_EQ(saved.Serialize(element.tree, element.root, 0), 1);
    for (const int load : kLoads) {
      SCOPED_TRACE(load);
      SplitParam split;
      FillWithDefaults(split, 3, 1, 30);
      EXPECT_EQ(split.Serialize(element.tree, element.root, load), 1);
      EXPECT_EQ(split.version, version);
      EXPECT_EQ(split.count, 2);
      ASSERT_NE(split.splits, nullptr);
      EXPECT_EQ(RecordAt(split, 0).colorantIndex, 10);
      EXPECT_EQ(RecordAt(split, 1).colorantIndex, 11);
      EXPECT_EQ(element.root.GetChildCount(), 1) << "loading adds nothing";
    }
  }
}

// What is left of what there was.

TEST(SplitXmlSteps, PointsAfterTheCountOfALoadedCurveAreZeros) {
  CallersElement element;
  ASSERT_TRUE(element.root.AddChild("light", "1 2 3;4 5 6;"));
  // The second point lacks a number, so that the curve ends before it.
  ASSERT_TRUE(element.root.AddChild("medium", "1 2 3;4 5;7 8 9;"));
  const auto record = std::make_unique<SplitTypeV4>();
  record->size = 76;
  record->lightCount = record->mediumCount = record->darkCount = 256;
  for (auto* points : {record->light, record->medium, record->dark}) {
    for (int i = 0; i < 256; ++i) points[i] = {9, 9, 9};
  }
  ASSERT_EQ(record->Serialize(element.tree, element.root, 1), 1);
  ASSERT_EQ(record->lightCount, 2);
  EXPECT_EQ(record->light[0].input, 1.0f);
  EXPECT_EQ(record->light[1].shape, 6.0f);
  EXPECT_EQ(NumbersFrom(2, record->light), 0);
  ASSERT_EQ(record->mediumCount, 1);
  EXPECT_EQ(record->medium[0].amount, 2.0f);
  EXPECT_EQ(NumbersFrom(1, record->medium), 0);
  EXPECT_EQ(record->darkCount, 0);
  EXPECT_EQ(NumbersFrom(0, record->dark), 0) << "a curve without its element";
  EXPECT_EQ(record->size, 76u) << "the size is not stored";
}

TEST(SplitXmlSteps, LoadingReleasesTheRecordsThatThereWere) {
  for (const int before : {2, 3, 4}) {
    for (const char* const version : {"2", "3", "4", "5"}) {
      SCOPED_TRACE(version);
      CallersElement element;
      ASSERT_TRUE(element.root.SetAttribute("Version", version));
      ASSERT_TRUE(element.root.SetAttribute("NumofColor2Split", "2"));
      const std::int64_t live = LiveAllocations();
      {
        SplitParam split;
        FillWithDefaults(split, before, 2, 0);
        split.Serialize(element.tree, element.root, 1);
      }
      EXPECT_EQ(LiveAllocations(), live);
    }
  }
}

TEST(SplitXmlSteps, LoadingAnUnknownVersionStoresItAndTheCount) {
  for (const int version : {5, 1, 0, -4}) {
    CallersElement element;
    ASSERT_TRUE(element.root.SetAttribute("Version", std::to_string(version)));
    ASSERT_TRUE(element.root.SetAttribute("NumofColor2Split", "6"));
    SplitParam split;
    FillWithDefaults(split, 2, 3, 0);
    ASSERT_EQ(split.size, 20 + 3 * 76);
    EXPECT_EQ(split.Serialize(element.tree, element.root, 1), 0);
    EXPECT_EQ(split.version, version);
    EXPECT_EQ(split.count, 6);
    EXPECT_EQ(split.splits, nullptr);
    EXPECT_EQ(split.size, 20 + 3 * 76) << "the size comes after the records";
  }
}

}  // namespace
}  // namespace vkcl::testing
