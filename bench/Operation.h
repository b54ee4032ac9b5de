// The operations that are measured, each in up to three ways: bare system calls, Little CMS, ours.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Inputs.h"

namespace vkcl::bench {

/// One way to do an operation, on files that are there.
struct Way {
  std::function<bool()> run;
  std::function<void()> before = {};  ///< not measured; puts back what `run` changes
};

/// Makes the files in a folder that lives as long as the way.
using Setup = std::function<Way(const Folder& folder)>;

struct Operation {
  std::string name;
  double goal = 0;        ///< ours over floor at most; 0 where there is none
  bool restores = false;  ///< whether the ways have something to do before
  bool counts = true;     ///< whether calls and memory are told: not where others thread do it
  Setup floor;
  Setup lcms = {};  ///< empty where Little CMS has no such operation
  Setup ours;
};

/// All of them, in the order of the table.
const std::vector<Operation>& Operations();

/// As the name of a row says it: "190 KB", "8 MB".
std::string LengthText(std::size_t length);
inline constexpr std::size_t kLengths[] = {4'000, 190'000, 8'000'000, 64'000'000};
inline constexpr std::size_t kUsualLength = 190'000;
inline constexpr std::size_t kUsualTags = 20;
inline constexpr std::size_t kFewTags = 6;
/// How many tags a profile of that length has here.
constexpr std::size_t TagsFor(std::size_t length) {
  return length < 10'000 ? kFewTags : kUsualTags;
}

void AddReading(std::vector<Operation>& operations);
void AddWriting(std::vector<Operation>& operations);
void AddWholeProfiles(std::vector<Operation>& operations);
void AddManyFiles(std::vector<Operation>& operations);

}  // namespace vkcl::bench
