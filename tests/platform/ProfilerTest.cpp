#include "platform/profiler/TesselColorProfiler.h"

#include <lcms2.h>

#include <algorithm>
#include <cstdlib>

#include "support/ImageBuilder.h"
#include "support/RealProfiles.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::ReadFile;
using vkcl::testing::RealProfile;
using vkcl::testing::SameBytes;
using vkcl::testing::Slice;
using vkcl::testing::TempDir;

unsigned int Length(const Bytes& bytes) { return static_cast<unsigned int>(bytes.size()); }

class Profile {
 public:
  Profile() : handle_(CLNewCLProfileRef()) {}
  explicit Profile(const std::string& realProfile) : Profile() {
    const Bytes bytes = ReadFile(RealProfile(realProfile));
    EXPECT_EQ(CLLoadProfileFromMemory(handle_, bytes.data(), Length(bytes)), 0) << realProfile;
  }
  ~Profile() { CLFreeCLProfileRef(handle_); }
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;
  operator void*() const { return handle_; }

 private:
  void* handle_;
};

class Link {
 public:
  Link() : handle_(CLNewCLLink8Ref()) {}
  ~Link() { CLFreeCLLink8Ref(handle_); }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
  operator void*() const { return handle_; }

 private:
  void* handle_;
};

class FileSpec {
 public:
  FileSpec() : handle_(CLNewFileSpecRef()) {}
  explicit FileSpec(const std::string& path) : FileSpec() {
    EXPECT_EQ(CLName2FileSpec(handle_, path.c_str()), 0) << path;
  }
  ~FileSpec() { CLFreeFileSpecRef(handle_); }
  FileSpec(const FileSpec&) = delete;
  FileSpec& operator=(const FileSpec&) = delete;
  operator void*() const { return handle_; }

 private:
  void* handle_;
};

Bytes Saved(void* link) {
  unsigned int size = 4711;
  EXPECT_EQ(CLSaveLink8ToMemory(link, nullptr, 0, &size), 0);
  Bytes bytes(size);
  unsigned int written = 4711;
  EXPECT_EQ(CLSaveLink8ToMemory(link, bytes.data(), size, &written), 0);
  EXPECT_EQ(written, size);
  return bytes;
}

/// The bytes of a link from RGB to CMYK.
Bytes RgbToCmyk(int intent = 1) {
  const Profile source("srgb.icc");
  const Profile destination("default_cmyk.icc");
  const Link link;
  EXPECT_EQ(CLBuildLink8(link, source, destination, intent), 0);
  return Saved(link);
}

// Profiles.

TEST(ProfilerProfile, LoadsProfilesAndRefusesOtherBytes) {
  const Profile profile;
  ASSERT_NE(static_cast<void*>(profile), nullptr);
  Bytes bytes = ReadFile(RealProfile("srgb.icc"));
  EXPECT_EQ(CLLoadProfileFromMemory(profile, bytes.data(), Length(bytes)), 0);
  EXPECT_NE(CLLoadProfileFromMemory(profile, "no profile at all", 17), 0);
  EXPECT_NE(CLLoadProfileFromMemory(profile, bytes.data(), 0), 0);
  EXPECT_NE(CLLoadProfileFromMemory(profile, nullptr, 0), 0);
  EXPECT_NE(CLLoadProfileFromMemory(profile, bytes.data(), 100), 0);
  bytes[36] = 'x';  // the file signature 'acsp'
  EXPECT_NE(CLLoadProfileFromMemory(profile, bytes.data(), Length(bytes)), 0);
}

TEST(ProfilerProfile, KeepsACopyOfTheBytes) {
  const Bytes expected = RgbToCmyk();
  Bytes bytes = ReadFile(RealProfile("srgb.icc"));
  const Profile source;
  ASSERT_EQ(CLLoadProfileFromMemory(source, bytes.data(), Length(bytes)), 0);
  std::fill(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
  Bytes().swap(bytes);
  const Profile destination("default_cmyk.icc");
  const Link link;
  EXPECT_EQ(CLBuildLink8(link, source, destination, 1), 0);
  const Bytes built = Saved(link);
  // Behind the header, which holds the time of making.
  ASSERT_EQ(built.size(), expected.size());
  EXPECT_TRUE(SameBytes(Slice(built, 128, built.size() - 128),
                        Slice(expected, 128, expected.size() - 128)));
}

TEST(ProfilerProfile, LoadsFromAFileWhoseNameIsUtf8) {
  const TempDir dir;
  const std::filesystem::path path = dir.path() / u8"prüf 印.icc";
  vkcl::testing::WriteFile(path, ReadFile(RealProfile("srgb.icc")));
  const std::u8string utf8 = path.u8string();
  const FileSpec file(std::string(utf8.begin(), utf8.end()));
  const Profile source;
  EXPECT_EQ(CLLoadProfileFromFile(source, file), 0);
  const Profile destination("default_cmyk.icc");
  const Link link;
  EXPECT_EQ(CLBuildLink8(link, source, destination, 1), 0);
}

TEST(ProfilerProfile, RefusesFilesThatAreNoProfiles) {
  const TempDir dir;
  const Profile profile;
  EXPECT_NE(CLLoadProfileFromFile(profile, FileSpec(dir.File("missing.icc"))), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, FileSpec(dir.Write("empty.icc", {}))), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, FileSpec(dir.Write("text.icc", Bytes(500, 'x')))), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, FileSpec(dir.path().string())), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, FileSpec()), 0);
}

