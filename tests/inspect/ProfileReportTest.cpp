// Pages about profiles that are put together here, byte by byte.
#include "inspect/ProfileReport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "inspect/Pages.h"
#include "support/RealProfiles.h"

namespace {

using vkcl::testing::Begun;
using vkcl::testing::Bytes;
using vkcl::testing::ColorParam;
using vkcl::testing::Count;
using vkcl::testing::FileTag;
using vkcl::testing::Holds;
using vkcl::testing::List;
using vkcl::testing::PageOf;
using vkcl::testing::PageWith;
using vkcl::testing::Payload;
using vkcl::testing::ProfileFile;
using vkcl::testing::Sig;
using vkcl::testing::StoredLimits;
using vkcl::testing::TempDir;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// No number of a drawing is anything but digits.
bool DrawsFiniteNumbers(const std::string& page) {
  for (const char* attribute :
       {" d=\"", " x=\"", " y=\"", " cx=\"", " cy=\"", " width=\"", " height=\"", " viewBox=\""}) {
    for (std::size_t at = page.find(attribute); at != std::string::npos;
         at = page.find(attribute, at + 1)) {
      const std::size_t begin = at + std::string(attribute).size();
      const std::string value = page.substr(begin, page.find('"', begin) - begin);
      if (value.find_first_not_of("0123456789.- MLHVamhvzl") != std::string::npos) return false;
      if (Holds(value, "an")) return false;
    }
  }
  return true;
}

TEST(ProfileReport, SaysWhatTheFileIsAndHolds) {
  const std::string page = PageWith({});
  EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n<html lang=\"en\">"));
  EXPECT_TRUE(page.ends_with("</html>\n"));
  EXPECT_TRUE(Holds(page, "content=\"default-src 'none'; style-src 'unsafe-inline'"));
  EXPECT_TRUE(Holds(page, "<title>Profile report: press.icc</title>"));
  EXPECT_TRUE(Holds(page, "<dt>Class</dt><dd>output (<bdi>prtr</bdi>)</dd>"));
  EXPECT_TRUE(Holds(page, "<dt>Ink set</dt><dd><bdi>Cyan, Magenta, Yellow, Black</bdi></dd>"));
  EXPECT_TRUE(Holds(page, "<th scope=\"row\">Make</th><td><span class=\"text\"><bdi>Acme</bdi>"));
  EXPECT_TRUE(Holds(page, "1440 <span class=\"unit\">dpi</span>"));
  EXPECT_TRUE(Holds(page, "256 bytes, all zero"));
  EXPECT_TRUE(Holds(page, ">Yellow</text>"));
  EXPECT_TRUE(Holds(page, ">95.25</text>"));
  EXPECT_TRUE(Holds(page, "limits[4] to limits[15] are 100 each."));
  EXPECT_TRUE(Holds(page, "<span class=\"badge\">private</span> single ink limits"));
  EXPECT_FALSE(Holds(page, "<script"));
  EXPECT_TRUE(DrawsFiniteNumbers(page));
}

TEST(ProfileReport, SameFilesGiveTheSamePage) {
  const TempDir dir;
  const std::vector<AFilePath> paths = {AFilePath(dir.Write("a.icc", ProfileFile(Begun())))};
  EXPECT_TRUE(PageOf(paths) == PageOf(paths));
}

TEST(ProfileReport, TimelineMarksTheStatesThatAreReached) {
  const std::string early = PageWith({});
  EXPECT_EQ(Count(early,
                  "<li class=\"reached current\" aria-current=\"step\"><span class=\"name\">"
                  "ink limits<"),
            1u);
  EXPECT_EQ(Count(early, "<li class=\"open\">"), 6u);
  const std::string later = PageWith({{"QX56", List(Sig("Lab "), 3, {50, 0, 0})}});
  EXPECT_EQ(Count(later, "<li class=\"reached\">"), 4u);
  EXPECT_EQ(Count(later, "<li class=\"open\">"), 2u);
  EXPECT_TRUE(Holds(later, "aria-current=\"step\"><span class=\"name\">gray balance<"));
}

