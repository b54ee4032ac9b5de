// One list of colour samples.
#pragma once

#include <cstdint>

#include "platform/Export.h"

/// The values of a chart (reference) or what an instrument read from it (measurement), sample by
/// sample: all values of sample 0, then of sample 1, and so on.
class VKCL_API ProfileDataList {
 public:
  /// Colour space of the values as an ICC signature, or 'refl' for spectral reflectance;
  /// 0xFFFFFFFF marks a placeholder list.
  std::uint32_t DataFormat = 0;
  std::int32_t NumOfSamples = 0;      ///< number of samples
  std::int32_t ColorMode = 0;         ///< colour mode of the device values
  std::int32_t NumOfColors = 0;       ///< values per sample
  std::int32_t Measured = 0;          ///< how many samples hold measured values
  double* DataList = nullptr;         ///< owned, NumOfSamples x NumOfColors values, or null
  std::int32_t* PerSample = nullptr;  ///< owned, NumOfSamples integers, or null; never stored
  std::int32_t Extra1 = 0;            ///< copied with the list, neither stored nor compared
  std::int32_t Extra2 = -1;           ///< copied with the list, neither stored nor compared

  ProfileDataList() = default;
  ///@{
  /// A deep copy. An array that cannot be allocated is left null.
  ProfileDataList(const ProfileDataList& other);
  ProfileDataList& operator=(const ProfileDataList& other);
  ///@}
  ~ProfileDataList();

  /// Releases both arrays and sets the five counters to 0. Extra1 and Extra2 keep their values.
  void Clear();

  /// Length of the values in bytes; 0 without values.
  std::uint32_t GetDataSize() const;

  /// Replaces the values by `samples` x NumOfColors zeros (NumOfColors is set beforehand), drops
  /// the per-sample array, sets NumOfSamples, and Measured to 0; 1. When that is not possible
  /// (memory is short, or a count is negative) the result is 0 and nothing changes.
  int RefreshList(int samples);

  ///@{
  /// Equal counters (ColorMode, DataFormat, NumOfColors, NumOfSamples) and, when the left list has
  /// values, equal bytes of values. A left list without values equals any right list of the same
  /// counters: deliberately so. Measured, PerSample and the extra integers play no part.
  bool operator==(const ProfileDataList& other) const;
  bool operator!=(const ProfileDataList& other) const { return !(*this == other); }
  ///@}
};
