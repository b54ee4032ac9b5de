// Dictionaries that Little CMS may not see. Elements are put together by hand: a head of type,
// reserved bytes, number and length of the records; the records; the texts in UTF-16.
#include "platform/profiler/DictionaryCheck.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Bytes.h"

namespace vkcl::profiler {
namespace {

using Element = std::vector<std::uint8_t>;

void Put(Element& element, std::initializer_list<std::uint32_t> numbers) {
  for (const std::uint32_t number : numbers) {
    element.resize(element.size() + 4);
    StoreBig32(element.data() + element.size() - 4, number);
  }
}

constexpr std::uint32_t kDict = 0x64696374;

/// One record of a name of two characters at 32 and a value of one at 36, in 40 bytes.
Element Plain() {
  Element element;
  Put(element, {kDict, 0, 1, 16, 32, 4, 36, 2, 0x00410042, 0x00430000});
  return element;
}

/// The same, with a name for people at 48, which has no type of its own: one text in German of two
/// bytes, 20 behind that.
Element Localised() {
  Element element;
  Put(element, {kDict, 0, 1, 24, 40, 4, 44, 2, 48, 22, 0x00410042, 0x00430000});
  Put(element, {1, 12, 0x64654445, 2, 8 + 20, 0x00440000});
  element.resize(48 + 22);
  return element;
}

/// The check of an element with another number at an offset.
bool With(Element element, std::size_t at, std::uint32_t number) {
  StoreBig32(&element[at], number);
  return IsSoundDictionary(element);
}

TEST(DictionaryCheck, TakesWhatIsWhole) {
  EXPECT_TRUE(IsSoundDictionary(Plain()));
  EXPECT_TRUE(IsSoundDictionary(Localised()));
  Element none;
  Put(none, {kDict, 0, 0, 16});
  EXPECT_TRUE(IsSoundDictionary(none)) << "a dictionary may be empty";
}

TEST(DictionaryCheck, RefusesWhatEndsTooEarly) {
  for (const Element& whole : {Plain(), Localised()}) {
    const std::size_t needed = whole.size() - (whole.size() == 40 ? 2 : 0);  // the last is padding
    for (std::size_t length = 0; length < whole.size(); ++length) {
      const std::span<const std::uint8_t> cut(whole.data(), length);
      EXPECT_EQ(IsSoundDictionary(cut), length >= needed) << length;
    }
  }
}

TEST(DictionaryCheck, RefusesMoreRecordsThanThereIsRoomFor) {
  EXPECT_FALSE(With(Plain(), 8, 3)) << "16 + 3 * 16 is more than 40";
  EXPECT_FALSE(With(Plain(), 8, 0x070000FF));
  EXPECT_FALSE(With(Plain(), 8, 0xFFFFFFFF));
  EXPECT_FALSE(With(Localised(), 48, 2)) << "8 + 2 * 12 is more than 22";
  EXPECT_FALSE(With(Localised(), 48, 0xFFFFFFFF));
}

TEST(DictionaryCheck, RefusesRecordsOfAnotherLength) {
  for (const std::uint32_t length : {0u, 8u, 12u, 15u, 17u, 40u, 0xFFFFFFF8u}) {
    EXPECT_FALSE(With(Plain(), 12, length)) << length;
  }
}

TEST(DictionaryCheck, RefusesTextsThatReachBeyondIt) {
  EXPECT_FALSE(With(Plain(), 20, 9)) << "a name from 32 to 41 of 40";
  EXPECT_TRUE(With(Plain(), 20, 8));
  EXPECT_FALSE(With(Plain(), 28, 0x80000006)) << "Little CMS would take 16 bytes for it";
  EXPECT_FALSE(With(Plain(), 24, 0xFFFFFFFF)) << "the end must not wrap around";
  EXPECT_FALSE(With(Localised(), 36, 23)) << "a name for people from 48 to 71 of 70";
  EXPECT_FALSE(With(Localised(), 60, 3)) << "its text from 20 to 23 of 22";
  EXPECT_FALSE(With(Localised(), 64, 0xFFFFFFFF));
}

TEST(DictionaryCheck, TakesTextsThatAreNotThere) {
  EXPECT_TRUE(With(Plain(), 24, 0)) << "no value, whatever its size";
  EXPECT_TRUE(With(Localised(), 32, 0)) << "no name for people";
  EXPECT_TRUE(With(Localised(), 36, 0)) << "an empty one";
}

TEST(DictionaryCheck, RefusesTextsThatAreMuchMoreThanTheFile) {
  // 1,100 records whose names are all the same 64 KiB take 69 MiB; 1,000 take 63 MiB.
  for (const std::uint32_t count : {1000u, 1100u}) {
    Element element;
    Put(element, {kDict, 0, count, 16});
    const std::uint32_t text = 16 + 16 * count;
    for (std::uint32_t i = 0; i < count; ++i) Put(element, {text, 65536, 0, 0});
    element.resize(text + 65536, 'x');
    EXPECT_EQ(IsSoundDictionary(element), count == 1000) << count;
  }
}

}  // namespace
}  // namespace vkcl::profiler
