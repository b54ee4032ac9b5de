#include "Progress.h"

#include <fmt/format.h>

#include <cstdio>
#include <string>

#include "Host.h"

namespace vkcl::tool {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::size_t kBar = 30;

// A terminal that has gone away is no failure of the work.
void Print(const std::string& text) { static_cast<void>(std::fputs(text.c_str(), stderr)); }

}  // namespace

Progress::Progress(std::size_t count)
    : count_(count), isWanted_(host::IsTerminal(stderr)), next_(Clock::now() + 500ms) {}

void Progress::Show(std::size_t done) {
  if (!isWanted_ || done >= count_ || Clock::now() < next_) return;
  next_ = Clock::now() + 100ms;
  const std::size_t full = done * kBar / count_;
  Print(fmt::format("\r[{:#<{}}{:.<{}}] {} of {}\x1b[K", "", full, "", kBar - full, done, count_));
  isShown_ = true;
}

void Progress::Erase() {
  if (!isShown_) return;
  isShown_ = false;
  Print("\r\x1b[K");
}

}  // namespace vkcl::tool
