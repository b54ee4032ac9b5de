// Work on many items in several threads, with the results in order.
#pragma once

#include <cstddef>
#include <functional>

namespace vkcl::tool {

/// What is done with a result: printed, say.
using Finish = std::function<void()>;

/// Calls `work` with 0 to `count` - 1, in up to `threads` threads at once, and what it returns in
/// this order, in the calling thread. Work goes on at most 16 items a thread beyond the first one
/// that is not finished, which bounds what is kept. `watch` is called, in the calling thread, with
/// the number of items that are finished: after each, and ten times a second while one is waited
/// for. An exception of `work` or of a Finish ends it all, and leaves it when the threads have
/// ended.
void InOrder(std::size_t count, unsigned threads, const std::function<Finish(std::size_t)>& work,
             const std::function<void(std::size_t)>& watch);

}  // namespace vkcl::tool
