// What operations cost exactly: calls of the system, bytes that are read and written, and memory.
// The plain reads and writes of one tag are counted in SystemCallsTest.cpp.
#include <algorithm>
#include <filesystem>
#include <functional>

#include "edit/ProfileEdit.h"
#include "handler/VKCLProfileHandler.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "support/ImageBuilder.h"
#include "support/PeakMemory.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::DataTag;
using vkcl::testing::Head;
using vkcl::testing::ImageEntry;
using vkcl::testing::ImageTag;
using vkcl::testing::Pattern;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::ReadFile;
using vkcl::testing::Sig;
using vkcl::testing::TableOf;
using vkcl::testing::TempDir;
using vkcl::testing::WriteFile;

using Kinds = std::vector<CallKind>;

ImageTag Data(std::uint32_t sig, std::size_t length) {
  return {sig, DataTag(Pattern(length, sig))};
}

Bytes Image(const std::vector<ImageTag>& tags) { return ProfileImage(ProfileHeader(), tags); }

// Header and count are 132 bytes and a table entry 12: the data of three tags begin at 168. A tag
// is 12 bytes longer than its payload.
const std::vector<ImageTag> kOwn = {Data(Sig("QX51"), 140), Data(Sig("QX53"), 1068),
                                    Data(Sig("B2A0"), 5000)};
constexpr std::uint64_t kOwnHead = 168;
constexpr std::uint64_t kOwnLength = kOwnHead + 152 + 1080 + 5012;

TEST(Costs, ClassifyingReadsTheStartOfTheFileAndTheColorParameters) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", Image(kOwn));
  const CallLog log;
  const VKCLProfileHandler handler(AFilePath(path), 0);
  VKCLProfileFinishedState byTags = FinishedNone;
  VKCLProfileFinishedState byStatus = FinishedNone;
  EXPECT_EQ(handler.IsOutputICCFile(), 1);
  EXPECT_EQ(handler.IsVKCLProfile(), 1);
  EXPECT_EQ(handler.GetVKCLProfileFinishedState(byTags, 1), 1);
  // The table decides all of that: the start of the file, which is longer than 4,096 bytes.
  EXPECT_EQ(log.Kinds(),
            (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), 4096u);
  // The status stands in the colour parameters: a read of one tag.
  EXPECT_EQ(handler.GetVKCLProfileFinishedState(byStatus, 0), 1);
  EXPECT_EQ(log.calls().size(), 4u + 3u);
  EXPECT_EQ(log.Bytes(CallKind::Read), 4096u + 12 + 1068);
}

TEST(Costs, AnotherSizeOfTheFirstTagMovesEverythingOnce) {
  const TempDir dir;
  VKCLProfile profile(AFilePath(dir.Write("p.icc", Image(kOwn))), 0);
  const Bytes payload(1140, 7);
  const CallLog log;
  ASSERT_EQ(profile.WriteVKPrivateTag(QX51, payload.data(), 1140), 1);
  // Head, the old tag and what follows lie one behind the other: one read of all. What lies behind
  // the old end is written first, then the rest.
  EXPECT_EQ(log.Kinds(), (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Write,
                                CallKind::Write, CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), kOwnLength);
  EXPECT_EQ(log.Bytes(CallKind::Write), kOwnLength + 1000);
}

TEST(Costs, AnotherSizeOfTheLastTagMovesNothing) {
  const TempDir dir;
  VKCLProfile profile(
      AFilePath(dir.Write("p.icc", Image({Data(Sig("QX51"), 140), Data(Sig("B2A0"), 5000),
                                          Data(Sig("QX62"), 1000)}))),
      0);
  const Bytes payload(2000, 7);
  {
    const CallLog log;
    ASSERT_EQ(profile.WriteVKPrivateTag(QX62, payload.data(), 2000), 1);
    // Head and tag are kept for the case of failure; the tag's end, the head, the tag are written.
    EXPECT_EQ(log.Kinds(),
              (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Read,
                     CallKind::Write, CallKind::Write, CallKind::Write, CallKind::Close}));
    EXPECT_EQ(log.Bytes(CallKind::Read), 168u + 1012);
    EXPECT_EQ(log.Bytes(CallKind::Write), 168u + 2012);
  }
  const CallLog log;
  ASSERT_EQ(profile.WriteVKPrivateTag(QX62, payload.data(), 1000), 1);
  EXPECT_EQ(log.Kinds(),
            (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Read,
                   CallKind::Write, CallKind::Write, CallKind::SetLength, CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), 168u + 2012);
  EXPECT_EQ(log.Bytes(CallKind::Write), 168u + 1012);
}

