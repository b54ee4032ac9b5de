#include "platform/plinth/HexText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "platform/plinth/NumberText.h"

namespace vkcl {
namespace {

using Pair = std::array<char, 2>;

constexpr std::array<Pair, 256> MakePairs() {
  constexpr char kDigits[] = "0123456789abcdef";
  std::array<Pair, 256> pairs = {};
  for (unsigned i = 0; i < 256; ++i) pairs[i] = {kDigits[i >> 4], kDigits[i & 15]};
  return pairs;
}
constexpr std::array<Pair, 256> kPairs = MakePairs();

constexpr std::uint8_t kNone = 0xFF;

constexpr std::uint8_t DigitOf(unsigned c) {
  if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<std::uint8_t>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<std::uint8_t>(c - 'A' + 10);
  return kNone;
}

// The byte of each pair of characters, taken as a number in the order of memory; what is no pair of
// digits has a bit above the eight of a byte. Of the 128 KiB only the few lines of digits are used.
using PairTable = std::array<std::uint16_t, 65536>;
constexpr std::uint16_t kNoPair = 0xFF00;

PairTable MakeBytes() {
  PairTable bytes = {};
  for (unsigned first = 0; first < 256; ++first) {
    for (unsigned second = 0; second < 256; ++second) {
      const unsigned high = DigitOf(first);
      const unsigned low = DigitOf(second);
      const bool digits = high != kNone && low != kNone;
      bytes[second << 8 | first] = digits ? static_cast<std::uint16_t>(high << 4 | low) : kNoPair;
    }
  }
  return bytes;
}

const PairTable& Bytes() {
  static const PairTable bytes = MakeBytes();
  return bytes;
}

// The pairs at the front of a text, which holds them all; false when one is none.
bool ReadPairs(const char* text, std::uint8_t* to, std::size_t count) {
  const PairTable& bytes = Bytes();
  unsigned all = 0;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint16_t pair = 0;
    std::memcpy(&pair, text + 2 * i, sizeof pair);
    const unsigned value = bytes[pair];
    all |= value;
    to[i] = static_cast<std::uint8_t>(value);
  }
  return all <= 0xFF;
}

// Reads whole pairs, at most `count`, until one is none; the number of those read. What `to` holds
// behind them is left alone.
std::size_t ReadGood(std::string_view text, std::uint8_t* to, std::size_t count) {
  constexpr std::size_t kBlock = 1024;
  const std::size_t pairs = std::min(count, text.size() / 2);
  std::array<std::uint8_t, kBlock> block = {};
  std::size_t done = 0;
  while (done < pairs) {
    const std::size_t now = std::min(kBlock, pairs - done);
    if (!ReadPairs(text.data() + 2 * done, block.data(), now)) break;
    std::memcpy(to + done, block.data(), now);
    done += now;
  }
  return done;
}

bool IsDigit(char c) { return DigitOf(static_cast<std::uint8_t>(c)) != kNone; }

}  // namespace

std::string HexText(const void* bytes, std::size_t count) {
  const auto* from = static_cast<const std::uint8_t*>(bytes);
  std::string text(2 * count, '\0');
  char* to = text.data();
  for (std::size_t i = 0; i < count; ++i) std::memcpy(to + 2 * i, kPairs[from[i]].data(), 2);
  return text;
}

std::optional<std::size_t> ReadHex(std::string_view text, void* to, std::size_t count) {
  auto* bytes = static_cast<std::uint8_t*>(to);
  const std::size_t good = ReadGood(text, bytes, count);
  if (good == count) return good;
  // What is left holds white space, or what is no digit, or ends.
  std::string digits;
  for (const char c : text.substr(2 * good)) {
    if (IsSpace(c)) continue;
    if (!IsDigit(c)) return std::nullopt;
    digits += c;
    if (digits.size() == 2 * (count - good)) break;
  }
  return good + ReadGood(digits, bytes + good, count - good);
}

}  // namespace vkcl
