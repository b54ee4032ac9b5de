// The encoding that the host's narrow texts have.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "support/TempDir.h"

namespace vkcl::testing {

/// While it lives, narrow texts are UTF-8, whatever the environment that the tests were started in.
class Utf8Host {
 public:
  Utf8Host();
  ~Utf8Host();
  Utf8Host(const Utf8Host&) = delete;
  Utf8Host& operator=(const Utf8Host&) = delete;

 private:
  std::optional<std::string> before_;
};

/// A locale with a character set of choice, made for the test. What runs in it does so in a process
/// of its own: the locale belongs to the whole process, and the other tests shall not see it.
class MadeLocale {
 public:
  /// A locale with `charmap` as its character set, made from that of `language`.
  MadeLocale(const std::string& language, const std::string& charmap);

  /// Whether the locale could be made.
  bool works() const { return made_; }

  /// What `run` gives in this locale; "failed" when the process did not come to its end.
  std::string Run(const std::function<std::string()>& run) const;

 private:
  TempDir dir_;
  bool made_ = false;
};

}  // namespace vkcl::testing
