#include "platform/plinth/LargeBlock.h"

#if defined(__linux__)
#include <sys/mman.h>

#include <cstdint>
#endif

namespace vkcl {
namespace {

#if defined(__linux__) && defined(MADV_HUGEPAGE)
// Smaller blocks come from memory that is in use already, most of the time.
constexpr std::size_t kLarge = std::size_t{4} << 20;
constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;

// Whole large pages only: what lies around the block is not meant, and no page is filled for the
// sake of a part of it.
void AskForLargePages(char* block, std::size_t size) {
  if (size < kLarge) return;
  const auto begin = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t first = (begin + kLargePage - 1) / kLargePage * kLargePage;
  const std::uintptr_t end = (begin + size) / kLargePage * kLargePage;
  ::madvise(block + (first - begin), end - first, MADV_HUGEPAGE);  // it works without, too
}
#else
void AskForLargePages(char* /*block*/, std::size_t /*size*/) {}
#endif

}  // namespace

std::unique_ptr<char[]> NewLargeBlock(std::size_t size) {
  std::unique_ptr<char[]> block(new char[size]);
  AskForLargePages(block.get(), size);
  return block;
}

}  // namespace vkcl
