#include "LifeCommands.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <string_view>
#include <system_error>
#include <vector>

#include "Describe.h"
#include "Opened.h"
#include "OutputFile.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "edit/ProfileEdit.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/ReplaceFile.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "profile/TagLayout.h"

namespace vkcl::tool {
namespace {

constexpr const char* kCannotWrite =
    "it could not be written; the file refuses it, or the disk is full";

// What is embedded where. Type -1 is the sidecar, which has operations of its own.
struct EmbeddedKind {
  const char* name;
  int type;
  VKPrivateTagSignature signature;
  const char* what;
};
constexpr EmbeddedKind kKinds[] = {
    {"trc", 0, QX58, "a tone-curve file, of any content"},
    {"profile1", 1, QX61, "an ICC profile or device link"},
    {"profile2", 2, QX62, "an ICC profile or device link"},
    {"profile3", 3, QX63, "an ICC profile or device link"},
    {"profile4", 4, QX65, "an ICC profile or device link"},
    {"vsd", -1, QX71, "a VSD sidecar file, stored with its name"},
};

const EmbeddedKind* FindKind(const std::string& name) {
  const auto* end = std::end(kKinds);
  const auto* found = std::find_if(std::begin(kKinds), end,
                                   [&](const EmbeddedKind& kind) { return kind.name == name; });
  return found != end ? found : nullptr;
}

Result UnknownKind(const std::string& name) {
  return Usage(
      fmt::format("there is no kind \"{}\"; the kinds are\n{}", Printable(name), EmbeddedKinds()));
}

struct HandleDeleter {
  void (*free)(void*);
  void operator()(void* handle) const { free(handle); }
};
using Handle = std::unique_ptr<void, HandleDeleter>;

// Loads an ICC profile into the profiler library; null when the file holds none.
Handle LoadProfile(const std::string& file) {
  Handle spec(CLNewFileSpecRef(), {CLFreeFileSpecRef});
  Handle profile(CLNewCLProfileRef(), {CLFreeCLProfileRef});
  const AString path = VKCLMultiByteToUTF8(AString(file));
  if (CLName2FileSpec(spec.get(), path.c_str()) != 0 ||
      CLLoadProfileFromFile(profile.get(), spec.get()) != 0) {
    profile.reset();
  }
  return profile;
}

std::uint64_t LengthOf(const std::string& path) {
  AFile file;
  const std::int64_t length = file.open(AFilePath(path), AFile::Read) ? file.length() : 0;
  return static_cast<std::uint64_t>(std::max<std::int64_t>(length, 0));
}

LayoutTest SuitsWriting(VKPrivateTagSignature signature, std::uint64_t length) {
  return [=](const VKCLProfile& profile) {
    return TagDataSuitWriting(profile, signature, static_cast<unsigned long>(length));
  };
}

Result EmbedInto(VKCLProfileHandler& handler, const EmbeddedKind& kind, const std::string& file,
                 void* profile) {
  const AFilePath path(file);
  int done = 0;
  if (kind.type < 0) {
    done = handler.WriteVSDProfile(path);
  } else if (kind.type == 0) {
    done = handler.WriteTrcTag(path);
  } else {
    const auto type = static_cast<VKCLProfileHandler::EnbedFileType>(kind.type);
    done = handler.WriteCLICCProfieRef(profile, type);
  }
  if (done == 0) return Refused(kCannotWrite);
  return Done(fmt::format("embedded {} as {} ({})", Printable(file), kind.name,
                          SignatureText(kind.signature)));
}

std::vector<TagChange> RemovalOfPrivate(const VKCLProfile& profile) {
  std::vector<TagChange> removals;
  std::map<std::uint32_t, std::uint32_t> occurrences;
  for (std::uint32_t i = 0; i < profile.tagCount; ++i) {
    const std::uint32_t signature = profile.tagTable[i].sig;
    if (!IsPrivateSignature(signature)) continue;
    removals.push_back({signature, ++occurrences[signature], true, {}});
  }
  return removals;
}

// What keeps a profile from being locked or unlocked; empty when nothing does.
std::string WhyNoLock(const VKCLProfileHandler& handler, int flag) {
  if (handler.IsVKCLProfile() == 0) return "it is none of the system's own profiles";
  VKCLProfileFinishedState state = FinishedNone;
  handler.GetVKCLProfileFinishedState(state, flag);
  if (state < FinishedLinearisation) {
    return fmt::format("its finished state is \"{}\" ({}), and the lock begins with \"{}\" ({})",
                       StateName(state), static_cast<int>(state), StateName(FinishedLinearisation),
                       static_cast<int>(FinishedLinearisation));
  }
  VKColorParam param;
  return handler.GetVKColorParam(param) == 0 ? "its colour parameters cannot be read" : "";
}

int StatusOf(const VKCLProfileHandler& handler) {
  VKColorParam param;
  return handler.GetVKColorParam(param) != 0 ? param.status : 0;
}

// The path without links and ".."; the path as it is when the system does not tell. The store takes
// two files for one when their paths look alike, as "link/../x" and "x" do.
std::string RealPath(const std::string& path) {
  std::error_code error;
  const std::filesystem::path real = std::filesystem::canonical(path, error);
  return error ? path : real.string();
}

}  // namespace

std::string EmbeddedKinds() {
  std::string text;
  for (const EmbeddedKind& kind : kKinds) {
    text += fmt::format("  {:<10}{}  {}\n", kind.name, SignatureText(kind.signature), kind.what);
  }
  return text;
}

std::vector<std::string> EmbeddedKindNames() {
  std::vector<std::string> names;
  for (const EmbeddedKind& kind : kKinds) names.emplace_back(kind.name);
  return names;
}

Result Merge(const std::string& source, const std::string& target, const ChangeOptions& how) {
  std::string why = WhyInvalid(source, 0);
  if (!why.empty()) return Refused(fmt::format("{}: {}", Printable(source), why));
  why = WhyInvalid(target, 0);
  if (!why.empty()) return Refused(fmt::format("{}: {}", Printable(target), why));
  OpenedHandler from(RealPath(source), 0);
  const std::string place = RealPath(target);
  if (from.IsVKCLProfile() == 0) {
    return Refused(fmt::format("{}: it is none of the system's own profiles", Printable(source)));
  }
  if (from.GetProfilePtr()->filePath.isSameFile(AFilePath(place))) {
    return Done("both are one file; there is nothing to do");
  }
  if (OpenedHandler(target, 0).IsVKCLProfile() != 0) {
    return Refused(
        fmt::format("{}: it is one of the system's own profiles already", Printable(target)));
  }
  const auto suits = [](const VKCLProfile& profile) { return TagDataSuitAppending(profile); };
  return ChangeProfile(place, 0, suits, how, [&](VKCLProfileHandler& to) {
    const std::uint32_t before = to.GetProfilePtr()->tagCount;
    if (from.GetProfilePtr()->MergeVKPrivateTagIntoStandICC(*to.GetProfilePtr()) == 0) {
      return Refused(fmt::format("{}: {}", Printable(target), kCannotWrite));
    }
    return Done(fmt::format("{} private tags of {} merged into {}",
                            to.GetProfilePtr()->tagCount - before, Printable(source),
                            Printable(target)));
  });
}

Result Strip(const std::string& input, const std::string& output, bool force) {
  std::string why = WhyInvalid(input, kAnyChannels);
  if (!why.empty()) return Refused(why);
  if (AFilePath(output).isSameFile(AFilePath(input))) {
    return Refused("a profile is not stripped onto itself");
  }
  why = WhyKept(output, force);
  if (!why.empty()) return Refused(why);
  const OpenedProfile profile(input, kAnyChannels);
  const auto isKept = [](const icTag& tag) { return !IsPrivateSignature(tag.sig); };
  const std::vector<TagChange> removals = RemovalOfPrivate(profile);
  const std::size_t removed = removals.size();
  if (profile.tagCount == 0) return Refused("it holds no tags");
  if (removed == profile.tagCount) {
    return Refused("it holds only private tags; nothing would be left");
  }
  if (!WriteChangedCopy(profile, removals, AFilePath(output))) {
    return CopyNotWritten(output, profile, isKept);
  }
  return Done(fmt::format("{} private tags left out; {} tags written to {}", removed,
                          profile.tagCount - removed, Printable(output)));
}

Result Lock(const std::string& path, const ChangeOptions& how) {
  std::string why = WhyInvalid(path, 0);
  if (why.empty()) why = WhyNoLock(OpenedHandler(path, 0), 0);
  if (!why.empty()) return Refused(why);
  return ChangeProfile(
      path, 0, SuitsWriting(QX53, sizeof(VKColorParam)), how, [](VKCLProfileHandler& handler) {
        if (handler.isVKCLUnLockedProfile() == 0) {
          return Refused(fmt::format("its status is {}, which is not unlocked", StatusOf(handler)));
        }
        if (handler.LockUnLockedVKCLProfile() == 0) return Refused(kCannotWrite);
        return Done(fmt::format("locked; its status is {}", StatusOf(handler)));
      });
}

Result Unlock(const std::string& path, const ChangeOptions& how) {
  std::string why = WhyInvalid(path, 0);
  if (why.empty()) why = WhyNoLock(OpenedHandler(path, 0), 1);
  if (!why.empty()) return Refused(why);
  return ChangeProfile(
      path, 0, SuitsWriting(QX53, sizeof(VKColorParam)), how, [](VKCLProfileHandler& handler) {
        const bool already = handler.isVKCLUnLockedProfile() != 0;
        if (handler.UnLockVKCLProfile() == 0) return Refused(kCannotWrite);
        return Done(fmt::format("{}; its status is {}", already ? "unlocked already" : "unlocked",
                                StatusOf(handler)));
      });
}

Result Embed(const std::string& path, const std::string& kindName, const std::string& file,
             const ChangeOptions& how) {
  const EmbeddedKind* kind = FindKind(kindName);
  if (kind == nullptr) return UnknownKind(kindName);
  std::string why = WhyInvalid(path, 0);
  if (!why.empty()) return Refused(why);
  why = WhyUnreadable(file);
  if (!why.empty()) return Refused(fmt::format("{}: {}", Printable(file), why));
  const Handle profile = kind->type > 0 ? LoadProfile(file) : Handle(nullptr, {nullptr});
  if (kind->type > 0 && profile == nullptr) {
    return Refused(fmt::format("{}: it is no ICC profile, and {} holds {}", Printable(file),
                               kind->name, kind->what));
  }
  const std::uint64_t head = kind->type < 0 ? sizeof(VKVSDProfileParam) : 0;
  return ChangeProfile(
      path, 0, SuitsWriting(kind->signature, head + LengthOf(file)), how,
      [&](VKCLProfileHandler& handler) { return EmbedInto(handler, *kind, file, profile.get()); });
}

Result Extract(const std::string& path, const std::string& kindName, const std::string& file,
               bool force) {
  const EmbeddedKind* kind = FindKind(kindName);
  if (kind == nullptr) return UnknownKind(kindName);
  std::string why = WhyInvalid(path, 0);
  if (!why.empty()) return Refused(why);
  const AFilePath to(file);
  if (to.isSameFile(AFilePath(path))) return Refused("a profile is not replaced by its content");
  why = WhyKept(file, force);
  if (!why.empty()) return Refused(why);
  const OpenedProfile profile(path, 0);
  const std::string tag = SignatureText(kind->signature);
  if (profile.GetTagSize(static_cast<icTagSignature>(kind->signature)) == 0) {
    return Refused(fmt::format("it holds no {} ({})", kind->name, tag));
  }
  // Not written as the library does, which removes the old file first.
  VKPrivateTag payload;
  payload.signature = kind->signature;
  const std::size_t head = kind->type < 0 ? sizeof(VKVSDProfileParam) : 0;
  unsigned long length = 0;
  char first = 0;
  const bool isEmpty =  // which the allocating read does not tell from damage
      profile.ReadVKPrivateTag(kind->signature, &first, sizeof first, &length) != 0 && length == 0;
  const bool isRead = isEmpty || profile.ReadVKPrivateTag(&payload, 1) != 0;
  if (!isRead || payload.size < head) {
    return Refused(fmt::format("its {} ({}) cannot be read: it is damaged", kind->name, tag));
  }
  const std::string_view content(static_cast<const char*>(payload.data) + head,
                                 payload.size - head);
  if (!ReplaceFile(to, content)) return NotWritten(file);
  return Done(fmt::format("wrote {} bytes to {}", LengthOf(file), Printable(file)));
}

}  // namespace vkcl::tool
