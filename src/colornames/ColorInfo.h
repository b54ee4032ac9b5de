// Which channels of a colour mode hold the dilutions of an ink.
#pragma once

#include "platform/Export.h"

namespace ColorUtils {

/// Questions about the channels of a colour mode (colornames/ColorModes.h).
class VKCL_API ColorInfo {
 public:
  /// Channels of the light and the medium ink of a colorant (0 Cyan, 1 Magenta, 2 Yellow, 3 Black)
  /// in the canonical order of the mode, always below GetNumberOfChannels; -1 for an ink that the
  /// mode does not have. There is no medium yellow. 1; 0, and both -1, for any other colorant and
  /// for a mode that has no inks.
  static int GetLightMediumIndex(int colorMode, int colorantIndex, int& lightIndex,
                                 int& mediumIndex);
};

}  // namespace ColorUtils
