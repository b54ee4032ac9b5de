// A file that is read and written at positions.
#pragma once

#include <chrono>  // IWYU pragma: keep
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/Export.h"
#include "platform/plinth/AFilePath.h"
#include "platform/plinth/HostFiles.h"

/// One open file. Transfers go straight to the system, without a buffer between; a transfer that
/// the system cuts short or interrupts is continued until it is complete, has reached the end of
/// the file, or fails. What a transfer reports is what was really moved. The file is closed when
/// the object dies; callers that wrote close it themselves and look at the result.
class VKCL_API AFile {
 public:
  /// What `open` is to open a file for.
  enum Flags : int {
    Read = 1,       ///< for reading
    Write = 2,      ///< for writing
    ReadWrite = 3,  ///< for both
    Create = 256,   ///< or-ed in: creates the file, or empties it when it exists
    New = 512,      ///< or-ed in: creates the file, and fails when it exists
  };

  AFile() = default;
  ~AFile();
  AFile(const AFile&) = delete;
  AFile& operator=(const AFile&) = delete;

  /// Opens `path`; without Create or New the file must exist and keeps its content. The position
  /// is 0. A file that was open before is closed first. False on failure.
  bool open(const AFilePath& path, int flags);

  ///@{
  /// Moves up to `n` bytes at the position and advances it. The number of bytes moved.
  std::size_t read(void* buffer, std::size_t n);
  std::size_t write(const void* buffer, std::size_t n);
  ///@}

  /// Sets the position, counted from the start of the file. False when no file is open.
  bool seek(std::uint64_t offset);

  /// Length in bytes; -1 on failure, and of what is no regular file.
  std::int64_t length() const;
  /// Cuts the file to a length, or extends it with zeros. False on failure.
  bool setLength(std::uint64_t length);

  /// Has the system carry what was written to the medium. False when that failed.
  bool sync();

  /// Takes the file for this object alone, as far as others ask, until it is closed or the process
  /// ends. False when somebody has it, or the file system has no locks.
  bool tryLock();
  /// The same, waiting for whoever has the file, at most that long. False when he kept it; true,
  /// too, where there are no locks.
  bool waitForLock(std::chrono::milliseconds patience);
  /// Whether the file still has a name: a file that is open may have been removed.
  bool hasName() const;

  /// Closes the file. False when the system reports that written bytes were lost.
  bool close();

  /// Whether a file is open.
  bool isOpen() const { return handle_ != vkcl::host::kNoHandle; }

  ///@{
  /// Transfers at `offset` that gather from, or scatter into, several pieces of memory by one
  /// system call where the system has one. They leave the position alone and change the entries
  /// of `slices`. The number of bytes moved.
  std::uint64_t readAt(std::uint64_t offset, std::span<vkcl::host::MutableSlice> slices);
  std::uint64_t writeAt(std::uint64_t offset, std::span<vkcl::host::Slice> slices);
  ///@}

 private:
  vkcl::host::Handle handle_ = vkcl::host::kNoHandle;
  std::uint64_t position_ = 0;
};
