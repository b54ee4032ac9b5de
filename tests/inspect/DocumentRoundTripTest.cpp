// Document, strip, apply: every private tag comes back byte for byte, whatever its state.
#include <algorithm>
#include <map>

#include "edit/ProfileEdit.h"
#include "inspect/Documents.h"
#include "support/FolderNames.h"
#include "support/PeakMemory.h"
#include "support/PrivatePayloads.h"
#include "support/RealProfiles.h"

namespace {

using vkcl::IsPrivateSignature;
using vkcl::WriteChangedCopy;
using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::DocumentOf;
using vkcl::testing::FoldersInMemory;
using vkcl::testing::ImageEntry;
using vkcl::testing::ImageTag;
using vkcl::testing::KnownSignatures;
using vkcl::testing::Pattern;
using vkcl::testing::Payload;
using vkcl::testing::ProfileFile;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RandomElement;
using vkcl::testing::RandomPayload;
using vkcl::testing::ReadBack;
using vkcl::testing::ReadFile;
using vkcl::testing::RealProfiles;
using vkcl::testing::SameBytes;
using vkcl::testing::SetBig32;
using vkcl::testing::Sig;
using vkcl::testing::SigOf;
using vkcl::testing::Slice;
using vkcl::testing::TableOf;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;

using Tags = std::vector<ImageTag>;

/// The tags of a file in table order: of each the bytes that the file holds.
Tags TagsOf(const Bytes& image) {
  Tags tags;
  for (const ImageEntry& entry : TableOf(image)) {
    const std::size_t from = std::min<std::size_t>(entry.offset, image.size());
    const std::size_t length = std::min<std::size_t>(entry.size, image.size() - from);
    tags.push_back({entry.sig, Slice(image, from, length)});
  }
  return tags;
}

Tags Only(const Tags& tags, bool isPrivate) {
  Tags some;
  for (const ImageTag& tag : tags) {
    if (IsPrivateSignature(tag.sig) == isPrivate) some.push_back(tag);
  }
  return some;
}

void ExpectSameTags(const Tags& actual, const Tags& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    EXPECT_EQ(actual[i].sig, expected[i].sig) << "tag " << i;
    EXPECT_TRUE(SameBytes(actual[i].data, expected[i].data)) << std::hex << actual[i].sig;
  }
}

/// Takes a file through its document: without its private tags, then with those of the document.
void ExpectBack(const Bytes& image) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", image);
  const std::string stripped = dir.File("stripped.icc");
  const std::string back = dir.File("back.icc");
  const std::string text = DocumentOf(path);
  const ReadBack read(text);
  ASSERT_TRUE(read.good) << read.why << "\n" << text;
  VKCLProfile profile{AFilePath(path), 4};
  ASSERT_EQ(profile.WriteICCWithoutVKiTags(stripped.c_str()), 1);
  const VKCLProfile clean{AFilePath(stripped), 4};
  ASSERT_TRUE(Only(TagsOf(ReadFile(stripped)), true).empty());
  ASSERT_TRUE(WriteChangedCopy(clean, read.document.tags, AFilePath(back)));
  const Bytes result = ReadFile(back);
  ExpectSameTags(Only(TagsOf(result), true), Only(TagsOf(image), true));
  ExpectSameTags(Only(TagsOf(result), false), Only(TagsOf(ReadFile(stripped)), false));
  // The header but for its size.
  EXPECT_TRUE(SameBytes(Slice(result, 4, 124), Slice(image, 4, 124)));
  // A tag that reached beyond the end is whole now.
  if (text.find("bytes are not in the file") == std::string::npos) {
    EXPECT_TRUE(DocumentOf(back) == text) << text;
  }
}

const std::vector<std::string>& OtherSignatures() {
  static const std::vector<std::string> signatures = {
      "QX77", "QX99", "QX00", "QXab", "QX\x01\xFF", "QX# ", "QX\"\\", std::string("QX\0\0", 4)};
  return signatures;
}

std::string AnySignature(std::mt19937& random) {
  const auto& signatures = random() % 8 == 0 ? OtherSignatures() : KnownSignatures();
  return signatures[random() % signatures.size()];
}

/// Some standard tags with private ones before, between and behind them.
Tags RandomTags(std::mt19937& random) {
  Tags tags = {{Sig("desc"), TextTag("a profile")}, {Sig("A2B0"), Pattern(61, 2)}};
  for (std::size_t left = random() % 9; left > 0; --left) {
    const std::string signature = AnySignature(random);
    const auto at = static_cast<long>(random() % (tags.size() + 1));
    tags.insert(tags.begin() + at, {SigOf(signature), RandomElement(signature, random)});
  }
  return tags;
}

TEST(DocumentRoundTrip, OfThousandProfilesWithDamagedTags) {
  const FoldersInMemory inMemory;
  std::mt19937 random(20011004);
  for (int i = 0; i < 1000; ++i) {
    SCOPED_TRACE(i);
    ExpectBack(ProfileImage(ProfileHeader(), RandomTags(random)));
    if (HasFatalFailure() || HasNonfatalFailure()) return;
  }
}

