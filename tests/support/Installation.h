// A program in a folder of its own, with or without a colour definitions file; and bodies of tests
// that run in a process of their own, because a table of extra colorants, once filled, stays as it
// is as long as the process lives.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <string_view>

#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace vkcl::testing {

/// While it lives, the program's executable is "Bin/host" in a new folder, so its definitions are
/// looked for at "Program/Colors.ini" in that folder. There are none at first.
class Installation {
 public:
  Installation() = default;
  explicit Installation(std::string_view definitions) { Define(definitions); }

  /// Writes the definitions file.
  void Define(std::string_view definitions) const {
    std::filesystem::create_directories(DefinitionsPath().parent_path());
    WriteFile(DefinitionsPath(), Bytes(definitions.begin(), definitions.end()));
  }
  /// Removes it.
  void Undefine() const { std::filesystem::remove(DefinitionsPath()); }

  std::filesystem::path DefinitionsPath() const { return dir_.path() / "Program" / "Colors.ini"; }

 private:
  const TempDir dir_;
  const ExecutableAt executable_{(dir_.path() / "Bin" / "host").make_preferred().string()};
};

/// A line of the definitions file; the values that are kept for the host are 0.
inline std::string DefinitionLine(const std::string& name, std::uint32_t flag) {
  std::ostringstream line;
  line << name << ' ' << std::hex << flag << " 0 0 0\n";
  return line.str();
}

template <class Body>
[[noreturn]] void RunAndExit(const Body& body) {
  body();
  std::exit(::testing::Test::HasFailure() ? 1 : 0);
}

/// Runs a body with expectations in a child process. Its failures are printed there, and fail the
/// test here.
template <class Body>
void InOwnProcess(const Body& body) {
  EXPECT_EXIT(RunAndExit(body), ::testing::ExitedWithCode(0), "");
}

}  // namespace vkcl::testing
