#include "UsageError.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "CommandTree.h"
#include "Text.h"

namespace vkcl::tool {
namespace {

// How many letters must be put in, left out, or replaced to make one word the other.
std::size_t Distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t corner = row[0]++;
    for (std::size_t k = 0; k < to.size(); ++k) {
      const std::size_t replaced = corner + (from[i] == to[k] ? 0 : 1);
      corner = row[k + 1];
      row[k + 1] = std::min({replaced, row[k] + 1, corner + 1});
    }
  }
  return row.back();
}

// The verb whose name is nearest, or none when all are far.
std::string Nearest(const Command& above, const std::string& name) {
  constexpr std::size_t kLongestName = 32;
  if (name.size() > kLongestName) return {};
  std::string nearest;
  std::size_t least = std::max<std::size_t>(2, name.size() / 3) + 1;
  for (const Command& command : above.commands) {
    const std::size_t distance = Distance(name, command.path.back());
    if (distance >= least || distance >= name.size()) continue;
    least = distance;
    nearest = command.path.back();
  }
  return nearest;
}

std::string Reason(const CLI::App& verb, const CLI::ParseError& error) {
  const bool noVerb = verb.get_require_subcommand_min() > 0 && verb.get_subcommands().empty();
  const std::vector<std::string> rest = verb.remaining();
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr && !rest.empty()) {
    return fmt::format("{} was not expected", Printable(rest[0]));
  }
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
    const std::string told = error.what();
    return fmt::format("{} needs a value", Printable(told.substr(0, told.find(':'))));
  }
  if (!noVerb || dynamic_cast<const CLI::RequiredError*>(&error) == nullptr) {
    return Printable(error.what());
  }
  if (rest.empty()) return "a verb is required";
  if (rest[0].starts_with('-')) return fmt::format("there is no option {}", Printable(rest[0]));
  return NoSuchVerb(verb, rest[0]);
}

}  // namespace

const CLI::App& VerbOf(const CLI::App& app) {
  const CLI::App* at = &app;
  while (!at->get_subcommands().empty()) at = at->get_subcommands().front();
  return *at;
}

std::string WhatIsWrong(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App& verb = VerbOf(app);
  const Command command = CommandOf(verb);
  std::string place;
  for (std::size_t i = 1; i < command.path.size(); ++i) {
    place += command.path[i] + (i + 1 < command.path.size() ? " " : ": ");
  }
  return fmt::format("{}{}; see {} --help", place, Reason(verb, error), command.Name());
}

std::string NoSuchVerb(const CLI::App& above, const std::string& name) {
  const std::string nearest = Nearest(CommandOf(above), name);
  return fmt::format("there is no verb \"{}\"{}", Printable(name),
                     nearest.empty() ? "" : " (did you mean \"" + nearest + "\"?)");
}

}  // namespace vkcl::tool
