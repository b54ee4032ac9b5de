// What is wrong with a command line, in words.
#pragma once

#include <CLI/CLI.hpp>
#include <stdexcept>
#include <string>

namespace vkcl::tool {

/// Thrown by a verb that cannot do what it was asked for, for the command line's sake. The text is
/// safe for a terminal.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The verb that the command line has come to.
const CLI::App& VerbOf(const CLI::App& app);

/// Why the parser refused the command line, and where help is. Safe for a terminal, whatever the
/// arguments hold.
std::string WhatIsWrong(const CLI::App& app, const CLI::ParseError& error);

/// That there is no such verb below `above`, and which one may have been meant.
std::string NoSuchVerb(const CLI::App& above, const std::string& name);

}  // namespace vkcl::tool
