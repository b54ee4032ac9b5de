// The calls of the profiler library that the tests can make fail, or look at. The linker puts these
// in the place of the library's own (--wrap), so every profiler library can be tested so.
#pragma once

#include <string>

namespace vkcl::testing {

enum class ProfilerCall { NewLink8, SaveLink8, NewLink16, SaveLink16, LoadLink16, WriteProfile };

/// While it lives, one call of this thread is refused: the `which`-th of its kind, from 0. A
/// refused save leaves what its buffer holds.
class RefusedProfilerCall {
 public:
  explicit RefusedProfilerCall(ProfilerCall call, int which = 0);
  ~RefusedProfilerCall();
  RefusedProfilerCall(const RefusedProfilerCall&) = delete;
  RefusedProfilerCall& operator=(const RefusedProfilerCall&) = delete;
};

/// The path that this thread named to the profiler last; empty before the first one.
const std::string& LastNamedPath();
/// Links of 16 bits that this thread has made and not released; the last one that it made.
int HeldLinks16();
void* LastLink16();

}  // namespace vkcl::testing
