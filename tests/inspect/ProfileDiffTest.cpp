// Pairs of profiles with one difference each, and what is said of it.
#include "inspect/ProfileDiff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "support/RealProfiles.h"
#include "support/SystemCalls.h"
#include "support/TagFile.h"
#include "support/TempDir.h"

namespace {

using vkcl::CompareProfiles;
using vkcl::Difference;
using vkcl::testing::Bytes;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FileTag;
using vkcl::testing::Payload;
using vkcl::testing::ProfileFile;
using vkcl::testing::TempDir;
using vkcl::testing::WriteFile;

constexpr int kAnyChannels = 3;

// Each difference as "place|before|after", until there are `most`.
std::vector<std::string> Differences(const Bytes& before, const Bytes& after,
                                     std::size_t most = SIZE_MAX) {
  const TempDir dir;
  WriteFile(dir.File("before.icc"), before);
  WriteFile(dir.File("after.icc"), after);
  const VKCLProfile mine(AFilePath(dir.File("before.icc")), kAnyChannels);
  const VKCLProfile other(AFilePath(dir.File("after.icc")), kAnyChannels);
  std::vector<std::string> found;
  std::string why;
  const bool compared = CompareProfiles(
      mine, other,
      [&](const Difference& difference) {
        found.push_back(difference.place + "|" + difference.before + "|" + difference.after);
        return found.size() < most;
      },
      why);
  EXPECT_TRUE(compared) << why;
  EXPECT_EQ(why, "");
  return found;
}

std::vector<std::string> OfTag(const char* signature, const Bytes& before, const Bytes& after) {
  std::vector<std::string> found = Differences(ProfileFile({FileTag(signature, before)}),
                                               ProfileFile({FileTag(signature, after)}));
  std::erase_if(found, [](const std::string& text) { return text.starts_with("header.size|"); });
  return found;
}

using Texts = std::vector<std::string>;

Bytes List(std::int32_t samples, std::int32_t colors, const std::vector<double>& values) {
  Payload payload;
  payload.Int(0x4C616220).Int(samples).Int(1).Int(colors).Int(0).Int(values.empty() ? 0 : 1);
  for (const double value : values) payload.Double(value);
  return payload;
}

Bytes SplitV2(const std::vector<float>& firstKnots) {
  Payload payload;
  const auto count = static_cast<std::int32_t>(firstKnots.size());
  payload.Int(2).Int(20 + 76 * count).Int(count).Fill(8);
  for (const float knot : firstKnots) {
    payload.Int(76).Int(1).Float(-1).Float(knot);
    for (int i = 0; i < 15; ++i) payload.Float(0);
  }
  return payload;
}

Bytes SpotLinks(const std::vector<std::string>& links) {
  Payload payload;
  payload.Int(1).Int(0).Int(static_cast<std::int32_t>(links.size())).Int(2).Text("Or");
  for (const std::string& link : links) payload.Int(static_cast<std::int32_t>(link.size()));
  for (const std::string& link : links) payload.Text(link);
  return payload;
}

TEST(ProfileDiff, AProfileDiffersInNothingFromItself) {
  for (const std::string path : vkcl::testing::RealProfiles()) {
    const VKCLProfile profile((AFilePath(path)), kAnyChannels);
    std::string why;
    EXPECT_TRUE(CompareProfiles(
        profile, profile,
        [&](const Difference& difference) {
          ADD_FAILURE() << path << ": " << difference.place;
          return true;
        },
        why));
  }
}

TEST(ProfileDiff, NamesTheFieldsOfTheHeader) {
  const Bytes file = ProfileFile({FileTag("QX74", Payload().Int(1))});
  const auto changed = [&](std::size_t at, const Bytes& bytes) {
    Bytes other = file;
    std::copy(bytes.begin(), bytes.end(), other.begin() + static_cast<std::ptrdiff_t>(at));
    return Differences(file, other);
  };
  EXPECT_EQ(changed(16, {'R', 'G', 'B', ' '}), Texts{"header.colorSpace|'CMYK'|'RGB '"});
  EXPECT_EQ(changed(67, {3}), Texts{"header.renderingIntent|2|3"});
  EXPECT_EQ(changed(80, {'Q', 'X', 'C', 'R'}).size(), 1u);
  EXPECT_TRUE(changed(80, {'Q', 'X', 'C', 'R'})[0].ends_with("|'QXCR'"));
  EXPECT_TRUE(changed(127, {0xAB})[0].starts_with("header.reserved|"));
}

TEST(ProfileDiff, SaysAnEmptySignatureByItsDigits) {
  Bytes with = ProfileFile({FileTag("QX74", Payload().Int(1))});
  Bytes without = with;
  const std::string creator = "QXCR";
  std::copy(creator.begin(), creator.end(), with.begin() + 80);
  std::fill_n(without.begin() + 80, 4, std::uint8_t{0});
  EXPECT_EQ(Differences(without, with), Texts{"header.creator|0x00000000|'QXCR'"});
}

TEST(ProfileDiff, NamesNumbersListsAndRowsByTheirPlace) {
  EXPECT_EQ(OfTag("QX74", Payload().Int(1), Payload().Int(-2)), Texts{"QX74.value|1|-2"});
  EXPECT_EQ(OfTag("QX54", List(2, 2, {1, 2, 3, 4}), List(2, 2, {1, 2, 3.5, 4})),
            Texts{"QX54.values[1][0]|3|3.5"});
  EXPECT_EQ(OfTag("QX54", List(2, 1, {1, 2}), List(1, 1, {1})),
            (Texts{"QX54.NumOfSamples|2|1", "QX54.values|2 rows of 1|1 rows of 1"}));
  EXPECT_EQ(OfTag("QX54", List(1, 2, {1, 2}), List(2, 1, {1, 2})),
            (Texts{"QX54.NumOfSamples|1|2", "QX54.NumOfColors|2|1",
                   "QX54.values|1 rows of 2|2 rows of 1"}));
}

TEST(ProfileDiff, TellsNumbersApartByTheirBits) {
  EXPECT_EQ(OfTag("QX54", List(1, 1, {0.0}), List(1, 1, {-0.0})), Texts{"QX54.values[0][0]|0|-0"});
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(OfTag("QX54", List(1, 1, {nan}), List(1, 1, {nan})), Texts{});
}

TEST(ProfileDiff, NamesTheFieldsOfRecordsWithinATag) {
  EXPECT_EQ(OfTag("QX50", SplitV2({0.5f, 0.25f}), SplitV2({0.5f, 0.75f})),
            Texts{"QX50.splits[1].lightPeakInput|0.25|0.75"});
  EXPECT_EQ(OfTag("QX50", SplitV2({0.5f}), SplitV2({0.5f, 0.75f})),
            (Texts{"QX50.size|96|172", "QX50.count|1|2", "QX50.splits|1 records|2 records"}));
}

TEST(ProfileDiff, ComparesTextsAndWhatStandsBehindThem) {
  const auto sidecar = [](const std::string& name, const std::string& file) {
    return Payload().Int(1).Field(name, 128).Text(file).bytes();
  };
  EXPECT_EQ(OfTag("QX71", sidecar("a.icc", "<a/>"), sidecar("b\x01.icc", "<a/>")),
            Texts{"QX71.fileName|\"a.icc\"|\"b\\x01.icc\""});
  Bytes garbage = sidecar("a.icc", "<a/>");
  garbage[4 + 100] = 0x7F;
  EXPECT_EQ(OfTag("QX71", sidecar("a.icc", "<a/>"), garbage),
            Texts{"QX71.fileName (behind the text)|128 bytes, byte 100 is 00|128 bytes, byte 100 "
                  "is 7f"});
}

TEST(ProfileDiff, ComparesBlocksAndFilesByTheirBytes) {
  EXPECT_EQ(OfTag("QX58", Payload().Text("abcd"), Payload().Text("abXdef")),
            Texts{"QX58.file|4 bytes, byte 2 is 63|6 bytes, byte 2 is 58"});
  EXPECT_EQ(OfTag("QX58", Payload().Text("abcd"), Payload().Text("abcdef")),
            Texts{"QX58.file|4 bytes|6 bytes"});
  EXPECT_EQ(OfTag("QX69", SpotLinks({"one", "two"}), SpotLinks({"one", "twi"})),
            Texts{"QX69.links[1]|3 bytes, byte 2 is 6f|3 bytes, byte 2 is 69"});
}

TEST(ProfileDiff, FindsADifferenceBehindTheFirstPieceOfALargeFile) {
  Bytes large(200000, 7);
  Bytes other = large;
  other[150001] = 8;
  EXPECT_EQ(OfTag("QX58", large, other),
            Texts{"QX58.file|200000 bytes, byte 150001 is 07|200000 bytes, byte 150001 is 08"});
}

TEST(ProfileDiff, ComparesElementsWhereAPayloadHasNotTheForm) {
  EXPECT_EQ(OfTag("QX74", Payload().Int(1), Payload().Text("toolong")),
            Texts{"QX74|16 bytes, byte 12 is 01|19 bytes, byte 12 is 74"});
  EXPECT_EQ(OfTag("cprt", Payload().Text("a"), Payload().Text("b")),
            Texts{"cprt|13 bytes, byte 12 is 61|13 bytes, byte 12 is 62"});
}

TEST(ProfileDiff, SaysWhichTagsOnlyOneHas) {
  const Bytes one =
      ProfileFile({FileTag("cprt", Payload().Text("a")), FileTag("QX74", Payload().Int(1))});
  const Bytes two =
      ProfileFile({FileTag("cprt", Payload().Text("a")), FileTag("QX74", Payload().Int(1)),
                   FileTag("QX74", Payload().Int(2))});
  EXPECT_EQ(Differences(one, two)[1], "QX74#2||wizard flag, 16 bytes");
  EXPECT_EQ(Differences(two, one)[1], "QX74#2|wizard flag, 16 bytes|");
}

TEST(ProfileDiff, SaysWhenTheTagsHaveAnotherOrder) {
  const FileTag a("cprt", Payload().Text("a"));
  const FileTag b("QX74", Payload().Int(1));
  EXPECT_EQ(Differences(ProfileFile({a, b}), ProfileFile({b, a})),
            Texts{"order of the tags|cprt QX74|QX74 cprt"});
}

TEST(ProfileDiff, EndsWhenTheCallerWantsNoMore) {
  const TempDir dir;
  WriteFile(dir.File("a.icc"), ProfileFile({FileTag("QX74", Payload().Int(1))}));
  WriteFile(dir.File("b.icc"), ProfileFile({FileTag("QX76", Payload().Int(1).Int(2))}));
  const VKCLProfile a(AFilePath(dir.File("a.icc")), kAnyChannels);
  const VKCLProfile b(AFilePath(dir.File("b.icc")), kAnyChannels);
  int calls = 0;
  std::string why;
  EXPECT_TRUE(CompareProfiles(
      a, b, [&](const Difference&) { return ++calls < 2; }, why));
  EXPECT_EQ(calls, 2);
}

// Pairs of profiles that differ in every way: values, their numbers, records, blocks and texts,
// tags that only one has, and the order.
TEST(ProfileDiff, EndsAtWhateverDifferenceTheCallerHasEnough) {
  const auto links = [](const std::vector<std::string>& texts) { return SpotLinks(texts); };
  const Bytes before = ProfileFile({{"QX50", SplitV2({0.25f, 0.5f})},
                                    {"QX54", List(2, 1, {1, 2})},
                                    {"QX55", List(1, 2, {1, 2})},
                                    {"QX58", Payload().Text("abcd")},
                                    {"QX69", links({"one", "two", "three"})},
                                    {"QX75", Payload().Text("soft").Fill(1)},
                                    {"QX76", Payload().Int(1).Int(2)},
                                    {"cprt", Payload().Text("a")},
                                    {"gone", Payload().Int(1)}});
  const Bytes after = ProfileFile({{"QX50", SplitV2({0.125f, 0.75f, 1})},
                                   {"QX54", List(3, 1, {3, 4, 5})},
                                   {"QX55", List(2, 1, {1, 2})},
                                   {"QX69", links({"ones", "twi"})},
                                   {"QX58", Payload().Text("abXd")},
                                   {"QX75", Payload().Text("hard").Fill(1)},
                                   {"QX76", Payload().Int(3).Int(4)},
                                   {"cprt", Payload().Text("b")},
                                   {"come", Payload().Int(1)}});
  const Texts all = Differences(before, after);
  EXPECT_NE(std::find(all.begin(), all.end(), "QX50.splits|2 records|3 records"), all.end());
  EXPECT_NE(std::find(all.begin(), all.end(), "QX54.values|2 rows of 1|3 rows of 1"), all.end());
  EXPECT_NE(std::find(all.begin(), all.end(), "QX55.values|1 rows of 2|2 rows of 1"), all.end());
  EXPECT_NE(std::find(all.begin(), all.end(), "QX69.links|3 blocks|2 blocks"), all.end());
  EXPECT_TRUE(all.back().starts_with("order of the tags|"));
  for (std::size_t most = 1; most <= all.size(); ++most) {
    const Texts first = Differences(before, after, most);
    EXPECT_EQ(first, Texts(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(most))) << most;
  }
}

TEST(ProfileDiff, RefusesWhatIsNoProfile) {
  const TempDir dir;
  WriteFile(dir.File("a.icc"), ProfileFile({FileTag("QX74", Payload().Int(1))}));
  const VKCLProfile a(AFilePath(dir.File("a.icc")), kAnyChannels);
  const VKCLProfile none(AFilePath(dir.File("none.icc")), kAnyChannels);
  const auto sink = [](const Difference&) { return true; };
  std::string why;
  EXPECT_FALSE(CompareProfiles(a, none, sink, why));
  EXPECT_EQ(why, "the second profile cannot be read");
  EXPECT_FALSE(CompareProfiles(none, a, sink, why));
  EXPECT_EQ(why, "the first profile cannot be read");
}

TEST(ProfileDiff, SaysWhichProfileCouldNotBeReadToItsEnd) {
  const TempDir dir;
  const std::vector<FileTag> tags = {{"QX58", Bytes(200000, 7)}, {"cprt", Bytes(100000, 8)}};
  WriteFile(dir.File("a.icc"), ProfileFile(tags));
  WriteFile(dir.File("b.icc"), ProfileFile(tags));
  const VKCLProfile a(AFilePath(dir.File("a.icc")), kAnyChannels);
  const VKCLProfile b(AFilePath(dir.File("b.icc")), kAnyChannels);
  std::vector<std::string> said;
  for (std::size_t call = 0;; ++call) {
    const FaultAt fault(call, Fault::Error);
    std::string why;
    const auto sink = [](const Difference&) { return true; };
    const bool compared = CompareProfiles(a, b, sink, why);
    if (!FaultAt::Reached()) break;
    EXPECT_EQ(why.empty(), compared) << call;
    if (!compared) said.push_back(why);
  }
  const auto times = [&](const char* why) { return std::count(said.begin(), said.end(), why); };
  EXPECT_GT(times("the first profile cannot be read"), 4);  // opened, header, and pieces of tags
  EXPECT_GT(times("the second profile cannot be read"), 4);
}

}  // namespace
