// Any bytes as a profile file: loading it, and every question that can be asked of it.
#include "Fuzz.h"
#include "handler/StoredList.h"
#include "handler/StoredSplit.h"
#include "handler/VKCLProfileHandler.h"
#include "handler/VKCLProfileProperties.h"
#include "inspect/ProfileCheck.h"
#include "inspect/ProfileDiff.h"
#include "inspect/ProfileDocument.h"
#include "profile/ProfileIdentity.h"
#include "profile/TagLayout.h"

using vkcl::fuzz::Demand;

namespace {

void AskProfile(const VKCLProfile& profile) {
  VKCLProfileFinishedState state = FinishedNone;
  for (const int flag : {0, 1}) profile.GetVKCLProfileFinishedState(state, flag);
  profile.isValidOutputICC();
  profile.isVKCLProfile();
  unsigned long size = 0;
  delete[] profile.ReadtargTag(size);
  vkcl::TagDataSuitAppending(profile);
  for (std::uint32_t i = 0; profile.tagTable != nullptr && i < profile.tagCount && i < 64; ++i) {
    const auto signature = static_cast<VKPrivateTagSignature>(profile.tagTable[i].sig);
    vkcl::TagDataSuitWriting(profile, signature, 8);
    VKPrivateTag tag;
    tag.SetSignature(signature);
    profile.ReadVKPrivateTag(&tag, 1);
  }
}

// The file by itself is told to be what an object on it answers.
void AskFile(const VKCLProfile& profile, int channels) {
  vkcl::ProfileIdentity identity;
  const bool known = vkcl::IdentifyProfile(profile.filePath, channels, identity);
  Demand(known == (profile.isValidICC() != 0), "a file is a profile where an object on it is");
  if (!known) return;
  VKCLProfileFinishedState byTags = FinishedNone;
  VKCLProfileFinishedState byStatus = FinishedNone;
  profile.GetVKCLProfileFinishedState(byTags, 1);
  profile.GetVKCLProfileFinishedState(byStatus, 0);
  Demand(identity.byTags == byTags && identity.byStatus == byStatus, "its state is the same");
  Demand(identity.isOwn == (profile.isVKCLProfile() != 0), "so is whose it is");
}

void AskHandler(const VKCLProfileHandler& handler) {
  VKCLProfileProperties properties;
  handler.GetVKCLProfileProperties(properties, 1);
  handler.IsLinFake();
  handler.isVKCLUnLockedProfile();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("load.icc");
  vkcl::fuzz::WriteFile(path, data, size);
  for (const int channels : {0, 3}) {
    VKCLProfileHandler handler(AFilePath(path), channels);
    AskProfile(*handler.GetProfilePtr());
    AskFile(*handler.GetProfilePtr(), channels);
    AskHandler(handler);
  }
  vkcl::CheckProfile(AFilePath(path));
  const VKCLProfile profile(AFilePath(path), 3);
  std::string why;
  const auto forget = [](std::string_view) { return true; };
  vkcl::WriteDocument(profile, {}, vkcl::DocumentForm::Json, forget, why);
  vkcl::WriteDocument(profile, {}, vkcl::DocumentForm::Text, forget, why);
  vkcl::CompareProfiles(
      profile, profile,
      [](const vkcl::Difference&) {
        Demand(false, "a profile does not differ from itself");
        return false;
      },
      why);
  const vkcl::fuzz::Bytes after = vkcl::fuzz::ReadFile(path);
  Demand(after == vkcl::fuzz::Bytes(data, data + size), "looking changes nothing");
  return 0;
}
