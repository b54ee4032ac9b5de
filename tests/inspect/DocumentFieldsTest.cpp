// The document of each kind of tag, literal against literal, both ways.
#include <bit>

#include "inspect/Documents.h"
#include "support/PrivatePayloads.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::DataTag;
using vkcl::testing::DocumentOf;
using vkcl::testing::ListPayload;
using vkcl::testing::Payload;
using vkcl::testing::ProfileFile;
using vkcl::testing::ReadBack;
using vkcl::testing::SameBytes;
using vkcl::testing::SamplePayload;
using vkcl::testing::Sig;
using vkcl::testing::SigOf;
using vkcl::testing::SplitPayload;

constexpr char kHead[] = R"({
  "format": "vkcl-private-tags",
  "formatVersion": 1,
  "profile": {
    "class": "prtr",
    "colorSpace": "CMYK",
    "pcs": "Lab "
  },
  "tags": {
)";
constexpr char kTail[] = "\n  }\n}\n";

/// The payload is written as the text, and the text is read as the payload, with these notes.
void ExpectBothWays(const std::string& signature, const Bytes& payload, const std::string& text,
                    const std::vector<std::string>& notes = {}) {
  SCOPED_TRACE(signature);
  const std::string document = kHead + ("    \"" + signature + "\": ") + text + kTail;
  EXPECT_EQ(DocumentOf(ProfileFile({{signature, payload}})), document);
  const ReadBack read(document);
  EXPECT_TRUE(SameBytes(read.Element(), DataTag(payload)));
  EXPECT_EQ(read.document.notes, notes);
  ASSERT_EQ(read.document.tags.size(), 1u);
  EXPECT_EQ(read.document.tags[0].signature, SigOf(signature));
  EXPECT_EQ(read.document.tags[0].occurrence, 1u);
}

TEST(DocumentFields, InkSplitOfVersion2) {
  ExpectBothWays("QX50", SplitPayload(2, {-1}), R"({
      "version": 2,
      "size": 96,
      "count": 1,
      "unused": [],
      "splits": [
        {
          "length": 76,
          "colorantIndex": -1,
          "reserved": 0,
          "lightPeakInput": 0.125,
          "lightEndInput": 0.25,
          "mediumPeakInput": 0.375,
          "mediumEndInput": 0.5,
          "lightPeakAmount": 0.625,
          "mediumPeakAmount": 0.75,
          "darkAmount": 0.875,
          "lightTailAmount": 1,
          "lightPeakShape": 1.125,
          "lightEndShape": 1.25,
          "mediumTailAmount": 1.375,
          "mediumStartShape": 1.5,
          "mediumPeakShape": 1.625,
          "mediumEndShape": 1.75,
          "darkStartShape": 1.875,
          "darkEndShape": 2
        }
      ]
    })");
}

TEST(DocumentFields, InkSplitsOfVersions3And4WithTheirUsedPoints) {
  Payload third;
  third.Int(3).Int(6188).Int(1).Text("8 bytes!").Int(6168).Int(2);
  third.Float(0.5f).Float(-0.0f).Fill(8).Float(1).Float(0.1f).Fill(2048 - 24);
  third.Fill(2048).Fill(2048).Int(3).Int(0).Int(0).Int(1);
  ExpectBothWays("QX50", third, R"({
      "version": 3,
      "size": 6188,
      "count": 1,
      "unused": ["OCBieXRlcyE="],
      "splits": [
        {
          "length": 6168,
          "colorantIndex": 2,
          "light": [
            [0.5, "-0"],
            [0, 0],
            [1, 0.1]
          ],
          "medium": [],
          "dark": [],
          "lightCount": 3,
          "mediumCount": 0,
          "darkCount": 0,
          "interpolation": 1
        }
      ]
    })");
  Payload fourth;
  fourth.Int(4).Int(9260).Int(1).Fill(8).Int(9240).Int(-1).Fill(3072);
  fourth.Float(0.25f).Float(0).Float(0).Fill(3072 - 12).Fill(3072).Int(0).Int(-1).Int(0).Int(0);
  ExpectBothWays("QX50", fourth, R"({
      "version": 4,
      "size": 9260,
      "count": 1,
      "unused": [],
      "splits": [
        {
          "length": 9240,
          "colorantIndex": -1,
          "light": [],
          "medium": [
            [0.25, 0, 0]
          ],
          "dark": [],
          "lightCount": 0,
          "mediumCount": -1,
          "darkCount": 0,
          "interpolation": 0
        }
      ]
    })",
                 {R"(QX50: splits[0]: "medium" has 1 rows, of which "mediumCount" uses -1)"});
}

TEST(DocumentFields, InkSplitWithoutRecords) {
  ExpectBothWays("QX50", Payload().Int(4).Int(20).Int(0).Fill(8), R"({
      "version": 4,
      "size": 20,
      "count": 0,
      "unused": [],
      "splits": []
    })");
}

