// Payloads seen through their schemas: what views tell, and which payloads they refuse.
#include "inspect/TagView.h"

#include <bit>
#include <limits>

#include "support/PrivatePayloads.h"

namespace {

using vkcl::ByteSource;
using vkcl::FieldView;
using vkcl::FindTagSchema;
using vkcl::RecordView;
using vkcl::testing::Bytes;
using vkcl::testing::ListPayload;
using vkcl::testing::Pattern;
using vkcl::testing::Payload;
using vkcl::testing::SamplePayload;
using vkcl::testing::Sig;
using vkcl::testing::SigOf;
using vkcl::testing::SplitPayload;
using vkcl::testing::TempDir;

constexpr std::size_t kWindow = ByteSource::kWindow;

/// A payload with its view.
class Viewed {
 public:
  Viewed(const std::string& signature, const Bytes& payload)
      : bytes_(payload.begin(), payload.end()), source_(bytes_) {
    record_ = RecordView::Of(*FindTagSchema(SigOf(signature)), source_, why_);
    EXPECT_EQ(record_.has_value(), why_.empty()) << why_;
  }
  Viewed(const Viewed&) = delete;
  Viewed& operator=(const Viewed&) = delete;

  const FieldView& operator[](const char* name) const {
    static const FieldView none;
    const FieldView* field = record_ ? record_->Find(name) : nullptr;
    if (field == nullptr) ADD_FAILURE() << "no field " << name << ": " << why_;
    return field != nullptr ? *field : none;
  }
  bool good() const { return record_.has_value(); }
  const std::string& why() const { return why_; }
  const RecordView& record() const { return *record_; }

 private:
  std::string bytes_;
  ByteSource source_;
  std::string why_;
  std::optional<RecordView> record_;
};

std::string Refused(const std::string& signature, const Bytes& payload) {
  const Viewed view(signature, payload);
  return view.good() ? "accepted" : view.why();
}

// Sources of bytes.

TEST(ByteSource, GivesPiecesOfMemory) {
  ByteSource source("0123456789");
  EXPECT_EQ(source.size(), 10u);
  EXPECT_EQ(source.At(0, 3), "012");
  EXPECT_EQ(source.At(8, 3), "89");
  EXPECT_EQ(source.At(10, 3), "");
  EXPECT_EQ(source.At(11, 1), "");
  EXPECT_EQ(source.At(std::numeric_limits<std::uint64_t>::max(), kWindow), "");
  EXPECT_EQ(source.At(2, 0), "");
  EXPECT_TRUE(source.good());
}

TEST(ByteSource, GivesPiecesOfAFileInAnyOrder) {
  const TempDir dir;
  const Bytes content = Pattern(5 * kWindow, 1);
  AFile file;
  ASSERT_TRUE(file.open(AFilePath(dir.Write("f", content)), AFile::Read));
  const std::uint64_t start = 7;
  const std::uint64_t size = 3 * kWindow + 100;
  ByteSource source(file, start, size);
  const std::string all(content.begin() + 7, content.begin() + 7 + static_cast<long>(size));
  for (const std::uint64_t at :
       {std::uint64_t{0}, std::uint64_t{5}, kWindow - 2, kWindow, 2 * kWindow + 1, std::uint64_t{3},
        size - 5, size - 1, size, size + 1}) {
    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{4}, kWindow}) {
      const std::string expected = at < size ? all.substr(at, length) : "";
      ASSERT_EQ(source.At(at, length), expected) << at << ", " << length;
    }
  }
  EXPECT_TRUE(source.good());
}

TEST(ByteSource, TellsThatAPieceCouldNotBeRead) {
  const TempDir dir;
  AFile file;
  ASSERT_TRUE(file.open(AFilePath(dir.Write("f", Pattern(100, 1))), AFile::Read));
  ByteSource source(file, 50, 60);
  const std::string_view piece = source.At(48, 10);
  EXPECT_FALSE(source.good());
  EXPECT_EQ(piece, "");
  EXPECT_EQ(source.At(0, 10), "") << "everything after it is empty";
  AFile closed;
  ByteSource none(closed, 0, 4);
  EXPECT_EQ(none.At(0, 4), "");
  EXPECT_FALSE(none.good());
}

