#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/xattr.h>
#endif

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>

#include "platform/plinth/HostFiles.h"

namespace vkcl::host {
namespace {

// Slices moved by one call; a longer list is continued by the caller's next call.
constexpr std::size_t kSlicesPerCall = 64;

#if defined(__linux__)
constexpr const char* kAccessList = "system.posix_acl_access";
// More than the file systems that Linux is used with have for all attributes of a file together.
using AttributeBuffer = std::array<char, 8192>;

// Gives a file the attribute of another one, or takes it away where that has none. False when it
// has one that the file cannot have.
bool CopyAttribute(const char* from, const char* to, const char* name) {
  AttributeBuffer value;  // NOLINT(cppcoreguidelines-pro-type-member-init): it is read into
  const ssize_t length = ::getxattr(from, name, value.data(), value.size());
  if (length >= 0) {
    return ::setxattr(to, name, value.data(), static_cast<std::size_t>(length), 0) == 0;
  }
  const bool hasNone = errno == ENODATA;
  if (hasNone) ::removexattr(to, name);  // its folder may give each new file one
  return hasNone || errno == ENOTSUP;
}

// What users and programs have noted beside the content, as far as it can be kept.
void CopyNotes(const char* from, const char* to) {
  AttributeBuffer names;  // NOLINT(cppcoreguidelines-pro-type-member-init): it is read into
  const ssize_t length = ::listxattr(from, names.data(), names.size());
  for (ssize_t at = 0; at < length;) {
    const char* name = names.data() + at;
    if (std::strncmp(name, "user.", 5) == 0) CopyAttribute(from, to, name);
    at += static_cast<ssize_t>(std::strlen(name)) + 1;
  }
}
#endif

// The mode without what its group may do and others may not: for a file of another group.
mode_t WithoutGroup(mode_t mode) { return (mode & ~mode_t{070}) | (mode & (mode << 3) & 070); }

int AccessFlags(Access access) {
  switch (access) {
    case Access::Read: return O_RDONLY;
    case Access::Write: return O_WRONLY;
    case Access::ReadWrite: break;
  }
  return O_RDWR;
}

int CreationFlags(Creation creation) {
  switch (creation) {
    case Creation::Never: return 0;
    case Creation::Truncate: return O_CREAT | O_TRUNC;
    case Creation::Exclusive: break;
  }
  return O_CREAT | O_EXCL;
}

std::int64_t Moved(ssize_t result) {
  if (result >= 0) return result;
  return errno == EINTR ? kInterrupted : kFailed;
}

}  // namespace

Handle Open(const char* path, Access access, Creation creation) noexcept {
  // O_NONBLOCK: a pipe in the place of a profile must not make the caller wait; it has no effect
  // on a regular file.
  const int flags =
      AccessFlags(access) | CreationFlags(creation) | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  int descriptor = -1;
  do {
    descriptor = ::open(path, flags, 0666);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor < 0 ? kNoHandle : descriptor;
}

// The lists of slices are filled as far as they are used: most have one or two.
// NOLINTBEGIN(cppcoreguidelines-pro-type-member-init)

std::int64_t ReadAt(Handle handle, std::uint64_t offset, const MutableSlice* slices,
                    std::size_t count) noexcept {
  std::array<iovec, kSlicesPerCall> vectors;
  const std::size_t used = std::min(count, vectors.size());
  for (std::size_t i = 0; i < used; ++i) vectors[i] = {slices[i].data, slices[i].size};
  return Moved(::preadv(static_cast<int>(handle), vectors.data(), static_cast<int>(used),
                        static_cast<off_t>(offset)));
}

std::int64_t WriteAt(Handle handle, std::uint64_t offset, const Slice* slices,
                     std::size_t count) noexcept {
  std::array<iovec, kSlicesPerCall> vectors;
  const std::size_t used = std::min(count, vectors.size());
  for (std::size_t i = 0; i < used; ++i) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): writev only reads them
    vectors[i] = {const_cast<void*>(slices[i].data), slices[i].size};
  }
  return Moved(::pwritev(static_cast<int>(handle), vectors.data(), static_cast<int>(used),
                         static_cast<off_t>(offset)));
}

// NOLINTEND(cppcoreguidelines-pro-type-member-init)

