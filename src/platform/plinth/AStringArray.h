// An ordered list of byte strings.
#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "platform/plinth/AString.h"

class AStringArray {
 public:
  AStringArray() = default;
  AStringArray(std::initializer_list<AString> names) : names_(names) {}

  std::size_t size() const noexcept { return names_.size(); }
  bool empty() const noexcept { return names_.empty(); }
  const AString& operator[](std::size_t position) const { return names_[position]; }
  AString& operator[](std::size_t position) { return names_[position]; }

  void append(const AString& name) { names_.push_back(name); }
  /// Puts `name` before the element at `position`; a position behind the end appends.
  void insert(std::size_t position, const AString& name) {
    const std::size_t place = std::min(position, names_.size());
    names_.insert(names_.begin() + static_cast<std::ptrdiff_t>(place), name);
  }
  void removeAll() noexcept { names_.clear(); }

  auto begin() const noexcept { return names_.begin(); }
  auto end() const noexcept { return names_.end(); }

  friend bool operator==(const AStringArray& a, const AStringArray& b) {
    return a.names_ == b.names_;
  }
  friend bool operator!=(const AStringArray& a, const AStringArray& b) { return !(a == b); }

 private:
  std::vector<AString> names_;
};
