// Profiles in memory, links of 16-bit tables, and options in a profile's dictionary.
#include <lcms2.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <ostream>
#include <random>

#include "handler/VKCLProfileHandler.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "support/ImageBuilder.h"
#include "support/RealProfiles.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Big32At;
using vkcl::testing::Bytes;
using vkcl::testing::ConvertWithLcms;
using vkcl::testing::DataTag;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::ImageEntry;
using vkcl::testing::ImageTag;
using vkcl::testing::LcmsView;
using vkcl::testing::OpenHandles;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::ReadFile;
using vkcl::testing::ReadWithLcms;
using vkcl::testing::RealProfile;
using vkcl::testing::RealProfiles;
using vkcl::testing::SameBytes;
using vkcl::testing::Sig;
using vkcl::testing::Slice;
using vkcl::testing::TableOf;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;
using vkcl::testing::WriteFile;

unsigned int Length(const Bytes& bytes) { return static_cast<unsigned int>(bytes.size()); }

/// An object of the profiler library, released with this one.
class Handle {
 public:
  using Release = void (*)(void*);

  Handle(void* handle, Release release) : handle_(handle), release_(release) {}
  ~Handle() { release_(handle_); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  operator void*() const { return handle_; }

 private:
  void* handle_;
  Release release_;
};

struct Profile : Handle {
  Profile() : Handle(CLNewCLProfileRef(), CLFreeCLProfileRef) {}
  explicit Profile(const Bytes& bytes) : Profile() {
    EXPECT_EQ(CLLoadProfileFromMemory(*this, bytes.data(), Length(bytes)), 0);
  }
};

struct Link8 : Handle {
  Link8() : Handle(CLNewCLLink8Ref(), CLFreeCLLink8Ref) {}
};

struct Link16 : Handle {
  Link16() : Handle(CLNewCLLink16Ref(), CLFreeCLLink16Ref) {}
};

struct FileSpec : Handle {
  FileSpec() : Handle(CLNewFileSpecRef(), CLFreeFileSpecRef) {}
  explicit FileSpec(const std::string& path) : FileSpec() {
    EXPECT_EQ(CLName2FileSpec(*this, path.c_str()), 0) << path;
  }
};

struct Profiler : Handle {
  Profiler() : Handle(CLNewCLProfilerRef(), CLFreeCLProfilerRef) {}

  int Set(const std::string& key, const std::string& value) const {
    return CLSetProfilerOption(*this, key.c_str(), value.c_str());
  }
  /// The option's text; nothing when it is refused.
  std::optional<std::string> Get(const std::string& key) const {
    char buffer[256 + 16];
    std::fill(std::begin(buffer), std::end(buffer), '#');
    if (CLGetProfilerOption(*this, key.c_str(), buffer) != 0) {
      for (const char byte : buffer) EXPECT_EQ(byte, '#') << "a refused option left a trace";
      return std::nullopt;
    }
    for (int i = 256; i < 256 + 16; ++i) EXPECT_EQ(buffer[i], '#') << "written behind the buffer";
    return std::string(buffer);
  }
  int Import(const std::string& path) const {
    return CLImportProfilerOptions(*this, FileSpec(path));
  }
  int Export(const std::string& path) const {
    return CLExportProfilerOptions(*this, FileSpec(path));
  }
};

const std::vector<std::string>& Keys() {
  static const std::vector<std::string> keys = {
      "ProfileSize", "ProfileFormat",        "BlackGeneration", "BlackWidth",
      "BlackStart",  "BrightenerCorrection", "InkTotal"};
  return keys;
}

// Profiles.

using Save = int (*)(void*, void*, unsigned int, unsigned int*);

std::optional<Bytes> SavedBy(Save save, void* object) {
  unsigned int size = 0xABCD;
  if (save(object, nullptr, 0, &size) != 0) return std::nullopt;
  Bytes bytes(size + 1, 0x5A);
  unsigned int written = 0xABCD;
  EXPECT_EQ(save(object, bytes.data(), size, &written), 0);
  EXPECT_EQ(written, size);
  EXPECT_EQ(bytes.back(), 0x5A);
  bytes.pop_back();
  return bytes;
}

TEST(ProfilerProfileInMemory, IsGivenBackByteForByte) {
  for (const auto& path : RealProfiles()) {
    const Bytes bytes = ReadFile(path);
    EXPECT_TRUE(SameBytes(SavedBy(CLWriteProfileToMemory, Profile(bytes)).value_or(Bytes()), bytes))
        << path;
  }
}

TEST(ProfilerProfileInMemory, NeedsNoPlaceForTheLength) {
  const Bytes bytes = ReadFile(RealProfile("srgb.icc"));
  const Profile profile(bytes);
  Bytes buffer(bytes.size());
  EXPECT_EQ(CLWriteProfileToMemory(profile, buffer.data(), Length(buffer), nullptr), 0);
  EXPECT_TRUE(SameBytes(buffer, bytes));
}

TEST(ProfilerProfileInMemory, FillsALargerBufferAsFarAsItGoes) {
  const Bytes bytes = ReadFile(RealProfile("srgb.icc"));
  const Profile profile(bytes);
  Bytes buffer(bytes.size() + 9, 0x5A);
  unsigned int size = 0;
  EXPECT_EQ(CLWriteProfileToMemory(profile, buffer.data(), Length(buffer), &size), 0);
  EXPECT_EQ(size, bytes.size());
  Bytes expected = bytes;
  expected.insert(expected.end(), 9, 0x5A);
  EXPECT_TRUE(SameBytes(buffer, expected));
}

TEST(ProfilerProfileInMemory, RefusesABufferThatIsTooSmall) {
  const Bytes bytes = ReadFile(RealProfile("srgb.icc"));
  const Profile profile(bytes);
  for (const unsigned int room : {1u, 128u, Length(bytes) - 1}) {
    Bytes buffer(bytes.size(), 0x5A);
    EXPECT_NE(CLWriteProfileToMemory(profile, buffer.data(), room, nullptr), 0);
    EXPECT_TRUE(SameBytes(buffer, Bytes(bytes.size(), 0x5A)));
  }
}

TEST(ProfilerProfileInMemory, ThatWasNeverLoadedIsRefused) {
  const Profile profile;
  unsigned int size = 0;
  unsigned char byte = 0x5A;
  EXPECT_NE(CLWriteProfileToMemory(profile, nullptr, 0, &size), 0);
  EXPECT_NE(CLWriteProfileToMemory(profile, &byte, 1, &size), 0);
  EXPECT_NE(CLLoadProfileFromMemory(profile, "no profile", 10), 0);
  EXPECT_NE(CLWriteProfileToMemory(profile, nullptr, 0, &size), 0);
  EXPECT_EQ(byte, 0x5A);
}

TEST(ProfilerProfileInMemory, KeepsWhatItHeldWhenAnotherIsRefused) {
  const Bytes bytes = ReadFile(RealProfile("srgb.icc"));
  const Profile profile(bytes);
  const TempDir dir;
  EXPECT_NE(CLLoadProfileFromMemory(profile, "no profile", 10), 0);
  EXPECT_NE(CLLoadProfileFromMemory(profile, bytes.data(), 100), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, FileSpec(dir.File("missing.icc"))), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, FileSpec(dir.Write("text", Pattern(500, 1)))), 0);
  EXPECT_TRUE(SameBytes(SavedBy(CLWriteProfileToMemory, profile).value_or(Bytes()), bytes));
}

TEST(ProfilerProfileInMemory, IsReplacedByTheNextOne) {
  const Bytes second = ReadFile(RealProfile("ps_gray.icc"));
  const Profile profile(ReadFile(RealProfile("srgb.icc")));
  EXPECT_EQ(CLLoadProfileFromMemory(profile, second.data(), Length(second)), 0);
  EXPECT_TRUE(SameBytes(SavedBy(CLWriteProfileToMemory, profile).value_or(Bytes()), second));
}

