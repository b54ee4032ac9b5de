// The verbs about the tool itself: help, completion, manual.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>

namespace vkcl::tool {

/// Adds them to the app, which has all other verbs by then. The result must live as long as the app
/// is parsed.
std::shared_ptr<void> AddSelfVerbs(CLI::App& app);

}  // namespace vkcl::tool
