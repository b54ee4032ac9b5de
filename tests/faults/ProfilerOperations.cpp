// The profiler library's interface: profiles, links, options.
#include "faults/Operations.h"
#include "faults/SampleFiles.h"
#include "platform/profiler/TesselColorProfiler.h"

namespace vkcl::testing {
namespace {

unsigned int Length(const Bytes& bytes) { return static_cast<unsigned int>(bytes.size()); }

struct Handles {
  explicit Handles(const TempDir& dir)
      : gray(GrayProfile()),
        linkBytes(SampleLink()),
        path(dir.File("p.icc")),
        other(dir.File("target.icc")) {
    CLLoadProfileFromMemory(source, gray.data(), Length(gray));
    CLLoadLink16FromMemory(link16, linkBytes.data(), Length(linkBytes));
    CLName2FileSpec(spec, path.c_str());
    CLSetProfilerOption(profiler, "BrightenerCorrection", "a value of many characters");
  }
  ~Handles() {
    CLFreeCLProfileRef(source);
    CLFreeCLProfileRef(profile);
    CLFreeCLLink8Ref(link8);
    CLFreeCLLink16Ref(link16);
    CLFreeFileSpecRef(spec);
    CLFreeCLProfilerRef(profiler);
  }
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;

  const Bytes gray;
  const Bytes linkBytes;
  const std::string path;
  const std::string other;
  void* source = CLNewCLProfileRef();
  void* profile = CLNewCLProfileRef();
  void* link8 = CLNewCLLink8Ref();
  void* link16 = CLNewCLLink16Ref();
  void* spec = CLNewFileSpecRef();
  void* profiler = CLNewCLProfilerRef();
  char buffer[5000] = {};
};

template <class Save>
std::string Saved(void* handle, Save save) {
  unsigned int size = 0;
  if (save(handle, nullptr, 0, &size) != 0) return "-";
  std::string bytes(size, '\0');
  if (size != 0) save(handle, bytes.data(), size, nullptr);
  return "=" + bytes;
}

// Links that are built hold the moment of their making (bytes 24 to 35).
std::string Dateless(std::string text) {
  if (text.size() > 36) text.replace(25, 12, 12, '0');
  return text;
}

std::string Seen(const Handles& h) {
  std::string text = Saved(h.profile, CLWriteProfileToMemory) +
                     Dateless(Saved(h.link8, CLSaveLink8ToMemory)) +
                     Dateless(Saved(h.link16, CLSaveLink16ToMemory)) + ShowArray(h.buffer, 5000);
  char value[256] = {};
  for (const char* key : {"BlackGeneration", "BrightenerCorrection"}) {
    text += CLGetProfilerOption(h.profiler, key, value) == 0 ? value : "-";
  }
  return text;
}

template <class Run>
Operation On(const char* names, Run run, ObjectsLeft left = ObjectsLeft::Old) {
  return {names, [=](const TempDir& dir) { return With<Handles>(run, Seen, dir); }, "",
          FilesLeft::Old, left};
}

void AddHandles(std::vector<Operation>& all) {
  using Make = void* (*)();
  using Free = void (*)(void*);
  const auto add = [&](const char* names, Make make, Free free) {
    all.push_back(On(names, [=](Handles&) {
      void* handle = make();
      free(handle);
      return handle != nullptr;
    }));
  };
  add("CLNewCLProfileRef CLFreeCLProfileRef", CLNewCLProfileRef, CLFreeCLProfileRef);
  add("CLNewFileSpecRef CLFreeFileSpecRef", CLNewFileSpecRef, CLFreeFileSpecRef);
  add("CLNewCLLink8Ref CLFreeCLLink8Ref", CLNewCLLink8Ref, CLFreeCLLink8Ref);
  add("CLNewCLLink16Ref CLFreeCLLink16Ref", CLNewCLLink16Ref, CLFreeCLLink16Ref);
  add("CLNewCLProfilerRef CLFreeCLProfilerRef", CLNewCLProfilerRef, CLFreeCLProfilerRef);
}

void AddContents(std::vector<Operation>& all) {
  all.push_back(On("CLLoadProfileFromMemory", [](Handles& h) {
    return CLLoadProfileFromMemory(h.profile, h.gray.data(), Length(h.gray)) == 0;
  }));
  all.push_back(On("CLLoadProfileFromFile",
                   [](Handles& h) { return CLLoadProfileFromFile(h.profile, h.spec) == 0; }));
  all.push_back(On("CLWriteProfileToMemory", [](Handles& h) {
    return CLWriteProfileToMemory(h.source, h.buffer, sizeof h.buffer, nullptr) == 0;
  }));
  all.push_back(On("CLName2FileSpec",
                   [](Handles& h) { return CLName2FileSpec(h.spec, h.other.c_str()) == 0; }));
  // A link whose loading failed is empty.
  all.push_back(On(
      "CLLoadLink8FromMemory",
      [](Handles& h) {
        return CLLoadLink8FromMemory(h.link8, h.linkBytes.data(), Length(h.linkBytes)) == 0;
      },
      ObjectsLeft::Documented));
  all.push_back(On(
      "CLLoadLink16FromMemory",
      [](Handles& h) {
        return CLLoadLink16FromMemory(h.link16, h.linkBytes.data(), Length(h.linkBytes)) == 0;
      },
      ObjectsLeft::Documented));
  all.push_back(On("CLBuildLink8",
                   [](Handles& h) { return CLBuildLink8(h.link8, h.source, h.source, 1) == 0; }));
  all.push_back(On("CLBuildLink16",
                   [](Handles& h) { return CLBuildLink16(h.link16, h.source, h.source, 1) == 0; }));
  all.push_back(On("CLSaveLink8ToMemory CLSaveLink16ToMemory", [](Handles& h) {
    return CLSaveLink16ToMemory(h.link16, h.buffer, sizeof h.buffer, nullptr) == 0 &&
           CLSaveLink8ToMemory(h.link8, h.buffer, sizeof h.buffer, nullptr) == 0;
  }));
  all.push_back(On("CopyCLLinkRef", [](Handles& h) {
    unsigned int size = 0;
    void* copy = CopyCLLinkRef(h.link16, &size);
    CLFreeCLLink16Ref(copy);
    return copy != nullptr && size == h.linkBytes.size();
  }));
  all.push_back(On("VKCLMultiByteToUTF8", [](Handles& h) {
    static const AString text("text of many characters, and \xFF");
    static_cast<void>(h);
    return VKCLMultiByteToUTF8(text).length() >= text.length();
  }));
}

void AddOptions(std::vector<Operation>& all) {
  all.push_back(On("CLImportProfilerOptions",
                   [](Handles& h) { return CLImportProfilerOptions(h.profiler, h.spec) == 0; }));
  // Reading an option that is set cannot fail: those that ask take a refusal for "not set".
  all.push_back(On("CLGetProfilerOption", [](Handles& h) {
    return CLGetProfilerOption(h.profiler, "BrightenerCorrection", h.buffer) == 0;
  }));
  all.push_back(On("CLSetProfilerOption", [](Handles& h) {
    return CLSetProfilerOption(h.profiler, "BlackGeneration", "another of many characters") == 0;
  }));
  all.push_back(On("CLExportProfilerOptions",
                   [](Handles& h) { return CLExportProfilerOptions(h.profiler, h.spec) == 0; }));
}

}  // namespace

Group ProfilerOperations() {
  Group group = {LayProfiles, {}};
  AddHandles(group.operations);
  AddContents(group.operations);
  AddOptions(group.operations);
  return group;
}

}  // namespace vkcl::testing
