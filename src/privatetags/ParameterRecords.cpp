#include "privatetags/ParameterRecords.h"

#include <cstring>
#include <memory>
#include <new>

#include "platform/Shortage.h"

namespace {

constexpr std::int32_t kTableType = 1;
constexpr std::int32_t kHeadSize = 16;
constexpr std::size_t kAssignedTableBytes = 8;

using Table = std::unique_ptr<DitherTypeV1>;

// A new table whose first `bytes` bytes are those of `source`; null when memory is short.
Table CopyTable(const DitherTypeV1& source, std::size_t bytes) {
  Table table(vkcl::NotedIfNull(new (std::nothrow) DitherTypeV1));
  if (table) {
    std::memcpy(static_cast<void*>(table.get()), static_cast<const void*>(&source), bytes);
  }
  return table;
}

}  // namespace

VKDitherParam::~VKDitherParam() { delete table; }

VKDitherParam::VKDitherParam(const VKDitherParam& other) { *this = other; }

VKDitherParam& VKDitherParam::operator=(const VKDitherParam& other) {
  if (this == &other) return *this;
  delete table;
  table = nullptr;
  type = other.type;
  size = kHeadSize;
  if (other.table == nullptr || other.type != kTableType) return *this;
  table = CopyTable(*other.table, kAssignedTableBytes).release();
  if (table != nullptr) size = kHeadSize + static_cast<std::int32_t>(kAssignedTableBytes);
  return *this;
}

int VKDitherParam::InitDitherParam(const int& newType, DitherTypeBase* source) {
  const int requested = newType;  // may be a reference to this record's own type
  Table replacement;
  if (requested == kTableType && source != nullptr) {
    replacement = CopyTable(*static_cast<DitherTypeV1*>(source), sizeof(DitherTypeV1));
  }
  delete table;
  table = replacement.release();
  type = requested;
  if (table == nullptr) return 0;
  size = kHeadSize + static_cast<std::int32_t>(sizeof(DitherTypeV1));
  return 1;
}
