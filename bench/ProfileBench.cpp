// Every operation in each of its ways, as benchmarks.
#include <benchmark/benchmark.h>

#include <chrono>

#include "Operation.h"

namespace {

using vkcl::bench::Folder;
using vkcl::bench::Operation;
using vkcl::bench::Setup;
using vkcl::bench::Way;

using Clock = std::chrono::steady_clock;

void Straight(benchmark::State& state, const Way& way) {
  for (auto _ : state) {
    if (!way.run()) state.SkipWithError("failed");
  }
}

void WithPause(benchmark::State& state, const Way& way) {
  for (auto _ : state) {
    way.before();
    const Clock::time_point start = Clock::now();
    const bool done = way.run();
    state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    if (!done) state.SkipWithError("failed");
  }
}

void Register(const Operation& operation, const char* which, const Setup& setup) {
  if (!setup) return;
  const auto measure = [&setup](benchmark::State& state) {
    const Folder folder;
    const Way way = setup(folder);
    if (way.before) {
      WithPause(state, way);
    } else {
      Straight(state, way);
    }
  };
  const std::string name = operation.name + '/' + which;
  benchmark::internal::Benchmark* row = benchmark::RegisterBenchmark(name.c_str(), measure);
  row->Unit(benchmark::kMicrosecond);
  if (operation.restores) {
    row->UseManualTime();
  } else {
    row->UseRealTime();
  }
}

const bool kRegistered = [] {
  for (const Operation& operation : vkcl::bench::Operations()) {
    Register(operation, "floor", operation.floor);
    Register(operation, "lcms", operation.lcms);
    Register(operation, "ours", operation.ours);
  }
  return true;
}();

}  // namespace
