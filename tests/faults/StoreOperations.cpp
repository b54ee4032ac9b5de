// The profile object: loading, copying, reading and writing tags.
#include <algorithm>
#include <optional>

#include "faults/Operations.h"
#include "faults/SampleFiles.h"
#include "profile/ProfileIdentity.h"
#include "support/ImageBuilder.h"

namespace vkcl::testing {
namespace {

VKCLProfile At(const TempDir& dir, const char* name = "p.icc", int channels = 0) {
  return VKCLProfile(AFilePath(dir.File(name)), channels);
}

const char* Some(std::size_t length) {
  static const Bytes bytes = Pattern(5000, 11);
  EXPECT_LE(length, bytes.size());
  return reinterpret_cast<const char*>(bytes.data());
}

// A profile and what a read fills.
struct Reading {
  explicit Reading(const TempDir& dir) : profile(At(dir)) {}
  VKCLProfile profile;
  char buffer[4200] = {};
  unsigned long size = 77;
  VKPrivateTag tag;
  std::unique_ptr<char[]> text;
};

std::string Seen(const Reading& r) {
  return ShowArray(r.buffer, sizeof r.buffer) + std::to_string(r.size) + Show(r.tag) +
         ShowArray(r.text.get(), static_cast<std::int64_t>(r.text ? r.size : 0)) + Show(r.profile);
}

template <class Run>
std::function<Attempt(const TempDir&)> Reads(Run run) {
  return [run](const TempDir& dir) { return With<Reading>(run, Seen, dir); };
}

// An operation on one profile object.
template <class Run>
std::function<Attempt(const TempDir&)> OnProfile(Run run, const char* name = "p.icc",
                                                 int channels = 0) {
  return [=](const TempDir& dir) {
    return With<VKCLProfile>(
        run, [](const VKCLProfile& p) { return Show(p); }, At(dir, name, channels));
  };
}

auto Stores(VKPrivateTagSignature sig, unsigned long length) {
  return OnProfile([=](VKCLProfile& p) { return p.WriteVKPrivateTag(sig, Some(length), length); });
}

// Two profile objects and a path.
struct Pair {
  explicit Pair(const TempDir& dir)
      : first(At(dir)),
        second(At(dir, "target.icc")),
        to(dir.File("old.bin")),
        fresh(dir.File("new.icc")) {}
  VKCLProfile first;
  VKCLProfile second;
  std::optional<VKCLProfile> copy;
  AFilePath to;
  AFilePath fresh;
};

template <class Run>
std::function<Attempt(const TempDir&)> OnTwo(Run run) {
  return [run](const TempDir& dir) {
    return With<Pair>(
        run,
        [](const Pair& pair) {
          return Show(pair.first) + Show(pair.second) + (pair.copy ? Show(*pair.copy) : "");
        },
        dir);
  };
}

void AddReaders(std::vector<Operation>& all) {
  all.push_back({"VKCLProfile::VKCLProfile", OnTwo([](Pair& pair) {
                   pair.copy.emplace(pair.first.filePath, 0);
                   return pair.copy->isValidICC();
                 }),
                 "loading", FilesLeft::Old, ObjectsLeft::Documented});
  all.push_back({"VKCLProfile::VKCLProfile", OnTwo([](Pair& pair) {
                   pair.copy.emplace(pair.first);
                   return pair.copy->isValidICC();
                 }),
                 "copying", FilesLeft::Old, ObjectsLeft::Documented});
  all.push_back({"VKCLProfile::~VKCLProfile", [](const TempDir& dir) {
                   return With<AFilePath>(
                       [](const AFilePath& path) {
                         { const VKCLProfile profile(path, 0); }
                         return !path.exists();
                       },
                       [](const AFilePath& path) { return Show(path); },
                       dir.File("a profile for a while.tmp"));
                 }});
  all.push_back({"VKCLProfile::operator=", OnTwo([](Pair& pair) {
                   pair.second = pair.first;
                   return pair.second.tagCount == pair.first.tagCount;
                 })});
  all.push_back({"VKCLProfile::isValidOutputICC VKCLProfile::isVKCLProfile VKCLProfile::GetTagSize",
                 OnProfile([](VKCLProfile& p) {
                   return p.isValidOutputICC() + p.isVKCLProfile() == 2 &&
                          p.GetTagSize(static_cast<icTagSignature>(Sig("cprt"))) != 0;
                 })});
  all.push_back({"VKCLProfile::UpdateHeaderColorSpace", OnProfile([](VKCLProfile& p) {
                   p.UpdateHeaderColorSpace(512);
                   return p.GetColorSpace() == icSigRgbData;
                 })});
  all.push_back({"VKCLProfile::GetVKCLProfileFinishedState", OnProfile([](VKCLProfile& p) {
                   VKCLProfileFinishedState state = FinishedNone;
                   return p.GetVKCLProfileFinishedState(state, 0) != 0 && state == FinishedProfile;
                 })});
  all.push_back({"vkcl::IdentifyProfile", [](const TempDir& dir) {
                   struct Known {
                     AFilePath path;
                     ProfileIdentity identity;
                   };
                   return With<Known>(
                       [](Known& known) {
                         return IdentifyProfile(known.path, 0, known.identity) &&
                                known.identity.byTags == FinishedProfile;
                       },
                       [](const Known& known) { return Show(known.identity); },
                       Known{AFilePath(dir.File("p.icc")), {}});
                 }});
  // Colour parameters that cannot be read give no state with the status.
  all.back().systemFaults = Faults::Tell;
  all.push_back({"VKCLProfile::ReadVKPrivateTag", Reads([](Reading& r) {
                   r.size = 77;
                   return r.profile.ReadVKPrivateTag(QX66, r.buffer, nullptr);
                 }),
                 "into a buffer"});
  all.push_back({"VKCLProfile::ReadVKPrivateTag", Reads([](Reading& r) {
                   return r.profile.ReadVKPrivateTag(QX66, r.buffer, 100, &r.size);
                 }),
                 "bounded", FilesLeft::Old, ObjectsLeft::Documented});  // the size is 0 then
  all.push_back({"VKCLProfile::ReadVKPrivateTag", Reads([](Reading& r) {
                   r.tag.SetSignature(QX66);
                   return r.profile.ReadVKPrivateTag(&r.tag, 1);
                 }),
                 "into a new block", FilesLeft::Old, ObjectsLeft::Documented});
  all.push_back({"VKCLProfile::ReadtargTag", Reads([](Reading& r) {
                   r.text.reset(r.profile.ReadtargTag(r.size));
                   return r.text != nullptr;
                 })});
}

void AddWriters(std::vector<Operation>& all) {
  struct Case {
    const char* what;
    VKPrivateTagSignature sig;
    unsigned long length;
  };
  // 'QX50' is the first of the private tags, 'QX76' the last; the tests of the store work on the
  // very first and last tag of a file.
  constexpr Case kCases[] = {{"longer first", QX50, 3000},  {"shorter first", QX50, 5},
                             {"longer middle", QX60, 2000}, {"shorter middle", QX66, 9},
                             {"longer last", QX76, 700},    {"empty last", QX76, 0}};
  for (const Case& c : kCases) {
    // The object tells the new size also when the update failed, deliberately.
    all.push_back({"VKCLProfile::WriteVKPrivateTag", Stores(c.sig, c.length), c.what,
                   FilesLeft::Old, ObjectsLeft::Documented});
  }
  all.push_back(
      {"VKCLProfile::WriteVKPrivateTag", Stores(QX53, 1068), "same size", FilesLeft::OldOrNew});
  const auto unknown = static_cast<VKPrivateTagSignature>(Sig("QX49"));
  all.push_back({"VKCLProfile::WriteVKPrivateTag", Stores(unknown, 50), "new"});
  all.push_back({"VKCLProfile::WriteVKPrivateTag",
                 OnProfile([](VKCLProfile& p) { return p.WriteVKPrivateTag(QX74, Some(4), 4); },
                           "made.icc", 4),
                 "into no profile"});
  all.push_back({"VKCLProfile::WriteVKPrivateTag",
                 OnProfile([](VKCLProfile& p) { return p.WriteVKPrivateTag(QX74, Some(4), 4); },
                           "old.bin", 4),
                 "over another file"});
  all.push_back({"VKCLProfile::WriteMultiVKPrivateTags", [](const TempDir& dir) {
                   struct Several {
                     explicit Several(const TempDir& folder) : profile(At(folder)) {
                       for (int i = 0; i < 3; ++i) tags[i].InitWizardTag(i);
                     }
                     VKCLProfile profile;
                     VKPrivateTag tags[3];
                   };
                   return With<Several>(
                       [](Several& s) { return s.profile.WriteMultiVKPrivateTags(s.tags, 3); },
                       [](const Several& s) { return Show(s.profile); }, dir);
                 }});
  all.push_back({"VKCLProfile::MergeVKPrivateTagIntoStandICC", OnTwo([](Pair& pair) {
                   return pair.first.MergeVKPrivateTagIntoStandICC(pair.second);
                 })});
  all.push_back({"VKCLProfile::WriteICCWithoutVKiTags", OnTwo([](Pair& pair) {
                   return pair.first.WriteICCWithoutVKiTags(pair.to.c_str());
                 }),
                 "over another file"});
  all.push_back({"VKCLProfile::WriteICCWithoutVKiTags", OnTwo([](Pair& pair) {
                   return pair.first.WriteICCWithoutVKiTags(pair.fresh.c_str());
                 }),
                 "into a new file"});
  // The profile's own file is refused, whatever fails.
  all.push_back({"VKCLProfile::WriteICCWithoutVKiTags", OnTwo([](Pair& pair) {
                   return pair.first.WriteICCWithoutVKiTags(pair.first.filePath.c_str()) == 0;
                 }),
                 "onto itself"});
}

void Lay(const TempDir& dir) {
  LayProfiles(dir);
  dir.Write("a profile for a while.tmp", StandardProfile());
}

}  // namespace

Group StoreOperations() {
  Group group = {Lay, {}};
  AddReaders(group.operations);
  AddWriters(group.operations);
  return group;
}

}  // namespace vkcl::testing
