#include "colornames/ColorDefinitions.h"

#include <algorithm>
#include <string_view>

#include "colornames/Colorants.h"
#include "colornames/LazyDefinitions.h"
#include "platform/Guarded.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/HostFiles.h"
#include "platform/plinth/NumberText.h"

namespace {

#if defined(_WIN32)
constexpr char kSeparator = '\\';
#else
constexpr char kSeparator = '/';
#endif

constexpr const char* kPlace = "//Program//Colors.ini";
constexpr std::size_t kLongestName = 255;
constexpr std::uint64_t kLongestFile = std::uint64_t{16} << 20;

std::string CutLast(const std::string& path, char separator) {
  const std::size_t last = path.rfind(separator);
  if (last == std::string::npos) return path;
  const bool root = last == 0 || path[last - 1] == ':';
  return path.substr(0, root ? last + 1 : last);
}

std::string BaseFolder(const std::string& executablePath, char separator) {
  return CutLast(CutLast(executablePath, separator), separator);
}

std::string HostPlace() {
  std::string base = BaseFolder(vkcl::host::ExecutablePath(), kSeparator);
  if (base.find('~') != std::string::npos) base = vkcl::host::LongPath(base);
  return base + kPlace;
}

// The lines of the file; one that was not read to its end is dropped.
std::string ReadLines(const std::string& path) {
  AFile file;
  if (!file.open(AFilePath(path), AFile::Read)) return {};
  const std::int64_t length = file.length();
  if (length <= 0) return {};
  const auto whole = static_cast<std::uint64_t>(length);
  std::string text(static_cast<std::size_t>(std::min(whole, kLongestFile)), '\0');
  text.resize(file.read(text.data(), text.size()));
  if (text.size() < whole) text.resize(text.rfind('\n') + 1);  // none: npos + 1 is 0
  return text;
}

// scanf's "%s %x %x %d %d"; a zero byte ends the line for it.
void ReadLine(std::string_view line, ColorDefinitions& definitions) {
  line = vkcl::SkipSpace(line.substr(0, line.find('\0')));
  const std::string_view name = line.substr(0, line.find_first_of(" \t\n\v\f\r"));
  line.remove_prefix(name.size());
  std::uint32_t flag = 0;
  std::uint32_t second = 0;
  std::int32_t decimal = 0;
  std::int32_t secondDecimal = 0;
  if (name.empty() || name.size() > kLongestName || !vkcl::NextHex(line, flag) ||
      !vkcl::NextHex(line, second) || !vkcl::NextInteger(line, decimal) ||
      !vkcl::NextInteger(line, secondDecimal)) {
    return;
  }
  definitions.names.emplace_back(name.data(), name.size());
  definitions.flags.push_back(flag);
  definitions.secondHex.push_back(second);
  definitions.firstDecimal.push_back(decimal);
  definitions.secondDecimal.push_back(secondDecimal);
}

const AStringArray* StandardNames() {
  static const AStringArray names = {"Gray",   "Black",   "Cyan",      "Magenta", "Yellow",
                                     "Red",    "Green",   "Blue",      "LCyan",   "LMagenta",
                                     "Orange", "MCyan",   "MMagenta",  "LBlack",  "White",
                                     "MBlack", "LYellow", "Luminance", "A*",      "B*"};
  return &names;
}

}  // namespace

ColorDefinitions vkcl::ReadColorDefinitions() {
  ColorDefinitions definitions;
  const std::string text = ReadLines(HostPlace());
  std::string_view rest = text;
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // as editors on Windows leave it
  if (rest.starts_with(kByteOrderMark)) rest.remove_prefix(kByteOrderMark.size());
  while (!rest.empty()) {
    const std::size_t feed = std::min(rest.find('\n'), rest.size() - 1);
    ReadLine(rest.substr(0, feed + 1), definitions);
    rest.remove_prefix(feed + 1);
  }
  return definitions;
}

std::string ColorDefinitionsPath(const std::string& executablePath, char separator) {
  return vkcl::Guarded([&] { return BaseFolder(executablePath, separator) + kPlace; });
}

void LoadColorDefinitions(ColorDefinitions& definitions) {
  definitions = vkcl::Guarded(vkcl::ReadColorDefinitions);
}

AString GetColorNameByIndex(int index) {
  return vkcl::Guarded([&] {
    for (const vkcl::ColorantRow& row : vkcl::kColorants) {
      if (row.index == index) return AString(row.name);
    }
    static vkcl::LazyDefinitions lazy;
    const ColorDefinitions& extra = lazy.Get();
    const auto flag =
        std::find(extra.flags.begin(), extra.flags.end(), static_cast<std::uint32_t>(index));
    return flag == extra.flags.end()
               ? AString()
               : extra.names[static_cast<std::size_t>(flag - extra.flags.begin())];
  });
}

const AStringArray& StandardColorNames() {
  static const AStringArray none;
  const AStringArray* names = vkcl::Guarded(StandardNames);
  return names != nullptr ? *names : none;
}
