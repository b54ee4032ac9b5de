// Whole files inside a profile, and the two functions beside the handler.
#include <lcms2.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <optional>

#include "handler/VKCLProfileHandler.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "support/ProfilerCalls.h"
#include "support/Counts.h"
#include "support/PeakMemory.h"
#include "support/RealProfiles.h"
#include "support/SystemCalls.h"
#include "support/TagFile.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif
#if defined(__linux__)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::ConvertWithLcms;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FileTag;
using vkcl::testing::HeldLinks16;
using vkcl::testing::HexBytes;
using vkcl::testing::OpenHandles;
using vkcl::testing::Pattern;
using vkcl::testing::PayloadOf;
using vkcl::testing::ProfileFile;
using vkcl::testing::ProfilerCall;
using vkcl::testing::ReadFile;
using vkcl::testing::RealProfile;
using vkcl::testing::RealProfiles;
using vkcl::testing::RefusedProfilerCall;
using vkcl::testing::SameBytes;
using vkcl::testing::SignaturesOf;
using vkcl::testing::TempDir;
using vkcl::testing::WriteFile;

using Type = VKCLProfileHandler::EnbedFileType;

struct Kind {
  Type type;
  const char* signature;
};

constexpr Kind kKinds[] = {
    {static_cast<Type>(0), "QX58"}, {static_cast<Type>(1), "QX61"}, {static_cast<Type>(2), "QX62"},
    {static_cast<Type>(3), "QX63"}, {static_cast<Type>(4), "QX65"},
};

constexpr int kNoKinds[] = {5, -1, 6, 100, 0x7FFFFFFF, -0x7FFFFFFF - 1};

unsigned int Length(const Bytes& bytes) { return static_cast<unsigned int>(bytes.size()); }

/// A profile file with the given tags and a handler on it.
class OnFile {
 public:
  explicit OnFile(const std::vector<FileTag>& tags = {}) : OnFile(ProfileFile(tags)) {}
  explicit OnFile(const Bytes& image)
      : path(dir.Write("profile.icc", image)), handler(AFilePath(path), 4) {}

  Bytes File() const { return ReadFile(path); }
  std::optional<Bytes> Stored(const std::string& signature) const {
    return PayloadOf(File(), signature);
  }

  const TempDir dir;
  const std::string path;
  VKCLProfileHandler handler;
};

/// One tag of every kind, each with content of its own.
std::vector<FileTag> AllKinds() {
  std::vector<FileTag> tags;
  for (const Kind& kind : kKinds) {
    const auto number = static_cast<unsigned>(kind.type);
    tags.emplace_back(kind.signature, Pattern(number * 1000 + 1, number));
  }
  return tags;
}

/// A profile that the profiler library holds.
class HeldProfile {
 public:
  HeldProfile() : handle_(CLNewCLProfileRef()) {}
  explicit HeldProfile(const Bytes& bytes) : HeldProfile() {
    EXPECT_EQ(CLLoadProfileFromMemory(handle_, bytes.data(), Length(bytes)), 0);
  }
  ~HeldProfile() { CLFreeCLProfileRef(handle_); }
  HeldProfile(const HeldProfile&) = delete;
  HeldProfile& operator=(const HeldProfile&) = delete;
  operator void*() const { return handle_; }

 private:
  void* handle_;
};

class Link16 {
 public:
  explicit Link16(void* handle = CLNewCLLink16Ref()) : handle_(handle) {}
  ~Link16() { CLFreeCLLink16Ref(handle_); }
  Link16(const Link16&) = delete;
  Link16& operator=(const Link16&) = delete;
  operator void*() const { return handle_; }

 private:
  void* handle_;
};

Bytes Saved(void* link) {
  unsigned int size = 0;
  EXPECT_EQ(CLSaveLink16ToMemory(link, nullptr, 0, &size), 0);
  Bytes bytes(size);
  EXPECT_EQ(CLSaveLink16ToMemory(link, bytes.data(), size, &size), 0);
  EXPECT_EQ(size, bytes.size());
  return bytes;
}

/// A link of 16-bit tables from RGB to CMYK.
Bytes RgbToCmyk() {
  const HeldProfile source(ReadFile(RealProfile("srgb.icc")));
  const HeldProfile destination(ReadFile(RealProfile("default_cmyk.icc")));
  const Link16 link;
  EXPECT_EQ(CLBuildLink16(link, source, destination, 1), 0);
  return Saved(link);
}

/// A spread of RGB colours through a link, by Little CMS.
std::vector<std::uint16_t> Converted(const Bytes& linkBytes) {
  cmsHPROFILE link = cmsOpenProfileFromMem(linkBytes.data(), Length(linkBytes));
  EXPECT_NE(link, nullptr);
  cmsHPROFILE chain[] = {link};
  cmsHTRANSFORM transform =
      cmsCreateMultiprofileTransform(chain, 1, TYPE_RGB_16, TYPE_CMYK_16, 1, cmsFLAGS_NOOPTIMIZE);
  EXPECT_NE(transform, nullptr);
  std::vector<std::uint16_t> rgb;
  for (unsigned i = 0; i < 3000; ++i) rgb.push_back(static_cast<std::uint16_t>(i * 40503u));
  std::vector<std::uint16_t> cmyk(4000);
  if (transform != nullptr) {
    cmsDoTransform(transform, rgb.data(), cmyk.data(), 1000);
    cmsDeleteTransform(transform);
  }
  if (link != nullptr) cmsCloseProfile(link);
  return cmyk;
}

// Out of the profile.

