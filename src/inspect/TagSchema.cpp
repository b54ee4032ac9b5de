#include "inspect/TagSchema.h"

#include <algorithm>

namespace vkcl {
namespace {

constexpr const char* kPercent = "%";
constexpr const char* kDotsPerInch = "dpi";
/// Inks and curves of a split run from 0 to 1.
constexpr const char* kPart = "0 to 1";

constexpr Amount Count(std::uint32_t number) { return {Amount::Kind::Constant, number, nullptr}; }
constexpr Amount CountIn(const char* field) { return {Amount::Kind::Field, 0, field}; }
constexpr Amount kRest = {Amount::Kind::Rest, 0, nullptr};

constexpr FieldSchema Int(const char* name, const char* meaning) {
  return {.name = name, .type = FieldType::Int32, .meaning = meaning};
}

constexpr FieldSchema Float(const char* name, const char* unit, const char* meaning) {
  return {.name = name, .type = FieldType::Float32, .unit = unit, .meaning = meaning};
}

constexpr FieldSchema Text(const char* name, std::uint32_t width, const char* meaning) {
  return {.name = name, .type = FieldType::Text, .amount = Count(width), .meaning = meaning};
}

constexpr FieldSchema Block(const char* name, std::uint32_t length, const char* meaning) {
  return {.name = name, .type = FieldType::Bytes, .amount = Count(length), .meaning = meaning};
}

constexpr FieldSchema Reserved(FieldSchema field) {
  field.reserved = true;
  return field;
}

constexpr FieldSchema Framing(const char* name, FieldRole role, const char* meaning) {
  return {.name = name, .type = FieldType::Int32, .role = role, .frames = true, .meaning = meaning};
}

constexpr FieldSchema kVersion = Framing("version", FieldRole::Data, "version of the record");
constexpr FieldSchema kSize =
    Framing("size", FieldRole::PayloadSize, "length of the payload in bytes");

constexpr FieldSchema Counter(const char* name, const char* meaning) {
  return Framing(name, FieldRole::Count, meaning);
}

constexpr FieldSchema Limits(Amount amount) {
  return {.name = "limits",
          .type = FieldType::Float64,
          .shape = FieldShape::List,
          .amount = amount,
          .unit = kPercent,
          .meaning = "ink limits"};
}

// QX50

constexpr FieldSchema kRecordLength = {.name = "length",
                                       .type = FieldType::UInt32,
                                       .role = FieldRole::PayloadSize,
                                       .frames = true,
                                       .meaning = "length of this record in bytes"};
constexpr FieldSchema kColorant = Int("colorantIndex", "colorant that is split; -1 for none");

constexpr FieldSchema kSplitV2[] = {
    kRecordLength,
    kColorant,
    Reserved(Float("reserved", "", "without meaning")),
    Float("lightPeakInput", kPart, "input at which the light ink peaks"),
    Float("lightEndInput", kPart, "input at which the light ink is back at 0"),
    Float("mediumPeakInput", kPart, "input at which the medium ink peaks"),
    Float("mediumEndInput", kPart, "input at which the medium ink is back at 0"),
    Float("lightPeakAmount", kPart, "amount of the light ink at its peak"),
    Float("mediumPeakAmount", kPart, "amount of the medium ink at its peak"),
    Float("darkAmount", kPart, "amount of the dark ink where the last lighter ink ends"),
    Float("lightTailAmount", kPart, "light ink kept up to the top; 0 for none"),
    Float("lightPeakShape", "", "shape of the light curve at its peak"),
    Float("lightEndShape", "", "shape of the light curve at its end"),
    Float("mediumTailAmount", kPart, "medium ink kept up to the top; 0 for none"),
    Float("mediumStartShape", "", "shape of the medium curve at its start"),
    Float("mediumPeakShape", "", "shape of the medium curve at its peak"),
    Float("mediumEndShape", "", "shape of the medium curve at its end"),
    Float("darkStartShape", "", "shape of the dark curve at its start"),
    Float("darkEndShape", "", "shape of the dark curve at its end"),
};

constexpr FieldSchema Curve(const char* name, const char* used, std::uint32_t columns,
                            const char* meaning) {
  return {.name = name,
          .type = FieldType::Float32,
          .shape = FieldShape::Rows,
          .amount = Count(256),
          .columns = Count(columns),
          .used = used,
          .unit = kPart,
          .meaning = meaning};
}

constexpr FieldSchema kLightCount = Int("lightCount", "points used of the light curve");
constexpr FieldSchema kMediumCount = Int("mediumCount", "points used of the medium curve");
constexpr FieldSchema kDarkCount = Int("darkCount", "points used of the dark curve");
constexpr FieldSchema kInterpolation = Int("interpolation", "kind of interpolation");

constexpr FieldSchema kSplitV3[] = {
    kRecordLength,
    kColorant,
    Curve("light", "lightCount", 2, "points of the light curve: input, amount"),
    Curve("medium", "mediumCount", 2, "points of the medium curve: input, amount"),
    Curve("dark", "darkCount", 2, "points of the dark curve: input, amount"),
    kLightCount,
    kMediumCount,
    kDarkCount,
    kInterpolation,
};

constexpr FieldSchema kSplitV4[] = {
    kRecordLength,
    kColorant,
    Curve("light", "lightCount", 3, "points of the light curve: input, amount, shape"),
    Curve("medium", "mediumCount", 3, "points of the medium curve: input, amount, shape"),
    Curve("dark", "darkCount", 3, "points of the dark curve: input, amount, shape"),
    kLightCount,
    kMediumCount,
    kDarkCount,
    kInterpolation,
};

constexpr RecordForm kSplitForms[] = {{2, kSplitV2}, {3, kSplitV3}, {4, kSplitV4}};

constexpr FieldSchema kSplit[] = {
    kVersion,
    kSize,
    Counter("count", "number of records"),
    Reserved(Block("unused", 8, "without meaning; older writers left a reference of their memory")),
    {.name = "splits",
     .type = FieldType::Record,
     .shape = FieldShape::List,
     .amount = CountIn("count"),
     .meaning = "one record for each split colorant"},
};

// The fixed records

constexpr FieldSchema kFixedCount = Framing("count", FieldRole::Data, "number of limits");

constexpr FieldSchema kSingleLimits[] = {kVersion, kSize, kFixedCount, Limits(Count(16))};
constexpr FieldSchema kMultiLimits[] = {kVersion, kSize, kFixedCount, Limits(Count(36))};

constexpr FieldSchema kColorParam[] = {
    kVersion,
    kSize,
    Int("status", "workflow state; 9 to 13 carry the lock state"),
    Int("MediaID", "number of the medium"),
    Text("Make", 128, "make of the printer"),
    Text("Model", 128, "model of the printer"),
    Text("MediaName", 128, "name of the medium"),
    Int("ResolutionID", "number of the resolution"),
    Float("ResolutionX", kDotsPerInch, "horizontal resolution"),
    Float("ResolutionY", kDotsPerInch, "vertical resolution"),
    Int("ColorMode", "colour mode of the ink set"),
    Int("DriverColorMode", "colour mode of the driver"),
    Int("DitherMethod", "number of the dither method"),
    Int("PrintMode", "number of the print mode"),
    Block("DriverOption", 256, "settings of the driver, opaque"),
    Reserved(Text("reservedText1", 128, "carried unchanged")),
    Reserved(Text("reservedText2", 128, "carried unchanged")),
    Reserved(Text("reservedText3", 128, "carried unchanged")),
};

constexpr FieldSchema kFlag[] = {Int("value", "the flag")};

constexpr FieldSchema kDither[] = {
    Framing("type", FieldRole::Data, "1 is the only type that has a table"),
    kSize,
    Reserved(Block("unused", 8, "without meaning")),
    {.name = "table",
     .type = FieldType::Bytes,
     .amount = kRest,
     .meaning = "the dither table: its length (uint32), and the table, opaque"},
};

constexpr FieldSchema kCompatibility[] = {Block("bytes", 64, "block of the host, opaque")};

constexpr FieldSchema kLinExtra[] = {
    kVersion,
    Text("text", 129, "text of the linearisation"),
    Reserved(Block("packing", 3, "without meaning")),
    Int("value", "number of the linearisation"),
    Block("blockA", 144, "opaque"),
    Block("blockB", 288, "opaque"),
};

constexpr FieldSchema kExtra[] = {kVersion, Int("value", "number of the host")};

constexpr FieldSchema kChroma[] = {
    {.name = "text",
     .type = FieldType::Text,
     .amount = kRest,
     .terminated = true,
     .meaning = "the text, and its terminating zero"},
};

// Lists, files, spot colours

constexpr FieldSchema kList[] = {
    {.name = "DataFormat",
     .type = FieldType::Signature,
     .meaning = "colour space of the values, or 'refl' for reflectances"},
    Counter("NumOfSamples", "number of samples"),
    Int("ColorMode", "colour mode of the device values"),
    Counter("NumOfColors", "values of a sample"),
    Int("Measured", "samples that hold measured values"),
    Framing("hasValues", FieldRole::Presence, "not 0 when the values follow"),
    {.name = "values",
     .type = FieldType::Float64,
     .shape = FieldShape::Rows,
     .amount = CountIn("NumOfSamples"),
     .columns = CountIn("NumOfColors"),
     .presence = "hasValues",
     .meaning = "the values, a row for each sample"},
};

constexpr FieldSchema kFile[] = {
    {.name = "file", .type = FieldType::Bytes, .amount = kRest, .meaning = "the file"},
};

constexpr FieldSchema kSidecar[] = {
    kVersion,
    Text("fileName", 128, "name of the file; not terminated when it fills the field"),
    {.name = "file", .type = FieldType::Bytes, .amount = kRest, .meaning = "the file"},
};

constexpr FieldSchema kSpotLimits[] = {
    kVersion,
    kSize,
    Counter("count", "number of limits"),
    {.name = "name",
     .type = FieldType::Text,
     .amount = kRest,
     .meaning = "name of the spot colour, without terminator"},
    Limits(CountIn("count")),
};

constexpr FieldSchema kSpotLinks[] = {
    kVersion,
    kSize,
    Counter("count", "number of links"),
    Counter("nameLength", "length of the name in bytes"),
    {.name = "name",
     .type = FieldType::Text,
     .amount = CountIn("nameLength"),
     .meaning = "name of the spot colour, without terminator"},
    {.name = "linkSizes",
     .type = FieldType::Int32,
     .shape = FieldShape::List,
     .amount = CountIn("count"),
     .role = FieldRole::Lengths,
     .frames = true,
     .meaning = "lengths of the links in bytes"},
    {.name = "links",
     .type = FieldType::Bytes,
     .shape = FieldShape::Blocks,
     .amount = CountIn("linkSizes"),
     .meaning = "device links of 8 bits (ICC profiles of class 'link')"},
};

constexpr TagSchema kTags[] = {
    {QX50, "Split", "ink split", kSplit, kSplitForms},
    {QX51, "SingleInkLimit", "single ink limits", kSingleLimits},
    {QX52, "MultiInkLimit", "multiple ink limits", kMultiLimits},
    {QX53, "ColorParam", "colour parameters", kColorParam},
    {QX54, "LinMeasurement", "linearisation measurement", kList},
    {QX55, "LinReference", "linearisation reference", kList},
    {QX56, "GrayMeasurement", "gray-balance measurement", kList},
    {QX57, "GrayReference", "gray-balance reference", kList},
    {QX58, "TRCFile", "embedded file 0 (TRC)", kFile},
    {QX59, "CharMeasurement", "characterisation measurement", kList},
    {QX60, "CharReference", "characterisation reference", kList},
    {QX61, "File1", "embedded file 1", kFile},
    {QX62, "File2", "embedded file 2", kFile},
    {QX63, "File3", "embedded file 3", kFile},
    {QX64, "CMStoDither", "colour management to dither", kFlag},
    {QX65, "File4", "embedded file 4", kFile},
    {QX66, "Dither", "dither", kDither},
    {QX67, "Compatibility", "compatibility block", kCompatibility},
    {QX68, "SpotInkLimit", "spot-colour ink limits", kSpotLimits},
    {QX69, "SpotLinLinks", "spot-colour linearisation links", kSpotLinks},
    {QX70, "LinExtraData", "linearisation extra data", kLinExtra},
    {QX71, "VSDFile", "VSD sidecar file", kSidecar},
    {QX72, "LinReference2", "linearisation reference, second form", kList},
    {QX73, "LinOutput", "linearisation output", kList},
    {QX74, "Wizard", "wizard flag", kFlag},
    {QX75, "ChromaAdjust", "chroma adjustment", kChroma},
    {QX76, "ProfileExtra", "extra parameters", kExtra},
};

}  // namespace

std::span<const TagSchema> TagSchemas() { return kTags; }

const TagSchema* FindTagSchema(std::uint32_t signature) {
  const auto* found = std::find_if(std::begin(kTags), std::end(kTags), [&](const TagSchema& tag) {
    return static_cast<std::uint32_t>(tag.signature) == signature;
  });
  return found == std::end(kTags) ? nullptr : found;
}

const FieldSchema* FindField(std::span<const FieldSchema> fields, std::string_view name) {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const FieldSchema& field) { return field.name == name; });
  return found == fields.end() ? nullptr : &*found;
}

}  // namespace vkcl
