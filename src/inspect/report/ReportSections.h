// The sections of a profile's report, in the order of the page.
#pragma once

#include <span>
#include <vector>

#include "inspect/ProfileCheck.h"
#include "inspect/report/HtmlText.h"
#include "inspect/report/ShownFile.h"

namespace vkcl {

/// A section: heading, whether the file has anything for it, and what stands below the heading.
struct ReportSection {
  const char* place;
  const char* title;
  bool (*has)(const ShownFile& file);
  void (*write)(HtmlWriter& out, const ShownFile& file);
};

/// All sections but the findings, which are needed before.
std::span<const ReportSection> ReportSections();

// Identity.
void WriteIdentity(HtmlWriter& out, const ShownFile& file);
void WriteState(HtmlWriter& out, const ShownFile& file);
void WriteFindings(HtmlWriter& out, const ShownFile& file, const std::vector<Finding>& findings);
/// "2 errors, 1 note"; "nothing to say" without findings.
std::string FindingsText(const std::vector<Finding>& findings);

// Records.
void WriteSettings(HtmlWriter& out, const ShownFile& file);
bool HasSettings(const ShownFile& file);
void WriteLimits(HtmlWriter& out, const ShownFile& file);
bool HasLimits(const ShownFile& file);
void WriteSplit(HtmlWriter& out, const ShownFile& file);

// Measurements.
void WriteLinearisation(HtmlWriter& out, const ShownFile& file);
void WriteGrayBalance(HtmlWriter& out, const ShownFile& file);
void WriteCharacterisation(HtmlWriter& out, const ShownFile& file);
bool HasCharacterisation(const ShownFile& file);

// The file.
void WriteTagMap(HtmlWriter& out, const ShownFile& file);

/// Says of a private tag that it cannot be read, and why.
void WriteUnreadable(HtmlWriter& out, const ReadTag& read);

}  // namespace vkcl
