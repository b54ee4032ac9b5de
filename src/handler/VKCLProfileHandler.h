// The library's exported header: one ICC profile, and the records stored in it.
#pragma once

#include "handler/VKCLProfileOptions.h"
#include "handler/VKCLProfileProperties.h"
#include "platform/Export.h"
#include "platform/mfc/CString.h"
#include "platform/plinth/AFilePath.h"
#include "platform/plinth/AString.h"
#include "privatetags/InkLimitRecords.h"
#include "privatetags/ParameterRecords.h"
#include "privatetags/ProfileDataList.h"
#include "privatetags/VKPrivateTag.h"
#include "profile/VKCLProfile.h"
#include "profile/icc.h"
#include "split/SplitParam.h"

/// Records in, records out: every Write operation turns a record into one private tag and adds or
/// replaces it in the file at once; every Get operation reads one private tag and rebuilds the
/// record from it.
///
/// Results are 1 on success and 0 on failure (where noted, the stored number); nothing is thrown.
/// A failed Write leaves the file as it was. A failed Get leaves the record as it was, unless said
/// otherwise. A payload longer than the record fills the record; a shorter one fills what it has
/// and leaves the rest of the record alone. Records own what a Get puts into them and release it
/// in their destructors; what they held before is released.
///
/// Not for use by two threads at a time; different handlers on different files are independent.
class VKCL_API VKCLProfileHandler {
 public:
  /// The kinds of embedded file, each with a private tag of its own.
  enum EnbedFileType : int {
    EnbedFileTRC = 0,  ///< 'QX58'
    EnbedFile1 = 1,    ///< 'QX61'
    EnbedFile2 = 2,    ///< 'QX62'
    EnbedFile3 = 3,    ///< 'QX63'
    EnbedFile4 = 4,    ///< 'QX65'
  };

  /// Opens the profile at `path`. `flag` is the channel count of VKCLProfile: 0 takes it from the
  /// header. Never fails; ask IsICCFile.
  VKCLProfileHandler(const AFilePath& path, int flag) noexcept : profile_(path, flag) {}

  /// The owned profile; never null, and the handler keeps it.
  VKCLProfile* GetProfilePtr() { return &profile_; }

  ///@{
  /// What the owned profile answers to the question of that meaning; see VKCLProfile.
  int IsVKCLProfile() const { return profile_.isVKCLProfile(); }
  int IsICCFile() const { return profile_.isValidICC(); }
  int IsOutputICCFile() const { return profile_.isValidOutputICC(); }
  icColorSpaceSignature GetColorSpace() const { return profile_.GetColorSpace(); }
  icColorSpaceSignature GetPCS() const { return profile_.GetPCS(); }
  int GetVKCLProfileFinishedState(VKCLProfileFinishedState& state, int flag) const {
    return profile_.GetVKCLProfileFinishedState(state, flag);
  }
  ///@}

  int WriteInkSplitTag(const SplitParam& split);                     ///< 'QX50'
  int WriteSILWithLinTag(const VKSingleInkLimitWithLinRef& limits);  ///< 'QX51'
  /// 'QX52'. Overwrites the record's version first: 2 when its count is above 1, else 4.
  /// Deliberate, and done here only.
  int WriteMultipleInkLimitTag(VKMultiInklimit& limits);
  /// 'QX53'. The header's colour space follows the record's colour mode; that change stays in the
  /// profile object also when the tag cannot be written.
  int WriteVKColorParamTag(const VKColorParam& param);
  int WriteTrcTag(const AFilePath& path);                            ///< 'QX58', the whole file
  int WriteVKCMStoDither(const int& flag);                           ///< 'QX64'
  int WriteDitherParamTag(const VKDitherParam& dither);              ///< 'QX66'
  int WriteVKCompatibilityParam(const VKCompatibilityParam& param);  ///< 'QX67'
  int WriteVKSpotSIL(const VKSpotSingleInkLimit& limits);            ///< 'QX68'
  /// 'QX69'. Stores the links' lengths and the payload's length in the record.
  int WriteVKSpotLinDL(VKSpotLinDLParam& links);
  int WriteVKLinExtraData(const VKLinExtraDataParam& param);       ///< 'QX70'
  int WriteVSDProfile(const AFilePath& path);                      ///< 'QX71', name and file
  int WriteVKWizardFlag(int flag);                                 ///< 'QX74'
  int WriteVKChromaAdjust(const AString& text);                    ///< 'QX75'
  int WriteVKProfileExtraParam(const VKProfileExtraParam& param);  ///< 'QX76'

