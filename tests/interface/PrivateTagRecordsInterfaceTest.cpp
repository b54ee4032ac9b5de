// Payloads of private tags as a caller builds them, with the library's exported header alone.
#include "handler/VKCLProfileHandler.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace vkcl::testing {
namespace {

// Whether a build gave a tag of that signature with so many bytes.
::testing::AssertionResult Built(const VKPrivateTag& tag, int result,
                                 VKPrivateTagSignature signature, std::uint32_t size) {
  if (result != 1) return ::testing::AssertionFailure() << "result " << result;
  if (tag.signature != signature) return ::testing::AssertionFailure() << tag.signature;
  if (tag.GetTagSize() != size) return ::testing::AssertionFailure() << tag.GetTagSize();
  if (tag.GetData() == nullptr) return ::testing::AssertionFailure() << "no payload";
  return ::testing::AssertionSuccess();
}

TEST(PrivateTagRecordsInterface, FixedRecords) {
  VKPrivateTag compatibility, color, multi, single, extraData, extra;
  EXPECT_TRUE(Built(compatibility,
                    compatibility.InitFromVKCompatibilityParam(VKCompatibilityParam()), QX67, 64));
  VKColorParam param;
  EXPECT_TRUE(Built(color, color.InitFromVKColorParam(param), QX53, 1068));
  const VKMultiInklimit limits;
  EXPECT_TRUE(Built(multi, multi.InitFromVKMultiInklimit(limits), QX52, 300));
  VKSingleInkLimitWithLinRef reference;
  reference.size = 7;
  EXPECT_TRUE(Built(single, single.InitFromVKSingleInkLimitWithLinRef(reference), QX51, 140));
  const VKLinExtraDataParam data;
  EXPECT_TRUE(Built(extraData, extraData.InitFromVKLinExtraDataParam(data), QX70, 572));
  VKProfileExtraParam value;
  EXPECT_TRUE(Built(extra, extra.InitFromVKProfileExtraParam(value), QX76, 8));
}

TEST(PrivateTagRecordsInterface, RecordsWithArrays) {
  VKPrivateTag splitTag, ditherTag, limitsTag, linksTag;
  SplitParam split;
  EXPECT_EQ(splitTag.InitFromSplitParam(split), 0) << "without splits";
  ASSERT_EQ(split.SetDefaultValues(2, nullptr), 1);
  EXPECT_TRUE(Built(splitTag, splitTag.InitFromSplitParam(split), QX50, 20 + 2 * 9240));

  VKDitherParam dither;
  EXPECT_EQ(ditherTag.InitFromDitherParam(dither), 0) << "without a table";
  DitherTypeV1 table;
  ASSERT_EQ(dither.InitDitherParam(1, &table), 1);
  EXPECT_TRUE(Built(ditherTag, ditherTag.InitFromDitherParam(dither), QX66, 4132));

  VKSpotSingleInkLimit limits;
  double values[] = {90, 80};
  limits.SetData(2, CString("Spot"), values);
  const VKSpotSingleInkLimit& constant = limits;
  EXPECT_TRUE(Built(limitsTag, limitsTag.InitFromVKSpotSIL(constant), QX68, 4 + 2 * 8 + 12));

  VKSpotLinDLParam links;
  links.SetData(1, CString("Spot"));
  EXPECT_TRUE(Built(linksTag, linksTag.InitFromVKSpotLinDL(links), QX69, 4 + 4 + 16));
  EXPECT_EQ(links.size, 4 + 4 + 16);
}

TEST(PrivateTagRecordsInterface, DataLists) {
  ProfileDataList list;
  list.NumOfColors = 4;
  ASSERT_EQ(list.RefreshList(2), 1);
  for (const VKPrivateTagSignature which : {QX54, QX55, QX56, QX57, QX59, QX60, QX72, QX73}) {
    VKPrivateTag tag;
    EXPECT_TRUE(Built(tag, tag.InitFromProfileDataList(list, which), which, 24 + 64));
  }
  VKPrivateTag tag;
  EXPECT_EQ(tag.InitFromProfileDataList(list, QX53), 0);
  EXPECT_TRUE(Built(tag, tag.InitFromProfileDataList(ProfileDataList(), QX54), QX54, 24));
}

}  // namespace
}  // namespace vkcl::testing
