// What a caller sees of the library's objects, as text, so that two moments can be compared.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

#include "handler/VKCLProfileHandler.h"
#include "platform/plinth/AStringArray.h"
#include "vsd/VSDProfileHandler.h"

namespace vkcl::testing {

/// The bytes of `count` values, and whether there are any at all.
template <class Value>
std::string ShowArray(const Value* values, std::int64_t count) {
  if (values == nullptr) return "-";
  return "=" + std::string(reinterpret_cast<const char*>(values),
                           static_cast<std::size_t>(count < 0 ? 0 : count) * sizeof(Value));
}

/// Of a record that is its own image.
template <class Record>
std::string Show(const Record& record) {
  static_assert(std::is_trivially_copyable_v<Record>);
  return ShowArray(&record, 1);
}

std::string Show(const AString& text);
std::string Show(const AFilePath& path);
std::string Show(const AStringArray& names);
std::string Show(const ProfileDataList& list);
std::string Show(const SplitParam& split);
std::string Show(const VKDitherParam& dither);
std::string Show(const VKSpotSingleInkLimit& limits);
/// The links as they serialise.
std::string Show(const VKSpotLinDLParam& links);
std::string Show(const VKPrivateTag& tag);
std::string Show(const VKCLProfileOptions& options);
std::string Show(const VKCLProfileProperties& properties);
/// Header, but for its date, and table.
std::string Show(const VKCLProfile& profile);
/// A document as the file that it would be saved as.
std::string Show(AXMLTree& tree);

}  // namespace vkcl::testing
