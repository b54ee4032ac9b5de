// Profiles with one defect each, and the one finding that is expected; real profiles, of which none
// that Little CMS opens may have an error; files that would take a check long that is made badly.
#include "inspect/ProfileCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "inspect/CheckedImages.h"
#include "support/RealProfiles.h"
#include "support/SystemCalls.h"

namespace vkcl::testing {
namespace {

std::vector<Finding> CheckBytes(const Bytes& bytes) {
  const TempDir dir;
  return CheckProfile(AFilePath(dir.Write("a.icc", bytes)));
}

// "severity rule tag clause" of each finding, without what is empty.
std::string FindingsText(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    if (!text.empty()) text += ", ";
    text += SeverityText(finding.severity);
    for (const std::string& word : {finding.rule, finding.tag, finding.clause}) {
      if (!word.empty()) text += ' ' + word;
    }
  }
  return text;
}

std::vector<Defect> AllDefects() {
  std::vector<Defect> all;
  for (const auto* list : {&HeaderDefects(), &LayoutDefects(), &TagDefects(), &ContentDefects()}) {
    all.insert(all.end(), list->begin(), list->end());
  }
  return all;
}

Bytes ImageOf(const Defect& defect) {
  Bytes image = CleanImage();
  defect.make(image);
  return image;
}

TEST(ProfileCheck, FindsWhatIsWrongAndNothingElse) {
  EXPECT_EQ(CleanImage().size(), kCleanEnd);
  std::set<std::string> names;
  for (const Defect& defect : AllDefects()) {
    const std::vector<Finding> findings = CheckBytes(ImageOf(defect));
    EXPECT_EQ(FindingsText(findings), defect.findings) << defect.name;
    EXPECT_LE(std::count_if(findings.begin(), findings.end(),
                            [](const Finding& f) { return f.severity != Severity::Note; }),
              1)
        << defect.name;
    EXPECT_TRUE(names.insert(defect.name).second) << defect.name;
  }
}

// Rules are told from the other texts of the sources by their form.
TEST(ProfileCheck, HasADefectForEveryRule) {
  std::set<std::string> rules;
  const std::regex form("\"((file|header|table|layout|tags|tag|private)\\.[a-z0-9-]+)\"");
  const auto folder = std::filesystem::path(VKCL_SOURCE_DIR) / "src" / "inspect";
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (!entry.path().filename().string().ends_with("Check.cpp")) continue;
    const Bytes source = ReadFile(entry.path());
    const std::string text(source.begin(), source.end());
    for (std::sregex_iterator i(text.begin(), text.end(), form), end; i != end; ++i) {
      rules.insert((*i)[1]);
    }
  }
  EXPECT_GE(rules.size(), 40u);
  rules.erase("file.unreadable");  // not of bytes
  for (const Defect& defect : AllDefects()) {
    for (const Finding& finding : CheckBytes(ImageOf(defect))) rules.erase(finding.rule);
  }
  EXPECT_EQ(rules, std::set<std::string>());
}

// Each such file, shorter and shorter.
TEST(ProfileCheck, OfACutFileStaysWithinIt) {
  constexpr std::size_t kStep = 37;
  const TempDir dir;
  for (const Defect& defect : AllDefects()) {
    const Bytes image = ImageOf(defect);
    const std::string path = dir.Write("a.icc", image);
    for (std::size_t cut = 1; cut * kStep < image.size() && cut < 40; ++cut) {
      const std::size_t length = image.size() - cut * kStep;
      std::filesystem::resize_file(path, length);
      const auto findings = CheckProfile(AFilePath(path));
      EXPECT_TRUE(!findings.empty() || Big32At(image, 0) <= length) << defect.name << length;
    }
  }
}

TEST(ProfileCheck, OfAFileThatCannotBeReadSaysSo) {
  const TempDir dir;
  for (const std::string& path : {dir.File("missing.icc"), dir.path().string()}) {
    EXPECT_EQ(FindingsText(CheckProfile(AFilePath(path))), "error file.unreadable");
  }
}

TEST(ProfileCheck, OfAFileThatFailsMidwayKeepsNothing) {
  const TempDir dir;
  const std::string path = dir.Write("a.icc", CleanImage());
  int failures = 0;
  bool reached = true;
  for (std::size_t i = 0; reached; ++i) {
    const FaultAt fault(i, Fault::Error);
    const std::string text = FindingsText(CheckProfile(AFilePath(path)));
    reached = FaultAt::Reached();
    const bool failed = text == "error file.unreadable";
    EXPECT_TRUE(failed || text.empty()) << i << ' ' << text;
    failures += failed ? 1 : 0;
  }
  EXPECT_GE(failures, 2);
  for (std::size_t i = 0; i < 8; ++i) {
    const FaultAt fault(i, Fault::Short);
    EXPECT_EQ(FindingsText(CheckProfile(AFilePath(path))), "") << i;
  }
}

