// Any bytes as the payload of each private tag: every reader of the handler, and all that a record
// tells to hold.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "Fuzz.h"
#include "handler/StoredList.h"
#include "handler/StoredSplit.h"
#include "handler/VKCLProfileHandler.h"
#include "handler/VKCLProfileProperties.h"

using vkcl::fuzz::Bytes;
using vkcl::fuzz::Demand;
using vkcl::fuzz::Digest;

namespace {

void Walk(const char* text) {
  if (text != nullptr) Digest(text, std::strlen(text));
}

template <class Value>
void Walk(const Value* values, std::int32_t count) {
  const auto length = static_cast<std::size_t>(std::max(count, 0));
  if (values != nullptr) Digest(values, length * sizeof *values);
}

void Walk(const VKSpotSingleInkLimit& spot) {
  Walk(spot.name);
  Walk(spot.limits, spot.count);
}

void ReadRecords(const VKCLProfileHandler& handler) {
  for (const int upgrade : {0, 1}) {
    SplitParam split;
    handler.GetSplitParam(split, upgrade);
    Digest(split);
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
  Walk(spot);
  VKSpotLinDLParam links;
  handler.GetVKSpotLinDL(links);
  Walk(links.name);
  Walk(links.linkSizes, links.count);
  Walk(links.links, links.count);
  VKLinExtraDataParam extra;
  handler.GetVKLinExtraData(extra);
  VKVSDProfileParam sidecar;
  handler.GetVSDProfileParam(sidecar);
  AString text;
  handler.GetVKChromaAdjust(text);
  Walk(text.c_str());
  VKProfileExtraParam more;
  handler.GetVKProfileExtraParam(more);
  handler.IsCMStoDither();
  handler.IsWizardICC();
  VKCLProfileOptions options;
  handler.GetProfileOptions(options);
}

// The number at 8, as far as it is there.
std::int32_t StatusIn(const Bytes& payload) {
  std::uint32_t status = 0;
  for (std::size_t i = 8; i < std::min<std::size_t>(payload.size(), 12); ++i) {
    status |= std::uint32_t{payload[i]} << 8 * (i - 8);
  }
  return static_cast<std::int32_t>(status);
}

// The tags tell of a profile that is characterised; the status may say less.
void ReadState(const VKCLProfileHandler& handler, const Bytes& payload) {
  const std::int32_t status = StatusIn(payload);
  VKCLProfileFinishedState byTags = FinishedNone;
  Demand(handler.GetVKCLProfileFinishedState(byTags, 1) == 1 && byTags == FinishedCharacterisation,
         "the tags tell the state");
  const bool isHeldBack = status == 9 && payload.size() >= 12;
  VKCLProfileFinishedState byStatus = FinishedNone;
  const bool isTold = handler.GetVKCLProfileFinishedState(byStatus, 0) == 1;
  Demand(isTold || payload.empty(), "with colour parameters there is a state");
  Demand(!isTold || byStatus == (isHeldBack ? FinishedLinearisation : FinishedCharacterisation),
         "status 9, and no other, holds the state back");
  const bool isUnlocked = status == 10 || status == 12;
  Demand((handler.isVKCLUnLockedProfile() == 1) == isUnlocked, "the status tells of the lock");
}

// A list of the linearisation is a placeholder by its format, when all is measured, and no value
// is there.
void ReadPlaceholder(const VKCLProfileHandler& handler, const VKCLProfile& profile) {
  ProfileDataList list;
  const bool isPlaceholder = vkcl::ReadStoredList(profile, QX54, list) == 1 &&
                             list.DataFormat == 0xFFFFFFFF && list.DataList == nullptr &&
                             list.NumOfSamples == list.Measured;
  Demand((handler.IsLinFake() == 1) == isPlaceholder, "a placeholder is told");
}

void Walk(const VKCLProfileProperties& properties) {
  for (const ProfileDataList* list :
       {&properties.linReference, &properties.linMeasurement, &properties.gbReference,
        &properties.gbMeasurement, &properties.charReference, &properties.charMeasurement}) {
    Digest(*list);
  }
  Digest(properties.split);
  Walk(properties.spotInkLimit);
  Walk(properties.chromaAdjust.c_str());
}

void ReadLists(const VKCLProfileHandler& handler, const VKCLProfile& profile) {
  ProfileDataList list;
  for (const auto signature : {QX54, QX55, QX56, QX57, QX59, QX60, QX72, QX73}) {
    vkcl::ReadStoredList(profile, signature, list);
    Digest(list);
  }
  ProfileDataList other;
  Demand(handler.GetVKLinRefData(other) == vkcl::ReadStoredList(profile, QX72, list) &&
             Digest(other) == Digest(list),
         "the list of a tag is the same by either reader");
  handler.GetVKLinOutputData(other);
  Digest(other);
  SplitParam split;
  if (!vkcl::ReadStoredSplit(profile, split)) return;
  Digest(split);
  split.ConvertToV4();
  Digest(split);
}

void Extract(const VKCLProfileHandler& handler, const Bytes& payload) {
  static const std::string name = vkcl::fuzz::FilePath("extracted");
  const AFilePath path(name);
  using Handler = VKCLProfileHandler;
  for (const auto type : {Handler::EnbedFileTRC, Handler::EnbedFile1, Handler::EnbedFile2,
                          Handler::EnbedFile3, Handler::EnbedFile4}) {
    std::filesystem::remove(name);
    const bool isWritten = handler.GetEnbededFile(path, type) == 1;
    Demand(isWritten || payload.empty(), "an embedded file can be written");
    Demand(!isWritten || vkcl::fuzz::ReadFile(name) == payload, "it is the payload");
  }
  constexpr std::size_t kHead = 132;  // version and name
  std::filesystem::remove(name);
  const bool isWritten = handler.GetVSDProfile(path) == 1;
  Demand(isWritten || payload.size() <= kHead, "an embedded sidecar can be written");
  if (!isWritten) return;
  Demand(payload.size() >= kHead &&
             vkcl::fuzz::ReadFile(name) == Bytes(payload.begin() + kHead, payload.end()),
         "it is what follows the head");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("payload.icc");
  const Bytes payload(data, data + size);
  const Bytes element = vkcl::fuzz::DataElement(payload);
  std::vector<vkcl::fuzz::Tag> tags;
  for (std::uint32_t number = 50; number <= 76; ++number) {
    tags.push_back({0x51580000 | ('0' + number / 10) << 8 | ('0' + number % 10), element});
  }
  tags.push_back({0x74617267, element});  // 'targ', of a wrong type
  const Bytes file = vkcl::fuzz::Profile(tags);
  vkcl::fuzz::WriteFile(path, file.data(), file.size());
  VKCLProfileHandler handler(AFilePath(path), 0);
  Demand(handler.IsICCFile() == 1, "the profile is valid");
  ReadRecords(handler);
  ReadLists(handler, *handler.GetProfilePtr());
  ReadState(handler, payload);
  ReadPlaceholder(handler, *handler.GetProfilePtr());
  Extract(handler, payload);
  VKCLProfileProperties properties;
  Demand(handler.GetVKCLProfileProperties(properties, 1) == 1, "what has a state has properties");
  Walk(properties);
  return 0;
}
