#include "Complain.h"

#include <fmt/format.h>

#include <cstdio>

#include "Style.h"

namespace vkcl::tool {

void Complain(const std::string& text) {
  const std::string line =
      fmt::format("{} {}\n", Painted(Stream::Error, Ink::Error, "vkcl:"), text);
  // There is nowhere to say that this failed; the exit code tells.
  static_cast<void>(std::fputs(line.c_str(), stderr));
}

}  // namespace vkcl::tool
