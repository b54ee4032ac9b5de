#include "../../tools/vkcl/Roff.h"

#include <gtest/gtest.h>

namespace vkcl::tool {
namespace {

TEST(Roff, EscapesEverySignThatMeansSomething) {
  EXPECT_EQ(RoffText("plain text, 100 %"), "plain text, 100 %");
  EXPECT_EQ(RoffText("C:\\new"), "C:\\enew");
  EXPECT_EQ(RoffText("--dry-run"), "\\-\\-dry\\-run");
  EXPECT_EQ(RoffText("'a' `b` ^ ~ \"c\""), "\\(aqa\\(aq \\(gab\\(ga \\(ha \\(ti \\(dqc\\(dq");
}

TEST(Roff, BeginsNoRequestInTheTextOfALine) {
  EXPECT_EQ(RoffText(".so /etc/passwd"), "\\&.so /etc/passwd");
  EXPECT_EQ(RoffText("a.b\n.sy x\n..\n'br"), "a.b\n\\&.sy x\n\\&..\n\\(aqbr");
}

TEST(Roff, WritesAPageOfWhatACommandTakes) {
  Command command;
  command.path = {"vkcl", "odd"};
  command.what = ".begins with a dot";
  command.places = {{{"FILE"}, "FILE", "A file", true, true, Offer::Files, {}}};
  command.options = {{{"-o", "--out"}, "FILE", "Where \\n goes", false, false, Offer::Files, {}}};
  command.sections = {{"Example", {"vkcl odd --out '.x'"}}};
  const std::string page = ManualPage(command);
  const auto holds = [&](const char* text) { return page.find(text) != std::string::npos; };
  EXPECT_TRUE(page.starts_with(".TH \"VKCL\\-ODD\" 1 "));
  EXPECT_TRUE(holds("\nvkcl\\-odd \\- \\&.begins with a dot\n"));
  EXPECT_TRUE(holds("\n.TP\n\\fB\\-o\\fR, \\fB\\-\\-out\\fR \\fIFILE\\fR\nWhere \\en goes\n"));
  EXPECT_TRUE(holds("\n.TP\n\\fBFILE\\fR ...\nA file\n"));
  EXPECT_TRUE(holds("\n.nf\nvkcl odd \\-\\-out \\(aq.x\\(aq\n.fi\n"));
  EXPECT_TRUE(holds("\\fBvkcl\\fR(1)"));
}

}  // namespace
}  // namespace vkcl::tool
