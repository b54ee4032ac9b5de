// The document of a profile as a whole: which tags it holds, in what order, and what is read back.
#include "inspect/ProfileDocument.h"

#include <algorithm>
#include <limits>
#include <thread>

#include "inspect/Documents.h"
#include "support/CommaLocale.h"
#include "support/PrivatePayloads.h"
#include "support/SystemCalls.h"

namespace {

using vkcl::Document;
using vkcl::DocumentForm;
using vkcl::ReadDocument;
using vkcl::TextSink;
using vkcl::WriteDocument;
using vkcl::testing::Bytes;
using vkcl::testing::CommaLocale;
using vkcl::testing::DataTag;
using vkcl::testing::DocumentOf;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FileHead;
using vkcl::testing::FileTag;
using vkcl::testing::KnownSignatures;
using vkcl::testing::OpenHandles;
using vkcl::testing::Pattern;
using vkcl::testing::Payload;
using vkcl::testing::ProfileFile;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::RawImage;
using vkcl::testing::ReadBack;
using vkcl::testing::SameBytes;
using vkcl::testing::SamplePayload;
using vkcl::testing::Sig;
using vkcl::testing::SigOf;
using vkcl::testing::TempDir;
using vkcl::testing::TextTag;
using vkcl::testing::WithTags;

std::vector<FileTag> AllKinds() {
  std::vector<FileTag> tags;
  for (const std::string& signature : KnownSignatures()) {
    tags.emplace_back(signature, SamplePayload(signature));
  }
  return tags;
}

/// The keys of the tags of a document that stands line by line.
std::vector<std::string> NamesIn(const std::string& document) {
  std::vector<std::string> names;
  std::istringstream lines(document);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("    \"QX") || line.starts_with("    \"0x")) {
      names.push_back(line.substr(5, line.find('"', 5) - 5));
    }
  }
  return names;
}

// What is written.

TEST(ProfileDocument, OfAProfileWithoutPrivateTagsHasNone) {
  EXPECT_EQ(DocumentOf(ProfileFile({{"cprt", Pattern(9, 1)}}, {"mntr", "RGB ", "XYZ "})),
            R"({
  "format": "vkcl-private-tags",
  "formatVersion": 1,
  "profile": {
    "class": "mntr",
    "colorSpace": "RGB ",
    "pcs": "XYZ "
  },
  "tags": {}
}
)");
}

TEST(ProfileDocument, HasTheTagsInTableOrder) {
  const Bytes image = ProfileFile({{"QX75", SamplePayload("QX75")},
                                   {"desc", Pattern(9, 1)},
                                   {"QX99", {}},
                                   {"QX53", SamplePayload("QX53")},
                                   {"QX75", {}},
                                   {"QX50", SamplePayload("QX50")},
                                   {"QX75", {1}}});
  EXPECT_EQ(NamesIn(DocumentOf(image)),
            (std::vector<std::string>{"QX75", "QX99", "QX53", "QX75#2", "QX50", "QX75#3"}));
}

TEST(ProfileDocument, HasTheTagsThatAreMeant) {
  const Bytes image = ProfileFile(
      {{"QX53", SamplePayload("QX53")}, {"QX54", {}}, {"QX99", {}}, {"QX53", {}}, {"QX51", {}}});
  using Names = std::vector<std::string>;
  EXPECT_EQ(NamesIn(DocumentOf(image, {"QX54"})), Names{"QX54"});
  EXPECT_EQ(NamesIn(DocumentOf(image, {"QX51", "QX54"})), (Names{"QX54", "QX51"}));
  EXPECT_EQ(NamesIn(DocumentOf(image, {"QX53#2"})), Names{"QX53#2"});
  EXPECT_EQ(NamesIn(DocumentOf(image, {"QX99"})), Names{"QX99"});
  EXPECT_EQ(NamesIn(DocumentOf(image, {"SingleInkLimit"})), Names{"QX51"});
  EXPECT_EQ(NamesIn(DocumentOf(image, {"QX54", "LinMeasurement", "QX54"})), Names{"QX54"});
}

