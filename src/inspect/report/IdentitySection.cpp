// What the file is, how far its making has come, and what is wrong with it.
#include <algorithm>
#include <array>

#include "inspect/ProfileNames.h"
#include "inspect/report/ReportSections.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

constexpr std::size_t kMostFindings = 200;
constexpr std::size_t kMostText = 4096;  // bytes of a text element that are looked at

// A label and what it labels, in a list of both.
template <class... Parts>
void WriteFact(HtmlWriter& out, const char* label, const Parts&... parts) {
  out << "<div><dt>"_html << label << "</dt><dd>"_html;
  (out << ... << parts);
  out << "</dd></div>"_html;
}

std::string Padded(std::uint32_t number, std::size_t digits) {
  std::string text = std::to_string(number);
  return std::string(digits - std::min(digits, text.size()), '0') + text;
}

std::string DateText(const icDateTimeNumber& date) {
  if (date.year == 0 && date.month == 0 && date.day == 0) return "not set";
  return Padded(date.year, 4) + '-' + Padded(date.month, 2) + '-' + Padded(date.day, 2) + ' ' +
         Padded(date.hours, 2) + ':' + Padded(date.minutes, 2) + ':' + Padded(date.seconds, 2);
}

std::string VersionText(std::uint32_t version) {
  return std::to_string(version >> 24) + '.' + std::to_string(version >> 20 & 15) + '.' +
         std::to_string(version >> 16 & 15);
}

std::string Signature(std::uint32_t signature) {
  return signature == 0 ? "not set" : PlainSignature(signature);
}

void WriteTextTag(HtmlWriter& out, const ShownFile& file, const char* label, std::uint32_t sig) {
  const std::vector<icTag>& table = file.table();
  const auto found =
      std::find_if(table.begin(), table.end(), [&](const icTag& tag) { return tag.sig == sig; });
  if (found == table.end()) return;
  const std::string text =
      StandardText(file.Bytes(found->offset, std::min<std::size_t>(found->size, kMostText)));
  if (!text.empty()) WriteFact(out, label, Isolated{text, 300});
}

struct Step {
  VKCLProfileFinishedState state;
  const char* data;                       // that make the state, for people
  std::array<std::uint32_t, 3> evidence;  // any of them; 0 for none
};

// What VKCLProfile::GetVKCLProfileFinishedState looks at.
constexpr Step kSteps[] = {
    {FinishedInkLimit, "QX51 and QX53", {QX51}},
    {FinishedInkSplit, "QX50", {QX50}},
    {FinishedLinearisation, "QX54, or more in QX51", {QX54}},
    {FinishedMultiInkLimit, "QX52", {QX52}},
    {FinishedGrayBalance, "QX56", {QX56}},
    {FinishedCharacterisation, "QX59", {QX59}},
    {FinishedProfile, "B2A0, B2A1 or B2A2", {icSigBToA0Tag, icSigBToA1Tag, icSigBToA2Tag}},
};

bool HasEvidence(const ShownFile& file, const Step& step) {
  return std::any_of(step.evidence.begin(), step.evidence.end(), [&](std::uint32_t sig) {
    return sig != 0 && file.profile().GetTagSize(static_cast<icTagSignature>(sig)) != 0;
  });
}

void WriteStep(HtmlWriter& out, const ShownFile& file, const Step& step, int state) {
  const bool isReached = step.state <= state;
  const bool isCurrent = step.state == state;
  out << "<li class=\""_html
      << (isCurrent   ? "reached current"
          : isReached ? "reached"
                      : "open")
      << "\""_html;
  if (isCurrent) out << " aria-current=\"step\""_html;
  out << "><span class=\"name\">"_html << FinishedStateName(step.state)
      << "</span><span class=\"reach\">"_html
      << (isCurrent   ? "state of this profile"
          : isReached ? "reached"
                      : "not reached")
      << "</span><span class=\"muted\">"_html << step.data << ": "_html
      << (HasEvidence(file, step) ? "in the file" : "not in the file") << "</span></li>"_html;
}

const char* LockText(std::int32_t status) {
  switch (status) {
    case 9: return "locked; the status holds the finished state at linearisation";
    case 10: return "unlocked: its colour settings may be changed";
    case 11: return "locked again after a change";
    case 12: return "unlocked from status 9: its colour settings may be changed";
    case 13: return "locked again after having been unlocked from status 9";
    default: return "not unlocked; the status carries no lock";
  }
}

const char* Symbol(Severity severity) {
  switch (severity) {
    case Severity::Error: return "\xE2\x9C\x95";    // a cross
    case Severity::Warning: return "\xE2\x96\xB2";  // a triangle
    case Severity::Note: break;
  }
  return "\xE2\x97\x8B";  // a ring
}

void WriteFinding(HtmlWriter& out, const Finding& finding) {
  const char* severity = SeverityText(finding.severity);
  out << "<tr><th scope=\"row\"><span class=\"severity "_html << severity
      << "\"><span aria-hidden=\"true\">"_html << Symbol(finding.severity) << "</span> "_html
      << severity << "</span></th><td><code>"_html << Isolated{finding.tag}
      << "</code></td><td>"_html << Isolated{finding.text} << "</td><td>"_html << finding.clause
      << "</td><td><code>"_html << finding.rule << "</code></td></tr>"_html;
}

}  // namespace

