// How much memory something takes at most. Whatever is resident counts, measured in a process of
// its own. A sanitizer keeps released memory and cannot be measured like this.
#pragma once

#if defined(__has_feature)
#define VKCL_HAS_FEATURE(name) __has_feature(name)
#else
#define VKCL_HAS_FEATURE(name) 0
#endif
#if !defined(__linux__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || \
    VKCL_HAS_FEATURE(address_sanitizer) || VKCL_HAS_FEATURE(thread_sanitizer)
#define VKCL_MEMORY_IS_MEASURABLE 0
#else
#define VKCL_MEMORY_IS_MEASURABLE 1
#endif

#if VKCL_MEMORY_IS_MEASURABLE

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <string>

namespace vkcl::testing {

/// A line of /proc/self/status in bytes.
inline long StatusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long kilobytes = 0;
    if (word == name && status >> kilobytes) return kilobytes * 1024;
  }
  return -1;
}

/// How far the resident set grew at most while `run` ran in a child process, in bytes; -1 when
/// `run` said no or nothing could be measured. `rehearse` does the same on a small scale first, so
/// that the code itself is in memory.
inline long PeakGrowth(const std::function<bool()>& rehearse, const std::function<bool()>& run) {
  int ends[2] = {};
  if (::pipe(ends) != 0) return -1;
  const pid_t child = ::fork();
  if (child == 0) {
    ::mallopt(M_MMAP_THRESHOLD, 64 * 1024);  // large blocks go back when they are released
    const bool rehearsed = rehearse();
    ::malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // the high-water mark starts from here
    const long before = StatusBytes("VmRSS:");
    const bool good = rehearsed && run();
    const long growth = StatusBytes("VmHWM:") - before;
    const long result = good && before > 0 ? growth : -1;
    const bool told = ::write(ends[1], &result, sizeof result) == sizeof result;
    ::_exit(told ? 0 : 1);
  }
  ::close(ends[1]);
  long result = -1;
  const bool heard = ::read(ends[0], &result, sizeof result) == sizeof result;
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  return heard && status == 0 ? result : -1;
}
/// The same without a rehearsal.
inline long PeakGrowth(const std::function<bool()>& run) {
  return PeakGrowth([] { return true; }, run);
}

}  // namespace vkcl::testing

#endif
