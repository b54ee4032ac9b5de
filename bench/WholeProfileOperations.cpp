// What takes a profile as a whole: merge, strip, everything gathered, documents, the sidecar.
#include <algorithm>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Floor.h"
#include "Lcms.h"
#include "Operation.h"
#include "edit/ProfileEdit.h"
#include "handler/VKCLProfileHandler.h"
#include "inspect/ProfileDocument.h"
#include "platform/Bytes.h"
#include "profile/TableLayout.h"
#include "vsd/VSDProfileHandler.h"

namespace vkcl::bench {
namespace {

constexpr double kRewriteGoal = 1.2;

std::vector<Entry> Selected(const Bytes& profile, bool isPrivate) {
  const std::vector<Entry> table = TableOf(profile);
  std::vector<Entry> selected;
  std::copy_if(table.begin(), table.end(), std::back_inserter(selected), [&](const Entry& entry) {
    return IsPrivateSignature(entry.signature) == isPrivate;
  });
  return selected;
}

// The data of tags that lie one behind the other.
bare::Part DataOf(const std::vector<Entry>& tags) {
  const std::uint64_t end = tags.back().offset + PadTo4(tags.back().size);
  return {tags.front().offset, static_cast<std::size_t>(end - tags.front().offset)};
}

// Entries whose data lie one behind the other from `at` on.
void Chain(std::vector<Entry>& table, std::uint64_t at) {
  for (Entry& entry : table) {
    entry.offset = static_cast<std::uint32_t>(at);
    at += PadTo4(entry.size);
  }
}

Bytes MergedHead(const Bytes& source, const Bytes& target) {
  std::vector<Entry> table = TableOf(target);
  const std::vector<Entry> added = Selected(source, true);
  table.insert(table.end(), added.begin(), added.end());
  Chain(table, TableEnd(table.size()));
  return HeadOf(target, table, table.back().offset + PadTo4(table.back().size));
}

Operation Merging(std::size_t length) {
  const Bytes& source = FullProfile();
  const Bytes& target = StandardProfile(length, TagsFor(length));
  return {
      .name = "merge 27 tags, " + LengthText(length),
      .goal = kRewriteGoal,
      .restores = true,
      .floor =
          [&](const Folder& folder) {
            const std::string from = folder.Write("from.icc", source);
            const std::string to = folder.Write("to.icc", target);
            const bare::Part part = DataOf(Selected(source, true));
            const Bytes head = MergedHead(source, target);
            const std::size_t moved = target.size() - TableEnd(TableOf(target).size());
            return Way{[=] { return bare::Merge(from, part, to, head, moved); },
                       [&target, to] { WriteWhole(to, target); }};
          },
      .lcms =
          [&](const Folder& folder) {
            const std::string from = folder.Write("from.icc", source);
            const std::string to = folder.Write("to.icc", target);
            return Way{[=] { return lcms::Merge(from, to); },
                       [&target, to] { WriteWhole(to, target); }};
          },
      .ours =
          [&](const Folder& folder) {
            const std::string from = folder.Write("from.icc", source);
            const std::string to = folder.Write("to.icc", target);
            const auto own = std::make_shared<std::unique_ptr<VKCLProfile>>();
            const auto standard = std::make_shared<std::unique_ptr<VKCLProfile>>();
            return Way{[=] { return (*own)->MergeVKPrivateTagIntoStandICC(**standard) != 0; },
                       [=, &target] {
                         WriteWhole(to, target);
                         *own = std::make_unique<VKCLProfile>(AFilePath(from), 0);
                         *standard = std::make_unique<VKCLProfile>(AFilePath(to), 0);
                       }};
          },
  };
}

Operation Stripping(const Bytes& profile) {
  return {
      .name = "strip " + std::to_string(Selected(profile, true).size()) + " tags, " +
              LengthText(profile.size() + 999),
      .goal = kRewriteGoal,
      .restores = true,
      .floor =
          [&](const Folder& folder) {
            const std::string from = folder.Write("p.icc", profile);
            const std::string to = folder.File("to.icc");
            std::vector<Entry> kept = Selected(profile, false);
            const bare::Part part = DataOf(kept);
            Chain(kept, TableEnd(kept.size()));
            const Bytes head = HeadOf(profile, kept, TableEnd(kept.size()) + part.length);
            return Way{[=] { return bare::Copy(from, part, head, to); },
                       [=] { std::remove(to.c_str()); }};
          },
      .lcms =
          [&](const Folder& folder) {
            const std::string from = folder.Write("p.icc", profile);
            const std::string to = folder.File("to.icc");
            return Way{[=] { return lcms::Strip(from, to); }, [=] { std::remove(to.c_str()); }};
          },
      .ours =
          [&](const Folder& folder) {
            const std::string from = folder.Write("p.icc", profile);
            const std::string to = folder.File("to.icc");
            const auto own = std::make_shared<VKCLProfile>(AFilePath(from), 0);
            return Way{[=] { return own->WriteICCWithoutVKiTags(to.c_str()) != 0; },
                       [=] { std::remove(to.c_str()); }};
          },
  };
}

// What the properties are gathered from.
std::vector<bare::Part> GatheredParts(const Bytes& profile) {
  std::vector<bare::Part> parts = {{0, 4096}};
  for (const std::uint32_t signature :
       {std::uint32_t{QX67}, std::uint32_t{QX53}, std::uint32_t{QX50}, std::uint32_t{QX66},
        std::uint32_t{QX51}, std::uint32_t{QX52}, std::uint32_t{QX68},
        std::uint32_t{icSigCharTargetTag}, std::uint32_t{0x6D657461}, std::uint32_t{QX75},
        std::uint32_t{QX76}, std::uint32_t{QX55}, std::uint32_t{QX54}, std::uint32_t{QX57},
        std::uint32_t{QX56}, std::uint32_t{QX60}, std::uint32_t{QX59}}) {
    const Entry entry = EntryOf(profile, signature);
    parts.push_back({entry.offset, entry.size});
  }
  parts.push_back({EntryOf(profile, QX71).offset, kDataHead + sizeof(VKVSDProfileParam)});
  return parts;
}

Operation Gathering() {
  return {
      .name = "open, and gather all properties",
      .floor =
          [](const Folder& folder) {
            const std::string path = folder.Write("p.icc", FullProfile());
            const std::vector<bare::Part> parts = GatheredParts(FullProfile());
            const auto room = std::make_shared<Bytes>(FullProfile().size());
            return Way{[=] { return bare::Read(path, parts, room->data()); }};
          },
      .ours =
          [](const Folder& folder) {
            const std::string path = folder.Write("p.icc", FullProfile());
            return Way{[=] {
              const VKCLProfileHandler handler(AFilePath(path), 0);
              VKCLProfileProperties properties;
              return handler.GetVKCLProfileProperties(properties, 0) != 0 &&
                     properties.charReference.NumOfSamples == 1617;
            }};
          },
  };
}

std::string DocumentOf(const std::string& path) {
  const VKCLProfile profile(AFilePath(path), 0);
  std::string text;
  std::string why;
  const TextSink sink = [&](std::string_view piece) {
    text += piece;
    return true;
  };
  WriteDocument(profile, {}, DocumentForm::Json, sink, why);
  return text;
}

Operation Dumping() {
  return {
      .name = "open, and dump a document of 27 tags",
      .floor =
          [](const Folder& folder) {
            const std::string path = folder.Write("p.icc", FullProfile());
            const std::vector<bare::Part> parts = {{0, 4096},
                                                   DataOf(Selected(FullProfile(), true))};
            const auto room = std::make_shared<Bytes>(FullProfile().size());
            return Way{[=] { return bare::Read(path, parts, room->data()); }};
          },
      .ours =
          [](const Folder& folder) {
            const std::string path = folder.Write("p.icc", FullProfile());
            return Way{[=] { return DocumentOf(path).size() > 100'000; }};
          },
  };
}

bool Apply(const std::string& path, const std::string& text) {
  std::istringstream from(text);
  Document document;
  std::string why;
  if (!ReadDocument(from, document, why)) return false;
  ProfileEdit edit{AFilePath(path)};
  return edit.StoreTags(document.tags) && edit.Commit() == EditState::Done;
}

// The document of a full profile goes into a standard one, and into the result again.
Operation Applying() {
  return {
      .name = "apply a document of 27 tags",
      .floor =
          [](const Folder& folder) {
            const std::string path = folder.Write("p.icc", FullProfile());
            const auto content = std::make_shared<Bytes>();
            return Way{[=] {
              return bare::ReadWhole(path, *content) &&
                     bare::Replace(path, content->data(), content->size());
            }};
          },
      .ours =
          [](const Folder& folder) {
            const std::string path = folder.Write("p.icc", FullProfile());
            const std::string text = DocumentOf(path);
            return Way{[=] { return Apply(path, text); }};
          },
  };
}

// Lists as List makes them, of the three dot sizes of a chart.
struct Chart {
  ProfileDataList list = List(icSignature("refl"), 36, 1617);
};

bool Save(const std::string& path, const Chart& chart) {
  VSDProfileHandler document(AFilePath(path), 0);
  for (int size = 0; size < 3; ++size) document.WriteVSDMeasurementData(size, chart.list);
  return document.SaveToFile() != 0;
}

bool Load(const std::string& path) {
  VSDProfileHandler document(AFilePath(path), 1);
  for (int size = 0; size < 3; ++size) {
    ProfileDataList list;
    if (document.ReadVSDMeasurementData(size, list) == 0) return false;
  }
  return true;
}

Operation SavingSidecar() {
  return {
      .name = "save a sidecar, 3 x 1,617 x 36 values",
      .floor =
          [](const Folder& folder) {
            const std::string path = folder.File("p.icc");
            Save(path, {});
            const auto content = std::make_shared<Bytes>();
            bare::ReadWhole(path, *content);
            return Way{[=] { return bare::Replace(path, content->data(), content->size()); }};
          },
      .ours =
          [](const Folder& folder) {
            const std::string path = folder.File("p.icc");
            const auto chart = std::make_shared<Chart>();
            return Way{[=] { return Save(path, *chart); }};
          },
  };
}

Operation LoadingSidecar() {
  return {
      .name = "load a sidecar, 3 x 1,617 x 36 values",
      .floor =
          [](const Folder& folder) {
            const std::string path = folder.File("p.icc");
            Save(path, {});
            return Way{[=] {
              Bytes content;
              return bare::ReadWhole(path, content);
            }};
          },
      .ours =
          [](const Folder& folder) {
            const std::string path = folder.File("p.icc");
            Save(path, {});
            return Way{[=] { return Load(path); }};
          },
  };
}

}  // namespace

void AddWholeProfiles(std::vector<Operation>& operations) {
  operations.push_back(Merging(kUsualLength));
  operations.push_back(Merging(kLengths[3]));
  operations.push_back(Stripping(FullProfile()));
  for (const std::size_t length : {kLengths[0], kLengths[2], kLengths[3]}) {
    operations.push_back(Stripping(OwnProfile(length, TagsFor(length))));
  }
  operations.push_back(Gathering());
  operations.push_back(Dumping());
  operations.push_back(Applying());
  operations.push_back(SavingSidecar());
  operations.push_back(LoadingSidecar());
}

}  // namespace vkcl::bench
