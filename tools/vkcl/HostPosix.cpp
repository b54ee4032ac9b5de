#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <initializer_list>
#include <string_view>

#include "Host.h"

namespace vkcl::tool::host {

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

}  // namespace vkcl::tool::host
