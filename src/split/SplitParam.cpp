#include "split/SplitParam.h"

#include <cstring>
#include <new>

#include "platform/Shortage.h"

namespace {

constexpr std::int32_t kHeadSize = 20;

// Length of the whole set as its size field holds it; 0 when that field cannot.
std::int32_t SetSize(long version, int count) {
  const std::int64_t size =
      kHeadSize + std::int64_t{count} * static_cast<std::int64_t>(SplitParam::RecordSize(version));
  return count >= 0 && size <= INT32_MAX ? static_cast<std::int32_t>(size) : 0;
}

void CopyRecords(SplitTypeBase* to, const SplitTypeBase* from, long version, int count) {
  const std::size_t bytes = static_cast<std::size_t>(count) * SplitParam::RecordSize(version);
  if (bytes > 0) std::memcpy(static_cast<void*>(to), static_cast<const void*>(from), bytes);
}

// Replaces the records of a set by ones of type To, each built from the From at its place.
template <class From, class To>
void Convert(SplitParam& set, long toVersion) {
  auto* converted = static_cast<To*>(SplitParam::NewRecords(toVersion, set.count));
  if (converted == nullptr) return;
  const auto* records = static_cast<const From*>(set.splits);
  for (std::int32_t i = 0; i < set.count; ++i) converted[i] = To(records[i]);
  SplitParam::DeleteRecords(set.version, set.splits);
  set.splits = converted;
  set.version = static_cast<std::int32_t>(toVersion);
  set.size = SetSize(toVersion, set.count);
}

}  // namespace

std::size_t SplitParam::RecordSize(long version) {
  switch (version) {
    case 2: return sizeof(SplitTypeV2);
    case 3: return sizeof(SplitTypeV3);
    case 4: return sizeof(SplitTypeV4);
    default: return 0;
  }
}

SplitTypeBase* SplitParam::NewRecords(long version, int count) {
  if (SetSize(version, count) == 0) return nullptr;
  const auto records = static_cast<std::size_t>(count);
  switch (version) {
    case 2: return vkcl::NotedIfNull(new (std::nothrow) SplitTypeV2[records]);
    case 3: return vkcl::NotedIfNull(new (std::nothrow) SplitTypeV3[records]);
    case 4: return vkcl::NotedIfNull(new (std::nothrow) SplitTypeV4[records]);
    default: return nullptr;
  }
}

void SplitParam::DeleteRecords(long version, SplitTypeBase* records) {
  switch (version) {
    case 2: delete[] static_cast<SplitTypeV2*>(records); break;
    case 3: delete[] static_cast<SplitTypeV3*>(records); break;
    case 4: delete[] static_cast<SplitTypeV4*>(records); break;
    default: break;
  }
}

SplitParam::~SplitParam() { DeleteRecords(version, splits); }

SplitParam::SplitParam(const SplitParam& other) { *this = other; }

SplitParam& SplitParam::operator=(const SplitParam& other) {
  if (this == &other) return *this;
  DeleteRecords(version, splits);
  splits = nullptr;
  version = other.version;
  count = other.count;
  if (other.splits == nullptr) {
    size = kHeadSize;
    return *this;
  }
  splits = NewRecords(version, count);
  if (splits == nullptr) return *this;
  CopyRecords(splits, other.splits, version, count);
  size = SetSize(version, count);
  return *this;
}

int SplitParam::InitSplitParam(long newVersion, int newCount, SplitTypeBase* records) {
  if (newCount < 0) return 0;
  SplitTypeBase* copies = nullptr;
  if (RecordSize(newVersion) != 0) {  // copied before the release: the records may be our own
    if (records == nullptr && newCount > 0) return 0;
    copies = NewRecords(newVersion, newCount);
    if (copies == nullptr) return 0;
    CopyRecords(copies, records, newVersion, newCount);
  }
  DeleteRecords(version, splits);
  splits = copies;
  version = static_cast<std::int32_t>(newVersion);
  count = newCount;
  if (copies == nullptr) return 0;
  size = SetSize(newVersion, newCount);
  return 1;
}

void SplitParam::ConvertToV3() {
  if (splits != nullptr && version == 2) Convert<SplitTypeV2, SplitTypeV3>(*this, 3);
}

void SplitParam::ConvertToV4() {
  if (splits == nullptr) return;
  if (version == 3) Convert<SplitTypeV3, SplitTypeV4>(*this, 4);
  if (version == 2) Convert<SplitTypeV2, SplitTypeV4>(*this, 4);
}

SplitTypeV2* NewSplitTypeV2Array(int count) {
  return static_cast<SplitTypeV2*>(SplitParam::NewRecords(2, count));
}

void FreeSplitTypeV2Array(SplitTypeV2* array) {
  if (array == nullptr) delete[] array;  // NOLINT(readability-delete-null-pointer): deliberate
}
