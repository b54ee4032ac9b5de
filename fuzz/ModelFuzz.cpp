// A random life of a profile: writes, appends, several at once, merges, strips, edits and
// reopenings. After each step the file and the open object are held against a list of tags. A life
// begins without a file, with a profile in table order, or with one of another layout, which is
// written through the safe edits only.
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

std::uint32_t Big32(const Bytes& bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) number = number << 8 | bytes[at + i];
  return number;
}

// Gives a header values of its own, so that no field can get lost unseen. What the library asks for
// stays as it is: size, version, class, spaces and magic.
Bytes Marked(Bytes file, std::uint8_t first) {
  const auto mark = [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) file[i] = static_cast<std::uint8_t>(first + i);
  };
  mark(4, 8);
  mark(24, 36);
  mark(40, 128);
  return file;
}

constexpr std::size_t kNone = SIZE_MAX;

// The file in table order, each tag padded with zeros. The tag at `sharer` is given no data of its
// own, but the block of the first one.
Bytes InOrder(const std::vector<Tag>& tags, std::size_t sharer = kNone) {
  Bytes file = vkcl::fuzz::Profile(tags);
  file.resize(132 + 12 * tags.size());
  for (std::size_t i = 0; i < tags.size(); ++i) {
    const std::size_t offset = i == sharer ? Big32(file, 132 + 4) : file.size();
    SetBig32(file, 132 + 12 * i + 4, offset);
    if (i == sharer) continue;
    file.insert(file.end(), tags[i].element.begin(), tags[i].element.end());
    file.resize((file.size() + 3) / 4 * 4);
  }
  SetBig32(file, 0, file.size());
  return file;
}

// What Life can begin with.
enum class Layout : std::uint8_t { GapInFront, Backwards, EndUnpadded, BlockShared };

// The same tags, laid out otherwise.
Bytes OtherLayout(const std::vector<Tag>& tags, Layout layout) {
  if (layout == Layout::BlockShared) return InOrder(tags, tags.size() - 1);
  Bytes file = vkcl::fuzz::Profile(tags);
  const std::size_t start = 132 + 12 * tags.size();
  file.resize(start);
  if (layout == Layout::GapInFront) file.resize(start + 8, 0xEE);
  for (std::size_t k = 0; k < tags.size(); ++k) {
    const std::size_t i = layout == Layout::Backwards ? tags.size() - 1 - k : k;
    SetBig32(file, 132 + 12 * i + 4, file.size());
    file.insert(file.end(), tags[i].element.begin(), tags[i].element.end());
    const bool isLast = k + 1 == tags.size();
    if (layout != Layout::EndUnpadded || !isLast) file.resize((file.size() + 3) / 4 * 4);
  }
  SetBig32(file, 0, file.size());
  return file;
}

// Bytes 4 to 127: the header without the size.
Bytes HeaderOf(const Bytes& file) { return Bytes(file.begin() + 4, file.begin() + 128); }

