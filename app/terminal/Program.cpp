#include <array>
#include <cstdio>
#include <exception>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Output.h"

namespace ovka::terminal {
namespace {

struct Command {
  const char* name;
  void (*run)(const Arguments&);
};

constexpr std::array<Command, 19> kCommands{{{"live", runLive},
                                             {"simulate", runSimulate},
                                             {"ports", runPorts},
                                             {"capture", runCapture},
                                             {"replay", runReplay},
                                             {"decode", runDecode},
                                             {"analyse", runAnalyse},
                                             {"record", runRecord},
                                             {"info", runInfo},
                                             {"convert", runConvert},
                                             {"play", runPlay},
                                             {"preset", runPreset},
                                             {"recover", runRecover},
                                             {"midi", runMidi},
                                             {"render", runRender},
                                             {"doctor", runDoctor},
                                             {"settings", runSettings},
                                             {"actions", runActions},
                                             {"bench", runBench}}};

const CommandForm& findCommand(const std::string& name) {
  std::vector<std::string> names;
  for (const CommandForm& form : commandForms()) {
    if (form.name == name) return form;
    names.push_back(form.name);
  }
  const std::string near = didYouMean(name, names);
  throw Failure(ExitCode::Usage, "there is no command '" + name + "'" +
                                     (near.empty() ? "; 'ovka --help' lists them"
                                                   : ", did you mean '" + near + "'?"));
}

void print(const std::string& text) {
  Output output;
  output.write(text);
  output.flush();
}

void run(std::span<const std::string> words) {
  if (words.empty()) {
    throw Failure(
        ExitCode::Usage,
        "say what to do: 'ovka live --demo' shows a signal, 'ovka --help' lists everything");
  }
  const std::string& first = words.front();
  if (first == "--version") return print("ovka " OVKA_VERSION "\n");
  if (first == "--help" || first == "-h" || (first == "help" && words.size() == 1))
    return print(programHelp(commandForms()));
  if (first == "help") return print(commandHelp(findCommand(words[1])));
  if (first.starts_with("-"))
    throw Failure(ExitCode::Usage, "the command comes first: ovka COMMAND [options]");
  const CommandForm& form = findCommand(first);
  const Arguments arguments = parseLine(form, words.subspan(1));
  if (arguments.helpWanted()) return print(commandHelp(form));
  for (const Command& command : kCommands) {
    if (form.name == command.name) return command.run(arguments);
  }
}

int fail(ExitCode code, const std::string& message) {
  std::fprintf(stderr, "ovka: %s\n", message.c_str());
  return static_cast<int>(code);
}

}  // namespace

int runProgram(std::span<const std::string> words) {
  try {
    run(words);
    return static_cast<int>(ExitCode::Ok);
  } catch (const ReaderGone&) {
    return static_cast<int>(ExitCode::Ok);
  } catch (const Failure& failure) {
    return fail(failure.code(), failure.what());
  } catch (const std::bad_alloc&) {
    return fail(ExitCode::Failed, "there is not enough memory");
  } catch (const std::exception& error) {
    return fail(ExitCode::Failed, error.what());
  }
}

}  // namespace ovka::terminal
