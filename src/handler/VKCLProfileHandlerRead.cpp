// Records out. The layouts of the payloads stand at the top of privatetags/PayloadBuilders.cpp;
// what is not their plain inverse is said at each operation.
#include <algorithm>
#include <memory>
#include <string_view>

#include "handler/TagReading.h"
#include "handler/VKCLProfileHandler.h"
#include "platform/Guarded.h"
#include "platform/OwnedText.h"
#include "platform/profiler/TesselColorProfiler.h"

using vkcl::FillRecord;
using vkcl::Guarded;
using vkcl::PayloadReader;
using vkcl::ReadRecord;
using vkcl::TagPayload;

namespace {

constexpr std::int32_t kTableType = 1;

// A make of exactly this text is stored by old hosts.
void ShortenMake(char (&make)[128]) {
  constexpr char kOldMake[] = "Hewlett-Packard";
  constexpr char kMake[] = "HP";
  if (std::memcmp(make, kOldMake, sizeof kOldMake) == 0) std::memcpy(make, kMake, sizeof kMake);
}

// Takes the blanks off both ends of a text field. The bytes behind the new terminator stay.
void TrimField(char (&field)[128]) {
  const std::size_t length =
      static_cast<std::size_t>(std::find(field, field + sizeof field, '\0') - field);
  const std::string_view text(field, length);
  const std::size_t first = std::min(text.find_first_not_of(' '), length);
  const std::size_t kept = first == length ? 0 : text.find_last_not_of(' ') + 1 - first;
  if (kept == length) return;
  std::memmove(field, field + first, kept);
  field[kept] = '\0';
}

int ReadNumber(const VKCLProfile& profile, VKPrivateTagSignature signature) {
  std::int32_t number = 0;
  ReadRecord(profile, signature, number, 0);
  return number;
}

bool LoadLink(void*& link, const char* bytes, std::int32_t size) {
  link = CLNewCLLink8Ref();
  return link != nullptr &&
         CLLoadLink8FromMemory(link, bytes, static_cast<unsigned int>(size)) == 0;
}

}  // namespace

// An empty payload is a record for some operations and a missing one for the others.

int VKCLProfileHandler::GetVKSingleInkLimitWithLinRef(VKSingleInkLimitWithLinRef& limits) const {
  if (ReadRecord(profile_, QX51, limits, 1) == 0) return 0;
  limits.size = sizeof limits;
  return 1;
}

int VKCLProfileHandler::GetVKMultiInklimit(VKMultiInklimit& limits, int minimumVersion) const {
  VKMultiInklimit stored;
  if (ReadRecord(profile_, QX52, stored, 0) == 0 || stored.version < minimumVersion) return 0;
  limits = stored;
  return 1;
}

int VKCLProfileHandler::GetVKColorParam(VKColorParam& param) const {
  if (ReadRecord(profile_, QX53, param, 0) == 0) return 0;
  ShortenMake(param.Make);
  TrimField(param.MediaName);
  return 1;
}

int VKCLProfileHandler::IsCMStoDither() const {
  return IsICCFile() != 0 ? ReadNumber(profile_, QX64) : 0;
}

int VKCLProfileHandler::IsWizardICC() const { return ReadNumber(profile_, QX74); }

int VKCLProfileHandler::GetVKCompatibilityParam(VKCompatibilityParam& param) const {
  return ReadRecord(profile_, QX67, param, 1);
}

int VKCLProfileHandler::GetVKProfileExtraParam(VKProfileExtraParam& param) const {
  return IsICCFile() != 0 ? ReadRecord(profile_, QX76, param, 1) : 0;
}

int VKCLProfileHandler::GetVKLinExtraData(VKLinExtraDataParam& param) const {
  return IsICCFile() != 0 ? ReadRecord(profile_, QX70, param, 1) : 0;
}

int VKCLProfileHandler::GetVSDProfileParam(VKVSDProfileParam& param) const {
  return ReadRecord(profile_, QX71, param, sizeof param);
}

int VKCLProfileHandler::GetVSDProfile(const AFilePath& destination) const {
  if (destination.isDirectory()) return 0;
  return Guarded([&] {
    if (destination.isSameFileOrThrow(profile_.filePath)) return 0;
    const TagPayload payload(profile_, QX71);
    constexpr std::size_t kHead = sizeof(VKVSDProfileParam);
    if (!payload || payload.size() < kHead) return 0;
    return vkcl::WriteNewFile(destination, payload.bytes() + kHead, payload.size() - kHead);
  });
}

