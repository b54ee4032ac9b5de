// Data lists and embedded files, and the two functions exported beside the handler.
#include <cstring>
#include <memory>
#include <new>

#include "handler/StoredList.h"
#include "handler/TagReading.h"
#include "handler/TargetParser.h"
#include "handler/VKCLProfileHandler.h"
#include "platform/Guarded.h"
#include "platform/Shortage.h"
#include "platform/plinth/TextEncoding.h"
#include "platform/profiler/TesselColorProfiler.h"

using vkcl::Guarded;
using vkcl::PayloadReader;
using vkcl::TagPayload;

namespace {

struct EmbeddedKind {
  VKCLProfileHandler::EnbedFileType type;
  VKPrivateTagSignature signature;
};
constexpr EmbeddedKind kEmbeddedKinds[] = {{VKCLProfileHandler::EnbedFileTRC, QX58},
                                           {VKCLProfileHandler::EnbedFile1, QX61},
                                           {VKCLProfileHandler::EnbedFile2, QX62},
                                           {VKCLProfileHandler::EnbedFile3, QX63},
                                           {VKCLProfileHandler::EnbedFile4, QX65}};

// False for a type that has no tag.
bool SignatureOf(VKCLProfileHandler::EnbedFileType type, VKPrivateTagSignature& signature) {
  for (const EmbeddedKind& kind : kEmbeddedKinds) {
    if (kind.type != type) continue;
    signature = kind.signature;
    return true;
  }
  return false;
}

// Whether the counters announce values of `size` bytes.
bool Announces(const ProfileDataList& list, bool present, std::size_t size) {
  if (list.NumOfSamples < 0 || list.NumOfColors < 0) return false;
  const std::uint64_t values = present ? static_cast<std::uint64_t>(list.NumOfSamples) *
                                             static_cast<std::uint64_t>(list.NumOfColors)
                                       : 0;
  return size % sizeof(double) == 0 && values == size / sizeof(double);
}

bool FillList(ProfileDataList& list, PayloadReader reader) {
  list.DataFormat = static_cast<std::uint32_t>(reader.Int32());
  list.NumOfSamples = reader.Int32();
  list.ColorMode = reader.Int32();
  list.NumOfColors = reader.Int32();
  list.Measured = reader.Int32();
  const bool present = reader.Int32() != 0;
  const std::size_t size = reader.left();
  if (!reader.good() || !Announces(list, present, size)) return false;
  if (size == 0) return true;
  list.DataList = vkcl::NotedIfNull(new (std::nothrow) double[size / sizeof(double)]);
  return list.DataList != nullptr && reader.Copy(list.DataList, size);
}

}  // namespace

int VKCLProfileHandler::WriteProfileDataList(const ProfileDataList& list,
                                             VKPrivateTagSignature signature) {
  VKPrivateTag tag;
  return tag.InitFromProfileDataList(list, signature) != 0 ? profile_.WriteVKPrivateTag(&tag) : 0;
}

int VKCLProfileHandler::ReadProfileDataList(ProfileDataList& list,
                                            VKPrivateTagSignature signature) const {
  return vkcl::ReadStoredList(profile_, signature, list);
}

int vkcl::ReadStoredList(const VKCLProfile& profile, VKPrivateTagSignature signature,
                         ProfileDataList& list) {
  return Guarded([&] {
    const TagPayload payload(profile, signature);
    constexpr std::size_t kHead = 24;
    if (!payload || payload.size() < kHead) return 0;
    list.Clear();
    if (FillList(list, payload.Reader())) return 1;
    list.Clear();
    return 0;
  });
}

