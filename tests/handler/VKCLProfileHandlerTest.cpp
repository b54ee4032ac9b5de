#include "handler/VKCLProfileHandler.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>

#include "handler/StoredSplit.h"
#include "platform/profiler/TesselColorProfiler.h"
#include "support/RealProfiles.h"
#include "support/SystemCalls.h"
#include "support/TagFile.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FileHead;
using vkcl::testing::FileTag;
using vkcl::testing::HexBytes;
using vkcl::testing::Payload;
using vkcl::testing::PayloadOf;
using vkcl::testing::ProfileFile;
using vkcl::testing::ReadFile;
using vkcl::testing::RealProfile;
using vkcl::testing::SameBytes;
using vkcl::testing::SignaturesOf;
using vkcl::testing::TagsOf;
using vkcl::testing::TempDir;

using Strings = std::vector<std::string>;

constexpr char k100[] = "0000000000005940";  // 100.0 as a double
constexpr char kMinusOne[] = "000080BF";     // -1.0 as a float

/// A profile file with the given tags, behind a tag that is not the library's, and a handler on it.
class OnFile {
 public:
  explicit OnFile(const std::vector<FileTag>& tags = {}, const FileHead& head = {}, int flag = 0)
      : path_(dir_.Write("profile.icc", ProfileFile(WithOther(tags), head))),
        handler(path_, flag) {}

  const TempDir& dir() const { return dir_; }
  const std::string& path() const { return path_; }
  Bytes File() const { return ReadFile(path_); }
  std::optional<Bytes> Stored(const std::string& signature) const {
    return PayloadOf(File(), signature);
  }

 private:
  static std::vector<FileTag> WithOther(std::vector<FileTag> tags) {
    tags.insert(tags.begin(), FileTag("desc", HexBytes("DDDDDD")));
    return tags;
  }

  TempDir dir_;
  std::string path_;

 public:
  VKCLProfileHandler handler;
};

/// The file of a profile with one tag whose data lie behind the end of the file.
Bytes CutProfile(const FileTag& tag) {
  Bytes file = ProfileFile({tag});
  file.resize(132 + 12 + 12 + 1);
  return file;
}

template <class Record>
Bytes RecordImage(const Record& record) {
  Bytes image(sizeof record);
  std::memcpy(image.data(), static_cast<const void*>(&record), sizeof record);
  return image;
}

/// A record of bytes of one value, with bytes behind it that a reader must not reach.
template <class Record>
struct Fenced {
  Fenced() {
    std::memset(static_cast<void*>(&record), 0x77, sizeof record);
    std::memset(fence, 0x77, sizeof fence);
  }
  bool Whole() const {
    for (const unsigned char byte : fence) {
      if (byte != 0x77) return false;
    }
    return true;
  }

  Record record;
  unsigned char fence[600];
};

/// What a record of `size` bytes of 0x77 holds after the first ones were replaced.
Bytes Over77(std::size_t size, const Bytes& first) {
  Bytes expected(size, 0x77);
  for (std::size_t i = 0; i < first.size() && i < size; ++i) expected[i] = first[i];
  return expected;
}

/// Bytes that count upwards from 1.
Bytes Counting(std::size_t size) {
  Bytes bytes;
  for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<unsigned char>(i % 251 + 1));
  return bytes;
}

// Construction and queries.

TEST(HandlerQueries, TellWhatTheFileIs) {
  const OnFile cmyk;
  EXPECT_EQ(cmyk.handler.IsICCFile(), 1);
  EXPECT_EQ(cmyk.handler.IsOutputICCFile(), 1);
  EXPECT_EQ(cmyk.handler.IsVKCLProfile(), 0);
  EXPECT_EQ(cmyk.handler.GetColorSpace(), icSigCmykData);
  EXPECT_EQ(cmyk.handler.GetPCS(), icSigLabData);

  const OnFile rgb({}, {"mntr", "RGB ", "XYZ "});
  EXPECT_EQ(rgb.handler.IsICCFile(), 1);
  EXPECT_EQ(rgb.handler.IsOutputICCFile(), 0);
  EXPECT_EQ(rgb.handler.GetColorSpace(), icSigRgbData);
  EXPECT_EQ(rgb.handler.GetPCS(), icSigXYZData);

  const OnFile own({{"QX51", Bytes(140)}, {"QX53", Bytes(1068)}});
  EXPECT_EQ(own.handler.IsVKCLProfile(), 1);
}

TEST(HandlerQueries, TakeTheFlagAsChannelCount) {
  const FileHead twoColours{"prtr", "2CLR", "Lab "};
  EXPECT_EQ(OnFile({}, twoColours, 0).handler.IsICCFile(), 0);
  EXPECT_EQ(OnFile({}, twoColours, 2).handler.IsICCFile(), 1);
}

TEST(HandlerQueries, OfAMissingFileSayNo) {
  const TempDir dir;
  const VKCLProfileHandler handler(dir.File("missing.icc"), 4);
  EXPECT_EQ(handler.IsICCFile(), 0);
  EXPECT_EQ(handler.IsOutputICCFile(), 0);
  EXPECT_EQ(handler.IsVKCLProfile(), 0);
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "missing.icc"));
}

TEST(HandlerQueries, ForwardStateAndFlag) {
  Bytes param = Payload().HexDigits("01000000 2C040000 09000000").Fill(1056);
  const OnFile file({{"QX51", Bytes(140)}, {"QX53", param}, {"QX52", Bytes(300)}});
  VKCLProfileFinishedState state = FinishedNone;
  EXPECT_EQ(file.handler.GetVKCLProfileFinishedState(state, 1), 1);
  EXPECT_EQ(state, 4);
  EXPECT_EQ(file.handler.GetVKCLProfileFinishedState(state, 0), 1);
  EXPECT_EQ(state, 1);
  const OnFile other;
  state = FinishedProfile;
  EXPECT_EQ(other.handler.GetVKCLProfileFinishedState(state, 1), 0);
  EXPECT_EQ(state, 0);
}

TEST(HandlerQueries, GiveTheOwnedProfile) {
  OnFile file;
  VKCLProfile* profile = file.handler.GetProfilePtr();
  ASSERT_NE(profile, nullptr);
  EXPECT_EQ(profile, file.handler.GetProfilePtr());
  AFilePath path;
  profile->GetICCFilePath(path);
  EXPECT_EQ(path.str(), file.path());
}

// Writing: each tag as it must lie in the file.

TEST(HandlerWrites, InkSplit) {
  SplitTypeV2 record;
  record.colorantIndex = 3;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(2, 1, &record), 1);
  OnFile file;
  EXPECT_EQ(file.handler.WriteInkSplitTag(split), 1);
  EXPECT_EQ(file.Stored("QX50"), Payload()
                                     .HexDigits("02000000 60000000 01000000 0000000000000000")
                                     .HexDigits("4C000000 03000000")
                                     .HexDigits(kMinusOne, 8)
                                     .Fill(36)
                                     .bytes());
}

TEST(HandlerWrites, SingleInkLimits) {
  VKSingleInkLimitWithLinRef limits;
  limits.size = 7;
  limits.limits[15] = 50.0;
  OnFile file;
  EXPECT_EQ(file.handler.WriteSILWithLinTag(limits), 1);
  EXPECT_EQ(file.Stored("QX51"), Payload()
                                     .HexDigits("01000000 07000000 10000000")
                                     .HexDigits(k100, 15)
                                     .HexDigits("0000000000004940")
                                     .bytes());
}

TEST(HandlerWrites, MultipleInkLimitsOfMoreThanOneLimitAsVersionTwo) {
  for (const auto& [count, bytes] : {std::pair(36, "24000000"), std::pair(2, "02000000")}) {
    for (const int version : {1, 2, 4, 9}) {
      VKMultiInklimit limits;
      limits.version = version;
      limits.count = count;
      OnFile file;
      EXPECT_EQ(file.handler.WriteMultipleInkLimitTag(limits), 1);
      EXPECT_EQ(limits.version, 2);
      EXPECT_EQ(
          file.Stored("QX52"),
          Payload().HexDigits("02000000 2C010000").HexDigits(bytes).HexDigits(k100, 36).bytes());
    }
  }
}

TEST(HandlerWrites, MultipleInkLimitsOfOneLimitOrLessAsVersionFour) {
  for (const auto& [count, bytes] :
       {std::pair(1, "01000000"), std::pair(0, "00000000"), std::pair(-1, "FFFFFFFF")}) {
    VKMultiInklimit limits;
    limits.version = 2;
    limits.count = count;
    OnFile file;
    EXPECT_EQ(file.handler.WriteMultipleInkLimitTag(limits), 1);
    EXPECT_EQ(limits.version, 4);
    EXPECT_EQ(
        file.Stored("QX52"),
        Payload().HexDigits("04000000 2C010000").HexDigits(bytes).HexDigits(k100, 36).bytes());
  }
}

TEST(HandlerWrites, SetTheVersionOfMultipleInkLimitsAlsoWhenTheyCannotBeBuilt) {
  VKMultiInklimit limits;
  limits.size = -1;
  OnFile file;
  const Bytes before = file.File();
  EXPECT_EQ(file.handler.WriteMultipleInkLimitTag(limits), 0);
  EXPECT_EQ(limits.version, 2);
  EXPECT_EQ(file.File(), before);
}

TEST(HandlerWrites, ColorParam) {
  VKColorParam param;
  param.status = 10;
  std::strcpy(param.Make, "Hewlett-Packard");
  std::strcpy(param.MediaName, " n ");
  param.ResolutionX = 720.0f;
  OnFile file;
  EXPECT_EQ(file.handler.WriteVKColorParamTag(param), 1);
  EXPECT_TRUE(SameBytes(file.Stored("QX53").value_or(Bytes()),
                        Payload()
                            .HexDigits("01000000 2C040000 0A000000 00000000")
                            .HexDigits("4865776C6574742D5061636B617264")
                            .Fill(113 + 128)
                            .HexDigits("206E20")
                            .Fill(125 + 4)
                            .HexDigits("00003444")
                            .Fill(1068 - 408)));
}

TEST(HandlerWrites, TrcFile) {
  OnFile file;
  const std::string trc = file.dir().Write("curve", HexBytes("00FF10"));
  EXPECT_EQ(file.handler.WriteTrcTag(trc), 1);
  EXPECT_EQ(file.Stored("QX58"), HexBytes("00FF10"));
  const std::string empty = file.dir().Write("empty", {});
  EXPECT_EQ(file.handler.WriteTrcTag(empty), 1);
  EXPECT_EQ(file.Stored("QX58"), Bytes());
}

TEST(HandlerWrites, DitherFlagAndWizardFlag) {
  OnFile file;
  EXPECT_EQ(file.handler.WriteVKCMStoDither(-2), 1);
  EXPECT_EQ(file.handler.WriteVKWizardFlag(0x01020304), 1);
  EXPECT_EQ(file.Stored("QX64"), HexBytes("FEFFFFFF"));
  EXPECT_EQ(file.Stored("QX74"), HexBytes("04030201"));
}

TEST(HandlerWrites, Dither) {
  const auto table = std::make_unique<DitherTypeV1>();
  std::memset(table->table, 0xD1, 4112);
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(1, table.get()), 1);
  OnFile file;
  EXPECT_EQ(file.handler.WriteDitherParamTag(dither), 1);
  EXPECT_EQ(file.Stored("QX66"), Payload()
                                     .HexDigits("01000000 24100000 0000000000000000 14100000")
                                     .HexDigits("D1", 4112)
                                     .bytes());
}

TEST(HandlerWrites, Compatibility) {
  VKCompatibilityParam param;
  for (int i = 0; i < 64; ++i) param.bytes[i] = static_cast<unsigned char>(i + 1);
  OnFile file;
  EXPECT_EQ(file.handler.WriteVKCompatibilityParam(param), 1);
  EXPECT_EQ(file.Stored("QX67"), Counting(64));
}

TEST(HandlerWrites, SpotInkLimits) {
  VKSpotSingleInkLimit spot;
  double values[] = {100.0, -2.0};
  spot.SetData(2, "Red", values);
  OnFile file;
  EXPECT_EQ(file.handler.WriteVKSpotSIL(spot), 1);
  EXPECT_EQ(file.Stored("QX68"),
            HexBytes("01000000 1F000000 02000000 526564 0000000000005940 00000000000000C0"));
}

