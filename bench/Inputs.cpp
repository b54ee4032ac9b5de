#include "Inputs.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <stdexcept>

#include "handler/VKCLProfileHandler.h"
#include "platform/Bytes.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "profile/TableLayout.h"

namespace vkcl::bench {
namespace {

namespace fs = std::filesystem;

void Must(bool done, const char* what) {
  if (!done) throw std::runtime_error(what);
}

std::uint32_t StandardSignature(std::size_t number) {
  std::uint32_t signature = 'T';
  for (const std::size_t power : {100u, 10u, 1u}) {
    signature = signature << 8 | static_cast<std::uint32_t>('0' + number / power % 10);
  }
  return signature;
}

// Standard tags that bring a profile of `tags` tags, `others` of them with `taken` bytes of data,
// to about `length` bytes.
std::vector<Tag> StandardTags(std::size_t length, std::size_t tags, std::size_t others = 0,
                              std::size_t taken = 0) {
  const std::size_t head = TableEnd(tags) + taken;
  const std::size_t count = tags - others;
  const std::size_t each = std::max<std::size_t>(length > head ? (length - head) / count : 0, 16);
  std::vector<Tag> standard;
  for (std::size_t i = 0; i < count; ++i) {
    standard.emplace_back(StandardSignature(i), Element(each / 4 * 4 - kDataHead, 's'));
  }
  return standard;
}

Bytes TextElement(const std::string& text) {
  const std::string element = std::string("text\0\0\0\0", 8) + text;
  return {element.begin(), element.end()};
}

Bytes Padded(std::string text, std::size_t length) {
  text.resize(length);
  return {text.begin(), text.end()};
}

// The tags that have no writer of records take bytes as they are.
void WriteRaw(VKCLProfileHandler& handler, VKPrivateTagSignature signature, const Bytes& payload) {
  Must(handler.GetProfilePtr()->WriteVKPrivateTag(signature, payload.data(),
                                                  static_cast<unsigned long>(payload.size())) != 0,
       "a tag cannot be written");
}

void WriteLists(VKCLProfileHandler& handler) {
  const std::uint32_t lab = icSigLabData;
  const std::uint32_t cmyk = icSigCmykData;
  const std::uint32_t spectra = icSignature("refl");
  Must(handler.WriteLinReferenceData(List(cmyk, 4, 84)) != 0 &&
           handler.WriteLinMeasurementData(List(lab, 3, 84)) != 0 &&
           handler.WriteGBReferenceData(List(cmyk, 4, 36)) != 0 &&
           handler.WriteGBMeasurementData(List(lab, 3, 36)) != 0 &&
           handler.WriteCharReferenceData(List(cmyk, 4, 1617)) != 0 &&
           handler.WriteCharMeasurementData(List(spectra, 36, 1617)) != 0 &&
           handler.WriteVKLinRefData(List(cmyk, 4, 84)) != 0 &&
           handler.WriteVKLinOutputData(List(cmyk, 4, 84)) != 0,
       "a list cannot be written");
}

void WriteRecords(VKCLProfileHandler& handler) {
  SplitParam split;
  VKMultiInklimit multi;
  VKColorParam param;
  param.ColorMode = 1;
  VKDitherParam dither;
  DitherTypeV1 table;
  VKSpotSingleInkLimit spot;
  spot.SetData(4, CString("Spot"), nullptr);
  Must(split.SetDefaultValues(2, nullptr) != 0 && dither.InitDitherParam(1, &table) != 0 &&
           handler.WriteInkSplitTag(split) != 0 &&
           handler.WriteSILWithLinTag(VKSingleInkLimitWithLinRef()) != 0 &&
           handler.WriteMultipleInkLimitTag(multi) != 0 &&
           handler.WriteVKColorParamTag(param) != 0 && handler.WriteVKCMStoDither(1) != 0 &&
           handler.WriteDitherParamTag(dither) != 0 &&
           handler.WriteVKCompatibilityParam(VKCompatibilityParam()) != 0 &&
           handler.WriteVKSpotSIL(spot) != 0 &&
           handler.WriteVKLinExtraData(VKLinExtraDataParam()) != 0 &&
           handler.WriteVKWizardFlag(1) != 0 && handler.WriteVKChromaAdjust(AString("soft")) != 0 &&
           handler.WriteVKProfileExtraParam(VKProfileExtraParam()) != 0,
       "a record cannot be written");
}

void WriteOptions(const std::string& path) {
  void* profiler = CLNewCLProfilerRef();
  void* file = CLNewFileSpecRef();
  const bool done = CLName2FileSpec(file, path.c_str()) == 0 &&
                    CLSetProfilerOption(profiler, "ProfileSize", "Large") == 0 &&
                    CLSetProfilerOption(profiler, "InkTotal", "300") == 0 &&
                    CLExportProfilerOptions(profiler, file) == 0;
  CLFreeFileSpecRef(file);
  CLFreeCLProfilerRef(profiler);
  Must(done, "the options cannot be written");
}

Bytes ReadWhole(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Bytes MakeFullProfile() {
  std::vector<Tag> tags = StandardTags(190'000, 20);
  tags.emplace_back(icSigBToA0Tag, Element(20'000));
  tags.emplace_back(icSigCharTargetTag, TextElement(TargetText(7, 1617)));
  const Folder folder;
  const std::string path = folder.Write("full.icc", ProfileOf(tags));
  WriteOptions(path);
  VKCLProfileHandler handler(AFilePath(path), 0);
  WriteRecords(handler);
  WriteLists(handler);
  for (const auto signature : {QX58, QX61, QX62, QX63, QX65}) {
    WriteRaw(handler, signature, Bytes(4000, 'f'));
  }
  WriteRaw(handler, QX69, {1, 0, 0, 0, 16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  Bytes sidecar = {1, 0, 0, 0};
  for (const Bytes& part : {Padded("full.icc", 128), Padded("<VK_VSD_PROFILE/>", 400)}) {
    sidecar.insert(sidecar.end(), part.begin(), part.end());
  }
  WriteRaw(handler, QX71, sidecar);
  return ReadWhole(path);
}

template <class Key, class Make>
const Bytes& Kept(std::map<Key, Bytes>& kept, const Key& key, Make make) {
  const auto found = kept.find(key);
  return found != kept.end() ? found->second : kept.emplace(key, make()).first->second;
}

// In memory, so that no medium hides what is compared, where there is room for the largest files:
// containers often have little.
fs::path BaseFolder() {
  const fs::path memory = "/dev/shm";
  constexpr std::uintmax_t kRoom = 1'000'000'000;
  std::error_code error;
  const fs::space_info space = fs::space(memory, error);
  const bool fits = !error && space.available >= kRoom && ::access(memory.c_str(), W_OK) == 0;
  return fits ? memory : fs::temp_directory_path();
}

}  // namespace

Folder::Folder() {
  static std::atomic<int> counter = 0;
  path_ = (BaseFolder() /
           ("vkcl-bench-" + std::to_string(::getpid()) + '-' + std::to_string(counter++)))
              .string();
  fs::create_directories(path_);
}

Folder::~Folder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string Folder::Write(const std::string& name, const Bytes& content) const {
  const std::string path = File(name);
  WriteWhole(path, content);
  return path;
}

void WriteWhole(const std::string& path, const Bytes& content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  Must(file.good(), "an input cannot be written");
}

std::vector<Entry> TableOf(const Bytes& profile) {
  std::vector<Entry> table(LoadBig32(profile.data() + 128));
  const char* at = profile.data() + kTableStart;
  for (Entry& entry : table) {
    entry = {LoadBig32(at), LoadBig32(at + 4), LoadBig32(at + 8)};
    at += kTableEntry;
  }
  return table;
}

Entry EntryOf(const Bytes& profile, std::uint32_t signature) {
  for (const Entry& entry : TableOf(profile)) {
    if (entry.signature == signature) return entry;
  }
  throw std::runtime_error("there is no such tag");
}

Bytes HeadOf(const Bytes& profile, const std::vector<Entry>& table, std::uint64_t length) {
  Bytes head(profile.begin(), profile.begin() + 128);
  head.resize(TableEnd(table.size()));
  StoreBig32(head.data(), static_cast<std::uint32_t>(length));
  StoreBig32(head.data() + 128, static_cast<std::uint32_t>(table.size()));
  char* at = head.data() + kTableStart;
  for (const Entry& entry : table) {
    StoreBig32(at, entry.signature);
    StoreBig32(at + 4, entry.offset);
    StoreBig32(at + 8, entry.size);
    at += kTableEntry;
  }
  return head;
}

Bytes Element(std::size_t length, char fill) {
  Bytes element(kDataHead + length, fill);
  std::copy_n(kBinaryHead, kDataHead, element.begin());
  return element;
}

Bytes ProfileOf(const std::vector<Tag>& tags) {
  Bytes header(128);
  StoreBig32(header.data() + 8, 0x02400000);
  StoreBig32(header.data() + 12, icSigOutputClass);
  StoreBig32(header.data() + 16, icSigCmykData);
  StoreBig32(header.data() + 20, icSigLabData);
  StoreBig32(header.data() + 36, icMagicNumber);
  std::vector<Entry> table;
  std::uint64_t length = TableEnd(tags.size());
  for (const auto& [signature, element] : tags) {
    table.push_back({signature, static_cast<std::uint32_t>(length),
                     static_cast<std::uint32_t>(element.size())});
    length += PadTo4(element.size());
  }
  Bytes profile = HeadOf(header, table, length);
  profile.reserve(length);
  for (const auto& [signature, element] : tags) {
    profile.insert(profile.end(), element.begin(), element.end());
    profile.resize(PadTo4(profile.size()));
  }
  return profile;
}

const Bytes& OwnProfile(std::size_t length, std::size_t tags) {
  static std::map<std::pair<std::size_t, std::size_t>, Bytes> kept;
  return Kept(kept, {length, tags}, [&] {
    std::vector<Tag> all = StandardTags(length, tags, 2, 152 + 1080);
    all.emplace_back(QX51, Element(140, 0));
    all.emplace_back(QX53, Element(1068, 0));
    return ProfileOf(all);
  });
}

const Bytes& StandardProfile(std::size_t length, std::size_t tags) {
  static std::map<std::pair<std::size_t, std::size_t>, Bytes> kept;
  return Kept(kept, {length, tags}, [&] { return ProfileOf(StandardTags(length, tags)); });
}

const Bytes& ResizeProfile(std::size_t length) {
  static std::map<std::size_t, Bytes> kept;
  return Kept(kept, length, [&] {
    std::vector<Tag> all = StandardTags(length, 23, 3, std::size_t{3} * 1012);
    all.emplace(all.begin(), QX58, Element(1000));
    all.emplace(all.begin() + 11, QX61, Element(1000));
    all.emplace_back(QX62, Element(1000));
    return ProfileOf(all);
  });
}

const Bytes& FullProfile() {
  static const Bytes profile = MakeFullProfile();
  return profile;
}

std::string TargetText(int columns, int samples) {
  const int measured = columns > 40 ? 36 : 3;
  const int device = columns - measured;
  std::string text =
      "CGATS.5\nNUMBER_OF_FIELDS " + std::to_string(columns) + "\nBEGIN_DATA_FORMAT\n";
  for (int i = 0; i < device; ++i) text += "CMYK_" + std::to_string(i + 1) + ' ';
  if (measured == 3) text += "LAB_L LAB_A LAB_B";
  for (int i = 0; measured == 36 && i < 36; ++i) {
    text += (i > 0 ? " R_" : "R_") + std::to_string(380 + 10 * i);
  }
  text += "\nEND_DATA_FORMAT\nNUMBER_OF_SETS " + std::to_string(samples) + "\nBEGIN_DATA\n";
  std::mt19937 random(7);
  std::uniform_int_distribution<int> value(0, 999999);
  for (int i = 0; i < samples; ++i) {
    for (int k = 0; k < columns; ++k) {
      const int number = value(random);
      text +=
          std::to_string(number / 10000) + '.' + std::to_string(10000 + number % 10000).substr(1);
      text += k + 1 < columns ? ' ' : '\n';
    }
  }
  return text + "END_DATA\n";
}

ProfileDataList List(std::uint32_t format, std::int32_t colors, std::int32_t samples) {
  ProfileDataList list;
  list.DataFormat = format;
  list.NumOfColors = colors;
  Must(list.RefreshList(samples) != 0, "memory is short");
  list.Measured = samples;
  for (int i = 0; i < samples * colors; ++i) list.DataList[i] = 1.0 / (i + 3);
  return list;
}

}  // namespace vkcl::bench
