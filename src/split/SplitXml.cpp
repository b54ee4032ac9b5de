// The split as XML. The layout of the text is told in SplitParam.h.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Guarded.h"
#include "platform/axml/AXMLTree.h"
#include "platform/plinth/ALocaleSwitcher.h"
#include "platform/plinth/NumberText.h"
#include "split/SplitParam.h"

namespace {

constexpr const char* kVersion = "Version";
constexpr const char* kCount = "NumofColor2Split";
constexpr const char* kList = "ListSplit";
constexpr const char* kItem = "item";
constexpr const char* kColorant = "colorantIndex";
constexpr const char* kInterpolation = "interpolation";

constexpr std::int32_t kMostPoints = 256;
// So many records may have no element of their own.
constexpr std::int32_t kMostRecordsLacking = 1024;
constexpr int kDecimals = 6;
constexpr std::size_t kTooShort = 3;  // characters that hold no point

struct Curve {
  const char* name;
  SplitDotInfo2 (SplitTypeV4::*points)[256];
  std::int32_t SplitTypeV4::*count;
};
constexpr Curve kCurves[] = {
    {"light", &SplitTypeV4::light, &SplitTypeV4::lightCount},
    {"medium", &SplitTypeV4::medium, &SplitTypeV4::mediumCount},
    {"dark", &SplitTypeV4::dark, &SplitTypeV4::darkCount},
};

bool SetInteger(AXMLTreeNode& node, const char* name, std::int32_t value) {
  return node.SetAttribute(name, vkcl::IntegerText(value));
}

std::int32_t GetInteger(const AXMLTreeNode& node, const char* name) {
  std::string room;
  return vkcl::IntegerOf(node.ViewAttribute(name, room));
}

std::string CurveText(const SplitDotInfo2* points, std::int32_t count) {
  std::string text;
  for (std::int32_t i = 0; i < std::clamp(count, 0, kMostPoints); ++i) {
    vkcl::AppendFixed(text, points[i].input, kDecimals);
    text += ' ';
    vkcl::AppendFixed(text, points[i].amount, kDecimals);
    text += ' ';
    vkcl::AppendFixed(text, points[i].shape, kDecimals);
    text += ';';
  }
  return text;
}

// Reads points up to the first that is not whole; their number.
std::int32_t ReadCurve(std::string_view text, SplitDotInfo2* points) {
  std::int32_t count = 0;
  while (text.size() > kTooShort && count < kMostPoints) {
    std::string_view rest = text;
    SplitDotInfo2 point;
    if (!vkcl::NextNumber(rest, point.input) || !vkcl::NextNumber(rest, point.amount) ||
        !vkcl::NextNumber(rest, point.shape)) {
      break;
    }
    points[count++] = point;
    const std::size_t end = text.find(';');
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return count;
}

int Save(SplitTypeV4& record, AXMLTree& tree, AXMLTreeNode& node) {
  if (!SetInteger(node, kInterpolation, record.interpolation)) return 0;
  if (record.size != 0) {
    for (const Curve& curve : kCurves) {
      const std::string text = CurveText(record.*curve.points, record.*curve.count);
      if (!node.AddChild(curve.name, text)) return 0;
    }
  }
  return record.SplitTypeBase::Serialize(tree, node, 0);
}

int Load(SplitTypeV4& record, AXMLTree& tree, AXMLTreeNode& node) {
  for (const Curve& curve : kCurves) record.*curve.count = 0;
  record.interpolation = GetInteger(node, kInterpolation);
  for (const Curve& curve : kCurves) {
    auto& points = record.*curve.points;
    std::fill(std::begin(points), std::end(points), SplitDotInfo2());
    std::string room;
    record.*curve.count = ReadCurve(node.GetChild(curve.name).ViewValue(room), points);
  }
  return record.SplitTypeBase::Serialize(tree, node, 1);
}

SplitTypeBase& RecordAt(const SplitParam& set, std::int32_t i) {
  if (set.version == 2) return static_cast<SplitTypeV2*>(set.splits)[i];
  if (set.version == 3) return static_cast<SplitTypeV3*>(set.splits)[i];
  return static_cast<SplitTypeV4*>(set.splits)[i];
}

int SerializeRecord(const SplitParam& set, std::int32_t i, AXMLTree& tree, AXMLTreeNode& node,
                    int load) {
  SplitTypeBase& record = RecordAt(set, i);
  if (set.version == 4) return static_cast<SplitTypeV4&>(record).Serialize(tree, node, load);
  return record.Serialize(tree, node, load);
}

int Save(const SplitParam& set, AXMLTree& tree, AXMLTreeNode& node) {
  if (!SetInteger(node, kVersion, set.version) || !SetInteger(node, kCount, set.count)) return 0;
  const bool known = SplitParam::RecordSize(set.version) != 0;
  AXMLTreeNode list = node.AddChild(kList, "");
  if (!list || (known && set.count > 0 && set.splits == nullptr)) return 0;
  for (std::int32_t i = 0; i < set.count; ++i) {
    AXMLTreeNode item = list.AddChild(kItem, "");
    if (!item || !known || SerializeRecord(set, i, tree, item, 0) == 0) return 0;
  }
  return known ? 1 : 0;
}

int Load(SplitParam& set, AXMLTree& tree, AXMLTreeNode& node) {
  const std::int32_t version = GetInteger(node, kVersion);
  const std::int32_t count = GetInteger(node, kCount);
  SplitParam::DeleteRecords(set.version, set.splits);
  set.splits = nullptr;
  set.version = version;
  set.count = count;
  const AXMLTreeNode list = node.GetChild(kList);
  if (set.count > kMostRecordsLacking && set.count > list.GetChildCount()) return 0;
  set.splits = SplitParam::NewRecords(set.version, set.count);
  if (set.splits == nullptr) return 0;
  set.size = static_cast<std::int32_t>(20 + static_cast<std::size_t>(set.count) *
                                                SplitParam::RecordSize(set.version));
  AXMLTreeNode item = list.GetChild(0);
  for (std::int32_t i = 0; i < set.count && item; ++i, item = item.GetNext()) {
    if (SerializeRecord(set, i, tree, item, 1) == 0) return 0;
  }
  return 1;
}

}  // namespace

int SplitTypeBase::Serialize(AXMLTree& /*tree*/, AXMLTreeNode& node, int load) {
  const ALocaleSwitcher neutral;
  return vkcl::Guarded([&] {
    if (load == 0) return SetInteger(node, kColorant, colorantIndex) ? 1 : 0;
    colorantIndex = GetInteger(node, kColorant);
    return 1;
  });
}

int SplitTypeV4::Serialize(AXMLTree& tree, AXMLTreeNode& node, int load) {
  const ALocaleSwitcher neutral;
  return vkcl::Guarded(
      [&] { return load == 0 ? Save(*this, tree, node) : Load(*this, tree, node); });
}

int SplitParam::Serialize(AXMLTree& tree, AXMLTreeNode& node, int load) {
  const ALocaleSwitcher neutral;
  return vkcl::Guarded(
      [&] { return load == 0 ? Save(*this, tree, node) : Load(*this, tree, node); });
}
