#include "platform/plinth/SiblingFile.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

namespace vkcl {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPrefix = ".vkcl-";
constexpr const char* kSuffix = ".new";
constexpr int kTries = 3;
constexpr int kMostLinks = 40;  // as many as the systems follow

// The path behind symbolic links, also when the last one names nothing yet. Empty for a circle.
AFilePath BehindLinks(const AFilePath& path) {
  fs::path place = host::SystemPath(path.str());
  std::error_code error;
  for (int i = 0; i < kMostLinks; ++i) {
    if (!fs::is_symlink(place, error)) return host::NarrowPath(place);
    const fs::path named = fs::read_symlink(place, error);
    if (error) return {};
    place = place.parent_path() / named;
  }
  return {};
}

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
  constexpr char kDigits[] = "0123456789abcdef";
  std::string name = kPrefix;
  for (int shift = 60; shift >= 0; shift -= 4) name += kDigits[mixed >> shift & 15];
  name += '-' + std::to_string(counter++) + kSuffix;
  AFilePath beside = path;
  beside.removeLastComponent();
  beside.appendComponent(name);
  return beside;
}

}  // namespace

SiblingFile::SiblingFile(const AFilePath& place) : place_(BehindLinks(place)) {
  const Place found = place_.str().empty() ? Place::Refused : Look(place_);
  if (found == Place::Refused) return;
  taken_ = found == Place::Taken;
  exists_ = Create();
  // Before anything is in it: nobody is to read what he could not read in the old file.
  if (!exists_ || !taken_ || host::CopyPermissions(place_.c_str(), path_.c_str())) return;
  file_.close();
  path_.remove();
  exists_ = false;
}

// Somebody who clears leftovers may take the new file for one before it is locked; then it has no
// name any more, and another one is made. On a file system without locks nobody clears any.
bool SiblingFile::Create() {
  for (int i = 0; i < kTries; ++i) {
    path_ = Beside(place_);
    if (!file_.open(path_, AFile::ReadWrite | AFile::New)) return false;
    file_.tryLock();
    if (file_.hasName()) return true;
  }
  file_.close();
  return false;
}

SiblingFile::~SiblingFile() {
  if (!exists_) return;
  file_.close();
  path_.remove();
}

bool SiblingFile::takePlace() {
  if (!file_.isOpen() && !file_.open(path_, AFile::ReadWrite)) return false;
  bool done = file_.sync();
  done = file_.close() && done;
  if (!done || !host::Rename(path_.c_str(), place_.c_str())) return false;
  exists_ = false;
  host::SyncFolder(FolderOf(place_).c_str());
  return true;
}

int SiblingFile::RemoveLeftovers(const AFilePath& place) {
  int removed = 0;
  std::error_code error;
  fs::directory_iterator entry(host::SystemPath(FolderOf(BehindLinks(place)).str()), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const std::string name = host::NarrowPath(entry->path().filename());
    if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix)) continue;
    std::error_code unknown;
    if (!fs::is_regular_file(entry->symlink_status(unknown))) continue;
    const AFilePath path(host::NarrowPath(entry->path()));
    AFile file;
    if (file.open(path, AFile::ReadWrite) && file.tryLock() && path.remove()) ++removed;
  }
  return removed;
}

}  // namespace vkcl
