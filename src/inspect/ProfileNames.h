// What people call the classes, tags and states of profiles.
#pragma once

#include <cstdint>

#include "platform/Export.h"

namespace vkcl {

/// "output" for 'prtr' and so on (ICC.1:2001-04, 6.1.4); null for a class that is none of the
/// standard's.
VKCL_API const char* ClassName(std::uint32_t deviceClass);
/// "perceptual" for 0 and so on (6.1.11); null for a number above 3.
VKCL_API const char* IntentName(std::uint32_t intent);
/// What a tag of the standard holds (6.3); null for others.
VKCL_API const char* StandardTagTitle(std::uint32_t signature);
/// What any tag holds: a tag of the standard, or a private one by its schema; null for others.
VKCL_API const char* TagTitle(std::uint32_t signature);

/// How many finished states there are, "none" included.
inline constexpr int kFinishedStates = 8;
/// The name of a finished state (VKCLProfileFinishedState); null for a number that is none.
VKCL_API const char* FinishedStateName(int state);

}  // namespace vkcl
