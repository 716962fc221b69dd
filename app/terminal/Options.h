#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ovka::terminal {

/// One option of a command, long form only. Values are checked while parsing, so a command never
/// sees one outside its range.
struct Option {
  enum class Kind : std::uint8_t {
    Switch,   ///< takes no value
    Text,     ///< any text but an empty one
    Integer,  ///< a whole number in minimum ... maximum
    Number,   ///< a finite number in minimum ... maximum
    Choice,   ///< one of the words of `choices`
  };

  std::string name;  ///< without the dashes
  Kind kind = Kind::Switch;
  std::string value;  ///< what help calls the value ("PATH")
  std::string help;   ///< one or two sentences
  double minimum = 0;
  double maximum = 0;
  std::string choices{};  ///< words separated by one space
  bool repeatable = false;
  std::string preset{};  ///< the value taken when the option is not given; empty: none

  static Option flag(std::string name, std::string help);
  static Option text(std::string name, std::string value, std::string help);
  static Option integer(std::string name, std::string value, double minimum, double maximum,
                        std::string help);
  static Option number(std::string name, std::string value, double minimum, double maximum,
                       std::string help);
  static Option choice(std::string name, std::string value, std::string choices, std::string help);
  /// The same option with a value that counts when it is not given.
  [[nodiscard]] Option orElse(std::string presetValue) const;
  /// The same option, allowed several times.
  [[nodiscard]] Option repeated() const;
};

/// Options under one heading of a command's help.
struct OptionGroup {
  std::string heading;
  std::vector<Option> options;
};

/// An argument without a name, in the order of the list.
struct Positional {
  std::string name;  ///< what help calls it ("CAPTURE")
  std::string help;
  bool optional = false;  ///< only behind those that are not
};

/// Options of which at most one may stand on a line, and whether one must.
struct Exclusive {
  std::vector<std::string> names;
  bool required = false;
};

/// Everything that parsing and help need to know about a command.
struct CommandForm {
  std::string name;
  std::string summary;      ///< one line for the list of commands
  std::string description;  ///< a paragraph or two for the command's own help
  std::vector<Positional> positionals{};
  std::vector<OptionGroup> groups{};
  std::vector<Exclusive> exclusives{};
  std::vector<std::string> examples{};
};

/// The values of one parsed line. Options that were not given answer with their preset, else with
/// nothing.
class Arguments {
 public:
  explicit Arguments(const CommandForm& form);

  /// True when the option itself stood on the line.
  [[nodiscard]] bool given(std::string_view name) const;
  [[nodiscard]] std::optional<std::string> text(std::string_view name) const;
  [[nodiscard]] std::optional<std::int64_t> integer(std::string_view name) const;
  [[nodiscard]] std::optional<double> number(std::string_view name) const;
  /// Every value of a repeatable option, in the order of the line.
  [[nodiscard]] std::vector<std::string> all(std::string_view name) const;
  [[nodiscard]] const std::string& positional(std::size_t index) const;
  /// Arguments without a name that stood on the line.
  [[nodiscard]] std::size_t positionals() const { return positionals_.size(); }
  [[nodiscard]] bool helpWanted() const { return helpWanted_; }

 private:
  friend class LineParser;
  std::map<std::string, std::string, std::less<>> presets_;
  std::map<std::string, std::vector<std::string>, std::less<>> values_;
  std::vector<std::string> positionals_;
  bool helpWanted_ = false;
};

/// Parses the words behind the command's name: `--name VALUE`, `--name=VALUE`, `--switch`,
/// `--help`,
/// `-h`, positional words; `--` ends the options. A value that itself begins with two dashes needs
/// the `=` form, so that a forgotten value does not swallow the next option. Throws Failure
/// (ExitCode::Usage) with one line that says what is wrong and what would be right.
[[nodiscard]] Arguments parseLine(const CommandForm& form, std::span<const std::string> words);

/// The help text of one command, and of the program: at most 80 columns.
[[nodiscard]] std::string commandHelp(const CommandForm& form);
[[nodiscard]] std::string programHelp(std::span<const CommandForm> commands);

/// The candidate nearest to a mistyped word when it is near enough to be meant, else empty.
[[nodiscard]] std::string didYouMean(std::string_view word,
                                     std::span<const std::string> candidates);

/// Reads a whole number or a finite number from the whole of a text; nothing else is accepted.
[[nodiscard]] std::optional<std::int64_t> readInteger(std::string_view text);
[[nodiscard]] std::optional<double> readNumber(std::string_view text);

}  // namespace ovka::terminal
