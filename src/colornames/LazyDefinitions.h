// Colour definitions that are read when they are first needed.
#pragma once

#include <atomic>
#include <mutex>
#include <utility>

#include "colornames/ColorDefinitions.h"

namespace vkcl {

/// The definitions of the running program, as LoadColorDefinitions gives them. Throws when memory
/// is short.
ColorDefinitions ReadColorDefinitions();

/// One table of extra colorants. It is read from the file at each use until the file gives at least
/// one entry, and never again then. Safe when used from many threads at once.
class LazyDefinitions {
 public:
  const ColorDefinitions& Get() {
    if (filled_.load(std::memory_order_acquire)) return definitions_;
    const std::lock_guard lock(mutex_);
    if (!filled_.load(std::memory_order_relaxed)) {
      ColorDefinitions loaded = ReadColorDefinitions();
      if (loaded.names.empty()) return kNone;
      definitions_ = std::move(loaded);
      filled_.store(true, std::memory_order_release);
    }
    return definitions_;
  }

 private:
  inline static const ColorDefinitions kNone;

  std::mutex mutex_;
  std::atomic<bool> filled_ = false;
  ColorDefinitions definitions_;  // constant once it is filled
};

}  // namespace vkcl
