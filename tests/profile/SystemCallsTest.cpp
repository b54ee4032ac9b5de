// How often the store calls the system, and what a failing call leaves behind.
#include "support/SystemCalls.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "handler/VKCLProfileHandler.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::OpenHandles;
using vkcl::testing::ReadFile;
using vkcl::testing::TempDir;

using Kinds = std::vector<CallKind>;

void Put32(Bytes& bytes, std::size_t at, std::uint32_t value) {
  for (int i = 0; i < 4; ++i)
    bytes[at + static_cast<std::size_t>(i)] = static_cast<unsigned char>(value >> (24 - 8 * i));
}

void PutText(Bytes& bytes, std::size_t at, const std::string& text) {
  std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

// A CMYK output profile of 'data' tags 'QX50', 'QX51', ... with contents of the given lengths.
Bytes Profile(const std::vector<std::uint32_t>& lengths) {
  std::size_t size = 132 + 12 * lengths.size();
  Bytes bytes(size);
  PutText(bytes, 12, "prtrCMYKLab ");
  PutText(bytes, 36, "acsp");
  Put32(bytes, 128, static_cast<std::uint32_t>(lengths.size()));
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    Put32(bytes, 132 + 12 * i, 0x51583530u + static_cast<std::uint32_t>(i));
    Put32(bytes, 136 + 12 * i, static_cast<std::uint32_t>(size));
    Put32(bytes, 140 + 12 * i, lengths[i] + 12);
    const std::size_t padded = (lengths[i] + 12 + 3) / 4 * 4;
    bytes.resize(size + padded, static_cast<unsigned char>(0x60 + i));
    PutText(bytes, size, std::string("data\0\0\0\0\0\0\0\1", 12));
    size += padded;
  }
  Put32(bytes, 0, static_cast<std::uint32_t>(size));
  return bytes;
}

TEST(SystemCalls, OpeningIsOneOpenOneLengthOneReadOneClose) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", Profile({8, 1068, 20}));
  const CallLog log;
  const VKCLProfile profile(AFilePath(path), 0);
  ASSERT_EQ(profile.isValidICC(), 1);
  EXPECT_EQ(log.Kinds(),
            (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Close}));
  EXPECT_LE(log.Bytes(CallKind::Read), 4096u);
}

TEST(SystemCalls, OpeningALongTableTakesASecondRead) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", Profile(std::vector<std::uint32_t>(1000, 4)));
  const CallLog log;
  const VKCLProfile profile(AFilePath(path), 0);
  ASSERT_EQ(profile.isValidICC(), 1);
  EXPECT_EQ(profile.tagTable[999].sig, 0x51583530u + 999);
  EXPECT_EQ(log.Kinds(), (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Read,
                                CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), 132u + 12 * 1000);
}

TEST(SystemCalls, ReadingARecordIsOneOpenOneReadOneClose) {
  const TempDir dir;
  VKCLProfileHandler handler(AFilePath(dir.Write("p.icc", Profile({9260, 140, 300, 1068}))), 0);
  const Kinds expected = {CallKind::Open, CallKind::Read, CallKind::Close};
  {
    const CallLog log;
    VKColorParam param;
    EXPECT_EQ(handler.GetVKColorParam(param), 1);
    EXPECT_EQ(log.Kinds(), expected);
    EXPECT_EQ(log.Bytes(CallKind::Read), 1080u);
  }
  {
    const CallLog log;
    VKPrivateTag tag;
    tag.SetSignature(QX50);
    EXPECT_EQ(handler.GetProfilePtr()->ReadVKPrivateTag(&tag, 1), 1);
    EXPECT_EQ(log.Kinds(), expected);
    EXPECT_EQ(log.Bytes(CallKind::Read), 9272u);
  }
  {
    const CallLog log;
    VKCLProfileFinishedState state;
    EXPECT_EQ(handler.GetVKCLProfileFinishedState(state, 0), 1);
    EXPECT_EQ(log.Kinds(), expected);
  }
  {
    const CallLog log;
    VKCLProfileFinishedState state;
    EXPECT_EQ(handler.GetVKCLProfileFinishedState(state, 1), 1);
    EXPECT_EQ(handler.IsVKCLProfile(), 1);
    EXPECT_EQ(log.Kinds(), Kinds{});
  }
}

