// vkcl: look at and change the private data of ICC profiles.
// Exit codes: 0 done, 1 refused or failed, with the reason on the error output, 2 usage.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <string>

#include "Complain.h"
#include "HelpText.h"
#include "Outcome.h"
#include "SelfVerbs.h"
#include "UsageError.h"
#include "Verbs.h"

namespace vkcl::tool {
namespace {

int Run(int argc, char** argv) {
  CLI::App app("Look at and change the private data of ICC profiles", "vkcl");
  app.set_version_flag("--version", std::string("vkcl ") + VKCL_VERSION, "Print the version");
  app.set_help_flag("-h,--help", "Print this help");
  app.footer("Examples:\n  vkcl info press.icc\n  vkcl check *.icc\n  vkcl help set");
  app.require_subcommand(1);
  const std::function<int()> code = AddVerbs(app);
  const std::shared_ptr<void> selfVerbs = AddSelfVerbs(app);
  try {
    app.parse(argc, argv);
    if (std::fflush(stdout) != 0) {
      Complain("the output cannot be written");
      return static_cast<int>(Outcome::Refused);
    }
    return code();
  } catch (const CLI::CallForHelp&) {
    fmt::print("{}", HelpText(CommandOf(VerbOf(app))));
  } catch (const CLI::CallForVersion& version) {
    fmt::print("{}\n", version.what());
  } catch (const CLI::ParseError& error) {
    Complain(WhatIsWrong(app, error));
    return static_cast<int>(Outcome::Usage);
  } catch (const UsageError& error) {
    Complain(error.what());
    return static_cast<int>(Outcome::Usage);
  }
  return static_cast<int>(Outcome::Done);
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
