// The target parser against a bare pass of from_chars over the same text. Time for each number is
// to be the same at 7, 16 and 43 columns.
#include <benchmark/benchmark.h>

#include <charconv>
#include <random>
#include <string>

#include "handler/TargetParser.h"

namespace {

// A target of `columns` values a line, as measuring tools write them: CMYK and Lab, or reflectance.
std::string TargetText(int columns, int samples) {
  const int measured = columns > 40 ? 36 : 3;
  const int device = columns - measured;
  std::string text = "CGATS.5\nBEGIN_DATA_FORMAT\n";
  for (int i = 0; i < device; ++i) text += "7CLR_" + std::to_string(i + 1) + ' ';
  text += measured == 36 ? "R_380" : "LAB_L LAB_A LAB_B";
  text += "\nEND_DATA_FORMAT\nBEGIN_DATA\n";
  std::mt19937 random(7);
  std::uniform_int_distribution<int> value(0, 999999);
  for (int i = 0; i < samples; ++i) {
    for (int k = 0; k < columns; ++k) {
      const int number = value(random);
      text +=
          std::to_string(number / 10000) + '.' + std::to_string(10000 + number % 10000).substr(1);
      text += k + 1 < columns ? ' ' : '\n';
    }
  }
  return text + "END_DATA\n";
}

constexpr int kSamples = 2000;

void Report(benchmark::State& state, const std::string& text, int columns) {
  const auto numbers = static_cast<double>(kSamples * columns);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(text.size()));
  state.counters["time_per_number"] =
      benchmark::Counter(numbers * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BareFromChars(benchmark::State& state) {
  const int columns = static_cast<int>(state.range(0));
  const std::string text = TargetText(columns, kSamples);
  const std::size_t start = text.find("BEGIN_DATA\n") + 11;
  for (auto _ : state) {
    const char* at = text.data() + start;
    const char* end = text.data() + text.size();
    double sum = 0;
    while (at != end) {
      float number = 0;
      const auto result = std::from_chars(at, end, number);
      at = result.ec == std::errc() ? result.ptr : at + 1;
      sum += number;
    }
    benchmark::DoNotOptimize(sum);
  }
  Report(state, text, columns);
}
BENCHMARK(BareFromChars)->Arg(7)->Arg(16)->Arg(43);

void ParseTarget(benchmark::State& state) {
  const int columns = static_cast<int>(state.range(0));
  const std::string text = TargetText(columns, kSamples);
  for (auto _ : state) {
    ProfileDataList device;
    ProfileDataList measurement;
    if (vkcl::ParseTarget(text, device, measurement) != vkcl::TargetRule::Accepted ||
        device.NumOfSamples != kSamples) {
      state.SkipWithError("the target is refused");
      return;
    }
    benchmark::DoNotOptimize(measurement.DataList);
  }
  Report(state, text, columns);
}
BENCHMARK(ParseTarget)->Arg(7)->Arg(16)->Arg(43);

}  // namespace
