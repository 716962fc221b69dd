#include "Session.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "BufferVariables.h"
#include "CaptureSettings.h"
#include "PresetFile.h"
#include "Print.h"

namespace ovka::desktop {
namespace {

/// The value that the last assignment of a name gives.
std::uint32_t assigned(const SourceChoice& choice, std::string_view name, std::uint32_t preset) {
  std::uint32_t value = preset;
  for (const std::string& setting : choice.settings) {
    if (!setting.starts_with(name) || setting.size() <= name.size() || setting[name.size()] != '=')
      continue;
    std::uint32_t read = 0;
    bool digits = setting.size() > name.size() + 1 && setting.size() < name.size() + 8;
    for (const char letter : std::string_view(setting).substr(name.size() + 1)) {
      digits = digits && letter >= '0' && letter <= '9';
      if (digits) read = read * 10 + static_cast<std::uint32_t>(letter - '0');
    }
    if (digits) value = read;
  }
  return value;
}

}  // namespace

Session::Session(SourceChoice choice, const DocumentMachine& documents, const MidiMachine* midi)
    : choice_(std::move(choice)), documents_(documents), midi_(midi) {}

Session::~Session() {
  close(true);
}

std::string Session::open() {
  if (std::string problem = openLive(); !problem.empty()) return problem;
  open_ = true;
  if (choice_.onEngine) choice_.onEngine();
  applyDefaults();
  // What is shown is not yet a recording: it goes round in the buffer until one is asked for.
  if (choice_.acquires()) beLive(engine());
  return {};
}

std::string Session::openLive() {
  LiveChoice live;
  live.assignments = choice_.settings;
  live.documents = &documents_;
  live.midi = midi_;
  if (choice_.kind == SourceChoice::Kind::Serial) live.ports = choice_.paths;
  if (choice_.kind == SourceChoice::Kind::Capture) live.replay = choice_.paths.front();
  if (choice_.kind == SourceChoice::Kind::Demo) {
    // The virtual amplifier and the chain must agree on what stands on the line.
    live.demo = true;
    SimulatorOptions& amplifier = live.amplifier;
    amplifier.model = assigned(choice_, "SelectDevice", amplifier.model);
    amplifier.config = assigned(choice_, "DeviceConfig", amplifier.config);
    amplifier.samplesPerSecond = assigned(choice_, "SampleSpeed", amplifier.samplesPerSecond);
    amplifier.oldBluetooth = assigned(choice_, "oldBluetooth", 0) == 1;
    live.assignments.insert(live.assignments.begin(),
                            {"SelectDevice=" + std::to_string(amplifier.model),
                             "DeviceConfig=" + std::to_string(amplifier.config),
                             "SampleSpeed=" + std::to_string(amplifier.samplesPerSecond)});
    // Whatever framing another source left behind: the demo shows the one that loses nothing.
    live.assignments.emplace_back("FixedFramingX=1");
    choice_.settings = live.assignments;
  }
  const LiveSession::Opened opened = live_.open(live);
  if (opened.problem == LiveSession::Problem::None) return {};
  live_.close();
  return opened.explanation;
}

/// Every channel is kept unless the user says otherwise; then the user's default preset, under what
/// belongs to the source.
void Session::applyDefaults() {
  DocumentDesk& desk = *engine().documents();
  desk.panel().SevDevConfig4();
  if (!choice_.defaultPreset) return;
  int missing = 0;
  const bool there =
      documents_.files.read(documents_.folders.resolve(presetPath(kDefaultPresetName)), &missing) !=
      nullptr;
  DocumentError error;
  if (there && !desk.panel().loadAtStart(true, &error))
    documents_.dialogs.alert(error.description, error.detail.empty() ? error.reason : error.detail);
  for (const std::string& setting : choice_.settings) {
    if (const std::string problem = engine().assign(setting); !problem.empty())
      Print("Error: %s.\n", problem.c_str());
  }
}

void Session::close(bool keepJournal) {
  if (!open_) return;
  open_ = false;
  live_.close();
  if (!keepJournal) engine().documents()->journal().discard();
}

std::string Session::source() const {
  switch (choice_.kind) {
    case SourceChoice::Kind::None:
      return "no input";
    case SourceChoice::Kind::Demo:
      return "virtual amplifier";
    case SourceChoice::Kind::Serial:
    case SourceChoice::Kind::Capture:
      break;
  }
  return choice_.paths.empty() ? std::string() : choice_.paths.front();
}

void beLive(Engine& engine) {
  buffer::setLoopModeX = 1;
  buffer::setRecModeX = kAcquiring;
  // Opening a line begins a recording, as the system does; that one was none.
  engine.documents()->journal().discard();
}

std::vector<std::string> carriedSettings(Engine& engine, SourceChoice::Kind from) {
  std::vector<std::string> settings;
  for (const auto& [name, value] : captureSettings(engine, {})) {
    // The demo's framing is no choice of the user's.
    if (from == SourceChoice::Kind::Demo && name == "FixedFramingX") continue;
    // The positions and the loop of what was shown belong to it alone.
    if (name == "ploopStart" || name == "setLoopModeX") continue;
    settings.push_back(name + "=" + value);
  }
  return settings;
}

}  // namespace ovka::desktop
