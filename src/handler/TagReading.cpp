#include "handler/TagReading.h"

#include "platform/plinth/AFile.h"

namespace vkcl {

int WriteNewFile(const AFilePath& path, const char* bytes, std::size_t length) {
  if (path.exists()) path.remove();
  AFile file;
  if (!file.open(path, AFile::Write | AFile::Create)) return 0;
  const bool written = file.write(bytes, length) == length;
  if (file.close() && written) return 1;
  path.remove();
  return 0;
}

}  // namespace vkcl