TEST(HandlerWrites, SpotLinksAndTheirLengthsIntoTheRecord) {
  VKSpotLinDLParam spot;
  spot.SetData(2, "Gold");
  OnFile file;
  EXPECT_EQ(file.handler.WriteVKSpotLinDL(spot), 1);
  EXPECT_EQ(file.Stored("QX69"),
            HexBytes("01000000 1C000000 02000000 04000000 476F6C64 00000000 00000000"));
  EXPECT_EQ(spot.size, 28);
}

TEST(HandlerWrites, LinExtraData) {
  VKLinExtraDataParam param;
  std::memset(param.text, 't', 129);
  param.value = -2;
  std::memset(param.blockA, 0xA1, 144);
  std::memset(param.blockB, 0xB2, 288);
  OnFile file;
  EXPECT_EQ(file.handler.WriteVKLinExtraData(param), 1);
  EXPECT_EQ(file.Stored("QX70"), Payload()
                                     .HexDigits("01000000")
                                     .HexDigits("74", 129)
                                     .Fill(3)
                                     .HexDigits("FEFFFFFF")
                                     .HexDigits("A1", 144)
                                     .HexDigits("B2", 288)
                                     .bytes());
}

TEST(HandlerWrites, VsdProfile) {
  OnFile file;
  const std::string vsd = file.dir().Write("a.vsd", HexBytes("3C613E"));
  EXPECT_EQ(file.handler.WriteVSDProfile(vsd), 1);
  EXPECT_EQ(file.Stored("QX71"),
            Payload().HexDigits("01000000 612E767364").Fill(123).HexDigits("3C613E").bytes());
}

TEST(HandlerWrites, ChromaAdjustAndProfileExtra) {
  VKProfileExtraParam extra;
  extra.value = 5;
  OnFile file;
  EXPECT_EQ(file.handler.WriteVKChromaAdjust("ab"), 1);
  EXPECT_EQ(file.handler.WriteVKProfileExtraParam(extra), 1);
  EXPECT_EQ(file.Stored("QX75"), HexBytes("616200"));
  EXPECT_EQ(file.Stored("QX76"), HexBytes("01000000 05000000"));
}

TEST(HandlerWrites, ReplaceATagThatIsThereAndKeepTheOthers) {
  OnFile file({{"QX75", HexBytes("7800")}, {"QX74", HexBytes("01000000")}});
  EXPECT_EQ(file.handler.WriteVKChromaAdjust("a longer text"), 1);
  EXPECT_EQ(file.handler.WriteVKWizardFlag(2), 1);
  EXPECT_EQ(TagsOf(file.File()),
            (std::vector<FileTag>{{"desc", HexBytes("DDDDDD")},
                                  {"QX75", Payload().Text("a longer text").Fill(1)},
                                  {"QX74", HexBytes("02000000")}}));
}

TEST(HandlerWrites, ThatCannotBeBuiltLeaveTheFile) {
  OnFile file;
  const Bytes before = file.File();
  const std::string missing = file.dir().File("missing");
  SplitParam split;
  VKDitherParam dither;
  VKColorParam param;
  param.size = 1069;
  VKSpotSingleInkLimit spot;
  spot.SetData(0, "Red", nullptr);
  VKSpotLinDLParam links;
  links.SetData(1, "Red");
  CLFreeCLLink8Ref(links.links[0]);
  links.links[0] = nullptr;
  EXPECT_EQ(file.handler.WriteInkSplitTag(split), 0);
  EXPECT_EQ(file.handler.WriteDitherParamTag(dither), 0);
  EXPECT_EQ(file.handler.WriteVKColorParamTag(param), 0);
  EXPECT_EQ(file.handler.WriteVKSpotSIL(spot), 0);
  EXPECT_EQ(file.handler.WriteVKSpotLinDL(links), 0);
  EXPECT_EQ(file.handler.WriteTrcTag(missing), 0);
  EXPECT_EQ(file.handler.WriteTrcTag(file.dir().path().string()), 0);
  EXPECT_EQ(file.handler.WriteVSDProfile(missing), 0);
  EXPECT_EQ(file.handler.WriteVSDProfile(file.dir().path().string()), 0);
  EXPECT_EQ(file.File(), before);
}

TEST(HandlerWrites, MakeAMinimalProfileWhereNoneIs) {
  const TempDir dir;
  VKCLProfileHandler handler(dir.File("new.icc"), 4);
  EXPECT_EQ(handler.WriteVKWizardFlag(7), 1);
  EXPECT_EQ(handler.IsOutputICCFile(), 1);
  EXPECT_EQ(handler.IsWizardICC(), 7);
  const Bytes file = ReadFile(dir.File("new.icc"));
  EXPECT_EQ(TagsOf(file), (std::vector<FileTag>{{"QX74", HexBytes("07000000")}}));
}

TEST(HandlerWrites, FailWithoutAProfileAndAChannelCount) {
  const TempDir dir;
  VKCLProfileHandler handler(dir.File("new.icc"), 0);
  EXPECT_EQ(handler.WriteVKWizardFlag(7), 0);
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "new.icc"));
}

// The header's colour space.

std::string ColorSpaceIn(const Bytes& file) {
  return std::string(file.begin() + 16, file.begin() + 20);
}

TEST(HandlerColorSpace, FollowsTheColorModeOfNewColorParams) {
  const struct {
    int mode;
    const char* space;
  } cases[] = {{16, "CMY "}, {512, "RGB "}, {64, "CMYK"},  {0, "CMYK"},
               {1, "CMYK"},  {17, "CMYK"},  {528, "CMYK"}, {-2147483647, "CMYK"}};
  for (const auto& one : cases) {
    VKColorParam param;
    param.ColorMode = one.mode;
    OnFile file;
    EXPECT_EQ(file.handler.WriteVKColorParamTag(param), 1);
    EXPECT_EQ(ColorSpaceIn(file.File()), one.space) << one.mode;
    EXPECT_EQ(file.handler.GetColorSpace(), one.mode == 16    ? icSigCmyData
                                            : one.mode == 512 ? icSigRgbData
                                                              : icSigCmykData);
  }
}

TEST(HandlerColorSpace, ReachesTheFileOnlyWithARewriteOfTheHeader) {
  // A tag of the same length is replaced in its place.
  OnFile file({{"QX53", Bytes(1068)}});
  VKColorParam param;
  param.ColorMode = 16;
  EXPECT_EQ(file.handler.WriteVKColorParamTag(param), 1);
  EXPECT_EQ(file.handler.GetColorSpace(), icSigCmyData);
  EXPECT_EQ(ColorSpaceIn(file.File()), "CMYK");
  EXPECT_EQ(file.handler.WriteVKWizardFlag(1), 1);
  EXPECT_EQ(ColorSpaceIn(file.File()), "CMY ");
}

TEST(HandlerColorSpace, StaysChangedWhenTheTagCannotBeWritten) {
  OnFile file;
  const Bytes before = file.File();
  VKColorParam param;
  param.ColorMode = 512;
  {
    const FaultAt at(0, Fault::Error);  // the file does not open
    EXPECT_EQ(file.handler.WriteVKColorParamTag(param), 0);
    EXPECT_TRUE(FaultAt::Reached());
  }
  EXPECT_EQ(file.handler.GetColorSpace(), icSigRgbData);
  EXPECT_EQ(file.File(), before);

  std::filesystem::remove(file.path());
  param.ColorMode = 16;
  EXPECT_EQ(file.handler.WriteVKColorParamTag(param), 0);
  EXPECT_EQ(file.handler.GetColorSpace(), icSigCmyData);
}

TEST(HandlerColorSpace, StaysAsItIsWhenTheTagCannotBeBuilt) {
  OnFile file;
  VKColorParam param;
  param.ColorMode = 512;
  param.size = -1;
  EXPECT_EQ(file.handler.WriteVKColorParamTag(param), 0);
  EXPECT_EQ(file.handler.GetColorSpace(), icSigCmykData);
}

// All at once.

TEST(HandlerWritesAll, FourTagsInOrder) {
  SplitTypeV2 record;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(2, 1, &record), 1);
  const VKSingleInkLimitWithLinRef single;
  const VKMultiInklimit multi;
  const VKColorParam param;
  OnFile file;
  EXPECT_EQ(file.handler.WriteAllVKPrivateTags(single, multi, param, &split), 1);
  const Bytes expectedSplit = Payload()
                                  .HexDigits("02000000 60000000 01000000 0000000000000000")
                                  .HexDigits("4C000000 FFFFFFFF")
                                  .HexDigits(kMinusOne, 8)
                                  .Fill(36);
  EXPECT_EQ(TagsOf(file.File()),
            (std::vector<FileTag>{
                {"desc", HexBytes("DDDDDD")},
                {"QX50", expectedSplit},
                {"QX51", Payload().HexDigits("01000000 8C000000 10000000").HexDigits(k100, 16)},
                {"QX52", Payload().HexDigits("04000000 2C010000 24000000").HexDigits(k100, 36)},
                {"QX53", Payload().HexDigits("01000000 2C040000").Fill(1060)}}));
  EXPECT_EQ(file.handler.IsVKCLProfile(), 1);
}

TEST(HandlerWritesAll, ThreeTagsWithoutASplit) {
  OnFile file;
  EXPECT_EQ(file.handler.WriteAllVKPrivateTags(VKSingleInkLimitWithLinRef(), VKMultiInklimit(),
                                               VKColorParam(), nullptr),
            1);
  EXPECT_EQ(SignaturesOf(file.File()), (Strings{"desc", "QX51", "QX52", "QX53"}));
}

TEST(HandlerWritesAll, NeitherSetsTheVersionNorTheColorSpace) {
  // Its single counterparts would store version 2 and 'RGB '.
  VKMultiInklimit multi;
  multi.version = 9;
  VKColorParam param;
  param.ColorMode = 512;
  OnFile file;
  EXPECT_EQ(file.handler.WriteAllVKPrivateTags(VKSingleInkLimitWithLinRef(), multi, param, nullptr),
            1);
  EXPECT_EQ(multi.version, 9);
  const Bytes stored = file.Stored("QX52").value_or(Bytes(4));
  EXPECT_EQ(Bytes(stored.begin(), stored.begin() + 4), HexBytes("09000000"));
  EXPECT_EQ(file.handler.GetColorSpace(), icSigCmykData);
  EXPECT_EQ(ColorSpaceIn(file.File()), "CMYK");
}

TEST(HandlerWritesAll, AppendsAlsoASecondTime) {
  OnFile file;
  for (int twice = 0; twice < 2; ++twice) {
    EXPECT_EQ(file.handler.WriteAllVKPrivateTags(VKSingleInkLimitWithLinRef(), VKMultiInklimit(),
                                                 VKColorParam(), nullptr),
              1);
  }
  EXPECT_EQ(SignaturesOf(file.File()),
            (Strings{"desc", "QX51", "QX52", "QX53", "QX51", "QX52", "QX53"}));
}

TEST(HandlerWritesAll, WritesNothingWhenOneCannotBeBuilt) {
  OnFile file;
  const Bytes before = file.File();
  const VKSingleInkLimitWithLinRef single;
  VKMultiInklimit badMulti;
  badMulti.size = 301;
  VKColorParam badParam;
  badParam.size = -1;
  const SplitParam noSplit;
  EXPECT_EQ(file.handler.WriteAllVKPrivateTags(single, badMulti, VKColorParam(), nullptr), 0);
  EXPECT_EQ(file.handler.WriteAllVKPrivateTags(single, VKMultiInklimit(), badParam, nullptr), 0);
  EXPECT_EQ(file.handler.WriteAllVKPrivateTags(single, VKMultiInklimit(), VKColorParam(), &noSplit),
            0);
  EXPECT_EQ(file.File(), before);
}

TEST(HandlerWritesAll, MakesNoProfileWhereNoneIs) {
  const TempDir dir;
  VKCLProfileHandler handler(dir.File("new.icc"), 4);
  EXPECT_EQ(handler.WriteAllVKPrivateTags(VKSingleInkLimitWithLinRef(), VKMultiInklimit(),
                                          VKColorParam(), nullptr),
            0);
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "new.icc"));
}

// Reading: records that are copied from the payload.

TEST(HandlerReads, Compatibility) {
  const OnFile file({{"QX67", Counting(64)}});
  Fenced<VKCompatibilityParam> read;
  EXPECT_EQ(file.handler.GetVKCompatibilityParam(read.record), 1);
  EXPECT_EQ(RecordImage(read.record), Counting(64));
  EXPECT_TRUE(read.Whole());
}