Bytes WithHeader(Bytes file, const Bytes& header) {
  std::copy(header.begin(), header.end(), file.begin() + 4);
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
    const bool isOther = kind % 4 == 3;
    const auto layout = static_cast<Layout>(kind / 16 % 4);
    const bool shares = isOther && layout == Layout::BlockShared;
    const std::size_t count = (shares ? 2u : 1u) + kind / 4 % 3;
    if (kind % 4 != 0) {
      for (std::size_t i = 0; i < count; ++i) {
        Bytes element = {'t', 'e', 'x', 't', 0, 0, 0, 0};
        element.resize(8 + input_.Byte() % 20, static_cast<std::uint8_t>('x' - i));
        tags_.push_back({kText + static_cast<std::uint32_t>(i), element});
      }
      if (shares) {
        sharer_ = count - 1;
        tags_.back().element = tags_.front().element;
      }
      isOrdered_ = !isOther || shares;
      const Bytes plain = isOther ? OtherLayout(tags_, layout) : vkcl::fuzz::Profile(tags_);
      const Bytes file = Marked(plain, 0x51);
      header_ = HeaderOf(file);
      vkcl::fuzz::WriteFile(path_, file.data(), file.size());
    }
    channels_ = kind % 4 == 0 ? 3 + kind / 4 % 14 : 0;
    Open();
  }

  void Open() { handler_ = std::make_unique<VKCLProfileHandler>(AFilePath(path_), channels_); }
  VKCLProfile& profile() { return *handler_->GetProfilePtr(); }

  void Step(unsigned what) {
    const bool exists = !tags_.empty();
    const bool isForEdits = !isOrdered_ || sharer_ != kNone;
    switch (what) {
      case 0:
      case 1: return isForEdits ? WriteInEdit() : Write();
      case 2: return isForEdits ? WriteInEdit() : exists ? WriteSeveral() : Write();
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

  // The standard profile keeps all that it holds, header included, and the private tags follow.
  void Merge() {
    Open();
    Demand((profile().isVKCLProfile() == 1) == IsOwn(), "an own profile is told");
    const std::vector<Tag> standard = {{kText, {'t', 'e', 'x', 't', 0, 0, 0, 0, 'y', 0}},
                                       {kText + 9, {'t', 'e', 'x', 't', 0, 0, 0, 0}}};
    const Bytes file = Marked(vkcl::fuzz::Profile(standard), 0xA7);
    vkcl::fuzz::WriteFile(other_, file.data(), file.size());
    VKCLProfile target(AFilePath(other_), 0);
    const bool isMerged = profile().MergeVKPrivateTagIntoStandICC(target) == 1;
    Demand(isMerged == IsOwn(), "the private tags of an own profile, and of no other, are merged");
    std::vector<Tag> merged = standard;
    if (isMerged) {
      std::copy_if(tags_.begin(), tags_.end(), std::back_inserter(merged), IsPrivate);
    }
    const Bytes result = vkcl::fuzz::ReadFile(other_);
    Demand(result == WithHeader(InOrder(merged), HeaderOf(file)),
           "merging appends the private tags and changes nothing else");
    HoldsTable(target, result);
    if (!isMerged) return;
    Demand(profile().header.size == result.size() && target.header.size == file.size(),
           "the new size is told to the object that is merged");
    if (input_.Byte() % 2 != 0) Adopt(merged, HeaderOf(file), kNone);
  }

  // The copy has the header and the other tags, in table order; a block that was shared still is.
  void Strip() {
    Open();
    std::vector<Tag> rest;
    std::remove_copy_if(tags_.begin(), tags_.end(), std::back_inserter(rest), IsPrivate);
    std::filesystem::remove(other_);
    const bool isStripped = profile().WriteICCWithoutVKiTags(other_.c_str()) == 1;
    Demand(isStripped == !rest.empty(), "a profile with other tags can be stripped");
    Demand(std::filesystem::exists(other_) == isStripped, "a refusal leaves no file");
    if (!isStripped) return;
    Demand(vkcl::fuzz::ReadFile(other_) == WithHeader(InOrder(rest, sharer_), header_),
           "stripping leaves the header and the other tags");
    if (input_.Byte() % 2 != 0) Adopt(rest, header_, sharer_);
  }

  // Goes on with the other file.
  void Adopt(const std::vector<Tag>& tags, const Bytes& header, std::size_t sharer) {
    handler_.reset();
    std::filesystem::rename(other_, path_);
    tags_ = tags;
    channels_ = 0;
    header_ = header;
    sharer_ = sharer;
    isOrdered_ = true;
    Open();
  }

  // One time in four the edit does not ask what the layout suits, and puts all into order.
  void WriteInEdit() {
    const bool asks = input_.Byte() % 4 != 0;
    const std::uint32_t signature = Signature();
    const Bytes payload = Payload();
    const auto id = static_cast<VKPrivateTagSignature>(signature);
    const auto length = static_cast<unsigned long>(payload.size());
    handler_.reset();
    vkcl::ProfileEdit edit(AFilePath(path_), channels_, [&](const VKCLProfile& profile) {
      return asks && vkcl::TagDataSuitWriting(profile, id, length);
    });
    Demand(edit.handler() != nullptr, "a profile of any layout can be edited");
    Demand(edit.handler()->GetProfilePtr()->WriteVKPrivateTag(id, payload.data(), length) == 1,
           "a tag can be stored in an edit");
    Demand(edit.Commit() == vkcl::EditState::Done, "an edit takes the place");
    Demand(asks || edit.wasArranged(), "what suits nothing is put into order");
    if (edit.wasArranged()) {
      isOrdered_ = true;
      sharer_ = kNone;
    }
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
      isOrdered_ = true;
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

  // The object has the table of the file.
  static void HoldsTable(const VKCLProfile& profile, const Bytes& file) {
    Demand(profile.tagCount == Big32(file, 128), "the object has the tags of the file");
    for (std::size_t i = 0; i < profile.tagCount; ++i) {
      const std::size_t entry = 132 + 12 * i;
      const icTag& tag = profile.tagTable[i];
      Demand(tag.sig == Big32(file, entry) && tag.offset == Big32(file, entry + 4) &&
                 tag.size == Big32(file, entry + 8),
             "the object has the table of the file");
    }
  }

  // What a profile is that begins with a write: of the channels it was opened for.
  void IsNew(const Bytes& header) const {
    Bytes space = {'?', 'C', 'L', 'R'};
    space[0] = static_cast<std::uint8_t>("0123456789ABCDEFG"[channels_]);
    if (channels_ == 3) space = {'R', 'G', 'B', ' '};
    if (channels_ == 4) space = {'C', 'M', 'Y', 'K'};
    const Bytes output = {'p', 'r', 't', 'r'};
    const Bytes lab = {'L', 'a', 'b', ' '};
    const auto has = [&](std::size_t at, const Bytes& word) {
      return std::equal(word.begin(), word.end(),
                        header.begin() + static_cast<std::ptrdiff_t>(at - 4));
    };
    Demand(has(12, output) && has(16, space) && has(20, lab), "a new profile is of its channels");
  }

  // The file holds the tags of the model, and the header that it began with but for its size. In
  // table order that is every byte of it. The object has the table of the file.
  void Compare() {
    if (tags_.empty()) {
      Demand(profile().isValidICC() == 0 && profile().tagCount == 0, "there is no profile yet");
      return Demand(!std::filesystem::exists(path_), "there is no file yet");
    }
    const Bytes file = vkcl::fuzz::ReadFile(path_);
    Demand(SameTags(vkcl::fuzz::TagsOf(file), tags_), "the file holds what was stored");
    if (header_.empty()) {
      header_ = HeaderOf(file);
      IsNew(header_);
    }
    Demand(HeaderOf(file) == header_, "the header stays");
    Demand(!isOrdered_ || file == WithHeader(InOrder(tags_, sharer_), header_),
           "the tags lie one behind the other, padded with zeros, and no more");
    Demand(profile().isValidICC() == 1, "the object is valid");
    HoldsTable(profile(), file);
    for (const std::uint32_t signature : kSignatures) {
      const auto found = Find(signature);
      const std::size_t size = found == tags_.end() ? 0 : found->element.size();
      Demand(profile().GetTagSize(static_cast<icTagSignature>(signature)) == size,
             "the object tells the size of a tag");
    }
  }

  Input& input_;
  const std::string path_ = vkcl::fuzz::FilePath("model.icc");
  const std::string other_ = vkcl::fuzz::FilePath("other.icc");
  std::vector<Tag> tags_;
  Bytes header_;                // without the size
  bool isOrdered_ = true;       // the data lie in table order
  std::size_t sharer_ = kNone;  // the entry that has the block of the first one
  int channels_ = 0;
  std::unique_ptr<VKCLProfileHandler> handler_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  Life(input).Run();
  return 0;
}