TEST(DocumentRoundTrip, OfEveryKindManyTimes) {
  std::mt19937 random(50);
  for (int i = 0; i < 20; ++i) {
    Tags tags = {{Sig("cprt"), TextTag("x")}};
    for (const std::string& signature : KnownSignatures()) {
      tags.push_back({SigOf(signature), DataTag(RandomPayload(signature, random))});
    }
    SCOPED_TRACE(i);
    const Bytes image = ProfileImage(ProfileHeader(), tags);
    EXPECT_EQ(DocumentOf(image).find("\"problem\""), std::string::npos);
    ExpectBack(image);
  }
}

TEST(DocumentRoundTrip, OfTagsThatReachBeyondTheEndOfTheFile) {
  std::mt19937 random(51);
  for (int i = 0; i < 50; ++i) {
    const std::string signature = AnySignature(random);
    // The private tag is the last of the table, and of the file.
    Bytes image = ProfileImage(
        ProfileHeader(),
        {{Sig("cprt"), TextTag("some text")}, {SigOf(signature), RandomElement("QX53", random)}});
    SetBig32(image, 132 + 12 + 8, 2000 + static_cast<std::uint32_t>(random()) % 1000000);
    SCOPED_TRACE(i);
    ExpectBack(image);
  }
}

TEST(DocumentRoundTrip, OfRealProfilesWithPrivateTags) {
  const auto paths = RealProfiles();
  ASSERT_FALSE(paths.empty());
  const FoldersInMemory inMemory;
  std::mt19937 random(52);
  std::size_t taken = 0;
  for (const auto& path : paths) {
    SCOPED_TRACE(path.string());
    const Bytes original = ReadFile(path);
    const VKCLProfile real{AFilePath(path.string()), 4};
    if (real.isValidICC() != 1) continue;
    std::vector<vkcl::TagChange> changes;
    std::map<std::uint32_t, std::uint32_t> seen;
    for (std::size_t left = 4; left > 0; --left) {
      const std::string signature = AnySignature(random);
      const Bytes element = RandomElement(signature, random);
      changes.push_back({.signature = SigOf(signature),
                         .occurrence = ++seen[SigOf(signature)],
                         .element = {element.begin(), element.end()}});
    }
    const TempDir dir;
    const std::string with = dir.File("with.icc");
    if (!WriteChangedCopy(real, changes, AFilePath(with))) continue;
    ++taken;
    const Bytes image = ReadFile(with);
    ExpectSameTags(Only(TagsOf(image), false), Only(TagsOf(original), false));
    const Tags added = Only(TagsOf(image), true);
    ASSERT_EQ(added.size(), changes.size());
    for (std::size_t i = 0; i < added.size(); ++i) {
      EXPECT_TRUE(SameBytes(added[i].data, {changes[i].element.begin(), changes[i].element.end()}));
    }
    ExpectBack(image);
    if (HasFatalFailure() || HasNonfatalFailure()) return;
  }
  EXPECT_GT(taken, paths.size() / 2);
}

TEST(DocumentRoundTrip, OfNumbersOfEveryFloatClass) {
  // Each sign and exponent, with the mantissas at the edges and one between.
  std::vector<std::uint32_t> bits;
  for (std::uint32_t high = 0; high < 512; ++high) {
    for (const std::uint32_t low : {0u, 1u, 0x2AAAAAu, 0x400000u, 0x400001u, 0x7FFFFFu}) {
      bits.push_back(high << 23 | low);
    }
  }
  // As the curves of splits of version 4: 2304 numbers each.
  const std::size_t each = 2304;
  const auto count = static_cast<std::int32_t>((bits.size() + each - 1) / each);
  bits.resize(each * static_cast<std::size_t>(count), 0x3F800000);
  Payload payload;
  payload.Int(4).Int(20 + 9240 * count).Int(count).Fill(8);
  for (std::int32_t i = 0; i < count; ++i) {
    payload.Int(9240).Int(i);
    for (std::size_t n = 0; n < each; ++n) {
      payload.Int(static_cast<std::int32_t>(bits[static_cast<std::size_t>(i) * each + n]));
    }
    payload.Fill(16);
  }
  const Bytes image = ProfileFile({{"cprt", {1}}, {"QX50", payload}});
  EXPECT_EQ(DocumentOf(image).find("\"problem\""), std::string::npos);
  ExpectBack(image);
}

TEST(DocumentRoundTrip, OfThousandsOfTags) {
  Tags tags = {{Sig("cprt"), TextTag("x")}};
  for (std::uint32_t i = 0; i < 20000; ++i) {
    tags.push_back(
        {0x51580000u + i * 7 % 3000, DataTag(Bytes(i % 5, static_cast<unsigned char>(i)))});
  }
  ExpectBack(ProfileImage(ProfileHeader(), tags));
}