TEST(ProfileDocument, TellsWhichTagThereIsNot) {
  const Bytes image = ProfileFile({{"QX53", {}}, {"QX54", {}}});
  for (const char* name :
       {"QX58", "QX53#2", "SingleInkLimit", "cprt", "", "none", "qx53", "\x1B[2J"}) {
    const std::string why = DocumentOf(image, {"QX53", name});
    EXPECT_FALSE(why.starts_with("{")) << name;
    EXPECT_EQ(why.find('\x1B'), std::string::npos);
  }
}

TEST(ProfileDocument, CarriesPayloadsWithoutTheFormOfTheirTag) {
  const std::string document = DocumentOf(ProfileFile({{"QX64", {1, 2, 3}}, {"QX77", {0xFF}}}));
  EXPECT_NE(document.find(R"(    "QX64": {
      "problem": "\"value\" takes 4 bytes, and 3 are left",
      "payload": ["AQID"]
    },
    "QX77": {
      "payload": ["/w=="]
    }
)"),
            std::string::npos)
      << document;
  const ReadBack read(document);
  ASSERT_EQ(read.document.tags.size(), 2u) << read.why;
  const auto& first = read.document.tags[0].element;
  EXPECT_TRUE(SameBytes({first.begin(), first.end()}, DataTag({1, 2, 3})));
}

TEST(ProfileDocument, CarriesElementsThatAreNoData) {
  const std::vector<Bytes> elements = {{},
                                       {'d', 'a', 't', 'a'},
                                       Pattern(11, 1),
                                       Pattern(12, 2),
                                       DataTag(Pattern(20, 3), 0),
                                       TextTag("text")};
  for (const Bytes& element : elements) {
    const std::string document = DocumentOf(
        ProfileImage(ProfileHeader(), {{Sig("cprt"), TextTag("x")}, {Sig("QX53"), element}}));
    EXPECT_NE(document.find("\"problem\": "), std::string::npos);
    EXPECT_NE(document.find("\"element\": "), std::string::npos);
    EXPECT_TRUE(SameBytes(ReadBack(document).Element(), element)) << document;
  }
}

TEST(ProfileDocument, CarriesWhatTheFileHoldsOfATag) {
  // Head 144; 20 bytes of data.
  const Bytes data = DataTag(Pattern(8, 1));
  for (const std::uint32_t size : {21u, 1000u, 0xFFFFFFFFu}) {
    const Bytes image = RawImage(ProfileHeader(), {{Sig("QX60"), 144, size}}, data);
    EXPECT_TRUE(SameBytes(ReadBack(DocumentOf(image)).Element(), data));
  }
  const Bytes beyond = RawImage(ProfileHeader(), {{Sig("QX60"), 165, 12}}, data);
  EXPECT_TRUE(SameBytes(ReadBack(DocumentOf(beyond)).Element(), {}));
}

TEST(ProfileDocument, IsAsciiWhateverTheTagsHold) {
  std::vector<FileTag> tags = AllKinds();
  Bytes all;
  for (int i = 0; i < 256; ++i) all.push_back(static_cast<unsigned char>(i));
  tags.emplace_back("QX75", Bytes{0xE6, 0xBC, 0xA2, 0xF0, 0x9F, 0x8E, 0xA8, 0x7F, 0x01, 0});
  tags.emplace_back("QX75", all);
  tags.emplace_back("QX\xFF\x01", all);
  tags.emplace_back("QX\"\\", all);
  tags.emplace_back("QX#1", all);
  const FileHead head = {"\x1B[2J", "\xFF\"\\\x01", std::string("\0\0\0\0", 4)};
  const Bytes image = ProfileFile(tags, head);
  const TempDir dir;
  const VKCLProfile profile{AFilePath(dir.Write("p.icc", image)), 4};
  for (const DocumentForm form : {DocumentForm::Json, DocumentForm::Text}) {
    std::string text;
    std::string why;
    ASSERT_TRUE(WriteDocument(
        profile, {}, form,
        [&](std::string_view piece) {
          text += piece;
          return true;
        },
        why))
        << why;
    if (form == DocumentForm::Text) {
      for (const char c : text) ASSERT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= ' ');
      continue;
    }
    for (const char c : text) ASSERT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << int{c};
    const ReadBack read(text);
    ASSERT_TRUE(read.good) << read.why;
    ASSERT_EQ(read.document.tags.size(), tags.size());
    for (std::size_t i = 0; i < tags.size(); ++i) {
      EXPECT_EQ(read.document.tags[i].signature, SigOf(tags[i].signature));
      const auto& element = read.document.tags[i].element;
      EXPECT_TRUE(SameBytes({element.begin(), element.end()}, DataTag(tags[i].payload)));
    }
  }
}