TEST(ProfileCheck, TellsTheGravest) {
  EXPECT_EQ(GravestOf({}), Severity::Note);
  Finding warning;
  warning.severity = Severity::Warning;
  EXPECT_EQ(GravestOf({Finding(), warning, Finding()}), Severity::Warning);
  warning.severity = Severity::Error;
  EXPECT_EQ(GravestOf({warning, Finding()}), Severity::Error);
}

TEST(ProfileCheck, FindsNoErrorInProfilesThatOthersOpen) {
  for (const auto& path : RealProfiles()) {
    if (!ReadWithLcms(path).opens) continue;
    const auto findings = CheckProfile(AFilePath(path.string()));
    EXPECT_NE(GravestOf(findings), Severity::Error) << path << ": " << FindingsText(findings);
  }
}

// A class with the tags that it asks for, each of which is missed alone.
struct ClassCase {
  const char* deviceClass;
  const char* space;
  const char* clause;
  std::vector<std::string> tags;
};

std::uint32_t Number(const std::string& text) {
  return Big32At(Bytes(text.begin(), text.end()), 0);
}

ImageTag TagOf(const std::string& name, const ClassCase& kind) {
  const auto channels = static_cast<std::uint8_t>(std::string(kind.space) == "CMYK" ? 4 : 3);
  const std::uint32_t sig = Number(name);
  if (name == "desc") return CleanTags()[0];
  if (name == "cprt") return CleanTags()[1];
  if (name.ends_with("TRC")) return {sig, CleanTags()[3].data};
  if (name == "pseq") return {sig, TypedData(sig, Bytes(4, 0))};
  if (name == "ncl2") return {sig, TypedData(sig, Bytes(76, 0))};
  if (name == "gamt") return {sig, Lut16(3, 1)};
  if (name.starts_with("A2B")) return {sig, Lut8(channels, 3)};
  if (name.starts_with("B2A")) return {sig, Lut8(3, channels)};
  return {sig, CleanTags()[2].data};
}

Bytes ImageOf(const ClassCase& kind, const std::string& without) {
  std::vector<ImageTag> tags;
  for (const std::string& name : kind.tags) {
    if (name != without) tags.push_back(TagOf(name, kind));
  }
  return ProfileImage(CleanHeader(Number(kind.deviceClass), Number(kind.space)), tags);
}

TEST(ProfileCheck, MissesEveryTagThatAClassAsksFor) {
  const std::vector<std::string> matrix = {"desc", "rXYZ", "gXYZ", "bXYZ", "rTRC",
                                           "gTRC", "bTRC", "wtpt", "cprt"};
  const std::vector<std::string> gray = {"desc", "kTRC", "wtpt", "cprt"};
  const ClassCase kCases[] = {
      {"scnr", "GRAY", "6.3.1.1", gray},
      {"scnr", "RGB ", "6.3.1.2", matrix},
      {"scnr", "CMYK", "6.3.1.3", {"desc", "A2B0", "wtpt", "cprt"}},
      {"mntr", "GRAY", "6.3.2.1", gray},
      {"mntr", "RGB ", "6.3.2.2", matrix},
      {"mntr", "CMYK", "6.3.2", {"desc", "A2B0", "B2A0", "wtpt", "cprt"}},
      {"prtr", "GRAY", "6.3.3.1", gray},
      {"prtr",
       "CMYK",
       "6.3.3.2",
       {"desc", "A2B0", "B2A0", "gamt", "A2B1", "B2A1", "A2B2", "B2A2", "wtpt", "cprt"}},
      {"prtr",
       "RGB ",
       "6.3.3.2",
       {"desc", "A2B0", "B2A0", "gamt", "A2B1", "B2A1", "A2B2", "B2A2", "wtpt", "cprt"}},
      {"link", "CMYK", "6.3.4.1", {"desc", "A2B0", "pseq", "cprt"}},
      {"spac", "RGB ", "6.3.4.2", {"desc", "A2B0", "B2A0", "wtpt", "cprt"}},
      {"abst", "Lab ", "6.3.4.3", {"desc", "A2B0", "wtpt", "cprt"}},
      {"nmcl", "RGB ", "6.3.4.4", {"desc", "ncl2", "wtpt", "cprt"}},
  };
  for (const ClassCase& kind : kCases) {
    EXPECT_EQ(FindingsText(CheckBytes(ImageOf(kind, ""))), "") << kind.deviceClass << kind.space;
    for (const std::string& tag : kind.tags) {
      EXPECT_EQ(FindingsText(CheckBytes(ImageOf(kind, tag))),
                "warning tags.missing " + tag + ' ' + kind.clause)
          << kind.deviceClass << kind.space;
    }
  }
  // A table, and none of the matrix: then the matrix is not asked for.
  const ClassCase table = {"mntr", "RGB ", "", {"desc", "A2B0", "B2A0", "wtpt", "cprt"}};
  EXPECT_EQ(FindingsText(CheckBytes(ImageOf(table, ""))), "");
  EXPECT_EQ(FindingsText(CheckBytes(ImageOf(table, "B2A0"))), "warning tags.missing B2A0 6.3.2");
}

