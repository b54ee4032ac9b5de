#include "edit/ProfileEdit.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "platform/Bytes.h"
#include "platform/Guarded.h"
#include "platform/plinth/ReplaceFile.h"
#include "platform/plinth/SiblingFile.h"
#include "platform/plinth/WholeFile.h"
#include "profile/TableInFile.h"
#include "profile/TableLayout.h"
#include "profile/TagLayout.h"

namespace vkcl {
namespace {

bool IsPrivate(const icTag& tag) { return IsPrivateSignature(tag.sig); }

// Whether the tags lie one behind the other.
bool LiesInOrder(std::span<const icTag> table) {
  return std::adjacent_find(table.begin(), table.end(), [](const icTag& tag, const icTag& next) {
           return next.offset != std::uint64_t{tag.offset} + PadTo4(tag.size);
         }) == table.end();
}

bool SuitsAnyWork(const VKCLProfile& profile) {
  const std::vector<icTag> table = TableInFile(profile).tags;
  if (!TagDataSuitAppending(profile)) return false;
  // Looking at each tag among all others takes long with many tags.
  return LiesInOrder(table) || std::all_of(table.begin(), table.end(), [&](const icTag& tag) {
           const auto signature = static_cast<VKPrivateTagSignature>(tag.sig);
           return !IsPrivate(tag) || TagDataSuitWriting(profile, signature, 0);
         });
}

bool HasOtherNames(const AFilePath& path) {
  std::error_code error;
  return std::filesystem::hard_link_count(host::SystemPath(path.str()), error) > 1 && !error;
}

bool WriteBytes(const FileContent& content, AFile& to) {
  return to.write(content.bytes.get(), content.size) == content.size;
}

bool SameBytes(const FileContent& a, const FileContent& b) {
  return a.bytes && b.bytes && a.size == b.size &&
         std::memcmp(a.bytes.get(), b.bytes.get(), a.size) == 0;
}

// Whether the table in the file is the one that was loaded, so that the content belongs to it.
bool HoldsTable(const FileContent& file, const VKCLProfile& profile) {
  const std::vector<icTag> table = TableInFile(profile).tags;
  if (TableEnd(table.size()) > file.size) return false;
  const char* entry = file.bytes.get() + kTableStart;
  bool same = LoadBig32(entry - 4) == table.size();
  for (const icTag& tag : table) {
    same = same && LoadBig32(entry) == static_cast<std::uint32_t>(tag.sig) &&
           LoadBig32(entry + 4) == tag.offset && LoadBig32(entry + 8) == tag.size;
    entry += kTableEntry;
  }
  return same;
}

// The header with zeros where an edit may change it.
std::vector<char> FixedHeader(const FileContent& file) {
  std::vector<char> header(file.bytes.get(),
                           file.bytes.get() + std::min<std::size_t>(file.size, 128));
  header.resize(128);
  std::fill_n(header.begin(), 4, '\0');       // size
  std::fill_n(header.begin() + 16, 4, '\0');  // colour space
  return header;
}

std::span<const char> BytesOf(const icTag& tag, const FileContent& file) {
  if (std::uint64_t{tag.offset} + tag.size > file.size) return {};
  return {file.bytes.get() + tag.offset, tag.size};
}

// The bytes of the tags that an edit leaves alone, by table order.
bool SameStandardTags(const VKCLProfile& before, const FileContent& oldFile,
                      const VKCLProfile& after, const FileContent& newFile) {
  const std::vector<icTag> table = TableInFile(after).tags;
  auto next = table.begin();
  const auto skipPrivate = [&] { next = std::find_if_not(next, table.end(), IsPrivate); };
  for (const icTag& tag : TableInFile(before).tags) {
    if (IsPrivate(tag)) continue;
    skipPrivate();
    if (next == table.end() || next->sig != tag.sig || next->size != tag.size) return false;
    const std::span<const char> oldBytes = BytesOf(tag, oldFile);
    const std::span<const char> newBytes = BytesOf(*next, newFile);
    if (!std::equal(oldBytes.begin(), oldBytes.end(), newBytes.begin(), newBytes.end())) {
      return false;
    }
    ++next;
  }
  skipPrivate();
  return next == table.end();
}

// Whether every private tag is wholly in the file.
bool HoldsPrivateTags(const VKCLProfile& profile, const FileContent& file) {
  const std::vector<icTag> table = TableInFile(profile).tags;
  return std::all_of(table.begin(), table.end(), [&](const icTag& tag) {
    return !IsPrivate(tag) || std::uint64_t{tag.offset} + tag.size <= file.size;
  });
}

}  // namespace

// The copy, and the profile as it was when the edit began.
class ProfileEdit::Work {
 public:
  Work(const AFilePath& path, int channels) : before(path, channels) {}
  // The profile is not this object's to remove, whatever its name.
  ~Work() { before.filePath = AFilePath(); }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

  // Whether the copy holds all that it is to hold.
  bool CopyIsWhole() const {
    const VKCLProfile after(copy->path(), before.channelCount);
    const FileContent changed = ReadWholeFile(copy->path());
    return changed.bytes && after.isValidICC() != 0 &&
           FixedHeader(content) == FixedHeader(changed) &&
           SameStandardTags(before, content, after, changed) && HoldsPrivateTags(after, changed);
  }

