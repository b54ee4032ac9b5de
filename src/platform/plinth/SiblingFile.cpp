#include "platform/plinth/SiblingFile.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>

namespace vkcl {
namespace {

namespace fs = std::filesystem;

// The name of a new file: prefix, 16 hexadecimal digits, a hyphen, a decimal number, suffix.
constexpr std::string_view kPrefix = ".vkcl-";
constexpr std::string_view kSuffix = ".new";
constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::size_t kHash = 16;
constexpr int kTries = 100;     // many may clear up at the same time
constexpr int kMostLinks = 40;  // as many as the systems follow

enum class Place { Free, Taken, Refused };

Place Look(const AFilePath& path) {
  std::error_code error;
  const fs::file_status status = fs::status(host::SystemPath(path.str()), error);
  if (status.type() == fs::file_type::not_found) return Place::Free;
  AFile file;
  const bool writable =
      status.type() == fs::file_type::regular && file.open(path, AFile::ReadWrite);
  return writable ? Place::Taken : Place::Refused;
}

AFilePath FolderOf(const AFilePath& path) {
  AFilePath folder = path;
  folder.removeLastComponent();
  return folder.str().empty() ? AFilePath(".") : folder;
}

// Name of a new file beside `path`: short, so that it fits wherever a name of its own does, and
// never one that somebody else is likely to take.
AFilePath Beside(const AFilePath& path) {
  static std::atomic<unsigned> counter = 0;
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  const std::uint64_t mixed = std::hash<std::thread::id>()(std::this_thread::get_id()) ^
                              static_cast<std::uint64_t>(now) * 0x9E3779B97F4A7C15u;
  std::string name(kPrefix);
  for (int shift = 60; shift >= 0; shift -= 4) name += kDigits[mixed >> shift & 15];
  name += '-' + std::to_string(counter++) + std::string(kSuffix);
  AFilePath beside = path;
  beside.removeLastComponent();
  beside.appendComponent(name);
  return beside;
}

bool IsOurs(std::string_view name) {
  if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix)) return false;
  name.remove_prefix(kPrefix.size());
  if (name.size() <= kHash + 1 + kSuffix.size() || name[kHash] != '-') return false;
  const std::string_view number = name.substr(kHash + 1, name.size() - kHash - 1 - kSuffix.size());
  return name.substr(0, kHash).find_first_not_of(kDigits) == std::string_view::npos &&
         number.find_first_not_of(kDigits.substr(0, 10)) == std::string_view::npos;
}

}  // namespace

AFilePath BehindLinks(const AFilePath& path) {
  fs::path place = host::SystemPath(path.str());
  std::error_code error;
  for (int i = 0; i <= kMostLinks; ++i) {
    if (!fs::is_symlink(place, error)) return host::NarrowPath(place);
    const fs::path named = fs::read_symlink(place, error);
    if (error) return {};
    place = place.parent_path() / named;
  }
  return {};
}

SiblingFile::SiblingFile(const AFilePath& place) : place_(BehindLinks(place)) {
  const Place found = place_.str().empty() ? Place::Refused : Look(place_);
  if (found == Place::Refused) return;
  taken_ = found == Place::Taken;
  exists_ = Create();
  // Before anything is in it: nobody is to read what he could not read in the old file.
  if (exists_ && taken_ && !host::CopyPermissions(place_.c_str(), path_.c_str())) Drop();
}

// Somebody who clears leftovers may take the new file for one before it is locked: then he has the
// lock, or it has no name any more, and another one is made. Where the file system has no locks
// nobody clears any.
bool SiblingFile::Create() {
  for (int i = 0; i < kTries; ++i) {
    path_ = Beside(place_);
    if (!lock_.open(path_, AFile::ReadWrite | AFile::New)) return false;
    if (lock_.waitForLock(std::chrono::milliseconds(0)) && lock_.hasName()) {
      if (file_.open(path_, AFile::ReadWrite)) return true;
      break;
    }
    path_.remove();
  }
  Drop();
  return false;
}

void SiblingFile::Drop() {
  file_.close();
  lock_.close();
  held_.close();
  path_.remove();
  exists_ = false;
}

SiblingFile::~SiblingFile() {
  if (exists_) Drop();
}

bool SiblingFile::settle() {
  // Somebody may have closed the old file to others since the new one was made.
  if (taken_ && !host::CopyPermissions(place_.c_str(), path_.c_str())) return false;
  if (!file_.isOpen() && !file_.open(path_, AFile::ReadWrite)) return false;
  const bool synced = file_.sync();
  settled_ = file_.close() && synced;
  return settled_;
}

// The lock of a file that has been replaced is worth nothing: who replaces the new one has its
// lock.
bool SiblingFile::holdPlace(std::chrono::milliseconds patience) {
  if (!taken_ || !host::kReplacesOpenFiles) return true;
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + patience;
  auto left = patience;
  do {
    // For writing where that is allowed: network file systems lock files that are open so.
    if (!held_.open(place_, AFile::ReadWrite) && !held_.open(place_, AFile::Read)) return false;
    if (!held_.waitForLock(left)) return false;
    if (held_.hasName()) return true;
    left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
  } while (left.count() > 0);
  return false;
}

bool SiblingFile::takePlace() {
  if (!settled_ && !settle()) return false;
  // Nothing may fail once the new file has its place, the making of a text included.
  const AFilePath folder = FolderOf(place_);
  // The lock is held until the new file has its place.
  if (!host::Rename(path_.c_str(), place_.c_str())) return false;
  exists_ = false;
  lock_.close();
  held_.close();
  host::SyncFolder(folder.c_str());
  return true;
}

bool SiblingFile::IsNameOfNew(const AFilePath& path) { return IsOurs(path.getFileName().str()); }

int SiblingFile::RemoveLeftovers(const AFilePath& place) {
  const AFilePath own = BehindLinks(place);
  const AFilePath folder = FolderOf(own);
  int removed = 0;
  for (const std::string& name : host::FilesIn(folder.c_str(), std::string(kPrefix))) {
    if (!IsOurs(name) || own.getFileName() == AString(name)) continue;
    AFilePath path = folder;
    path.appendComponent(name);
    AFile file;
    if (file.open(path, AFile::Read) && file.tryLock() && path.remove()) ++removed;
  }
  return removed;
}

}  // namespace vkcl
