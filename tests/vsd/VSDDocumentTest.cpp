// The VSD document as a whole: its beginnings and ends, its copies, and its colour parameters.
#include <array>
#include <cmath>
#include <limits>
#include <memory>

#include "support/HostEncoding.h"
#include "support/SystemCalls.h"
#include "vsd/VSDDocuments.h"

namespace {

using vkcl::testing::BytesOf;
using vkcl::testing::Cat;
using vkcl::testing::CommaLocale;
using vkcl::testing::CommaThreads;
using vkcl::testing::Element;
using vkcl::testing::EverythingText;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FilesIn;
using vkcl::testing::FileText;
using vkcl::testing::HexOf;
using vkcl::testing::LimitsOf;
using vkcl::testing::MakeList;
using vkcl::testing::OpenHandles;
using vkcl::testing::OtherText;
using vkcl::testing::OtherTexts;
using vkcl::testing::Outline;
using vkcl::testing::PythonView;
using vkcl::testing::Repeated;
using vkcl::testing::SampleParam;
using vkcl::testing::SampleParamElements;
using vkcl::testing::SetText;
using vkcl::testing::Sidecar;
using vkcl::testing::SingleLimits;
using vkcl::testing::TempDir;
using vkcl::testing::Utf8Host;
using vkcl::testing::VsdText;
using vkcl::testing::WithTwoDecimals;
using vkcl::testing::WriteEverything;

// An element that no operation asks for.
constexpr char kUnasked[] = "<Unasked>not asked for</Unasked>";

std::string ParamElement(const std::string& elements) {
  return Element("VK_VSD_COLORPARAM", elements);
}

/// A small write that makes a document modified.
int WriteSomething(VSDProfileHandler& handler) {
  return handler.WriteVKSingleInkLimits(SingleLimits({50}));
}
constexpr char kSomething[] =
    "<VK_VSD_SINGLE_INKLIMITS><Num_of_Channels>1</Num_of_Channels><Values>50.00</Values>"
    "</VK_VSD_SINGLE_INKLIMITS>";

// The names of the twelve elements and, of each, a text and what it says.
struct ParamRow {
  const char* name;
  const char* text;
  void (*store)(VKColorParam& param);
};
constexpr ParamRow kRows[] = {
    {"Make", "A make", [](VKColorParam& p) { SetText(p.Make, "A make"); }},
    {"Model", "A model", [](VKColorParam& p) { SetText(p.Model, "A model"); }},
    {"MediaName", "A medium", [](VKColorParam& p) { SetText(p.MediaName, "A medium"); }},
    {"MediaID", "-101", [](VKColorParam& p) { p.MediaID = -101; }},
    {"PrintMode", "102", [](VKColorParam& p) { p.PrintMode = 102; }},
    {"ResolutionID", "103", [](VKColorParam& p) { p.ResolutionID = 103; }},
    {"ResolutionX", "104.5", [](VKColorParam& p) { p.ResolutionX = 104.5f; }},
    {"ResolutionY", "105.25", [](VKColorParam& p) { p.ResolutionY = 105.25f; }},
    {"ColorMode", "-2147483648",
     [](VKColorParam& p) { p.ColorMode = std::numeric_limits<std::int32_t>::min(); }},
    {"DriverColorMode", "107", [](VKColorParam& p) { p.DriverColorMode = 107; }},
    {"DitherMethod", "2147483647",
     [](VKColorParam& p) { p.DitherMethod = std::numeric_limits<std::int32_t>::max(); }},
    {"DriverOption", "0102",
     [](VKColorParam& p) {
       p.DriverOption[0] = 1;
       p.DriverOption[1] = 2;
     }},
};
constexpr std::size_t kRowCount = std::size(kRows);

/// All twelve elements, the one of `name` with another text.
std::string ElementsWith(const std::string& name, const std::string& text) {
  std::string all;
  for (const ParamRow& row : kRows) all += Element(row.name, name == row.name ? text : row.text);
  return all;
}

/// A record that holds something in every field.
VKColorParam UsedParam() {
  VKColorParam param;
  param.version = 71;
  param.size = 72;
  param.status = 73;
  param.MediaID = 74;
  SetText(param.Make, "old make");
  SetText(param.Model, "old model");
  SetText(param.MediaName, "old medium");
  param.ResolutionID = 75;
  param.ResolutionX = 76;
  param.ResolutionY = 77;
  param.ColorMode = 78;
  param.DriverColorMode = 79;
  param.DitherMethod = 80;
  param.PrintMode = 81;
  std::memset(param.DriverOption, 0xEE, sizeof param.DriverOption);
  SetText(param.reservedText1, "old 1");
  SetText(param.reservedText2, "old 2");
  SetText(param.reservedText3, "old 3");
  return param;
}

/// Every field, the texts up to their terminators.
std::string Fields(const VKColorParam& p) {
  const auto text = [](const char(&field)[128]) {
    return "[" + std::string(field, ::strnlen(field, sizeof field)) + "]";
  };
  std::string all;
  for (const std::int32_t number :
       {p.version, p.size, p.status, p.MediaID, p.ResolutionID, p.ColorMode, p.DriverColorMode,
        p.DitherMethod, p.PrintMode, std::bit_cast<std::int32_t>(p.ResolutionX),
        std::bit_cast<std::int32_t>(p.ResolutionY)}) {
    all += std::to_string(number) + " ";
  }
  all += text(p.Make) + text(p.Model) + text(p.MediaName);
  all += HexOf(std::string_view(reinterpret_cast<const char*>(p.DriverOption), 256));
  return all + text(p.reservedText1) + text(p.reservedText2) + text(p.reservedText3);
}

/// What a record holds after a read of all twelve elements, one of them with another text.
VKColorParam ReadWith(const std::string& name, const std::string& text, int expected = 1) {
  Sidecar file(VsdText(ParamElement(ElementsWith(name, text))));
  VKColorParam param = UsedParam();
  EXPECT_EQ(file.handler.ReadVKColorParam(param), expected) << name << ": " << text;
  return param;
}

// Beginning a document.

TEST(VSDDocument, BegunAnewIsValidAndNotSavedUntilItIsWrittenTo) {
  const TempDir dir;
  const std::string path = dir.File("paper.icc");
  {
    VSDProfileHandler handler(AFilePath(path), 0);
    EXPECT_EQ(handler.IsValid(), 1);
    EXPECT_EQ(handler.SaveToFile(), 1);
    EXPECT_FALSE(std::filesystem::exists(path));
  }
  EXPECT_EQ(FilesIn(dir), 0u) << "nor by its end";
}

TEST(VSDDocument, BegunAnewHasAnEmptyRoot) {
  Sidecar file;
  ASSERT_EQ(WriteSomething(file.handler), 1);
  EXPECT_EQ(file.SavedOutline(),
            "VK_VSD_PROFILE=\n"
            "  VK_VSD_SINGLE_INKLIMITS=\n"
            "    Num_of_Channels=1\n"
            "    Values=50.00\n");
}

TEST(VSDDocument, BegunAnewReadsNothingAndReplacesTheFileOnlyWhenItIsFirstSaved) {
  const TempDir dir;
  const std::string old = VsdText(ParamElement(SampleParamElements()));
  const std::string path = dir.Write("paper.icc", BytesOf(old));
  {
    VSDProfileHandler untouched(AFilePath(path), 0);
    VKColorParam param;
    EXPECT_EQ(untouched.ReadVKColorParam(param), 0);
    EXPECT_EQ(untouched.SaveToFile(), 1);
  }
  EXPECT_EQ(FileText(path), old);
  VSDProfileHandler handler(AFilePath(path), 0);
  ASSERT_EQ(WriteSomething(handler), 1);
  EXPECT_EQ(FileText(path), old);
  EXPECT_EQ(handler.SaveToFile(), 1);
  EXPECT_EQ(Outline(FileText(path)), Outline(VsdText(kSomething)));
}

TEST(VSDDocument, BegunAnewReplacesAFileThatIsNoDocument) {
  const TempDir dir;
  const std::string path = dir.Write("paper.icc", BytesOf("no document at all"));
  VSDProfileHandler handler(AFilePath(path), 0);
  EXPECT_EQ(handler.IsValid(), 1);
  ASSERT_EQ(WriteSomething(handler), 1);
  EXPECT_EQ(handler.SaveToFile(), 1);
  EXPECT_EQ(Outline(FileText(path)), Outline(VsdText(kSomething)));
}

// Opening a document.

TEST(VSDDocument, OpensWithAnyArgumentButZero) {
  const TempDir dir;
  const std::string path =
      dir.Write("paper.icc", BytesOf(VsdText(ParamElement(SampleParamElements()))));
  for (const int openExisting : {1, 2, -1, 256, std::numeric_limits<int>::min()}) {
    VSDProfileHandler handler(AFilePath(path), openExisting);
    EXPECT_EQ(handler.IsValid(), 1) << openExisting;
    VKColorParam param;
    EXPECT_EQ(handler.ReadVKColorParam(param), 1) << openExisting;
    EXPECT_STREQ(param.Make, "Some Maker");
  }
}

TEST(VSDDocument, OpenedIsNotSavedUntilItIsWrittenTo) {
  const std::string text = VsdText("\n\n   <Unasked/>   ");
  const TempDir dir;
  const std::string path = dir.Write("paper.icc", BytesOf(text));
  {
    VSDProfileHandler handler(AFilePath(path), 1);
    EXPECT_EQ(handler.SaveToFile(), 1);
    EXPECT_EQ(FileText(path), text);
  }
  EXPECT_EQ(FileText(path), text);
}

TEST(VSDDocument, OpenedIsAddedTo) {
  Sidecar file(VsdText(kUnasked));
  ASSERT_EQ(WriteSomething(file.handler), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(std::string(kUnasked) + kSomething)));
}

