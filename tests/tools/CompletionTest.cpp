#include "../../tools/vkcl/Completion.h"

#include <gtest/gtest.h>

namespace vkcl::tool {
namespace {

// A command whose texts hold every sign that means something to a shell.
Command Odd() {
  Command odd;
  odd.path = {"vkcl", "odd"};
  odd.what = "it's $HOME [a: b] \\ `x`";
  odd.options = {{{"-o", "--out"}, "FILE", "'$(x)' ]:", false, false, Offer::Files, {}}};
  Command root;
  root.path = {"vkcl"};
  root.options = {{{"--color"}, "WHEN", "When", false, false, Offer::Words, {"auto", "never"}}};
  root.commands = {odd};
  return root;
}

bool Holds(const std::string& script, const char* text) {
  return script.find(text) != std::string::npos;
}

TEST(Completion, QuotesOneWordForAShell) {
  EXPECT_EQ(ShellQuoted("plain"), "'plain'");
  EXPECT_EQ(ShellQuoted("it's $x"), "'it'\\''s $x'");
}

TEST(Completion, KeepsTextsInsideTheirQuotesForZsh) {
  const std::string script = ZshCompletion(Odd());
  EXPECT_TRUE(script.starts_with("#compdef vkcl\n"));
  EXPECT_TRUE(Holds(script, R"('odd:it'\''s $HOME \[a\: b\] \\ `x`')"));
  EXPECT_TRUE(Holds(script, R"('(-o --out)'{-o+,--out=}'['\''$(x)'\'' \]\:]:FILE:_files')"));
  EXPECT_TRUE(Holds(script, "'--color=[When]:WHEN:(auto never)'"));
}

TEST(Completion, KeepsTextsInsideTheirQuotesForFish) {
  const std::string script = FishCompletion(Odd());
  EXPECT_TRUE(Holds(script, R"(-a 'odd' -d 'it\'s $HOME [a: b] \\ `x`')"));
  EXPECT_TRUE(Holds(script, R"(-s o -l out -r -F -d '\'$(x)\' ]:')"));
  EXPECT_TRUE(Holds(script, "-l color -x -a 'auto never' -d 'When'"));
}

TEST(Completion, TellsBashWhichOptionsTakeAValue) {
  const std::string script = BashCompletion(Odd());
  EXPECT_TRUE(Holds(script, "'vkcl odd') verbs='' options=' -o --out' valued=' -o --out' ;;"));
  EXPECT_TRUE(Holds(script, "'vkcl odd|--out') offer=files ;;"));
  EXPECT_TRUE(Holds(script, "'vkcl|--color') words='auto never' ;;"));
}

}  // namespace
}  // namespace vkcl::tool
