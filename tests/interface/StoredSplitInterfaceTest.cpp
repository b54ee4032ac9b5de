// The reading of a split as it is stored, as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class SplitParam;
class VKCLProfile;

#include "handler/StoredSplit.h"

#include <gtest/gtest.h>

#include "interface/Interface.h"
#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

static_assert(Function<bool(const VKCLProfile&, SplitParam&)>::Is(&vkcl::ReadStoredSplit));

TEST(StoredSplitInterface, ReadsWhatWasWritten) {
  const TempDir dir;
  VKCLProfile profile(dir.File("paper.icc"), 4);
  SplitParam split;
  EXPECT_FALSE(vkcl::ReadStoredSplit(profile, split));

  SplitParam written;
  ASSERT_EQ(written.SetDefaultValues(2, nullptr), 1);
  VKPrivateTag tag;
  ASSERT_EQ(tag.InitFromSplitParam(written), 1);
  ASSERT_EQ(profile.WriteVKPrivateTag(&tag), 1);
  const VKCLProfile& reader = profile;
  EXPECT_TRUE(vkcl::ReadStoredSplit(reader, split));
  EXPECT_EQ(split.count, 2);
  EXPECT_EQ(static_cast<SplitTypeV4*>(split.splits)[1].colorantIndex, 1);
}

}  // namespace
}  // namespace vkcl::testing
