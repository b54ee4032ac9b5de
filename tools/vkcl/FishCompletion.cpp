#include <fmt/format.h>

#include "Completion.h"

namespace vkcl::tool {
namespace {

// The tables stand above it: the commands, and those of their options that take a value.
constexpr const char* kWalk = R"(
# Whether the cursor stands in a place of the command, from the first to the last one.
function __vkcl_at --argument-names command first last
    set -l words (commandline -opc)
    set -e words[1]
    set -l at vkcl
    set -l place 1
    set -l takes_next no
    for word in $words
        if test $takes_next = yes
            set takes_next no
        else if contains -- "$at $word" $__vkcl_commands
            set at "$at $word"
            set place 1
        else if contains -- "$at $word" $__vkcl_valued
            set takes_next yes
        else if not string match -q -- '-*' $word
            set place (math $place + 1)
        end
    end
    test "$at" = "$command"; and test $place -ge $first; and test $place -le $last
end

complete -c vkcl -f
)";

constexpr std::size_t kLast = 9999;

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

std::string Row(const Command& command, std::size_t first, std::size_t last,
                const std::string& rest) {
  const std::string at = fmt::format("__vkcl_at {} {} {}", Quoted(command.Name()), first, last);
  return fmt::format("complete -c vkcl -n {} {}\n", Quoted(at), rest);
}

std::string Words(const Argument& argument) {
  std::string words;
  for (const std::string& word : argument.words) words += (words.empty() ? "" : " ") + word;
  return Quoted(words);
}

std::string OptionRow(const Command& command, const Argument& option) {
  std::string rest;
  for (const std::string& name : option.names) {
    rest += name.starts_with("--") ? "-l " + name.substr(2) + " " : "-s " + name.substr(1) + " ";
  }
  if (!option.value.empty()) rest += option.offer == Offer::Files ? "-r -F " : "-x ";
  if (option.offer == Offer::Words) rest += "-a " + Words(option) + " ";
  return Row(command, 1, kLast, rest + "-d " + Quoted(option.what));
}

std::string PlaceRow(const Command& command, std::size_t number) {
  const Argument& place = command.places[number - 1];
  if (place.offer == Offer::Nothing) return {};
  const std::string rest = place.offer == Offer::Files ? "-F" : "-a " + Words(place);
  return Row(command, number, place.many ? kLast : number, rest);
}

void AddRows(const Command& command, std::string& names, std::string& valued, std::string& rows) {
  for (const Argument& option : command.options) {
    rows += OptionRow(command, option);
    if (option.value.empty()) continue;
    for (const std::string& name : option.names) {
      valued += " " + Quoted(command.Name() + " " + name);
    }
  }
  for (std::size_t i = 1; i <= command.places.size(); ++i) rows += PlaceRow(command, i);
  for (const Command& below : command.commands) {
    names += " " + Quoted(below.Name());
    rows += Row(command, 1, 1, "-a " + Quoted(below.path.back()) + " -d " + Quoted(below.what));
    AddRows(below, names, valued, rows);
  }
}

}  // namespace

std::string FishCompletion(const Command& root) {
  std::string names;
  std::string valued;
  std::string rows;
  AddRows(root, names, valued, rows);
  return fmt::format(
      "# Completion of vkcl for fish; \"vkcl completion fish\" wrote it.\n\n"
      "set -g __vkcl_commands{}\nset -g __vkcl_valued{}\n{}{}",
      names, valued, kWalk, rows);
}

}  // namespace vkcl::tool
