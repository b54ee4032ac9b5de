#include "support/RealProfiles.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <cctype>
#include <sstream>

namespace vkcl::testing {
namespace {

bool IsProfileName(const std::filesystem::path& path) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension == ".icc" || extension == ".icm";
}

// Corners and a spread of values between, as many as channels allow.
std::vector<double> DeviceColours(cmsUInt32Number channels, double top) {
  std::vector<double> colours;
  std::uint32_t seed = 12345;
  for (int i = 0; i < 64; ++i) {
    for (cmsUInt32Number c = 0; c < channels; ++c) {
      seed = seed * 1664525u + 1013904223u;
      const double spread = static_cast<double>(seed >> 16) / 65535.0;
      colours.push_back(i < 16 ? ((i >> (c % 4)) & 1) * top : spread * top);
    }
  }
  return colours;
}

}  // namespace

std::vector<std::filesystem::path> RealProfiles() {
  std::vector<std::filesystem::path> found;
  std::stringstream folders(VKCL_REAL_PROFILES);
  for (std::string folder; std::getline(folders, folder, ';');) {
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error)) {
      if (entry.is_regular_file() && IsProfileName(entry.path())) found.push_back(entry.path());
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

std::filesystem::path RealProfile(const std::string& name) {
  for (const auto& path : RealProfiles()) {
    if (path.filename() == name) return path;
  }
  ADD_FAILURE() << "there is no " << name << " below " << VKCL_REAL_PROFILES
                << "; ./dev test installs the packages that hold it";
  return {};
}

LcmsView ReadWithLcms(const std::filesystem::path& path) {
  LcmsView view;
  const Bytes bytes = ReadFile(path);
  cmsHPROFILE profile =
      cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
  if (profile == nullptr) return view;
  view.opens = true;
  view.deviceClass = cmsGetDeviceClass(profile);
  view.colorSpace = cmsGetColorSpace(profile);
  view.pcs = cmsGetPCS(profile);
  const cmsInt32Number count = cmsGetTagCount(profile);
  for (cmsInt32Number i = 0; i < count; ++i) {
    const cmsTagSignature sig = cmsGetTagSignature(profile, static_cast<cmsUInt32Number>(i));
    Bytes data(cmsReadRawTag(profile, sig, nullptr, 0));
    cmsReadRawTag(profile, sig, data.data(), static_cast<cmsUInt32Number>(data.size()));
    view.order.push_back(sig);
    view.tags[sig] = std::move(data);
  }
  cmsCloseProfile(profile);
  return view;
}

std::vector<double> ConvertWithLcms(const std::filesystem::path& path) {
  std::vector<double> converted;
  const Bytes bytes = ReadFile(path);
  cmsHPROFILE profile =
      cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
  if (profile == nullptr) return converted;
  const cmsUInt32Number channels = cmsChannelsOf(cmsGetColorSpace(profile));
  const double top = cmsGetColorSpace(profile) == cmsSigCmykData ? 100.0 : 1.0;
  const std::vector<double> device = DeviceColours(channels, top);
  const cmsUInt32Number format = cmsFormatterForColorspaceOfProfile(profile, 0, TRUE);
  cmsHPROFILE lab = cmsCreateLab2Profile(nullptr);
  for (cmsUInt32Number intent = 0; intent < 4; ++intent) {
    cmsHTRANSFORM transform = cmsCreateTransform(profile, format, lab, TYPE_Lab_DBL, intent, 0);
    if (transform == nullptr) continue;
    std::vector<double> out(64 * 3);
    cmsDoTransform(transform, device.data(), out.data(), 64);
    converted.insert(converted.end(), out.begin(), out.end());
    cmsDeleteTransform(transform);
  }
  cmsCloseProfile(lab);
  cmsCloseProfile(profile);
  return converted;
}

}  // namespace vkcl::testing
