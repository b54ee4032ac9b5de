// What the command line takes, read off the parser that takes it: the one source of the help, the
// manual pages and the shells' completions.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vkcl::tool {

/// What a shell may offer for an argument.
enum class Offer { Nothing, Files, Words };

struct Argument {
  std::vector<std::string> names;  ///< "-j" and "--jobs"; the one name of a place
  std::string value;               ///< name of what an option takes; empty for a flag
  std::string what;                ///< one sentence
  bool required = false;
  bool many = false;
  Offer offer = Offer::Nothing;
  std::vector<std::string> words;  ///< those to offer; one that ends in "=" goes on
};

/// A part of the text below the arguments, such as the examples.
struct Section {
  std::string heading;
  std::vector<std::string> lines;
};

struct Command {
  std::vector<std::string> path;  ///< "vkcl", "colors", "mode"
  std::string what;
  std::vector<Argument> places;   ///< told by where they stand
  std::vector<Argument> options;  ///< told by their names
  std::vector<Section> sections;
  Section exitCodes;  ///< what they mean; the usual ones unless the verb says otherwise
  std::vector<Command> commands;
  bool needsCommand = false;

  /// The path as one text, with `between` between its words.
  std::string Name(char between = ' ') const;
};

/// The command and, below it, those that are not hidden.
Command CommandOf(const CLI::App& app);

/// What follows the name in a usage line: "[OPTIONS] FILE...".
std::string UsageOf(const Command& command);
/// "FILE..." of a place, "-j, --jobs N" of an option.
std::string LabelOf(const Argument& argument);
/// The words that an argument may be, as the end of a sentence; none where there are many.
std::string ChoicesOf(const Argument& argument);

}  // namespace vkcl::tool
