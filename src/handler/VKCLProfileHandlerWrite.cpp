// Records in: one builder, one tag, one write.

#include "handler/VKCLProfileHandler.h"

namespace {

// Builds a tag and stores it; what the builder made is released on every path.
template <class Build>
int BuildAndWrite(VKCLProfile& profile, Build build) {
  VKPrivateTag tag;
  return build(tag) != 0 ? profile.WriteVKPrivateTag(&tag) : 0;
}

}  // namespace

int VKCLProfileHandler::WriteInkSplitTag(const SplitParam& split) {
  return BuildAndWrite(profile_, [&](VKPrivateTag& tag) { return tag.InitFromSplitParam(split); });
}

int VKCLProfileHandler::WriteSILWithLinTag(const VKSingleInkLimitWithLinRef& limits) {
  return BuildAndWrite(
      profile_, [&](VKPrivateTag& tag) { return tag.InitFromVKSingleInkLimitWithLinRef(limits); });
}

int VKCLProfileHandler::WriteMultipleInkLimitTag(VKMultiInklimit& limits) {
  limits.version = limits.count > 1 ? 2 : 4;
  return BuildAndWrite(profile_,
                       [&](VKPrivateTag& tag) { return tag.InitFromVKMultiInklimit(limits); });
}

int VKCLProfileHandler::WriteVKColorParamTag(const VKColorParam& param) {
  return BuildAndWrite(profile_, [&](VKPrivateTag& tag) {
    if (tag.InitFromVKColorParam(param) == 0) return 0;
    profile_.UpdateHeaderColorSpace(param.ColorMode);
    return 1;
  });
}

int VKCLProfileHandler::WriteTrcTag(const AFilePath& path) {
  return BuildAndWrite(profile_, [&](VKPrivateTag& tag) { return tag.InitFromTRCFile(path); });
}

int VKCLProfileHandler::WriteVKCMStoDither(const int& flag) {
  return BuildAndWrite(profile_, [&](VKPrivateTag& tag) { return tag.InitCMStoDither(flag); });
}

int VKCLProfileHandler::WriteDitherParamTag(const VKDitherParam& dither) {
  return BuildAndWrite(profile_,
                       [&](VKPrivateTag& tag) { return tag.InitFromDitherParam(dither); });
}

int VKCLProfileHandler::WriteVKCompatibilityParam(const VKCompatibilityParam& param) {
  return BuildAndWrite(profile_,
                       [&](VKPrivateTag& tag) { return tag.InitFromVKCompatibilityParam(param); });
}

int VKCLProfileHandler::WriteVKSpotSIL(const VKSpotSingleInkLimit& limits) {
  return BuildAndWrite(profile_, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotSIL(limits); });
}

int VKCLProfileHandler::WriteVKSpotLinDL(VKSpotLinDLParam& links) {
  return BuildAndWrite(profile_, [&](VKPrivateTag& tag) { return tag.InitFromVKSpotLinDL(links); });
}

int VKCLProfileHandler::WriteVKLinExtraData(const VKLinExtraDataParam& param) {
  return BuildAndWrite(profile_,
                       [&](VKPrivateTag& tag) { return tag.InitFromVKLinExtraDataParam(param); });
}

int VKCLProfileHandler::WriteVSDProfile(const AFilePath& path) {
  return BuildAndWrite(profile_, [&](VKPrivateTag& tag) { return tag.InitFromVSDProfile(path); });
}

int VKCLProfileHandler::WriteVKWizardFlag(int flag) {
  return BuildAndWrite(profile_, [&](VKPrivateTag& tag) { return tag.InitWizardTag(flag); });
}

int VKCLProfileHandler::WriteVKChromaAdjust(const AString& text) {
  return BuildAndWrite(profile_, [&](VKPrivateTag& tag) { return tag.InitVKChromaAdjust(text); });
}

int VKCLProfileHandler::WriteVKProfileExtraParam(const VKProfileExtraParam& param) {
  return BuildAndWrite(profile_,
                       [&](VKPrivateTag& tag) { return tag.InitFromVKProfileExtraParam(param); });
}

int VKCLProfileHandler::WriteAllVKPrivateTags(const VKSingleInkLimitWithLinRef& single,
                                              const VKMultiInklimit& multi,
                                              const VKColorParam& param, const SplitParam* split) {
  VKPrivateTag tags[4];
  int count = 0;
  if (split != nullptr && tags[count++].InitFromSplitParam(*split) == 0) return 0;
  if (tags[count++].InitFromVKSingleInkLimitWithLinRef(single) == 0) return 0;
  if (tags[count++].InitFromVKMultiInklimit(multi) == 0) return 0;
  if (tags[count++].InitFromVKColorParam(param) == 0) return 0;
  return profile_.WriteMultiVKPrivateTags(tags, count);
}
