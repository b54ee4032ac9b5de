// The main job, shown step by step: a real CMYK output profile takes the parameters of a print
// set-up, gives every one of them back, and stays the profile it was for everybody else.
//
// usage: store_and_read PROFILE RGB_PROFILE      (PROFILE is changed)
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "demo_support.h"
#include "handler/StoredSplit.h"
#include "handler/VKCLProfileHandler.h"
#include "platform/profiler/TesselColorProfiler.h"

namespace {

using demo::Convert;
using demo::Show;
using demo::StateText;
using demo::Text;

template <class Record>
bool SameBytes(const Record& a, const Record& b) {
  return std::memcmp(&a, &b, sizeof(Record)) == 0;
}

void StoreColorParam(VKCLProfileHandler& handler) {
  VKColorParam param;
  param.status = 9;
  param.MediaID = 4711;
  std::strcpy(param.Make, "Acme");
  std::strcpy(param.Model, "Wide 64");
  std::strcpy(param.MediaName, "Baryta Gloss 310");
  param.ResolutionX = 720;
  param.ResolutionY = 1440;
  param.ColorMode = 1;
  param.DriverOption[0] = 0xAB;
  VKColorParam back;
  const bool same = handler.WriteVKColorParamTag(param) != 0 &&
                    handler.GetVKColorParam(back) != 0 && SameBytes(param, back);
  Show("QX53 colour parameters", same,
       Text("%s %s, \"%s\", %.0f x %.0f dpi", back.Make, back.Model, back.MediaName,
            back.ResolutionX, back.ResolutionY));
}

void StoreInkLimits(VKCLProfileHandler& handler) {
  VKSingleInkLimitWithLinRef single;
  const double limits[] = {85.5, 90, 95.25, 80};
  for (int i = 0; i < 4; ++i) single.limits[i] = limits[i];
  VKSingleInkLimitWithLinRef singleBack;
  const bool sameSingle = handler.WriteSILWithLinTag(single) != 0 &&
                          handler.GetVKSingleInkLimitWithLinRef(singleBack) != 0 &&
                          SameBytes(single, singleBack);
  Show("QX51 single ink limits", sameSingle,
       Text("C %g  M %g  Y %g  K %g percent", double{singleBack.limits[0]},
            double{singleBack.limits[1]}, double{singleBack.limits[2]},
            double{singleBack.limits[3]}));

  VKMultiInklimit multi;
  multi.limits[4] = 180;
  multi.limits[5] = 240;
  VKMultiInklimit multiBack;
  const bool sameMulti = handler.WriteMultipleInkLimitTag(multi) != 0 &&
                         handler.GetVKMultiInklimit(multiBack, 2) != 0 &&
                         SameBytes(multi, multiBack);
  Show("QX52 multiple ink limits", sameMulti,
       Text("version %d, limit 4: %g, limit 5: %g", multiBack.version, double{multiBack.limits[4]},
            double{multiBack.limits[5]}));
}

void StoreSplit(VKCLProfileHandler& handler) {
  SplitTypeV2 knots[2];
  for (int i = 0; i < 2; ++i) {
    knots[i].colorantIndex = i;
    knots[i].lightPeakInput = 0.3f;
    knots[i].lightEndInput = 0.6f;
    knots[i].lightPeakAmount = 0.4f;
    knots[i].darkAmount = 0.6f;
  }
  SplitParam split;
  SplitParam back;
  const bool stored = split.InitSplitParam(2, 2, knots) != 0;
  split.ConvertToV4();
  const bool same = stored && handler.WriteInkSplitTag(split) != 0 &&
                    vkcl::ReadStoredSplit(*handler.GetProfilePtr(), back) && back.version == 4 &&
                    back.count == 2 && back.size == split.size &&
                    std::memcmp(split.splits, back.splits, 2 * sizeof(SplitTypeV4)) == 0;
  const auto* first = static_cast<const SplitTypeV4*>(back.splits);
  Show("QX50 ink split", same,
       first == nullptr ? ""
                        : Text("version %d, %d colorants; colorant 0: light peaks at %.2f, dark "
                               "starts there and reaches 1.0",
                               back.version, back.count, double{first->light[1].input}));
}

void StoreDither(VKCLProfileHandler& handler) {
  DitherTypeV1 table;
  for (int i = 0; i < 4112; ++i) table.table[i] = static_cast<unsigned char>(i * 37);
  VKDitherParam dither;
  VKDitherParam back;
  const bool same =
      dither.InitDitherParam(1, &table) != 0 && handler.WriteDitherParamTag(dither) != 0 &&
      handler.GetVKDitherParam(back) != 0 && back.size == 4132 && SameBytes(*back.table, table);
  Show("QX66 dither", same, Text("type %d, a table of %u bytes", back.type, table.size));
}

bool LoadProfile(void* profile, const char* path) {
  void* spec = CLNewFileSpecRef();
  const bool loaded = CLName2FileSpec(spec, path) == 0 && CLLoadProfileFromFile(profile, spec) == 0;
  CLFreeFileSpecRef(spec);
  return loaded;
}

std::vector<char> Serialised(void* link) {
  unsigned int size = 0;
  if (CLSaveLink8ToMemory(link, nullptr, 0, &size) != 0) return {};
  std::vector<char> bytes(size);
  return CLSaveLink8ToMemory(link, bytes.data(), size, nullptr) == 0 ? bytes : std::vector<char>();
}

void StoreSpotLinks(VKCLProfileHandler& handler, const char* cmyk, const char* rgb) {
  void* source = CLNewCLProfileRef();
  void* destination = CLNewCLProfileRef();
  VKSpotLinDLParam links;
  links.SetData(2, CString("Spot Orange"));
  const bool built = LoadProfile(source, rgb) && LoadProfile(destination, cmyk) &&
                     CLBuildLink8(links.links[0], source, destination, 0) == 0 &&
                     CLBuildLink8(links.links[1], source, destination, 1) == 0;
  CLFreeCLProfileRef(source);
  CLFreeCLProfileRef(destination);
  VKSpotLinDLParam back;
  const bool same = built && handler.WriteVKSpotLinDL(links) != 0 &&
                    handler.GetVKSpotLinDL(back) != 0 && back.count == 2 &&
                    Serialised(links.links[0]) == Serialised(back.links[0]) &&
                    Serialised(links.links[1]) == Serialised(back.links[1]);
  Show("QX69 spot links", same,
       back.count != 2 ? ""
                       : Text("\"%s\": device links of %d and %d bytes", back.name,
                              back.linkSizes[0], back.linkSizes[1]));

  VKSpotSingleInkLimit limits;
  double values[] = {75, 82.5};
  limits.SetData(2, CString("Spot Orange"), values);
  VKSpotSingleInkLimit limitsBack;
  const bool sameLimits = handler.WriteVKSpotSIL(limits) != 0 &&
                          handler.GetVKSpotSIL(limitsBack) != 0 && limitsBack.count == 2 &&
                          std::strcmp(limitsBack.name, "Spot Orange") == 0 &&
                          std::memcmp(limitsBack.limits, values, sizeof values) == 0;
  Show("QX68 spot ink limits", sameLimits, "\"Spot Orange\": 75 and 82.5 percent");
}

void StoreSmallRecords(VKCLProfileHandler& handler) {
  Show("QX64 dither flag", handler.WriteVKCMStoDither(1) != 0 && handler.IsCMStoDither() == 1, "1");
  Show("QX74 wizard flag", handler.WriteVKWizardFlag(3) != 0 && handler.IsWizardICC() == 3, "3");

  AString text;
  const bool sameText = handler.WriteVKChromaAdjust("soft 0.85") != 0 &&
                        handler.GetVKChromaAdjust(text) != 0 && text == "soft 0.85";
  Show("QX75 chroma adjust", sameText, Text("\"%s\"", text.c_str()));

  VKCompatibilityParam block;
  for (int i = 0; i < 64; ++i) block.bytes[i] = static_cast<unsigned char>(i);
  VKCompatibilityParam blockBack;
  const bool sameBlock = handler.WriteVKCompatibilityParam(block) != 0 &&
                         handler.GetVKCompatibilityParam(blockBack) != 0 &&
                         SameBytes(block, blockBack);
  Show("QX67 compatibility", sameBlock, "64 opaque bytes");

  VKLinExtraDataParam data;
  std::strcpy(data.text, "linearised on stock 12");
  data.value = 12;
  VKLinExtraDataParam dataBack;
  const bool sameData = handler.WriteVKLinExtraData(data) != 0 &&
                        handler.GetVKLinExtraData(dataBack) != 0 && SameBytes(data, dataBack);
  Show("QX70 linearisation extra", sameData, Text("\"%s\"", dataBack.text));

  VKProfileExtraParam extra;
  extra.value = 7;
  VKProfileExtraParam extraBack;
  const bool sameExtra = handler.WriteVKProfileExtraParam(extra) != 0 &&
                         handler.GetVKProfileExtraParam(extraBack) != 0 &&
                         SameBytes(extra, extraBack);
  Show("QX76 extra parameters", sameExtra, Text("value %d", extraBack.value));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: store_and_read PROFILE RGB_PROFILE\n");
    return 2;
  }
  const char* path = argv[1];
  const std::vector<double> coloursBefore = Convert(path);

