// Storing tags where they lie, behind the others, and with another size.
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Floor.h"
#include "Lcms.h"
#include "Operation.h"
#include "handler/VKCLProfileHandler.h"
#include "platform/Bytes.h"
#include "profile/TableLayout.h"

namespace vkcl::bench {
namespace {

constexpr double kRecordGoal = 1.3;
constexpr double kRewriteGoal = 1.2;

bool Store(VKCLProfileHandler& handler, std::uint32_t signature, const Bytes& element) {
  return handler.GetProfilePtr()->WriteVKPrivateTag(
             static_cast<VKPrivateTagSignature>(signature), element.data() + kDataHead,
             static_cast<unsigned long>(element.size() - kDataHead)) != 0;
}

Operation Replacing(std::size_t length) {
  const Bytes& profile = OwnProfile(length, TagsFor(length));
  return {
      .name = "replace, same size, " + LengthText(length),
      .goal = kRecordGoal,
      .floor =
          [&](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            const std::uint64_t offset = EntryOf(profile, QX53).offset;
            const Bytes element = Element(sizeof(VKColorParam));
            return Way{[=] { return bare::Overwrite(path, offset, element); }};
          },
      .lcms =
          [&](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            const std::vector<Tag> tags = {{QX53, Element(sizeof(VKColorParam))}};
            return Way{[=] { return lcms::Store(path, tags); }};
          },
      .ours =
          [&](const Folder& folder) {
            const auto handler =
                std::make_shared<VKCLProfileHandler>(AFilePath(folder.Write("p.icc", profile)), 0);
            return Way{[=] { return handler->WriteVKColorParamTag(VKColorParam()) != 0; }};
          },
  };
}

// The head of a profile with tags put behind the others, and the data that come behind.
std::pair<Bytes, Bytes> Appended(const Bytes& profile, const std::vector<Tag>& tags) {
  std::vector<Entry> table = TableOf(profile);
  const auto distance = static_cast<std::uint32_t>(kTableEntry * tags.size());
  for (Entry& entry : table) entry.offset += distance;
  Bytes tail;
  for (const auto& [signature, element] : tags) {
    const std::size_t at = profile.size() + distance + tail.size();
    table.push_back(
        {signature, static_cast<std::uint32_t>(at), static_cast<std::uint32_t>(element.size())});
    tail.insert(tail.end(), element.begin(), element.end());
    tail.resize(PadTo4(tail.size()));
  }
  return {HeadOf(profile, table, profile.size() + distance + tail.size()), tail};
}

// A profile that is put back, and opened anew, each time.
struct Fresh {
  std::string path;
  std::unique_ptr<VKCLProfileHandler> handler;
};

template <class Run>
Way OnFresh(const Folder& folder, const Bytes& profile, Run run) {
  const auto fresh = std::make_shared<Fresh>();
  fresh->path = folder.Write("p.icc", profile);
  return {[=] { return run(*fresh->handler); },
          [=, &profile] {
            WriteWhole(fresh->path, profile);
            fresh->handler = std::make_unique<VKCLProfileHandler>(AFilePath(fresh->path), 0);
          }};
}

Operation Appending(const std::string& name, const Bytes& profile, const std::vector<Tag>& tags,
                    const std::function<bool(VKCLProfileHandler&)>& append) {
  return {
      .name = name,
      .goal = kRewriteGoal,
      .restores = true,
      .floor =
          [&profile, tags](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            const auto [head, tail] = Appended(profile, tags);
            const std::size_t moved = profile.size() - TableEnd(TableOf(profile).size());
            return Way{
                [=, head = head, tail = tail] { return bare::Append(path, head, moved, tail); },
                [&profile, path] { WriteWhole(path, profile); }};
          },
      .lcms =
          [&profile, tags](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            return Way{[=] { return lcms::Store(path, tags); },
                       [&profile, path] { WriteWhole(path, profile); }};
          },
      .ours = [&profile, append](const Folder& folder) { return OnFresh(folder, profile, append); },
  };
}

Operation AppendingOne(const std::string& what, const Bytes& profile) {
  const Tag tag = {QX52, Element(300)};
  return Appending("append, " + what, profile, {tag}, [=](VKCLProfileHandler& handler) {
    return Store(handler, tag.first, tag.second);
  });
}

Operation AppendingFour() {
  const auto split = std::make_shared<SplitParam>();
  split->SetDefaultValues(2, nullptr);
  const std::vector<Tag> tags = {
      {QX50, Element(static_cast<std::size_t>(split->size))},
      {QX51, Element(sizeof(VKSingleInkLimitWithLinRef))},
      {QX52, Element(sizeof(VKMultiInklimit))},
      {QX53, Element(sizeof(VKColorParam))},
  };
  return Appending("four tags in one pass, 190 KB", StandardProfile(kUsualLength, kUsualTags), tags,
                   [=](VKCLProfileHandler& handler) {
                     return handler.WriteAllVKPrivateTags(VKSingleInkLimitWithLinRef(),
                                                          VKMultiInklimit(), VKColorParam(),
                                                          split.get()) != 0;
                   });
}

// The profile with the tag's payload of another length, as a head to write.
Bytes ResizedHead(const Bytes& profile, std::uint32_t signature, std::size_t size) {
  std::vector<Entry> table = TableOf(profile);
  const Entry old = EntryOf(profile, signature);
  const auto grown = static_cast<std::uint32_t>(size - old.size);
  for (Entry& entry : table) {
    if (entry.signature == signature) entry.size = static_cast<std::uint32_t>(size);
    if (entry.offset > old.offset) entry.offset += grown;
  }
  return HeadOf(profile, table, profile.size() + grown);
}

// Longer and back again by turns.
Operation Resizing(const std::string& place, std::uint32_t signature, std::size_t length) {
  const Bytes& profile = ResizeProfile(length);
  const std::vector<Bytes> elements = {Element(2000), Element(1000)};
  return {
      .name = "replace, other size, " + place + ", " + LengthText(length),
      .goal = kRewriteGoal,
      .floor =
          [&profile, signature, elements](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            const std::uint64_t offset = EntryOf(profile, signature).offset;
            std::vector<Bytes> heads;
            for (const Bytes& element : elements) {
              heads.push_back(ResizedHead(profile, signature, element.size()));
            }
            const auto turn = std::make_shared<std::size_t>(0);
            return Way{[=] {
              const std::size_t now = (*turn)++ % 2;
              return bare::Resize(path, heads[now], {offset, elements[1 - now].size()},
                                  elements[now]);
            }};
          },
      .lcms =
          [&profile, signature, elements](const Folder& folder) {
            const std::string path = folder.Write("p.icc", profile);
            const std::vector<std::vector<Tag>> tags = {{{signature, elements[0]}},
                                                        {{signature, elements[1]}}};
            const auto turn = std::make_shared<std::size_t>(0);
            return Way{[=] { return lcms::Store(path, tags[(*turn)++ % 2]); }};
          },
      .ours =
          [&profile, signature, elements](const Folder& folder) {
            const auto handler =
                std::make_shared<VKCLProfileHandler>(AFilePath(folder.Write("p.icc", profile)), 0);
            const auto turn = std::make_shared<std::size_t>(0);
            return Way{[=] { return Store(*handler, signature, elements[(*turn)++ % 2]); }};
          },
  };
}

}  // namespace

void AddWriting(std::vector<Operation>& operations) {
  for (const std::size_t length : kLengths) operations.push_back(Replacing(length));
  for (const std::size_t length : kLengths) {
    operations.push_back(AppendingOne(LengthText(length), OwnProfile(length, TagsFor(length))));
  }
  for (const std::size_t tags : {10, 100, 1000}) {
    Operation operation =
        AppendingOne(std::to_string(tags) + " tags", OwnProfile(kUsualLength, tags));
    if (tags >= 100) operation.lcms = {};  // Little CMS holds 100 tags at most
    operations.push_back(operation);
  }
  for (const std::size_t length : kLengths) {
    operations.push_back(Resizing("first", QX58, length));
  }
  operations.push_back(Resizing("middle", QX61, kUsualLength));
  operations.push_back(Resizing("last", QX62, kUsualLength));
  operations.push_back(AppendingFour());
}

}  // namespace vkcl::bench
