// The system calls on files, one function each. Everything the library does to a file passes
// through here, so that a test can put counting or failing functions in their place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vkcl::host {

/// An open file, as the system names it.
using Handle = std::intptr_t;
/// The handle of no file.
inline constexpr Handle kNoHandle = -1;

/// What a file is opened for.
enum class Access {
  Read,      ///< for reading
  Write,     ///< for writing
  ReadWrite  ///< for both
};
/// Whether opening may create a file.
enum class Creation {
  Never,      ///< the file must exist; its content stays
  Truncate,   ///< created, or emptied when it exists
  Exclusive,  ///< created; fails when it exists
};

/// Memory that a transfer fills.
struct MutableSlice {
  void* data;        ///< first byte
  std::size_t size;  ///< length in bytes
};

/// Memory that a transfer takes from.
struct Slice {
  const void* data;  ///< first byte
  std::size_t size;  ///< length in bytes
};

/// Result of a transfer that failed.
inline constexpr std::int64_t kFailed = -1;
/// Result of a transfer that was interrupted: nothing was moved; the call may be repeated.
inline constexpr std::int64_t kInterrupted = -2;

/// Whether the call of this thread that has just failed was refused for want of permission.
bool WasForbidden() noexcept;

/// Opens a file; kNoHandle on failure. The handle is not inherited by child processes and never
/// waits for the other end of a pipe.
Handle Open(const char* path, Access access, Creation creation) noexcept;

/// Fills the slices in order with the bytes from `offset` on. Bytes moved (fewer than asked for
/// at the end of the file, or whenever the system chooses), or one of the results above.
std::int64_t ReadAt(Handle handle, std::uint64_t offset, const MutableSlice* slices,
                    std::size_t count) noexcept;
/// Writes the slices in order from `offset` on; the result as for ReadAt.
std::int64_t WriteAt(Handle handle, std::uint64_t offset, const Slice* slices,
                     std::size_t count) noexcept;

/// Length in bytes; -1 on failure, and of a folder, a device or a pipe, whose length says nothing.
std::int64_t Length(Handle handle) noexcept;
/// Cuts the file to a length, or extends it with zeros. False on failure.
bool SetLength(Handle handle, std::uint64_t length) noexcept;
/// False when the system reports that bytes written earlier did not reach the file. The handle
/// is gone in either case.
bool Close(Handle handle) noexcept;

/// Has the system carry what was written to the medium. True, too, where a file system has no such
/// operation; false when bytes were lost.
bool Sync(Handle handle) noexcept;

/// What came of asking for a file.
enum class Lock {
  Taken,      ///< this handle has it now
  Busy,       ///< another handle has it
  Impossible  ///< the file system has no locks
};
/// Takes the file for this handle alone, as far as others ask, until the handle is closed or its
/// process ends. Does not wait.
Lock TryLock(Handle handle) noexcept;

/// Whether a file can be replaced by renaming while somebody has it open.
#if defined(_WIN32)
inline constexpr bool kReplacesOpenFiles = false;
#else
inline constexpr bool kReplacesOpenFiles = true;
#endif

/// How many names the file has; 0 for one that was removed while it is open, -1 on failure.
int NameCount(Handle handle) noexcept;

/// Removes a file. False on failure.
bool Remove(const char* path) noexcept;
/// Gives a file another name in the same folder; a file that has that name is replaced in one step.
bool Rename(const char* from, const char* to) noexcept;
/// Has the system carry a folder's entries to the medium, as far as it can.
void SyncFolder(const char* path) noexcept;
/// Gives the file `to` the permissions of the file `from`, access lists and the attributes of users
/// with them, and its owner and group where that is allowed. Where the group cannot be given,
/// another one may not do more than everybody.
bool CopyPermissions(const char* from, const char* to) noexcept;
/// Whether the path names something, through links.
bool Exists(const char* path) noexcept;
/// Whether the path names a folder, through links.
bool IsDirectory(const char* path) noexcept;
/// Whether two paths name one file that is there, through links.
bool IsSameFile(const char* a, const char* b) noexcept;

/// Names of the regular files in a folder that begin with `prefix`; none of a folder that cannot be
/// read. Throws when memory is short.
std::vector<std::string> FilesIn(const char* folder, const std::string& prefix);

/// Path of the program's own executable file; empty when the system does not tell it.
std::string ExecutablePath();
/// The path with short names ("PROGRA~1") written out, where the system has such names; the path
/// as it stands when that fails.
std::string LongPath(const std::string& path);

///@{
/// The path as the file system takes it (wide characters on Windows), and back.
std::filesystem::path SystemPath(const std::string& path);
std::string NarrowPath(const std::filesystem::path& path);
///@}

}  // namespace vkcl::host
