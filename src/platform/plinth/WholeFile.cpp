#include "platform/plinth/WholeFile.h"

#include <cstring>
#include <filesystem>

#include "platform/plinth/AFile.h"
#include "platform/plinth/LargeBlock.h"

namespace vkcl {

FileContent ReadWholeFile(const AFilePath& path, std::size_t headroom, std::uint64_t limit) {
  AFile file;
  std::error_code error;
  if (!std::filesystem::is_regular_file(host::SystemPath(path.str()), error)) return {};
  if (!file.open(path, AFile::Read)) return {};
  const std::int64_t length = file.length();
  if (length < 0 || static_cast<std::uint64_t>(length) > limit) return {};
  const auto size = static_cast<std::size_t>(length);
  FileContent content = {NewLargeBlock(headroom + size), headroom + size};
  std::memset(content.bytes.get(), 0, headroom);
  if (file.read(content.bytes.get() + headroom, size) != size) return {};
  return content;
}

}  // namespace vkcl
