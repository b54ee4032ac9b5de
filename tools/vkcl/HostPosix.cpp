#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <initializer_list>
#include <string_view>
#include <system_error>

#include "Host.h"

namespace vkcl::tool::host {
namespace {

// A file of the tool's own in the folder for temporary ones.
class PrivateFile {
 public:
  PrivateFile() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    path_ = (error ? std::string("/tmp") : folder.string()) + "/vkcl-XXXXXX";
    descriptor_ = mkstemp(path_.data());
#ifdef __linux__
    // Without a name nothing is left behind, whatever ends the tool. The system opens it all the
    // same, by the number.
    if (descriptor_ >= 0 && unlink(path_.c_str()) == 0) {
      path_ = "/proc/self/fd/" + std::to_string(descriptor_);
      hasName_ = false;
    }
#endif
  }
  ~PrivateFile() {
    if (descriptor_ < 0) return;
    close(descriptor_);
    if (hasName_) unlink(path_.c_str());
  }
  PrivateFile(const PrivateFile&) = delete;
  PrivateFile& operator=(const PrivateFile&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  const std::string& path() const { return path_; }

  bool Append(const char* bytes, std::size_t count) const {
    while (count > 0) {
      const ssize_t written = write(descriptor_, bytes, count);
      if (written < 0 && errno != EINTR) return false;
      if (written < 0) continue;
      bytes += written;
      count -= static_cast<std::size_t>(written);
    }
    return true;
  }

 private:
  std::string path_;
  int descriptor_ = -1;
  bool hasName_ = true;
};

}  // namespace

void OccupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) != -1) continue;
    // Reading fails on the one, writing on the others. The lowest free number is the stream's.
    [[maybe_unused]] const int opened =
        open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

bool IsTerminal(std::FILE* stream) {
  const char* kind = std::getenv("TERM");
  return kind != nullptr && std::string_view(kind) != "dumb" && isatty(fileno(stream)) != 0;
}

namespace {

// Of a file as much as is known before it is read; of a pipe nothing is.
std::uint64_t KnownLength(int descriptor) {
  struct stat status = {};
  const off_t at = lseek(descriptor, 0, SEEK_CUR);
  if (at < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return 0;
  return static_cast<std::uint64_t>(std::max<off_t>(status.st_size - at, 0));
}

}  // namespace

void LetLongFilesFail() { static_cast<void>(std::signal(SIGXFSZ, SIG_IGN)); }

bool IsStandardInput(const std::string& path) {
  struct stat input = {};
  struct stat file = {};
  return fstat(STDIN_FILENO, &input) == 0 && stat(path.c_str(), &file) == 0 &&
         input.st_dev == file.st_dev && input.st_ino == file.st_ino;
}

int WhyNotWritable(const std::string& path) {
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? 0 : errno;
}

std::int64_t KeepInput(int descriptor, std::uint64_t most, std::string& path) {
  if (KnownLength(descriptor) > most) return static_cast<std::int64_t>(most) + 1;
  static std::deque<PrivateFile> files;  // as long as the program runs
  const PrivateFile& file = files.emplace_back();
  if (!file.isOpen()) return -1;
  path = file.path();
  std::array<char, 65536> bytes = {};
  std::uint64_t length = 0;
  while (length <= most) {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), most + 1 - length));
    const ssize_t got = read(descriptor, bytes.data(), wanted);
    if (got == 0) break;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 || !file.Append(bytes.data(), static_cast<std::size_t>(got))) return -1;
    length += static_cast<std::uint64_t>(got);
  }
  return static_cast<std::int64_t>(length);
}

}  // namespace vkcl::tool::host
