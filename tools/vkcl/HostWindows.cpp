#include "Host.h"

namespace vkcl::tool::host {

void OccupyStandardStreams() {}  // the C library keeps their numbers

// Its console understands colours only when it is asked to; it is not.
bool IsTerminal(std::FILE*) { return false; }

}  // namespace vkcl::tool::host