TEST(ProfileReport, TellsTheLock) {
  const auto with = [](std::int32_t status) {
    return PageOf(ProfileFile({{"QX51", StoredLimits({})},
                               {"QX53", ColorParam(status, "Acme", 1)},
                               {"QX52", Payload().Int(4).Int(300).Int(36).Fill(288)}}));
  };
  EXPECT_TRUE(Holds(with(9), "(status 9)"));
  EXPECT_TRUE(Holds(with(9), "<dt>With its status</dt><dd>ink limits is"));
  EXPECT_TRUE(Holds(with(10), "unlocked: its colour settings may be changed (status 10)"));
  EXPECT_TRUE(Holds(with(13), "locked again after having been unlocked from status 9"));
  EXPECT_FALSE(Holds(with(13), "With its status"));
}

TEST(ProfileReport, DrawsTheSplitOfEachVersion) {
  Payload two;
  two.Int(2).Int(96).Int(1).Fill(8).Int(76).Int(0).Float(-1).Float(0.25f).Float(0.5f);
  two.Float(-1).Float(-1).Float(0.5f).Float(-1).Float(0.75f).Fill(36);
  const std::string page = PageWith({{"QX50", two}});
  EXPECT_TRUE(Holds(page, "stored in version 2, shown as the curves of version 4"));
  EXPECT_TRUE(Holds(page, "<figcaption>Cyan (0)</figcaption>"));
  // Light: (0, 0), (0.25, 0.5), (0.5, 0); dark: (0.25, 0), (0.5, 0.75), (1, 1).
  EXPECT_TRUE(Holds(page, "d=\"M46.0 216.0L121.5 121.0L197.0 216.0\""));
  EXPECT_TRUE(Holds(page, "d=\"M121.5 216.0L197.0 73.5L348.0 26.0\""));

  Payload three;
  three.Int(3).Int(20 + 6168).Int(1).Fill(8).Int(6168).Int(3).Fill(4096);
  three.Float(0).Float(0).Float(1).Float(1).Fill(2048 - 16).Int(0).Int(-1).Int(2).Int(7);
  const std::string straight = PageWith({{"QX50", three}});
  EXPECT_TRUE(Holds(straight, "<figcaption>Black (3)</figcaption>"));
  EXPECT_TRUE(Holds(straight, "d=\"M46.0 216.0L348.0 26.0\""));
  EXPECT_TRUE(Holds(straight, "Interpolation 7."));
}

TEST(ProfileReport, DrawsTheResponseOfEachChannel) {
  std::vector<double> device;
  std::vector<double> lab;
  for (const double amount : {0.0, 50.0, 100.0}) {
    device.insert(device.end(), {amount, 0, 0, 0});
    lab.insert(lab.end(), {100 - amount / 2, 0, 0});
  }
  const std::string page =
      PageWith({{"QX55", List(Sig("CMYK"), 4, device)}, {"QX54", List(Sig("Lab "), 3, lab)}});
  EXPECT_TRUE(Holds(page, "<figcaption>Lightness of each channel</figcaption>"));
  EXPECT_TRUE(Holds(page, "d=\"M46.0 26.0L197.0 121.0L348.0 216.0\""));  // 100, 75, 50 of 50..100
  EXPECT_TRUE(Holds(page, "3 samples of 4 values in CMYK, 3 measured"));
}

TEST(ProfileReport, PatchesHaveTheirOwnColors) {
  const std::string page = PageWith({{"QX60", List(Sig("CMYK"), 4, {0, 0, 0, 0, 0, 0, 0, 100})},
                                     {"QX59", List(Sig("Lab "), 3, {100, 0, 0, 0, 0, 0})}});
  EXPECT_TRUE(Holds(page,
                    "fill=\"#ffffff\"><title>Sample 1: L* 100, a* 0, b* 0; Cyan 0, "
                    "Magenta 0, Yellow 0, Black 0</title>"));
  EXPECT_TRUE(Holds(page, "fill=\"#000000\"><title>Sample 2: L* 0"));
}

TEST(ProfileReport, ReadsTheTargetWhereThereAreNoLists) {
  const std::string target =
      "CGATS.5\nBEGIN_DATA_FORMAT\nCMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B\n"
      "END_DATA_FORMAT\nBEGIN_DATA\n0 0 0 0 95 0 -2\n100 0 0 0 55 -37 -50\nEND_DATA\n";
  const auto page = [](const std::string& text) {
    return PageOf(vkcl::testing::ProfileImage(vkcl::testing::ProfileHeader(),
                                              {{Sig("targ"), vkcl::testing::TextTag(text)}}));
  };
  EXPECT_TRUE(Holds(page(target), "<dt>Source</dt><dd>target text"));
  EXPECT_TRUE(Holds(page(target), "Sample 2: L* 55, a* -37, b* -50; Cyan 100, Magenta 0"));
  EXPECT_TRUE(Holds(page("nothing"), "<dt>Target</dt><dd>cannot be read: "));
}