TEST(DocumentRoundTrip, OfAThousandSplitsWithEmptyCurves) {
  const std::int32_t count = 1000;
  Payload payload;
  payload.Int(3).Int(20 + 6168 * count).Int(count).Fill(8);
  for (std::int32_t i = 0; i < count; ++i) payload.Int(6168).Int(i).Fill(6160);
  ExpectBack(ProfileFile({{"cprt", {1}}, {"QX50", payload}}));
}

// Large profiles.

#if VKCL_MEMORY_IS_MEASURABLE

using vkcl::DocumentForm;
using vkcl::TextSink;
using vkcl::WriteDocument;
using vkcl::testing::PeakGrowth;

/// A profile of 64 MB whose last tag is one of this signature: `front`, then zeros, which take no
/// room on the medium, up to `size` bytes of payload.
std::string WriteLarge(const TempDir& dir, std::uint32_t signature, const Bytes& front,
                       std::uint32_t size) {
  Bytes image =
      ProfileImage(ProfileHeader(), {{Sig("cprt"), TextTag("x")}, {signature, DataTag(front)}});
  const std::uint32_t length = TableOf(image)[1].offset + 12 + size;
  SetBig32(image, 132 + 12 + 8, 12 + size);
  SetBig32(image, 0, length);
  std::string path = dir.Write("large.icc", image);
  std::filesystem::resize_file(path, length);
  return path;
}

// Writes the document until the sink says no.
bool WriteTo(const std::string& path, DocumentForm form, const TextSink& sink) {
  const VKCLProfile profile{AFilePath(path), 4};
  std::string why;
  return WriteDocument(profile, {}, form, sink, why);
}

// The beginning is written before, so that the code itself is in memory.
long GrowthOfWriting(const std::string& path, DocumentForm form, std::uint64_t least) {
  const auto begin = [&] {
    std::uint64_t length = 0;
    return !WriteTo(path, form,
                    [&](std::string_view piece) { return (length += piece.size()) < 100000; });
  };
  return PeakGrowth(begin, [&] {
    std::uint64_t length = 0;
    const bool whole = WriteTo(path, form, [&](std::string_view piece) {
      length += piece.size();
      return true;
    });
    return whole && length >= least;
  });
}

constexpr std::uint32_t kLarge = 64u << 20;
constexpr long kLittle = 2 << 20;

TEST(DocumentMemory, DoesNotGrowWithAnEmbeddedFile) {
  const TempDir dir;
  const std::string path = WriteLarge(dir, Sig("QX58"), {}, kLarge);
  const long growth = GrowthOfWriting(path, DocumentForm::Json, std::uint64_t{kLarge} / 3 * 4);
  EXPECT_GE(growth, 0);
  EXPECT_LT(growth, kLittle);
}

TEST(DocumentMemory, DoesNotGrowWithAList) {
  const TempDir dir;
  const std::int32_t rows = 2800000;
  const Bytes front = Payload().Int(0).Int(rows).Int(1).Int(3).Int(0).Int(1);
  const std::string path = WriteLarge(dir, Sig("QX60"), front, 24 + 24u * rows);
  for (const DocumentForm form : {DocumentForm::Json, DocumentForm::Text}) {
    const long growth = GrowthOfWriting(path, form, std::uint64_t{rows} * 6);
    EXPECT_GE(growth, 0);
    EXPECT_LT(growth, kLittle);
  }
}

TEST(DocumentMemory, DoesNotGrowWithTheLimitsOfASpotColour) {
  const TempDir dir;
  const std::int32_t count = 4000000;
  const Bytes front = Payload().Int(1).Int(12 + 8 * count).Int(count);
  const std::string path = WriteLarge(dir, Sig("QX68"), front, 12 + 8u * count);
  // Every second limit is another one, so that no runs are folded.
  Bytes image = ReadFile(path);
  for (std::size_t at = image.size() - 8u * count; at < image.size(); at += 16) image[at + 7] = 64;
  dir.Write("large.icc", image);
  image = {};
  for (const DocumentForm form : {DocumentForm::Json, DocumentForm::Text}) {
    const long growth = GrowthOfWriting(path, form, std::uint64_t{count} * 3);
    EXPECT_GE(growth, 0);
    EXPECT_LT(growth, kLittle);
  }
}

TEST(DocumentMemory, DoesNotGrowWithADamagedTagOrAnElement) {
  const TempDir dir;
  const std::string path = WriteLarge(dir, Sig("QX53"), {}, kLarge);
  const long growth = GrowthOfWriting(path, DocumentForm::Json, std::uint64_t{kLarge} / 3 * 4);
  EXPECT_GE(growth, 0);
  EXPECT_LT(growth, kLittle);
  // The same as an element of another type.
  Bytes image = ReadFile(path);
  SetBig32(image, TableOf(image)[1].offset, Sig("text"));
  const std::string other = dir.Write("other.icc", image);
  image = {};
  const long element = GrowthOfWriting(other, DocumentForm::Json, std::uint64_t{kLarge} / 3 * 4);
  EXPECT_GE(element, 0);
  EXPECT_LT(element, kLittle);
}

#endif

}  // namespace
