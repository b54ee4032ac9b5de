// Any bytes as a VSD document: every reader, and what is written to it and saved is read again.
#include <cstring>

#include "Fuzz.h"
#include "vsd/VSDProfileHandler.h"

using vkcl::fuzz::Demand;

namespace {

void ReadAll(VSDProfileHandler& document) {
  ProfileDataList list;
  for (const int size : {0, 1, 2}) {
    document.ReadVSDReferenceData(size, list);
    document.ReadVSDMeasurementData(size, list);
    document.ReadVSDInvertedData(size, list);
  }
  document.ReadVerifyReferenceData(list);
  document.ReadVerifyMeasurementData(list);
  VKColorParam param;
  document.ReadVKColorParam(param);
  double starts[64];
  double scales[64];
  int count = 0;
  document.ReadMediumAndLargeStart(starts, scales, 64, count);
  document.ReadLargeDotScale(scales, 64, count);
  VKSingleInkLimitWithLinRef limits;
  document.ReadVKSingleInkLimits(limits);
  VKSpotSingleInkLimit spot;
  document.ReadVKSpotSIL(spot);
  document.IsComplete();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("sidecar.icc");
  vkcl::fuzz::WriteFile(path, data, size);
  {
    VSDProfileHandler document(AFilePath(path), 1);
    ReadAll(document);
    if (document.IsValid() == 0) return 0;
    double scale[2] = {0.5, -1e300};
    document.WriteLargeDotScale(scale, 2);
    VKColorParam param;
    std::memcpy(param.Make, data, size < 127 ? size : 127);
    if (document.WriteVKColorParam(param) == 0) return 0;
    Demand(document.SaveToFile() == 1, "what was loaded can be saved");
  }
  VSDProfileHandler again(AFilePath(path), 1);
  Demand(again.IsValid() == 1, "what was saved can be loaded");
  ReadAll(again);
  return 0;
}
