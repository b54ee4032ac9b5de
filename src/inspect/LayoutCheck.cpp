// The tag table (ICC.1:2001-04, 6.2), and how the tag data lie in the file.
#include <algorithm>
#include <iterator>

#include "inspect/Examination.h"
#include "platform/Bytes.h"
#include "profile/SignatureText.h"
#include "profile/TableLayout.h"
#include "profile/icc.h"

namespace vkcl {

using enum Severity;
using std::to_string;

bool Examination::ReadTable() {
  const std::uint32_t count = At(sizeof(icHeader));
  if (TableEnd(count) > bytes_.size()) {
    Find(Error, "table.count", "6.2",
         "the table of " + to_string(count) + " tags does not fit the file");
    return false;
  }
  if (count == 0) {
    Find(Warning, "table.empty", "6.2", "there are no tags");
    return false;
  }
  table_.reserve(count);
  bySignature_.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t at = kTableStart + kTableEntry * std::uint64_t{i};
    table_.push_back({Long(at), Long(at + 4), Long(at + 8)});
    bySignature_.emplace_back(table_.back().sig, i);
  }
  std::sort(bySignature_.begin(), bySignature_.end());
  return true;
}

void Examination::CheckEntry(Entry& tag) {
  const std::string place =
      "offset " + to_string(tag.offset) + ", " + to_string(tag.size) + " bytes";
  if (!IsPrintableSignature(tag.sig)) {
    Find(Note, "table.unprintable", "6.2.1", "its signature is no printable text", tag.sig);
  }
  if (!Holds(tag)) {
    Find(Error, "table.beyond-end", "6.2", "it reaches beyond the end of the file: " + place,
         tag.sig);
    return;
  }
  if (tag.offset < TableEnd(table_.size())) {
    Find(Error, "table.in-head", "6.2.2", "it lies within the header or the table: " + place,
         tag.sig);
    return;
  }
  if (tag.offset % 4 != 0) {
    Find(Warning, "table.unaligned", "6.2.2", "it does not begin on a multiple of 4: " + place,
         tag.sig);
  }
  if (tag.size < 8) {
    Find(Warning, "tag.no-type", "6.5", "it is too short to have a type: " + place, tag.sig);
    return;
  }
  tag.typed = true;
  tag.type = Long(tag.offset);
  if (Long(tag.offset + std::uint64_t{4}) != 0) {
    Find(Note, "tag.reserved", "6.5", "the reserved bytes behind its type are not zero", tag.sig);
  }
}

const Entry* Examination::FindTag(std::uint32_t sig) const {
  const auto found =
      std::lower_bound(bySignature_.begin(), bySignature_.end(), std::pair(sig, std::uint32_t{0}));
  return found != bySignature_.end() && found->first == sig ? &table_[found->second] : nullptr;
}

void Examination::CheckTable() {
  for (std::size_t i = 1; i < bySignature_.size(); ++i) {
    const std::uint32_t sig = bySignature_[i].first;
    const bool second = sig == bySignature_[i - 1].first;
    if (second && (i == 1 || sig != bySignature_[i - 2].first)) {
      Find(Error, "table.duplicate", "6.2", "its signature stands more than once in the table",
           sig);
    }
  }
  for (Entry& tag : table_) CheckEntry(tag);
}

void Examination::CheckPadding(std::uint64_t from, std::uint64_t to) {
  const std::string_view padding = bytes_.At(from, static_cast<std::size_t>(to - from));
  if (padding.find_first_not_of('\0') != std::string_view::npos) {
    Find(Note, "layout.padding", "", "padding bytes at " + to_string(from) + " are not zero");
  }
}

// Two tags of which the second does not begin before the first.
void Examination::CheckNeighbours(const Entry& first, const Entry& second) {
  if (first.offset == second.offset && first.size == second.size) {
    Find(Note, "layout.shared", "6.2", "it shares its data with '" + SignatureText(first.sig) + "'",
         second.sig);
  } else if (second.offset < first.end()) {
    Find(Warning, "layout.overlap", "",
         "its data overlap those of '" + SignatureText(first.sig) + "'", second.sig);
  } else if (second.offset > PadTo4(first.end())) {
    if (!allPlaced_) return;  // a tag that lies elsewhere is told of already
    Find(Note, "layout.gap", "",
         to_string(second.offset - first.end()) + " bytes before it belong to no tag", second.sig);
  } else {
    CheckPadding(first.end(), second.offset);
  }
}

void Examination::CheckEnd(std::uint64_t end) {
  if (!allPlaced_) return;
  const std::uint64_t size = std::min<std::uint64_t>(At(0), bytes_.size());
  if (end > size) return;
  if (PadTo4(end) > size) {
    Find(Note, "layout.unpadded-end", "", "the last tag is not filled up to a multiple of 4");
  } else if (PadTo4(end) < size) {
    Find(Note, "layout.gap", "", to_string(size - end) + " bytes at the end belong to no tag");
  } else {
    CheckPadding(end, size);
  }
}

// How the tags that are in the file lie in it.
void Examination::CheckPlaces() {
  std::vector<Entry> placed;
  std::copy_if(table_.begin(), table_.end(), std::back_inserter(placed), [&](const Entry& tag) {
    return Holds(tag) && tag.offset >= TableEnd(table_.size());
  });
  const auto before = [](const Entry& a, const Entry& b) {
    return a.offset != b.offset ? a.offset < b.offset : a.size > b.size;
  };
  if (!std::is_sorted(placed.begin(), placed.end(),
                      [](const Entry& a, const Entry& b) { return a.offset < b.offset; })) {
    Find(Note, "layout.order", "", "the data do not lie in the order of the table");
  }
  std::stable_sort(placed.begin(), placed.end(), before);
  allPlaced_ = placed.size() == table_.size();
  if (placed.empty()) return;
  const std::uint64_t start = TableEnd(table_.size());
  if (allPlaced_ && placed.front().offset > PadTo4(start)) {
    Find(Note, "layout.gap", "",
         to_string(placed.front().offset - start) + " bytes before it belong to no tag",
         placed.front().sig);
  }
  Entry furthest = placed.front();
  for (std::size_t i = 1; i < placed.size(); ++i) {
    CheckNeighbours(furthest, placed[i]);
    if (placed[i].end() >= furthest.end()) furthest = placed[i];
  }
  CheckEnd(furthest.end());
}

}  // namespace vkcl