TEST(ProfilerProfileInMemory, ComesFromAFileWhateverBecomesOfIt) {
  const Bytes bytes = ReadFile(RealProfile("default_cmyk.icc"));
  const TempDir dir;
  const std::u8string name = u8"prüf 印刷.icc";
  WriteFile(dir.path() / name, bytes);
  const Profile profile;
  EXPECT_EQ(CLLoadProfileFromFile(profile, FileSpec(dir.path().string() + "/" +
                                                    std::string(name.begin(), name.end()))),
            0);
  std::filesystem::remove(dir.path() / name);
  EXPECT_TRUE(SameBytes(SavedBy(CLWriteProfileToMemory, profile).value_or(Bytes()), bytes));
}

TEST(ProfilerProfileInMemory, ThatCannotBeReadIsRefused) {
  const std::string path = RealProfile("srgb.icc").string();
  const int handles = OpenHandles();
  int failures = 0;
  bool reached = true;
  for (std::size_t which = 0; reached && which < 50; ++which) {
    const Profile profile;
    const FileSpec file(path);
    int status = 0;
    {
      const FaultAt at(which, Fault::Error);
      status = CLLoadProfileFromFile(profile, file);
      reached = FaultAt::Reached();
    }
    EXPECT_EQ(OpenHandles(), handles);
    const std::optional<Bytes> saved = SavedBy(CLWriteProfileToMemory, profile);
    EXPECT_EQ(saved.has_value(), status == 0);
    EXPECT_TRUE(SameBytes(saved.value_or(ReadFile(path)), ReadFile(path)));
    failures += status == 0 ? 0 : 1;
  }
  EXPECT_FALSE(reached);
  EXPECT_GT(failures, 0);
}

TEST(ProfilerProfileInMemory, IsNotGivenThroughOtherHandles) {
  const FileSpec file(RealProfile("srgb.icc").string());
  const Profiler profiler;
  const Link8 link8;
  const Link16 link16;
  for (void* const other : std::vector<void*>{nullptr, file, profiler, link8, link16}) {
    unsigned int size = 0;
    EXPECT_NE(CLWriteProfileToMemory(other, nullptr, 0, &size), 0);
  }
}

// Links of 16-bit tables.

Bytes Saved16(void* link) { return SavedBy(CLSaveLink16ToMemory, link).value_or(Bytes{1}); }

Bytes RgbToCmyk16(int intent = 1) {
  const Link16 link;
  EXPECT_EQ(CLBuildLink16(link, Profile(ReadFile(RealProfile("srgb.icc"))),
                          Profile(ReadFile(RealProfile("default_cmyk.icc"))), intent),
            0);
  return Saved16(link);
}

Bytes RgbToCmyk8(int intent = 1) {
  const Link8 link;
  EXPECT_EQ(CLBuildLink8(link, Profile(ReadFile(RealProfile("srgb.icc"))),
                         Profile(ReadFile(RealProfile("default_cmyk.icc"))), intent),
            0);
  return SavedBy(CLSaveLink8ToMemory, link).value_or(Bytes{1});
}

TEST(ProfilerLink16, StartsEmpty) {
  const Link16 link;
  ASSERT_NE(static_cast<void*>(link), nullptr);
  EXPECT_TRUE(Saved16(link).empty());
}

TEST(ProfilerLink16, IsEmptyWhenNothingIsLoaded) {
  const Link16 link;
  EXPECT_EQ(CLLoadLink16FromMemory(link, nullptr, 0), 0);
  EXPECT_TRUE(Saved16(link).empty());
  const Bytes bytes = RgbToCmyk16();
  ASSERT_EQ(CLLoadLink16FromMemory(link, bytes.data(), Length(bytes)), 0);
  ASSERT_FALSE(Saved16(link).empty());
  EXPECT_EQ(CLLoadLink16FromMemory(link, "x", 0), 0);
  EXPECT_TRUE(Saved16(link).empty());
}

TEST(ProfilerLink16, IsBuiltAsAProfileOfClassLink) {
  const Bytes bytes = RgbToCmyk16();
  ASSERT_GT(bytes.size(), 132u);
  EXPECT_EQ(Big32At(bytes, 0), bytes.size());
  EXPECT_EQ(Big32At(bytes, 12), Sig("link"));
  EXPECT_EQ(Big32At(bytes, 16), Sig("RGB "));
  EXPECT_EQ(Big32At(bytes, 20), Sig("CMYK"));
  EXPECT_EQ(Big32At(bytes, 36), Sig("acsp"));
}

TEST(ProfilerLink16, IsLargerThanTheSameLinkOf8Bits) {
  EXPECT_GT(RgbToCmyk16().size(), RgbToCmyk8().size());
}

TEST(ProfilerLink16, RefusesABufferThatIsTooSmall) {
  const Bytes bytes = RgbToCmyk16();
  const Link16 link;
  ASSERT_EQ(CLLoadLink16FromMemory(link, bytes.data(), Length(bytes)), 0);
  for (const unsigned int room : {1u, 128u, Length(bytes) - 1}) {
    Bytes buffer(bytes.size(), 0x5A);
    unsigned int size = 0;
    EXPECT_NE(CLSaveLink16ToMemory(link, buffer.data(), room, &size), 0);
    EXPECT_TRUE(SameBytes(buffer, Bytes(bytes.size(), 0x5A)));
  }
}

TEST(ProfilerLink16, KeepsLoadedBytesAsTheyAre) {
  Bytes bytes = RgbToCmyk16();
  // Fields that a library which writes the profile anew would set by itself.
  for (const std::size_t at : {4u, 24u, 25u, 48u, 52u, 80u, 84u, 99u, 127u}) bytes[at] ^= 0x21;
  const Link16 link;
  {
    Bytes given = bytes;
    ASSERT_EQ(CLLoadLink16FromMemory(link, given.data(), Length(given)), 0);
    std::fill(given.begin(), given.end(), static_cast<unsigned char>(0));
  }
  EXPECT_TRUE(SameBytes(Saved16(link), bytes));
}

TEST(ProfilerLink16, RefusesWhatIsNoLinkAndIsEmptyThen) {
  const Bytes good = RgbToCmyk16();
  Bytes broken = good;
  broken[36] = 'x';  // the file signature 'acsp'
  const Bytes display = ReadFile(RealProfile("srgb.icc"));
  const Bytes output = ReadFile(RealProfile("default_cmyk.icc"));
  for (const Bytes& bad :
       {Bytes(7, 'x'), broken, Slice(good, 0, 100), Slice(good, 0, 128), display, output}) {
    const Link16 link;
    ASSERT_EQ(CLLoadLink16FromMemory(link, good.data(), Length(good)), 0);
    EXPECT_NE(CLLoadLink16FromMemory(link, bad.data(), Length(bad)), 0);
    EXPECT_TRUE(Saved16(link).empty());
  }
  EXPECT_NE(CLLoadLink16FromMemory(Link16(), nullptr, 100), 0);
}

TEST(ProfilerLink16, ThatCannotBeBuiltStaysAsItIs) {
  const Bytes good = RgbToCmyk16();
  const Link16 link;
  ASSERT_EQ(CLLoadLink16FromMemory(link, good.data(), Length(good)), 0);
  const Profile loaded(ReadFile(RealProfile("srgb.icc")));
  const Profile empty;
  for (const auto& [source, destination] : {std::pair<void*, void*>(loaded, empty),
                                            {empty, loaded},
                                            {nullptr, loaded},
                                            {loaded, nullptr},
                                            {link, loaded},
                                            {loaded, link}}) {
    EXPECT_NE(CLBuildLink16(link, source, destination, 1), 0);
    EXPECT_TRUE(SameBytes(Saved16(link), good));
  }
}