TEST(Costs, SeveralTagsInOnePassAreOneRewrite) {
  const TempDir dir;
  const Bytes before = Image({Data(Sig("B2A0"), 5000)});
  VKCLProfileHandler handler(AFilePath(dir.Write("p.icc", before)), 0);
  const CallLog log;
  ASSERT_EQ(handler.WriteAllVKPrivateTags(VKSingleInkLimitWithLinRef(), VKMultiInklimit(),
                                          VKColorParam(), nullptr),
            1);
  EXPECT_EQ(log.Kinds(), (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Write,
                                CallKind::Write, CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), before.size());
  // Three table entries, and the tags of 140, 300 and 1,068 bytes of payload.
  EXPECT_EQ(log.Bytes(CallKind::Write), before.size() + 3 * 12 + 152 + 312 + 1080);
}

TEST(Costs, MergingReadsThePrivateTagsAndTheTargetOnce) {
  const TempDir dir;
  VKCLProfile own(AFilePath(dir.Write("own.icc", Image(kOwn))), 0);
  const Bytes standard = Image({Data(Sig("B2A0"), 3000)});
  VKCLProfile target(AFilePath(dir.Write("to.icc", standard)), 0);
  const CallLog log;
  ASSERT_EQ(own.MergeVKPrivateTagIntoStandICC(target), 1);
  EXPECT_EQ(log.Kinds(), (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Close,
                                CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Write,
                                CallKind::Write, CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), 152u + 1080 + standard.size());
  EXPECT_EQ(log.Bytes(CallKind::Write), standard.size() + 2 * 12 + 152 + 1080);
}

TEST(Costs, StrippingReadsTheStretchThatIsKept) {
  const TempDir dir;
  VKCLProfile own(AFilePath(dir.Write("own.icc", Image(kOwn))), 0);
  const std::string to = dir.File("to.icc");
  const CallLog log;
  ASSERT_EQ(own.WriteICCWithoutVKiTags(to.c_str()), 1);
  EXPECT_EQ(log.Kinds(), (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Close,
                                CallKind::Open, CallKind::Write, CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), 5012u);
  EXPECT_EQ(log.Bytes(CallKind::Write), 132u + 12 + 5012);
}

// Puts options into a profile's dictionary.
bool SetOptions(const std::string& path) {
  void* file = CLNewFileSpecRef();
  void* profiler = CLNewCLProfilerRef();
  const bool done = CLName2FileSpec(file, path.c_str()) == 0 &&
                    CLSetProfilerOption(profiler, "InkTotal", "300") == 0 &&
                    CLExportProfilerOptions(profiler, file) == 0;
  CLFreeCLProfilerRef(profiler);
  CLFreeFileSpecRef(file);
  return done;
}

TEST(Costs, TheOptionsAreReadWithoutTheRestOfTheProfile) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", Image(kOwn));
  ASSERT_TRUE(SetOptions(path));
  const ImageEntry dictionary = TableOf(ReadFile(path)).back();
  ASSERT_EQ(dictionary.sig, Sig("meta"));
  const VKCLProfileHandler handler(AFilePath(path), 0);
  const CallLog log;
  VKCLProfileOptions options;
  ASSERT_EQ(handler.GetProfileOptions(options), 1);
  // The start of the file, which holds the table, and the last tag.
  EXPECT_EQ(log.Kinds(), (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Read,
                                CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), 4096u + dictionary.size);
}

#if VKCL_MEMORY_IS_MEASURABLE

using vkcl::testing::PeakGrowth;

constexpr std::uint32_t kLarge = 64u << 20;
constexpr long kLittle = 1L << 20;  // tables, stacks, small blocks

