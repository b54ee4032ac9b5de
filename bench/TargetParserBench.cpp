// The target parser against a bare pass of from_chars over the same text, and against the parser of
// Little CMS. Time for each number is to be the same at 7, 16 and 43 columns.
#include <benchmark/benchmark.h>

#include <charconv>
#include <string>

#include "Inputs.h"
#include "Lcms.h"
#include "handler/TargetParser.h"

namespace {

using vkcl::bench::TargetText;

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

void LcmsParseTarget(benchmark::State& state) {
  const int columns = static_cast<int>(state.range(0));
  const std::string text = TargetText(columns, kSamples);
  for (auto _ : state) {
    if (vkcl::bench::lcms::Parse(text) != static_cast<std::size_t>(kSamples * columns)) {
      state.SkipWithError("the target is refused");
      return;
    }
  }
  Report(state, text, columns);
}
BENCHMARK(LcmsParseTarget)->Arg(7)->Arg(16)->Arg(43);

}  // namespace
