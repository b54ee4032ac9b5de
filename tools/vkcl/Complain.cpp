#include "Complain.h"

#include <fmt/format.h>

#include <cstdio>

namespace vkcl::tool {

void Complain(const std::string& text) { fmt::print(stderr, "vkcl: {}\n", text); }

}  // namespace vkcl::tool
