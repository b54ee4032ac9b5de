// Runs an operation in one of its ways some times, for callgrind: usage: NAME floor|ours TIMES.
// What is to be counted runs within the function Measured; what comes before does not.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Operation.h"

using vkcl::bench::Operation;

namespace vkcl::bench {

[[gnu::noinline]] bool Measured(const Way& way) {
  const bool done = way.run();
  asm volatile("");  // keeps the call from becoming a jump
  return done;
}

}  // namespace vkcl::bench

int main(int argc, char** argv) {
  if (argc == 1) {
    for (const Operation& operation : vkcl::bench::Operations()) {
      if (operation.goal > 0 && operation.counts) std::puts(operation.name.c_str());
    }
    return 0;
  }
  if (argc != 4) return 2;
  for (const Operation& operation : vkcl::bench::Operations()) {
    if (operation.name != argv[1]) continue;
    const vkcl::bench::Folder folder;
    const bool isFloor = std::strcmp(argv[2], "floor") == 0;
    const vkcl::bench::Way way = (isFloor ? operation.floor : operation.ours)(folder);
    // The first time fills what is kept for the life of the program.
    if (way.before) way.before();
    if (!way.run()) return 1;
    for (int i = 0; i < std::atoi(argv[3]); ++i) {
      if (way.before) way.before();
      if (!vkcl::bench::Measured(way)) return 1;
    }
    return 0;
  }
  return 2;
}