TEST(EmbeddedFiles, ComeOutOfTheTagOfTheirKind) {
  const OnFile file(AllKinds());
  const Bytes before = file.File();
  const std::string to = file.dir.File("out");
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(kind.signature);
    EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kind.type), 1);
    const auto number = static_cast<unsigned>(kind.type);
    EXPECT_TRUE(SameBytes(ReadFile(to), Pattern(number * 1000 + 1, number)));
  }
  EXPECT_TRUE(SameBytes(file.File(), before));
}

TEST(EmbeddedFiles, ComeOutByteForByteWhateverTheyAre) {
  Bytes all;
  for (int i = 0; i < 256; ++i) all.push_back(static_cast<unsigned char>(i));
  for (const Bytes& content : {all, HexBytes("00"), HexBytes("0D0A1A00FF"), Pattern(65537, 1)}) {
    for (const Kind& kind : kKinds) {
      const OnFile file({{kind.signature, content}});
      const std::string to = file.dir.File("out");
      EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kind.type), 1);
      EXPECT_TRUE(SameBytes(ReadFile(to), content));
    }
  }
}

TEST(EmbeddedFiles, ReplaceAnExistingFile) {
  const OnFile file(AllKinds());
  for (const Kind& kind : kKinds) {
    const auto number = static_cast<unsigned>(kind.type);
    for (const std::size_t length : {0u, 3u, 20000u}) {
      const std::string to = file.dir.Write("out", Bytes(length, 'x'));
      EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kind.type), 1);
      EXPECT_TRUE(SameBytes(ReadFile(to), Pattern(number * 1000 + 1, number)));
    }
  }
}

TEST(EmbeddedFiles, OfAnUnknownKindAreRefusedAndWriteNothing) {
  const OnFile file(AllKinds());
  const std::string existing = file.dir.Write("existing", HexBytes("AB"));
  const std::string missing = file.dir.File("missing");
  for (const int type : kNoKinds) {
    EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(existing), static_cast<Type>(type)), 0);
    EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(missing), static_cast<Type>(type)), 0);
    EXPECT_EQ(ReadFile(existing), HexBytes("AB"));
    EXPECT_FALSE(std::filesystem::exists(missing));
  }
}

TEST(EmbeddedFiles, AreNotWrittenOverAFolder) {
  const OnFile file(AllKinds());
  const std::filesystem::path folder = file.dir.path() / "folder";
  std::filesystem::create_directory(folder);
  for (const bool empty : {true, false}) {
    if (!empty) WriteFile(folder / "kept", HexBytes("AB"));
    for (const Kind& kind : kKinds) {
      EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(folder.string()), kind.type), 0);
      EXPECT_TRUE(std::filesystem::is_directory(folder));
    }
    EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(folder.string()), static_cast<Type>(5)), 0);
    EXPECT_TRUE(std::filesystem::is_directory(folder));
  }
  EXPECT_EQ(ReadFile(folder / "kept"), HexBytes("AB"));
}

TEST(EmbeddedFiles, ThatAreNotThereLeaveTheDestination) {
  for (const Kind& kind : kKinds) {
    Bytes cut = ProfileFile({{kind.signature, Pattern(40, 1)}});
    cut.resize(cut.size() - 1);
    const Bytes images[] = {
        ProfileFile({{"QX51", Pattern(9, 1)}}),                  // no such tag
        ProfileFile({{kind.signature, {}}}),                     // nothing in it
        ProfileFile({{kind.signature, Pattern(9, 1), "text"}}),  // not 'data'
        cut,                                                     // not wholly in the file
        Bytes{1, 2, 3},                                          // no profile
    };
    for (const Bytes& image : images) {
      const OnFile file(image);
      const std::string existing = file.dir.Write("existing", HexBytes("AB"));
      const std::string missing = file.dir.File("missing");
      EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(existing), kind.type), 0);
      EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(missing), kind.type), 0);
      EXPECT_EQ(ReadFile(existing), HexBytes("AB"));
      EXPECT_FALSE(std::filesystem::exists(missing));
    }
  }
}

TEST(EmbeddedFiles, AreNotWrittenOverTheProfileItself) {
  const OnFile file(AllKinds());
  const Bytes before = file.File();
  std::filesystem::create_directory(file.dir.path() / "sub");
  std::filesystem::create_symlink(file.path, file.dir.path() / "symbolic");
  std::filesystem::create_hard_link(file.path, file.dir.path() / "hard");
  for (const std::string& to :
       {file.path, file.dir.File("sub/../profile.icc"), file.dir.File("symbolic"),
        file.dir.File("hard"), std::filesystem::relative(file.path).string()}) {
    for (const Kind& kind : kKinds) {
      EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kind.type), 0) << to;
      ASSERT_TRUE(std::filesystem::exists(file.path)) << to;
      ASSERT_TRUE(SameBytes(file.File(), before)) << to;
      ASSERT_TRUE(std::filesystem::exists(to)) << to;
    }
  }
}

TEST(EmbeddedFiles, NeedAPlaceForTheFile) {
  const OnFile file(AllKinds());
  for (const std::string& to : {file.dir.File("missing/out"), file.path + "/out", std::string()}) {
    EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kKinds[1].type), 0) << to;
  }
  EXPECT_FALSE(std::filesystem::exists(file.dir.path() / "missing"));
}

