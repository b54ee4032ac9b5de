// A profile that was cut off after it had been opened, as the source of a merge and of a copy.
#include <algorithm>
#include <filesystem>

#include "profile/VKCLProfile.h"
#include "support/ImageBuilder.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::ReadFile;
using vkcl::testing::Sig;
using vkcl::testing::TempDir;

// The data of four tags begin at 132 + 4 x 12; the private ones lie behind 112 bytes.
constexpr std::uintmax_t kRegion = 180;
constexpr std::uintmax_t kPrivate = kRegion + 112;

Bytes Own() {
  return ProfileImage(ProfileHeader(), {{Sig("B2A0"), DataTag(Pattern(100, 1))},
                                        {Sig("QX51"), DataTag(Pattern(140, 2))},
                                        {Sig("QX53"), DataTag(Pattern(1068, 3))},
                                        {Sig("desc"), DataTag(Pattern(40, 4))}});
}

TEST(ShortenedSource, WithoutAnyOfThePrivateDataIsNotMerged) {
  const Bytes standard = ProfileImage(ProfileHeader(), {{Sig("B2A0"), DataTag(Pattern(60, 5))}});
  for (const std::uintmax_t length : {std::uintmax_t{0}, kRegion, kPrivate}) {
    const TempDir dir;
    const std::string path = dir.Write("own.icc", Own());
    const std::string to = dir.Write("to.icc", standard);
    VKCLProfile own(AFilePath(path), 0);
    VKCLProfile target(AFilePath(to), 0);
    std::filesystem::resize_file(path, length);
    EXPECT_EQ(own.MergeVKPrivateTagIntoStandICC(target), 0) << length;
    EXPECT_EQ(ReadFile(to), standard) << length;
  }
}

TEST(ShortenedSource, IsCopiedWithZerosInThePlaceOfWhatIsMissing) {
  const Bytes whole = Own();
  // The copy holds 'B2A0' and 'desc': 132 + 2 x 12, 112 and 52 bytes.
  constexpr std::size_t kCopied = 156 + 112 + 52;
  for (const std::uintmax_t length : {kRegion - 1, kRegion, kRegion + 50, kPrivate + 20}) {
    const TempDir dir;
    const std::string path = dir.Write("own.icc", whole);
    VKCLProfile own(AFilePath(path), 0);
    std::filesystem::resize_file(path, length);
    ASSERT_EQ(own.WriteICCWithoutVKiTags(dir.File("to.icc").c_str()), 1) << length;
    const Bytes copy = ReadFile(dir.File("to.icc"));
    ASSERT_EQ(copy.size(), kCopied);
    Bytes data(112 + 52);  // zeros
    const std::uintmax_t held = std::min(std::max(length, kRegion), kPrivate) - kRegion;
    std::copy_n(whole.begin() + kRegion, held, data.begin());
    EXPECT_EQ(Bytes(copy.begin() + 156, copy.end()), data) << length;
  }
}

}  // namespace
