// Where the dot sizes start, the scale of the large dot, and the ink limits.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/Bytes.h"  // IWYU pragma: keep: it asserts the order of the bytes
#include "platform/Guarded.h"
#include "platform/OwnedText.h"
#include "platform/plinth/HexText.h"
#include "platform/plinth/NumberText.h"
#include "vsd/VSDElements.h"
#include "vsd/VSDProfileHandler.h"

namespace {

namespace element = vkcl::vsd;

constexpr const char* kMediumStart = "MediumStart";
constexpr const char* kLargeStart = "LargeStart";
constexpr const char* kLargeDotScale = "LargeDotScale";
constexpr const char* kSingleLimits = "VK_VSD_SINGLE_INKLIMITS";
constexpr const char* kSpotLimits = "VK_VSD_SPOT_SINGLE_INKLIMITS";
constexpr const char* kChannels = "Num_of_Channels";
constexpr const char* kSpotName = "ChannelS";
constexpr const char* kValues = "Values";

constexpr std::size_t kLongestValues = 255;  // characters
constexpr int kDecimals = 2;
constexpr std::int32_t kMostSpotLimits = 65536;
constexpr int kAllRoom = INT32_MAX;

bool AddNumbers(AXMLTreeNode& parent, const double* values, int count) {
  const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(double);
  return static_cast<bool>(parent.AddChild(element::kDataList, vkcl::HexText(values, bytes)));
}

// Fills the front of `values` with what the child DataList has of `count` values. False when there
// is no such child, or it holds other text than digits; nothing is filled then.
bool ReadNumbers(const AXMLTreeNode& parent, double* values, int count) {
  const AXMLTreeNode child = parent.GetChild(element::kDataList);
  if (!child) return false;
  if (values == nullptr) return true;
  std::string room;
  const std::string_view text = child.ViewValue(room);
  const std::size_t wanted = static_cast<std::size_t>(std::max(count, 0)) * sizeof(double);
  std::vector<char> bytes(std::min(wanted, text.size() / 2 + 1));
  const auto read = vkcl::ReadHex(text, bytes.data(), bytes.size());
  if (!read) return false;
  std::copy_n(bytes.data(), *read, reinterpret_cast<char*>(values));
  return true;
}

// The limits of the record stand on multiples of 4, so no pointer to one is taken: they are copied
// out and back.
constexpr std::int32_t kSlots = std::extent_v<decltype(VKSingleInkLimitWithLinRef::limits)>;
using Slots = std::array<double, kSlots>;

Slots GetSlots(const VKSingleInkLimitWithLinRef& record) {
  Slots slots = {};
  for (std::size_t i = 0; i < slots.size(); ++i) slots[i] = record.limits[i];
  return slots;
}

void SetSlots(VKSingleInkLimitWithLinRef& record, const Slots& slots) {
  for (std::size_t i = 0; i < slots.size(); ++i) record.limits[i] = slots[i];
}

// As many whole values as fit, with ";" between them.
std::string JoinLimits(const double* limits, std::int32_t count) {
  std::string text;
  for (std::int32_t i = 0; i < count; ++i) {
    std::string value = i > 0 ? ";" : "";
    vkcl::AppendFixed(value, limits[i], kDecimals);
    if (text.size() + value.size() > kLongestValues) break;
    text += value;
  }
  return text;
}

// Reads values from the right: the last one belongs to the last of `count` channels. Those that
// belong to no slot of the record are dropped.
void SplitLimits(std::string_view text, std::int32_t count, std::span<double> slots) {
  if (count <= 0) return;
  const auto store = [&](std::int32_t channel, std::string_view value) {
    const auto slot = static_cast<std::size_t>(channel);
    if (slot < slots.size()) slots[slot] = vkcl::NumberOf(value);
  };
  for (std::int32_t channel = count - 1; channel >= 0; --channel) {
    const std::size_t separator = text.rfind(';');
    if (separator == std::string_view::npos || separator == 0) {
      store(channel, text);
      return;
    }
    store(channel, text.substr(separator + 1));
    text = text.substr(0, separator);
  }
}

// A read that fails leaves no count above the array that is there.
bool ReadSpot(const AXMLTreeNode& parent, VKSpotSingleInkLimit& limits) {
  const std::int32_t held = limits.limits != nullptr ? limits.count : 0;
  std::int32_t count = 0;
  if (!element::ReadInteger(parent, kChannels, count)) return false;
  limits.count = std::min(count, held);
  const AXMLTreeNode name = parent.GetChild(kSpotName);
  if (!name || count > kMostSpotLimits) return false;
  std::string room;
  // The tab is what readers of spot names expect.
  limits.name = vkcl::OwnedText(name.ViewValue(room), "\t").release();
  const AXMLTreeNode values = parent.GetChild(kValues);
  if (!values) return false;
  const auto slots = static_cast<std::size_t>(std::max(count, 0));
  std::unique_ptr<double[]> fresh(new double[slots]());
  SplitLimits(values.ViewValue(room), count, {fresh.get(), slots});
  limits.limits = fresh.release();
  limits.count = count;
  limits.size = static_cast<std::int32_t>(12 + std::strlen(limits.name) + slots * sizeof(double));
  return true;
}

}  // namespace

