// VSD documents as text, written by hand and read without the library, so that its files can be
// held against texts that it had no part in.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "support/CommaLocale.h"
#include "support/HostEncoding.h"
#include "support/TempDir.h"
#include "vsd/VSDProfileHandler.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vkcl::testing {

inline Bytes BytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

inline std::string FileText(const std::filesystem::path& path) {
  const Bytes bytes = ReadFile(path);
  return std::string(bytes.begin(), bytes.end());
}

inline std::string Repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

/// The parts as one text.
template <class... Parts>
std::string Cat(const Parts&... parts) {
  std::string all;
  (static_cast<void>(all += parts), ...);
  return all;
}

/// An element with this text or these elements in it.
inline std::string Element(std::string_view name, std::string_view inner) {
  return Cat("<", name, ">", inner, "</", name, ">");
}

/// A field of a record with this text and, behind it, zeros.
template <std::size_t kSize>
void SetText(char (&field)[kSize], std::string_view text) {
  std::memset(field, 0, kSize);
  text.copy(field, kSize);
}

/// A whole document with these elements in its root.
inline std::string VsdText(std::string_view elements) {
  return Cat("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", Element("VK_VSD_PROFILE", elements),
             "\n");
}

/// The elements of a document in order, a line each: two blanks a level, the name, "=" and the
/// text. White space between elements is layout and left out; in an element without children it is
/// text. Knows what documents of the library hold: no CDATA, no DOCTYPE, no attributes. What is no
/// such document gives "malformed" and the place.
inline std::string Outline(std::string_view xml) {
  struct Open {
    std::string name;
    std::string text;
    std::size_t line;
    bool hasChildren;
  };
  const auto bad = [](std::size_t at) { return "malformed at " + std::to_string(at); };
  const auto decode = [](std::string_view raw) -> std::optional<std::string> {
    std::string text;
    while (!raw.empty()) {
      if (raw.front() != '&') {
        text += raw.front();
        raw.remove_prefix(1);
        continue;
      }
      const std::size_t end = raw.find(';');
      if (end == std::string_view::npos) return std::nullopt;
      const std::string_view name = raw.substr(1, end - 1);
      if (name == "lt") {
        text += '<';
      } else if (name == "gt") {
        text += '>';
      } else if (name == "amp") {
        text += '&';
      } else if (name == "quot") {
        text += '"';
      } else if (name == "apos") {
        text += '\'';
      } else {
        return std::nullopt;
      }
      raw.remove_prefix(end + 1);
    }
    return text;
  };
  std::vector<std::string> lines;
  std::vector<Open> open;
  bool rootSeen = false;
  std::size_t at = 0;
  while (at < xml.size()) {
    const std::size_t tag = xml.find('<', at);
    const std::optional<std::string> text =
        decode(xml.substr(at, tag == std::string_view::npos ? tag : tag - at));
    if (!text) return bad(at);
    const bool blank = text->find_first_not_of(" \t\r\n") == std::string::npos;
    if (!open.empty()) {
      open.back().text += *text;
    } else if (!blank) {
      return bad(at);
    }
    if (tag == std::string_view::npos) break;
    const std::size_t end = xml.find('>', tag);
    if (end == std::string_view::npos) return bad(tag);
    std::string_view name = xml.substr(tag + 1, end - tag - 1);
    at = end + 1;
    if (name.starts_with("?")) continue;
    if (name.starts_with("!--")) {
      const std::size_t close = xml.find("-->", tag);
      if (close == std::string_view::npos) return bad(tag);
      at = close + 3;
      continue;
    }
    const bool closes = name.starts_with("/");
    const bool empty = name.ends_with("/");
    if (closes) name.remove_prefix(1);
    if (empty) name.remove_suffix(1);
    while (name.ends_with(" ")) name.remove_suffix(1);
    if (name.empty() || name.find_first_of(" !?/=\"'") != std::string_view::npos) return bad(tag);
    if (!closes) {
      if (open.empty() && rootSeen) return bad(tag);
      rootSeen = true;
      if (!open.empty()) open.back().hasChildren = true;
      lines.push_back(std::string(2 * open.size(), ' ') + std::string(name) + "=");
      open.push_back({std::string(name), "", lines.size() - 1, false});
    }
    if (closes || empty) {
      if (open.empty() || open.back().name != name) return bad(tag);
      const Open& element = open.back();
      const bool layout =
          element.hasChildren && element.text.find_first_not_of(" \t\r\n") == std::string::npos;
      if (!layout) lines[element.line] += element.text;
      open.pop_back();
    }
  }
  if (!rootSeen || !open.empty()) return bad(xml.size());
  std::string all;
  for (const std::string& line : lines) all += line + "\n";
  return all;
}

