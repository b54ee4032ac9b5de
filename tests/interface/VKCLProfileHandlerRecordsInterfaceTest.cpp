// Records that go into a profile and come back, as a caller writes and reads them.
#include "handler/VKCLProfileHandler.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

// A handler on a profile that the first write makes.
class VKCLProfileHandlerRecordsInterface : public ::testing::Test {
 protected:
  const TempDir dir;
  VKCLProfileHandler handler{dir.File("paper.icc"), 4};
};

TEST_F(VKCLProfileHandlerRecordsInterface, FixedRecords) {
  VKSingleInkLimitWithLinRef single;
  single.limits[0] = 90;
  EXPECT_EQ(handler.WriteSILWithLinTag(single), 1);
  VKSingleInkLimitWithLinRef singleRead;
  EXPECT_EQ(handler.GetVKSingleInkLimitWithLinRef(singleRead), 1);
  EXPECT_EQ(double{singleRead.limits[0]}, 90.0);

  VKMultiInklimit multi;
  EXPECT_EQ(handler.WriteMultipleInkLimitTag(multi), 1);
  EXPECT_EQ(multi.version, 2);
  EXPECT_EQ(handler.GetVKMultiInklimit(multi, 3), 0);
  EXPECT_EQ(handler.GetVKMultiInklimit(multi, 2), 1);

  VKColorParam param;
  std::strcpy(param.MediaName, "  Baryta ");
  EXPECT_EQ(handler.WriteVKColorParamTag(param), 1);
  EXPECT_EQ(handler.GetVKColorParam(param), 1);
  EXPECT_STREQ(param.MediaName, "Baryta");

  VKCompatibilityParam compatibility;
  compatibility.bytes[63] = 5;
  EXPECT_EQ(handler.WriteVKCompatibilityParam(compatibility), 1);
  VKCompatibilityParam compatibilityRead;
  EXPECT_EQ(handler.GetVKCompatibilityParam(compatibilityRead), 1);
  EXPECT_EQ(compatibilityRead.bytes[63], 5);

  VKLinExtraDataParam data;
  data.value = 6;
  EXPECT_EQ(handler.WriteVKLinExtraData(data), 1);
  VKLinExtraDataParam dataRead;
  EXPECT_EQ(handler.GetVKLinExtraData(dataRead), 1);
  EXPECT_EQ(dataRead.value, 6);

  VKProfileExtraParam extra;
  extra.value = 7;
  EXPECT_EQ(handler.WriteVKProfileExtraParam(extra), 1);
  VKProfileExtraParam extraRead;
  EXPECT_EQ(handler.GetVKProfileExtraParam(extraRead), 1);
  EXPECT_EQ(extraRead.value, 7);
}

TEST_F(VKCLProfileHandlerRecordsInterface, NumbersAndTexts) {
  const int flag = 4;
  EXPECT_EQ(handler.WriteVKCMStoDither(flag), 1);
  EXPECT_EQ(handler.WriteVKCMStoDither(5), 1);
  EXPECT_EQ(handler.IsCMStoDither(), 5);
  EXPECT_EQ(handler.WriteVKWizardFlag(-1), 1);
  EXPECT_EQ(handler.IsWizardICC(), -1);
  EXPECT_EQ(handler.WriteVKChromaAdjust("C1"), 1);
  AString text;
  EXPECT_EQ(handler.GetVKChromaAdjust(text), 1);
  EXPECT_EQ(text.str(), "C1");
}

TEST_F(VKCLProfileHandlerRecordsInterface, RecordsWithArrays) {
  SplitParam split;
  EXPECT_EQ(handler.WriteInkSplitTag(split), 0) << "without splits";
  split.version = 2;
  ASSERT_EQ(split.SetDefaultValues(2, nullptr), 1);
  EXPECT_EQ(handler.WriteInkSplitTag(split), 1);
  SplitParam splitRead;
  EXPECT_EQ(handler.GetSplitParam(splitRead, 0), 1);
  EXPECT_EQ(splitRead.version, 2);
  EXPECT_EQ(handler.GetSplitParam(splitRead, 1), 1);
  EXPECT_EQ(splitRead.version, 4);

  VKDitherParam dither;
  EXPECT_EQ(handler.WriteDitherParamTag(dither), 0) << "without a table";
  DitherTypeV1 table;
  table.table[4111] = 8;
  ASSERT_EQ(dither.InitDitherParam(1, &table), 1);
  EXPECT_EQ(handler.WriteDitherParamTag(dither), 1);
  VKDitherParam ditherRead;
  EXPECT_EQ(handler.GetVKDitherParam(ditherRead), 1);
  EXPECT_EQ(ditherRead.table->table[4111], 8);

  VKSpotSingleInkLimit limits;
  double values[] = {90, 80};
  limits.SetData(2, CString("Spot"), values);
  const VKSpotSingleInkLimit& constant = limits;
  EXPECT_EQ(handler.WriteVKSpotSIL(constant), 1);
  VKSpotSingleInkLimit limitsRead;
  EXPECT_EQ(handler.GetVKSpotSIL(limitsRead), 1);
  EXPECT_STREQ(limitsRead.name, "Spot");
  EXPECT_EQ(limitsRead.limits[1], 80.0);

  VKSpotLinDLParam links;
  links.SetData(1, "Spot");
  EXPECT_EQ(handler.WriteVKSpotLinDL(links), 1);
  EXPECT_EQ(links.size, 4 + 4 + 16);
  VKSpotLinDLParam linksRead;
  EXPECT_EQ(handler.GetVKSpotLinDL(linksRead), 1);
  EXPECT_STREQ(linksRead.name, "Spot");
  EXPECT_NE(linksRead.links[0], nullptr);
}

