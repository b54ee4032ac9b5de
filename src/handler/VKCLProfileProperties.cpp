#include "handler/VKCLProfileProperties.h"

#include <cstring>
#include <memory>
#include <utility>

#include "platform/Guarded.h"
#include "platform/OwnedText.h"

namespace {

// What a copy holds for itself, and is made of memory that may be short: before the copy changes.
struct OwnParts {
  explicit OwnParts(const VKCLProfileProperties& from)
      : options(from.options), chromaAdjust(from.chromaAdjust) {
    const VKSpotSingleInkLimit& spot = from.spotInkLimit;
    if (spot.name != nullptr) name = vkcl::OwnedText(spot.name);
    if (spot.limits != nullptr && spot.count >= 0) {
      const auto count = static_cast<std::size_t>(spot.count);
      limits.reset(new double[count]);
      std::memcpy(limits.get(), spot.limits, count * sizeof(double));
    }
  }

  void MoveInto(VKCLProfileProperties& to, const VKSpotSingleInkLimit& spot) {
    to.options = std::move(options);
    to.chromaAdjust = std::move(chromaAdjust);
    delete[] to.spotInkLimit.name;
    delete[] to.spotInkLimit.limits;
    to.spotInkLimit = spot;
    to.spotInkLimit.name = name.release();
    to.spotInkLimit.limits = limits.release();
  }

  VKCLProfileOptions options;
  AString chromaAdjust;
  std::unique_ptr<char[]> name;
  std::unique_ptr<double[]> limits;
};

// The members whose own types see to a shortage of memory: they leave out what they cannot hold.
void CopyRest(VKCLProfileProperties& to, const VKCLProfileProperties& from) {
  to.singleInkLimit = from.singleInkLimit;
  to.multiInkLimit = from.multiInkLimit;
  to.split = from.split;
  to.dither = from.dither;
  to.colorParam = from.colorParam;
  to.compatibility = from.compatibility;
  to.linReference = from.linReference;
  to.linMeasurement = from.linMeasurement;
  to.gbReference = from.gbReference;
  to.gbMeasurement = from.gbMeasurement;
  to.charReference = from.charReference;
  to.charMeasurement = from.charMeasurement;
  to.vsdParam = from.vsdParam;
  to.hasChromaAdjust = from.hasChromaAdjust;
  to.extraParam = from.extraParam;
}

}  // namespace

VKCLProfileProperties::VKCLProfileProperties(const VKCLProfileProperties& other) noexcept {
  *this = other;
}

VKCLProfileProperties& VKCLProfileProperties::operator=(
    const VKCLProfileProperties& other) noexcept {
  if (this == &other) return *this;
  vkcl::Guarded([&] {
    OwnParts parts(other);
    CopyRest(*this, other);
    parts.MoveInto(*this, other.spotInkLimit);
    return true;
  });
  return *this;
}