// Links.

TEST(ProfilerLink, StartsEmpty) {
  const Link link;
  ASSERT_NE(static_cast<void*>(link), nullptr);
  unsigned int size = 4711;
  EXPECT_EQ(CLSaveLink8ToMemory(link, nullptr, 0, &size), 0);
  EXPECT_EQ(size, 0u);
  unsigned char byte = 0x5A;
  size = 4711;
  EXPECT_EQ(CLSaveLink8ToMemory(link, &byte, 1, &size), 0);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(byte, 0x5A);
}

TEST(ProfilerLink, StaysEmptyWhenNothingIsLoaded) {
  const Link link;
  EXPECT_EQ(CLLoadLink8FromMemory(link, nullptr, 0), 0);
  EXPECT_EQ(CLLoadLink8FromMemory(link, "x", 0), 0);
  EXPECT_TRUE(Saved(link).empty());
}

TEST(ProfilerLink, BecomesEmptyWhenNothingIsLoadedIntoIt) {
  const Bytes bytes = RgbToCmyk();
  const Link link;
  ASSERT_EQ(CLLoadLink8FromMemory(link, bytes.data(), Length(bytes)), 0);
  ASSERT_FALSE(Saved(link).empty());
  EXPECT_EQ(CLLoadLink8FromMemory(link, bytes.data(), 0), 0);
  EXPECT_TRUE(Saved(link).empty());
}

TEST(ProfilerLink, IsBuiltAsAProfileOfClassLink) {
  const Bytes bytes = RgbToCmyk();
  ASSERT_GT(bytes.size(), 132u);
  const auto text = [&bytes](std::size_t at) {
    const Bytes four = Slice(bytes, at, 4);
    return std::string(four.begin(), four.end());
  };
  EXPECT_EQ(vkcl::testing::Big32At(bytes, 0), bytes.size());
  EXPECT_EQ(text(12), "link");
  EXPECT_EQ(text(16), "RGB ");
  EXPECT_EQ(text(20), "CMYK");
  EXPECT_EQ(text(36), "acsp");
}

TEST(ProfilerLink, RefusesABufferThatIsTooSmall) {
  const Bytes bytes = RgbToCmyk();
  const Link link;
  ASSERT_EQ(CLLoadLink8FromMemory(link, bytes.data(), Length(bytes)), 0);
  for (const unsigned int room : {1u, 128u, Length(bytes) - 1}) {
    Bytes buffer(bytes.size(), 0x5A);
    unsigned int size = 0;
    EXPECT_NE(CLSaveLink8ToMemory(link, buffer.data(), room, &size), 0) << room;
    EXPECT_TRUE(SameBytes(buffer, Bytes(bytes.size(), 0x5A))) << room;
  }
}

TEST(ProfilerLink, WritesNoMoreThanItsLengthIntoALargerBuffer) {
  const Bytes bytes = RgbToCmyk();
  const Link link;
  ASSERT_EQ(CLLoadLink8FromMemory(link, bytes.data(), Length(bytes)), 0);
  Bytes buffer(bytes.size() + 3, 0x5A);
  unsigned int size = 0;
  EXPECT_EQ(CLSaveLink8ToMemory(link, buffer.data(), Length(buffer), &size), 0);
  EXPECT_EQ(size, bytes.size());
  Bytes expected = bytes;
  expected.insert(expected.end(), 3, 0x5A);
  EXPECT_TRUE(SameBytes(buffer, expected));
}

TEST(ProfilerLink, KeepsLoadedBytesAsTheyAre) {
  Bytes bytes = RgbToCmyk();
  // Fields that a library which writes the profile anew would set by itself.
  for (const std::size_t at : {4u, 24u, 25u, 48u, 52u, 80u, 84u, 99u, 127u}) bytes[at] ^= 0x21;
  const Link link;
  ASSERT_EQ(CLLoadLink8FromMemory(link, bytes.data(), Length(bytes)), 0);
  EXPECT_TRUE(SameBytes(Saved(link), bytes));
}