TEST(VSDDocument, OfAMissingFileIsInvalidAndNeverCreatesIt) {
  const TempDir dir;
  const std::string path = dir.File("paper.icc");
  {
    VSDProfileHandler handler(AFilePath(path), 1);
    EXPECT_EQ(handler.IsValid(), 0);
    EXPECT_EQ(handler.SaveToFile(), 1);
    EXPECT_EQ(handler.WriteVKColorParam(SampleParam()), 1) << "in memory";
    VKColorParam param;
    EXPECT_EQ(handler.ReadVKColorParam(param), 1) << "from memory";
    EXPECT_STREQ(param.Make, "Some Maker");
    EXPECT_EQ(handler.SaveToFile(), 1) << "there is nothing that may be saved";
    EXPECT_EQ(FilesIn(dir), 0u);
  }
  EXPECT_EQ(FilesIn(dir), 0u);
}

TEST(VSDDocument, OfAFileThatIsNoXmlIsInvalidAndNeverSaved) {
  const std::string good = VsdText(kUnasked);
  for (const std::string& text :
       {std::string(), std::string(" \n"), std::string("plain text"), good.substr(0, 50),
        good + "<Second/>", std::string("<VK_VSD_PROFILE>"), std::string("<VK_VSD_PROFILE"),
        std::string("<VK_VSD_PROFILE></vk_vsd_profile>"), std::string(300, '\0')}) {
    const TempDir dir;
    const std::string path = dir.Write("paper.icc", BytesOf(text));
    {
      VSDProfileHandler handler(AFilePath(path), 1);
      EXPECT_EQ(handler.IsValid(), 0) << text;
      WriteEverything(handler);
      VKColorParam param;
      EXPECT_EQ(handler.ReadVKColorParam(param), 1) << text;
      EXPECT_EQ(handler.SaveToFile(), 1) << text;
      EXPECT_EQ(FileText(path), text);
    }
    EXPECT_EQ(FileText(path), text);
    EXPECT_EQ(FilesIn(dir), 1u);
  }
}

TEST(VSDDocument, OfAFolderIsInvalid) {
  const TempDir dir;
  VSDProfileHandler handler(AFilePath(dir.path().string()), 1);
  EXPECT_EQ(handler.IsValid(), 0);
  EXPECT_EQ(WriteSomething(handler), 1);
  EXPECT_EQ(handler.SaveToFile(), 1);
  EXPECT_EQ(FilesIn(dir), 0u);
}

TEST(VSDDocument, WithAnotherRootIsInvalidKeptInMemoryAndNeverSaved) {
  for (const std::string root :
       {"vk_vsd_profile", "Vk_Vsd_Profile", "VK_VSD_PROFIL", "VK_VSD_PROFILE_", "VK_VSD_PROFILES",
        "RootElement", "VK_VSD_COLORPARAM", "_"}) {
    const std::string text =
        Element(root, ParamElement(SampleParamElements()) + "<MeasurementData/>");
    const TempDir dir;
    const std::string path = dir.Write("paper.icc", BytesOf(text));
    {
      VSDProfileHandler handler(AFilePath(path), 1);
      EXPECT_EQ(handler.IsValid(), 0) << root;
      VKColorParam param;
      EXPECT_EQ(handler.ReadVKColorParam(param), 1) << root;
      EXPECT_STREQ(param.Make, "Some Maker");
      EXPECT_EQ(handler.WriteVSDMeasurementData(1, MakeList(1, 1, 0, 1, 7, {2.0})), 1);
      ProfileDataList list;
      EXPECT_EQ(handler.ReadVSDMeasurementData(1, list), 1) << root;
      EXPECT_EQ(list.Measured, 7);
      EXPECT_EQ(handler.SaveToFile(), 1);
      EXPECT_EQ(FileText(path), text);
    }
    EXPECT_EQ(FileText(path), text);
  }
}

TEST(VSDDocument, FindsItsElementsInTheRootOnly) {
  Sidecar file("<VK_VSD_PROFILE><Wrapper><VK_VSD_PROFILE>" + ParamElement(SampleParamElements()) +
               "</VK_VSD_PROFILE></Wrapper></VK_VSD_PROFILE>");
  EXPECT_EQ(file.handler.IsValid(), 1);
  VKColorParam param;
  EXPECT_EQ(file.handler.ReadVKColorParam(param), 0);
}

// Saving.

TEST(VSDDocument, EverythingIsWrittenInOrder) {
  Sidecar file;
  WriteEverything(file.handler);
  EXPECT_EQ(file.SavedOutline(), Outline(EverythingText()));
}

TEST(VSDDocument, IsSavedAsTextWithTwoBlanksALevel) {
  Sidecar file;
  ASSERT_EQ(WriteSomething(file.handler), 1);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  EXPECT_EQ(file.Text(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<VK_VSD_PROFILE>\n"
            "  <VK_VSD_SINGLE_INKLIMITS>\n"
            "    <Num_of_Channels>1</Num_of_Channels>\n"
            "    <Values>50.00</Values>\n"
            "  </VK_VSD_SINGLE_INKLIMITS>\n"
            "</VK_VSD_PROFILE>\n");
}

TEST(VSDDocument, EverythingIsReadBackFromItsFile) {
  Sidecar file;
  WriteEverything(file.handler);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  VSDProfileHandler opened(AFilePath(file.path), 1);
  ASSERT_EQ(opened.IsValid(), 1);
  VKColorParam param;
  ASSERT_EQ(opened.ReadVKColorParam(param), 1);
  VKColorParam expected = SampleParam();
  expected.status = 0;
  expected.reservedText1[0] = expected.reservedText2[0] = expected.reservedText3[0] = 0;
  EXPECT_EQ(Fields(param), Fields(expected));
  ProfileDataList list;
  ASSERT_EQ(opened.ReadVSDMeasurementData(2, list), 1);
  EXPECT_TRUE(list == MakeList(0x4C616220, 2, 4, 1, 2, {0.5, -2.0}));
  EXPECT_EQ(list.Measured, 2);
  EXPECT_EQ(opened.IsComplete(), 1);
}

TEST(VSDDocument, TwoLivesOfADocumentAddUp) {
  Sidecar file;
  WriteEverything(file.handler);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  {
    VSDProfileHandler opened(AFilePath(file.path), 1);
    ASSERT_EQ(WriteSomething(opened), 1);
  }
  const std::string all = EverythingText();
  const std::string end = "</VK_VSD_PROFILE>\n";
  EXPECT_EQ(Outline(file.Text()),
            Outline(all.substr(0, all.size() - end.size()) + kSomething + end));
}

TEST(VSDDocument, IsSavedOnceForAWrite) {
  Sidecar file;
  ASSERT_EQ(WriteSomething(file.handler), 1);
  EXPECT_FALSE(file.Exists());
  EXPECT_EQ(file.handler.SaveToFile(), 1);
  ASSERT_TRUE(std::filesystem::remove(file.path));
  EXPECT_EQ(file.handler.SaveToFile(), 1) << "there is nothing to save";
  EXPECT_FALSE(file.Exists());
  ASSERT_EQ(WriteSomething(file.handler), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(std::string(kSomething) + kSomething)));
}