TEST(ProfileCheck, KnowsLeapYears) {
  const auto isDate = [](std::uint32_t year) {
    Bytes image = CleanImage();
    const Bytes date = Join({Big16(year), Big16(2), Big16(29)});
    std::copy(date.begin(), date.end(), image.begin() + 24);
    return FindingsText(CheckBytes(image)).find("header.date") == std::string::npos;
  };
  EXPECT_TRUE(isDate(2000));
  EXPECT_TRUE(isDate(2004));
  EXPECT_FALSE(isDate(2001));
  EXPECT_FALSE(isDate(2100));
}

// ICC.1:2001-04, 6.1.5: '2CLR' to '9CLR', then 'ACLR' to 'FCLR'.
TEST(ProfileCheck, KnowsHowManyChannelsAColourSpaceHas) {
  const auto said = [](const char(&space)[5], std::uint8_t channels) {
    const Bytes header = CleanHeader(Sig("prtr"), Sig(space), Sig("Lab "));
    return FindingsText(CheckBytes(WithTag(Sig("A2B0"), Lut8(channels, 3), header)));
  };
  const std::string wrong = "error tag.lut-spaces A2B0 6.5.8";
  const auto holds = [&](const std::string& text) { return text.find(wrong) != std::string::npos; };
  EXPECT_FALSE(holds(said("2CLR", 2)));
  EXPECT_TRUE(holds(said("2CLR", 3)));
  EXPECT_FALSE(holds(said("9CLR", 9)));
  EXPECT_TRUE(holds(said("9CLR", 8)));
  EXPECT_FALSE(holds(said("ACLR", 10)));
  EXPECT_TRUE(holds(said("ACLR", 1)));
  EXPECT_FALSE(holds(said("FCLR", 15)));
  EXPECT_TRUE(holds(said("FCLR", 14)));
  EXPECT_FALSE(holds(said("ZCLR", 5))) << "no space that is known";
  EXPECT_FALSE(holds(said("2COL", 5))) << "no space that is known";
}

TEST(ProfileCheck, ReadsLittleOfALargeFile) {
  const TempDir dir;
  const std::string path = dir.Write("a.icc", CleanImage());
  std::filesystem::resize_file(path, std::uint64_t{5} << 30);
  const CallLog log;
  EXPECT_EQ(FindingsText(CheckProfile(AFilePath(path))), "warning header.size-short 6.1.1");
  EXPECT_LE(log.Bytes(CallKind::Read), 64u << 10);
  EXPECT_LE(log.Count(CallKind::Read), 8u);
}

// Tags in a random order, all with something wrong about them.
TEST(ProfileCheck, OfALongTableIsQuickAndSaysHowMuchMoreThereIs) {
  constexpr std::uint32_t kTags = 20000;
  std::vector<ImageTag> tags;
  for (std::uint32_t i = 0; i < kTags; ++i) tags.push_back({Sig("QX50") + i % 64, Bytes(9, 1)});
  Bytes image = ProfileImage(CleanHeader(), tags);
  for (std::uint32_t i = 0; i < kTags; ++i) {
    const std::size_t other = EntryAt(i * 7919ull % kTags);
    std::swap_ranges(image.begin() + static_cast<std::ptrdiff_t>(EntryAt(i) + 4),
                     image.begin() + static_cast<std::ptrdiff_t>(EntryAt(i) + 12),
                     image.begin() + static_cast<std::ptrdiff_t>(other + 4));
  }
  const TempDir dir;
  const AFilePath path(dir.Write("a.icc", image));
  const std::clock_t start = std::clock();  // of the processor: others are at work on the machine
  const std::vector<Finding> findings = CheckProfile(path);
  EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
  const auto more = std::find_if(findings.begin(), findings.end(), [](const Finding& finding) {
    return finding.text == "19900 more findings of this rule";
  });
  ASSERT_NE(more, findings.end());
  EXPECT_EQ(FindingsText({*more}), "note tag.reserved");
  EXPECT_EQ(GravestOf(findings), Severity::Error);
  EXPECT_LE(findings.size(), 500u);
}

}  // namespace
}  // namespace vkcl::testing
