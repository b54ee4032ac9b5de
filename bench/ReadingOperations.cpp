// Opening, classifying, reading one record; and the same over many files.
#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Floor.h"
#include "Lcms.h"
#include "Operation.h"
#include "handler/VKCLProfileHandler.h"
#include "profile/ProfileIdentity.h"
#include "profile/TableLayout.h"

namespace vkcl::bench {
namespace {

constexpr double kGoal = 1.3;

// What opening and classifying a profile touches.
struct Places {
  std::size_t table;
  bare::Part settings;
};

Places PlacesIn(const Bytes& profile) {
  const Entry entry = EntryOf(profile, QX53);
  return {TableEnd(TableOf(profile).size()), {entry.offset, entry.size}};
}

bool Open(const std::string& path) {
  const VKCLProfile profile(AFilePath(path), 0);
  return profile.isValidICC() != 0;
}

bool IsClassified(const VKCLProfileHandler& handler) {
  VKCLProfileFinishedState byTags = FinishedNone;
  return handler.IsICCFile() != 0 && handler.IsOutputICCFile() != 0 &&
         handler.IsVKCLProfile() != 0 && handler.GetColorSpace() == icSigCmykData &&
         handler.GetVKCLProfileFinishedState(byTags, 1) != 0;
}

bool ClassifyByTags(const std::string& path) {
  return IsClassified(VKCLProfileHandler(AFilePath(path), 0));
}

// An object answers question by question, and opens the file anew for the status.
bool ClassifyWithAnObject(const std::string& path) {
  const VKCLProfileHandler handler(AFilePath(path), 0);
  VKCLProfileFinishedState byStatus = FinishedNone;
  return IsClassified(handler) && handler.GetVKCLProfileFinishedState(byStatus, 0) != 0;
}

bool Classify(const std::string& path) {
  ProfileIdentity identity;
  return IdentifyProfile(AFilePath(path), 0, identity) && identity.isOutput && identity.isOwn &&
         identity.colorSpace == icSigCmykData && identity.byTags != FinishedNone &&
         identity.byStatus != FinishedNone;
}

// The bytes of the colour parameters that an operation looks at: those up to the status, all of
// them, or none.
constexpr std::size_t kStatus = kDataHead + offsetof(VKColorParam, status) + 4;
constexpr std::size_t kSettings = kDataHead + sizeof(VKColorParam);

Operation Opening(const std::string& name, double goal, const Bytes& profile, std::size_t settings,
                  bool (*ours)(const std::string&), bool (*withLcms)(const std::string&)) {
  return {
      .name = name,
      .goal = goal,
      .floor =
          [&profile, settings](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            const Places places = PlacesIn(profile);
            const bare::Part part = {places.settings.offset, settings};
            return Way{[=] { return bare::Look(path, places.table, part); }};
          },
      .lcms =
          [&profile, withLcms](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            return Way{[=] { return withLcms(path); }};
          },
      .ours =
          [&profile, ours](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            return Way{[=] { return ours(path); }};
          },
  };
}

Operation Classifying(const std::string& what, const Bytes& profile) {
  return Opening("open and classify, " + what, kGoal, profile, kStatus, Classify, lcms::Classify);
}

// A record of a profile that is known: of a handler that lives, of a handle that is kept.
Operation ReadingRecord(const std::string& what, const Bytes& profile) {
  return {
      .name = "read one record, " + what,
      .goal = kGoal,
      .floor =
          [&profile](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            const std::vector<bare::Part> parts = {PlacesIn(profile).settings};
            const auto record = std::make_shared<Bytes>(parts[0].length);
            return Way{[=] { return bare::Read(path, parts, record->data()); }};
          },
      .lcms =
          [&profile](const Folder& folder) {
            const auto opened = std::make_shared<lcms::Opened>(folder.Write("p.icc", profile));
            const auto element = std::make_shared<Bytes>();
            return Way{[=] { return opened->Read(QX53, *element); }};
          },
      .ours =
          [&profile](const Folder& folder) {
            const auto handler =
                std::make_shared<VKCLProfileHandler>(AFilePath(folder.Write("p.icc", profile)), 0);
            const auto param = std::make_shared<VKColorParam>();
            return Way{[=] { return handler->GetVKColorParam(*param) != 0; }};
          },
  };
}

Operation OpeningAndReading(const std::string& what, const Bytes& profile) {
  return {
      .name = "open and read one record, " + what,
      .floor =
          [&profile](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            const Places places = PlacesIn(profile);
            return Way{[=] { return bare::Look(path, places.table, places.settings); }};
          },
      .lcms =
          [&profile](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            const auto element = std::make_shared<Bytes>();
            return Way{[=] { return lcms::Read(path, QX53, *element); }};
          },
      .ours =
          [&profile](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            return Way{[=] {
              const VKCLProfileHandler handler(AFilePath(path), 0);
              VKColorParam param;
              return handler.GetVKColorParam(param) != 0;
            }};
          },
  };
}

// Many files, shared between threads as they come.
template <class Look>
bool EachOf(const std::vector<std::string>& paths, unsigned threads, Look look) {
  std::atomic<std::size_t> next = 0;
  std::atomic<bool> good = true;
  const auto work = [&] {
    for (std::size_t i = next++; i < paths.size(); i = next++) {
      if (!look(paths[i])) good = false;
    }
  };
  std::vector<std::thread> others;
  for (unsigned i = 1; i < threads; ++i) others.emplace_back(work);
  work();
  for (std::thread& other : others) other.join();
  return good;
}

template <class Look>
Setup OnManyFiles(unsigned threads, Look look) {
  return [=](const Folder& folder) {
    constexpr int kFiles = 1000;
    const Bytes& profile = OwnProfile(kLengths[0], kFewTags);
    std::vector<std::string> paths;
    for (int i = 0; i < kFiles; ++i) {
      paths.push_back(folder.Write(std::to_string(i) + ".icc", profile));
    }
    return Way{[=] { return EachOf(paths, threads, look); }};
  };
}

Operation ManyFiles(unsigned threads) {
  const Places places = PlacesIn(OwnProfile(kLengths[0], kFewTags));
  const bare::Part status = {places.settings.offset, kStatus};
  return {
      .name = "open and classify 1,000 files, " + std::to_string(threads) +
              (threads == 1 ? " thread" : " threads"),
      .goal = kGoal,
      .counts = threads == 1,
      .floor = OnManyFiles(
          threads, [=](const std::string& path) { return bare::Look(path, places.table, status); }),
      .lcms = OnManyFiles(threads, lcms::Classify),
      .ours = OnManyFiles(threads, Classify),
  };
}

}  // namespace

void AddReading(std::vector<Operation>& operations) {
  const Bytes& usual = OwnProfile(kUsualLength, kUsualTags);
  operations.push_back(Opening("open, 190 KB", 0, usual, 0, Open, lcms::Open));
  operations.push_back(Opening("open and classify by the tags, 190 KB", kGoal, usual, 0,
                               ClassifyByTags, lcms::ClassifyByTags));
  for (const std::size_t length : kLengths) {
    operations.push_back(Classifying(LengthText(length), OwnProfile(length, TagsFor(length))));
  }
  for (const std::size_t tags : {10, 100, 1000}) {
    Operation operation =
        Classifying(std::to_string(tags) + " tags", OwnProfile(kUsualLength, tags));
    if (tags > 100) operation.lcms = {};  // Little CMS refuses as many
    operations.push_back(operation);
  }
  operations.push_back(Opening("open and classify with an object, 190 KB", 0, usual, kSettings,
                               ClassifyWithAnObject, lcms::Classify));
  operations.push_back(ReadingRecord("190 KB", usual));
  operations.push_back(ReadingRecord("64 MB", OwnProfile(kLengths[3], kUsualTags)));
  operations.push_back(OpeningAndReading("190 KB", usual));
}

void AddManyFiles(std::vector<Operation>& operations) {
  operations.push_back(ManyFiles(1));
  operations.push_back(ManyFiles(2));
}

}  // namespace vkcl::bench