std::int64_t Length(Handle handle) noexcept {
  struct stat status = {};
  if (::fstat(static_cast<int>(handle), &status) != 0) return -1;
  return S_ISREG(status.st_mode) ? status.st_size : -1;
}

bool SetLength(Handle handle, std::uint64_t length) noexcept {
  int result = 0;
  do {
    result = ::ftruncate(static_cast<int>(handle), static_cast<off_t>(length));
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

bool Close(Handle handle) noexcept {
  // The descriptor is released even when the call is interrupted: it must not be closed twice.
  return ::close(static_cast<int>(handle)) == 0 || errno == EINTR;
}

bool Sync(Handle handle) noexcept {
  int result = 0;
  do {
    result = ::fsync(static_cast<int>(handle));
  } while (result != 0 && errno == EINTR);
  return result == 0 || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
}

Lock TryLock(Handle handle) noexcept {
  int result = 0;
  do {
    result = ::flock(static_cast<int>(handle), LOCK_EX | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return Lock::Taken;
  return errno == EWOULDBLOCK ? Lock::Busy : Lock::Impossible;
}

int NameCount(Handle handle) noexcept {
  struct stat status = {};
  if (::fstat(static_cast<int>(handle), &status) != 0) return -1;
  return static_cast<int>(std::min<nlink_t>(status.st_nlink, INT_MAX));
}

bool WasForbidden() noexcept { return errno == EACCES || errno == EPERM; }

bool Remove(const char* path) noexcept { return ::unlink(path) == 0; }

bool Rename(const char* from, const char* to) noexcept { return ::rename(from, to) == 0; }

void SyncFolder(const char* path) noexcept {
  const int descriptor = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

bool CopyPermissions(const char* from, const char* to) noexcept {
  struct stat status = {};
  if (::stat(from, &status) != 0) return false;
  // The owner first: a change of owner may take bits off the mode.
  struct stat now = {};
  const bool same =
      ::stat(to, &now) == 0 && now.st_uid == status.st_uid && now.st_gid == status.st_gid;
  const bool owned = same || ::chown(to, status.st_uid, status.st_gid) == 0;
  const bool isOfGroup = owned || now.st_gid == status.st_gid ||
                         ::chown(to, static_cast<uid_t>(-1), status.st_gid) == 0;
  mode_t mode = status.st_mode & (owned ? 07777u : 0777u);
  if (!isOfGroup) mode = WithoutGroup(mode);
  if ((now.st_mode & 07777u) != mode && ::chmod(to, mode) != 0) return false;
#if defined(__linux__)
  CopyNotes(from, to);
  // Without the list, what stands for it in the mode would give the group more. Its own entry of
  // the group is that of the old one.
  if (isOfGroup && !CopyAttribute(from, to, kAccessList)) {
    return ::chmod(to, WithoutGroup(mode)) == 0;
  }
#endif
  return true;
}

std::vector<std::string> FilesIn(const char* folder, const std::string& prefix) {
  // The standard library's own iterator ends the program when memory is short.
  struct Close {
    void operator()(DIR* open) const { ::closedir(open); }
  };
  const std::unique_ptr<DIR, Close> open(::opendir(folder));
  std::vector<std::string> names;
  if (open == nullptr) return names;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): it is safe for a stream that no other thread reads
  while (const dirent* entry = ::readdir(open.get())) {
    struct stat status = {};
    const bool named = std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) == 0;
    if (!named ||
        ::fstatat(::dirfd(open.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
      continue;
    }
    if (S_ISREG(status.st_mode)) names.emplace_back(entry->d_name);
  }
  return names;
}

std::string ExecutablePath() {
  std::array<char, 5000> buffer = {};
  const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
  if (length <= 0 || static_cast<std::size_t>(length) == buffer.size()) return {};
  return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string LongPath(const std::string& path) { return path; }

bool IsSameFile(const char* a, const char* b) noexcept {
  struct stat first = {};
  struct stat second = {};
  return ::stat(a, &first) == 0 && ::stat(b, &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

bool Exists(const char* path) noexcept { return ::access(path, F_OK) == 0; }

bool IsDirectory(const char* path) noexcept {
  struct stat status = {};
  return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

std::filesystem::path SystemPath(const std::string& path) { return path; }

std::string NarrowPath(const std::filesystem::path& path) { return path.string(); }

}  // namespace vkcl::host
