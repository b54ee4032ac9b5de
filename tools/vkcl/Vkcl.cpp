// vkcl: look at and change the private data of ICC profiles.
// Exit codes: 0 done, 1 refused or failed, with the reason on the error output, 2 usage.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "ArgumentKinds.h"
#include "Complain.h"
#include "HelpText.h"
#include "Host.h"
#include "Outcome.h"
#include "SelfVerbs.h"
#include "StandardInput.h"
#include "Style.h"
#include "UsageError.h"
#include "Verbs.h"
#include "edit/ProfileEdit.h"

namespace vkcl::tool {
namespace {

constexpr const char* kExamples = R"(Examples:
  vkcl info press.icc
  vkcl check *.icc
  vkcl help set)";

// What the verb printed may not have arrived. A reader that has gone away, as `head` does, has had
// what it wanted: nothing is said.
int CannotWrite(int reason) {
  if (reason != EPIPE) {
    Complain("the output cannot be written: " + std::generic_category().message(reason));
  }
  return static_cast<int>(Outcome::Refused);
}

constexpr std::pair<const char*, ColorWhen> kColors[] = {
    {"auto", ColorWhen::Auto}, {"always", ColorWhen::Always}, {"never", ColorWhen::Never}};

// The option of every verb, so that it may stand anywhere.
void AddColor(CLI::App& app) {
  app.add_option_function<std::string>(
         "--color",
         [](const std::string& word) {
           for (const auto& [name, when] : kColors) {
             if (word == name) SetColor(when);
           }
         },
         "Colour in texts; auto is on a terminal, unless NO_COLOR is set")
      ->type_name("WHEN")
      ->check(CLI::IsMember({"auto", "always", "never"}));
}

// What a script without a value hands on would be taken for an option that is not given; and edits
// remove what looks like a copy that another one has left unfinished.
std::string WhyNoName(const std::string& name) {
  if (name.empty()) return "a file has a name, and this one is empty";
  if (!IsUnfinishedCopy(AFilePath(name))) return "";
  return "a file of such a name is taken for an unfinished copy, and removed; give it another one";
}

// Only a file that is read may be the standard input.
std::string WhyNoFile(const std::string& name) {
  return name == "-" ? "- is the standard input, which is only read (a file of that name is ./-)"
                     : "";
}

// What is the same for all verbs.
void AddCommon(CLI::App& app) {
  for (CLI::Option* option : app.get_options([](CLI::Option*) { return true; })) {
    const std::string type = option->get_type_name();
    if (type == kFile || type == kInput || type == kOutput) option->check(WhyNoName);
    if (type == kFile) option->check(WhyNoFile);
  }
  AddColor(app);
  for (CLI::App* verb : app.get_subcommands([](CLI::App*) { return true; })) AddCommon(*verb);
}

int Parse(CLI::App& app, int argc, char** argv) {
  const std::function<int()> code = AddVerbs(app);
  const std::shared_ptr<void> selfVerbs = AddSelfVerbs(app);
  AddCommon(app);
  try {
    app.parse(argc, argv);
    return code();
  } catch (const CLI::CallForHelp&) {
    fmt::print("{}", HelpText(CommandOf(VerbOf(app))));
  } catch (const CLI::CallForVersion& version) {
    fmt::print("{}\n", version.what());
  } catch (const CLI::ParseError& error) {
    Complain(WhatIsWrong(app, error));
    return static_cast<int>(Outcome::Usage);
  } catch (const InputError& error) {
    Complain(std::string("-: ") + error.what());
    return static_cast<int>(Outcome::Refused);
  } catch (const UsageError& error) {
    Complain(error.what());
    return static_cast<int>(Outcome::Usage);
  }
  return static_cast<int>(Outcome::Done);
}

int Run(int argc, char** argv) {
  host::OccupyStandardStreams();
  host::LetLongFilesFail();
  CLI::App app("Look at and change the private data of ICC profiles", "vkcl");
  app.set_version_flag("--version", std::string("vkcl ") + VKCL_VERSION, "Print the version");
  app.set_help_flag("-h,--help", "Print this help");
  app.footer(kExamples);
  app.require_subcommand(1);
  try {
    const int code = Parse(app, argc, argv);
    return std::fflush(stdout) == 0 ? code : CannotWrite(errno);
  } catch (const std::system_error& error) {
    if (std::ferror(stdout) == 0) throw;
    return CannotWrite(error.code().value());
  }
}

}  // namespace
}  // namespace vkcl::tool

int main(int argc, char** argv) {
  try {
    return vkcl::tool::Run(argc, argv);
  } catch (const std::exception& error) {
    vkcl::tool::Complain(error.what());
    return static_cast<int>(vkcl::tool::Outcome::Refused);
  }
}
