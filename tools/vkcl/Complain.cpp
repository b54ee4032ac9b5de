#include "Complain.h"

#include <fmt/format.h>

#include <cstdio>

#include "Style.h"

namespace vkcl::tool {

void Complain(const std::string& text) {
  fmt::print(stderr, "{} {}\n", Painted(Stream::Error, Ink::Error, "vkcl:"), text);
}

}  // namespace vkcl::tool
