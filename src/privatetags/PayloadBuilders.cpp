// From records to payload bytes. All integers and doubles little-endian, no alignment padding.
//
//   data lists      0 five int32 counters   20 presence word, 0 or 1   24 the values, doubles
//   QX50 split      0 version  4 size  8 count  12 eight zero bytes  20 the records
//   QX66 dither     0 type     4 size  8 eight zero bytes            16 the table
//   QX68 spot       0 version  4 size  8 count  12 name, not terminated; then count doubles
//   QX69 links      0 version  4 size  8 count  12 name length  16 name, not terminated;
//                   then count int32 link lengths; then the links
//   QX71 sidecar    0 version 1  4 file name, 128 bytes  132 the file
//   QX64, QX74      one int32
//   QX75            text with its terminator
//   QX51, QX52, QX53, QX67, QX70, QX76   the record itself
//   QX58            the file
//
// A size that a record states is the payload's length: from its head, where it has one, up to the
// record's own bytes. Otherwise the record is refused.
#include <cstring>

#include "platform/plinth/WholeFile.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "privatetags/InkLimitRecords.h"
#include "privatetags/ParameterRecords.h"
#include "privatetags/PayloadCursor.h"
#include "privatetags/ProfileDataList.h"
#include "privatetags/VKPrivateTag.h"
#include "platform/Guarded.h"
#include "split/SplitParam.h"

using vkcl::PayloadWriter;

namespace {

constexpr std::int32_t kSplitHead = 20;
constexpr std::int32_t kDitherHead = 16;
constexpr std::int32_t kSpotHead = 12;

constexpr VKPrivateTagSignature kDataLists[] = {QX54, QX56, QX55, QX57, QX60, QX59, QX72, QX73};

bool IsDataList(VKPrivateTagSignature signature) {
  return std::find(std::begin(kDataLists), std::end(kDataLists), signature) != std::end(kDataLists);
}

bool InRange(std::int64_t stated, std::int64_t least, std::int64_t most) {
  return stated >= least && stated <= most;
}

// Hands a finished block to the tag.
int Fill(VKPrivateTag& tag, VKPrivateTagSignature signature, PayloadWriter& payload) {
  if (!payload) return 0;
  tag.size = static_cast<std::uint32_t>(payload.size());
  tag.data = payload.release();
  tag.signature = signature;
  return 1;
}

int FillFrom(VKPrivateTag& tag, VKPrivateTagSignature signature, const void* bytes,
             std::size_t size) {
  PayloadWriter payload(size);
  if (payload) payload.Put(bytes, size);
  return Fill(tag, signature, payload);
}

// The first `record.size` bytes of a record that is its own image.
template <class Record>
int FillFromSizedRecord(VKPrivateTag& tag, VKPrivateTagSignature signature, const Record& record) {
  if (!InRange(record.size, 0, sizeof record)) return 0;
  return FillFrom(tag, signature, &record, static_cast<std::size_t>(record.size));
}

int FillFromFile(VKPrivateTag& tag, VKPrivateTagSignature signature, vkcl::FileContent& file) {
  if (!file.bytes) return 0;
  tag.data = file.bytes.release();
  tag.size = static_cast<std::uint32_t>(file.size);
  tag.signature = signature;
  return 1;
}

// Adds to the record's size. False when the field cannot hold it.
bool Grow(VKSpotLinDLParam& links, std::int64_t length) {
  if (length > std::int64_t{INT32_MAX} - links.size) return false;
  links.size += static_cast<std::int32_t>(length);
  return true;
}

// Asks each link for its length, and stores it and the payload's in the record: after a link that
// is refused, those of the links before it.
bool MeasureLinks(VKSpotLinDLParam& links) {
  links.size = 0;
  if (!Grow(links, std::int64_t{links.nameLength} + 4 * std::int64_t{links.count} + 16))
    return false;
  for (std::int32_t i = 0; i < links.count; ++i) {
    unsigned int length = 0;
    if (CLSaveLink8ToMemory(links.links[i], nullptr, 0, &length) != 0) return false;
    if (!Grow(links, length)) return false;
    links.linkSizes[i] = static_cast<std::int32_t>(length);
  }
  return true;
}

bool IsWhole(const VKSpotLinDLParam& links) {
  const bool namePresent = links.nameLength == 0 || links.name != nullptr;
  const bool linksPresent =
      links.count == 0 || (links.links != nullptr && links.linkSizes != nullptr);
  return links.count >= 0 && links.nameLength >= 0 && namePresent && linksPresent;
}

bool SaveLinks(const VKSpotLinDLParam& links, PayloadWriter& payload) {
  for (std::int32_t i = 0; i < links.count; ++i) {
    const auto length = static_cast<unsigned int>(links.linkSizes[i]);
    if (length == 0) continue;  // an empty link; nothing is left to ask for
    char* place = payload.Room(length);
    if (place == nullptr || CLSaveLink8ToMemory(links.links[i], place, length, nullptr) != 0) {
      return false;
    }
  }
  return true;
}

}  // namespace

