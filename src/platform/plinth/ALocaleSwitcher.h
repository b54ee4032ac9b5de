// A scope in which numbers have a point as decimal separator.
#pragma once

#include "platform/Export.h"

/// For its lifetime this thread reads and writes numbers with a point as decimal separator,
/// whatever the host's locale; other threads keep theirs. Scopes may be nested.
class VKCL_API ALocaleSwitcher {
 public:
  ALocaleSwitcher() noexcept;
  ~ALocaleSwitcher();
  ALocaleSwitcher(const ALocaleSwitcher&) = delete;
  ALocaleSwitcher& operator=(const ALocaleSwitcher&) = delete;

 private:
  void* neutral_ = nullptr;   // the locale in force, where the system has locale objects
  void* previous_ = nullptr;  // what the thread had before
};
