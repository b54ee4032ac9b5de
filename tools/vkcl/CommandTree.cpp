#include "CommandTree.h"

#include <CLI/CLI.hpp>
#include <sstream>

#include "ArgumentKinds.h"

namespace vkcl::tool {
namespace {

std::vector<std::string> SplitAt(const std::string& text, char mark) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, mark);) parts.push_back(part);
  return parts;
}

// What stands between the marks, which are looked for from the left.
std::string Between(const std::string& text, char first, char last) {
  const std::size_t from = text.find(first);
  const std::size_t to = from == std::string::npos ? from : text.find(last, from);
  return to == std::string::npos ? std::string() : text.substr(from + 1, to - from - 1);
}

std::string ValueName(const std::string& type) {
  if (type == kInput) return "FILE";
  if (type == kOutput) return "FILE";
  return type == "INT" || type == "UINT" || type == "FLOAT" ? "N" : type;
}

// The parser tells the type and the checks in one text: "INT:INT in [0 - 16]", "TEXT:{a,b}". A text
// that nobody said more of is taken for the name of a file, as most are.
void SetType(const std::string& told, Argument& argument) {
  const std::string type = told.substr(0, told.find(':'));
  argument.value = ValueName(type);
  argument.words = SplitAt(Between(told, '{', '}'), ',');
  if (!argument.words.empty()) {
    argument.offer = Offer::Words;
    if (argument.value == "TEXT") argument.value = "WORD";
  } else if (type == kFile || type == kInput || type == kOutput || type == "TEXT") {
    argument.offer = Offer::Files;
  }
  if (type == kInput) argument.what += "; - for the standard input";
  if (type == kOutput) argument.what += "; - for the standard output";
  const std::string range = Between(told, '[', ']');
  if (!range.empty()) argument.what += " [" + range + "]";
}

Argument ArgumentOf(const CLI::Option& option) {
  Argument argument;
  argument.what = option.get_description();
  argument.required = option.get_required();
  argument.many = option.get_expected_max() >= CLI::detail::expected_max_vector_size;
  if (option.get_items_expected_max() > 0) SetType(option.get_type_name(), argument);
  for (const std::string& name : option.get_snames()) argument.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) argument.names.push_back("--" + name);
  if (argument.names.empty()) argument.names.push_back(option.get_name(true));
  return argument;
}

// A line without an indent begins a section: "Example:".
std::vector<Section> SectionsOf(const std::string& footer) {
  std::vector<Section> sections;
  for (const std::string& line : SplitAt(footer, '\n')) {
    if (line.empty()) continue;
    if (line.front() != ' ') {
      sections.push_back({line.substr(0, line.find_last_not_of(':') + 1), {}});
    } else if (!sections.empty()) {
      sections.back().lines.push_back(line.substr(line.find_first_not_of(' ')));
    }
  }
  return sections;
}

// Takes the verb's own ones out of its sections.
Section TakeExitCodes(std::vector<Section>& sections) {
  Section codes = {"Exit codes",
                   {"0  done", "1  refused or failed; the error output says why",
                    "2  the command line is not as it should be"}};
  std::erase_if(sections, [&](const Section& section) {
    if (section.heading != codes.heading) return false;
    codes = section;
    return true;
  });
  return codes;
}

std::vector<std::string> PathOf(const CLI::App& app) {
  std::vector<std::string> path;
  for (const CLI::App* at = &app; at != nullptr; at = at->get_parent()) {
    path.insert(path.begin(), at->get_name());
  }
  return path;
}

}  // namespace

std::string Command::Name(char between) const {
  std::string name;
  for (const std::string& word : path) {
    if (!name.empty()) name += between;
    name += word;
  }
  return name;
}

Command CommandOf(const CLI::App& app) {
  Command command;
  command.path = PathOf(app);
  command.what = app.get_description();
  command.sections = SectionsOf(app.get_footer());
  command.exitCodes = TakeExitCodes(command.sections);
  command.needsCommand = app.get_require_subcommand_min() > 0;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;
    (option->get_positional() ? command.places : command.options).push_back(ArgumentOf(*option));
  }
  const auto all = [](const CLI::App*) { return true; };
  for (const CLI::App* verb : app.get_subcommands(all)) {
    if (!verb->get_group().empty()) command.commands.push_back(CommandOf(*verb));
  }
  return command;
}

std::string UsageOf(const Command& command) {
  std::string usage;
  if (!command.options.empty()) usage += " [OPTIONS]";
  for (const Argument& place : command.places) {
    const std::string label = LabelOf(place);
    usage += place.required ? " " + label : " [" + label + "]";
  }
  if (!command.commands.empty()) usage += command.needsCommand ? " VERB" : " [VERB]";
  return usage.empty() ? usage : usage.substr(1);
}

std::string LabelOf(const Argument& argument) {
  std::string label;
  for (const std::string& name : argument.names) {
    if (!label.empty()) label += ", ";
    label += name;
  }
  const bool isOption = label.front() == '-';
  if (isOption && !argument.value.empty()) label += " " + argument.value;
  return argument.many ? label + "..." : label;
}

std::string ChoicesOf(const Argument& argument) {
  constexpr std::size_t kMost = 8;
  if (argument.words.empty() || argument.words.size() > kMost) return {};
  std::string text;
  for (const std::string& word : argument.words) text += (text.empty() ? ": " : ", ") + word;
  return text;
}

}  // namespace vkcl::tool
