// The real ICC profiles of the system, and Little CMS as their independent reader.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "support/TempDir.h"

namespace vkcl::testing {

/// Every ICC file below the folders that the build names (VKCL_REAL_PROFILES), in a fixed order.
std::vector<std::filesystem::path> RealProfiles();

/// The real profile of that file name; the test fails without it.
std::filesystem::path RealProfile(const std::string& name);

/// What Little CMS tells of a profile.
struct LcmsView {
  bool opens = false;
  std::uint32_t deviceClass = 0;
  std::uint32_t colorSpace = 0;
  std::uint32_t pcs = 0;
  std::vector<std::uint32_t> order;     ///< signatures in table order
  std::map<std::uint32_t, Bytes> tags;  ///< raw bytes by signature
};
LcmsView ReadWithLcms(const std::filesystem::path& path);

/// A fixed set of device colours, converted to Lab by the profile: three numbers a colour, for
/// each intent that the profile takes. Empty when Little CMS makes no transform of it.
std::vector<double> ConvertWithLcms(const std::filesystem::path& path);

}  // namespace vkcl::testing