#if !defined(_WIN32)
// Of what is removed to make room: whoever may do so would lose a device for good.
TEST(EmbeddedFiles, AreNotPutInThePlaceOfAPipe) {
  const OnFile file(AllKinds());
  const std::string pipe = file.dir.File("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::filesystem::create_symlink(pipe, file.dir.path() / "link");
  for (const std::string& to : {pipe, file.dir.File("link")}) {
    for (const Kind& kind : kKinds) {
      EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kind.type), 0) << to;
    }
    EXPECT_TRUE(std::filesystem::is_fifo(to));
  }
  EXPECT_TRUE(std::filesystem::is_symlink(file.dir.path() / "link"));
}
#endif

/// The places, in the order of the calls that can fail, of the first call of `kind` behind the
/// first removal.
std::size_t CallBehindRemoval(const CallLog& log, CallKind kind) {
  std::size_t index = 0;
  bool removed = false;
  for (const CallKind call : log.Kinds()) {
    if (call == CallKind::Look) continue;  // a look cannot be made to fail
    if (removed && call == kind) return index;
    removed = removed || call == CallKind::Remove;
    ++index;
  }
  ADD_FAILURE() << "there was no such call";
  return index;
}

TEST(EmbeddedFiles, ThatCannotBeCreatedHaveRemovedTheOldFile) {
  const OnFile file(AllKinds());
  const std::string to = file.dir.Write("out", HexBytes("AB"));
  std::size_t open = 0;
  {
    const CallLog log;
    ASSERT_EQ(file.handler.GetEnbededFile(AFilePath(to), kKinds[2].type), 1);
    open = CallBehindRemoval(log, CallKind::Open);
  }
  WriteFile(to, HexBytes("AB"));
  {
    const FaultAt at(open, Fault::Error);
    EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kKinds[2].type), 0);
    EXPECT_TRUE(FaultAt::Reached());
  }
  EXPECT_FALSE(std::filesystem::exists(to));
}

