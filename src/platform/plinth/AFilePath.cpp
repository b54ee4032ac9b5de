#include "platform/plinth/AFilePath.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "platform/Guarded.h"
#include "platform/plinth/HostFiles.h"

namespace {

constexpr auto npos = std::string_view::npos;

#if defined(_WIN32)
constexpr const char* kSeparators = "/\\";
constexpr char kSeparator = '\\';
#else
constexpr const char* kSeparators = "/";
constexpr char kSeparator = '/';
#endif

// Whether paths end in the same name, or in none. Where not, their full paths cannot be equal, but
// on Windows, where a full path may have another last component.
bool EndAlike([[maybe_unused]] std::string_view a, [[maybe_unused]] std::string_view b) {
#if defined(_WIN32)
  return true;
#else
  const auto lastOf = [](std::string_view path) {
    return path.substr(path.find_last_of(kSeparators) + 1);  // none: npos + 1 is 0
  };
  const auto isName = [](std::string_view last) {
    return !last.empty() && last != "." && last != "..";
  };
  const std::string_view lastOfA = lastOf(a);
  const std::string_view lastOfB = lastOf(b);
  return lastOfA == lastOfB || !isName(lastOfA) || !isName(lastOfB);
#endif
}

bool EndsInSeparator(const std::string& path) {
  return !path.empty() && std::string(kSeparators).find(path.back()) != std::string::npos;
}

}  // namespace

std::size_t AFilePath::LastSeparator() const noexcept { return path_.find_last_of(kSeparators); }

AString AFilePath::getFileName() const {
  const std::size_t separator = LastSeparator();
  return separator == std::string::npos ? path_ : path_.substr(separator + 1);
}

AString AFilePath::getExtension() const {
  const std::string name = getFileName().str();
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos ? AString() : AString(name.substr(dot));
}

AString AFilePath::GetFullPath() const {
  std::error_code error;
  const std::filesystem::path full =
      std::filesystem::absolute(vkcl::host::SystemPath(path_), error);
  if (error) return path_;
  return vkcl::host::NarrowPath(full.lexically_normal());
}

void AFilePath::removeDoubledSeparators() {
  const auto isSeparator = [](char c) { return std::string_view(kSeparators).find(c) != npos; };
#if defined(_WIN32)
  const std::size_t first = 1;  // "\\\\server\\share"
#else
  const std::size_t first = 0;
#endif
  const auto begin = path_.begin() + static_cast<std::ptrdiff_t>(std::min(first, path_.size()));
  path_.erase(std::unique(begin, path_.end(),
                          [&](char a, char b) { return isSeparator(a) && isSeparator(b); }),
              path_.end());
}

void AFilePath::removeLastComponent() {
  const std::size_t separator = LastSeparator();
  if (separator == std::string::npos) {
    path_.clear();
    return;
  }
  const bool root = separator == 0 || path_[separator - 1] == ':';
  path_.erase(root ? separator + 1 : separator);
}

void AFilePath::appendComponent(const AString& name) {
  if (!path_.empty() && !EndsInSeparator(path_)) path_ += kSeparator;
  path_ += name.str();
}

bool AFilePath::exists() const noexcept { return vkcl::host::Exists(path_.c_str()); }

bool AFilePath::isDirectory() const noexcept { return vkcl::host::IsDirectory(path_.c_str()); }

bool AFilePath::isSameFile(const AFilePath& other) const noexcept {
  return vkcl::Guarded([&] { return isSameFileOrThrow(other); });
}

bool AFilePath::isSameFileOrThrow(const AFilePath& other) const {
  if (vkcl::host::IsSameFile(path_.c_str(), other.path_.c_str())) return true;
  // Making paths full takes longer than the rest of a merge of small profiles.
  return EndAlike(path_, other.path_) && GetFullPath() == other.GetFullPath();
}

bool AFilePath::remove() const noexcept { return vkcl::host::Remove(path_.c_str()); }
