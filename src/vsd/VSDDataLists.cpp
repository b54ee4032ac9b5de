// The data lists of the document. Values stand in it as their bytes, little-endian IEEE 754, in
// hexadecimal digits: what is read back is what was measured, to the last bit.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/Bytes.h"  // IWYU pragma: keep: it asserts the order of the bytes
#include "platform/Guarded.h"
#include "platform/plinth/HexText.h"
#include "platform/plinth/NumberText.h"
#include "vsd/VSDElements.h"
#include "vsd/VSDProfileHandler.h"

namespace {

namespace element = vkcl::vsd;

constexpr std::int64_t kMostValues = std::int64_t{8} << 20;

using Signature = std::uint32_t ProfileDataList::*;
using Integer = std::int32_t ProfileDataList::*;

struct Counter {
  const char* name;
  std::variant<Signature, Integer> member;
};
constexpr Counter kCounters[] = {
    {"DataFormat", &ProfileDataList::DataFormat},
    {element::kNumOfSamples, &ProfileDataList::NumOfSamples},
    {"ColorMode", &ProfileDataList::ColorMode},
    {element::kNumOfColors, &ProfileDataList::NumOfColors},
    {element::kMeasured, &ProfileDataList::Measured},
};

std::int32_t Get(const ProfileDataList& list, const Counter& counter) {
  return std::visit([&](auto member) { return static_cast<std::int32_t>(list.*member); },
                    counter.member);
}

void Set(ProfileDataList& list, const Counter& counter, std::int32_t value) {
  if (const Signature* signature = std::get_if<Signature>(&counter.member)) {
    list.** signature = static_cast<std::uint32_t>(value);
  } else {
    list.*std::get<Integer>(counter.member) = value;
  }
}

// The number of values that the counters tell; nothing when they tell more than a list may have.
std::optional<std::size_t> ValueCount(const ProfileDataList& list) {
  const std::int64_t values =
      std::int64_t{std::max(list.NumOfSamples, 0)} * std::max(list.NumOfColors, 0);
  if (values > kMostValues) return std::nullopt;
  return static_cast<std::size_t>(values);
}

bool IsWhole(const ProfileDataList& list) {
  const std::optional<std::size_t> values = ValueCount(list);
  return values && (*values == 0 || list.DataList != nullptr);
}

bool IsDotSize(int size) {
  return size >= 0 && size < static_cast<int>(std::size(element::kDotSizes));
}

template <class Value>
void Release(Value*& array) {
  delete[] array;
  array = nullptr;
}

bool ReadCounters(const AXMLTreeNode& parent, ProfileDataList& list) {
  for (const Counter& counter : kCounters) {
    std::int32_t value = 0;
    if (!element::ReadInteger(parent, counter.name, value)) return false;
    Set(list, counter, value);
  }
  return true;
}

bool ReadValues(const AXMLTreeNode& parent, ProfileDataList& list) {
  const AXMLTreeNode child = parent.GetChild(element::kDataList);
  const std::optional<std::size_t> count = ValueCount(list);
  if (!child || !count) return false;
  std::unique_ptr<double[]> values;
  if (*count > 0) values.reset(new double[*count]());
  std::string room;
  const std::string_view text = child.ViewValue(room);
  if (!vkcl::ReadHex(text, values.get(), *count * sizeof(double))) return false;
  delete[] list.DataList;
  list.DataList = values.release();
  return true;
}

}  // namespace

int VSDProfileHandler::WriteProfileList(AXMLTreeNode& parent, const ProfileDataList& list) {
  for (const Counter& counter : kCounters) {
    if (!parent.AddChild(counter.name, vkcl::IntegerText(Get(list, counter)))) return 0;
  }
  const std::size_t bytes = ValueCount(list).value_or(0) * sizeof(double);
  return parent.AddChild(element::kDataList, vkcl::HexText(list.DataList, bytes)) ? 1 : 0;
}

