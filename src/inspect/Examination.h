// The examination of a profile file, shared by the source files that each check a part of it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "inspect/ProfileCheck.h"
#include "inspect/TagView.h"
#include "platform/plinth/AFile.h"
#include "profile/TableLayout.h"

namespace vkcl {

struct Entry {
  std::uint32_t sig = 0;
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
  std::uint32_t type = 0;
  bool typed = false;  // it lies in the file, behind the table, and is long enough for a type

  std::uint64_t end() const { return std::uint64_t{offset} + size; }
};

/// The file under examination, and what has been found in it. Of the file only the header, the
/// table, and what the tags say of themselves is read, so its length does not matter; the time
/// grows with the number of tags. Its parts stand in ProfileCheck.cpp (header), LayoutCheck.cpp
/// (table and places), TagCheck.cpp (tags that there must be, their types, private tags),
/// TypeCheck.cpp (what the types say of their length) and TableCheck.cpp (multi-dimensional
/// tables).
class Examination {
 public:
  /// The file is open, stays so, and has `size` bytes.
  Examination(AFile& file, std::uint64_t size);

  std::vector<Finding> Run();
  /// False when the file gave fewer bytes than its length says: the findings mean nothing then.
  bool good() const { return bytes_.good() && payloadsGood_; }

 private:
  void Find(Severity severity, const char* rule, const char* clause, std::string text,
            std::uint32_t tag = 0);
  void TellHowManyMore();

  // The file's numbers; what lies behind its end is zeros.
  std::uint32_t Long(std::uint64_t offset);
  std::uint32_t Short(std::uint64_t offset) { return Long(offset) >> 16; }
  std::uint32_t Byte(std::uint64_t offset) { return Long(offset) >> 24; }
  /// Those of the header and the number of tags.
  std::uint32_t At(std::size_t offset) const;
  bool HeadIsZero(std::size_t from, std::size_t to) const;

  bool Holds(const Entry& tag) const { return tag.end() <= bytes_.size(); }
  /// The first tag of that signature, which is the one that readers take; null without one.
  const Entry* FindTag(std::uint32_t sig) const;
  bool IsVersion4() const { return At(8) >> 24 >= 4; }

  // The header.
  bool CheckStart();
  void CheckSize();
  void CheckVersion();
  void CheckSpaces();
  void CheckDate();
  void CheckSignatures();
  void CheckRest();

  // The table, and how the data lie.
  bool ReadTable();
  void CheckTable();
  void CheckEntry(Entry& tag);
  void CheckPlaces();
  void CheckNeighbours(const Entry& first, const Entry& second);
  void CheckPadding(std::uint64_t from, std::uint64_t to);
  void CheckEnd(std::uint64_t end);

  // The tags.
  void CheckRequired();
  void CheckTypes();
  void CheckPrivate();
  void CheckPayload(const Entry& tag);

  // What a tag of a known type says of its length, and its values.
  void CheckContent(const Entry& tag);
  bool CheckLength(const Entry& tag, std::uint64_t needed, const char* clause, bool exact);
  void CheckValues(const Entry& tag);
  void CheckTextEnd(const Entry& tag, std::uint64_t end, const char* clause);
  void CheckDescription(const Entry& tag);
  void CheckParametric(const Entry& tag);
  void CheckTranslations(const Entry& tag);
  void CheckBlocks(const Entry& tag, int blocks, std::uint32_t unit, const char* clause);
  void CheckProcessing(const Entry& tag);
  void CheckLut(const Entry& tag);
  void CheckLutSpaces(const Entry& tag, const char* clause);

  AFile& file_;
  ByteSource bytes_;
  bool payloadsGood_ = true;  // those of private tags could be read
  std::array<char, kTableStart> head_{};
  std::vector<Entry> table_;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> bySignature_;  // and index, in that order
  bool allPlaced_ = false;                          // every tag lies in the file, behind the table
  std::map<std::string_view, std::size_t> counts_;  // findings of a rule
  std::vector<Finding> findings_;
};

}  // namespace vkcl
