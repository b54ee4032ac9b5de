// VSDProfileHandler as a caller uses it.
#pragma GCC diagnostic error "-Wmismatched-tags"
class VSDProfileHandler;
class AXMLTreeNode;
class ProfileDataList;
class VKColorParam;
class VKSingleInkLimitWithLinRef;
class VKSpotSingleInkLimit;

#include "vsd/VSDProfileHandler.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <type_traits>

#include "interface/Interface.h"
#include "platform/mfc/CString.h"
#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

using Handler = VSDProfileHandler;

static_assert(std::is_class_v<Handler>);
static_assert(std::is_constructible_v<Handler, const AFilePath&, int>);
static_assert(std::is_constructible_v<Handler, const char*, int>);
static_assert(std::is_constructible_v<Handler, const std::string&, int>);
static_assert(std::is_constructible_v<Handler, const AString&, int>);
static_assert(std::is_copy_constructible_v<Handler> && std::is_copy_assignable_v<Handler>);

static_assert(Query<int()>::Is(&Handler::IsValid));
static_assert(Query<int()>::Is(&Handler::IsComplete));
static_assert(Operation<int()>::Is(&Handler::SaveToFile));
static_assert(Function<AFilePath(const AFilePath&)>::Is(&Handler::ICCtoVSDFolder));
static_assert(Operation<int(const VKColorParam&)>::Is(&Handler::WriteVKColorParam));
static_assert(Operation<int(VKColorParam&)>::Is(&Handler::ReadVKColorParam));

using WriteList = Operation<int(int, const ProfileDataList&)>;
using ReadList = Operation<int(int, ProfileDataList&)>;
static_assert(WriteList::Is(&Handler::WriteVSDReferenceData));
static_assert(WriteList::Is(&Handler::WriteVSDMeasurementData));
static_assert(WriteList::Is(&Handler::WriteVSDInvertedData));
static_assert(ReadList::Is(&Handler::ReadVSDReferenceData));
static_assert(ReadList::Is(&Handler::ReadVSDMeasurementData));
static_assert(ReadList::Is(&Handler::ReadVSDInvertedData));
using WriteVerify = Operation<int(const ProfileDataList&)>;
using ReadVerify = Operation<int(ProfileDataList&)>;
static_assert(WriteVerify::Is(&Handler::WriteVerifyReferenceData));
static_assert(WriteVerify::Is(&Handler::WriteVerifyMeasurementData));
static_assert(ReadVerify::Is(&Handler::ReadVerifyReferenceData));
static_assert(ReadVerify::Is(&Handler::ReadVerifyMeasurementData));
static_assert(!VKCL_IS_PUBLIC(Handler, WriteProfileList));
static_assert(!VKCL_IS_PUBLIC(Handler, ReadProfileList));
static_assert(VKCL_IS_PUBLIC(Handler, IsValid), "what is public is told from what is not");

static_assert(Operation<int(double*, double*, int)>::Is(&Handler::WriteMediumAndLargeStart));
static_assert(Operation<int(double*, double*, int&)>::Is(&Handler::ReadMediumAndLargeStart));
static_assert(Operation<int(double*, int)>::Is(&Handler::WriteLargeDotScale));
static_assert(Operation<int(double*, int&)>::Is(&Handler::ReadLargeDotScale));
static_assert(
    Operation<int(const VKSingleInkLimitWithLinRef&)>::Is(&Handler::WriteVKSingleInkLimits));
static_assert(Operation<int(VKSingleInkLimitWithLinRef&)>::Is(&Handler::ReadVKSingleInkLimits));
static_assert(Operation<int(const VKSpotSingleInkLimit&)>::Is(&Handler::WriteVKSpotSIL));
static_assert(Operation<int(VKSpotSingleInkLimit&)>::Is(&Handler::ReadVKSpotSIL));