// Between profiles that are valid and say nothing of their colours.
TEST(ProfilerLink16, OfProfilesWithoutTablesIsNotBuilt) {
  const Bytes good = RgbToCmyk16();
  const Link16 link;
  ASSERT_EQ(CLLoadLink16FromMemory(link, good.data(), Length(good)), 0);
  Bytes image = Slice(ReadFile(RealProfile("default_cmyk.icc")), 0, 132);
  std::fill(image.begin() + 128, image.end(), static_cast<unsigned char>(0));  // no tags
  std::copy_n("\0\0\0\x84", 4, image.begin());
  const Profile bare(image);
  const Profile loaded(ReadFile(RealProfile("srgb.icc")));
  for (const auto& [source, destination] :
       {std::pair<void*, void*>(loaded, bare), {bare, loaded}}) {
    EXPECT_NE(CLBuildLink16(link, source, destination, 1), 0);
    EXPECT_TRUE(SameBytes(Saved16(link), good));
  }
}

TEST(ProfilerLink16, NeedsAPlaceForTheLengthThatIsAskedForAndForTheBytes) {
  const Bytes bytes = RgbToCmyk16();
  const Link16 link;
  ASSERT_EQ(CLLoadLink16FromMemory(link, bytes.data(), Length(bytes)), 0);
  EXPECT_NE(CLSaveLink16ToMemory(link, nullptr, 0, nullptr), 0);
  unsigned int size = 0;
  EXPECT_NE(CLSaveLink16ToMemory(link, nullptr, Length(bytes), &size), 0);
  EXPECT_EQ(CLSaveLink16ToMemory(link, nullptr, 0, &size), 0);
  EXPECT_EQ(size, Length(bytes));
}

TEST(ProfilerLink16, IsNotALinkOf8Bits) {
  const Bytes bytes8 = RgbToCmyk8();
  const Profile source(ReadFile(RealProfile("srgb.icc")));
  const Profile destination(ReadFile(RealProfile("default_cmyk.icc")));
  const Link8 link8;
  const Link16 link16;
  const FileSpec file("name");
  const Profiler profiler;
  unsigned int size = 0;
  for (void* const other : std::vector<void*>{nullptr, link8, source, file, profiler}) {
    EXPECT_NE(CLSaveLink16ToMemory(other, nullptr, 0, &size), 0);
    EXPECT_NE(CLLoadLink16FromMemory(other, nullptr, 0), 0);
    EXPECT_NE(CLBuildLink16(other, source, destination, 1), 0);
  }
  for (void* const other : std::vector<void*>{link16, profiler}) {
    EXPECT_NE(CLSaveLink8ToMemory(other, nullptr, 0, &size), 0);
    EXPECT_NE(CLLoadLink8FromMemory(other, nullptr, 0), 0);
    EXPECT_NE(CLBuildLink8(other, source, destination, 1), 0);
  }
}

/// A grid over the whole cube, between and on the points at which tables are likely sampled.
std::vector<std::uint16_t> RgbColours() {
  std::vector<std::uint16_t> rgb;
  for (unsigned r = 0; r <= 65535; r += 4369) {
    for (unsigned g = 0; g <= 65535; g += 4681) {
      for (unsigned b = 0; b <= 65535; b += 7281) {
        for (const unsigned value : {r, g, b}) rgb.push_back(static_cast<std::uint16_t>(value));
      }
    }
  }
  return rgb;
}

/// The grid through the profiles; empty when Little CMS makes no transform of them.
std::vector<std::uint16_t> Convert(const std::vector<Bytes>& profiles, cmsUInt32Number intent,
                                   cmsUInt32Number flags = 0) {
  std::vector<cmsHPROFILE> opened;
  for (const Bytes& bytes : profiles) {
    opened.push_back(cmsOpenProfileFromMem(bytes.data(), Length(bytes)));
  }
  cmsHTRANSFORM transform =
      cmsCreateMultiprofileTransform(opened.data(), static_cast<cmsUInt32Number>(opened.size()),
                                     TYPE_RGB_16, TYPE_CMYK_16, intent, flags);
  for (cmsHPROFILE profile : opened) cmsCloseProfile(profile);
  if (transform == nullptr) return {};
  const std::vector<std::uint16_t> rgb = RgbColours();
  std::vector<std::uint16_t> cmyk(rgb.size() / 3 * 4);
  cmsDoTransform(transform, rgb.data(), cmyk.data(), static_cast<cmsUInt32Number>(rgb.size() / 3));
  cmsDeleteTransform(transform);
  return cmyk;
}

struct Difference {
  int worst = 0;
  double mean = 0;
};

Difference Compare(const std::vector<std::uint16_t>& a, const std::vector<std::uint16_t>& b) {
  Difference difference;
  EXPECT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
    const int d = std::abs(a[i] - b[i]);
    difference.worst = std::max(difference.worst, d);
    difference.mean += d;
  }
  difference.mean /= static_cast<double>(std::max<std::size_t>(a.size(), 1));
  return difference;
}

TEST(ProfilerLink16, ConvertsColoursAsTheTwoProfilesDo) {
  const Bytes source = ReadFile(RealProfile("srgb.icc"));
  const Bytes destination = ReadFile(RealProfile("default_cmyk.icc"));
  for (const int intent : {0, 1, 2, 3}) {
    SCOPED_TRACE(intent);
    const auto expected = Convert({source, destination}, static_cast<cmsUInt32Number>(intent));
    const auto converted = Convert({RgbToCmyk16(intent)}, static_cast<cmsUInt32Number>(intent));
    ASSERT_FALSE(expected.empty());
    ASSERT_FALSE(converted.empty());
    const Difference difference = Compare(expected, converted);
    // Little CMS samples the two profiles just as finely: what remains is rounding, far below the
    // steps of 257 that a table of 8 bits has.
    EXPECT_LE(difference.worst, 16);
    EXPECT_LE(difference.mean, 2);
    // The colours are not all alike, or anything would agree.
    EXPECT_GT(*std::max_element(expected.begin(), expected.end()), 55000);
    EXPECT_LT(*std::min_element(expected.begin(), expected.end()), 1000);
  }
}

TEST(ProfilerLink16, StaysNearWhatTheProfilesGiveBetweenTheSamples) {
  const auto exact =
      Convert({ReadFile(RealProfile("srgb.icc")), ReadFile(RealProfile("default_cmyk.icc"))}, 1,
              cmsFLAGS_NOOPTIMIZE);
  const Difference difference = Compare(exact, Convert({RgbToCmyk16()}, 1, cmsFLAGS_NOOPTIMIZE));
  // A thousandth of the range on average; more only in the darkest colours.
  EXPECT_LE(difference.mean, 100);
  EXPECT_LE(difference.worst, 65535 / 20);
}

TEST(ProfilerLink16, IsCloserThanTheLinkOf8Bits) {
  const auto expected =
      Convert({ReadFile(RealProfile("srgb.icc")), ReadFile(RealProfile("default_cmyk.icc"))}, 1);
  EXPECT_LT(Compare(expected, Convert({RgbToCmyk16()}, 1)).mean,
            Compare(expected, Convert({RgbToCmyk8()}, 1)).mean);
}

TEST(ProfilerLink16, ConvertsTheSameAfterSavingAndLoading) {
  const Bytes built = RgbToCmyk16();
  const Link16 link;
  ASSERT_EQ(CLLoadLink16FromMemory(link, built.data(), Length(built)), 0);
  const auto before = Convert({built}, 1);
  ASSERT_FALSE(before.empty());
  EXPECT_EQ(Convert({Saved16(link)}, 1), before);
}

// Options in memory.

TEST(ProfilerOptions, StartUnset) {
  const Profiler profiler;
  ASSERT_NE(static_cast<void*>(profiler), nullptr);
  for (const std::string& key : Keys()) EXPECT_EQ(profiler.Get(key), std::nullopt) << key;
}

TEST(ProfilerOptions, AreReadAsTheyWereSet) {
  const Profiler profiler;
  for (const std::string& key : Keys()) {
    EXPECT_EQ(profiler.Set(key, "value of " + key), 0);
    EXPECT_EQ(profiler.Get(key), "value of " + key);
  }
  EXPECT_EQ(profiler.Set("BlackStart", "another"), 0);
  EXPECT_EQ(profiler.Get("BlackStart"), "another");
  EXPECT_EQ(profiler.Get("BlackWidth"), "value of BlackWidth");
}

