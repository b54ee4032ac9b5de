// vkcl: look at and change the private data of ICC profiles.
// Exit codes: 0 done, 1 refused or failed, with the reason on the error output, 2 usage.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Describe.h"
#include "InfoText.h"
#include "Set.h"
#include "Text.h"

namespace {

using vkcl::tool::Outcome;

struct InfoOptions {
  std::vector<std::string> files;
  bool json = false;
  int channels = 0;
};

struct SetOptions {
  std::string file;
  std::vector<std::string> assignments;
  int channels = 0;
  int create = 0;
};

void Complain(const std::string& file, const std::string& why) {
  fmt::print(stderr, "vkcl: {}: {}\n", vkcl::tool::Printable(file), why);
}

int RunInfo(const InfoOptions& options) {
  nlohmann::ordered_json documents = nlohmann::ordered_json::array();
  bool refused = false;
  for (const std::string& file : options.files) {
    nlohmann::ordered_json document = vkcl::tool::Describe(file, options.channels);
    if (!document["valid"].get<bool>()) {
      Complain(file, document["reason"].get<std::string>());
      refused = true;
    }
    if (options.json) {
      documents.push_back(std::move(document));
    } else if (document.contains("header")) {
      fmt::print("{}", vkcl::tool::InfoText(document));
    }
  }
  if (options.json) fmt::print("{}\n", documents.dump(2));
  return static_cast<int>(refused ? Outcome::Refused : Outcome::Done);
}

int RunSet(const SetOptions& options) {
  const vkcl::tool::SetResult result =
      vkcl::tool::SetFields(options.file, options.assignments, options.channels, options.create);
  if (result.outcome == Outcome::Done) {
    fmt::print("{}: {}\n", vkcl::tool::Printable(options.file), result.message);
  } else {
    Complain(options.file, result.message);
  }
  return static_cast<int>(result.outcome);
}

constexpr const char* kChannelsHelp =
    "Channels of the profile, for colour spaces that do not tell (0: from the header)";

int Run(int argc, char** argv) {
  CLI::App app("Look at and change the private data of ICC profiles.", "vkcl");
  app.set_version_flag("--version", std::string("vkcl ") + VKCL_VERSION);
  app.require_subcommand(1);

  InfoOptions info;
  CLI::App* infoCommand = app.add_subcommand("info", "Say what profile files are and hold");
  infoCommand->add_option("FILE", info.files, "Profile files")->required();
  infoCommand->add_flag("--json", info.json, "One JSON array with a document for each file");
  infoCommand->add_option("--channels", info.channels, kChannelsHelp)->check(CLI::Range(0, 16));
  infoCommand->footer("Example:\n  vkcl info --json press.icc");

  SetOptions set;
  CLI::App* setCommand = app.add_subcommand("set", "Set fields of the stored records");
  setCommand->add_option("FILE", set.file, "Profile file")->required();
  setCommand
      ->add_option("ASSIGNMENT", set.assignments,
                   "RECORD.FIELD=VALUE; a list takes values with commas, or RECORD.FIELD[3]=VALUE")
      ->required();
  setCommand->add_option("--channels", set.channels, kChannelsHelp)->check(CLI::Range(0, 16));
  setCommand->add_option(
      "--create", set.create,
      "Make a minimal profile of as many channels (3 to 16) if there is no file");
  setCommand->footer("Records and fields:\n" + vkcl::tool::SettableFields() +
                     "\nExample:\n  vkcl set press.icc ColorParam.Make=Acme "
                     "'SingleInkLimit.limits=100,95,90,85'");

  try {
    app.parse(argc, argv);
    return infoCommand->parsed() ? RunInfo(info) : RunSet(set);
  } catch (const CLI::ParseError& error) {
    const int code = app.exit(error);
    return code == 0 ? 0 : static_cast<int>(Outcome::Usage);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "vkcl: " << error.what() << '\n';
    return static_cast<int>(Outcome::Refused);
  }
}
