#include "support/SystemCalls.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>
#else
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/plinth/HostFiles.h"

// The plain calls, under another name.
namespace vkcl::plain_host {
using namespace vkcl::host;
}
#define host plain_host
#include VKCL_HOST_FILES
#undef host

namespace vkcl::testing {

struct CallRecorder {
  static void Add(CallLog& log, const Call& call) { log.calls_.push_back(call); }
};

namespace {

thread_local CallLog* current_log = nullptr;

struct Plan {
  bool armed = false;
  bool reached = false;
  bool diskFull = false;
  std::size_t left = 0;
  Fault fault = Fault::Error;
  std::function<void()> action = nullptr;
};
thread_local Plan plan;
thread_local std::function<void()> lock_action;

std::atomic<int> open_handles = 0;

std::mutex executable_mutex;
std::optional<std::string> executable;

void Record(CallKind kind, std::uint64_t offset = 0, std::uint64_t bytes = 0) {
  if (current_log != nullptr) CallRecorder::Add(*current_log, {kind, offset, bytes});
}

constexpr int kDeath = 77;

// Counts a call; true when it is the one to fail.
// What a failing call leaves for those who ask the system why.
void SetError(bool forbidden) {
#if defined(_WIN32)
  ::SetLastError(forbidden ? ERROR_ACCESS_DENIED : ERROR_IO_DEVICE);
#else
  errno = forbidden ? EACCES : EIO;
#endif
}

bool IsDue() {
  if (!plan.armed || plan.reached) return false;
  if (plan.left-- > 0) return false;
  plan.reached = true;
  if (plan.action) {
    plan.action();
    return false;
  }
  if (plan.fault == Fault::Death) std::_Exit(kDeath);
  SetError(plan.fault == Fault::Forbidden);
  return true;
}

// Whether the call that is made now fails and does nothing.
bool IsRefused() {
  return IsDue() && (plan.fault == Fault::Error || plan.fault == Fault::Forbidden);
}

std::uint64_t Sum(const auto* slices, std::size_t count) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) sum += slices[i].size;
  return sum;
}

// A copy of the slices that holds only the first half of their bytes.
template <class SliceType>
std::vector<SliceType> Half(const SliceType* slices, std::size_t count) {
  std::uint64_t left = Sum(slices, count) / 2;
  std::vector<SliceType> half(slices, slices + count);
  for (SliceType& slice : half) {
    slice.size = static_cast<std::size_t>(std::min<std::uint64_t>(slice.size, left));
    left -= slice.size;
  }
  return half;
}

template <class SliceType, class Transfer>
std::int64_t Move(CallKind kind, std::uint64_t offset, const SliceType* slices, std::size_t count,
                  Transfer transfer) {
  std::int64_t moved = 0;
  if (kind == CallKind::Write && plan.diskFull) {
    moved = host::kFailed;
  } else if (!IsDue()) {
    moved = transfer(slices, count);
  } else if (plan.fault == Fault::Interrupted) {
    moved = host::kInterrupted;
  } else if (plan.fault == Fault::Short ||
             (plan.fault == Fault::FullDisk && kind == CallKind::Write)) {
    plan.diskFull = plan.fault == Fault::FullDisk;
    const std::vector<SliceType> half = Half(slices, count);
    moved = transfer(half.data(), half.size());
  } else if (plan.fault == Fault::DeathWithin) {
    const std::vector<SliceType> half = Half(slices, count);
    transfer(half.data(), half.size());
    std::_Exit(kDeath);
  } else if (plan.fault == Fault::Error || plan.fault == Fault::Forbidden) {
    moved = host::kFailed;
  } else {
    moved = transfer(slices, count);
  }
  // The disk is full for one failing call; what is put back lies within the old file.
  if (kind == CallKind::Write && plan.diskFull && moved == host::kFailed) plan.diskFull = false;
  Record(kind, offset, moved > 0 ? static_cast<std::uint64_t>(moved) : 0);
  return moved;
}

}  // namespace

ActionAtLocks::ActionAtLocks(std::function<void()> action) { lock_action = std::move(action); }
ActionAtLocks::~ActionAtLocks() { lock_action = nullptr; }

CallLog::CallLog() { current_log = this; }
CallLog::~CallLog() { current_log = nullptr; }

std::size_t CallLog::Count(CallKind kind) const {
  return static_cast<std::size_t>(std::count_if(
      calls_.begin(), calls_.end(), [&](const Call& call) { return call.kind == kind; }));
}

std::uint64_t CallLog::Bytes(CallKind kind) const {
  std::uint64_t bytes = 0;
  for (const Call& call : calls_) bytes += call.kind == kind ? call.bytes : 0;
  return bytes;
}

std::vector<CallKind> CallLog::Kinds() const {
  std::vector<CallKind> kinds;
  for (const Call& call : calls_) kinds.push_back(call.kind);
  return kinds;
}

