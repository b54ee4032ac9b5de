// The profiler library's C interface as a caller uses it.
#include "platform/profiler/TesselColorProfiler.h"

#include <gtest/gtest.h>

#include "support/ImageBuilder.h"
#include "support/TempDir.h"

// Declared again: does not compile unless the header declares the very same, and with C linkage.
extern "C" {
void* CLNewCLProfileRef();
int CLLoadProfileFromMemory(void* profile, const void* bytes, unsigned int size);
int CLLoadProfileFromFile(void* profile, void* fileSpec);
int CLWriteProfileToMemory(void* profile, void* buffer, unsigned int size, unsigned int* sizeOut);
void CLFreeCLProfileRef(void* profile);

void* CLNewCLLink8Ref();
int CLBuildLink8(void* link, void* sourceProfile, void* destinationProfile, int renderingIntent);
int CLLoadLink8FromMemory(void* link, const void* bytes, unsigned int size);
int CLSaveLink8ToMemory(void* link, void* buffer, unsigned int size, unsigned int* sizeOut);
void CLFreeCLLink8Ref(void* link);

void* CLNewCLLink16Ref();
int CLBuildLink16(void* link, void* sourceProfile, void* destinationProfile, int renderingIntent);
int CLLoadLink16FromMemory(void* link, const void* bytes, unsigned int size);
int CLSaveLink16ToMemory(void* link, void* buffer, unsigned int size, unsigned int* sizeOut);
void CLFreeCLLink16Ref(void* link);

void* CLNewFileSpecRef();
int CLName2FileSpec(void* fileSpec, const char* utf8Path);
void CLFreeFileSpecRef(void* fileSpec);

void* CLNewCLProfilerRef();
int CLImportProfilerOptions(void* profiler, void* fileSpec);
int CLGetProfilerOption(void* profiler, const char* key, void* buffer);
int CLSetProfilerOption(void* profiler, const char* key, const char* value);
int CLExportProfilerOptions(void* profiler, void* fileSpec);
void CLFreeCLProfilerRef(void* profiler);
}

namespace vkcl::testing {
namespace {

TEST(TesselColorProfilerInterface, Profiles) {
  const Bytes image = ProfileImage(ProfileHeader(), {{Sig("desc"), Pattern(16, 1)}});
  const auto length = static_cast<unsigned int>(image.size());
  void* profile = CLNewCLProfileRef();
  ASSERT_NE(profile, nullptr);
  EXPECT_NE(CLLoadProfileFromMemory(profile, "no profile", 10), 0);
  EXPECT_EQ(CLLoadProfileFromMemory(profile, image.data(), length), 0);
  unsigned int size = 0;
  EXPECT_EQ(CLWriteProfileToMemory(profile, nullptr, 0, &size), 0);
  EXPECT_EQ(size, length);
  Bytes written(image.size());
  EXPECT_NE(CLWriteProfileToMemory(profile, written.data(), length - 1, nullptr), 0);
  EXPECT_EQ(CLWriteProfileToMemory(profile, written.data(), length, nullptr), 0);
  EXPECT_TRUE(SameBytes(written, image));
  CLFreeCLProfileRef(profile);
}

TEST(TesselColorProfilerInterface, ProfilesOfFiles) {
  const TempDir dir;
  void* profile = CLNewCLProfileRef();
  void* file = CLNewFileSpecRef();
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(CLName2FileSpec(file, dir.File("missing.icc").c_str()), 0);
  EXPECT_NE(CLLoadProfileFromFile(profile, file), 0);
  const Bytes image = ProfileImage(ProfileHeader(), {{Sig("desc"), Pattern(16, 1)}});
  EXPECT_EQ(CLName2FileSpec(file, dir.Write("paper.icc", image).c_str()), 0);
  EXPECT_EQ(CLLoadProfileFromFile(profile, file), 0);
  CLFreeFileSpecRef(file);
  CLFreeCLProfileRef(profile);
}

TEST(TesselColorProfilerInterface, LinksOf8Bits) {
  void* link = CLNewCLLink8Ref();
  void* empty = CLNewCLProfileRef();
  ASSERT_NE(link, nullptr);
  unsigned int size = 7;
  EXPECT_EQ(CLSaveLink8ToMemory(link, nullptr, 0, &size), 0);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(CLLoadLink8FromMemory(link, nullptr, 0), 0);
  EXPECT_NE(CLLoadLink8FromMemory(link, "no link", 7), 0);
  EXPECT_NE(CLBuildLink8(link, empty, empty, 1), 0);
  CLFreeCLProfileRef(empty);
  CLFreeCLLink8Ref(link);
}

TEST(TesselColorProfilerInterface, LinksOf16Bits) {
  void* link = CLNewCLLink16Ref();
  void* empty = CLNewCLProfileRef();
  ASSERT_NE(link, nullptr);
  unsigned int size = 7;
  EXPECT_EQ(CLSaveLink16ToMemory(link, nullptr, 0, &size), 0);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(CLLoadLink16FromMemory(link, nullptr, 0), 0);
  EXPECT_NE(CLLoadLink16FromMemory(link, "no link", 7), 0);
  EXPECT_NE(CLBuildLink16(link, empty, empty, 1), 0);
  CLFreeCLProfileRef(empty);
  CLFreeCLLink16Ref(link);
}

TEST(TesselColorProfilerInterface, Options) {
  const TempDir dir;
  const Bytes image = ProfileImage(ProfileHeader(), {{Sig("desc"), Pattern(16, 1)}});
  void* profiler = CLNewCLProfilerRef();
  void* file = CLNewFileSpecRef();
  ASSERT_NE(profiler, nullptr);
  EXPECT_EQ(CLName2FileSpec(file, dir.Write("paper.icc", image).c_str()), 0);
  EXPECT_NE(CLImportProfilerOptions(profiler, file), 0) << "without a dictionary";
  EXPECT_EQ(CLSetProfilerOption(profiler, "InkTotal", "320"), 0);
  EXPECT_EQ(CLExportProfilerOptions(profiler, file), 0);
  CLFreeCLProfilerRef(profiler);

  profiler = CLNewCLProfilerRef();
  EXPECT_EQ(CLImportProfilerOptions(profiler, file), 0);
  char text[256] = {};
  EXPECT_EQ(CLGetProfilerOption(profiler, "InkTotal", text), 0);
  EXPECT_STREQ(text, "320");
  CLFreeFileSpecRef(file);
  CLFreeCLProfilerRef(profiler);
}

}  // namespace
}  // namespace vkcl::testing