TEST(ProfilerLink, KeepsACopyOfTheBytes) {
  const Bytes bytes = RgbToCmyk();
  const Link link;
  {
    Bytes given = bytes;
    ASSERT_EQ(CLLoadLink8FromMemory(link, given.data(), Length(given)), 0);
    std::fill(given.begin(), given.end(), static_cast<unsigned char>(0));
  }
  EXPECT_TRUE(SameBytes(Saved(link), bytes));
}

TEST(ProfilerLink, RefusesBytesThatAreNoLink) {
  const Bytes good = RgbToCmyk();
  Bytes broken = good;
  broken[36] = 'x';  // the file signature 'acsp'
  const Link link;
  EXPECT_NE(CLLoadLink8FromMemory(link, "no link", 7), 0);
  EXPECT_NE(CLLoadLink8FromMemory(link, broken.data(), Length(broken)), 0);
  EXPECT_NE(CLLoadLink8FromMemory(link, good.data(), 100), 0);
  EXPECT_NE(CLLoadLink8FromMemory(link, good.data(), 128), 0);
  EXPECT_NE(CLLoadLink8FromMemory(link, nullptr, 100), 0);
}

TEST(ProfilerLink, RefusesProfilesOfAnotherClass) {
  const Link link;
  for (const char* const name : {"srgb.icc", "default_cmyk.icc"}) {  // display and output
    const Bytes bytes = ReadFile(RealProfile(name));
    EXPECT_NE(CLLoadLink8FromMemory(link, bytes.data(), Length(bytes)), 0) << name;
    EXPECT_TRUE(Saved(link).empty());
  }
}

TEST(ProfilerLink, IsEmptyAfterBytesThatWereRefused) {
  const Bytes good = RgbToCmyk();
  const Link link;
  ASSERT_EQ(CLLoadLink8FromMemory(link, good.data(), Length(good)), 0);
  EXPECT_NE(CLLoadLink8FromMemory(link, "no link", 7), 0);
  EXPECT_TRUE(Saved(link).empty());
}

TEST(ProfilerLink, ThatCannotBeBuiltStaysAsItIs) {
  const Bytes good = RgbToCmyk();
  const Link link;
  ASSERT_EQ(CLLoadLink8FromMemory(link, good.data(), Length(good)), 0);
  const Profile loaded("srgb.icc");
  const Profile empty;
  EXPECT_NE(CLBuildLink8(link, loaded, empty, 1), 0);
  EXPECT_NE(CLBuildLink8(link, empty, loaded, 1), 0);
  EXPECT_TRUE(SameBytes(Saved(link), good));
}

// Handles.

TEST(ProfilerHandles, OfAnotherKindAreRefused) {
  const Profile profile("srgb.icc");
  const Profile other("default_cmyk.icc");
  const Link link;
  const TempDir dir;
  const FileSpec file(RealProfile("srgb.icc").string());
  const Bytes profileBytes = ReadFile(RealProfile("srgb.icc"));
  const Bytes linkBytes = RgbToCmyk();
  unsigned int size = 0;
  EXPECT_NE(CLLoadProfileFromMemory(link, profileBytes.data(), Length(profileBytes)), 0);
  EXPECT_NE(CLLoadProfileFromMemory(file, profileBytes.data(), Length(profileBytes)), 0);
  EXPECT_NE(CLLoadProfileFromFile(link, file), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, other), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, link), 0);
  EXPECT_NE(CLLoadLink8FromMemory(profile, linkBytes.data(), Length(linkBytes)), 0);
  EXPECT_NE(CLLoadLink8FromMemory(file, linkBytes.data(), 0), 0);
  EXPECT_NE(CLSaveLink8ToMemory(profile, nullptr, 0, &size), 0);
  EXPECT_NE(CLSaveLink8ToMemory(file, nullptr, 0, &size), 0);
  EXPECT_NE(CLBuildLink8(profile, profile, other, 1), 0);
  EXPECT_NE(CLBuildLink8(link, link, other, 1), 0);
  EXPECT_NE(CLBuildLink8(link, profile, file, 1), 0);
  EXPECT_NE(CLName2FileSpec(profile, "name"), 0);
  EXPECT_NE(CLName2FileSpec(link, "name"), 0);
}