FaultAt::FaultAt(std::size_t which, Fault fault) {
  plan = Plan{true, false, false, which, fault, nullptr};
}
ActionAt::ActionAt(std::size_t which, std::function<void()> action) {
  plan = Plan{true, false, false, which, Fault::Error, std::move(action)};
}
ActionAt::~ActionAt() { plan = Plan{}; }
bool ActionAt::Reached() { return plan.reached; }

FaultAt::~FaultAt() { plan.armed = false; }
bool FaultAt::Reached() { return plan.reached; }

ExecutableAt::ExecutableAt(std::string path) {
  const std::lock_guard lock(executable_mutex);
  executable = std::move(path);
}

ExecutableAt::~ExecutableAt() {
  const std::lock_guard lock(executable_mutex);
  executable.reset();
}

int OpenHandles() { return open_handles; }

}  // namespace vkcl::testing

namespace vkcl::host {

using testing::CallKind;
using testing::Fault;

bool WasForbidden() noexcept { return plain_host::WasForbidden(); }

Handle Open(const char* path, Access access, Creation creation) noexcept {
  testing::Record(CallKind::Open);
  if (testing::IsRefused()) return kNoHandle;
  const Handle handle = plain_host::Open(path, access, creation);
  if (handle != kNoHandle) ++testing::open_handles;
  return handle;
}

std::int64_t ReadAt(Handle handle, std::uint64_t offset, const MutableSlice* slices,
                    std::size_t count) noexcept {
  return testing::Move(CallKind::Read, offset, slices, count, [&](const auto* s, std::size_t n) {
    return plain_host::ReadAt(handle, offset, s, n);
  });
}

std::int64_t WriteAt(Handle handle, std::uint64_t offset, const Slice* slices,
                     std::size_t count) noexcept {
  return testing::Move(CallKind::Write, offset, slices, count, [&](const auto* s, std::size_t n) {
    return plain_host::WriteAt(handle, offset, s, n);
  });
}

std::int64_t Length(Handle handle) noexcept {
  testing::Record(CallKind::Length);
  if (testing::IsRefused()) return -1;
  return plain_host::Length(handle);
}

bool SetLength(Handle handle, std::uint64_t length) noexcept {
  testing::Record(CallKind::SetLength);
  if (testing::IsRefused()) return false;
  return plain_host::SetLength(handle, length);
}

bool Close(Handle handle) noexcept {
  testing::Record(CallKind::Close);
  const bool due = testing::IsDue();
  --testing::open_handles;
  const bool closed = plain_host::Close(handle);
  const bool fails =
      due && (testing::plan.fault == Fault::Error || testing::plan.fault == Fault::FailedClose);
  return closed && !fails;
}

bool Remove(const char* path) noexcept {
  testing::Record(CallKind::Remove);
  if (testing::IsRefused()) return false;
  return plain_host::Remove(path);
}

bool Sync(Handle handle) noexcept {
  testing::Record(CallKind::Sync);
  if (testing::IsRefused()) return false;
  return plain_host::Sync(handle);
}

Lock TryLock(Handle handle) noexcept {
  if (testing::lock_action) {
    std::function<void()> action;
    std::swap(action, testing::lock_action);
    action();
    std::swap(action, testing::lock_action);
  }
  testing::Record(CallKind::Lock);
  if (testing::IsRefused()) return Lock::Impossible;
  return plain_host::TryLock(handle);
}

int NameCount(Handle handle) noexcept {
  testing::Record(CallKind::Look);
  if (testing::IsRefused()) return -1;
  return plain_host::NameCount(handle);
}

bool Rename(const char* from, const char* to) noexcept {
  testing::Record(CallKind::Rename);
  if (testing::IsRefused()) return false;
  return plain_host::Rename(from, to);
}

void SyncFolder(const char* path) noexcept {
  testing::Record(CallKind::Sync);
  if (testing::IsRefused()) return;
  plain_host::SyncFolder(path);
}

bool CopyPermissions(const char* from, const char* to) noexcept {
  testing::Record(CallKind::Permissions);
  if (testing::IsRefused()) return false;
  return plain_host::CopyPermissions(from, to);
}

std::string ExecutablePath() {
  testing::Record(CallKind::Program);
  const std::lock_guard lock(testing::executable_mutex);
  return testing::executable ? *testing::executable : plain_host::ExecutablePath();
}

std::vector<std::string> FilesIn(const char* folder, const std::string& prefix) {
  testing::Record(CallKind::Look);
  return plain_host::FilesIn(folder, prefix);
}

std::string LongPath(const std::string& path) { return plain_host::LongPath(path); }

// Neither counted nor made to fail: it changes nothing, and paths are compared too.
bool IsSameFile(const char* a, const char* b) noexcept { return plain_host::IsSameFile(a, b); }

bool Exists(const char* path) noexcept {
  testing::Record(CallKind::Look);
  return plain_host::Exists(path);
}

bool IsDirectory(const char* path) noexcept {
  testing::Record(CallKind::Look);
  return plain_host::IsDirectory(path);
}

std::filesystem::path SystemPath(const std::string& path) { return plain_host::SystemPath(path); }
std::string NarrowPath(const std::filesystem::path& path) { return plain_host::NarrowPath(path); }

}  // namespace vkcl::host
