#include "privatetags/PayloadCursor.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using vkcl::PayloadReader;
using vkcl::PayloadWriter;

constexpr char kBytes[] = {1, 0, 0, 0, 'a', 'b', 'c'};

std::string Written(PayloadWriter& writer) {
  const std::size_t size = writer.size();
  const std::unique_ptr<char[]> block(writer.release());
  return {block.get(), size};
}

TEST(PayloadReader, ReadsFromTheFrontToTheEnd) {
  PayloadReader reader(kBytes, sizeof kBytes);
  EXPECT_EQ(reader.left(), 7u);
  EXPECT_EQ(reader.Int32(), 1);
  EXPECT_EQ(reader.left(), 3u);
  EXPECT_EQ(reader.Take(2), kBytes + 4);
  char last = 0;
  EXPECT_TRUE(reader.Copy(&last, 1));
  EXPECT_EQ(last, 'c');
  EXPECT_EQ(reader.left(), 0u);
  EXPECT_TRUE(reader.Copy(nullptr, 0));
  EXPECT_TRUE(reader.good());
}

TEST(PayloadReader, FailsForGoodOnceMoreIsAskedThanIsLeft) {
  PayloadReader reader(kBytes, sizeof kBytes);
  char room[8] = {};
  EXPECT_FALSE(reader.Copy(room, 8));
  EXPECT_EQ(room[0], 0);
  EXPECT_FALSE(reader.good());
  EXPECT_EQ(reader.Take(1), nullptr);
  EXPECT_FALSE(reader.Copy(room, 0));
  EXPECT_EQ(reader.Int32(), 0);
  EXPECT_FALSE(reader.good());
}

TEST(PayloadReader, OfTooFewBytesForANumberGivesZero) {
  PayloadReader reader(kBytes, 3);
  EXPECT_EQ(reader.Int32(), 0);
  EXPECT_FALSE(reader.good());
}

TEST(PayloadWriter, PutsOneBehindTheOther) {
  PayloadWriter writer(9);
  ASSERT_TRUE(writer);
  writer.Put(0x64636261).Put("e", 1).Skip(2).Put("hi", 2);
  EXPECT_EQ(Written(writer), std::string("abcde\0\0hi", 9));
}

TEST(PayloadWriter, DropsWhatIsPutBeyondTheEnd) {
  PayloadWriter writer(5);
  writer.Put("abc", 3).Put("defg", 4).Put("h", 1).Skip(9).Put(1);
  EXPECT_EQ(Written(writer), "abcde");
  PayloadWriter skipped(5);
  skipped.Put("abc", 3).Skip(3).Put("x", 1);
  EXPECT_EQ(Written(skipped), std::string("abc\0\0", 5));
}

TEST(PayloadWriter, IsZeroWhereNothingIsPut) {
  PayloadWriter writer(3);
  EXPECT_EQ(Written(writer), std::string(3, '\0'));
}

TEST(PayloadWriter, GivesRoomUpToTheEnd) {
  PayloadWriter writer(6);
  writer.Put("ab", 2);
  EXPECT_EQ(writer.Room(5), nullptr);
  char* room = writer.Room(3);
  ASSERT_NE(room, nullptr);
  std::memcpy(room, "cde", 3);
  EXPECT_EQ(writer.Room(2), nullptr);
  room = writer.Room(1);
  ASSERT_NE(room, nullptr);
  *room = 'f';
  EXPECT_NE(writer.Room(0), nullptr);
  EXPECT_EQ(writer.Room(1), nullptr);
  EXPECT_EQ(Written(writer), "abcdef");
}

TEST(PayloadWriter, FillRecordTakesWhatBothHold) {
  std::int32_t record[2] = {-1, -1};
  vkcl::FillRecord(record, kBytes, 4);
  EXPECT_EQ(record[0], 1);
  EXPECT_EQ(record[1], -1);
  constexpr char kLong[] = {2, 0, 0, 0, 3, 0, 0, 0, 4};
  vkcl::FillRecord(record, kLong, sizeof kLong);
  EXPECT_EQ(record[0], 2);
  EXPECT_EQ(record[1], 3);
}

}  // namespace
