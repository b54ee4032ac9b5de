// The envelope of one private tag: signature, payload, length; and the builders that fill it.
//
// Every payload is the little-endian image of a record, its fields in declaration order, without
// alignment padding (4-byte packing). This differs from the big-endian ICC parts around it.
#pragma once

#include <cstdint>

#include "platform/Export.h"
#include "platform/plinth/AFilePath.h"
#include "platform/plinth/AString.h"

class ProfileDataList;
class SplitParam;
class VKColorParam;
class VKCompatibilityParam;
class VKDitherParam;
class VKLinExtraDataParam;
class VKMultiInklimit;
class VKProfileExtraParam;
class VKSingleInkLimitWithLinRef;
class VKSpotLinDLParam;
class VKSpotSingleInkLimit;

/// The signatures of the private tags: four characters as one big-endian number, 'QX' first.
enum VKPrivateTagSignature : std::uint32_t {
  QX50 = 0x51583530,  ///< ink split (SplitParam)
  QX51 = 0x51583531,  ///< single ink limits (VKSingleInkLimitWithLinRef)
  QX52 = 0x51583532,  ///< multiple ink limits (VKMultiInklimit)
  QX53 = 0x51583533,  ///< colour parameters (VKColorParam)
  QX54 = 0x51583534,  ///< linearisation measurement (ProfileDataList)
  QX55 = 0x51583535,  ///< linearisation reference (ProfileDataList)
  QX56 = 0x51583536,  ///< gray-balance measurement (ProfileDataList)
  QX57 = 0x51583537,  ///< gray-balance reference (ProfileDataList)
  QX58 = 0x51583538,  ///< embedded file of type 0: the TRC file
  QX59 = 0x51583539,  ///< characterisation measurement (ProfileDataList)
  QX60 = 0x51583630,  ///< characterisation reference (ProfileDataList)
  QX61 = 0x51583631,  ///< embedded file of type 1
  QX62 = 0x51583632,  ///< embedded file of type 2
  QX63 = 0x51583633,  ///< embedded file of type 3
  QX64 = 0x51583634,  ///< colour-management-to-dither flag (int32)
  QX65 = 0x51583635,  ///< embedded file of type 4
  QX66 = 0x51583636,  ///< dither (VKDitherParam)
  QX67 = 0x51583637,  ///< compatibility block (VKCompatibilityParam)
  QX68 = 0x51583638,  ///< spot-colour ink limits (VKSpotSingleInkLimit)
  QX69 = 0x51583639,  ///< spot-colour linearisation links (VKSpotLinDLParam)
  QX70 = 0x51583730,  ///< linearisation extra data (VKLinExtraDataParam)
  QX71 = 0x51583731,  ///< VSD sidecar file with its name (VKVSDProfileParam and the file)
  QX72 = 0x51583732,  ///< linearisation reference, second form (ProfileDataList)
  QX73 = 0x51583733,  ///< linearisation output (ProfileDataList)
  QX74 = 0x51583734,  ///< wizard flag (int32)
  QX75 = 0x51583735,  ///< chroma-adjust text
  QX76 = 0x51583736,  ///< extra parameters (VKProfileExtraParam)
};

namespace vkcl {

/// Whether a tag's signature begins with "QX", as those of all private tags do.
constexpr bool IsPrivateSignature(std::uint32_t signature) { return signature >> 16 == 0x5158; }

}  // namespace vkcl

/// One private tag in memory.
///
/// The destructor releases `data`. Copies share the block: assignment is shallow by design, and
/// whoever copies makes sure that only one of the copies is destroyed with the block in it.
///
/// The Init operations build the payload of one tag from a record. They return 1, or 0 when the
/// record cannot be stored or memory is short; then the tag must not be written. The block is
/// stored without releasing an earlier one: a tag is filled once. Bytes without meaning (where the
/// record in memory holds a reference) are zeros, so equal records give equal bytes.
class VKCL_API VKPrivateTag {
 public:
  /// Under which the tag is stored; 0 for none yet.
  VKPrivateTagSignature signature = static_cast<VKPrivateTagSignature>(0);
  char* data = nullptr;    ///< owned, allocated with array new; null when empty
  std::uint32_t size = 0;  ///< length of the payload in bytes

  VKPrivateTag() = default;
  ~VKPrivateTag();
  ///@{
  /// Shares the block with the other tag.
  VKPrivateTag(const VKPrivateTag&) = default;
  VKPrivateTag& operator=(const VKPrivateTag&) = default;
  ///@}

  /// Sets the signature; the payload stays.
  void SetSignature(VKPrivateTagSignature which) { signature = which; }
  /// Length of the payload in bytes, without the head that the file puts before it.
  std::uint32_t GetTagSize() const { return size; }
  /// The payload, which the tag keeps; null when empty.
  char* GetData() const { return data; }

  /// Only for the eight data-list signatures; others are refused before anything is allocated.
  int InitFromProfileDataList(const ProfileDataList& list, VKPrivateTagSignature which);
  /// Refuses a record without splits.
  int InitFromSplitParam(const SplitParam& split);
  /// Refuses a record without a table.
  int InitFromDitherParam(const VKDitherParam& dither);
  /// 'QX64': the number.
  int InitCMStoDither(const int& flag);
  /// 'QX75': the text and a terminating zero.
  int InitVKChromaAdjust(const AString& text);
  /// 'QX74': the number.
  int InitWizardTag(int flag);
  /// 'QX67': the whole record of 64 bytes.
  int InitFromVKCompatibilityParam(const VKCompatibilityParam& param);
  /// As many bytes as the record's size field says.
  int InitFromVKColorParam(const VKColorParam& param);
  /// The whole file. Refuses a file that is missing or cannot be read as a whole.
  int InitFromTRCFile(const AFilePath& path);
  /// As many bytes as the record's size field says.
  int InitFromVKMultiInklimit(const VKMultiInklimit& limits);
  /// Always the whole record of 140 bytes, whatever its size field says.
  int InitFromVKSingleInkLimitWithLinRef(const VKSingleInkLimitWithLinRef& limits);
  /// As many bytes as the record's size field says. Refuses a record that lacks limits it counts,
  /// or states more than it holds.
  int InitFromVKSpotSIL(const VKSpotSingleInkLimit& limits);
  /// Stores the links' lengths and the payload's length in the record.
  int InitFromVKSpotLinDL(VKSpotLinDLParam& links);
  /// Always the whole record of 572 bytes.
  int InitFromVKLinExtraDataParam(const VKLinExtraDataParam& param);
  /// The file behind a VKVSDProfileParam that holds its name. A name of 128 characters or more
  /// loses its end and its terminator: the file's bytes are not moved for it.
  int InitFromVSDProfile(const AFilePath& path);
  /// 'QX76': the whole record of 8 bytes.
  int InitFromVKProfileExtraParam(const VKProfileExtraParam& param);
};