int VKPrivateTag::InitFromProfileDataList(const ProfileDataList& list,
                                          VKPrivateTagSignature which) {
  if (!IsDataList(which)) return 0;
  const bool hasValues = list.DataList != nullptr;
  // A negative counter makes the size negative; two of them would hide behind their product.
  if (hasValues && (list.NumOfSamples < 0 || list.NumOfColors < 0)) return 0;
  const std::int64_t values = hasValues ? std::int64_t{list.NumOfSamples} * list.NumOfColors : 0;
  constexpr std::int64_t kMostValues = (INT32_MAX - 24) / 8;
  if (values > kMostValues) return 0;
  const auto valueBytes = static_cast<std::size_t>(values) * sizeof(double);
  PayloadWriter payload(24 + valueBytes);
  if (payload) {
    const std::int32_t counters[] = {static_cast<std::int32_t>(list.DataFormat), list.NumOfSamples,
                                     list.ColorMode, list.NumOfColors, list.Measured};
    payload.Put(counters, sizeof counters).Put(values > 0 ? 1 : 0).Put(list.DataList, valueBytes);
  }
  return Fill(*this, which, payload);
}

int VKPrivateTag::InitFromSplitParam(const SplitParam& split) {
  if (split.splits == nullptr || split.count < 1) return 0;
  const std::size_t recordSize = SplitParam::RecordSize(split.version);
  const std::int64_t held =
      kSplitHead + std::int64_t{split.count} * static_cast<std::int64_t>(recordSize);
  if (recordSize == 0 || !InRange(split.size, kSplitHead, held)) return 0;
  PayloadWriter payload(static_cast<std::size_t>(split.size));
  if (payload) {
    payload.Put(split.version).Put(split.size).Put(split.count).Skip(8);
    payload.Put(split.splits, static_cast<std::size_t>(split.size - kSplitHead));
  }
  return Fill(*this, QX50, payload);
}

int VKPrivateTag::InitFromDitherParam(const VKDitherParam& dither) {
  if (dither.table == nullptr) return 0;
  if (!InRange(dither.size, kDitherHead, kDitherHead + std::int64_t{sizeof *dither.table})) {
    return 0;
  }
  PayloadWriter payload(static_cast<std::size_t>(dither.size));
  if (payload) {
    payload.Put(dither.type).Put(dither.size).Skip(8);
    payload.Put(dither.table, static_cast<std::size_t>(dither.size - kDitherHead));
  }
  return Fill(*this, QX66, payload);
}

int VKPrivateTag::InitCMStoDither(const int& flag) {
  const std::int32_t stored = flag;
  return FillFrom(*this, QX64, &stored, sizeof stored);
}