TEST(DocumentFields, InkLimits) {
  Payload single;
  single.Int(1).Int(140).Int(16).Double(100).Double(95.5);
  for (int i = 0; i < 14; ++i) single.Double(0);
  ExpectBothWays("QX51", single, R"({
      "version": 1,
      "size": 140,
      "count": 16,
      "limits": [100, 95.5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]
    })");
  Payload multiple;
  multiple.Int(4).Int(300).Int(36);
  for (int i = 0; i < 36; ++i) multiple.Double(i == 35 ? 1e300 : i);
  ExpectBothWays("QX52", multiple, R"({
      "version": 4,
      "size": 300,
      "count": 36,
      "limits": [0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 1e+300]
    })");
}

TEST(DocumentFields, ColourParameters) {
  Payload payload;
  payload.Int(1).Int(1068).Int(9).Int(-7).Field("Acme \"A\"\\", 128).Field("M\xFF", 128);
  payload.Field("B\xC3\xBCtten \xF0\x9F\x8E\xA8", 128).Int(2).Float(720).Float(0.1f).Int(8224);
  payload.Int(5).Int(6).Int(8).Text("ab").Fill(254).Text(std::string(128, 'x'));
  payload.Field(std::string_view("a\0b", 3), 128).Field("\x01\n\x7F", 128);
  ExpectBothWays("QX53", payload,
                 R"({
      "version": 1,
      "size": 1068,
      "status": 9,
      "MediaID": -7,
      "Make": "Acme \"A\"\\",
      "Model": {
        "bytes": ["Tf8="]
      },
      "MediaName": "B\u00fctten \ud83c\udfa8",
      "ResolutionID": 2,
      "ResolutionX": 720,
      "ResolutionY": 0.1,
      "ColorMode": 8224,
      "DriverColorMode": 5,
      "DitherMethod": 6,
      "PrintMode": 8,
      "DriverOption": ["YWI="],
      "reservedText1": ")" +
                     std::string(128, 'x') + R"(",
      "reservedText2": {
        "bytes": ["YQBi"]
      },
      "reservedText3": "\u0001\n\u007f"
    })");
}

TEST(DocumentFields, DataLists) {
  const Bytes payload = ListPayload(Sig("Lab "), 2, 3, {95, 0.1, -1, 50, -30, 1.0 / 3});
  for (const char* signature : {"QX54", "QX55", "QX56", "QX57", "QX59", "QX60", "QX72", "QX73"}) {
    ExpectBothWays(signature, payload, R"({
      "DataFormat": "Lab ",
      "NumOfSamples": 2,
      "ColorMode": 1,
      "NumOfColors": 3,
      "Measured": 2,
      "hasValues": 1,
      "values": [
        [95, 0.1, -1],
        [50, -30, 0.3333333333333333]
      ]
    })");
  }
}

TEST(DocumentFields, DataListsWithoutValues) {
  ExpectBothWays("QX54", ListPayload(Sig("refl"), -5, 2147483647, {}), R"({
      "DataFormat": "refl",
      "NumOfSamples": -5,
      "ColorMode": 1,
      "NumOfColors": 2147483647,
      "Measured": 2,
      "hasValues": 0,
      "values": []
    })");
  // Rows of no values, and no rows; any number but 0 says that they follow.
  ExpectBothWays("QX54", Payload().Int(0).Int(3).Int(1).Int(0).Int(0).Int(-7), R"({
      "DataFormat": 0,
      "NumOfSamples": 3,
      "ColorMode": 1,
      "NumOfColors": 0,
      "Measured": 0,
      "hasValues": -7,
      "values": []
    })");
  ExpectBothWays("QX54", Payload().Int(-1).Int(0).Int(1).Int(9).Int(0).Int(1), R"({
      "DataFormat": 4294967295,
      "NumOfSamples": 0,
      "ColorMode": 1,
      "NumOfColors": 9,
      "Measured": 0,
      "hasValues": 1,
      "values": []
    })");
}

TEST(DocumentFields, NumbersOfEveryClass) {
  const auto of = [](std::uint64_t bits) { return std::bit_cast<double>(bits); };
  const Bytes payload =
      ListPayload(Sig("a\"\\b"), 3, 3,
                  {of(0x7FF0000000000000), of(0xFFF0000000000000), -0.0, of(0x7FF8000000000000),
                   of(0xFFF8000000000000), of(0x7FF0000000000001), of(1), of(0x7FEFFFFFFFFFFFFF),
                   of(0x0010000000000000)});
  ExpectBothWays("QX54", payload, R"({
      "DataFormat": "a\"\\b",
      "NumOfSamples": 3,
      "ColorMode": 1,
      "NumOfColors": 3,
      "Measured": 2,
      "hasValues": 1,
      "values": [
        ["inf", "-inf", "-0"],
        ["nan", "nan:fff8000000000000", "nan:7ff0000000000001"],
        [5e-324, 1.7976931348623157e+308, 2.2250738585072014e-308]
      ]
    })");
}

