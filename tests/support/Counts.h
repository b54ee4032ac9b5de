// What a build that counts the lines it runs (./dev coverage) has counted.
#pragma once

#if defined(__linux__)
extern "C" void __gcov_dump(void) __attribute__((weak));  // null in other builds
#endif

namespace vkcl::testing {

/// Saves what a child process has counted, which its _exit would lose.
inline void SaveCounts() {
#if defined(__linux__)
  if (__gcov_dump != nullptr) __gcov_dump();
#endif
}

}  // namespace vkcl::testing
