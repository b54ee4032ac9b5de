// Real ICC profiles through the store, judged by Little CMS.
#include "support/RealProfiles.h"

#include <algorithm>
#include <cstring>

#include "handler/VKCLProfileHandler.h"
#include "profile/TagLayout.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::ConvertWithLcms;
using vkcl::testing::LcmsView;
using vkcl::testing::ReadFile;
using vkcl::testing::ReadWithLcms;
using vkcl::testing::RealProfile;
using vkcl::testing::RealProfiles;
using vkcl::testing::TempDir;

// Four packages hold some sixty profiles; fewer means that one is missing.
TEST(RealProfiles, AreThere) {
  EXPECT_GE(RealProfiles().size(), 60u)
      << "below " << VKCL_REAL_PROFILES << "; ./dev test installs the packages that hold them";
  for (const char* name :
       {"default_cmyk.icc", "LStar-RGB.icc", "SwappedRedAndGreen.icc", "SMPTE431_P3.icm"}) {
    EXPECT_FALSE(RealProfile(name).empty());
  }
}

int ChannelsOf(std::uint32_t space) {
  switch (space) {
    case 0x47524159: return 1;  // 'GRAY'
    case 0x52474220: return 3;  // 'RGB '
    case 0x434D594B: return 4;  // 'CMYK'
    default: return 0;          // 'Lab ', 'XYZ '
  }
}

TEST(RealProfiles, OpenWithTheRightAnswers) {
  for (const auto& path : RealProfiles()) {
    SCOPED_TRACE(path);
    const LcmsView view = ReadWithLcms(path);
    ASSERT_TRUE(view.opens);
    const VKCLProfileHandler handler(AFilePath(path.string()), 0);
    const int channels = ChannelsOf(view.colorSpace);
    EXPECT_EQ(handler.IsICCFile(), channels != 0 ? 1 : 0);
    EXPECT_EQ(handler.IsOutputICCFile(), channels != 0 && view.deviceClass == 0x70727472 ? 1 : 0);
    EXPECT_EQ(handler.IsVKCLProfile(), 0);
    const VKCLProfile profile(AFilePath(path.string()), 7);
    EXPECT_EQ(profile.isValidICC(), 1);
    EXPECT_EQ(profile.channelCount, 7);
    EXPECT_EQ(profile.GetDeviceClass(), view.deviceClass);
    EXPECT_EQ(profile.GetColorSpace(), view.colorSpace);
    EXPECT_EQ(profile.GetPCS(), view.pcs);
    EXPECT_EQ(profile.header.size, std::filesystem::file_size(path));
    ASSERT_EQ(profile.tagCount, view.order.size());
    const Bytes file = ReadFile(path);
    for (std::uint32_t i = 0; i < profile.tagCount; ++i) {
      const icTag& tag = profile.tagTable[i];
      EXPECT_EQ(tag.sig, view.order[i]);
      const Bytes& data = view.tags.at(tag.sig);
      ASSERT_EQ(tag.size, data.size());
      EXPECT_EQ(std::memcmp(&file[tag.offset], data.data(), data.size()), 0);
      EXPECT_EQ(profile.GetTagSize(tag.sig), tag.size);
    }
  }
}

// Every tag but the private ones is as Little CMS read it before.
void ExpectOtherTagsUnchanged(const LcmsView& before, const std::filesystem::path& path) {
  const LcmsView after = ReadWithLcms(path);
  ASSERT_TRUE(after.opens);
  EXPECT_EQ(after.deviceClass, before.deviceClass);
  EXPECT_EQ(after.pcs, before.pcs);
  ASSERT_GE(after.order.size(), before.order.size());
  for (std::size_t i = 0; i < before.order.size(); ++i) {
    const std::uint32_t sig = before.order[i];
    EXPECT_EQ(after.order[i], sig);
    EXPECT_EQ(after.tags.at(sig), before.tags.at(sig)) << std::hex << sig;
  }
}

// Stores a payload; a profile whose layout the store would damage is brought into order first.
void Store(const std::string& path, VKPrivateTagSignature sig, const Bytes& payload) {
  VKCLProfile profile(AFilePath(path), 4);
  const auto length = static_cast<unsigned long>(payload.size());
  if (!vkcl::TagDataSuitWriting(profile, sig, length)) {
    const std::string ordered = path + ".ordered";
    ASSERT_TRUE(vkcl::ArrangeTagData(profile, AFilePath(ordered)));
    std::filesystem::rename(ordered, path);
    VKCLProfile arranged(AFilePath(path), 4);
    ASSERT_TRUE(vkcl::TagDataSuitWriting(arranged, sig, length));
    ASSERT_EQ(arranged.WriteVKPrivateTag(sig, payload.data(), length), 1);
    return;
  }
  ASSERT_EQ(profile.WriteVKPrivateTag(sig, payload.data(), length), 1);
}

TEST(RealProfiles, TakePrivateTagsAndKeepTheirOwn) {
  for (const auto& source : RealProfiles()) {
    SCOPED_TRACE(source);
    const TempDir dir;
    const std::string path = dir.Write("p.icc", ReadFile(source));
    const LcmsView before = ReadWithLcms(path);
    const std::vector<double> colours = ConvertWithLcms(path);
    std::map<std::uint32_t, Bytes> stored;
    const auto step = [&](VKPrivateTagSignature sig, std::size_t length) {
      Bytes payload(length);
      for (std::size_t i = 0; i < length; ++i) payload[i] = static_cast<unsigned char>(i * 7 + sig);
      Store(path, sig, payload);
      stored[sig] = payload;
      ExpectOtherTagsUnchanged(before, path);
      const VKCLProfile again(AFilePath(path), 4);
      EXPECT_EQ(again.header.size, std::filesystem::file_size(path));
      for (const auto& [kept, content] : stored) {
        Bytes read(content.size());
        unsigned long size = 0;
        EXPECT_EQ(
            again.ReadVKPrivateTag(static_cast<VKPrivateTagSignature>(kept), read.data(), &size),
            1);
        EXPECT_EQ(size, content.size());
        EXPECT_EQ(read, content);
      }
    };
    step(QX53, 1068);  // appended
    step(QX51, 140);
    step(QX75, 7);
    step(QX53, 1068);  // the same size
    step(QX53, 2001);  // longer, in the middle
    step(QX51, 3);     // shorter
    step(QX75, 4000);  // longer, at the end
    EXPECT_EQ(ConvertWithLcms(path), colours);
  }
}

TEST(RealProfiles, AProfileInAnotherOrderIsSeenToBe) {
  const std::filesystem::path path = RealProfile("LStar-RGB.icc");
  const VKCLProfile profile(AFilePath(path.string()), 0);
  EXPECT_FALSE(vkcl::TagDataSuitWriting(profile, QX53, 1068));
  const VKCLProfile ordinary(AFilePath(RealProfile("default_cmyk.icc").string()), 0);
  EXPECT_TRUE(vkcl::TagDataSuitWriting(ordinary, QX53, 1068));
}

TEST(RealProfiles, AlmostAllOfThemNeedNoArranging) {
  std::size_t unfit = 0;
  for (const auto& path : RealProfiles()) {
    const VKCLProfile profile(AFilePath(path.string()), 4);
    unfit += vkcl::TagDataSuitWriting(profile, QX53, 1068) ? 0u : 1u;
  }
  EXPECT_GT(unfit, 0u);
  EXPECT_LE(unfit, 5u);
}

}  // namespace
