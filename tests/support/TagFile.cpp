#include "support/TagFile.h"

#include <bit>

namespace vkcl::testing {
namespace {

constexpr std::size_t kDataHead = 12;  // type, reserved word and flag of a 'data' element

std::string TextAt(const Bytes& bytes, std::size_t at) {
  const Bytes four = Slice(bytes, at, 4);
  return {four.begin(), four.end()};
}

void SetText(Bytes& bytes, std::size_t at, const std::string& text) {
  for (std::size_t i = 0; i < 4; ++i) bytes.at(at + i) = static_cast<unsigned char>(text.at(i));
}

std::uint32_t SignatureOf(const std::string& text) {
  Bytes four(4);
  SetText(four, 0, text);
  return Big32At(four, 0);
}

}  // namespace

Payload& Payload::Little(std::uint64_t value, int width) {
  for (int i = 0; i < width; ++i) {
    bytes_.push_back(static_cast<unsigned char>(value >> (8 * i) & 0xFF));
  }
  return *this;
}

Payload& Payload::Int(std::int32_t value) { return Little(std::bit_cast<std::uint32_t>(value), 4); }
Payload& Payload::Float(float value) { return Little(std::bit_cast<std::uint32_t>(value), 4); }
Payload& Payload::Double(double value) { return Little(std::bit_cast<std::uint64_t>(value), 8); }

Payload& Payload::Text(std::string_view text) {
  for (const char c : text) bytes_.push_back(static_cast<unsigned char>(c));
  return *this;
}

Payload& Payload::Field(std::string_view text, std::size_t width) {
  EXPECT_LE(text.size(), width);
  return Text(text).Fill(width - text.size());
}

Payload& Payload::Fill(std::size_t count, unsigned char value) {
  bytes_.insert(bytes_.end(), count, value);
  return *this;
}

Payload& Payload::Raw(const Bytes& bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

Payload& Payload::HexDigits(const std::string& digits, std::size_t times) {
  const Bytes bytes = HexBytes(digits);
  for (std::size_t i = 0; i < times; ++i) Raw(bytes);
  return *this;
}

Bytes ProfileFile(const std::vector<FileTag>& tags, const FileHead& head) {
  Bytes header = ProfileHeader(SignatureOf(head.deviceClass), SignatureOf(head.colorSpace));
  SetText(header, 20, head.pcs);
  std::vector<ImageTag> elements;
  for (const FileTag& tag : tags) {
    Bytes element = DataTag(tag.payload);
    SetText(element, 0, tag.type);
    elements.push_back({SignatureOf(tag.signature), element});
  }
  return ProfileImage(header, elements);
}

std::vector<FileTag> TagsOf(const Bytes& file) {
  std::vector<FileTag> tags;
  for (std::size_t i = 0; const ImageEntry& entry : TableOf(file)) {
    if (entry.size < kDataHead || std::uint64_t{entry.offset} + entry.size > file.size()) {
      ADD_FAILURE() << "entry " << i << " leads out of the file";
      return tags;
    }
    tags.emplace_back(TextAt(file, 132 + 12 * i),
                      Slice(file, entry.offset + kDataHead, entry.size - kDataHead),
                      TextAt(file, entry.offset));
    ++i;
  }
  return tags;
}

std::vector<std::string> SignaturesOf(const Bytes& file) {
  std::vector<std::string> signatures;
  for (const FileTag& tag : TagsOf(file)) signatures.push_back(tag.signature);
  return signatures;
}

std::optional<Bytes> PayloadOf(const Bytes& file, const std::string& signature) {
  for (const FileTag& tag : TagsOf(file)) {
    if (tag.signature == signature) return tag.payload;
  }
  return std::nullopt;
}

}  // namespace vkcl::testing
