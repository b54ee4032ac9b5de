// The allocations of the test program, counted by thread and made to fail: those by operator new in
// all its forms, which are Little CMS's too, and pugixml's.
//
// Under AddressSanitizer the blocks come from malloc, so that leaks and uses after release are seen
// as ever; a block that is released by another form of delete than it asks for ends the program.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vkcl::testing {

enum class Shortage {
  Once,     ///< one allocation fails, the next ones succeed
  Lasting,  ///< all fail from there on
};

/// Makes the `which`-th allocation of this thread (from 0) fail while the object lives. One at a
/// time.
class AllocationFailsAt {
 public:
  explicit AllocationFailsAt(std::size_t which, Shortage shortage = Shortage::Once);
  ~AllocationFailsAt();
  AllocationFailsAt(const AllocationFailsAt&) = delete;
  AllocationFailsAt& operator=(const AllocationFailsAt&) = delete;

  /// Whether as many allocations were asked for, by the last object or this one.
  static bool Reached();
};

/// Blocks that this thread has allocated, less those that it has released.
std::int64_t LiveAllocations();

}  // namespace vkcl::testing
