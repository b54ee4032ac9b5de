// The description of a profile as text for a person.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vkcl::tool {

/// Lines of text, the last one ended. Safe for a terminal whatever the file holds.
std::string InfoText(const nlohmann::ordered_json& document);

}  // namespace vkcl::tool
