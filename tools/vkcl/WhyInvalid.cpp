#include "WhyInvalid.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "Opened.h"
#include "Text.h"

namespace vkcl::tool {
namespace {

constexpr std::size_t kHeader = 128;
constexpr std::size_t kCountEnd = 132;
constexpr std::uint64_t kEntry = 12;

std::uint32_t Big32(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

std::string WhyHeaderIsRefused(std::ifstream& file, std::uint64_t length) {
  std::array<unsigned char, kCountEnd> start = {};
  file.read(reinterpret_cast<char*>(start.data()), start.size());
  const auto got = static_cast<std::size_t>(file.gcount());
  if (got < kHeader) {
    return fmt::format("the file is {} bytes long, and an ICC header takes {}", got, kHeader);
  }
  if (Big32(&start[36]) != icMagicNumber) return "bytes 36 to 39 are not 'acsp'";
  if (got < kCountEnd) {
    return fmt::format("the file ends at byte {}, and the tag count stands at bytes 128 to 131",
                       got);
  }
  const std::uint64_t count = Big32(&start[kHeader]);
  if (kCountEnd + kEntry * count > length) {
    return fmt::format(
        "the tag count at bytes 128 to 131 is {}, and a table of that length ends at byte {}, but "
        "the file ends at byte {}",
        count, kCountEnd + kEntry * count, length);
  }
  return {};
}

}  // namespace

std::string WhyUnreadable(const std::string& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return "it is a folder";
  const auto status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    return "it is not a regular file";
  }
  errno = 0;
  if (std::ifstream(path, std::ios::binary)) return {};
  const int reason = errno != 0 ? errno : ENOENT;
  return fmt::format("it cannot be opened: {}", std::generic_category().message(reason));
}

std::string WhyInvalid(const std::string& path, int channels) {
  std::string why = WhyUnreadable(path);
  if (!why.empty()) return why;
  std::ifstream file(path, std::ios::binary);
  std::error_code error;
  const std::uint64_t length = std::filesystem::file_size(path, error);
  if (error) return "it is not a regular file";
  why = WhyHeaderIsRefused(file, length);
  if (!why.empty()) return why;

  const OpenedProfile profile(path, channels);
  if (profile.isValidICC() != 0) return {};
  if (channels != 0 || profile.tagTable == nullptr) {
    return "it cannot be loaded; memory or file handles are short";
  }
  return fmt::format(
      "its colour space '{}' does not tell a number of channels; give it with --channels",
      SignatureText(profile.GetColorSpace()));
}

}  // namespace vkcl::tool
