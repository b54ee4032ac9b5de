#include "platform/plinth/ReplaceFile.h"

#include "platform/Guarded.h"
#include "platform/plinth/SiblingFile.h"

namespace vkcl {

bool ReplaceFile(const AFilePath& path, const std::function<bool(AFile& file)>& write) {
  return Guarded([&] {
    SiblingFile::RemoveLeftovers(path);
    SiblingFile sibling(path);
    return sibling.exists() && write(sibling.file()) && sibling.takePlace();
  });
}

bool ReplaceFile(const AFilePath& path, std::string_view content) {
  return ReplaceFile(path, [&](AFile& file) {
    return file.write(content.data(), content.size()) == content.size();
  });
}

}  // namespace vkcl