  /// Appends split (when given), single ink limits, multiple ink limits and colour parameters in
  /// one pass, as new tags, also where such tags exist. Neither the version of the multiple ink
  /// limits nor the header's colour space is adjusted: deliberately unlike the single writers.
  int WriteAllVKPrivateTags(const VKSingleInkLimitWithLinRef& single, const VKMultiInklimit& multi,
                            const VKColorParam& param, const SplitParam* split);

  /// 'QX50'. With `upgrade` non-zero the result is of version 4.
  ///
  /// The records are taken from payload offset 16, four bytes before the place where the writer
  /// puts them: deliberate, kept for the callers that rely on it. vkcl::ReadStoredSplit
  /// (StoredSplit.h) gives the records as they are stored. Entries that the payload lacks keep
  /// their initial values. After a failure with a readable tag the record holds the payload's
  /// version, size and count, and no records.
  int GetSplitParam(SplitParam& split, int upgrade) const;
  int GetVKSingleInkLimitWithLinRef(VKSingleInkLimitWithLinRef& limits) const;  ///< 'QX51'
  /// 'QX52'. Fails when the stored version is below `minimumVersion`. Nothing is converted.
  int GetVKMultiInklimit(VKMultiInklimit& limits, int minimumVersion) const;
  /// 'QX53'. A Make of exactly "Hewlett-Packard" becomes "HP", and blanks at both ends of
  /// MediaName go.
  int GetVKColorParam(VKColorParam& param) const;
  /// 'QX64': the stored number, whatever it is; 0 without a valid profile or without the tag.
  int IsCMStoDither() const;
  /// 'QX66'. A dither type other than 1 fails; the record then has the stored type and size and no
  /// table.
  int GetVKDitherParam(VKDitherParam& dither) const;
  int GetVKCompatibilityParam(VKCompatibilityParam& param) const;  ///< 'QX67'
  int GetVKSpotSIL(VKSpotSingleInkLimit& limits) const;            ///< 'QX68'
  /// 'QX69'. When a link is refused by the profiler library the result is 0 and what was read so
  /// far stays in the record.
  int GetVKSpotLinDL(VKSpotLinDLParam& links) const;
  int GetVKLinExtraData(VKLinExtraDataParam& param) const;  ///< 'QX70'
  int GetVSDProfileParam(VKVSDProfileParam& param) const;   ///< 'QX71', the head
  /// 'QX71': writes the embedded sidecar to a file, replacing one that exists. What is there and no
  /// file, a folder, a device or a pipe, is refused before anything is touched.
  int GetVSDProfile(const AFilePath& destination) const;
  /// 'QX74': the stored number, whatever it is; 0 without the tag.
  int IsWizardICC() const;
  int GetVKChromaAdjust(AString& text) const;                    ///< 'QX75'
  int GetVKProfileExtraParam(VKProfileExtraParam& param) const;  ///< 'QX76'

  // Data lists. Writers refuse a list whose values do not fit a tag. Readers refuse a payload whose
  // length is not the one that its counters announce, and then leave the list cleared; without a
  // readable tag the list stays.