int VSDProfileHandler::WriteMediumAndLargeStart(double* mediumStart, double* largeStart,
                                                int count) {
  if (count < 0 || (count > 0 && (mediumStart == nullptr || largeStart == nullptr))) return 0;
  return vkcl::Guarded([&] {
    AXMLTreeNode root = Root();
    AXMLTreeNode medium = root.AddChild(kMediumStart, "");
    if (!medium.AddChild(element::kNumOfColors, vkcl::IntegerText(count))) return 0;
    if (!AddNumbers(medium, mediumStart, count)) return 0;
    // Without a count of its own, deliberately: that of the medium dots holds.
    AXMLTreeNode large = root.AddChild(kLargeStart, "");
    return AddNumbers(large, largeStart, count) ? 1 : 0;
  });
}

int VSDProfileHandler::ReadMediumAndLargeStart(double* mediumStart, double* largeStart,
                                               int& count) {
  return ReadMediumAndLargeStart(mediumStart, largeStart, kAllRoom, count);
}

int VSDProfileHandler::ReadMediumAndLargeStart(double* mediumStart, double* largeStart, int room,
                                               int& count) {
  return vkcl::Guarded([&] {
    const AXMLTreeNode medium = Root().GetChild(kMediumStart);
    if (!element::ReadInteger(medium, element::kNumOfColors, count)) return 0;
    const int values = std::min(count, room);
    if (!ReadNumbers(medium, mediumStart, values)) return 0;
    return ReadNumbers(Root().GetChild(kLargeStart), largeStart, values) ? 1 : 0;
  });
}

int VSDProfileHandler::WriteLargeDotScale(double* scale, int count) {
  if (count < 0 || (count > 0 && scale == nullptr)) return 0;
  return vkcl::Guarded([&] {
    AXMLTreeNode parent = Root().AddChild(kLargeDotScale, "");
    if (!parent.AddChild(element::kNumOfColors, vkcl::IntegerText(count))) return 0;
    return AddNumbers(parent, scale, count) ? 1 : 0;
  });
}

int VSDProfileHandler::ReadLargeDotScale(double* scale, int& count) {
  return ReadLargeDotScale(scale, kAllRoom, count);
}

int VSDProfileHandler::ReadLargeDotScale(double* scale, int room, int& count) {
  return vkcl::Guarded([&] {
    const AXMLTreeNode parent = Root().GetChild(kLargeDotScale);
    if (!element::ReadInteger(parent, element::kNumOfColors, count)) return 0;
    return ReadNumbers(parent, scale, std::min(count, room)) ? 1 : 0;
  });
}

int VSDProfileHandler::WriteVKSingleInkLimits(const VKSingleInkLimitWithLinRef& limits) {
  if (limits.count < 0 || limits.count > kSlots) return 0;
  return vkcl::Guarded([&] {
    AXMLTreeNode parent = Root().AddChild(kSingleLimits, "");
    if (!parent.AddChild(kChannels, vkcl::IntegerText(limits.count))) return 0;
    if (!parent.AddChild(kValues, JoinLimits(GetSlots(limits).data(), limits.count))) return 0;
    modified_ = true;
    return 1;
  });
}

int VSDProfileHandler::ReadVKSingleInkLimits(VKSingleInkLimitWithLinRef& limits) {
  return vkcl::Guarded([&] {
    const AXMLTreeNode parent = Root().GetChild(kSingleLimits);
    if (!element::ReadInteger(parent, kChannels, limits.count)) return 0;
    const AXMLTreeNode values = parent.GetChild(kValues);
    if (!values) return 0;
    std::string room;
    Slots slots = GetSlots(limits);
    SplitLimits(values.ViewValue(room), limits.count, slots);
    SetSlots(limits, slots);
    return 1;
  });
}

int VSDProfileHandler::WriteVKSpotSIL(const VKSpotSingleInkLimit& limits) {
  if (limits.count < 0 || (limits.count > 0 && limits.limits == nullptr)) return 0;
  return vkcl::Guarded([&] {
    AXMLTreeNode parent = Root().AddChild(kSpotLimits, "");
    if (!parent.AddChild(kChannels, vkcl::IntegerText(limits.count))) return 0;
    if (!parent.AddChild(kSpotName, limits.name)) return 0;
    if (!parent.AddChild(kValues, JoinLimits(limits.limits, limits.count))) return 0;
    modified_ = true;
    return 1;
  });
}

int VSDProfileHandler::ReadVKSpotSIL(VKSpotSingleInkLimit& limits) {
  return vkcl::Guarded([&] { return ReadSpot(Root().GetChild(kSpotLimits), limits) ? 1 : 0; });
}
