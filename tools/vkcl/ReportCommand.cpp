#include "ReportCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "OutputFile.h"
#include "Text.h"
#include "inspect/ProfileReport.h"

namespace vkcl::tool {
namespace {

bool WriteToStandardOutput(std::string_view piece) {
  return std::fwrite(piece.data(), 1, piece.size(), stdout) == piece.size();
}

}  // namespace

Result Report(const FilesOptions& profiles, const std::string& output, bool force) {
  std::vector<AFilePath> paths;
  for (const NamedFile& file : FilesOf(profiles)) {
    if (!file.problem.empty()) {
      return Refused(fmt::format("{}: {}", Printable(file.name), file.problem));
    }
    paths.emplace_back(file.path);
  }
  if (output == "-") {
    const bool written = WriteReport(paths, WriteToStandardOutput) && std::fflush(stdout) == 0;
    return written ? Done({}) : Refused("the output cannot be written");
  }
  const AFilePath page(output);
  const bool isInput = std::any_of(paths.begin(), paths.end(),
                                   [&](const AFilePath& path) { return page.isSameFile(path); });
  if (isInput) return Refused("a profile is not replaced by the page about it");
  if (const std::string why = WhyKept(output, force); !why.empty()) return Refused(why);
  if (!WriteReportFile(paths, page)) return NotWritten(output);
  return Done(fmt::format("{} profile{} in {}", paths.size(), paths.size() == 1 ? "" : "s",
                          Printable(output)) +
              '\n');
}

}  // namespace vkcl::tool
