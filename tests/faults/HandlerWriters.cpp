// The handler's writers: into a profile that lacks the tag, and the lock's into one that has it.
#include <array>
#include <cstring>

#include "faults/Operations.h"
#include "faults/SampleFiles.h"
#include "platform/profiler/TesselColorProfiler.h"

namespace vkcl::testing {
namespace {

using Handler = VKCLProfileHandler;

// A handler and records to write.
struct Writing {
  Writing(const TempDir& dir, const char* name)
      : handler(AFilePath(dir.File(name)), 0),
        file(dir.File("old.bin")),
        missing(dir.File("a file that is not there.bin")),
        held(CLNewCLProfileRef()) {
    SplitTypeV2 records[2];
    split.InitSplitParam(2, 2, records);
    DitherTypeV1 table;
    dither.InitDitherParam(1, &table);
    double limits[2] = {75, 82.5};
    spot.SetData(2, "A spot colour of a long name", limits);
    links.SetData(2, "A spot colour of a long name");
    const Bytes link = SampleLink();
    CLLoadLink8FromMemory(links.links[1], link.data(), static_cast<unsigned int>(link.size()));
    list.NumOfColors = 3;
    list.RefreshList(4);
    const Bytes gray = GrayProfile();
    CLLoadProfileFromMemory(held, gray.data(), static_cast<unsigned int>(gray.size()));
    std::strcpy(param.Make, "Acme");
    param.ColorMode = 512;
  }
  ~Writing() { CLFreeCLProfileRef(held); }
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;