TEST(ProfileReport, LongListsAreThinnedOut) {
  std::vector<double> lab;
  for (int i = 0; i < 6000; ++i) lab.insert(lab.end(), {i / 60.0, i % 50 - 25.0, 0});
  const std::string page = PageWith({{"QX59", List(Sig("Lab "), 3, lab)}});
  EXPECT_EQ(Count(page, "<circle"), 2u * 2000u);
  EXPECT_TRUE(Holds(page, "One patch in 3 is drawn."));
  EXPECT_TRUE(Holds(page, "the first 50 of 6,000"));
  EXPECT_LT(page.size(), std::size_t{2} << 20);
}

TEST(ProfileReport, HostileNumbersAreNeverDrawn) {
  std::vector<double> rows;
  for (const double a : {kNan, kInf, -kInf, 1e308, -1e308, -5.0, 0.0, 5e-324}) {
    for (const double b : {kNan, 1e308, 1.0}) rows.insert(rows.end(), {a, b, -a});
  }
  Payload split;
  split.Int(4).Int(20 + 9240).Int(1).Fill(8).Int(9240).Int(-1);
  for (int i = 0; i < 768; ++i) split.Float(static_cast<float>(i % 2 == 0 ? kNan : -kInf));
  split.Fill(6144).Int(2147483647).Int(-2147483647).Int(1000).Int(-1);
  std::vector<double> device;
  for (std::size_t i = 0; i < rows.size() / 3; ++i)
    device.insert(device.end(), {rows[3 * i], 0, 0});
  for (const std::uint32_t format : {Sig("Lab "), Sig("CMY "), Sig("refl"), 0xFFFFFFFFu, 0u}) {
    const std::string page = PageOf(ProfileFile({
        {"QX51", StoredLimits({kNan, kInf, -kInf, 1e308, -1e308, -5})},
        {"QX53", ColorParam(12, "", -2147483647)},
        {"QX50", split},
        {"QX54", List(format, 3, rows)},
        {"QX55", List(Sig("CMY "), 3, device)},
        {"QX56", List(Sig("Lab "), 3, rows)},
        {"QX57", List(format, 3, rows)},
        {"QX59", List(format, 3, rows)},
        {"QX60", List(Sig("CMY "), 3, device)},
        {"QX72", List(format, 3, rows)},
    }));
    EXPECT_TRUE(page.ends_with("</html>\n"));
    EXPECT_TRUE(DrawsFiniteNumbers(page)) << format;
  }
}

TEST(ProfileReport, EmptyAndDamagedTagsAreTold) {
  std::vector<FileTag> tags;
  for (int i = 50; i <= 78; ++i) tags.emplace_back("QX" + std::to_string(i), Bytes());
  const std::string empty = PageOf(ProfileFile(tags));
  EXPECT_TRUE(Holds(empty, "<code><bdi>QX51</bdi></code> cannot be read: "));
  EXPECT_TRUE(Holds(empty, "no private tag of this signature is known"));
  const std::string counts =
      PageWith({{"QX54", Payload().Int(0).Int(2147483647).Int(0).Int(2147483647).Int(0).Int(0)},
                {"QX55", Payload().Int(0).Int(-1).Int(0).Int(-1).Int(0).Int(1)},
                {"QX59", Payload().Int(0).Int(2147483647).Int(0).Int(0).Int(0).Int(1)}});
  EXPECT_TRUE(Holds(counts, "2,147,483,647 samples of 2,147,483,647 values"));
  EXPECT_TRUE(Holds(counts, "without values"));
  EXPECT_TRUE(Holds(counts, "cannot be read: "));
}

