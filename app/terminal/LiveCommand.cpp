#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Chain.h"
#include "Commands.h"
#include "Console.h"
#include "DocumentHost.h"
#include "Failure.h"
#include "MusicOptions.h"
#include "Numbers.h"
#include "Presenter.h"
#include "SimulatorArguments.h"
#include "TerminalScreen.h"

namespace ovka::terminal {
namespace {

std::chrono::nanoseconds duration(double seconds) {
  return std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9));
}

Presentation presentationOf(const Arguments& arguments, bool screen) {
  Presentation how;
  how.form = arguments.given("json") ? Presentation::Form::Json
             : screen                ? Presentation::Form::Screen
                                     : Presentation::Form::Lines;
  how.interval = duration(arguments.number("interval").value_or(1));
  how.length = duration(arguments.number("seconds").value_or(0));
  return how;
}

Console::Show showOf(const Arguments& arguments, bool screen) {
  if (screen) return Console::Show::Nothing;
  return arguments.given("verbose") ? Console::Show::All : Console::Show::Important;
}

LiveChoice captureChoiceOf(const Arguments& arguments, const std::string& capture) {
  refuseSignalWithoutDemo(arguments);
  LiveChoice choice;
  choice.replay = capture;
  choice.assignments = assignmentsOf(arguments);
  return choice;
}

std::unique_ptr<Chain> chainOf(const Arguments& arguments, const DocumentMachine& documents,
                               Music& music) {
  const auto capture = arguments.text("capture");
  LiveChoice choice = capture ? captureChoiceOf(arguments, *capture) : liveChoiceOf(arguments);
  choice.documents = &documents;
  music.prepare(choice);
  return std::make_unique<LiveChain>(choice);
}

/// Performs "SELECTOR" or "SELECTOR=VALUE".
void perform(Engine& engine, const std::string& text) {
  const std::size_t equals = text.find('=');
  const std::string selector = text.substr(0, equals);
  const auto value = equals == std::string::npos ? std::optional<std::int64_t>(0)
                                                 : readInteger(text.substr(equals + 1));
  if (!value || *value < INT32_MIN || *value > INT32_MAX)
    throw Failure(ExitCode::Usage, "the value of '" + selector + "' is no whole number");
  if (!engine.actions().perform(selector, static_cast<std::int32_t>(*value))) {
    std::vector<std::string> names;
    for (const auto& [name, action] : engine.actions().entries()) names.push_back(name);
    const std::string near = didYouMean(selector, names);
    throw Failure(ExitCode::Usage, "there is no action '" + selector + "'" +
                                       (near.empty() ? "; 'ovka actions' lists them"
                                                     : ", did you mean '" + near + "'?"));
  }
}

/// What a person wants to know when the screen is gone again.
void sayGoodbye(Chain& chain) {
  const LiveSnapshot last = EngineReader(chain.engine(), chain.source()).snapshot(0);
  std::int64_t lost = 0;
  for (const LossCount& loss : last.losses) lost += loss.count;
  std::printf("%s of %s, %lld points, %s\n", clockText(last.seconds).c_str(), last.source.c_str(),
              static_cast<long long>(last.point),
              lost == 0 ? "nothing lost" : ("lost: " + std::to_string(lost)).c_str());
}

}  // namespace

void runLive(const Arguments& arguments) {
  Music music(arguments);  // before the first thread
  StopSignals stop;
  const bool screen =
      !arguments.given("json") && !arguments.given("plain") && TerminalScreen::usable();
  Console console(showOf(arguments, screen));
  DocumentHost host;
  const DocumentMachine documents = host.viewer();
  const std::unique_ptr<Chain> chain = chainOf(arguments, documents, music);
  console.started();
  music.started(chain->engine());
  if (arguments.given("remember")) rememberPort(*chain->engine().documents());
  for (const std::string& action : arguments.all("do")) perform(chain->engine(), action);
  present(*chain, presentationOf(arguments, screen), stop, console);
  if (screen) sayGoodbye(*chain);
  chain->finish();
  music.finish();
}

void runReplay(const Arguments& arguments) {
  StopSignals stop;
  Console console(showOf(arguments, false));
  ReplayChain chain(arguments.positional(0), assignmentsOf(arguments));
  console.started();
  present(chain, presentationOf(arguments, false), stop, console);
  if (!stop.stopped()) chain.finish();
}

}  // namespace ovka::terminal
