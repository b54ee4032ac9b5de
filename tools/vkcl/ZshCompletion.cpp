#include <fmt/format.h>

#include "Completion.h"

namespace vkcl::tool {
namespace {

// A text within a specification of _arguments or _describe.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\' || c == '[' || c == ']' || c == ':') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string FunctionName(const Command& command) { return "_" + command.Name('_'); }

std::string Action(const Argument& argument) {
  if (argument.offer == Offer::Files) return "_files";
  if (argument.offer == Offer::Nothing) return " ";
  bool goesOn = false;
  std::string words;
  for (const std::string& word : argument.words) {
    goesOn = goesOn || word.ends_with('=');
    words += (words.empty() ? "" : " ") + word;
  }
  return goesOn ? fmt::format("{{compadd -S \"\" -- {}}}", words) : fmt::format("({})", words);
}

// -j takes its value in the same word or the next one, --jobs behind "=" or in the next one.
std::string OptionRow(const Argument& option) {
  std::string names;
  for (const std::string& name : option.names) {
    const char* mark = option.value.empty() ? "" : name.starts_with("--") ? "=" : "+";
    names += (names.empty() ? "" : ",") + name + mark;
  }
  std::string rest = "[" + Escaped(option.what) + "]";
  if (!option.value.empty()) rest += fmt::format(":{}:{}", Escaped(option.value), Action(option));
  if (option.names.size() == 1) return fmt::format("    {} \\\n", ShellQuoted(names + rest));
  std::string all;
  for (const std::string& name : option.names) all += (all.empty() ? "" : " ") + name;
  return fmt::format("    {}{{{}}}{} \\\n", ShellQuoted("(" + all + ")"), names, ShellQuoted(rest));
}

std::string PlaceRow(const Argument& place, std::size_t number) {
  const std::string where = place.many ? "*" : std::to_string(number);
  return fmt::format(
      "    {} \\\n",
      ShellQuoted(fmt::format("{}:{}:{}", where, Escaped(place.names[0]), Action(place))));
}

// The verbs below a command and, where it takes one itself, its file.
std::string VerbsFunction(const Command& command) {
  std::string rows;
  for (const Command& below : command.commands) {
    rows += fmt::format("    {}\n", ShellQuoted(below.path.back() + ":" + Escaped(below.what)));
  }
  const bool files = !command.places.empty() && command.places[0].offer == Offer::Files;
  return fmt::format(
      "{}_verbs() {{\n  local -a verbs=(\n{}  )\n  _describe -t verbs verb verbs{}\n}}\n\n",
      FunctionName(command), rows, files ? "\n  _files" : "");
}

std::string Function(const Command& command) {
  std::string rows;
  for (const Argument& option : command.options) rows += OptionRow(option);
  const std::string name = FunctionName(command);
  if (command.commands.empty()) {
    std::size_t number = 0;
    for (const Argument& place : command.places) rows += PlaceRow(place, ++number);
    rows.erase(rows.size() - 3);
    return fmt::format("{}() {{\n  _arguments -s -S \\\n{}\n}}\n\n", name, rows);
  }
  std::string cases;
  for (const Command& below : command.commands) {
    cases += fmt::format("    {}) {} && ret=0 ;;\n", below.path.back(), FunctionName(below));
  }
  return VerbsFunction(command) +
         fmt::format(
             "{0}() {{\n  local curcontext=\"$curcontext\" context state state_descr line ret=1\n"
             "  typeset -A opt_args\n  _arguments -C -s -S -A '-*' \\\n{1}    '1: :{0}_verbs' \\\n"
             "    '*:: :->rest' && ret=0\n"
             "  [[ $state == rest ]] && case $words[1] in\n{2}  esac\n  return ret\n}}\n\n",
             name, rows, cases);
}

std::string Functions(const Command& command) {
  std::string text;
  for (const Command& below : command.commands) text += Functions(below);
  return text + Function(command);
}

}  // namespace

std::string ZshCompletion(const Command& root) {
  return "#compdef vkcl\n# Completion of vkcl for zsh; \"vkcl completion zsh\" wrote it.\n\n" +
         Functions(root) +
         "if [[ $funcstack[1] == _vkcl ]]; then\n  _vkcl \"$@\"\nelse\n  compdef _vkcl vkcl\nfi\n";
}

}  // namespace vkcl::tool
