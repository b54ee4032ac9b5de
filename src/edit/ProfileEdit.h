// Changing a profile so that there is always a whole one.
//
// The store writes into a profile where it lies, and takes its tag data to lie in table order. An
// edit works on a copy beside the profile instead, in table order where the profile itself is not,
// compares the copy with the profile when the work is done, and puts it in its place in one step.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "handler/VKCLProfileHandler.h"
#include "platform/Export.h"
#include "platform/plinth/AFilePath.h"
#include "profile/TagChange.h"

namespace vkcl {

/// How far an edit has come, or why it came to nothing.
enum class EditState {
  Open,         ///< the copy is there to be worked on
  Done,         ///< the copy took the profile's place
  NoProfile,    ///< the file is no valid ICC profile
  NotWritable,  ///< it may not be written, or its folder not
  HardLinked,   ///< it has other names, which would go on naming the old content
  NoCopy,       ///< the copy could not be written: a tag is not wholly in the file, or no room
  Changed,      ///< somebody changed the profile in the meantime
  Damaged,      ///< the copy lacks something that the profile holds
  NotPlaced,    ///< the copy could not take the place
};

/// The state in words, for people.
VKCL_API const char* EditStateText(EditState state);

/// One edit of one profile. Until Commit has succeeded the profile is as it was, and a crash at any
/// moment leaves the old profile or the new one, whole. What a crash leaves beside the profile, a
/// file named ".vkcl-....new", is removed by the next edit in that folder. Of edits of one profile
/// that overlap, in whatever threads and processes, the first that is committed wins, and the
/// others become EditState::Changed. (On Windows, where a file that is open is not replaced, and on
/// file systems without locks, two that are committed within the same instant may both be Done, and
/// the last one is what stays.)
class VKCL_API ProfileEdit {
 public:
  /// What to do with a profile that has other names.
  enum class HardLinks {
    Refuse,   ///< the state becomes EditState::HardLinked
    Replace,  ///< the edited name gets the new content, the others keep the old
  };
  /// Tells of a profile whether the store can do the work on it as it lies.
  using LayoutTest = std::function<bool(const VKCLProfile& profile)>;

  /// Makes the copy, with the permissions of the profile, and owner and group where that is
  /// allowed. A symbolic link is followed. `channels` as for VKCLProfile. The copy is in table
  /// order when `suits` says no; without it, when the store could damage a tag by any work.
  explicit ProfileEdit(const AFilePath& profile, int channels = 0, const LayoutTest& suits = {},
                       HardLinks hardLinks = HardLinks::Refuse) noexcept;
  /// Drops the copy unless it took the place.
  ~ProfileEdit();
  ProfileEdit(const ProfileEdit&) = delete;
  ProfileEdit& operator=(const ProfileEdit&) = delete;

  /// How far the edit has come, or why it came to nothing.
  EditState state() const { return state_; }
  /// Whether the copy was brought into table order. Bytes that no tag refers to are not in it.
  bool wasArranged() const { return arranged_; }

  /// The copy, while the state is Open; null otherwise. Do not write it by another object.
  VKCLProfileHandler* handler() { return handler_.get(); }

  /// Writes the copy anew, in table order, with private tags stored as they are given, or removed;
  /// see WriteChanged. `handler` is another one afterwards. False, and the edit has failed, when
  /// that is not possible.
  bool StoreTags(std::span<const TagChange> changes) noexcept;

  /// Length of the profile in bytes, when the edit began.
  std::uint64_t bytesBefore() const { return bytesBefore_; }
  /// Length of the copy in bytes as it is now; 0 when there is none.
  std::uint64_t bytesNow() const;

  /// Compares the copy with the profile (every tag that is not private must be there with the bytes
  /// it had, and the header must be as it was but for its size and colour space), has the system
  /// carry it to the medium and puts it in the place: Done. Any other state: the profile is as it
  /// was, and the copy is gone. While another edit of the profile is being put in the place, waits
  /// for it, at most ten seconds; then the state is NotPlaced.
  EditState Commit() noexcept;

 private:
  class Work;

  EditState Begin(const AFilePath& profile, int channels, const LayoutTest& suits,
                  HardLinks hardLinks);
  EditState Finish();

  EditState state_ = EditState::NoCopy;
  bool arranged_ = false;
  std::uint64_t bytesBefore_ = 0;
  std::unique_ptr<Work> work_;
  std::unique_ptr<VKCLProfileHandler> handler_;
};

/// Whether a file of that name is taken for a copy that an edit has left unfinished: edits of
/// profiles in its folder remove it, unless it is worked on.
VKCL_API bool IsUnfinishedCopy(const AFilePath& path) noexcept;

/// Writes a copy of a profile with private tags changed (WriteChanged) to `to`, which is created,
/// or replaced in one step. False, and `to` as it was, when that is not possible.
VKCL_API bool WriteChangedCopy(const VKCLProfile& profile, std::span<const TagChange> changes,
                               const AFilePath& to) noexcept;

}  // namespace vkcl