/// A document in a folder of its own: begun anew, or opened from a text that lies there first.
class Sidecar {
 public:
  Sidecar() : path(dir.File("paper.icc")), handler(AFilePath(path), 0) {}
  explicit Sidecar(std::string_view text)
      : path(dir.Write("paper.icc", BytesOf(text))), handler(AFilePath(path), 1) {}

  std::string Text() const { return FileText(path); }
  bool Exists() const { return std::filesystem::exists(path); }
  /// Saves what was written and gives the outline of the file.
  std::string SavedOutline() {
    EXPECT_EQ(handler.SaveToFile(), 1);
    return Exists() ? Outline(Text()) : "no file";
  }

  const TempDir dir;
  const std::string path;
  VSDProfileHandler handler;
};

inline std::size_t FilesIn(const TempDir& dir) {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(dir.path())) {
    ++count;
  }
  return count;
}

/// The bit patterns of doubles; they compare where numbers do not (NaN, -0.0).
inline std::vector<std::uint64_t> BitsOf(const double* values, std::size_t count) {
  std::vector<std::uint64_t> bits;
  for (std::size_t i = 0; i < count; ++i) bits.push_back(std::bit_cast<std::uint64_t>(values[i]));
  return bits;
}

/// Doubles that only survive when no arithmetic touches them, and the digits that stand for them.
struct BitPattern {
  std::uint64_t bits;
  const char* digits;
};
inline constexpr BitPattern kBitPatterns[] = {
    {0x3FF0000000000000u, "000000000000f03f"},  // 1
    {0x0000000000000000u, "0000000000000000"},  // 0
    {0x8000000000000000u, "0000000000000080"},  // -0
    {0x7FF0000000000000u, "000000000000f07f"},  // infinity
    {0xFFF0000000000000u, "000000000000f0ff"},  // -infinity
    {0x7FF8000000000000u, "000000000000f87f"},  // NaN
    {0xFFF8123456789ABCu, "bc9a78563412f8ff"},  // NaN with a sign and a payload
    {0x7FF0000000000001u, "010000000000f07f"},  // signalling NaN
    {0x0000000000000001u, "0100000000000000"},  // the smallest denormal
    {0x800FFFFFFFFFFFFFu, "ffffffffffff0f80"},  // a negative denormal
    {0x7FEFFFFFFFFFFFFFu, "ffffffffffffef7f"},  // the largest number
    {0x3FB999999999999Au, "9a9999999999b93f"},  // 0.1
};
inline constexpr std::size_t kBitPatternCount = std::size(kBitPatterns);

inline std::vector<double> PatternValues() {
  std::vector<double> values(kBitPatternCount);
  for (std::size_t i = 0; i < kBitPatternCount; ++i) {
    std::memcpy(&values[i], &kBitPatterns[i].bits, sizeof(double));
  }
  return values;
}

inline std::string PatternDigits() {
  std::string digits;
  for (const BitPattern& pattern : kBitPatterns) digits += pattern.digits;
  return digits;
}

inline ProfileDataList MakeList(std::uint32_t format, int samples, int mode, int colors,
                                int measured, const std::vector<double>& values) {
  ProfileDataList list;
  list.DataFormat = format;
  list.NumOfSamples = samples;
  list.ColorMode = mode;
  list.NumOfColors = colors;
  list.Measured = measured;
  if (!values.empty()) {
    list.DataList = new double[values.size()];
    std::memcpy(list.DataList, values.data(), values.size() * sizeof(double));
  }
  return list;
}

/// The six elements of a list with these texts.
inline std::string ListElements(std::string_view format, std::string_view samples,
                                std::string_view mode, std::string_view colors,
                                std::string_view measured, std::string_view digits) {
  return Cat(Element("DataFormat", format), Element("NumOfSamples", samples),
             Element("ColorMode", mode), Element("NumOfColors", colors),
             Element("Measured", measured), Element("DataList", digits));
}

