// The element of the tag 'meta' in a profile file: finding it, and putting another one in its
// place.
//
// The file is read here and not by Little CMS, which refuses a whole profile for the sake of other
// tags: two entries of one signature, more than 100 entries.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vkcl::profiler {

/// The element of the first entry 'meta' that has data. Empty for a file that is not a profile,
/// without such an entry, and for an element of more than 64 MiB. Reads the first 4,096 bytes, what
/// of the tag table lies after them, and the element. Throws std::bad_alloc.
std::vector<std::uint8_t> ReadMetaElement(const std::string& path);
/// The same of a profile's bytes.
std::vector<std::uint8_t> MetaElementIn(std::span<const std::uint8_t> file);

/// Whether a profile's bytes have an entry 'meta' with data, readable or not.
bool HasMetaElement(std::span<const std::uint8_t> file);

/// Rewrites the file at `path`, whose bytes are `file`, with `element` as its 'meta' element; all
/// other entries, their order and their data stay. False, and the file is as it was, for bytes that
/// are not a profile, when a tag is not wholly in the file, when another entry would make a profile
/// that Little CMS refuses, and when the file cannot be written. Throws std::bad_alloc.
bool ReplaceMetaElement(const std::string& path, std::span<const std::uint8_t> file,
                        std::span<const std::uint8_t> element);

}  // namespace vkcl::profiler