// Numbers.

TEST(FieldView, GivesNumbersExactly) {
  const Viewed list("QX54", ListPayload(Sig("Lab "), 2, 3, {95, 0.1, -1, 50, -30, -0.0}));
  const FieldView& values = list["values"];
  EXPECT_EQ(values.count(), 2u);
  EXPECT_EQ(values.columns(), 3u);
  EXPECT_EQ(values.offset(), 24u);
  EXPECT_EQ(values.length(), 48u);
  EXPECT_EQ(values.Number(0), 95);
  EXPECT_EQ(values.Number(1), 0.1);
  EXPECT_EQ(values.Number(4), -30);
  EXPECT_EQ(values.NumberText(1), "0.1");
  EXPECT_EQ(values.NumberText(5), "-0");
  EXPECT_EQ(values.Integer(0), 0) << "no integer";
  EXPECT_EQ(list["Measured"].Number(), 2);
  EXPECT_EQ(list["Measured"].NumberText(), "2");
  EXPECT_EQ(list["Measured"].Integer(), 2);
  EXPECT_EQ(list["Measured"].count(), 1u);
  EXPECT_EQ(list["DataFormat"].Integer(), std::int64_t{Sig("Lab ")});
}

TEST(FieldView, GivesIntegersWithTheirSigns) {
  const Viewed split(
      "QX50",
      Bytes(Payload().Int(2).Int(96).Int(1).Fill(8).Int(76).Int(-2147483647 - 1).Fill(68, 0xFF)));
  const RecordView record = split["splits"].Record(0);
  EXPECT_EQ(record.Find("length")->Integer(), 76);
  EXPECT_EQ(record.Find("colorantIndex")->Integer(), -2147483648ll);
  EXPECT_EQ(record.Find("colorantIndex")->NumberText(), "-2147483648");
  const Viewed list("QX54", Bytes(Payload().Int(-1).Int(0).Int(-1).Int(0).Int(-2).Int(0)));
  EXPECT_EQ(list["DataFormat"].Integer(), 4294967295ll);
  EXPECT_EQ(list["ColorMode"].Integer(), -1);
}

std::string DoubleText(std::uint64_t bits) {
  const Viewed view("QX54", ListPayload(0, 1, 1, {std::bit_cast<double>(bits)}));
  return view["values"].NumberText();
}

std::string FloatText(std::uint32_t bits) {
  Bytes payload = SamplePayload("QX53");
  for (unsigned i = 0; i < 4; ++i) {
    payload[404 + i] = static_cast<unsigned char>(bits >> (8 * i) & 0xFF);
  }
  const Viewed view("QX53", payload);
  return view["ResolutionX"].NumberText();
}

TEST(FieldView, NamesNumbersThatAreNone) {
  EXPECT_EQ(DoubleText(0x7FF0000000000000u), "inf");
  EXPECT_EQ(DoubleText(0xFFF0000000000000u), "-inf");
  EXPECT_EQ(DoubleText(0x7FF8000000000000u), "nan");
  EXPECT_EQ(DoubleText(0xFFF8000000000000u), "nan:fff8000000000000");
  EXPECT_EQ(DoubleText(0x7FF8000000000001u), "nan:7ff8000000000001");
  EXPECT_EQ(DoubleText(0x7FF0000000000001u), "nan:7ff0000000000001");
  EXPECT_EQ(DoubleText(1), "5e-324");
  EXPECT_EQ(FloatText(0x7F800000), "inf");
  EXPECT_EQ(FloatText(0xFF800000), "-inf");
  EXPECT_EQ(FloatText(0x7FC00000), "nan");
  EXPECT_EQ(FloatText(0x7FC00001), "nan:7fc00001");
  EXPECT_EQ(FloatText(0x7F800001), "nan:7f800001");
  EXPECT_EQ(FloatText(0xFFC00000), "nan:ffc00000");
  EXPECT_EQ(FloatText(0x80000000), "-0");
  EXPECT_EQ(FloatText(1), "1e-45");
  EXPECT_EQ(FloatText(0x3DCCCCCD), "0.1");
}

