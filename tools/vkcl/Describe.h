// What a profile file is, as one document from which the text and the JSON output are made.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace vkcl::tool {

/// Describes the profile at `path`, opened with `channels` (0: from the header). Texts in the
/// result are valid UTF-8. A file that is no ICC profile has "valid" false and a "reason"; a
/// profile whose colour space tells no channel count is described all the same.
nlohmann::ordered_json Describe(const std::string& path, int channels);

/// The title of a private tag, for people.
std::string TitleOf(std::uint32_t signature);

/// The name of a finished state, for people.
std::string StateName(int state);

}  // namespace vkcl::tool
