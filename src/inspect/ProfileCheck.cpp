#include "inspect/ProfileCheck.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <map>
#include <span>
#include <string_view>

#include "platform/Bytes.h"
#include "platform/Guarded.h"
#include "platform/plinth/WholeFile.h"
#include "privatetags/VKPrivateTag.h"
#include "profile/TableLayout.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

constexpr std::size_t kHeaderSize = 128;
constexpr std::uint32_t kVersion4 = 4;

std::string SignatureText(std::uint32_t signature) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto c = static_cast<unsigned char>(signature >> shift);
    text += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
  }
  return text;
}

std::string Hex(std::uint32_t value) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "0x";
  for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[value >> shift & 15];
  return text;
}

std::string Number(std::uint64_t value) { return std::to_string(value); }

struct Entry {
  std::uint32_t sig;
  std::uint32_t offset;
  std::uint32_t size;

  std::uint64_t end() const { return std::uint64_t{offset} + size; }
};

// The file under examination, and what has been found in it.
class Examination {
 public:
  explicit Examination(std::span<const char> bytes) : bytes_(bytes) {}

  std::vector<Finding> Run();

 private:
  void Find(Severity severity, const char* rule, const char* clause, std::string text,
            std::uint32_t tag = 0) {
    findings_.push_back(
        {severity, rule, clause, tag != 0 ? SignatureText(tag) : std::string(), std::move(text)});
  }

  std::uint32_t At(std::size_t offset) const { return LoadBig32(bytes_.data() + offset); }
  std::uint32_t Short(std::size_t offset) const { return LoadBig16(bytes_.data() + offset); }
  bool Holds(const Entry& tag) const { return tag.end() <= bytes_.size(); }
  std::uint32_t TypeOf(const Entry& tag) const { return At(tag.offset); }
  bool IsVersion4() const { return At(8) >> 24 >= kVersion4; }
  const Entry* FindTag(std::uint32_t sig) const;

  bool CheckStart();
  void CheckSize();
  void CheckSignatures();
  void CheckDate();
  void CheckRest();
  bool ReadTable();
  void CheckTable();
  void CheckEntry(const Entry& tag);
  void CheckPlaces();
  void CheckNeighbours(const Entry& first, const Entry& second);
  void CheckPadding(std::uint64_t from, std::uint64_t to);
  void CheckEnd(std::uint64_t end);
  void CheckRequired();
  void CheckTypes();
  void CheckPrivate();

  std::span<const char> bytes_;
  std::vector<Entry> table_;
  bool allPlaced_ = false;  // every tag lies in the file, behind the table
  std::vector<Finding> findings_;
};

using enum Severity;

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

bool IsPrivateTag(std::uint32_t sig) { return sig >> 16 == 0x5158; }

const Entry* Examination::FindTag(std::uint32_t sig) const {
  const auto found =
      std::find_if(table_.begin(), table_.end(), [&](const Entry& tag) { return tag.sig == sig; });
  return found != table_.end() ? &*found : nullptr;
}

