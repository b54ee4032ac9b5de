// Everything that is known about a profile: its target, its options, its records and lists.
#include <array>
#include <memory>

#include "handler/TargetParser.h"
#include "handler/VKCLProfileHandler.h"
#include "platform/Guarded.h"
#include "platform/Shortage.h"
#include "platform/profiler/TesselColorProfiler.h"

using vkcl::Guarded;

namespace {

// Handles of the profiler library that release themselves.
template <void (*free)(void*)>
struct HandleDeleter {
  void operator()(void* handle) const { free(handle); }
};
using ProfilerHandle = std::unique_ptr<void, HandleDeleter<CLFreeCLProfilerRef>>;
using FileSpecHandle = std::unique_ptr<void, HandleDeleter<CLFreeFileSpecRef>>;

// A pair of lists that a profile carries from a finished state on.
struct ListPair {
  VKCLProfileFinishedState from;
  VKPrivateTagSignature reference;
  VKPrivateTagSignature measurement;
  ProfileDataList VKCLProfileProperties::*referenceList;
  ProfileDataList VKCLProfileProperties::*measurementList;
};
constexpr ListPair kListPairs[] = {
    {FinishedLinearisation, QX55, QX54, &VKCLProfileProperties::linReference,
     &VKCLProfileProperties::linMeasurement},
    {FinishedGrayBalance, QX57, QX56, &VKCLProfileProperties::gbReference,
     &VKCLProfileProperties::gbMeasurement},
    {FinishedCharacterisation, QX60, QX59, &VKCLProfileProperties::charReference,
     &VKCLProfileProperties::charMeasurement},
};

constexpr std::uint32_t kPlaceholderFormat = 0xFFFFFFFF;

}  // namespace

int VKCLProfileHandler::GetProfileOptions(VKCLProfileOptions& options) const {
  return Guarded([&] {
    const ProfilerHandle profiler(CLNewCLProfilerRef());
    const FileSpecHandle file(CLNewFileSpecRef());
    const AString path = VKCLMultiByteToUTF8(profile_.filePath.GetFullPath());
    CLName2FileSpec(file.get(), path.c_str());
    if (CLImportProfilerOptions(profiler.get(), file.get()) != 0) return 0;
    VKCLProfileOptions read;
    for (const vkcl::ProfileOptionKey& option : vkcl::kProfileOptionKeys) {
      std::array<char, 257> value = {};  // 256 bytes for the library, and a terminator of our own
      CLGetProfilerOption(profiler.get(), option.key, value.data());
      // An option that is not set replaces its default by the empty text: deliberately so.
      read.*option.member = AString(value.data());
    }
    options = std::move(read);  // all of them or none, for memory may be short
    return 1;
  });
}

int VKCLProfileHandler::ParseVKCLtargBuffer(VKCLProfileProperties& properties, const char* text) {
  if (text == nullptr) return 0;
  return vkcl::ParseTarget(text, properties.charReference, properties.charMeasurement) ==
                 vkcl::TargetRule::Accepted
             ? 1
             : 0;
}

int VKCLProfileHandler::LoadVKCLProfilePropertiesHelper(VKCLProfileProperties& properties) const {
  unsigned long size = 0;
  const std::unique_ptr<char[]> stored(profile_.ReadtargTag(size));
  if (!stored) return 0;
  const std::string text(stored.get(), size);  // zero-terminated
  if (ParseVKCLtargBuffer(properties, text.c_str()) == 0) return 0;
  return GetProfileOptions(properties.options);
}

int VKCLProfileHandler::GetVKCLProfileProperties(VKCLProfileProperties& properties,
                                                 int flag) const {
  return Guarded([&] {
    const vkcl::ShortageWatch shortage;
    VKCLProfileFinishedState state = FinishedNone;
    if (GetVKCLProfileFinishedState(state, flag) == 0) return 0;

    // What is missing keeps what the record had.
    GetVKCompatibilityParam(properties.compatibility);
    GetVKColorParam(properties.colorParam);
    GetSplitParam(properties.split, 1);
    GetVKDitherParam(properties.dither);
    GetVKSingleInkLimitWithLinRef(properties.singleInkLimit);
    GetVKMultiInklimit(properties.multiInkLimit, 2);
    GetVKSpotSIL(properties.spotInkLimit);
    LoadVKCLProfilePropertiesHelper(properties);
    GetVSDProfileParam(properties.vsdParam);
    const bool hasChroma = GetVKChromaAdjust(properties.chromaAdjust) != 0;
    properties.hasChromaAdjust = hasChroma && !properties.chromaAdjust.empty() ? 1 : 0;
    GetVKProfileExtraParam(properties.extraParam);

    for (const ListPair& pair : kListPairs) {
      if (state < pair.from) continue;
      ProfileDataList& reference = properties.*pair.referenceList;
      if (ReadProfileDataList(reference, pair.reference) != 0) {
        ReadProfileDataList(properties.*pair.measurementList, pair.measurement);
      } else {
        reference.ColorMode = properties.colorParam.ColorMode;
      }
    }
    // What memory was too short for is not missing: whoever stores the rest would lose it.
    return shortage.Met() ? 0 : 1;
  });
}

int VKCLProfileHandler::IsLinFake() const {
  return Guarded([&] {
    VKCLProfileProperties properties;
    if (GetVKCLProfileProperties(properties, 0) == 0) return 0;
    const ProfileDataList& list = properties.linMeasurement;
    return list.NumOfSamples == list.Measured && list.DataFormat == kPlaceholderFormat &&
                   list.DataList == nullptr
               ? 1
               : 0;
  });
}
