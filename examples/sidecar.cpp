// The document beside a profile: an ink set is recognised, its default split stored in the profile,
// and a VSD document made for the profile, filled until it is complete, saved, embedded in the
// profile, lost, and extracted again.
//
// usage: sidecar PROFILE    (CMYK; the document goes into a folder VSDProfile beside its folder)
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "colornames/ColorModes.h"
#include "demo_support.h"
#include "handler/StoredSplit.h"
#include "handler/VKCLProfileHandler.h"
#include "vsd/VSDProfileHandler.h"

namespace {

using demo::Show;
using demo::Text;

constexpr const char* kSizes[] = {"small", "medium", "large"};

std::string Joined(const AStringArray& names) {
  std::string text;
  for (const AString& name : names) text += (text.empty() ? "" : ", ") + name.str();
  return text;
}

std::string Bytes(const AFilePath& path) {
  std::ifstream file(path.str(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Readings of a ramp of four inks, as an instrument gives them.
ProfileDataList Readings(int size) {
  ProfileDataList list;
  list.DataFormat = icSigLabData;
  list.ColorMode = 2;
  list.NumOfColors = 3;
  if (list.RefreshList(84) == 0) return list;
  for (int i = 0; i < 84; ++i) {
    list.DataList[3 * i] = 95 - i / 84.0 * (20 + 15 * size);
    list.DataList[3 * i + 1] = 10 * std::sin(i);
    list.DataList[3 * i + 2] = 10 * std::cos(i);
  }
  list.Measured = 84;
  return list;
}

int RecognizeInks() {
  const AStringArray given = {"LMagenta", "Black", "Cyan", "LCyan", "Yellow", "Magenta"};
  AStringArray ordered;
  const int mode = GetColorModeByNames(given, ordered);
  Show("ink set recognised", mode == 2,
       Text("mode %d: %s; %d of full strength", mode, Joined(ordered).c_str(),
            GetNumberOfDarkChannels(mode)));
  return mode;
}

void StoreSplit(VKCLProfileHandler& handler, int mode) {
  SplitParam split;
  const bool made = split.SetDefaultValues(mode, nullptr) != 0;
  SplitParam stored;
  const bool same = made && handler.WriteInkSplitTag(split) != 0 &&
                    vkcl::ReadStoredSplit(*handler.GetProfilePtr(), stored) &&
                    stored.count == split.count;
  Show("default split stored", same, Text("%d colorants, %d bytes", stored.count, stored.size));
}

// Fills the document step by step; it is complete when all three dot sizes are measured.
void Fill(VSDProfileHandler& document) {
  for (int size = 0; size < 3; ++size) {
    Show("before these readings", document.IsComplete() == 0, "not complete");
    const bool written = document.WriteVSDMeasurementData(size, Readings(size)) != 0;
    Show(Text("%s dots measured", kSizes[size]).c_str(), written, "84 samples of Lab");
  }
  double medium[] = {0.25, 0.25, 0.3, 0.2};
  double large[] = {0.6, 0.6, 0.65, 0.55};
  VKSingleInkLimitWithLinRef limits;
  limits.count = 4;
  limits.limits[1] = 95.5;
  const bool written = document.WriteMediumAndLargeStart(medium, large, 4) != 0 &&
                       document.WriteVKSingleInkLimits(limits) != 0;
  Show("dot starts and limits", written, "4 channels");
  Show("all three dot sizes", document.IsComplete() != 0, "complete");
}

bool SameReadings(VSDProfileHandler& document) {
  for (int size = 0; size < 3; ++size) {
    ProfileDataList list;
    if (document.ReadVSDMeasurementData(size, list) == 0 || list != Readings(size)) return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: sidecar PROFILE\n");
    return 2;
  }
  const AFilePath profile(AFilePath(argv[1]).GetFullPath());
  VKCLProfileHandler handler(profile, 0);
  if (handler.IsOutputICCFile() == 0) {
    std::fprintf(stderr, "%s: no output profile\n", argv[1]);
    return 1;
  }

  const int mode = RecognizeInks();
  StoreSplit(handler, mode);

  VKColorParam param;
  std::strcpy(param.Make, "Acme");
  std::strcpy(param.MediaName, "Büttenpapier 紙 310");
  param.ColorMode = mode;
  param.ResolutionX = param.ResolutionY = 720;

  const AFilePath place = VSDProfileHandler::ICCtoVSDFolder(profile);
  if (place.exists()) {
    std::fprintf(stderr, "%s exists already\n", place.c_str());
    return 1;
  }
  AFilePath folder = place;
  folder.removeLastComponent();
  std::filesystem::create_directories(folder.str());
  {
    VSDProfileHandler document(place, 0);
    Show("document begun", document.WriteVKColorParam(param) != 0,
         "VSDProfile/" + place.getFileName().str());
    Fill(document);
    const bool done = document.SaveToFile() != 0;
    Show("saved", done, Text("%zu bytes", Bytes(place).size()));
  }

  const std::string saved = Bytes(place);
  Show("embedded in the profile", handler.WriteVSDProfile(place) != 0, "QX71");
  std::filesystem::remove(place.str());
  Show("lost, and extracted", handler.GetVSDProfile(place) != 0 && Bytes(place) == saved,
       "the same bytes");
  VSDProfileHandler document(place, 1);
  VKColorParam read;
  const bool got = document.ReadVKColorParam(read) != 0;
  Show("its settings", got && std::strcmp(read.MediaName, param.MediaName) == 0, read.MediaName);
  Show("its readings", SameReadings(document), "bit for bit");
  std::error_code error;  // others' documents in the folder keep it there
  std::filesystem::remove(place.str(), error);
  std::filesystem::remove(folder.str(), error);
  return demo::failures == 0 ? 0 : 1;
}
