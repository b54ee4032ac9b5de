// The tags that a class asks for, the types that tags may have (ICC.1:2001-04, 6.3 to 6.5), and the
// heads of the private tags.
#include <algorithm>
#include <initializer_list>
#include <iterator>

#include "inspect/Examination.h"
#include "privatetags/VKPrivateTag.h"
#include "profile/SignatureText.h"
#include "profile/TableLayout.h"
#include "profile/icc.h"

namespace vkcl {

using enum Severity;
using std::to_string;

namespace {

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

}  // namespace

const Entry* Examination::FindTag(std::uint32_t sig) const {
  const auto found =
      std::find_if(table_.begin(), table_.end(), [&](const Entry& tag) { return tag.sig == sig; });
  return found != table_.end() ? &*found : nullptr;
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

void Examination::CheckPrivate() {
  for (const Entry& tag : table_) {
    if (!IsPrivateSignature(tag.sig) || !Holds(tag)) continue;
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
           "its payload has " + to_string(payload) + " bytes, and " +
               (row.exact ? "" : "at least ") + to_string(row.least) + " belong to it",
           tag.sig);
    }
  }
}

}  // namespace vkcl
