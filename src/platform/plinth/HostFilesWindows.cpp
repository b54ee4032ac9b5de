#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>

#include "platform/plinth/HostFiles.h"

namespace vkcl::host {
namespace {

std::wstring Wide(const char* text) {
  const int length = ::MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  if (length <= 1) return {};
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  ::MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), length);
  wide.pop_back();  // the terminator that the call counts
  return wide;
}

HANDLE Native(Handle handle) { return reinterpret_cast<HANDLE>(handle); }

OVERLAPPED Position(std::uint64_t offset) {
  OVERLAPPED position = {};
  position.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFu);
  position.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return position;
}

DWORD Portion(std::size_t size) {
  return static_cast<DWORD>(std::min<std::size_t>(size, 0x40000000u));
}

DWORD AccessMask(Access access) {
  switch (access) {
    case Access::Read: return GENERIC_READ;
    case Access::Write: return GENERIC_WRITE;
    case Access::ReadWrite: break;
  }
  return GENERIC_READ | GENERIC_WRITE;
}

DWORD Disposition(Creation creation) {
  switch (creation) {
    case Creation::Never: return OPEN_EXISTING;
    case Creation::Truncate: return CREATE_ALWAYS;
    case Creation::Exclusive: break;
  }
  return CREATE_NEW;
}

DWORD Attributes(const char* path) noexcept {
  try {
    return ::GetFileAttributesW(Wide(path).c_str());
  } catch (...) {
    return INVALID_FILE_ATTRIBUTES;
  }
}

}  // namespace

Handle Open(const char* path, Access access, Creation creation) noexcept {
  try {
    const HANDLE handle =
        ::CreateFileW(Wide(path).c_str(), AccessMask(access),
                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      Disposition(creation), FILE_ATTRIBUTE_NORMAL, nullptr);
    return handle == INVALID_HANDLE_VALUE ? kNoHandle : reinterpret_cast<Handle>(handle);
  } catch (...) {
    return kNoHandle;
  }
}

std::int64_t ReadAt(Handle handle, std::uint64_t offset, const MutableSlice* slices,
                    std::size_t count) noexcept {
  std::int64_t moved = 0;
  for (std::size_t i = 0; i < count; ++i) {
    OVERLAPPED position = Position(offset + static_cast<std::uint64_t>(moved));
    const DWORD wanted = Portion(slices[i].size);
    DWORD read = 0;
    if (!::ReadFile(Native(handle), slices[i].data, wanted, &read, &position)) {
      const bool end = ::GetLastError() == ERROR_HANDLE_EOF;
      return moved > 0 || end ? moved : kFailed;
    }
    moved += read;
    if (read < slices[i].size) break;
  }
  return moved;
}

std::int64_t WriteAt(Handle handle, std::uint64_t offset, const Slice* slices,
                     std::size_t count) noexcept {
  std::int64_t moved = 0;
  for (std::size_t i = 0; i < count; ++i) {
    OVERLAPPED position = Position(offset + static_cast<std::uint64_t>(moved));
    const DWORD wanted = Portion(slices[i].size);
    DWORD written = 0;
    if (!::WriteFile(Native(handle), slices[i].data, wanted, &written, &position)) {
      return moved > 0 ? moved : kFailed;
    }
    moved += written;
    if (written < slices[i].size) break;
  }
  return moved;
}

std::int64_t Length(Handle handle) noexcept {
  LARGE_INTEGER length = {};
  return ::GetFileSizeEx(Native(handle), &length) ? length.QuadPart : -1;
}

bool SetLength(Handle handle, std::uint64_t length) noexcept {
  FILE_END_OF_FILE_INFO end = {};
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(length);
  return ::SetFileInformationByHandle(Native(handle), FileEndOfFileInfo, &end, sizeof(end)) != 0;
}

bool Close(Handle handle) noexcept { return ::CloseHandle(Native(handle)) != 0; }

bool WasForbidden() noexcept { return ::GetLastError() == ERROR_ACCESS_DENIED; }

