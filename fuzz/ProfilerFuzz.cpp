// Any bytes as a profile or link that the profiler's loaders are given.
#include <algorithm>
#include <climits>

#include "Fuzz.h"
#include "handler/VKCLProfileHandler.h"
#include "platform/profiler/TesselColorProfiler.h"

using vkcl::fuzz::Demand;

namespace {

void LoadProfile(const std::uint8_t* data, unsigned int size) {
  void* profile = CLNewCLProfileRef();
  if (CLLoadProfileFromMemory(profile, data, size) == 0) {
    unsigned int length = 0;
    Demand(CLWriteProfileToMemory(profile, nullptr, 0, &length) == 0 && length == size,
           "a loaded profile has its length");
    vkcl::fuzz::Bytes bytes(length);
    Demand(CLWriteProfileToMemory(profile, bytes.data(), length, &length) == 0 &&
               std::equal(bytes.begin(), bytes.end(), data),
           "a loaded profile is given back byte for byte");
  }
  CLFreeCLProfileRef(profile);
}

// Little CMS reads everything in a profile that a link is built of. That takes long, so one input
// in four has to do.
void BuildLink(const std::uint8_t* data, unsigned int size) {
  if (size == 0 || data[size - 1] % 4 != 0) return;
  void* profile = CLNewCLProfileRef();
  void* link = CLNewCLLink8Ref();
  if (CLLoadProfileFromMemory(profile, data, size) == 0) CLBuildLink8(link, profile, profile, 0);
  CLFreeCLLink8Ref(link);
  CLFreeCLProfileRef(profile);
}

void LoadLinks(const std::uint8_t* data, unsigned int size) {
  void* link8 = CLNewCLLink8Ref();
  if (CLLoadLink8FromMemory(link8, data, size) == 0) {
    unsigned int length = 0;
    Demand(CLSaveLink8ToMemory(link8, nullptr, 0, &length) == 0 && length == size,
           "a loaded link has its length");
    vkcl::fuzz::Bytes bytes(length);
    Demand(CLSaveLink8ToMemory(link8, bytes.data(), length, &length) == 0 && length == size &&
               std::equal(bytes.begin(), bytes.end(), data),
           "a loaded link is given back byte for byte");
  }
  CLFreeCLLink8Ref(link8);
  void* link16 = CLNewCLLink16Ref();
  if (CLLoadLink16FromMemory(link16, data, size) == 0) {
    unsigned int length = 0;
    void* copy = CopyCLLinkRef(link16, &length);
    Demand(copy != nullptr && length == size, "a loaded link can be copied");
    vkcl::fuzz::Bytes bytes(length);
    Demand(CLSaveLink16ToMemory(copy, bytes.data(), length, &length) == 0 && length == size &&
               std::equal(bytes.begin(), bytes.end(), data),
           "a copy of a link has its bytes");
    CLFreeCLLink16Ref(copy);
  }
  CLFreeCLLink16Ref(link16);
}

void Options(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("options.icc");
  vkcl::fuzz::WriteFile(path, data, size);
  void* file = CLNewFileSpecRef();
  CLName2FileSpec(file, path.c_str());
  void* profiler = CLNewCLProfilerRef();
  CLImportProfilerOptions(profiler, file);
  char value[256];
  CLGetProfilerOption(profiler, "InkTotal", value);
  CLSetProfilerOption(profiler, "InkTotal", "300");
  const bool exported = CLExportProfilerOptions(profiler, file) == 0;
  const vkcl::fuzz::Bytes after = vkcl::fuzz::ReadFile(path);
  if (!exported) {
    Demand(after == vkcl::fuzz::Bytes(data, data + size), "a refusal leaves the file as it was");
  } else {
    Demand(CLImportProfilerOptions(profiler, file) == 0, "exported options can be imported");
    Demand(CLGetProfilerOption(profiler, "InkTotal", value) == 0 && value[0] == '3',
           "an exported option is there");
  }
  CLFreeCLProfilerRef(profiler);
  CLFreeFileSpecRef(file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > INT_MAX) return 0;
  LoadProfile(data, static_cast<unsigned int>(size));
  LoadLinks(data, static_cast<unsigned int>(size));
  BuildLink(data, static_cast<unsigned int>(size));
  Options(data, size);
  return 0;
}
