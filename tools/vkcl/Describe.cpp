#include "Describe.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

#include "Opened.h"
#include "Records.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "handler/StoredList.h"
#include "handler/StoredSplit.h"
#include "inspect/ProfileNames.h"
#include "platform/plinth/AFile.h"
#include "profile/TableLayout.h"

namespace vkcl::tool {
namespace {

using Json = nlohmann::ordered_json;

// The payload of a tag as stored; false when it cannot be read.
bool ReadPayload(const VKCLProfile& profile, VKPrivateTagSignature signature, VKPrivateTag& tag) {
  tag.SetSignature(signature);
  return profile.ReadVKPrivateTag(&tag, 1) != 0;
}

std::int32_t Int32At(const VKPrivateTag& tag, std::size_t offset) {
  std::int32_t value = 0;
  if (offset + sizeof value <= tag.size) std::memcpy(&value, tag.data + offset, sizeof value);
  return value;
}

Json DescribeRecord(const VKCLProfileHandler& handler, const RecordType& record) {
  Image image;
  if (record.get(handler, image) == 0) return {{"readable", false}};
  Json fields = Json::object();
  for (const Field& field : record.fields) fields[field.name] = FieldValue(field, image);
  return fields;
}

Json DescribeSplit(const VKCLProfile& profile) {
  SplitParam split;
  if (!ReadStoredSplit(profile, split)) return {{"readable", false}};
  Json records = Json::array();
  for (std::int32_t i = 0; i < split.count; ++i) {
    Json record;
    if (split.version == 4) {
      const auto& v4 = static_cast<SplitTypeV4*>(split.splits)[i];
      record = {{"colorantIndex", v4.colorantIndex},
                {"lightPoints", v4.lightCount},
                {"mediumPoints", v4.mediumCount},
                {"darkPoints", v4.darkCount}};
    } else if (split.version == 3) {
      const auto& v3 = static_cast<SplitTypeV3*>(split.splits)[i];
      record = {{"colorantIndex", v3.colorantIndex},
                {"lightPoints", v3.lightCount},
                {"mediumPoints", v3.mediumCount},
                {"darkPoints", v3.darkCount}};
    } else {
      record = {{"colorantIndex", static_cast<SplitTypeV2*>(split.splits)[i].colorantIndex}};
    }
    records.push_back(std::move(record));
  }
  return {{"version", split.version}, {"count", split.count}, {"splits", std::move(records)}};
}

Json DescribeList(const VKCLProfile& profile, VKPrivateTagSignature signature) {
  ProfileDataList list;
  if (ReadStoredList(profile, signature, list) == 0) return {{"readable", false}};
  return {{"format", SignatureText(list.DataFormat)},
          {"samples", list.NumOfSamples},
          {"colorMode", list.ColorMode},
          {"valuesPerSample", list.NumOfColors},
          {"measured", list.Measured},
          {"hasValues", list.DataList != nullptr}};
}

Json DescribeFile(const VKPrivateTag& tag) {
  const bool isProfile = tag.size >= 128 && std::memcmp(tag.data + 36, "acsp", 4) == 0;
  return {{"bytes", tag.size}, {"isProfile", isProfile}};
}

Json DescribeSidecar(const VKPrivateTag& tag) {
  if (tag.size < sizeof(VKVSDProfileParam)) return {{"readable", false}};
  return {{"fileName", Utf8(FieldText(tag.data + 4, 128))},
          {"bytes", tag.size - sizeof(VKVSDProfileParam)}};
}

Json DescribeSpotLimits(const VKCLProfileHandler& handler) {
  VKSpotSingleInkLimit limits;
  if (handler.GetVKSpotSIL(limits) == 0) return {{"readable", false}};
  Json values = Json::array();
  for (std::int32_t i = 0; i < limits.count; ++i) values.push_back(RealValue(limits.limits[i]));
  return {{"name", Utf8(limits.name)}, {"limits", std::move(values)}};
}

// From the payload itself: the links need not be readable here.
Json DescribeSpotLinks(const VKPrivateTag& tag) {
  const std::int64_t count = Int32At(tag, 8);
  const std::int64_t nameLength = Int32At(tag, 12);
  const bool whole = tag.size >= 16 && count >= 0 && nameLength >= 0 &&
                     16 + nameLength + 4 * count <= std::int64_t{tag.size};
  if (!whole) return {{"readable", false}};
  Json sizes = Json::array();
  for (std::int64_t i = 0; i < count; ++i) {
    sizes.push_back(Int32At(tag, static_cast<std::size_t>(16 + nameLength + 4 * i)));
  }
  return {{"name", Utf8({tag.data + 16, static_cast<std::size_t>(nameLength)})},
          {"linkBytes", std::move(sizes)}};
}

Json DescribeContent(const VKCLProfileHandler& handler, const VKCLProfile& profile,
                     VKPrivateTagSignature signature) {
  if (const RecordType* record = FindRecord(signature)) return DescribeRecord(handler, *record);
  if (signature == QX50) return DescribeSplit(profile);
  if (signature == QX68) return DescribeSpotLimits(handler);
  if (FindTagSchema(signature) == nullptr) return Json::object();  // nobody knows it
  VKPrivateTag tag;
  if (!ReadPayload(profile, signature, tag)) return {{"readable", false}};
  switch (signature) {
    case QX54:
    case QX55:
    case QX56:
    case QX57:
    case QX59:
    case QX60:
    case QX72:
    case QX73: return DescribeList(profile, signature);
    case QX58:
    case QX61:
    case QX62:
    case QX63:
    case QX65: return DescribeFile(tag);
    case QX66: return {{"type", Int32At(tag, 0)}, {"size", Int32At(tag, 4)}};
    case QX69: return DescribeSpotLinks(tag);
    case QX71: return DescribeSidecar(tag);
    default: return Json::object();
  }
}

std::string TypeOf(AFile& file, const icTag& tag) {
  unsigned char type[4] = {};
  if (tag.size < sizeof type || !file.seek(tag.offset) ||
      file.read(type, sizeof type) != sizeof type) {
    return {};
  }
  return SignatureText(std::uint32_t{type[0]} << 24 | std::uint32_t{type[1]} << 16 |
                       std::uint32_t{type[2]} << 8 | type[3]);
}

Json DescribeTags(const VKCLProfile& profile) {
  Json tags = Json::array();
  AFile file;
  if (!file.open(profile.filePath, AFile::Read)) return tags;
  const auto length = static_cast<std::uint64_t>(std::max<std::int64_t>(file.length(), 0));
  std::unordered_map<std::uint32_t, std::uint32_t> firstAt;  // from offset to signature
  for (std::uint32_t i = 0; i < profile.tagCount; ++i) {
    const icTag& tag = profile.tagTable[i];
    Json row = {{"signature", SignatureText(tag.sig)},
                {"offset", tag.offset},
                {"size", tag.size},
                {"type", TypeOf(file, tag)}};
    const auto [first, isNew] = firstAt.try_emplace(tag.offset, tag.sig);
    if (!isNew) row["sharesDataWith"] = SignatureText(first->second);
    if (std::uint64_t{tag.offset} + tag.size > length) row["beyondEndOfFile"] = true;
    tags.push_back(std::move(row));
  }
  return tags;
}

Json DescribePrivateTags(const VKCLProfileHandler& handler, const VKCLProfile& profile) {
  Json tags = Json::array();
  std::unordered_set<std::uint32_t> seen;
  for (std::uint32_t i = 0; i < profile.tagCount; ++i) {
    const std::uint32_t signature = profile.tagTable[i].sig;
    if (!IsPrivateSignature(signature)) continue;
    Json row = {
        {"signature", SignatureText(signature)},
        {"name", TitleOf(signature)},
        {"payloadBytes",
         profile.tagTable[i].size < kDataHead ? 0 : profile.tagTable[i].size - kDataHead},
    };
    if (!seen.insert(signature).second) {
      row["hiddenByAnEarlierOne"] = true;
    } else {
      row["content"] =
          DescribeContent(handler, profile, static_cast<VKPrivateTagSignature>(signature));
    }
    tags.push_back(std::move(row));
  }
  return tags;
}

Json DescribeHeader(const VKCLProfile& profile) {
  const icHeader& header = profile.header;
  const char* className = ClassName(header.deviceClass);
  return {
      {"size", header.size},
      {"version", fmt::format("{}.{}.{}", header.version >> 24, header.version >> 20 & 15,
                              header.version >> 16 & 15)},
      {"class", SignatureText(header.deviceClass)},
      {"className", className != nullptr ? className : "unknown class"},
      {"colorSpace", SignatureText(header.colorSpace)},
      {"pcs", SignatureText(header.pcs)},
      {"created",
       fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", header.date.year, header.date.month,
                   header.date.day, header.date.hours, header.date.minutes, header.date.seconds)},
      {"cmm", SignatureText(header.cmmId)},
      {"platform", SignatureText(header.platform)},
      {"creator", SignatureText(header.creator)},
      {"renderingIntent", header.renderingIntent},
  };
}

Json DescribeState(const VKCLProfileHandler& handler) {
  VKCLProfileFinishedState byTags = FinishedNone;
  VKCLProfileFinishedState byStatus = FinishedNone;
  handler.GetVKCLProfileFinishedState(byTags, 1);
  handler.GetVKCLProfileFinishedState(byStatus, 0);
  return {{"value", byTags},
          {"name", StateName(byTags)},
          {"withStatus", {{"value", byStatus}, {"name", StateName(byStatus)}}}};
}

}  // namespace

std::string TitleOf(std::uint32_t signature) {
  const TagSchema* schema = FindTagSchema(signature);
  return schema != nullptr ? schema->title : "unknown";
}

std::string StateName(int state) {
  const char* name = FinishedStateName(state);
  return name != nullptr ? name : "?";
}

Json Describe(const std::string& path, int channels) {
  const std::string why = WhyInvalid(path, channels);
  Json document = {{"file", Utf8(path)}, {"valid", why.empty()}};
  if (!why.empty()) document["reason"] = why;
  // A profile that only lacks a channel count still has a header and a table to show.
  const int shownWith = !why.empty() && channels == 0 ? 3 : channels;
  OpenedHandler handler(path, shownWith);
  if (handler.IsICCFile() == 0) return document;
  const VKCLProfile& profile = *handler.GetProfilePtr();
  document["header"] = DescribeHeader(profile);
  if (why.empty()) document["channels"] = profile.channelCount;
  document["output"] = handler.IsOutputICCFile() != 0;
  document["own"] = handler.IsVKCLProfile() != 0;
  document["finishedState"] = DescribeState(handler);
  document["tags"] = DescribeTags(profile);
  document["privateTags"] = DescribePrivateTags(handler, profile);
  return document;
}

}  // namespace vkcl::tool
