// The profiler's profiles, file specifications and device links, on Little CMS 2.
#include "platform/profiler/TesselColorProfiler.h"

#include <cstring>

#include "platform/plinth/TextEncoding.h"
#include "platform/plinth/WholeFile.h"
#include "platform/profiler/ProfilerObjects.h"

namespace vkcl::profiler {
namespace {

void Silent(cmsContext /*context*/, cmsUInt32Number /*code*/, const char* /*text*/) {}

}  // namespace

Context NewContext() {
  Context context(CreateContext());
  if (context) cmsSetLogErrorHandlerTHR(context.get(), Silent);
  return context;
}

OpenProfile OpenBytes(const Context& context, const void* bytes, std::size_t size) {
  if (size > UINT32_MAX) return nullptr;
  return OpenProfile(Within(context.get(), [&] {
    return cmsOpenProfileFromMemTHR(context.get(), bytes, static_cast<cmsUInt32Number>(size));
  }));
}

Bytes Serialised(const OpenProfile& profile) {
  if (!profile) return {};
  const auto save = [&](void* to, cmsUInt32Number& size) {
    return Within(cmsGetProfileContextID(profile.get()),
                  [&] { return cmsSaveProfileToMem(profile.get(), to, &size); }) != FALSE;
  };
  cmsUInt32Number size = 0;
  if (!save(nullptr, size)) return {};
  Bytes bytes(size);
  return save(bytes.data(), size) ? bytes : Bytes();
}

namespace {

// Bytes of a channel in the formats that a link is built in, and how it is written.
template <class LinkType>
struct Depth;
template <>
struct Depth<Link8> {
  static constexpr cmsUInt32Number bytes = 1;
  static constexpr cmsUInt32Number flags = cmsFLAGS_8BITS_DEVICELINK;
};
template <>
struct Depth<Link16> {
  static constexpr cmsUInt32Number bytes = 2;
  static constexpr cmsUInt32Number flags = 0;
};

template <class LinkType>
Bytes BuildLinkBytes(const Profile& source, const Profile& destination, int intent) {
  const Context context = NewContext();
  const OpenProfile from = OpenBytes(context, source.bytes.data(), source.bytes.size());
  const OpenProfile to = OpenBytes(context, destination.bytes.data(), destination.bytes.size());
  if (!from || !to || intent < 0 || intent > 3) return {};
  using D = Depth<LinkType>;
  const Transform transform(Within(context.get(), [&] {
    return cmsCreateTransformTHR(
        context.get(), from.get(), cmsFormatterForColorspaceOfProfile(from.get(), D::bytes, FALSE),
        to.get(), cmsFormatterForColorspaceOfProfile(to.get(), D::bytes, FALSE),
        static_cast<cmsUInt32Number>(intent), cmsFLAGS_NOCACHE);
  }));
  if (!transform) return {};
  constexpr double kVersion = 2.1;  // the version of ICC.1 that this library's profiles have
  return Serialised(OpenProfile(Within(context.get(), [&] {
    return cmsTransform2DeviceLink(transform.get(), kVersion, D::flags | cmsFLAGS_KEEP_SEQUENCE);
  })));
}

template <class LinkType>
int BuildLink(void* link, void* sourceProfile, void* destinationProfile, int intent) {
  auto* object = As<LinkType>(link);
  const auto* source = As<Profile>(sourceProfile);
  const auto* destination = As<Profile>(destinationProfile);
  if (object == nullptr || source == nullptr || destination == nullptr) return kRefused;
  return Status([&] {
    Bytes bytes = BuildLinkBytes<LinkType>(*source, *destination, intent);
    if (bytes.empty()) return kRefused;
    object->bytes = std::move(bytes);
    return kDone;
  });
}

int LoadProfile(Profile& profile, const void* bytes, std::size_t size) {
  if (bytes == nullptr || !OpenBytes(NewContext(), bytes, size)) return kRefused;
  const auto* first = static_cast<const std::uint8_t*>(bytes);
  profile.bytes = Bytes(first, first + size);
  return kDone;
}

template <class LinkType>
int LoadLink(void* link, const void* bytes, unsigned int size) {
  auto* object = As<LinkType>(link);
  if (object == nullptr) return kRefused;
  return Status([&] {
    object->bytes.clear();
    if (size == 0) return kDone;
    if (bytes == nullptr) return kRefused;
    const Context context = NewContext();
    const OpenProfile profile = OpenBytes(context, bytes, size);
    if (!profile || cmsGetDeviceClass(profile.get()) != cmsSigLinkClass) return kRefused;
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    object->bytes.assign(first, first + size);
    return kDone;
  });
}

int Save(const Bytes& bytes, void* buffer, unsigned int size, unsigned int* sizeOut) {
  const bool query = buffer == nullptr && size == 0;
  if (sizeOut != nullptr) *sizeOut = static_cast<unsigned int>(bytes.size());
  if (query) return sizeOut != nullptr ? kDone : kRefused;
  if (buffer == nullptr || size < bytes.size()) return kRefused;
  if (!bytes.empty()) std::memcpy(buffer, bytes.data(), bytes.size());
  return kDone;
}

template <class LinkType>
int SaveLink(void* link, void* buffer, unsigned int size, unsigned int* sizeOut) {
  const auto* object = As<LinkType>(link);
  return object != nullptr ? Save(object->bytes, buffer, size, sizeOut) : kRefused;
}

// A path that has no form in the host's encoding is tried as it is.
std::string HostPath(const char* utf8Path) {
  std::string path = Utf8ToHostText(utf8Path);
  return path.empty() ? std::string(utf8Path) : path;
}

}  // namespace
}  // namespace vkcl::profiler

