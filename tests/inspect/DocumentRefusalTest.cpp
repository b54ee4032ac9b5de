// Documents that are wrong: refused with the place and what is wrong, whatever they are.
#include <algorithm>
#include <array>
#include <random>
#include <sstream>
#include <stdexcept>
#include <streambuf>

#include "inspect/Documents.h"
#include "support/PrivatePayloads.h"

namespace {

using vkcl::Document;
using vkcl::ReadDocument;
using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::DocumentOf;
using vkcl::testing::FileTag;
using vkcl::testing::ImageTag;
using vkcl::testing::Payload;
using vkcl::testing::ProfileFile;
using vkcl::testing::ProfileHeader;
using vkcl::testing::ProfileImage;
using vkcl::testing::ReadBack;
using vkcl::testing::Refusal;
using vkcl::testing::SameBytes;
using vkcl::testing::SamplePayload;
using vkcl::testing::Sig;
using vkcl::testing::TextTag;
using vkcl::testing::WithTags;

/// Why a document with this one tag is refused.
std::string OfTag(const std::string& name, const std::string& value) {
  return Refusal(WithTags("\"" + name + "\": " + value));
}

std::string Nested(std::size_t depth, const std::string& open, const std::string& close) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += open;
  for (std::size_t i = 0; i < depth; ++i) text += close;
  return text;
}

/// A list that is right but for one field.
std::string List(const std::string& field) {
  return R"({"DataFormat": "Lab ", "ColorMode": 1, "Measured": 2, )" + field + "}";
}

// The document.

TEST(DocumentRefusal, OfTextsThatAreNoJson) {
  for (const char* text : {"",
                           " ",
                           "x",
                           "{",
                           "}",
                           "[",
                           "{]",
                           "nul",
                           "tru",
                           "'a'",
                           "{'a': 1}",
                           "{\"a\" 1}",
                           "{\"a\":}",
                           "{\"a\": 1,}",
                           "{,}",
                           "{\"a\": 01}",
                           "{\"a\": +1}",
                           "{\"a\": .5}",
                           "{\"a\": 1.}",
                           "{\"a\": 0x1}",
                           "{\"a\": NaN}",
                           "{\"a\": Infinity}",
                           "{\"a\": -}",
                           "{\"a\": 1e}",
                           "{\"a\": \"\\x\"}",
                           "{\"a\": \"\\u12\"}",
                           "{\"a\": \"\n\"}",
                           "// a\n{}",
                           "\xFF",
                           "\xEF\xBB",
                           "{\"a\": \"\xFF\"}",
                           "{\"a\": \"\xED\xA0\x80\"}",
                           "{\"a\": \"\\ud800\"}"}) {
    EXPECT_NE(Refusal(text), "accepted") << text;
  }
  EXPECT_TRUE(Refusal("{\"format\" 1}").starts_with("it is no JSON: "));
  EXPECT_EQ(Refusal(R"({"a": 1})"), "a: is nothing that a document has");
}

TEST(DocumentRefusal, OfWhatStandsBehindTheDocument) {
  for (const char* behind : {"x", "{}", "]", "}", ",", "1", "\0", "null", "//"}) {
    EXPECT_NE(Refusal(WithTags("") + behind + "x"), "accepted") << behind;
  }
  EXPECT_EQ(Refusal(WithTags("") + " \n\t\r"), "accepted");
}