  int WriteLinMeasurementData(const ProfileDataList& list);   ///< 'QX54'
  int WriteLinReferenceData(const ProfileDataList& list);     ///< 'QX55'
  int WriteGBMeasurementData(const ProfileDataList& list);    ///< 'QX56'
  int WriteGBReferenceData(const ProfileDataList& list);      ///< 'QX57'
  int WriteCharMeasurementData(const ProfileDataList& list);  ///< 'QX59'
  int WriteCharReferenceData(const ProfileDataList& list);    ///< 'QX60'
  int WriteVKLinRefData(const ProfileDataList& list);         ///< 'QX72'
  int WriteVKLinOutputData(const ProfileDataList& list);      ///< 'QX73'
  int GetVKLinRefData(ProfileDataList& list) const;           ///< 'QX72'
  int GetVKLinOutputData(ProfileDataList& list) const;        ///< 'QX73'

  /// Embeds a profile that the profiler library holds, byte for byte.
  int WriteCLICCProfieRef(void* profileRef, EnbedFileType type);
  /// Writes an embedded file to `path`, replacing one that exists; also when the new one cannot be
  /// created the old one is gone. What is there and no file (a folder, a device, a pipe), the
  /// profile itself and an unknown type are refused before anything is touched.
  int GetEnbededFile(const AFilePath& path, EnbedFileType type) const;

  /// The options with which the profile was computed, from the file's 'meta' dictionary. Without
  /// them the result is 0 and `options` stays; with some of them, the others become empty.
  int GetProfileOptions(VKCLProfileOptions& options) const;

  /// Gathers everything: records, target, options, and the lists that the finished state (asked
  /// with `flag`, see VKCLProfile::GetVKCLProfileFinishedState) lets a profile have. What is
  /// missing, or cannot be read from the file, keeps what the record had. Fails, and changes
  /// nothing, when there is no state; fails, too, when memory was short, and members that were not
  /// reached keep what they had then.
  int GetVKCLProfileProperties(VKCLProfileProperties& properties, int flag) const;
  /// 1 when the linearisation measurement is a placeholder: format 0xFFFFFFFF, as many samples
  /// measured as there are, and no values.
  int IsLinFake() const;

  // The lock. From linearisation on, colour settings are changed only while the profile is
  // unlocked (status 10 or 12).

  /// 1 when the colour parameters can be read and say so, whatever the finished state.
  int isVKCLUnLockedProfile() const;
  /// Status 9 becomes 12, any other but 10 and 12 becomes 10. 1, and no write, when unlocked.
  int UnLockVKCLProfile();
  /// Replaces the colour parameters by `settings`, whose status becomes the stored one first.
  int ModifyUnLockedColorSettings(VKColorParam& settings);
  /// Status 10 becomes 11, 12 becomes 13; any other is refused.
  int LockUnLockedVKCLProfile();

 private:
  int WriteProfileDataList(const ProfileDataList& list, VKPrivateTagSignature signature);
  int ReadProfileDataList(ProfileDataList& list, VKPrivateTagSignature signature) const;
  int GetEnbededFile(const AFilePath& path, VKPrivateTagSignature signature) const;
  static int GetICCDataFormatFromStr(const AString& word, unsigned long& format);
  int LoadVKCLProfilePropertiesHelper(VKCLProfileProperties& properties) const;
  static int ParseVKCLtargBuffer(VKCLProfileProperties& properties, const char* text);

  VKCLProfile profile_;
};

/// A new 16-bit link of the profiler library that is a copy of `link16Ref`; the caller releases it
/// with CLFreeCLLink16Ref. `size`, when given, receives the serialised length. Null for a null
/// link and for one that cannot be saved or loaded.
extern "C" VKCL_API void* CopyCLLinkRef(void* link16Ref, unsigned int* size);

/// Text of the host's narrow encoding (the ANSI code page on Windows, the locale's charset
/// elsewhere) as UTF-8. Bytes that are no text become U+FFFD.
VKCL_API AString VKCLMultiByteToUTF8(const AString& text);