TEST(HandlerReads, SingleInkLimitsWithTheirOwnSize) {
  for (const char* size : {"8C000000", "FFFFFFFF", "00000000", "07000000"}) {
    const OnFile file({{"QX51", Payload()
                                    .HexDigits("05000000")
                                    .HexDigits(size)
                                    .HexDigits("03000000")
                                    .HexDigits("0000000000004940", 16)}});
    Fenced<VKSingleInkLimitWithLinRef> read;
    EXPECT_EQ(file.handler.GetVKSingleInkLimitWithLinRef(read.record), 1);
    EXPECT_EQ(RecordImage(read.record), Payload()
                                            .HexDigits("05000000 8C000000 03000000")
                                            .HexDigits("0000000000004940", 16)
                                            .bytes());
    EXPECT_TRUE(read.Whole());
  }
}

TEST(HandlerReads, ProfileExtra) {
  const OnFile file({{"QX76", HexBytes("02000000 FEFFFFFF")}});
  Fenced<VKProfileExtraParam> read;
  EXPECT_EQ(file.handler.GetVKProfileExtraParam(read.record), 1);
  EXPECT_EQ(read.record.version, 2);
  EXPECT_EQ(read.record.value, -2);
  EXPECT_TRUE(read.Whole());
}

TEST(HandlerReads, LinExtraData) {
  const OnFile file({{"QX70", Counting(572)}});
  Fenced<VKLinExtraDataParam> read;
  EXPECT_EQ(file.handler.GetVKLinExtraData(read.record), 1);
  EXPECT_EQ(RecordImage(read.record), Counting(572));
  EXPECT_TRUE(read.Whole());
}

TEST(HandlerReads, VsdProfileParam) {
  const OnFile file({{"QX71", Counting(200)}});
  Fenced<VKVSDProfileParam> read;
  EXPECT_EQ(file.handler.GetVSDProfileParam(read.record), 1);
  Bytes expected = Counting(200);
  expected.resize(132);
  EXPECT_EQ(RecordImage(read.record), expected);
  EXPECT_TRUE(read.Whole());
}

TEST(HandlerReads, ChromaAdjust) {
  const struct {
    Bytes payload;
    const char* text;
  } cases[] = {{HexBytes("613D3100"), "a=1"},
               {HexBytes("00"), ""},
               {HexBytes("6100620063"), "a"},  // ends at the first zero
               {HexBytes("616263"), "abc"}};   // or with the payload
  for (const auto& one : cases) {
    const OnFile file({{"QX75", one.payload}});
    AString text("before");
    EXPECT_EQ(file.handler.GetVKChromaAdjust(text), 1);
    EXPECT_EQ(text.str(), one.text);
  }
}

TEST(HandlerReads, DitherFlagAndWizardFlagAsStored) {
  for (const auto& [bytes, value] :
       {std::pair("01000000", 1), std::pair("00000000", 0), std::pair("FEFFFFFF", -2),
        std::pair("04030201", 0x01020304)}) {
    const OnFile file({{"QX64", HexBytes(bytes)}, {"QX74", HexBytes(bytes)}});
    EXPECT_EQ(file.handler.IsCMStoDither(), value);
    EXPECT_EQ(file.handler.IsWizardICC(), value);
  }
  const OnFile none;
  EXPECT_EQ(none.handler.IsCMStoDither(), 0);
  EXPECT_EQ(none.handler.IsWizardICC(), 0);
}

TEST(HandlerReads, DitherFlagAndWizardFlagOfAnotherLengthAsFarAsTheyReach) {
  for (const auto& [bytes, value] :
       {std::pair("0405060708090A", 0x07060504), std::pair("0405", 0x0504)}) {
    const OnFile file({{"QX64", HexBytes(bytes)}, {"QX74", HexBytes(bytes)}});
    EXPECT_EQ(file.handler.IsCMStoDither(), value);
    EXPECT_EQ(file.handler.IsWizardICC(), value);
  }
}

// Reading: payloads longer and shorter than the record.

template <class Record>
using Getter = int (VKCLProfileHandler::*)(Record&) const;

template <class Record>
void ExpectBounded(const std::string& signature, Getter<Record> get) {
  for (const std::size_t more : {1u, 4u, 500u, 100000u}) {
    const OnFile file({{signature, Counting(sizeof(Record) + more)}});
    const auto read = std::make_unique<Fenced<Record>>();
    EXPECT_EQ((file.handler.*get)(read->record), 1) << signature;
    EXPECT_EQ(RecordImage(read->record), Over77(sizeof(Record), Counting(sizeof(Record) + more)));
    EXPECT_TRUE(read->Whole());
  }
  for (const std::size_t size : {std::size_t{1}, std::size_t{6}, sizeof(Record) - 1}) {
    const OnFile file({{signature, Counting(size)}});
    const auto read = std::make_unique<Fenced<Record>>();
    EXPECT_EQ((file.handler.*get)(read->record), 1) << signature << ' ' << size;
    EXPECT_TRUE(SameBytes(RecordImage(read->record), Over77(sizeof(Record), Counting(size))))
        << signature;
    EXPECT_TRUE(read->Whole());
  }
}

TEST(HandlerReads, FillACompatibilityRecordAsFarAsThePayloadReaches) {
  ExpectBounded<VKCompatibilityParam>("QX67", &VKCLProfileHandler::GetVKCompatibilityParam);
}

TEST(HandlerReads, FillAProfileExtraRecordAsFarAsThePayloadReaches) {
  ExpectBounded<VKProfileExtraParam>("QX76", &VKCLProfileHandler::GetVKProfileExtraParam);
}

TEST(HandlerReads, FillALinExtraDataRecordAsFarAsThePayloadReaches) {
  ExpectBounded<VKLinExtraDataParam>("QX70", &VKCLProfileHandler::GetVKLinExtraData);
}

TEST(HandlerReads, FillASingleInkLimitRecordAsFarAsThePayloadReaches) {
  for (const std::size_t size : {141u, 1000u, 139u, 12u, 4u, 1u}) {
    const OnFile file({{"QX51", Counting(size)}});
    Fenced<VKSingleInkLimitWithLinRef> read;
    EXPECT_EQ(file.handler.GetVKSingleInkLimitWithLinRef(read.record), 1);
    Bytes expected = Over77(140, Counting(size));
    const Bytes ownSize = HexBytes("8C000000");
    for (std::size_t i = 0; i < 4; ++i) expected[4 + i] = ownSize[i];
    EXPECT_EQ(RecordImage(read.record), expected) << size;
    EXPECT_TRUE(read.Whole());
  }
}

TEST(HandlerReads, NeedAWholeHeadOfAVsdTag) {
  const OnFile shortHead({{"QX71", Counting(131)}});
  Fenced<VKVSDProfileParam> read;
  EXPECT_EQ(shortHead.handler.GetVSDProfileParam(read.record), 0);
  EXPECT_EQ(RecordImage(read.record), Bytes(132, 0x77));
  const OnFile bareHead({{"QX71", Counting(132)}});
  EXPECT_EQ(bareHead.handler.GetVSDProfileParam(read.record), 1);
  EXPECT_EQ(RecordImage(read.record), Counting(132));
}

// Reading: what is not there.

/// Every read of a file without a readable tag fails and leaves the record as it was.
void ExpectNothingToRead(const VKCLProfileHandler& handler) {
  Fenced<VKCompatibilityParam> compatibility;
  EXPECT_EQ(handler.GetVKCompatibilityParam(compatibility.record), 0);
  EXPECT_EQ(RecordImage(compatibility.record), Bytes(64, 0x77));
  Fenced<VKSingleInkLimitWithLinRef> single;
  EXPECT_EQ(handler.GetVKSingleInkLimitWithLinRef(single.record), 0);
  EXPECT_EQ(RecordImage(single.record), Bytes(140, 0x77));
  Fenced<VKMultiInklimit> multi;
  EXPECT_EQ(handler.GetVKMultiInklimit(multi.record, 0), 0);
  EXPECT_EQ(RecordImage(multi.record), Bytes(300, 0x77));
  Fenced<VKColorParam> param;
  EXPECT_EQ(handler.GetVKColorParam(param.record), 0);
  EXPECT_EQ(RecordImage(param.record), Bytes(1068, 0x77));
  Fenced<VKLinExtraDataParam> lin;
  EXPECT_EQ(handler.GetVKLinExtraData(lin.record), 0);
  EXPECT_EQ(RecordImage(lin.record), Bytes(572, 0x77));
  Fenced<VKVSDProfileParam> vsd;
  EXPECT_EQ(handler.GetVSDProfileParam(vsd.record), 0);
  EXPECT_EQ(RecordImage(vsd.record), Bytes(132, 0x77));
  Fenced<VKProfileExtraParam> extra;
  EXPECT_EQ(handler.GetVKProfileExtraParam(extra.record), 0);
  EXPECT_EQ(RecordImage(extra.record), Bytes(8, 0x77));
  AString text("before");
  EXPECT_EQ(handler.GetVKChromaAdjust(text), 0);
  EXPECT_EQ(text.str(), "before");
  EXPECT_EQ(handler.IsCMStoDither(), 0);
  EXPECT_EQ(handler.IsWizardICC(), 0);

  const auto table = std::make_unique<DitherTypeV1>();
  std::memset(table->table, 0xD1, 4112);
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(1, table.get()), 1);
  const DitherTypeV1* const ownTable = dither.table;
  EXPECT_EQ(handler.GetVKDitherParam(dither), 0);
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.size, 4132);
  EXPECT_EQ(dither.table, ownTable);
  EXPECT_EQ(RecordImage(*dither.table), RecordImage(*table));

  SplitTypeV2 record;
  record.colorantIndex = 3;
  SplitParam split;
  ASSERT_EQ(split.InitSplitParam(2, 1, &record), 1);
  const SplitTypeBase* const ownSplits = split.splits;
  EXPECT_EQ(handler.GetSplitParam(split, 1), 0);
  EXPECT_EQ(split.version, 2);
  EXPECT_EQ(split.count, 1);
  EXPECT_EQ(split.size, 96);
  EXPECT_EQ(split.splits, ownSplits);
  EXPECT_EQ(split.splits->colorantIndex, 3);

  VKSpotSingleInkLimit spot;
  double values[] = {5.0};
  spot.SetData(1, "Own", values);
  EXPECT_EQ(handler.GetVKSpotSIL(spot), 0);
  EXPECT_EQ(spot.count, 1);
  EXPECT_STREQ(spot.name, "Own");
  EXPECT_EQ(spot.limits[0], 5.0);

  VKSpotLinDLParam links;
  links.SetData(1, "Own");
  void* const ownLink = links.links[0];
  EXPECT_EQ(handler.GetVKSpotLinDL(links), 0);
  EXPECT_EQ(links.count, 1);
  EXPECT_STREQ(links.name, "Own");
  EXPECT_EQ(links.links[0], ownLink);
}

constexpr const char* kRecordTags[] = {"QX50", "QX51", "QX52", "QX53", "QX64", "QX66", "QX67",
                                       "QX68", "QX69", "QX70", "QX71", "QX74", "QX75", "QX76"};

TEST(HandlerReads, FailWithoutTheTag) { ExpectNothingToRead(OnFile().handler); }

TEST(HandlerReads, FailWithoutAFile) {
  const TempDir dir;
  ExpectNothingToRead(VKCLProfileHandler(dir.File("missing.icc"), 0));
}

TEST(HandlerReads, FailWhenTheFileIsGone) {
  std::vector<FileTag> tags;
  for (const char* signature : kRecordTags) tags.emplace_back(signature, Bytes(5000, 1));
  const OnFile file(tags);
  std::filesystem::remove(file.path());
  ExpectNothingToRead(file.handler);
}

TEST(HandlerReads, LeaveTheRecordWhenTheFileCannotBeRead) {
  const OnFile file({{"QX52", Bytes(300, 1)}, {"QX67", Bytes(64, 1)}, {"QX75", HexBytes("6100")}});
  int refused = 0;
  bool reached = true;
  for (std::size_t call = 0; reached; ++call) {
    for (int which = 0; which < 3; ++which) {
      Fenced<VKMultiInklimit> multi;
      Fenced<VKCompatibilityParam> compatibility;
      AString text("before");
      const FaultAt at(call, Fault::Error);
      const int result = which == 0   ? file.handler.GetVKMultiInklimit(multi.record, 0)
                         : which == 1 ? file.handler.GetVKCompatibilityParam(compatibility.record)
                                      : file.handler.GetVKChromaAdjust(text);
      reached = FaultAt::Reached();
      const bool read = result == 1;
      refused += read ? 0 : 1;
      EXPECT_EQ(RecordImage(multi.record), Bytes(300, which == 0 && read ? 1 : 0x77)) << call;
      EXPECT_EQ(RecordImage(compatibility.record), Bytes(64, which == 1 && read ? 1 : 0x77));
      EXPECT_EQ(text.str(), which == 2 && read ? "a" : "before") << call;
    }
  }
  EXPECT_GE(refused, 6);  // at least the opening and the reading, of each
}

