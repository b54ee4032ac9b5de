// Profiles with one defect each, and the one finding that is expected; real profiles, of which none
// that Little CMS opens may have an error.
#include "inspect/ProfileCheck.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "support/ImageBuilder.h"
#include "support/RealProfiles.h"
#include "support/TempDir.h"

namespace {

using vkcl::CheckProfile;
using vkcl::Finding;
using vkcl::GravestOf;
using vkcl::Severity;
using vkcl::testing::Big32;
using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::ImageTag;
using vkcl::testing::Join;
using vkcl::testing::ProfileImage;
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

// A header without anything to say about it: a gray display profile of version 2.
Bytes CleanHeader() {
  Bytes header(128, 0);
  SetBig32(header, 8, 0x02100000);
  SetBig32(header, 12, Sig("mntr"));
  SetBig32(header, 16, Sig("GRAY"));
  SetBig32(header, 20, Sig("XYZ "));
  const Bytes date = {0x07, 0xE8, 0, 2, 0, 29, 0, 23, 0, 59, 0, 58};
  std::copy(date.begin(), date.end(), header.begin() + 24);
  SetBig32(header, 36, Sig("acsp"));
  SetBig32(header, 68, 0x0000F6D6);
  SetBig32(header, 72, 0x00010000);
  SetBig32(header, 76, 0x0000D32D);
  return header;
}

Bytes Typed(std::uint32_t type, std::size_t length) {
  Bytes data = Join({Big32(type), Bytes(length - 4, 0)});
  return data;
}

std::vector<ImageTag> CleanTags() {
  return {{Sig("desc"), Typed(Sig("desc"), 90)},
          {Sig("cprt"), TextTag("by hand")},
          {Sig("wtpt"), Typed(Sig("XYZ "), 20)},
          {Sig("kTRC"), Typed(Sig("curv"), 14)},
          {Sig("QX76"), DataTag(Bytes(8, 0))}};
}

// Where things stand in the clean image: the table's entries, and the tags' data.
constexpr std::size_t Entry(std::size_t i) { return 132 + 12 * i; }
constexpr std::size_t kDesc = 132 + 5 * 12;
constexpr std::size_t kCprt = kDesc + 92;
constexpr std::size_t kWtpt = kCprt + 16;
constexpr std::size_t kKtrc = kWtpt + 20;
constexpr std::size_t kQx76 = kKtrc + 16;
constexpr std::size_t kEnd = kQx76 + 20;

Bytes CleanImage() { return ProfileImage(CleanHeader(), CleanTags()); }

std::vector<Finding> CheckBytes(const Bytes& bytes) {
  const TempDir dir;
  return CheckProfile(AFilePath(dir.Write("a.icc", bytes)));
}

std::string Rules(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    text += (text.empty() ? "" : " ") + std::string(SeverityText(finding.severity)) + ':' +
            finding.rule + (finding.tag.empty() ? "" : '/' + finding.tag);
  }
  return text;
}

struct Defect {
  const char* name;
  const char* rules;  ///< all that is found, in order
  std::function<void(Bytes& image)> make;
};

Bytes Images(const std::vector<ImageTag>& tags, std::uint32_t deviceClass,
             std::uint32_t space = Sig("GRAY"), std::uint32_t pcs = Sig("XYZ ")) {
  Bytes header = CleanHeader();
  SetBig32(header, 12, deviceClass);
  SetBig32(header, 16, space);
  SetBig32(header, 20, pcs);
  return ProfileImage(header, tags);
}

// Replaces the tag that is called so, or adds it.
Bytes WithTag(std::uint32_t sig, const Bytes& data) {
  std::vector<ImageTag> tags = CleanTags();
  for (ImageTag& tag : tags) {
    if (tag.sig == sig) {
      tag.data = data;
      return ProfileImage(CleanHeader(), tags);
    }
  }
  tags.push_back({sig, data});
  return ProfileImage(CleanHeader(), tags);
}

Bytes WithoutTag(std::uint32_t sig) {
  std::vector<ImageTag> tags = CleanTags();
  std::erase_if(tags, [=](const ImageTag& tag) { return tag.sig == sig; });
  return ProfileImage(CleanHeader(), tags);
}

