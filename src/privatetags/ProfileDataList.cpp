#include "privatetags/ProfileDataList.h"

#include <cstring>
#include <new>

#include "platform/Shortage.h"

namespace {

// Number of values that the counters announce; 0 when one of them is negative.
std::size_t CountValues(std::int32_t samples, std::int32_t colors) {
  if (samples < 0 || colors < 0) return 0;
  return static_cast<std::size_t>(samples) * static_cast<std::size_t>(colors);
}

constexpr std::size_t kMostValues = UINT32_MAX / sizeof(double);  // what GetDataSize can tell

// A zeroed array; null when it is too large or memory is short.
template <class Type>
Type* NewArray(std::size_t count) {
  return count <= kMostValues ? vkcl::NotedIfNull(new (std::nothrow) Type[count]()) : nullptr;
}

template <class Type>
Type* CopyArray(const Type* source, std::size_t count) {
  if (source == nullptr) return nullptr;
  Type* copy = NewArray<Type>(count);
  if (copy != nullptr) std::memcpy(copy, source, count * sizeof(Type));
  return copy;
}

}  // namespace

ProfileDataList::ProfileDataList(const ProfileDataList& other) { *this = other; }

ProfileDataList& ProfileDataList::operator=(const ProfileDataList& other) {
  if (this == &other) return *this;
  Clear();
  DataFormat = other.DataFormat;
  NumOfSamples = other.NumOfSamples;
  ColorMode = other.ColorMode;
  NumOfColors = other.NumOfColors;
  Measured = other.Measured;
  Extra1 = other.Extra1;
  Extra2 = other.Extra2;
  DataList = CopyArray(other.DataList, CountValues(NumOfSamples, NumOfColors));
  PerSample = CopyArray(other.PerSample, CountValues(NumOfSamples, 1));
  return *this;
}

ProfileDataList::~ProfileDataList() { Clear(); }

void ProfileDataList::Clear() {
  delete[] DataList;
  delete[] PerSample;
  DataList = nullptr;
  PerSample = nullptr;
  DataFormat = 0;
  NumOfSamples = 0;
  ColorMode = 0;
  NumOfColors = 0;
  Measured = 0;
}

std::uint32_t ProfileDataList::GetDataSize() const {
  if (DataList == nullptr) return 0;
  return static_cast<std::uint32_t>(NumOfColors) * static_cast<std::uint32_t>(NumOfSamples) * 8u;
}

int ProfileDataList::RefreshList(int samples) {
  if (samples < 0 || NumOfColors < 0) return 0;
  double* values = NewArray<double>(CountValues(samples, NumOfColors));
  if (values == nullptr) return 0;
  delete[] DataList;
  delete[] PerSample;
  DataList = values;
  PerSample = nullptr;
  NumOfSamples = samples;
  Measured = 0;
  return 1;
}

bool ProfileDataList::operator==(const ProfileDataList& other) const {
  if (this == &other) return true;
  if (ColorMode != other.ColorMode || DataFormat != other.DataFormat ||
      NumOfColors != other.NumOfColors || NumOfSamples != other.NumOfSamples) {
    return false;
  }
  const std::size_t values = CountValues(NumOfSamples, NumOfColors);
  if (DataList == nullptr || values == 0) return true;
  if (other.DataList == nullptr) return false;
  return std::memcmp(DataList, other.DataList, values * sizeof(double)) == 0;
}
