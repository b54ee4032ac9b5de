#include "inspect/ProfileNames.h"

#include <gtest/gtest.h>

#include "support/ImageBuilder.h"

namespace {

using vkcl::testing::Sig;

TEST(ProfileNames, AreThoseOfTheStandard) {
  EXPECT_STREQ(vkcl::ClassName(Sig("prtr")), "output");
  EXPECT_EQ(vkcl::ClassName(Sig("abcd")), nullptr);
  EXPECT_STREQ(vkcl::TagTitle(Sig("wtpt")), "media white point");
  EXPECT_STREQ(vkcl::TagTitle(Sig("QX53")), "colour parameters");
  EXPECT_EQ(vkcl::StandardTagTitle(Sig("QX53")), nullptr);
  EXPECT_STREQ(vkcl::FinishedStateName(7), "finished profile");
  EXPECT_EQ(vkcl::FinishedStateName(8), nullptr);
  EXPECT_EQ(vkcl::FinishedStateName(-1), nullptr);
  EXPECT_STREQ(vkcl::IntentName(0), "perceptual");
}

}  // namespace
