#include "Options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "EditDistance.h"
#include "Failure.h"
#include "Numbers.h"

namespace ovka::terminal {
namespace {

[[noreturn]] void wrongUsage(const CommandForm& form, const std::string& message) {
  throw Failure(ExitCode::Usage, message + "; see 'ovka " + form.name + " --help'");
}

const Option* findOption(const CommandForm& form, std::string_view name) {
  for (const OptionGroup& group : form.groups) {
    for (const Option& option : group.options) {
      if (option.name == name) return &option;
    }
  }
  return nullptr;
}

std::vector<std::string> optionNames(const CommandForm& form) {
  std::vector<std::string> names{"help"};
  for (const OptionGroup& group : form.groups) {
    for (const Option& option : group.options) names.push_back(option.name);
  }
  return names;
}

bool holdsWord(std::string_view words, std::string_view word) {
  while (!words.empty()) {
    const std::size_t end = words.find(' ');
    if (words.substr(0, end) == word) return true;
    words = end == std::string_view::npos ? std::string_view{} : words.substr(end + 1);
  }
  return false;
}

/// What is wrong with a value, or an empty text.
std::string valueProblem(const Option& option, const std::string& value) {
  const std::string range =
      shortestNumber(option.minimum) + " to " + shortestNumber(option.maximum);
  const auto outside = [&](double number) {
    return number < option.minimum || number > option.maximum;
  };
  switch (option.kind) {
    case Option::Kind::Switch:
      return {};
    case Option::Kind::Text:
      return value.empty() ? "it needs a " + option.value : "";
    case Option::Kind::Integer: {
      const auto number = readInteger(value);
      if (!number || outside(static_cast<double>(*number)))
        return "it takes a whole number from " + range;
      return {};
    }
    case Option::Kind::Number: {
      const auto number = readNumber(value);
      return !number || outside(*number) ? "it takes a number from " + range : "";
    }
    case Option::Kind::Choice:
      return holdsWord(option.choices, value) ? "" : "it takes one of: " + option.choices;
  }
  return {};
}

}  // namespace

Option Option::flag(std::string name, std::string help) {
  return {.name = std::move(name), .kind = Kind::Switch, .value = {}, .help = std::move(help)};
}

Option Option::text(std::string name, std::string value, std::string help) {
  return {.name = std::move(name),
          .kind = Kind::Text,
          .value = std::move(value),
          .help = std::move(help)};
}

Option Option::integer(std::string name, std::string value, double minimum, double maximum,
                       std::string help) {
  return {.name = std::move(name),
          .kind = Kind::Integer,
          .value = std::move(value),
          .help = std::move(help),
          .minimum = minimum,
          .maximum = maximum};
}

Option Option::number(std::string name, std::string value, double minimum, double maximum,
                      std::string help) {
  Option option = integer(std::move(name), std::move(value), minimum, maximum, std::move(help));
  option.kind = Kind::Number;
  return option;
}

Option Option::choice(std::string name, std::string value, std::string choices, std::string help) {
  Option option = text(std::move(name), std::move(value), std::move(help));
  option.kind = Kind::Choice;
  option.choices = std::move(choices);
  return option;
}

Option Option::orElse(std::string presetValue) const {
  Option option = *this;
  option.preset = std::move(presetValue);
  return option;
}

Option Option::repeated() const {
  Option option = *this;
  option.repeatable = true;
  return option;
}

Arguments::Arguments(const CommandForm& form) {
  for (const OptionGroup& group : form.groups) {
    for (const Option& option : group.options) {
      if (!option.preset.empty()) presets_[option.name] = option.preset;
    }
  }
}

bool Arguments::given(std::string_view name) const {
  return values_.find(name) != values_.end();
}

std::optional<std::string> Arguments::text(std::string_view name) const {
  if (const auto found = values_.find(name); found != values_.end()) return found->second.back();
  if (const auto found = presets_.find(name); found != presets_.end()) return found->second;
  return std::nullopt;
}

std::optional<std::int64_t> Arguments::integer(std::string_view name) const {
  const auto value = text(name);
  return value ? readInteger(*value) : std::nullopt;
}

std::optional<double> Arguments::number(std::string_view name) const {
  const auto value = text(name);
  return value ? readNumber(*value) : std::nullopt;
}

std::vector<std::string> Arguments::all(std::string_view name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::vector<std::string>{} : found->second;
}

const std::string& Arguments::positional(std::size_t index) const {
  return positionals_.at(index);
}

/// Walks over the words of one line.
class LineParser {
 public:
  LineParser(const CommandForm& form, std::span<const std::string> words)
      : spec_(form), words_(words), result_(form) {}