TEST(HandlerReads, FailForTagsOfAnotherType) {
  std::vector<FileTag> tags;
  for (const char* signature : kRecordTags) tags.emplace_back(signature, Bytes(5000, 1), "text");
  ExpectNothingToRead(OnFile(tags).handler);
}

TEST(HandlerReads, FailForTagsThatTheFileDoesNotHold) {
  for (const char* signature : kRecordTags) {
    const TempDir dir;
    const std::string path = dir.Write("cut.icc", CutProfile({signature, Bytes(5000, 1)}));
    ExpectNothingToRead(VKCLProfileHandler(path, 0));
  }
}

TEST(HandlerReads, OfAnEmptyPayloadFailWhereItIsTakenAsAWhole) {
  std::vector<FileTag> tags;
  for (const char* signature :
       {"QX50", "QX51", "QX66", "QX67", "QX68", "QX69", "QX70", "QX71", "QX75", "QX76"}) {
    tags.emplace_back(signature, Bytes());
  }
  ExpectNothingToRead(OnFile(tags).handler);
}

TEST(HandlerReads, OfAnEmptyPayloadGiveTheDefaultsWhereItIsReadIntoARecord) {
  const OnFile file({{"QX52", {}}, {"QX64", {}}, {"QX74", {}}});
  Fenced<VKMultiInklimit> multi;
  EXPECT_EQ(file.handler.GetVKMultiInklimit(multi.record, 4), 1);
  EXPECT_EQ(RecordImage(multi.record),
            Payload().HexDigits("04000000 2C010000 24000000").HexDigits(k100, 36).bytes());
  EXPECT_EQ(file.handler.IsCMStoDither(), 0);
  EXPECT_EQ(file.handler.IsWizardICC(), 0);
}

TEST(HandlerReads, NeedAValidProfileInThreePlacesOnly) {
  // Opened without a channel count, two colours make no valid profile, though its tags are known.
  std::vector<FileTag> tags = {{"QX50", Payload().HexDigits("02000000 14000000").Fill(12)},
                               {"QX51", Bytes(140)},
                               {"QX52", Payload().HexDigits("04000000").Fill(296)},
                               {"QX53", Bytes(1068)},
                               {"QX64", HexBytes("05000000")},
                               {"QX66", Payload().HexDigits("01000000").Fill(4128)},
                               {"QX67", Bytes(64)},
                               {"QX68", Payload().HexDigits("01000000 0C000000").Fill(4)},
                               {"QX69", Payload().HexDigits("01000000 10000000").Fill(8)},
                               {"QX70", Bytes(572)},
                               {"QX71", Bytes(132)},
                               {"QX74", HexBytes("06000000")},
                               {"QX75", HexBytes("6100")},
                               {"QX76", Bytes(8)}};
  const OnFile file(tags, {"prtr", "2CLR", "Lab "});
  const VKCLProfileHandler& handler = file.handler;
  ASSERT_EQ(handler.IsICCFile(), 0);

  EXPECT_EQ(handler.IsCMStoDither(), 0);
  Fenced<VKLinExtraDataParam> lin;
  EXPECT_EQ(handler.GetVKLinExtraData(lin.record), 0);
  EXPECT_EQ(RecordImage(lin.record), Bytes(572, 0x77));
  Fenced<VKProfileExtraParam> extra;
  EXPECT_EQ(handler.GetVKProfileExtraParam(extra.record), 0);
  EXPECT_EQ(RecordImage(extra.record), Bytes(8, 0x77));

  EXPECT_EQ(handler.IsWizardICC(), 6);
  SplitParam split;
  EXPECT_EQ(handler.GetSplitParam(split, 0), 1);
  VKSingleInkLimitWithLinRef single;
  EXPECT_EQ(handler.GetVKSingleInkLimitWithLinRef(single), 1);
  VKMultiInklimit multi;
  EXPECT_EQ(handler.GetVKMultiInklimit(multi, 0), 1);
  VKColorParam param;
  EXPECT_EQ(handler.GetVKColorParam(param), 1);
  VKDitherParam dither;
  EXPECT_EQ(handler.GetVKDitherParam(dither), 1);
  VKCompatibilityParam compatibility;
  EXPECT_EQ(handler.GetVKCompatibilityParam(compatibility), 1);
  VKSpotSingleInkLimit spot;
  EXPECT_EQ(handler.GetVKSpotSIL(spot), 1);
  VKSpotLinDLParam links;
  EXPECT_EQ(handler.GetVKSpotLinDL(links), 1);
  VKVSDProfileParam vsd;
  EXPECT_EQ(handler.GetVSDProfileParam(vsd), 1);
  EXPECT_EQ(handler.GetVSDProfile(file.dir().File("out.vsd")), 1);
  AString text;
  EXPECT_EQ(handler.GetVKChromaAdjust(text), 1);
}

// Multiple ink limits.

Bytes MultiPayload(int version) {
  return Payload()
      .Int(version)
      .HexDigits("2B010000 05000000")
      .HexDigits("0000000000004940", 35)
      .HexDigits("00000000000000C0");
}

TEST(HandlerMultiInkLimit, IsReadWhenItsVersionIsHighEnough) {
  const OnFile file({{"QX52", MultiPayload(2)}});
  for (const int minimum : {0, 1, 2, -5}) {
    Fenced<VKMultiInklimit> read;
    EXPECT_EQ(file.handler.GetVKMultiInklimit(read.record, minimum), 1) << minimum;
    EXPECT_EQ(RecordImage(read.record), MultiPayload(2));
    EXPECT_TRUE(read.Whole());
  }
  for (const int minimum : {3, 4, 1000}) {
    Fenced<VKMultiInklimit> read;
    EXPECT_EQ(file.handler.GetVKMultiInklimit(read.record, minimum), 0) << minimum;
    EXPECT_EQ(RecordImage(read.record), Bytes(300, 0x77));
  }
}

TEST(HandlerMultiInkLimit, IsNotConverted) {
  for (const int version : {1, 0, -3}) {
    const OnFile file({{"QX52", MultiPayload(version)}});
    VKMultiInklimit read;
    EXPECT_EQ(file.handler.GetVKMultiInklimit(read, -10), 1);
    EXPECT_EQ(RecordImage(read), MultiPayload(version));
    EXPECT_EQ(file.handler.GetVKMultiInklimit(read, version + 1), 0);
  }
}

TEST(HandlerMultiInkLimit, OfAShortPayloadHasTheDefaultsInItsRest) {
  const OnFile file({{"QX52", HexBytes("03000000 2C010000 05000000 0000000000004940 000000")}});
  Fenced<VKMultiInklimit> read;
  EXPECT_EQ(file.handler.GetVKMultiInklimit(read.record, 3), 1);
  // The last three bytes of 100.0 are none of the payload's.
  EXPECT_EQ(RecordImage(read.record), Payload()
                                          .HexDigits("03000000 2C010000 05000000 0000000000004940")
                                          .HexDigits(k100, 35)
                                          .bytes());
  EXPECT_TRUE(read.Whole());

  const OnFile versionOnly({{"QX52", HexBytes("0300")}});
  EXPECT_EQ(versionOnly.handler.GetVKMultiInklimit(read.record, 3), 1);
  EXPECT_EQ(RecordImage(read.record),
            Payload().HexDigits("03000000 2C010000 24000000").HexDigits(k100, 36).bytes());
}

TEST(HandlerMultiInkLimit, OfALongPayloadFillsTheRecord) {
  for (const std::size_t more : {1u, 500u, 100000u}) {
    const OnFile file({{"QX52", Payload().Raw(MultiPayload(4)).Fill(more, 0xEE)}});
    Fenced<VKMultiInklimit> read;
    EXPECT_EQ(file.handler.GetVKMultiInklimit(read.record, 4), 1);
    EXPECT_EQ(RecordImage(read.record), MultiPayload(4));
    EXPECT_TRUE(read.Whole());
  }
}

// Colour parameters.

/// A payload with the given Make and MediaName, both as bytes that are filled up with `rest`.
Bytes ColorPayload(const std::string& make, const std::string& media, unsigned char rest = 0) {
  return Payload()
      .HexDigits("01000000 2C040000 0A000000 07000000")
      .Text(make)
      .Fill(128 - make.size(), rest)
      .HexDigits("4D", 128)
      .Text(media)
      .Fill(128 - media.size(), rest)
      .HexDigits("08000000 00003444 0000B444 40000000 02000000 03000000 04000000")
      .HexDigits("F1", 256)
      .HexDigits("78", 384);
}

VKColorParam ReadColorParam(const Bytes& payload) {
  const OnFile file({{"QX53", payload}});
  const auto read = std::make_unique<Fenced<VKColorParam>>();
  EXPECT_EQ(file.handler.GetVKColorParam(read->record), 1);
  EXPECT_TRUE(read->Whole());
  return read->record;
}

std::string MakeOf(const std::string& make, unsigned char rest = 0) {
  const VKColorParam param = ReadColorParam(ColorPayload(make, "m", rest));
  return std::string(param.Make, 128);
}

std::string MediaNameOf(const std::string& media, unsigned char rest = 0) {
  const VKColorParam param = ReadColorParam(ColorPayload("", media, rest));
  EXPECT_EQ(std::string(param.Model, 128), std::string(128, 'M'));
  EXPECT_EQ(param.ResolutionID, 8);
  return std::string(param.MediaName, 128);
}

std::string Padded(const std::string& text, char rest = 0) {
  return text + std::string(128 - text.size(), rest);
}

TEST(HandlerColorParam, IsReadByteForByte) {
  const Bytes payload = ColorPayload("Make", "Media  Name");
  EXPECT_TRUE(SameBytes(RecordImage(ReadColorParam(payload)), payload));
}

TEST(HandlerColorParam, OfALongPayloadFillsTheRecord) {
  const Bytes payload = ColorPayload("Make", "Media");
  for (const std::size_t more : {1u, 500u, 100000u}) {
    EXPECT_TRUE(
        SameBytes(RecordImage(ReadColorParam(Payload().Raw(payload).Fill(more, 0xEE))), payload));
  }
}

// The clean-ups are made on what the record holds.
TEST(HandlerColorParam, OfAnEmptyPayloadIsTheRecordAsItWas) {
  const OnFile file({{"QX53", Bytes()}});
  VKColorParam kept;
  kept.status = 4;
  std::strcpy(kept.Make, "Hewlett-Packard");
  std::strcpy(kept.MediaName, " Kept ");
  EXPECT_EQ(file.handler.GetVKColorParam(kept), 1);
  EXPECT_EQ(kept.version, 1);
  EXPECT_EQ(kept.size, 1068);
  EXPECT_EQ(kept.status, 4);
  EXPECT_STREQ(kept.Make, "HP");
  EXPECT_STREQ(kept.MediaName, "Kept");
}

TEST(HandlerColorParam, OfAShortPayloadKeepsTheRestOfTheRecord) {
  Bytes payload = ColorPayload("Make", "Media");
  for (const std::size_t size : {1067u, 600u, 400u}) {
    payload.resize(size);
    EXPECT_TRUE(SameBytes(RecordImage(ReadColorParam(payload)), Over77(1068, payload))) << size;
  }
  const OnFile file({{"QX53", HexBytes("01000000 0C000000 0B000000")}});
  VKColorParam kept;
  kept.MediaID = 99;
  std::strcpy(kept.Model, "Kept");
  EXPECT_EQ(file.handler.GetVKColorParam(kept), 1);
  EXPECT_EQ(kept.size, 12);
  EXPECT_EQ(kept.status, 11);
  EXPECT_EQ(kept.MediaID, 99);
  EXPECT_STREQ(kept.Model, "Kept");
}

TEST(HandlerColorParam, ShortensOneMakeAndLeavesTheBytesBehindIt) {
  const std::string shortened("HP\0lett-Packard\0", 16);
  EXPECT_EQ(MakeOf("Hewlett-Packard"), Padded(shortened));
  EXPECT_EQ(MakeOf(std::string("Hewlett-Packard\0", 16), 'r'), Padded(shortened, 'r'));
}

