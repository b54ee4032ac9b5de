// What a page leaves out of large profiles, and says so; and what it says of rare content.
#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "inspect/Pages.h"
#include "inspect/ProfileCheck.h"
#include "support/PrivatePayloads.h"

namespace {

using vkcl::testing::Begun;
using vkcl::testing::Big32;
using vkcl::testing::Bytes;
using vkcl::testing::ColorParam;
using vkcl::testing::Count;
using vkcl::testing::FileTag;
using vkcl::testing::Holds;
using vkcl::testing::ImageEntry;
using vkcl::testing::List;
using vkcl::testing::PageOf;
using vkcl::testing::PageWith;
using vkcl::testing::Payload;
using vkcl::testing::ProfileFile;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RawImage;
using vkcl::testing::SamplePayload;
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::SplitPayload;
using vkcl::testing::StoredLimits;
using vkcl::testing::TempDir;

// "a000", "a001" and so on.
std::vector<FileTag> ManyTags(std::size_t count) {
  std::vector<FileTag> tags;
  for (std::size_t i = 0; i < count; ++i) {
    tags.emplace_back("a" + std::to_string(1000 + i).substr(1), Bytes(4, 1));
  }
  return tags;
}

// The values 1, 2, 3 and so on.
std::vector<double> Counting(std::size_t count) {
  std::vector<double> values(count);
  std::iota(values.begin(), values.end(), 1.0);
  return values;
}

Payload Spectra(std::int32_t samples, std::int32_t bands) {
  return List(Sig("refl"), bands, Counting(static_cast<std::size_t>(samples * bands)));
}

TEST(ReportBounds, SayHowManyTagsAndPiecesAreLeftOut) {
  const std::string few = PageWith(ManyTags(198));
  EXPECT_FALSE(Holds(few, "more tags are left out"));
  EXPECT_FALSE(Holds(few, "more pieces are not drawn"));
  // With the two of a profile that was begun, and the pieces of header and table.
  const std::string many = PageWith(ManyTags(999));
  EXPECT_TRUE(Holds(many, "<p class=\"note\">801 more tags are left out.</p>"));
  EXPECT_TRUE(Holds(many, "<p class=\"note\">3 more pieces are not drawn.</p>"));
}

TEST(ReportBounds, SayThatPrivateTagsAreLeftOut) {
  std::vector<FileTag> tags;
  for (std::size_t i = 0; i < 99; ++i) {
    tags.emplace_back("QX" + std::to_string(100 + i).substr(1), Bytes(4, 1));
  }
  std::erase_if(tags, [](const FileTag& tag) {  // those that are known
    return tag.signature >= "QX50" && tag.signature <= "QX76";
  });
  for (const char last : {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j', 'k', 'l', 'm', 'n'}) {
    tags.emplace_back(std::string("QXa") + last, Bytes(4, 1));
    tags.emplace_back(std::string("QXb") + last, Bytes(4, 1));
  }
  ASSERT_EQ(tags.size(), 100u);
  const std::string page = PageWith(tags);  // besides the colour parameters
  EXPECT_EQ(Count(page, "<section class=\"record\">"), 100u);
  EXPECT_TRUE(Holds(page, "<p class=\"note\">More tags are left out.</p>"));
  tags.pop_back();
  EXPECT_FALSE(Holds(PageWith(tags), "More tags are left out."));
}

TEST(ReportBounds, SayHowManyFindingsAreLeftOut) {
  // Each with a signature, a place and a length that are odd.
  std::vector<ImageEntry> table;
  for (std::uint32_t i = 0; i < 150; ++i) table.push_back({i + 1, 132 + 12 * 150 + 8 * i + 1, 4});
  const TempDir dir;
  const AFilePath path(
      dir.Write("odd.icc", RawImage(ProfileHeader(), table, Bytes(8 * 150 + 4, 0))));
  const std::size_t findings = vkcl::CheckProfile(path).size();
  ASSERT_GT(findings, 200u);
  const std::string page = PageOf({path});
  EXPECT_EQ(Count(page, "<th scope=\"row\"><span class=\"severity "), 200u);
  EXPECT_TRUE(Holds(
      page, "<p class=\"note\">" + std::to_string(findings - 200) + " more are left out.</p>"));
}

TEST(ReportBounds, SayHowManyLimitsAreLeftOut) {
  Payload spot;
  spot.Int(1).Int(12 + 4 + 8 * 70).Int(70).Text("Gold");
  for (int i = 0; i < 70; ++i) spot.Double(i);
  const std::string page = PageWith({{"QX68", spot}});
  EXPECT_TRUE(Holds(page, "Spot colour limits (QX68): Gold"));
  EXPECT_TRUE(Holds(page, "6 more limits are left out."));
  EXPECT_TRUE(Holds(page, ">limits[63]</text>"));
  EXPECT_FALSE(Holds(page, ">limits[64]</text>"));
}

TEST(ReportBounds, SayHowManyColorantsAreLeftOut) {
  const std::string page = PageWith({{"QX50", SplitPayload(2, std::vector<std::int32_t>(34, 1))}});
  EXPECT_TRUE(Holds(page, "34 colorants, stored in version 2"));
  EXPECT_TRUE(Holds(page, "<p class=\"note\">2 more colorants left out.</p>"));
  EXPECT_FALSE(Holds(PageWith({{"QX50", SplitPayload(2, std::vector<std::int32_t>(32, 1))}}),
                     "more colorant"));
}

TEST(ReportBounds, SayWhichSpectraAreNotDrawn) {
  const std::string few = PageWith({{"QX54", Spectra(24, 36)}});
  EXPECT_TRUE(Holds(few, "a curve for each of 24 samples"));
  EXPECT_FALSE(Holds(few, "not drawn"));
  EXPECT_TRUE(Holds(PageWith({{"QX54", Spectra(25, 36)}}),
                    ": 25 spectra of 36 bands; they are not drawn.</p>"));
  EXPECT_TRUE(
      Holds(PageWith({{"QX54", Spectra(2, 1)}}), ": 2 spectra of 1 band; they are not drawn.</p>"));
}

TEST(ReportBounds, SayHowManyValuesOfASampleAreDrawn) {
  const std::string page = PageWith({{"QX54", List(0, 14, Counting(28))}});
  EXPECT_TRUE(Holds(page, "The first 12 values of 14 are drawn."));
  EXPECT_FALSE(Holds(PageWith({{"QX54", List(0, 12, Counting(24))}}), "The first 12 values"));
}

TEST(ReportOfBlocks, ShowsTheirFirstBytesAndHowManyFollow) {
  Bytes block(64, 0);
  EXPECT_TRUE(Holds(PageWith({{"QX67", block}}), "64 bytes, all zero"));
  block[0] = 0x0A;
  block[1] = 0xFE;
  EXPECT_TRUE(Holds(PageWith({{"QX67", block}}), "64 bytes<br><code>0afe and zeros</code>"));
  block.assign(64, 0x5C);
  std::string digits;
  for (int i = 0; i < 32; ++i) digits += "5c";
  EXPECT_TRUE(Holds(PageWith({{"QX67", block}}), "64 bytes<br><code>" + digits + " ...</code>"));
  EXPECT_TRUE(Holds(PageWith({{"QX58", Bytes({1, 0, 2})}}), "3 bytes<br><code>010002</code>"));
}

TEST(ReportOfBlocks, ShowsTheLengthOfEachLink) {
  Payload links;
  links.Int(1).Int(16 + 4 + 8 + 5).Int(2).Int(4).Text("Gold").Int(1).Int(4).Fill(5, 7);
  EXPECT_TRUE(Holds(PageWith({{"QX69", links}}), "<td>2: 1 byte, 4 bytes</td>"));
}

TEST(ReportOfTags, SaysWhyOneCannotBeRead) {
  const std::string page = PageWith({{"QX74", Payload().Int(1), "text"}});
  EXPECT_TRUE(Holds(page, "<code><bdi>QX74</bdi></code> cannot be read: "));
  EXPECT_TRUE(Holds(page, "it is no binary "));
}

TEST(ReportOfTags, TellsEveryLock) {
  const auto page = [](std::int32_t status) {
    return PageOf(
        ProfileFile({{"QX51", StoredLimits({})}, {"QX53", ColorParam(status, "Acme", 1)}}));
  };
  EXPECT_TRUE(Holds(page(9), "locked; the status holds the finished state at linearisation"));
  EXPECT_TRUE(Holds(page(10), "unlocked: its colour settings may be changed"));
  EXPECT_TRUE(Holds(page(11), "locked again after a change"));
  EXPECT_TRUE(Holds(page(12), "unlocked from status 9: its colour settings may be changed"));
  EXPECT_TRUE(Holds(page(13), "locked again after having been unlocked from status 9"));
  EXPECT_TRUE(Holds(page(8), "not unlocked; the status carries no lock"));
}

TEST(ReportOfTarget, SaysWhyItGivesNoPatches) {
  const std::string noText = PageWith({{"targ", Bytes(40, 'x')}});
  EXPECT_TRUE(Holds(noText, "it is no text that is wholly in the file"));
  std::vector<FileTag> tags = Begun();
  tags.emplace_back("targ", Bytes(40, 'x'), "text");
  Bytes file = ProfileFile(tags);
  EXPECT_FALSE(Holds(PageOf(file), "it is longer than 32 MiB"));
  SetBig32(file, 132 + 12 * 2 + 8, (32u << 20) + 1);  // its size in the table
  EXPECT_TRUE(Holds(PageOf(file), "it is longer than 32 MiB"));
}

// One description, in the form of newer profiles.
Bytes Multilingual(const Bytes& utf16) {
  Payload content;
  content.Raw(Big32(1)).Raw(Big32(12)).Text("enUS");
  content.Raw(Big32(static_cast<std::uint32_t>(utf16.size())));
  return content.Raw(Big32(28)).Raw(utf16);
}

std::string PageDescribed(const Bytes& utf16) {
  const Bytes element =
      vkcl::testing::Join({{'m', 'l', 'u', 'c', 0, 0, 0, 0}, Multilingual(utf16)});
  return PageOf(
      ProfileImage(ProfileHeader(),
                   {{Sig("desc"), element}, {Sig("QX74"), vkcl::testing::DataTag({1, 0, 0, 0})}}));
}

TEST(ReportOfDescriptions, TakesCharactersOfTwoUnits) {
  EXPECT_TRUE(Holds(PageDescribed({0, 'A', 0xD8, 0x3D, 0xDE, 0x00}), "<bdi>A\xF0\x9F\x98\x80<"));
  // Halves that have lost the other one.
  EXPECT_TRUE(Holds(PageDescribed({0xD8, 0x3D, 0, 'B'}),
                    "<bdi>\xEF\xBF\xBD"
                    "B<"));
  EXPECT_TRUE(Holds(PageDescribed({0xDE, 0x00, 0, 'C'}),
                    "<bdi>\xEF\xBF\xBD"
                    "C<"));
  EXPECT_TRUE(Holds(PageDescribed({0, 'D', 0xD8, 0x3D}), "<bdi>D\xEF\xBF\xBD<"));
}

TEST(ReportOfDescriptions, TakesNothingFromBrokenOnes) {
  const auto isShown = [](const Bytes& element) {
    const std::string page = PageOf(ProfileImage(
        ProfileHeader(),
        {{Sig("desc"), element}, {Sig("QX74"), vkcl::testing::DataTag({1, 0, 0, 0})}}));
    return Holds(page, "<dt>Description</dt>");
  };
  const Bytes head = {'m', 'l', 'u', 'c', 0, 0, 0, 0};
  const Bytes good = vkcl::testing::Join({head, Multilingual({0, 'A'})});
  EXPECT_TRUE(isShown(good));
  Bytes none = good;
  SetBig32(none, 8, 0);  // its number of texts
  EXPECT_FALSE(isShown(none));
  Bytes beyond = good;
  SetBig32(beyond, 24, 30);  // where the text begins
  EXPECT_FALSE(isShown(beyond));
  EXPECT_FALSE(isShown(Bytes(good.begin(), good.begin() + 20)));
  EXPECT_FALSE(isShown({'d', 'e', 's', 'c'}));
  EXPECT_FALSE(isShown({'d', 'e', 's', 'c', 0, 0, 0, 0, 0, 0, 0, 1}));
  EXPECT_FALSE(isShown({'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 1, 'A', 0, 0, 0}));
  EXPECT_TRUE(isShown({'d', 'e', 's', 'c', 0, 0, 0, 0, 0, 0, 0, 2, 'A', 0, 0, 0}));
}

TEST(ReportOfSections, HasThoseOfWhichItHoldsATag) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> sections = {
      {"Ink limits", {"QX51", "QX52", "QX68"}},
      {"Ink split", {"QX50"}},
      {"Linearisation", {"QX54", "QX55", "QX72", "QX73"}},
      {"Gray balance", {"QX56", "QX57"}},
      {"Characterisation", {"QX59", "QX60"}},
      {"Settings", {"QX53", "QX58", "QX74"}},
  };
  for (const auto& [title, signatures] : sections) {
    for (const std::string& signature : signatures) {
      const std::string page = PageOf(ProfileFile({{signature, SamplePayload(signature)}}));
      for (const auto& [other, unused] : sections) {
        EXPECT_EQ(Holds(page, "<h3>" + other + "</h3>"), other == title) << signature << other;
      }
    }
  }
}

}  // namespace
