// vkcl: look at and change the private data of ICC profiles.
// Exit codes: 0 done, 1 refused or failed, with the reason on the error output, 2 usage.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

#include "Complain.h"
#include "Outcome.h"
#include "Verbs.h"

namespace vkcl::tool {
namespace {

int Run(int argc, char** argv) {
  CLI::App app("Look at and change the private data of ICC profiles.", "vkcl");
  app.set_version_flag("--version", std::string("vkcl ") + VKCL_VERSION);
  app.require_subcommand(1);
  const std::function<int()> code = AddVerbs(app);
  try {
    app.parse(argc, argv);
    if (std::fflush(stdout) != 0) {
      Complain("the output cannot be written");
      return static_cast<int>(Outcome::Refused);
    }
    return code();
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : static_cast<int>(Outcome::Usage);
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
