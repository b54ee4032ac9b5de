#include "Host.h"

namespace vkcl::tool::host {

void OccupyStandardStreams() {}  // the C library keeps their numbers

}  // namespace vkcl::tool::host
