// The wall that exceptions do not pass.
#pragma once

#include <type_traits>

#include "platform/Shortage.h"

namespace vkcl {

/// Runs `operation` and returns its result. An exception (in this library that is a failed
/// allocation) ends here, is taken note of (ShortageWatch) and becomes the value-initialised
/// result: 0, false or null.
template <class Operation>
std::invoke_result_t<Operation> Guarded(Operation&& operation) noexcept {
  try {
    return operation();
  } catch (...) {
    ++ShortagesMet();
    return std::invoke_result_t<Operation>();
  }
}

}  // namespace vkcl