int VKCLProfileHandler::WriteLinMeasurementData(const ProfileDataList& list) {
  return WriteProfileDataList(list, QX54);
}
int VKCLProfileHandler::WriteLinReferenceData(const ProfileDataList& list) {
  return WriteProfileDataList(list, QX55);
}
int VKCLProfileHandler::WriteGBMeasurementData(const ProfileDataList& list) {
  return WriteProfileDataList(list, QX56);
}
int VKCLProfileHandler::WriteGBReferenceData(const ProfileDataList& list) {
  return WriteProfileDataList(list, QX57);
}
int VKCLProfileHandler::WriteCharMeasurementData(const ProfileDataList& list) {
  return WriteProfileDataList(list, QX59);
}
int VKCLProfileHandler::WriteCharReferenceData(const ProfileDataList& list) {
  return WriteProfileDataList(list, QX60);
}
int VKCLProfileHandler::WriteVKLinRefData(const ProfileDataList& list) {
  return WriteProfileDataList(list, QX72);
}
int VKCLProfileHandler::WriteVKLinOutputData(const ProfileDataList& list) {
  return WriteProfileDataList(list, QX73);
}

int VKCLProfileHandler::GetVKLinRefData(ProfileDataList& list) const {
  return ReadProfileDataList(list, QX72);
}
int VKCLProfileHandler::GetVKLinOutputData(ProfileDataList& list) const {
  return ReadProfileDataList(list, QX73);
}

int VKCLProfileHandler::GetICCDataFormatFromStr(const AString& word, unsigned long& format) {
  const std::uint32_t found = vkcl::DataFormatOfWord(word.str());
  if (found != 0) format = found;
  return found != 0 ? 1 : 0;
}

int VKCLProfileHandler::WriteCLICCProfieRef(void* profileRef, EnbedFileType type) {
  VKPrivateTagSignature signature = QX58;
  if (!SignatureOf(type, signature)) return 0;
  return Guarded([&] {
    unsigned int size = 0;
    if (CLWriteProfileToMemory(profileRef, nullptr, 0, &size) != 0) return 0;
    const std::unique_ptr<char[]> bytes(new char[size]);
    if (CLWriteProfileToMemory(profileRef, bytes.get(), size, nullptr) != 0) return 0;
    return profile_.WriteVKPrivateTag(signature, bytes.get(), size);
  });
}

int VKCLProfileHandler::GetEnbededFile(const AFilePath& path, EnbedFileType type) const {
  if (path.isDirectory()) return 0;
  VKPrivateTagSignature signature = QX58;
  return SignatureOf(type, signature) ? GetEnbededFile(path, signature) : 0;
}

int VKCLProfileHandler::GetEnbededFile(const AFilePath& path,
                                       VKPrivateTagSignature signature) const {
  if (path.isDirectory()) return 0;
  return Guarded([&] {
    if (path.isSameFileOrThrow(profile_.filePath)) return 0;
    const TagPayload payload(profile_, signature);
    return payload ? vkcl::WriteNewFile(path, payload.bytes(), payload.size()) : 0;
  });
}

void* CopyCLLinkRef(void* link16Ref, unsigned int* size) {
  if (link16Ref == nullptr) return nullptr;
  return Guarded([&]() -> void* {
    unsigned int length = 0;
    if (CLSaveLink16ToMemory(link16Ref, nullptr, 0, &length) != 0) return nullptr;
    void* copy = CLNewCLLink16Ref();
    if (copy == nullptr) return nullptr;
    const std::unique_ptr<char[]> bytes(new (std::nothrow) char[length]);
    if (!bytes) {
      CLFreeCLLink16Ref(copy);
      return nullptr;
    }
    // A source that cannot be saved leaves the new link to itself, as it always has.
    if (CLSaveLink16ToMemory(link16Ref, bytes.get(), length, nullptr) != 0) return nullptr;
    const bool loaded = CLLoadLink16FromMemory(copy, bytes.get(), length) == 0;
    if (size != nullptr) *size = length;
    if (loaded) return copy;
    CLFreeCLLink16Ref(copy);
    return nullptr;
  });
}

AString VKCLMultiByteToUTF8(const AString& text) {
  return Guarded([&] { return AString(vkcl::HostTextToUtf8(text.str())); });
}
