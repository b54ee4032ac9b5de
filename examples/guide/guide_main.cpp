// Runs one example of docs/guide.md in a new folder with copies of real profiles: press.icc and
// standard.icc, both CMYK, and rgb.icc.
//
// usage: guide NAME CMYK_PROFILE SECOND_CMYK_PROFILE RGB_PROFILE
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>

#include "guide/guide_support.h"

namespace guide {

#define EXAMPLE(name) void Example_##name();
#include "examples.inc"
#undef EXAMPLE

namespace {

int checks = 0;
int failures = 0;

struct Example {
  const char* name;
  void (*run)();
};
constexpr Example kExamples[] = {
#define EXAMPLE(name) {#name, Example_##name},
#include "examples.inc"
#undef EXAMPLE
};

namespace fs = std::filesystem;

fs::path NewFolder() {
  std::random_device random;
  for (;;) {
    const fs::path folder = fs::temp_directory_path() / ("vkcl-guide-" + std::to_string(random()));
    if (fs::create_directory(folder)) return fs::canonical(folder);
  }
}

int Run(const Example& example, char** profiles) {
  const fs::path before = fs::current_path();
  const fs::path folder = NewFolder();
  const char* names[] = {"press.icc", "standard.icc", "rgb.icc"};
  for (int i = 0; i < 3; ++i) {
    fs::copy_file(profiles[i], folder / names[i]);
    fs::permissions(folder / names[i], fs::perms::owner_write, fs::perm_options::add);
  }
  fs::current_path(folder);
  example.run();
  fs::current_path(before);
  fs::remove_all(folder);
  std::printf("%s: %d of %d checks hold\n", example.name, checks - failures, checks);
  return checks > 0 && failures == 0 ? 0 : 1;  // an example that checks nothing is none
}

}  // namespace

void Check(bool holds, const char* text, const char* file, int line) {
  ++checks;
  if (holds) return;
  ++failures;
  std::printf("%s:%d: this does not hold: %s\n", file, line, text);
}

}  // namespace guide

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  for (const guide::Example& example : guide::kExamples) {
    if (std::strcmp(example.name, argv[1]) == 0) return guide::Run(example, argv + 2);
  }
  std::printf("there is no example %s\n", argv[1]);
  return 2;
}
