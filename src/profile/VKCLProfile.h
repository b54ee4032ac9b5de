// One ICC profile file and the private tags in it.
//
// The object holds the header and the tag table; tag data stay in the file. Every read opens the
// file, reads what it needs and closes it; every write changes the file at once and then brings
// the object up to date. What the file is taken to be is what it was when it was opened: while an
// object writes, no other one is to write to the same file, and an object that was opened before is
// opened anew. Not for use by two threads at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "platform/Export.h"
#include "platform/plinth/AFilePath.h"
#include "privatetags/VKPrivateTag.h"
#include "profile/icc.h"

/// How far the making of a profile has come. Ordered: a higher value is further along.
enum VKCLProfileFinishedState : std::int32_t {
  FinishedNone = 0,              ///< no profile of the system's own
  FinishedInkLimit = 1,          ///< 'QX51' and 'QX53' are there
  FinishedInkSplit = 2,          ///< 'QX50' is there
  FinishedLinearisation = 3,     ///< 'QX54' is there, or 'QX51' holds more than 140 bytes
  FinishedMultiInkLimit = 4,     ///< 'QX52' is there
  FinishedGrayBalance = 5,       ///< 'QX56' is there
  FinishedCharacterisation = 6,  ///< 'QX59' is there
  FinishedProfile = 7,           ///< one of 'B2A0', 'B2A1' and 'B2A2' is there
};

class AFile;
class VKCLProfile;

namespace vkcl {
struct FilePiece;
struct ProfileIdentity;
struct ProfilePeer;
struct TableInFile;
struct TagChange;
/// Whether tags that share their data get a copy each in a file that is written anew.
enum class TagBlocks : bool {
  Own,     ///< each its own
  Shared,  ///< the first one's, as before
};
/// What WriteArranged and WriteChanged have in common (TagLayout.h).
bool WriteTags(const VKCLProfile& profile, std::span<const TagChange> changes, TagBlocks blocks,
               AFile& to);
/// See ProfileIdentity.h.
VKCL_API bool IdentifyProfile(const AFilePath& path, int channelCount,
                              ProfileIdentity& identity) noexcept;
}  // namespace vkcl

/// One ICC profile file: its header, its tag table, and operations on the tags in it.
class VKCL_API VKCLProfile {
 public:
  /// Reads header and tag table. A file that is missing, short or malformed leaves the object
  /// invalid; ask isValidICC.
  ///
  /// `channelCount` 0 takes the number of channels from the header's colour space, and a colour
  /// space without one (Lab, XYZ; deliberately also 2CLR and 3CLR) makes the profile invalid. Any
  /// other number is kept as it is and the colour space is not looked at.
  VKCLProfile(const AFilePath& path, int channelCount) noexcept;
  /// Removes the file from disk when its extension is exactly ".tmp": whoever loads a temporary
  /// copy of a profile relies on it.
  ~VKCLProfile();
  ///@{
  /// Each copy has a table of its own. Both name the same file.
  VKCLProfile(const VKCLProfile& other) noexcept;
  VKCLProfile& operator=(const VKCLProfile& other) noexcept;
  ///@}

  /// 1 when header and tag table were read and accepted.
  int isValidICC() const { return valid; }
  /// 1 when valid and of class 'prtr'.
  int isValidOutputICC() const;
  /// 1 when this is one of the system's own profiles: it holds 'QX51' and 'QX53', and no private
  /// tag above 'QX76', which only a newer system would have written.
  int isVKCLProfile() const;
  /// Sets `state` and returns 1 when it is above FinishedNone, else 0. With `ignoreStatus` 0 the
  /// status of the colour parameters takes part: status 9 is never reported above
  /// FinishedLinearisation, whatever tags there are.
  int GetVKCLProfileFinishedState(VKCLProfileFinishedState& state, int ignoreStatus) const;

  ///@{
  /// A field of the header, as held in memory, also of an invalid profile.
  icProfileClassSignature GetDeviceClass() const { return header.deviceClass; }
  icColorSpaceSignature GetColorSpace() const { return header.colorSpace; }
  icColorSpaceSignature GetPCS() const { return header.pcs; }
  ///@}

  /// Size of the first table entry of that signature, without padding; 0 without one.
  unsigned long GetTagSize(icTagSignature sig) const;
  /// Colour mode 16 sets the header's colour space to 'CMY ', 512 to 'RGB '; others change
  /// nothing. In memory only: the file follows with the next rewrite of its header.
  void UpdateHeaderColorSpace(int colorMode);
  /// Gives the path of the file, as the constructor had it.
  void GetICCFilePath(AFilePath& out) const { out = filePath; }

  // Reading. The first entry of a signature counts. 0, and an untouched buffer, when the tag is
  // absent, is no 'data' tag, or is not wholly in the file. The signature need not be a 'QX' one.

  /// Copies the content (the entry's size less 12 bytes) into `buffer`, whose room is not known
  /// here: the caller asks GetTagSize first. `size`, when given, receives the content's length,
  /// and 0 on failure.
  int ReadVKPrivateTag(VKPrivateTagSignature sig, void* buffer, unsigned long* size) const;
  /// The same, bounded: copies at most `capacity` bytes; `size` receives how many were copied.
  int ReadVKPrivateTag(VKPrivateTagSignature sig, void* buffer, unsigned long capacity,
                       unsigned long* size) const;
  /// Fills a tag whose signature is set. With `allocate` non-zero a new block is made, which the
  /// tag then owns (a block it held is not released; empty content fails); with 0 the content
  /// goes into the block that the tag has.
  int ReadVKPrivateTag(VKPrivateTag* tag, int allocate) const;
  /// The text of the characterisation target tag 'targ', as stored: no terminator is added. The
  /// caller releases it with array delete. Null, and `size` untouched, without a readable tag.
  char* ReadtargTag(unsigned long& size) const;

