// The handler's readers, on a profile that has everything.
#include "faults/Operations.h"
#include "faults/SampleFiles.h"
#include "handler/StoredList.h"
#include "handler/StoredSplit.h"
#include "handler/TargetParser.h"
#include "support/ImageBuilder.h"

namespace vkcl::testing {
namespace {

using Handler = VKCLProfileHandler;

template <class Record>
struct Reading {
  explicit Reading(const TempDir& dir)
      : handler(AFilePath(dir.File("p.icc")), 0),
        to(dir.File("old.bin")),
        fresh(dir.File("new.bin")) {}
  Handler handler;
  AFilePath to;
  AFilePath fresh;
  Record record;
};

// Reading into a record by any means.
template <class Record, class Run>
Operation Reads(const char* names, Run run, ObjectsLeft left = ObjectsLeft::Old,
                const char* what = "") {
  return {names,
          [=](const TempDir& dir) {
            return With<Reading<Record>>(
                [=](Reading<Record>& r) { return run(r.handler, r.record); },
                [](const Reading<Record>& r) { return Show(r.record); }, dir);
          },
          what, FilesLeft::Old, left};
}

// Reading into a record by one of the handler's functions.
template <class Record>
Operation Gets(const char* names, int (Handler::*get)(Record&) const,
               ObjectsLeft left = ObjectsLeft::Old) {
  return Reads<Record>(
      names, [=](const Handler& handler, Record& record) { return (handler.*get)(record); }, left);
}

void AddRecords(std::vector<Operation>& all) {
  using H = Handler;
  all.push_back(
      Gets("VKCLProfileHandler::GetVKSingleInkLimitWithLinRef", &H::GetVKSingleInkLimitWithLinRef));
  all.push_back(Gets("VKCLProfileHandler::GetVKColorParam", &H::GetVKColorParam));
  all.push_back(Gets("VKCLProfileHandler::GetVKDitherParam", &H::GetVKDitherParam));
  all.push_back(Gets("VKCLProfileHandler::GetVKCompatibilityParam", &H::GetVKCompatibilityParam));
  all.push_back(Gets("VKCLProfileHandler::GetVKSpotSIL", &H::GetVKSpotSIL));
  // A link that is refused leaves those before it.
  all.push_back(
      Gets("VKCLProfileHandler::GetVKSpotLinDL", &H::GetVKSpotLinDL, ObjectsLeft::Documented));
  all.push_back(Gets("VKCLProfileHandler::GetVKLinExtraData", &H::GetVKLinExtraData));
  all.push_back(Gets("VKCLProfileHandler::GetVSDProfileParam", &H::GetVSDProfileParam));
  all.push_back(Gets("VKCLProfileHandler::GetVKChromaAdjust", &H::GetVKChromaAdjust));
  all.push_back(Gets("VKCLProfileHandler::GetVKProfileExtraParam", &H::GetVKProfileExtraParam));
  all.push_back(Gets("VKCLProfileHandler::GetVKLinRefData", &H::GetVKLinRefData,
                     ObjectsLeft::Documented));  // cleared
  all.push_back(Gets("VKCLProfileHandler::GetVKLinOutputData", &H::GetVKLinOutputData,
                     ObjectsLeft::Documented));
  all.push_back(Gets("VKCLProfileHandler::GetProfileOptions", &H::GetProfileOptions));
  all.push_back(Reads<VKMultiInklimit>("VKCLProfileHandler::GetVKMultiInklimit",
                                       [](const H& handler, VKMultiInklimit& limits) {
                                         return handler.GetVKMultiInklimit(limits, 2);
                                       }));
  for (const int upgrade : {0, 1}) {
    // A failure with a readable tag leaves its head.
    all.push_back(Reads<SplitParam>(
        "VKCLProfileHandler::GetSplitParam",
        [=](const H& handler, SplitParam& split) { return handler.GetSplitParam(split, upgrade); },
        ObjectsLeft::Documented, upgrade != 0 ? "upgraded" : ""));
  }
  all.push_back(Reads<SplitParam>("vkcl::ReadStoredSplit", [](H& handler, SplitParam& split) {
    return ReadStoredSplit(*handler.GetProfilePtr(), split);
  }));
  all.push_back(Reads<ProfileDataList>(
      "vkcl::ReadStoredList",
      [](H& handler, ProfileDataList& list) {
        return ReadStoredList(*handler.GetProfilePtr(), QX54, list);
      },
      ObjectsLeft::Documented));
}

void AddAnswers(std::vector<Operation>& all) {
  const auto add = [&](const char* names, int (Handler::*ask)() const, int expected) {
    all.push_back(Reads<VKProfileExtraParam>(
        names, [=](const Handler& handler, VKProfileExtraParam& /*none*/) {
          return (handler.*ask)() == expected;
        }));
  };
  add("VKCLProfileHandler::IsCMStoDither", &Handler::IsCMStoDither, -5);
  add("VKCLProfileHandler::IsWizardICC", &Handler::IsWizardICC, 3);
}

void AddTogether(std::vector<Operation>& all) {
  // What the file does not give is missing, and what is missing keeps what the record had.
  Operation properties = Reads<VKCLProfileProperties>(
      "VKCLProfileHandler::GetVKCLProfileProperties",
      [](const Handler& handler, VKCLProfileProperties& all_) {
        return handler.GetVKCLProfileProperties(all_, 0);
      },
      ObjectsLeft::Documented);
  properties.systemFaults = Faults::Tell;
  all.push_back(properties);
  all.push_back({"VKCLProfileHandler::IsLinFake", [](const TempDir& dir) {
                   return With<Handler>([](Handler& handler) { return handler.IsLinFake(); },
                                        [](const Handler&) { return std::string(); },
                                        AFilePath(dir.File("fake.icc")), 0);
                 }});
}

// Writing what is embedded into files of its own.
void AddFiles(std::vector<Operation>& all) {
  struct Nothing {};
  using Site = Reading<Nothing>;
  const auto add = [&](const char* names, const auto& run, const char* what, FilesLeft left) {
    all.push_back({names,
                   [=](const TempDir& dir) {
                     return With<Site>(
                         run, [](const Site&) { return std::string(); }, dir);
                   },
                   what, left});
  };
  add(
      "VKCLProfileHandler::GetEnbededFile",
      [](Site& s) { return s.handler.GetEnbededFile(s.to, Handler::EnbedFile1); }, "replacing",
      FilesLeft::OldOrGone);
  add(
      "VKCLProfileHandler::GetEnbededFile",
      [](Site& s) { return s.handler.GetEnbededFile(s.fresh, Handler::EnbedFile1); }, "new",
      FilesLeft::Old);
  add(
      "VKCLProfileHandler::GetVSDProfile", [](Site& s) { return s.handler.GetVSDProfile(s.to); },
      "replacing", FilesLeft::OldOrGone);
  add(
      "VKCLProfileHandler::GetVSDProfile", [](Site& s) { return s.handler.GetVSDProfile(s.fresh); },
      "new", FilesLeft::Old);
  // The profile itself is refused, whatever fails.
  add(
      "VKCLProfileHandler::GetEnbededFile",
      [](Site& s) {
        return s.handler.GetEnbededFile(s.handler.GetProfilePtr()->filePath, Handler::EnbedFile1) ==
               0;
      },
      "onto itself", FilesLeft::Old);
  add(
      "VKCLProfileHandler::GetVSDProfile",
      [](Site& s) { return s.handler.GetVSDProfile(s.handler.GetProfilePtr()->filePath) == 0; },
      "onto itself", FilesLeft::Old);
}

void AddTargets(std::vector<Operation>& all) {
  struct Lists {
    ProfileDataList device;
    ProfileDataList measurement;
  };
  static const char* const kText =
      "BEGIN_DATA_FORMAT\nRGB_R RGB_G RGB_B XYZ_X XYZ_Y XYZ_Z\nEND_DATA_FORMAT\nBEGIN_DATA\n"
      "1 2 3 4 5 6\n7 8 9 10 11 12\nEND_DATA\n";
  all.push_back({"vkcl::ParseTarget",
                 [](const TempDir&) {
                   return With<Lists>(
                       [](Lists& l) {
                         return ParseTarget(kText, l.device, l.measurement) == TargetRule::Accepted;
                       },
                       [](const Lists& l) { return Show(l.device) + Show(l.measurement); });
                 },
                 "", FilesLeft::Old, ObjectsLeft::Documented});
  all.push_back({"vkcl::DataFormatOfWord vkcl::TargetRuleText", [](const TempDir&) {
                   return With<int>(
                       [](int&) {
                         return DataFormatOfWord("a word of more than sixteen letters") == 0 &&
                                DataFormatOfWord("CMYK") == Sig("CMYK") &&
                                TargetRuleText(TargetRule::Accepted) != nullptr;
                       },
                       [](const int&) { return std::string(); });
                 }});
}

void Lay(const TempDir& dir) {
  LayProfiles(dir);
  static const Bytes fake = [] {
    Bytes list(24);
    std::fill_n(list.begin(), 4, 0xFF);
    list[4] = list[16] = 2;
    return ProfileImage(ProfileHeader(), {{Sig("QX51"), DataTag(Bytes(140))},
                                          {Sig("QX53"), DataTag(Bytes(1068))},
                                          {Sig("QX54"), DataTag(list)},
                                          {Sig("QX55"), DataTag(list)}});
  }();
  dir.Write("fake.icc", fake);
}

}  // namespace

Group HandlerReaders() {
  Group group = {Lay, {}};
  AddRecords(group.operations);
  AddAnswers(group.operations);
  AddTogether(group.operations);
  AddFiles(group.operations);
  AddTargets(group.operations);
  return group;
}

}  // namespace vkcl::testing
