// Blocks of memory for the bytes of whole files.
#pragma once

#include <cstddef>
#include <memory>

namespace vkcl {

/// A block without particular content, all of which is about to be filled; throws when memory is
/// short. A large one is given large pages where the system has them for those who ask: touching
/// thousands of small pages for the first time takes longer than filling them. It takes no more
/// memory than its size.
std::unique_ptr<char[]> NewLargeBlock(std::size_t size);

}  // namespace vkcl
