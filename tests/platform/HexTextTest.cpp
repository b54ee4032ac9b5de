#include "platform/plinth/HexText.h"

#include <array>
#include <cstring>

namespace {

using vkcl::HexText;
using vkcl::ReadHex;

constexpr char kLower[] = "0123456789abcdef";
constexpr char kUpper[] = "0123456789ABCDEF";

/// What ReadHex makes of a text with room for `count` bytes: how many bytes there were and the
/// bytes, or "none". Bytes that were not read are '?', two of them behind the room included.
std::string Read(std::string_view text, std::size_t count) {
  std::string room(count + 2, '?');
  const std::optional<std::size_t> read = ReadHex(text, room.data(), count);
  EXPECT_EQ(room.substr(count), "??") << "behind the room";
  return read ? std::to_string(*read) + ":" + room : "none";
}

TEST(HexText, IsTwoLowerCaseDigitsAByte) {
  EXPECT_EQ(HexText("\x00\x01\x7F\x80\xAB\xFF", 6), "00017f80abff");
  EXPECT_EQ(HexText("Az 09", 5), "417a203039");
}

TEST(HexText, OfEveryByte) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    const auto value = static_cast<unsigned char>(byte);
    EXPECT_EQ(HexText(&value, 1), (std::string{kLower[byte / 16], kLower[byte % 16]}));
  }
}

TEST(HexText, OfNoBytesIsEmpty) {
  EXPECT_EQ(HexText("abc", 0), "");
  EXPECT_EQ(HexText(nullptr, 0), "");
}

TEST(HexText, FollowsTheOrderOfTheBytesInMemory) {
  std::array<unsigned char, 256> all = {};
  std::string expected;
  for (std::size_t i = 0; i < all.size(); ++i) {
    all[i] = static_cast<unsigned char>(255 - i);
    expected += {kLower[(255 - i) / 16], kLower[(255 - i) % 16]};
  }
  EXPECT_EQ(HexText(all.data(), all.size()), expected);
}

TEST(ReadHex, ReadsEveryByteInEitherCase) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    const std::string expected = {'1', ':', static_cast<char>(byte), '?', '?'};
    for (const char* high : {kLower, kUpper}) {
      for (const char* low : {kLower, kUpper}) {
        EXPECT_EQ(Read(std::string{high[byte / 16], low[byte % 16]}, 1), expected) << byte;
      }
    }
  }
}

TEST(ReadHex, ReadsBytesInTheirOrder) {
  EXPECT_EQ(Read("417a203039", 5), "5:Az 09??");
  EXPECT_EQ(Read("417A2b2B", 4), "4:Az++??");
}

TEST(ReadHex, StopsAtTheRoom) {
  EXPECT_EQ(Read("414243", 2), "2:AB??");
  EXPECT_EQ(Read("414243", 1), "1:A??");
}

TEST(ReadHex, WithoutRoomReadsNothing) {
  EXPECT_EQ(Read("", 0), "0:??");
  EXPECT_EQ(Read("41", 0), "0:??");
  EXPECT_EQ(ReadHex("41", nullptr, 0), std::optional<std::size_t>(0));
}

TEST(ReadHex, OfAShortTextGivesWhatThereIs) {
  EXPECT_EQ(Read("", 3), "0:?????");
  EXPECT_EQ(Read("41", 3), "1:A????");
  EXPECT_EQ(Read("4142", 3), "2:AB???");
}

TEST(ReadHex, TakesALastDigitAloneForNone) {
  EXPECT_EQ(Read("4", 3), "0:?????");
  EXPECT_EQ(Read("41424", 3), "2:AB???");
  EXPECT_EQ(Read("41424", 2), "2:AB??");
  EXPECT_EQ(Read("4142 4 ", 3), "2:AB???");
}

TEST(ReadHex, SkipsWhiteSpaceBetweenDigits) {
  EXPECT_EQ(Read(" 41\n42\t43\r\n", 3), "3:ABC??");
  EXPECT_EQ(Read("4 1\v4\f2", 2), "2:AB??");
  EXPECT_EQ(Read("   \n", 2), "0:????");
  std::string wide(100000, ' ');
  wide.append("41").append(100000, '\n').append("42");
  EXPECT_EQ(Read(wide, 2), "2:AB??");
}

TEST(ReadHex, RefusesEveryOtherCharacterInTheFirstAndInTheSecondPlace) {
  const std::string fine = "0123456789abcdefABCDEF \t\n\v\f\r";
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char character = static_cast<char>(byte);
    const bool good = fine.find(character) != std::string::npos;
    for (const char* before : {"", "4", "41", "414"}) {
      const std::string text = std::string(before) + character + "4242";
      EXPECT_EQ(Read(text, 3) != "none", good) << byte << " behind '" << before << "'";
    }
  }
}

TEST(ReadHex, RefusesWhatLooksLikeNumbers) {
  for (const char* text : {"0x41", "-41", "+41", "41,42", "41;42", "41h", "\xEF\xBC\x94\x31"}) {
    EXPECT_EQ(Read(text, 3), "none") << text;
  }
}

TEST(ReadHex, GivesBackWhatHexTextWrote) {
  std::string bytes;
  for (unsigned i = 0; i < 100003; ++i) bytes += static_cast<char>(i * i * 31 + i);
  std::string read(bytes.size(), '?');
  EXPECT_EQ(ReadHex(HexText(bytes.data(), bytes.size()), read.data(), read.size()), bytes.size());
  EXPECT_EQ(read, bytes);
}

TEST(ReadHex, ReadsNoFurtherThanTheText) {
  const std::string longer = "4142zz";
  EXPECT_EQ(Read(std::string_view(longer).substr(0, 4), 3), "2:AB???");
  EXPECT_EQ(Read(std::string_view(longer).substr(0, 3), 3), "1:A????");
}

}  // namespace
