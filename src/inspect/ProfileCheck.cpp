#include "inspect/ProfileCheck.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "inspect/Examination.h"
#include "inspect/SpaceChannels.h"
#include "platform/Bytes.h"
#include "platform/Guarded.h"
#include "profile/SignatureText.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

using enum Severity;
using std::to_string;

constexpr std::size_t kHeaderSize = sizeof(icHeader);
// Tags lie anywhere, and of most of them only a few bytes are looked at.
constexpr std::size_t kReadAhead = 4096;
// Of one rule. A file that is all wrong has as many findings as a table can have entries.
constexpr std::size_t kMostFindings = 100;

std::string Hex(std::uint32_t value) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "0x";
  for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[value >> shift & 15];
  return text;
}

bool IsOneOf(std::uint32_t value, std::initializer_list<std::uint32_t> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

bool IsConnectionSpace(std::uint32_t space) { return IsOneOf(space, {icSigXYZData, icSigLabData}); }

bool IsClass(std::uint32_t deviceClass) {
  return IsOneOf(deviceClass, {icSigInputClass, icSigDisplayClass, icSigOutputClass, icSigLinkClass,
                               icSigColorSpaceClass, icSigAbstractClass, icSigNamedColorClass});
}

std::uint32_t DaysIn(std::uint32_t month, std::uint32_t year) {
  if (IsOneOf(month, {4, 6, 9, 11})) return 30;
  if (month != 2) return 31;
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return leap ? 29 : 28;
}

}  // namespace

Examination::Examination(AFile& file, std::uint64_t size)
    : file_(file), bytes_(file, 0, size, kReadAhead) {
  const std::string_view head = bytes_.At(0, head_.size());
  std::copy(head.begin(), head.end(), head_.begin());
}

void Examination::Find(Severity severity, const char* rule, const char* clause, std::string text,
                       std::uint32_t tag) {
  if (++counts_[rule] > kMostFindings) return;
  findings_.push_back(
      {severity, rule, clause, tag != 0 ? SignatureText(tag) : std::string(), std::move(text)});
}

void Examination::TellHowManyMore() {
  for (const auto& [rule, count] : counts_) {
    if (count <= kMostFindings) continue;
    findings_.push_back({Note, std::string(rule), "", "",
                         to_string(count - kMostFindings) + " more findings of this rule"});
  }
}

std::uint32_t Examination::Long(std::uint64_t offset) {
  std::array<char, 4> number{};
  const std::string_view bytes = bytes_.At(offset, number.size());
  std::copy(bytes.begin(), bytes.end(), number.begin());
  return LoadBig32(number.data());
}

std::uint32_t Examination::At(std::size_t offset) const { return LoadBig32(&head_[offset]); }

bool Examination::HeadIsZero(std::size_t from, std::size_t to) const {
  return std::all_of(&head_[from], &head_[to], [](char c) { return c == 0; });
}

// What nobody can go on without.
bool Examination::CheckStart() {
  if (bytes_.size() < kHeaderSize) {
    Find(Error, "file.short", "6.1",
         "the file is " + to_string(bytes_.size()) + " bytes long, and a header takes 128");
    return false;
  }
  if (At(36) != icMagicNumber) {
    Find(Error, "header.magic", "6.1",
         "the file signature is '" + SignatureText(At(36)) + "', not 'acsp'");
    return false;
  }
  if (bytes_.size() < kTableStart) {
    Find(Error, "file.no-table", "6.2", "the file ends before the number of tags");
    return false;
  }
  return true;
}

void Examination::CheckSize() {
  const std::uint32_t size = At(0);
  if (size > bytes_.size()) {
    Find(Error, "header.size-beyond", "6.1.1",
         "the header tells a size of " + to_string(size) + " bytes, and the file has " +
             to_string(bytes_.size()));
  } else if (size < bytes_.size()) {
    Find(Warning, "header.size-short", "6.1.1",
         "the header tells a size of " + to_string(size) + " bytes; " +
             to_string(bytes_.size() - size) + " more follow");
  }
  if (size % 4 != 0) {
    Find(Note, "header.size-odd", "",
         "the size in the header, " + to_string(size) + ", is no multiple of 4");
  }
}

// One byte of major version, then minor version and bug fix in four bits each, all decimal digits.
void Examination::CheckVersion() {
  const std::uint32_t version = At(8);
  const std::uint32_t major = version >> 24;
  if (major != 2 && major != 4) {
    Find(Warning, "header.version", "6.1.3", "the version is " + Hex(version) + ", not 2 or 4");
  } else if ((version >> 20 & 15) > 9 || (version >> 16 & 15) > 9) {
    Find(Warning, "header.version-digits", "6.1.3",
         "minor version and bug fix are no decimal digits: " + Hex(version));
  } else if (major == 4) {
    Find(Note, "header.version-4", "",
         "version 4: the clauses named are those of version 2, and types of both are let pass");
  }
  if ((version & 0xFFFF) != 0) {
    Find(Note, "header.version-reserved", "6.1.3",
         "reserved bytes of the version are not zero: " + Hex(version));
  }
}

