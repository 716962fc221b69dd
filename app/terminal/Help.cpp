#include <algorithm>
#include <string>
#include <string_view>

#include "Options.h"

namespace ovka::terminal {
namespace {

constexpr std::size_t kColumns = 79;
constexpr std::size_t kHelpColumn = 26;

/// Appends `text` broken at spaces, every line after the first indented; the first line is taken to
/// start at `column`. A line feed in the text starts a new line.
void appendWrapped(std::string& out, std::string_view text, std::size_t column,
                   std::size_t indent) {
  bool lineStart = true;
  while (!text.empty()) {
    if (text.front() == '\n') {
      out += '\n';
      text.remove_prefix(1);
      out.append(text.empty() || text.front() == '\n' ? 0 : indent, ' ');
      column = indent;
      lineStart = true;
      continue;
    }
    const std::size_t length = std::min(text.find_first_of(" \n"), text.size());
    if (!lineStart && column + 1 + length > kColumns) {
      out += '\n';
      out.append(indent, ' ');
      column = indent;
    } else if (!lineStart) {
      out += ' ';
      ++column;
    }
    out.append(text.substr(0, length));
    column += length;
    lineStart = false;
    text.remove_prefix(length);
    if (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  }
  out += '\n';
}

void appendRow(std::string& out, const std::string& left, const std::string& help) {
  out += "  " + left;
  std::size_t column = left.size() + 2;
  if (column + 2 > kHelpColumn) {
    out += '\n';
    column = 0;
  }
  out.append(kHelpColumn - column, ' ');
  appendWrapped(out, help, kHelpColumn, kHelpColumn);
}

std::string optionHelp(const Option& option) {
  std::string help = option.help;
  if (option.kind == Option::Kind::Choice) help += " One of: " + option.choices + ".";
  if (option.repeatable) help += " May stand several times.";
  if (!option.preset.empty()) help += " Default: " + option.preset + ".";
  return help;
}

std::string usageLine(const CommandForm& form) {
  std::string usage = "ovka " + form.name;
  for (const Positional& positional : form.positionals)
    usage += positional.optional ? " [" + positional.name + "]" : " " + positional.name;
  return usage + " [options]";
}

}  // namespace

std::string commandHelp(const CommandForm& form) {
  std::string out = "Usage: " + usageLine(form) + "\n\n";
  appendWrapped(out, form.description, 0, 0);
  if (!form.positionals.empty()) {
    out += "\nArguments:\n";
    for (const Positional& positional : form.positionals)
      appendRow(out, positional.name, positional.help);
  }
  for (const OptionGroup& group : form.groups) {
    out += "\n" + group.heading + ":\n";
    for (const Option& option : group.options) {
      appendRow(out, "--" + option.name + (option.value.empty() ? "" : " " + option.value),
                optionHelp(option));
    }
  }
  out += "\nOther:\n";
  appendRow(out, "--help", "This text.");
  if (!form.examples.empty()) {
    out += "\nExamples:\n";
    for (const std::string& example : form.examples) out += "  " + example + "\n";
  }
  return out;
}

std::string programHelp(std::span<const CommandForm> commands) {
  std::string out =
      "OVKA shows the brain waves of an EEG amplifier in the terminal, records them and\n"
      "analyses recordings.\n\nUsage: ovka COMMAND [options]\n\nCommands:\n";
  for (const CommandForm& form : commands) appendRow(out, form.name, form.summary);
  out +=
      "\n'ovka COMMAND --help' explains a command, 'ovka --version' names the version.\n"
      "No amplifier at hand? 'ovka live --demo' brings its own.\n\n"
      "Exit codes: 0 done, 1 failed while running, 2 wrong command line, 3 input file\n"
      "missing or damaged, 4 port cannot be opened, 5 output cannot be written.\n";
  return out;
}

}  // namespace ovka::terminal
