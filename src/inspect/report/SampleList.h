// Measurements, wherever they come from.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "inspect/report/HtmlText.h"
#include "inspect/report/LabColor.h"
#include "inspect/report/ShownFile.h"
#include "privatetags/ProfileDataList.h"

namespace vkcl {

/// A data list: one in a file, of which values are fetched when asked, or one in memory.
class SampleList {
 public:
  SampleList() = default;
  /// The list of a tag; one that is not there or does not have the form has no values.
  SampleList(ReadTag tag, std::int32_t colorMode);
  explicit SampleList(std::unique_ptr<ProfileDataList> list);

  std::uint32_t format() const { return format_; }
  std::int32_t colorMode() const { return colorMode_; }
  std::int64_t measured() const { return measured_; }
  /// Samples, and values of each, that are there; the numbers that the list announces where it has
  /// no values.
  std::uint64_t samples() const { return samples_; }
  std::uint64_t columns() const { return columns_; }
  bool hasValues() const { return hasValues_; }
  /// Whether there is a list at all, and what is wrong with it if there is and cannot be read.
  bool isThere() const { return isThere_; }
  const std::string& why() const { return why_; }

  bool isLab() const;
  bool isDevice() const;
  bool isReflectance() const;

  double Value(std::uint64_t sample, std::uint64_t column) const;
  /// Of a list of Lab values.
  Lab LabAt(std::uint64_t sample) const;

  std::vector<std::string> names() const { return ChannelNames(format_, colorMode_, columns_); }
  /// "1,617 samples of 4 values in CMYK, 1,617 measured"
  std::string About() const;

 private:
  ReadTag tag_;
  const FieldView* values_ = nullptr;
  std::unique_ptr<ProfileDataList> list_;
  std::uint32_t format_ = 0;
  std::int32_t colorMode_ = 0;
  std::int64_t measured_ = 0;
  std::uint64_t samples_ = 0;
  std::uint64_t columns_ = 0;
  bool hasValues_ = false;
  bool isThere_ = false;
  std::string why_;
};

/// Values of a sample with their names: "Cyan 100, Magenta 0".
std::string SampleText(const SampleList& list, const std::vector<std::string>& names,
                       std::uint64_t sample);

/// A row of a list of facts: what the list holds, or why it cannot be read; nothing without a list.
void WriteListFact(HtmlWriter& out, const char* label, const SampleList& list);

/// Folded away: the first samples of lists of the same length, side by side.
struct NamedList {
  const char* title;
  const SampleList* list;
};
void WriteSampleTable(HtmlWriter& out, const std::string& caption, std::span<const NamedList> lists,
                      std::uint64_t most);

/// A chart of reflectances, a curve a sample, when they are few; else in words how many they are.
void WriteSpectra(HtmlWriter& out, const std::string& id, const std::string& title,
                  const SampleList& list);

}  // namespace vkcl
