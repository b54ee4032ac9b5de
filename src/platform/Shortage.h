// Shortage of memory where the operation that met it goes on, or answers as if something were
// missing.
#pragma once

#include <cstdint>

namespace vkcl {

/// How often this thread met one so far.
inline std::uint64_t& ShortagesMet() noexcept {
  static thread_local std::uint64_t count = 0;
  return count;
}

/// Hands on what a new that does not throw gave, and takes note of a null pointer. Not for sizes
/// that no memory holds: those are wrong, whatever the machine has.
template <class Type>
Type* NotedIfNull(Type* made) noexcept {
  if (made == nullptr) ++ShortagesMet();
  return made;
}

/// Tells an operation that gathers what there is whether something only seemed to be missing.
class ShortageWatch {
 public:
  /// Whether this thread met a shortage since the object was made.
  bool Met() const noexcept { return ShortagesMet() != start_; }

 private:
  std::uint64_t start_ = ShortagesMet();
};

}  // namespace vkcl