bool Remove(const char* path) noexcept {
  try {
    return ::DeleteFileW(Wide(path).c_str()) != 0;
  } catch (...) {
    return false;
  }
}

bool Sync(Handle handle) noexcept {
  if (::FlushFileBuffers(Native(handle))) return true;
  return ::GetLastError() == ERROR_INVALID_FUNCTION || ::GetLastError() == ERROR_NOT_SUPPORTED;
}

Lock TryLock(Handle handle) noexcept {
  OVERLAPPED place = Position(0x7FFFFFFF00000000u);  // behind every byte that is read or written
  if (::LockFileEx(Native(handle), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                   &place) != 0) {
    return Lock::Taken;
  }
  return ::GetLastError() == ERROR_LOCK_VIOLATION ? Lock::Busy : Lock::Impossible;
}

int NameCount(Handle handle) noexcept {
  BY_HANDLE_FILE_INFORMATION information = {};
  if (!::GetFileInformationByHandle(Native(handle), &information)) return -1;
  return static_cast<int>(information.nNumberOfLinks);
}

bool Rename(const char* from, const char* to) noexcept {
  try {
    return ::MoveFileExW(Wide(from).c_str(), Wide(to).c_str(),
                         MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
  } catch (...) {
    return false;
  }
}

void SyncFolder(const char*) noexcept {}  // the move above is written through

bool CopyPermissions(const char*, const char*) noexcept {
  return true;  // a file takes its permissions from its folder
}

std::vector<std::string> FilesIn(const char* folder, const std::string& prefix) {
  struct Close {
    void operator()(void* search) const { ::FindClose(search); }
  };
  std::vector<std::string> names;
  WIN32_FIND_DATAW found = {};
  const std::wstring pattern = Wide((std::string(folder) + "\\" + prefix + "*").c_str());
  HANDLE first = ::FindFirstFileW(pattern.c_str(), &found);
  if (first == INVALID_HANDLE_VALUE) return names;
  const std::unique_ptr<void, Close> search(first);
  do {
    constexpr DWORD kOthers = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    if ((found.dwFileAttributes & kOthers) == 0) {
      names.push_back(NarrowPath(std::filesystem::path(found.cFileName)));
    }
  } while (::FindNextFileW(search.get(), &found));
  return names;
}

std::string ExecutablePath() {
  std::array<wchar_t, 5000> buffer;
  const DWORD room = static_cast<DWORD>(buffer.size());
  const DWORD length = ::GetModuleFileNameW(nullptr, buffer.data(), room);
  if (length == 0 || length == room) return {};
  return NarrowPath(std::filesystem::path(std::wstring(buffer.data(), length)));
}

std::string LongPath(const std::string& path) {
  std::array<wchar_t, 5000> buffer;
  const DWORD room = static_cast<DWORD>(buffer.size());
  const DWORD length = ::GetLongPathNameW(Wide(path.c_str()).c_str(), buffer.data(), room);
  if (length == 0 || length >= room) return path;
  return NarrowPath(std::filesystem::path(std::wstring(buffer.data(), length)));
}

bool IsSameFile(const char* a, const char* b) noexcept {
  try {
    std::error_code error;
    return std::filesystem::equivalent(SystemPath(a), SystemPath(b), error);
  } catch (...) {
    return false;
  }
}

bool Exists(const char* path) noexcept { return Attributes(path) != INVALID_FILE_ATTRIBUTES; }

bool IsDirectory(const char* path) noexcept {
  const DWORD attributes = Attributes(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::filesystem::path SystemPath(const std::string& path) { return Wide(path.c_str()); }

std::string NarrowPath(const std::filesystem::path& path) {
  const std::wstring& wide = path.native();
  const int length =
      ::WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, nullptr, 0, nullptr, nullptr);
  if (length <= 1) return {};
  std::string narrow(static_cast<std::size_t>(length), '\0');
  ::WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, narrow.data(), length, nullptr, nullptr);
  narrow.pop_back();
  return narrow;
}

}  // namespace vkcl::host
