// A page about profile files, for people.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "platform/Export.h"
#include "platform/plinth/AFilePath.h"

namespace vkcl {

/// Takes a piece of a page; false ends the writing.
using ReportSink = std::function<bool(std::string_view)>;

/// Writes one HTML page, in UTF-8, that stands for itself: no script, no style or picture from
/// elsewhere, and a policy that forbids them. For each file: what it is, how far its making has
/// come, its settings, ink limits and split, linearisation, gray balance and characterisation as
/// charts and tables, the findings of CheckProfile, and how the file is laid out. Files that are no
/// profiles have their findings alone. The same files give the same bytes.
///
/// Texts of the files cannot become markup. Long lists are thinned out or cut, and the page says
/// so. False when the sink said no, or memory was short: the page is not whole then.
VKCL_API bool WriteReport(std::span<const AFilePath> profiles, const ReportSink& sink) noexcept;

/// The same into a file, which takes the place at `page` when it is whole. False, and the place is
/// as it was, when that failed.
VKCL_API bool WriteReportFile(std::span<const AFilePath> profiles, const AFilePath& page) noexcept;

}  // namespace vkcl