TEST(VSDDocument, IsSavedByItsEndWhenModified) {
  const TempDir dir;
  const std::string path = dir.File("paper.icc");
  {
    VSDProfileHandler handler(AFilePath(path), 0);
    ASSERT_EQ(WriteSomething(handler), 1);
    EXPECT_EQ(FilesIn(dir), 0u);
  }
  EXPECT_EQ(Outline(FileText(path)), Outline(VsdText(kSomething)));
  EXPECT_EQ(FilesIn(dir), 1u);
}

TEST(VSDDocument, IsNotSavedAgainByItsEnd) {
  const TempDir dir;
  const std::string path = dir.File("paper.icc");
  {
    VSDProfileHandler handler(AFilePath(path), 0);
    ASSERT_EQ(WriteSomething(handler), 1);
    ASSERT_EQ(handler.SaveToFile(), 1);
    std::filesystem::remove(path);
  }
  EXPECT_EQ(FilesIn(dir), 0u);
}

TEST(VSDDocument, IsNotModifiedByReading) {
  const std::string text = EverythingText();
  const TempDir dir;
  const std::string path = dir.Write("paper.icc", BytesOf(text));
  {
    VSDProfileHandler handler(AFilePath(path), 1);
    VKColorParam param;
    ProfileDataList list;
    VKSingleInkLimitWithLinRef single;
    VKSpotSingleInkLimit spot;
    double medium[2] = {};
    double large[2] = {};
    int count = 0;
    EXPECT_EQ(handler.ReadVKColorParam(param), 1);
    EXPECT_EQ(handler.ReadVSDReferenceData(0, list), 1);
    EXPECT_EQ(handler.ReadVerifyMeasurementData(list), 1);
    EXPECT_EQ(handler.ReadMediumAndLargeStart(medium, large, count), 1);
    EXPECT_EQ(handler.ReadLargeDotScale(medium, count), 1);
    EXPECT_EQ(handler.ReadVKSingleInkLimits(single), 1);
    EXPECT_EQ(handler.ReadVKSpotSIL(spot), 1);
    EXPECT_EQ(handler.IsComplete(), 1);
    EXPECT_EQ(handler.SaveToFile(), 1);
  }
  EXPECT_EQ(FileText(path), text);
}

TEST(VSDDocument, AFailedSaveIsReportedOnceAndNotTriedAgain) {
  const TempDir dir;
  const std::filesystem::path folder = dir.path() / "VSDProfile";
  const std::string path = (folder / "paper.icc").string();
  {
    VSDProfileHandler handler(AFilePath(path), 0);
    ASSERT_EQ(WriteSomething(handler), 1);
    EXPECT_EQ(handler.SaveToFile(), 0) << "there is no such folder";
    EXPECT_FALSE(std::filesystem::exists(folder)) << "which is the caller's to make";
    std::filesystem::create_directory(folder);
    EXPECT_EQ(handler.IsValid(), 1);
    EXPECT_EQ(handler.SaveToFile(), 1) << "it does not count as modified any more";
  }
  EXPECT_FALSE(std::filesystem::exists(path)) << "nor for its end";
}

TEST(VSDDocument, AWriteBehindAFailedSaveSavesEverything) {
  const TempDir dir;
  const std::filesystem::path folder = dir.path() / "VSDProfile";
  const std::string path = (folder / "paper.icc").string();
  VSDProfileHandler handler(AFilePath(path), 0);
  ASSERT_EQ(handler.WriteVKColorParam(SampleParam()), 1);
  ASSERT_EQ(handler.SaveToFile(), 0);
  std::filesystem::create_directory(folder);
  ASSERT_EQ(WriteSomething(handler), 1);
  EXPECT_EQ(handler.SaveToFile(), 1);
  EXPECT_EQ(Outline(FileText(path)),
            Outline(VsdText(ParamElement(SampleParamElements()) + kSomething)));
}

TEST(VSDDocument, AFailedSaveAtItsEndIsIgnored) {
  const TempDir dir;
  {
    VSDProfileHandler handler(AFilePath((dir.path() / "none" / "paper.icc").string()), 0);
    ASSERT_EQ(WriteSomething(handler), 1);
  }
  {
    std::filesystem::create_directory(dir.path() / "folder");
    VSDProfileHandler handler(AFilePath(dir.File("folder")), 0);
    ASSERT_EQ(WriteSomething(handler), 1);
  }
  EXPECT_EQ(FilesIn(dir), 1u);
  EXPECT_TRUE(std::filesystem::is_directory(dir.path() / "folder"));
}

TEST(VSDDocument, WithoutAPathIsNotSaved) {
  VSDProfileHandler handler(AFilePath(""), 0);
  EXPECT_EQ(handler.IsValid(), 1);
  ASSERT_EQ(WriteSomething(handler), 1);
  EXPECT_EQ(handler.SaveToFile(), 0);
  EXPECT_EQ(VSDProfileHandler(AFilePath(""), 1).IsValid(), 0);
}