TEST(DocumentRefusal, OfOtherDocuments) {
  for (const char* text : {"null", "1", "\"a\"", "true", "[]", "[1]", "[{}]", "{}"}) {
    EXPECT_NE(Refusal(text), "accepted") << text;
  }
  EXPECT_EQ(Refusal(R"({"format": "other", "formatVersion": 1, "tags": {}})"),
            "format: must be \"vkcl-private-tags\"");
  for (const char* version :
       {"0", "2", "-1", "1.5", "\"1\"", "null", "4294967297", "true", "[1]"}) {
    const std::string why = Refusal(R"({"format": "vkcl-private-tags", "formatVersion": )" +
                                    std::string(version) + R"(, "tags": {}})");
    EXPECT_TRUE(why.starts_with("formatVersion: ")) << version << ": " << why;
  }
  EXPECT_EQ(Refusal(R"({"format": {}, "formatVersion": 1, "tags": {}})"),
            "format: takes no object");
  EXPECT_EQ(Refusal(R"({"format": "vkcl-private-tags", "formatVersion": {}, "tags": {}})"),
            "formatVersion: takes no object");
  EXPECT_EQ(Refusal(R"({"format": "vkcl-private-tags", "formatVersion": 1, "profile": 1,
                        "tags": {}})"),
            "profile: takes an object");
  EXPECT_NE(Refusal(R"({"formatVersion": 1, "tags": {}})"), "accepted");
  EXPECT_NE(Refusal(R"({"format": "vkcl-private-tags", "tags": {}})"), "accepted");
  EXPECT_NE(Refusal(R"({"format": "vkcl-private-tags", "formatVersion": 1})"), "accepted");
}

TEST(DocumentRefusal, OfTagsThatAreNoObject) {
  for (const char* tags : {"null", "[]", "1", "\"QX53\"", "false"}) {
    const std::string why =
        Refusal(R"({"format": "vkcl-private-tags", "formatVersion": 1, "tags": )" +
                std::string(tags) + "}");
    EXPECT_TRUE(why.starts_with("tags: ")) << tags << ": " << why;
  }
}

