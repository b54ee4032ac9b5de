#include "platform/plinth/WholeFile.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "platform/plinth/AFile.h"
#include "platform/plinth/LargeBlock.h"

namespace vkcl {
std::int64_t OpenRegular(const AFilePath& path, AFile& file) {
  std::error_code error;
  const bool isRegular = std::filesystem::is_regular_file(host::SystemPath(path.str()), error);
  return isRegular && file.open(path, AFile::Read) ? file.length() : -1;
}

FileContent ReadWholeFile(const AFilePath& path, std::size_t headroom, std::uint64_t limit) {
  AFile file;
  const std::int64_t length = OpenRegular(path, file);
  if (length < 0 || static_cast<std::uint64_t>(length) > limit) return {};
  const auto size = static_cast<std::size_t>(length);
  FileContent content = {NewLargeBlock(headroom + size), headroom + size};
  std::memset(content.bytes.get(), 0, headroom);
  if (file.read(content.bytes.get() + headroom, size) != size) return {};
  return content;
}

FileContent ReadStretch(const AFilePath& path, std::uint64_t begin, std::uint64_t end) {
  AFile file;
  const std::int64_t length = OpenRegular(path, file);
  if (length < 0 || length > std::int64_t{UINT32_MAX}) return {};
  const std::uint64_t held = std::min(end, static_cast<std::uint64_t>(length));
  const auto size = static_cast<std::size_t>(held > begin ? held - begin : 0);
  FileContent content = {NewLargeBlock(size), size};
  if (!file.seek(begin) || file.read(content.bytes.get(), size) != size) return {};
  return content;
}

}  // namespace vkcl