// What nobody can go on without.
bool Examination::CheckStart() {
  if (bytes_.size() < kHeaderSize) {
    Find(Error, "file.short", "6.1",
         "the file is " + Number(bytes_.size()) + " bytes long, and a header takes 128");
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
         "the header tells a size of " + Number(size) + " bytes, and the file has " +
             Number(bytes_.size()));
  } else if (size < bytes_.size()) {
    Find(Warning, "header.size-short", "6.1.1",
         "the header tells a size of " + Number(size) + " bytes; " + Number(bytes_.size() - size) +
             " more follow");
  }
  if (size % 4 != 0) {
    Find(Note, "header.size-odd", "6.1.1",
         "the size in the header, " + Number(size) + ", is no multiple of 4");
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
         std::string("the ") + kParts[i].name + " of the date is " + Number(value));
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
    Find(Warning, "header.intent", "6.1.11", "the rendering intent is " + Number(At(64)));
  }
  constexpr std::int64_t kD50[] = {0xF6D6, 0x10000, 0xD32D};
  for (std::size_t i = 0; i < 3; ++i) {
    const auto part = static_cast<std::int32_t>(At(68 + 4 * i));
    if (std::abs(part - kD50[i]) <= 3) continue;
    Find(Warning, "header.illuminant", "6.1.12",
         "the illuminant is not D50: " + Hex(At(68)) + " " + Hex(At(72)) + " " + Hex(At(76)));
    break;
  }
  const std::size_t reserved = IsVersion4() ? 100 : 84;  // version 4 has an ID of 16 bytes there
  const bool clean = std::all_of(bytes_.begin() + static_cast<std::ptrdiff_t>(reserved),
                                 bytes_.begin() + kHeaderSize, [](char c) { return c == 0; });
  if (!clean) Find(Note, "header.reserved", "6.1", "reserved bytes of the header are not zero");
}

bool Examination::ReadTable() {
  const std::uint32_t count = At(kHeaderSize);
  if (TableEnd(count) > bytes_.size()) {
    Find(Error, "table.count", "6.2.1",
         "the table of " + Number(count) + " tags does not fit the file");
    return false;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t at = kTableStart + kTableEntry * std::size_t{i};
    table_.push_back({At(at), At(at + 4), At(at + 8)});
  }
  if (count == 0) Find(Warning, "table.empty", "6.2.1", "there are no tags");
  return true;
}

void Examination::CheckEntry(const Entry& tag) {
  const std::string place = "offset " + Number(tag.offset) + ", " + Number(tag.size) + " bytes";
  if (!Holds(tag)) {
    Find(Error, "table.beyond-end", "6.2.2", "it reaches beyond the end of the file: " + place,
         tag.sig);
    return;
  }
  if (tag.offset < TableEnd(table_.size())) {
    Find(Error, "table.in-head", "6.2.2", "it lies within the header or the table: " + place,
         tag.sig);
  }
  if (tag.offset % 4 != 0) {
    Find(Warning, "table.unaligned", "6.2.2", "it does not begin on a multiple of 4: " + place,
         tag.sig);
  }
  if (tag.size < 8) {
    Find(Warning, "tag.no-type", "6.5", "it is too short to have a type: " + place, tag.sig);
  } else if (At(tag.offset + 4) != 0) {
    Find(Note, "tag.reserved", "6.5", "the reserved bytes behind its type are not zero", tag.sig);
  }
}

void Examination::CheckTable() {
  std::map<std::uint32_t, int> seen;
  for (const Entry& tag : table_) {
    if (++seen[tag.sig] == 2) {
      Find(Error, "table.duplicate", "6.2", "its signature stands more than once in the table",
           tag.sig);
    }
    CheckEntry(tag);
  }
}

void Examination::CheckPadding(std::uint64_t from, std::uint64_t to) {
  const auto* first = bytes_.data() + from;
  const auto* last = bytes_.data() + to;
  if (std::any_of(first, last, [](char c) { return c != 0; })) {
    Find(Note, "layout.padding", "6.2.2", "padding bytes at " + Number(from) + " are not zero");
  }
}

// Two tags of which the second does not begin before the first.
void Examination::CheckNeighbours(const Entry& first, const Entry& second) {
  if (first.offset == second.offset && first.size == second.size) {
    Find(Note, "layout.shared", "6.2", "it shares its data with '" + SignatureText(first.sig) + "'",
         second.sig);
  } else if (second.offset < first.end()) {
    Find(Warning, "layout.overlap", "6.2.2",
         "its data overlap those of '" + SignatureText(first.sig) + "'", second.sig);
  } else if (second.offset > PadTo4(first.end())) {
    if (!allPlaced_) return;  // a tag that lies elsewhere is told of already
    Find(Note, "layout.gap", "6.2.2",
         Number(second.offset - first.end()) + " bytes before it belong to no tag", second.sig);
  } else {
    CheckPadding(first.end(), second.offset);
  }
}

