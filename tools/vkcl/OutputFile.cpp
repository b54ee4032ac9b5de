#include "OutputFile.h"

#include <fmt/format.h>

#include <cstdint>
#include <filesystem>
#include <system_error>

#include "Host.h"
#include "Text.h"

namespace vkcl::tool {
namespace {

namespace fs = std::filesystem;

std::string MessageOf(int code) { return std::generic_category().message(code); }

}  // namespace

std::string WhyKept(const std::string& path, bool force) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) return {};
  if (fs::is_directory(status)) return fmt::format("{} is a folder", Printable(path));
  if (!fs::is_regular_file(status)) {
    return fmt::format("{} is not a regular file", Printable(path));
  }
  if (host::IsStandardInput(path)) {
    return fmt::format("{} is the standard input, and not replaced", Printable(path));
  }
  return force ? "" : fmt::format("{} exists; --force replaces it", Printable(path));
}

std::string WhyNotWritable(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::none) return error.message();
  if (!fs::exists(status) && fs::is_symlink(path, error)) return "it is a link that leads nowhere";
  const fs::path place = fs::is_symlink(path, error) ? fs::canonical(path, error) : fs::path(path);
  const fs::path folder = place.has_parent_path() ? place.parent_path() : fs::path(".");
  if (!fs::exists(folder, error)) {
    return fmt::format("there is no folder {}", Printable(folder.string()));
  }
  if (!fs::is_directory(folder, error)) {
    return fmt::format("{} is no folder", Printable(folder.string()));
  }
  if (fs::exists(status)) {
    if (const int no = host::WhyNotWritable(path); no != 0) return MessageOf(no);
  }
  if (const int no = host::WhyNotWritable(folder.string()); no != 0) {
    return fmt::format("nothing can be written into the folder {}: {}", Printable(folder.string()),
                       MessageOf(no));
  }
  return {};
}

Result NotWritten(const std::string& path) {
  const std::string why = WhyNotWritable(path);
  return Refused(fmt::format("{} could not be written: {}", Printable(path),
                             why.empty() ? "the file system refuses it, or is full" : why));
}

Result CopyNotWritten(const std::string& path, const VKCLProfile& profile,
                      const std::function<bool(const icTag& tag)>& counts) {
  std::error_code error;
  const std::uint64_t length = fs::file_size(profile.filePath.str(), error);
  for (std::uint32_t i = 0; i < profile.tagCount && !error; ++i) {
    const icTag& tag = profile.tagTable[i];
    if (!counts(tag) || std::uint64_t{tag.offset} + tag.size <= length) continue;
    return Refused(
        fmt::format("{} could not be written: its tag '{}' reaches beyond the end of "
                    "the profile's file",
                    Printable(path), SignatureText(tag.sig)));
  }
  return NotWritten(path);
}

}  // namespace vkcl::tool