TEST(ProfilerHandles, ThatAreNullAreRefused) {
  const Profile profile("srgb.icc");
  const Link link;
  const FileSpec file(RealProfile("srgb.icc").string());
  const Bytes profileBytes = ReadFile(RealProfile("srgb.icc"));
  const Bytes linkBytes = RgbToCmyk();
  unsigned int size = 0;
  EXPECT_NE(CLLoadProfileFromMemory(nullptr, profileBytes.data(), Length(profileBytes)), 0);
  EXPECT_NE(CLLoadProfileFromFile(nullptr, file), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, nullptr), 0);
  EXPECT_NE(CLLoadLink8FromMemory(nullptr, linkBytes.data(), Length(linkBytes)), 0);
  EXPECT_NE(CLLoadLink8FromMemory(nullptr, nullptr, 0), 0);
  EXPECT_NE(CLSaveLink8ToMemory(nullptr, nullptr, 0, &size), 0);
  EXPECT_NE(CLBuildLink8(nullptr, profile, profile, 1), 0);
  EXPECT_NE(CLBuildLink8(link, nullptr, profile, 1), 0);
  EXPECT_NE(CLBuildLink8(link, profile, nullptr, 1), 0);
  EXPECT_NE(CLName2FileSpec(nullptr, "name"), 0);
  EXPECT_NE(CLName2FileSpec(file, nullptr), 0);
}

TEST(ProfilerHandles, ThatAreNullAreNothingToRelease) {
  CLFreeCLProfileRef(nullptr);
  CLFreeCLLink8Ref(nullptr);
  CLFreeFileSpecRef(nullptr);
}

// What a link does to colours.

class Transform {
 public:
  Transform(const std::vector<Bytes>& profiles, cmsUInt32Number intent) {
    std::vector<cmsHPROFILE> opened;
    for (const Bytes& bytes : profiles) {
      opened.push_back(cmsOpenProfileFromMem(bytes.data(), Length(bytes)));
      EXPECT_NE(opened.back(), nullptr);
    }
    transform_ =
        cmsCreateMultiprofileTransform(opened.data(), static_cast<cmsUInt32Number>(opened.size()),
                                       TYPE_RGB_8, TYPE_CMYK_8, intent, 0);
    for (cmsHPROFILE profile : opened) cmsCloseProfile(profile);
  }
  ~Transform() {
    if (transform_ != nullptr) cmsDeleteTransform(transform_);
  }
  Transform(const Transform&) = delete;
  Transform& operator=(const Transform&) = delete;

  bool works() const { return transform_ != nullptr; }
  Bytes Convert(const Bytes& rgb) const {
    Bytes cmyk(rgb.size() / 3 * 4);
    cmsDoTransform(transform_, rgb.data(), cmyk.data(), Length(rgb) / 3);
    return cmyk;
  }

 private:
  cmsHTRANSFORM transform_ = nullptr;
};

/// A grid over the whole cube, between and on the points at which tables are likely sampled.
Bytes RgbColours() {
  Bytes rgb;
  for (int r = 0; r <= 255; r += 17) {
    for (int g = 0; g <= 255; g += 15) {
      for (int b = 0; b <= 255; b += 51) {
        for (const int value : {r, g, b}) rgb.push_back(static_cast<unsigned char>(value));
      }
    }
  }
  return rgb;
}

TEST(ProfilerLink, ConvertsColoursAsTheTwoProfilesDo) {
  const Bytes rgb = RgbColours();
  const Bytes source = ReadFile(RealProfile("srgb.icc"));
  const Bytes destination = ReadFile(RealProfile("default_cmyk.icc"));
  for (const cmsUInt32Number intent : {0u, 1u, 2u, 3u}) {
    const Transform direct({source, destination}, intent);
    const Transform linked({RgbToCmyk(static_cast<int>(intent))}, intent);
    ASSERT_TRUE(direct.works());
    ASSERT_TRUE(linked.works());
    const Bytes expected = direct.Convert(rgb);
    const Bytes converted = linked.Convert(rgb);
    int worst = 0;
    double sum = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const int difference = std::abs(expected[i] - converted[i]);
      worst = std::max(worst, difference);
      sum += difference;
    }
    // The link rounds to its samples and between them: one step of 255, and that not often.
    EXPECT_LE(worst, 1) << "intent " << intent;
    EXPECT_LE(sum / static_cast<double>(expected.size()), 0.25) << "intent " << intent;
    // The colours are not all alike, or anything would agree.
    EXPECT_GT(*std::max_element(expected.begin(), expected.end()), 200);
    EXPECT_LT(*std::min_element(expected.begin(), expected.end()), 5);
  }
}

TEST(ProfilerLink, ConvertsTheSameAfterSavingAndLoading) {
  const Bytes built = RgbToCmyk();
  const Link link;
  ASSERT_EQ(CLLoadLink8FromMemory(link, built.data(), Length(built)), 0);
  const Bytes rgb = RgbColours();
  const Transform before({built}, 1);
  const Transform after({Saved(link)}, 1);
  ASSERT_TRUE(before.works());
  ASSERT_TRUE(after.works());
  EXPECT_TRUE(SameBytes(after.Convert(rgb), before.Convert(rgb)));
}

}  // namespace
