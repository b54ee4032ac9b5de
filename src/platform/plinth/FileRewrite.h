// Rewriting parts of a file so that a failure leaves the file as it was.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/plinth/HostFiles.h"
#include "platform/plinth/AFilePath.h"

namespace vkcl {

/// A piece of the file as it is to become: `length` bytes that stand at `at`, taken from memory,
/// or, where `bytes` is null, from the file as it was, beginning at `from`.
struct FilePiece {
  std::uint64_t at = 0;
  std::uint64_t length = 0;
  const void* bytes = nullptr;
  std::uint64_t from = 0;
};

enum class FileEnd {
  Keep,  ///< the file only grows; what no piece covers stays
  Cut,   ///< the file ends with the piece that ends last
};

enum class FileOrigin {
  Existing,  ///< the file must exist
  /// A missing file is created, also where a symbolic link names it. One that may only be written
  /// is written; nothing of it can be put back but its length.
  Any,
  New,  ///< the file must not exist
};

/// Applies `pieces` to the file at `path`; where two overlap, the later one holds. Each byte that
/// moves, or is lost, is read once, and each byte that changes is written once. What lies behind
/// the old end is written first, so that a full disk is found before anything is overwritten.
///
/// True when the file has its new content, and `newLength` its length. False when it could not be
/// opened, does not hold what a piece takes from it, would exceed 2^32 - 1 bytes, or a transfer,
/// the change of length or the close failed: then the old bytes and the old length are put back
/// (a file that was created is removed). Should putting back fail too, as on a medium that has
/// died, the file is left as far as that got.
///
/// Memory: the bytes that are overwritten or moved, once.
bool RewriteFile(const AFilePath& path, const std::vector<FilePiece>& pieces, FileEnd end,
                 FileOrigin origin, std::uint64_t& newLength);

/// Writes the slices over the bytes at `offset` of the file at `path`, of which it must hold `held`
/// at least; what goes beyond its end makes it longer. One read of the old bytes, one write.
///
/// True when everything was written. False when the file could not be opened, lacks bytes, or a
/// transfer or the close failed: then the old bytes and the old length are put back, as RewriteFile
/// does. The entries of `slices` are changed. Memory: the bytes that are overwritten, once.
bool OverwriteFile(const AFilePath& path, std::uint64_t offset, std::span<host::Slice> slices,
                   std::uint64_t held);

}  // namespace vkcl
