#include <cerrno>

#include "Host.h"

namespace vkcl::tool::host {

void OccupyStandardStreams() {}  // the C library keeps their numbers

// Its console understands colours only when it is asked to; it is not.
bool IsTerminal(std::FILE*) { return false; }

void LetLongFilesFail() {}  // nothing ends there

bool IsStandardInput(const std::string&) { return false; }  // which is not read there

// Its lists of permissions are not asked.
int WhyNotWritable(const std::string&) { return 0; }

std::int64_t KeepInput(int, std::uint64_t, std::string&) {
  errno = ENOSYS;
  return -1;
}

}  // namespace vkcl::tool::host