int VKCLProfileHandler::GetVKChromaAdjust(AString& text) const {
  return Guarded([&] {
    const TagPayload payload(profile_, QX75);
    if (!payload) return 0;
    const char* end = std::find(payload.bytes(), payload.bytes() + payload.size(), '\0');
    text = AString(payload.bytes(), static_cast<std::size_t>(end - payload.bytes()));
    return 1;
  });
}

int VKCLProfileHandler::GetVKDitherParam(VKDitherParam& dither) const {
  return Guarded([&] {
    const TagPayload payload(profile_, QX66);
    if (!payload) return 0;
    PayloadReader reader = payload.Reader();
    const std::int32_t type = reader.Int32();
    const std::int32_t size = reader.Int32();
    reader.Take(8);  // a reference of the writer's memory, without meaning here
    if (!reader.good()) return 0;
    std::unique_ptr<DitherTypeV1> table;
    if (type == kTableType) {
      table = std::make_unique<DitherTypeV1>();
      FillRecord(*table, reader.Take(0), reader.left());
    }
    delete dither.table;
    dither.table = table.release();
    dither.type = type;
    dither.size = size;
    return dither.table != nullptr ? 1 : 0;
  });
}

int VKCLProfileHandler::GetVKSpotSIL(VKSpotSingleInkLimit& limits) const {
  return Guarded([&] {
    const TagPayload payload(profile_, QX68);
    if (!payload) return 0;
    PayloadReader reader = payload.Reader();
    const std::int32_t version = reader.Int32();
    const std::int32_t size = reader.Int32();
    const std::int32_t count = reader.Int32();
    const std::int64_t nameLength = std::int64_t{size} - 8 * std::int64_t{count} - 12;
    if (!reader.good() || count < 0 || nameLength < 0) return 0;
    const char* name = reader.Take(static_cast<std::size_t>(nameLength));
    const char* values = reader.Take(static_cast<std::size_t>(count) * sizeof(double));
    if (!reader.good()) return 0;

    std::unique_ptr<char[]> nameCopy =
        vkcl::OwnedText({name, static_cast<std::size_t>(nameLength)});
    std::unique_ptr<double[]> limitsCopy(new double[static_cast<std::size_t>(count)]);
    std::memcpy(limitsCopy.get(), values, static_cast<std::size_t>(count) * sizeof(double));
    delete[] limits.name;
    delete[] limits.limits;
    limits.version = version;
    limits.size = size;
    limits.count = count;
    limits.name = nameCopy.release();
    limits.limits = limitsCopy.release();
    return 1;
  });
}

int VKCLProfileHandler::GetVKSpotLinDL(VKSpotLinDLParam& links) const {
  return Guarded([&] {
    const TagPayload payload(profile_, QX69);
    if (!payload) return 0;
    PayloadReader reader = payload.Reader();
    const std::int32_t version = reader.Int32();
    const std::int32_t size = reader.Int32();
    const std::int32_t count = reader.Int32();
    const std::int32_t nameLength = reader.Int32();
    if (!reader.good() || count < 0 || nameLength < 0) return 0;
    const auto linkCount = static_cast<std::size_t>(count);
    const char* name = reader.Take(static_cast<std::size_t>(nameLength));
    const char* sizes = reader.Take(linkCount * sizeof(std::int32_t));
    if (!reader.good()) return 0;

    std::unique_ptr<char[]> nameCopy =
        vkcl::OwnedText({name, static_cast<std::size_t>(nameLength)});
    std::unique_ptr<std::int32_t[]> linkSizes(new std::int32_t[linkCount]);
    std::memcpy(linkSizes.get(), sizes, linkCount * sizeof(std::int32_t));
    std::unique_ptr<void*[]> handles(new void*[linkCount]());
    PayloadReader lengths = reader;  // every link lies within the payload, or nothing is changed
    for (std::size_t i = 0; i < linkCount; ++i) {
      if (linkSizes[i] < 0 || lengths.Take(static_cast<std::size_t>(linkSizes[i])) == nullptr) {
        return 0;
      }
    }

    links.Release();
    links.version = version;
    links.size = size;
    links.count = count;
    links.nameLength = nameLength;
    links.name = nameCopy.release();
    links.linkSizes = linkSizes.release();
    links.links = handles.release();
    for (std::size_t i = 0; i < linkCount; ++i) {
      const std::int32_t linkSize = links.linkSizes[i];
      const char* bytes = reader.Take(static_cast<std::size_t>(linkSize));
      if (!LoadLink(links.links[i], bytes, linkSize)) return 0;
    }
    return 1;
  });
}
