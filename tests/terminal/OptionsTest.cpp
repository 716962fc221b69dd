#include <doctest/doctest.h>
#include <sstream>

#include "Failure.h"
#include "Options.h"

using namespace ovka::terminal;

namespace {

CommandForm sample() {
  CommandForm form;
  form.name = "sample";
  form.description = "A command to test with.";
  form.positionals = {{"FILE", "A file."}};
  form.groups = {{"Options",
                  {Option::text("port", "PATH", "The port."), Option::flag("demo", "Without port."),
                   Option::integer("model", "N", 0, 9, "The model.").orElse("6"),
                   Option::number("seconds", "S", 0.01, 1e6, "How long."),
                   Option::choice("signal", "KIND", "eeg sine file", "The signal.").orElse("eeg"),
                   Option::integer("at", "POINT", -10, 1e15, "A point.").repeated()}}};
  form.exclusives = {{{"port", "demo"}, false}};
  return form;
}

Arguments parse(std::vector<std::string> words) {
  return parseLine(sample(), words);
}

/// The message of a refused line; "accepted" when it was not refused.
std::string problem(std::vector<std::string> words) {
  try {
    static_cast<void>(parse(std::move(words)));
  } catch (const Failure& failure) {
    CHECK(failure.code() == ExitCode::Usage);
    return failure.what();
  }
  return "accepted";
}

}  // namespace

TEST_CASE("both forms of a value, repetition, presets and positionals") {
  const Arguments a =
      parse({"x.cap", "--port", "/dev/tty0", "--seconds=2.5", "--at", "7", "--at=-3"});
  CHECK(a.positional(0) == "x.cap");
  CHECK(a.text("port") == "/dev/tty0");
  CHECK(a.number("seconds") == 2.5);
  CHECK(a.all("at") == std::vector<std::string>{"7", "-3"});
  CHECK(a.integer("model") == 6);
  CHECK_FALSE(a.given("model"));
  CHECK(a.text("signal") == "eeg");
  CHECK_FALSE(a.given("demo"));
  CHECK(parse({"--demo", "x"}).given("demo"));
}

TEST_CASE("values that look like options") {
  CHECK(parse({"x", "--at", "-3"}).integer("at") == -3);
  CHECK(parse({"x", "--port=--odd"}).text("port") == "--odd");
  CHECK(parse({"--", "--odd"}).positional(0) == "--odd");
  CHECK(parse({"-"}).positional(0) == "-");
}

TEST_CASE("refused lines say what is wrong and what would be right") {
  const struct {
    std::vector<std::string> words;
    const char* says;
  } table[] = {
      {{}, "the FILE is missing"},
      {{"x", "y"}, "'y' is one word too many"},
      {{"x", "--prot", "p"}, "did you mean '--port'?"},
      {{"x", "--zebra"}, "there is no option '--zebra'; see"},
      {{"x", "-p"}, "options have two dashes"},
      {{"x", "--port"}, "'--port' needs a value: --port PATH"},
      {{"x", "--port", "--demo"}, "'--port' needs a value"},
      {{"x", "--port="}, "needs a PATH"},
      {{"x", "--demo=1"}, "takes no value"},
      {{"x", "--model", "12"}, "'--model' cannot be '12': it takes a whole number from 0 to 9"},
      {{"x", "--model", "3x"}, "whole number"},
      {{"x", "--model", "99999999999999999999"}, "whole number"},
      {{"x", "--seconds", "0"}, "a number from 0.01 to 1e+06"},
      {{"x", "--seconds", "nan"}, "a number from"},
      {{"x", "--seconds", "inf"}, "a number from"},
      {{"x", "--signal", "sin"}, "it takes one of: eeg sine file"},
      {{"x", "--signal", "eeg sine"}, "it takes one of"},
      {{"x", "--model", "1", "--model", "2"}, "twice"},
      {{"x", "--port", "p", "--demo"}, "only one of --port or --demo"},
  };
  for (const auto& row : table) {
    CAPTURE(row.says);
    CHECK(problem(row.words).find(row.says) != std::string::npos);
  }
  CommandForm choosy = sample();
  choosy.exclusives[0].required = true;
  const std::vector<std::string> line{"x"};
  CHECK_THROWS_WITH_AS(static_cast<void>(parseLine(choosy, line)),
                       "choose one of --port or --demo; see 'ovka sample --help'", Failure);
}

TEST_CASE("help is asked for before anything else is wrong, and fits 80 columns") {
  CHECK(parse({"--help"}).helpWanted());
  CHECK(parse({"x", "-h"}).helpWanted());
  CommandForm form = sample();
  form.groups[0].options[0].help =
      "A long text that has to be broken somewhere because no terminal of eighty columns could "
      "show "
      "it on one line, and a second line is needed after that as well.";
  std::istringstream lines(commandHelp(form));
  std::string line;
  bool namesDefault = false;
  while (std::getline(lines, line)) {
    CAPTURE(line);
    CHECK(line.size() <= 79);
    CHECK((line.empty() || line.back() != ' '));
    namesDefault = namesDefault || line.find("Default: 6.") != std::string::npos;
  }
  CHECK(namesDefault);
}
