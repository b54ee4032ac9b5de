// Any bytes as a VSD document: every reader, and what is written to it and saved is read again.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <iterator>

#include "Fuzz.h"
#include "platform/axml/AXMLTree.h"
#include "vsd/VSDProfileHandler.h"

using vkcl::fuzz::Demand;
using vkcl::fuzz::Digest;

namespace {

// What every reader gives, results and records, as digests.
class Reading {
 public:
  explicit Reading(VSDProfileHandler& document) {
    ReadLists(document);
    VKColorParam param;
    Add(document.ReadVKColorParam(param));
    Add(Digest(&param, sizeof param));
    double starts[64] = {};
    double scales[64] = {};
    int count = 0;
    Add(document.ReadMediumAndLargeStart(starts, scales, 64, count));
    Add(document.ReadLargeDotScale(scales, 64, count));
    Add(Digest(starts, sizeof starts, Digest(scales, sizeof scales)));
    Add(static_cast<std::uint64_t>(count));
    VKSingleInkLimitWithLinRef limits;
    Add(document.ReadVKSingleInkLimits(limits));
    Add(Digest(&limits, sizeof limits));
    ReadSpot(document);
    Add(document.IsComplete());
  }

  bool operator==(const Reading&) const = default;

 private:
  template <class Number>
  void Add(Number number) {
    told_.push_back(static_cast<std::uint64_t>(number));
  }

  void ReadLists(VSDProfileHandler& document) {
    ProfileDataList list;
    const auto add = [&](int result) {
      Add(result);
      Add(Digest(list));
    };
    for (const int size : {0, 1, 2}) {
      add(document.ReadVSDReferenceData(size, list));
      add(document.ReadVSDMeasurementData(size, list));
      add(document.ReadVSDInvertedData(size, list));
    }
    add(document.ReadVerifyReferenceData(list));
    add(document.ReadVerifyMeasurementData(list));
  }

  void ReadSpot(VSDProfileHandler& document) {
    VKSpotSingleInkLimit spot;
    Add(document.ReadVKSpotSIL(spot));
    Add(spot.count);
    if (spot.name != nullptr) Add(Digest(spot.name, std::strlen(spot.name)));
    if (spot.limits == nullptr) return;
    const auto count = static_cast<std::size_t>(std::max(spot.count, 0));
    Add(Digest(spot.limits, count * sizeof *spot.limits));
  }

  std::vector<std::uint64_t> told_;
};

void SetText(char (&field)[128], const std::uint8_t* data, std::size_t size) {
  const std::uint8_t* end = std::find(data, data + std::min<std::size_t>(size, 127), '\0');
  std::copy(data, end, field);
}

// What is written to each document.
struct Written {
  double scale[2] = {0.5, -1e300};
  VKColorParam param;
  ProfileDataList list;
  VKSingleInkLimitWithLinRef limits;

  Written(const std::uint8_t* data, std::size_t size) {
    SetText(param.Make, data, size);
    SetText(param.Model, data + size / 2, size - size / 2);
    param.MediaID = static_cast<std::int32_t>(size);
    param.PrintMode = -1;
    param.ResolutionX = 720.5f;
    for (std::size_t i = 0; i < std::size(param.DriverOption); ++i) {
      param.DriverOption[i] = static_cast<unsigned char>(i);
    }
    list.DataFormat = 0x4C616220;  // 'Lab '
    list.NumOfColors = 2;
    list.RefreshList(2);
    list.Measured = 1;
    const double values[] = {-0.0, 5e-324, NAN, std::bit_cast<double>(Digest(data, size))};
    std::copy(std::begin(values), std::end(values), list.DataList);
    limits.count = 3;
    limits.limits[0] = 95.25;
    limits.limits[2] = 7.5;
  }
};

// Readers take the first element of a name: what was not there is what was written.
struct Before {
  bool scale, param, list, limits;

  explicit Before(const AXMLTreeNode& root)
      : scale(root.GetChild("LargeDotScale")),
        param(root.GetChild("VK_VSD_COLORPARAM")),
        list(root.GetChild("ReferenceData").GetChild("Medium")),
        limits(root.GetChild("VK_VSD_SINGLE_INKLIMITS")) {}
};

void IsThere(VSDProfileHandler& document, const Written& written, const Before& before) {
  double scale[3] = {};
  int count = 0;
  if (!before.scale) {
    Demand(document.ReadLargeDotScale(scale, 3, count) == 1 && count == 2 &&
               std::equal(scale, scale + 2, written.scale),
           "the scale of the large dot is what was written");
  }
  VKColorParam param;
  if (!before.param) {
    Demand(document.ReadVKColorParam(param) == 1 &&
               std::memcmp(&param, &written.param, sizeof param) == 0,
           "the colour parameters are what was written");
  }
  ProfileDataList list;
  if (!before.list) {
    Demand(document.ReadVSDReferenceData(1, list) == 1 && Digest(list) == Digest(written.list),
           "a data list is what was written");
  }
  VKSingleInkLimitWithLinRef limits;
  if (!before.limits) {
    Demand(document.ReadVKSingleInkLimits(limits) == 1 &&
               std::memcmp(&limits, &written.limits, sizeof limits) == 0,
           "the ink limits are what was written");
  }
}

Before BeforeOf(const std::string& path) {
  AXMLTree tree("None");
  tree.LoadFromFile(AFilePath(path), 0);
  return Before(tree.GetRoot());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("sidecar.icc");
  vkcl::fuzz::WriteFile(path, data, size);
  VSDProfileHandler document(AFilePath(path), 1);
  const Reading first(document);
  if (document.IsValid() == 0) return 0;
  const Before before = BeforeOf(path);
  Written written(data, size);
  Demand(document.WriteLargeDotScale(written.scale, 2) == 1 &&
             document.WriteVKColorParam(written.param) == 1 &&
             document.WriteVSDReferenceData(1, written.list) == 1 &&
             document.WriteVKSingleInkLimits(written.limits) == 1,
         "a document can be written to");
  IsThere(document, written, before);
  const Reading unsaved(document);
  Demand(document.SaveToFile() == 1, "what was loaded can be saved");
  VSDProfileHandler again(AFilePath(path), 1);
  Demand(again.IsValid() == 1, "what was saved can be loaded");
  IsThere(again, written, before);
  Demand(Reading(again) == unsaved, "what was saved reads as before");
  return 0;
}