// Texts and bytes.

TEST(FieldView, GivesTextsWithoutTheirTerminator) {
  const Viewed view("QX53", SamplePayload("QX53"));
  EXPECT_EQ(view["Make"].Text(), "Acme");
  EXPECT_EQ(view["Make"].TextBytes(), "Acme");
  EXPECT_EQ(view["reservedText3"].Text(), "");
  EXPECT_EQ(view["Make"].length(), 128u);
  const Viewed spot("QX68", SamplePayload("QX68"));
  EXPECT_EQ(spot["name"].Text(), "Spot");
}

/// The text of the field Make with this content.
std::optional<std::string> TextOf(const std::string& content, std::string* bytes = nullptr) {
  Bytes payload = SamplePayload("QX53");
  std::fill(payload.begin() + 16, payload.begin() + 144, static_cast<unsigned char>(0));
  std::copy(content.begin(), content.end(), payload.begin() + 16);
  const Viewed view("QX53", payload);
  if (bytes != nullptr) *bytes = view["Make"].TextBytes();
  return view["Make"].Text();
}

TEST(FieldView, GivesTextsThatAreUtf8Only) {
  for (const char* text : {"Gr\xC3\xBC"
                           "n",
                           "\xE6\xBC\xA2", "\xF0\x9F\x8E\xA8", "\xEF\xBF\xBF", "\x7F",
                           "\xF4\x8F\xBF\xBF", "\xED\x9F\xBF", "\xEE\x80\x80", "\x01\x1F"}) {
    EXPECT_EQ(TextOf(text), text);
  }
  // Bytes alone, cut short, overlong, halves of pairs, beyond the last character.
  for (const char* text :
       {"M\xFF", "\x80", "\xC3", "\xC3(", "\xE6\xBC", "\xF0\x9F\x8E", "\xC0\x80", "\xC1\xBF",
        "\xE0\x80\xAF", "\xE0\x9F\xBF", "\xF0\x80\x80\xAF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80",
        "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF7\xBF\xBF\xBF", "\xF8\x88\x80\x80\x80"}) {
    std::string bytes;
    EXPECT_EQ(TextOf(text, &bytes), std::nullopt) << text;
    EXPECT_EQ(bytes, text);
  }
}

TEST(FieldView, GivesNoTextWithBytesBehindItsTerminator) {
  std::string bytes;
  EXPECT_EQ(TextOf(std::string("a\0b", 3), &bytes), std::nullopt);
  EXPECT_EQ(bytes, "a");
  std::string last(128, '\0');
  last.back() = 'x';
  EXPECT_EQ(TextOf(last, &bytes), std::nullopt);
  EXPECT_EQ(bytes, "");
  for (const std::size_t length : {127u, 128u}) {  // with a terminator, and filling the field
    const std::string text(length, 'x');
    EXPECT_EQ(TextOf(text), text);
  }
}

std::optional<std::string> ChromaText(const std::string& payload) {
  const Viewed view("QX75", {payload.begin(), payload.end()});
  return view["text"].Text();
}

TEST(FieldView, ATextThatAZeroEndsHasOneZeroAlone) {
  EXPECT_EQ(ChromaText(std::string("soft\0", 5)), "soft");
  EXPECT_EQ(ChromaText(std::string("\0", 1)), "");
  EXPECT_EQ(ChromaText("soft"), std::nullopt);
  EXPECT_EQ(ChromaText(""), std::nullopt);
  EXPECT_EQ(ChromaText(std::string("soft\0\0", 6)), std::nullopt);
  EXPECT_EQ(ChromaText(std::string("so\0ft\0", 6)), std::nullopt);
}

