// The exact costs of every operation: calls of the system, bytes read and written, and how far the
// resident memory grows at most. Linked with the tests' system calls, which count. Prints JSON.
#include <cstdio>
#include <string>

#include "Floor.h"
#include "Operation.h"
#include "support/PeakMemory.h"
#include "support/SystemCalls.h"

namespace {

using vkcl::bench::Folder;
using vkcl::bench::Operation;
using vkcl::bench::Setup;
using vkcl::bench::Way;
using vkcl::bench::bare::Tally;
using vkcl::testing::CallKind;

Tally CostOfFloor(const Setup& setup) {
  const Folder folder;
  const Way way = setup(folder);
  if (way.before) way.before();
  vkcl::bench::bare::TheTally() = {};
  return way.run() ? vkcl::bench::bare::TheTally() : Tally{};
}

Tally CostOfOurs(const Setup& setup) {
  const Folder folder;
  const Way way = setup(folder);
  if (way.before) way.before();
  const vkcl::testing::CallLog log;
  if (!way.run()) return {};
  return {log.calls().size(), log.Bytes(CallKind::Read), log.Bytes(CallKind::Write)};
}

long PeakOf(const Setup& setup) {
#if VKCL_MEMORY_IS_MEASURABLE
  const Folder folder;
  const Way way = setup(folder);
  if (way.before) way.before();
  const auto rehearse = [&] {
    const Folder other;
    const Way rehearsed = setup(other);
    if (rehearsed.before) rehearsed.before();
    return rehearsed.run();
  };
  return vkcl::testing::PeakGrowth(rehearse, way.run);
#else
  static_cast<void>(setup);
  return -1;
#endif
}

void Print(const char* name, const Tally& tally) {
  std::printf("\"%s\": {\"calls\": %llu, \"read\": %llu, \"written\": %llu}", name,
              static_cast<unsigned long long>(tally.calls),
              static_cast<unsigned long long>(tally.read),
              static_cast<unsigned long long>(tally.written));
}

}  // namespace

int main() {
  const char* before = "[\n";
  for (const Operation& operation : vkcl::bench::Operations()) {
    std::printf("%s{\"name\": \"%s\", \"goal\": %g", before, operation.name.c_str(),
                operation.goal);
    before = ",\n";
    if (operation.counts) {
      std::printf(", ");
      Print("floor", CostOfFloor(operation.floor));
      std::printf(", ");
      Print("ours", CostOfOurs(operation.ours));
      std::printf(", \"memory\": %ld", PeakOf(operation.ours));
    }
    std::printf("}");
  }
  std::puts("\n]");
  return 0;
}