TEST(SystemCalls, ASameSizeWriteIsOneOpenOneReadOneWriteOneClose) {
  const TempDir dir;
  VKCLProfileHandler handler(AFilePath(dir.Write("p.icc", Profile({20, 140, 300, 1068, 33}))), 0);
  const CallLog log;
  EXPECT_EQ(handler.WriteVKColorParamTag(VKColorParam()), 1);
  EXPECT_EQ(log.Kinds(), (Kinds{CallKind::Open, CallKind::Read, CallKind::Write, CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), 1080u);
  EXPECT_EQ(log.Bytes(CallKind::Write), 1080u);
}

TEST(SystemCalls, AppendingReadsTheFileOnceAndWritesTheNewOneOnce) {
  const TempDir dir;
  const Bytes before = Profile({20, 140, 300});
  VKCLProfileHandler handler(AFilePath(dir.Write("p.icc", before)), 0);
  const CallLog log;
  EXPECT_EQ(handler.WriteVKColorParamTag(VKColorParam()), 1);
  EXPECT_EQ(log.Kinds(), (Kinds{CallKind::Open, CallKind::Length, CallKind::Read, CallKind::Write,
                                CallKind::Write, CallKind::Close}));
  EXPECT_EQ(log.Bytes(CallKind::Read), before.size());
  EXPECT_EQ(log.Bytes(CallKind::Write), before.size() + 12 + 1080);
}

TEST(SystemCalls, ARebuildTouchesTheHeadAndWhatMoves) {
  const TempDir dir;
  const Bytes before = Profile({5000, 20, 7000});
  VKCLProfile profile(AFilePath(dir.Write("p.icc", before)), 0);
  const Bytes payload(60, 7);
  const CallLog log;
  EXPECT_EQ(profile.WriteVKPrivateTag(QX51, payload.data(), 60), 1);
  EXPECT_EQ(log.Count(CallKind::Open), 1u);
  EXPECT_EQ(log.Count(CallKind::Read), 2u);
  EXPECT_EQ(log.Count(CallKind::Close), 1u);
  const std::uint64_t head = 132 + 36;
  EXPECT_EQ(log.Bytes(CallKind::Read), head + 32 + 7012);
  EXPECT_EQ(log.Bytes(CallKind::Write), head + 72 + 7012);
}

TEST(SystemCalls, AShrinkingRebuildCutsTheFile) {
  const TempDir dir;
  VKCLProfile profile(AFilePath(dir.Write("p.icc", Profile({20, 60, 20}))), 0);
  const CallLog log;
  EXPECT_EQ(profile.WriteVKPrivateTag(QX51, "abcd", 4), 1);
  EXPECT_EQ(log.Count(CallKind::SetLength), 1u);
  EXPECT_EQ(log.Bytes(CallKind::Write), 168u + 16 + 32);
}

// A writer by name, as the loops below run it.
struct Writer {
  const char* name;
  std::function<int(VKCLProfile&)> run;
};

std::vector<Writer> Writers() {
  static const Bytes payload(600, 0x5A);
  const auto write = [](VKPrivateTagSignature sig, unsigned long length) {
    return [=](VKCLProfile& profile) {
      return profile.WriteVKPrivateTag(sig, payload.data(), length);
    };
  };
  return {
      {"longer first", write(QX50, 333)},
      {"longer middle", write(QX51, 600)},
      {"longer last", write(QX52, 601 - 1)},
      {"shorter first", write(QX50, 1)},
      {"shorter middle", write(QX51, 9)},
      {"shorter last", write(QX52, 0)},
      {"append", write(QX60, 50)},
      {"several",
       [](VKCLProfile& profile) {
         VKPrivateTag tags[3];
         for (int i = 0; i < 3; ++i) tags[i].InitWizardTag(i);
         return profile.WriteMultiVKPrivateTags(tags, 3);
       }},
  };
}

// What an object tells of itself.
std::string Memory(const VKCLProfile& profile) {
  std::string text(reinterpret_cast<const char*>(&profile.header), sizeof profile.header);
  text.append(reinterpret_cast<const char*>(profile.tagTable), profile.tagCount * sizeof(icTag));
  return text + std::to_string(profile.valid) + std::to_string(profile.tagCount);
}

TEST(SystemCalls, AFailedWriteLeavesTheFileAsItWas) {
  const Bytes before = Profile({40, 80, 120});
  const int handles = OpenHandles();
  for (const Writer& writer : Writers()) {
    for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
      SCOPED_TRACE(writer.name);
      std::size_t failures = 0;
      for (std::size_t which = 0;; ++which) {
        const TempDir dir;
        const std::string path = dir.Write("p.icc", before);
        VKCLProfile profile(AFilePath(path), 0);
        ASSERT_EQ(profile.isValidICC(), 1);
        int result = 0;
        bool reached = false;
        {
          const FaultAt at(which, fault);
          result = writer.run(profile);
          reached = FaultAt::Reached();
        }
        EXPECT_EQ(OpenHandles(), handles);
        if (result == 0) {
          ++failures;
          ASSERT_EQ(ReadFile(path), before) << "call " << which;
          // A second try finds everything in place.
          ASSERT_EQ(writer.run(profile), 1) << "call " << which;
        }
        // However it came about, the file is the one that a write without a fault gives.
        const TempDir other;
        const std::string straight = other.Write("p.icc", before);
        VKCLProfile fresh(AFilePath(straight), 0);
        ASSERT_EQ(writer.run(fresh), 1);
        ASSERT_EQ(ReadFile(path), ReadFile(straight)) << "call " << which;
        ASSERT_EQ(Memory(profile), Memory(fresh)) << "call " << which;
        if (!reached) break;
      }
      EXPECT_GT(failures, 0u);
    }
  }
}

