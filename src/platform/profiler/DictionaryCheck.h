// What a 'dict' element must be like before Little CMS may read it.
#pragma once

#include <cstdint>
#include <span>

namespace vkcl::profiler {

/// Whether every record and every text of a 'dict' element (ICC.1:2010, metadata tag) lies within
/// it, and all texts together take at most 64 MiB.
///
/// Little CMS 2.14 takes memory for as many records as the element announces, and a text of 2 GiB
/// or more, announced only, makes it write behind the few bytes that it took.
bool IsSoundDictionary(std::span<const std::uint8_t> element);

}  // namespace vkcl::profiler