TEST(FieldView, LongTextsAreNoTexts) {
  const std::string fits(kWindow - 1, 'x');
  EXPECT_EQ(ChromaText(fits + '\0'), fits);
  const std::string longer(kWindow + 1, 'x');
  EXPECT_EQ(ChromaText(longer + '\0'), std::nullopt);
  const Viewed view("QX75", Bytes(3 * kWindow, 'y'));
  EXPECT_EQ(view["text"].TextBytes(), std::string(kWindow, 'y'));
}

TEST(FieldView, GivesBytesOfItsOwnOnly) {
  const Viewed view("QX70", SamplePayload("QX70"));
  EXPECT_EQ(view["packing"].Bytes(0, 100), "\x01\x02\x03");
  EXPECT_EQ(view["packing"].Bytes(1, 1), "\x02");
  EXPECT_EQ(view["packing"].Bytes(3, 1), "");
  EXPECT_EQ(view["packing"].Bytes(4, 1), "");
  EXPECT_EQ(view["packing"].Bytes(std::numeric_limits<std::uint64_t>::max(), 100), "");
  const Bytes block = Pattern(144, 6);
  EXPECT_EQ(view["blockA"].Bytes(0, 144), std::string(block.begin(), block.end()));
}

TEST(FieldView, CountsWhatIsUsed) {
  Bytes payload = SamplePayload("QX51");
  std::fill(payload.begin() + 12 + 8 * 4, payload.end(), static_cast<unsigned char>(0));
  EXPECT_EQ(Viewed("QX51", payload)["limits"].UsedCount(), 4u);
  payload[12 + 8 * 9 + 7] = 0x80;  // -0.0 is not zero in bytes
  EXPECT_EQ(Viewed("QX51", payload)["limits"].UsedCount(), 10u);
  std::fill(payload.begin() + 12, payload.end(), static_cast<unsigned char>(0));
  EXPECT_EQ(Viewed("QX51", payload)["limits"].UsedCount(), 0u);
  EXPECT_EQ(Viewed("QX67", Bytes(64))["bytes"].UsedCount(), 0u);
  Bytes block(64);
  block[20] = 1;
  EXPECT_EQ(Viewed("QX67", block)["bytes"].UsedCount(), 21u);
  EXPECT_EQ(Viewed("QX58", Bytes(64))["file"].UsedCount(), 64u) << "its length is no constant";
  EXPECT_EQ(Viewed("QX54", ListPayload(0, 2, 1, {0, 0}))["values"].UsedCount(), 2u);
}

TEST(FieldView, CountsTheRowsOfCurvesThatAreUsed) {
  Bytes payload = SplitPayload(3, {0});
  std::fill(payload.begin() + 28, payload.begin() + 28 + 2048, static_cast<unsigned char>(0));
  payload[28 + 8 * 6] = 1;  // the first number of the seventh point
  const Viewed view("QX50", payload);
  EXPECT_EQ(view["splits"].Record(0).Find("light")->UsedCount(), 7u);
  EXPECT_EQ(view["splits"].Record(0).Find("medium")->UsedCount(), 256u);
}

// Records and blocks.

TEST(FieldView, GivesRecordsOneBehindTheOther) {
  const Viewed view("QX50", SplitPayload(2, {7, -1, 4}));
  const FieldView& splits = view["splits"];
  ASSERT_EQ(splits.count(), 3u);
  EXPECT_EQ(splits.Record(0).Find("colorantIndex")->Integer(), 7);
  EXPECT_EQ(splits.Record(1).Find("colorantIndex")->Integer(), -1);
  EXPECT_EQ(splits.Record(2).Find("colorantIndex")->Integer(), 4);
  EXPECT_EQ(splits.Record(2).Find("lightPeakInput")->Number(), 0.125);
  EXPECT_EQ(splits.Record(2).Find("none"), nullptr);
}