inline VKSingleInkLimitWithLinRef SingleLimits(const std::vector<double>& limits) {
  VKSingleInkLimitWithLinRef record;
  record.count = static_cast<std::int32_t>(limits.size());
  for (std::size_t i = 0; i < limits.size() && i < 16; ++i) record.limits[i] = limits[i];
  return record;
}

/// Writes one value of each part, so that the document is that of EverythingText.
inline VKColorParam SampleParam() {
  VKColorParam param;
  param.status = 9;
  SetText(param.Make, "Some Maker");
  SetText(param.Model, "Model <9> & \"more\"");
  SetText(param.MediaName, "Gloss paper");
  param.MediaID = 17;
  param.PrintMode = -3;
  param.ResolutionID = 5;
  param.ResolutionX = 720.0f;
  param.ResolutionY = 1440.5f;
  param.ColorMode = -2147483647;
  param.DriverColorMode = 2;
  param.DitherMethod = 3;
  param.DriverOption[1] = 0xAB;
  for (std::size_t i = 2; i < 256; ++i) param.DriverOption[i] = 0x5C;
  SetText(param.reservedText1, "reserved 1");
  SetText(param.reservedText2, "reserved 2");
  SetText(param.reservedText3, "reserved 3");
  return param;
}

inline std::string SampleParamElements() {
  return "<Make>Some Maker</Make>"
         "<Model>Model &lt;9&gt; &amp; \"more\"</Model>"
         "<MediaName>Gloss paper</MediaName>"
         "<MediaID>17</MediaID>"
         "<PrintMode>-3</PrintMode>"
         "<ResolutionID>5</ResolutionID>"
         "<ResolutionX>720.000000</ResolutionX>"
         "<ResolutionY>1440.500000</ResolutionY>"
         "<ColorMode>-2147483647</ColorMode>"
         "<DriverColorMode>2</DriverColorMode>"
         "<DitherMethod>3</DitherMethod>"
         "<DriverOption>00ab" +
         Repeated("5c", 254) + "</DriverOption>";
}

inline void WriteEverything(VSDProfileHandler& handler) {
  EXPECT_EQ(handler.WriteVKColorParam(SampleParam()), 1);
  const auto list = [](double first, int measured) {
    return MakeList(0x4C616220, 2, 4, 1, measured, {first, -2.0});
  };
  for (int size = 0; size < 3; ++size) {
    EXPECT_EQ(handler.WriteVSDReferenceData(size, list(1.0, 0)), 1);
    EXPECT_EQ(handler.WriteVSDMeasurementData(size, list(0.5, 2)), 1);
    EXPECT_EQ(handler.WriteVSDInvertedData(size, list(0.25, 0)), 1);
  }
  EXPECT_EQ(handler.WriteVerifyReferenceData(list(4.0, 0)), 1);
  EXPECT_EQ(handler.WriteVerifyMeasurementData(list(8.0, 1)), 1);
  double medium[] = {1.0, 2.0};
  double large[] = {3.0, 4.0};
  double scale[] = {0.5};
  EXPECT_EQ(handler.WriteMediumAndLargeStart(medium, large, 2), 1);
  EXPECT_EQ(handler.WriteLargeDotScale(scale, 1), 1);
  EXPECT_EQ(handler.WriteVKSingleInkLimits(SingleLimits({100, 95.5, 80})), 1);
  VKSpotSingleInkLimit spot;
  double spotLimits[] = {75.25, 60};
  spot.SetData(2, CString("Spot 1"), spotLimits);
  EXPECT_EQ(handler.WriteVKSpotSIL(spot), 1);
}

/// All sixteen limits, copied one by one: the record is packed, so that no reference to one of them
/// is aligned.
inline std::vector<double> LimitsOf(const VKSingleInkLimitWithLinRef& record) {
  std::vector<double> limits(16);
  for (std::size_t i = 0; i < 16; ++i) limits[i] = record.limits[i];
  return limits;
}

