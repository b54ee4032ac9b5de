#include "Records.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "Text.h"

namespace vkcl::tool {
namespace {

constexpr Field Int(const char* name, std::size_t offset, bool settable = true) {
  return {name, FieldKind::Int32, offset, 4, 1, settable};
}
constexpr Field Text(const char* name, std::size_t offset, std::size_t width = 128) {
  return {name, FieldKind::Text, offset, width, 1, true};
}

constexpr bool kShownOnly = false;

constexpr Field kColorFields[] = {
    Int("version", offsetof(VKColorParam, version), kShownOnly),
    Int("size", offsetof(VKColorParam, size), kShownOnly),
    Int("status", offsetof(VKColorParam, status)),
    Int("MediaID", offsetof(VKColorParam, MediaID)),
    Text("Make", offsetof(VKColorParam, Make)),
    Text("Model", offsetof(VKColorParam, Model)),
    Text("MediaName", offsetof(VKColorParam, MediaName)),
    Int("ResolutionID", offsetof(VKColorParam, ResolutionID)),
    {"ResolutionX", FieldKind::Float32, offsetof(VKColorParam, ResolutionX), 4, 1, true},
    {"ResolutionY", FieldKind::Float32, offsetof(VKColorParam, ResolutionY), 4, 1, true},
    Int("ColorMode", offsetof(VKColorParam, ColorMode)),
    Int("DriverColorMode", offsetof(VKColorParam, DriverColorMode)),
    Int("DitherMethod", offsetof(VKColorParam, DitherMethod)),
    Int("PrintMode", offsetof(VKColorParam, PrintMode)),
    {"DriverOption", FieldKind::Hex, offsetof(VKColorParam, DriverOption), 256, 1, true},
};

constexpr Field kSingleLimitFields[] = {
    Int("version", 0, kShownOnly),
    Int("size", 4, kShownOnly),
    Int("count", 8, kShownOnly),
    {"limits", FieldKind::Float64, offsetof(VKSingleInkLimitWithLinRef, limits), 8, 16, true},
};

// The version is not settable: storing the record decides it.
constexpr Field kMultiLimitFields[] = {
    Int("version", 0, kShownOnly),
    Int("size", 4, kShownOnly),
    Int("count", 8, kShownOnly),
    {"limits", FieldKind::Float64, offsetof(VKMultiInklimit, limits), 8, 36, true},
};

constexpr Field kFlagFields[] = {Int("value", 0)};

constexpr Field kCompatibilityFields[] = {{"bytes", FieldKind::Hex, 0, 64, 1, true}};

constexpr Field kLinExtraFields[] = {
    Int("version", 0, kShownOnly),
    Text("text", offsetof(VKLinExtraDataParam, text), 129),
    Int("value", offsetof(VKLinExtraDataParam, value)),
    {"blockA", FieldKind::Hex, offsetof(VKLinExtraDataParam, blockA), 144, 1, true},
    {"blockB", FieldKind::Hex, offsetof(VKLinExtraDataParam, blockB), 288, 1, true},
};

constexpr Field kExtraFields[] = {Int("version", 0, kShownOnly), Int("value", 4)};

// The text of any length is shown and set by itself; the length here bounds what a caller types.
constexpr std::size_t kLongestChromaText = 65536;
constexpr Field kChromaFields[] = {Text("text", 0, kLongestChromaText)};

template <class Record>
Image ImageOf(const Record& record) {
  Image image(sizeof record);
  std::memcpy(image.data(), &record, sizeof record);
  return image;
}

template <class Record>
Record RecordOf(const Image& image) {
  Record record{};
  std::memcpy(static_cast<void*>(&record), image.data(), sizeof record);
  return record;
}

template <class Record>
Image MakeDefault() {
  return ImageOf(Record());
}

// Adapters between images and the handler's operations.
template <class Record, int (VKCLProfileHandler::*Get)(Record&) const>
int GetImage(const VKCLProfileHandler& handler, Image& image) {
  Record record;
  const int read = (handler.*Get)(record);
  if (read != 0) image = ImageOf(record);
  return read;
}

template <class Record, int (VKCLProfileHandler::*Put)(const Record&)>
int PutImage(VKCLProfileHandler& handler, const Image& image) {
  return (handler.*Put)(RecordOf<Record>(image));
}

int GetMulti(const VKCLProfileHandler& handler, Image& image) {
  VKMultiInklimit record;
  if (handler.GetVKMultiInklimit(record, 0) == 0) return 0;
  image = ImageOf(record);
  return 1;
}

int PutMulti(VKCLProfileHandler& handler, const Image& image) {
  auto record = RecordOf<VKMultiInklimit>(image);
  return handler.WriteMultipleInkLimitTag(record);
}

template <int (VKCLProfileHandler::*Get)() const>
int GetFlag(const VKCLProfileHandler& handler, Image& image) {
  image = ImageOf((handler.*Get)());
  return 1;
}

int PutDitherFlag(VKCLProfileHandler& handler, const Image& image) {
  return handler.WriteVKCMStoDither(RecordOf<int>(image));
}

int PutWizardFlag(VKCLProfileHandler& handler, const Image& image) {
  return handler.WriteVKWizardFlag(RecordOf<int>(image));
}

Image MakeText() { return Image(kLongestChromaText); }

int GetChroma(const VKCLProfileHandler& handler, Image& image) {
  AString text;
  if (handler.GetVKChromaAdjust(text) == 0) return 0;
  image.assign(std::max(kLongestChromaText, text.length() + 1), '\0');
  std::memcpy(image.data(), text.c_str(), text.length());
  return 1;
}

int PutChroma(VKCLProfileHandler& handler, const Image& image) {
  const std::string_view text = FieldText(image.data(), image.size());
  return handler.WriteVKChromaAdjust(AString(text.data(), text.size()));
}

using Handler = VKCLProfileHandler;

constexpr bool kAsImage = false;
constexpr bool kAsText = true;

const RecordType kRecordTypes[] = {
    {"SingleInkLimit", "single ink limits", QX51, kAsImage, kSingleLimitFields,
     MakeDefault<VKSingleInkLimitWithLinRef>,
     GetImage<VKSingleInkLimitWithLinRef, &Handler::GetVKSingleInkLimitWithLinRef>,
     PutImage<VKSingleInkLimitWithLinRef, &Handler::WriteSILWithLinTag>},
    {"MultiInkLimit", "multiple ink limits", QX52, kAsImage, kMultiLimitFields,
     MakeDefault<VKMultiInklimit>, GetMulti, PutMulti},
    {"ColorParam", "colour parameters", QX53, kAsImage, kColorFields, MakeDefault<VKColorParam>,
     GetImage<VKColorParam, &Handler::GetVKColorParam>,
     PutImage<VKColorParam, &Handler::WriteVKColorParamTag>},
    {"CMStoDither", "colour management to dither", QX64, kAsImage, kFlagFields, MakeDefault<int>,
     GetFlag<&Handler::IsCMStoDither>, PutDitherFlag},
    {"Compatibility", "compatibility block", QX67, kAsImage, kCompatibilityFields,
     MakeDefault<VKCompatibilityParam>,
     GetImage<VKCompatibilityParam, &Handler::GetVKCompatibilityParam>,
     PutImage<VKCompatibilityParam, &Handler::WriteVKCompatibilityParam>},
    {"LinExtraData", "linearisation extra data", QX70, kAsImage, kLinExtraFields,
     MakeDefault<VKLinExtraDataParam>, GetImage<VKLinExtraDataParam, &Handler::GetVKLinExtraData>,
     PutImage<VKLinExtraDataParam, &Handler::WriteVKLinExtraData>},
    {"Wizard", "wizard flag", QX74, kAsImage, kFlagFields, MakeDefault<int>,
     GetFlag<&Handler::IsWizardICC>, PutWizardFlag},
    {"ChromaAdjust", "chroma adjustment", QX75, kAsText, kChromaFields, MakeText, GetChroma,
     PutChroma},
    {"ProfileExtra", "extra parameters", QX76, kAsImage, kExtraFields,
     MakeDefault<VKProfileExtraParam>,
     GetImage<VKProfileExtraParam, &Handler::GetVKProfileExtraParam>,
     PutImage<VKProfileExtraParam, &Handler::WriteVKProfileExtraParam>},
};

template <class Number>
Number Load(const Image& image, std::size_t offset) {
  Number number{};
  std::memcpy(&number, image.data() + offset, sizeof number);
  return number;
}

nlohmann::ordered_json ElementValue(const Field& field, const Image& image, std::size_t offset) {
  switch (field.kind) {
    case FieldKind::Int32: return Load<std::int32_t>(image, offset);
    case FieldKind::Float32: return RealValue(Load<float>(image, offset));
    case FieldKind::Float64: return RealValue(Load<double>(image, offset));
    case FieldKind::Text:
      return Utf8(FieldText(image.data() + offset, std::min(field.length, image.size() - offset)));
    case FieldKind::Hex: break;
  }
  return HexText(reinterpret_cast<const unsigned char*>(image.data()) + offset, field.length);
}

bool ParseInt(const std::string& text, std::int32_t& number) {
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  const char* first = text.data() + (hex ? 2 : 0);
  const char* last = text.data() + text.size();
  std::uint32_t bits = 0;
  const auto result =
      hex ? std::from_chars(first, last, bits, 16) : std::from_chars(first, last, number);
  if (hex) number = static_cast<std::int32_t>(bits);
  return result.ec == std::errc() && result.ptr == last && first != last;
}

template <class Number>
bool ParseReal(const std::string& text, Number& number) {
  const char* last = text.data() + text.size();
  const auto result = std::from_chars(text.data(), last, number);
  return result.ec == std::errc() && result.ptr == last && std::isfinite(number);
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

std::string SetHex(const Field& field, const std::string& text, char* place) {
  if (text.size() != 2 * field.length) {
    return fmt::format("takes {} hexadecimal digits, not {}", 2 * field.length, text.size());
  }
  Image bytes(field.length);
  for (std::size_t i = 0; i < field.length; ++i) {
    const int high = HexDigit(text[2 * i]);
    const int low = HexDigit(text[2 * i + 1]);
    if (high < 0 || low < 0) return "takes hexadecimal digits only";
    bytes[i] = static_cast<char>(high << 4 | low);
  }
  std::memcpy(place, bytes.data(), bytes.size());
  return {};
}

std::string SetElement(const Field& field, const std::string& text, char* place) {
  std::int32_t whole = 0;
  float single = 0;
  double real = 0;
  switch (field.kind) {
    case FieldKind::Int32:
      if (!ParseInt(text, whole)) return "takes a whole number of 32 bits";
      std::memcpy(place, &whole, sizeof whole);
      return {};
    case FieldKind::Float32:
      if (!ParseReal(text, single)) return "takes a number";
      std::memcpy(place, &single, sizeof single);
      return {};
    case FieldKind::Float64:
      if (!ParseReal(text, real)) return "takes a number";
      std::memcpy(place, &real, sizeof real);
      return {};
    case FieldKind::Text:
      if (text.size() >= field.length) {
        return fmt::format("takes at most {} bytes of text", field.length - 1);
      }
      std::memset(place, 0, field.length);
      std::memcpy(place, text.data(), text.size());
      return {};
    case FieldKind::Hex: break;
  }
  return SetHex(field, text, place);
}

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t comma = text.find(','); comma != std::string::npos;
       comma = text.find(',', start)) {
    parts.push_back(text.substr(start, comma - start));
    start = comma + 1;
  }
  parts.push_back(text.substr(start));
  return parts;
}

}  // namespace