TEST(SystemCalls, AFailedSameSizeWriteLeavesOneOfTheTwoPayloadsWhole) {
  const Bytes before = Profile({40, 80, 120});
  Bytes after = before;
  const std::size_t start = 168 + 52 + 12;
  std::fill_n(after.begin() + start, 80, static_cast<unsigned char>(0x5A));
  const Bytes payload(80, 0x5A);
  for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
    for (std::size_t which = 0;; ++which) {
      const TempDir dir;
      const std::string path = dir.Write("p.icc", before);
      VKCLProfile profile(AFilePath(path), 0);
      int result = 0;
      bool reached = false;
      {
        const FaultAt at(which, fault);
        result = profile.WriteVKPrivateTag(QX51, payload.data(), 80);
        reached = FaultAt::Reached();
      }
      const Bytes content = ReadFile(path);
      if (result != 0) {
        EXPECT_EQ(content, after);
      } else {
        EXPECT_TRUE(content == before || content == after) << which;
      }
      if (!reached) {
        EXPECT_EQ(result, 1);
        break;
      }
    }
  }
}

TEST(SystemCalls, AFailedCreationLeavesNoFileAndTheObjectAsItWas) {
  for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
    for (std::size_t which = 0;; ++which) {
      const TempDir dir;
      const std::string path = dir.File("new.icc");
      VKCLProfile profile(AFilePath(path), 4);
      bool reached = false;
      int result = 0;
      {
        const FaultAt at(which, fault);
        result = profile.WriteVKPrivateTag(QX74, "abcd", 4);
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(std::filesystem::exists(path), result != 0) << which;
      EXPECT_EQ(profile.isValidICC(), result);
      if (result == 0) {
        EXPECT_EQ(profile.tagTable, nullptr);
        EXPECT_EQ(profile.header.size, 0u);
      }
      if (!reached) break;
    }
  }
}

TEST(SystemCalls, AFailedReadLeaksNothingAndChangesNothing) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", Profile({20, 140, 300, 1068}));
  VKCLProfileHandler handler(AFilePath(path), 0);
  const int handles = OpenHandles();
  for (std::size_t which = 0;; ++which) {
    VKColorParam param;
    std::memset(static_cast<void*>(&param), 0x33, sizeof param);
    const VKColorParam untouched = param;
    const FaultAt at(which, Fault::Error);
    if (handler.GetVKColorParam(param) == 0) {
      EXPECT_EQ(std::memcmp(&param, &untouched, sizeof param), 0);
    }
    EXPECT_EQ(OpenHandles(), handles);
    if (!FaultAt::Reached()) break;
  }
}

TEST(SystemCalls, AFailedOpeningLeavesAnInvalidObjectAndNoHandle) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", Profile({20, 140}));
  const int handles = OpenHandles();
  for (std::size_t which = 0; which < 3; ++which) {  // open, length, read
    const FaultAt at(which, Fault::Error);
    const VKCLProfile profile(AFilePath(path), 0);
    EXPECT_TRUE(FaultAt::Reached());
    EXPECT_EQ(profile.isValidICC(), 0) << which;
    EXPECT_EQ(OpenHandles(), handles);
  }
}

}  // namespace