TEST(ProfilerOptions, OfUnknownKeysAreRefused) {
  const Profiler profiler;
  for (const char* const key : {"", "Unknown", "profilesize", "PROFILESIZE", "ProfileSize ",
                                " ProfileSize", "ProfileSiz", "InkTotals"}) {
    EXPECT_NE(profiler.Set(key, "1"), 0) << key;
    EXPECT_EQ(profiler.Get(key), std::nullopt) << key;
  }
  for (const std::string& key : Keys()) EXPECT_EQ(profiler.Get(key), std::nullopt);
}

TEST(ProfilerOptions, HaveAtMost255Bytes) {
  const Profiler profiler;
  const std::string longest(255, 'x');
  EXPECT_EQ(profiler.Set("InkTotal", longest), 0);
  EXPECT_EQ(profiler.Get("InkTotal"), longest);
  for (const std::size_t length : {256u, 257u, 1000u, 70000u}) {
    EXPECT_NE(profiler.Set("InkTotal", std::string(length, 'y')), 0);
    EXPECT_EQ(profiler.Get("InkTotal"), longest);
  }
  // Bytes count, not characters.
  std::string umlauts;
  for (int i = 0; i < 127; ++i) umlauts += "\xC3\xBC";
  EXPECT_EQ(profiler.Set("InkTotal", umlauts + "x"), 0);
  EXPECT_EQ(profiler.Get("InkTotal"), umlauts + "x");
  EXPECT_NE(profiler.Set("InkTotal", umlauts + "\xC3\xBC"), 0);
}

TEST(ProfilerOptions, AreUtf8) {
  const Profiler profiler;
  const std::string text =
      "gr\xC3\xBC"
      "n \xE5\x8D\xB0\xE5\x88\xB7 \xF0\x9F\x8E\xA8";
  EXPECT_EQ(profiler.Set("BlackGeneration", text), 0);
  EXPECT_EQ(profiler.Get("BlackGeneration"), text);
}

TEST(ProfilerOptions, BelongToOneProfilerEach) {
  const Profiler a;
  const Profiler b;
  ASSERT_EQ(a.Set("InkTotal", "310"), 0);
  EXPECT_EQ(b.Get("InkTotal"), std::nullopt);
}

TEST(ProfilerOptions, RefuseOtherHandlesAndNull) {
  const Profiler profiler;
  const FileSpec file(RealProfile("srgb.icc").string());
  const Profile profile;
  const Link16 link;
  char buffer[256];
  for (void* const other : std::vector<void*>{nullptr, file, profile, link}) {
    EXPECT_NE(CLSetProfilerOption(other, "InkTotal", "1"), 0);
    EXPECT_NE(CLGetProfilerOption(other, "InkTotal", buffer), 0);
    EXPECT_NE(CLImportProfilerOptions(other, file), 0);
    EXPECT_NE(CLExportProfilerOptions(other, file), 0);
  }
  ASSERT_EQ(profiler.Set("InkTotal", "310"), 0);
  EXPECT_NE(CLSetProfilerOption(profiler, nullptr, "1"), 0);
  EXPECT_NE(CLSetProfilerOption(profiler, "InkTotal", nullptr), 0);
  EXPECT_NE(CLGetProfilerOption(profiler, nullptr, buffer), 0);
  EXPECT_NE(CLGetProfilerOption(profiler, "InkTotal", nullptr), 0);
  for (void* const other : std::vector<void*>{nullptr, profiler, profile, link}) {
    EXPECT_NE(CLImportProfilerOptions(profiler, other), 0);
    EXPECT_NE(CLExportProfilerOptions(profiler, other), 0);
  }
  EXPECT_EQ(profiler.Get("InkTotal"), "310");
}

// Dictionaries, made and read by Little CMS, and looked at byte by byte for their order.

struct Entry {
  std::u16string name;
  std::u16string value;
  Bytes displayName;
  Bytes displayValue;

  friend bool operator==(const Entry&, const Entry&) = default;
};

void PrintTo(const Entry& entry, std::ostream* out) {
  *out << "{" << ::testing::PrintToString(entry.name) << ": "
       << ::testing::PrintToString(entry.value) << ", " << entry.displayName.size() << " and "
       << entry.displayValue.size() << " bytes for display}";
}

/// The entries of a dictionary tag in their order (ICC.1:2010, 10.5).
std::vector<Entry> EntriesOf(const Bytes& tag) {
  EXPECT_EQ(Big32At(tag, 0), Sig("dict"));
  EXPECT_EQ(Big32At(tag, 4), 0u);
  const std::uint32_t count = Big32At(tag, 8);
  const std::uint32_t length = Big32At(tag, 12);
  const auto part = [&tag](std::size_t at) {
    return Big32At(tag, at) == 0 ? Bytes() : Slice(tag, Big32At(tag, at), Big32At(tag, at + 4));
  };
  const auto text = [&part](std::size_t at) {
    std::u16string text16;
    const Bytes bytes = part(at);
    EXPECT_EQ(bytes.size() % 2, 0u);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      text16 += static_cast<char16_t>(bytes[i] * 256 + bytes[i + 1]);
    }
    return text16;
  };
  std::vector<Entry> entries;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t at = 16 + std::size_t{i} * length;
    Entry entry{text(at), text(at + 8), {}, {}};
    if (length >= 24) entry.displayName = part(at + 16);
    if (length >= 32) entry.displayValue = part(at + 24);
    entries.push_back(entry);
  }
  return entries;
}

std::vector<Entry> EntriesIn(const std::string& path) {
  const LcmsView view = ReadWithLcms(path);
  EXPECT_TRUE(view.opens);
  const auto meta = view.tags.find(Sig("meta"));
  return meta == view.tags.end() ? std::vector<Entry>() : EntriesOf(meta->second);
}

std::vector<std::u16string> NamesOf(const std::vector<Entry>& entries) {
  std::vector<std::u16string> names;
  for (const Entry& entry : entries) names.push_back(entry.name);
  return names;
}

std::u16string Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

bool IsKey(const std::u16string& name) {
  return std::any_of(Keys().begin(), Keys().end(),
                     [&name](const std::string& key) { return Wide(key) == name; });
}

std::vector<Entry> Foreign(std::vector<Entry> entries) {
  std::erase_if(entries, [](const Entry& entry) { return IsKey(entry.name); });
  return entries;
}

/// What Little CMS reads in a profile's dictionary.
std::map<std::wstring, std::wstring> LcmsDictionary(const std::string& path) {
  std::map<std::wstring, std::wstring> entries;
  const Bytes bytes = ReadFile(path);
  cmsHPROFILE profile = cmsOpenProfileFromMem(bytes.data(), Length(bytes));
  EXPECT_NE(profile, nullptr) << path;
  if (profile == nullptr) return entries;
  void* dictionary = cmsReadTag(profile, cmsSigMetaTag);
  EXPECT_NE(dictionary, nullptr) << path;
  if (dictionary != nullptr) {
    for (const cmsDICTentry* entry = cmsDictGetEntryList(dictionary); entry != nullptr;
         entry = cmsDictNextEntry(entry)) {
      entries[entry->Name] = entry->Value != nullptr ? entry->Value : L"";
    }
  }
  cmsCloseProfile(profile);
  return entries;
}

struct DictionaryEntry {
  const wchar_t* name;
  const wchar_t* value;
  bool translated = false;  ///< with a name and a value for display, in two languages
};

cmsMLU* Translated(const std::wstring& text) {
  cmsMLU* translations = cmsMLUalloc(nullptr, 2);
  cmsMLUsetWide(translations, "en", "US", text.c_str());
  cmsMLUsetWide(translations, "de", "DE", (text + L" \u00FC").c_str());
  return translations;
}

