// Values of documents on their way into a payload.
#include "inspect/RecordValue.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace {

using vkcl::AppendValue;
using vkcl::FieldType;

/// The bytes of a value, behind one that was there; the reason in their place when there are none.
std::string Appended(FieldType type, bool isString, const std::string& text) {
  std::vector<char> bytes = {'x'};
  const std::string why = AppendValue(type, isString, text, bytes);
  if (!why.empty()) {
    EXPECT_EQ(bytes, std::vector<char>{'x'}) << text;
    return why;
  }
  return {bytes.begin() + 1, bytes.end()};
}

std::string BytesOf(std::initializer_list<int> bytes) {
  std::string text;
  for (const int byte : bytes) text += static_cast<char>(byte);
  return text;
}

TEST(AppendedValue, IsLittleEndian) {
  EXPECT_EQ(Appended(FieldType::Int32, false, "-2"), BytesOf({0xFE, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(Appended(FieldType::UInt32, false, "4278190081"), BytesOf({1, 0, 0, 0xFF}));
  EXPECT_EQ(Appended(FieldType::Float32, false, "0.5"), BytesOf({0, 0, 0, 0x3F}));
  EXPECT_EQ(Appended(FieldType::Float64, false, "1"), BytesOf({0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
  EXPECT_EQ(Appended(FieldType::Signature, true, "Lab "), " baL");
  EXPECT_EQ(Appended(FieldType::Signature, false, "1281450528"), " baL");
}

TEST(AppendedValue, OfWordsIsTheNumberThatJsonLacks) {
  EXPECT_EQ(Appended(FieldType::Float32, true, "-0"), BytesOf({0, 0, 0, 0x80}));
  EXPECT_EQ(Appended(FieldType::Float32, true, "inf"), BytesOf({0, 0, 0x80, 0x7F}));
  EXPECT_EQ(Appended(FieldType::Float32, true, "-inf"), BytesOf({0, 0, 0x80, 0xFF}));
  EXPECT_EQ(Appended(FieldType::Float32, true, "nan:7fc00001"), BytesOf({1, 0, 0xC0, 0x7F}));
  const std::string why = R"(takes a number, or "inf", "-inf", "nan", "-0")";
  for (const char* word : {"", "1", "Inf", "nan:", "nan:7fc0000", "nan:7f800000", "nan:3f800000"}) {
    EXPECT_EQ(Appended(FieldType::Float32, true, word), why) << word;
  }
}

TEST(AppendedValue, IsRefusedByFieldsThatHoldNoNumbers) {
  for (const FieldType type : {FieldType::Text, FieldType::Bytes, FieldType::Record}) {
    EXPECT_EQ(Appended(type, false, "1"), "takes no number");
    EXPECT_EQ(Appended(type, true, "a"), "takes no number");
  }
}

}  // namespace
