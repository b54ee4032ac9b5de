// Any text as a characterisation target.
#include "Fuzz.h"
#include "handler/TargetParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ProfileDataList device;
  ProfileDataList measurement;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto rule = vkcl::ParseTarget(text, device, measurement);
  vkcl::fuzz::Demand(*vkcl::TargetRuleText(rule) != '\0', "every rule has words");
  vkcl::fuzz::Demand(device.NumOfSamples >= 0 && measurement.NumOfColors >= 0,
                     "counts are not negative");
  return 0;
}