void Examination::CheckEnd(std::uint64_t end) {
  if (!allPlaced_) return;
  const std::uint64_t size = std::min<std::uint64_t>(At(0), bytes_.size());
  if (end > size) return;
  if (PadTo4(end) > size) {
    Find(Note, "layout.unpadded-end", "6.2.2", "the last tag is not filled up to a multiple of 4");
  } else if (PadTo4(end) < size) {
    Find(Note, "layout.gap", "6.2.2", Number(size - end) + " bytes at the end belong to no tag");
  } else {
    CheckPadding(end, size);
  }
}

// How the tags that are in the file lie in it.
void Examination::CheckPlaces() {
  std::vector<Entry> placed;
  std::copy_if(table_.begin(), table_.end(), std::back_inserter(placed), [&](const Entry& tag) {
    return Holds(tag) && tag.offset >= TableEnd(table_.size());
  });
  const auto before = [](const Entry& a, const Entry& b) {
    return a.offset != b.offset ? a.offset < b.offset : a.size > b.size;
  };
  if (!std::is_sorted(placed.begin(), placed.end(),
                      [](const Entry& a, const Entry& b) { return a.offset < b.offset; })) {
    Find(Note, "layout.order", "", "the data do not lie in the order of the table");
  }
  std::stable_sort(placed.begin(), placed.end(), before);
  allPlaced_ = placed.size() == table_.size();
  if (placed.empty()) return;
  const std::uint64_t start = TableEnd(table_.size());
  if (allPlaced_ && placed.front().offset > PadTo4(start)) {
    Find(Note, "layout.gap", "6.2.2",
         Number(placed.front().offset - start) + " bytes before it belong to no tag",
         placed.front().sig);
  }
  Entry furthest = placed.front();
  for (std::size_t i = 1; i < placed.size(); ++i) {
    CheckNeighbours(furthest, placed[i]);
    if (placed[i].end() >= furthest.end()) furthest = placed[i];
  }
  CheckEnd(furthest.end());
}

// The tags that a class asks for; a row holds for a class, or a class and a colour space.
struct Required {
  std::uint32_t deviceClass;
  std::uint32_t colorSpace;  // 0 for any
  const char* clause;
  std::initializer_list<const char*> tags;
};
const Required kRequired[] = {
    {icSigInputClass, icSigGrayData, "6.3.1.1", {"kTRC"}},
    {icSigDisplayClass, icSigGrayData, "6.3.2.1", {"kTRC"}},
    {icSigOutputClass, icSigGrayData, "6.3.3.1", {"kTRC"}},
    {icSigLinkClass, 0, "6.3.4.1", {"A2B0", "pseq"}},
    {icSigColorSpaceClass, 0, "6.3.4.2", {"A2B0", "B2A0"}},
    {icSigAbstractClass, 0, "6.3.4.3", {"A2B0"}},
    {icSigNamedColorClass, 0, "6.3.4.4", {"ncl2"}},
};

std::uint32_t SignatureOf(const char* text) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(text[i]);
  return value;
}

void Examination::CheckRequired() {
  const auto require = [&](const char* tag, const char* clause) {
    if (FindTag(SignatureOf(tag)) != nullptr) return;
    Find(Warning, "tags.missing", clause, "it is missing, and the class asks for it",
         SignatureOf(tag));
  };
  for (const char* tag : {"desc", "cprt"}) require(tag, "6.3");
  if (At(12) != icSigLinkClass) require("wtpt", "6.3");
  for (const Required& row : kRequired) {
    if (row.deviceClass != At(12)) continue;
    if (row.colorSpace != 0 && row.colorSpace != At(16)) continue;
    for (const char* tag : row.tags) require(tag, row.clause);
  }
  const bool lut = At(12) == icSigOutputClass && At(16) != icSigGrayData;
  if (lut && FindTag(icSignature("rTRC")) == nullptr) {
    for (const char* tag : {"A2B0", "A2B1", "A2B2", "B2A0", "B2A1", "B2A2", "gamt"}) {
      require(tag, "6.3.3.3");
    }
  }
}

