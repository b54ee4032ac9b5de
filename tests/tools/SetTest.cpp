// Setting fields of a record while somebody else sets others of it.
#include "../../tools/vkcl/Set.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>

#include "support/FolderNames.h"
#include "support/ImageBuilder.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::ActionAt;
using vkcl::testing::ActionAtLocks;
using vkcl::testing::FoldersInMemory;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::Sig;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;
using vkcl::tool::Outcome;
using vkcl::tool::Result;
using vkcl::tool::SetFields;

constexpr int kChannels = 4;

constexpr const char* kToldOfOther = "somebody else changed it in the meantime";

Result Set(const std::string& path, const std::string& assignment) {
  return SetFields(path, {assignment}, kChannels, 0, {});
}

// At each call of the system another thread sets a field of the same record. Whoever is told that
// this is done finds it in the profile.
TEST(Set, LosesNoFieldThatSomebodyElseSetsMeanwhile) {
  const FoldersInMemory memory;
  const TempDir dir;
  for (const bool isStored : {true, false}) {
    int both = 0;
    int told = 0;
    bool reached = true;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(::testing::Message() << (isStored ? "stored" : "not stored") << ", at " << k);
      ASSERT_LT(k, 1000u);
      const std::string path =
          dir.Write("p.icc", ProfileImage(ProfileHeader(), {{Sig("desc"), TextTag("made up")}}));
      if (isStored) {
        ASSERT_EQ(Set(path, "ColorParam.MediaID=1").outcome, Outcome::Done);
      }
      std::atomic<int> locks = 0;
      std::future<Result> other;
      Result result;
      {
        const ActionAt at(k, [&] {
          other = std::async(std::launch::async, [&] {
            const ActionAtLocks asked([&] { ++locks; });
            return Set(path, "ColorParam.PrintMode=5");
          });
          const auto isDone = [&] {
            return other.wait_for(std::chrono::milliseconds(1)) == std::future_status::ready;
          };
          // It may wait for this one; without waiting it asks for three locks.
          while (!isDone() && locks < 20) {
          }
        });
        result = Set(path, "ColorParam.MediaID=77");
        reached = ActionAt::Reached();
      }
      const Result theirs = reached ? other.get() : Result{Outcome::Refused, kToldOfOther};
      const bool isDone = result.outcome == Outcome::Done;
      const bool isTheirs = theirs.outcome == Outcome::Done;
      EXPECT_TRUE(isDone || result.message == kToldOfOther) << result.message;
      EXPECT_TRUE(isTheirs || theirs.message == kToldOfOther) << theirs.message;
      EXPECT_TRUE(isDone || isTheirs);
      VKColorParam param;
      ASSERT_EQ(VKCLProfileHandler(AFilePath(path), kChannels).GetVKColorParam(param), 1);
      EXPECT_EQ(param.MediaID, isDone ? 77 : isStored ? 1 : 0);
      EXPECT_EQ(param.PrintMode, isTheirs ? 5 : 0);
      both += isDone && isTheirs ? 1 : 0;
      told += isDone ? 0 : 1;
    }
    EXPECT_GE(both, 1);
    EXPECT_GE(told, 5);
  }
}

}  // namespace
