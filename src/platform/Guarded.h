// The wall that exceptions do not pass.
#pragma once

#include <type_traits>

namespace vkcl {

/// Runs `operation` and returns its result. An exception (in this library that is a failed
/// allocation) ends here and becomes the value-initialised result: 0, false or null.
template <class Operation>
std::invoke_result_t<Operation> Guarded(Operation&& operation) noexcept {
  try {
    return operation();
  } catch (...) {
    return std::invoke_result_t<Operation>();
  }
}

}  // namespace vkcl