TEST(HandlerColorParam, LeavesEveryOtherMake) {
  for (const char* make :
       {"Hewlett-Packard Company", "Hewlett-Packards", "hewlett-packard", " Hewlett-Packard",
        "Hewlett-Packard ", "Hewlett-Packar", "Hewlett Packard", "HP", ""}) {
    EXPECT_EQ(MakeOf(make), Padded(make)) << make;
  }
  EXPECT_EQ(MakeOf("Hewlett-Packard", 'r'), Padded("Hewlett-Packard", 'r'));
}

TEST(HandlerColorParam, TrimsBlanksFromTheMediaName) {
  // Bytes behind the terminator of the trimmed name stay what they were.
  const std::string name = MediaNameOf("  Media  Name  ");
  EXPECT_STREQ(name.c_str(), "Media  Name");
  EXPECT_EQ(name, Padded(std::string("Media  Name\0e  ", 15)));

  EXPECT_EQ(MediaNameOf(std::string("  ab  \0XYZ", 10), 'r'),
            Padded(std::string("ab\0b  \0XYZ", 10), 'r'));
  EXPECT_EQ(MediaNameOf(std::string("ab \0XYZ", 7)), Padded(std::string("ab\0\0XYZ", 7)));
  EXPECT_EQ(MediaNameOf(std::string(" ab\0XYZ", 7)), Padded(std::string("ab\0\0XYZ", 7)));
}

TEST(HandlerColorParam, TrimsNothingButBlanks) {
  for (const char* media : {"Media  Name", "\tMedia\t", "", "\n x"}) {
    EXPECT_EQ(MediaNameOf(media), Padded(media)) << media;
  }
  const std::string behind("ab\0 XYZ ", 8);
  EXPECT_EQ(MediaNameOf(behind, ' '), Padded(behind, ' '));
}

TEST(HandlerColorParam, TrimsAMediaNameOfBlanksToNothing) {
  EXPECT_EQ(MediaNameOf("   "), Padded(std::string("\0  ", 3)));
}

TEST(HandlerColorParam, EndsAMediaNameWithoutATerminatorAtTheEndOfItsField) {
  const std::string full(128, 'n');
  EXPECT_EQ(MediaNameOf(full), full);
  const std::string leading = ' ' + std::string(127, 'n');
  EXPECT_EQ(MediaNameOf(leading), std::string(127, 'n') + '\0');
  const std::string trailing = std::string(126, 'n') + "  ";
  EXPECT_EQ(MediaNameOf(trailing), std::string(126, 'n') + '\0' + ' ');
  const std::string blanks(128, ' ');
  EXPECT_EQ(MediaNameOf(blanks), '\0' + std::string(127, ' '));
}

TEST(HandlerColorParam, IsWrittenAndReadWithoutAChangeButTheCleanUps) {
  VKColorParam written;
  written.status = 12;
  std::strcpy(written.Make, "Hewlett-Packard");
  std::strcpy(written.Model, " M ");
  std::strcpy(written.MediaName, "  a b  ");
  written.ResolutionX = 720.0f;
  std::memset(written.DriverOption, 0xF1, 256);
  std::memset(written.reservedText2, 'y', 128);
  OnFile file;
  ASSERT_EQ(file.handler.WriteVKColorParamTag(written), 1);
  VKColorParam read;
  ASSERT_EQ(file.handler.GetVKColorParam(read), 1);
  EXPECT_STREQ(read.Make, "HP");
  EXPECT_STREQ(read.MediaName, "a b");
  std::memcpy(read.Make, written.Make, 128);
  std::memcpy(read.MediaName, written.MediaName, 128);
  EXPECT_TRUE(SameBytes(RecordImage(read), RecordImage(written)));
}

// Dither.

Bytes DitherPayload(const std::string& typeAndSize, std::size_t tableBytes) {
  return Payload()
      .HexDigits(typeAndSize)
      .HexDigits("EEEEEEEEEEEEEEEE")  // once an address
      .Raw(Counting(tableBytes));
}

TEST(HandlerDither, IsReadWithItsTable) {
  const OnFile file({{"QX66", DitherPayload("01000000 24100000", 4116)}});
  VKDitherParam dither;
  EXPECT_EQ(file.handler.GetVKDitherParam(dither), 1);
  EXPECT_EQ(dither.type, 1);
  EXPECT_EQ(dither.size, 4132);
  ASSERT_NE(dither.table, nullptr);
  // The length word is the payload's, too.
  EXPECT_TRUE(SameBytes(RecordImage(*dither.table), Counting(4116)));
}

TEST(HandlerDither, ReplacesTheTableThatTheRecordHeld) {
  const OnFile file({{"QX66", DitherPayload("01000000 24100000", 4116)}});
  VKDitherParam dither;
  ASSERT_EQ(dither.InitDitherParam(1, std::make_unique<DitherTypeV1>().get()), 1);
  EXPECT_EQ(file.handler.GetVKDitherParam(dither), 1);
  ASSERT_NE(dither.table, nullptr);
  EXPECT_TRUE(SameBytes(RecordImage(*dither.table), Counting(4116)));
}

TEST(HandlerDither, TakesTheSizeAsStored) {
  const OnFile file({{"QX66", DitherPayload("01000000 F9FFFFFF", 4116)}});
  VKDitherParam dither;
  EXPECT_EQ(file.handler.GetVKDitherParam(dither), 1);
  EXPECT_EQ(dither.size, -7);
}

TEST(HandlerDither, OfAShortPayloadHasADefaultTableInItsRest) {
  for (const std::size_t bytes : {0u, 2u, 8u, 4115u}) {
    const OnFile file({{"QX66", DitherPayload("01000000 18000000", bytes)}});
    VKDitherParam dither;
    EXPECT_EQ(file.handler.GetVKDitherParam(dither), 1) << bytes;
    EXPECT_EQ(dither.size, 24);
    ASSERT_NE(dither.table, nullptr);
    Bytes expected = Payload().HexDigits("14100000").Fill(4112);
    for (std::size_t i = 0; i < bytes; ++i) expected[i] = Counting(bytes)[i];
    EXPECT_TRUE(SameBytes(RecordImage(*dither.table), expected)) << bytes;
  }
}

TEST(HandlerDither, OfALongPayloadIsCutToTheTable) {
  for (const std::size_t bytes : {4117u, 5000u, 100000u}) {
    const OnFile file({{"QX66", DitherPayload("01000000 24100000", bytes)}});
    VKDitherParam dither;
    EXPECT_EQ(file.handler.GetVKDitherParam(dither), 1) << bytes;
    ASSERT_NE(dither.table, nullptr);
    EXPECT_TRUE(SameBytes(RecordImage(*dither.table), Counting(4116)));
  }
}

TEST(HandlerDither, OfAnotherTypeFailsAndLeavesNoTable) {
  for (const auto& [bytes, type] :
       {std::pair("02000000 24100000", 2), std::pair("00000000 24100000", 0),
        std::pair("FFFFFFFF 24100000", -1)}) {
    const OnFile file({{"QX66", DitherPayload(bytes, 4116)}});
    VKDitherParam dither;
    ASSERT_EQ(dither.InitDitherParam(1, std::make_unique<DitherTypeV1>().get()), 1);
    dither.size = 5;
    EXPECT_EQ(file.handler.GetVKDitherParam(dither), 0);
    EXPECT_EQ(dither.type, type);
    EXPECT_EQ(dither.size, 4132);
    EXPECT_EQ(dither.table, nullptr);
  }
}

TEST(HandlerDither, NeedsAWholeHead) {
  const OnFile file({{"QX66", HexBytes("01000000 24100000 00000000 000000")}});
  VKDitherParam dither;
  EXPECT_EQ(file.handler.GetVKDitherParam(dither), 0);
  EXPECT_EQ(dither.table, nullptr);
}

TEST(HandlerDither, IsWrittenAndReadWithItsTable) {
  const auto table = std::make_unique<DitherTypeV1>();
  for (int i = 0; i < 4112; ++i) table->table[i] = static_cast<unsigned char>(i % 253);
  VKDitherParam written;
  ASSERT_EQ(written.InitDitherParam(1, table.get()), 1);
  OnFile file;
  ASSERT_EQ(file.handler.WriteDitherParamTag(written), 1);
  VKDitherParam read;
  ASSERT_EQ(file.handler.GetVKDitherParam(read), 1);
  EXPECT_EQ(read.size, 4132);
  EXPECT_TRUE(SameBytes(RecordImage(*read.table), RecordImage(*table)));
}

// The split.

/// A payload whose records begin at offset 16, where the reader takes them from.
Bytes ReadableSplit(int version, int size, int count, const Bytes& fromOffset16) {
  return Payload().Int(version).Int(size).Int(count).Fill(4, 0xEE).Raw(fromOffset16);
}

/// The bytes of the records that a set holds.
Bytes RecordsOf(const SplitParam& split, std::size_t recordSize) {
  if (split.splits == nullptr) return {};
  Bytes image(recordSize * static_cast<std::size_t>(split.count));
  std::memcpy(image.data(), static_cast<const void*>(split.splits), image.size());
  return image;
}

/// The record of version 2 as a new one is.
Bytes DefaultV2() {
  return Payload().HexDigits("4C000000 FFFFFFFF").HexDigits(kMinusOne, 8).Fill(36);
}

constexpr struct {
  int version;
  std::size_t recordSize;
} kVersions[] = {{2, 76}, {3, 6168}, {4, 9240}};

TEST(HandlerSplit, IsReadFromOffset16ThoughItIsWrittenAt20) {
  SplitTypeV2 record;
  record.colorantIndex = 3;
  record.lightPeakInput = 0.5f;
  SplitParam written;
  ASSERT_EQ(written.InitSplitParam(2, 1, &record), 1);
  OnFile file;
  ASSERT_EQ(file.handler.WriteInkSplitTag(written), 1);
  // At 16 the last four bytes without meaning, at 20 the record.
  EXPECT_EQ(file.Stored("QX50"), Payload()
                                     .HexDigits("02000000 60000000 01000000 00000000")
                                     .HexDigits("00000000")
                                     .HexDigits("4C000000 03000000")
                                     .HexDigits(kMinusOne)
                                     .HexDigits("0000003F")
                                     .HexDigits(kMinusOne, 6)
                                     .Fill(36)
                                     .bytes());
  SplitParam read;
  ASSERT_EQ(file.handler.GetSplitParam(read, 0), 1);
  EXPECT_EQ(read.version, 2);
  EXPECT_EQ(read.size, 96);
  EXPECT_EQ(read.count, 1);
  EXPECT_EQ(RecordsOf(read, 76), Payload()
                                     .HexDigits("00000000 4C000000 03000000")
                                     .HexDigits(kMinusOne)
                                     .HexDigits("0000003F")
                                     .HexDigits(kMinusOne, 6)
                                     .Fill(32)
                                     .bytes());
}

TEST(HandlerSplit, OfEveryVersionIsReadFromOffset16) {
  for (const auto& [version, recordSize] : kVersions) {
    const Bytes records = Counting(2 * recordSize);
    const OnFile file({{"QX50", ReadableSplit(version, 4711, 2, records)}});
    SplitParam read;
    EXPECT_EQ(file.handler.GetSplitParam(read, 0), 1) << version;
    EXPECT_EQ(read.version, version);
    EXPECT_EQ(read.size, 4711);  // as stored
    EXPECT_EQ(read.count, 2);
    ASSERT_NE(read.splits, nullptr);
    EXPECT_TRUE(SameBytes(RecordsOf(read, recordSize), records)) << version;
  }
}

TEST(HandlerSplit, OfALongPayloadTakesWhatItsRecordsHold) {
  for (const std::size_t more : {4u, 500u, 100000u}) {
    const Bytes records = Counting(76);
    const OnFile file({{"QX50", ReadableSplit(2, 96, 1, Payload().Raw(records).Fill(more, 0xEE))}});
    SplitParam read;
    EXPECT_EQ(file.handler.GetSplitParam(read, 0), 1);
    EXPECT_EQ(RecordsOf(read, 76), records);
  }
}

TEST(HandlerSplit, OfAShortPayloadKeepsInitialRecordsInItsRest) {
  for (const std::size_t bytes : {4u, 10u, 76u, 100u, 151u}) {
    const OnFile file({{"QX50", ReadableSplit(2, 172, 2, Counting(bytes))}});
    SplitParam read;
    EXPECT_EQ(file.handler.GetSplitParam(read, 0), 1) << bytes;
    EXPECT_EQ(read.count, 2);
    Bytes expected = Payload().Raw(DefaultV2()).Raw(DefaultV2());
    for (std::size_t i = 0; i < bytes; ++i) expected[i] = Counting(bytes)[i];
    ASSERT_NE(read.splits, nullptr);
    EXPECT_EQ(RecordsOf(read, 76), expected) << bytes;
  }
}

