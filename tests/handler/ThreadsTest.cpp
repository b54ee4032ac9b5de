// Objects of their own in threads of their own share nothing that could be disturbed: the library
// keeps no state but the table of extra colorants, which is filled once.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <latch>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "edit/ProfileEdit.h"
#include "handler/VKCLProfileHandler.h"
#include "handler/VKCLProfileProperties.h"
#include "inspect/ProfileCheck.h"
#include "inspect/ProfileDocument.h"
#include "inspect/ProfileReport.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "support/CommaLocale.h"
#include "support/PrivatePayloads.h"
#include "support/RealProfiles.h"
#include "support/TagFile.h"
#include "vsd/VSDProfileHandler.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::CommaLocale;
using vkcl::testing::FileTag;
using vkcl::testing::KnownSignatures;
using vkcl::testing::ProfileFile;
using vkcl::testing::ReadFile;
using vkcl::testing::SamplePayload;
using vkcl::testing::SigOf;
using vkcl::testing::TagsOf;
using vkcl::testing::TempDir;

constexpr std::size_t kThreads = 16;

/// Runs the work in all threads at once, each with its number; every other thread has a locale with
/// a decimal comma.
void InThreads(const std::function<void(std::size_t)>& work) {
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      if (i % 2 == 0) return work(i);
      const CommaLocale comma;
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

Bytes PlainProfile() { return ProfileFile({{"cprt", {'x'}, "text"}}); }

/// A profile with one tag of each kind.
Bytes FullProfile() {
  std::vector<FileTag> tags = {{"cprt", {'x'}, "text"}};
  for (const std::string& signature : KnownSignatures()) {
    tags.emplace_back(signature, SamplePayload(signature));
  }
  return ProfileFile(tags);
}

TEST(Threads, WriteProfilesOfTheirOwn) {
  const TempDir dir;
  std::vector<std::vector<FileTag>> expected(kThreads);
  InThreads([&](std::size_t thread) {
    std::mt19937 random(static_cast<unsigned>(thread));
    const std::string path = dir.Write(std::to_string(thread) + ".icc", PlainProfile());
    VKCLProfileHandler handler(AFilePath(path), 0);
    std::vector<FileTag>& tags = expected[thread];
    tags.emplace_back("cprt", Bytes{'x'}, "text");
    for (const std::string& signature : KnownSignatures()) {
      const Bytes payload(20 + random() % 300, static_cast<unsigned char>(random()));
      tags.emplace_back(signature, payload);
      const auto sig = static_cast<VKPrivateTagSignature>(SigOf(signature));
      EXPECT_EQ(handler.GetProfilePtr()->WriteVKPrivateTag(sig, payload.data(), payload.size()), 1);
    }
    // The first private tag grows, so all that lies behind it moves.
    tags[1].payload.insert(tags[1].payload.end(), 101, 0xAB);
    const Bytes& first = tags[1].payload;
    EXPECT_EQ(handler.GetProfilePtr()->WriteVKPrivateTag(QX50, first.data(), first.size()), 1);
  });
  for (std::size_t thread = 0; thread < kThreads; ++thread) {
    const Bytes file = ReadFile(dir.File(std::to_string(thread) + ".icc"));
    EXPECT_EQ(TagsOf(file), expected[thread]) << thread;
  }
}

TEST(Threads, EditProfilesOfTheirOwnInOneFolder) {
  const TempDir dir;
  InThreads([&](std::size_t thread) {
    const std::string path = dir.Write(std::to_string(thread) + ".icc", PlainProfile());
    for (int flag = 1; flag <= 4; ++flag) {
      vkcl::ProfileEdit edit((AFilePath(path)));
      ASSERT_NE(edit.handler(), nullptr);
      EXPECT_EQ(edit.handler()->WriteVKWizardFlag(flag), 1);
      EXPECT_EQ(edit.Commit(), vkcl::EditState::Done);
    }
  });
  for (std::size_t thread = 0; thread < kThreads; ++thread) {
    const Bytes file = ReadFile(dir.File(std::to_string(thread) + ".icc"));
    EXPECT_EQ(vkcl::testing::PayloadOf(file, "QX74"), (Bytes{4, 0, 0, 0})) << thread;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), kThreads);
}

