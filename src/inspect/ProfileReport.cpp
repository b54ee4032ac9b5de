#include "inspect/ProfileReport.h"

#include <string>
#include <vector>

#include "inspect/ProfileCheck.h"
#include "inspect/ProfileNames.h"
#include "inspect/report/HtmlText.h"
#include "inspect/report/PageStyle.h"
#include "inspect/report/ReportSections.h"
#include "inspect/report/ShownFile.h"
#include "platform/Guarded.h"
#include "platform/Shortage.h"
#include "platform/plinth/ReplaceFile.h"

namespace vkcl {
namespace {

bool Always(const ShownFile& /*file*/) { return true; }

bool HasPrivateTags(const ShownFile& file) { return !file.privateTags().empty(); }

bool HasSplit(const ShownFile& file) { return file.Has(QX50); }

bool HasLinearisation(const ShownFile& file) {
  return file.Has(QX54) || file.Has(QX55) || file.Has(QX72) || file.Has(QX73);
}

bool HasGrayBalance(const ShownFile& file) { return file.Has(QX56) || file.Has(QX57); }

constexpr ReportSection kSections[] = {
    {"identity", "Identity", Always, WriteIdentity},
    {"state", "State", HasPrivateTags, WriteState},
    {"settings", "Settings", HasSettings, WriteSettings},
    {"limits", "Ink limits", HasLimits, WriteLimits},
    {"split", "Ink split", HasSplit, WriteSplit},
    {"lin", "Linearisation", HasLinearisation, WriteLinearisation},
    {"gray", "Gray balance", HasGrayBalance, WriteGrayBalance},
    {"patches", "Characterisation", HasCharacterisation, WriteCharacterisation},
    {"map", "Tag map", Always, WriteTagMap},
};

// What the index and the heading of a file say.
struct Summary {
  std::string line;
  std::string state;
};

Summary SummaryOf(const ShownFile& file) {
  if (!file.isProfile()) return {"no ICC profile that can be opened", "-"};
  const char* className = ClassName(file.profile().GetDeviceClass());
  VKCLProfileFinishedState state = FinishedNone;
  const bool own = file.profile().GetVKCLProfileFinishedState(state, 1) != 0;
  return {std::string(className != nullptr ? className : "unknown class") + ", " +
              PlainSignature(file.profile().GetColorSpace()) + " to " +
              PlainSignature(file.profile().GetPCS()) + ", " + ShownBytes(file.length()),
          own ? FinishedStateName(state) : "no state of its own"};
}

class Page {
 public:
  Page(std::span<const AFilePath> profiles, const ReportSink& sink)
      : profiles_(profiles), out_(sink) {}

  bool Write() {
    WriteHead();
    if (profiles_.size() > 1) WriteIndex();
    for (std::size_t i = 0; i < profiles_.size(); ++i) WriteFile(i);
    out_ << "</main><footer><p>Made by vkcl report.</p></footer></body></html>\n"_html;
    return out_.Finish();
  }

 private:
  std::string NameOf(std::size_t i) const { return profiles_[i].getFileName().str(); }

  void WriteHead() {
    out_ << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
            "style-src 'unsafe-inline'; base-uri 'none'; form-action 'none'\">"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
            "<meta name=\"color-scheme\" content=\"light dark\"><title>Profile report: "_html;
    if (profiles_.size() == 1) {
      out_ << NameOf(0);
    } else {
      out_ << Counted(profiles_.size(), "file");
    }
    out_ << "</title><style>"_html << kPageStyle
         << "</style></head><body><header><h1>Profile report</h1></header><main>"_html;
  }

  void WriteIndex() {
    out_ << "<nav class=\"index\" aria-label=\"Files\"><div class=\"scroll\" role=\"group\" "
            "tabindex=\"0\" aria-label=\"Files\"><table><caption>"_html
         << Counted(profiles_.size(), "file")
         << "</caption><thead><tr><th scope=\"col\">File</th><th scope=\"col\">What it is</th>"
            "<th scope=\"col\">State</th><th scope=\"col\">Findings</th></tr></thead><tbody>"_html;
    for (std::size_t i = 0; i < profiles_.size(); ++i) {
      const ShownFile file(profiles_[i], i + 1);
      const Summary summary = SummaryOf(file);
      out_ << "<tr><th scope=\"row\"><a href=\"#"_html << file.id() << "\">"_html
           << Isolated{NameOf(i), 300} << "</a></th><td>"_html << Isolated{summary.line}
           << "</td><td>"_html << summary.state << "</td><td>"_html
           << FindingsText(CheckProfile(profiles_[i])) << "</td></tr>"_html;
    }
    out_ << "</tbody></table></div></nav>"_html;
  }

  void WriteContents(const ShownFile& file) {
    out_ << "<nav class=\"contents\" aria-label=\"Sections of file "_html << Number(file) + 1
         << ", "_html << NameOf(Number(file)) << "\"><ul>"_html;
    for (const ReportSection& section : kSections) {
      if (section.has(file)) WriteLink(file, section.place, section.title);
    }
    WriteLink(file, "findings", "Findings");
    out_ << "</ul></nav>"_html;
  }

  void WriteLink(const ShownFile& file, const char* place, const char* title) {
    out_ << "<li><a href=\"#"_html << file.Id(place) << "\">"_html << title << "</a></li>"_html;
  }

  void BeginSection(const ShownFile& file, const char* place, const char* title) {
    out_ << "\n<section id=\""_html << file.Id(place) << "\"><h3>"_html << title << "</h3>"_html;
  }

  static std::size_t Number(const ShownFile& file) {
    return static_cast<std::size_t>(std::stoul(file.id().substr(1))) - 1;
  }

  void WriteFile(std::size_t i) {
    const ShownFile file(profiles_[i], i + 1);
    const std::vector<Finding> findings = CheckProfile(profiles_[i]);
    const Summary summary = SummaryOf(file);
    out_ << "\n<article id=\""_html << file.id() << "\" aria-labelledby=\""_html << file.Id("h")
         << "\"><h2 id=\""_html << file.Id("h") << "\">"_html << Isolated{NameOf(i), 300}
         << "</h2><p class=\"lead\">"_html << Isolated{summary.line} << "</p>"_html;
    if (file.isProfile()) {
      WriteContents(file);
      for (const ReportSection& section : kSections) {
        if (!section.has(file)) continue;
        BeginSection(file, section.place, section.title);
        section.write(out_, file);
        out_ << "</section>"_html;
      }
    }
    BeginSection(file, "findings", "Findings");
    WriteFindings(out_, file, findings);
    out_ << "</section></article>"_html;
  }

  std::span<const AFilePath> profiles_;
  HtmlWriter out_;
};

}  // namespace

bool WriteReport(std::span<const AFilePath> profiles, const ReportSink& sink) noexcept {
  return Guarded([&] {
    const ShortageWatch shortage;
    return Page(profiles, sink).Write() && !shortage.Met();  // else the page may tell less
  });
}

bool WriteReportFile(std::span<const AFilePath> profiles, const AFilePath& page) noexcept {
  return Guarded([&] {
    return ReplaceFile(page, [&](AFile& file) {
      return WriteReport(profiles, [&](std::string_view piece) {
        return file.write(piece.data(), piece.size()) == piece.size();
      });
    });
  });
}

}  // namespace vkcl
