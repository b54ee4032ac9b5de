#include "HelpText.h"

#include <fmt/format.h>

#include <string_view>

namespace vkcl::tool {
namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kColumn = 26;

// The text with line breaks, so that it fits behind an indent that its first line has already.
std::string Wrapped(std::string_view text, std::size_t indent) {
  const std::size_t most = kWidth - indent;
  std::string lines;
  while (text.size() > most) {
    std::size_t cut = text.rfind(' ', most);
    if (cut == std::string_view::npos) cut = text.find(' ');
    if (cut == std::string_view::npos) break;
    lines += fmt::format("{}\n{:{}}", text.substr(0, cut), "", indent);
    text.remove_prefix(cut + 1);
  }
  return lines + std::string(text) + '\n';
}

std::string Row(const std::string& label, const std::string& what) {
  const bool fits = label.size() + 4 <= kColumn;
  const std::string start = fits ? fmt::format("  {:<{}}", label, kColumn - 2)
                                 : fmt::format("  {}\n{:{}}", label, "", kColumn);
  return start + Wrapped(what, kColumn);
}

std::string Rows(const char* heading, const std::vector<Argument>& arguments) {
  if (arguments.empty()) return {};
  std::string text = fmt::format("\n{}:\n", heading);
  for (const Argument& argument : arguments) {
    text += Row(LabelOf(argument), argument.what + ChoicesOf(argument));
  }
  return text;
}

std::string SectionText(const Section& section) {
  std::string text = fmt::format("\n{}:\n", section.heading);
  for (const std::string& line : section.lines) {
    // A table goes on in its last column; an example is one line, however long.
    const std::size_t gap = line.find("  ");
    const std::size_t column = gap == std::string::npos ? gap : line.find_first_not_of(' ', gap);
    text += column == std::string::npos
                ? fmt::format("  {}\n", line)
                : fmt::format("  {}{}", line.substr(0, column),
                              Wrapped(std::string_view(line).substr(column), column + 2));
  }
  return text;
}

}  // namespace

std::string HelpText(const Command& command) {
  std::string text = Wrapped(command.what, 0);
  text += fmt::format("\nUsage: {} {}\n", command.Name(), UsageOf(command));
  text += Rows("Arguments", command.places) + Rows("Options", command.options);
  if (!command.commands.empty()) text += "\nVerbs:\n";
  for (const Command& verb : command.commands) text += Row(verb.path.back(), verb.what);
  for (const Section& section : command.sections) text += SectionText(section);
  return text + SectionText(command.exitCodes);
}

}  // namespace vkcl::tool
