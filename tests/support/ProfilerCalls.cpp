#include "support/ProfilerCalls.h"

#include <optional>

#include "platform/profiler/TesselColorProfiler.h"

namespace vkcl::testing {
namespace {

struct Refusal {
  ProfilerCall call;
  int left;
};
thread_local std::optional<Refusal> refusal;
thread_local std::string last_path;
thread_local int links16 = 0;
thread_local void* last_link16 = nullptr;

bool IsRefused(ProfilerCall call) {
  return refusal && refusal->call == call && refusal->left-- == 0;
}

}  // namespace

RefusedProfilerCall::RefusedProfilerCall(ProfilerCall call, int which) { refusal = {call, which}; }
RefusedProfilerCall::~RefusedProfilerCall() { refusal.reset(); }

const std::string& LastNamedPath() { return last_path; }
int HeldLinks16() { return links16; }
void* LastLink16() { return last_link16; }

}  // namespace vkcl::testing

namespace testing_ = vkcl::testing;
using testing_::ProfilerCall;

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's
extern "C" {

void* __real_CLNewCLLink8Ref(void);
int __real_CLSaveLink8ToMemory(void* link, void* buffer, unsigned int size, unsigned int* sizeOut);
void* __real_CLNewCLLink16Ref(void);
int __real_CLSaveLink16ToMemory(void* link, void* buffer, unsigned int size, unsigned int* sizeOut);
int __real_CLLoadLink16FromMemory(void* link, const void* bytes, unsigned int size);
void __real_CLFreeCLLink16Ref(void* link);
int __real_CLWriteProfileToMemory(void* profile, void* buffer, unsigned int size,
                                  unsigned int* sizeOut);
int __real_CLName2FileSpec(void* fileSpec, const char* utf8Path);

void* __wrap_CLNewCLLink8Ref(void) {
  return testing_::IsRefused(ProfilerCall::NewLink8) ? nullptr : __real_CLNewCLLink8Ref();
}

int __wrap_CLSaveLink8ToMemory(void* link, void* buffer, unsigned int size, unsigned int* sizeOut) {
  if (testing_::IsRefused(ProfilerCall::SaveLink8)) return -1;
  return __real_CLSaveLink8ToMemory(link, buffer, size, sizeOut);
}

void* __wrap_CLNewCLLink16Ref(void) {
  if (testing_::IsRefused(ProfilerCall::NewLink16)) return nullptr;
  void* const link = __real_CLNewCLLink16Ref();
  testing_::links16 += link != nullptr ? 1 : 0;
  testing_::last_link16 = link;
  return link;
}

int __wrap_CLSaveLink16ToMemory(void* link, void* buffer, unsigned int size,
                                unsigned int* sizeOut) {
  if (testing_::IsRefused(ProfilerCall::SaveLink16)) return -1;
  return __real_CLSaveLink16ToMemory(link, buffer, size, sizeOut);
}

int __wrap_CLLoadLink16FromMemory(void* link, const void* bytes, unsigned int size) {
  if (testing_::IsRefused(ProfilerCall::LoadLink16)) return -1;
  return __real_CLLoadLink16FromMemory(link, bytes, size);
}

void __wrap_CLFreeCLLink16Ref(void* link) {
  testing_::links16 -= link != nullptr ? 1 : 0;
  __real_CLFreeCLLink16Ref(link);
}

int __wrap_CLWriteProfileToMemory(void* profile, void* buffer, unsigned int size,
                                  unsigned int* sizeOut) {
  if (testing_::IsRefused(ProfilerCall::WriteProfile)) return -1;
  return __real_CLWriteProfileToMemory(profile, buffer, size, sizeOut);
}

int __wrap_CLName2FileSpec(void* fileSpec, const char* utf8Path) {
  testing_::last_path = utf8Path != nullptr ? utf8Path : "";
  return __real_CLName2FileSpec(fileSpec, utf8Path);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