int VSDProfileHandler::ReadProfileList(AXMLTreeNode& parent, ProfileDataList& list) {
  const std::int32_t samples = list.NumOfSamples;
  const std::int32_t colors = list.NumOfColors;
  const bool read =
      vkcl::Guarded([&] { return ReadCounters(parent, list) && ReadValues(parent, list); });
  // Arrays of another shape than the counters tell would be read past their end.
  if (list.NumOfSamples != samples) Release(list.PerSample);
  const bool reshaped = list.NumOfSamples != samples || list.NumOfColors != colors;
  if (!read && reshaped) Release(list.DataList);
  return read ? 1 : 0;
}

// The container of that name, which is appended when it is missing.
AXMLTreeNode VSDProfileHandler::Container(const char* name) {
  AXMLTreeNode root = Root();
  const AXMLTreeNode container = root.GetChild(name);
  return container ? container : root.AddChild(name, "");
}

int VSDProfileHandler::WriteBySize(const char* container, int size, const ProfileDataList& list) {
  if (!IsDotSize(size) || !IsWhole(list)) return 0;
  return vkcl::Guarded([&] {
    AXMLTreeNode parent = Container(container).AddChild(element::kDotSizes[size], "");
    if (!parent || WriteProfileList(parent, list) == 0) return 0;
    modified_ = true;
    return 1;
  });
}

int VSDProfileHandler::ReadBySize(const char* container, int size, ProfileDataList& list) {
  if (!IsDotSize(size)) return 0;
  return vkcl::Guarded([&] {
    AXMLTreeNode parent = Root().GetChild(container).GetChild(element::kDotSizes[size]);
    return parent ? ReadProfileList(parent, list) : 0;
  });
}

int VSDProfileHandler::WriteVerify(const char* container, const ProfileDataList& list) {
  if (!IsWhole(list)) return 0;
  return vkcl::Guarded([&] {
    AXMLTreeNode parent = Container(container);
    if (!parent || WriteProfileList(parent, list) == 0) return 0;
    modified_ = true;
    return 1;
  });
}

int VSDProfileHandler::ReadVerify(const char* container, ProfileDataList& list) {
  return vkcl::Guarded([&] {
    AXMLTreeNode parent = Root().GetChild(container);
    return parent ? ReadProfileList(parent, list) : 0;
  });
}

int VSDProfileHandler::WriteVSDReferenceData(int size, const ProfileDataList& list) {
  return WriteBySize(element::kReferenceData, size, list);
}

int VSDProfileHandler::WriteVSDMeasurementData(int size, const ProfileDataList& list) {
  return WriteBySize(element::kMeasurementData, size, list);
}

int VSDProfileHandler::WriteVSDInvertedData(int size, const ProfileDataList& list) {
  return WriteBySize(element::kInvertedData, size, list);
}

int VSDProfileHandler::ReadVSDReferenceData(int size, ProfileDataList& list) {
  return ReadBySize(element::kReferenceData, size, list);
}

int VSDProfileHandler::ReadVSDMeasurementData(int size, ProfileDataList& list) {
  return ReadBySize(element::kMeasurementData, size, list);
}

int VSDProfileHandler::ReadVSDInvertedData(int size, ProfileDataList& list) {
  return ReadBySize(element::kInvertedData, size, list);
}

int VSDProfileHandler::WriteVerifyReferenceData(const ProfileDataList& list) {
  return WriteVerify(element::kReferenceDataVerify, list);
}

int VSDProfileHandler::WriteVerifyMeasurementData(const ProfileDataList& list) {
  return WriteVerify(element::kMeasurementDataVerify, list);
}

int VSDProfileHandler::ReadVerifyReferenceData(ProfileDataList& list) {
  return ReadVerify(element::kReferenceDataVerify, list);
}

int VSDProfileHandler::ReadVerifyMeasurementData(ProfileDataList& list) {
  return ReadVerify(element::kMeasurementDataVerify, list);
}