TEST(FieldView, GivesTheBlocksThatAnotherFieldLists) {
  const Viewed view("QX69", SamplePayload("QX69"));
  const auto& links = view["links"];
  ASSERT_EQ(links.count(), 2u);
  const auto first = links.Block(0, {});
  EXPECT_EQ(first.from, 0u);
  EXPECT_EQ(first.length, 3u);
  const auto second = links.Block(1, first);
  EXPECT_EQ(second.from, 3u);
  EXPECT_EQ(second.length, 2u);
  EXPECT_EQ(links.Bytes(second.from, static_cast<std::size_t>(second.length)), "de");
}

TEST(RecordView, FindsFieldsByName) {
  const Viewed view("QX76", SamplePayload("QX76"));
  EXPECT_EQ(view.record().fields().size(), 2u);
  EXPECT_EQ(view.record().Find("value"), &view.record().fields()[1]);
  EXPECT_EQ(view.record().Find("Value"), nullptr);
  EXPECT_EQ(view.record().Find(""), nullptr);
}

// Payloads that do not have the form.

TEST(RecordView, RefusesAnyOtherLengthOfAFixedForm) {
  for (const char* signature :
       {"QX51", "QX52", "QX53", "QX64", "QX67", "QX70", "QX74", "QX76", "QX50", "QX54", "QX69"}) {
    SCOPED_TRACE(signature);
    const Bytes payload = SamplePayload(signature);
    EXPECT_EQ(Refused(signature, payload), "accepted");
    for (std::size_t length = 0; length < payload.size(); ++length) {
      ASSERT_NE(Refused(signature, {payload.begin(), payload.begin() + static_cast<long>(length)}),
                "accepted")
          << length;
    }
    Bytes longer = payload;
    longer.push_back(0);
    EXPECT_NE(Refused(signature, longer), "accepted");
  }
}

TEST(RecordView, SaysInWordsWhatIsWrong) {
  EXPECT_EQ(Refused("QX64", Payload().Fill(3)), "\"value\" takes 4 bytes, and 3 are left");
  EXPECT_EQ(Refused("QX64", Payload().Fill(5)), "its fields end at byte 4, and it has 5 bytes");
  EXPECT_EQ(Refused("QX50", Payload().Int(5).Int(20).Int(0).Fill(8)), "version 5 is not known");
  EXPECT_EQ(Refused("QX54", Payload().Int(0).Int(-1).Int(1).Int(3).Int(0).Int(1)),
            "\"NumOfSamples\" is -1");
}

TEST(RecordView, RefusesVersionsOfSplitsThatHaveNoForm) {
  for (const std::int32_t version : {0, 1, 5, -1, 2147483647, -2147483647 - 1}) {
    Bytes payload = SplitPayload(2, {0});
    const Bytes number = Payload().Int(version);
    std::copy(number.begin(), number.end(), payload.begin());
    EXPECT_NE(Refused("QX50", payload), "accepted") << version;
  }
}

TEST(RecordView, RefusesCountsThatThePayloadDoesNotHold) {
  for (const std::int32_t count : {-1, 3, 1, 1000, 2147483647, -2147483647 - 1, 0x08000000}) {
    Bytes split = SplitPayload(2, {0, 1});
    Bytes spot = SamplePayload("QX68");
    Bytes links = SamplePayload("QX69");
    const Bytes number = Payload().Int(count);
    for (Bytes* payload : {&split, &spot, &links}) {
      std::copy(number.begin(), number.end(), payload->begin() + 8);
    }
    EXPECT_NE(Refused("QX50", split), "accepted") << count;
    EXPECT_NE(Refused("QX69", links), "accepted") << count;
    if (count != 1) {  // with one limit the name is longer
      EXPECT_NE(Refused("QX68", spot), "accepted") << count;
    }
  }
}

