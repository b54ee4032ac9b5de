#include "privatetags/InkLimitRecords.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>

#include "platform/Guarded.h"
#include "platform/OwnedText.h"
#include "platform/profiler/TesselColorProfiler.h"

namespace {

// The named ink sets whose version 1 limits can be brought to version 2.
constexpr int kConvertibleModes[] = {1, 2, 64, 256, 1024, 4096, 8192};

// The limits 7 to 13 of version 2 are squares of these limits of version 1, in this order. That
// the last three do not ascend is part of the format.
constexpr int kSquaredSources[] = {4, 5, 6, 9, 8, 7, 10};
constexpr int kFirstSquared = 7;
constexpr int kConvertedLimits = 14;

double BelowSixty(double limit) { return limit >= 60.0 ? limit : limit * limit / 60.0; }

// Half is added and the fraction dropped, also below zero. An integer has no negative zero.
double Rounded(double limit) { return std::trunc(limit + 0.5) + 0.0; }

std::string_view ViewOf(const CString& text) {
  return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

}  // namespace

int VKMultiInklimit::ConvertToCurrentVersion(int colorMode) {
  if (version >= 2) return 1;
  const auto* end = std::end(kConvertibleModes);
  return std::find(std::begin(kConvertibleModes), end, colorMode) != end ? ConvertCMYKToVersionTwo()
                                                                         : 0;
}

int VKMultiInklimit::ConvertCMYKToVersionTwo() {
  const VKMultiInklimit source = *this;
  limits[0] = source.limits[2];
  limits[2] = source.limits[0];
  limits[4] = BelowSixty(source.limits[4]);
  limits[5] = BelowSixty(source.limits[9]);
  limits[6] = BelowSixty(source.limits[10]);
  version = 2;
  int target = kFirstSquared;
  for (const int from : kSquaredSources) {
    limits[target++] = source.limits[from] * source.limits[from] / 100.0;
  }
  for (int i = 0; i < kConvertedLimits; ++i) limits[i] = Rounded(limits[i]);
  return 1;
}

VKSpotSingleInkLimit::~VKSpotSingleInkLimit() {
  delete[] name;
  delete[] limits;
}

void VKSpotSingleInkLimit::SetData(int newCount, const CString& newName, double* values) {
  const int kept = std::max(newCount, 0);
  std::unique_ptr<char[]> nameCopy;
  std::unique_ptr<double[]> limitsCopy;
  const bool copied = vkcl::Guarded([&] {  // before the release: the arguments may be our own
    if (kept == 0) return true;
    const auto values64 = static_cast<std::size_t>(kept);
    nameCopy = vkcl::OwnedText(ViewOf(newName));
    limitsCopy.reset(new double[values64]());
    if (values != nullptr) std::memcpy(limitsCopy.get(), values, values64 * sizeof(double));
    return true;
  });
  const std::int64_t newSize = std::int64_t{newName.GetLength()} + 8 * std::int64_t{kept} + 12;
  if (!copied || newSize > INT32_MAX) return;
  delete[] name;
  delete[] limits;
  name = nameCopy.release();
  limits = limitsCopy.release();
  count = kept;
  size = static_cast<std::int32_t>(newSize);
}

VKSpotLinDLParam::~VKSpotLinDLParam() { Release(); }

void VKSpotLinDLParam::Release() {
  if (links != nullptr) {
    for (std::int32_t i = 0; i < count; ++i) {
      if (links[i] != nullptr) CLFreeCLLink8Ref(links[i]);
    }
  }
  delete[] name;
  delete[] linkSizes;
  delete[] links;
  name = nullptr;
  linkSizes = nullptr;
  links = nullptr;
  nameLength = 0;
  count = 0;
}

void VKSpotLinDLParam::SetData(int newCount, const CString& newName) {
  vkcl::Guarded([&] {
    const auto kept = static_cast<std::size_t>(std::max(newCount, 0));
    std::unique_ptr<char[]> nameCopy;
    std::unique_ptr<std::int32_t[]> sizes;
    std::unique_ptr<void*[]> handles;
    if (kept > 0) {
      nameCopy = vkcl::OwnedText(ViewOf(newName));
      sizes.reset(new std::int32_t[kept]());
      handles.reset(new void*[kept]());
    }
    const std::int32_t length = kept > 0 ? newName.GetLength() : 0;
    for (std::size_t i = 0; i < kept; ++i) {
      handles[i] = CLNewCLLink8Ref();
      if (handles[i] != nullptr) continue;
      while (i > 0) CLFreeCLLink8Ref(handles[--i]);
      return false;
    }
    Release();
    name = nameCopy.release();
    linkSizes = sizes.release();
    links = handles.release();
    count = static_cast<std::int32_t>(kept);
    nameLength = length;
    size = 0;
    return true;
  });
}