TEST(EmbeddedFiles, ReportEveryFailureOfTheSystem) {
  const int handles = OpenHandles();
  for (const Fault fault :
       {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
    int failures = 0;
    bool reached = true;
    for (std::size_t which = 0; reached && which < 100; ++which) {
      SCOPED_TRACE(::testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      const OnFile file(AllKinds());
      const Bytes before = file.File();
      const std::string to = file.dir.Write("out", HexBytes("AB"));
      int result = -1;
      {
        const FaultAt at(which, fault);
        result = file.handler.GetEnbededFile(AFilePath(to), kKinds[3].type);
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(OpenHandles(), handles);
      EXPECT_TRUE(SameBytes(file.File(), before));
      if (result == 1) {
        EXPECT_TRUE(SameBytes(ReadFile(to), Pattern(3001, 3)));
      } else {
        ++failures;
      }
    }
    EXPECT_FALSE(reached);
    const bool harmless = fault == Fault::Short || fault == Fault::Interrupted;
    EXPECT_EQ(failures == 0, harmless) << "fault " << static_cast<int>(fault);
  }
}

// Into the profile.

TEST(EmbeddedProfiles, GoIntoTheTagOfTheirKindByteForByte) {
  const Bytes bytes = ReadFile(RealProfile("srgb.icc"));
  const HeldProfile held(bytes);
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(kind.signature);
    OnFile file({{"desc", HexBytes("DD")}});
    EXPECT_EQ(file.handler.WriteCLICCProfieRef(held, kind.type), 1);
    EXPECT_TRUE(
        SameBytes(file.File(), ProfileFile({{"desc", HexBytes("DD")}, {kind.signature, bytes}})));
  }
}

TEST(EmbeddedProfiles, ReplaceWhatTheTagHeld) {
  const Bytes bytes = ReadFile(RealProfile("ps_gray.icc"));
  const HeldProfile held(bytes);
  for (const Kind& kind : kKinds) {
    for (const std::size_t length : {std::size_t{0}, bytes.size(), std::size_t{3000}}) {
      OnFile file({{"desc", HexBytes("DD")},
                   {kind.signature, Pattern(length, 1)},
                   {"QX53", HexBytes("AABBCC")}});
      EXPECT_EQ(file.handler.WriteCLICCProfieRef(held, kind.type), 1);
      EXPECT_TRUE(SameBytes(file.File(), ProfileFile({{"desc", HexBytes("DD")},
                                                      {kind.signature, bytes},
                                                      {"QX53", HexBytes("AABBCC")}})));
    }
  }
}

TEST(EmbeddedProfiles, OfAnUnknownKindAreRefused) {
  const HeldProfile held(ReadFile(RealProfile("srgb.icc")));
  OnFile file;
  const Bytes before = file.File();
  for (const int type : kNoKinds) {
    EXPECT_EQ(file.handler.WriteCLICCProfieRef(held, static_cast<Type>(type)), 0);
    EXPECT_TRUE(SameBytes(file.File(), before));
  }
}

TEST(EmbeddedProfiles, ThatTheProfilerDoesNotGiveAreRefused) {
  OnFile file({{"QX61", HexBytes("01")}});
  const Bytes before = file.File();
  const HeldProfile empty;
  const Link16 link;
  for (const Kind& kind : kKinds) {
    EXPECT_EQ(file.handler.WriteCLICCProfieRef(nullptr, kind.type), 0);
    EXPECT_EQ(file.handler.WriteCLICCProfieRef(empty, kind.type), 0);
    EXPECT_EQ(file.handler.WriteCLICCProfieRef(link, kind.type), 0);
    EXPECT_TRUE(SameBytes(file.File(), before));
  }
}

TEST(EmbeddedProfiles, CreateAProfileWhereThereIsNone) {
  const Bytes bytes = ReadFile(RealProfile("srgb.icc"));
  const TempDir dir;
  const std::string path = dir.File("new.icc");
  VKCLProfileHandler handler(AFilePath(path), 4);
  EXPECT_EQ(handler.WriteCLICCProfieRef(HeldProfile(bytes), kKinds[1].type), 1);
  EXPECT_EQ(SignaturesOf(ReadFile(path)), std::vector<std::string>{"QX61"});
  EXPECT_TRUE(SameBytes(PayloadOf(ReadFile(path), "QX61").value_or(Bytes()), bytes));
}

TEST(EmbeddedProfiles, ThatCannotBeWrittenLeaveTheFileAsItWas) {
  const HeldProfile held(ReadFile(RealProfile("srgb.icc")));
  for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
    int failures = 0;
    bool reached = true;
    for (std::size_t which = 0; reached && which < 100; ++which) {
      OnFile file({{"QX61", Pattern(9, 1)}, {"QX53", Pattern(9, 2)}});
      const Bytes before = file.File();
      int result = -1;
      {
        const FaultAt at(which, fault);
        result = file.handler.WriteCLICCProfieRef(held, kKinds[1].type);
        reached = FaultAt::Reached();
      }
      if (result == 1) continue;
      ++failures;
      EXPECT_TRUE(SameBytes(file.File(), before));
    }
    EXPECT_FALSE(reached);
    EXPECT_GT(failures, 0);
  }
}

TEST(EmbeddedProfiles, EveryRealOneComesOutAsItWentIn) {
  OnFile file;
  const std::string to = file.dir.File("out.icc");
  std::size_t next = 0;
  for (const auto& path : RealProfiles()) {
    SCOPED_TRACE(path);
    const Kind& kind = kKinds[next++ % std::size(kKinds)];
    const Bytes bytes = ReadFile(path);
    ASSERT_EQ(file.handler.WriteCLICCProfieRef(HeldProfile(bytes), kind.type), 1);
    ASSERT_EQ(file.handler.GetEnbededFile(AFilePath(to), kind.type), 1);
    EXPECT_TRUE(SameBytes(ReadFile(to), bytes));
  }
  EXPECT_GT(next, std::size(kKinds));
}

TEST(EmbeddedProfiles, ConvertAsBefore) {
  OnFile file;
  const std::string to = file.dir.File("out.icc");
  const auto path = RealProfile("default_cmyk.icc");
  ASSERT_EQ(file.handler.WriteCLICCProfieRef(HeldProfile(ReadFile(path)), kKinds[4].type), 1);
  ASSERT_EQ(file.handler.GetEnbededFile(AFilePath(to), kKinds[4].type), 1);
  ASSERT_FALSE(ConvertWithLcms(to).empty());
  EXPECT_EQ(ConvertWithLcms(to), ConvertWithLcms(path));
}

TEST(EmbeddedLinks, LoadAndConvertAsBefore) {
  const Bytes built = RgbToCmyk();
  OnFile file;
  ASSERT_EQ(file.handler.WriteCLICCProfieRef(HeldProfile(built), kKinds[2].type), 1);
  EXPECT_TRUE(SameBytes(file.Stored("QX62").value_or(Bytes()), built));
  const std::string to = file.dir.File("out.icc");
  ASSERT_EQ(file.handler.GetEnbededFile(AFilePath(to), kKinds[2].type), 1);
  const Bytes extracted = ReadFile(to);
  EXPECT_TRUE(SameBytes(extracted, built));
  const Link16 link;
  ASSERT_EQ(CLLoadLink16FromMemory(link, extracted.data(), Length(extracted)), 0);
  const std::vector<std::uint16_t> colours = Converted(Saved(link));
  EXPECT_EQ(colours, Converted(built));
  // The colours are not all alike, or anything would agree.
  EXPECT_GT(*std::max_element(colours.begin(), colours.end()), 60000);
  EXPECT_LT(*std::min_element(colours.begin(), colours.end()), 100);
}

TEST(EmbeddedTrc, SharesItsTagWithTheFirstKind) {
  const Bytes profile = ReadFile(RealProfile("ps_gray.icc"));
  OnFile file;
  const std::string trc = file.dir.Write("curve.trc", HexBytes("0A0D00FF1A"));
  const std::string to = file.dir.File("out");
  EXPECT_EQ(file.handler.WriteTrcTag(AFilePath(trc)), 1);
  EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kKinds[0].type), 1);
  EXPECT_EQ(ReadFile(to), HexBytes("0A0D00FF1A"));

  EXPECT_EQ(file.handler.WriteCLICCProfieRef(HeldProfile(profile), kKinds[0].type), 1);
  EXPECT_EQ(SignaturesOf(file.File()), std::vector<std::string>{"QX58"});
  EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kKinds[0].type), 1);
  EXPECT_TRUE(SameBytes(ReadFile(to), profile));

  EXPECT_EQ(file.handler.WriteTrcTag(AFilePath(trc)), 1);
  EXPECT_TRUE(SameBytes(file.File(), ProfileFile({{"QX58", HexBytes("0A0D00FF1A")}})));
}

TEST(EmbeddedTrc, ThatIsEmptyIsStoredAndNotGivenBack) {
  OnFile file;
  const std::string trc = file.dir.Write("empty.trc", {});
  const std::string to = file.dir.Write("out", HexBytes("AB"));
  EXPECT_EQ(file.handler.WriteTrcTag(AFilePath(trc)), 1);
  EXPECT_EQ(file.Stored("QX58"), Bytes());
  EXPECT_EQ(file.handler.GetEnbededFile(AFilePath(to), kKinds[0].type), 0);
  EXPECT_EQ(ReadFile(to), HexBytes("AB"));
}