// The types that a tag may have.
struct Typed {
  std::initializer_list<const char*> tags;
  std::initializer_list<const char*> types;
  const char* clause;
};
const Typed kTyped[] = {
    {{"desc", "dmnd", "dmdd", "vued", "scrd"}, {"desc", "mluc"}, "6.4"},
    {{"cprt"}, {"text", "mluc"}, "6.4.13"},
    {{"targ"}, {"text"}, "6.4.10"},
    {{"wtpt", "bkpt", "lumi", "rXYZ", "gXYZ", "bXYZ"}, {"XYZ "}, "6.4"},
    {{"rTRC", "gTRC", "bTRC", "kTRC"}, {"curv", "para"}, "6.4"},
    {{"A2B0", "A2B1", "A2B2", "pre0", "pre1", "pre2"}, {"mft1", "mft2", "mAB "}, "6.4"},
    {{"B2A0", "B2A1", "B2A2", "gamt"}, {"mft1", "mft2", "mBA "}, "6.4"},
    {{"pseq"}, {"pseq"}, "6.4"},
    {{"ncl2"}, {"ncl2"}, "6.4"},
};

void Examination::CheckTypes() {
  for (const Entry& tag : table_) {
    if (!Holds(tag) || tag.size < 8) continue;
    for (const Typed& row : kTyped) {
      const auto is = [](std::uint32_t value) {
        return [=](const char* text) { return SignatureOf(text) == value; };
      };
      if (std::none_of(row.tags.begin(), row.tags.end(), is(tag.sig))) continue;
      // A2B tables of device links and abstract profiles run either way.
      if (std::any_of(row.types.begin(), row.types.end(), is(TypeOf(tag)))) continue;
      Find(Warning, "tag.type", row.clause,
           "its type is '" + SignatureText(TypeOf(tag)) + "', which it may not have", tag.sig);
    }
  }
}

// Private records of a fixed length, and the least that the others need.
struct PrivateLength {
  std::uint32_t sig;
  std::uint32_t least;
  bool exact;
};
constexpr PrivateLength kPrivateLengths[] = {
    {QX50, 20, false}, {QX51, 140, true}, {QX52, 300, false}, {QX53, 1068, true},
    {QX54, 24, false}, {QX55, 24, false}, {QX56, 24, false},  {QX57, 24, false},
    {QX59, 24, false}, {QX60, 24, false}, {QX66, 16, false},  {QX67, 64, true},
    {QX68, 12, false}, {QX69, 16, false}, {QX70, 572, true},  {QX71, 132, false},
    {QX72, 24, false}, {QX73, 24, false}, {QX76, 8, true},
};

void Examination::CheckPrivate() {
  for (const Entry& tag : table_) {
    if (!IsPrivateTag(tag.sig) || !Holds(tag)) continue;
    if (tag.size < kDataHead || TypeOf(tag) != icSigDataType) {
      Find(Warning, "private.type", "6.5.5", "a private tag is no 'data' tag", tag.sig);
      continue;
    }
    if (tag.sig > QX76) {
      Find(Note, "private.newer", "", "a newer system than this one wrote it", tag.sig);
    }
    const std::uint32_t payload = tag.size - kDataHead;
    for (const PrivateLength& row : kPrivateLengths) {
      const bool wrong = row.exact ? payload != row.least : payload < row.least;
      if (row.sig != tag.sig || !wrong) continue;
      Find(Warning, "private.length", "",
           "its payload has " + Number(payload) + " bytes, and " + (row.exact ? "" : "at least ") +
               Number(row.least) + " belong to it",
           tag.sig);
    }
  }
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

}  // namespace

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
