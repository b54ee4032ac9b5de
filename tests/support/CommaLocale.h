// A locale whose decimal separator is a comma.
#pragma once

#include <clocale>
#include <locale.h>

namespace vkcl::testing {

/// Gives this thread a German locale while it lives. The build makes the locale for the tests
/// (tests/CMakeLists.txt); `works()` tells whether it could be had.
class CommaLocale {
 public:
  CommaLocale();
  ~CommaLocale();
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  bool works() const { return locale_ != nullptr; }

 private:
  locale_t locale_ = nullptr;
  locale_t previous_ = nullptr;
};

}  // namespace vkcl::testing