  Arguments run() {
    bool optionsEnded = false;
    while (next_ < words_.size()) {
      const std::string& word = words_[next_++];
      if (!optionsEnded && word == "--") {
        optionsEnded = true;
      } else if (!optionsEnded && (word == "-h" || word == "--help")) {
        result_.helpWanted_ = true;
      } else if (!optionsEnded && word.starts_with("--")) {
        takeOption(std::string_view(word).substr(2));
      } else if (!optionsEnded && word.size() > 1 && word.front() == '-') {
        wrongUsage(spec_, "there is no option '" + word + "': options have two dashes");
      } else {
        takePositional(word);
      }
    }
    if (!result_.helpWanted_) checkWhole();
    return std::move(result_);
  }

 private:
  void takeOption(std::string_view word) {
    const std::size_t equals = word.find('=');
    const std::string name(word.substr(0, equals));
    const Option* option = findOption(spec_, name);
    if (option == nullptr) {
      const std::string near = didYouMean(name, optionNames(spec_));
      wrongUsage(spec_, "there is no option '--" + name + "'" +
                            (near.empty() ? "" : ", did you mean '--" + near + "'?"));
    }
    auto& values = result_.values_[name];
    if (!values.empty() && !option->repeatable)
      wrongUsage(spec_, "'--" + name + "' stands on the line twice");
    if (option->kind == Option::Kind::Switch) {
      if (equals != std::string_view::npos)
        wrongUsage(spec_, "'--" + name + "' is a switch and takes no value");
      values.emplace_back();
      return;
    }
    const std::string value = equals != std::string_view::npos
                                  ? std::string(word.substr(equals + 1))
                                  : separateValue(*option);
    if (const std::string problem = valueProblem(*option, value); !problem.empty())
      wrongUsage(spec_, "'--" + name + "' cannot be '" + value + "': " + problem);
    values.push_back(value);
  }

  std::string separateValue(const Option& option) {
    if (next_ >= words_.size() || words_[next_].starts_with("--")) {
      wrongUsage(spec_,
                 "'--" + option.name + "' needs a value: --" + option.name + " " + option.value);
    }
    return words_[next_++];
  }

  void takePositional(const std::string& word) {
    if (result_.positionals_.size() >= spec_.positionals.size())
      wrongUsage(spec_, "'" + word + "' is one word too many");
    result_.positionals_.push_back(word);
  }

  void checkWhole() const {
    if (const std::size_t count = result_.positionals_.size();
        count < spec_.positionals.size() && !spec_.positionals[count].optional)
      wrongUsage(spec_, "the " + spec_.positionals[count].name + " is missing");
    for (const Exclusive& exclusive : spec_.exclusives) {
      std::string all;
      int given = 0;
      for (const std::string& name : exclusive.names) {
        all += (all.empty() ? "--" : name == exclusive.names.back() ? " or --" : ", --") + name;
        if (result_.given(name)) ++given;
      }
      if (given > 1) wrongUsage(spec_, "only one of " + all + " can be chosen");
      if (given == 0 && exclusive.required) wrongUsage(spec_, "choose one of " + all);
    }
  }

  const CommandForm& spec_;
  std::span<const std::string> words_;
  Arguments result_;
  std::size_t next_ = 0;
};

Arguments parseLine(const CommandForm& form, std::span<const std::string> words) {
  return LineParser(form, words).run();
}

std::string didYouMean(std::string_view word, std::span<const std::string> candidates) {
  std::string nearest;
  // A third of the letters may be wrong, and two in a short word: more is another word.
  std::size_t best = std::max<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const bool begins = word.size() >= 3 && candidate.starts_with(word);
    const std::size_t letters = begins ? 1 : editDistance(word, candidate);
    if (letters < best && letters < candidate.size()) {
      best = letters;
      nearest = candidate;
    }
  }
  return nearest;
}

std::optional<std::int64_t> readInteger(std::string_view text) {
  std::int64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return value;
}

std::optional<double> readNumber(std::string_view text) {
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc{} || stop != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

}  // namespace ovka::terminal