TEST(DocumentFields, EmbeddedFiles) {
  const Bytes file(97, 0xFF);
  for (const char* signature : {"QX58", "QX61", "QX62", "QX63", "QX65"}) {
    ExpectBothWays(signature, file, R"({
      "file": [
        ")" + std::string(128, '/') + R"(",
        "/w=="
      ]
    })");
    ExpectBothWays(signature, {}, R"({
      "file": []
    })");
    ExpectBothWays(signature, Bytes(3), R"({
      "file": ["AAAA"]
    })");
  }
}

TEST(DocumentFields, Flags) {
  ExpectBothWays("QX64", Payload().Int(-2147483647 - 1), R"({
      "value": -2147483648
    })");
  ExpectBothWays("QX74", Payload().Int(3), R"({
      "value": 3
    })");
  ExpectBothWays("QX76", Payload().Int(2).Int(2147483647), R"({
      "version": 2,
      "value": 2147483647
    })");
}

TEST(DocumentFields, Dither) {
  ExpectBothWays("QX66", Payload().Int(1).Int(24).Text("x").Fill(7).Int(4116).Fill(4), R"({
      "type": 1,
      "size": 24,
      "unused": ["eA=="],
      "table": ["FBAAAAAAAAA="]
    })");
}

TEST(DocumentFields, BlocksOfConstantLengthWithoutTheZerosAtTheirEnds) {
  ExpectBothWays("QX67", Bytes(64), R"({
      "bytes": []
    })");
  ExpectBothWays("QX67", Payload().Fill(1).Text("a").Fill(62), R"({
      "bytes": ["AGE="]
    })");
  ExpectBothWays(
      "QX70",
      Payload().Int(1).Field("odd", 129).HexDigits("000200").Int(9).Fill(144).Fill(287).Fill(1, 1),
      R"({
      "version": 1,
      "text": "odd",
      "packing": ["AAI="],
      "value": 9,
      "blockA": [],
      "blockB": [
        ")" +
          std::string(128, 'A') + R"(",
        ")" +
          std::string(128, 'A') + R"(",
        ")" +
          std::string(127, 'A') + R"(B"
      ]
    })");
}

TEST(DocumentFields, SpotColours) {
  ExpectBothWays("QX68", SamplePayload("QX68"), R"({
      "version": 1,
      "size": 32,
      "count": 2,
      "name": "Spot",
      "limits": [75, 82.5]
    })");
  ExpectBothWays("QX68", Payload().Int(1).Int(14).Int(0).Text("\xFF").Fill(1), R"({
      "version": 1,
      "size": 14,
      "count": 0,
      "name": {
        "bytes": ["/wA="]
      },
      "limits": []
    })");
  ExpectBothWays("QX69", SamplePayload("QX69"), R"({
      "version": 1,
      "size": 33,
      "count": 2,
      "nameLength": 4,
      "name": "Spot",
      "linkSizes": [3, 2],
      "links": [
        ["YWJj"],
        ["ZGU="]
      ]
    })");
  ExpectBothWays("QX69", Payload().Int(1).Int(20).Int(1).Int(0).Int(0), R"({
      "version": 1,
      "size": 20,
      "count": 1,
      "nameLength": 0,
      "name": "",
      "linkSizes": [0],
      "links": [
        []
      ]
    })");
  ExpectBothWays("QX69", Payload().Int(1).Int(16).Int(0).Int(0), R"({
      "version": 1,
      "size": 16,
      "count": 0,
      "nameLength": 0,
      "name": "",
      "linkSizes": [],
      "links": []
    })");
}

TEST(DocumentFields, Sidecar) {
  ExpectBothWays("QX71", Payload().Int(1).Field("press.icc", 128).Text("<x/>"), R"({
      "version": 1,
      "fileName": "press.icc",
      "file": ["PHgvPg=="]
    })");
}

TEST(DocumentFields, ChromaText) {
  ExpectBothWays("QX75", Payload().Text("soft").Fill(1), R"({
      "text": "soft"
    })");
  ExpectBothWays("QX75", Payload().Fill(1), R"({
      "text": ""
    })");
  const std::vector<std::pair<Bytes, std::string>> odd = {
      {{}, "[]"},
      {{'a'}, R"(["YQ=="])"},
      {{'a', 0, 0}, R"(["YQAA"])"},
      {{'a', 0, 'b', 0}, R"(["YQBiAA=="])"},
      {{0xFF, 0}, R"(["/wA="])"},
  };
  for (const auto& [payload, bytes] : odd) {
    ExpectBothWays("QX75", payload, R"({
      "text": {
        "bytes": )" + bytes + R"(
      }
    })");
  }
}

TEST(DocumentFields, SizesOfFixedFormsThatLie) {
  Bytes payload = SamplePayload("QX53");
  payload[4] = 9;
  payload[5] = 0;
  const std::string document = DocumentOf(ProfileFile({{"QX53", payload}}));
  EXPECT_NE(document.find("\"size\": 9,"), std::string::npos) << document;
  const ReadBack read(document);
  EXPECT_TRUE(SameBytes(read.Element(), DataTag(payload)));
  ASSERT_EQ(read.document.notes.size(), 1u);
  EXPECT_EQ(read.document.notes[0], "QX53: \"size\" is 9, and it takes 1068 bytes");
}

}  // namespace