/// The document that WriteEverything makes.
inline std::string EverythingText() {
  const auto sizes = [](const std::string& container, const std::string& elements) {
    return "<" + container + "><Small>" + elements + "</Small><Medium>" + elements +
           "</Medium><Large>" + elements + "</Large></" + container + ">";
  };
  const auto list = [](const std::string& measured, const std::string& first) {
    return ListElements("1281450528", "2", "4", "1", measured, first + "00000000000000c0");
  };
  return VsdText("<VK_VSD_COLORPARAM>" + SampleParamElements() + "</VK_VSD_COLORPARAM>" +
                 sizes("ReferenceData", list("0", "000000000000f03f")) +
                 sizes("MeasurementData", list("2", "000000000000e03f")) +
                 sizes("InvertedData", list("0", "000000000000d03f")) + "<ReferenceDataVerify>" +
                 list("0", "0000000000001040") + "</ReferenceDataVerify><MeasurementDataVerify>" +
                 list("1", "0000000000002040") +
                 "</MeasurementDataVerify>"
                 "<MediumStart><NumOfColors>2</NumOfColors>"
                 "<DataList>000000000000f03f0000000000000040</DataList></MediumStart>"
                 "<LargeStart><DataList>00000000000008400000000000001040</DataList></LargeStart>"
                 "<LargeDotScale><NumOfColors>1</NumOfColors>"
                 "<DataList>000000000000e03f</DataList></LargeDotScale>"
                 "<VK_VSD_SINGLE_INKLIMITS><Num_of_Channels>3</Num_of_Channels>"
                 "<Values>100.00;95.50;80.00</Values></VK_VSD_SINGLE_INKLIMITS>"
                 "<VK_VSD_SPOT_SINGLE_INKLIMITS><Num_of_Channels>2</Num_of_Channels>"
                 "<ChannelS>Spot 1</ChannelS>"
                 "<Values>75.25;60.00</Values></VK_VSD_SPOT_SINGLE_INKLIMITS>");
}

/// Texts of other languages and texts that are none, each short enough for a text field.
struct OtherText {
  const char* what;
  std::string bytes;
  bool isPlainText;  ///< UTF-8 that XML can hold as it is
};
inline std::vector<OtherText> OtherTexts() {
  std::string controls;
  for (char c = 1; c < 32; ++c) controls += c;
  return {
      {"Japanese", "\xE5\x86\x99\xE7\x9C\x9F\xE7\x94\xA8\xE7\xB4\x99", true},
      {"Cyrillic", "\xD0\x91\xD1\x83\xD0\xBC\xD0\xB0\xD0\xB3\xD0\xB0", true},
      {"accents", "Papier mat\xC3\xA9riel \xC3\xA0 l'\xC5\x93uvre", true},
      {"emoji", "paper \xF0\x9F\x93\x84\xF0\x9F\x96\xA8", true},
      {"right to left", "\xD7\xA0\xD7\x99\xD7\x99\xD7\xA8", true},
      {"markup", "a <b> & \"c\" 'd' ]]> <!-- e --> &amp; <?f?>", true},
      {"blanks around", "  two and three   ", true},
      {"only blanks", "   ", true},
      {"tab and line feed", "\tone\ntwo\n", true},
      {"byte-order mark", "\xEF\xBB\xBFpaper", true},
      {"carriage returns", "one\r\ntwo\rthree\r", false},
      {"control characters", controls, false},
      {"delete", "a\x7F", false},
      {"Latin-1", "caf\xE9", false},
      {"Shift-JIS", "\x8E\xCA\x90\x5E", false},
      {"lone continuation bytes", "\x80\xBF", false},
      {"half a character", "a\xE5\x86", false},
      {"overlong", "\xC0\xAF", false},
      {"surrogates", "\xED\xA0\xBD\xED\xB1\x84", false},
      {"beyond Unicode", "\xF4\x90\x80\x80", false},
      {"never in UTF-8", "\xFE\xFF", false},
      {"no characters of XML", "\xEF\xBF\xBE\xEF\xBF\xBF", false},
      {"private use", "\xEE\xBC\x81\xEE\xBC\x80", false},
      {"replacement character", "\xEF\xBF\xBD", true},
  };
}

