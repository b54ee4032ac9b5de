// The examination of a profile file, shared by the source files that each check a part of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "inspect/ProfileCheck.h"
#include "platform/Bytes.h"

namespace vkcl {

struct Entry {
  std::uint32_t sig;
  std::uint32_t offset;
  std::uint32_t size;

  std::uint64_t end() const { return std::uint64_t{offset} + size; }
};

/// The file under examination, and what has been found in it. Its parts stand in ProfileCheck.cpp
/// (header), LayoutCheck.cpp (table and places) and TagCheck.cpp (tags that there must be, and
/// types).
class Examination {
 public:
  explicit Examination(std::span<const char> bytes) : bytes_(bytes) {}

  std::vector<Finding> Run();

 private:
  void Find(Severity severity, const char* rule, const char* clause, std::string text,
            std::uint32_t tag = 0);

  std::uint32_t At(std::size_t offset) const { return LoadBig32(bytes_.data() + offset); }
  std::uint32_t Short(std::size_t offset) const { return LoadBig16(bytes_.data() + offset); }
  bool Holds(const Entry& tag) const { return tag.end() <= bytes_.size(); }
  std::uint32_t TypeOf(const Entry& tag) const { return At(tag.offset); }
  const Entry* FindTag(std::uint32_t sig) const;

  // The header.
  bool CheckStart();
  void CheckSize();
  void CheckSignatures();
  void CheckDate();
  void CheckRest();

  // The table, and how the data lie.
  bool ReadTable();
  void CheckTable();
  void CheckEntry(const Entry& tag);
  void CheckPlaces();
  void CheckNeighbours(const Entry& first, const Entry& second);
  void CheckPadding(std::uint64_t from, std::uint64_t to);
  void CheckEnd(std::uint64_t end);

  // The tags.
  void CheckRequired();
  void CheckTypes();
  void CheckPrivate();

  std::span<const char> bytes_;
  std::vector<Entry> table_;
  bool allPlaced_ = false;  // every tag lies in the file, behind the table
  std::vector<Finding> findings_;
};

}  // namespace vkcl
