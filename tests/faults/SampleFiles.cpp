#include "faults/SampleFiles.h"

#include <lcms2.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/ImageBuilder.h"
#include "support/PrivatePayloads.h"

namespace vkcl::testing {
namespace {

// The characters as UTF-16, the high byte first.
Bytes Wide(const std::string& text) {
  Bytes bytes;
  for (const char c : text) {
    bytes.push_back(0);
    bytes.push_back(static_cast<unsigned char>(c));
  }
  return bytes;
}

// A tag of type 'dict' (ICC.1:2010, 10.5) with records of 16 bytes.
Bytes DictionaryTag(const std::vector<std::pair<std::string, std::string>>& entries) {
  Bytes records;
  Bytes texts;
  const auto add = [&](const std::string& text) {
    const Bytes wide = Wide(text);
    const auto at = static_cast<std::uint32_t>(16 + 16 * entries.size() + texts.size());
    records = Join({records, Big32(at), Big32(static_cast<std::uint32_t>(wide.size()))});
    texts = Join({texts, wide});
    while (texts.size() % 4 != 0) texts.push_back(0);
  };
  for (const auto& [name, value] : entries) {
    add(name);
    add(value);
  }
  return Join({Big32(Sig("dict")), Big32(0), Big32(static_cast<std::uint32_t>(entries.size())),
               Big32(16), records, texts});
}

// A target of two samples.
constexpr const char* kTarget =
    "CGATS.5\nBEGIN_DATA_FORMAT\nCMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\n"
    "BEGIN_DATA\n0 0 0 0 95 0 -1\n100 0 0 0 50 -30 -40\nEND_DATA\n";

// The spot-colour links hold one that can be loaded.
Bytes LinksPayload() {
  const Bytes link = SampleLink();
  const auto length = static_cast<std::int32_t>(link.size());
  return Payload()
      .Int(1)
      .Int(16 + 4 + 8 + length)
      .Int(2)
      .Int(4)
      .Text("Spot")
      .Int(length)
      .Int(0)
      .Raw(link);
}

Bytes ParamPayload(unsigned char status) {
  Bytes payload = SamplePayload("QX53");
  payload.at(8) = status;
  return payload;
}

}  // namespace

Bytes SampleLink() {
  return ProfileImage(ProfileHeader(Sig("link"), Sig("RGB ")), {{Sig("cprt"), TextTag("none")}});
}

Bytes SampleProfile(unsigned char status) {
  std::vector<ImageTag> tags = {{Sig("cprt"), TextTag("none")}, {Sig("targ"), TextTag(kTarget)}};
  for (const std::string& signature : KnownSignatures()) {
    Bytes payload = SamplePayload(signature);
    if (signature == "QX50") payload = SplitPayload(2, {1});
    if (signature == "QX53") payload = ParamPayload(status);
    if (signature == "QX69") payload = LinksPayload();
    tags.push_back({SigOf(signature), DataTag(payload)});
  }
  tags.push_back({Sig("meta"), DictionaryTag({{"Maker", "Acme"},
                                              {"BlackGeneration", "UCR with a long name"},
                                              {"BrightenerCorrection", "0.25 and a long tail"}})});
  tags.push_back({Sig("B2A0"), DataTag(Pattern(50, 9))});
  return ProfileImage(ProfileHeader(), tags);
}

Bytes StandardProfile() {
  return ProfileImage(ProfileHeader(), {{Sig("cprt"), TextTag("elsewhere")},
                                        {Sig("A2B0"), DataTag(Pattern(70, 3))}});
}

namespace {

Bytes MakeGrayProfile() {
  cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.0);
  cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
  cmsFreeToneCurve(curve);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

}  // namespace

Bytes GrayProfile() {
  static const Bytes made = MakeGrayProfile();  // once, for it holds the moment of its making
  return made;
}

void LayProfiles(const TempDir& dir) {
  static const Bytes sample = SampleProfile();
  static const Bytes standard = StandardProfile();
  static const Bytes other = Pattern(300, 7);
  dir.Write("p.icc", sample);
  dir.Write("target.icc", standard);
  dir.Write("old.bin", other);
}

}  // namespace vkcl::testing
