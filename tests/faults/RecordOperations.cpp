// The records, and the tags that are built from them.
#include <cstring>

#include "faults/Operations.h"
#include "faults/SampleFiles.h"
#include "platform/profiler/TesselColorProfiler.h"

namespace vkcl::testing {
namespace {

// Records that have something to store or to copy.
struct Records {
  explicit Records(const TempDir& dir) : file(dir.File("old.bin")) {
    SplitTypeV3 record;
    p.split.InitSplitParam(3, 1, &record);
    DitherTypeV1 table;
    p.dither.InitDitherParam(1, &table);
    double limits[2] = {75, 82.5};
    p.spotInkLimit.SetData(2, name, limits);
    links.SetData(2, name);
    for (ProfileDataList* list : {&p.linReference, &p.charMeasurement}) {
      list->NumOfColors = 3;
      list->RefreshList(4);
      list->PerSample = new std::int32_t[4]{1, 2, 3, 4};
    }
    p.options.InkTotal = "a value that is longer than sixteen characters";
    p.chromaAdjust = "a text that is longer than sixteen characters";
  }

  const CString name = "A spot colour of a long name";
  AFilePath file;
  VKCLProfileProperties p;
  VKSpotLinDLParam links;
  VKLinExtraDataParam extraData;
  VKPrivateTag tag;
};

template <class Build>
Operation Builds(const char* names, Build build) {
  return {names, [=](const TempDir& dir) {
            return With<Records>([=](Records& r) { return build(r.tag, r); },
                                 [](const Records& r) { return Show(r.tag); }, dir);
          }};
}

void AddTags(std::vector<Operation>& all) {
  using T = VKPrivateTag;
  using R = Records;
  const auto add = [&](const char* names, const auto& build) {
    all.push_back(Builds(names, build));
  };
  add("VKPrivateTag::InitFromProfileDataList VKPrivateTag::~VKPrivateTag",
      [](T& t, R& r) { return t.InitFromProfileDataList(r.p.linReference, QX54); });
  add("VKPrivateTag::InitFromSplitParam",
      [](T& t, R& r) { return t.InitFromSplitParam(r.p.split); });
  add("VKPrivateTag::InitFromDitherParam",
      [](T& t, R& r) { return t.InitFromDitherParam(r.p.dither); });
  add("VKPrivateTag::InitCMStoDither", [](T& t, R&) { return t.InitCMStoDither(7); });
  add("VKPrivateTag::InitVKChromaAdjust",
      [](T& t, R& r) { return t.InitVKChromaAdjust(r.p.chromaAdjust); });
  add("VKPrivateTag::InitWizardTag", [](T& t, R&) { return t.InitWizardTag(7); });
  add("VKPrivateTag::InitFromVKCompatibilityParam",
      [](T& t, R& r) { return t.InitFromVKCompatibilityParam(r.p.compatibility); });
  add("VKPrivateTag::InitFromVKColorParam",
      [](T& t, R& r) { return t.InitFromVKColorParam(r.p.colorParam); });
  add("VKPrivateTag::InitFromTRCFile", [](T& t, R& r) { return t.InitFromTRCFile(r.file); });
  add("VKPrivateTag::InitFromVKMultiInklimit",
      [](T& t, R& r) { return t.InitFromVKMultiInklimit(r.p.multiInkLimit); });
  add("VKPrivateTag::InitFromVKSingleInkLimitWithLinRef",
      [](T& t, R& r) { return t.InitFromVKSingleInkLimitWithLinRef(r.p.singleInkLimit); });
  add("VKPrivateTag::InitFromVKSpotSIL",
      [](T& t, R& r) { return t.InitFromVKSpotSIL(r.p.spotInkLimit); });
  add("VKPrivateTag::InitFromVKSpotLinDL",
      [](T& t, R& r) { return t.InitFromVKSpotLinDL(r.links); });
  add("VKPrivateTag::InitFromVKLinExtraDataParam",
      [](T& t, R& r) { return t.InitFromVKLinExtraDataParam(r.extraData); });
  add("VKPrivateTag::InitFromVSDProfile", [](T& t, R& r) { return t.InitFromVSDProfile(r.file); });
  add("VKPrivateTag::InitFromVKProfileExtraParam",
      [](T& t, R& r) { return t.InitFromVKProfileExtraParam(r.p.extraParam); });
}

// A record and one that is made of it or takes its content over.
template <class Record>
struct Two {
  explicit Two(const TempDir& dir) : records(dir) {}
  Records records;
  Record target;
  std::unique_ptr<Record> copy;
};

template <class Record, class Run>
Operation Changes(const char* names, Run run, ObjectsLeft left, const char* what = "") {
  return {names,
          [=](const TempDir& dir) {
            return With<Two<Record>>(
                run,
                [](const Two<Record>& two) {
                  return Show(two.target) + (two.copy ? Show(*two.copy) : "");
                },
                dir);
          },
          what, FilesLeft::Old, left};
}

// An array for which memory is short is left out of a copy.
void AddCopies(std::vector<Operation>& all) {
  using Lists = Two<ProfileDataList>;
  all.push_back(Changes<ProfileDataList>(
      "ProfileDataList::operator= ProfileDataList::operator== ProfileDataList::GetDataSize",
      [](Lists& two) {
        two.target = two.records.p.linReference;
        return two.target == two.records.p.linReference && two.target.GetDataSize() == 96 &&
               two.target.DataList != nullptr && two.target.PerSample != nullptr;
      },
      ObjectsLeft::Documented));
  // The optional place of the copy is the test's, so it is made beforehand.
  alignas(16) static std::byte place[sizeof(VKCLProfileProperties)];
  all.push_back(Changes<ProfileDataList>(
      "ProfileDataList::ProfileDataList ProfileDataList::~ProfileDataList",
      [](Lists& two) {
        const auto* list = new (place) ProfileDataList(two.records.p.linReference);
        const bool whole = list->DataList != nullptr && list->PerSample != nullptr;
        list->~ProfileDataList();
        return whole;
      },
      ObjectsLeft::Old));
  all.push_back(Changes<ProfileDataList>(
      "ProfileDataList::RefreshList",
      [](Lists& two) {
        two.target.NumOfColors = 4;
        return two.target.RefreshList(5);
      },
      ObjectsLeft::Documented));  // the number of colours was set before
  all.push_back(Changes<ProfileDataList>(
      "ProfileDataList::Clear",
      [](Lists& two) {
        two.target.Clear();
        return true;
      },
      ObjectsLeft::Old));
  all.push_back(Changes<VKDitherParam>(
      "VKDitherParam::operator=",
      [](Two<VKDitherParam>& two) {
        two.target = two.records.p.dither;
        return two.target.table != nullptr;
      },
      ObjectsLeft::Documented));
  all.push_back(Changes<VKDitherParam>(
      "VKDitherParam::VKDitherParam VKDitherParam::~VKDitherParam",
      [](Two<VKDitherParam>& two) {
        const auto* dither = new (place) VKDitherParam(two.records.p.dither);
        const bool whole = dither->table != nullptr;
        dither->~VKDitherParam();
        return whole;
      },
      ObjectsLeft::Old));
  all.push_back(Changes<VKDitherParam>(
      "VKDitherParam::InitDitherParam",
      [](Two<VKDitherParam>& two) {
        return two.target.InitDitherParam(1, two.records.p.dither.table);
      },
      ObjectsLeft::Documented));
  const auto isWhole = [](const VKCLProfileProperties& p) {
    return p.spotInkLimit.name != nullptr && p.split.splits != nullptr &&
           p.dither.table != nullptr && p.linReference.DataList != nullptr &&
           p.linReference.PerSample != nullptr && p.charMeasurement.DataList != nullptr &&
           p.charMeasurement.PerSample != nullptr && p.options.InkTotal.length() != 0 &&
           p.chromaAdjust.length() != 0;
  };
  using Properties = Two<VKCLProfileProperties>;
  all.push_back(Changes<VKCLProfileProperties>(
      "VKCLProfileProperties::operator=",
      [=](Properties& two) {
        two.target = two.records.p;
        return isWhole(two.target);
      },
      ObjectsLeft::Documented));
  all.push_back(Changes<VKCLProfileProperties>(
      "VKCLProfileProperties::VKCLProfileProperties",
      [=](Properties& two) {
        const auto* copy = new (place) VKCLProfileProperties(two.records.p);
        const bool whole = isWhole(*copy);
        copy->~VKCLProfileProperties();
        return whole;
      },
      ObjectsLeft::Old));
}

void AddInkLimits(std::vector<Operation>& all) {
  all.push_back(Changes<VKMultiInklimit>(
      "VKMultiInklimit::ConvertToCurrentVersion",
      [](Two<VKMultiInklimit>& two) {
        two.target.version = 1;
        return two.target.ConvertToCurrentVersion(1);
      },
      ObjectsLeft::Old));
  all.push_back(Changes<VKSpotSingleInkLimit>(
      "VKSpotSingleInkLimit::SetData VKSpotSingleInkLimit::~VKSpotSingleInkLimit",
      [](Two<VKSpotSingleInkLimit>& two) {
        two.target.SetData(2, two.records.name, two.records.p.spotInkLimit.limits);
        return two.target.count == 2;
      },
      ObjectsLeft::Old));
  all.push_back(Changes<VKSpotLinDLParam>(
      "VKSpotLinDLParam::SetData VKSpotLinDLParam::~VKSpotLinDLParam",
      [](Two<VKSpotLinDLParam>& two) {
        two.target.SetData(3, two.records.name);
        return two.target.count == 3;
      },
      ObjectsLeft::Old));
  all.push_back(Changes<VKSpotLinDLParam>(
      "VKSpotLinDLParam::Release",
      [](Two<VKSpotLinDLParam>& two) {
        two.target.Release();
        return true;
      },
      ObjectsLeft::Old));
}

}  // namespace

Group RecordOperations() {
  Group group = {LayProfiles, {}};
  AddTags(group.operations);
  AddCopies(group.operations);
  AddInkLimits(group.operations);
  return group;
}

}  // namespace vkcl::testing