/// A copy of a real profile in which Little CMS has put a dictionary.
std::string WithDictionary(const TempDir& dir, const std::string& realProfile,
                           const std::vector<DictionaryEntry>& entries) {
  const std::string path = dir.File("dictionary.icc");
  const Bytes bytes = ReadFile(RealProfile(realProfile));
  cmsHPROFILE profile = cmsOpenProfileFromMem(bytes.data(), Length(bytes));
  EXPECT_NE(profile, nullptr);
  cmsHANDLE dictionary = cmsDictAlloc(nullptr);
  for (const DictionaryEntry& entry : entries) {
    cmsMLU* name = entry.translated ? Translated(entry.name) : nullptr;
    cmsMLU* value = entry.translated ? Translated(entry.value) : nullptr;
    EXPECT_TRUE(cmsDictAddEntry(dictionary, entry.name, entry.value, name, value));
    if (name != nullptr) cmsMLUfree(name);
    if (value != nullptr) cmsMLUfree(value);
  }
  EXPECT_TRUE(cmsWriteTag(profile, cmsSigMetaTag, dictionary));
  EXPECT_TRUE(cmsSaveProfileToFile(profile, path.c_str()));
  cmsDictFree(dictionary);
  cmsCloseProfile(profile);
  return path;
}

std::string Copy(const TempDir& dir, const std::string& realProfile) {
  return dir.Write("copy.icc", ReadFile(RealProfile(realProfile)));
}

// Import.

TEST(ProfilerImport, TakesTheOptionsFromTheDictionary) {
  const TempDir dir;
  const std::string path = WithDictionary(
      dir, "srgb.icc",
      {{L"InkTotal", L"310"}, {L"Foreign", L"x"}, {L"BlackGeneration", L"gr\u00FCn \u5370"}});
  const Profiler profiler;
  EXPECT_EQ(profiler.Import(path), 0);
  EXPECT_EQ(profiler.Get("InkTotal"), "310");
  EXPECT_EQ(profiler.Get("BlackGeneration"),
            "gr\xC3\xBC"
            "n \xE5\x8D\xB0");
  for (const char* const key : {"ProfileSize", "ProfileFormat", "BlackWidth", "BlackStart",
                                "BrightenerCorrection", "Foreign"}) {
    EXPECT_EQ(profiler.Get(key), std::nullopt) << key;
  }
}

TEST(ProfilerImport, TakesTranslatedEntriesToo) {
  const TempDir dir;
  const std::string path =
      WithDictionary(dir, "srgb.icc", {{L"InkTotal", L"310", true}, {L"ProfileSize", L"2", true}});
  const Profiler profiler;
  EXPECT_EQ(profiler.Import(path), 0);
  EXPECT_EQ(profiler.Get("InkTotal"), "310");
  EXPECT_EQ(profiler.Get("ProfileSize"), "2");
}

TEST(ProfilerImport, TakesACharacterOfTwoUnitsAsOne) {
  // Little CMS writes the units that it is given: U+1F3A8 as UTF-16.
  const std::wstring text = {L'x', static_cast<wchar_t>(0xD83C), static_cast<wchar_t>(0xDFA8),
                             L'y'};
  const TempDir dir;
  const std::string path = WithDictionary(dir, "srgb.icc", {{L"InkTotal", text.c_str()}});
  const Profiler profiler;
  EXPECT_EQ(profiler.Import(path), 0);
  EXPECT_EQ(profiler.Get("InkTotal"), "x\xF0\x9F\x8E\xA8y");
}

TEST(ProfilerImport, ReplacesTheOptionsThatWereSet) {
  const TempDir dir;
  const std::string path = WithDictionary(dir, "srgb.icc", {{L"InkTotal", L"310"}});
  const Profiler profiler;
  for (const std::string& key : Keys()) ASSERT_EQ(profiler.Set(key, "old"), 0);
  EXPECT_EQ(profiler.Import(path), 0);
  for (const std::string& key : Keys()) {
    EXPECT_EQ(profiler.Get(key),
              key == "InkTotal" ? std::optional<std::string>("310") : std::nullopt);
  }
}

TEST(ProfilerImport, LeavesTheFileAlone) {
  const TempDir dir;
  const std::string path = WithDictionary(dir, "srgb.icc", {{L"InkTotal", L"310"}});
  const Bytes before = ReadFile(path);
  EXPECT_EQ(Profiler().Import(path), 0);
  EXPECT_TRUE(SameBytes(ReadFile(path), before));
}

TEST(ProfilerImport, RefusesFilesWithoutOptions) {
  const TempDir dir;
  Bytes wrongMagic = ReadFile(WithDictionary(dir, "srgb.icc", {{L"InkTotal", L"310"}}));
  wrongMagic[36] = 'x';
  const std::string foreign =
      WithDictionary(dir, "srgb.icc", {{L"Foreign", L"x"}, {L"inktotal", L"310"}});
  const std::string noDictionary = dir.Write(
      "nodict.icc", ProfileImage(ProfileHeader(), {{Sig("meta"), DataTag(Pattern(40, 1))}}));
  const std::string paths[] = {
      RealProfile("default_cmyk.icc").string(),  // no dictionary
      RealProfile("Bluish.icc").string(),        // one with other entries
      foreign,
      noDictionary,
      dir.Write("magic.icc", wrongMagic),
      dir.Write("text.icc", Pattern(500, 1)),
      dir.Write("empty.icc", {}),
      dir.File("missing.icc"),
      dir.path().string(),
  };
  for (const std::string& path : paths) {
    SCOPED_TRACE(path);
    const Profiler profiler;
    ASSERT_EQ(profiler.Set("InkTotal", "280"), 0);
    EXPECT_NE(profiler.Import(path), 0);
    EXPECT_EQ(profiler.Get("InkTotal"), "280");
    EXPECT_EQ(profiler.Get("ProfileSize"), std::nullopt);
  }
  const Profiler profiler;
  EXPECT_NE(CLImportProfilerOptions(profiler, FileSpec()), 0);
}

TEST(ProfilerImport, OfADictionaryCutAnywhereGivesTheWholeValueOrNone) {
  const TempDir dir;
  const Bytes whole = ReadFile(WithDictionary(dir, "srgb.icc", {{L"InkTotal", L"310"}}));
  const std::vector<ImageEntry> table = TableOf(whole);
  std::size_t index = 0;
  while (table.at(index).sig != Sig("meta")) ++index;
  const ImageEntry meta = table[index];
  std::vector<Bytes> damaged;
  for (std::uint32_t size = 0; size < meta.size; ++size) {
    // Cut by the entry's size, and cut off with all that follows.
    damaged.push_back(whole);
    vkcl::testing::SetBig32(damaged.back(), 132 + 12 * index + 8, size);
    damaged.push_back(Slice(whole, 0, meta.offset + size));
    damaged.push_back(damaged.back());
    vkcl::testing::SetBig32(damaged.back(), 0, meta.offset + size);
  }
  int refused = 0;
  for (const Bytes& bytes : damaged) {
    const Profiler profiler;
    const int status = profiler.Import(dir.Write("cut.icc", bytes));
    EXPECT_EQ(profiler.Get("InkTotal"),
              status == 0 ? std::optional<std::string>("310") : std::nullopt);
    refused += status != 0 ? 1 : 0;
  }
  EXPECT_GT(refused, 32);  // without its head and its first record there is nothing to read
}

TEST(ProfilerImport, RefusesADictionaryOfMoreThan64Megabytes) {
  const TempDir dir;
  constexpr std::uint32_t kMost = 64u << 20;
  // One record, with its name at 32 and its value at 48; nothing else is in the element.
  Bytes element(54);
  std::copy_n("dict", 4, element.begin());
  const std::uint32_t numbers[] = {1, 16, 32, 16, 48, 6};
  for (std::size_t i = 0; i < 6; ++i) vkcl::testing::SetBig32(element, 8 + 4 * i, numbers[i]);
  const std::string texts = "InkTotal300";
  for (std::size_t i = 0; i < texts.size(); ++i) {
    element[33 + 2 * i] = static_cast<unsigned char>(texts[i]);
  }
  for (const std::uint32_t size : {kMost, kMost + 1}) {
    Bytes head = vkcl::testing::RawImage(ProfileHeader(), {{Sig("meta"), 144, size}}, element);
    vkcl::testing::SetBig32(head, 0, 144 + size);
    const std::string path = dir.Write("large.icc", head);
    std::filesystem::resize_file(path, 144 + std::uint64_t{size});
    const Profiler profiler;
    EXPECT_EQ(profiler.Import(path) == 0, size == kMost);
  }
}

