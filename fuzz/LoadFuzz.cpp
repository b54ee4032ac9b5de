// Any bytes as a profile file: loading it, every question that can be asked of it, and the copies
// that are made of it.
#include <algorithm>
#include <filesystem>
#include <map>

#include "Fuzz.h"
#include "handler/StoredList.h"
#include "handler/StoredSplit.h"
#include "handler/VKCLProfileHandler.h"
#include "handler/VKCLProfileProperties.h"
#include "inspect/ProfileCheck.h"
#include "inspect/ProfileDiff.h"
#include "inspect/ProfileDocument.h"
#include "inspect/ProfileReport.h"
#include "profile/ProfileIdentity.h"
#include "profile/TagLayout.h"

using vkcl::fuzz::Bytes;
using vkcl::fuzz::Demand;
using vkcl::fuzz::Tag;

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
  VKCLProfileOptions options;
  handler.GetProfileOptions(options);
  handler.IsLinFake();
  handler.isVKCLUnLockedProfile();
}

// A page takes as long as all the rest, so one input in four has to do.
void WriteReport(const AFilePath& path, const std::uint8_t* data, std::size_t size) {
  if (size > 0 && data[size - 1] % 4 != 0) return;
  const AFilePath paths[] = {path};
  Demand(vkcl::WriteReport(paths, [](std::string_view) { return true; }),
         "a page can be made of any file");
}

// Whether a tag is in the file, to its last byte.
bool IsHeld(const icTag& tag, const Bytes& file) {
  return std::uint64_t{tag.offset} + tag.size <= file.size();
}

std::uint64_t Padded(const icTag& tag) { return (std::uint64_t{tag.size} + 3) / 4 * 4; }

// The tags of the table, each with a block of its own, behind the header of the file.
Bytes Ordered(const VKCLProfile& profile, const Bytes& file) {
  std::vector<Tag> tags;
  for (std::uint32_t i = 0; i < profile.tagCount; ++i) {
    const icTag& tag = profile.tagTable[i];
    const auto first = file.begin() + static_cast<std::ptrdiff_t>(tag.offset);
    tags.push_back({tag.sig, Bytes(first, first + static_cast<std::ptrdiff_t>(tag.size))});
  }
  Bytes ordered = vkcl::fuzz::Profile(tags);
  std::copy(file.begin() + 4, file.begin() + 128, ordered.begin() + 4);
  return ordered;
}

// A file that is put into order has all that the file has, and suits the writers. It is refused
// where a tag is not whole, and where it would be many times as large.
void Arrange(const VKCLProfile& profile, const Bytes& file) {
  static const std::string path = vkcl::fuzz::FilePath("arranged.icc");
  std::filesystem::remove(path);
  const bool isArranged = vkcl::ArrangeTagData(profile, AFilePath(path));
  Demand(isArranged == std::filesystem::exists(path), "a refusal leaves no file");
  std::uint64_t length = 132;
  bool isWhole = profile.isValidICC() == 1 && profile.tagCount > 0;
  for (std::uint32_t i = 0; isWhole && i < profile.tagCount; ++i) {
    length += 12 + Padded(profile.tagTable[i]);
    isWhole = IsHeld(profile.tagTable[i], file);
  }
  Demand(isArranged == (isWhole && length <= 16 * file.size()), "whole tags can be put into order");
  if (!isArranged) return;
  Demand(vkcl::fuzz::ReadFile(path) == Ordered(profile, file), "in order all is there");
  Demand(vkcl::TagDataSuitAppending(VKCLProfile(AFilePath(path), 3)), "order suits the writers");
}

// Whether a tag is longer than an earlier one whose data it shares. In a copy it then runs into
// what follows.
bool RunsOver(const std::vector<icTag>& tags) {
  std::map<std::uint32_t, std::uint64_t> room;
  return std::any_of(tags.begin(), tags.end(), [&](const icTag& tag) {
    const auto [first, isNew] = room.try_emplace(tag.offset, Padded(tag));
    return !isNew && first->second < Padded(tag);
  });
}

// A copy without private tags has the header and the other tags. Nothing is said about bytes that
// the file does not hold, nor about tags that run into each other.
void Strip(VKCLProfile& profile, const Bytes& file) {
  static const std::string path = vkcl::fuzz::FilePath("stripped.icc");
  std::vector<icTag> kept;
  std::uint64_t length = 0;
  for (std::uint32_t i = 0; profile.tagTable != nullptr && i < profile.tagCount; ++i) {
    if (vkcl::IsPrivateSignature(profile.tagTable[i].sig)) continue;
    kept.push_back(profile.tagTable[i]);
    length += kept.back().size;
  }
  constexpr std::uint64_t kMost = 1 << 20;  // what the file does not hold becomes zeros
  if (length > kMost) return;
  std::filesystem::remove(path);
  const bool isStripped = profile.WriteICCWithoutVKiTags(path.c_str()) == 1;
  Demand(isStripped == std::filesystem::exists(path), "a refusal leaves no file");
  if (!isStripped || RunsOver(kept)) return;
  const Bytes copy = vkcl::fuzz::ReadFile(path);
  Demand(std::equal(copy.begin() + 4, copy.begin() + 128, file.begin() + 4), "the header stays");
  const VKCLProfile stripped(AFilePath(path), 3);
  Demand(stripped.isValidICC() == 1 && stripped.header.size == copy.size() &&
             stripped.tagCount == kept.size(),
         "the copy is a profile of the other tags");
  for (std::size_t i = 0; i < kept.size(); ++i) {
    const icTag& tag = stripped.tagTable[i];
    Demand(tag.sig == kept[i].sig && tag.size == kept[i].size, "the other tags are listed");
    if (!IsHeld(kept[i], file)) continue;
    const auto first = copy.begin() + static_cast<std::ptrdiff_t>(tag.offset);
    Demand(
        IsHeld(tag, copy) && std::equal(first, first + static_cast<std::ptrdiff_t>(tag.size),
                                        file.begin() + static_cast<std::ptrdiff_t>(kept[i].offset)),
        "a tag keeps its bytes");
  }
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
  WriteReport(AFilePath(path), data, size);
  const Bytes file(data, data + size);
  Arrange(profile, file);
  VKCLProfile source(AFilePath(path), 3);
  Strip(source, file);
  Demand(vkcl::fuzz::ReadFile(path) == file, "looking changes nothing");
  return 0;
}
