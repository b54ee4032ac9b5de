#include <locale.h>

#include "platform/plinth/ALocaleSwitcher.h"

ALocaleSwitcher::ALocaleSwitcher() noexcept {
  // Only the numbers change; messages and characters of the thread stay as they are.
  locale_t current = ::duplocale(::uselocale(nullptr));
  if (current == nullptr) return;
  locale_t neutral = ::newlocale(LC_NUMERIC_MASK, "C", current);
  if (neutral == nullptr) {
    ::freelocale(current);
    return;
  }
  neutral_ = neutral;
  previous_ = ::uselocale(neutral);
}

ALocaleSwitcher::~ALocaleSwitcher() {
  if (neutral_ == nullptr) return;
  ::uselocale(static_cast<locale_t>(previous_));
  ::freelocale(static_cast<locale_t>(neutral_));
}
