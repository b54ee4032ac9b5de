#include "CheckCommands.h"

#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "Opened.h"
#include "Style.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "inspect/ProfileCheck.h"
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

std::uintmax_t LengthOf(const std::string& path) {
  std::error_code error;
  const std::uintmax_t length = std::filesystem::file_size(path, error);
  return error ? 0 : length;
}

}  // namespace

Result Check(const std::vector<std::string>& paths, bool json) {
  Json documents = Json::array();
  std::string text;
  bool errors = false;
  for (const std::string& path : paths) {
    const std::vector<Finding> findings = CheckProfile(AFilePath(path));
    errors = errors || GravestOf(findings) == Severity::Error;
    text += fmt::format("{}: {}\n", Painted(Stream::Output, Ink::Title, Printable(path)),
                        findings.empty() ? "nothing to say"
                                         : fmt::format("{} finding{}", findings.size(),
                                                       findings.size() == 1 ? "" : "s"));
    Json rows = Json::array();
    for (const Finding& finding : findings) {
      text += FindingText(finding);
      rows.push_back(FindingJson(finding));
    }
    documents.push_back({{"file", Utf8(path)}, {"findings", std::move(rows)}});
  }
  if (json) text = documents.dump(2, ' ', kAsciiOnly) + '\n';
  return {errors ? Outcome::Refused : Outcome::Done, text};
}

Result Compact(const std::string& input, const std::string& output) {
  const std::string why = WhyInvalid(input, 0);
  if (!why.empty()) return Refused(why);
  const AFilePath to(output);
  if (to.exists()) return Refused(fmt::format("{} exists", Printable(output)));
  const OpenedProfile profile(input, 0);
  if (!ArrangeTagData(profile, to)) {
    return Refused(
        fmt::format("{} could not be written: a tag reaches beyond the end of the file, "
                    "many share their data, or the disk is full",
                    Printable(output)));
  }
  return Done(fmt::format("{} tags written to {} in table order, {} bytes instead of {}",
                          profile.tagCount, Printable(output), LengthOf(output), LengthOf(input)));
}

}  // namespace vkcl::tool