/// All that the library says of a file, in one text.
std::string Seen(const std::string& file, const std::string& extracted) {
  const AFilePath path(file);
  const VKCLProfileHandler handler(path, 3);
  std::string text;
  VKCLProfileFinishedState state = FinishedNone;
  text += std::to_string(handler.GetVKCLProfileFinishedState(state, 1)) + std::to_string(state);
  VKCLProfileProperties properties;
  text += std::to_string(handler.GetVKCLProfileProperties(properties, 1));
  SplitParam split;
  text += std::to_string(handler.GetSplitParam(split, 1));
  text += std::to_string(handler.GetVSDProfile(AFilePath(extracted)));
  for (const vkcl::Finding& finding : vkcl::CheckProfile(path)) text += finding.text;
  const auto append = [&](std::string_view piece) {
    text += piece;
    return true;
  };
  std::string why;
  for (const auto form : {vkcl::DocumentForm::Json, vkcl::DocumentForm::Text}) {
    EXPECT_TRUE(
        vkcl::WriteDocument(*VKCLProfileHandler(path, 3).GetProfilePtr(), {}, form, append, why));
  }
  const std::vector<AFilePath> profiles = {path};
  EXPECT_TRUE(vkcl::WriteReport(profiles, append));
  return text;
}

TEST(Threads, ReadOneProfileTogether) {
  const TempDir dir;
  const std::string path = dir.Write("full.icc", FullProfile());
  const std::string alone = Seen(path, dir.File("alone"));
  std::vector<std::string> together(kThreads);
  InThreads(
      [&](std::size_t thread) { together[thread] = Seen(path, dir.File(std::to_string(thread))); });
  EXPECT_EQ(together, std::vector<std::string>(kThreads, alone));
}

TEST(Threads, WriteDocumentsBesideProfilesOfTheirOwn) {
  const TempDir dir;
  InThreads([&](std::size_t thread) {
    const AFilePath path(dir.File(std::to_string(thread) + ".vsd"));
    VKSingleInkLimitWithLinRef limits;
    limits.limits[0] = static_cast<double>(thread) + 0.25;
    {
      VSDProfileHandler document(path, 0);
      EXPECT_EQ(document.WriteVKSingleInkLimits(limits), 1);
      EXPECT_EQ(document.SaveToFile(), 1);
    }
    VSDProfileHandler document(path, 1);
    VKSingleInkLimitWithLinRef read;
    EXPECT_EQ(document.ReadVKSingleInkLimits(read), 1);
    EXPECT_EQ(double{read.limits[0]}, static_cast<double>(thread) + 0.25);
  });
}

/// A profile as the profiler library writes it.
Bytes Rewritten(const Bytes& file) {
  void* profile = CLNewCLProfileRef();
  EXPECT_EQ(CLLoadProfileFromMemory(profile, file.data(), static_cast<unsigned>(file.size())), 0);
  unsigned size = 0;
  EXPECT_EQ(CLWriteProfileToMemory(profile, nullptr, 0, &size), 0);
  Bytes written(size);
  EXPECT_EQ(CLWriteProfileToMemory(profile, written.data(), size, &size), 0);
  CLFreeCLProfileRef(profile);
  return written;
}

TEST(Threads, LoadProfilesIntoTheProfiler) {
  const Bytes file = ReadFile(vkcl::testing::RealProfiles().front());
  const Bytes alone = Rewritten(file);
  std::vector<Bytes> together(kThreads);
  InThreads([&](std::size_t thread) { together[thread] = Rewritten(file); });
  EXPECT_EQ(together, std::vector<Bytes>(kThreads, alone));
}

}  // namespace
