// What is wrong with a profile file, or unusual about it.
#pragma once

#include <string>
#include <vector>

#include "platform/Export.h"
#include "platform/plinth/AFilePath.h"

namespace vkcl {

/// How grave a finding is; a higher value is graver.
enum class Severity {
  Note,     ///< unusual, and nobody's mistake
  Warning,  ///< against the standard or a loss of meaning; readers get along
  Error,    ///< data are missing, or readers refuse the file
};

/// "note", "warning" or "error".
VKCL_API const char* SeverityText(Severity severity);

/// One thing that is wrong or unusual.
struct VKCL_API Finding {
  Severity severity = Severity::Note;  ///< how grave it is
  std::string rule;                    ///< stable name of the rule, as "table.beyond-end"
  std::string clause;  ///< of ICC.1:2001-04, as "6.2.2"; empty for what no clause speaks of
  std::string tag;     ///< signature that it is about; empty for the file as a whole
  std::string text;    ///< in words, with the numbers
};

/// Looks at header, tag table, layout of the tag data, the tags that the class asks for, their
/// types, and the private tags; part after part, each in the order of the file. None for a file
/// that is as it should be. At most 100 findings of a rule, and then a note that tells how many
/// more. A file that cannot be read gives the finding "file.unreadable", as one does when memory is
/// short; throws std::bad_alloc when there is none even for that, for no finding would say that all
/// is well.
VKCL_API std::vector<Finding> CheckProfile(const AFilePath& path);

/// The gravest of the findings; Note for none.
VKCL_API Severity GravestOf(const std::vector<Finding>& findings);

}  // namespace vkcl
