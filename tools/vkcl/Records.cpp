#include "Records.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "Text.h"

namespace vkcl::tool {
namespace {

// The text of any length is shown and set by itself; the length here bounds what a caller types.
constexpr std::size_t kLongestChromaText = 65536;

Field FieldOf(const FieldSchema& schema, std::size_t offset) {
  const bool isBlock = schema.type == FieldType::Text || schema.type == FieldType::Bytes;
  const bool isFixed = schema.amount.kind == Amount::Kind::Constant;
  const std::size_t amount = isFixed ? schema.amount.number : kLongestChromaText;
  return {schema.name,
          schema.type,
          offset,
          isBlock ? amount : SizeOf(schema.type),
          schema.shape == FieldShape::List ? amount : 1,
          !schema.frames};
}

// The fields of a fixed record that are shown and set by name.
std::vector<Field> FieldsOf(const TagSchema& tag) {
  std::vector<Field> fields;
  std::size_t offset = 0;
  for (const FieldSchema& schema : tag.fields) {
    const Field field = FieldOf(schema, offset);
    if (!schema.reserved) fields.push_back(field);
    offset += field.length * field.elements;
  }
  return fields;
}

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

// What the schema does not say of a record: how it goes through the handler.
struct Access {
  VKPrivateTagSignature signature;
  bool isText;
  Image (*make)();
  int (*get)(const VKCLProfileHandler& handler, Image& image);
  int (*put)(VKCLProfileHandler& handler, const Image& image);
};

constexpr Access kAccess[] = {
    {QX51, kAsImage, MakeDefault<VKSingleInkLimitWithLinRef>,
     GetImage<VKSingleInkLimitWithLinRef, &Handler::GetVKSingleInkLimitWithLinRef>,
     PutImage<VKSingleInkLimitWithLinRef, &Handler::WriteSILWithLinTag>},
    {QX52, kAsImage, MakeDefault<VKMultiInklimit>, GetMulti, PutMulti},
    {QX53, kAsImage, MakeDefault<VKColorParam>, GetImage<VKColorParam, &Handler::GetVKColorParam>,
     PutImage<VKColorParam, &Handler::WriteVKColorParamTag>},
    {QX64, kAsImage, MakeDefault<int>, GetFlag<&Handler::IsCMStoDither>, PutDitherFlag},
    {QX67, kAsImage, MakeDefault<VKCompatibilityParam>,
     GetImage<VKCompatibilityParam, &Handler::GetVKCompatibilityParam>,
     PutImage<VKCompatibilityParam, &Handler::WriteVKCompatibilityParam>},
    {QX70, kAsImage, MakeDefault<VKLinExtraDataParam>,
     GetImage<VKLinExtraDataParam, &Handler::GetVKLinExtraData>,
     PutImage<VKLinExtraDataParam, &Handler::WriteVKLinExtraData>},
    {QX74, kAsImage, MakeDefault<int>, GetFlag<&Handler::IsWizardICC>, PutWizardFlag},
    {QX75, kAsText, MakeText, GetChroma, PutChroma},
    {QX76, kAsImage, MakeDefault<VKProfileExtraParam>,
     GetImage<VKProfileExtraParam, &Handler::GetVKProfileExtraParam>,
     PutImage<VKProfileExtraParam, &Handler::WriteVKProfileExtraParam>},
};

std::vector<RecordType> MakeRecordTypes() {
  std::vector<RecordType> types;
  for (const Access& access : kAccess) {
    const TagSchema& tag = *FindTagSchema(access.signature);
    types.push_back({tag.name, tag.title, tag.signature, access.isText, FieldsOf(tag), access.make,
                     access.get, access.put});
  }
  return types;
}

template <class Number>
Number Load(const Image& image, std::size_t offset) {
  Number number{};
  std::memcpy(&number, image.data() + offset, sizeof number);
  return number;
}

nlohmann::ordered_json ElementValue(const Field& field, const Image& image, std::size_t offset) {
  switch (field.kind) {
    case FieldType::Int32: return Load<std::int32_t>(image, offset);
    case FieldType::Float32: return RealValue(Load<float>(image, offset));
    case FieldType::Float64: return RealValue(Load<double>(image, offset));
    case FieldType::Text:
      return Utf8(FieldText(image.data() + offset, std::min(field.length, image.size() - offset)));
    default: break;
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
    case FieldType::Int32:
      if (!ParseInt(text, whole)) return "takes a whole number of 32 bits";
      std::memcpy(place, &whole, sizeof whole);
      return {};
    case FieldType::Float32:
      if (!ParseReal(text, single)) return "takes a number";
      std::memcpy(place, &single, sizeof single);
      return {};
    case FieldType::Float64:
      if (!ParseReal(text, real)) return "takes a number";
      std::memcpy(place, &real, sizeof real);
      return {};
    case FieldType::Text:
      if (text.size() >= field.length) {
        return fmt::format("takes at most {} bytes of text", field.length - 1);
      }
      std::memset(place, 0, field.length);
      std::memcpy(place, text.data(), text.size());
      return {};
    default: break;
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

std::span<const RecordType> RecordTypes() {
  static const std::vector<RecordType> types = MakeRecordTypes();
  return types;
}

const RecordType* FindRecord(const std::string& name) {
  for (const RecordType& record : RecordTypes()) {
    if (record.name == name) return &record;
  }
  return nullptr;
}

const RecordType* FindRecord(VKPrivateTagSignature signature) {
  for (const RecordType& record : RecordTypes()) {
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