TEST(VSDDocument, EveryFaultOfTheSystemLeavesTheOldFileOrTheNewOne) {
  const std::string old = VsdText(kUnasked);
  const std::string next = Outline(VsdText(std::string(kUnasked) + kSomething));
  for (const Fault fault :
       {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
    int failures = 0;
    bool reached = true;
    for (std::size_t which = 0; reached && which < 200; ++which) {
      SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      Sidecar file(old);
      ASSERT_EQ(WriteSomething(file.handler), 1);
      const int handles = OpenHandles();
      int saved = -1;
      {
        const FaultAt at(which, fault);
        saved = file.handler.SaveToFile();
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(OpenHandles(), handles);
      EXPECT_EQ(FilesIn(file.dir), 1u);
      if (saved == 0) {
        ++failures;
        EXPECT_TRUE(reached);
        EXPECT_EQ(file.Text(), old);
        EXPECT_EQ(file.handler.SaveToFile(), 1) << "not tried again";
        EXPECT_EQ(file.Text(), old);
      } else {
        EXPECT_EQ(saved, 1);
        EXPECT_EQ(Outline(file.Text()), next);
      }
    }
    EXPECT_FALSE(reached) << "the calls have an end";
    // A transfer that is cut short or interrupted is carried on, the others cannot be helped.
    if (fault == Fault::Error || fault == Fault::FullDisk || fault == Fault::FailedClose) {
      EXPECT_GT(failures, 0) << static_cast<int>(fault);
    } else {
      EXPECT_EQ(failures, 0) << static_cast<int>(fault);
    }
  }
}

TEST(VSDDocument, EveryFaultOfTheFirstSaveLeavesNoFileOrTheNewOne) {
  for (const Fault fault : {Fault::Error, Fault::FullDisk, Fault::FailedClose}) {
    bool reached = true;
    for (std::size_t which = 0; reached && which < 200; ++which) {
      SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      const TempDir dir;
      const std::string path = dir.File("paper.icc");
      int saved = -1;
      {
        VSDProfileHandler handler(AFilePath(path), 0);
        ASSERT_EQ(WriteSomething(handler), 1);
        const FaultAt at(which, fault);
        saved = handler.SaveToFile();
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(FilesIn(dir), saved == 0 ? 0u : 1u);
      if (saved == 1) {
        EXPECT_EQ(Outline(FileText(path)), Outline(VsdText(kSomething)));
      }
    }
  }
}

TEST(VSDDocument, AFaultOfTheSystemAtItsEndLeavesTheOldFile) {
  const std::string old = VsdText(kUnasked);
  const TempDir dir;
  const std::string path = dir.Write("paper.icc", BytesOf(old));
  {
    auto handler = std::make_unique<VSDProfileHandler>(AFilePath(path), 1);
    ASSERT_EQ(WriteSomething(*handler), 1);
    const FaultAt at(0, Fault::Error);
    handler.reset();
    EXPECT_TRUE(FaultAt::Reached());
  }
  EXPECT_EQ(FileText(path), old);
  EXPECT_EQ(FilesIn(dir), 1u);
}

TEST(VSDDocument, EveryFaultOfTheSystemWhileItIsOpenedGivesTheDocumentOrNone) {
  const TempDir dir;
  const std::string path = dir.Write("paper.icc", BytesOf(EverythingText()));
  for (const Fault fault :
       {Fault::Error, Fault::Short, Fault::Interrupted, Fault::FullDisk, Fault::FailedClose}) {
    bool reached = true;
    for (std::size_t which = 0; reached && which < 200; ++which) {
      SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      const int handles = OpenHandles();
      {
        std::optional<FaultAt> at(std::in_place, which, fault);
        VSDProfileHandler handler(AFilePath(path), 1);
        reached = FaultAt::Reached();
        at.reset();
        VKColorParam param;
        EXPECT_EQ(handler.ReadVKColorParam(param), handler.IsValid());
        if (!reached) {
          EXPECT_EQ(handler.IsValid(), 1);
        }
      }
      EXPECT_EQ(OpenHandles(), handles);
    }
  }
  EXPECT_EQ(FileText(path), EverythingText());
}

// Copies.

TEST(VSDDocumentCopies, ShareOneDocument) {
  Sidecar file;
  VSDProfileHandler copy(file.handler);
  EXPECT_EQ(copy.IsValid(), 1);
  ASSERT_EQ(copy.WriteVKColorParam(SampleParam()), 1);
  VKColorParam param;
  ASSERT_EQ(file.handler.ReadVKColorParam(param), 1);
  EXPECT_STREQ(param.Make, "Some Maker");
  ASSERT_EQ(WriteSomething(file.handler), 1);
  VKSingleInkLimitWithLinRef limits;
  ASSERT_EQ(copy.ReadVKSingleInkLimits(limits), 1);
  EXPECT_EQ(LimitsOf(limits)[0], 50);
}

TEST(VSDDocumentCopies, KnowOnlyOfTheirOwnWrites) {
  Sidecar file;
  VSDProfileHandler copy(file.handler);
  ASSERT_EQ(WriteSomething(copy), 1);
  EXPECT_EQ(file.handler.SaveToFile(), 1);
  EXPECT_FALSE(file.Exists()) << "the original was not written through";
  EXPECT_EQ(copy.SaveToFile(), 1);
  EXPECT_EQ(Outline(file.Text()), Outline(VsdText(kSomething)));
}

TEST(VSDDocumentCopies, OfAModifiedDocumentAreModified) {
  Sidecar file;
  ASSERT_EQ(WriteSomething(file.handler), 1);
  { const VSDProfileHandler copy(file.handler); }
  ASSERT_TRUE(file.Exists()) << "the end of the copy saves";
  std::filesystem::remove(file.path);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(kSomething))) << "and the original still would";
}

TEST(VSDDocumentCopies, OfASavedDocumentAreNotModified) {
  Sidecar file;
  ASSERT_EQ(WriteSomething(file.handler), 1);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  std::filesystem::remove(file.path);
  {
    VSDProfileHandler copy(file.handler);
    EXPECT_EQ(copy.SaveToFile(), 1);
  }
  EXPECT_FALSE(file.Exists());
}

TEST(VSDDocumentCopies, KeepTheDocumentUntilTheLastIsGone) {
  const TempDir dir;
  const std::string path = dir.File("paper.icc");
  auto first = std::make_unique<VSDProfileHandler>(AFilePath(path), 0);
  ASSERT_EQ(first->WriteVKColorParam(SampleParam()), 1);
  ASSERT_EQ(first->SaveToFile(), 1);
  auto second = std::make_unique<VSDProfileHandler>(*first);
  auto third = std::make_unique<VSDProfileHandler>(*second);
  first.reset();
  VKColorParam param;
  EXPECT_EQ(second->ReadVKColorParam(param), 1);
  second.reset();
  ASSERT_EQ(WriteSomething(*third), 1);
  EXPECT_EQ(third->ReadVKColorParam(param), 1);
  EXPECT_STREQ(param.Make, "Some Maker");
  third.reset();
  EXPECT_EQ(Outline(FileText(path)),
            Outline(VsdText(ParamElement(SampleParamElements()) + kSomething)));
}

TEST(VSDDocumentCopies, OfAnInvalidDocumentAreInvalid) {
  const TempDir dir;
  {
    const VSDProfileHandler invalid(AFilePath(dir.File("paper.icc")), 1);
    VSDProfileHandler copy(invalid);
    EXPECT_EQ(copy.IsValid(), 0);
    EXPECT_EQ(WriteSomething(copy), 1);
    VSDProfileHandler assigned(AFilePath(dir.File("other.icc")), 0);
    assigned = copy;
    EXPECT_EQ(assigned.IsValid(), 0);
    EXPECT_EQ(assigned.SaveToFile(), 1);
  }
  EXPECT_EQ(FilesIn(dir), 0u);
}

TEST(VSDDocumentCopies, AssignmentTakesOverPathDocumentAndFlags) {
  const TempDir dir;
  const std::string pathA = dir.File("a.icc");
  const std::string pathB = dir.File("b.icc");
  {
    VSDProfileHandler a(AFilePath(pathA), 0);
    ASSERT_EQ(a.WriteVKColorParam(SampleParam()), 1);
    VSDProfileHandler b(AFilePath(pathB), 0);
    ASSERT_EQ(WriteSomething(b), 1);
    a = b;
    EXPECT_EQ(FilesIn(dir), 0u) << "assignment saves nothing";
    VKColorParam param;
    EXPECT_EQ(a.ReadVKColorParam(param), 0) << "what was not saved is gone";
    EXPECT_EQ(a.SaveToFile(), 1);
    EXPECT_EQ(Outline(FileText(pathB)), Outline(VsdText(kSomething)));
    std::filesystem::remove(pathB);
    EXPECT_EQ(b.SaveToFile(), 1);
    EXPECT_TRUE(std::filesystem::exists(pathB)) << "the flags are two";
    ASSERT_EQ(a.WriteVKColorParam(SampleParam()), 1);
    EXPECT_EQ(b.ReadVKColorParam(param), 1) << "the document is one";
  }
  EXPECT_FALSE(std::filesystem::exists(pathA));
}

TEST(VSDDocumentCopies, AssignmentOfACleanDocumentMakesClean) {
  const TempDir dir;
  {
    VSDProfileHandler a(AFilePath(dir.File("a.icc")), 0);
    ASSERT_EQ(WriteSomething(a), 1);
    const VSDProfileHandler b(AFilePath(dir.File("b.icc")), 0);
    a = b;
    EXPECT_EQ(a.SaveToFile(), 1);
  }
  EXPECT_EQ(FilesIn(dir), 0u);
}

TEST(VSDDocumentCopies, SelfAssignmentChangesNothing) {
  Sidecar file;
  ASSERT_EQ(WriteSomething(file.handler), 1);
  VSDProfileHandler& same = file.handler;
  file.handler = same;
  EXPECT_EQ(file.handler.IsValid(), 1);
  EXPECT_EQ(file.SavedOutline(), Outline(VsdText(kSomething)));
}

// The path of the document.

TEST(ICCtoVSDFolder, IsTheFolderBesideTheProfilesFolderAndTheSameName) {
  const struct {
    const char* icc;
    const char* vsd;
  } rows[] = {
      {"/home/print/Printer/ICC/paper.icc", "/home/print/Printer/VSDProfile/paper.icc"},
      {"Printer/ICC/paper.icc", "Printer/VSDProfile/paper.icc"},
      {"/Printer/ICC/paper.v2.ICM", "/Printer/VSDProfile/paper.v2.ICM"},
      {"/Printer/ICC/paper", "/Printer/VSDProfile/paper"},
      {"/Printer/ICC/.icc", "/Printer/VSDProfile/.icc"},
      {"/Printer/ICC v2.1/a b.icc", "/Printer/VSDProfile/a b.icc"},
      {"/Printer/VSDProfile/paper.icc", "/Printer/VSDProfile/paper.icc"},
      {"/Printer/ICC/paper.xml", "/Printer/VSDProfile/paper.xml"},
      {"/ICC/paper.icc", "/VSDProfile/paper.icc"},
      {"ICC/paper.icc", "VSDProfile/paper.icc"},
      {"/\xE5\x86\x99/\xE7\x9C\x9F/\xD0\x91.icc", "/\xE5\x86\x99/VSDProfile/\xD0\x91.icc"},
  };
  for (const auto& row : rows) {
    const AFilePath icc(row.icc);
    EXPECT_EQ(VSDProfileHandler::ICCtoVSDFolder(icc).str(), row.vsd) << row.icc;
    EXPECT_EQ(icc.str(), row.icc);
  }
}

TEST(ICCtoVSDFolder, IsFoundWithoutDoubledSeparators) {
  for (const char* const icc :
       {"/Printer//ICC/paper.icc", "/Printer/ICC//paper.icc", "//Printer///ICC////paper.icc"}) {
    EXPECT_EQ(VSDProfileHandler::ICCtoVSDFolder(AFilePath(icc)).str(),
              "/Printer/VSDProfile/paper.icc")
        << icc;
  }
  EXPECT_EQ(VSDProfileHandler::ICCtoVSDFolder(AFilePath("//paper.icc")).str(),
            "/VSDProfile/paper.icc");
}

TEST(ICCtoVSDFolder, OfAProfileInTheRootFolderStaysThere) {
  EXPECT_EQ(VSDProfileHandler::ICCtoVSDFolder(AFilePath("/paper.icc")).str(),
            "/VSDProfile/paper.icc");
}

TEST(ICCtoVSDFolder, TouchesNoFile) {
  const TempDir dir;
  const std::string icc = (dir.path() / "ICC" / "paper.icc").string();
  EXPECT_EQ(VSDProfileHandler::ICCtoVSDFolder(AFilePath(icc)).str(),
            (dir.path() / "VSDProfile" / "paper.icc").string());
  EXPECT_EQ(FilesIn(dir), 0u);
}

// Completeness.

std::string Measured(const std::string& samples, const std::string& measured) {
  return Element("NumOfSamples", samples) + Element("Measured", measured);
}

std::string Measurements(const std::string& small, const std::string& medium,
                         const std::string& large) {
  return "<MeasurementData>" + Element("Small", small) + Element("Medium", medium) +
         Element("Large", large) + "</MeasurementData>";
}

int Complete(const std::string& elements) {
  const Sidecar file(VsdText(elements));
  EXPECT_EQ(file.handler.IsValid(), 1);
  return file.handler.IsComplete();
}

TEST(VSDDocumentIsComplete, WhenEverySampleOfAllThreeSizesIsMeasured) {
  const std::string done = Measured("10", "10");
  EXPECT_EQ(Complete(Measurements(done, done, Measured("10", "9"))), 0);
  EXPECT_EQ(Complete(Measurements(done, done, Measured("10", "10"))), 1);
  EXPECT_EQ(Complete(Measurements(done, done, Measured("10", "11"))), 1);
  EXPECT_EQ(Complete(Measurements(done, Measured("10", "9"), done)), 0);
  EXPECT_EQ(Complete(Measurements(Measured("10", "9"), done, done)), 0);
  EXPECT_EQ(Complete(Measurements(Measured("1", "1"), Measured("2", "3"), done)), 1);
  EXPECT_EQ(Complete(""), 0);
  EXPECT_EQ(Complete("<MeasurementData/>"), 0);
}

TEST(VSDDocumentIsComplete, NotWithoutSamples) {
  const std::string done = Measured("10", "10");
  for (const std::string& none :
       {Measured("0", "0"), Measured("0", "10"), Measured("", ""), Measured("", "5"),
        Measured("ten", "10"), Measured("-0", "0"), Measured("- 5", "5")}) {
    EXPECT_EQ(Complete(Measurements(none, done, done)), 0) << none;
    EXPECT_EQ(Complete(Measurements(done, none, done)), 0) << none;
    EXPECT_EQ(Complete(Measurements(done, done, none)), 0) << none;
  }
}

TEST(VSDDocumentIsComplete, NeedsEveryElement) {
  const std::string done = Measured("10", "10");
  for (int size = 0; size < 3; ++size) {
    for (const std::string& lacking :
         {std::string(), Element("NumOfSamples", "10"), Element("Measured", "10"),
          Element("numofsamples", "10") + Element("Measured", "10"),
          Element("NumOfSamples", "10") + Element("measured", "10"),
          "<Inner>" + Measured("10", "10") + "</Inner>"}) {
      const auto of = [&](int i) { return i == size ? lacking : done; };
      EXPECT_EQ(Complete(Measurements(of(0), of(1), of(2))), 0) << size << lacking;
    }
    const char* const names[] = {"Small", "Medium", "Large"};
    std::string two;
    for (int i = 0; i < 3; ++i) {
      if (i != size) two += Element(names[i], done);
    }
    EXPECT_EQ(Complete(Element("MeasurementData", two)), 0) << names[size];
    EXPECT_EQ(Complete(Element("MeasurementData", two + Element(names[size], done))), 1);
    EXPECT_EQ(Complete(Element("MeasurementData", two) + Element(names[size], done)), 0);
  }
}

TEST(VSDDocumentIsComplete, MeasuredMayNotBeLess) {
  const std::string done = Measured("10", "10");
  for (const std::string less : {"", "0", "-1", "9.99", "x10", "1 0", "-2147483648"}) {
    EXPECT_EQ(Complete(Measurements(done, Measured("10", less), done)), 0) << less;
  }
  for (const std::string enough : {" 10", "\n\t10\n", "+10", "10 of 10", "2147483647", "0010"}) {
    EXPECT_EQ(Complete(Measurements(done, Measured("10", enough), done)), 1) << enough;
  }
}

// A number of samples that is not 0 passes as it stands, and what is measured is compared with it.
TEST(VSDDocumentIsComplete, ANegativeNumberOfSamplesIsNotZero) {
  const std::string done = Measured("10", "10");
  EXPECT_EQ(Complete(Measurements(done, Measured("-5", "-5"), done)), 1);
  EXPECT_EQ(Complete(Measurements(done, Measured("-5", "0"), done)), 1);
  EXPECT_EQ(Complete(Measurements(done, Measured("-5", "-6"), done)), 0);
}

TEST(VSDDocumentIsComplete, TheFirstOfEachNameCounts) {
  const std::string done = Measured("10", "10");
  const std::string half = Measured("10", "5");
  const std::string yes = Measurements(done, done, done);
  const std::string no = Measurements(done, done, half);
  EXPECT_EQ(Complete(yes + no), 1);
  EXPECT_EQ(Complete(no + yes), 0);
  EXPECT_EQ(Complete("<MeasurementData/>" + yes), 0);
  const auto twoSmall = [&](const std::string& first, const std::string& second) {
    return Element("MeasurementData", Element("Large", done) + Element("Small", first) +
                                          Element("Medium", done) + Element("Small", second));
  };
  EXPECT_EQ(Complete(twoSmall(done, half)), 1);
  EXPECT_EQ(Complete(twoSmall(half, done)), 0);
  EXPECT_EQ(Complete(Measurements(done + half, done + Measured("0", "0"), done)), 1);
  EXPECT_EQ(Complete(Measurements(half + done, done, done)), 0);
  EXPECT_EQ(Complete(Measurements(Element("Measured", "10") + half, done, done)), 1);
}

TEST(VSDDocumentIsComplete, NothingElsePlaysAPart) {
  const std::string done = Measured("10", "10");
  std::string others;
  for (const std::string name : {"ReferenceData", "InvertedData", "MeasurementDataVerify"}) {
    others +=
        Element(name, Element("Small", done) + Element("Medium", done) + Element("Large", done));
  }
  EXPECT_EQ(Complete(others), 0);
  const std::string none = Measured("0", "0");
  std::string bad;
  for (const std::string name : {"ReferenceData", "InvertedData"}) {
    bad += Element(name, Element("Small", none));
  }
  EXPECT_EQ(Complete(bad + Measurements(done, done, done)), 1);
}

TEST(VSDDocumentIsComplete, OfADocumentThatIsBeingWritten) {
  Sidecar file;
  const VSDProfileHandler& reader = file.handler;
  EXPECT_EQ(reader.IsComplete(), 0);
  const ProfileDataList done = MakeList(1, 2, 0, 1, 2, {1, 2});
  EXPECT_EQ(file.handler.WriteVSDMeasurementData(2, done), 1);
  EXPECT_EQ(reader.IsComplete(), 0);
  EXPECT_EQ(file.handler.WriteVSDMeasurementData(0, done), 1);
  EXPECT_EQ(reader.IsComplete(), 0);
  EXPECT_EQ(file.handler.WriteVSDReferenceData(1, done), 1);
  EXPECT_EQ(file.handler.WriteVSDInvertedData(1, done), 1);
  EXPECT_EQ(file.handler.WriteVerifyMeasurementData(done), 1);
  EXPECT_EQ(reader.IsComplete(), 0);
  EXPECT_EQ(file.handler.WriteVSDMeasurementData(1, done), 1);
  EXPECT_EQ(reader.IsComplete(), 1);
  EXPECT_EQ(file.handler.WriteVSDMeasurementData(1, MakeList(1, 2, 0, 1, 0, {1, 2})), 1);
  EXPECT_EQ(reader.IsComplete(), 1) << "the first list of a size counts";
}

// Writing the colour parameters.

TEST(VSDColorParam, IsWrittenAsTwelveElementsInOrder) {
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKColorParam(SampleParam()), 1);
  EXPECT_EQ(file.SavedOutline(),
            "VK_VSD_PROFILE=\n"
            "  VK_VSD_COLORPARAM=\n"
            "    Make=Some Maker\n"
            "    Model=Model <9> & \"more\"\n"
            "    MediaName=Gloss paper\n"
            "    MediaID=17\n"
            "    PrintMode=-3\n"
            "    ResolutionID=5\n"
            "    ResolutionX=720.000000\n"
            "    ResolutionY=1440.500000\n"
            "    ColorMode=-2147483647\n"
            "    DriverColorMode=2\n"
            "    DitherMethod=3\n"
            "    DriverOption=00ab" +
                Repeated("5c", 254) + "\n");
}

