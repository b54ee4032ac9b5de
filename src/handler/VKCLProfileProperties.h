// Everything that the library knows about a profile, in one record.
#pragma once

#include "handler/VKCLProfileOptions.h"
#include "platform/Export.h"
#include "platform/plinth/AString.h"
#include "privatetags/InkLimitRecords.h"
#include "privatetags/ParameterRecords.h"
#include "privatetags/ProfileDataList.h"
#include "split/SplitParam.h"

/// Filled by VKCLProfileHandler::GetVKCLProfileProperties. Each member starts as its own type does,
/// and copies as its own type does (an assigned dither record carries only the head of its table),
/// but for the spot ink limit: a copy here has arrays of its own.
struct VKCL_API VKCLProfileProperties {
  VKSingleInkLimitWithLinRef singleInkLimit;
  VKMultiInklimit multiInkLimit;
  SplitParam split;
  VKDitherParam dither;
  VKColorParam colorParam;
  VKCompatibilityParam compatibility;
  ProfileDataList linReference;
  ProfileDataList linMeasurement;
  ProfileDataList gbReference;
  ProfileDataList gbMeasurement;
  ProfileDataList charReference;  ///< device values
  ProfileDataList charMeasurement;
  VKCLProfileOptions options;
  VKSpotSingleInkLimit spotInkLimit;
  VKVSDProfileParam vsdParam;
  int hasChromaAdjust = 0;  ///< 1 when there is a chroma adjustment that is not empty
  AString chromaAdjust;
  VKProfileExtraParam extraParam;

  VKCLProfileProperties() = default;
  VKCLProfileProperties(const VKCLProfileProperties& other);
  VKCLProfileProperties& operator=(const VKCLProfileProperties& other);
};