void Examination::CheckSpaces() {
  const std::uint32_t deviceClass = At(12);
  const std::string space = SignatureText(At(16));
  if (!IsClass(deviceClass)) {
    Find(Warning, "header.class", "6.1.4",
         "the device class '" + SignatureText(deviceClass) + "' is none of the standard's");
  }
  if (ChannelsOf(At(16)) == 0) {
    Find(Warning, "header.color-space", "6.1.5",
         "the colour space '" + space + "' is none of the standard's");
  } else if (deviceClass == icSigAbstractClass && !IsConnectionSpace(At(16))) {
    Find(Warning, "header.abstract-space", "6.3.4.3",
         "an abstract profile leads from '" + space + "', not from XYZ or Lab");
  }
  // A device link has the colour space that it ends in there.
  const bool known =
      deviceClass == icSigLinkClass ? ChannelsOf(At(20)) != 0 : IsConnectionSpace(At(20));
  if (!known) {
    Find(Warning, "header.pcs", "6.1.6",
         "the connection space '" + SignatureText(At(20)) + "' is not XYZ or Lab");
  }
}

void Examination::CheckDate() {
  const auto number = [&](std::size_t i) { return At(24 + 2 * i) >> 16; };
  struct Part {
    const char* name;
    std::uint32_t least;
    std::uint32_t most;
  };
  const Part parts[] = {
      {"year", 1900, 9999}, {"month", 1, 12},  {"day", 1, DaysIn(number(1), number(0))},
      {"hour", 0, 23},      {"minute", 0, 59}, {"second", 0, 59}};
  if (HeadIsZero(24, 36)) {
    Find(Note, "header.date-unset", "6.1", "the date is not set");
    return;
  }
  for (std::size_t i = 0; i < std::size(parts); ++i) {
    if (number(i) >= parts[i].least && number(i) <= parts[i].most) continue;
    Find(Note, "header.date", "6.1",
         std::string("the ") + parts[i].name + " of the date is " + to_string(number(i)));
    return;
  }
}

void Examination::CheckSignatures() {
  const std::uint32_t platform = At(40);
  if (!IsOneOf(platform, {0, icSignature("APPL"), icSignature("MSFT"), icSignature("SGI "),
                          icSignature("SUNW"), icSignature("TGNT")})) {
    Find(Note, "header.platform", "6.1.7",
         "the platform '" + SignatureText(platform) + "' is none of the standard's");
  }
  struct Field {
    const char* name;
    const char* clause;
    std::size_t at;
  };
  constexpr Field kFields[] = {{"preferred CMM", "6.1.2", 4},
                               {"device manufacturer", "6.1", 48},
                               {"device model", "6.1", 52},
                               {"creator", "6.1", 80}};
  for (const Field& field : kFields) {
    if (At(field.at) == 0 || IsPrintableSignature(At(field.at))) continue;
    Find(Note, "header.unprintable", field.clause,
         std::string("the signature of the ") + field.name +
             " is no printable text: " + Hex(At(field.at)));
  }
}

void Examination::CheckRest() {
  // Bits 0 and 1 have a meaning, the others of the lower half are the standard's to give one.
  if ((At(44) & 0xFFFC) != 0) {
    Find(Note, "header.flags", "6.1.8", "reserved flags are set: " + Hex(At(44)));
  }
  if ((At(60) & 0xFFFFFFF0) != 0) {
    Find(Note, "header.attributes", "6.1.10", "reserved attributes are set: " + Hex(At(60)));
  }
  if (At(64) > 3) {
    Find(Warning, "header.intent", "6.1.11", "the rendering intent is " + to_string(At(64)));
  }
  constexpr std::int64_t kD50[] = {0xF6D6, 0x10000, 0xD32D};
  for (std::size_t i = 0; i < 3; ++i) {
    const auto part = static_cast<std::int32_t>(At(68 + 4 * i));
    if (std::abs(part - kD50[i]) <= 3) continue;
    Find(Warning, "header.illuminant", "6.1",
         "the illuminant is not D50: " + Hex(At(68)) + " " + Hex(At(72)) + " " + Hex(At(76)));
    break;
  }
  if (!HeadIsZero(IsVersion4() ? 100 : 84, kHeaderSize)) {  // version 4 has an ID of 16 bytes there
    Find(Note, "header.reserved", "6.1", "reserved bytes of the header are not zero");
  }
}

std::vector<Finding> Examination::Run() {
  if (!CheckStart()) return std::move(findings_);
  CheckSize();
  CheckVersion();
  CheckSpaces();
  CheckDate();
  CheckSignatures();
  CheckRest();
  if (!ReadTable()) return std::move(findings_);
  CheckTable();
  CheckPlaces();
  CheckRequired();
  CheckTypes();
  CheckPrivate();
  TellHowManyMore();
  return std::move(findings_);
}

const char* SeverityText(Severity severity) {
  switch (severity) {
    case Note: return "note";
    case Warning: return "warning";
    case Error: break;
  }
  return "error";
}

std::vector<Finding> CheckProfile(const AFilePath& path) {
  // Made first: when memory is short later on, it is there. No finding would say that all is well.
  std::vector<Finding> unreadable = {{Error, "file.unreadable", "", "",
                                      "it cannot be read: it is missing, may not be opened, "
                                      "or is no regular file"}};
  std::vector<Finding> findings;
  const bool read = Guarded([&] {
    std::error_code error;
    AFile file;
    if (!std::filesystem::is_regular_file(host::SystemPath(path.str()), error)) return false;
    if (!file.open(path, AFile::Read)) return false;
    const std::int64_t size = file.length();
    if (size < 0) return false;
    Examination examination(file, static_cast<std::uint64_t>(size));
    findings = examination.Run();
    return examination.good();
  });
  if (!read) return unreadable;
  return findings;
}

Severity GravestOf(const std::vector<Finding>& findings) {
  Severity gravest = Note;
  for (const Finding& finding : findings) gravest = std::max(gravest, finding.severity);
  return gravest;
}

}  // namespace vkcl