TEST(VSDColorParam, OfADefaultRecord) {
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKColorParam(VKColorParam()), 1);
  EXPECT_EQ(file.SavedOutline(),
            "VK_VSD_PROFILE=\n"
            "  VK_VSD_COLORPARAM=\n"
            "    Make=\n"
            "    Model=\n"
            "    MediaName=\n"
            "    MediaID=0\n"
            "    PrintMode=0\n"
            "    ResolutionID=0\n"
            "    ResolutionX=0.000000\n"
            "    ResolutionY=0.000000\n"
            "    ColorMode=0\n"
            "    DriverColorMode=0\n"
            "    DitherMethod=0\n"
            "    DriverOption=" +
                Repeated("00", 256) + "\n");
  VSDProfileHandler opened(AFilePath(file.path), 1);
  VKColorParam param = UsedParam();
  ASSERT_EQ(opened.ReadVKColorParam(param), 1);
  EXPECT_STREQ(param.Make, "");
  EXPECT_STREQ(param.Model, "");
  EXPECT_STREQ(param.MediaName, "");
  EXPECT_EQ(param.DriverOption[255], 0);
}

TEST(VSDColorParam, WritesEveryOptionByteInLowerCase) {
  VKColorParam param;
  for (std::size_t i = 0; i < 256; ++i) param.DriverOption[i] = static_cast<unsigned char>(i);
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKColorParam(param), 1);
  EXPECT_NE(file.SavedOutline().find(
                "DriverOption="
                "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"
                "202122232425262728292a2b2c2d2e2f303132333435363738393a3b3c3d3e3f"
                "404142434445464748494a4b4c4d4e4f505152535455565758595a5b5c5d5e5f"
                "606162636465666768696a6b6c6d6e6f707172737475767778797a7b7c7d7e7f"
                "808182838485868788898a8b8c8d8e8f909192939495969798999a9b9c9d9e9f"
                "a0a1a2a3a4a5a6a7a8a9aaabacadaeafb0b1b2b3b4b5b6b7b8b9babbbcbdbebf"
                "c0c1c2c3c4c5c6c7c8c9cacbcccdcecfd0d1d2d3d4d5d6d7d8d9dadbdcdddedf"
                "e0e1e2e3e4e5e6e7e8e9eaebecedeeeff0f1f2f3f4f5f6f7f8f9fafbfcfdfeff\n"),
            std::string::npos);
  VKColorParam read;
  ASSERT_EQ(file.handler.ReadVKColorParam(read), 1);
  EXPECT_EQ(Fields(read), Fields(param));
}