// Copies of links.

TEST(CopyOfALink, OfNothingIsNothing) {
  unsigned int size = 4711;
  EXPECT_EQ(CopyCLLinkRef(nullptr, &size), nullptr);
  EXPECT_EQ(size, 4711u);
  EXPECT_EQ(CopyCLLinkRef(nullptr, nullptr), nullptr);
}

TEST(CopyOfALink, HasTheBytesOfTheLink) {
  const Bytes built = RgbToCmyk();
  const Link16 link;
  ASSERT_EQ(CLLoadLink16FromMemory(link, built.data(), Length(built)), 0);
  unsigned int size = 0;
  const Link16 copy(CopyCLLinkRef(link, &size));
  ASSERT_NE(static_cast<void*>(copy), nullptr);
  EXPECT_NE(static_cast<void*>(copy), static_cast<void*>(link));
  EXPECT_EQ(size, built.size());
  EXPECT_TRUE(SameBytes(Saved(copy), built));
  EXPECT_TRUE(SameBytes(Saved(link), built));
}

TEST(CopyOfALink, ConvertsAsBeforeAlsoWhenTheLinkIsGone) {
  const Bytes built = RgbToCmyk();
  void* copied = nullptr;
  {
    const Link16 link;
    ASSERT_EQ(CLLoadLink16FromMemory(link, built.data(), Length(built)), 0);
    copied = CopyCLLinkRef(link, nullptr);
    ASSERT_NE(copied, nullptr);
    ASSERT_EQ(CLLoadLink16FromMemory(link, nullptr, 0), 0);
  }
  const Link16 copy(copied);
  EXPECT_EQ(Converted(Saved(copy)), Converted(built));
}

TEST(CopyOfALink, OfAnEmptyLinkIsAnEmptyLink) {
  const Link16 link;
  unsigned int size = 4711;
  const Link16 copy(CopyCLLinkRef(link, &size));
  ASSERT_NE(static_cast<void*>(copy), nullptr);
  EXPECT_EQ(size, 0u);
  EXPECT_TRUE(Saved(copy).empty());
  const Bytes built = RgbToCmyk();
  EXPECT_EQ(CLLoadLink16FromMemory(copy, built.data(), Length(built)), 0);
  EXPECT_TRUE(Saved(link).empty());
}

TEST(CopyOfALink, RefusesHandlesOfAnotherKind) {
  const Bytes built = RgbToCmyk();
  void* eight = CLNewCLLink8Ref();
  ASSERT_NE(eight, nullptr);
  unsigned int size = 4711;
  EXPECT_EQ(CopyCLLinkRef(eight, &size), nullptr);
  EXPECT_EQ(CLLoadLink8FromMemory(eight, built.data(), Length(built)), 0);
  EXPECT_EQ(CopyCLLinkRef(eight, &size), nullptr);
  EXPECT_EQ(size, 4711u);
  CLFreeCLLink8Ref(eight);
  EXPECT_EQ(CopyCLLinkRef(HeldProfile(built), nullptr), nullptr);
}

TEST(CopyOfALink, ThatCannotBeLoadedIsReleasedAndTellsItsSize) {
  const Bytes built = RgbToCmyk();
  const Link16 link;
  ASSERT_EQ(CLLoadLink16FromMemory(link, built.data(), Length(built)), 0);
  const int held = HeldLinks16();
  const RefusedProfilerCall refused(ProfilerCall::LoadLink16);
  unsigned int size = 4711;
  EXPECT_EQ(CopyCLLinkRef(link, &size), nullptr);
  EXPECT_EQ(size, built.size());
  EXPECT_EQ(HeldLinks16(), held);
}

TEST(CopyOfALink, OfALinkThatTellsNoSizeOrHasNoPlaceIsNothing) {
  const Link16 link;
  const int held = HeldLinks16();
  unsigned int size = 4711;
  for (const ProfilerCall call : {ProfilerCall::SaveLink16, ProfilerCall::NewLink16}) {
    const RefusedProfilerCall refused(call);
    EXPECT_EQ(CopyCLLinkRef(link, &size), nullptr);
    EXPECT_EQ(size, 4711u);
    EXPECT_EQ(HeldLinks16(), held);
  }
}

// Deliberate: the new link of a source that cannot be saved is left to itself.
TEST(CopyOfALink, OfASourceThatCannotBeSavedLeavesTheNewLink) {
  const Link16 link;
  const int held = HeldLinks16();
  unsigned int size = 4711;
  {
    const RefusedProfilerCall refused(ProfilerCall::SaveLink16, 1);
    EXPECT_EQ(CopyCLLinkRef(link, &size), nullptr);
  }
  EXPECT_EQ(size, 4711u);
  ASSERT_EQ(HeldLinks16(), held + 1);
  CLFreeCLLink16Ref(vkcl::testing::LastLink16());
}

TEST(EmbeddedProfile, ThatTheProfilerRefusesToWriteChangesNothing) {
  const HeldProfile held(RgbToCmyk());
  for (const int which : {0, 1}) {
    OnFile file(AllKinds());
    const Bytes before = file.File();
    const RefusedProfilerCall refused(ProfilerCall::WriteProfile, which);
    EXPECT_EQ(file.handler.WriteCLICCProfieRef(held, VKCLProfileHandler::EnbedFile1), 0);
    EXPECT_TRUE(SameBytes(file.File(), before));
  }
}

// Text of the host as UTF-8.

