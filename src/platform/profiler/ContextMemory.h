// The memory of a Little CMS context. What Little CMS forgets to release, which it does with some
// damaged tags, is released with the context; and when memory is short, which version 2.14 does not
// survive everywhere, it is left where it asked for some.
#pragma once

#include <lcms2.h>

#include <type_traits>  // IWYU pragma: keep

namespace vkcl::profiler {

/// A context whose memory is accounted for; null when memory is short.
cmsContext CreateContext();
/// Deletes such a context, and all memory that was taken with it and is still there. Objects made
/// with the context must not be used any more. Null is ignored.
void DeleteContext(cmsContext context);

/// Whether memory was short in a call. Nothing that was made with the context may then be used, or
/// released but with the context.
bool IsShort(cmsContext context);

/// Runs `call(argument)`, which calls Little CMS with the context and makes nothing that needs a
/// destructor. False, and `call` may have ended anywhere, when memory was short in this call or an
/// earlier one, or without a context.
bool CallWithin(cmsContext context, void (*call)(void* argument), void* argument);

/// The same for a function object: what `call` returns, or the value-initialised result.
template <class Call>
auto Within(cmsContext context, const Call& call) {
  struct Frame {
    const Call& call;
    decltype(call()) result;
  };
  static_assert(std::is_trivially_destructible_v<Frame>);
  Frame frame = {call, {}};
  const bool done = CallWithin(
      context,
      [](void* argument) {
        auto* of = static_cast<Frame*>(argument);
        of->result = of->call();
      },
      &frame);
  return done ? frame.result : decltype(call())();
}

}  // namespace vkcl::profiler