TEST(DocumentRefusal, OfNamesThatStandTwice) {
  EXPECT_TRUE(Refusal(WithTags(R"("QX74": {"value": 1}, "QX74": {"value": 1})"))
                  .starts_with("tags.QX74: "));
  EXPECT_NE(Refusal(WithTags(R"("QX74": null, "QX74#1": {"value": 1})")), "accepted");
  EXPECT_NE(Refusal(WithTags(R"("QX74": {"value": 1}, "0x51583734": {"value": 1})")), "accepted");
  EXPECT_TRUE(OfTag("QX74", R"({"value": 1, "value": 2})").starts_with("tags.QX74.value: "));
  EXPECT_NE(OfTag("QX77", R"({"payload": [], "payload": []})"), "accepted");
  EXPECT_NE(
      Refusal(R"({"format": "vkcl-private-tags", "formatVersion": 1, "tags": {}, "tags": {}})"),
      "accepted");
}

TEST(DocumentRefusal, OfNamesThatNameNoPrivateTag) {
  EXPECT_NE(OfTag("", R"({"payload": []})"), "accepted");
  for (const char* name :
       {"cprt", "QX5", "QX53#0", "QX53#x", "ColorParam", "0x63707274", "QX53 "}) {
    EXPECT_EQ(OfTag(name, R"({"payload": []})"),
              "tags." + std::string(name) + ": names no private tag");
  }
}

TEST(DocumentRefusal, SaysHostileNamesSafely) {
  const std::string why = OfTag("\\u001b[31m\\u0000\\u202e\\n", "{}");
  for (const char c : why) {
    EXPECT_TRUE(static_cast<unsigned char>(c) >= ' ' && c != '\x7F') << int{c};
  }
  EXPECT_TRUE(why.starts_with("tags."));
  EXPECT_LT(OfTag(std::string(1 << 20, 'x'), "{}").size(), std::size_t{4} << 20);
}

TEST(DocumentRefusal, OfDeepNesting) {
  for (const std::size_t depth : {100u, 10000u, 1000000u}) {
    EXPECT_NE(Refusal(Nested(depth, "[", "]")), "accepted");
    EXPECT_NE(Refusal(Nested(depth, "{\"tags\":", "}")), "accepted");
    EXPECT_NE(OfTag("QX53", Nested(depth, "[", "]")), "accepted");
    EXPECT_NE(Refusal(R"({"profile": {"x": )" + Nested(depth, "[", "]") + "}}"), "accepted");
    EXPECT_NE(OfTag("QX54", List("\"values\": " + Nested(depth, "[", "]"))), "accepted");
    EXPECT_NE(Refusal(std::string(depth, '[')), "accepted");
  }
}

// Values.

TEST(DocumentRefusal, OfValuesOfAnotherTypeWithTheirPlace) {
  const std::array<std::string, 8> values = {"null", "true", "1.5", "\"x\"",
                                             "[1]",  "[]",   "{}",  "{\"a\": 1}"};
  for (const std::string& value : values) {
    EXPECT_TRUE(OfTag("QX74", "{\"value\": " + value + "}").starts_with("tags.QX74.value"))
        << value;
  }
  for (const char* value : {"true", "1", "\"x\"", "[]", "[null]"}) {
    EXPECT_TRUE(OfTag("QX74", value).starts_with("tags.QX74: ")) << OfTag("QX74", value);
  }
  for (const char* value : {"null", "true", "1", "[1]", "{}", "{\"bytes\": \"YQ==\"}",
                            "{\"text\": []}", "{\"bytes\": [1]}", "{\"bytes\": [], \"bytes\": []}",
                            "{\"bytes\": [], \"more\": 1}", "{\"bytes\": [[]]}"}) {
    const std::string why = OfTag("QX75", "{\"text\": " + std::string(value) + "}");
    EXPECT_TRUE(why.starts_with("tags.QX75.text")) << value << ": " << why;
  }
  for (const char* value :
       {"null", "1", "\"YQ==\"", "{}", "[1]", "[null]", "[[\"YQ==\"]]", "[{}]"}) {
    const std::string why = OfTag("QX58", "{\"file\": " + std::string(value) + "}");
    EXPECT_TRUE(why.starts_with("tags.QX58.file")) << value << ": " << why;
    EXPECT_TRUE(OfTag("QX99", "{\"payload\": " + std::string(value) + "}")
                    .starts_with("tags.QX99.payload"));
    EXPECT_TRUE(OfTag("QX99", "{\"element\": " + std::string(value) + "}")
                    .starts_with("tags.QX99.element"));
  }
  for (const char* value : {"null", "1", "\"1\"", "{}", "[1]", "[null]", "[[[1]]]", "[[null]]",
                            "[{}]", "[[true]]", "[[{}]]", "[\"x\"]"}) {
    const std::string why = OfTag("QX54", List("\"values\": " + std::string(value)));
    EXPECT_TRUE(why.starts_with("tags.QX54.values")) << value << ": " << why;
  }
}

TEST(DocumentRefusal, OfNumbersThatDoNotFit) {
  for (const char* number : {"2147483648", "-2147483649", "4294967295", "18446744073709551616",
                             "1e999", "1.5", "1e-5", "99999999999999999999999999999999999999999"}) {
    EXPECT_EQ(OfTag("QX74", "{\"value\": " + std::string(number) + "}"),
              "tags.QX74.value: takes a whole number from -2147483648 to 2147483647")
        << number;
  }
  for (const char* number : {"1e309",
                             "-1e309",
                             "1e999999999999999999999",
                             "1e-400",
                             "\"1e309\"",
                             "\"infinity\"",
                             "\"NAN\"",
                             "\"nan:\"",
                             "\"nan:0\"",
                             "\"\"",
                             "\"nan:7ff0000000000000\"",
                             "\"nan:3ff0000000000000\"",
                             "\" inf\"",
                             "\"nan:7ff80000000000001\"",
                             "\"nan:7fc00001\"",
                             "\"0x10\"",
                             "\"+inf\"",
                             "\"nan:7ff800000000000g\"",
                             "\"nan:-7ff8000000000001\"",
                             "\"1,5\""}) {
    const std::string why = OfTag("QX54", List("\"values\": [[" + std::string(number) + "]]"));
    EXPECT_TRUE(why.starts_with("tags.QX54.values")) << number << ": " << why;
  }
  EXPECT_NE(Refusal(R"({"profile": {"x": 1e999}, "format": "vkcl-private-tags",
                        "formatVersion": 1, "tags": {}})"),
            "accepted");
  const std::string long1 = "1" + std::string(100000, '0');
  EXPECT_NE(OfTag("QX74", "{\"value\": " + long1 + "}"), "accepted");
  EXPECT_NE(OfTag("QX54", List("\"values\": [[" + long1 + "]]")), "accepted");
}

TEST(DocumentRefusal, OfFloatsBeyondTheRangeOfTheirType) {
  std::string document = DocumentOf(ProfileFile({{"QX53", SamplePayload("QX53")}}));
  const std::string field = "\"ResolutionX\": 720";
  const std::size_t at = document.find(field);
  ASSERT_NE(at, std::string::npos);
  for (const char* number : {"1e39", "-3.5e38", "1e-60", "\"nan:7ff8000000000001\""}) {
    std::string edited = document;
    edited.replace(at, field.size(), "\"ResolutionX\": " + std::string(number));
    EXPECT_TRUE(Refusal(edited).starts_with("tags.QX53.ResolutionX")) << number;
  }
}

TEST(DocumentRefusal, OfBase64ThatIsNone) {
  for (const char* text : {"A", "AA", "AAA", "A===", "AA=A", "=AAA", "AAAA=", "AA==AA==", " AAA",
                           "AA\\n=", "QR==", "QUJ=", "A-A_", "\\u0000AAA"}) {
    for (const char* before : {"", "\"AAAA\", "}) {
      const std::string value = "[" + std::string(before) + "\"" + text + "\"]";
      EXPECT_TRUE(OfTag("QX58", "{\"file\": " + value + "}").starts_with("tags.QX58.file")) << text;
      EXPECT_TRUE(OfTag("QX99", "{\"payload\": " + value + "}").starts_with("tags.QX99.payload"));
    }
  }
}

TEST(DocumentRefusal, OfTextsThatDoNotFit) {
  const auto with = [](const std::string& text) {
    std::string document = DocumentOf(ProfileFile({{"QX53", SamplePayload("QX53")}}));
    document.replace(document.find("\"Acme\""), 6, text);
    return Refusal(document);
  };
  EXPECT_EQ(with("\"" + std::string(128, 'x') + "\""), "accepted");
  EXPECT_TRUE(with("\"" + std::string(129, 'x') + "\"").starts_with("tags.QX53"));
  EXPECT_NE(with("\"" + std::string(129, 'x') + "\"").find("Make"), std::string::npos);
  std::string lines = R"({"bytes": [)";
  for (int i = 0; i < 43; ++i) lines += (i > 0 ? R"(, "YWFh")" : R"("YWFh")");
  EXPECT_NE(with(lines + "]}").find("Make"), std::string::npos) << "129 bytes";
}

TEST(DocumentRefusal, OfZerosWithinATextWhichWouldEndIt) {
  const std::string why = "takes no zero within a text; give it as \"bytes\"";
  EXPECT_EQ(OfTag("QX75", R"({"text": "so\u0000ft"})"), "tags.QX75.text: " + why);
  EXPECT_EQ(OfTag("QX75", R"({"text": "\u0000"})"), "tags.QX75.text: " + why);
  EXPECT_EQ(OfTag("QX75", R"({"text": "soft"})"), "accepted");
}

TEST(DocumentRefusal, OfProblemsThatAreNoText) {
  EXPECT_EQ(OfTag("QX75", R"({"problem": [], "payload": []})"), "tags.QX75.problem: takes a text");
  EXPECT_EQ(OfTag("QX75", R"({"problem": {}, "payload": []})"),
            "tags.QX75.problem: takes no object");
  EXPECT_EQ(OfTag("QX75", R"({"problem": "any", "payload": {}})"),
            "tags.QX75.payload: takes no object");
}

// Fields.

TEST(DocumentRefusal, OfFieldsThatThereAreNot) {
  EXPECT_EQ(OfTag("QX74", R"({"valeu": 1})"), "tags.QX74.valeu: there is no such field");
  EXPECT_TRUE(OfTag("QX99", R"({"version": 1})").starts_with("tags.QX99"));
  EXPECT_TRUE(OfTag("QX50", R"({"version": 2, "unused": [], "splits": [{"light": []}]})")
                  .starts_with("tags.QX50"));
  EXPECT_NE(
      OfTag("QX50", R"({"version": 2, "unused": [], "splits": [{"colour": 1}]})").find("colour"),
      std::string::npos);
}

TEST(DocumentRefusal, OfFieldsThatAreMissing) {
  EXPECT_EQ(OfTag("QX76", R"({"version": 1})"), "tags.QX76: \"value\" is missing");
  EXPECT_TRUE(OfTag("QX74", "{}").starts_with("tags.QX74: "));
  EXPECT_TRUE(OfTag("QX99", "{}").starts_with("tags.QX99"));
  EXPECT_TRUE(OfTag("QX99", R"({"problem": "x"})").starts_with("tags.QX99"));
  EXPECT_NE(OfTag("QX50", R"({"version": 2, "unused": [], "splits": [{"colorantIndex": 1}]})"),
            "accepted");
}

TEST(DocumentRefusal, OfFieldsBesideAPayloadOrAnElement) {
  EXPECT_TRUE(OfTag("QX74", R"({"payload": [], "value": 1})").starts_with("tags.QX74"));
  EXPECT_TRUE(OfTag("QX74", R"({"value": 1, "payload": []})").starts_with("tags.QX74"));
  EXPECT_TRUE(OfTag("QX99", R"({"payload": [], "element": []})").starts_with("tags.QX99"));
}

TEST(DocumentRefusal, OfFieldsThatDoNotFollow) {
  const std::string spot = R"("version": 1, "name": "Spot", "limits": [75, 82.5])";
  EXPECT_EQ(OfTag("QX68", "{" + spot + "}"), "accepted");
  EXPECT_EQ(OfTag("QX68", "{" + spot + ", \"count\": 3}"),
            "tags.QX68: \"count\" is 3, and \"limits\" has 2; without \"count\" it follows");
  for (const char* size : {"31", "33", "0", "-1", "2147483647"}) {
    EXPECT_TRUE(OfTag("QX68", "{" + spot + ", \"size\": " + size + "}").starts_with("tags.QX68"));
  }
  const std::string links = R"("version": 1, "name": "Spot", "links": [["YWJj"], ["ZGU="]])";
  EXPECT_EQ(OfTag("QX69", "{" + links + "}"), "accepted");
  for (const char* more :
       {R"("count": 1)", R"("nameLength": 3)", R"("linkSizes": [3, 3])", R"("linkSizes": [3])",
        R"("linkSizes": [2, 3])", R"("linkSizes": [3, 2, 0])"}) {
    EXPECT_TRUE(OfTag("QX69", "{" + links + ", " + more + "}").starts_with("tags.QX69")) << more;
  }
  for (const char* more : {R"("hasValues": 0)", R"("NumOfSamples": 3)", R"("NumOfColors": 3)",
                           R"("NumOfSamples": -1)", R"("NumOfColors": 0)"}) {
    const std::string why =
        OfTag("QX54", List(R"("values": [[1, 2], [3, 4]], )" + std::string(more)));
    EXPECT_TRUE(why.starts_with("tags.QX54")) << more << ": " << why;
  }
  for (const char* more : {R"("count": 2)", R"("count": -1)"}) {
    std::string document = DocumentOf(ProfileFile({{"QX50", vkcl::testing::SplitPayload(2, {1})}}));
    const std::string name = std::string(more).substr(0, std::string(more).find(':'));
    const std::size_t at = document.find(name);
    document.replace(at, document.find(',', at) - at, more);
    EXPECT_TRUE(Refusal(document).starts_with("tags.QX50")) << more;
  }
}

TEST(DocumentRefusal, OfNoSizeThatOnlyLies) {
  // Nothing else follows from it: it is stored as it is given, and somebody is told.
  const std::string links = R"("version": 1, "name": "Spot", "links": [["YWJj"], ["ZGU="]])";
  const ReadBack read(WithTags(R"("QX69": {)" + links + R"(, "size": 34})"));
  Bytes expected = SamplePayload("QX69");
  expected[4] = 34;
  EXPECT_TRUE(SameBytes(read.Element(), DataTag(expected)));
  EXPECT_EQ(read.document.notes,
            std::vector<std::string>{"QX69: \"size\" is 34, and it takes 33 bytes"});
}

TEST(DocumentRefusal, OfRowsOfDifferentLengths) {
  for (const char* rows : {"[[1, 2], [3]]", "[[1], [2, 3]]", "[[], [1]]", "[[1], []]"}) {
    EXPECT_TRUE(OfTag("QX54", List("\"values\": " + std::string(rows))).starts_with("tags.QX54"))
        << rows;
  }
}

TEST(DocumentRefusal, OfTooManyValues) {
  EXPECT_EQ(OfTag("QX51", R"({"version": 1, "size": 140, "count": 16, "limits": [1, 2]})"),
            "tags.QX51: \"limits\" takes 16 values, not 2");
  EXPECT_NE(
      OfTag("QX51", R"({"version": 1, "limits": [1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17]})"),
      "accepted");
  EXPECT_NE(OfTag("QX67", "{\"bytes\": [\"" + std::string(88, 'A') + "\"]}"), "accepted")
      << "66 bytes";
  const auto points = [](std::size_t count) {
    std::string document = DocumentOf(ProfileFile(
        {{"QX50", Bytes(Payload().Int(3).Int(6188).Int(1).Fill(8).Int(6168).Fill(6164))}}));
    std::string rows = "\"light\": [[0, 1]";
    for (std::size_t i = 1; i < count; ++i) rows += ", [0, 1]";
    document.replace(document.find("\"light\": []"), 11, rows + "]");
    return Refusal(document);
  };
  EXPECT_EQ(points(256), "accepted");
  EXPECT_TRUE(points(257).starts_with("tags.QX50"));
}

TEST(DocumentRefusal, OfVersionsOfSplitsThatAreNotKnown) {
  for (const char* version : {"0", "1", "5", "-1", "2147483647"}) {
    const std::string why = OfTag(
        "QX50", R"({"version": )" + std::string(version) + R"(, "unused": [], "splits": []})");
    EXPECT_TRUE(why.starts_with("tags.QX50")) << why;
  }
  EXPECT_TRUE(OfTag("QX50", R"({"unused": [], "splits": []})").starts_with("tags.QX50"));
}

// Any text at all.

/// A document of tags of every form; its blocks are short.
std::string ValidDocument() {
  std::vector<FileTag> tags;
  for (const char* signature : {"QX50", "QX51", "QX53", "QX54", "QX58", "QX66", "QX67", "QX68",
                                "QX69", "QX70", "QX71", "QX74", "QX75"}) {
    Bytes payload = SamplePayload(signature);
    if (signature == std::string("QX66"))
      payload = Payload().Int(1).Int(24).Fill(8).Int(4116).Fill(4, 3);
    if (payload.size() == 64 || payload.size() == 572) {
      std::fill(payload.begin() + 5, payload.end(), static_cast<unsigned char>(0));
    }
    tags.emplace_back(signature, payload);
  }
  tags.emplace_back("QX99", Bytes{1, 2, 3});
  tags.emplace_back("QX53", Bytes{1});
  tags.emplace_back("QX53", Bytes{1}, "text");
  return DocumentOf(ProfileFile(tags));
}

/// What is accepted can be stored, and the document of that says the same again.
void ExpectStores(const Document& document) {
  std::vector<ImageTag> tags = {{Sig("cprt"), TextTag("x")}};
  std::vector<vkcl::TagChange> stored;
  for (const vkcl::TagChange& change : document.tags) {
    if (change.remove) continue;
    stored.push_back(change);
    tags.push_back({change.signature, Bytes(change.element.begin(), change.element.end())});
  }
  const ReadBack again(DocumentOf(ProfileImage(ProfileHeader(), tags)));
  ASSERT_TRUE(again.good) << again.why;
  ASSERT_EQ(again.document.tags.size(), stored.size());
  for (std::size_t i = 0; i < stored.size(); ++i) {
    EXPECT_EQ(again.document.tags[i].signature, stored[i].signature);
    EXPECT_EQ(again.document.tags[i].element, stored[i].element);
  }
}

TEST(DocumentRefusal, OfADocumentThatIsCutAnywhere) {
  const std::string document = ValidDocument();
  ASSERT_EQ(Refusal(document), "accepted");
  // The document ends with a line feed, which it can do without.
  for (std::size_t length = 0; length + 1 < document.size(); ++length) {
    std::istringstream stream(document.substr(0, length));
    Document read;
    std::string why;
    ASSERT_FALSE(ReadDocument(stream, read, why)) << length;
    ASSERT_TRUE(why.starts_with("it is no JSON: ")) << length << ": " << why;
    ASSERT_TRUE(read.tags.empty());
  }
}

TEST(DocumentRefusal, OfAnEditedDocumentIsNeverACrash) {
  const std::string document = ValidDocument();
  const std::array<std::string, 22> pieces = {"{",          "}",
                                              "[",          "]",
                                              ",",          ":",
                                              "\"",         "-",
                                              "1e999",      "\\u0000",
                                              "0",          "[]",
                                              "\"QX50\"",   "null",
                                              "true",       "\xFF",
                                              "2147483648", "\"inf\"",
                                              "\"\"",       "[[]]",
                                              "{}",         "\"version\": 3"};
  std::mt19937 random(53);
  int accepted = 0;
  for (int i = 0; i < 3000; ++i) {
    std::string edited = document;
    for (std::size_t edits = 1 + random() % 3; edits > 0; --edits) {
      const std::size_t at = random() % edited.size();
      switch (random() % 5) {
        case 0: edited[at] = static_cast<char>(random()); break;
        case 1: edited.erase(at, random() % 40); break;
        case 2: edited.insert(at, pieces[random() % pieces.size()]); break;
        case 3: edited.insert(at, edited.substr(random() % edited.size(), random() % 80)); break;
        default:
          // Another digit where there is one, so that the text stays JSON.
          if (const std::size_t digit = edited.find_first_of("0123456789", at);
              digit != std::string::npos) {
            edited[digit] = static_cast<char>('1' + random() % 9);
          }
      }
    }
    const ReadBack read(edited);
    if (!read.good) continue;
    ++accepted;
    ExpectStores(read.document);
    if (HasFailure()) FAIL() << edited;
  }
  EXPECT_GT(accepted, 100);
}

TEST(DocumentRefusal, OfRandomBytesIsNeverACrash) {
  std::mt19937 random(54);
  for (int i = 0; i < 2000; ++i) {
    std::string text(random() % 200, '\0');
    for (char& c : text) c = static_cast<char>(random());
    EXPECT_NE(Refusal(text), "accepted");
  }
}

/// A text that cannot be read beyond its first half.
class HalfReadable : public std::streambuf {
 public:
  HalfReadable(std::string text, bool throws) : text_(std::move(text)), throws_(throws) {
    setg(text_.data(), text_.data(), text_.data() + text_.size() / 2);
  }

 private:
  int_type underflow() override {
    if (throws_) throw std::runtime_error("a fault of the medium");
    return traits_type::eof();
  }

  std::string text_;
  bool throws_;
};

TEST(DocumentRefusal, OfAStreamThatCannotBeRead) {
  for (const bool throws : {false, true}) {
    HalfReadable half(ValidDocument(), throws);
    std::istream stream(&half);
    Document document;
    std::string why;
    EXPECT_FALSE(ReadDocument(stream, document, why));
    EXPECT_NE(why, "");
    EXPECT_TRUE(document.tags.empty());
  }
}

TEST(DocumentRefusal, OfAStreamThatHasFailed) {
  std::istringstream failed(WithTags(""));
  failed.setstate(std::ios::badbit);
  std::istream none(nullptr);
  for (std::istream* stream : {static_cast<std::istream*>(&failed), &none}) {
    Document document;
    std::string why;
    EXPECT_FALSE(ReadDocument(*stream, document, why));
    EXPECT_EQ(why, "it cannot be read");
  }
}

TEST(DocumentRefusal, ThrowsNothingFromAStreamThatThrows) {
  std::istringstream stream(WithTags("").substr(0, 20));
  stream.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
  Document document;
  std::string why;
  EXPECT_FALSE(ReadDocument(stream, document, why));
  EXPECT_NE(why, "");
  // And a whole document is one, although its end raises a flag.
  std::istringstream whole(WithTags(""));
  whole.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
  EXPECT_TRUE(ReadDocument(whole, document, why)) << why;
  EXPECT_EQ(whole.exceptions(), std::ios::badbit | std::ios::failbit | std::ios::eofbit);
}

}  // namespace