TEST(ProfilerImport, OfADamagedDictionaryDoesNoHarm) {
  const TempDir dir;
  const Bytes whole = ReadFile(WithDictionary(
      dir, "srgb.icc", {{L"InkTotal", L"310", true}, {L"Foreign", L"x"}, {L"BlackStart", L"0"}}));
  const std::vector<ImageEntry> table = TableOf(whole);
  std::size_t index = 0;
  while (table.at(index).sig != Sig("meta")) ++index;
  const ImageEntry meta = table[index];
  std::mt19937 random(20010203);
  int read = 0;
  for (int round = 0; round < 300; ++round) {
    Bytes damaged = whole;
    for (auto hits = random() % 3 + 1; hits > 0; --hits) {
      damaged[meta.offset + random() % meta.size] =
          static_cast<unsigned char>(random() % 2 == 0 ? random() % 256 : 0xFF * (random() % 2));
    }
    const Profiler profiler;
    const std::string path = dir.Write(std::to_string(round), damaged);
    if (profiler.Import(path) == 0) {
      ++read;
      for (const std::string& key : Keys()) EXPECT_LE(profiler.Get(key).value_or("").size(), 255u);
    }
    // What is written into such a file leaves its other tags alone, or is refused.
    ASSERT_EQ(profiler.Set("ProfileSize", "1"), 0);
    if (profiler.Export(path) == 0) {
      const Bytes after = ReadFile(path);
      const std::vector<ImageEntry> now = TableOf(after);
      ASSERT_EQ(now.size(), table.size());
      for (std::size_t i = 0; i < table.size(); ++i) {
        if (table[i].sig == Sig("meta")) continue;
        const auto same = std::find_if(now.begin(), now.end(), [&](const ImageEntry& entry) {
          return entry.sig == table[i].sig;
        });
        ASSERT_NE(same, now.end());
        EXPECT_EQ(Slice(after, same->offset, same->size),
                  Slice(whole, table[i].offset, table[i].size));
      }
    } else {
      EXPECT_TRUE(SameBytes(ReadFile(path), damaged));
    }
  }
  EXPECT_GT(read, 30);
}

TEST(ProfilerImport, OfMoreBytesThanABufferTakesDoesNoHarm) {
  const TempDir dir;
  const std::wstring tooLong(300, L'x');
  const std::string path =
      WithDictionary(dir, "srgb.icc", {{L"InkTotal", tooLong.c_str()}, {L"ProfileSize", L"1"}});
  VKCLProfileOptions options;
  EXPECT_EQ(VKCLProfileHandler(AFilePath(path), 0).GetProfileOptions(options), 1);
  EXPECT_EQ(options.ProfileSize, "1");
  EXPECT_LE(options.InkTotal.length(), 255u);
  const Profiler profiler;
  EXPECT_EQ(profiler.Import(path), 0);
  EXPECT_LE(profiler.Get("InkTotal").value_or("").size(), 255u);
}

// Export.

void ExpectExported(const std::string& path, const std::map<std::string, std::string>& options) {
  const Profiler profiler;
  ASSERT_EQ(profiler.Import(path), 0);
  for (const std::string& key : Keys()) {
    const auto option = options.find(key);
    EXPECT_EQ(profiler.Get(key),
              option != options.end() ? std::optional<std::string>(option->second) : std::nullopt)
        << key;
  }
}

void SetAll(const Profiler& profiler, const std::map<std::string, std::string>& options) {
  for (const auto& [key, value] : options) ASSERT_EQ(profiler.Set(key, value), 0) << key;
}

const std::map<std::string, std::string>& AllOptions() {
  static const std::map<std::string, std::string> options = {{"ProfileSize", "2"},
                                                             {"ProfileFormat", "4"},
                                                             {"BlackGeneration", "GCRSmooth"},
                                                             {"BlackWidth", "100"},
                                                             {"BlackStart", "0"},
                                                             {"BrightenerCorrection", "0.0"},
                                                             {"InkTotal", "310 \xE2\x82\xAC"}};
  return options;
}

TEST(ProfilerExport, IsReadBack) {
  for (const char* const name : {"srgb.icc", "default_cmyk.icc", "ps_cmyk.icc", "Bluish.icc"}) {
    SCOPED_TRACE(name);
    const TempDir dir;
    const std::string path = Copy(dir, name);
    const Profiler profiler;
    SetAll(profiler, AllOptions());
    EXPECT_EQ(profiler.Export(path), 0);
    ExpectExported(path, AllOptions());
  }
}

TEST(ProfilerExport, IsReadByLittleCms) {
  const TempDir dir;
  const std::string path = Copy(dir, "srgb.icc");
  const Profiler profiler;
  SetAll(profiler, AllOptions());
  ASSERT_EQ(profiler.Export(path), 0);
  EXPECT_EQ(LcmsDictionary(path),
            (std::map<std::wstring, std::wstring>{{L"ProfileSize", L"2"},
                                                  {L"ProfileFormat", L"4"},
                                                  {L"BlackGeneration", L"GCRSmooth"},
                                                  {L"BlackWidth", L"100"},
                                                  {L"BlackStart", L"0"},
                                                  {L"BrightenerCorrection", L"0.0"},
                                                  {L"InkTotal", L"310 \u20AC"}}));
}

TEST(ProfilerExport, WritesOnlyOptionsThatAreSet) {
  const TempDir dir;
  const std::string path = Copy(dir, "srgb.icc");
  const Profiler profiler;
  SetAll(profiler, {{"InkTotal", "310"}});
  EXPECT_EQ(profiler.Export(path), 0);
  EXPECT_EQ(NamesOf(EntriesIn(path)), std::vector<std::u16string>{u"InkTotal"});
  ExpectExported(path, {{"InkTotal", "310"}});
}

TEST(ProfilerExport, TakesTheLongestValueOfEveryOption) {
  const TempDir dir;
  const std::string path = Copy(dir, "srgb.icc");
  std::map<std::string, std::string> options;
  std::string longest = "\xE2\x82\xAC";
  longest.append(255 - 3, 'x');
  for (const std::string& key : Keys()) options[key] = longest;
  const Profiler profiler;
  SetAll(profiler, options);
  EXPECT_EQ(profiler.Export(path), 0);
  ExpectExported(path, options);
}

/// Which entries lie on the block of an earlier one, as the index of the first that does.
std::vector<std::size_t> Sharing(const std::vector<ImageEntry>& table) {
  std::vector<std::size_t> first;
  for (const ImageEntry& entry : table) {
    std::size_t j = 0;
    while (table[j].offset != entry.offset) ++j;
    first.push_back(j);
  }
  return first;
}

std::vector<ImageEntry> WithoutDictionary(std::vector<ImageEntry> table) {
  std::erase_if(table, [](const ImageEntry& entry) { return entry.sig == Sig("meta"); });
  return table;
}

