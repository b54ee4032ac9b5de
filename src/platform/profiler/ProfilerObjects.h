// What the handles of the profiler's interface name, and the Little CMS objects behind them.
#pragma once

#include <lcms2.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/Guarded.h"
#include "platform/profiler/ContextMemory.h"

namespace vkcl::profiler {

inline constexpr int kDone = 0;
inline constexpr int kRefused = -1;

using Bytes = std::vector<std::uint8_t>;

// Every object begins with its kind, so that a handle of another kind is refused instead of being
// taken for what it is not.
enum class Kind : std::uint32_t {
  Profile = 0x50524F46,
  FileSpec = 0x46535043,
  Link8 = 0x4C4E4B38,
  Link16 = 0x4C4B3136,
  Profiler = 0x50524652,
};

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
  std::string path;  // in the host's encoding
};

template <Kind which>
struct Link : Object {
  static constexpr Kind kKind = which;
  Link() : Object(kKind) {}
  Bytes bytes;
};
using Link8 = Link<Kind::Link8>;
using Link16 = Link<Kind::Link16>;

/// Options by key, UTF-8. One is found without making a text of the key.
using Options = std::map<std::string, std::string, std::less<>>;

struct Profiler : Object {
  static constexpr Kind kKind = Kind::Profiler;
  Profiler() : Object(kKind) {}
  Options options;
};

template <class Type>
Type* As(void* handle) {
  auto* object = static_cast<Object*>(handle);
  return object != nullptr && object->kind == Type::kKind ? static_cast<Type*>(object) : nullptr;
}

template <class Type>
void* New() {
  return Guarded([]() -> void* { return static_cast<Object*>(new Type()); });
}

template <class Type>
void Free(void* handle) {
  delete As<Type>(handle);
}

// Little CMS objects that release themselves. Each operation has a context of its own, so that
// threads share nothing.
struct ContextDeleter {
  void operator()(cmsContext context) const { DeleteContext(context); }
};
using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, ContextDeleter>;

struct ProfileCloser {
  void operator()(cmsHPROFILE profile) const {
    if (!IsShort(cmsGetProfileContextID(profile))) cmsCloseProfile(profile);
  }
};
using OpenProfile = std::unique_ptr<std::remove_pointer_t<cmsHPROFILE>, ProfileCloser>;

struct TransformDeleter {
  void operator()(cmsHTRANSFORM transform) const {
    if (!IsShort(cmsGetTransformContextID(transform))) cmsDeleteTransform(transform);
  }
};
using Transform = std::unique_ptr<std::remove_pointer_t<cmsHTRANSFORM>, TransformDeleter>;

/// A context that reports errors to nobody; null when memory is short.
Context NewContext();
/// Null for bytes that are no ICC profile.
OpenProfile OpenBytes(const Context& context, const void* bytes, std::size_t size);
/// Empty when the profile cannot be serialised.
Bytes Serialised(const OpenProfile& profile);

/// Runs an operation of status results; a failed allocation is a refusal.
template <class Operation>
int Status(Operation&& operation) noexcept {
  struct Result {
    int status = kRefused;
  };
  return Guarded([&] { return Result{operation()}; }).status;
}

}  // namespace vkcl::profiler
