// The memory of a Little CMS context. Leaks are seen by the build with AddressSanitizer.
#include "platform/profiler/ContextMemory.h"

#include <gtest/gtest.h>
#include <lcms2_plugin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/profiler/ProfilerObjects.h"
#include "support/Allocations.h"

namespace vkcl::profiler {
namespace {

unsigned char* Bytes(void* memory) { return static_cast<unsigned char*>(memory); }

TEST(ContextMemory, IsReleasedWithTheContext) {
  const Context context(CreateContext());
  ASSERT_NE(context, nullptr);
  std::vector<void*> pieces;
  for (cmsUInt32Number i = 1; i <= 20; ++i) {
    pieces.push_back(_cmsMalloc(context.get(), i));
    ASSERT_NE(pieces.back(), nullptr);
    std::fill_n(Bytes(pieces.back()), i, 0xAB);
  }
  // Some are given back, in no order; some grow; the others are forgotten.
  for (const std::size_t i : {7, 0, 19, 3}) _cmsFree(context.get(), pieces[i]);
  EXPECT_NE(_cmsRealloc(context.get(), pieces[5], 100000), nullptr);
  EXPECT_NE(_cmsRealloc(context.get(), pieces[18], 1), nullptr);
}

TEST(ContextMemory, KeepsItsContentWhenItGrows) {
  const Context context(CreateContext());
  void* piece = _cmsMalloc(context.get(), 3);
  std::copy_n("abc", 3, Bytes(piece));
  piece = _cmsRealloc(context.get(), piece, 1 << 20);
  ASSERT_NE(piece, nullptr);
  EXPECT_TRUE(std::equal(Bytes(piece), Bytes(piece) + 3, "abc"));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece) % alignof(std::max_align_t), 0u);
  EXPECT_NE(_cmsRealloc(context.get(), nullptr, 10), nullptr) << "as a new piece";
}

TEST(ContextMemory, IsRefusedInOnePieceOfMoreThanHalfAGigabyte) {
  const Context context(CreateContext());
  void* piece = _cmsMalloc(context.get(), 1);
  *Bytes(piece) = 'x';
  EXPECT_EQ(_cmsMalloc(context.get(), (512u << 20) + 1), nullptr);
  EXPECT_EQ(_cmsRealloc(context.get(), piece, (512u << 20) + 1), nullptr);
  EXPECT_EQ(*Bytes(piece), 'x') << "the piece stays";
  _cmsFree(context.get(), piece);
  _cmsFree(context.get(), nullptr);
}

TEST(ContextMemory, OfOneContextIsNotThatOfAnother) {
  Context first(CreateContext());
  const Context second(CreateContext());
  void* piece = _cmsMallocZero(second.get(), 64);
  static_cast<void>(_cmsMalloc(first.get(), 64));
  first.reset();
  EXPECT_EQ(std::count(Bytes(piece), Bytes(piece) + 64, 0), 64);
}

TEST(ContextMemory, CallsAreLeftWhereItIsShort) {
  const std::int64_t live = testing::LiveAllocations();
  {
    const Context context(CreateContext());
    ASSERT_NE(context, nullptr);
    int steps = 0;
    const auto call = [&] {
      _cmsMalloc(context.get(), 10);
      ++steps;
      _cmsMalloc(context.get(), 10);
      ++steps;
      return 7;
    };
    EXPECT_EQ(Within(context.get(), call), 7);
    EXPECT_EQ(steps, 2);
    EXPECT_FALSE(IsShort(context.get()));
    {
      const testing::AllocationFailsAt second(1);
      EXPECT_EQ(Within(context.get(), call), 0);
    }
    EXPECT_EQ(steps, 3);
    EXPECT_TRUE(IsShort(context.get()));
    EXPECT_EQ(Within(context.get(), call), 0) << "nothing is as it should be any more";
    EXPECT_EQ(steps, 3);
  }
  EXPECT_EQ(testing::LiveAllocations(), live);
}

// Little CMS may have left it half made.
TEST(ContextMemory, WhatWasMadeWithOneThatIsShortIsReleasedWithIt) {
  const std::int64_t none = testing::LiveAllocations();
  {
    Context context(CreateContext());
    OpenProfile profile(
        Within(context.get(), [&] { return cmsCreate_sRGBProfileTHR(context.get()); }));
    Transform transform(Within(context.get(), [&] {
      return cmsCreateTransformTHR(context.get(), profile.get(), TYPE_RGB_8, profile.get(),
                                   TYPE_RGB_8, 0, 0);
    }));
    ASSERT_TRUE(profile && transform);
    {
      const testing::AllocationFailsAt first(0);
      EXPECT_EQ(Within(context.get(), [&] { return _cmsMalloc(context.get(), 10); }), nullptr);
    }
    const std::int64_t live = testing::LiveAllocations();
    transform.reset();
    EXPECT_EQ(testing::LiveAllocations(), live);
    profile.reset();
    EXPECT_EQ(testing::LiveAllocations(), live);
    context.reset();
    EXPECT_EQ(testing::LiveAllocations(), none);
  }
}

TEST(ContextMemory, OutsideOfACallNullSaysThatItIsShort) {
  const Context context(CreateContext());
  const testing::AllocationFailsAt first(0);
  EXPECT_EQ(_cmsMalloc(context.get(), 10), nullptr);
  EXPECT_FALSE(IsShort(context.get()));
}

TEST(ContextMemory, NoContextIsIgnored) {
  DeleteContext(nullptr);
  EXPECT_EQ(Within(nullptr, [] { return 7; }), 0);
}

}  // namespace
}  // namespace vkcl::profiler
