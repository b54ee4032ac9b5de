// The sidecar with the three dot sizes of a chart of 1,617 samples with 36 values, beside what
// pugixml alone needs to save and load a document of the same text.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "Inputs.h"
#include "platform/plinth/HexText.h"
#include "profile/icc.h"
#include "vsd/VSDProfileHandler.h"

namespace {

using vkcl::bench::Folder;

constexpr int kSamples = 1617;
constexpr int kColors = 36;
constexpr const char* kSizes[] = {"Small", "Medium", "Large"};

const Folder& TheFolder() {
  static const Folder folder;
  return folder;
}

ProfileDataList Measurements() { return vkcl::bench::List(icSignature("refl"), kColors, kSamples); }

void SidecarSaveAndLoad(benchmark::State& state) {
  const AFilePath path(TheFolder().File("paper.icc"));
  const ProfileDataList list = Measurements();
  for (auto _ : state) {
    VSDProfileHandler written(path, 0);
    for (int size = 0; size < 3; ++size) written.WriteVSDMeasurementData(size, list);
    if (written.SaveToFile() == 0) state.SkipWithError("not saved");
    VSDProfileHandler loaded(path, 1);
    for (int size = 0; size < 3; ++size) {
      ProfileDataList read;
      if (loaded.ReadVSDMeasurementData(size, read) == 0) state.SkipWithError("not read");
      benchmark::DoNotOptimize(read.DataList);
    }
  }
}
BENCHMARK(SidecarSaveAndLoad)->Unit(benchmark::kMicrosecond);

// The floor: the same elements with the same texts, which are given, and got as they stand.
void PugixmlSaveAndLoad(benchmark::State& state) {
  const std::string path = TheFolder().File("plain.xml");
  const ProfileDataList list = Measurements();
  const std::string digits = vkcl::HexText(list.DataList, sizeof(double) * kSamples * kColors);
  const std::string samples = std::to_string(kSamples);
  for (auto _ : state) {
    pugi::xml_document written;
    pugi::xml_node container =
        written.append_child("VK_VSD_PROFILE").append_child("MeasurementData");
    for (const char* size : kSizes) {
      pugi::xml_node node = container.append_child(size);
      const auto add = [&](const char* name, const std::string& text) {
        node.append_child(name).append_child(pugi::node_pcdata).set_value(text.c_str());
      };
      add("DataFormat", "1919248236");
      add("NumOfSamples", samples);
      add("ColorMode", "0");
      add("NumOfColors", "36");
      add("Measured", samples);
      add("DataList", digits);
    }
    if (!written.save_file(path.c_str(), "  ")) state.SkipWithError("not saved");
    pugi::xml_document loaded;
    if (!loaded.load_file(path.c_str())) state.SkipWithError("not loaded");
    for (const char* size : kSizes) {
      const pugi::xml_node node = loaded.document_element().child("MeasurementData").child(size);
      const std::string text = node.child_value("DataList");
      benchmark::DoNotOptimize(text.data());
    }
  }
}
BENCHMARK(PugixmlSaveAndLoad)->Unit(benchmark::kMicrosecond);

void HexWrite(benchmark::State& state) {
  const std::vector<unsigned char> bytes(1 << 20, 0xA7);
  for (auto _ : state) benchmark::DoNotOptimize(vkcl::HexText(bytes.data(), bytes.size()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(HexWrite);

void HexRead(benchmark::State& state) {
  std::vector<unsigned char> bytes(1 << 20);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 7);
  const std::string text = vkcl::HexText(bytes.data(), bytes.size());
  for (auto _ : state) {
    benchmark::DoNotOptimize(vkcl::ReadHex(text, bytes.data(), bytes.size()));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(HexRead);

}  // namespace
