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
class VKCL_API VKCLProfileProperties {
 public:
  VKSingleInkLimitWithLinRef singleInkLimit;  ///< 'QX51'
  VKMultiInklimit multiInkLimit;              ///< 'QX52', of version 2 or above
  SplitParam split;         ///< 'QX50' in version 4, as the handler's GetSplitParam reads it
  VKDitherParam dither;     ///< 'QX66'
  VKColorParam colorParam;  ///< 'QX53'
  VKCompatibilityParam compatibility;  ///< 'QX67'
  ProfileDataList linReference;        ///< 'QX55', device values of the linearisation
  ProfileDataList linMeasurement;      ///< 'QX54'
  ProfileDataList gbReference;         ///< 'QX57', device values of the gray balance
  ProfileDataList gbMeasurement;       ///< 'QX56'
  ProfileDataList charReference;       ///< 'QX60', or the target's device values
  ProfileDataList charMeasurement;     ///< 'QX59', or what the target says was measured
  VKCLProfileOptions options;          ///< with which the profile was computed
  VKSpotSingleInkLimit spotInkLimit;   ///< 'QX68'
  VKVSDProfileParam vsdParam;          ///< head of 'QX71'
  int hasChromaAdjust = 0;             ///< 1 when there is a chroma adjustment that is not empty
  AString chromaAdjust;                ///< 'QX75'
  VKProfileExtraParam extraParam;      ///< 'QX76'

  VKCLProfileProperties() = default;
  ///@{
  /// Copies each member as its own type does, but for the spot ink limit, whose arrays are copied.
  /// When memory is short for a text or for those arrays, nothing changes.
  VKCLProfileProperties(const VKCLProfileProperties& other) noexcept;
  VKCLProfileProperties& operator=(const VKCLProfileProperties& other) noexcept;
  ///@}
};
