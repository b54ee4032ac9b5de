#include <fmt/format.h>

#include "Completion.h"

namespace vkcl::tool {
namespace {

// How the script walks along the words before the cursor; the tables stand above it.
constexpr const char* kWalk = R"(
_vkcl() {
  local line=() word prefix='' option='' place=1 at=vkcl i
  local verbs options valued offer words
  COMPREPLY=()
  # Readline may have parted words at "=".
  for ((i = 1; i <= COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if ((${#line[@]})) && [[ $word == = || ${line[-1]} == *= ]]; then
      line[-1]+=$word
    else
      line+=("$word")
    fi
  done
  local current=${line[-1]}
  unset 'line[-1]'
  _vkcl_verb "$at"
  for word in "${line[@]}"; do
    if [[ $option ]]; then
      option=''
    elif [[ $word == -* ]]; then
      [[ " $valued " == *" $word "* ]] && option=$word
    elif [[ " $verbs " == *" $word "* ]]; then
      at+=" $word" place=1
      _vkcl_verb "$at"
    else
      ((place++))
    fi
  done
  offer=nothing words=''
  if [[ $option ]]; then
    _vkcl_offer "$at|$option"
  elif [[ $current == --*=* ]]; then
    _vkcl_offer "$at|${current%%=*}"
    [[ $COMP_WORDBREAKS == *=* ]] || prefix=${current%%=*}=
    current=${current#*=}
  elif [[ $current == -* ]]; then
    words=$options
  elif [[ $current != *=* ]]; then
    _vkcl_offer "$at|$place"
    words+=" $verbs"
  fi
  for word in $words; do
    [[ $word == "$current"* ]] || continue
    COMPREPLY+=("$prefix$word")
    [[ $word == *= ]] && compopt -o nospace
  done
  [[ $offer == files ]] && compopt -o default
}
complete -F _vkcl vkcl
)";

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

std::string VerbRow(const Command& command) {
  std::string verbs;
  std::string options;
  std::string valued;
  for (const Command& below : command.commands) verbs += " " + below.path.back();
  for (const Argument& option : command.options) {
    options += " " + Joined(option.names);
    if (!option.value.empty()) valued += " " + Joined(option.names);
  }
  return fmt::format("    {}) verbs={} options={} valued={} ;;\n", ShellQuoted(command.Name()),
                     ShellQuoted(verbs), ShellQuoted(options), ShellQuoted(valued));
}

std::string OfferRow(const std::string& pattern, const Argument& argument) {
  if (argument.offer == Offer::Nothing) return {};
  if (argument.offer == Offer::Files) return fmt::format("    {}) offer=files ;;\n", pattern);
  return fmt::format("    {}) words={} ;;\n", pattern, ShellQuoted(Joined(argument.words)));
}

std::string OfferRows(const Command& command) {
  std::string rows;
  const std::string at = command.Name() + "|";
  for (const Argument& option : command.options) {
    if (option.value.empty()) continue;
    for (const std::string& name : option.names) rows += OfferRow(ShellQuoted(at + name), option);
  }
  for (std::size_t i = 0; i < command.places.size(); ++i) {
    const Argument& place = command.places[i];
    // Of many, the later ones, too.
    rows += OfferRow(
        place.many ? ShellQuoted(at) + "[0-9]*" : ShellQuoted(at + std::to_string(i + 1)), place);
  }
  return rows;
}

void AddRows(const Command& command, std::string& verbs, std::string& offers) {
  verbs += VerbRow(command);
  offers += OfferRows(command);
  for (const Command& below : command.commands) AddRows(below, verbs, offers);
}

}  // namespace

std::string ShellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string BashCompletion(const Command& root) {
  std::string verbs;
  std::string offers;
  AddRows(root, verbs, offers);
  return fmt::format(
      "# Completion of vkcl for bash 4.3 and later; \"vkcl completion bash\" wrote it.\n\n"
      "_vkcl_verb() {{\n  verbs='' options='' valued=''\n  case $1 in\n{}  esac\n}}\n\n"
      "_vkcl_offer() {{\n  case $1 in\n{}  esac\n}}\n{}",
      verbs, offers, kWalk);
}

}  // namespace vkcl::tool