TEST(HandlerSplit, OfAShortPayloadKeepsInitialRecordsOfTheLaterVersions) {
  for (const auto& [version, recordSize] : kVersions) {
    if (version == 2) continue;
    const OnFile file({{"QX50", ReadableSplit(version, 20, 2, HexBytes("01020304 05060708"))}});
    SplitParam read;
    ASSERT_EQ(file.handler.GetSplitParam(read, 0), 1);
    const Bytes records = RecordsOf(read, recordSize);
    EXPECT_EQ(Bytes(records.begin(), records.begin() + 8), HexBytes("01020304 05060708"));
    const auto second = records.begin() + static_cast<std::ptrdiff_t>(recordSize);
    EXPECT_EQ(Bytes(second - 16, second), Bytes(16, 0));
    EXPECT_EQ(Bytes(second, second + 8),
              HexBytes(version == 3 ? "18180000 FFFFFFFF" : "18240000 FFFFFFFF"));
    EXPECT_EQ(Bytes(records.end() - 16, records.end()), Bytes(16, 0));
  }
}

TEST(HandlerSplit, NeedsAWholeHead) {
  Bytes payload = ReadableSplit(2, 20, 0, HexBytes("000000"));
  ASSERT_EQ(payload.size(), 19u);
  const OnFile file({{"QX50", payload}});
  SplitParam read;
  EXPECT_EQ(file.handler.GetSplitParam(read, 0), 0);
  EXPECT_EQ(read.splits, nullptr);
}

TEST(HandlerSplit, OfNoRecordsIsRead) {
  const OnFile file({{"QX50", ReadableSplit(3, 20, 0, Bytes(4))}});
  SplitTypeV2 record;
  SplitParam read;
  ASSERT_EQ(read.InitSplitParam(2, 1, &record), 1);
  EXPECT_EQ(file.handler.GetSplitParam(read, 0), 1);
  EXPECT_EQ(read.version, 3);
  EXPECT_EQ(read.count, 0);
}

TEST(HandlerSplit, FillsWhatThePayloadLacksUpToACountOf1024) {
  for (const auto& [version, recordSize] : kVersions) {
    const OnFile file({{"QX50", ReadableSplit(version, 20, 1024, Bytes(8, 1))}});
    SplitParam read;
    EXPECT_EQ(file.handler.GetSplitParam(read, 0), 1) << version;
    EXPECT_EQ(read.count, 1024);
    ASSERT_NE(read.splits, nullptr);
    Bytes head(4);
    std::memcpy(head.data(), reinterpret_cast<const char*>(read.splits) + 1023 * recordSize, 4);
    EXPECT_EQ(head, HexBytes(version == 2 ? "4C000000" : version == 3 ? "18180000" : "18240000"));
    for (const int count : {1025, 100000, 2147483647}) {
      const OnFile above({{"QX50", ReadableSplit(version, 20, count, Bytes(8, 1))}});
      SplitParam refused;
      EXPECT_EQ(above.handler.GetSplitParam(refused, 0), 0) << version << ' ' << count;
      EXPECT_EQ(refused.splits, nullptr);
    }
  }
}

// From byte 16 on, where the reader takes them, the payload holds every byte of the records.
TEST(HandlerSplit, TakesAnyCountThatThePayloadHoldsWhole) {
  for (const auto& [version, recordSize] : kVersions) {
    const Bytes records = Counting(1025 * recordSize);
    const OnFile whole({{"QX50", ReadableSplit(version, 20, 1025, records)}});
    SplitParam read;
    EXPECT_EQ(whole.handler.GetSplitParam(read, 0), 1) << version;
    EXPECT_EQ(read.count, 1025);
    EXPECT_TRUE(SameBytes(RecordsOf(read, recordSize), records)) << version;
    const Bytes oneLess(records.begin(), records.end() - 1);
    const OnFile cut({{"QX50", ReadableSplit(version, 20, 1025, oneLess)}});
    EXPECT_EQ(cut.handler.GetSplitParam(read, 0), 0) << version;
    EXPECT_EQ(read.splits, nullptr);
  }
}

TEST(HandlerSplit, OfManyRecordsIsReadBackAsItWasWritten) {
  std::vector<SplitTypeV2> records(1025);
  records[1024].colorantIndex = 3;
  SplitParam written;
  ASSERT_EQ(written.InitSplitParam(2, 1025, records.data()), 1);
  OnFile file;
  ASSERT_EQ(file.handler.WriteInkSplitTag(written), 1);
  SplitParam read;
  EXPECT_EQ(file.handler.GetSplitParam(read, 0), 1);
  EXPECT_EQ(read.count, 1025);
  EXPECT_EQ(file.handler.GetSplitParam(read, 1), 1);
  EXPECT_EQ(read.version, 4);
  EXPECT_EQ(read.size, 20 + 1025 * 9240);
}

TEST(HandlerSplit, RefusesANegativeCount) {
  for (const int count : {-1, -1024, -2147483647 - 1}) {
    const OnFile file({{"QX50", ReadableSplit(2, 96, count, Bytes(80, 1))}});
    SplitTypeV2 record;
    SplitParam read;
    ASSERT_EQ(read.InitSplitParam(2, 1, &record), 1);
    EXPECT_EQ(file.handler.GetSplitParam(read, 1), 0) << count;
    EXPECT_EQ(read.splits, nullptr);
  }
}

TEST(HandlerSplit, OfAnUnknownVersionFailsWithTheHeadReadAndNoRecords) {
  for (const int version : {5, 1, 0, -1}) {
    const OnFile file({{"QX50", ReadableSplit(version, 4711, 3, Bytes(80, 1))}});
    SplitTypeV2 record;
    SplitParam read;
    ASSERT_EQ(read.InitSplitParam(2, 1, &record), 1);
    EXPECT_EQ(file.handler.GetSplitParam(read, 1), 0) << version;
    EXPECT_EQ(read.version, version);
    EXPECT_EQ(read.size, 4711);
    EXPECT_EQ(read.count, 3);
    EXPECT_EQ(read.splits, nullptr);
  }
}

TEST(HandlerSplit, ReleasesNoRecordsOfAnUnknownVersion) {
  const OnFile file({{"QX50", ReadableSplit(2, 96, 1, Counting(76))}});
  SplitTypeV2 foreign;  // whoever releases this ends the test
  SplitParam read;
  read.version = 9;
  read.count = 1;
  read.splits = &foreign;
  EXPECT_EQ(file.handler.GetSplitParam(read, 0), 1);
  EXPECT_NE(read.splits, &foreign);
  EXPECT_EQ(foreign.size, 76u);
}

/// A record of version 2 that uses all three inks, the light one with a tail.
Bytes KnotsV2() {
  return Payload()
      .HexDigits("4C000000 03000000")
      .Float(-1.0f)
      .Float(0.25f)  // light peak, end
      .Float(0.75f)
      .Float(0.5f)  // medium peak, end
      .Float(0.875f)
      .Float(0.5f)  // amounts of light, medium, dark
      .Float(0.625f)
      .Float(0.375f)
      .Float(0.125f)  // light tail
      .Float(1.5f)
      .Float(3.0f)
      .Float(0.0f)  // medium tail
      .Float(4.5f)
      .Float(6.0f)
      .Float(7.5f)
      .Float(9.0f)
      .Float(10.5f);
}

TEST(HandlerSplit, OfVersionTwoIsUpgradedDirectly) {
  for (const int upgrade : {1, 2, -1}) {
    const OnFile file({{"QX50", ReadableSplit(2, 96, 1, KnotsV2())}});
    SplitParam read;
    EXPECT_EQ(file.handler.GetSplitParam(read, upgrade), 1);
    EXPECT_EQ(read.version, 4);
    EXPECT_EQ(read.count, 1);
    EXPECT_EQ(read.size, 9260);
    ASSERT_NE(read.splits, nullptr);
    const SplitTypeV4& v4 = static_cast<const SplitTypeV4*>(read.splits)[0];
    EXPECT_EQ(v4.size, 9240u);
    EXPECT_EQ(v4.colorantIndex, 3);
    EXPECT_EQ(v4.lightCount, 5);  // 3 by way of version 3
    EXPECT_EQ(v4.mediumCount, 3);
    EXPECT_EQ(v4.darkCount, 3);
    EXPECT_EQ(v4.light[2].input, 0.625f);
    EXPECT_EQ(v4.light[2].amount, 0.125f);
    EXPECT_EQ(v4.light[2].shape, 1.0f);
  }
}

TEST(HandlerSplit, OfVersionThreeIsUpgraded) {
  const Bytes v3 = Payload()
                       .HexDigits("18180000 02000000")
                       .Float(0.25f)
                       .Float(0.5f)
                       .Fill(255 * 8 + 512 * 8)
                       .HexDigits("01000000 00000000 00000000 07000000");
  const OnFile file({{"QX50", ReadableSplit(3, 6188, 1, v3)}});
  SplitParam read;
  EXPECT_EQ(file.handler.GetSplitParam(read, 1), 1);
  EXPECT_EQ(read.version, 4);
  EXPECT_EQ(read.size, 9260);
  const SplitTypeV4& v4 = static_cast<const SplitTypeV4*>(read.splits)[0];
  EXPECT_EQ(v4.size, 9240u);
  EXPECT_EQ(v4.colorantIndex, 2);
  EXPECT_EQ(v4.lightCount, 1);
  EXPECT_EQ(v4.interpolation, 7);
  EXPECT_EQ(v4.light[0].input, 0.25f);
  EXPECT_EQ(v4.light[0].amount, 0.5f);
  EXPECT_EQ(v4.light[0].shape, 0.0f);
}

TEST(HandlerSplit, OfVersionThreeIsUpgradedWhateverItsCountsSay) {
  const Bytes v3 = Payload()
                       .HexDigits("18180000 02000000")
                       .Fill(768 * 8, 0x3F)
                       .HexDigits("FFFFFF7F 00000080 01010000 07000000");
  const OnFile file({{"QX50", ReadableSplit(3, 6188, 1, v3)}});
  SplitParam read;
  EXPECT_EQ(file.handler.GetSplitParam(read, 1), 1);
  EXPECT_EQ(read.version, 4);
  ASSERT_NE(read.splits, nullptr);
  const SplitTypeV4& v4 = static_cast<const SplitTypeV4*>(read.splits)[0];
  EXPECT_EQ(v4.lightCount, 256);
  EXPECT_EQ(v4.mediumCount, 0);
  EXPECT_EQ(v4.darkCount, 256);
  EXPECT_EQ(v4.interpolation, 7);
}

TEST(HandlerSplit, KeepsItsVersionWithoutAnUpgrade) {
  const OnFile two({{"QX50", ReadableSplit(2, 96, 1, KnotsV2())}});
  SplitParam read;
  EXPECT_EQ(two.handler.GetSplitParam(read, 0), 1);
  EXPECT_EQ(read.version, 2);
  EXPECT_EQ(RecordsOf(read, 76), KnotsV2());
  const OnFile three({{"QX50", ReadableSplit(3, 6188, 1, Counting(6168))}});
  EXPECT_EQ(three.handler.GetSplitParam(read, 0), 1);
  EXPECT_EQ(read.version, 3);
}

TEST(HandlerSplit, OfVersionFourIsNotTouchedByAnUpgrade) {
  const OnFile file({{"QX50", ReadableSplit(4, 4711, 1, Counting(9240))}});
  SplitParam read;
  EXPECT_EQ(file.handler.GetSplitParam(read, 1), 1);
  EXPECT_EQ(read.version, 4);
  EXPECT_EQ(read.size, 4711);
  EXPECT_TRUE(SameBytes(RecordsOf(read, 9240), Counting(9240)));
}

// The split as it is stored.

Bytes StoredSplit(int version, int count, const Bytes& records) {
  return Payload()
      .Int(version)
      .Int(static_cast<int>(20 + records.size()))
      .Int(count)
      .Fill(8, 0xEE)
      .Raw(records);
}

TEST(StoredSplit, IsReadFromWhereItIsWritten) {
  for (const auto& [version, recordSize] : kVersions) {
    const Bytes records = Counting(2 * recordSize);
    OnFile file({{"QX50", StoredSplit(version, 2, records)}});
    SplitTypeV2 before;
    SplitParam read;
    ASSERT_EQ(read.InitSplitParam(2, 1, &before), 1);
    EXPECT_TRUE(vkcl::ReadStoredSplit(*file.handler.GetProfilePtr(), read));
    EXPECT_EQ(read.version, version);  // nothing is converted
    EXPECT_EQ(read.count, 2);
    EXPECT_EQ(static_cast<std::size_t>(read.size), 20 + 2 * recordSize);
    ASSERT_NE(read.splits, nullptr);
    EXPECT_TRUE(SameBytes(RecordsOf(read, recordSize), records)) << version;
  }
}

