#include "Lcms.h"

#include <lcms2.h>

#include <cstdio>

#include "privatetags/VKPrivateTag.h"

namespace vkcl::bench::lcms {
namespace {

// A profile that is read from a file.
class Profile {
 public:
  explicit Profile(const std::string& path) : handle_(cmsOpenProfileFromFile(path.c_str(), "r")) {}
  ~Profile() {
    if (handle_ != nullptr) cmsCloseProfile(handle_);
  }
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;

  cmsHPROFILE get() const { return handle_; }
  explicit operator bool() const { return handle_ != nullptr; }

 private:
  cmsHPROFILE handle_;
};

bool ReadElement(cmsHPROFILE profile, std::uint32_t signature, Bytes& element) {
  const auto tag = static_cast<cmsTagSignature>(signature);
  const cmsUInt32Number size = cmsReadRawTag(profile, tag, nullptr, 0);
  element.resize(size);
  return size != 0 && cmsReadRawTag(profile, tag, element.data(), size) == size;
}

bool WriteElement(cmsHPROFILE profile, std::uint32_t signature, const Bytes& element) {
  return cmsWriteRawTag(profile, static_cast<cmsTagSignature>(signature), element.data(),
                        static_cast<cmsUInt32Number>(element.size())) != 0;
}

std::vector<std::uint32_t> PrivateTags(cmsHPROFILE profile) {
  std::vector<std::uint32_t> tags;
  for (cmsInt32Number i = 0; i < cmsGetTagCount(profile); ++i) {
    const auto tag = cmsGetTagSignature(profile, static_cast<cmsUInt32Number>(i));
    if (IsPrivateSignature(static_cast<std::uint32_t>(tag))) tags.push_back(tag);
  }
  return tags;
}

bool IsClassified(const Profile& profile) {
  return profile && cmsGetDeviceClass(profile.get()) == cmsSigOutputClass &&
         cmsGetColorSpace(profile.get()) == cmsSigCmykData &&
         cmsIsTag(profile.get(), static_cast<cmsTagSignature>(QX51)) != 0;
}

bool SaveInPlace(const Profile& profile, const std::string& path) {
  const std::string beside = path + ".new";
  return cmsSaveProfileToFile(profile.get(), beside.c_str()) != 0 &&
         std::rename(beside.c_str(), path.c_str()) == 0;
}

}  // namespace

bool Open(const std::string& path) { return static_cast<bool>(Profile(path)); }

bool ClassifyByTags(const std::string& path) { return IsClassified(Profile(path)); }

bool Classify(const std::string& path) {
  const Profile profile(path);
  Bytes element;
  return IsClassified(profile) && ReadElement(profile.get(), QX53, element);
}

bool Read(const std::string& path, std::uint32_t signature, Bytes& element) {
  const Profile profile(path);
  return profile && ReadElement(profile.get(), signature, element);
}

bool Store(const std::string& path, const std::vector<Tag>& tags) {
  const Profile profile(path);
  if (!profile) return false;
  for (const auto& [signature, element] : tags) {
    if (!WriteElement(profile.get(), signature, element)) return false;
  }
  return SaveInPlace(profile, path);
}

bool Merge(const std::string& from, const std::string& to) {
  const Profile source(from);
  const Profile target(to);
  if (!source || !target) return false;
  Bytes element;
  for (const std::uint32_t tag : PrivateTags(source.get())) {
    if (!ReadElement(source.get(), tag, element) || !WriteElement(target.get(), tag, element)) {
      return false;
    }
  }
  return SaveInPlace(target, to);
}

bool Strip(const std::string& from, const std::string& to) {
  const Profile profile(from);
  if (!profile) return false;
  for (const std::uint32_t tag : PrivateTags(profile.get())) {
    cmsWriteTag(profile.get(), static_cast<cmsTagSignature>(tag), nullptr);  // removes it
  }
  return cmsSaveProfileToFile(profile.get(), to.c_str()) != 0;
}

std::size_t Parse(const std::string& text) {
  cmsHANDLE target =
      cmsIT8LoadFromMem(nullptr, text.data(), static_cast<cmsUInt32Number>(text.size()));
  if (target == nullptr) return 0;
  const auto columns = static_cast<int>(cmsIT8GetPropertyDbl(target, "NUMBER_OF_FIELDS"));
  const auto rows = static_cast<int>(cmsIT8GetPropertyDbl(target, "NUMBER_OF_SETS"));
  std::vector<double> numbers;
  numbers.reserve(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      numbers.push_back(cmsIT8GetDataRowColDbl(target, row, column));
    }
  }
  cmsIT8Free(target);
  return numbers.size();
}

Opened::Opened(const std::string& path) : profile_(cmsOpenProfileFromFile(path.c_str(), "r")) {}

Opened::~Opened() {
  if (profile_ != nullptr) cmsCloseProfile(profile_);
}

bool Opened::Read(std::uint32_t signature, Bytes& element) const {
  return profile_ != nullptr && ReadElement(profile_, signature, element);
}

}  // namespace vkcl::bench::lcms