TEST(VSDColorParam, WritesResolutionsWithSixDecimals) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const struct {
    float number;
    const char* text;
  } rows[] = {
      {720.0f, "720.000000"},
      {1440.5f, "1440.500000"},
      {-0.5f, "-0.500000"},
      {0.1f, "0.100000"},
      {-0.0f, "-0.000000"},
      {1e-7f, "0.000000"},
      {1.5e-6f, "0.000002"},
      {123456.789f, "123456.789062"},  // the nearest float is 123456.7890625, ties to even
      {16777216.0f, "16777216.000000"},
      {3.40282347e38f, "340282346638528859811704183484516925440.000000"},
      {kInfinity, "inf"},
      {-kInfinity, "-inf"},
  };
  for (const auto& row : rows) {
    VKColorParam param;
    param.ResolutionX = row.number;
    param.ResolutionY = 1.0f;
    Sidecar x;
    ASSERT_EQ(x.handler.WriteVKColorParam(param), 1);
    EXPECT_NE(x.SavedOutline().find("    ResolutionX=" + std::string(row.text) +
                                    "\n    ResolutionY=1.000000\n"),
              std::string::npos)
        << row.text;
    std::swap(param.ResolutionX, param.ResolutionY);
    Sidecar y;
    ASSERT_EQ(y.handler.WriteVKColorParam(param), 1);
    EXPECT_NE(y.SavedOutline().find(
                  "    ResolutionX=1.000000\n    ResolutionY=" + std::string(row.text) + "\n"),
              std::string::npos)
        << row.text;
  }
}

TEST(VSDColorParam, WrittenTwiceStandsTwiceAndTheFirstIsRead) {
  Sidecar file;
  VKColorParam first = SampleParam();
  VKColorParam second = SampleParam();
  SetText(second.Make, "Second maker");
  second.MediaID = 18;
  ASSERT_EQ(file.handler.WriteVKColorParam(first), 1);
  ASSERT_EQ(file.handler.WriteVKColorParam(second), 1);
  VKColorParam param;
  ASSERT_EQ(file.handler.ReadVKColorParam(param), 1);
  EXPECT_STREQ(param.Make, "Some Maker");
  EXPECT_EQ(param.MediaID, 17);
  std::string again = SampleParamElements();
  again.replace(again.find("Some Maker"), 10, "Second maker");
  again.replace(again.find("17"), 2, "18");
  EXPECT_EQ(file.SavedOutline(),
            Outline(VsdText(ParamElement(SampleParamElements()) + ParamElement(again))));
  VSDProfileHandler opened(AFilePath(file.path), 1);
  ASSERT_EQ(opened.ReadVKColorParam(param), 1);
  EXPECT_EQ(param.MediaID, 17);
}

TEST(VSDColorParam, TextsThatFillTheirFieldsSurvive) {
  VKColorParam param;
  std::memset(param.Make, 'a', 127);
  std::memset(param.Model, 'b', 127);
  std::memset(param.MediaName, 'c', 127);
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKColorParam(param), 1);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  VSDProfileHandler opened(AFilePath(file.path), 1);
  VKColorParam read = UsedParam();
  ASSERT_EQ(opened.ReadVKColorParam(read), 1);
  EXPECT_EQ(std::string(read.Make), std::string(127, 'a'));
  EXPECT_EQ(std::string(read.Model), std::string(127, 'b'));
  EXPECT_EQ(std::string(read.MediaName), std::string(127, 'c'));
}

TEST(VSDColorParam, AnUnterminatedTextIsWrittenAsItsFirst127Characters) {
  VKColorParam param;
  std::memset(param.Make, 'a', 128);
  std::memset(param.Model, 'b', 128);
  std::memset(param.MediaName, 'c', 128);
  param.ResolutionID = 0x64646464;  // follows the last of them in memory
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKColorParam(param), 1);
  const std::string saved = file.SavedOutline();
  EXPECT_NE(
      saved.find("    Make=" + std::string(127, 'a') + "\n    Model=" + std::string(127, 'b') +
                 "\n    MediaName=" + std::string(127, 'c') + "\n    MediaID=0\n"),
      std::string::npos)
      << saved;
}

