#include "privatetags/VKPrivateTag.h"

#include <cstring>
#include <type_traits>
#include <utility>

namespace {

TEST(VKPrivateTag, StartsEmpty) {
  const VKPrivateTag tag;
  EXPECT_EQ(static_cast<std::uint32_t>(tag.signature), 0u);
  EXPECT_EQ(tag.data, nullptr);
  EXPECT_EQ(tag.size, 0u);
  EXPECT_EQ(tag.GetTagSize(), 0u);
  EXPECT_EQ(tag.GetData(), nullptr);
}

TEST(VKPrivateTag, ReportsItsBlockAndSize) {
  static_assert(
      std::is_same_v<decltype(std::declval<const VKPrivateTag&>().GetTagSize()), std::uint32_t>);
  static_assert(std::is_same_v<decltype(std::declval<const VKPrivateTag&>().GetData()), char*>);
  VKPrivateTag tag;
  tag.data = new char[4];
  std::memcpy(tag.data, "abcd", 4);
  tag.size = 0xFFFFFFFF;
  EXPECT_EQ(tag.GetTagSize(), 0xFFFFFFFFu);
  EXPECT_EQ(tag.GetData(), tag.data);
  EXPECT_EQ(tag.GetData()[3], 'd');
}

TEST(VKPrivateTag, SettingTheSignatureTouchesNothingElse) {
  VKPrivateTag tag;
  char* const block = new char[2];
  tag.data = block;
  tag.size = 2;
  tag.SetSignature(QX64);
  EXPECT_EQ(static_cast<std::uint32_t>(tag.signature), 0x51583634u);
  tag.SetSignature(static_cast<VKPrivateTagSignature>(0xFFFFFFFF));
  EXPECT_EQ(static_cast<std::uint32_t>(tag.signature), 0xFFFFFFFFu);
  EXPECT_EQ(tag.data, block);
  EXPECT_EQ(tag.size, 2u);
}

// Deep copies would look safer, but callers count on handing the block over.
TEST(VKPrivateTag, AssignmentSharesTheBlock) {
  VKPrivateTag owner;
  owner.SetSignature(QX53);
  owner.data = new char[3];
  owner.size = 3;
  VKPrivateTag other;
  other = owner;
  EXPECT_EQ(other.signature, QX53);
  EXPECT_EQ(other.GetData(), owner.GetData());
  EXPECT_EQ(other.GetTagSize(), 3u);
  other.GetData()[0] = 'x';
  EXPECT_EQ(owner.GetData()[0], 'x');
  other.data = nullptr;  // only one of them may be destroyed with the block in it
}

TEST(VKPrivateTag, AssignmentLeavesAnEarlierBlockToTheCaller) {
  char* const earlier = new char[1]{'e'};
  VKPrivateTag tag;
  tag.data = earlier;
  tag.size = 1;
  tag = VKPrivateTag();
  EXPECT_EQ(tag.GetData(), nullptr);
  EXPECT_EQ(tag.GetTagSize(), 0u);
  EXPECT_EQ(earlier[0], 'e');
  delete[] earlier;
}

TEST(VKPrivateTag, AssignmentToItselfKeepsTheBlock) {
  VKPrivateTag tag;
  tag.SetSignature(QX50);
  tag.data = new char[1]{'k'};
  tag.size = 1;
  const VKPrivateTag& same = tag;
  tag = same;
  EXPECT_EQ(tag.signature, QX50);
  ASSERT_NE(tag.GetData(), nullptr);
  EXPECT_EQ(tag.GetData()[0], 'k');
  EXPECT_EQ(tag.GetTagSize(), 1u);
}

TEST(VKPrivateTag, SignaturesAreTheFourCharactersBigEndian) {
  static_assert(std::is_same_v<std::underlying_type_t<VKPrivateTagSignature>, std::uint32_t>);
  static_assert(std::is_convertible_v<VKPrivateTagSignature, std::uint32_t>);
  const VKPrivateTagSignature all[] = {QX50, QX51, QX52, QX53, QX54, QX55, QX56, QX57, QX58,
                                       QX59, QX60, QX61, QX62, QX63, QX64, QX65, QX66, QX67,
                                       QX68, QX69, QX70, QX71, QX72, QX73, QX74, QX75, QX76};
  int number = 50;
  for (const VKPrivateTagSignature signature : all) {
    const auto tens = static_cast<std::uint32_t>(number / 10);
    const auto ones = static_cast<std::uint32_t>(number % 10);
    EXPECT_EQ(static_cast<std::uint32_t>(signature), 0x51583030u + tens * 256 + ones) << number;
    ++number;
  }
  EXPECT_EQ(number, 77);
}

TEST(VKPrivateTag, PrivateSignaturesBeginWithQX) {
  for (const std::uint32_t own :
       {0x51583530u, 0x51583736u, 0x51580000u, 0x5158FFFFu, 0x51585158u}) {
    EXPECT_TRUE(vkcl::IsPrivateSignature(own)) << std::hex << own;
  }
  for (const std::uint32_t other : {0u, 0x5158u, 0x51573530u, 0x51593530u, 0x50583530u, 0x35305158u,
                                    0x58513530u, 0xFFFFFFFFu}) {
    EXPECT_FALSE(vkcl::IsPrivateSignature(other)) << std::hex << other;
  }
}

}  // namespace