  VKCLProfileHandler handler(AFilePath(path), 0);
  if (handler.IsOutputICCFile() == 0) {
    std::fprintf(stderr, "%s is no output profile\n", path);
    return 1;
  }
  const VKCLProfile& profile = *handler.GetProfilePtr();
  const std::uint32_t tagsBefore = profile.tagCount;
  std::printf("opened: an output profile of %u bytes, %d channels, %u tags; own profile: %s\n\n",
              profile.header.size, profile.channelCount, profile.tagCount,
              handler.IsVKCLProfile() != 0 ? "yes" : "no");

  std::puts("stored, and read back byte for byte:");
  StoreColorParam(handler);
  StoreInkLimits(handler);
  StoreSplit(handler);
  StoreDither(handler);
  StoreSpotLinks(handler, path, argv[2]);
  StoreSmallRecords(handler);

  const VKCLProfileHandler again(AFilePath(path), 0);
  VKCLProfileHandler reader = again;
  std::printf("\nreopened: %u bytes, %u tags (%u private); own profile: %s; finished state: %s\n\n",
              reader.GetProfilePtr()->header.size, reader.GetProfilePtr()->tagCount,
              reader.GetProfilePtr()->tagCount - tagsBefore,
              again.IsVKCLProfile() != 0 ? "yes" : "no", StateText(again).c_str());

  std::puts("for everybody else (Little CMS):");
  const std::vector<double> coloursAfter = Convert(path);
  Show("opens and converts", !coloursAfter.empty(),
       Text("%zu CMYK colours to Lab", coloursAfter.size() / 3));
  Show("exactly as before", coloursAfter == coloursBefore, "every number the same");
  if (coloursAfter.size() >= 3) {
    std::printf("       for example: no ink is Lab %.2f %.2f %.2f\n", coloursAfter[0],
                coloursAfter[1], coloursAfter[2]);
  }
  std::printf("\n%s\n",
              demo::failures == 0 ? "All of it came back." : "Something did not come back.");
  return demo::failures == 0 ? 0 : 1;
}