namespace p = vkcl::profiler;

extern "C" {

void* CLNewCLProfileRef(void) { return p::New<p::Profile>(); }

int CLLoadProfileFromMemory(void* profile, const void* bytes, unsigned int size) {
  auto* object = p::As<p::Profile>(profile);
  if (object == nullptr) return p::kRefused;
  return p::Status([&] { return p::LoadProfile(*object, bytes, size); });
}

int CLLoadProfileFromFile(void* profile, void* fileSpec) {
  auto* object = p::As<p::Profile>(profile);
  const auto* spec = p::As<p::FileSpec>(fileSpec);
  if (object == nullptr || spec == nullptr) return p::kRefused;
  return p::Status([&] {
    const vkcl::FileContent file = vkcl::ReadWholeFile(spec->path);
    return p::LoadProfile(*object, file.bytes.get(), file.size);
  });
}

int CLWriteProfileToMemory(void* profile, void* buffer, unsigned int size, unsigned int* sizeOut) {
  const auto* object = p::As<p::Profile>(profile);
  if (object == nullptr || object->bytes.empty()) return p::kRefused;
  return p::Save(object->bytes, buffer, size, sizeOut);
}

void CLFreeCLProfileRef(void* profile) { p::Free<p::Profile>(profile); }

void* CLNewFileSpecRef(void) { return p::New<p::FileSpec>(); }

int CLName2FileSpec(void* fileSpec, const char* utf8Path) {
  auto* object = p::As<p::FileSpec>(fileSpec);
  if (object == nullptr || utf8Path == nullptr) return p::kRefused;
  return p::Status([&] {
    object->path = p::HostPath(utf8Path);
    return p::kDone;
  });
}

void CLFreeFileSpecRef(void* fileSpec) { p::Free<p::FileSpec>(fileSpec); }

void* CLNewCLLink8Ref(void) { return p::New<p::Link8>(); }
void* CLNewCLLink16Ref(void) { return p::New<p::Link16>(); }

int CLBuildLink8(void* link, void* sourceProfile, void* destinationProfile, int renderingIntent) {
  return p::BuildLink<p::Link8>(link, sourceProfile, destinationProfile, renderingIntent);
}

int CLBuildLink16(void* link, void* sourceProfile, void* destinationProfile, int renderingIntent) {
  return p::BuildLink<p::Link16>(link, sourceProfile, destinationProfile, renderingIntent);
}

int CLLoadLink8FromMemory(void* link, const void* bytes, unsigned int size) {
  return p::LoadLink<p::Link8>(link, bytes, size);
}

int CLLoadLink16FromMemory(void* link, const void* bytes, unsigned int size) {
  return p::LoadLink<p::Link16>(link, bytes, size);
}

int CLSaveLink8ToMemory(void* link, void* buffer, unsigned int size, unsigned int* sizeOut) {
  return p::SaveLink<p::Link8>(link, buffer, size, sizeOut);
}

int CLSaveLink16ToMemory(void* link, void* buffer, unsigned int size, unsigned int* sizeOut) {
  return p::SaveLink<p::Link16>(link, buffer, size, sizeOut);
}

void CLFreeCLLink8Ref(void* link) { p::Free<p::Link8>(link); }
void CLFreeCLLink16Ref(void* link) { p::Free<p::Link16>(link); }

}  // extern "C"
