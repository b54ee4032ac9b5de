#include "inspect/ProfileNames.h"

#include <algorithm>
#include <span>

#include "inspect/TagSchema.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

struct Named {
  std::uint32_t value;
  const char* name;
};

constexpr Named kClasses[] = {
    {icSigInputClass, "input"},
    {icSigDisplayClass, "display"},
    {icSigOutputClass, "output"},
    {icSigLinkClass, "device link"},
    {icSigColorSpaceClass, "colour space conversion"},
    {icSigAbstractClass, "abstract"},
    {icSigNamedColorClass, "named colours"},
};

constexpr Named kIntents[] = {
    {0, "perceptual"},
    {1, "media-relative colorimetric"},
    {2, "saturation"},
    {3, "ICC-absolute colorimetric"},
};

constexpr Named kTags[] = {
    {icSigAToB0Tag, "device to connection space, perceptual"},
    {icSigAToB1Tag, "device to connection space, colorimetric"},
    {icSigAToB2Tag, "device to connection space, saturation"},
    {icSigBToA0Tag, "connection space to device, perceptual"},
    {icSigBToA1Tag, "connection space to device, colorimetric"},
    {icSigBToA2Tag, "connection space to device, saturation"},
    {icSigCharTargetTag, "characterisation target"},
    {icSignature("bXYZ"), "blue colorant"},
    {icSignature("bTRC"), "blue tone curve"},
    {icSignature("bkpt"), "media black point"},
    {icSignature("calt"), "calibration date"},
    {icSignature("chad"), "chromatic adaptation"},
    {icSignature("chrm"), "chromaticity"},
    {icSignature("cprt"), "copyright"},
    {icSignature("crdi"), "colour rendering dictionary"},
    {icSignature("desc"), "description"},
    {icSignature("devs"), "device settings"},
    {icSignature("dmdd"), "device model"},
    {icSignature("dmnd"), "device manufacturer"},
    {icSignature("gXYZ"), "green colorant"},
    {icSignature("gTRC"), "green tone curve"},
    {icSignature("gamt"), "gamut"},
    {icSignature("kTRC"), "gray tone curve"},
    {icSignature("lumi"), "luminance"},
    {icSignature("meas"), "measurement conditions"},
    {icSignature("meta"), "dictionary"},
    {icSignature("ncl2"), "named colours"},
    {icSignature("pre0"), "preview, perceptual"},
    {icSignature("pre1"), "preview, colorimetric"},
    {icSignature("pre2"), "preview, saturation"},
    {icSignature("ps2i"), "PostScript rendering intent"},
    {icSignature("ps2s"), "PostScript colour space array"},
    {icSignature("pseq"), "profile sequence"},
    {icSignature("rXYZ"), "red colorant"},
    {icSignature("rTRC"), "red tone curve"},
    {icSignature("resp"), "output response"},
    {icSignature("scrd"), "screening description"},
    {icSignature("scrn"), "screening"},
    {icSignature("tech"), "technology"},
    {icSignature("bfd "), "under-colour removal and black generation"},
    {icSignature("vued"), "viewing conditions, described"},
    {icSignature("view"), "viewing conditions"},
    {icSignature("wtpt"), "media white point"},
};

constexpr const char* kStates[kFinishedStates] = {
    "none",         "ink limits",       "ink split",        "linearisation", "multiple ink limits",
    "gray balance", "characterisation", "finished profile",
};

const char* NameOf(std::span<const Named> table, std::uint32_t value) {
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const Named& row) { return row.value == value; });
  return found == table.end() ? nullptr : found->name;
}

}  // namespace

const char* ClassName(std::uint32_t deviceClass) { return NameOf(kClasses, deviceClass); }

const char* IntentName(std::uint32_t intent) { return NameOf(kIntents, intent); }

const char* StandardTagTitle(std::uint32_t signature) { return NameOf(kTags, signature); }

const char* TagTitle(std::uint32_t signature) {
  const TagSchema* schema = FindTagSchema(signature);
  return schema != nullptr ? schema->title : StandardTagTitle(signature);
}

const char* FinishedStateName(int state) {
  return state >= 0 && state < kFinishedStates ? kStates[state] : nullptr;
}

}  // namespace vkcl
