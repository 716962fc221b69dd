#include "LiveMidi.h"

#include <algorithm>

namespace ovka {

LiveMidi::LiveMidi() : guardProblem_(guard_.start()) {}

const MidiMachine& LiveMidi::choose(const LiveMidiChoice& choice) {
  systems_ = openMidiTransports(choice.systems);
  if (choice.waits && choice.systems == "auto" &&
      std::ranges::none_of(systems_, &MidiSystem::available)) {
    for (MidiSystem& system : systems_) system.transport = makeMidiTransport(system.name);
  }
  for (const MidiSystem& system : systems_) {
    if (system.transport != nullptr) machine_.transports.push_back(system.transport.get());
  }
  if (choice.synthesizer) {
    synthesizer_ = std::make_unique<FluidSynthesizer>(choice.sound);
    machine_.synthesizer = synthesizer_.get();
  }
  machine_.sounding = &guard_.notes();
  machine_.everySecond = [this] {
    if (synthesizer_ != nullptr) synthesizer_->tick();
  };
  return machine_;
}

}  // namespace ovka