void WriteIdentity(HtmlWriter& out, const ShownFile& file) {
  const icHeader& header = file.profile().header;
  const char* className = ClassName(header.deviceClass);
  out << "<dl class=\"facts\">"_html;
  WriteTextTag(out, file, "Description", icSignature("desc"));
  WriteFact(out, "Class", className != nullptr ? className : "unknown", " (",
            Isolated{Signature(header.deviceClass)}, ")");
  WriteFact(out, "Colour space", Isolated{Signature(header.colorSpace)});
  WriteFact(out, "Connection space", Isolated{Signature(header.pcs)});
  WriteFact(out, "Channels",
            file.channels() > 0 ? std::to_string(file.channels())
                                : std::string("not told by the colour space"));
  const std::string inks = InkNames(file.colorMode());
  if (!inks.empty()) WriteFact(out, "Ink set", Isolated{inks});
  WriteFact(out, "ICC version", VersionText(header.version));
  WriteFact(out, "Date", DateText(header.date));
  WriteFact(out, "Size", ShownBytes(file.length()));
  if (header.size != file.length()) WriteFact(out, "Size in header", ShownBytes(header.size));
  const char* intent = IntentName(header.renderingIntent);
  WriteFact(out, "Rendering intent",
            intent != nullptr ? std::string(intent) : std::to_string(header.renderingIntent));
  WriteFact(out, "Creator", Isolated{Signature(header.creator)});
  WriteFact(out, "Preferred CMM", Isolated{Signature(header.cmmId)});
  WriteFact(out, "Platform", Isolated{Signature(header.platform)});
  WriteFact(out, "Manufacturer, model", Isolated{Signature(header.manufacturer)}, ", ",
            Isolated{Signature(header.model)});
  WriteFact(out, "Tags", ShownCount(file.table().size()), ", ",
            ShownCount(file.privateTags().size()), " of them private");
  WriteTextTag(out, file, "Copyright", icSignature("cprt"));
  WriteFact(out, "File", Isolated{file.path().str()});
  out << "</dl>"_html;
}

void WriteState(HtmlWriter& out, const ShownFile& file) {
  VKCLProfileFinishedState byTags = FinishedNone;
  VKCLProfileFinishedState byStatus = FinishedNone;
  file.profile().GetVKCLProfileFinishedState(byTags, 1);
  file.profile().GetVKCLProfileFinishedState(byStatus, 0);
  if (file.profile().isVKCLProfile() == 0) {
    out << "<p>The file holds private tags, and is no profile of the system's own: that takes "
           "single ink limits (QX51) and colour parameters (QX53), and no private tag of a newer "
           "system. It has no finished state.</p>"_html;
  } else {
    out << "<ol class=\"timeline\">"_html;
    for (const Step& step : kSteps) WriteStep(out, file, step, byTags);
    out << "</ol>"_html;
  }
  out << "<dl class=\"facts\">"_html;
  if (byStatus != byTags) {
    WriteFact(out, "With its status", FinishedStateName(byStatus),
              " is the finished state that programs see");
  }
  if (file.status()) {
    WriteFact(out, "Lock", LockText(*file.status()), " (status ", *file.status(), ")");
  }
  out << "</dl>"_html;
}

std::string FindingsText(const std::vector<Finding>& findings) {
  std::string text;
  for (const Severity severity : {Severity::Error, Severity::Warning, Severity::Note}) {
    const auto count = std::count_if(findings.begin(), findings.end(), [&](const Finding& finding) {
      return finding.severity == severity;
    });
    if (count == 0) continue;
    text += (text.empty() ? "" : ", ") +
            Counted(static_cast<std::uint64_t>(count), SeverityText(severity));
  }
  return text.empty() ? "nothing to say" : text;
}

void WriteFindings(HtmlWriter& out, const ShownFile& file, const std::vector<Finding>& findings) {
  if (findings.empty()) {
    out << "<p>Nothing to say: header, table, layout and types are as ICC.1:2001-04 asks.</p>"_html;
    return;
  }
  out << "<div class=\"scroll\" role=\"group\" tabindex=\"0\" aria-labelledby=\""_html
      << file.Id("findings-c") << "\"><table><caption id=\""_html << file.Id("findings-c")
      << "\">"_html << FindingsText(findings)
      << "</caption><thead><tr><th scope=\"col\">Severity</th><th scope=\"col\">Tag</th>"
         "<th scope=\"col\">Finding</th><th scope=\"col\">ICC.1 clause</th>"
         "<th scope=\"col\">Rule</th></tr></thead><tbody>"_html;
  const std::size_t shown = std::min(findings.size(), kMostFindings);
  for (std::size_t i = 0; i < shown; ++i) WriteFinding(out, findings[i]);
  out << "</tbody></table></div>"_html;
  if (shown < findings.size()) {
    out << "<p class=\"note\">"_html << ShownCount(findings.size() - shown)
        << " more are left out.</p>"_html;
  }
}

}  // namespace vkcl
