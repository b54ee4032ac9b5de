// A new file beside another one, which takes its place when it is whole.
#pragma once

#include <chrono>  // IWYU pragma: keep

#include "platform/plinth/AFile.h"
#include "platform/plinth/AFilePath.h"

namespace vkcl {

/// The path behind symbolic links, also when the last one names nothing yet; empty for a circle.
AFilePath BehindLinks(const AFilePath& path);

/// Created empty in the folder of the file at `place`, through symbolic links, with the permissions
/// of the file there, and owner and group where that is allowed (on Windows those of the folder);
/// removed with the object unless it took the place. Whoever opens the place, at any moment and
/// after any crash, finds the old file or the new one, whole.
class SiblingFile {
 public:
  explicit SiblingFile(const AFilePath& place);
  ~SiblingFile();
  SiblingFile(const SiblingFile&) = delete;
  SiblingFile& operator=(const SiblingFile&) = delete;

  /// False when the place names something that is no regular file or may not be written, or the
  /// new file could not be created. Nothing else may be asked then.
  bool exists() const { return exists_; }

  /// The new file, open for writing until it is closed, and its path.
  AFile& file() { return file_; }
  const AFilePath& path() const { return path_; }
  /// The place behind symbolic links, and whether a file is there.
  const AFilePath& place() const { return place_; }
  bool isTaken() const { return taken_; }

  /// Gives the new file the permissions that the old one has now, has the system carry it to the
  /// medium, and closes it. False when that failed.
  bool settle();

  /// Makes new files of others wait with taking the place, until this one has taken it or is gone:
  /// what is seen of the old file from now on is what will be replaced, as far as new files are
  /// concerned. Waits for others that hold the place, at most `patience` for all that do so one
  /// after the other. False when it was held longer, or the old file cannot be opened. True, and
  /// nobody waits, where the place is free, where there are no locks, and on Windows, which does
  /// not replace files that are open.
  bool holdPlace(std::chrono::milliseconds patience = std::chrono::seconds(10));

  /// Settles the new file, unless that is done, and puts it in the place. False when a step failed;
  /// the old file is as it was then.
  bool takePlace();

  /// Whether a file of that name is taken for a new one, and removed with the others.
  static bool IsNameOfNew(const AFilePath& path);

  /// Removes new files beside `place` whose programs ended before they took a place or were
  /// removed; files that are still worked on stay. The number of files removed.
  static int RemoveLeftovers(const AFilePath& place);

 private:
  bool Create();
  void Drop();

  AFilePath place_;
  AFilePath path_;
  AFile lock_;  // the same file, locked as long as it is new
  AFile file_;
  AFile held_;  // the old file, locked from holdPlace on
  bool taken_ = false;
  bool exists_ = false;
  bool settled_ = false;
};

}  // namespace vkcl
