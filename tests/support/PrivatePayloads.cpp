#include "support/PrivatePayloads.h"

#include <array>
#include <bit>

namespace vkcl::testing {
namespace {

using Random = std::mt19937;

std::uint32_t Below(Random& random, std::uint32_t end) {
  return static_cast<std::uint32_t>(random()) % end;
}

Bytes RandomBytes(Random& random, std::size_t length) {
  Bytes bytes(length);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  return bytes;
}

std::int32_t RandomInt(Random& random) {
  constexpr std::array<std::int32_t, 6> kEdges = {0, 1, -1, 2147483647, -2147483647 - 1, 16};
  const std::uint32_t which = Below(random, 12);
  return which < kEdges.size() ? kEdges[which] : static_cast<std::int32_t>(random());
}

/// Zero, denormals, ordinary numbers, infinities and what is no number, of either sign.
std::uint32_t RandomFloatBits(Random& random) {
  constexpr std::array<std::uint32_t, 7> kEdges = {0,          1,          0x007FFFFF, 0x7F7FFFFF,
                                                   0x7F800000, 0x7FC00000, 0x7F800001};
  const std::uint32_t which = Below(random, 14);
  const std::uint32_t sign = Below(random, 2) << 31;
  return which < kEdges.size() ? sign | kEdges[which] : static_cast<std::uint32_t>(random());
}

std::uint64_t RandomDoubleBits(Random& random) {
  constexpr std::array<std::uint64_t, 7> kEdges = {
      0,
      1,
      0x000FFFFFFFFFFFFFu,
      0x7FEFFFFFFFFFFFFFu,
      0x7FF0000000000000u,
      0x7FF8000000000000u,
      0x7FF0000000000001u,
  };
  const std::uint32_t which = Below(random, 14);
  const std::uint64_t sign = std::uint64_t{Below(random, 2)} << 63;
  if (which < kEdges.size()) return sign | kEdges[which];
  if (which < 10) return std::bit_cast<std::uint64_t>(static_cast<double>(random() % 1001) / 10);
  return std::uint64_t{random()} << 32 | random();
}

void AddFloat(Payload& payload, Random& random) {
  payload.Int(std::bit_cast<std::int32_t>(RandomFloatBits(random)));
}

void AddDoubles(Payload& payload, Random& random, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t bits = RandomDoubleBits(random);
    payload.Int(static_cast<std::int32_t>(bits)).Int(static_cast<std::int32_t>(bits >> 32));
  }
}

/// A text without a terminator: empty, plain, of many languages, escaped in JSON, or no UTF-8.
std::string RandomText(Random& random, std::size_t most) {
  static const std::array<std::string, 9> kTexts = {"",
                                                    "Acme",
                                                    "Gr\xC3\xBC\xC3\x9F"
                                                    "e \xE6\xBC\xA2\xF0\x9F\x8E\xA8",
                                                    "\"\\/\b\f\n\r\t\x01\x1F\x7F",
                                                    "M\xFF",
                                                    "\xC3",
                                                    "\xED\xA0\x80",
                                                    "\xF4\x90\x80\x80",
                                                    "\xEF\xBF\xBF"};
  std::string text = kTexts[Below(random, kTexts.size())];
  if (Below(random, 6) == 0) text = std::string(most, 'x');
  return text.substr(0, most);
}

/// A text in a field of fixed width: with zeros behind it, without a terminator, or with bytes
/// behind that.
Bytes RandomField(Random& random, std::size_t width) {
  Bytes field = Payload().Field(RandomText(random, width), width);
  if (Below(random, 5) == 0) field.back() = static_cast<unsigned char>(random());
  return field;
}

/// Zeros at the end, or not.
Bytes RandomBlock(Random& random, std::size_t length) {
  Bytes bytes = RandomBytes(random, Below(random, static_cast<std::uint32_t>(length) + 1));
  bytes.resize(length);
  return bytes;
}

constexpr std::int32_t RecordLength(std::int32_t version) {
  return version == 2 ? 76 : version == 3 ? 6168 : 9240;
}

Bytes RandomSplit(Random& random) {
  const std::int32_t version = 2 + static_cast<std::int32_t>(Below(random, 3));
  const auto count = static_cast<std::int32_t>(Below(random, version == 2 ? 4 : 2));
  const std::int32_t length = RecordLength(version);
  Payload payload;
  payload.Int(version).Int(20 + count * length).Int(count).Raw(RandomBlock(random, 8));
  for (std::int32_t i = 0; i < count; ++i) {
    payload.Int(length).Int(RandomInt(random));
    const int floats = version == 2 ? 17 : (length - 24) / 4;
    const bool sparse = Below(random, 2) == 0;
    for (int f = 0; f < floats; ++f) {
      if (sparse && f % 64 != 0) {
        payload.Float(0);
      } else {
        AddFloat(payload, random);
      }
    }
    for (int n = 0; version != 2 && n < 4; ++n) payload.Int(RandomInt(random));
  }
  return payload;
}

Bytes RandomList(Random& random) {
  const std::uint32_t format =
      Below(random, 4) == 0 ? static_cast<std::uint32_t>(random()) : Sig("Lab ");
  const std::uint32_t samples = Below(random, 9);
  const std::uint32_t colors = Below(random, 9);
  const bool follow = Below(random, 3) != 0;
  Payload payload;
  payload.Int(static_cast<std::int32_t>(format));
  const bool negative = !follow && Below(random, 2) == 0;
  payload.Int(negative ? RandomInt(random) : static_cast<std::int32_t>(samples));
  payload.Int(RandomInt(random));
  payload.Int(negative ? RandomInt(random) : static_cast<std::int32_t>(colors));
  payload.Int(RandomInt(random));
  payload.Int(!follow ? 0 : Below(random, 4) == 0 ? -7 : 1);
  if (follow) AddDoubles(payload, random, std::size_t{samples} * colors);
  return payload;
}

Bytes RandomColorParam(Random& random) {
  Payload payload;
  payload.Int(1).Int(1068).Int(RandomInt(random)).Int(RandomInt(random));
  for (int i = 0; i < 3; ++i) payload.Raw(RandomField(random, 128));
  payload.Int(RandomInt(random));
  AddFloat(payload, random);
  AddFloat(payload, random);
  for (int i = 0; i < 4; ++i) payload.Int(RandomInt(random));
  payload.Raw(RandomBlock(random, 256));
  for (int i = 0; i < 3; ++i) payload.Raw(RandomField(random, 128));
  return payload;
}

Bytes RandomSpotLimits(Random& random) {
  const std::string name = RandomText(random, 40);
  const std::uint32_t count = Below(random, 5);
  Payload payload;
  payload.Int(RandomInt(random));
  payload.Int(static_cast<std::int32_t>(12 + name.size() + std::size_t{8} * count));
  payload.Int(static_cast<std::int32_t>(count)).Text(name);
  AddDoubles(payload, random, count);
  return payload;
}

Bytes RandomSpotLinks(Random& random) {
  const std::string name = RandomText(random, 40);
  std::vector<Bytes> links(Below(random, 4));
  for (Bytes& link : links)
    link = RandomBytes(random, std::size_t{Below(random, 3)} * Below(random, 200));
  std::size_t length = 16 + name.size();
  for (const Bytes& link : links) length += 4 + link.size();
  Payload payload;
  payload.Int(RandomInt(random)).Int(static_cast<std::int32_t>(length));
  payload.Int(static_cast<std::int32_t>(links.size()));
  payload.Int(static_cast<std::int32_t>(name.size())).Text(name);
  for (const Bytes& link : links) payload.Int(static_cast<std::int32_t>(link.size()));
  for (const Bytes& link : links) payload.Raw(link);
  return payload;
}

Bytes RandomLimits(Random& random, std::int32_t count) {
  Payload payload;
  payload.Int(RandomInt(random)).Int(12 + 8 * count).Int(count);
  AddDoubles(payload, random, static_cast<std::size_t>(count));
  return payload;
}

bool IsList(int number) {
  return (number >= 54 && number <= 57) || number == 59 || number == 60 || number == 72 ||
         number == 73;
}

int NumberOf(const std::string& signature) { return std::stoi(signature.substr(2)); }

Payload Countdown(std::int32_t version, std::int32_t size, std::int32_t count) {
  Payload payload;
  payload.Int(version).Int(size).Int(count);
  for (std::int32_t i = 0; i < count; ++i) payload.Double(100 - i / 4.0);
  return payload;
}

}  // namespace