  // Writing. Private tags are stored as binary 'data'. All writers assume that tag data lie in
  // table order behind the table, each padded to a multiple of 4, as they leave them themselves;
  // vkcl::TagDataSuitWriting tells whether they do. On failure, which is 0, the file is as it was.

  ///@{
  /// Stores a payload: replaces the first entry of that signature, or appends one. When the
  /// profile is not valid and its channel count is 3 to 16, a minimal output profile that holds
  /// just this tag takes the place of the file, provided that the file is no ICC profile now.
  int WriteVKPrivateTag(VKPrivateTagSignature sig, const void* data, unsigned long length);
  int WriteVKPrivateTag(const VKPrivateTag* tag);
  ///@}
  /// Appends `count` tags in one rewrite, also where their signatures exist already.
  int WriteMultiVKPrivateTags(const VKPrivateTag* tags, int count);

  /// Appends this profile's private tags, in table order, to `target`, a standard profile made
  /// elsewhere; this profile is one of the system's own. 1, and nothing changes, when both name one
  /// file. Deliberately it is this object's header size that is set to the target's new one; the
  /// target object keeps its old one: whoever goes on with the target opens it anew.
  int MergeVKPrivateTagIntoStandICC(VKCLProfile& target);
  /// Writes a copy without private tags to `outputPath`, created or replaced. Tags that share their
  /// data go on sharing them; deliberately there is only room for the first one, and a later one
  /// that is longer is written over what follows it. Bytes that this file does not hold are zeros.
  /// (vkcl::WriteChangedCopy keeps all tags whole, and refuses a file that lacks bytes.) Fails when
  /// no other tag is left, for this profile's own file, and for a device or a pipe; on failure
  /// nothing changes.
  int WriteICCWithoutVKiTags(const char* outputPath);

  std::int32_t valid = 0;         ///< 1 once header and tag table were read and accepted
  std::int32_t channelCount = 0;  ///< colour channels
  AFilePath filePath;             ///< of the file, as the constructor had it
  icHeader header = {};           ///< in host order
  std::uint32_t tagCount = 0;     ///< entries of the table
  icTag* tagTable = nullptr;      ///< owned, in host order; null until loaded

 private:
  friend struct vkcl::ProfilePeer;
  friend struct vkcl::TableInFile;
  friend bool vkcl::WriteTags(const VKCLProfile& profile, std::span<const vkcl::TagChange> changes,
                              vkcl::TagBlocks blocks, AFile& to);
  friend bool vkcl::IdentifyProfile(const AFilePath& path, int channelCount,
                                    vkcl::ProfileIdentity& identity) noexcept;

  // Of no file; Load fills it.
  explicit VKCLProfile(int channelCount) noexcept;
  void Load(AFile& file);
  static void ReverseICCHeader(icHeader* h);
  void CopyFrom(const VKCLProfile& other);
  int GetTagIndex(icTag tag, unsigned long& index) const;
  const icTag* FindTag(std::uint32_t sig) const;
  static unsigned long GetPadSize(unsigned long n);

  int isVKCLPrivateTag(icTagSignature sig) const;
  int ReadDataType(icTag tag, icDataType* out) const;
  int ReadDataTypeContent(icTag tag, char* out) const;
  int ReadTextType(icTag tag, icTextType* out) const;
  int ReadTextTypeContent(icTag tag, char* out) const;
  bool FileHolds(const icTag& tag) const;
  bool ReadWhole(const icTag& tag, std::size_t headSize, void* out) const;
  struct TypedRead;
  bool ReadTyped(const icTag& tag, const TypedRead& what) const;
  static bool ReadTyped(AFile& file, const icTag& tag, const TypedRead& what);
  bool ReadContentStart(AFile& file, VKPrivateTagSignature sig, void* out,
                        unsigned long& length) const;

  int UpdateVKPrivateTag(int index, const void* data, unsigned long length);
  int OverwriteTag(const icTag& entry, const void* data);
  int RebuildFrom(std::uint32_t index, const void* data, std::uint32_t length);
  int AddVKPrivateTag(VKPrivateTagSignature sig, const void* data, unsigned long length);
  using AppendPieces =
      std::function<void(std::vector<vkcl::FilePiece>& pieces, std::size_t i, std::uint64_t at)>;
  int AppendTags(const std::vector<icTag>& added, const AppendPieces& append);
  std::vector<icTag> SelectTags(bool isPrivate) const;
  int CreateDummyICC(icTag* tag, const void* data);
  bool IsProfileNow() const;
  static icHeader DummyHeader(int channels, std::uint32_t tagSize);
  icTag EntryInFile(std::uint32_t index) const;
  bool RewritableTable(std::vector<icTag>& table) const;
  static std::vector<char> BuildHead(const icHeader& newHeader, const std::vector<icTag>& table);
  int Rewrite(const std::vector<vkcl::FilePiece>& body, bool cut, std::uint64_t newSize,
              std::vector<icTag>& table);
  static void WriteTagTable(void** cursor, const icTag* tags, unsigned long count);
  static void WriteTagTableEntry(void* dest, const icTag* tag);

  // Whether the table was read whole. If not, it is as the file has it, and nothing is found in it.
  bool tableIsWhole_ = false;
  // The header's size as it stands in the file.
  std::uint32_t sizeInFile_ = 0;
  // Length of the file when it was last opened as a whole: loaded or rewritten.
  std::uint64_t fileLength_ = 0;
  // The entries whose size in the table is that of an update that failed: index, size in the file.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> sizesInFile_;
};
