// How far long work has come, on a terminal.
#pragma once

#include <chrono>  // IWYU pragma: keep
#include <cstddef>

namespace vkcl::tool {

/// One line on the error output, where that is a terminal. It appears when the work lasts, and is
/// gone when the object is.
class Progress {
 public:
  explicit Progress(std::size_t count);
  ~Progress() { Erase(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// To be called often.
  void Show(std::size_t done);
  /// Makes room for something that is printed.
  void Erase();

 private:
  std::size_t count_;
  bool isWanted_;
  bool isShown_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace vkcl::tool