const std::vector<std::string>& KnownSignatures() {
  static const std::vector<std::string> signatures = [] {
    std::vector<std::string> all;
    for (int number = 50; number <= 76; ++number) all.push_back("QX" + std::to_string(number));
    return all;
  }();
  return signatures;
}

Bytes SplitPayload(std::int32_t version, const std::vector<std::int32_t>& colorants) {
  const auto count = static_cast<std::int32_t>(colorants.size());
  const std::int32_t length = RecordLength(version);
  Payload payload;
  payload.Int(version).Int(20 + count * length).Int(count).Fill(8);
  for (const std::int32_t colorant : colorants) {
    payload.Int(length).Int(colorant);
    const int floats = version == 2 ? 17 : (length - 24) / 4;
    for (int i = 0; i < floats; ++i) payload.Float(static_cast<float>(i) / 8);
    if (version != 2) payload.Int(3).Int(2).Int(1).Int(4);
  }
  return payload;
}

Bytes ListPayload(std::uint32_t dataFormat, std::int32_t samples, std::int32_t colors,
                  const std::vector<double>& values) {
  Payload payload;
  payload.Int(static_cast<std::int32_t>(dataFormat)).Int(samples).Int(1).Int(colors).Int(2);
  payload.Int(values.empty() ? 0 : 1);
  for (const double value : values) payload.Double(value);
  return payload;
}

