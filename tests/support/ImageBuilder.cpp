#include "support/ImageBuilder.h"

#include <stdexcept>

#include <algorithm>
#include <iomanip>
#include <ostream>

namespace vkcl::testing {

namespace {

void Add(Bytes& to, const Bytes& what) { to.insert(to.end(), what.begin(), what.end()); }

Bytes Padded(Bytes data) {
  while (data.size() % 4 != 0) data.push_back(0);
  return data;
}

unsigned DigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<unsigned>(digit - '0');
  if (digit >= 'a' && digit <= 'f') return static_cast<unsigned>(digit - 'a') + 10;
  if (digit >= 'A' && digit <= 'F') return static_cast<unsigned>(digit - 'A') + 10;
  throw std::invalid_argument("no hexadecimal digit");
}

}  // namespace

Bytes Big32(std::uint32_t value) {
  Bytes bytes;
  for (const int shift : {24, 16, 8, 0}) {
    bytes.push_back(static_cast<unsigned char>(value >> shift & 0xFF));
  }
  return bytes;
}

std::uint32_t Big32At(const Bytes& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value * 256 + bytes.at(at + i);
  return value;
}

void SetBig32(Bytes& bytes, std::size_t at, std::uint32_t value) {
  const Bytes word = Big32(value);
  for (std::size_t i = 0; i < 4; ++i) bytes.at(at + i) = word[i];
}

Bytes HexBytes(const std::string& digits) {
  Bytes bytes;
  bool second = false;
  for (const char digit : digits) {
    if (digit == ' ') continue;
    if (second) {
      bytes.back() = static_cast<unsigned char>(bytes.back() * 16u + DigitValue(digit));
    } else {
      bytes.push_back(static_cast<unsigned char>(DigitValue(digit)));
    }
    second = !second;
  }
  return bytes;
}

Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) Add(all, part);
  return all;
}

Bytes Slice(const Bytes& bytes, std::size_t from, std::size_t length) {
  Bytes part;
  for (std::size_t i = 0; i < length; ++i) part.push_back(bytes.at(from + i));
  return part;
}

Bytes Pattern(std::size_t length, unsigned seed) {
  Bytes bytes;
  for (std::size_t i = 0; i < length; ++i) {
    bytes.push_back(static_cast<unsigned char>((seed * 37 + i * 11) % 255 + 1));
  }
  return bytes;
}

Bytes DataTag(const Bytes& content, std::uint32_t flag) {
  return Join({{'d', 'a', 't', 'a'}, {0, 0, 0, 0}, Big32(flag), content});
}

Bytes TextTag(const std::string& text) {
  return Join({{'t', 'e', 'x', 't'}, {0, 0, 0, 0}, Bytes(text.begin(), text.end())});
}

Bytes ProfileHeader(std::uint32_t deviceClass, std::uint32_t colorSpace) {
  Bytes header =
      Join({Big32(0), Big32(Sig("cmm1")), Big32(0x02400000), Big32(deviceClass), Big32(colorSpace),
            Big32(Sig("Lab ")),
            // 2001-02-03 04:05:06
            HexBytes("07D1 0002 0003 0004 0005 0006"), Big32(Sig("acsp")), Big32(Sig("plat")),
            Big32(0x01020304), Big32(Sig("manu")), Big32(Sig("modl")), Big32(0x11121314),
            Big32(0x15161718), Big32(2), Big32(0x0000F6D6), Big32(0x00010000), Big32(0x0000D32D),
            Big32(Sig("crea"))});
  for (unsigned i = 0; i < 44; ++i) header.push_back(static_cast<unsigned char>(0x90 + i));
  return header;
}

Bytes ProfileImage(const Bytes& header, const std::vector<ImageTag>& tags) {
  std::vector<ImageEntry> table;
  Bytes body;
  for (const ImageTag& tag : tags) {
    const std::size_t offset = 132 + 12 * tags.size() + body.size();
    table.push_back(
        {tag.sig, static_cast<std::uint32_t>(offset), static_cast<std::uint32_t>(tag.data.size())});
    Add(body, Padded(tag.data));
  }
  return RawImage(header, table, body);
}

void PrintTo(const ImageEntry& entry, std::ostream* out) {
  *out << std::hex << "{" << entry.sig << std::dec << ", " << entry.offset << ", " << entry.size
       << "}";
}

Bytes Head(Bytes header, std::uint32_t size, const std::vector<ImageEntry>& table) {
  SetBig32(header, 0, size);
  Bytes head = Join({header, Big32(static_cast<std::uint32_t>(table.size()))});
  for (const ImageEntry& entry : table) {
    Add(head, Join({Big32(entry.sig), Big32(entry.offset), Big32(entry.size)}));
  }
  return head;
}

Bytes RawImage(const Bytes& header, const std::vector<ImageEntry>& table, const Bytes& body) {
  const std::size_t size = 132 + 12 * table.size() + body.size();
  return Join({Head(header, static_cast<std::uint32_t>(size), table), body});
}

std::vector<ImageEntry> TableOf(const Bytes& image) {
  std::vector<ImageEntry> table;
  for (std::uint32_t i = 0; i < Big32At(image, 128); ++i) {
    const std::size_t at = 132 + std::size_t{12} * i;
    table.push_back({Big32At(image, at), Big32At(image, at + 4), Big32At(image, at + 8)});
  }
  return table;
}

::testing::AssertionResult SameBytes(const Bytes& actual, const Bytes& expected) {
  if (actual == expected) return ::testing::AssertionSuccess();
  const auto [a, e] = std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
  auto failure = ::testing::AssertionFailure();
  failure << actual.size() << " bytes, expected " << expected.size() << "; first difference at "
          << a - actual.begin() << ":" << std::hex;
  failure << " got";
  for (auto i = a; i != actual.end() && i - a < 16; ++i) failure << " " << unsigned{*i};
  failure << ", expected";
  for (auto i = e; i != expected.end() && i - e < 16; ++i) failure << " " << unsigned{*i};
  return failure;
}

}  // namespace vkcl::testing
