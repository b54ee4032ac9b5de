// The tags that a class asks for, the types that tags may have (ICC.1:2001-04, 6.3 and 6.4), and
// the private tags.
#include <algorithm>
#include <iterator>
#include <optional>

#include "inspect/Examination.h"
#include "inspect/SpaceChannels.h"
#include "inspect/TagSchema.h"
#include "profile/SignatureText.h"
#include "profile/icc.h"

namespace vkcl {

using enum Severity;
using std::to_string;

namespace {

// A signature that tables below write as text; 0 is none.
struct Code {
  std::uint32_t value = 0;

  constexpr Code() = default;
  constexpr Code(const char (&text)[5]) : value(icSignature(text)) {}
};

constexpr std::uint32_t kA2B0 = icSigAToB0Tag;
constexpr std::uint32_t kKTRC = icSignature("kTRC");
constexpr std::uint32_t kRXYZ = icSignature("rXYZ");

// How a profile converts: by one curve, by curves and a matrix, or by a table. For classes that
// have but one way it does not matter.
enum class Model { Any, Gray, Matrix, Table };

// The tags that a class asks for.
struct Required {
  icProfileClassSignature deviceClass = {};
  Model model = Model::Any;
  const char* clause = nullptr;
  Code tags[10];
};

constexpr Required kRequired[] = {
    {icSigInputClass, Model::Gray, "6.3.1.1", {"desc", "kTRC", "wtpt", "cprt"}},
    {icSigInputClass,
     Model::Matrix,
     "6.3.1.2",
     {"desc", "rXYZ", "gXYZ", "bXYZ", "rTRC", "gTRC", "bTRC", "wtpt", "cprt"}},
    {icSigInputClass, Model::Table, "6.3.1.3", {"desc", "A2B0", "wtpt", "cprt"}},
    {icSigDisplayClass, Model::Gray, "6.3.2.1", {"desc", "kTRC", "wtpt", "cprt"}},
    {icSigDisplayClass,
     Model::Matrix,
     "6.3.2.2",
     {"desc", "rXYZ", "gXYZ", "bXYZ", "rTRC", "gTRC", "bTRC", "wtpt", "cprt"}},
    {icSigDisplayClass, Model::Table, "6.3.2", {"desc", "A2B0", "B2A0", "wtpt", "cprt"}},
    {icSigOutputClass, Model::Gray, "6.3.3.1", {"desc", "kTRC", "wtpt", "cprt"}},
    {icSigOutputClass,
     Model::Table,
     "6.3.3.2",
     {"desc", "A2B0", "B2A0", "gamt", "A2B1", "B2A1", "A2B2", "B2A2", "wtpt", "cprt"}},
    {icSigLinkClass, Model::Any, "6.3.4.1", {"desc", "A2B0", "pseq", "cprt"}},
    {icSigColorSpaceClass, Model::Any, "6.3.4.2", {"desc", "B2A0", "A2B0", "wtpt", "cprt"}},
    {icSigAbstractClass, Model::Any, "6.3.4.3", {"desc", "A2B0", "wtpt", "cprt"}},
    {icSigNamedColorClass, Model::Any, "6.3.4.4", {"desc", "ncl2", "wtpt", "cprt"}},
};

// The types that a tag may have, in version 2 and besides in version 4.
struct Typed {
  Code tag;
  const char* clause = nullptr;
  Code types[2];
  Code version4[1] = {};
};

constexpr Typed kTyped[] = {
    {"A2B0", "6.4.1", {"mft1", "mft2"}, {"mAB "}},
    {"A2B1", "6.4.2", {"mft1", "mft2"}, {"mAB "}},
    {"A2B2", "6.4.3", {"mft1", "mft2"}, {"mAB "}},
    {"bXYZ", "6.4.4", {"XYZ "}},
    {"bTRC", "6.4.5", {"curv"}, {"para"}},
    {"B2A0", "6.4.6", {"mft1", "mft2"}, {"mBA "}},
    {"B2A1", "6.4.7", {"mft1", "mft2"}, {"mBA "}},
    {"B2A2", "6.4.8", {"mft1", "mft2"}, {"mBA "}},
    {"calt", "6.4.9", {"dtim"}},
    {"targ", "6.4.10", {"text"}},
    {"chad", "6.4.11", {"sf32"}},
    {"chrm", "6.4.12", {"chrm"}},
    {"cprt", "6.4.13", {"text"}, {"mluc"}},
    {"crdi", "6.4.14", {"crdi"}},
    {"dmnd", "6.4.15", {"desc"}, {"mluc"}},
    {"dmdd", "6.4.16", {"desc"}, {"mluc"}},
    {"devs", "6.4.17", {"devs"}},
    {"gamt", "6.4.18", {"mft1", "mft2"}, {"mBA "}},
    {"kTRC", "6.4.19", {"curv"}, {"para"}},
    {"gXYZ", "6.4.20", {"XYZ "}},
    {"gTRC", "6.4.21", {"curv"}, {"para"}},
    {"lumi", "6.4.22", {"XYZ "}},
    {"meas", "6.4.23", {"meas"}},
    {"bkpt", "6.4.24", {"XYZ "}},
    {"wtpt", "6.4.25", {"XYZ "}},
    {"ncol", "6.4.26", {"ncol"}},
    {"ncl2", "6.4.27", {"ncl2"}},
    {"resp", "6.4.28", {"rcs2"}},
    {"pre0", "6.4.29", {"mft1", "mft2"}, {"mBA "}},
    {"pre1", "6.4.30", {"mft1", "mft2"}, {"mBA "}},
    {"pre2", "6.4.31", {"mft1", "mft2"}, {"mBA "}},
    {"desc", "6.4.32", {"desc"}, {"mluc"}},
    {"pseq", "6.4.33", {"pseq"}},
    {"psd0", "6.4.34", {"data"}},
    {"psd1", "6.4.35", {"data"}},
    {"psd2", "6.4.36", {"data"}},
    {"psd3", "6.4.37", {"data"}},
    {"ps2s", "6.4.38", {"data"}},
    {"ps2i", "6.4.39", {"data"}},
    {"rXYZ", "6.4.40", {"XYZ "}},
    {"rTRC", "6.4.41", {"curv"}, {"para"}},
    {"scrd", "6.4.42", {"desc"}},
    {"scrn", "6.4.43", {"scrn"}},
    {"tech", "6.4.44", {"sig "}},
    {"bfd ", "6.4.45", {"bfd "}},
    {"vued", "6.4.46", {"desc"}, {"mluc"}},
    {"view", "6.4.47", {"view"}},
};

bool Has(const auto& codes, std::uint32_t value) {
  return value != 0 && std::any_of(std::begin(codes), std::end(codes),
                                   [=](const Code& code) { return code.value == value; });
}

}  // namespace

void Examination::CheckRequired() {
  const std::uint32_t deviceClass = At(12);
  const bool hasTable = FindTag(kA2B0) != nullptr;
  const auto model = [&] {
    if (At(16) == icSigGrayData && (FindTag(kKTRC) != nullptr || !hasTable)) return Model::Gray;
    if (deviceClass == icSigOutputClass || ChannelsOf(At(16)) != 3) return Model::Table;
    return FindTag(kRXYZ) != nullptr || !hasTable ? Model::Matrix : Model::Table;
  }();
  for (const Required& row : kRequired) {
    if (row.deviceClass != deviceClass) continue;
    if (row.model != Model::Any && row.model != model) continue;
    for (const Code& tag : row.tags) {
      if (tag.value == 0 || FindTag(tag.value) != nullptr) continue;
      Find(Warning, "tags.missing", row.clause, "it is missing, and the class asks for it",
           tag.value);
    }
    if (model == Model::Matrix && !hasTable && At(20) == icSigLabData &&
        row.model == Model::Matrix) {
      Find(Warning, "tags.matrix-space", row.clause,
           "a matrix leads to the connection space XYZ, and this profile's is Lab");
    }
  }
}

// Of tags with the same signature the first, which is the one that readers take: so the work does
// not grow with the table.
void Examination::CheckTypes() {
  for (const Typed& row : kTyped) {
    const Entry* tag = FindTag(row.tag.value);
    if (tag == nullptr || !tag->typed) continue;
    const bool newer = Has(row.version4, tag->type);
    if (Has(row.types, tag->type) || (newer && IsVersion4())) {
      CheckContent(*tag);
    } else {
      Find(Warning, "tag.type", row.clause,
           "its type is '" + SignatureText(tag->type) +
               (newer ? "', which version 2 does not have" : "', which it may not have"),
           tag->sig);
    }
  }
}

// The payload against its form.
void Examination::CheckPayload(const Entry& tag) {
  const TagSchema* schema = FindTagSchema(tag.sig);
  if (schema == nullptr) {
    Find(Note, "private.unknown", "", "this system does not know it", tag.sig);
    return;
  }
  ByteSource payload(file_, tag.offset + std::uint64_t{kDataHead}, tag.size - kDataHead);
  std::string why;
  const std::optional<RecordView> record = RecordView::Of(*schema, payload, why);
  const FieldView* size = record ? record->Find("size") : nullptr;
  const bool agrees =
      size == nullptr || size->Integer() == static_cast<std::int64_t>(payload.size());
  payloadsGood_ = payloadsGood_ && payload.good();
  if (!record) {
    Find(Warning, "private.form", "", "its payload does not have the form: " + why, tag.sig);
    return;
  }
  if (agrees) return;
  Find(Note, "private.size", "",
       "its record tells a size of " + size->NumberText() + " bytes, and it has " +
           to_string(payload.size()),
       tag.sig);
}

// The first of each signature, as above.
void Examination::CheckPrivate() {
  for (const Entry& tag : table_) {
    if (!IsPrivateSignature(tag.sig) || &tag != FindTag(tag.sig) || !tag.typed) continue;
    if (tag.type != icSigDataType || tag.size < kDataHead) {
      Find(Warning, "private.type", "", "a private tag is no 'data' tag", tag.sig);
    } else if (Long(tag.offset + std::uint64_t{8}) != 1) {
      Find(Warning, "private.flag", "", "its data are not said to be binary", tag.sig);
    } else {
      CheckPayload(tag);
    }
  }
}

}  // namespace vkcl