Bytes SamplePayload(const std::string& signature) {
  const int number = NumberOf(signature);
  if (IsList(number)) return ListPayload(Sig("Lab "), 2, 3, {95, 0.1, -1, 50, -30, -40});
  switch (number) {
    case 50: return SplitPayload(2, {-1, 3});
    case 51: return Countdown(1, 140, 16);
    case 52: return Countdown(4, 300, 36);
    case 53:
      return Payload()
          .Int(1)
          .Int(1068)
          .Int(9)
          .Int(7)
          .Field("Acme", 128)
          .Field("Model 1", 128)
          .Field("Baryta", 128)
          .Int(2)
          .Float(720)
          .Float(360.5f)
          .Int(1)
          .Int(5)
          .Int(6)
          .Int(8)
          .Raw(Pattern(256, 3))
          .Field("one", 128)
          .Field("two", 128)
          .Field("", 128);
    case 64: return Payload().Int(-5);
    case 66: return Payload().Int(1).Int(4132).Fill(8).Int(4116).Raw(Pattern(4112, 4));
    case 67: return Pattern(64, 5);
    case 68: return Payload().Int(1).Int(32).Int(2).Text("Spot").Double(75).Double(82.5);
    case 69: return Payload().Int(1).Int(33).Int(2).Int(4).Text("Spot").Int(3).Int(2).Text("abcde");
    case 70:
      return Payload()
          .Int(1)
          .Field("extra", 129)
          .HexDigits("010203")
          .Int(9)
          .Raw(Pattern(144, 6))
          .Raw(Pattern(288, 7));
    case 71: return Payload().Int(1).Field("press.icc", 128).Text("<VK_VSD_PROFILE/>");
    case 74: return Payload().Int(3);
    case 75: return Payload().Text("soft").Fill(1);
    case 76: return Payload().Int(1).Int(77);
    default: return Pattern(100 + static_cast<std::size_t>(number), 8);
  }
}

Bytes RandomPayload(const std::string& signature, Random& random) {
  const int number = NumberOf(signature);
  if (IsList(number)) return RandomList(random);
  switch (number) {
    case 50: return RandomSplit(random);
    case 51: return RandomLimits(random, 16);
    case 52: return RandomLimits(random, 36);
    case 53: return RandomColorParam(random);
    case 64:
    case 74: return Payload().Int(RandomInt(random));
    case 66: {
      const std::int32_t table = Below(random, 2) == 0 ? 4116 : 8;
      return Payload()
          .Int(1)
          .Int(16 + table)
          .Raw(RandomBlock(random, 8))
          .Int(4116)
          .Raw(RandomBlock(random, static_cast<std::size_t>(table) - 4));
    }
    case 67: return RandomBlock(random, 64);
    case 68: return RandomSpotLimits(random);
    case 69: return RandomSpotLinks(random);
    case 70:
      return Payload()
          .Int(RandomInt(random))
          .Raw(RandomField(random, 129))
          .Raw(RandomBlock(random, 3))
          .Int(RandomInt(random))
          .Raw(RandomBlock(random, 144))
          .Raw(RandomBlock(random, 288));
    case 71:
      return Payload()
          .Int(RandomInt(random))
          .Raw(RandomField(random, 128))
          .Raw(RandomBytes(random, Below(random, 400)));
    case 75: return Payload().Text(RandomText(random, 60)).Fill(Below(random, 3));
    case 76: return Payload().Int(RandomInt(random)).Int(RandomInt(random));
    default: return RandomBytes(random, Below(random, 400));
  }
}

Bytes RandomElement(const std::string& signature, Random& random) {
  const bool known = signature >= "QX50" && signature <= "QX76";
  Bytes payload = known ? RandomPayload(signature, random) : RandomBytes(random, Below(random, 99));
  const std::uint32_t damage = Below(random, 14);
  const auto at = payload.empty() ? 0 : Below(random, static_cast<std::uint32_t>(payload.size()));
  switch (damage) {
    case 0: payload.resize(at); break;
    case 1: payload.resize(payload.size() + 1 + Below(random, 40), 7); break;
    case 2:
    case 3:
      // Within the numbers at the front, which say how the rest is stored.
      for (std::size_t i = 0; i < 24 && i < payload.size(); ++i) {
        if (Below(random, 6) == 0) payload[i] = static_cast<unsigned char>(random());
      }
      break;
    case 4: return RandomBytes(random, Below(random, 30));
    case 5: return DataTag(payload, static_cast<std::uint32_t>(random()) & 3);
    case 6: return Join({TextTag("a text"), payload});
    case 7: return Slice(DataTag(payload), 0, Below(random, 13));
    default: break;
  }
  return DataTag(payload);
}

std::uint32_t SigOf(const std::string& text) { return Big32At({text.begin(), text.end()}, 0); }

}  // namespace vkcl::testing