TEST(VSDColorParam, TextBehindATerminatorIsNotWritten) {
  VKColorParam param;
  SetText(param.Make, std::string_view("Maker\0and what stood there", 26));
  Sidecar file;
  ASSERT_EQ(file.handler.WriteVKColorParam(param), 1);
  EXPECT_NE(file.SavedOutline().find("    Make=Maker\n    Model=\n"), std::string::npos);
}

TEST(VSDColorParam, TextsOfOtherLanguagesAndNoTextsSurviveTheFile) {
  const Utf8Host host;
  for (const OtherText& text : OtherTexts()) {
    ASSERT_LT(text.bytes.size(), 128u);
    VKColorParam param;
    SetText(param.Make, text.bytes.c_str());
    SetText(param.Model, ("<" + text.bytes).c_str());
    SetText(param.MediaName, (text.bytes + "!").c_str());
    Sidecar file;
    ASSERT_EQ(file.handler.WriteVKColorParam(param), 1);
    VKColorParam read;
    ASSERT_EQ(file.handler.ReadVKColorParam(read), 1);
    EXPECT_EQ(read.Make, text.bytes) << text.what << ", in memory";
    ASSERT_EQ(file.handler.SaveToFile(), 1);
    VSDProfileHandler opened(AFilePath(file.path), 1);
    ASSERT_EQ(opened.IsValid(), 1) << text.what;
    read = UsedParam();
    ASSERT_EQ(opened.ReadVKColorParam(read), 1) << text.what;
    EXPECT_EQ(HexOf(read.Make), HexOf(text.bytes)) << text.what;
    EXPECT_EQ(HexOf(read.Model), HexOf("<" + text.bytes)) << text.what;
    EXPECT_EQ(HexOf(read.MediaName), HexOf(text.bytes + "!")) << text.what;
  }
}

TEST(VSDColorParam, IsReadAlikeByAnotherReaderOfXml) {
  const Utf8Host host;
  Sidecar file;
  std::string expected;
  for (const OtherText& text : OtherTexts()) {
    VKColorParam param;
    SetText(param.Make, text.bytes.c_str());
    ASSERT_EQ(file.handler.WriteVKColorParam(param), 1);
    if (text.isPlainText) expected += "Make " + HexOf(text.bytes) + "\n";
  }
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  const std::optional<std::string> view = PythonView(file.path);
  if (!view) GTEST_SKIP() << "no python3";
  ASSERT_NE(*view, "malformed");
  std::string makes;
  std::size_t at = 0;
  for (const OtherText& text : OtherTexts()) {
    at = view->find("\nMake ", at) + 1;
    ASSERT_NE(at, 0u) << text.what;
    const std::size_t end = view->find('\n', at);
    if (text.isPlainText) makes += view->substr(at, end - at) + "\n";
    at = end;
  }
  EXPECT_EQ(makes, expected);
}

TEST(VSDColorParam, ATextThatEndsAmidACharacterIsNoHarm) {
  const Utf8Host host;
  for (std::size_t letters = 124; letters < 128; ++letters) {
    const std::string text = std::string(letters, 'a') + Repeated("\xE5\x86\x99", 2);
    VKColorParam param;
    std::memcpy(param.Make, text.data(), 128);  // no terminator
    Sidecar file;
    ASSERT_EQ(file.handler.WriteVKColorParam(param), 1);
    ASSERT_EQ(file.handler.SaveToFile(), 1);
    VSDProfileHandler opened(AFilePath(file.path), 1);
    VKColorParam read;
    ASSERT_EQ(opened.ReadVKColorParam(read), 1);
    EXPECT_TRUE(text.starts_with(read.Make)) << HexOf(read.Make);
    EXPECT_GE(std::strlen(read.Make), 124u);
  }
}

// Reading the colour parameters.

TEST(VSDColorParam, IsReadFieldByField) {
  VKColorParam expected = UsedParam();
  for (const ParamRow& row : kRows) row.store(expected);
  EXPECT_EQ(Fields(ReadWith("", "")), Fields(expected))
      << "version, size, status and reserved texts stay";
}

TEST(VSDColorParam, WithoutItsElementChangesNothing) {
  for (const std::string elements :
       {"", "<vk_vsd_colorparam/>", "<VK_VSD_SINGLE_INKLIMITS/>", "<Make>A make</Make>"}) {
    Sidecar file(VsdText(elements));
    VKColorParam param = UsedParam();
    EXPECT_EQ(file.handler.ReadVKColorParam(param), 0);
    EXPECT_EQ(Fields(param), Fields(UsedParam()));
  }
}

TEST(VSDColorParam, AMissingElementEndsTheReadBehindTheFieldsBeforeIt) {
  for (std::size_t missing = 0; missing < kRowCount; ++missing) {
    std::string elements;
    for (std::size_t i = kRowCount; i-- > 0;) {  // their order in the file plays no part
      if (i != missing) elements += Element(kRows[i].name, kRows[i].text);
    }
    VKColorParam expected = UsedParam();
    for (std::size_t i = 0; i < missing; ++i) kRows[i].store(expected);
    // Neither a name in other case nor the element of a second set stands in for it.
    std::string lower = kRows[missing].name;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    Sidecar file(
        VsdText(ParamElement(elements + Element(lower, "1")) + ParamElement(ElementsWith("", ""))));
    VKColorParam param = UsedParam();
    EXPECT_EQ(file.handler.ReadVKColorParam(param), 0) << kRows[missing].name;
    EXPECT_EQ(Fields(param), Fields(expected)) << kRows[missing].name;
  }
}

TEST(VSDColorParam, TheFirstElementOfANameIsRead) {
  Sidecar file(VsdText(ParamElement(ElementsWith("", "") + SampleParamElements())));
  VKColorParam param = UsedParam();
  ASSERT_EQ(file.handler.ReadVKColorParam(param), 1);
  VKColorParam expected = UsedParam();
  for (const ParamRow& row : kRows) row.store(expected);
  EXPECT_EQ(Fields(param), Fields(expected));
}

TEST(VSDColorParam, IntegersAreReadUpToTheFirstCharacterThatIsNoDigit) {
  const struct {
    const char* text;
    std::int32_t number;
  } rows[] = {
      {"42", 42},
      {"  42", 42},
      {"\n\t 42 \n", 42},
      {"+42", 42},
      {"-42", -42},
      {"0042", 42},
      {"42abc", 42},
      {"42.9", 42},
      {"4 2", 4},
      {"1e3", 1},
      {"0x10", 0},
      {"", 0},
      {" ", 0},
      {"abc", 0},
      {"-", 0},
      {"- 5", 0},
      {"--5", 0},
      {"+-5", 0},
      {"2147483647", 2147483647},
      {"-2147483647", -2147483647},
      {"-2147483648", std::numeric_limits<std::int32_t>::min()},
  };
  const struct {
    const char* name;
    std::int32_t VKColorParam::*field;
  } fields[] = {
      {"MediaID", &VKColorParam::MediaID},
      {"PrintMode", &VKColorParam::PrintMode},
      {"ResolutionID", &VKColorParam::ResolutionID},
      {"ColorMode", &VKColorParam::ColorMode},
      {"DriverColorMode", &VKColorParam::DriverColorMode},
      {"DitherMethod", &VKColorParam::DitherMethod},
  };
  for (const auto& row : rows) {
    for (const auto& field : fields) {
      const VKColorParam param = ReadWith(field.name, row.text);
      EXPECT_EQ(param.*field.field, row.number) << field.name << ": " << row.text;
    }
  }
}

