#include "../../tools/vkcl/InOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "handler/VKCLProfileHandler.h"
#include "inspect/ProfileCheck.h"
#include "support/RealProfiles.h"

namespace vkcl::tool {
namespace {

void Nobody(std::size_t) {}

std::vector<std::size_t> UpTo(std::size_t count) {
  std::vector<std::size_t> numbers(count);
  for (std::size_t i = 0; i < count; ++i) numbers[i] = i;
  return numbers;
}

/// Waits for another thread to bring something about, for a minute at most.
void Await(const std::function<bool()>& came) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!came() && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

TEST(InOrderThreads, FinishesInOrderWhateverTakesLong) {
  for (const unsigned threads : {1u, 2u, 3u, 8u, 200u}) {
    std::vector<std::size_t> finished;
    std::vector<std::size_t> watched;
    InOrder(
        150, threads,
        [&](std::size_t i) -> Finish {
          if (i % 7 == 0) std::this_thread::sleep_for(std::chrono::microseconds(300));
          return [&finished, i] { finished.push_back(i); };
        },
        [&](std::size_t done) { watched.push_back(done); });
    EXPECT_EQ(finished, UpTo(150)) << threads;
    EXPECT_TRUE(std::is_sorted(watched.begin(), watched.end()));
    EXPECT_EQ(watched.back(), 150u);
  }
}

TEST(InOrderThreads, DoesNothingWithoutItems) {
  InOrder(
      0, 4, [](std::size_t) -> Finish { throw std::logic_error("no item"); },
      [](std::size_t) { FAIL(); });
}

TEST(InOrderThreads, KeepsABoundedNumberOfResults) {
  constexpr unsigned kThreads = 3;
  std::atomic<std::size_t> begun = 0;
  std::size_t finished = 0;
  std::size_t most = 0;
  InOrder(
      2000, kThreads,
      [&](std::size_t i) -> Finish {
        ++begun;
        if (i == 0) {
          Await([&] { return begun > 17; });  // the others go on while the first one takes long
          std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return [&] {
          most = std::max(most, begun - finished);
          ++finished;
        };
      },
      Nobody);
  EXPECT_EQ(finished, 2000u);
  EXPECT_GT(most, 16u);
  EXPECT_LE(most, 16u * kThreads + kThreads);
}

TEST(InOrderThreads, WatchesWhileItWaits) {
  std::atomic<int> waiting = 0;
  InOrder(
      2, 2,
      [&](std::size_t) -> Finish {
        Await([&] { return waiting >= 2; });
        return [] {};
      },
      [&](std::size_t done) { waiting += done == 0 ? 1 : 0; });
  EXPECT_GE(waiting, 2);
}

TEST(InOrderThreads, PassesOnWhatWorkThrows) {
  for (const unsigned threads : {1u, 4u}) {
    std::vector<std::size_t> finished;
    const auto run = [&] {
      InOrder(
          100, threads,
          [&](std::size_t i) -> Finish {
            if (i == 40) throw std::runtime_error("item 40");
            return [&finished, i] { finished.push_back(i); };
          },
          Nobody);
    };
    EXPECT_THROW(run(), std::runtime_error);
    EXPECT_EQ(finished, UpTo(40));
  }
}

TEST(InOrderThreads, PassesOnWhatFinishingThrows) {
  std::atomic<int> inside = 0;
  const auto run = [&] {
    InOrder(
        500, 4,
        [&](std::size_t i) -> Finish {
          ++inside;
          std::this_thread::sleep_for(std::chrono::microseconds(50));
          --inside;
          return [i] {
            if (i == 10) throw std::runtime_error("the disk is full");
          };
        },
        Nobody);
  };
  EXPECT_THROW(run(), std::runtime_error);
  EXPECT_EQ(inside, 0);
}

// What the tool does with a file, in short.
std::string Seen(const std::filesystem::path& file) {
  const AFilePath path(file.string());
  std::string text;
  for (const Finding& finding : CheckProfile(path)) text += finding.rule + finding.text;
  const VKCLProfileHandler handler(path, 3);
  VKCLProfileFinishedState state = FinishedNone;
  handler.GetVKCLProfileFinishedState(state, 1);
  VKCLProfileOptions options;
  const int found = handler.GetProfileOptions(options);
  return text + std::to_string(handler.IsVKCLProfile()) + std::to_string(state) +
         std::to_string(found);
}

TEST(InOrderThreads, TheLibrarySeesTheSameInSeveralThreads) {
  const std::vector<std::filesystem::path> profiles = vkcl::testing::RealProfiles();
  ASSERT_FALSE(profiles.empty());
  std::vector<std::string> alone;
  std::vector<std::string> together;
  for (const std::filesystem::path& path : profiles) alone.push_back(Seen(path));
  InOrder(
      profiles.size(), 8,
      [&](std::size_t i) -> Finish {
        return [&together, seen = Seen(profiles[i])] { together.push_back(seen); };
      },
      Nobody);
  EXPECT_EQ(together, alone);
}

}  // namespace
}  // namespace vkcl::tool