TEST(StoredSplit, GivesBackWhatTheHandlerWrote) {
  SplitTypeV2 records[2];
  records[0].colorantIndex = 1;
  records[1].darkAmount = 0.5f;
  SplitParam written;
  ASSERT_EQ(written.InitSplitParam(2, 2, records), 1);
  OnFile file;
  ASSERT_EQ(file.handler.WriteInkSplitTag(written), 1);
  SplitParam read;
  EXPECT_TRUE(vkcl::ReadStoredSplit(*file.handler.GetProfilePtr(), read));
  EXPECT_EQ(read.size, 172);
  EXPECT_EQ(RecordsOf(read, 76), RecordsOf(written, 76));
}

TEST(StoredSplit, ThatIsNotWholeLeavesTheSetAsItIs) {
  const Bytes one = Counting(76);
  const std::vector<std::optional<Bytes>> payloads = {
      std::nullopt,                     // no tag
      StoredSplit(2, 2, one),           // one of two records
      StoredSplit(2, 1, Counting(75)),  // a record that lacks a byte
      StoredSplit(4, 1, Counting(9239)),
      StoredSplit(5, 1, one),
      StoredSplit(1, 1, one),
      StoredSplit(2, -1, one),
      StoredSplit(2, -2147483647 - 1, one),
      StoredSplit(2, 2147483647, one),
      StoredSplit(2, 1025, one),
      HexBytes("02000000 14000000 00000000 00000000 000000"),  // no whole head
  };
  for (const auto& payload : payloads) {
    std::vector<FileTag> tags;
    if (payload) tags.emplace_back("QX50", *payload);
    OnFile file(tags);
    SplitTypeV2 before;
    before.colorantIndex = 6;
    SplitParam read;
    ASSERT_EQ(read.InitSplitParam(2, 1, &before), 1);
    const SplitTypeBase* const own = read.splits;
    EXPECT_FALSE(vkcl::ReadStoredSplit(*file.handler.GetProfilePtr(), read));
    EXPECT_EQ(read.version, 2);
    EXPECT_EQ(read.count, 1);
    EXPECT_EQ(read.size, 96);
    EXPECT_EQ(read.splits, own);
    EXPECT_EQ(read.splits->colorantIndex, 6);
  }
}

// Spot colours.

TEST(HandlerSpotInkLimits, AreReadWithNameAndLimits) {
  const OnFile file({{"QX68", HexBytes("02000000 1F000000 02000000 526564"
                                       "0000000000005940 00000000000000C0")}});
  VKSpotSingleInkLimit spot;
  double before[] = {1.0};
  spot.SetData(1, "Before", before);
  EXPECT_EQ(file.handler.GetVKSpotSIL(spot), 1);
  EXPECT_EQ(spot.version, 2);
  EXPECT_EQ(spot.size, 31);
  EXPECT_EQ(spot.count, 2);
  EXPECT_STREQ(spot.name, "Red");
  ASSERT_NE(spot.limits, nullptr);
  EXPECT_EQ(spot.limits[0], 100.0);
  EXPECT_EQ(spot.limits[1], -2.0);
}

TEST(HandlerSpotInkLimits, TakeTheLengthOfTheNameFromTheStoredSize) {
  // The tag is longer than it says.
  const OnFile file({{"QX68", HexBytes("01000000 16000000 01000000 5265"
                                       "0000000000005940 AAAAAAAAAAAA")}});
  VKSpotSingleInkLimit spot;
  EXPECT_EQ(file.handler.GetVKSpotSIL(spot), 1);
  EXPECT_EQ(spot.size, 22);
  EXPECT_STREQ(spot.name, "Re");
  EXPECT_EQ(spot.limits[0], 100.0);
}

TEST(HandlerSpotInkLimits, WithoutAName) {
  const OnFile file({{"QX68", HexBytes("01000000 14000000 01000000 0000000000005940")}});
  VKSpotSingleInkLimit spot;
  EXPECT_EQ(file.handler.GetVKSpotSIL(spot), 1);
  EXPECT_STREQ(spot.name, "");
  EXPECT_EQ(spot.limits[0], 100.0);
}

TEST(HandlerSpotInkLimits, WithoutLimits) {
  const OnFile file({{"QX68", HexBytes("01000000 0F000000 00000000 526564")}});
  VKSpotSingleInkLimit spot;
  EXPECT_EQ(file.handler.GetVKSpotSIL(spot), 1);
  EXPECT_EQ(spot.count, 0);
  EXPECT_STREQ(spot.name, "Red");
}

TEST(HandlerSpotInkLimits, WhoseNumbersDoNotFitThePayloadLeaveTheRecord) {
  for (const char* payload :
       {"01000000 0F000000 000000",                     // no whole head
        "01000000 13000000 01000000 0000000000005940",  // a name of -1 characters
        "01000000 00000000 01000000 0000000000005940",  // of less still
        "01000000 15000000 01000000 0000000000005940",  // of one more than there is
        "01000000 FFFFFF7F 01000000 0000000000005940",
        "01000000 1C000000 02000000 0000000000005940",  // one limit of two
        "01000000 0C000000 FFFFFFFF 0000000000005940",  // -1 limits
        "01000000 04000000 FFFFFFFF 0000000000005940",
        "01000000 14000000 00000080 0000000000005940",
        "01000000 0C000000 00000020 0000000000005940",  // 2^32 bytes of limits
        "01000000 14000000 01000020 0000000000005940",
        "01000000 14000000 FFFFFF7F 0000000000005940"}) {
    const OnFile file({{"QX68", HexBytes(payload)}});
    VKSpotSingleInkLimit spot;
    double before[] = {5.0};
    spot.SetData(1, "Before", before);
    EXPECT_EQ(file.handler.GetVKSpotSIL(spot), 0) << payload;
    EXPECT_EQ(spot.version, 1);
    EXPECT_EQ(spot.size, 26);
    EXPECT_EQ(spot.count, 1);
    EXPECT_STREQ(spot.name, "Before");
    EXPECT_EQ(spot.limits[0], 5.0);
  }
}

TEST(HandlerSpotInkLimits, AreWrittenAndReadWithoutAChange) {
  VKSpotSingleInkLimit written;
  double values[] = {12.5, 0.0, 400.0};
  written.SetData(3, "Warm Red", values);
  OnFile file;
  ASSERT_EQ(file.handler.WriteVKSpotSIL(written), 1);
  VKSpotSingleInkLimit read;
  ASSERT_EQ(file.handler.GetVKSpotSIL(read), 1);
  EXPECT_EQ(read.size, written.size);
  EXPECT_EQ(read.count, 3);
  EXPECT_STREQ(read.name, "Warm Red");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(read.limits[i], values[i]) << i;
}

Bytes SavedLink(void* link) {
  unsigned int size = 0;
  EXPECT_EQ(CLSaveLink8ToMemory(link, nullptr, 0, &size), 0);
  Bytes bytes(size);
  EXPECT_EQ(CLSaveLink8ToMemory(link, bytes.data(), size, &size), 0);
  return bytes;
}

/// The bytes of a link from RGB to CMYK, built from real profiles.
const Bytes& RealLink() {
  static const Bytes bytes = [] {
    void* profiles[2];
    const char* const names[] = {"srgb.icc", "default_cmyk.icc"};
    for (int i = 0; i < 2; ++i) {
      const Bytes content = ReadFile(RealProfile(names[i]));
      profiles[i] = CLNewCLProfileRef();
      EXPECT_EQ(CLLoadProfileFromMemory(profiles[i], content.data(),
                                        static_cast<unsigned int>(content.size())),
                0);
    }
    void* link = CLNewCLLink8Ref();
    EXPECT_EQ(CLBuildLink8(link, profiles[0], profiles[1], 1), 0);
    Bytes saved = SavedLink(link);
    CLFreeCLLink8Ref(link);
    for (void* profile : profiles) CLFreeCLProfileRef(profile);
    return saved;
  }();
  return bytes;
}

int RealLinkSize() { return static_cast<int>(RealLink().size()); }

TEST(HandlerSpotLinks, AreReadWithNameAndLinks) {
  const OnFile file({{"QX69", Payload()
                                  .HexDigits("02000000 67120000 03000000 04000000 476F6C64")
                                  .Int(RealLinkSize())
                                  .Int(0)
                                  .Int(RealLinkSize())
                                  .Raw(RealLink())
                                  .Raw(RealLink())}});
  VKSpotLinDLParam spot;
  spot.SetData(1, "Before");
  EXPECT_EQ(file.handler.GetVKSpotLinDL(spot), 1);
  EXPECT_EQ(spot.version, 2);
  EXPECT_EQ(spot.size, 0x1267);
  EXPECT_EQ(spot.count, 3);
  EXPECT_EQ(spot.nameLength, 4);
  EXPECT_STREQ(spot.name, "Gold");
  ASSERT_NE(spot.linkSizes, nullptr);
  ASSERT_NE(spot.links, nullptr);
  EXPECT_EQ(spot.linkSizes[0], RealLinkSize());
  EXPECT_EQ(spot.linkSizes[1], 0);
  EXPECT_EQ(spot.linkSizes[2], RealLinkSize());
  EXPECT_TRUE(SameBytes(SavedLink(spot.links[0]), RealLink()));
  EXPECT_TRUE(SavedLink(spot.links[1]).empty());
  EXPECT_TRUE(SameBytes(SavedLink(spot.links[2]), RealLink()));
}

TEST(HandlerSpotLinks, OfACountOfZeroAreRead) {
  const OnFile file({{"QX69", HexBytes("01000000 13000000 00000000 03000000 526564")}});
  VKSpotLinDLParam spot;
  EXPECT_EQ(file.handler.GetVKSpotLinDL(spot), 1);
  EXPECT_EQ(spot.count, 0);
  EXPECT_EQ(spot.nameLength, 3);
  EXPECT_STREQ(spot.name, "Red");
}

TEST(HandlerSpotLinks, OfWhichOneIsRefusedKeepWhatWasLoadedBefore) {
  const OnFile file({{"QX69", Payload()
                                  .HexDigits("02000000 67120000 03000000 04000000 476F6C64")
                                  .Int(RealLinkSize())
                                  .Int(7)
                                  .Int(RealLinkSize())
                                  .Raw(RealLink())
                                  .Text("no link")
                                  .Raw(RealLink())}});
  VKSpotLinDLParam spot;
  spot.SetData(1, "Before");
  EXPECT_EQ(file.handler.GetVKSpotLinDL(spot), 0);
  EXPECT_EQ(spot.version, 2);
  EXPECT_EQ(spot.count, 3);
  EXPECT_EQ(spot.nameLength, 4);
  EXPECT_STREQ(spot.name, "Gold");
  ASSERT_NE(spot.linkSizes, nullptr);
  EXPECT_EQ(spot.linkSizes[1], 7);
  ASSERT_NE(spot.links, nullptr);
  ASSERT_NE(spot.links[0], nullptr);
  EXPECT_TRUE(SameBytes(SavedLink(spot.links[0]), RealLink()));
  EXPECT_EQ(spot.links[2], nullptr);  // at once
}

TEST(HandlerSpotLinks, WhoseHeadDoesNotFitThePayloadLeaveTheRecord) {
  for (const char* payload :
       {"01000000 1C000000 02000000 040000",                      // no whole head
        "01000000 1C000000 FFFFFFFF 00000000 00000000 00000000",  // -1 links
        "01000000 1C000000 00000000 FFFFFFFF 00000000 00000000",  // a name of -1 characters
        "01000000 1C000000 00000000 09000000 0000000000000000",   // of one more than there is
        "01000000 1C000000 00000000 FFFFFF7F 0000000000000000",
        "01000000 1C000000 03000000 00000000 00000000 00000000",  // two lengths of three
        "01000000 1C000000 00000040 00000000 00000000 00000000",  // 2^32 bytes of lengths
        "01000000 1C000000 FFFFFF7F 00000000 00000000 00000000"}) {
    const OnFile file({{"QX69", HexBytes(payload)}});
    VKSpotLinDLParam spot;
    spot.SetData(1, "Before");
    void* const own = spot.links[0];
    EXPECT_EQ(file.handler.GetVKSpotLinDL(spot), 0) << payload;
    EXPECT_EQ(spot.version, 1);
    EXPECT_EQ(spot.count, 1);
    EXPECT_EQ(spot.nameLength, 6);
    EXPECT_STREQ(spot.name, "Before");
    ASSERT_NE(spot.links, nullptr);
    EXPECT_EQ(spot.links[0], own);
  }
}