int VKPrivateTag::InitVKChromaAdjust(const AString& text) {
  return FillFrom(*this, QX75, text.c_str(), text.length() + 1);
}

int VKPrivateTag::InitWizardTag(int flag) {
  const std::int32_t stored = flag;
  return FillFrom(*this, QX74, &stored, sizeof stored);
}

int VKPrivateTag::InitFromVKCompatibilityParam(const VKCompatibilityParam& param) {
  return FillFrom(*this, QX67, &param, sizeof param);
}

int VKPrivateTag::InitFromVKColorParam(const VKColorParam& param) {
  return FillFromSizedRecord(*this, QX53, param);
}

int VKPrivateTag::InitFromTRCFile(const AFilePath& path) {
  return vkcl::Guarded([&] {
    vkcl::FileContent file = vkcl::ReadWholeFile(path);
    return FillFromFile(*this, QX58, file);
  });
}

int VKPrivateTag::InitFromVKMultiInklimit(const VKMultiInklimit& limits) {
  return FillFromSizedRecord(*this, QX52, limits);
}

int VKPrivateTag::InitFromVKSingleInkLimitWithLinRef(const VKSingleInkLimitWithLinRef& limits) {
  return FillFrom(*this, QX51, &limits, sizeof limits);
}

int VKPrivateTag::InitFromVKSpotSIL(const VKSpotSingleInkLimit& limits) {
  if (limits.count < 0 || (limits.count > 0 && limits.limits == nullptr)) return 0;
  const std::size_t nameLength = limits.name != nullptr ? std::strlen(limits.name) : 0;
  const std::size_t valueBytes = static_cast<std::size_t>(limits.count) * sizeof(double);
  const auto held = static_cast<std::int64_t>(kSpotHead + nameLength + valueBytes);
  if (!InRange(limits.size, kSpotHead, held)) return 0;
  PayloadWriter payload(static_cast<std::size_t>(limits.size));
  if (payload) {
    payload.Put(limits.version).Put(limits.size).Put(limits.count);
    payload.Put(limits.name, nameLength).Put(limits.limits, valueBytes);
  }
  return Fill(*this, QX68, payload);
}

int VKPrivateTag::InitFromVKSpotLinDL(VKSpotLinDLParam& links) {
  if (!IsWhole(links)) return 0;
  if (!MeasureLinks(links)) return 0;
  PayloadWriter payload(static_cast<std::size_t>(links.size));
  if (!payload) return 0;
  payload.Put(links.version).Put(links.size).Put(links.count).Put(links.nameLength);
  payload.Put(links.name, static_cast<std::size_t>(links.nameLength));
  payload.Put(links.linkSizes, static_cast<std::size_t>(links.count) * sizeof(std::int32_t));
  if (!SaveLinks(links, payload)) {
    data = payload.release();  // stays with the tag until it dies; the tag must not be written
    return 0;
  }
  return Fill(*this, QX69, payload);
}

int VKPrivateTag::InitFromVKLinExtraDataParam(const VKLinExtraDataParam& param) {
  return FillFrom(*this, QX70, &param, sizeof param);
}

int VKPrivateTag::InitFromVSDProfile(const AFilePath& path) {
  return vkcl::Guarded([&] {
    vkcl::FileContent file = vkcl::ReadWholeFile(path, sizeof(VKVSDProfileParam),
                                                 UINT32_MAX - sizeof(VKVSDProfileParam));
    if (!file.bytes) return 0;
    VKVSDProfileParam head;
    const AString name = path.getFileName();
    std::memcpy(head.fileName, name.c_str(), std::min(name.length(), sizeof head.fileName));
    std::memcpy(file.bytes.get(), &head, sizeof head);
    return FillFromFile(*this, QX71, file);
  });
}

int VKPrivateTag::InitFromVKProfileExtraParam(const VKProfileExtraParam& param) {
  return FillFrom(*this, QX76, &param, sizeof param);
}