TEST(HostTextAsUtf8, OfAsciiIsTheSameText) {
  std::string ascii;
  for (char c = 1; c < 127; ++c) ascii += c;
  ascii += '\x7F';
  EXPECT_EQ(VKCLMultiByteToUTF8(AString(ascii)).str(), ascii);
}

TEST(HostTextAsUtf8, OfNothingIsNothing) {
  EXPECT_EQ(VKCLMultiByteToUTF8(AString()).length(), 0u);
  EXPECT_EQ(VKCLMultiByteToUTF8(AString("")).length(), 0u);
}

TEST(HostTextAsUtf8, GoesByTheLengthNotByATerminator) {
  const std::string text("a\0b\0\0c\0", 7);
  EXPECT_EQ(VKCLMultiByteToUTF8(AString(text)).str(), text);
  EXPECT_EQ(VKCLMultiByteToUTF8(AString("\0", 1)).str(), std::string(1, '\0'));
}

TEST(HostTextAsUtf8, OfALongTextIsTheWholeText) {
  const std::string text(100001, 'x');
  EXPECT_EQ(VKCLMultiByteToUTF8(AString(text)).str(), text);
}

TEST(HostTextAsUtf8, IsTextWhateverTheBytes) {
  // Every single byte gives well-formed UTF-8 in every locale, here the one without any text
  // beyond ASCII.
  for (int byte = 128; byte < 256; ++byte) {
    const AString utf8 = VKCLMultiByteToUTF8(AString(std::string(1, static_cast<char>(byte))));
    EXPECT_GE(utf8.length(), 1u) << byte;
    EXPECT_NE(utf8.str(), std::string(1, static_cast<char>(byte))) << byte;
  }
}

#if defined(__linux__)

/// Texts converted under a locale of the system, or of one made for this, in a process of its
/// own: the locale belongs to the whole process, and the other tests shall not see it.
class Locale {
 public:
  /// A locale with `charmap` as its character set, made from that of `language`.
  Locale(const std::string& language, const std::string& charmap) {
    const std::string folder = dir_.File("made");
    const std::string command =
        "localedef -c -i " + language + " -f " + charmap + " '" + folder + "' >/dev/null 2>&1";
    const int ignored = std::system(command.c_str());  // warnings make it fail, too
    static_cast<void>(ignored);
    made_ = std::filesystem::exists(folder + "/LC_CTYPE");
  }

  bool works() const { return made_; }

