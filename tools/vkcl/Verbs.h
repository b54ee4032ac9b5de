// The verbs of the tool, as the command line knows them.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace vkcl::tool {

/// Adds the verbs to the app. A verb runs while the command line is parsed; then the result tells
/// its exit code. The app may be parsed only as long as the result, or a copy of it, exists.
std::function<int()> AddVerbs(CLI::App& app);

}  // namespace vkcl::tool
