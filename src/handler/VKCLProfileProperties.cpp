#include "handler/VKCLProfileProperties.h"

#include <cstring>
#include <memory>

namespace {

// Gives the copy arrays of its own.
void CopySpotLimit(VKSpotSingleInkLimit& to, const VKSpotSingleInkLimit& from) {
  std::unique_ptr<char[]> name;
  std::unique_ptr<double[]> limits;
  if (from.name != nullptr) {
    const std::size_t size = std::strlen(from.name) + 1;
    name.reset(new char[size]);
    std::memcpy(name.get(), from.name, size);
  }
  if (from.limits != nullptr && from.count >= 0) {
    const auto count = static_cast<std::size_t>(from.count);
    limits.reset(new double[count]);
    std::memcpy(limits.get(), from.limits, count * sizeof(double));
  }
  delete[] to.name;
  delete[] to.limits;
  to = from;
  to.name = name.release();
  to.limits = limits.release();
}

}  // namespace

VKCLProfileProperties::VKCLProfileProperties(const VKCLProfileProperties& other) { *this = other; }

VKCLProfileProperties& VKCLProfileProperties::operator=(const VKCLProfileProperties& other) {
  if (this == &other) return *this;
  singleInkLimit = other.singleInkLimit;
  multiInkLimit = other.multiInkLimit;
  split = other.split;
  dither = other.dither;
  colorParam = other.colorParam;
  compatibility = other.compatibility;
  linReference = other.linReference;
  linMeasurement = other.linMeasurement;
  gbReference = other.gbReference;
  gbMeasurement = other.gbMeasurement;
  charReference = other.charReference;
  charMeasurement = other.charMeasurement;
  options = other.options;
  CopySpotLimit(spotInkLimit, other.spotInkLimit);
  vsdParam = other.vsdParam;
  hasChromaAdjust = other.hasChromaAdjust;
  chromaAdjust = other.chromaAdjust;
  extraParam = other.extraParam;
  return *this;
}
