// The library's exported header as a caller uses it: it alone gives everything that is asked for
// here.
#pragma GCC diagnostic error "-Wmismatched-tags"
class VKCLProfileHandler;
class VKCLProfile;
class VKCLProfileProperties;
class VKCLProfileOptions;
class SplitParam;
class ProfileDataList;
class VKColorParam;
class VKCompatibilityParam;
class VKDitherParam;
class VKLinExtraDataParam;
class VKMultiInklimit;
class VKProfileExtraParam;
class VKSingleInkLimitWithLinRef;
class VKSpotLinDLParam;
class VKSpotSingleInkLimit;
class VKVSDProfileParam;

#include "handler/VKCLProfileHandler.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "interface/Interface.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "support/ImageBuilder.h"
#include "support/TempDir.h"

// Declared again: does not compile unless the header declares the very same, and with C linkage.
extern "C" void* CopyCLLinkRef(void* link16Ref, unsigned int* size);

namespace vkcl::testing {
namespace {

using Handler = VKCLProfileHandler;
using FileType = VKCLProfileHandler::EnbedFileType;

static_assert(std::is_class_v<Handler> && sizeof(Handler) == sizeof(VKCLProfile));
static_assert(std::is_constructible_v<Handler, AFilePath&, int>);
static_assert(std::is_constructible_v<Handler, const AFilePath&, int>);
static_assert(std::is_constructible_v<Handler, const char*, int>);
static_assert(std::is_constructible_v<Handler, const std::string&, int>);
static_assert(std::is_constructible_v<Handler, const AString&, int>);
static_assert(std::is_copy_constructible_v<Handler> && std::is_copy_assignable_v<Handler>);
static_assert(std::is_enum_v<FileType>);

static_assert(Operation<VKCLProfile*()>::Is(&Handler::GetProfilePtr));
static_assert(Query<int()>::Is(&Handler::IsVKCLProfile));
static_assert(Query<int()>::Is(&Handler::IsICCFile));
static_assert(Query<int()>::Is(&Handler::IsOutputICCFile));
static_assert(Operation<icColorSpaceSignature()>::Is(&Handler::GetColorSpace));
static_assert(Operation<icColorSpaceSignature()>::Is(&Handler::GetPCS));
static_assert(
    Query<int(VKCLProfileFinishedState&, int)>::Is(&Handler::GetVKCLProfileFinishedState));

// Writers leave the record as it is, but for the version of the multiple ink limits and the lengths
// of the links.
template <class Argument>
using Take = Operation<int(Argument)>;
static_assert(Take<const SplitParam&>::Is(&Handler::WriteInkSplitTag));
static_assert(Take<const VKSingleInkLimitWithLinRef&>::Is(&Handler::WriteSILWithLinTag));
static_assert(Take<VKMultiInklimit&>::Is(&Handler::WriteMultipleInkLimitTag));
static_assert(Take<const VKColorParam&>::Is(&Handler::WriteVKColorParamTag));
static_assert(Take<const AFilePath&>::Is(&Handler::WriteTrcTag));
static_assert(Take<const int&>::Is(&Handler::WriteVKCMStoDither));
static_assert(Take<const VKDitherParam&>::Is(&Handler::WriteDitherParamTag));
static_assert(Take<const VKCompatibilityParam&>::Is(&Handler::WriteVKCompatibilityParam));
static_assert(Take<const VKSpotSingleInkLimit&>::Is(&Handler::WriteVKSpotSIL));
static_assert(Take<VKSpotLinDLParam&>::Is(&Handler::WriteVKSpotLinDL));
static_assert(Take<const VKLinExtraDataParam&>::Is(&Handler::WriteVKLinExtraData));
static_assert(Take<const AFilePath&>::Is(&Handler::WriteVSDProfile));
static_assert(Take<int>::Is(&Handler::WriteVKWizardFlag));
static_assert(Take<const AString&>::Is(&Handler::WriteVKChromaAdjust));
static_assert(Take<const VKProfileExtraParam&>::Is(&Handler::WriteVKProfileExtraParam));
static_assert(requires(Handler & handler, const VKSingleInkLimitWithLinRef& single,
                       const VKMultiInklimit& multi, const VKColorParam& param, SplitParam* split) {
  requires std::is_same_v<decltype(handler.WriteAllVKPrivateTags(single, multi, param, split)),
                          int>;
});

static_assert(Operation<int(SplitParam&, int)>::Is(&Handler::GetSplitParam));
static_assert(Take<VKSingleInkLimitWithLinRef&>::Is(&Handler::GetVKSingleInkLimitWithLinRef));
static_assert(Operation<int(VKMultiInklimit&, int)>::Is(&Handler::GetVKMultiInklimit));
static_assert(Take<VKColorParam&>::Is(&Handler::GetVKColorParam));
static_assert(Operation<int()>::Is(&Handler::IsCMStoDither));
static_assert(Take<VKDitherParam&>::Is(&Handler::GetVKDitherParam));
static_assert(Take<VKCompatibilityParam&>::Is(&Handler::GetVKCompatibilityParam));
static_assert(Take<VKSpotSingleInkLimit&>::Is(&Handler::GetVKSpotSIL));
static_assert(Take<VKSpotLinDLParam&>::Is(&Handler::GetVKSpotLinDL));
static_assert(Take<VKLinExtraDataParam&>::Is(&Handler::GetVKLinExtraData));
static_assert(Take<VKVSDProfileParam&>::Is(&Handler::GetVSDProfileParam));
static_assert(Take<const AFilePath&>::Is(&Handler::GetVSDProfile));
static_assert(Operation<int()>::Is(&Handler::IsWizardICC));
static_assert(Take<AString&>::Is(&Handler::GetVKChromaAdjust));
static_assert(Take<VKProfileExtraParam&>::Is(&Handler::GetVKProfileExtraParam));

static_assert(Take<const ProfileDataList&>::Is(&Handler::WriteLinMeasurementData));
static_assert(Take<const ProfileDataList&>::Is(&Handler::WriteLinReferenceData));
static_assert(Take<const ProfileDataList&>::Is(&Handler::WriteGBMeasurementData));
static_assert(Take<const ProfileDataList&>::Is(&Handler::WriteGBReferenceData));
static_assert(Take<const ProfileDataList&>::Is(&Handler::WriteCharMeasurementData));
static_assert(Take<const ProfileDataList&>::Is(&Handler::WriteCharReferenceData));
static_assert(Take<const ProfileDataList&>::Is(&Handler::WriteVKLinRefData));
static_assert(Take<const ProfileDataList&>::Is(&Handler::WriteVKLinOutputData));
static_assert(Take<ProfileDataList&>::Is(&Handler::GetVKLinRefData));
static_assert(Take<ProfileDataList&>::Is(&Handler::GetVKLinOutputData));
static_assert(Operation<int(void*, FileType)>::Is(&Handler::WriteCLICCProfieRef));
static_assert(Operation<int(const AFilePath&, FileType)>::Is(&Handler::GetEnbededFile));

static_assert(Take<VKCLProfileOptions&>::Is(&Handler::GetProfileOptions));
static_assert(Operation<int(VKCLProfileProperties&, int)>::Is(&Handler::GetVKCLProfileProperties));
static_assert(Operation<int()>::Is(&Handler::IsLinFake));
static_assert(Operation<int()>::Is(&Handler::isVKCLUnLockedProfile));
static_assert(Operation<int()>::Is(&Handler::UnLockVKCLProfile));
static_assert(Take<VKColorParam&>::Is(&Handler::ModifyUnLockedColorSettings));
static_assert(Operation<int()>::Is(&Handler::LockUnLockedVKCLProfile));

static_assert(VKCL_IS_PUBLIC(Handler, IsLinFake), "what is public is told from what is not");
static_assert(!VKCL_IS_PUBLIC(Handler, WriteProfileDataList));
static_assert(!VKCL_IS_PUBLIC(Handler, ReadProfileDataList));
static_assert(!VKCL_IS_PUBLIC(Handler, GetICCDataFormatFromStr));
static_assert(!VKCL_IS_PUBLIC(Handler, LoadVKCLProfilePropertiesHelper));
static_assert(!VKCL_IS_PUBLIC(Handler, ParseVKCLtargBuffer));
// Embedded files are asked for by their type, and not by their signature.
template <class Kind>
constexpr auto kGetFile = [](auto& handler) requires requires {
  handler.GetEnbededFile(AFilePath(), Kind());
}
{};
static_assert(Allows<Handler>(kGetFile<FileType>));
static_assert(!Allows<Handler>(kGetFile<VKPrivateTagSignature>));

static_assert(Function<void*(void*, unsigned int*)>::Is(&CopyCLLinkRef));
static_assert(Function<AString(const AString&)>::Is(&VKCLMultiByteToUTF8));

TEST(VKCLProfileHandlerInterface, AMissingFileGivesNothing) {
  const TempDir dir;
  Handler handler(dir.File("missing.icc"), 0);
  const Handler& constant = handler;
  EXPECT_NE(handler.GetProfilePtr(), nullptr);
  EXPECT_EQ(constant.IsVKCLProfile(), 0);
  EXPECT_EQ(constant.IsICCFile(), 0);
  EXPECT_EQ(constant.IsOutputICCFile(), 0);
  VKCLProfileFinishedState state = FinishedProfile;
  EXPECT_EQ(constant.GetVKCLProfileFinishedState(state, 0), 0);
  EXPECT_EQ(state, FinishedNone);
  EXPECT_EQ(handler.IsCMStoDither(), 0);
  EXPECT_EQ(handler.IsWizardICC(), 0);
  EXPECT_EQ(handler.IsLinFake(), 0);
  EXPECT_EQ(handler.isVKCLUnLockedProfile(), 0);
  EXPECT_EQ(handler.UnLockVKCLProfile(), 0);
  EXPECT_EQ(handler.LockUnLockedVKCLProfile(), 0);
  VKCLProfileProperties properties;
  EXPECT_EQ(handler.GetVKCLProfileProperties(properties, 1), 0);
  EXPECT_EQ(handler.GetProfileOptions(properties.options), 0);
  EXPECT_EQ(handler.GetVKColorParam(properties.colorParam), 0);
  EXPECT_EQ(handler.ModifyUnLockedColorSettings(properties.colorParam), 0);
  EXPECT_EQ(handler.WriteTrcTag(dir.File("missing.trc")), 0);
  EXPECT_EQ(handler.GetVSDProfile(dir.path().string()), 0) << "a folder";
  EXPECT_EQ(handler.GetEnbededFile(dir.File("out").c_str(), static_cast<FileType>(5)), 0);
  EXPECT_EQ(handler.WriteCLICCProfieRef(nullptr, static_cast<FileType>(1)), 0);
}

TEST(VKCLProfileHandlerInterface, HandlersAreCopied) {
  const TempDir dir;
  Handler handler(dir.File("paper.icc"), 4);
  ASSERT_EQ(handler.WriteVKWizardFlag(3), 1);
  EXPECT_EQ(handler.GetColorSpace(), icSigCmykData);
  EXPECT_EQ(handler.GetPCS(), icSigLabData);
  Handler copy(handler);
  Handler assigned(dir.File("other.icc"), 0);
  assigned = copy;
  EXPECT_EQ(copy.IsWizardICC(), 3);
  EXPECT_EQ(assigned.IsWizardICC(), 3);
  EXPECT_NE(assigned.GetProfilePtr(), handler.GetProfilePtr());
}

TEST(VKCLProfileHandlerInterface, EmbeddedProfiles) {
  const TempDir dir;
  Handler handler(dir.File("paper.icc"), 4);
  const Bytes image = ProfileImage(ProfileHeader(), {{Sig("desc"), Pattern(16, 1)}});
  void* profile = CLNewCLProfileRef();
  ASSERT_EQ(CLLoadProfileFromMemory(profile, image.data(), static_cast<unsigned>(image.size())), 0);
  constexpr VKPrivateTagSignature kSignatures[] = {QX58, QX61, QX62, QX63, QX65};
  for (int i = 0; i < 5; ++i) {
    const auto type = static_cast<FileType>(i);
    EXPECT_EQ(handler.WriteCLICCProfieRef(profile, type), 1) << i;
    EXPECT_EQ(handler.GetProfilePtr()->GetTagSize(static_cast<icTagSignature>(kSignatures[i])),
              image.size() + 12);
    AFilePath path = dir.File("out.icc");
    EXPECT_EQ(handler.GetEnbededFile(path, type), 1) << i;
    EXPECT_TRUE(SameBytes(ReadFile(path.str()), image));
  }
  CLFreeCLProfileRef(profile);
}

TEST(VKCLProfileHandlerInterface, FreeFunctions) {
  unsigned int size = 7;
  EXPECT_EQ(CopyCLLinkRef(nullptr, &size), nullptr);
  EXPECT_EQ(size, 7u);
  void* link = CLNewCLLink16Ref();
  void* copy = CopyCLLinkRef(link, &size);
  EXPECT_NE(copy, nullptr);
  EXPECT_NE(copy, link);
  EXPECT_EQ(size, 0u);
  CLFreeCLLink16Ref(copy);
  copy = CopyCLLinkRef(link, nullptr);
  EXPECT_NE(copy, nullptr);
  CLFreeCLLink16Ref(copy);
  CLFreeCLLink16Ref(link);
  EXPECT_TRUE(VKCLMultiByteToUTF8("paper.icc") == "paper.icc");
  EXPECT_TRUE(VKCLMultiByteToUTF8(std::string()).empty());
}

}  // namespace
}  // namespace vkcl::testing
