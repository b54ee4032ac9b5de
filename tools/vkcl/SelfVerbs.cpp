#include "SelfVerbs.h"

#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "ArgumentKinds.h"
#include "Completion.h"
#include "HelpText.h"
#include "Roff.h"
#include "Text.h"
#include "UsageError.h"
#include "platform/plinth/ReplaceFile.h"

namespace vkcl::tool {
namespace {

// Not by the tree: that would ask for these names.
std::vector<std::string> NamesBelow(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (!verb->get_group().empty()) names.push_back(verb->get_name());
  }
  return names;
}

struct Shell {
  std::string_view name;
  std::string (*script)(const Command& root);
};
constexpr Shell kShells[] = {
    {"bash", BashCompletion}, {"zsh", ZshCompletion}, {"fish", FishCompletion}};

std::vector<std::string> ShellNames() {
  std::vector<std::string> names;
  for (const Shell& shell : kShells) names.emplace_back(shell.name);
  return names;
}

class SelfVerbs {
 public:
  explicit SelfVerbs(CLI::App& app) : app_(app) {}

  void AddHelp() {
    CLI::App* verb = app_.add_subcommand("help", "Show the help of a verb");
    verb->footer("Examples:\n  vkcl help info\n  vkcl help colors mode");
    verb->add_option("VERB", words_, "The verb; nothing for the tool as a whole")
        ->type_name(kName)
        ->check(Words([this] { return NamesBelow(app_); }));
    verb->callback([this] { fmt::print("{}", HelpText(CommandOf(Find(words_)))); });
  }

  void AddCompletion() {
    CLI::App* verb = app_.add_subcommand("completion", "Write the completion script of a shell");
    verb->footer(
        "Examples:\n"
        "  vkcl completion bash > ~/.local/share/bash-completion/completions/vkcl\n"
        "  vkcl completion zsh > ~/.zfunc/_vkcl\n"
        "  vkcl completion fish > ~/.config/fish/completions/vkcl.fish");
    verb->add_option("SHELL", shell_, "The shell")
        ->type_name(kName)
        ->required()
        ->check(CLI::IsMember(ShellNames()));
    verb->callback([this] {
      for (const Shell& shell : kShells) {
        if (shell.name == shell_) fmt::print("{}", shell.script(CommandOf(app_)));
      }
    });
  }

  // Whoever packs the tool calls this one, nobody else; the build does.
  void AddManual() {
    CLI::App* verb = app_.add_subcommand("manual", "Write the manual pages, as troff source");
    verb->group("");
    verb->footer("Examples:\n  vkcl manual info | man -l -\n  vkcl manual --all share/man/man1");
    verb->add_option("VERB", words_, "The verb; nothing for the tool as a whole")->type_name(kName);
    verb->add_option("--all", folder_, "Write the pages of all verbs into this folder")
        ->type_name(kFile);
    verb->callback([this] {
      if (folder_.empty()) {
        fmt::print("{}", ManualPage(CommandOf(Find(words_))));
      } else {
        WriteManual(CommandOf(app_));
      }
    });
  }

 private:
  void WriteManual(const Command& command) const {
    const AFilePath path(folder_ + "/" + command.Name('-') + ".1");
    if (!ReplaceFile(path, ManualPage(command))) {
      throw std::runtime_error(fmt::format("{} cannot be written", Printable(path.str())));
    }
    for (const Command& below : command.commands) WriteManual(below);
  }

  const CLI::App& Find(const std::vector<std::string>& words) const {
    const CLI::App* at = &app_;
    for (const std::string& word : words) {
      const CLI::App* below = FindVerb(*at, word);
      if (below == nullptr) throw UsageError(NoSuchVerb(*at, word));
      at = below;
    }
    return *at;
  }

  static const CLI::App* FindVerb(const CLI::App& above, const std::string& name) {
    const auto found =
        above.get_subcommands([&](const CLI::App* verb) { return verb->check_name(name); });
    return found.empty() ? nullptr : found.front();
  }

  CLI::App& app_;
  std::vector<std::string> words_;
  std::string folder_;
  std::string shell_;
};

}  // namespace

std::shared_ptr<void> AddSelfVerbs(CLI::App& app) {
  const auto verbs = std::make_shared<SelfVerbs>(app);
  verbs->AddHelp();
  verbs->AddCompletion();
  verbs->AddManual();
  return verbs;
}

}  // namespace vkcl::tool
