// The path of a file, in the host's narrow encoding.
#pragma once

#include <string>
#include <utility>

#include "platform/Export.h"
#include "platform/plinth/AString.h"

/// A path as text. Separators are "/" and, on Windows, also "\". Nothing here throws for a path
/// that names nothing; what the file system does not answer counts as "no". What makes or changes a
/// text throws std::bad_alloc when memory is short, as the standard's strings do.
class VKCL_API AFilePath {
 public:
  AFilePath() = default;
  ///@{
  /// The path as it stands; a null pointer gives the empty path.
  AFilePath(const char* path) : path_(path != nullptr ? path : "") {}
  AFilePath(std::string path) : path_(std::move(path)) {}
  AFilePath(const AString& path) : path_(path.str()) {}
  ///@}

  ///@{
  /// The path as text, valid until the object changes.
  const char* c_str() const noexcept { return path_.c_str(); }
  const std::string& str() const noexcept { return path_; }
  ///@}

  /// From the last dot of the last component, the dot included; empty without one. A file that is
  /// named ".tmp" therefore has the extension ".tmp".
  AString getExtension() const;
  /// The last component, extension included.
  AString getFileName() const;
  /// Absolute and lexically normalised; links are not followed. The path as it stands when the
  /// system does not tell the working directory.
  AString GetFullPath() const;

  /// Leaves one separator where several stand; on Windows the two that begin a network path stay.
  void removeDoubledSeparators();
  /// Drops the last component and the separator before it; a root stays a root.
  void removeLastComponent();
  /// Adds a component, with a separator before it where the path does not end in one.
  void appendComponent(const AString& name);

  /// Whether the path names something, through links.
  bool exists() const noexcept;
  /// Whether the path names a folder, through links.
  bool isDirectory() const noexcept;
  /// Whether both paths name one file: their full paths are equal, or the file system says so.
  bool isSameFile(const AFilePath& other) const noexcept;
  /// The same for whoever would lose the file by a wrong "no": throws std::bad_alloc when memory is
  /// short, where isSameFile says no.
  bool isSameFileOrThrow(const AFilePath& other) const;
  /// Removes the file that the path names. False when that failed.
  bool remove() const noexcept;

  ///@{
  /// Compares the texts; see isSameFile for the files.
  friend bool operator==(const AFilePath& a, const AFilePath& b) noexcept {
    return a.path_ == b.path_;
  }
  friend bool operator!=(const AFilePath& a, const AFilePath& b) noexcept { return !(a == b); }
  ///@}

 private:
  std::size_t LastSeparator() const noexcept;

  std::string path_;
};