  Handler handler;
  AFilePath file;
  AFilePath missing;
  void* held;
  SplitParam split;
  VKSingleInkLimitWithLinRef single;
  VKMultiInklimit multi;
  VKColorParam param;
  VKDitherParam dither;
  VKCompatibilityParam compatibility;
  VKSpotSingleInkLimit spot;
  VKSpotLinDLParam links;
  VKLinExtraDataParam extraData;
  AString text = "a text that is longer than sixteen characters";
  VKProfileExtraParam extra;
  ProfileDataList list;
};

// What an operation on records may change. The record of links, the version of multiple limits and
// the colour space in memory follow what is written, also when that fails.
std::string Seen(Writing& w) {
  VKCLProfile& profile = *w.handler.GetProfilePtr();
  return std::to_string(profile.tagCount) +
         ShowArray(profile.tagTable, static_cast<std::int64_t>(profile.tagCount)) +
         std::to_string(profile.header.size) + Show(w.split) + Show(w.dither) + Show(w.list) +
         Show(w.text);
}

template <class Run>
std::function<Attempt(const TempDir&)> On(const char* name, Run run) {
  return [=](const TempDir& dir) { return With<Writing>(run, Seen, dir, name); };
}

template <class Run>
Operation Appends(const char* names, Run run, const char* what = "") {
  return {names, On("target.icc", run), what};
}

template <class Record>
using Writer = int (Handler::*)(const Record&);

// Writing the record that is a member.
template <class Record>
Operation Plain(const char* names, Writer<Record> write, Record Writing::*record) {
  return Appends(names, [=](Writing& w) { return (w.handler.*write)(w.*record); });
}

void AddPlain(std::vector<Operation>& all) {
  using H = Handler;
  using W = Writing;
  all.push_back(Plain("VKCLProfileHandler::WriteInkSplitTag", &H::WriteInkSplitTag, &W::split));
  all.push_back(
      Plain("VKCLProfileHandler::WriteSILWithLinTag", &H::WriteSILWithLinTag, &W::single));
  all.push_back(
      Plain("VKCLProfileHandler::WriteVKColorParamTag", &H::WriteVKColorParamTag, &W::param));
  all.push_back(
      Plain("VKCLProfileHandler::WriteDitherParamTag", &H::WriteDitherParamTag, &W::dither));
  all.push_back(Plain("VKCLProfileHandler::WriteVKCompatibilityParam",
                      &H::WriteVKCompatibilityParam, &W::compatibility));
  all.push_back(Plain("VKCLProfileHandler::WriteVKSpotSIL", &H::WriteVKSpotSIL, &W::spot));
  all.push_back(
      Plain("VKCLProfileHandler::WriteVKLinExtraData", &H::WriteVKLinExtraData, &W::extraData));
  all.push_back(
      Plain("VKCLProfileHandler::WriteVKChromaAdjust", &H::WriteVKChromaAdjust, &W::text));
  all.push_back(Plain("VKCLProfileHandler::WriteVKProfileExtraParam", &H::WriteVKProfileExtraParam,
                      &W::extra));
  all.push_back(Plain("VKCLProfileHandler::WriteTrcTag", &H::WriteTrcTag, &W::file));
  all.push_back(Plain("VKCLProfileHandler::WriteVSDProfile", &H::WriteVSDProfile, &W::file));
}

void AddLists(std::vector<Operation>& all) {
  using H = Handler;
  using W = Writing;
  all.push_back(
      Plain("VKCLProfileHandler::WriteLinMeasurementData", &H::WriteLinMeasurementData, &W::list));
  all.push_back(
      Plain("VKCLProfileHandler::WriteLinReferenceData", &H::WriteLinReferenceData, &W::list));
  all.push_back(
      Plain("VKCLProfileHandler::WriteGBMeasurementData", &H::WriteGBMeasurementData, &W::list));
  all.push_back(
      Plain("VKCLProfileHandler::WriteGBReferenceData", &H::WriteGBReferenceData, &W::list));
  all.push_back(Plain("VKCLProfileHandler::WriteCharMeasurementData", &H::WriteCharMeasurementData,
                      &W::list));
  all.push_back(
      Plain("VKCLProfileHandler::WriteCharReferenceData", &H::WriteCharReferenceData, &W::list));
  all.push_back(Plain("VKCLProfileHandler::WriteVKLinRefData", &H::WriteVKLinRefData, &W::list));
  all.push_back(
      Plain("VKCLProfileHandler::WriteVKLinOutputData", &H::WriteVKLinOutputData, &W::list));
}

void AddOthers(std::vector<Operation>& all) {
  all.push_back(Appends("VKCLProfileHandler::WriteMultipleInkLimitTag",
                        [](Writing& w) { return w.handler.WriteMultipleInkLimitTag(w.multi); }));
  all.push_back(Appends("VKCLProfileHandler::WriteVKSpotLinDL",
                        [](Writing& w) { return w.handler.WriteVKSpotLinDL(w.links); }));
  all.push_back(Appends("VKCLProfileHandler::WriteVKCMStoDither",
                        [](Writing& w) { return w.handler.WriteVKCMStoDither(5); }));
  all.push_back(Appends("VKCLProfileHandler::WriteVKWizardFlag",
                        [](Writing& w) { return w.handler.WriteVKWizardFlag(5); }));
  all.push_back(Appends("VKCLProfileHandler::WriteAllVKPrivateTags", [](Writing& w) {
    return w.handler.WriteAllVKPrivateTags(w.single, w.multi, w.param, &w.split);
  }));
  for (const auto type : {Handler::EnbedFileTRC, Handler::EnbedFile4}) {
    all.push_back(Appends("VKCLProfileHandler::WriteCLICCProfieRef",
                          [=](Writing& w) { return w.handler.WriteCLICCProfieRef(w.held, type); }));
  }
}

// The lock replaces colour parameters by others of the same length.
void AddLock(std::vector<Operation>& all) {
  const auto add = [&](const char* names, const auto& run, const char* what = "") {
    all.push_back({names, On("p.icc", run), what, FilesLeft::OldOrNew});
  };
  add("VKCLProfileHandler::ModifyUnLockedColorSettings",
      [](Writing& w) { return w.handler.ModifyUnLockedColorSettings(w.param); });
  all.push_back({"VKCLProfileHandler::LockUnLockedVKCLProfile",
                 On("p.icc", [](Writing& w) { return w.handler.LockUnLockedVKCLProfile(); }), "",
                 FilesLeft::OldOrNew});
  all.back().again = false;  // a close that failed may have locked it
  add(
      "VKCLProfileHandler::UnLockVKCLProfile",
      [](Writing& w) { return w.handler.UnLockVKCLProfile(); }, "when unlocked");
  all.push_back({"VKCLProfileHandler::UnLockVKCLProfile",
                 On("locked.icc", [](Writing& w) { return w.handler.UnLockVKCLProfile(); }),
                 "when locked", FilesLeft::OldOrNew});
  add("VKCLProfileHandler::isVKCLUnLockedProfile",
      [](Writing& w) { return w.handler.isVKCLUnLockedProfile(); });
}

void Lay(const TempDir& dir) {
  LayProfiles(dir);
  static const Bytes locked = SampleProfile(13);
  dir.Write("locked.icc", locked);
}

}  // namespace

Group HandlerWriters() {
  Group group = {Lay, {}};
  AddPlain(group.operations);
  AddLists(group.operations);
  AddOthers(group.operations);
  AddLock(group.operations);
  return group;
}

}  // namespace vkcl::testing
