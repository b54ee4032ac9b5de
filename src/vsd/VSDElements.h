// What more than one source file knows of the document's elements.
#pragma once

#include <cstdint>
#include <string>

#include "platform/axml/AXMLTree.h"
#include "platform/plinth/NumberText.h"

namespace vkcl::vsd {

/// Reads the integer in the first child of that name; false, and `value` as it was, when there is
/// no such child.
inline bool ReadInteger(const AXMLTreeNode& parent, const char* name, std::int32_t& value) {
  const AXMLTreeNode child = parent.GetChild(name);
  if (!child) return false;
  std::string room;
  value = IntegerOf(child.ViewValue(room));
  return true;
}

inline constexpr const char* kRoot = "VK_VSD_PROFILE";
inline constexpr const char* kColorParam = "VK_VSD_COLORPARAM";
inline constexpr const char* kReferenceData = "ReferenceData";
inline constexpr const char* kMeasurementData = "MeasurementData";
inline constexpr const char* kInvertedData = "InvertedData";
inline constexpr const char* kReferenceDataVerify = "ReferenceDataVerify";
inline constexpr const char* kMeasurementDataVerify = "MeasurementDataVerify";

/// Dot sizes 0, 1 and 2.
inline constexpr const char* kDotSizes[] = {"Small", "Medium", "Large"};

inline constexpr const char* kNumOfSamples = "NumOfSamples";
inline constexpr const char* kNumOfColors = "NumOfColors";
inline constexpr const char* kMeasured = "Measured";
inline constexpr const char* kDataList = "DataList";

}  // namespace vkcl::vsd
