// Random sequences of writes and reads, held against a model of the file: a header and a list of
// tags in table order.
#include "profile/VKCLProfile.h"

#include <memory>
#include <optional>
#include <random>

#include "support/ImageBuilder.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::HoldsTableOf;
using vkcl::testing::ImageTag;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::ReadFile;
using vkcl::testing::SameBytes;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

constexpr int kStepsPerRun = 600;
constexpr std::size_t kMostTags = 24;

VKPrivateTagSignature Private(std::uint32_t sig) { return static_cast<VKPrivateTagSignature>(sig); }

class Model {
 public:
  Model(Bytes header, std::vector<ImageTag> tags)
      : header_(std::move(header)), tags_(std::move(tags)) {}

  Bytes Image() const { return ProfileImage(header_, tags_); }
  std::size_t size() const { return tags_.size(); }
  const ImageTag& tag(std::size_t i) const { return tags_[i]; }

  // The first tag of a signature; null without one.
  const ImageTag* Find(std::uint32_t sig) const {
    for (const ImageTag& tag : tags_) {
      if (tag.sig == sig) return &tag;
    }
    return nullptr;
  }

  void Append(std::uint32_t sig, const Bytes& payload) { tags_.push_back({sig, DataTag(payload)}); }

  void Store(std::uint32_t sig, const Bytes& payload) {
    for (ImageTag& tag : tags_) {
      if (tag.sig != sig) continue;
      tag.data = DataTag(payload);
      return;
    }
    Append(sig, payload);
  }

  // The content that a read of the signature gives.
  std::optional<Bytes> Content(std::uint32_t sig) const {
    const ImageTag* tag = Find(sig);
    if (tag == nullptr || tag->data.size() < 12) return std::nullopt;
    if (Slice(tag->data, 0, 4) != Bytes{'d', 'a', 't', 'a'}) return std::nullopt;
    return Slice(tag->data, 12, tag->data.size() - 12);
  }

 private:
  Bytes header_;
  std::vector<ImageTag> tags_;
};

class Sequence {
 public:
  Sequence(unsigned seed, std::string path, Model model)
      : random_(seed), path_(std::move(path)), model_(std::move(model)) {
    Reopen();
  }

  std::size_t tagCount() const { return model_.size(); }

  void Step() {
    switch (Below(12)) {
      case 0:
      case 1: StoreSameSize(); break;
      case 2:
      case 3:
      case 4: StoreOtherSize(); break;
      case 5:
      case 6: StoreAny(); break;
      case 7: AppendSeveral(); break;
      case 8: Reopen(); break;
      case 9: Copy(); break;
      case 10: ReadBySignature(); break;
      default: ReadAllocated(); break;
    }
    ASSERT_TRUE(SameBytes(ReadFile(path_), model_.Image())) << what_;
    ASSERT_TRUE(HoldsTableOf(*profile_, model_.Image())) << what_;
  }

 private:
  std::size_t Below(std::size_t n) { return random_() % n; }
  Bytes Payload(std::size_t length) {
    return Pattern(length, static_cast<unsigned>(random_() % 251));
  }
  std::uint32_t AnySignature() {
    static constexpr std::uint32_t kSignatures[] = {
        Sig("QX50"), Sig("QX51"), Sig("QX53"), Sig("QX54"), Sig("QX60"), Sig("QX64"), Sig("QX71"),
        Sig("QX75"), Sig("QX76"), Sig("QXzz"), Sig("desc"), Sig("A2B0"), Sig("mine"), Sig("none")};
    return kSignatures[Below(std::size(kSignatures))];
  }

  void Reopen() {
    what_ = "reopen";
    profile_ = std::make_unique<VKCLProfile>(path_, 0);
    ASSERT_EQ(profile_->isValidICC(), 1);
  }

  void Copy() {
    what_ = "copy";
    profile_ = std::make_unique<VKCLProfile>(*profile_);
    ASSERT_EQ(profile_->isValidICC(), 1);
  }

  void Store(std::uint32_t sig, const Bytes& payload) {
    what_ += ::testing::PrintToString(sig) + " with " + std::to_string(payload.size()) + " bytes";
    ASSERT_EQ(profile_->WriteVKPrivateTag(Private(sig), payload.data(),
                                          static_cast<unsigned long>(payload.size())),
              1)
        << what_;
    model_.Store(sig, payload);
  }

  void StoreSameSize() {
    what_ = "same size ";
    if (model_.size() == 0) return;
    const std::uint32_t sig = model_.tag(Below(model_.size())).sig;
    const std::size_t size = model_.Find(sig)->data.size();
    if (size >= 12) Store(sig, Payload(size - 12));
  }

