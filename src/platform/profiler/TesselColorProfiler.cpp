// The profiler's interface on Little CMS 2.
#include "platform/profiler/TesselColorProfiler.h"

#include <lcms2.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "platform/Guarded.h"
#include "platform/plinth/HostFiles.h"
#include "platform/plinth/WholeFile.h"

namespace {

constexpr int kDone = 0;
constexpr int kRefused = -1;

using Bytes = std::vector<std::uint8_t>;

// The kinds of object a handle may name. Every object begins with its kind, so that a handle of
// another kind is refused instead of being taken for what it is not.
enum class Kind : std::uint32_t { Profile = 0x50524F46, FileSpec = 0x46535043, Link8 = 0x4C4E4B38 };

struct Object {
  explicit Object(Kind which) : kind(which) {}
  Kind kind;
};

struct Profile : Object {
  static constexpr Kind kKind = Kind::Profile;
  Profile() : Object(kKind) {}
  Bytes bytes;
};

struct FileSpec : Object {
  static constexpr Kind kKind = Kind::FileSpec;
  FileSpec() : Object(kKind) {}
  std::string path;
};

struct Link8 : Object {
  static constexpr Kind kKind = Kind::Link8;
  Link8() : Object(kKind) {}
  Bytes bytes;
};

template <class Type>
Type* As(void* handle) {
  auto* object = static_cast<Object*>(handle);
  return object != nullptr && object->kind == Type::kKind ? static_cast<Type*>(object) : nullptr;
}

template <class Type>
void* New() {
  return static_cast<Object*>(new (std::nothrow) Type());
}

template <class Type>
void Free(void* handle) {
  delete As<Type>(handle);
}

// Little CMS objects that release themselves. Each operation has a context of its own, so that
// threads share nothing.
struct ContextDeleter {
  void operator()(cmsContext context) const { cmsDeleteContext(context); }
};
using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, ContextDeleter>;

struct ProfileCloser {
  void operator()(cmsHPROFILE profile) const { cmsCloseProfile(profile); }
};
using OpenProfile = std::unique_ptr<std::remove_pointer_t<cmsHPROFILE>, ProfileCloser>;

struct TransformDeleter {
  void operator()(cmsHTRANSFORM transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<std::remove_pointer_t<cmsHTRANSFORM>, TransformDeleter>;

void Silent(cmsContext /*context*/, cmsUInt32Number /*code*/, const char* /*text*/) {}

Context NewContext() {
  Context context(cmsCreateContext(nullptr, nullptr));
  if (context) cmsSetLogErrorHandlerTHR(context.get(), Silent);
  return context;
}

OpenProfile OpenBytes(const Context& context, const void* bytes, std::size_t size) {
  if (!context || size > UINT32_MAX) return nullptr;
  return OpenProfile(
      cmsOpenProfileFromMemTHR(context.get(), bytes, static_cast<cmsUInt32Number>(size)));
}

Bytes Serialised(const OpenProfile& profile) {
  cmsUInt32Number size = 0;
  if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) return {};
  Bytes bytes(size);
  if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) return {};
  return bytes;
}

Bytes BuildLinkBytes(const Profile& source, const Profile& destination, int intent) {
  const Context context = NewContext();
  const OpenProfile from = OpenBytes(context, source.bytes.data(), source.bytes.size());
  const OpenProfile to = OpenBytes(context, destination.bytes.data(), destination.bytes.size());
  if (!from || !to || intent < 0 || intent > 3) return {};
  constexpr cmsUInt32Number kBytesPerChannel = 1;
  const Transform transform(cmsCreateTransformTHR(
      context.get(), from.get(),
      cmsFormatterForColorspaceOfProfile(from.get(), kBytesPerChannel, FALSE), to.get(),
      cmsFormatterForColorspaceOfProfile(to.get(), kBytesPerChannel, FALSE),
      static_cast<cmsUInt32Number>(intent), cmsFLAGS_NOCACHE));
  if (!transform) return {};
  constexpr double kVersion = 2.1;  // the version of ICC.1 that this library's profiles have
  return Serialised(OpenProfile(cmsTransform2DeviceLink(
      transform.get(), kVersion, cmsFLAGS_8BITS_DEVICELINK | cmsFLAGS_KEEP_SEQUENCE)));
}

int LoadProfile(Profile& profile, const void* bytes, std::size_t size) {
  if (bytes == nullptr || !OpenBytes(NewContext(), bytes, size)) return kRefused;
  const auto* first = static_cast<const std::uint8_t*>(bytes);
  profile.bytes.assign(first, first + size);
  return kDone;
}

int LoadLink(Link8& link, const void* bytes, std::size_t size) {
  link.bytes.clear();
  if (size == 0) return kDone;
  if (bytes == nullptr) return kRefused;
  const Context context = NewContext();
  const OpenProfile profile = OpenBytes(context, bytes, size);
  if (!profile || cmsGetDeviceClass(profile.get()) != cmsSigLinkClass) return kRefused;
  const auto* first = static_cast<const std::uint8_t*>(bytes);
  link.bytes.assign(first, first + size);
  return kDone;
}

int Save(const Bytes& bytes, void* buffer, unsigned int size, unsigned int* sizeOut) {
  const bool query = buffer == nullptr && size == 0;
  if (sizeOut != nullptr) *sizeOut = static_cast<unsigned int>(bytes.size());
  if (query) return sizeOut != nullptr ? kDone : kRefused;
  if (buffer == nullptr || size < bytes.size()) return kRefused;
  if (!bytes.empty()) std::memcpy(buffer, bytes.data(), bytes.size());
  return kDone;
}

// Runs an operation of status results; a failed allocation is a refusal.
template <class Operation>
int Status(Operation&& operation) noexcept {
  struct Result {
    int status = kRefused;
  };
  return vkcl::Guarded([&] { return Result{operation()}; }).status;
}

}  // namespace