const std::vector<Defect>& Defects() {
  static const std::vector<Defect> defects = {
      {"nothing", "", [](Bytes&) {}},
      {"empty", "error:file.short", [](Bytes& b) { b.clear(); }},
      {"half a header", "error:file.short", [](Bytes& b) { b.resize(127); }},
      {"no table", "error:file.no-table", [](Bytes& b) { b.resize(131); }},
      {"no magic", "error:header.magic", [](Bytes& b) { b[36] = 'A'; }},
      {"cut", "error:header.size-beyond error:table.beyond-end/QX76",
       [](Bytes& b) { b.resize(kEnd - 4); }},
      {"size of the header too large", "error:header.size-beyond",
       [](Bytes& b) { SetBig32(b, 0, kEnd + 4); }},
      {"bytes behind the end", "warning:header.size-short",
       [](Bytes& b) { b.insert(b.end(), 4, 0); }},
      {"version 3", "warning:header.version", [](Bytes& b) { b[8] = 3; }},
      {"reserved version bytes", "note:header.version-reserved", [](Bytes& b) { b[11] = 1; }},
      {"unknown class", "warning:header.class", [](Bytes& b) { SetBig32(b, 12, Sig("what")); }},
      {"unknown space", "warning:header.color-space",
       [](Bytes& b) { SetBig32(b, 16, Sig("1CLX")); }},
      {"unknown connection space", "warning:header.pcs",
       [](Bytes& b) { SetBig32(b, 20, Sig("RGB ")); }},
      {"no date", "note:header.date-unset", [](Bytes& b) { std::fill_n(b.begin() + 24, 12, 0); }},
      {"month 13", "note:header.date", [](Bytes& b) { b[27] = 13; }},
      {"second 60", "note:header.date", [](Bytes& b) { b[35] = 60; }},
      {"unknown platform", "note:header.platform", [](Bytes& b) { SetBig32(b, 40, Sig("what")); }},
      {"intent 4", "warning:header.intent", [](Bytes& b) { b[67] = 4; }},
      {"illuminant A", "warning:header.illuminant", [](Bytes& b) { b[70] = 0; }},
      {"reserved header bytes", "note:header.reserved", [](Bytes& b) { b[127] = 1; }},
      {"too many tags", "error:table.count", [](Bytes& b) { SetBig32(b, 128, 0xFFFFFFFF); }},
      {"one tag too many", "error:table.count",
       [](Bytes& b) { SetBig32(b, 128, (kEnd - 132) / 12 + 1); }},
      {"no tags",
       "warning:table.empty warning:tags.missing/desc warning:tags.missing/cprt "
       "warning:tags.missing/wtpt warning:tags.missing/kTRC",
       [](Bytes& b) { b = ProfileImage(CleanHeader(), {}); }},
      {"a signature twice",
       "error:table.duplicate/desc warning:tags.missing/cprt warning:tag.type/desc",
       [](Bytes& b) { SetBig32(b, Entry(1), Sig("desc")); }},
      {"beyond the end", "error:table.beyond-end/kTRC",
       [](Bytes& b) { SetBig32(b, Entry(3) + 8, 0xFFFFFFF0); }},
      {"offset beyond 32 bits of sum", "error:table.beyond-end/kTRC",
       [](Bytes& b) { SetBig32(b, Entry(3) + 4, 0xFFFFFFF0); }},
      {"within the table", "error:table.in-head/kTRC note:tag.reserved/kTRC warning:tag.type/kTRC",
       [](Bytes& b) { SetBig32(b, Entry(3) + 4, 128); }},
      {"unaligned", "warning:table.unaligned/QX76 note:layout.gap/QX76 warning:private.length/QX76",
       [](Bytes& b) {
         b.insert(b.begin() + static_cast<std::ptrdiff_t>(kQx76), 0);
         b.pop_back();
         SetBig32(b, Entry(4) + 4, kQx76 + 1);
         SetBig32(b, Entry(4) + 8, 19);
       }},
      {"too short for a type", "warning:tag.no-type/kTRC note:layout.gap/QX76",
       [](Bytes& b) { SetBig32(b, Entry(3) + 8, 7); }},
      {"reserved bytes of a type", "note:tag.reserved/wtpt", [](Bytes& b) { b[kWtpt + 7] = 1; }},
      {"shared data", "note:layout.shared/cprt note:layout.gap/wtpt warning:tag.type/cprt",
       [](Bytes& b) {
         SetBig32(b, Entry(1) + 4, kDesc);
         SetBig32(b, Entry(1) + 8, 90);
       }},
      {"overlapping data", "warning:layout.overlap/cprt",
       [](Bytes& b) { SetBig32(b, Entry(0) + 8, 100); }},
      {"a gap", "note:layout.gap/cprt", [](Bytes& b) { SetBig32(b, Entry(0) + 8, 80); }},
      {"a gap at the front", "note:layout.gap/desc",
       [](Bytes& b) {
         b.insert(b.begin() + static_cast<std::ptrdiff_t>(kDesc), 8, 0);
         SetBig32(b, 0, kEnd + 8);
         for (std::size_t i = 0; i < 5; ++i) {
           SetBig32(b, Entry(i) + 4, vkcl::testing::Big32At(b, Entry(i) + 4) + 8);
         }
       }},
      {"a gap at the end", "note:layout.gap",
       [](Bytes& b) {
         b.insert(b.end(), 8, 0);
         SetBig32(b, 0, kEnd + 8);
       }},
      {"padding", "note:layout.padding", [](Bytes& b) { b[kDesc + 91] = 1; }},
      {"another order", "note:layout.order",
       [](Bytes& b) {
         for (std::size_t i = 0; i < 12; ++i) std::swap(b[Entry(0) + i], b[Entry(1) + i]);
       }},
      {"an end that is not filled up", "note:header.size-odd note:layout.unpadded-end",
       [](Bytes& b) {
         b = WithTag(Sig("tech"), Bytes{'s', 'i', 'g', ' ', 0, 0, 0, 0, 1});
         b.resize(b.size() - 3);
         SetBig32(b, 0, static_cast<std::uint32_t>(b.size()));
       }},
      {"no copyright", "warning:tags.missing/cprt", [](Bytes& b) { b = WithoutTag(Sig("cprt")); }},
      {"no curve", "warning:tags.missing/kTRC", [](Bytes& b) { b = WithoutTag(Sig("kTRC")); }},
      {"no white point", "warning:tags.missing/wtpt",
       [](Bytes& b) { b = WithoutTag(Sig("wtpt")); }},
      {"a link without its tags", "warning:tags.missing/A2B0 warning:tags.missing/pseq",
       [](Bytes& b) { b = Images(CleanTags(), Sig("link"), Sig("RGB "), Sig("CMYK")); }},
      {"an output profile without tables",
       "warning:tags.missing/A2B0 warning:tags.missing/A2B1 warning:tags.missing/A2B2 "
       "warning:tags.missing/B2A0 warning:tags.missing/B2A1 warning:tags.missing/B2A2 "
       "warning:tags.missing/gamt",
       [](Bytes& b) { b = Images(CleanTags(), Sig("prtr"), Sig("CMYK"), Sig("Lab ")); }},
      {"named colours without any", "warning:tags.missing/ncl2",
       [](Bytes& b) { b = Images(CleanTags(), Sig("nmcl")); }},
      {"a conversion without tables", "warning:tags.missing/A2B0 warning:tags.missing/B2A0",
       [](Bytes& b) { b = Images(CleanTags(), Sig("spac")); }},
      {"a curve that is a text", "warning:tag.type/kTRC",
       [](Bytes& b) { b = WithTag(Sig("kTRC"), TextTag("no curve")); }},
      {"a text that is a curve", "warning:tag.type/cprt",
       [](Bytes& b) { b = WithTag(Sig("cprt"), Typed(Sig("curv"), 12)); }},
      {"a table of no known type", "warning:tag.type/A2B0",
       [](Bytes& b) { b = WithTag(Sig("A2B0"), Typed(Sig("mft3"), 60)); }},
      {"a private tag that is a text", "warning:private.type/QX76",
       [](Bytes& b) { b = WithTag(Sig("QX76"), TextTag("no data")); }},
      {"a private record too long", "warning:private.length/QX76",
       [](Bytes& b) { b = WithTag(Sig("QX76"), DataTag(Bytes(12, 0))); }},
      {"a private list too short", "warning:private.length/QX55",
       [](Bytes& b) { b = WithTag(Sig("QX55"), DataTag(Bytes(23, 0))); }},
      {"a private tag of a newer system", "note:private.newer/QX77",
       [](Bytes& b) { b = WithTag(Sig("QX77"), DataTag(Bytes(4, 0))); }},
  };
  return defects;
}

