#include "Chain.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "Failure.h"
#include "SimulatorArguments.h"

namespace ovka::terminal {
namespace {

using std::chrono::nanoseconds;

/// How far a replay goes before it looks whether the person asked for the end.
constexpr nanoseconds kReplayStep = std::chrono::milliseconds(10);
/// Between looks whether a capture has ended that comes at its own speed.
constexpr nanoseconds kReplayLook = std::chrono::milliseconds(100);

[[noreturn]] void refuse(LiveSession::Problem problem, const std::string& explanation) {
  switch (problem) {
    case LiveSession::Problem::File:
      throw Failure(ExitCode::BadInput, explanation);
    case LiveSession::Problem::Setting:
      throw Failure(ExitCode::Usage, explanation);
    case LiveSession::Problem::Preset:
      throw Failure(ExitCode::BadInput, explanation);
    case LiveSession::Problem::NoPort:
      throw Failure(ExitCode::Usage, explanation +
                                         "; name one with '--port', and '--remember' makes it the "
                                         "one without; '--demo' needs none");
    case LiveSession::Problem::Port:
      throw Failure(ExitCode::Port, explanation);
    case LiveSession::Problem::Output:
      throw Failure(ExitCode::Output, explanation);
    case LiveSession::Problem::Memory:
    case LiveSession::Problem::None:
      break;
  }
  throw Failure(ExitCode::Failed, explanation);
}

void refuseDamage(const std::string& path, const std::string& damage) {
  if (!damage.empty())
    throw Failure(ExitCode::BadInput, path + ": " + damage + "; everything before it was used");
}

/// The value that the last assignment of a name gives; empty when there is none.
std::string assigned(const std::vector<std::string>& assignments, const std::string& name) {
  std::string value;
  for (const std::string& assignment : assignments) {
    if (assignment.starts_with(name + "=")) value = assignment.substr(name.size() + 1);
  }
  return value;
}

}  // namespace

void refuse(ReplaySession::Problem problem, const std::string& explanation) {
  switch (problem) {
    case ReplaySession::Problem::File:
      throw Failure(ExitCode::BadInput, explanation);
    case ReplaySession::Problem::Setting:
      throw Failure(ExitCode::Usage, explanation);
    case ReplaySession::Problem::Memory:
    case ReplaySession::Problem::None:
      break;
  }
  throw Failure(ExitCode::Failed, explanation);
}

LiveChain::LiveChain(const LiveChoice& choice) : replays_(!choice.replay.empty()) {
  const LiveSession::Opened opened = session_.open(choice);
  if (opened.problem != LiveSession::Problem::None) {
    session_.close();
    refuse(opened.problem, opened.explanation);
  }
  if (!choice.preset.empty()) {
    for (const std::string& note : engine().documents()->panel().notes())
      std::fprintf(stderr, "ovka: %s: %s\n", choice.preset.c_str(), note.c_str());
  }
  start_ = session_.clock().nanoseconds();
}

nanoseconds LiveChain::elapsed() const {
  return nanoseconds(session_.clock().nanoseconds() - start_);
}

bool LiveChain::runTo(nanoseconds target, const StopSignals& stop) {
  while (!stop.stopped() && !session_.replayEnded()) {
    const nanoseconds rest = target - elapsed();
    if (rest <= nanoseconds::zero()) break;
    stop.wait(replays_ ? std::min(rest, kReplayLook) : rest);
  }
  return !session_.replayEnded();
}

void LiveChain::finish() {
  if (const std::string problem = session_.close(); !problem.empty())
    throw Failure(ExitCode::Output, problem);
  refuseDamage(source(), session_.replayDamage());
}

ReplayChain::ReplayChain(const std::string& path, const std::vector<std::string>& assignments,
                         const DocumentMachine* documents)
    : session_(space_, documents), path_(path) {
  const ReplaySession::Opened opened = session_.open(path, assignments);
  if (opened.problem != ReplaySession::Problem::None) refuse(opened.problem, opened.explanation);
}

bool ReplayChain::runTo(nanoseconds target, const StopSignals& stop) {
  while (elapsed() < target) {
    if (stop.stopped()) return true;
    if (!session_.step(std::min(kReplayStep, target - elapsed()))) return false;
  }
  return true;
}

void ReplayChain::finish() {
  refuseDamage(path_, session_.damage());
}

std::vector<std::string> assignmentsOf(const Arguments& arguments) {
  constexpr std::array<std::pair<const char*, const char*>, 3> kShort{
      {{"model", "SelectDevice"}, {"config", "DeviceConfig"}, {"speed", "SampleSpeed"}}};
  std::vector<std::string> assignments;
  for (const auto& [option, name] : kShort) {
    if (const auto value = arguments.text(option))
      assignments.push_back(std::string(name) + "=" + *value);
  }
  for (std::string& assignment : arguments.all("set")) assignments.push_back(std::move(assignment));
  return assignments;
}

LiveChoice liveChoiceOf(const Arguments& arguments) {
  LiveChoice choice;
  choice.assignments = assignmentsOf(arguments);
  choice.preset = arguments.text("preset").value_or("");
  if (!arguments.given("demo")) {
    refuseSignalWithoutDemo(arguments);
    choice.ports = arguments.all("port");
    choice.rememberedPort = choice.ports.empty();
    if (choice.ports.size() > AmplifierPorts::kInputs)
      throw Failure(ExitCode::Usage, "there are four input ports, no more");
    return choice;
  }
  choice.demo = true;
  choice.amplifier = simulatorOptionsOf(arguments);
  // The virtual amplifier follows the settings: --set wins, then the plain options, then a preset,
  // else the amplifier's own defaults.
  const auto orElse = [&](const char* name, std::uint32_t amplifier) {
    if (assigned(choice.assignments, name).empty() && choice.preset.empty())
      choice.assignments.insert(choice.assignments.begin(),
                                std::string(name) + "=" + std::to_string(amplifier));
  };
  orElse("SampleSpeed", choice.amplifier.samplesPerSecond);
  orElse("DeviceConfig", choice.amplifier.config);
  orElse("SelectDevice", choice.amplifier.model);
  return choice;
}

}  // namespace ovka::terminal
