// Any bytes as the colour definitions file, which lies beside the folder of this program.
#include <filesystem>

#include "Fuzz.h"
#include "colornames/ColorDefinitions.h"
#include "colornames/ColorModes.h"
#include "platform/plinth/HostFiles.h"

using vkcl::fuzz::Demand;

namespace {

std::string DefinitionsFile() {
  const std::string path = ColorDefinitionsPath(vkcl::host::ExecutablePath(), '/');
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = DefinitionsFile();
  vkcl::fuzz::WriteFile(path, data, size);
  ColorDefinitions definitions;
  LoadColorDefinitions(definitions);
  const std::size_t count = definitions.names.size();
  Demand(definitions.flags.size() == count && definitions.secondHex.size() == count &&
             definitions.firstDecimal.size() == count && definitions.secondDecimal.size() == count,
         "the sequences are parallel");
  for (const AString& name : definitions.names) {
    Demand(name.length() > 0 && name.length() <= 255, "a name has 1 to 255 characters");
  }
  // The other functions load the file once in a process.
  for (const std::uint32_t flag : definitions.flags) {
    GetColorNameByIndex(static_cast<int>(flag));
    AStringArray names;
    GetStandardColorNamesByColorMode(static_cast<int>(flag | 0x80000000U), names);
  }
  return 0;
}
