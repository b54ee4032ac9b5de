// What the tool asks of the operating system, beyond what the library does.
#pragma once

#include <cstdio>

namespace vkcl::tool::host {

/// Opens those of the standard streams that are closed, so that no file which is opened later takes
/// the place of one and gets what is printed. They can be neither read nor written.
void OccupyStandardStreams();

/// Whether the stream goes to a terminal that can do more than print one line after the other.
bool IsTerminal(std::FILE* stream);

}  // namespace vkcl::tool::host