extern "C" {

void* CLNewCLProfileRef(void) { return New<Profile>(); }

int CLLoadProfileFromMemory(void* profile, const void* bytes, unsigned int size) {
  auto* object = As<Profile>(profile);
  if (object == nullptr) return kRefused;
  return Status([&] { return LoadProfile(*object, bytes, size); });
}

int CLLoadProfileFromFile(void* profile, void* fileSpec) {
  auto* object = As<Profile>(profile);
  const auto* spec = As<FileSpec>(fileSpec);
  if (object == nullptr || spec == nullptr) return kRefused;
  return Status([&] {
    const vkcl::FileContent file = vkcl::ReadWholeFile(vkcl::host::PathFromUtf8(spec->path));
    return LoadProfile(*object, file.bytes.get(), file.size);
  });
}

void CLFreeCLProfileRef(void* profile) { Free<Profile>(profile); }

void* CLNewFileSpecRef(void) { return New<FileSpec>(); }

int CLName2FileSpec(void* fileSpec, const char* utf8Path) {
  auto* object = As<FileSpec>(fileSpec);
  if (object == nullptr || utf8Path == nullptr) return kRefused;
  return Status([&] {
    object->path = utf8Path;
    return kDone;
  });
}

void CLFreeFileSpecRef(void* fileSpec) { Free<FileSpec>(fileSpec); }

void* CLNewCLLink8Ref(void) { return New<Link8>(); }

int CLBuildLink8(void* link, void* sourceProfile, void* destinationProfile, int renderingIntent) {
  auto* object = As<Link8>(link);
  const auto* source = As<Profile>(sourceProfile);
  const auto* destination = As<Profile>(destinationProfile);
  if (object == nullptr || source == nullptr || destination == nullptr) return kRefused;
  return Status([&] {
    Bytes bytes = BuildLinkBytes(*source, *destination, renderingIntent);
    if (bytes.empty()) return kRefused;
    object->bytes = std::move(bytes);
    return kDone;
  });
}

int CLLoadLink8FromMemory(void* link, const void* bytes, unsigned int size) {
  auto* object = As<Link8>(link);
  if (object == nullptr) return kRefused;
  return Status([&] { return LoadLink(*object, bytes, size); });
}

int CLSaveLink8ToMemory(void* link, void* buffer, unsigned int size, unsigned int* sizeOut) {
  const auto* object = As<Link8>(link);
  return object != nullptr ? Save(object->bytes, buffer, size, sizeOut) : kRefused;
}

void CLFreeCLLink8Ref(void* link) { Free<Link8>(link); }

}  // extern "C"
