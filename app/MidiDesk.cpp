#include "MidiDesk.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "DocumentDesk.h"
#include "Engine.h"
#include "InformationRows.h"
#include "MappingVariables.h"
#include "MidiVariables.h"
#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"

namespace ovka {
namespace {

/// How often endpoints that came or went are looked for.
constexpr std::chrono::milliseconds kPortsTick{250};

const MidiMachine& machineOr(const MidiMachine* machine) {
  static const MidiMachine kNone;
  return machine != nullptr ? *machine : kNone;
}

/// A document can say that its window was open, not take back that this one's set-ups were changed:
/// they would be left out of what is saved next.
void bindOpened(InformationList& information, std::size_t entry, Shared<std::int32_t>& opened) {
  information.bind(
      entry, [&opened] { return integerText(opened); },
      [&opened](const std::string& text) {
        if (srtToLong(text) != 0) opened = 1;
      });
}

}  // namespace

MidiDesk::MidiDesk(Engine& engine, const Machine& machine)
    : engine_(engine),
      host_(machine),
      machine_(machine.midi),
      notes_({machineOr(machine.midi).transports,
              machineOr(machine.midi).synthesizer,
              machineOr(machine.midi).sounding,
              [this] { clearPortChoices(); },
              {}},
             machine.clock),
      analysis_(engine.fft(), engine.fft()),
      bands_(notes_, analysis_),
      singles_(notes_, analysis_),
      guard_(notes_, machine.clock) {
  bands_.init();
  singles_.init();
}

MidiDesk::~MidiDesk() {
  stop();
}

/// The system's set-up forgets the first port choices of both families; its restart finds them
/// again by their names, and destinations that are still there keep their numbers. What a preset
/// has chosen before the start is meant for this start.
void MidiDesk::clearPortChoices() {
  if (!started_) return;
  for (std::size_t setup = 0; setup < kCleared; ++setup) {
    keptPorts_[setup] = {setmidiband::MIDIportEX.get(setup), setmidi::MIDIportX.get(setup)};
    setmidiband::MIDIportEX.set(setup, 0);
    setmidi::MIDIportX.set(setup, 0);
  }
}

void MidiDesk::bringPortChoicesBack() {
  for (std::size_t setup = 0; setup < kCleared; ++setup) {
    setmidiband::MIDIportEX.set(setup, keptPorts_[setup].first);
    setmidi::MIDIportX.set(setup, keptPorts_[setup].second);
  }
}

void MidiDesk::addMappingSettings(SettingsRegistry& to, MidiMapping& mapping,
                                  std::string_view owner) {
  for (const SetupField& field : mapping.fields()) {
    for (std::size_t row = 0; row < field.access.rows; ++row) {
      const std::string name = field.nameOf(row);
      // The peak search has a LowFX of its own.
      const std::string shown = to.find(name) == nullptr ? name : std::string(owner) + "::" + name;
      const auto kind = field.access.real ? Setting::Kind::Real : Setting::Kind::Integer;
      Setting& setting = to.addTable(
          shown, kind, midi::kSetups, field.minimum, field.maximum, field.meaning,
          [&field, row](std::size_t setup) { return field.access.live(row, setup); },
          [&mapping, name](std::size_t setup, double value) {
            static_cast<void>(mapping.assign(name + "[" + std::to_string(setup) + "]", value));
          });
      setting.single = field.access.real;
      setting.writable = field.minimum < field.maximum;
    }
  }
}

void MidiDesk::addSettings(SettingsRegistry& to) {
  using namespace midi;  // NOLINT: a table of this room's names
  constexpr double kLastPort = kPorts - 1;
  constexpr double kLastChannel = kChannels - 1;
  to.add("MIDIuseX", MIDIuseX, 0, 1, "0: no MIDI is sent at all");
  to.add("coreMidi", coreMidi, 0, 1, "0: nothing goes to the MIDI systems, the synthesizer plays");
  to.add("AUuse", AUuse, 0, 1, "synthesizer: 1 started as a whole, 0 a voice a channel");
  to.add("TimeStampON", TimeStampON, 0, 1, "1: messages carry a time stamp");
  to.add("mProgram0", mProgram0, 0, 127, "program of the synthesizer's first channel");
  to.add("gChannel", gChannel, 0, kLastChannel, "channel that incoming MIDI is given");
  to.add("Channel", Channel, 0, kLastChannel, "the current channel");
  to.addTable(
      "inputPortX", Setting::Kind::Integer, kChannels, 0, kLastPort,
      "port that must exist for input on the channel",
      [](std::size_t channel) { return static_cast<double>(inputPortX.get(channel)); },
      [](std::size_t channel, double port) {
        inputPortX.set(channel, static_cast<std::int32_t>(port));
      });
  to.add("setSoloBandX", setmidiband::setSoloBandX, 0, 1,
         "1: every enabled band set-up plays, 0: only SetupBandNX (the name says the opposite)");
  to.add("SetupBandNX", setmidiband::SetupBandNX, 0, kSetups - 1, "the band set-up shown");
  to.add("SetupNX", setmidi::SetupNX, 0, kSetups - 1, "the single-value set-up shown");
  to.addStatus("findPortCountE", findPortCountE, "destinations of the port list");
  addMappingSettings(to, bands_, "setmidiband");
  addMappingSettings(to, singles_, "setmidi");
}

void MidiDesk::addActions(ActionRegistry& to) {
  std::vector<MappingAction> all = bands_.actions();
  std::vector<MappingAction> more = singles_.actions();
  std::move(more.begin(), more.end(), std::back_inserter(all));
  for (const MappingAction& action : all) {
    const bool alone = std::count_if(all.begin(), all.end(), [&](const MappingAction& other) {
                         return other.selector == action.selector;
                       }) == 1;
    // Both windows have a setSet: of their own; the owner's name tells them apart.
    const std::string name =
        alone ? action.selector : std::string(action.owner) + " " + action.selector;
    to.addValue(name, action.meaning, action.perform);
  }
  to.add("panic:", "end everything that sounds, everywhere", [this](std::int32_t) { panic(); });
  learn_.addActions(to);
}

void MidiDesk::useGroups(DocumentDesk& documents) {
  static_cast<void>(documents.groups().use("OVKA4brainRhythmeMIDI", bandGroup_));
  static_cast<void>(documents.groups().use("OVKA4brainPeakMIDI", singleGroup_));
  bindOpened(documents.information(), information::kPeakMIDIOpened, setmidi::setupOpenedX);
  bindOpened(documents.information(), information::kRhythmMIDIOpened, setmidiband::setupOpenedX);
}

void MidiDesk::start(ThreadLauncher& threads) {
  if (!on()) return;
  input_ =
      std::make_unique<MidiInput>(host_.mainLoop, engine_.polling(),
                                  [this](const MidiMessage& message) { learn_.take(message); });
  notes_.log().setOn(static_cast<bool>(machine_->logLine));
  static_cast<void>(notes_.mainMidi());
  notes_.setGetOutMIDIPort();
  started_ = true;
  bands_.runThread(threads, host_.clock, "runMIDIbandThread:", [this] { guard_.beat(); });
  singles_.runThread(threads, host_.clock, "runMIDIThread:");
  threads.repeat("midiPorts", kPortsTick, [this] { slowTick(); });
  guard_.run(threads);
}

void MidiDesk::stop() {
  if (!started_) return;
  started_ = false;
  guard_.rest();
  notes_.close();
  drainLog();
  input_.reset();
}

/// Whether samples are expected and no line brings any.
bool MidiDesk::inputIsLost() {
  if (buffer::setRecModeX == 0) return false;
  bool lost = false;
  for (std::int32_t port = 1; port <= AmplifierPorts::kInputs; ++port) {
    const AmplifierPorts::LineState state = engine_.ports().lineState(port);
    if (state == AmplifierPorts::LineState::Running) return false;
    lost = lost || state == AmplifierPorts::LineState::Lost;
  }
  return lost;
}

void MidiDesk::drainLog() {
  if (machine_->logLine) notes_.log().drain(machine_->logLine);
}

void MidiDesk::slowTick() {
  constexpr int kTicksASecond = 4;
  mapping::inputLostX = inputIsLost() ? 1 : 0;
  notes_.tick();
  drainLog();
  if (++slowTicks_ % kTicksASecond == 0 && machine_->everySecond) machine_->everySecond();
}

SetMIDIband& SetMIDIband::sharedSetMIDIband() {
  return Engine::current()->midi().bands();
}
SetMIDI& SetMIDI::sharedSetMIDI() {
  return Engine::current()->midi().singles();
}

}  // namespace ovka
