// The whole life of a profile: a standard profile without its final tables becomes one of the
// system's own, passes through every finished state, is locked, unlocked, changed and locked again,
// gives its private data to a second real profile, and is stripped of them. At each stop Little
// CMS, which knows nothing of all this, opens the file and converts the same colours.
//
// usage: life_of_a_profile PROFILE SECOND_PROFILE    (both CMYK; copies are made beside PROFILE)
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "demo_support.h"
#include "handler/VKCLProfileHandler.h"

namespace {

using demo::Convert;
using demo::Show;
using demo::StateText;
using demo::Tags;
using demo::TagsOf;
using demo::Text;

using Bytes = std::vector<char>;

bool IsFinalTable(cmsTagSignature sig) {
  return sig == cmsSigBToA0Tag || sig == cmsSigBToA1Tag || sig == cmsSigBToA2Tag;
}

// A copy of a profile as Little CMS writes it: without its final tables, or with those of `tables`
// put in. Other tags are carried as raw bytes.
bool CopyWithLcms(const std::string& from, const std::string& to, const Tags* tables) {
  cmsHPROFILE source = cmsOpenProfileFromFile(from.c_str(), "r");
  if (source == nullptr) return false;
  cmsHPROFILE copy = cmsCreateProfilePlaceholder(nullptr);
  cmsSetDeviceClass(copy, cmsGetDeviceClass(source));
  cmsSetColorSpace(copy, cmsGetColorSpace(source));
  cmsSetPCS(copy, cmsGetPCS(source));
  cmsSetProfileVersion(copy, cmsGetProfileVersion(source));
  Tags tags = TagsOf(from);
  bool done = true;
  for (cmsInt32Number i = 0; i < cmsGetTagCount(source); ++i) {
    const cmsTagSignature sig = cmsGetTagSignature(source, static_cast<cmsUInt32Number>(i));
    if (IsFinalTable(sig)) continue;
    const Bytes& bytes = tags[sig];
    done =
        done && cmsWriteRawTag(copy, sig, bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
  }
  if (tables != nullptr) {
    for (const auto& [sig, bytes] : *tables) {
      const auto tag = static_cast<cmsTagSignature>(sig);
      if (!IsFinalTable(tag)) continue;
      done = done &&
             cmsWriteRawTag(copy, tag, bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
    }
  }
  done = done && cmsSaveProfileToFile(copy, to.c_str());
  cmsCloseProfile(copy);
  cmsCloseProfile(source);
  return done;
}

ProfileDataList List(std::uint32_t format, std::int32_t colors, std::int32_t samples) {
  ProfileDataList list;
  list.DataFormat = format;
  list.NumOfColors = colors;
  list.ColorMode = 1;
  if (list.RefreshList(samples) == 0) return list;
  for (std::int32_t i = 0; i < samples * colors; ++i)
    list.DataList[i] = i * 100.0 / samples / colors;
  list.Measured = samples;
  return list;
}

VKColorParam Settings(std::int32_t status) {
  VKColorParam param;
  param.status = status;
  std::strcpy(param.Make, "Acme");
  std::strcpy(param.MediaName, "Baryta Gloss 310");
  param.ColorMode = 1;
  return param;
}

// One stop: the step worked, the state is the expected one, and the other reader sees no change.
void Stop(const std::string& path, const char* step, bool worked, int state,
          const std::vector<double>& colours) {
  const VKCLProfileHandler handler(AFilePath(path), 0);
  VKCLProfileFinishedState now = FinishedNone;
  handler.GetVKCLProfileFinishedState(now, 1);
  const bool same = !colours.empty() && Convert(path) == colours;
  Show(step, worked && now == state && same,
       Text("state: %-24s Little CMS: %s", StateText(handler).c_str(),
            same ? "converts as before" : "does not convert as before"));
}

void Make(const std::string& path, const Tags& finalTables, const std::vector<double>& colours) {
  std::puts("the making:");
  Stop(path, "a standard profile", true, FinishedNone, colours);
  VKCLProfileHandler handler(AFilePath(path), 0);
  const bool limits = handler.WriteSILWithLinTag(VKSingleInkLimitWithLinRef()) != 0 &&
                      handler.WriteVKColorParamTag(Settings(0)) != 0;
  Stop(path, "ink limits, settings", limits, FinishedInkLimit, colours);

  SplitTypeV4 records[2];
  for (int i = 0; i < 2; ++i) records[i].colorantIndex = i;
  SplitParam split;
  const bool splits =
      split.InitSplitParam(4, 2, records) != 0 && handler.WriteInkSplitTag(split) != 0;
  Stop(path, "ink split", splits, FinishedInkSplit, colours);

  const std::uint32_t lab = icSigLabData;
  const std::uint32_t cmyk = icSigCmykData;
  const bool linearised = handler.WriteLinReferenceData(List(cmyk, 4, 21)) != 0 &&
                          handler.WriteLinMeasurementData(List(lab, 3, 21)) != 0;
  Stop(path, "linearisation", linearised, FinishedLinearisation, colours);
  VKMultiInklimit multi;
  Stop(path, "multiple ink limits", handler.WriteMultipleInkLimitTag(multi) != 0,
       FinishedMultiInkLimit, colours);
  const bool gray = handler.WriteGBReferenceData(List(cmyk, 4, 36)) != 0 &&
                    handler.WriteGBMeasurementData(List(lab, 3, 36)) != 0;
  Stop(path, "gray balance", gray, FinishedGrayBalance, colours);
  const bool characterised =
      handler.WriteCharReferenceData(List(cmyk, 4, 1617)) != 0 &&
      handler.WriteCharMeasurementData(List(icSignature("refl"), 36, 1617)) != 0;
  Stop(path, "characterisation", characterised, FinishedCharacterisation, colours);

  // The colour tables come from a colour engine: here Little CMS puts them in, and the private
  // tags pass through it unharmed.
  const bool finished = CopyWithLcms(path, path + ".finished", &finalTables) &&
                        std::rename((path + ".finished").c_str(), path.c_str()) == 0;
  Stop(path, "final colour tables", finished, FinishedProfile, colours);

  VKCLProfileProperties properties;
  const bool gathered =
      VKCLProfileHandler(AFilePath(path), 0).GetVKCLProfileProperties(properties, 1) != 0;
  Show("everything gathered",
       gathered && properties.charMeasurement.NumOfSamples == 1617 &&
           properties.charMeasurement == List(icSignature("refl"), 36, 1617),
       Text("%d + %d + %d samples, %d splits, media \"%s\"", properties.linReference.NumOfSamples,
            properties.gbReference.NumOfSamples, properties.charReference.NumOfSamples,
            properties.split.count, properties.colorParam.MediaName));
}

int StatusOf(const std::string& path) {
  VKColorParam param;
  return VKCLProfileHandler(AFilePath(path), 0).GetVKColorParam(param) != 0 ? param.status : -1;
}

void LockAndUnlock(const std::string& path) {
  std::puts("\nthe lock:");
  VKCLProfileHandler handler(AFilePath(path), 0);
  const bool stored = handler.WriteVKColorParamTag(Settings(9)) != 0;
  VKColorParam settings = Settings(0);
  std::strcpy(settings.MediaName, "Silk Rag 285");
  Show("locked", stored && handler.ModifyUnLockedColorSettings(settings) == 0,
       Text("status %d; a change of the settings is refused", StatusOf(path)));
  const bool unlocked = handler.UnLockVKCLProfile() == 1 && handler.isVKCLUnLockedProfile() == 1;
  Show("unlocked", unlocked && StatusOf(path) == 12, Text("status %d", StatusOf(path)));
  const bool changed = handler.ModifyUnLockedColorSettings(settings) == 1;
  VKColorParam now;
  handler.GetVKColorParam(now);
  Show("changed", changed && std::strcmp(now.MediaName, "Silk Rag 285") == 0,
       Text("media \"%s\"", now.MediaName));
  const bool locked = handler.LockUnLockedVKCLProfile() == 1;
  Show("locked again", locked && StatusOf(path) == 13, Text("status %d", StatusOf(path)));
}

// Every tag of the original is in the profile, byte for byte.
bool Keeps(const Tags& original, const std::string& path) {
  const Tags now = TagsOf(path);
  for (const auto& [sig, bytes] : original) {
    const auto found = now.find(sig);
    if (found == now.end() || found->second != bytes) return false;
  }
  return !original.empty();
}

void MergeAndStrip(const std::string& path, const std::string& second) {
  std::puts("\nthe data move on:");
  const std::vector<double> colours = Convert(second);
  const Tags original = TagsOf(second);
  VKCLProfile source(AFilePath(path), 0);
  VKCLProfile target(AFilePath(second), 0);
  const std::uint32_t before = target.tagCount;
  const bool merged = source.MergeVKPrivateTagIntoStandICC(target) == 1;
  Stop(second, "merged into another one", merged && Keeps(original, second), FinishedProfile,
       colours);
  VKCLProfile reopened(AFilePath(second), 0);
  Show("its own tags", Keeps(original, second),
       Text("%u tags as they were, %u private ones behind them", before,
            reopened.tagCount - before));

  const std::string clean = second + ".clean";
  const bool stripped = reopened.WriteICCWithoutVKiTags(clean.c_str()) == 1;
  Stop(clean, "stripped", stripped, FinishedNone, colours);
  Show("a clean standard profile", TagsOf(clean) == original, "every tag byte for byte");
  std::remove(clean.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: life_of_a_profile PROFILE SECOND_PROFILE\n");
    return 2;
  }
  const std::string path = std::string(argv[1]) + ".life.icc";
  const std::string second = std::string(argv[1]) + ".second.icc";
  const Tags finalTables = TagsOf(argv[1]);
  std::error_code error;
  std::filesystem::copy_file(argv[2], second, std::filesystem::copy_options::overwrite_existing,
                             error);
  if (error || !CopyWithLcms(argv[1], path, nullptr)) {
    std::fprintf(stderr, "the profiles cannot be copied\n");
    return 1;
  }
  const std::vector<double> colours = Convert(path);
  Make(path, finalTables, colours);
  LockAndUnlock(path);
  MergeAndStrip(path, second);
  std::remove(path.c_str());
  std::remove(second.c_str());
  std::printf("\n%s\n", demo::failures == 0 ? "A whole life, and nothing lost."
                                            : "Something went wrong on the way.");
  return demo::failures == 0 ? 0 : 1;
}
