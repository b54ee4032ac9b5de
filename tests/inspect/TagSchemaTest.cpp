// Each schema against docs/format.md: names, types, and the places that a view of a payload gives.
#include "inspect/TagSchema.h"

#include <set>
#include <sstream>

#include "inspect/TagView.h"
#include "support/PrivatePayloads.h"

namespace {

using vkcl::Amount;
using vkcl::ByteSource;
using vkcl::FieldRole;
using vkcl::FieldSchema;
using vkcl::FieldShape;
using vkcl::FieldType;
using vkcl::FieldView;
using vkcl::FindField;
using vkcl::FindTagSchema;
using vkcl::RecordView;
using vkcl::TagSchema;
using vkcl::TagSchemas;
using vkcl::testing::Bytes;
using vkcl::testing::KnownSignatures;
using vkcl::testing::Payload;
using vkcl::testing::SamplePayload;
using vkcl::testing::SigOf;
using vkcl::testing::SplitPayload;

std::string NameOf(FieldType type) {
  switch (type) {
    case FieldType::Int32: return "int32";
    case FieldType::UInt32: return "uint32";
    case FieldType::Float32: return "float32";
    case FieldType::Float64: return "float64";
    case FieldType::Signature: return "signature";
    case FieldType::Text: return "text";
    case FieldType::Bytes: return "bytes";
    case FieldType::Record: return "record";
  }
  return "?";
}

void Describe(const RecordView& record, std::ostream& out, const std::string& indent = "") {
  for (const FieldView& field : record.fields()) {
    out << indent << field.offset() << " " << NameOf(field.schema().type) << " "
        << field.schema().name << " " << field.length();
    switch (field.schema().shape) {
      case FieldShape::Single: break;
      case FieldShape::List: out << " = " << field.count() << " values"; break;
      case FieldShape::Rows: out << " = " << field.count() << " x " << field.columns(); break;
      case FieldShape::Blocks: out << " = " << field.count() << " blocks"; break;
    }
    out << "\n";
    if (field.schema().type != FieldType::Record) continue;
    for (std::uint64_t i = 0; i < field.count(); ++i) Describe(field.Record(i), out, indent + "  ");
  }
}

/// Where each field of a payload lies, one a line: offset, type, name, length.
std::string LayoutOf(const std::string& signature, const Bytes& payload) {
  const TagSchema* schema = FindTagSchema(SigOf(signature));
  if (schema == nullptr) return "no schema";
  const std::string bytes(payload.begin(), payload.end());
  ByteSource source(bytes);
  std::string why;
  const std::optional<RecordView> record = RecordView::Of(*schema, source, why);
  if (!record) return why;
  std::ostringstream out;
  Describe(*record, out);
  return out.str();
}

std::string SampleLayout(const std::string& signature) {
  return LayoutOf(signature, SamplePayload(signature));
}

// The tags.

TEST(TagSchemas, AreTheTwentySevenKindsInOrder) {
  const auto schemas = TagSchemas();
  ASSERT_EQ(schemas.size(), 27u);
  std::set<std::string> names;
  for (std::size_t i = 0; i < schemas.size(); ++i) {
    EXPECT_EQ(schemas[i].signature, SigOf(KnownSignatures()[i]));
    EXPECT_EQ(FindTagSchema(schemas[i].signature), &schemas[i]);
    names.insert(schemas[i].name);
    EXPECT_STRNE(schemas[i].title, "");
    EXPECT_FALSE(schemas[i].fields.empty());
  }
  EXPECT_EQ(names.size(), 27u);
}

TEST(TagSchemas, KnowNoOtherSignature) {
  for (const char* text : {"QX49", "QX77", "QX99", "QX5:", "qx50", "cprt"}) {
    EXPECT_EQ(FindTagSchema(SigOf(text)), nullptr) << text;
  }
  EXPECT_EQ(FindTagSchema(0), nullptr);
  EXPECT_EQ(FindTagSchema(0xFFFFFFFF), nullptr);
}

TEST(TagSchemas, HaveNamesForPrograms) {
  std::set<std::string> seen;
  for (const TagSchema& schema : TagSchemas()) {
    const std::string name = schema.name;
    EXPECT_TRUE(seen.insert(name).second) << name;
    EXPECT_EQ(
        name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
        std::string::npos)
        << name;
  }
  // Those that the tool's other verbs have, too.
  for (const char* name : {"SingleInkLimit", "MultiInkLimit", "ColorParam", "LinMeasurement",
                           "ChromaAdjust", "Wizard", "ProfileExtra"}) {
    EXPECT_TRUE(seen.contains(name)) << name;
  }
}

/// The fields of a tag and of all forms of its records.
std::vector<std::span<const FieldSchema>> AllFields(const TagSchema& schema) {
  std::vector<std::span<const FieldSchema>> all = {schema.fields};
  for (const auto& form : schema.forms) all.push_back(form.fields);
  return all;
}

TEST(TagSchemas, NameEachFieldOnceAndReferToEarlierOnes) {
  for (const TagSchema& schema : TagSchemas()) {
    for (const auto fields : AllFields(schema)) {
      std::set<std::string> names;
      for (const FieldSchema& field : fields) {
        SCOPED_TRACE(std::string(schema.name) + "." + field.name);
        EXPECT_EQ(FindField(fields, field.name), &field);
        for (const Amount& amount : {field.amount, field.columns}) {
          if (amount.kind == Amount::Kind::Field) {
            EXPECT_TRUE(names.contains(amount.field));
          } else {
            EXPECT_EQ(amount.field, nullptr);
          }
        }
        if (field.presence != nullptr) {
          EXPECT_TRUE(names.contains(field.presence));
        }
        EXPECT_TRUE(names.insert(field.name).second);
        EXPECT_STRNE(field.meaning, "") << "the page of fields says nothing";
      }
      EXPECT_EQ(FindField(fields, "none"), nullptr);
      EXPECT_EQ(FindField(fields, ""), nullptr);
    }
  }
}

// The layouts.

TEST(TagSchemas, InkSplitOfVersion2) {
  EXPECT_EQ(LayoutOf("QX50", SplitPayload(2, {-1, 3})), R"(0 int32 version 4
4 int32 size 4
8 int32 count 4
12 bytes unused 8
20 record splits 152 = 2 values
  20 uint32 length 4
  24 int32 colorantIndex 4
  28 float32 reserved 4
  32 float32 lightPeakInput 4
  36 float32 lightEndInput 4
  40 float32 mediumPeakInput 4
  44 float32 mediumEndInput 4
  48 float32 lightPeakAmount 4
  52 float32 mediumPeakAmount 4
  56 float32 darkAmount 4
  60 float32 lightTailAmount 4
  64 float32 lightPeakShape 4
  68 float32 lightEndShape 4
  72 float32 mediumTailAmount 4
  76 float32 mediumStartShape 4
  80 float32 mediumPeakShape 4
  84 float32 mediumEndShape 4
  88 float32 darkStartShape 4
  92 float32 darkEndShape 4
  96 uint32 length 4
  100 int32 colorantIndex 4
  104 float32 reserved 4
  108 float32 lightPeakInput 4
  112 float32 lightEndInput 4
  116 float32 mediumPeakInput 4
  120 float32 mediumEndInput 4
  124 float32 lightPeakAmount 4
  128 float32 mediumPeakAmount 4
  132 float32 darkAmount 4
  136 float32 lightTailAmount 4
  140 float32 lightPeakShape 4
  144 float32 lightEndShape 4
  148 float32 mediumTailAmount 4
  152 float32 mediumStartShape 4
  156 float32 mediumPeakShape 4
  160 float32 mediumEndShape 4
  164 float32 darkStartShape 4
  168 float32 darkEndShape 4
)");
}

TEST(TagSchemas, InkSplitOfVersion3) {
  EXPECT_EQ(LayoutOf("QX50", SplitPayload(3, {5})), R"(0 int32 version 4
4 int32 size 4
8 int32 count 4
12 bytes unused 8
20 record splits 6168 = 1 values
  20 uint32 length 4
  24 int32 colorantIndex 4
  28 float32 light 2048 = 256 x 2
  2076 float32 medium 2048 = 256 x 2
  4124 float32 dark 2048 = 256 x 2
  6172 int32 lightCount 4
  6176 int32 mediumCount 4
  6180 int32 darkCount 4
  6184 int32 interpolation 4
)");
}

TEST(TagSchemas, InkSplitOfVersion4) {
  EXPECT_EQ(LayoutOf("QX50", SplitPayload(4, {5})), R"(0 int32 version 4
4 int32 size 4
8 int32 count 4
12 bytes unused 8
20 record splits 9240 = 1 values
  20 uint32 length 4
  24 int32 colorantIndex 4
  28 float32 light 3072 = 256 x 3
  3100 float32 medium 3072 = 256 x 3
  6172 float32 dark 3072 = 256 x 3
  9244 int32 lightCount 4
  9248 int32 mediumCount 4
  9252 int32 darkCount 4
  9256 int32 interpolation 4
)");
}

TEST(TagSchemas, InkLimits) {
  EXPECT_EQ(SampleLayout("QX51"), R"(0 int32 version 4
4 int32 size 4
8 int32 count 4
12 float64 limits 128 = 16 values
)");
  EXPECT_EQ(SampleLayout("QX52"), R"(0 int32 version 4
4 int32 size 4
8 int32 count 4
12 float64 limits 288 = 36 values
)");
  EXPECT_EQ(SampleLayout("QX68"), R"(0 int32 version 4
4 int32 size 4
8 int32 count 4
12 text name 4
16 float64 limits 16 = 2 values
)");
}

TEST(TagSchemas, ColourParameters) {
  EXPECT_EQ(SampleLayout("QX53"), R"(0 int32 version 4
4 int32 size 4
8 int32 status 4
12 int32 MediaID 4
16 text Make 128
144 text Model 128
272 text MediaName 128
400 int32 ResolutionID 4
404 float32 ResolutionX 4
408 float32 ResolutionY 4
412 int32 ColorMode 4
416 int32 DriverColorMode 4
420 int32 DitherMethod 4
424 int32 PrintMode 4
428 bytes DriverOption 256
684 text reservedText1 128
812 text reservedText2 128
940 text reservedText3 128
)");
}

TEST(TagSchemas, DataLists) {
  for (const char* signature : {"QX54", "QX55", "QX56", "QX57", "QX59", "QX60", "QX72", "QX73"}) {
    EXPECT_EQ(SampleLayout(signature), R"(0 signature DataFormat 4
4 int32 NumOfSamples 4
8 int32 ColorMode 4
12 int32 NumOfColors 4
16 int32 Measured 4
20 int32 hasValues 4
24 float64 values 48 = 2 x 3
)") << signature;
  }
}

TEST(TagSchemas, EmbeddedFilesFlagsAndBlocks) {
  EXPECT_EQ(SampleLayout("QX58"), "0 bytes file 158\n");
  EXPECT_EQ(SampleLayout("QX61"), "0 bytes file 161\n");
  EXPECT_EQ(SampleLayout("QX62"), "0 bytes file 162\n");
  EXPECT_EQ(SampleLayout("QX63"), "0 bytes file 163\n");
  EXPECT_EQ(SampleLayout("QX65"), "0 bytes file 165\n");
  EXPECT_EQ(SampleLayout("QX64"), "0 int32 value 4\n");
  EXPECT_EQ(SampleLayout("QX74"), "0 int32 value 4\n");
  EXPECT_EQ(SampleLayout("QX67"), "0 bytes bytes 64\n");
  EXPECT_EQ(SampleLayout("QX76"), "0 int32 version 4\n4 int32 value 4\n");
}

TEST(TagSchemas, DitherOfEitherLength) {
  EXPECT_EQ(SampleLayout("QX66"), R"(0 int32 type 4
4 int32 size 4
8 bytes unused 8
16 bytes table 4116
)");
  EXPECT_EQ(LayoutOf("QX66", Payload().Int(1).Int(24).Fill(8).Int(4116).Int(7)), R"(0 int32 type 4
4 int32 size 4
8 bytes unused 8
16 bytes table 8
)");
}

TEST(TagSchemas, SpotColourLinks) {
  EXPECT_EQ(SampleLayout("QX69"), R"(0 int32 version 4
4 int32 size 4
8 int32 count 4
12 int32 nameLength 4
16 text name 4
20 int32 linkSizes 8 = 2 values
28 bytes links 5 = 2 blocks
)");
}

TEST(TagSchemas, LinearisationExtraData) {
  EXPECT_EQ(SampleLayout("QX70"), R"(0 int32 version 4
4 text text 129
133 bytes packing 3
136 int32 value 4
140 bytes blockA 144
284 bytes blockB 288
)");
}

TEST(TagSchemas, SidecarAndChromaText) {
  EXPECT_EQ(SampleLayout("QX71"), R"(0 int32 version 4
4 text fileName 128
132 bytes file 17
)");
  EXPECT_EQ(SampleLayout("QX75"), "0 text text 5\n");
}

// What is said of fields.

std::string RolesOf(const char* signature) {
  std::string roles;
  for (const auto fields : AllFields(*FindTagSchema(SigOf(signature)))) {
    for (const FieldSchema& field : fields) {
      switch (field.role) {
        case FieldRole::Data: continue;
        case FieldRole::PayloadSize: roles += std::string("size ") + field.name; break;
        case FieldRole::Count: roles += std::string("count ") + field.name; break;
        case FieldRole::Lengths: roles += std::string("lengths ") + field.name; break;
        case FieldRole::Presence: roles += std::string("presence ") + field.name; break;
      }
      roles += ";";
    }
  }
  return roles;
}

TEST(TagSchemas, SayWhatFollowsFromOtherFields) {
  EXPECT_EQ(RolesOf("QX50"), "size size;count count;size length;size length;size length;");
  EXPECT_EQ(RolesOf("QX68"), "size size;count count;");
  EXPECT_EQ(RolesOf("QX69"), "size size;count count;count nameLength;lengths linkSizes;");
  EXPECT_EQ(RolesOf("QX66"), "size size;");
  EXPECT_EQ(RolesOf("QX53"), "size size;");
  EXPECT_EQ(RolesOf("QX76"), "");
  // How many samples and colours there are is data of a list without values.
  EXPECT_NE(RolesOf("QX54").find("presence hasValues;"), std::string::npos);
}

TEST(TagSchemas, SayWhatADocumentAloneShows) {
  const auto& fields = FindTagSchema(QX53)->fields;
  for (const char* name : {"reservedText1", "reservedText2", "reservedText3"}) {
    EXPECT_TRUE(FindField(fields, name)->reserved) << name;
  }
  EXPECT_FALSE(FindField(fields, "Make")->reserved);
  EXPECT_TRUE(FindField(fields, "size")->frames);
  EXPECT_FALSE(FindField(fields, "status")->frames);
  EXPECT_STREQ(FindField(fields, "ResolutionX")->unit, "dpi");
  EXPECT_STREQ(FindField(FindTagSchema(QX51)->fields, "limits")->unit, "%");
  EXPECT_TRUE(FindField(FindTagSchema(QX75)->fields, "text")->terminated);
  EXPECT_FALSE(FindField(FindTagSchema(QX68)->fields, "name")->terminated);
}

TEST(TagSchemas, KnowTheLengthsOfValues) {
  EXPECT_EQ(vkcl::SizeOf(FieldType::Int32), 4u);
  EXPECT_EQ(vkcl::SizeOf(FieldType::UInt32), 4u);
  EXPECT_EQ(vkcl::SizeOf(FieldType::Float32), 4u);
  EXPECT_EQ(vkcl::SizeOf(FieldType::Float64), 8u);
  EXPECT_EQ(vkcl::SizeOf(FieldType::Signature), 4u);
  EXPECT_EQ(vkcl::SizeOf(FieldType::Text), 1u);
  EXPECT_EQ(vkcl::SizeOf(FieldType::Bytes), 1u);
  EXPECT_EQ(vkcl::SizeOf(FieldType::Record), 0u);
}

}  // namespace
