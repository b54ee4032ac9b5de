// Replacing a file as a whole, so that there is always a whole file.
#pragma once

#include <functional>
#include <string_view>

#include "platform/Export.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/AFilePath.h"

namespace vkcl {

///@{
/// Makes what `write` writes the content of the file at `path`, which need not exist. A new file is
/// created beside it and written; then the function has the system carry it to the medium, and
/// gives it the name. Whoever opens the path, at any moment and after any crash, finds the old file
/// or the new one, whole. Through a symbolic link the file that it names is replaced; permissions
/// with access lists, the attributes of users, and owner and group where that is allowed, stay.
///
/// False when a step failed, memory was short, `write` said so or threw, or the path names
/// something that is no regular file or may not be written: then the old file is as it was, and the
/// new one is removed.
VKCL_API bool ReplaceFile(const AFilePath& path, const std::function<bool(AFile& file)>& write);
VKCL_API bool ReplaceFile(const AFilePath& path, std::string_view content);
///@}

}  // namespace vkcl
