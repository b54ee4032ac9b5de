// An ordered list of byte strings.
#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "platform/plinth/AString.h"

/// Strings in the order in which they were put there. Places count from 0; one that is not there
/// must not be asked for.
class AStringArray {
 public:
  AStringArray() = default;
  /// The given names, in their order.
  AStringArray(std::initializer_list<AString> names) : names_(names) {}

  /// How many strings there are.
  std::size_t size() const noexcept { return names_.size(); }
  /// Whether there are none.
  bool empty() const noexcept { return names_.empty(); }
  ///@{
  /// The string at a place, which must be there.
  const AString& operator[](std::size_t position) const { return names_[position]; }
  AString& operator[](std::size_t position) { return names_[position]; }
  ///@}

  /// Puts `name` behind the others.
  void append(const AString& name) { names_.push_back(name); }
  /// Puts `name` before the element at `position`; a position behind the end appends.
  void insert(std::size_t position, const AString& name) {
    const std::size_t place = std::min(position, names_.size());
    names_.insert(names_.begin() + static_cast<std::ptrdiff_t>(place), name);
  }
  /// Leaves no string.
  void removeAll() noexcept { names_.clear(); }

  ///@{
  /// The strings in their order, for reading.
  auto begin() const noexcept { return names_.begin(); }
  auto end() const noexcept { return names_.end(); }
  ///@}

  ///@{
  /// Whether both hold the same bytes in the same order.
  friend bool operator==(const AStringArray& a, const AStringArray& b) {
    return a.names_ == b.names_;
  }
  friend bool operator!=(const AStringArray& a, const AStringArray& b) { return !(a == b); }
  ///@}

 private:
  std::vector<AString> names_;
};