TEST(ProfileDocument, OfWhatIsNoProfileIsRefused) {
  const TempDir dir;
  for (const std::string& path : {dir.File("absent"), dir.Write("short", {1, 2, 3})}) {
    EXPECT_FALSE(DocumentOf(path).starts_with("{"));
  }
}

TEST(ProfileDocument, IsRefusedWhenTheFileIsGone) {
  const TempDir dir;
  const std::string path = dir.Write("p.icc", ProfileFile(AllKinds()));
  const VKCLProfile profile{AFilePath(path), 0};
  std::filesystem::remove(path);
  std::string why;
  EXPECT_FALSE(WriteDocument(
      profile, {}, DocumentForm::Json, [](std::string_view) { return true; }, why));
  EXPECT_NE(why, "");
}

TEST(ProfileDocument, EndsWhereTheSinkTakesNoMore) {
  const TempDir dir;
  std::vector<FileTag> tags = AllKinds();
  tags.emplace_back("QX58", Pattern(500000, 1));
  const VKCLProfile profile{AFilePath(dir.Write("p.icc", ProfileFile(tags))), 0};
  for (const DocumentForm form : {DocumentForm::Json, DocumentForm::Text}) {
    for (int most = 0; most < 3; ++most) {
      int taken = 0;
      int refused = 0;
      std::string why;
      const bool good = WriteDocument(
          profile, {}, form,
          [&](std::string_view) {
            if (taken < most) return ++taken > 0;
            return ++refused < 0;
          },
          why);
      if (refused == 0) {
        EXPECT_TRUE(good);
        continue;
      }
      EXPECT_FALSE(good);
      EXPECT_NE(why, "");
      EXPECT_EQ(refused, 1) << "asked again";
    }
  }
}

TEST(ProfileDocument, CarriesAnExceptionOfTheSinkNoFurther) {
  const TempDir dir;
  const VKCLProfile profile{AFilePath(dir.Write("p.icc", ProfileFile(AllKinds()))), 0};
  std::string why;
  EXPECT_FALSE(WriteDocument(
      profile, {}, DocumentForm::Json, [](std::string_view) -> bool { throw 1; }, why));
}

TEST(ProfileDocument, TellsOfEveryReadThatFails) {
  const TempDir dir;
  std::vector<FileTag> tags = AllKinds();
  const VKCLProfile profile{AFilePath(dir.Write("p.icc", ProfileFile(tags))), 0};
  const auto write = [&](std::string& text) {
    std::string why;
    const TextSink sink = [&](std::string_view piece) {
      text += piece;
      return true;
    };
    return WriteDocument(profile, {}, DocumentForm::Json, sink, why);
  };
  std::string whole;
  ASSERT_TRUE(write(whole));
  const int open = OpenHandles();
  for (std::size_t which = 0;; ++which) {
    ASSERT_LT(which, 1000u);
    const FaultAt fault(which, Fault::Error);
    std::string text;
    const bool good = write(text);
    if (!FaultAt::Reached()) break;
    EXPECT_TRUE(!good || text == whole) << "call " << which;
    EXPECT_EQ(OpenHandles(), open);
  }
}

// What is read.

