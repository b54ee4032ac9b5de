// Any bytes as the payload of each private tag: every reader of the handler.
#include "Fuzz.h"
#include "handler/StoredList.h"
#include "handler/StoredSplit.h"
#include "handler/VKCLProfileHandler.h"
#include "handler/VKCLProfileProperties.h"

namespace {

void ReadRecords(const VKCLProfileHandler& handler) {
  for (const int upgrade : {0, 1}) {
    SplitParam split;
    handler.GetSplitParam(split, upgrade);
  }
  VKSingleInkLimitWithLinRef single;
  handler.GetVKSingleInkLimitWithLinRef(single);
  VKMultiInklimit multi;
  handler.GetVKMultiInklimit(multi, 1);
  multi.ConvertToCurrentVersion(1);
  VKColorParam color;
  handler.GetVKColorParam(color);
  VKDitherParam dither;
  handler.GetVKDitherParam(dither);
  VKCompatibilityParam compatibility;
  handler.GetVKCompatibilityParam(compatibility);
  VKSpotSingleInkLimit spot;
  handler.GetVKSpotSIL(spot);
  VKSpotLinDLParam links;
  handler.GetVKSpotLinDL(links);
  VKLinExtraDataParam extra;
  handler.GetVKLinExtraData(extra);
  VKVSDProfileParam sidecar;
  handler.GetVSDProfileParam(sidecar);
  AString text;
  handler.GetVKChromaAdjust(text);
  VKProfileExtraParam more;
  handler.GetVKProfileExtraParam(more);
  handler.IsCMStoDither();
  handler.IsWizardICC();
}

void ReadLists(const VKCLProfileHandler& handler, const VKCLProfile& profile) {
  ProfileDataList list;
  for (const auto signature : {QX54, QX55, QX56, QX57, QX59, QX60, QX72, QX73}) {
    vkcl::ReadStoredList(profile, signature, list);
  }
  handler.GetVKLinRefData(list);
  handler.GetVKLinOutputData(list);
  SplitParam split;
  if (vkcl::ReadStoredSplit(profile, split)) split.ConvertToV4();
}

void Extract(const VKCLProfileHandler& handler) {
  static const AFilePath path(vkcl::fuzz::FilePath("extracted"));
  using Handler = VKCLProfileHandler;
  for (const auto type : {Handler::EnbedFileTRC, Handler::EnbedFile1, Handler::EnbedFile4}) {
    handler.GetEnbededFile(path, type);
  }
  handler.GetVSDProfile(path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("payload.icc");
  const vkcl::fuzz::Bytes element = vkcl::fuzz::DataElement(vkcl::fuzz::Bytes(data, data + size));
  std::vector<vkcl::fuzz::Tag> tags;
  for (std::uint32_t number = 50; number <= 76; ++number) {
    tags.push_back({0x51580000 | ('0' + number / 10) << 8 | ('0' + number % 10), element});
  }
  tags.push_back({0x74617267, element});  // 'targ', of a wrong type
  const vkcl::fuzz::Bytes file = vkcl::fuzz::Profile(tags);
  vkcl::fuzz::WriteFile(path, file.data(), file.size());
  VKCLProfileHandler handler(AFilePath(path), 0);
  vkcl::fuzz::Demand(handler.IsICCFile() == 1, "the profile is valid");
  ReadRecords(handler);
  ReadLists(handler, *handler.GetProfilePtr());
  Extract(handler);
  VKCLProfileProperties properties;
  handler.GetVKCLProfileProperties(properties, 1);
  return 0;
}