// Every prefix of a file gives a whole page.
TEST(ProfileReport, OfACutFileIsWhole) {
  const TempDir dir;
  const Bytes whole = ProfileFile(Begun());
  for (std::size_t length = 0; length < whole.size(); length += 41) {
    const std::string path = dir.Write(
        "a.icc", Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
    const std::string page = PageOf({AFilePath(path)});
    EXPECT_TRUE(page.ends_with("</html>\n")) << length;
    EXPECT_TRUE(Holds(page, "<h3>Findings</h3>")) << length;
  }
}

TEST(ProfileReport, TextsOfTheFileCannotBecomeMarkup) {
  const std::string evil = "\"></title></style><script>alert(1)</script><!--\x01\xE2\x80\xAE\xFF";
  const TempDir dir;
  const std::string path =
      dir.Write("<img src=x onerror=alert(1)>.icc",
                ProfileFile({{"QX51", StoredLimits({})},
                             {"QX53", ColorParam(0, evil, 1)},
                             {"QX75", Payload().Text(evil).Fill(1)},
                             {"QX68", Payload()
                                          .Int(1)
                                          .Int(static_cast<std::int32_t>(20 + evil.size()))
                                          .Int(1)
                                          .Text(evil)
                                          .Double(50)}},
                            {"<b>\"", "'\"><", "&lt;"}));
  const std::string page = PageOf({AFilePath(path), AFilePath(path)});
  EXPECT_FALSE(Holds(page, "<script"));
  EXPECT_FALSE(Holds(page, "<img"));
  EXPECT_FALSE(Holds(page, "<!--"));
  EXPECT_FALSE(Holds(page, "\xE2\x80\xAE"));
  EXPECT_FALSE(Holds(page, "\x01"));
  EXPECT_FALSE(Holds(page, "\xFF"));
  EXPECT_GE(Count(page, "&lt;script&gt;alert(1)&lt;/script&gt;"), 6u);
}

TEST(ProfileReport, OfSeveralFilesHasAnIndex) {
  const TempDir dir;
  const std::vector<AFilePath> paths = {AFilePath(dir.Write("a.icc", ProfileFile(Begun()))),
                                        AFilePath(dir.Write("b.icc", Bytes(5, 'x'))),
                                        AFilePath(dir.File("missing.icc"))};
  const std::string page = PageOf(paths);
  EXPECT_TRUE(Holds(page, "<title>Profile report: 3 files</title>"));
  EXPECT_TRUE(Holds(page, "<a href=\"#f1\"><bdi>a.icc</bdi></a>"));
  EXPECT_TRUE(Holds(page, "<article id=\"f3\""));
  EXPECT_TRUE(Holds(page, "file.unreadable"));
  EXPECT_EQ(Count(page, "<h2 "), 3u);
  EXPECT_TRUE(Holds(page, "aria-label=\"Sections of file 1, a.icc\""));
}

TEST(ProfileReport, DoesNotTouchWhatItShows) {
  const TempDir dir;
  const std::string path = dir.Write("held.tmp", ProfileFile(Begun()));
  EXPECT_FALSE(PageOf({AFilePath(path)}).empty());
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(ProfileReport, EndsWhenTheSinkSaysNo) {
  const TempDir dir;
  const std::vector<AFilePath> paths = {AFilePath(dir.Write("a.icc", ProfileFile(Begun())))};
  EXPECT_FALSE(vkcl::WriteReport(paths, [](std::string_view) { return false; }));
  EXPECT_FALSE(vkcl::WriteReport(paths, [](std::string_view) -> bool { throw std::bad_alloc(); }));
}

TEST(ProfileReport, FileTakesItsPlaceWhole) {
  const TempDir dir;
  const std::vector<AFilePath> paths = {AFilePath(dir.Write("a.icc", ProfileFile(Begun())))};
  const std::string place = dir.Write("page.html", Bytes(3, 'x'));
  EXPECT_TRUE(vkcl::WriteReportFile(paths, AFilePath(place)));
  const Bytes page = vkcl::testing::ReadFile(place);
  EXPECT_TRUE(std::string(page.begin(), page.end()) == PageOf(paths));
  EXPECT_FALSE(vkcl::WriteReportFile(paths, AFilePath(dir.File("no/such/folder.html"))));
  EXPECT_FALSE(vkcl::WriteReportFile(paths, AFilePath(dir.path().string())));
}

TEST(ProfileReport, OfRealProfilesIsWhole) {
  for (const auto& path : vkcl::testing::RealProfiles()) {
    const std::string page = PageOf({AFilePath(path.string())});
    EXPECT_TRUE(page.ends_with("</html>\n")) << path;
    EXPECT_TRUE(Holds(page, "<h3>Tag map</h3>")) << path;
    EXPECT_TRUE(DrawsFiniteNumbers(page)) << path;
  }
}

}  // namespace
