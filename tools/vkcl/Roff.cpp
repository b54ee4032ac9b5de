#include "Roff.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace vkcl::tool {
namespace {

std::string Bold(std::string_view text) { return "\\fB" + RoffText(text) + "\\fR"; }

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

std::string Heading(const std::string& text) {
  return fmt::format(".SH \"{}\"\n", RoffText(Upper(text)));
}

std::string Item(const std::string& label, const std::string& what) {
  return fmt::format(".TP\n{}\n{}\n", label, RoffText(what));
}

// Names bold, what they take not.
std::string Label(const Argument& argument) {
  std::string label;
  for (const std::string& name : argument.names) {
    label += (label.empty() ? "" : ", ") + Bold(name);
  }
  const bool isOption = argument.names.front().front() == '-';
  if (isOption && !argument.value.empty()) label += " \\fI" + RoffText(argument.value) + "\\fR";
  return argument.many ? label + " ..." : label;
}

std::string Items(const char* heading, const std::vector<Argument>& arguments) {
  if (arguments.empty()) return {};
  std::string text = Heading(heading);
  for (const Argument& argument : arguments) {
    text += Item(Label(argument), argument.what + ChoicesOf(argument));
  }
  return text;
}

// Lines as they stand: tables and examples.
std::string Lines(const Section& section) {
  std::string text = Heading(section.heading) + ".nf\n";
  for (const std::string& line : section.lines) text += RoffText(line) + '\n';
  return text + ".fi\n";
}

std::string SeeAlso(const Command& command) {
  std::vector<std::string> names;
  if (command.path.size() > 1) {
    Command above = command;
    above.path.pop_back();
    names.push_back(above.Name('-'));
  }
  for (const Command& below : command.commands) names.push_back(below.Name('-'));
  std::string text;
  for (const std::string& name : names) {
    text += fmt::format("{}{}(1)", text.empty() ? "" : ",\n", Bold(name));
  }
  return text.empty() ? text : Heading("See also") + text + '\n';
}

}  // namespace

std::string RoffText(std::string_view text) {
  std::string escaped;
  bool begins = true;  // a line; there a dot begins a request
  for (const char c : text) {
    switch (c) {
      case '\\': escaped += "\\e"; break;
      case '-': escaped += "\\-"; break;
      case '\'': escaped += "\\(aq"; break;
      case '`': escaped += "\\(ga"; break;
      case '^': escaped += "\\(ha"; break;
      case '~': escaped += "\\(ti"; break;
      case '"': escaped += "\\(dq"; break;
      case '.': escaped += begins ? "\\&." : "."; break;
      default: escaped += c;
    }
    begins = c == '\n';
  }
  return escaped;
}

std::string ManualPage(const Command& command) {
  const std::string name = command.Name('-');
  std::string text = fmt::format(".TH \"{}\" 1 \"\" \"vkcl {}\" \"Manual of vkcl\"\n",
                                 RoffText(Upper(name)), VKCL_VERSION);
  text += Heading("Name") + fmt::format("{} \\- {}\n", RoffText(name), RoffText(command.what));
  text += Heading("Synopsis") +
          fmt::format("{} {}\n", Bold(command.Name()), RoffText(UsageOf(command)));
  text += Items("Arguments", command.places) + Items("Options", command.options);
  if (!command.commands.empty()) text += Heading("Verbs");
  for (const Command& below : command.commands) text += Item(Bold(below.path.back()), below.what);
  for (const Section& section : command.sections) text += Lines(section);
  Section codes = command.exitCodes;
  codes.heading = "Exit status";
  return text + Lines(codes) + SeeAlso(command);
}

}  // namespace vkcl::tool