TEST(VSDColorParam, ResolutionsAreReadAsDecimalNumbers) {
  const struct {
    const char* text;
    float number;
  } rows[] = {
      {"720", 720.0f},
      {"720.000000", 720.0f},
      {"  720.5", 720.5f},
      {"\n 720.5 \n", 720.5f},
      {"720.5dpi", 720.5f},
      {"720,5", 720.0f},
      {"7.2e2", 720.0f},
      {"-0.25", -0.25f},
      {"+.5", 0.5f},
      {"5.", 5.0f},
      {"", 0.0f},
      {"dpi", 0.0f},
      {".", 0.0f},
      {"0.1", 0.1f},
      {"16777217", 16777216.0f},
      {"1.234.5", 1.234f},
      {"-0.000000", -0.0f},
  };
  for (const auto& row : rows) {
    const float x = ReadWith("ResolutionX", row.text).ResolutionX;
    EXPECT_EQ(std::bit_cast<std::uint32_t>(x), std::bit_cast<std::uint32_t>(row.number))
        << row.text << " " << x;
    const float y = ReadWith("ResolutionY", row.text).ResolutionY;
    EXPECT_EQ(std::bit_cast<std::uint32_t>(y), std::bit_cast<std::uint32_t>(row.number))
        << row.text << " " << y;
  }
}

TEST(VSDColorParam, BlanksAroundTextsAreKept) {
  EXPECT_STREQ(ReadWith("Make", "  A  make \n").Make, "  A  make \n");
  EXPECT_STREQ(ReadWith("Model", "   ").Model, "   ");
  EXPECT_STREQ(ReadWith("MediaName", "\t").MediaName, "\t");
}

TEST(VSDColorParam, ALongTextIsCutTo127Bytes) {
  for (const std::size_t length : {127u, 128u, 129u, 200u, 100000u}) {
    Sidecar file(VsdText(ParamElement(Element("Make", std::string(length, 'a')) +
                                      Element("Model", std::string(length, 'b')) +
                                      Element("MediaName", std::string(length, 'c')))));
    VKColorParam param = UsedParam();
    EXPECT_EQ(file.handler.ReadVKColorParam(param), 0) << "there is no MediaID";
    EXPECT_STREQ(param.Make, std::string(127, 'a').c_str());
    EXPECT_STREQ(param.Model, std::string(127, 'b').c_str());
    EXPECT_STREQ(param.MediaName, std::string(127, 'c').c_str());
    EXPECT_EQ(param.ResolutionID, 75);
    EXPECT_EQ(param.MediaID, 74);
  }
}

TEST(VSDColorParam, ALongTextIsCutAtACharacter) {
  const Utf8Host host;
  const struct {
    std::size_t letters;
    const char* character;
    std::size_t kept;
  } rows[] = {
      {125, "\xC3\xA9", 127},         {126, "\xC3\xA9", 126},
      {127, "\xC3\xA9", 127},         {124, "\xE5\x86\x99", 127},
      {125, "\xE5\x86\x99", 125},     {126, "\xE5\x86\x99", 126},
      {123, "\xF0\x9F\x93\x84", 127}, {124, "\xF0\x9F\x93\x84", 124},
      {125, "\xF0\x9F\x93\x84", 125}, {126, "\xF0\x9F\x93\x84", 126},
  };
  for (const auto& row : rows) {
    for (const std::string tail : {"", "and more", "\xE5\x86\x99"}) {
      const std::string text = std::string(row.letters, 'a') + row.character;
      std::string expected = (text + tail).substr(0, row.kept);
      if (row.kept == text.size() && tail == "and more") {
        expected = (text + tail).substr(0, 127);
      }
      EXPECT_EQ(HexOf(ReadWith("Model", text + tail).Model), HexOf(expected))
          << row.letters << " letters and " << row.character << tail;
    }
  }
}

// On a host of one-byte characters each byte is one, whatever it would be in UTF-8.
TEST(VSDColorParam, ALongTextIsCutAt127BytesOfAHostOfOneByteCharacters) {
  const vkcl::testing::MadeLocale latin1("de_DE", "ISO-8859-1");
  if (!latin1.works()) GTEST_SKIP() << "localedef makes no such locale here";
  const std::string text = std::string(126, 'a') + "\xC3\xBC" + std::string(9, 'b');
  EXPECT_EQ(latin1.Run([&] {
    const TempDir dir;
    AXMLTree tree("VK_VSD_PROFILE");
    tree.GetRoot().AddChild("VK_VSD_COLORPARAM", "").AddChild("Make", text);
    if (tree.SaveToFile(AFilePath(dir.File("f"))) == 0) return std::string("not saved");
    VSDProfileHandler handler(AFilePath(dir.File("f")), 1);
    VKColorParam param;
    handler.ReadVKColorParam(param);
    return std::string(param.Make);
  }),
            text.substr(0, 127));
}

/// The options behind a read of this text over bytes 0xEE.
std::string OptionsFrom(const std::string& text, int expected = 1) {
  const VKColorParam param = ReadWith("DriverOption", text, expected);
  return HexOf(std::string_view(reinterpret_cast<const char*>(param.DriverOption), 256));
}

TEST(VSDColorParam, OptionsFillOnlyTheBytesThatTheTextHolds) {
  EXPECT_EQ(OptionsFrom(""), Repeated("ee", 256));
  EXPECT_EQ(OptionsFrom("00ab"), "00ab" + Repeated("ee", 254));
  EXPECT_EQ(OptionsFrom("00ab5"), "00ab" + Repeated("ee", 254)) << "half a byte is none";
  EXPECT_EQ(OptionsFrom("5"), Repeated("ee", 256));
  EXPECT_EQ(OptionsFrom(Repeated("12", 255)), Repeated("12", 255) + "ee");
  EXPECT_EQ(OptionsFrom(Repeated("12", 255) + "3"), Repeated("12", 255) + "ee");
  EXPECT_EQ(OptionsFrom(Repeated("12", 256)), Repeated("12", 256));
}

TEST(VSDColorParam, OptionsBehindTheLastByteAreIgnored) {
  EXPECT_EQ(OptionsFrom(Repeated("12", 256) + "34"), Repeated("12", 256));
  EXPECT_EQ(OptionsFrom(Repeated("12", 5000)), Repeated("12", 256));
  EXPECT_EQ(OptionsFrom(Repeated("12", 256) + "no digits"), Repeated("12", 256));
}

TEST(VSDColorParam, OptionsMayBeOfUpperCase) {
  EXPECT_EQ(OptionsFrom("ABCDEFabcdefAbCd"), "abcdefabcdefabcd" + Repeated("ee", 248));
}

TEST(VSDColorParam, OptionsMayBeWrappedOverLines) {
  EXPECT_EQ(OptionsFrom("\n      " + Repeated("0123456789\n      ", 51) + "01\n    "),
            Repeated("0123456789", 51) + "01");
  EXPECT_EQ(OptionsFrom("00 ab\t5c\r\n01 "), "00ab5c01" + Repeated("ee", 252));
  EXPECT_EQ(OptionsFrom(" \n "), Repeated("ee", 256));
}

TEST(VSDColorParam, OptionsThatAreNoDigitsFail) {
  for (const std::string bad :
       {"zz", "0g", "g0", "+1", "-1", "0x12", "00,ab", "00-ab", "00ab\xC3\xA9", "..", "12345g"}) {
    const VKColorParam param = ReadWith("DriverOption", bad, 0);
    VKColorParam expected = UsedParam();
    for (std::size_t i = 0; i + 1 < kRowCount; ++i) kRows[i].store(expected);
    std::memcpy(expected.DriverOption, param.DriverOption, 256);  // they may hold anything then
    EXPECT_EQ(Fields(param), Fields(expected)) << bad;
  }
}

// Other locales.

TEST(VSDColorParam, IsWrittenAndReadWithAPointWhateverTheLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.works()) << "the build makes the locale from Debian's package locales";
  const CommaThreads others;
  const std::string expected = Outline(VsdText(ParamElement(SampleParamElements())));
  for (int round = 0; round < 50; ++round) {
    Sidecar file;
    ASSERT_EQ(file.handler.WriteVKColorParam(SampleParam()), 1);
    ASSERT_EQ(file.SavedOutline(), expected);
    VSDProfileHandler opened(AFilePath(file.path), 1);
    VKColorParam read;
    ASSERT_EQ(opened.ReadVKColorParam(read), 1);
    EXPECT_EQ(read.ResolutionX, 720.0f);
    ASSERT_EQ(read.ResolutionY, 1440.5f);
    EXPECT_EQ(WithTwoDecimals(1.5), "1,50") << "the caller's locale is as before";
  }
}

TEST(VSDColorParam, ANumberWithACommaEndsThereWhateverTheLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.works());
  EXPECT_EQ(ReadWith("ResolutionX", "720,5").ResolutionX, 720.0f);
}

}  // namespace
