// What two payloads of one tag differ in.
#pragma once

#include <string>

#include "inspect/ProfileDiff.h"
#include "inspect/TagView.h"

namespace vkcl {

/// Tells the sink of a difference; what it says. The texts are whole when the difference is put
/// together: where memory is short for the second text of a braced list within a conditional
/// expression, GCC 12 destroys strings that were never made.
bool Tell(const DifferenceSink& sink, std::string place, std::string before, std::string after);

/// Compares bytes from the start; `place` is what they are. False when the sink wants no more.
bool CompareBytes(const std::string& place, ByteSource& before, ByteSource& after,
                  const DifferenceSink& sink);

/// Compares records field by field. False when the sink wants no more.
bool CompareRecords(const std::string& place, const RecordView& before, const RecordView& after,
                    const DifferenceSink& sink);

}  // namespace vkcl
