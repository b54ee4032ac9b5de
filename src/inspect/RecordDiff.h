// What two payloads of one tag differ in.
#pragma once

#include <string>

#include "inspect/ProfileDiff.h"
#include "inspect/TagView.h"

namespace vkcl {

/// Compares bytes from the start; `place` is what they are. False when the sink wants no more.
bool CompareBytes(const std::string& place, ByteSource& before, ByteSource& after,
                  const DifferenceSink& sink);

/// Compares records field by field. False when the sink wants no more.
bool CompareRecords(const std::string& place, const RecordView& before, const RecordView& after,
                    const DifferenceSink& sink);

}  // namespace vkcl