TEST(ReadDocument, TakesFieldsInAnyOrderAndWithoutWhatFollows) {
  const Bytes spot = DataTag(SamplePayload("QX68"));
  EXPECT_TRUE(SameBytes(
      ReadBack(WithTags(R"("QX68": {"limits": [75, 82.5], "name": "Spot", "version": 1})"))
          .Element(),
      spot));
  EXPECT_TRUE(SameBytes(
      ReadBack(
          WithTags(R"("QX68": {"name": "Spot", "size": 32, "limits": [75, 82.5], "version": 1})"))
          .Element(),
      spot));
  EXPECT_TRUE(SameBytes(
      ReadBack(WithTags(R"("QX69": {"links": [["YWJj"], ["ZGU="]], "name": "Spot", "version": 1})"))
          .Element(),
      DataTag(SamplePayload("QX69"))));
  EXPECT_TRUE(SameBytes(
      ReadBack(WithTags(R"("QX54": {"values": [[95, 0.1, -1], [50, -30, -40]], "Measured": 2,
                           "DataFormat": "Lab ", "ColorMode": 1})"))
          .Element(),
      DataTag(SamplePayload("QX54"))));
  EXPECT_TRUE(SameBytes(ReadBack(R"({"tags": {"QX74": {"value": 3}}, "formatVersion": 1,
                   "format": "vkcl-private-tags"})")
                            .Element(),
                        DataTag(Payload().Int(3))));
}

TEST(ReadDocument, FillsSplitsInFromTheirVersionWhereverItStands) {
  EXPECT_TRUE(SameBytes(
      ReadBack(WithTags(R"("QX50": {"splits": [{"light": [[0.5, 1]], "medium": [], "dark": [],
               "lightCount": 1, "mediumCount": 0, "darkCount": 0, "interpolation": 2,
               "colorantIndex": 7}], "unused": [], "version": 3})"))
          .Element(),
      DataTag(Payload()
                  .Int(3)
                  .Int(6188)
                  .Int(1)
                  .Fill(8)
                  .Int(6168)
                  .Int(7)
                  .Float(0.5f)
                  .Float(1)
                  .Fill(2040)
                  .Fill(4096)
                  .Int(1)
                  .Int(0)
                  .Int(0)
                  .Int(2))));
}

TEST(ReadDocument, TakesNumbersHoweverTheyAreWritten) {
  const auto value = [](const std::string& text) {
    return ReadBack(WithTags(R"("QX54": {"DataFormat": 0, "ColorMode": 0, "Measured": 0,
                               "values": [[)" +
                             text + "]]}"))
        .Element();
  };
  const auto of = [](double number) {
    return DataTag(Payload().Int(0).Int(1).Int(0).Int(1).Int(0).Int(1).Double(number));
  };
  EXPECT_TRUE(SameBytes(value("0.5"), of(0.5)));
  EXPECT_TRUE(SameBytes(value("5e-1"), of(0.5)));
  EXPECT_TRUE(SameBytes(value("5.0E-01"), of(0.5)));
  EXPECT_TRUE(SameBytes(value("100"), of(100)));
  EXPECT_TRUE(SameBytes(value("1e2"), of(100)));
  EXPECT_TRUE(SameBytes(value("-0.0"), of(-0.0)));
  EXPECT_TRUE(SameBytes(value("9007199254740993"), of(9007199254740992.0)));
  EXPECT_TRUE(SameBytes(value("9007199254740993.00000000000000000001"), of(9007199254740994.0)));
  EXPECT_TRUE(
      SameBytes(value("123456789012345678901234567890"), of(123456789012345678901234567890.0)));
  EXPECT_TRUE(SameBytes(value("18446744073709551617"), of(18446744073709551616.0)));
  EXPECT_TRUE(SameBytes(value("\"-inf\""), of(-std::numeric_limits<double>::infinity())));
  EXPECT_TRUE(SameBytes(value("5e-324"), of(5e-324)));
}

TEST(ReadDocument, FloatsAreRoundedOnce) {
  Bytes expected = SamplePayload("QX53");
  const std::string document = DocumentOf(ProfileFile({{"QX53", expected}}));
  // Just above the middle between 1 and the next float.
  std::string edited = document;
  const std::string field = "\"ResolutionX\": 720";
  edited.replace(edited.find(field), field.size(),
                 "\"ResolutionX\": 1.00000005960464477539062500000001");
  const Bytes next = Payload().Float(0x1.000002p0f);
  std::copy(next.begin(), next.end(), expected.begin() + 404);
  EXPECT_TRUE(SameBytes(ReadBack(edited).Element(), DataTag(expected)));
}

TEST(ReadDocument, TakesTextsWithAnyEscapes) {
  EXPECT_TRUE(SameBytes(ReadBack(WithTags(R"("QX75": {"text": "\u0041\/\ud83c\udfa8)"
                                          "\xC3\xBC\"}"))
                            .Element(),
                        DataTag(Payload().Text("A/\xF0\x9F\x8E\xA8\xC3\xBC").Fill(1))));
  EXPECT_TRUE(
      SameBytes(ReadBack(WithTags(R"("QX75": {"text": {"bytes": ["AA==", "Zm9v"]}})")).Element(),
                DataTag(Payload().Fill(1).Text("foo"))));
}