// A profile of three tags, the last one `length` bytes of zeros.
void WriteProfile(const std::string& path, std::uint32_t first, std::uint32_t second,
                  std::uint32_t length) {
  const std::uint32_t size = 168 + 152 + 1080 + length;
  const std::vector<ImageEntry> table = {
      {first, 168, 152}, {second, 168 + 152, 1080}, {Sig("B2A0"), 168 + 152 + 1080, length}};
  Bytes start = Head(ProfileHeader(), size, table);
  for (const std::size_t payload : {140u, 1068u}) {
    const Bytes tag = DataTag(Bytes(payload));
    start.insert(start.end(), tag.begin(), tag.end());
  }
  WriteFile(path, start);
  std::filesystem::resize_file(path, size);
}

// Profiles of one length: one of the system's own, and a standard one.
struct Profiles {
  explicit Profiles(std::uint32_t length) : own(dir.File("own.icc")), standard(dir.File("st.icc")) {
    WriteProfile(own, Sig("QX51"), Sig("QX53"), length);
    WriteProfile(standard, Sig("desc"), Sig("cprt"), length);
  }

  TempDir dir;
  std::string own;
  std::string standard;
};

struct Work {
  const char* name;
  long blocks;  // of the file's length that are held at once
  std::function<bool(const Profiles& files)> run;
};

void PrintTo(const Work& work, std::ostream* out) { *out << work.name; }

bool Store(const std::string& path, VKPrivateTagSignature signature, unsigned long length) {
  const Bytes payload(length, 7);
  return VKCLProfile(AFilePath(path), 0).WriteVKPrivateTag(signature, payload.data(), length) == 1;
}

const Work kWorks[] = {
    {"Classify", 0,
     [](const Profiles& files) {
       const VKCLProfileHandler handler(AFilePath(files.own), 0);
       VKCLProfileFinishedState state = FinishedNone;
       return handler.GetVKCLProfileFinishedState(state, 0) == 1;
     }},
    {"Options", 0,
     [](const Profiles& files) {
       VKCLProfileOptions options;
       return VKCLProfileHandler(AFilePath(files.own), 0).GetProfileOptions(options) == 0;
     }},
    {"SameSize", 0, [](const Profiles& files) { return Store(files.own, QX53, 1068); }},
    {"Append", 1, [](const Profiles& files) { return Store(files.own, QX52, 300); }},
    {"Longer", 1, [](const Profiles& files) { return Store(files.own, QX51, 900); }},
    {"Shorter", 1, [](const Profiles& files) { return Store(files.own, QX51, 9); }},
    {"Several", 1,
     [](const Profiles& files) {
       VKCLProfileHandler handler(AFilePath(files.standard), 0);
       return handler.WriteAllVKPrivateTags(VKSingleInkLimitWithLinRef(), VKMultiInklimit(),
                                            VKColorParam(), nullptr) == 1;
     }},
    {"Merge", 1,
     [](const Profiles& files) {
       VKCLProfile own(AFilePath(files.own), 0);
       VKCLProfile standard(AFilePath(files.standard), 0);
       return own.MergeVKPrivateTagIntoStandICC(standard) == 1;
     }},
    {"Strip", 1,
     [](const Profiles& files) {
       const std::string to = files.dir.File("to.icc");
       return VKCLProfile(AFilePath(files.own), 0).WriteICCWithoutVKiTags(to.c_str()) == 1;
     }},
    // The profile as it was, beside a rewrite of the copy, and then beside what it is compared
    // with.
    {"SafeEdit", 2,
     [](const Profiles& files) {
       vkcl::ProfileEdit edit{AFilePath(files.own)};
       return edit.handler() != nullptr && edit.handler()->WriteVKWizardFlag(1) == 1 &&
              edit.Commit() == vkcl::EditState::Done;
     }},
};

class CostInMemory : public ::testing::TestWithParam<Work> {};

// What a rewrite moves is held once, so that it can be put back. Little else grows with the file.
TEST_P(CostInMemory, IsTheBytesThatMove) {
  const Profiles small(10'000);
  const Profiles large(kLarge);
  const Work& work = GetParam();
  const long growth = PeakGrowth([&] { return work.run(small); }, [&] { return work.run(large); });
  const long moved = work.blocks * long{kLarge};
  EXPECT_GE(growth, std::max(moved - kLittle, 0L));
  EXPECT_LE(growth, moved + kLittle);
}

INSTANTIATE_TEST_SUITE_P(Operations, CostInMemory, ::testing::ValuesIn(kWorks),
                         [](const auto& work) { return std::string(work.param.name); });

#endif

}  // namespace