TEST(HandlerSpotLinks, WhoseLengthsDoNotFitThePayloadFail) {
  for (const int length : {-1, -2147483647 - 1, RealLinkSize() + 1, 2147483647}) {
    const OnFile file(
        {{"QX69",
          Payload().HexDigits("01000000 00000000 01000000 00000000").Int(length).Raw(RealLink())}});
    VKSpotLinDLParam spot;
    EXPECT_EQ(file.handler.GetVKSpotLinDL(spot), 0) << length;
  }
}

TEST(HandlerSpotLinks, AreWrittenAndReadByteForByte) {
  VKSpotLinDLParam written;
  written.SetData(2, "Gold");
  ASSERT_EQ(CLLoadLink8FromMemory(written.links[1], RealLink().data(),
                                  static_cast<unsigned int>(RealLink().size())),
            0);
  OnFile file;
  ASSERT_EQ(file.handler.WriteVKSpotLinDL(written), 1);
  EXPECT_EQ(written.size, 16 + 4 + 8 + RealLinkSize());
  EXPECT_EQ(written.linkSizes[0], 0);
  EXPECT_EQ(written.linkSizes[1], RealLinkSize());
  EXPECT_TRUE(SameBytes(file.Stored("QX69").value_or(Bytes()),
                        Payload()
                            .HexDigits("01000000")
                            .Int(28 + RealLinkSize())
                            .HexDigits("02000000 04000000 476F6C64 00000000")
                            .Int(RealLinkSize())
                            .Raw(RealLink())));
  VKSpotLinDLParam read;
  ASSERT_EQ(file.handler.GetVKSpotLinDL(read), 1);
  EXPECT_EQ(read.size, written.size);
  EXPECT_STREQ(read.name, "Gold");
  EXPECT_TRUE(SavedLink(read.links[0]).empty());
  EXPECT_TRUE(SameBytes(SavedLink(read.links[1]), RealLink()));
}

// The VSD file.

Bytes VsdPayload(const Bytes& content) {
  return Payload().HexDigits("01000000").Field("a.vsd", 128).Raw(content);
}

TEST(HandlerVsdProfile, IsWrittenToANewFile) {
  const OnFile file({{"QX71", VsdPayload(HexBytes("3C610D0A003E"))}});
  const std::string out = file.dir().File("out.vsd");
  EXPECT_EQ(file.handler.GetVSDProfile(out), 1);
  EXPECT_EQ(ReadFile(out), HexBytes("3C610D0A003E"));
}

TEST(HandlerVsdProfile, WithoutAFileInItIsAnEmptyFile) {
  const OnFile file({{"QX71", VsdPayload({})}});
  const std::string out = file.dir().Write("out.vsd", Bytes(10, 1));
  EXPECT_EQ(file.handler.GetVSDProfile(out), 1);
  EXPECT_EQ(ReadFile(out), Bytes());
}

TEST(HandlerVsdProfile, ReplacesAFile) {
  const OnFile file({{"QX71", VsdPayload(HexBytes("3C613E"))}});
  const std::string out = file.dir().Write("out.vsd", Bytes(1000, 0xEE));
  EXPECT_EQ(file.handler.GetVSDProfile(out), 1);
  EXPECT_EQ(ReadFile(out), HexBytes("3C613E"));
}

TEST(HandlerVsdProfile, RefusesAFolderAndLeavesIt) {
  const OnFile file({{"QX71", VsdPayload(HexBytes("3C613E"))}});
  std::filesystem::create_directory(file.dir().path() / "full");
  std::filesystem::create_directory(file.dir().path() / "empty");
  const std::string inside = file.dir().Write("full/inside", Bytes(3, 1));
  EXPECT_EQ(file.handler.GetVSDProfile(file.dir().File("full")), 0);
  EXPECT_EQ(file.handler.GetVSDProfile(file.dir().File("empty")), 0);
  EXPECT_EQ(ReadFile(inside), Bytes(3, 1));
  EXPECT_TRUE(std::filesystem::is_directory(file.dir().path() / "empty"));
}

TEST(HandlerVsdProfile, LeavesAFileWhenThereIsNothingToWrite) {
  for (const auto& tags :
       {std::vector<FileTag>{}, std::vector<FileTag>{{"QX71", VsdPayload({}), "text"}},
        std::vector<FileTag>{{"QX71", Counting(131)}}, std::vector<FileTag>{{"QX71", Bytes()}}}) {
    const OnFile file(tags);
    const std::string out = file.dir().Write("out.vsd", Bytes(10, 0xEE));
    EXPECT_EQ(file.handler.GetVSDProfile(out), 0);
    EXPECT_EQ(ReadFile(out), Bytes(10, 0xEE));
    EXPECT_EQ(file.handler.GetVSDProfile(file.dir().File("new.vsd")), 0);
    EXPECT_FALSE(std::filesystem::exists(file.dir().path() / "new.vsd"));
  }
}

TEST(HandlerVsdProfile, FailsWhereNoFileCanBeMade) {
  const OnFile file({{"QX71", VsdPayload(HexBytes("3C613E"))}});
  EXPECT_EQ(file.handler.GetVSDProfile(file.dir().File("missing") + "/out.vsd"), 0);
  EXPECT_EQ(file.handler.GetVSDProfile(std::string()), 0);
}

TEST(HandlerVsdProfile, NeverTakesThePlaceOfTheProfile) {
  const OnFile file({{"QX71", VsdPayload(HexBytes("3C613E"))}});
  const Bytes before = file.File();
  const std::string detour = (file.dir().path() / "." / "profile.icc").string();
  for (const std::string& path : {file.path(), detour}) {
    EXPECT_EQ(file.handler.GetVSDProfile(path), 0) << path;
    EXPECT_EQ(file.File(), before) << path;
  }
}

TEST(HandlerVsdProfile, IsWholeWhenItSaysSo) {
  const Bytes content = Counting(1000);
  const OnFile file({{"QX71", VsdPayload(content)}});
  const Bytes profile = file.File();
  const std::string out = file.dir().File("out.vsd");
  for (const Fault fault : {Fault::Error, Fault::FullDisk}) {
    int refused = 0;
    bool reached = true;
    for (std::size_t call = 0; reached; ++call) {
      int result = 0;
      {
        const FaultAt at(call, fault);
        result = file.handler.GetVSDProfile(out);
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(file.File(), profile) << call;
      if (result == 0) {
        ++refused;
      } else {
        EXPECT_TRUE(SameBytes(ReadFile(out), content)) << call;
      }
    }
    EXPECT_GE(refused, 1);
  }
}

#if !defined(_WIN32)
TEST(HandlerVsdProfile, NeverTakesThePlaceOfTheProfileUnderAnotherName) {
  const OnFile file({{"QX71", VsdPayload(HexBytes("3C613E"))}});
  const Bytes before = file.File();
  std::filesystem::create_symlink(file.path(), file.dir().path() / "link");
  file.handler.GetVSDProfile(file.dir().File("link"));
  EXPECT_EQ(file.File(), before);
}
#endif

TEST(HandlerVsdProfile, IsWrittenAndReadByteForByte) {
  OnFile file;
  const Bytes content = Counting(1000);
  const std::string vsd = file.dir().Write("side.vsd", content);
  ASSERT_EQ(file.handler.WriteVSDProfile(vsd), 1);
  VKVSDProfileParam param;
  EXPECT_EQ(file.handler.GetVSDProfileParam(param), 1);
  EXPECT_EQ(param.version, 1);
  EXPECT_STREQ(param.fileName, "side.vsd");
  const std::string out = file.dir().File("out.vsd");
  EXPECT_EQ(file.handler.GetVSDProfile(out), 1);
  EXPECT_TRUE(SameBytes(ReadFile(out), content));
}

// Written, then read.

TEST(HandlerRoundTrip, OfTheFixedRecordsChangesNothing) {
  OnFile file;
  VKSingleInkLimitWithLinRef single;
  single.count = 4;
  single.limits[3] = 12.5;
  VKMultiInklimit multi;
  multi.limits[35] = 12.5;
  VKCompatibilityParam compatibility;
  compatibility.bytes[63] = 9;
  VKLinExtraDataParam lin;
  std::strcpy(lin.text, "text");
  lin.blockB[287] = 9;
  VKProfileExtraParam extra;
  extra.value = 9;
  ASSERT_EQ(file.handler.WriteSILWithLinTag(single), 1);
  ASSERT_EQ(file.handler.WriteMultipleInkLimitTag(multi), 1);
  ASSERT_EQ(file.handler.WriteVKCompatibilityParam(compatibility), 1);
  ASSERT_EQ(file.handler.WriteVKLinExtraData(lin), 1);
  ASSERT_EQ(file.handler.WriteVKProfileExtraParam(extra), 1);
  ASSERT_EQ(file.handler.WriteVKCMStoDither(-7), 1);
  ASSERT_EQ(file.handler.WriteVKWizardFlag(8), 1);
  ASSERT_EQ(file.handler.WriteVKChromaAdjust("chroma"), 1);

  // By another handler, so that nothing but the file is asked.
  const VKCLProfileHandler other(file.path(), 0);
  Fenced<VKSingleInkLimitWithLinRef> readSingle;
  EXPECT_EQ(other.GetVKSingleInkLimitWithLinRef(readSingle.record), 1);
  EXPECT_EQ(RecordImage(readSingle.record), RecordImage(single));
  Fenced<VKMultiInklimit> readMulti;
  EXPECT_EQ(other.GetVKMultiInklimit(readMulti.record, 2), 1);
  EXPECT_EQ(RecordImage(readMulti.record), RecordImage(multi));
  Fenced<VKCompatibilityParam> readCompatibility;
  EXPECT_EQ(other.GetVKCompatibilityParam(readCompatibility.record), 1);
  EXPECT_EQ(RecordImage(readCompatibility.record), RecordImage(compatibility));
  Fenced<VKLinExtraDataParam> readLin;
  EXPECT_EQ(other.GetVKLinExtraData(readLin.record), 1);
  EXPECT_EQ(RecordImage(readLin.record), RecordImage(lin));
  Fenced<VKProfileExtraParam> readExtra;
  EXPECT_EQ(other.GetVKProfileExtraParam(readExtra.record), 1);
  EXPECT_EQ(RecordImage(readExtra.record), RecordImage(extra));
  EXPECT_EQ(other.IsCMStoDither(), -7);
  EXPECT_EQ(other.IsWizardICC(), 8);
  AString text;
  EXPECT_EQ(other.GetVKChromaAdjust(text), 1);
  EXPECT_EQ(text.str(), "chroma");
}

// Copies.

TEST(HandlerCopies, WorkOnTheSameFileWithTablesOfTheirOwn) {
  const TempDir dir;
  const std::string path = dir.Write("profile.icc", ProfileFile({{"QX74", HexBytes("05000000")}}));
  auto original = std::make_unique<VKCLProfileHandler>(path, 0);
  VKCLProfileHandler copy(*original);
  VKCLProfileHandler assigned(dir.File("missing.icc"), 0);
  EXPECT_EQ(assigned.IsICCFile(), 0);
  assigned = *original;
  EXPECT_NE(copy.GetProfilePtr(), original->GetProfilePtr());
  EXPECT_NE(copy.GetProfilePtr()->tagTable, original->GetProfilePtr()->tagTable);
  EXPECT_NE(assigned.GetProfilePtr()->tagTable, original->GetProfilePtr()->tagTable);
  original.reset();
  EXPECT_EQ(copy.IsICCFile(), 1);
  EXPECT_EQ(copy.IsWizardICC(), 5);
  EXPECT_EQ(copy.GetColorSpace(), icSigCmykData);
  EXPECT_EQ(assigned.IsICCFile(), 1);
  EXPECT_EQ(assigned.IsWizardICC(), 5);
  EXPECT_EQ(copy.WriteVKWizardFlag(6), 1);
  EXPECT_EQ(assigned.IsWizardICC(), 6);  // nothing is held back in memory
}

TEST(HandlerCopies, AssignedToThemselvesStayAsTheyAre) {
  OnFile file({{"QX74", HexBytes("05000000")}});
  const VKCLProfileHandler& itself = file.handler;
  file.handler = itself;
  EXPECT_EQ(file.handler.IsICCFile(), 1);
  EXPECT_EQ(file.handler.IsWizardICC(), 5);
}

}  // namespace
