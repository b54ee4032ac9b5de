#include "faults/Showing.h"

#include <algorithm>
#include <vector>

#include "platform/profiler/TesselColorProfiler.h"
#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

std::string Numbers(std::initializer_list<std::int64_t> numbers) {
  std::string text;
  for (const std::int64_t number : numbers) text += std::to_string(number) + " ";
  return text;
}

std::string ShowLink(void* link) {
  unsigned int size = 0;
  if (link == nullptr || CLSaveLink8ToMemory(link, nullptr, 0, &size) != 0) return "-";
  std::string bytes(size, '\0');
  if (size != 0) CLSaveLink8ToMemory(link, bytes.data(), size, nullptr);
  return "=" + bytes;
}

}  // namespace

std::string Show(const AString& text) { return "\"" + text.str() + "\""; }
std::string Show(const AFilePath& path) { return "\"" + path.str() + "\""; }

std::string Show(const AStringArray& names) {
  std::string text;
  for (const AString& name : names) text += Show(name);
  return text;
}

std::string Show(const ProfileDataList& list) {
  return Numbers({list.DataFormat, list.NumOfSamples, list.ColorMode, list.NumOfColors,
                  list.Measured, list.Extra1, list.Extra2}) +
         ShowArray(list.DataList, std::int64_t{list.NumOfSamples} * list.NumOfColors) +
         ShowArray(list.PerSample, list.NumOfSamples);
}

std::string Show(const SplitParam& split) {
  const auto bytes = static_cast<std::int64_t>(SplitParam::RecordSize(split.version)) * split.count;
  return Numbers({split.version, split.size, split.count}) +
         ShowArray(reinterpret_cast<const char*>(split.splits), bytes);
}

std::string Show(const VKDitherParam& dither) {
  return Numbers({dither.type, dither.size}) + ShowArray(dither.table, 1);
}

std::string Show(const VKSpotSingleInkLimit& limits) {
  return Numbers({limits.version, limits.size, limits.count}) + Show(AString(limits.name)) +
         (limits.name == nullptr ? "-" : "=") + ShowArray(limits.limits, limits.count);
}

std::string Show(const VKSpotLinDLParam& links) {
  std::string text = Numbers({links.version, links.size, links.count, links.nameLength}) +
                     ShowArray(links.name, links.nameLength) +
                     ShowArray(links.linkSizes, links.count);
  for (std::int32_t i = 0; links.links != nullptr && i < links.count; ++i) {
    text += ShowLink(links.links[i]);
  }
  return text;
}

std::string Show(const VKPrivateTag& tag) {
  return Numbers({tag.signature, tag.size}) + ShowArray(tag.data, tag.size);
}

std::string Show(const VKCLProfileOptions& options) {
  std::string text;
  for (const ProfileOptionKey& option : kProfileOptionKeys) text += Show(options.*option.member);
  return text;
}

std::string Show(const VKCLProfileProperties& properties) {
  const VKCLProfileProperties& p = properties;
  return Show(p.singleInkLimit) + Show(p.multiInkLimit) + Show(p.split) + Show(p.dither) +
         Show(p.colorParam) + Show(p.compatibility) + Show(p.linReference) +
         Show(p.linMeasurement) + Show(p.gbReference) + Show(p.gbMeasurement) +
         Show(p.charReference) + Show(p.charMeasurement) + Show(p.options) + Show(p.spotInkLimit) +
         Show(p.vsdParam) + std::to_string(p.hasChromaAdjust) + Show(p.chromaAdjust) +
         Show(p.extraParam);
}

std::string Show(const VKCLProfile& profile) {
  icHeader header = profile.header;
  if (header.creator == icSignature("QXCR")) header.date = {};
  return Numbers({profile.valid, profile.channelCount, profile.tagCount}) + Show(profile.filePath) +
         Show(header) + ShowArray(profile.tagTable, profile.tagCount);
}

std::string Show(AXMLTree& tree) {
  const TempDir dir;
  const std::string path = dir.File("shown.xml");
  if (tree.SaveToFile(AFilePath(path)) == 0) return "-";
  const Bytes bytes = ReadFile(path);
  return {bytes.begin(), bytes.end()};
}

}  // namespace vkcl::testing
