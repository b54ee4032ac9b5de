// Other programs at work on the same files: child processes of the test, which may end, or be
// ended, without a destructor. Not on Windows, which has no fork.
#pragma once

#if !defined(_WIN32)

#include <gtest/gtest.h>

#include <grp.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>

#include "support/Counts.h"

namespace vkcl::testing {

/// The exit code of a child; -1 when a signal ended it, -2 when there is none.
inline int ExitCodeOf(pid_t child) {
  int status = 0;
  if (child <= 0 || ::waitpid(child, &status, 0) != child) return -2;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Runs a body in a child process, which then ends at once: nothing that the body left on the heap
/// is destroyed. The exit code is what the body returned.
template <class Body>
int InChild(const Body& body) {
  std::fflush(nullptr);
  const uid_t user = ::geteuid();
  const pid_t child = ::fork();
  if (child == 0) {
    const int code = body();
    std::fflush(nullptr);
    if (::geteuid() == user) SaveCounts();  // another one may not write them
    ::_exit(code);
  }
  return ExitCodeOf(child);
}

constexpr uid_t kNobody = 65534;

/// Gives a file or folder to the user that AsOrdinaryUser takes. Nothing to do unless this is root.
inline void GiveToOrdinaryUser(const std::filesystem::path& path) {
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(path.c_str(), kNobody, kNobody), 0) << path;
  }
}

/// Runs a body with expectations as a user whom permissions bind. Its failures are printed there
/// and fail the test here.
template <class Body>
void AsOrdinaryUser(const Body& body) {
  EXPECT_EQ(InChild([&] {
              if (::geteuid() == 0 &&
                  (::setgroups(0, nullptr) != 0 || ::setresgid(kNobody, kNobody, kNobody) != 0 ||
                   ::setresuid(kNobody, kNobody, kNobody) != 0)) {
                return 2;
              }
              body();
              return ::testing::Test::HasFailure() ? 1 : 0;
            }),
            0);
}

/// A child process that runs a body up to where the body waits, and goes on when it is told to.
class OtherProcess {
 public:
  /// `body` is called with a function that waits; what it returns is the exit code. The
  /// constructor returns when the child waits or has ended.
  template <class Body>
  explicit OtherProcess(const Body& body) {
    std::array<int, 2> ready = {};
    std::array<int, 2> go = {};
    if (::pipe(ready.data()) != 0 || ::pipe(go.data()) != 0) {
      ADD_FAILURE() << "no pipe";
      return;
    }
    std::fflush(nullptr);
    child_ = ::fork();
    if (child_ == 0) {
      ::close(ready[0]);
      ::close(go[1]);
      const int code = body([&] {
        char byte = 1;
        if (::write(ready[1], &byte, 1) != 1 || ::read(go[0], &byte, 1) < 0) ::_exit(99);
      });
      std::fflush(nullptr);
      SaveCounts();
      ::_exit(code);
    }
    ::close(ready[1]);
    ::close(go[0]);
    go_ = go[1];
    char byte = 0;
    waits_ = ::read(ready[0], &byte, 1) == 1;
    ::close(ready[0]);
  }
  ~OtherProcess() { Finish(); }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  bool waits() const { return waits_; }

  /// Lets the child go on.
  void Go() {
    if (go_ >= 0) ::close(go_);
    go_ = -1;
  }
  /// Lets it go on, and gives its exit code when it has ended.
  int Finish() {
    Go();
    const int code = ExitCodeOf(child_);
    child_ = 0;
    return code;
  }
  /// Ends it where it waits.
  void Kill() {
    if (child_ > 0) ::kill(child_, SIGKILL);
    Finish();
  }

 private:
  pid_t child_ = 0;
  int go_ = -1;
  bool waits_ = false;
};

/// The permission bits of a file, its link not followed.
inline unsigned ModeOf(const std::filesystem::path& path) {
  struct stat status = {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
  return static_cast<unsigned>(status.st_mode & 07777);
}

}  // namespace vkcl::testing

#endif
