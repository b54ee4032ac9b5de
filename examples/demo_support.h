// What the demonstration programs share: lines of a report, and Little CMS as the other reader.
#pragma once

#include <lcms2.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "handler/VKCLProfileHandler.h"

namespace demo {

inline int failures = 0;

inline void Show(const char* what, bool same, const std::string& detail) {
  std::printf("  %s %-24s %s\n", same ? "ok  " : "FAIL", what, detail.c_str());
  if (!same) ++failures;
}

template <class... Values>
std::string Text(const char* format, Values... values) {
  char buffer[1024];
  std::snprintf(buffer, sizeof buffer, format, values...);
  return buffer;
}

// What Little CMS makes of a row of CMYK colours, as Lab.
inline std::vector<double> Convert(const std::string& path) {
  std::vector<double> lab;
  cmsHPROFILE profile = cmsOpenProfileFromFile(path.c_str(), "r");
  if (profile == nullptr) return lab;
  cmsHPROFILE pcs = cmsCreateLab2Profile(nullptr);
  cmsHTRANSFORM transform = cmsCreateTransform(profile, TYPE_CMYK_DBL, pcs, TYPE_Lab_DBL,
                                               INTENT_RELATIVE_COLORIMETRIC, 0);
  if (transform != nullptr) {
    std::vector<double> cmyk;
    for (int i = 0; i < 625; ++i) {
      for (const int step : {1, 5, 25, 125}) cmyk.push_back(i / step % 5 * 25.0);
    }
    lab.resize(625 * 3);
    cmsDoTransform(transform, cmyk.data(), lab.data(), 625);
    cmsDeleteTransform(transform);
  }
  cmsCloseProfile(pcs);
  cmsCloseProfile(profile);
  return lab;
}

using Tags = std::map<std::uint32_t, std::vector<char>>;

// The raw bytes of every tag, as Little CMS reads them; empty when it does not open the file.
inline Tags TagsOf(const std::string& path) {
  Tags tags;
  cmsHPROFILE profile = cmsOpenProfileFromFile(path.c_str(), "r");
  if (profile == nullptr) return tags;
  for (cmsInt32Number i = 0; i < cmsGetTagCount(profile); ++i) {
    const cmsTagSignature sig = cmsGetTagSignature(profile, static_cast<cmsUInt32Number>(i));
    std::vector<char> bytes(cmsReadRawTag(profile, sig, nullptr, 0));
    cmsReadRawTag(profile, sig, bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
    tags[sig] = bytes;
  }
  cmsCloseProfile(profile);
  return tags;
}

inline std::string StateText(const VKCLProfileHandler& handler) {
  const char* names[] = {
      "none",         "ink limits",       "ink split",       "linearisation", "multiple limits",
      "gray balance", "characterisation", "finished profile"};
  VKCLProfileFinishedState state = FinishedNone;
  handler.GetVKCLProfileFinishedState(state, 1);
  return Text("%s (%d)", names[state], static_cast<int>(state));
}

}  // namespace demo
