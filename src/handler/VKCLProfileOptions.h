// The options with which a profile was computed.
#pragma once

#include "platform/Export.h"
#include "platform/plinth/AString.h"

/// Seven of the profiler library's options, as text. Each member is named as its option's key.
class VKCL_API VKCLProfileOptions {
 public:
  ///@{
  /// The value of the option of that name, as the profile has it; a default until it is read.
  AString ProfileSize = "2";
  AString ProfileFormat = "4";
  AString BlackGeneration = "GCRSmooth";
  AString BlackWidth = "100";
  AString BlackStart = "0";
  AString BrightenerCorrection = "0.0";
  AString InkTotal;
  ///@}
};

namespace vkcl {

/// An option's key in the profiler library, and its member.
struct ProfileOptionKey {
  const char* key;                      ///< name in the profiler library and in the file
  AString VKCLProfileOptions::*member;  ///< where the value is
};

/// The options in the order in which the profiler library is asked for them.
inline constexpr ProfileOptionKey kProfileOptionKeys[] = {
    {"ProfileSize", &VKCLProfileOptions::ProfileSize},
    {"BlackGeneration", &VKCLProfileOptions::BlackGeneration},
    {"BlackStart", &VKCLProfileOptions::BlackStart},
    {"BlackWidth", &VKCLProfileOptions::BlackWidth},
    {"BrightenerCorrection", &VKCLProfileOptions::BrightenerCorrection},
    {"ProfileFormat", &VKCLProfileOptions::ProfileFormat},
    {"InkTotal", &VKCLProfileOptions::InkTotal},
};

}  // namespace vkcl