TEST(ProfileCheck, FindsWhatIsWrongAndNothingElse) {
  EXPECT_EQ(CleanImage().size(), kEnd);
  std::set<std::string> names;
  for (const Defect& defect : Defects()) {
    Bytes image = CleanImage();
    defect.make(image);
    EXPECT_EQ(Rules(CheckBytes(image)), defect.rules) << defect.name;
    EXPECT_TRUE(names.insert(defect.name).second);
  }
  EXPECT_GE(names.size(), 40u);
}

// Every prefix of every such file is examined within its bounds.
TEST(ProfileCheck, OfACutFileStaysWithinIt) {
  for (const Defect& defect : Defects()) {
    Bytes image = CleanImage();
    defect.make(image);
    for (std::size_t length = 0; length < image.size(); length += 3) {
      EXPECT_FALSE(
          CheckBytes(Bytes(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(length)))
              .empty())
          << defect.name << ' ' << length;
    }
  }
}

TEST(ProfileCheck, OfAFileThatCannotBeReadSaysSo) {
  const TempDir dir;
  for (const std::string& path : {dir.File("missing.icc"), dir.path().string()}) {
    EXPECT_EQ(Rules(CheckProfile(AFilePath(path))), "error:file.unreadable");
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
  for (const auto& path : vkcl::testing::RealProfiles()) {
    if (!vkcl::testing::ReadWithLcms(path).opens) continue;
    const auto findings = CheckProfile(AFilePath(path.string()));
    EXPECT_NE(GravestOf(findings), Severity::Error) << path << ": " << Rules(findings);
  }
}

}  // namespace
