// A random life of a profile: writes, appends, several at once, merges, strips, edits and
// reopenings, held against a list of tags after each step. It begins without a file, with a profile
// in table order, or with one of another layout, which is written through the safe edits only.
#include <algorithm>
#include <filesystem>
#include <memory>

#include "Fuzz.h"
#include "edit/ProfileEdit.h"
#include "handler/VKCLProfileHandler.h"
#include "profile/TagLayout.h"

using vkcl::fuzz::Bytes;
using vkcl::fuzz::DataElement;
using vkcl::fuzz::Demand;
using vkcl::fuzz::Input;
using vkcl::fuzz::Tag;

namespace {

constexpr std::uint32_t kSignatures[] = {QX50, QX51, QX52, QX53, QX54, QX58,
                                         QX64, QX69, QX74, QX75, QX76, 0x51583737 /* QX77 */};
constexpr std::uint32_t kText = 0x63707274;  // 'cprt'
constexpr std::size_t kDataHead = 12;

bool IsPrivate(const Tag& tag) { return vkcl::IsPrivateSignature(tag.signature); }

bool SameTags(const std::vector<Tag>& a, const std::vector<Tag>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Tag& x, const Tag& y) {
    return x.signature == y.signature && x.element == y.element;
  });
}

void SetBig32(Bytes& bytes, std::size_t at, std::size_t number) {
  for (std::size_t i = 0; i < 4; ++i) {
    bytes[at + i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
  }
}

// The same tags, laid out otherwise: a gap in front, backwards, or without padding at the end.
Bytes OtherLayout(const std::vector<Tag>& tags, unsigned kind) {
  Bytes file = vkcl::fuzz::Profile(tags);
  const std::size_t start = 132 + 12 * tags.size();
  file.resize(start);
  if (kind % 3 == 0) file.resize(start + 8, 0xEE);
  for (std::size_t k = 0; k < tags.size(); ++k) {
    const std::size_t i = kind % 3 == 1 ? tags.size() - 1 - k : k;
    SetBig32(file, 132 + 12 * i + 4, file.size());
    file.insert(file.end(), tags[i].element.begin(), tags[i].element.end());
    const bool isLast = k + 1 == tags.size();
    if (kind % 3 != 2 || !isLast) file.resize((file.size() + 3) / 4 * 4);
  }
  SetBig32(file, 0, file.size());
  return file;
}

class Life {
 public:
  explicit Life(Input& input) : input_(input) {}

  void Run() {
    Begin();
    for (int step = 0; step < 24 && !input_.empty(); ++step) {
      Step(input_.Byte() % 8);
      Compare();
    }
  }

 private:
  void Begin() {
    std::filesystem::remove(path_);
    const std::uint8_t kind = input_.Byte();
    const std::size_t count = 1 + kind / 4 % 3;
    if (kind % 4 != 0) {
      for (std::size_t i = 0; i < count; ++i) {
        Bytes element = {'t', 'e', 'x', 't', 0, 0, 0, 0};
        element.resize(8 + input_.Byte() % 20, 'x');
        tags_.push_back({kText + static_cast<std::uint32_t>(i), element});
      }
      isArranged_ = kind % 4 != 3;
      const Bytes file = isArranged_ ? vkcl::fuzz::Profile(tags_) : OtherLayout(tags_, kind / 16);
      vkcl::fuzz::WriteFile(path_, file.data(), file.size());
    }
    channels_ = kind % 4 == 0 ? 3 + kind / 4 % 14 : 0;
    Open();
  }

  void Open() { handler_ = std::make_unique<VKCLProfileHandler>(AFilePath(path_), channels_); }
  VKCLProfile& profile() { return *handler_->GetProfilePtr(); }

  void Step(unsigned what) {
    const bool exists = !tags_.empty();
    if (!isArranged_) return what % 2 == 0 ? WriteInEdit() : StoreInEdit();
    switch (what) {
      case 0:
      case 1: return Write();
      case 2: return exists ? WriteSeveral() : Write();
      case 3: return exists ? Merge() : Write();
      case 4: return exists ? Strip() : Write();
      case 5: return exists ? StoreInEdit() : Write();
      case 6: return Read();
      default: return Open();
    }
  }

  std::uint32_t Signature() { return kSignatures[input_.Byte() % std::size(kSignatures)]; }

  Bytes Payload() {
    const std::size_t length = input_.Byte();
    Bytes payload = input_.Take(length);
    payload.resize(length, static_cast<std::uint8_t>(length));
    return payload;
  }

  std::vector<Tag>::iterator Find(std::uint32_t signature) {
    return std::find_if(tags_.begin(), tags_.end(),
                        [&](const Tag& tag) { return tag.signature == signature; });
  }

  void Put(std::uint32_t signature, const Bytes& element) {
    const auto found = Find(signature);
    if (found != tags_.end()) {
      found->element = element;
    } else {
      tags_.push_back({signature, element});
    }
  }

  void Write() {
    const std::uint32_t signature = Signature();
    const Bytes payload = Payload();
    const auto id = static_cast<VKPrivateTagSignature>(signature);
    const int written =
        profile().WriteVKPrivateTag(id, payload.data(), static_cast<unsigned long>(payload.size()));
    Demand(written == 1, "a tag can be stored");
    Put(signature, DataElement(payload));
  }

  void WriteSeveral() {
    const int count = 1 + input_.Byte() % 4;
    std::vector<VKPrivateTag> several(static_cast<std::size_t>(count));
    for (VKPrivateTag& tag : several) {
      const std::uint32_t signature = Signature();
      const Bytes payload = Payload();
      tag.SetSignature(static_cast<VKPrivateTagSignature>(signature));
      tag.size = static_cast<std::uint32_t>(payload.size());
      tag.data = new char[payload.size() + 1];
      std::copy(payload.begin(), payload.end(), tag.data);
      tags_.push_back({signature, DataElement(payload)});
    }
    Demand(profile().WriteMultiVKPrivateTags(several.data(), count) == 1,
           "several tags can be appended");
  }

  bool IsOwn() {
    const bool newer = Find(0x51583737) != tags_.end();
    return Find(QX51) != tags_.end() && Find(QX53) != tags_.end() && !newer;
  }

  void Merge() {
    Open();
    Demand((profile().isVKCLProfile() == 1) == IsOwn(), "an own profile is told");
    if (!IsOwn()) return;
    const std::vector<Tag> standard = {{kText, {'t', 'e', 'x', 't', 0, 0, 0, 0, 'y', 0}}};
    const Bytes file = vkcl::fuzz::Profile(standard);
    vkcl::fuzz::WriteFile(other_, file.data(), file.size());
    VKCLProfile target(AFilePath(other_), 0);
    Demand(profile().MergeVKPrivateTagIntoStandICC(target) == 1, "private tags can be merged");
    std::vector<Tag> merged = standard;
    std::copy_if(tags_.begin(), tags_.end(), std::back_inserter(merged), IsPrivate);
    Demand(SameTags(vkcl::fuzz::TagsOf(vkcl::fuzz::ReadFile(other_)), merged),
           "merging appends the private tags");
    if (input_.Byte() % 2 != 0) Adopt(merged);
  }

  void Strip() {
    Open();
    std::vector<Tag> rest;
    std::remove_copy_if(tags_.begin(), tags_.end(), std::back_inserter(rest), IsPrivate);
    const bool stripped = profile().WriteICCWithoutVKiTags(other_.c_str()) == 1;
    Demand(stripped == !rest.empty(), "a profile with other tags can be stripped");
    if (!stripped) return;
    Demand(SameTags(vkcl::fuzz::TagsOf(vkcl::fuzz::ReadFile(other_)), rest),
           "stripping leaves the other tags");
    if (input_.Byte() % 2 != 0) Adopt(rest);
  }

  // Goes on with the other file.
  void Adopt(const std::vector<Tag>& tags) {
    handler_.reset();
    std::filesystem::rename(other_, path_);
    tags_ = tags;
    channels_ = 0;
    header_.clear();
    Open();
  }

  void WriteInEdit() {
    const std::uint32_t signature = Signature();
    const Bytes payload = Payload();
    const auto id = static_cast<VKPrivateTagSignature>(signature);
    const auto length = static_cast<unsigned long>(payload.size());
    handler_.reset();
    vkcl::ProfileEdit edit(AFilePath(path_), channels_, [&](const VKCLProfile& profile) {
      return vkcl::TagDataSuitWriting(profile, id, length);
    });
    Demand(edit.handler() != nullptr, "a profile of any layout can be edited");
    Demand(edit.handler()->GetProfilePtr()->WriteVKPrivateTag(id, payload.data(), length) == 1,
           "a tag can be stored in an edit");
    Demand(edit.Commit() == vkcl::EditState::Done, "an edit takes the place");
    Put(signature, DataElement(payload));
    Open();
  }

  void StoreInEdit() {
    vkcl::TagChange change;
    change.signature = Signature();
    change.occurrence = 1 + input_.Byte() % 2;
    change.remove = input_.Byte() % 4 == 0;
    const Bytes element = Payload();
    change.element.assign(element.begin(), element.end());
    std::uint32_t seen = 0;
    const auto found = std::find_if(tags_.begin(), tags_.end(), [&](const Tag& tag) {
      return tag.signature == change.signature && ++seen == change.occurrence;
    });
    const bool leavesNone = change.remove && found != tags_.end() && tags_.size() == 1;
    handler_.reset();
    vkcl::ProfileEdit edit(AFilePath(path_), channels_, [](const VKCLProfile&) { return true; });
    Demand(edit.StoreTags({&change, 1}) == !leavesNone, "a whole tag can be stored or removed");
    if (!leavesNone) {
      Demand(edit.Commit() == vkcl::EditState::Done, "an edit takes the place");
      isArranged_ = true;
      if (change.remove) {
        if (found != tags_.end()) tags_.erase(found);
      } else if (found != tags_.end()) {
        found->element = element;
      } else {
        tags_.push_back({change.signature, element});
      }
    }
    Open();
  }

  void Read() {
    for (const std::uint32_t signature : kSignatures) {
      const auto found = Find(signature);
      VKPrivateTag tag;
      tag.SetSignature(static_cast<VKPrivateTagSignature>(signature));
      const bool read = profile().ReadVKPrivateTag(&tag, 1) == 1;
      const Bytes head = DataElement({});
      const bool isData = found != tags_.end() && found->element.size() > kDataHead &&
                          std::equal(head.begin(), head.begin() + 4, found->element.begin());
      Demand(read == isData, "a stored tag with content can be read, and no other");
      if (!read) continue;
      Demand(
          tag.size == found->element.size() - kDataHead &&
              std::equal(tag.data, tag.data + tag.size, found->element.begin() + kDataHead,
                         [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }),
          "what is read is what was stored");
    }
  }

  // The file holds the tags of the model, and the header that it began with but for its size. In
  // table order that is every byte of it.
  void Compare() {
    if (tags_.empty()) return Demand(!std::filesystem::exists(path_), "there is no file yet");
    const Bytes file = vkcl::fuzz::ReadFile(path_);
    Demand(SameTags(vkcl::fuzz::TagsOf(file), tags_), "the file holds what was stored");
    const Bytes header(file.begin() + 4, file.begin() + 128);
    if (header_.empty()) header_ = header;
    Demand(header == header_, "the header stays");
    if (isArranged_) {
      Bytes whole = vkcl::fuzz::Profile(tags_);
      std::copy(header_.begin(), header_.end(), whole.begin() + 4);
      Demand(file == whole, "the tags lie one behind the other, padded with zeros, and no more");
    }
    Demand(profile().isValidICC() == 1, "the object is valid");
  }

  Input& input_;
  const std::string path_ = vkcl::fuzz::FilePath("model.icc");
  const std::string other_ = vkcl::fuzz::FilePath("other.icc");
  std::vector<Tag> tags_;
  Bytes header_;
  bool isArranged_ = true;
  int channels_ = 0;
  std::unique_ptr<VKCLProfileHandler> handler_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  Life(input).Run();
  return 0;
}
