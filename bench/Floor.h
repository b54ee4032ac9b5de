// The floor: bare system calls, written by hand, that move the bytes which an operation moves and
// do nothing else. Nothing is checked, put back or kept consistent between two calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Inputs.h"

namespace vkcl::bench::bare {

/// The calls of this thread, counted.
struct Tally {
  std::uint64_t calls = 0;
  std::uint64_t read = 0;     ///< bytes
  std::uint64_t written = 0;  ///< bytes
};
Tally& TheTally();

/// A part of a file.
struct Part {
  std::uint64_t offset;
  std::size_t length;
};

/// Reads the start of a file, up to 4,096 bytes, and `table` bytes where that is more; then, while
/// the file is still open, another part, whose length may be 0.
bool Look(const std::string& path, std::size_t table, Part part);
/// Reads parts of a file into `to`.
bool Read(const std::string& path, const std::vector<Part>& parts, char* to);
/// Writes bytes where others lie.
bool Overwrite(const std::string& path, std::uint64_t offset, const Bytes& bytes);
/// Puts a new head in front of the data, which move back, and bytes behind them.
bool Append(const std::string& path, const Bytes& head, std::size_t moved, const Bytes& tail);
/// Writes a new head, and bytes in the place of `old`; what follows them moves.
bool Resize(const std::string& path, const Bytes& head, Part old, const Bytes& bytes);
/// Appends, with a part of another file behind the data.
bool Merge(const std::string& from, Part part, const std::string& to, const Bytes& head,
           std::size_t moved);
/// Writes a new file: a new head and a part of another file behind it.
bool Copy(const std::string& from, Part part, const Bytes& head, const std::string& to);
/// Writes a new file, has the system carry it to the medium, and gives it the place of another.
bool Replace(const std::string& path, const char* bytes, std::size_t length);
/// Reads a whole file, whose length is asked for.
bool ReadWhole(const std::string& path, Bytes& content);

}  // namespace vkcl::bench::bare