std::span<const RecordType> RecordTypes() { return kRecordTypes; }

const RecordType* FindRecord(const std::string& name) {
  for (const RecordType& record : kRecordTypes) {
    if (record.name == name) return &record;
  }
  return nullptr;
}

const RecordType* FindRecord(VKPrivateTagSignature signature) {
  for (const RecordType& record : kRecordTypes) {
    if (record.signature == signature) return &record;
  }
  return nullptr;
}

const Field* FindField(const RecordType& record, const std::string& name) {
  for (const Field& field : record.fields) {
    if (field.name == name) return &field;
  }
  return nullptr;
}

nlohmann::ordered_json RealValue(double number) {
  if (!std::isfinite(number)) return NumberText(number);
  return nlohmann::ordered_json::parse(NumberText(number));
}

nlohmann::ordered_json RealValue(float number) {
  if (!std::isfinite(number)) return NumberText(number);
  return nlohmann::ordered_json::parse(NumberText(number));
}

nlohmann::ordered_json FieldValue(const Field& field, const Image& image) {
  if (field.elements == 1) return ElementValue(field, image, field.offset);
  nlohmann::ordered_json values = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < field.elements; ++i) {
    values.push_back(ElementValue(field, image, field.offset + i * field.length));
  }
  return values;
}

std::string SetField(const Field& field, int index, const std::string& text, Image& image) {
  if (!field.settable) return "is not set by hand";
  char* place = image.data() + field.offset;
  if (field.elements == 1) {
    if (index >= 0) return "is no list";
    return SetElement(field, text, place);
  }
  if (index >= 0) {
    if (static_cast<std::size_t>(index) >= field.elements) {
      return fmt::format("has the elements 0 to {}", field.elements - 1);
    }
    return SetElement(field, text, place + static_cast<std::size_t>(index) * field.length);
  }
  const std::vector<std::string> parts = SplitAtCommas(text);
  if (parts.size() > field.elements) {
    return fmt::format("takes at most {} numbers, not {}", field.elements, parts.size());
  }
  Image changed = image;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    std::string why = SetElement(field, parts[i], changed.data() + field.offset + i * field.length);
    if (!why.empty()) return why;
  }
  image = std::move(changed);
  return {};
}

}  // namespace vkcl::tool