TEST(ReadDocument, TakesBase64InLinesOfAnyLength) {
  const Bytes expected = DataTag(Payload().Text("foobar"));
  for (const char* lines : {R"(["Zm9vYmFy"])", R"(["Zg==", "bw==", "", "b2Jhcg=="])",
                            R"(["Zm9v", "YmFy"])", R"([ "Zm8=", "b2Jhcg==" ])"}) {
    const ReadBack read(WithTags(R"("QX58": {"file": )" + std::string(lines) + "}"));
    EXPECT_TRUE(SameBytes(read.Element(), expected)) << lines;
  }
}

TEST(ReadDocument, TakesAnythingForAnyTag) {
  EXPECT_TRUE(
      SameBytes(ReadBack(WithTags(R"("QX53": {"payload": ["AQ=="]})")).Element(), DataTag({1})));
  EXPECT_TRUE(SameBytes(ReadBack(WithTags(R"("QX53": {"element": ["AQ=="]})")).Element(), {1}));
  EXPECT_TRUE(SameBytes(ReadBack(WithTags(R"("QX99#7": {"payload": []})")).Element(), DataTag({})));
  EXPECT_TRUE(SameBytes(
      ReadBack(WithTags(R"("0x51580001": {"element": [], "problem": "something"})")).Element(),
      {}));
}

TEST(ReadDocument, RemovesWhatIsNull) {
  const ReadBack read(WithTags(R"("QX53": null, "QX54": {"payload": []}, "QX53#2": null)"));
  ASSERT_TRUE(read.good) << read.why;
  ASSERT_EQ(read.document.tags.size(), 3u);
  EXPECT_TRUE(read.document.tags[0].remove);
  EXPECT_EQ(read.document.tags[0].signature, Sig("QX53"));
  EXPECT_FALSE(read.document.tags[1].remove);
  EXPECT_TRUE(read.document.tags[2].remove);
  EXPECT_EQ(read.document.tags[2].occurrence, 2u);
  EXPECT_TRUE(ReadBack(WithTags("")).good) << "nothing to do";
}

// The locale, and threads.

TEST(ProfileDocument, IsTheSameInEveryLocale) {
  const Bytes image = ProfileFile(AllKinds());
  const std::string plain = DocumentOf(image);
  const CommaLocale comma;
  ASSERT_TRUE(comma.works()) << "the build makes the locale from Debian's package locales";
  EXPECT_EQ(DocumentOf(image), plain);
  const ReadBack read(plain);
  ASSERT_TRUE(read.good) << read.why;
  ASSERT_EQ(read.document.tags.size(), KnownSignatures().size());
  for (std::size_t i = 0; i < KnownSignatures().size(); ++i) {
    const auto& element = read.document.tags[i].element;
    EXPECT_TRUE(
        SameBytes({element.begin(), element.end()}, DataTag(SamplePayload(KnownSignatures()[i]))));
  }
}

TEST(ProfileDocument, IsWrittenAndReadByTwoThreadsAtOnce) {
  const Bytes image = ProfileFile(AllKinds());
  const std::string plain = DocumentOf(image);
  std::vector<std::thread> threads;
  std::vector<int> wrong(2);
  for (int& count : wrong) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20; ++i) {
        if (DocumentOf(image) != plain) ++count;
        std::istringstream stream(plain);
        Document document;
        std::string why;
        if (!ReadDocument(stream, document, why) || document.tags.size() != 27) ++count;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(2));
}

}  // namespace
