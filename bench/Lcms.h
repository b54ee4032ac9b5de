// The same operations as a program does them that has Little CMS alone.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Inputs.h"

namespace vkcl::bench::lcms {

bool Open(const std::string& path);
/// Opens, and asks for class, colour space, and whether a tag that decides is there.
bool ClassifyByTags(const std::string& path);
/// The same, and reads the colour parameters.
bool Classify(const std::string& path);
/// Opens and reads the element of a tag.
bool Read(const std::string& path, std::uint32_t signature, Bytes& element);
/// Opens, stores elements, and saves to a new file that takes the place of the old one: a profile
/// is not changed where it lies.
bool Store(const std::string& path, const std::vector<Tag>& tags);
/// Stores all private tags of another profile.
bool Merge(const std::string& from, const std::string& to);
/// Saves a copy without private tags.
bool Strip(const std::string& from, const std::string& to);
/// Parses a target and gets its numbers; how many there were.
std::size_t Parse(const std::string& text);

/// Keeps a profile open and reads from it.
class Opened {
 public:
  explicit Opened(const std::string& path);
  ~Opened();
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  bool Read(std::uint32_t signature, Bytes& element) const;

 private:
  void* profile_;
};

}  // namespace vkcl::bench::lcms
