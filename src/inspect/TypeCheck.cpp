// What a tag of a known type says of its length, and of its values (ICC.1:2001-04, 6.5).
#include <algorithm>
#include <iterator>

#include "inspect/Examination.h"
#include "profile/icc.h"

namespace vkcl {

using enum Severity;
using std::to_string;

namespace {

// Items of a type that are looked at one by one. Nobody has as many.
constexpr std::uint32_t kMostItems = 1000;

// The bytes that a type takes: the least, and those of its items, whose number stands in it.
struct Extent {
  std::uint32_t type;
  const char* clause;
  std::uint32_t least;
  std::uint32_t countAt;     // 0 for none
  std::uint32_t countBytes;  // 2 or 4
  std::uint32_t each;
  bool exact;  // nothing else follows
};

constexpr Extent kExtents[] = {
    {icSignature("chrm"), "6.5.1", 12, 8, 2, 8, true},
    {icSignature("crdi"), "6.5.2", 12, 0, 0, 0, false},
    {icSignature("curv"), "6.5.3", 12, 8, 4, 2, true},
    {icSigDataType, "6.5.4", 12, 0, 0, 0, false},
    {icSignature("dtim"), "6.5.5", 20, 0, 0, 0, true},
    {icSignature("mft2"), "6.5.7", 52, 0, 0, 0, false},
    {icSignature("mft1"), "6.5.8", 48, 0, 0, 0, false},
    {icSignature("meas"), "6.5.9", 36, 0, 0, 0, true},
    {icSignature("ncl2"), "6.5.11", 84, 12, 4, 38, false},
    {icSignature("pseq"), "6.5.12", 12, 8, 4, 44, false},
    {icSignature("rcs2"), "6.5.13", 12, 10, 2, 4, false},
    {icSignature("sf32"), "6.5.14", 8, 0, 0, 0, false},
    {icSignature("scrn"), "6.5.15", 16, 12, 4, 12, true},
    {icSignature("sig "), "6.5.16", 12, 0, 0, 0, true},
    {icSignature("desc"), "6.5.17", 12, 8, 4, 1, false},
    {icSigTextType, "6.5.18", 8, 0, 0, 0, false},
    {icSignature("bfd "), "6.5.20", 12, 8, 4, 2, false},
    {icSignature("view"), "6.5.25", 36, 0, 0, 0, true},
    {icSignature("XYZ "), "6.5.26", 20, 0, 0, 0, true},
    // Of version 4.
    {icSignature("mAB "), "", 32, 0, 0, 0, false},
    {icSignature("mBA "), "", 32, 0, 0, 0, false},
    {icSignature("mluc"), "", 16, 8, 4, 12, false},
    {icSignature("para"), "", 16, 0, 0, 0, false},
};

// Numbers that stand for something.
struct Choice {
  std::uint32_t type;
  const char* clause;
  const char* name;
  std::uint32_t at;
  std::uint32_t most;
};

constexpr Choice kChoices[] = {
    {icSigDataType, "6.5.4", "data flag", 8, 1},
    {icSignature("meas"), "6.5.9", "standard observer", 8, 2},
    {icSignature("meas"), "6.5.9", "measurement geometry", 24, 2},
    {icSignature("meas"), "6.5.9", "standard illuminant", 32, 8},
    {icSignature("view"), "6.5.25", "standard illuminant", 32, 8},
};

constexpr std::uint32_t kChromaticAdaptation = icSignature("chad");
constexpr std::uint32_t kMatrixEnd = 8 + 9 * 4;

}  // namespace

// Whether the tag has the bytes that it needs. Up to three more may be padding that was counted.
bool Examination::CheckLength(const Entry& tag, std::uint64_t needed, const char* clause,
                              bool exact) {
  if (tag.size < needed) {
    Find(Error, "tag.cut", clause,
         "its content takes " + to_string(needed) + " bytes, and it has " + to_string(tag.size),
         tag.sig);
    return false;
  }
  if (exact && tag.size > needed + 3) {
    Find(Note, "tag.longer", clause,
         to_string(tag.size - needed) + " bytes follow what it says to hold", tag.sig);
  }
  return true;
}

void Examination::CheckContent(const Entry& tag) {
  const auto* found = std::find_if(std::begin(kExtents), std::end(kExtents),
                                   [&](const Extent& row) { return row.type == tag.type; });
  if (found == std::end(kExtents)) return;
  const Extent& row = *found;
  if (tag.size < row.least) {
    CheckLength(tag, row.least, row.clause, false);
    return;
  }
  std::uint64_t count = 0;
  if (row.countAt != 0) count = Long(tag.offset + std::uint64_t{row.countAt});
  if (row.countBytes == 2) count >>= 16;
  std::uint64_t each = row.each;
  // Named colours have, besides, so many device coordinates.
  if (tag.type == icSignature("ncl2")) each += 2 * std::uint64_t{Long(tag.offset + 16ull)};
  // Counts of 32 bits: the product does not leave 64.
  std::uint64_t needed = row.least + std::min<std::uint64_t>(each, UINT32_MAX / 2) * count;
  if (tag.sig == kChromaticAdaptation) needed = kMatrixEnd;
  if (!CheckLength(tag, needed, row.clause, row.exact)) return;
  CheckValues(tag);
  switch (tag.type) {
    case icSignature("mft1"):
    case icSignature("mft2"): CheckLut(tag); break;
    case icSignature("mAB "):
    case icSignature("mBA "): CheckProcessing(tag); break;
    case icSigTextType: CheckTextEnd(tag, tag.end(), row.clause); break;
    case icSignature("desc"): CheckDescription(tag); break;
    case icSignature("mluc"): CheckTranslations(tag); break;
    case icSignature("para"): CheckParametric(tag); break;
    case icSignature("bfd "): CheckBlocks(tag, 2, 2, row.clause); break;
    case icSignature("crdi"): CheckBlocks(tag, 5, 1, row.clause); break;
    default: break;
  }
}

void Examination::CheckValues(const Entry& tag) {
  for (const Choice& row : kChoices) {
    if (row.type != tag.type) continue;
    const std::uint32_t value = Long(tag.offset + std::uint64_t{row.at});
    if (value <= row.most) continue;
    Find(Warning, "tag.value", row.clause,
         std::string("its ") + row.name + " is " + to_string(value), tag.sig);
  }
}

// A text whose last character, its zero, is the byte before `end`.
void Examination::CheckTextEnd(const Entry& tag, std::uint64_t end, const char* clause) {
  const std::uint64_t start = tag.offset + std::uint64_t{tag.type == icSigTextType ? 8u : 12u};
  if (end > start && Byte(end - 1) == 0) return;
  Find(Warning, "tag.unterminated", clause, "its text does not end with a zero", tag.sig);
}

// An ASCII text with its length; code, length and characters of a Unicode text; code, length and
// 67 bytes of a Macintosh text.
void Examination::CheckDescription(const Entry& tag) {
  constexpr const char* kClause = "6.5.17";
  constexpr std::uint32_t kScriptField = 67;
  const std::uint64_t ascii = tag.offset + 12 + std::uint64_t{Long(tag.offset + 8ull)};
  CheckTextEnd(tag, ascii, kClause);
  const std::uint64_t unicode = ascii + 8 + 2 * std::uint64_t{Long(ascii + 4)};
  if (unicode + 3 + kScriptField > tag.end()) {
    Find(Warning, "tag.description-cut", kClause,
         "its Unicode and Macintosh texts are not wholly in it", tag.sig);
  } else if (Byte(unicode + 2) > kScriptField) {
    Find(Warning, "tag.value", kClause,
         "its Macintosh text has " + to_string(Byte(unicode + 2)) + " characters, and room for 67",
         tag.sig);
  }
}

void Examination::CheckParametric(const Entry& tag) {
  constexpr std::uint32_t kParameters[] = {1, 3, 4, 5, 7};
  const std::uint32_t function = Short(tag.offset + 8ull);
  if (function >= std::size(kParameters)) {
    Find(Warning, "tag.value", "", "its function is " + to_string(function), tag.sig);
    return;
  }
  CheckLength(tag, 12 + 4 * kParameters[function], "", true);
}

// Texts in several languages, each with its length and its place in the tag.
void Examination::CheckTranslations(const Entry& tag) {
  const std::uint32_t count = std::min(Long(tag.offset + 8ull), kMostItems);
  if (Long(tag.offset + 12ull) != 12) {
    Find(Warning, "tag.value", "",
         "its records have " + to_string(Long(tag.offset + 12ull)) + " bytes instead of 12",
         tag.sig);
    return;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t record = tag.offset + 16 + 12 * std::uint64_t{i};
    const std::uint64_t end = std::uint64_t{Long(record + 4)} + Long(record + 8);
    if (!CheckLength(tag, end, "", false)) return;
  }
}

// Blocks behind one another, each with the number of its items in front.
void Examination::CheckBlocks(const Entry& tag, int blocks, std::uint32_t unit,
                              const char* clause) {
  std::uint64_t end = 8;
  for (int i = 0; i < blocks; ++i) {
    end += 4 + (end + 4 <= tag.size ? unit * std::uint64_t{Long(tag.offset + end)} : 0);
    if (!CheckLength(tag, end, clause, false)) return;
  }
}

// Where the curves, the matrix and the table of such a tag of version 4 begin.
void Examination::CheckProcessing(const Entry& tag) {
  for (std::uint64_t at = 12; at < 32; at += 4) {
    if (!CheckLength(tag, Long(tag.offset + at), "", false)) return;
  }
}

}  // namespace vkcl
