// Ink sets recognised: one known by name, and one of single flags, which asks for the definitions
// file at each call when there is none.
#include <benchmark/benchmark.h>

#include "colornames/ColorModes.h"

namespace {

void Recognize(benchmark::State& state, const AStringArray& names) {
  AStringArray ordered;
  for (auto _ : state) benchmark::DoNotOptimize(GetColorModeByNames(names, ordered));
  state.SetItemsProcessed(state.iterations());
}

void RecognizeNamedSet(benchmark::State& state) {
  Recognize(state, {"Magenta", "Cyan", "Yellow", "Black", "Red", "Green", "Blue", "LCyan",
                    "LMagenta", "MBlack", "LBlack"});
}
BENCHMARK(RecognizeNamedSet);

void RecognizeFlagSet(benchmark::State& state) {
  Recognize(state, {"LCyan", "Cyan", "Orange", "Black", "Red"});
}
BENCHMARK(RecognizeFlagSet);

}  // namespace
