// Ink splits: copies, conversions, defaults and the XML form.
#include "faults/Operations.h"
#include "platform/axml/AXMLTree.h"

namespace vkcl::testing {
namespace {

struct Splits {
  Splits() {
    SplitTypeV2 knots[2];
    knots[0].colorantIndex = 1;
    knots[0].lightPeakInput = 0.3f;
    knots[0].lightPeakAmount = 0.4f;
    knots[0].lightEndInput = 0.6f;
    two.InitSplitParam(2, 2, knots);
    four.InitSplitParam(2, 2, knots);
    four.ConvertToV4();
    AXMLTreeNode root = saved.GetRoot();
    four.Serialize(saved, root, 0);
  }

  SplitParam two;
  SplitParam four;
  SplitParam target;
  SplitTypeV4 record;
  AXMLTree tree{AString("InkSplit")};
  AXMLTree saved{AString("InkSplit")};
};

template <class Run>
Operation On(const char* names, Run run, ObjectsLeft left = ObjectsLeft::Old,
             const char* what = "") {
  return {names,
          [=](const TempDir&) {
            return With<Splits>(run, [](Splits& s) {
              return Show(s.two) + Show(s.four) + Show(s.target) + Show(s.record) + Show(s.tree);
            });
          },
          what, FilesLeft::Old, left};
}

void AddSets(std::vector<Operation>& all) {
  // A copy for which memory is short has no records.
  all.push_back(On(
      "SplitParam::operator= SplitParam::RecordSize",
      [](Splits& s) {
        s.target = s.four;
        return s.target.splits != nullptr && SplitParam::RecordSize(4) == 9240;
      },
      ObjectsLeft::Documented));
  all.push_back(On("SplitParam::SplitParam SplitParam::~SplitParam", [](Splits& s) {
    const SplitParam copy = s.four;
    return copy.splits != nullptr;
  }));
  all.push_back(On("SplitParam::InitSplitParam",
                   [](Splits& s) { return s.target.InitSplitParam(4, 2, s.four.splits); }));
  all.push_back(On("SplitParam::ConvertToV3 SplitTypeV3::SplitTypeV3", [](Splits& s) {
    s.two.ConvertToV3();
    return s.two.version == 3;
  }));
  all.push_back(On("SplitParam::ConvertToV4 SplitTypeV4::SplitTypeV4", [](Splits& s) {
    s.two.ConvertToV4();
    return s.two.version == 4;
  }));
  static double strengths[8] = {1, 1, 1, 1, 0.3, 0.3, 0.2, 0.2};
  for (double* values : {static_cast<double*>(nullptr), &strengths[0]}) {
    all.push_back(On(
        "SplitParam::SetDefaultValues",
        [=](Splits& s) { return s.target.SetDefaultValues(256, values); }, ObjectsLeft::Old,
        values != nullptr ? "by strength" : ""));
  }
  all.push_back(On("SplitParam::NewRecords SplitParam::DeleteRecords", [](Splits&) {
    SplitTypeBase* records = SplitParam::NewRecords(3, 2);
    SplitParam::DeleteRecords(3, records);
    return records != nullptr;
  }));
  all.push_back(On("NewSplitTypeV2Array FreeSplitTypeV2Array", [](Splits&) {
    SplitTypeV2* records = NewSplitTypeV2Array(2);
    FreeSplitTypeV2Array(records);
    const bool made = records != nullptr;
    delete[] records;
    return made;
  }));
}

// What was saved up to a failure stays in the tree.
void AddSerialize(std::vector<Operation>& all) {
  all.push_back(On(
      "SplitParam::Serialize",
      [](Splits& s) {
        AXMLTreeNode root = s.tree.GetRoot();
        return s.four.Serialize(s.tree, root, 0);
      },
      ObjectsLeft::Documented, "saving"));
  all.back().again = false;
  // A set that could not be loaded has no records.
  all.push_back(On(
      "SplitParam::Serialize",
      [](Splits& s) {
        AXMLTreeNode root = s.saved.GetRoot();
        const int loaded = s.target.Serialize(s.saved, root, 1);
        if (loaded == 0) {
          EXPECT_EQ(s.target.splits, nullptr);
        }
        return loaded;
      },
      ObjectsLeft::Documented, "loading"));
  all.push_back(On(
      "SplitTypeV4::Serialize SplitTypeBase::Serialize",
      [](Splits& s) {
        AXMLTreeNode root = s.tree.GetRoot();
        return s.record.Serialize(s.tree, root, 0);
      },
      ObjectsLeft::Documented, "saving"));
  all.back().again = false;
  all.push_back(On(
      "SplitTypeV4::Serialize SplitTypeBase::Serialize",
      [](Splits& s) {
        AXMLTreeNode item = s.saved.GetRoot().GetChild(0).GetChild(0);
        return s.record.Serialize(s.saved, item, 1);
      },
      ObjectsLeft::Documented, "loading"));
}

void Lay(const TempDir& /*dir*/) {}

}  // namespace

Group SplitOperations() {
  Group group = {Lay, {}};
  AddSets(group.operations);
  AddSerialize(group.operations);
  return group;
}

}  // namespace vkcl::testing