  VKCLProfile before;
  FileContent content;  // of the profile
  std::optional<SiblingFile> copy;
};

const char* EditStateText(EditState state) {
  switch (state) {
    case EditState::Open: return "it is being edited";
    case EditState::Done: return "the change is in its place";
    case EditState::NoProfile: return "it is no valid ICC profile";
    case EditState::NotWritable: return "it cannot be written, or a file cannot be made beside it";
    case EditState::HardLinked:
      return "it has other names (hard links), which would go on naming the old content";
    case EditState::NoCopy:
      return "a copy could not be written: a tag reaches beyond the end of the file, or the disk "
             "is full";
    case EditState::Changed: return "somebody else changed it in the meantime";
    case EditState::Damaged: return "the changed copy lacks something that it holds";
    case EditState::NotPlaced: break;
  }
  return "the changed copy could not take its place";
}

ProfileEdit::ProfileEdit(const AFilePath& profile, int channels, const LayoutTest& suits,
                         HardLinks hardLinks) noexcept {
  const bool begun = Guarded([&] {
    state_ = Begin(profile, channels, suits, hardLinks);
    return true;
  });
  if (begun && state_ == EditState::Open) return;
  if (!begun) state_ = EditState::NoCopy;
  handler_.reset();
  work_.reset();
}

ProfileEdit::~ProfileEdit() = default;

EditState ProfileEdit::Begin(const AFilePath& profile, int channels, const LayoutTest& suits,
                             HardLinks hardLinks) {
  SiblingFile::RemoveLeftovers(profile);
  work_ = std::make_unique<Work>(profile, channels);
  Work& work = *work_;
  if (work.before.isValidICC() == 0) return EditState::NoProfile;
  work.copy.emplace(profile);
  if (!work.copy->exists()) return EditState::NotWritable;
  if (hardLinks == HardLinks::Refuse && HasOtherNames(work.copy->place())) {
    return EditState::HardLinked;
  }
  work.content = ReadWholeFile(profile);
  if (!work.content.bytes) return EditState::NoCopy;
  if (!HoldsTable(work.content, work.before)) return EditState::Changed;
  arranged_ = suits ? !suits(work.before) : !SuitsAnyWork(work.before);
  AFile& file = work.copy->file();
  const bool copied = arranged_ ? WriteArranged(work.before, file) : WriteBytes(work.content, file);
  if (!copied) return EditState::NoCopy;
  bytesBefore_ = work.content.size;
  handler_ = std::make_unique<VKCLProfileHandler>(work.copy->path(), work.before.channelCount);
  return handler_->IsICCFile() != 0 ? EditState::Open : EditState::NoCopy;
}

bool ProfileEdit::StoreTags(std::span<const TagChange> changes) noexcept {
  if (state_ != EditState::Open) return false;
  const bool stored = Guarded([&] {
    // The copy is read before it is written.
    Work& work = *work_;
    if (!WriteChanged(*handler_->GetProfilePtr(), changes, work.copy->file())) return false;
    const VKCLProfile after(work.copy->path(), work.before.channelCount);
    if (!work.copy->file().setLength(after.header.size)) return false;
    handler_ = std::make_unique<VKCLProfileHandler>(work.copy->path(), work.before.channelCount);
    arranged_ = arranged_ || !SuitsAnyWork(work.before);
    return handler_->IsICCFile() != 0;
  });
  if (stored) return true;
  state_ = EditState::NoCopy;
  handler_.reset();
  work_.reset();
  return false;
}

std::uint64_t ProfileEdit::bytesNow() const {
  const std::int64_t length = work_ != nullptr && work_->copy ? work_->copy->file().length() : -1;
  return length > 0 ? static_cast<std::uint64_t>(length) : 0;
}

EditState ProfileEdit::Commit() noexcept {
  if (state_ != EditState::Open) return state_;
  state_ = EditState::NotPlaced;
  Guarded([&] {
    state_ = Finish();
    return true;
  });
  handler_.reset();
  work_.reset();
  return state_;
}

EditState ProfileEdit::Finish() {
  Work& work = *work_;
  const auto isChanged = [&] {
    return !SameBytes(ReadWholeFile(work.before.filePath), work.content);
  };
  const bool whole = work.CopyIsWhole();
  // A copy that was made while somebody wrote is a mixture.
  if (!whole) return isChanged() ? EditState::Changed : EditState::Damaged;
  if (!work.copy->settle()) return isChanged() ? EditState::Changed : EditState::NotPlaced;
  // Of edits that end at the same moment the first one wins, and the others see it.
  if (!work.copy->holdPlace()) return isChanged() ? EditState::Changed : EditState::NotPlaced;
  // Again, as late as can be: what others write into the profile from here on is lost.
  if (isChanged()) return EditState::Changed;
  return work.copy->takePlace() ? EditState::Done : EditState::NotPlaced;
}

bool IsUnfinishedCopy(const AFilePath& path) noexcept {
  return Guarded([&] { return SiblingFile::IsNameOfNew(path); });
}

bool WriteChangedCopy(const VKCLProfile& profile, std::span<const TagChange> changes,
                      const AFilePath& to) noexcept {
  return Guarded([&] {
    return ReplaceFile(to, [&](AFile& file) { return WriteChanged(profile, changes, file); });
  });
}

}  // namespace vkcl
