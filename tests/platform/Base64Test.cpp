#include "platform/plinth/Base64.h"

#include <array>
#include <random>

namespace {

using vkcl::AppendBase64;
using vkcl::Base64Text;

/// The bytes that a text stands for, behind "+"; "none" when it stands for none.
std::string Decoded(std::string_view text) {
  std::vector<char> bytes = {'+'};
  if (AppendBase64(text, bytes)) return {bytes.begin(), bytes.end()};
  EXPECT_EQ(bytes, std::vector<char>{'+'}) << "something was appended";
  return "none";
}

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// RFC 4648, clause 10.
constexpr std::array<std::array<std::string_view, 2>, 7> kVectors = {{{"", ""},
                                                                      {"f", "Zg=="},
                                                                      {"fo", "Zm8="},
                                                                      {"foo", "Zm9v"},
                                                                      {"foob", "Zm9vYg=="},
                                                                      {"fooba", "Zm9vYmE="},
                                                                      {"foobar", "Zm9vYmFy"}}};

TEST(Base64, WritesTheVectorsOfTheStandard) {
  for (const auto& [bytes, text] : kVectors) EXPECT_EQ(Base64Text(bytes), text);
}

TEST(Base64, ReadsTheVectorsOfTheStandard) {
  for (const auto& [bytes, text] : kVectors) EXPECT_EQ(Decoded(text), "+" + std::string(bytes));
}

TEST(Base64, HasTheAlphabetOfClause4) {
  // The 64 values of six bits, one behind the other, and that back.
  std::string bytes;
  for (unsigned value = 0; value < 64; value += 4) {
    const unsigned group = value << 18 | (value + 1) << 12 | (value + 2) << 6 | (value + 3);
    for (const unsigned shift : {16u, 8u, 0u}) bytes += static_cast<char>(group >> shift & 0xFF);
  }
  EXPECT_EQ(Base64Text(bytes), kAlphabet);
  EXPECT_EQ(Decoded(kAlphabet), "+" + bytes);
}

TEST(Base64, WritesBytesThatAreNoText) {
  EXPECT_EQ(Base64Text(std::string_view("\0", 1)), "AA==");
  EXPECT_EQ(Base64Text(std::string_view("\0\0\0", 3)), "AAAA");
  EXPECT_EQ(Base64Text("\xFF"), "/w==");
  EXPECT_EQ(Base64Text("\xFF\xFF\xFF"), "////");
  EXPECT_EQ(Base64Text("\xFB\xEF\xBE"), "++++");
  EXPECT_EQ(Decoded("AA=="), std::string("+\0", 2));
  EXPECT_EQ(Decoded("/w=="), "+\xFF");
}

TEST(Base64, RefusesEveryOtherCharacter) {
  for (int i = 0; i < 256; ++i) {
    const char c = static_cast<char>(i);
    if (kAlphabet.find(c) != std::string_view::npos) continue;
    for (std::size_t at = 0; at < 4; ++at) {
      std::string text = "AAAA";
      text[at] = c;
      const bool padding = c == '=' && at == 3;
      EXPECT_EQ(Decoded(text), padding ? std::string("+\0\0", 3) : "none") << i << " at " << at;
      EXPECT_EQ(Decoded(text + "AAAA"), "none") << i << " at " << at;
    }
  }
}

TEST(Base64, RefusesALengthThatIsNoMultipleOfFour) {
  for (const char* text : {"A", "AA", "AAA", "AAAAA", "AAAAAA", "AAAAAAA", "Zg", "Zm8", "Zg="}) {
    EXPECT_EQ(Decoded(text), "none") << text;
  }
}

TEST(Base64, RefusesPaddingElsewhereThanAtTheEnd) {
  for (const char* text : {"====", "=AAA", "A=AA", "AA=A", "A===", "Zg==Zg==", "Zm8=Zm9v",
                           "Zm9v====", "Zm9v=", "Zm9v=="}) {
    EXPECT_EQ(Decoded(text), "none") << text;
  }
}

TEST(Base64, RefusesBitsBeyondTheLastByte) {
  // Of "Zg==" and "Zm8=" the last character has four and two bits that no byte takes.
  for (const char last : kAlphabet) {
    const std::size_t value = kAlphabet.find(last);
    EXPECT_EQ(Decoded(std::string("Z") + last + "==") != "none", value % 16 == 0) << last;
    EXPECT_EQ(Decoded(std::string("Zm") + last + "=") != "none", value % 4 == 0) << last;
  }
}

TEST(Base64, RefusesSpaceAndLineBreaks) {
  for (const char* text : {" Zg=", "Zg= ", "Zm9\n", "\nZm9vYmFy", "Zm9vYmFy\n", "Zm9v\r\nYm"}) {
    EXPECT_EQ(Decoded(text), "none") << text;
  }
  EXPECT_EQ(Decoded(std::string_view("Zm9v\0\0\0\0", 8)), "none");
}

TEST(Base64, GivesBackEveryLength) {
  std::mt19937 random(6);
  for (std::size_t length = 0; length < 300; ++length) {
    std::string bytes(length, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    const std::string text = Base64Text(bytes);
    EXPECT_EQ(text.size(), (length + 2) / 3 * 4);
    EXPECT_EQ(Decoded(text), "+" + bytes);
  }
}

}  // namespace