  /// What `run` gives in this locale; "failed" in its place when there is none.
  std::string Run(const std::function<std::string()>& run) const {
    int ends[2] = {};
    if (::pipe(ends) != 0) return "failed";
    const pid_t child = ::fork();
    if (child == 0) {
      ::setenv("LOCPATH", dir_.path().c_str(), 1);
      ::setenv("LC_ALL", "made", 1);
      const std::string result = std::setlocale(LC_ALL, "") != nullptr ? run() : "failed";
      const bool told =
          ::write(ends[1], result.data(), result.size()) == static_cast<ssize_t>(result.size());
      vkcl::testing::SaveCounts();
      ::_exit(told ? 0 : 1);
    }
    ::close(ends[1]);
    std::string result;
    char buffer[4096];
    for (ssize_t n = 0; (n = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
      result.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    return status == 0 ? result : "failed";
  }

  std::string Utf8(const std::string& text) const {
    return Run([&text] { return VKCLMultiByteToUTF8(AString(text)).str(); });
  }

 private:
  TempDir dir_;
  bool made_ = false;
};

const std::string kReplacement = "\xEF\xBF\xBD";  // U+FFFD

/// `text` without replacement characters.
std::string WithoutReplacements(std::string text) {
  for (std::size_t at = 0; (at = text.find(kReplacement)) != std::string::npos;) {
    text.erase(at, kReplacement.size());
  }
  return text;
}

TEST(HostTextAsUtf8, FromLatin1) {
  const Locale latin1("de_DE", "ISO-8859-1");
  if (!latin1.works()) GTEST_SKIP() << "localedef makes no such locale here";
  EXPECT_EQ(latin1.Utf8("Gr\xFC\xDF"
                        "e"),
            "Gr\xC3\xBC\xC3\x9F"
            "e");
  EXPECT_EQ(latin1.Utf8("\xFF\xA0\xE9"), "\xC3\xBF\xC2\xA0\xC3\xA9");
  EXPECT_EQ(latin1.Utf8(std::string("\xE9\0\xE8", 3)), std::string("\xC3\xA9\0\xC3\xA8", 5));
  EXPECT_EQ(latin1.Utf8("plain"), "plain");
  EXPECT_EQ(latin1.Utf8(""), "");
  // What would be UTF-8 is two characters here.
  EXPECT_EQ(latin1.Utf8("\xC3\xBC"), "\xC3\x83\xC2\xBC");
}

TEST(HostTextAsUtf8, FromACharsetWithTheEuroSign) {
  const Locale latin9("de_DE", "ISO-8859-15");
  if (!latin9.works()) GTEST_SKIP() << "localedef makes no such locale here";
  EXPECT_EQ(latin9.Utf8("1 \xA4"), "1 \xE2\x82\xAC");
}

TEST(HostTextAsUtf8, FromACharsetOfSeveralBytesACharacter) {
  const Locale eucJp("ja_JP", "EUC-JP");
  if (!eucJp.works()) GTEST_SKIP() << "localedef makes no such locale here";
  EXPECT_EQ(eucJp.Utf8("a\xC6\xFC\xCB\xDC"
                       "b"),
            "a\xE6\x97\xA5\xE6\x9C\xAC"
            "b");
  // A character of which the second byte is missing.
  const std::string cut = eucJp.Utf8("ab\xC6");
  EXPECT_NE(cut.find(kReplacement), std::string::npos);
  EXPECT_EQ(WithoutReplacements(cut), "ab");
}

TEST(HostTextAsUtf8, FromUtf8IsTheSameText) {
  const Locale utf8("de_DE", "UTF-8");
  if (!utf8.works()) GTEST_SKIP() << "localedef makes no such locale here";
  for (const char* const text : {"", "plain",
                                 "Gr\xC3\xBC\xC3\x9F"
                                 "e",
                                 "\xE5\x8D\xB0\xE5\x88\xB7", "\xF0\x9F\x8E\xA8", "e\xCC\x81",
                                 "\xEF\xBF\xBD", "\xEF\xBB\xBFx"}) {
    EXPECT_EQ(utf8.Utf8(text), text);
  }
  EXPECT_EQ(utf8.Utf8(std::string("\xC3\xBC\0\xC3\xBC", 5)), std::string("\xC3\xBC\0\xC3\xBC", 5));
}

TEST(HostTextAsUtf8, PutsAReplacementForAByteThatIsNoText) {
  const Locale utf8("de_DE", "UTF-8");
  if (!utf8.works()) GTEST_SKIP() << "localedef makes no such locale here";
  EXPECT_EQ(utf8.Utf8("a\xFF"
                      "b"),
            "a" + kReplacement + "b");
  EXPECT_EQ(utf8.Utf8("\x80"), kReplacement);
  EXPECT_EQ(utf8.Utf8("a\xC3"), "a" + kReplacement);
  EXPECT_EQ(utf8.Utf8("Gr\xFC\xDF"
                      "e"),
            "Gr" + kReplacement + kReplacement + "e");
  EXPECT_EQ(utf8.Utf8("\xFE\xC3\xBC"), kReplacement + "\xC3\xBC");
  EXPECT_EQ(utf8.Utf8(std::string("\xFF\0x", 3)), kReplacement + std::string("\0x", 2));
}

/// How many replacements stand for such bytes is the converter's choice, but nothing else does, and
/// the text around them stays.
void ExpectReplaced(const Locale& locale, const std::string& bad) {
  for (const char* const tail : {"", "z", "\xC3\xBC"}) {
    const std::string result = locale.Utf8("a" + bad + tail);
    EXPECT_NE(result.find(kReplacement), std::string::npos);
    EXPECT_EQ(WithoutReplacements(result), std::string("a") + tail);
  }
}

TEST(HostTextAsUtf8, PutsReplacementsForSequencesThatAreNoText) {
  const Locale utf8("de_DE", "UTF-8");
  if (!utf8.works()) GTEST_SKIP() << "localedef makes no such locale here";
  // Cut short, overlong, halves of a surrogate pair.
  for (const char* const bad : {"\xE6\x97", "\xF0\x9F\x8E", "\xC0\xAF", "\xE0\x80\xAF",
                                "\xF0\x80\x80\xAF", "\xED\xA0\x80", "\xED\xBF\xBF"}) {
    ExpectReplaced(utf8, bad);
  }
}

TEST(HostTextAsUtf8, PutsReplacementsForWhatLiesBeyondTheLastCharacter) {
  // U+110000 and more, which some converters take for text.
  const Locale utf8("de_DE", "UTF-8");
  if (!utf8.works()) GTEST_SKIP() << "localedef makes no such locale here";
  for (const char* const bad : {"\xF4\x90\x80\x80", "\xF7\xBF\xBF\xBF", "\xF8\x88\x80\x80\x80",
                                "\xFC\x84\x80\x80\x80\x80"}) {
    ExpectReplaced(utf8, bad);
  }
}

/// "InkTotal" of the profile whose name is these bytes; "none" when its options cannot be read.
std::string InkTotalOf(const std::string& name) {
  const TempDir dir;
  const std::string plain = dir.Write("plain.icc", ReadFile(RealProfile("srgb.icc")));
  void* profiler = CLNewCLProfilerRef();
  void* file = CLNewFileSpecRef();
  const bool exported = CLName2FileSpec(file, plain.c_str()) == 0 &&
                        CLSetProfilerOption(profiler, "InkTotal", "310") == 0 &&
                        CLExportProfilerOptions(profiler, file) == 0;
  CLFreeFileSpecRef(file);
  CLFreeCLProfilerRef(profiler);
  std::error_code error;
  std::filesystem::rename(plain, dir.path() / name, error);
  if (!exported || error) return "failed";
  VKCLProfileOptions options;
  const VKCLProfileHandler handler(AFilePath(dir.File(name)), 0);
  return handler.GetProfileOptions(options) == 1 ? options.InkTotal.str() : "none";
}

TEST(HostTextAsUtf8, NamesAProfileToTheProfiler) {
  const Locale utf8("de_DE", "UTF-8");
  if (!utf8.works()) GTEST_SKIP() << "localedef makes no such locale here";
  EXPECT_EQ(utf8.Run([] {
    return InkTotalOf(
        "pr\xC3\xBC"
        "f \xE5\x8D\xB0.icc");
  }),
            "310");
}

// Bytes that would be UTF-8 are two characters of the host's, and reach the file of that name.
TEST(HostTextAsUtf8, NamesAProfileOfALatin1HostToTheProfiler) {
  const Locale latin1("de_DE", "ISO-8859-1");
  if (!latin1.works()) GTEST_SKIP() << "localedef makes no such locale here";
  EXPECT_EQ(latin1.Run([] {
    const std::string total = InkTotalOf("\xC3\xBC.icc");
    const std::string& named = vkcl::testing::LastNamedPath();
    return total + ' ' + named.substr(named.rfind('/') + 1);
  }),
            "310 \xC3\x83\xC2\xBC.icc");
}

TEST(HostTextAsUtf8, NamesTheFullPathToTheProfiler) {
  const TempDir dir;
  std::filesystem::create_directory(dir.path() / "a");
  const std::string path = dir.Write("p.icc", ReadFile(RealProfile("srgb.icc")));
  VKCLProfileOptions options;
  VKCLProfileHandler(AFilePath(dir.File("a/../p.icc")), 0).GetProfileOptions(options);
  EXPECT_EQ(vkcl::testing::LastNamedPath(), path);
  VKCLProfileHandler(AFilePath("absent.icc"), 3).GetProfileOptions(options);
  EXPECT_EQ(vkcl::testing::LastNamedPath(),
            (std::filesystem::current_path() / "absent.icc").string());
}

TEST(HostTextAsUtf8, LeavesTheLocaleAlone) {
  const Locale latin1("de_DE", "ISO-8859-1");
  if (!latin1.works()) GTEST_SKIP() << "localedef makes no such locale here";
  EXPECT_EQ(latin1.Run([] {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const AString text = VKCLMultiByteToUTF8(AString("\xFC"));
    return std::setlocale(LC_ALL, nullptr) == before && text.length() == 2 ? "same" : "changed";
  }),
            "same");
}

#endif

// A large file, in and out.

#if VKCL_MEMORY_IS_MEASURABLE

using vkcl::testing::PeakGrowth;

constexpr long kLarge = 64l << 20;
constexpr long kLittle = 1l << 20;  // tables, stacks, small blocks

/// A profile with one tag that makes it as large as that.
Bytes LargeProfile() {
  Bytes content(static_cast<std::size_t>(kLarge) - 156);
  std::uint32_t seed = 1;
  for (unsigned char& byte : content) {
    seed = seed * 1664525u + 1013904223u;
    byte = static_cast<unsigned char>(seed >> 24);
  }
  return ProfileFile({{"abcd", content}});
}

bool SameContent(const std::string& a, const std::string& b) {
  std::ifstream first(a, std::ios::binary);
  std::ifstream second(b, std::ios::binary);
  std::vector<char> blockA(1 << 20);
  std::vector<char> blockB(1 << 20);
  do {
    first.read(blockA.data(), 1 << 20);
    second.read(blockB.data(), 1 << 20);
    if (first.gcount() != second.gcount()) return false;
    if (!std::equal(blockA.begin(), blockA.begin() + first.gcount(), blockB.begin())) return false;
  } while (first.gcount() > 0);
  return first.eof() && second.eof();
}

TEST(EmbeddedMemory, IsMeasured) {
  const auto use = [](long length) {
    return PeakGrowth([length] {
      const std::vector<char> block(static_cast<std::size_t>(length), 'x');
      return !block.empty() && block[block.size() / 2] == 'x';
    });
  };
  EXPECT_NEAR(static_cast<double>(use(kLarge)), kLarge, 4 << 20);
  EXPECT_NEAR(static_cast<double>(use(2 * kLarge)), 2 * kLarge, 4 << 20);
}

TEST(EmbeddedMemory, ALargeFileGoesInAndOutBelowTwiceItsSize) {
  const OnFile file;
  const std::string from = file.dir.Write("from", LargeProfile());
  const std::string to = file.dir.File("to");
  const long in = PeakGrowth([&] {
    VKCLProfileHandler handler(AFilePath(file.path), 0);
    return handler.WriteTrcTag(AFilePath(from)) == 1;
  });
  EXPECT_GE(in, 0);
  EXPECT_LT(in, 2 * kLarge);
  const long out = PeakGrowth([&] {
    const VKCLProfileHandler handler(AFilePath(file.path), 0);
    return handler.GetEnbededFile(AFilePath(to), kKinds[0].type) == 1;
  });
  EXPECT_GE(out, 0);
  EXPECT_LT(out, 2 * kLarge);
  EXPECT_EQ(std::filesystem::file_size(to), static_cast<std::uintmax_t>(kLarge));
  EXPECT_TRUE(SameContent(to, from));
  // In the place of a file of the same length, which is held so that it can be put back.
  const long again = PeakGrowth([&] {
    VKCLProfileHandler handler(AFilePath(file.path), 0);
    return handler.WriteTrcTag(AFilePath(from)) == 1;
  });
  EXPECT_GE(again, 0);
  EXPECT_LT(again, 2 * kLarge + kLittle);
}

TEST(EmbeddedMemory, ALargeProfileGoesInWithOneCopyBesideTheHeldOne) {
  OnFile file;
  const std::string from = file.dir.Write("from", LargeProfile());
  const HeldProfile held;
  void* spec = CLNewFileSpecRef();
  ASSERT_EQ(CLName2FileSpec(spec, from.c_str()), 0);
  ASSERT_EQ(CLLoadProfileFromFile(held, spec), 0);
  CLFreeFileSpecRef(spec);
  const long in =
      PeakGrowth([&] { return file.handler.WriteCLICCProfieRef(held, kKinds[3].type) == 1; });
  EXPECT_GE(in, 0);
  EXPECT_LT(in, kLarge + kLarge / 4);
  const std::string to = file.dir.File("to");
  const VKCLProfileHandler handler(AFilePath(file.path), 0);
  ASSERT_EQ(handler.GetEnbededFile(AFilePath(to), kKinds[3].type), 1);
  EXPECT_TRUE(SameContent(to, from));
}

#endif

}  // namespace
