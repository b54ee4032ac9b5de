// Why the library does not take a file for a profile, in words.
#pragma once

#include <string>

namespace vkcl::tool {

/// Why a file cannot be read as one; empty when it can be opened.
std::string WhyUnreadable(const std::string& path);

/// The first thing that makes the library refuse the file when it is opened with that channel
/// count; empty when it is accepted. The file is looked at anew, byte by byte, by the rules of
/// loading.
std::string WhyInvalid(const std::string& path, int channels);

}  // namespace vkcl::tool
