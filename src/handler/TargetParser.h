// The text of a characterisation target (CGATS.5): device values and what was measured from them.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/Export.h"
#include "privatetags/ProfileDataList.h"

namespace vkcl {

/// The rule by which a target text is refused.
enum class TargetRule {
  Accepted,
  NoFormat,             ///< there is no BEGIN_DATA_FORMAT
  FormatNotClosed,      ///< END_DATA_FORMAT is missing, or stands before BEGIN_DATA_FORMAT
  UnknownDeviceFormat,  ///< the first field names no known device colour space
  NoMeasurement,        ///< no field of XYZ, LAB or R_380 before END_DATA_FORMAT
  NoData,               ///< there is no BEGIN_DATA behind the format
  DataNotClosed,        ///< END_DATA is missing, or stands before BEGIN_DATA
  NoSamples,            ///< not a single line follows BEGIN_DATA
  TooLarge,             ///< the text announces far more values than it can hold, or memory is short
};

/// The rule in words, for people.
VKCL_API const char* TargetRuleText(TargetRule rule);

/// Reads a target text. The first field's word up to its first underscore gives the device colour
/// space; the fields before the first one that contains XYZ, LAB or R_380 are its channels; that
/// field says what was measured: 3 values of XYZ or Lab, or 36 of reflectance. Each data line is
/// one sample. A line that lacks numbers leaves zeros, and numbers beyond the fields are dropped.
///
/// The numbers of the text are read with a point whatever the locale, and rounded once to single
/// precision. The time is proportional to the text.
///
/// Three habits of this reader are kept for the texts that rely on them: every field name is taken
/// to be followed by exactly one separator, so runs of blanks and CR-LF between fields shift the
/// count; the data begin one character behind BEGIN_DATA, so a CR-LF there makes a first sample of
/// zeros; and lines are counted until their running length reaches the place of END_DATA as counted
/// from END_DATA_FORMAT, so that text behind END_DATA may count as samples of zeros.
///
/// When a text is refused the values of the lists stay; the formats and field counts found on the
/// way are set all the same (a list that holds values is then given zeros behind them, so that it
/// holds what its counters say).
VKCL_API TargetRule ParseTarget(std::string_view text, ProfileDataList& device,
                                ProfileDataList& measurement);

/// The colour space signature of a format word, compared without regard to case; 0 for a word
/// that has none. "GRAY" is '1CLR', deliberately not 'GRAY'.
VKCL_API std::uint32_t DataFormatOfWord(std::string_view word);

}  // namespace vkcl