TEST(RecordView, RefusesListsWhoseCountsOverflow) {
  for (const std::int32_t samples : {1, 65536, 2147483647, -1, 0x20000000}) {
    for (const std::int32_t colors : {65536, 2147483647, -1, 0x20000000}) {
      const Bytes payload = Payload().Int(0).Int(samples).Int(1).Int(colors).Int(0).Int(1).Fill(64);
      EXPECT_NE(Refused("QX54", payload), "accepted") << samples << " x " << colors;
    }
  }
}

TEST(RecordView, TakesListsWithoutValuesWhateverTheirCounts) {
  for (const std::int32_t count : {0, -1, 5, 2147483647, -2147483647 - 1}) {
    const Viewed view("QX60", Bytes(Payload().Int(0).Int(count).Int(1).Int(count).Int(0).Int(0)));
    ASSERT_TRUE(view.good()) << view.why();
    EXPECT_EQ(view["NumOfSamples"].Integer(), count);
    const FieldView* values = view.record().Find("values");
    if (values != nullptr) {
      EXPECT_EQ(values->length(), 0u);
      EXPECT_EQ(values->count(), 0u);
    }
  }
}

TEST(RecordView, TakesRowsOfNoColumns) {
  for (const std::int32_t samples : {0, 1, 2147483647}) {
    const Viewed view("QX60", Bytes(Payload().Int(0).Int(samples).Int(1).Int(0).Int(0).Int(-3)));
    ASSERT_TRUE(view.good()) << view.why();
    EXPECT_EQ(view["values"].length(), 0u);
    EXPECT_EQ(view["values"].UsedCount(), view["values"].count());
  }
}

TEST(RecordView, RefusesLengthsOfBlocksThatDoNotFillTheRest) {
  const auto links = [](std::int32_t a, std::int32_t b) {
    return Bytes(Payload().Int(1).Int(29).Int(2).Int(0).Int(a).Int(b).Text("abcde"));
  };
  EXPECT_EQ(Refused("QX69", links(3, 2)), "accepted");
  EXPECT_EQ(Refused("QX69", links(0, 5)), "accepted");
  EXPECT_NE(Refused("QX69", links(3, 3)), "accepted");
  EXPECT_NE(Refused("QX69", links(3, 1)), "accepted");
  EXPECT_NE(Refused("QX69", links(-1, 6)), "accepted");
  EXPECT_NE(Refused("QX69", links(2147483647, -2147483642)), "accepted");
}

TEST(RecordView, RefusesNamesThatDoNotFit) {
  for (const std::int32_t length : {-1, 5, 1000, 2147483647, -2147483647 - 1}) {
    EXPECT_NE(Refused("QX69", Payload().Int(1).Int(20).Int(0).Int(length).Text("Spot")), "accepted")
        << length;
  }
}

// Large payloads.

TEST(RecordView, FetchesValuesAcrossTheBoundsOfItsPieces) {
  const std::size_t rows = 20000;
  std::vector<double> values;
  for (std::size_t i = 0; i < rows * 3; ++i) values.push_back(static_cast<double>(i) + 0.5);
  const Bytes payload = ListPayload(Sig("Lab "), static_cast<std::int32_t>(rows), 3, values);
  const TempDir dir;
  Bytes content = Pattern(13, 1);
  content.insert(content.end(), payload.begin(), payload.end());
  AFile file;
  ASSERT_TRUE(file.open(AFilePath(dir.Write("f", content)), AFile::Read));
  ByteSource source(file, 13, payload.size());
  std::string why;
  const auto record = RecordView::Of(*FindTagSchema(QX54), source, why);
  ASSERT_TRUE(record) << why;
  const FieldView* field = record->Find("values");
  EXPECT_EQ(field->count(), rows);
  for (std::size_t i = 0; i < values.size(); ++i) ASSERT_EQ(field->Number(i), values[i]) << i;
  EXPECT_EQ(field->Number(0), 0.5);
}

}  // namespace