/// The elements of a file as Python's xml.etree reads them, a line each: the name, a blank and the
/// UTF-8 bytes of the text in hexadecimal. "malformed" when it takes the file for no XML; nothing
/// where there is no Python.
inline std::optional<std::string> PythonView(const std::string& path) {
  const std::string script =
      "import sys, xml.etree.ElementTree as e\n"
      "try:\n"
      "    root = e.parse(sys.argv[1]).getroot()\n"
      "except e.ParseError:\n"
      "    print(\"malformed\", end=\"\")\n"
      "    sys.exit()\n"
      "for x in root.iter():\n"
      "    print(x.tag, (x.text or \"\").encode(\"utf-8\").hex())\n";
  int ends[2] = {};
  if (::pipe(ends) != 0) return std::nullopt;
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    ::close(ends[0]);
    ::close(ends[1]);
    ::execlp("python3", "python3", "-c", script.c_str(), path.c_str(), nullptr);
    ::_exit(127);
  }
  ::close(ends[1]);
  std::string view;
  char block[4096];
  for (ssize_t got = 0; (got = ::read(ends[0], block, sizeof block)) > 0;) {
    view.append(block, static_cast<std::size_t>(got));
  }
  ::close(ends[0]);
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) return std::nullopt;
  return view;
}

inline std::string HexOf(std::string_view bytes) {
  std::string digits;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    digits += "0123456789abcdef"[byte / 16];
    digits += "0123456789abcdef"[byte % 16];
  }
  return digits;
}

/// The number as the C library writes it in this thread's locale.
inline std::string WithTwoDecimals(double number) {
  char text[64];
  const int length = std::snprintf(text, sizeof text, "%.2f", number);
  return length > 0 ? text : "";
}

/// While it lives, other threads read and write numbers with a decimal comma.
class CommaThreads {
 public:
  CommaThreads() {
    for (std::thread& thread : threads_) {
      thread = std::thread([this] {
        const CommaLocale comma;
        bool good = comma.works();
        do {
          good = good && WithTwoDecimals(1234.5) == "1234,50" && std::strtod("0,5", nullptr) == 0.5;
          ++rounds_;
        } while (!stop_);
        if (!good) disturbed_ = true;
      });
    }
    while (rounds_ == 0) std::this_thread::yield();
  }
  ~CommaThreads() {
    stop_ = true;
    for (std::thread& thread : threads_) thread.join();
    EXPECT_FALSE(disturbed_) << "the other threads lost their locale, or there is none";
  }
  CommaThreads(const CommaThreads&) = delete;
  CommaThreads& operator=(const CommaThreads&) = delete;

 private:
  std::atomic<bool> stop_ = false;
  std::atomic<bool> disturbed_ = false;
  std::atomic<long> rounds_ = 0;
  std::thread threads_[2];
};

#if defined(__has_feature)
#define VKCL_VSD_HAS_FEATURE(name) __has_feature(name)
#else
#define VKCL_VSD_HAS_FEATURE(name) 0
#endif
#if !defined(__linux__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || \
    VKCL_VSD_HAS_FEATURE(address_sanitizer) || VKCL_VSD_HAS_FEATURE(thread_sanitizer)
#define VKCL_VSD_CAN_LIMIT_MEMORY 0
#else
#define VKCL_VSD_CAN_LIMIT_MEMORY 1
#endif

/// While it lives, the process has no more than a gigabyte of address space beside what it had, and
/// the test fails when it came to hold 300 MiB more. A sanitizer reserves address space of its own,
/// so that only the second can be had there.
class MemoryLimit {
 public:
  MemoryLimit() {
#if VKCL_VSD_CAN_LIMIT_MEMORY
    ::getrlimit(RLIMIT_AS, &before_);
    rlimit limit = before_;
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    limit.rlim_cur = static_cast<rlim_t>(pages) * 4096 + (rlim_t{1} << 30);
    if (pages > 0 && (before_.rlim_max == RLIM_INFINITY || limit.rlim_cur < before_.rlim_max)) {
      ::setrlimit(RLIMIT_AS, &limit);
    }
#endif
    resident_ = Resident();
  }
  ~MemoryLimit() {
    EXPECT_LT(Resident() - resident_, 300 * 1024);
#if VKCL_VSD_CAN_LIMIT_MEMORY
    ::setrlimit(RLIMIT_AS, &before_);
#endif
  }
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;

 private:
  /// The most that was resident until now, in KiB.
  static long Resident() {
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
  }

#if VKCL_VSD_CAN_LIMIT_MEMORY
  rlimit before_ = {};
#endif
  long resident_ = 0;
};

}  // namespace vkcl::testing
