#include "inspect/ProfileCheck.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "inspect/Examination.h"
#include "platform/Guarded.h"
#include "platform/plinth/WholeFile.h"
#include "profile/SignatureText.h"
#include "profile/TableLayout.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

using enum Severity;
using std::to_string;

constexpr std::size_t kHeaderSize = sizeof(icHeader);
constexpr std::uint32_t kVersion4 = 4;

std::string Hex(std::uint32_t value) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "0x";
  for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[value >> shift & 15];
  return text;
}

bool IsOneOf(std::uint32_t value, std::initializer_list<std::uint32_t> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

bool IsKnownSpace(std::uint32_t space) {
  constexpr std::uint32_t kOthers[] = {
      icSigXYZData,        icSigLabData,  icSignature("Luv "), icSignature("YCbr"),
      icSignature("Yxy "), icSigRgbData,  icSigGrayData,       icSignature("HSV "),
      icSignature("HLS "), icSigCmykData, icSigCmyData};
  if (std::find(std::begin(kOthers), std::end(kOthers), space) != std::end(kOthers)) return true;
  const std::uint32_t digit = space >> 24;
  const bool counted = (digit >= '1' && digit <= '9') || (digit >= 'A' && digit <= 'G');
  return counted && (space & 0xFFFFFF) == (icSig2colorData & 0xFFFFFF);
}

bool IsClass(std::uint32_t deviceClass) {
  return IsOneOf(deviceClass, {icSigInputClass, icSigDisplayClass, icSigOutputClass, icSigLinkClass,
                               icSigColorSpaceClass, icSigAbstractClass, icSigNamedColorClass});
}

}  // namespace

void Examination::Find(Severity severity, const char* rule, const char* clause, std::string text,
                       std::uint32_t tag) {
  findings_.push_back(
      {severity, rule, clause, tag != 0 ? SignatureText(tag) : std::string(), std::move(text)});
}

// What nobody can go on without.
bool Examination::CheckStart() {
  if (bytes_.size() < kHeaderSize) {
    Find(Error, "file.short", "6.1",
         "the file is " + to_string(bytes_.size()) + " bytes long, and a header takes 128");
    return false;
  }
  if (At(36) != icMagicNumber) {
    Find(Error, "header.magic", "6.1.7",
         "the file signature is '" + SignatureText(At(36)) + "', not 'acsp'");
    return false;
  }
  if (bytes_.size() < kTableStart) {
    Find(Error, "file.no-table", "6.2.1", "the file ends before the number of tags");
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
    Find(Note, "header.size-odd", "6.1.1",
         "the size in the header, " + to_string(size) + ", is no multiple of 4");
  }
}

void Examination::CheckSignatures() {
  const std::uint32_t version = At(8);
  const std::uint32_t major = version >> 24;
  if (major != 2 && major != kVersion4) {
    Find(Warning, "header.version", "6.1.3", "the version is " + Hex(version) + ", not 2 or 4");
  } else if ((version & 0xFFFF) != 0) {
    Find(Note, "header.version-reserved", "6.1.3",
         "reserved bytes of the version are not zero: " + Hex(version));
  }
  if (!IsClass(At(12))) {
    Find(Warning, "header.class", "6.1.4",
         "the device class '" + SignatureText(At(12)) + "' is none of the standard's");
  }
  if (!IsKnownSpace(At(16))) {
    Find(Warning, "header.color-space", "6.1.5",
         "the colour space '" + SignatureText(At(16)) + "' is none of the standard's");
  }
  const bool link = At(12) == icSigLinkClass;
  const bool space = link ? IsKnownSpace(At(20)) : IsOneOf(At(20), {icSigXYZData, icSigLabData});
  if (!space) {
    Find(Warning, "header.pcs", "6.1.6",
         "the connection space '" + SignatureText(At(20)) + "' is not XYZ or Lab");
  }
}

void Examination::CheckDate() {
  struct Part {
    const char* name;
    std::uint32_t least;
    std::uint32_t most;
  };
  constexpr Part kParts[] = {{"year", 1900, 9999}, {"month", 1, 12},  {"day", 1, 31},
                             {"hour", 0, 23},      {"minute", 0, 59}, {"second", 0, 59}};
  const bool unset =
      std::all_of(bytes_.begin() + 24, bytes_.begin() + 36, [](char byte) { return byte == 0; });
  if (unset) {
    Find(Note, "header.date-unset", "6.1", "the date is not set");
    return;
  }
  for (std::size_t i = 0; i < std::size(kParts); ++i) {
    const std::uint32_t value = Short(24 + 2 * i);
    if (value >= kParts[i].least && value <= kParts[i].most) continue;
    Find(Note, "header.date", "6.1",
         std::string("the ") + kParts[i].name + " of the date is " + to_string(value));
    return;
  }
}

void Examination::CheckRest() {
  const std::uint32_t platform = At(40);
  if (!IsOneOf(platform, {0, icSignature("APPL"), icSignature("MSFT"), icSignature("SGI "),
                          icSignature("SUNW"), icSignature("TGNT")})) {
    Find(Note, "header.platform", "6.1.8",
         "the platform '" + SignatureText(platform) + "' is none of the standard's");
  }
  if (At(64) > 3) {
    Find(Warning, "header.intent", "6.1.11", "the rendering intent is " + to_string(At(64)));
  }
  constexpr std::int64_t kD50[] = {0xF6D6, 0x10000, 0xD32D};
  for (std::size_t i = 0; i < 3; ++i) {
    const auto part = static_cast<std::int32_t>(At(68 + 4 * i));
    if (std::abs(part - kD50[i]) <= 3) continue;
    Find(Warning, "header.illuminant", "6.1.12",
         "the illuminant is not D50: " + Hex(At(68)) + " " + Hex(At(72)) + " " + Hex(At(76)));
    break;
  }
  const std::size_t reserved =
      At(8) >> 24 >= kVersion4 ? 100 : 84;  // version 4 has an ID of 16 bytes there
  const bool clean = std::all_of(bytes_.begin() + static_cast<std::ptrdiff_t>(reserved),
                                 bytes_.begin() + kHeaderSize, [](char c) { return c == 0; });
  if (!clean) Find(Note, "header.reserved", "6.1", "reserved bytes of the header are not zero");
}

std::vector<Finding> Examination::Run() {
  if (!CheckStart()) return std::move(findings_);
  CheckSize();
  CheckSignatures();
  CheckDate();
  CheckRest();
  if (!ReadTable()) return std::move(findings_);
  CheckTable();
  CheckPlaces();
  CheckRequired();
  CheckTypes();
  CheckPrivate();
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

std::vector<Finding> CheckProfile(const AFilePath& path) noexcept {
  const auto unreadable = [] {
    return std::vector<Finding>{{Error, "file.unreadable", "", "",
                                 "it cannot be read: it is missing, may not be opened, "
                                 "is no regular file or longer than 4 GiB"}};
  };
  return Guarded([&] {
    const FileContent file = ReadWholeFile(path);
    if (!file.bytes) return unreadable();
    return Examination({file.bytes.get(), file.size}).Run();
  });
}

Severity GravestOf(const std::vector<Finding>& findings) {
  Severity gravest = Note;
  for (const Finding& finding : findings) gravest = std::max(gravest, finding.severity);
  return gravest;
}

}  // namespace vkcl
