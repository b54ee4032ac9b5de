// Colour modes and names, and the definitions file.
#include "colornames/ColorDefinitions.h"
#include "colornames/ColorInfo.h"
#include "colornames/ColorModes.h"
#include "faults/Operations.h"
#include "support/SystemCalls.h"

namespace vkcl::testing {
namespace {

struct Names {
  explicit Names(const TempDir& dir) : executable(dir.File("bin/host-of-a-long-name")) {
    for (const char* name : {"Cyan", "Magenta", "Yellow", "Black", "LCyan", "LMagenta"}) {
      given.append(name);
    }
  }
  std::string executable;
  ExecutableAt place{executable};
  AStringArray given;
  AStringArray names;
  ColorDefinitions definitions;
};

std::string Seen(const Names& n) {
  std::string text = Show(n.names);
  for (const AString& name : n.definitions.names) text += Show(name);
  return text + std::to_string(n.definitions.flags.size());
}

// A list of names is empty when its mode is refused.
template <class Run>
Operation On(const char* names, Run run) {
  Operation operation = {names, [=](const TempDir& dir) { return With<Names>(run, Seen, dir); }};
  operation.objectsLeft = ObjectsLeft::Documented;
  return operation;
}

constexpr int kFlags = static_cast<int>(0x8000003Fu);

void AddModes(std::vector<Operation>& all) {
  all.push_back(On("GetColorModeByNames",
                   [](Names& n) { return GetColorModeByNames(n.given, n.names) != 0; }));
  all.push_back(On("GetColorModeFromNames", [](Names&) {
    const char* names[] = {"Cyan", "Magenta", "Yellow", "Black"};
    return GetColorModeFromNames(names, 4) != 0;
  }));
  for (const int mode : {256, kFlags}) {
    all.push_back(On("GetStandardColorNamesByColorMode", [=](Names& n) {
      GetStandardColorNamesByColorMode(mode, n.names);
      return !n.names.empty();
    }));
    all.push_back(On("GetDarkNames", [=](Names& n) { return GetDarkNames(mode, n.names); }));
    all.push_back(
        On("GetNumberOfDarkChannels", [=](Names&) { return GetNumberOfDarkChannels(mode) == 4; }));
    all.push_back(On("GetNumberOfNonDarkChannels GetNumberOfChannels", [=](Names&) {
      return GetNumberOfNonDarkChannels(mode) != 0 && GetNumberOfChannels(mode) != 0;
    }));
    all.push_back(On("ColorUtils::ColorInfo::GetLightMediumIndex", [=](Names&) {
      int light = 0;
      int medium = 0;
      return ColorUtils::ColorInfo::GetLightMediumIndex(mode, 0, light, medium) != 0 && light >= 4;
    }));
  }
  all.push_back(On("GetColorSpaceFromNumberOfColors StandardColorNames", [](Names&) {
    return GetColorSpaceFromNumberOfColors(4, 0) == icSigCmykData &&
           StandardColorNames().size() == 20;
  }));
}

void AddDefinitions(std::vector<Operation>& all) {
  all.push_back(On("LoadColorDefinitions", [](Names& n) {
    LoadColorDefinitions(n.definitions);
    return n.definitions.names.size() == 2;
  }));
  all.push_back(On("ColorDefinitionsPath",
                   [](Names& n) { return !ColorDefinitionsPath(n.executable, '/').empty(); }));
  all.push_back(
      On("GetColorNameByIndex", [](Names&) { return GetColorNameByIndex(4) == AString("LCyan"); }));
}

void Lay(const TempDir& dir) {
  std::filesystem::create_directory(dir.path() / "Program");
  static const std::string text =
      "A-violet-of-a-long-name 10000 0 0 0\nAnother-one-of-a-long-name 20000 1 2 3\n";
  WriteFile(dir.path() / "Program" / "Colors.ini", Bytes(text.begin(), text.end()));
}

}  // namespace

Group ColorOperations() {
  Group group = {Lay, {}};
  AddModes(group.operations);
  AddDefinitions(group.operations);
  return group;
}

}  // namespace vkcl::testing
