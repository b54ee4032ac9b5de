#include "CheckCommands.h"

#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "JsonArray.h"
#include "Opened.h"
#include "OutputFile.h"
#include "Style.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "inspect/ProfileCheck.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/ReplaceFile.h"
#include "profile/TagLayout.h"

namespace vkcl::tool {
namespace {

using Json = nlohmann::ordered_json;

Json FindingJson(const Finding& finding) {
  return {{"severity", SeverityText(finding.severity)},
          {"rule", finding.rule},
          {"clause", finding.clause.empty() ? Json() : Json(finding.clause)},
          {"tag", finding.tag.empty() ? Json() : Json(finding.tag)},
          {"text", finding.text}};
}

Ink InkOf(Severity severity) {
  switch (severity) {
    case Severity::Note: return Ink::Note;
    case Severity::Warning: return Ink::Warning;
    case Severity::Error: break;
  }
  return Ink::Error;
}

std::string FindingText(const Finding& finding) {
  const std::string tag = finding.tag.empty() ? "" : fmt::format("{}: ", finding.tag);
  const std::string clause =
      finding.clause.empty() ? "" : fmt::format(" (ICC.1, {})", finding.clause);
  const std::string severity = fmt::format("{:<7}", SeverityText(finding.severity));
  return fmt::format("  {} {}{}{} [{}]\n",
                     Painted(Stream::Output, InkOf(finding.severity), severity), tag, finding.text,
                     clause, finding.rule);
}

std::vector<Finding> FindingsOf(const NamedFile& file) {
  if (file.problem.empty()) return CheckProfile(AFilePath(file.path));
  return {{Severity::Error, "file.unreadable", "", "", file.problem}};
}

Json FindingsJson(const NamedFile& file, const std::vector<Finding>& findings) {
  Json rows = Json::array();
  for (const Finding& finding : findings) rows.push_back(FindingJson(finding));
  return {{"file", Utf8(file.name)}, {"findings", std::move(rows)}};
}

std::string FindingsText(const NamedFile& file, const std::vector<Finding>& findings) {
  const std::string count = findings.empty() ? "nothing to say"
                                             : fmt::format("{} finding{}", findings.size(),
                                                           findings.size() == 1 ? "" : "s");
  std::string text =
      fmt::format("{}: {}\n", Painted(Stream::Output, Ink::Title, Printable(file.name)), count);
  for (const Finding& finding : findings) text += FindingText(finding);
  return text;
}

std::uintmax_t LengthOf(const std::string& path) {
  std::error_code error;
  const std::uintmax_t length = std::filesystem::file_size(path, error);
  return error ? 0 : length;
}

}  // namespace

Outcome Check(const FilesOptions& files, bool json) {
  JsonArray array;
  bool errors = false;
  ForEachFile(files, [&](const NamedFile& file) -> Finish {
    const std::vector<Finding> findings = FindingsOf(file);
    const bool isError = GravestOf(findings) == Severity::Error;
    Json document = json ? FindingsJson(file, findings) : Json();
    std::string text = json ? std::string() : FindingsText(file, findings);
    return [&, isError, document = std::move(document), text = std::move(text)] {
      errors = errors || isError;
      if (json) {
        array.Print(document);
      } else {
        fmt::print("{}", text);
      }
    };
  });
  if (json) array.End();
  return errors ? Outcome::Refused : Outcome::Done;
}

Result Compact(const std::string& input, const std::string& output) {
  const std::string why = WhyInvalid(input, kAnyChannels);
  if (!why.empty()) return Refused(why);
  const AFilePath to(output);
  if (to.exists()) return Refused(fmt::format("{} exists", Printable(output)));
  const OpenedProfile profile(input, kAnyChannels);
  // Whoever kills the tool leaves no part of a copy under that name.
  if (!ReplaceFile(to, [&](AFile& file) { return WriteArranged(profile, file); })) {
    if (!WhyNotWritable(output).empty()) return NotWritten(output);
    return Refused(
        fmt::format("{} could not be written: a tag reaches beyond the end of the file, "
                    "many share their data, or the disk is full",
                    Printable(output)));
  }
  return Done(fmt::format("{} tags written to {} in table order, {} bytes instead of {}",
                          profile.tagCount, Printable(output), LengthOf(output), LengthOf(input)));
}

}  // namespace vkcl::tool
