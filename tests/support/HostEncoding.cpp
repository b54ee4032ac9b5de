#include "support/HostEncoding.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <cstdlib>

#include "support/Counts.h"

namespace vkcl::testing {

Utf8Host::Utf8Host() {
  if (const char* value = std::getenv("LC_ALL")) before_ = value;
  ::setenv("LC_ALL", "C.UTF-8", 1);
}

Utf8Host::~Utf8Host() {
  if (before_) {
    ::setenv("LC_ALL", before_->c_str(), 1);
  } else {
    ::unsetenv("LC_ALL");
  }
}

MadeLocale::MadeLocale(const std::string& language, const std::string& charmap) {
  const std::string folder = dir_.File("made");
  const std::string command =
      "localedef -c -i " + language + " -f " + charmap + " '" + folder + "' >/dev/null 2>&1";
  const int ignored = std::system(command.c_str());  // warnings make it fail, too
  static_cast<void>(ignored);
  made_ = std::filesystem::exists(folder + "/LC_CTYPE");
}

std::string MadeLocale::Run(const std::function<std::string()>& run) const {
  std::array<int, 2> ends = {};
  if (::pipe(ends.data()) != 0) return "failed";
  const pid_t child = ::fork();
  if (child == 0) {
    ::setenv("LOCPATH", dir_.path().c_str(), 1);
    ::setenv("LC_ALL", "made", 1);
    const std::string result = std::setlocale(LC_ALL, "") != nullptr ? run() : "failed";
    const bool told =
        ::write(ends[1], result.data(), result.size()) == static_cast<ssize_t>(result.size());
    SaveCounts();
    ::_exit(told ? 0 : 1);
  }
  ::close(ends[1]);
  std::string result;
  std::array<char, 4096> buffer = {};
  for (ssize_t n = 0; (n = ::read(ends[0], buffer.data(), buffer.size())) > 0;) {
    result.append(buffer.data(), static_cast<std::size_t>(n));
  }
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  return status == 0 ? result : "failed";
}

}  // namespace vkcl::testing
