#include "support/CommaLocale.h"

#include <cstdlib>
#include <mutex>

// The C library's newlocale does not release its list of the folders in LOCPATH.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:argz_add_sep\n"; }

namespace vkcl::testing {
namespace {

void UseBuiltLocales() {
  static std::once_flag once;
  std::call_once(once, [] { ::setenv("LOCPATH", VKCL_LOCALE_DIR, 1); });
}

}  // namespace

CommaLocale::CommaLocale() {
  UseBuiltLocales();
  locale_ = ::newlocale(LC_ALL_MASK, "de_DE.UTF-8", nullptr);
  if (locale_ != nullptr) previous_ = ::uselocale(locale_);
}

CommaLocale::~CommaLocale() {
  if (locale_ == nullptr) return;
  ::uselocale(previous_);
  ::freelocale(locale_);
}

}  // namespace vkcl::testing