/// Everything in the file but the dictionary and the size is what it was.
void ExpectTheRestUnchanged(const std::string& path, const Bytes& before, const LcmsView& viewed) {
  const Bytes after = ReadFile(path);
  EXPECT_EQ(Big32At(after, 0), after.size());
  EXPECT_TRUE(SameBytes(Slice(after, 4, 124), Slice(before, 4, 124)));
  const LcmsView view = ReadWithLcms(path);
  ASSERT_TRUE(view.opens);
  for (const auto& [sig, bytes] : viewed.tags) {
    if (sig == Sig("meta")) continue;
    ASSERT_EQ(view.tags.count(sig), 1u);
    EXPECT_TRUE(SameBytes(view.tags.at(sig), bytes)) << std::hex << sig;
  }
  const std::vector<ImageEntry> oldTable = WithoutDictionary(TableOf(before));
  const std::vector<ImageEntry> newTable = WithoutDictionary(TableOf(after));
  EXPECT_EQ(TableOf(after).size(), newTable.size() + 1);
  ASSERT_EQ(newTable.size(), oldTable.size());
  for (std::size_t i = 0; i < oldTable.size(); ++i) {
    EXPECT_EQ(newTable[i].sig, oldTable[i].sig);
    EXPECT_EQ(newTable[i].size, oldTable[i].size);
    EXPECT_EQ(newTable[i].offset % 4, 0u);
    // The bytes at this very entry, also where two have one signature.
    EXPECT_EQ(Slice(after, newTable[i].offset, newTable[i].size),
              Slice(before, oldTable[i].offset, oldTable[i].size));
  }
  EXPECT_EQ(Sharing(newTable), Sharing(oldTable));
}

TEST(ProfilerExport, LeavesEverythingElseOfEveryRealProfile) {
  std::map<int, int> versions;
  for (const auto& real : RealProfiles()) {
    SCOPED_TRACE(real);
    const TempDir dir;
    const Bytes before = ReadFile(real);
    const std::string path = dir.Write("copy.icc", before);
    const LcmsView view = ReadWithLcms(path);
    const std::vector<double> colours = ConvertWithLcms(path);
    const std::vector<Entry> entries = EntriesIn(path);
    ++versions[before.at(8)];
    const Profiler profiler;
    SetAll(profiler, AllOptions());
    ASSERT_EQ(profiler.Export(path), 0);
    ExpectTheRestUnchanged(path, before, view);
    EXPECT_EQ(ConvertWithLcms(path), colours);
    const std::vector<Entry> now = EntriesIn(path);
    EXPECT_EQ(Foreign(now), entries);  // these hold none of the keys
    EXPECT_EQ(now.size(), entries.size() + Keys().size());
    ExpectExported(path, AllOptions());
    // And once more, with longer and shorter values.
    SetAll(profiler, {{"InkTotal", std::string(200, 'x')}, {"BlackGeneration", "K"}});
    ASSERT_EQ(profiler.Export(path), 0);
    ExpectTheRestUnchanged(path, before, view);
    EXPECT_EQ(NamesOf(EntriesIn(path)), NamesOf(now));
    EXPECT_EQ(profiler.Get("InkTotal"), std::string(200, 'x'));
  }
  EXPECT_GT(versions[2], 0);
  EXPECT_GT(versions[4], 0);
}

TEST(ProfilerExport, KeepsForeignEntriesWithTheirTranslations) {
  for (const char* const name : {"srgb.icc", "ps_rgb.icc"}) {
    for (const bool translated : {false, true}) {
      const TempDir dir;
      const std::string path = WithDictionary(dir, name,
                                              {{L"First", L"1", translated},
                                               {L"Gr\u00FC\u00DFe", L"\u5370\u5237", translated},
                                               {L"Empty", L"", false},
                                               {L"inktotal", L"not the key", translated}});
      const Bytes before = ReadFile(path);
      const LcmsView view = ReadWithLcms(path);
      const std::vector<Entry> entries = EntriesIn(path);
      const auto read = LcmsDictionary(path);
      ASSERT_EQ(entries.size(), 4u);
      const Profiler profiler;
      SetAll(profiler, AllOptions());
      ASSERT_EQ(profiler.Export(path), 0);
      EXPECT_EQ(Foreign(EntriesIn(path)), entries);
      ExpectTheRestUnchanged(path, before, view);
      ExpectExported(path, AllOptions());
      auto now = LcmsDictionary(path);
      for (const std::string& key : Keys()) now.erase(std::wstring(key.begin(), key.end()));
      EXPECT_EQ(now, read);
    }
  }
}

TEST(ProfilerExport, KeepsForeignCharactersOfTwoUnits) {
  // Little CMS writes the units that it is given: U+1F3A8 as UTF-16, in a name and in a value.
  const std::wstring units = {static_cast<wchar_t>(0xD83C), static_cast<wchar_t>(0xDFA8)};
  const TempDir dir;
  const std::string path =
      WithDictionary(dir, "srgb.icc", {{units.c_str(), L"value"}, {L"name", units.c_str()}});
  const std::vector<Entry> before = EntriesIn(path);
  const Profiler profiler;
  SetAll(profiler, {{"InkTotal", "310"}});
  ASSERT_EQ(profiler.Export(path), 0);
  EXPECT_EQ(Foreign(EntriesIn(path)), before);
}

TEST(ProfilerExport, ReplacesValuesAndKeepsTheOrderOfForeignEntries) {
  const TempDir dir;
  const std::string path = WithDictionary(
      dir, "srgb.icc",
      {{L"A", L"1"}, {L"InkTotal", L"310"}, {L"B", L"2"}, {L"ProfileSize", L"2"}, {L"C", L"3"}});
  const std::vector<Entry> before = EntriesIn(path);
  ASSERT_EQ(Foreign(before).size(), 3u);
  const Profiler profiler;
  for (const char* const value : {"a much longer value than before", "1"}) {
    SetAll(profiler, {{"InkTotal", value}, {"ProfileSize", "1"}});
    ASSERT_EQ(profiler.Export(path), 0);
    const std::vector<Entry> after = EntriesIn(path);
    EXPECT_EQ(after.size(), 5u);
    EXPECT_EQ(Foreign(after), Foreign(before));
    ExpectExported(path, {{"InkTotal", value}, {"ProfileSize", "1"}});
  }
}

TEST(ProfilerExport, ReplacesATranslatedEntryOfItsKey) {
  const TempDir dir;
  const std::string path =
      WithDictionary(dir, "srgb.icc", {{L"InkTotal", L"310", true}, {L"Foreign", L"x", true}});
  const std::vector<Entry> before = EntriesIn(path);
  const Profiler profiler;
  SetAll(profiler, {{"InkTotal", "280"}});
  ASSERT_EQ(profiler.Export(path), 0);
  EXPECT_EQ(EntriesIn(path).size(), 2u);
  EXPECT_EQ(Foreign(EntriesIn(path)), Foreign(before));
  ExpectExported(path, {{"InkTotal", "280"}});
}

TEST(ProfilerExport, KeepsCharactersOfTwoUnits) {
  const TempDir dir;
  const std::string path = Copy(dir, "srgb.icc");
  const Profiler profiler;
  SetAll(profiler, {{"InkTotal", "x\xF0\x9F\x8E\xA8y"}});
  ASSERT_EQ(profiler.Export(path), 0);
  const std::vector<Entry> entries = EntriesIn(path);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].value, u"x\U0001F3A8y");
  ExpectExported(path, {{"InkTotal", "x\xF0\x9F\x8E\xA8y"}});
}

TEST(ProfilerExport, OfTheSameOptionsGivesTheSameFile) {
  for (const char* const name : {"srgb.icc", "Bluish.icc"}) {
    const TempDir dir;
    const std::string path = Copy(dir, name);
    const Profiler profiler;
    SetAll(profiler, AllOptions());
    ASSERT_EQ(profiler.Export(path), 0);
    const Bytes first = ReadFile(path);
    for (int i = 0; i < 3; ++i) {
      ASSERT_EQ(profiler.Export(path), 0);
      EXPECT_TRUE(SameBytes(ReadFile(path), first));
    }
  }
}