  void StoreOtherSize() {
    what_ = "other size ";
    if (model_.size() > 0) Store(model_.tag(Below(model_.size())).sig, Payload(Below(40)));
  }

  void StoreAny() {
    what_ = "any ";
    Store(AnySignature(), Payload(Below(40)));
  }

  void AppendSeveral() {
    const std::size_t count = 1 + Below(3);
    what_ = std::to_string(count) + " at once";
    std::vector<VKPrivateTag> tags(count);
    for (VKPrivateTag& tag : tags) {
      const Bytes payload = Payload(Below(30));
      tag.SetSignature(Private(AnySignature()));
      tag.size = static_cast<std::uint32_t>(payload.size());
      tag.data = new char[payload.size() + 1];
      for (std::size_t k = 0; k < payload.size(); ++k) tag.data[k] = static_cast<char>(payload[k]);
      model_.Append(tag.signature, payload);
    }
    ASSERT_EQ(profile_->WriteMultiVKPrivateTags(tags.data(), static_cast<int>(count)), 1);
  }

  void ReadBySignature() {
    const std::uint32_t sig = AnySignature();
    what_ = "read " + ::testing::PrintToString(sig);
    const std::optional<Bytes> expected = model_.Content(sig);
    Bytes buffer(200, 0xCC);
    unsigned long size = 77;
    ASSERT_EQ(profile_->ReadVKPrivateTag(Private(sig), buffer.data(), &size),
              expected.has_value() ? 1 : 0)
        << what_;
    ASSERT_EQ(size, expected.value_or(Bytes()).size()) << what_;
    ASSERT_EQ(Slice(buffer, 0, size), expected.value_or(Bytes())) << what_;
    const ImageTag* tag = model_.Find(sig);
    ASSERT_EQ(profile_->GetTagSize(static_cast<icTagSignature>(sig)),
              tag == nullptr ? 0 : tag->data.size())
        << what_;
  }

  void ReadAllocated() {
    const std::uint32_t sig = AnySignature();
    what_ = "allocated read " + ::testing::PrintToString(sig);
    const Bytes expected = model_.Content(sig).value_or(Bytes());
    VKPrivateTag tag;
    tag.SetSignature(Private(sig));
    ASSERT_EQ(profile_->ReadVKPrivateTag(&tag, 1), expected.empty() ? 0 : 1) << what_;
    ASSERT_EQ(tag.GetData() == nullptr, expected.empty()) << what_;
    ASSERT_EQ(tag.GetTagSize(), expected.size()) << what_;
    ASSERT_EQ(Bytes(tag.GetData(), tag.GetData() + tag.GetTagSize()), expected) << what_;
  }

  std::mt19937 random_;  // the same numbers on every platform
  std::string path_;
  Model model_;
  std::unique_ptr<VKCLProfile> profile_;
  std::string what_;
};

class VKCLProfileWriteModel : public ::testing::TestWithParam<unsigned> {};

TEST_P(VKCLProfileWriteModel, FileAndObjectFollowTheModel) {
  const unsigned seed = GetParam();
  const TempDir dir;
  const std::string path = dir.File("a.icc");
  unsigned generation = 0;
  std::optional<Sequence> run;
  for (int step = 0; step < kStepsPerRun; ++step) {
    SCOPED_TRACE(::testing::Message() << "seed " << seed << ", step " << step);
    if (!run || run->tagCount() >= kMostTags) {
      // A new start, in turn from nothing at all, an empty table and a profile of other makers.
      std::vector<ImageTag> tags;
      Bytes header = ProfileHeader();
      std::filesystem::remove(path);
      switch ((seed + generation++) % 3) {
        case 0: {
          VKCLProfile created(path, 6);
          ASSERT_EQ(created.WriteVKPrivateTag(QX51, "first", 5), 1);
          header = Slice(ReadFile(path), 0, 128);
          tags = {{Sig("QX51"), DataTag({'f', 'i', 'r', 's', 't'})}};
          break;
        }
        case 1: dir.Write("a.icc", ProfileImage(header, tags)); break;
        default:
          tags = {{Sig("desc"), TextTag("a description")},
                  {Sig("A2B0"), Pattern(57, seed)},
                  {Sig("QX50"), DataTag(Pattern(5, seed))},
                  {Sig("targ"), TextTag("text")}};
          dir.Write("a.icc", ProfileImage(header, tags));
      }
      run.emplace(seed * 1000 + generation, path, Model(header, tags));
    }
    run->Step();
    if (HasFatalFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, VKCLProfileWriteModel, ::testing::Range(1u, 21u));

}  // namespace
