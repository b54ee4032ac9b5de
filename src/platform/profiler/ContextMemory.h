// The memory of a Little CMS context. What Little CMS forgets to release, which it does with some
// damaged tags, is released with the context.
#pragma once

#include <lcms2.h>

namespace vkcl::profiler {

/// A context whose memory is accounted for; null when memory is short.
cmsContext CreateContext();
/// Deletes such a context, and all memory that was taken with it and is still there. Objects made
/// with the context must not be used any more. Null is ignored.
void DeleteContext(cmsContext context);

}  // namespace vkcl::profiler