TEST(VSDProfileHandlerInterface, AMissingDocumentIsInvalid) {
  const TempDir dir;
  {
    Handler opened(dir.File("missing.xml"), 1);
    const Handler& document = opened;
    EXPECT_EQ(document.IsValid(), 0);
    EXPECT_EQ(document.IsComplete(), 0);
    VKColorParam param;
    EXPECT_EQ(opened.ReadVKColorParam(param), 0);
    EXPECT_EQ(opened.WriteVKColorParam(param), 1) << "in memory only";
    EXPECT_EQ(opened.SaveToFile(), 1);
  }
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST(VSDProfileHandlerInterface, ANewDocumentIsSavedOnceItIsModified) {
  const TempDir dir;
  const AFilePath path = dir.File("paper.icc");
  {
    Handler document(path, 0);
    EXPECT_EQ(document.IsValid(), 1);
    EXPECT_EQ(document.SaveToFile(), 1);
    EXPECT_FALSE(path.exists());
    VKColorParam param;
    std::strcpy(param.MediaName, "Baryta");
    const VKColorParam& constant = param;
    EXPECT_EQ(document.WriteVKColorParam(constant), 1);
  }
  EXPECT_TRUE(path.exists());
  Handler document(path, 1);
  EXPECT_EQ(document.IsValid(), 1);
  VKColorParam param;
  EXPECT_EQ(document.ReadVKColorParam(param), 1);
  EXPECT_STREQ(param.MediaName, "Baryta");
}

TEST(VSDProfileHandlerInterface, DataListsOfTheDotSizes) {
  const TempDir dir;
  Handler document(dir.File("paper.icc").c_str(), 0);
  ProfileDataList list;
  list.NumOfColors = 4;
  ASSERT_EQ(list.RefreshList(2), 1);
  list.DataList[7] = 1.5;
  list.Measured = 2;
  const ProfileDataList& constant = list;
  ProfileDataList read;
  EXPECT_EQ(document.ReadVSDReferenceData(0, read), 0);
  EXPECT_EQ(document.WriteVSDReferenceData(3, constant), 0) << "no such size";
  for (int size = 0; size < 3; ++size) {
    EXPECT_EQ(document.IsComplete(), 0);
    EXPECT_EQ(document.WriteVSDReferenceData(size, constant), 1);
    EXPECT_EQ(document.WriteVSDMeasurementData(size, constant), 1);
    EXPECT_EQ(document.WriteVSDInvertedData(size, constant), 1);
    EXPECT_EQ(document.ReadVSDReferenceData(size, read), 1);
    EXPECT_EQ(document.ReadVSDMeasurementData(size, read), 1);
    EXPECT_EQ(document.ReadVSDInvertedData(size, read), 1);
    EXPECT_TRUE(read == list);
  }
  EXPECT_EQ(document.IsComplete(), 1);
  EXPECT_EQ(document.ReadVerifyReferenceData(read), 0);
  EXPECT_EQ(document.WriteVerifyReferenceData(constant), 1);
  EXPECT_EQ(document.WriteVerifyMeasurementData(constant), 1);
  EXPECT_EQ(document.ReadVerifyReferenceData(read), 1);
  EXPECT_EQ(document.ReadVerifyMeasurementData(read), 1);
  EXPECT_EQ(read.DataList[7], 1.5);
}

TEST(VSDProfileHandlerInterface, StartsScaleAndLimits) {
  const TempDir dir;
  Handler document(dir.File("paper.icc"), 0);
  double medium[] = {0.25, 0.5};
  double large[] = {0.75, 1};
  int count = 9;
  EXPECT_EQ(document.ReadMediumAndLargeStart(medium, large, count), 0);
  EXPECT_EQ(document.WriteMediumAndLargeStart(medium, large, 2), 1);
  EXPECT_EQ(document.WriteLargeDotScale(large, 2), 1);
  double first[2] = {};
  double second[2] = {};
  EXPECT_EQ(document.ReadMediumAndLargeStart(first, second, count), 1);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(first[1], 0.5);
  EXPECT_EQ(second[0], 0.75);
  EXPECT_EQ(document.ReadLargeDotScale(first, count), 1);
  EXPECT_EQ(first[1], 1.0);

  VKSingleInkLimitWithLinRef limits;
  limits.limits[15] = 95.5;
  EXPECT_EQ(document.WriteVKSingleInkLimits(limits), 1);
  VKSingleInkLimitWithLinRef read;
  EXPECT_EQ(document.ReadVKSingleInkLimits(read), 1);
  EXPECT_EQ(double{read.limits[15]}, 95.5);

  VKSpotSingleInkLimit spot;
  spot.SetData(2, CString("Spot 1"), large);
  const VKSpotSingleInkLimit& constant = spot;
  EXPECT_EQ(document.WriteVKSpotSIL(constant), 1);
  VKSpotSingleInkLimit other;
  EXPECT_EQ(document.ReadVKSpotSIL(other), 1);
  EXPECT_STREQ(other.name, "Spot 1\t");
  EXPECT_EQ(other.limits[0], 0.75);
}

TEST(VSDProfileHandlerInterface, CopiesShareTheDocument) {
  const TempDir dir;
  Handler document(dir.File("paper.icc"), 0);
  Handler copy(document);
  Handler assigned(dir.File("other.icc"), 0);
  assigned = document;
  EXPECT_EQ(document.WriteVKColorParam(VKColorParam()), 1);
  VKColorParam param;
  EXPECT_EQ(copy.ReadVKColorParam(param), 1);
  EXPECT_EQ(assigned.ReadVKColorParam(param), 1);
}

TEST(VSDProfileHandlerInterface, ADocumentIsBesideItsProfile) {
  AFilePath icc = "Printer/ICC/paper.icc";
  const AFilePath sidecar = Handler::ICCtoVSDFolder(icc);
  EXPECT_EQ(std::filesystem::path(sidecar.str()),
            std::filesystem::path("Printer") / "VSDProfile" / "paper.icc");
  EXPECT_EQ(std::filesystem::path(Handler::ICCtoVSDFolder("a/b/c.icc").str()),
            std::filesystem::path("a") / "VSDProfile" / "c.icc");
}

}  // namespace
}  // namespace vkcl::testing