TEST(ProfilerExport, RefusesFilesThatAreNoProfiles) {
  const TempDir dir;
  const Profiler profiler;
  SetAll(profiler, AllOptions());
  EXPECT_NE(profiler.Export(dir.File("missing.icc")), 0);
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "missing.icc"));
  EXPECT_NE(profiler.Export(dir.path().string()), 0);
  EXPECT_NE(CLExportProfilerOptions(profiler, FileSpec()), 0);
  Bytes wrongMagic = ReadFile(RealProfile("srgb.icc"));
  wrongMagic[36] = 'x';
  for (const Bytes& content :
       {Bytes(), Pattern(500, 1), wrongMagic, Slice(ReadFile(RealProfile("srgb.icc")), 0, 130)}) {
    const std::string path = dir.Write("no.icc", content);
    EXPECT_NE(profiler.Export(path), 0);
    EXPECT_TRUE(SameBytes(ReadFile(path), content));
  }
}

TEST(ProfilerExport, LeavesEntriesWithoutDataAsTheyAre) {
  // Readers pass over entries without a place or a length. With a place, the two of one signature
  // would make a profile that nobody opens.
  const TempDir dir;
  const std::uint32_t start = 132 + 12 * 6;
  const std::vector<ImageEntry> table = {{Sig("meta"), 0, 8},      {Sig("dead"), 0, 100},
                                         {Sig("dead"), 0, 33},     {Sig("none"), start, 0},
                                         {Sig("cprt"), start, 12}, {Sig("none"), start + 4, 0}};
  const std::string path = dir.Write("dead.icc", RawImage(ProfileHeader(), table, TextTag("abcd")));
  const Profiler profiler;
  ASSERT_EQ(profiler.Set("InkTotal", "300"), 0);
  ASSERT_EQ(profiler.Export(path), 0);
  const Bytes after = ReadFile(path);
  std::vector<ImageEntry> now = TableOf(after);
  ASSERT_EQ(now.size(), table.size());
  EXPECT_EQ(Big32At(after, now[0].offset), Sig("dict"));
  EXPECT_EQ(Slice(after, now[4].offset, now[4].size), TextTag("abcd"));
  now[0] = table[0];
  now[4].offset = start;
  EXPECT_EQ(now, table);
  const Profiler again;
  EXPECT_EQ(again.Import(path), 0);
  EXPECT_EQ(again.Get("InkTotal"), "300");
}

TEST(ProfilerExport, ReplacesTheDictionaryThatIsRead) {
  const TempDir dir;
  const std::string path = WithDictionary(dir, "srgb.icc", {{L"InkTotal", L"310"}});
  const Bytes whole = ReadFile(path);
  std::vector<ImageEntry> table = TableOf(whole);
  table.insert(table.begin(), {Sig("meta"), 0, 40});
  for (ImageEntry& entry : table) entry.offset += entry.offset != 0 ? 12 : 0;
  const std::size_t bodyStart = 132 + 12 * (table.size() - 1);
  dir.Write("two.icc", RawImage(Slice(whole, 0, 128), table,
                                Slice(whole, bodyStart, whole.size() - bodyStart)));
  const Profiler profiler;
  ASSERT_EQ(profiler.Set("InkTotal", "300"), 0);
  ASSERT_EQ(profiler.Export(dir.File("two.icc")), 0);
  const Profiler again;
  EXPECT_EQ(again.Import(dir.File("two.icc")), 0);
  EXPECT_EQ(again.Get("InkTotal"), "300");
}

TEST(ProfilerExport, RefusesToReplaceADictionaryThatItCannotRead) {
  const TempDir dir;
  const std::string path = WithDictionary(dir, "srgb.icc", {{L"Foreign", L"x"}, {L"Other", L"y"}});
  const Bytes whole = ReadFile(path);
  std::uint32_t start = 0;
  for (const ImageEntry& entry : TableOf(whole)) {
    if (entry.sig == Sig("meta")) start = entry.offset;
  }
  ASSERT_NE(start, 0u);
  struct Damage {
    const char* what;
    std::uint32_t at;  // in the element: type, 0, records, length of a record, records
    std::uint32_t value;
  };
  for (const Damage& damage :
       {Damage{"another type", 0, Sig("text")}, Damage{"more records than there are", 8, 1000},
        Damage{"records of no known length", 12, 20},
        Damage{"a name outside of the file", 16, 0x7FFFFFF0},
        Damage{"a value longer than the file", 28, 0x7FFFFFF0}}) {
    SCOPED_TRACE(damage.what);
    Bytes damaged = whole;
    vkcl::testing::SetBig32(damaged, start + damage.at, damage.value);
    dir.Write("dictionary.icc", damaged);
    const Profiler profiler;
    ASSERT_EQ(profiler.Set("InkTotal", "300"), 0);
    EXPECT_NE(profiler.Export(path), 0);
    EXPECT_TRUE(SameBytes(ReadFile(path), damaged));
  }
  dir.Write("dictionary.icc", whole);
  const Profiler profiler;
  ASSERT_EQ(profiler.Set("InkTotal", "300"), 0);
  EXPECT_EQ(profiler.Export(path), 0);
  EXPECT_EQ(EntriesIn(path).size(), 3u);
}

TEST(ProfilerExport, RefusesAnEntryMoreThanLittleCmsReads) {
  const TempDir dir;
  for (const std::uint32_t count : {99u, 100u}) {
    std::vector<ImageTag> tags;
    for (std::uint32_t i = 0; i < count; ++i) tags.push_back({Sig("aaaa") + i, TextTag("x")});
    const Bytes before = ProfileImage(ProfileHeader(), tags);
    const std::string path = dir.Write("many.icc", before);
    const Profiler profiler;
    ASSERT_EQ(profiler.Set("InkTotal", "300"), 0);
    EXPECT_EQ(profiler.Export(path) == 0, count == 99);
    if (count == 100) {
      EXPECT_TRUE(SameBytes(ReadFile(path), before));
    }
    const Profiler again;
    EXPECT_EQ(again.Import(path) == 0, count == 99);
  }
}

TEST(ProfilerExport, LeavesNothingBesideTheFile) {
  const TempDir dir;
  const std::string path = Copy(dir, "srgb.icc");
  const Profiler profiler;
  SetAll(profiler, AllOptions());
  ASSERT_EQ(profiler.Export(path), 0);
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
    EXPECT_EQ(entry.path().string(), path);
    ++files;
  }
  EXPECT_EQ(files, 1u);
}

TEST(ProfilerExport, ThatFailsLeavesTheFileAsItWas) {
  const int handles = OpenHandles();
  // Without a dictionary, with a shorter one in the middle of the file, and with a longer one.
  for (const char* const name : {"srgb.icc", "Bluish.icc", "longer"}) {
    for (const Fault fault :
         {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
      int failures = 0;
      bool reached = true;
      for (std::size_t which = 0; reached && which < 200; ++which) {
        SCOPED_TRACE(::testing::Message()
                     << name << ", fault " << static_cast<int>(fault) << " at " << which);
        const TempDir dir;
        const bool longer = std::string(name) == "longer";
        const std::string path =
            longer ? WithDictionary(dir, "srgb.icc", {{L"InkTotal", L"a longer value"}})
                   : Copy(dir, name);
        const Bytes before = ReadFile(path);
        const Profiler profiler;
        SetAll(profiler, {{"InkTotal", "310"}});
        const FileSpec file(path);
        int status = 0;
        {
          const FaultAt at(which, fault);
          status = CLExportProfilerOptions(profiler, file);
          reached = FaultAt::Reached();
        }
        EXPECT_EQ(OpenHandles(), handles);
        EXPECT_EQ(profiler.Get("InkTotal"), "310");
        if (status == 0) {
          ExpectExported(path, {{"InkTotal", "310"}});
          continue;
        }
        ++failures;
        EXPECT_TRUE(SameBytes(ReadFile(path), before));
        // A second try finds everything in place.
        EXPECT_EQ(profiler.Export(path), 0);
        ExpectExported(path, {{"InkTotal", "310"}});
      }
      EXPECT_FALSE(reached);  // every call had its turn
      const bool harmless = fault == Fault::Short || fault == Fault::Interrupted;
      EXPECT_EQ(failures == 0, harmless) << name << ", fault " << static_cast<int>(fault);
    }
  }
}

}  // namespace
