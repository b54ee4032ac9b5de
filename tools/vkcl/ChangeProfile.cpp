#include "ChangeProfile.h"

#include <fmt/format.h>

#include <filesystem>

#include "Opened.h"
#include "platform/plinth/AFile.h"
#include "profile/TagLayout.h"

namespace vkcl::tool {
namespace {

// A sibling of the file that does not exist. Never named ".tmp": the store removes such a file.
AFilePath Sibling(const std::string& path) {
  for (int i = 0;; ++i) {
    AFilePath sibling(fmt::format("{}.vkcl-new-{}", path, i));
    if (!sibling.exists()) return sibling;
  }
}

Result TakePlace(const AFilePath& copy, const std::string& path) {
  std::error_code error;
  const auto mode = std::filesystem::status(path, error).permissions();
  if (!error) std::filesystem::permissions(copy.str(), mode, error);
  error.clear();
  // Through a symbolic link to the file that it names.
  const std::filesystem::path target = std::filesystem::canonical(path, error);
  if (!error) std::filesystem::rename(copy.str(), target, error);
  if (!error) return {};
  return Refused(fmt::format("the changed copy cannot take its place: {}", error.message()));
}

}  // namespace

Result ChangeProfile(const std::string& path, int channels, const LayoutTest& suits,
                     const Operation& operation) {
  OpenedHandler handler(path, channels);
  const VKCLProfile& profile = *handler.GetProfilePtr();
  if (suits(profile)) return operation(handler);

  // The copy could take the place of a file that must not be written.
  if (AFile file; !file.open(profile.filePath, AFile::ReadWrite)) {
    return Refused("it cannot be opened for writing");
  }
  const AFilePath copy = Sibling(path);
  if (!ArrangeTagData(profile, copy)) {
    return Refused(
        "its tag data do not lie in table order, and a copy in order could not be written (a tag "
        "reaches beyond the end of the file, or the disk is full)");
  }
  Result result;
  {
    OpenedHandler arranged(copy.str(), profile.channelCount);
    result = operation(arranged);
  }
  if (result.outcome == Outcome::Done) {
    const Result placed = TakePlace(copy, path);
    if (placed.outcome == Outcome::Done) {
      result.message += "; its tag data were brought into table order first";
      return result;
    }
    result = placed;
  }
  copy.remove();
  return result;
}

}  // namespace vkcl::tool
