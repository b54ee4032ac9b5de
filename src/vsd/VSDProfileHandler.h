// The VSD document: an XML sidecar of a profile that is being made.
//
// Beside the folder of the ICC profile there is a folder VSDProfile, and in it a file of the same
// name. It holds, in readable form, the print set-up, the reference and measurement data for the
// three dot sizes of the printer, where the medium and the large dots start, and the ink limits.
// docs/format.md describes its elements.
#pragma once

#include <memory>

#include "platform/Export.h"
#include "platform/axml/AXMLTree.h"
#include "platform/plinth/AFilePath.h"
#include "privatetags/InkLimitRecords.h"
#include "privatetags/ParameterRecords.h"
#include "privatetags/ProfileDataList.h"

/// One VSD document. Operations return 1, or 0 when they failed. Data that are not as they should
/// be (a missing element, bytes that are no digits) fail to be read; a number reads as far as it is
/// one, and text without one as 0.
///
/// Writing adds elements and never replaces any, deliberately: a document keeps its history.
/// Reading takes the first of each name, so what was written first. What a write that failed had
/// added stays in the tree, and does not make the document modified.
///
/// Copies share one document: what one writes the others read. Each keeps its own note of whether
/// it is modified, and the document lives as long as the last copy.
class VKCL_API VSDProfileHandler {
 public:
  /// Opens the document at `path` (`openExisting` not 0), or begins an empty one, which nothing is
  /// read for and which replaces a file at `path` when it is first saved.
  VSDProfileHandler(const AFilePath& path, int openExisting);
  /// Shares the document of the other.
  VSDProfileHandler(const VSDProfileHandler& other) = default;
  /// Takes over everything that the other has. What this object had not saved yet is dropped with
  /// its document.
  VSDProfileHandler& operator=(const VSDProfileHandler& other) = default;
  /// Saves a valid document that was modified; a failure is not reported.
  ~VSDProfileHandler();

  /// Whether the document was begun anew, or loaded and has the root VK_VSD_PROFILE. An invalid
  /// one can be written to in memory and is never saved.
  int IsValid() const;

  /// Saves the document if it is valid and modified; it is not modified then, whatever came of it.
  /// The old file stays whole when saving fails; the folder must exist. 1 when there is nothing to
  /// save.
  int SaveToFile();

  ///@{
  /// The colour parameters, without their status and reserved texts. A text that is longer than its
  /// field is cut to 127 bytes, at a character; option bytes without digits keep their values. When
  /// an element is missing the fields before it are read already.
  int WriteVKColorParam(const VKColorParam& param);
  int ReadVKColorParam(VKColorParam& param);
  ///@}

  /// Whether measurements of all three dot sizes are there: a number of samples other than 0 each,
  /// and no fewer of them measured.
  int IsComplete() const;

  /// The document of an ICC profile: folder/ICC/paper.icc gives folder/VSDProfile/paper.icc. Give a
  /// full path: of a bare file name the folder above is not known.
  static AFilePath ICCtoVSDFolder(const AFilePath& iccPath);

  ///@{
  /// Data lists of a dot size: 0 small, 1 medium, 2 large; others are refused, and so is a list
  /// that lacks the values it counts, or has more than 64 MiB of them. Reading replaces the values;
  /// those without digits are 0. When an element is missing or holds no digits, the counters before
  /// it are read already; arrays that do not fit the counters any more are then released. The
  /// per-sample integers are not stored.
  int WriteVSDReferenceData(int size, const ProfileDataList& list);
  int WriteVSDMeasurementData(int size, const ProfileDataList& list);
  int WriteVSDInvertedData(int size, const ProfileDataList& list);
  int ReadVSDReferenceData(int size, ProfileDataList& list);
  int ReadVSDMeasurementData(int size, ProfileDataList& list);
  int ReadVSDInvertedData(int size, ProfileDataList& list);
  ///@}

  ///@{
  /// The data lists of the verification.
  int WriteVerifyReferenceData(const ProfileDataList& list);
  int WriteVerifyMeasurementData(const ProfileDataList& list);
  int ReadVerifyReferenceData(ProfileDataList& list);
  int ReadVerifyMeasurementData(ProfileDataList& list);
  ///@}

  ///@{
  /// Where the medium and the large dots start, a value a channel, and the scale of the large dot.
  /// Writing does not make the document modified, deliberately: the elements are saved with
  /// whatever else is. A negative count, and null values of a positive one, are refused.
  ///
  /// Reading stores the number of values into `count`, which must be 0 or more for any to be read;
  /// the arrays must have room for as many, and null arrays take none, so that the number can be
  /// asked for first. Values without digits stay as they were.
  int WriteMediumAndLargeStart(double* mediumStart, double* largeStart, int count);
  int ReadMediumAndLargeStart(double* mediumStart, double* largeStart, int& count);
  int WriteLargeDotScale(double* scale, int count);
  int ReadLargeDotScale(double* scale, int& count);
  ///@}
  ///@{
  /// The same for arrays of a known room: no more values than that are read.
  int ReadMediumAndLargeStart(double* mediumStart, double* largeStart, int room, int& count);
  int ReadLargeDotScale(double* scale, int room, int& count);
  ///@}

  ///@{
  /// Ink limits in percent, with two decimals; a text of at most 255 characters, so that of more
  /// than 36 limits of spot colours only the first ones are stored, which are read back as the
  /// last. A count below 0 or above the 16 of the record is refused.
  ///
  /// Reading aligns the values with the last channel: of fewer values than channels the first
  /// channels keep their limits, and of more the first values are dropped.
  int WriteVKSingleInkLimits(const VKSingleInkLimitWithLinRef& limits);
  int ReadVKSingleInkLimits(VKSingleInkLimitWithLinRef& limits);
  ///@}

  ///@{
  /// The limits of a spot colour. Reading gives the record a new name, with a tab after it that its
  /// readers expect, a new array of limits, and the size that goes with them. What the record held
  /// before is not released: it may be shared with copies, and is its owner's. A read that fails
  /// has stored the count, and possibly the name; the limits stay, and the count is at most theirs.
  int WriteVKSpotSIL(const VKSpotSingleInkLimit& limits);
  int ReadVKSpotSIL(VKSpotSingleInkLimit& limits);
  ///@}

 private:
  static int WriteProfileList(AXMLTreeNode& parent, const ProfileDataList& list);
  static int ReadProfileList(AXMLTreeNode& parent, ProfileDataList& list);

  AXMLTreeNode Root() const;
  AXMLTreeNode Container(const char* name);
  int WriteBySize(const char* container, int size, const ProfileDataList& list);
  int ReadBySize(const char* container, int size, ProfileDataList& list);
  int WriteVerify(const char* container, const ProfileDataList& list);
  int ReadVerify(const char* container, ProfileDataList& list);

  std::shared_ptr<const AFilePath> path_;  // shared, so that copying cannot fail
  int openExisting_ = 0;
  std::shared_ptr<AXMLTree> tree_;
  int valid_ = 0;
  bool modified_ = false;
};
