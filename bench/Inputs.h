// What the benchmarks work on, made by the program itself: a folder, profiles of a given length and
// number of tags, a profile with every private tag, targets and data lists.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "privatetags/ProfileDataList.h"

namespace vkcl::bench {

using Bytes = std::vector<char>;

/// A folder that is removed with the object; in memory where the system has such a place, so that
/// the medium does not drown what is compared.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  /// The path of a file in it; nothing is created.
  std::string File(const std::string& name) const { return path_ + '/' + name; }
  /// Writes a file in it and gives its path.
  std::string Write(const std::string& name, const Bytes& content) const;

 private:
  std::string path_;
};

void WriteWhole(const std::string& path, const Bytes& content);

struct Entry {
  std::uint32_t signature;
  std::uint32_t offset;
  std::uint32_t size;
};

/// The tag table of a profile's bytes.
std::vector<Entry> TableOf(const Bytes& profile);
/// The first entry of a signature, which must be there.
Entry EntryOf(const Bytes& profile, std::uint32_t signature);
/// Header, count and table, with the size that follows from `length`.
Bytes HeadOf(const Bytes& profile, const std::vector<Entry>& table, std::uint64_t length);

/// One tag: its signature and its whole element.
using Tag = std::pair<std::uint32_t, Bytes>;
/// An element of type 'data' with `length` bytes of payload.
Bytes Element(std::size_t length, char fill = 'p');
/// An output profile with the tags, one behind the other.
Bytes ProfileOf(const std::vector<Tag>& tags);

/// One of the system's own profiles: `tags` tags, all standard ones but the last two, 'QX51' and
/// 'QX53'; about `length` bytes.
const Bytes& OwnProfile(std::size_t length, std::size_t tags);
/// A profile without private tags.
const Bytes& StandardProfile(std::size_t length, std::size_t tags);
/// A profile of `length` bytes with private tags of 1,000 bytes of payload as the first ('QX58'),
/// the middle ('QX61') and the last one ('QX62').
const Bytes& ResizeProfile(std::size_t length);
/// A finished profile with all 27 private tags, lists of a chart of 1,617 samples, its target and
/// the options in it: what there is at most to be gathered.
const Bytes& FullProfile();

/// A target of `columns` values a line, as measuring tools write them: device values and Lab, or
/// reflectance.
std::string TargetText(int columns, int samples);

/// A list of `samples` times `colors` values.
ProfileDataList List(std::uint32_t format, std::int32_t colors, std::int32_t samples);

}  // namespace vkcl::bench