TEST_F(VKCLProfileHandlerRecordsInterface, SeveralTagsAtOnce) {
  const VKSingleInkLimitWithLinRef single;
  const VKMultiInklimit multi;
  const VKColorParam param;
  ASSERT_EQ(handler.WriteVKWizardFlag(1), 1);
  EXPECT_EQ(handler.WriteAllVKPrivateTags(single, multi, param, nullptr), 1);
  EXPECT_EQ(handler.GetProfilePtr()->tagCount, 4u);
  SplitParam split;
  ASSERT_EQ(split.SetDefaultValues(2, nullptr), 1);
  EXPECT_EQ(handler.WriteAllVKPrivateTags(single, multi, param, &split), 1);
  EXPECT_EQ(handler.GetProfilePtr()->tagCount, 8u);
}

TEST_F(VKCLProfileHandlerRecordsInterface, DataLists) {
  ProfileDataList list;
  list.NumOfColors = 4;
  ASSERT_EQ(list.RefreshList(2), 1);
  const ProfileDataList& constant = list;
  EXPECT_EQ(handler.WriteLinMeasurementData(constant), 1);
  EXPECT_EQ(handler.WriteLinReferenceData(constant), 1);
  EXPECT_EQ(handler.WriteGBMeasurementData(constant), 1);
  EXPECT_EQ(handler.WriteGBReferenceData(constant), 1);
  EXPECT_EQ(handler.WriteCharMeasurementData(constant), 1);
  EXPECT_EQ(handler.WriteCharReferenceData(constant), 1);
  ProfileDataList read;
  EXPECT_EQ(handler.GetVKLinRefData(read), 0);
  EXPECT_EQ(handler.GetVKLinOutputData(read), 0);
  EXPECT_EQ(handler.WriteVKLinRefData(constant), 1);
  EXPECT_EQ(handler.WriteVKLinOutputData(constant), 1);
  EXPECT_EQ(handler.GetVKLinRefData(read), 1);
  EXPECT_TRUE(read == list);
  EXPECT_EQ(handler.GetVKLinOutputData(read), 1);
  EXPECT_TRUE(read == list);
}

TEST_F(VKCLProfileHandlerRecordsInterface, Files) {
  const std::string sidecar = dir.Write("sidecar.xml", {'v', 's', 'd'});
  EXPECT_EQ(handler.WriteVSDProfile(sidecar), 1);
  EXPECT_EQ(handler.WriteTrcTag(AFilePath(sidecar)), 1);
  VKVSDProfileParam head;
  EXPECT_EQ(handler.GetVSDProfileParam(head), 1);
  EXPECT_STREQ(head.fileName, "sidecar.xml");
  AFilePath copy = dir.File("copy");
  EXPECT_EQ(handler.GetVSDProfile(copy), 1);
  EXPECT_EQ(ReadFile(copy.str()), (Bytes{'v', 's', 'd'}));
  const auto curve = static_cast<VKCLProfileHandler::EnbedFileType>(0);
  EXPECT_EQ(handler.GetEnbededFile(copy.c_str(), curve), 1);
  EXPECT_EQ(ReadFile(copy.str()), (Bytes{'v', 's', 'd'}));
}

TEST_F(VKCLProfileHandlerRecordsInterface, PropertiesAndLock) {
  ProfileDataList fake;
  fake.DataFormat = 0xFFFFFFFF;
  VKColorParam param;
  param.status = 9;
  ASSERT_EQ(handler.WriteSILWithLinTag(VKSingleInkLimitWithLinRef()), 1);
  ASSERT_EQ(handler.WriteVKColorParamTag(param), 1);
  EXPECT_EQ(handler.IsVKCLProfile(), 1);
  EXPECT_EQ(handler.UnLockVKCLProfile(), 0) << "no linearisation yet";
  ASSERT_EQ(handler.WriteLinReferenceData(fake), 1);
  ASSERT_EQ(handler.WriteLinMeasurementData(fake), 1);
  EXPECT_EQ(handler.IsLinFake(), 1);

  VKCLProfileFinishedState state = FinishedNone;
  EXPECT_EQ(handler.GetVKCLProfileFinishedState(state, 0), 1);
  EXPECT_EQ(state, FinishedLinearisation);
  EXPECT_EQ(handler.isVKCLUnLockedProfile(), 0);
  EXPECT_EQ(handler.LockUnLockedVKCLProfile(), 0);
  EXPECT_EQ(handler.UnLockVKCLProfile(), 1);
  EXPECT_EQ(handler.isVKCLUnLockedProfile(), 1);
  EXPECT_EQ(handler.ModifyUnLockedColorSettings(param), 1);
  EXPECT_EQ(param.status, 12);
  EXPECT_EQ(handler.LockUnLockedVKCLProfile(), 1);

  VKCLProfileProperties properties;
  EXPECT_EQ(handler.GetVKCLProfileProperties(properties, 1), 1);
  EXPECT_EQ(properties.colorParam.status, 13);
  EXPECT_EQ(properties.linMeasurement.DataFormat, 0xFFFFFFFF);
  VKCLProfileOptions options;
  EXPECT_EQ(handler.GetProfileOptions(options), 0) << "no options stored";
  EXPECT_EQ(options.ProfileSize.str(), "2");
}

}  // namespace
}  // namespace vkcl::testing
