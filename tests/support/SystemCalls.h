// The system calls of the library, counted and made to fail. The tests link these in the place of
// the plain ones, so everything that the library does to a file can be seen here.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vkcl::testing {

enum class CallKind {
  Open,
  Read,
  Write,
  Length,
  SetLength,
  Sync,
  Lock,
  Close,
  Remove,
  Rename,
  Permissions,
  Look,
  Program
};

struct Call {
  CallKind kind;
  std::uint64_t offset;  ///< of a transfer
  std::uint64_t bytes;   ///< moved by a transfer
};

/// Records the calls of this thread while it lives. One at a time.
class CallLog {
 public:
  CallLog();
  ~CallLog();
  CallLog(const CallLog&) = delete;
  CallLog& operator=(const CallLog&) = delete;

  const std::vector<Call>& calls() const { return calls_; }
  std::size_t Count(CallKind kind) const;
  std::uint64_t Bytes(CallKind kind) const;
  /// The kinds in the order of the calls.
  std::vector<CallKind> Kinds() const;

 private:
  friend struct CallRecorder;
  std::vector<Call> calls_;
};

enum class Fault {
  Error,        ///< the call fails and does nothing
  Forbidden,    ///< the same, for want of permission
  Short,        ///< a transfer moves half of its bytes and says so
  FullDisk,     ///< a write moves half of its bytes; the next write fails
  Interrupted,  ///< a transfer is interrupted before anything is moved
  FailedClose,  ///< a close does its work and reports that bytes were lost
  Death,        ///< the process ends before the call, with exit code 77; no destructor runs
  DeathWithin,  ///< a transfer moves half of its bytes, then the process ends so
};

/// Makes the `which`-th call of this thread (from 0) fail while the object lives. Calls that the
/// fault has no meaning for are carried out.
class FaultAt {
 public:
  FaultAt(std::size_t which, Fault fault);
  ~FaultAt();
  FaultAt(const FaultAt&) = delete;
  FaultAt& operator=(const FaultAt&) = delete;

  /// Whether as many calls were made.
  static bool Reached();
};

/// Does something before the `which`-th call of this thread (from 0), once: what somebody else
/// might do at that moment. What it calls itself is not counted. Not together with FaultAt.
class ActionAt {
 public:
  ActionAt(std::size_t which, std::function<void()> action);
  ~ActionAt();
  ActionAt(const ActionAt&) = delete;
  ActionAt& operator=(const ActionAt&) = delete;

  /// Whether as many calls were made.
  static bool Reached();
};

/// While it lives, `action` runs before each lock that this thread asks for, but for those that the
/// action asks for. One at a time.
class ActionAtLocks {
 public:
  explicit ActionAtLocks(std::function<void()> action);
  ~ActionAtLocks();
  ActionAtLocks(const ActionAtLocks&) = delete;
  ActionAtLocks& operator=(const ActionAtLocks&) = delete;
};

/// While it lives, the program's executable is said to be at `path`, in every thread. An empty path
/// says that the system does not tell it. One at a time.
class ExecutableAt {
 public:
  explicit ExecutableAt(std::string path);
  ~ExecutableAt();
  ExecutableAt(const ExecutableAt&) = delete;
  ExecutableAt& operator=(const ExecutableAt&) = delete;
};

/// Handles that are open now, over all threads.
int OpenHandles();

}  // namespace vkcl::testing
