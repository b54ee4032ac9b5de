// What the tool asks of the operating system, beyond what the library does.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace vkcl::tool::host {

/// Opens those of the standard streams that are closed, so that no file which is opened later takes
/// the place of one and gets what is printed. They can be neither read nor written.
void OccupyStandardStreams();

/// Has a write beyond the length that a file may have here fail as any other, instead of ending the
/// tool in the middle of an edit.
void LetLongFilesFail();

/// Whether the stream goes to a terminal that can do more than print one line after the other.
bool IsTerminal(std::FILE* stream);

/// Whether the path names the file that is the standard input.
bool IsStandardInput(const std::string& path);

/// The number of the error with which writing into the file or folder would be refused by its
/// permissions; 0 when they allow it, or do not tell.
int WhyNotWritable(const std::string& path);

/// Copies what can be read from the descriptor into a file that nobody else can open, and that is
/// gone when the program is, however that ends where the system can do so. At most `most` bytes and
/// one more. Returns their number, and the path to open the file at; -1 with `errno` when reading
/// or writing fails.
std::int64_t KeepInput(int descriptor, std::uint64_t most, std::string& path);

}  // namespace vkcl::tool::host
