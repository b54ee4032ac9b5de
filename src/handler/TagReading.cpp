#include "handler/TagReading.h"

#include <filesystem>

#include "platform/plinth/AFile.h"

namespace vkcl {
namespace {

bool IsRegular(const AFilePath& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(host::SystemPath(path.str()), error);
}

}  // namespace

int WriteNewFile(const AFilePath& path, const char* bytes, std::size_t length) {
  if (path.exists()) {
    if (!IsRegular(path)) return 0;
    path.remove();
  }
  AFile file;
  if (!file.open(path, AFile::Write | AFile::Create)) return 0;
  const bool written = file.write(bytes, length) == length;
  if (file.close() && written) return 1;
  path.remove();
  return 0;
}

}  // namespace vkcl
