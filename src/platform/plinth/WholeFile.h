// Reading a file as a whole, or a stretch of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/plinth/AFile.h"
#include "platform/plinth/AFilePath.h"

namespace vkcl {

/// Opens a regular file for reading; its length, or -1 where it cannot be read or is no such file.
std::int64_t OpenRegular(const AFilePath& path, AFile& file);

struct FileContent {
  std::unique_ptr<char[]> bytes;  ///< null when the file could not be read
  std::size_t size = 0;           ///< of the whole block, the headroom included
};

/// The whole content of a file, behind `headroom` zero bytes at the front of the block for the
/// caller to fill. `bytes` is null when the file cannot be opened, is no regular file, holds more
/// than `limit` bytes, or gives fewer bytes than its length says. Nothing larger than the file is
/// allocated, the headroom aside.
FileContent ReadWholeFile(const AFilePath& path, std::size_t headroom = 0,
                          std::uint64_t limit = UINT32_MAX);

/// The bytes of a file from `begin` to `end`, as far as it holds them. `bytes` is null where
/// ReadWholeFile would give none.
FileContent ReadStretch(const AFilePath& path, std::uint64_t begin, std::uint64_t end);

}  // namespace vkcl
