#pragma once

#include <memory>
#include <string>
#include <vector>

#include "FluidSynthesizer.h"
#include "MidiDesk.h"
#include "MidiGuardProcess.h"
#include "MidiSystems.h"
#include "SynthesizerSettings.h"

namespace ovka {

/// Which MIDI systems and sounds a session uses.
struct LiveMidiChoice {
  std::string systems = "auto";  ///< one of kMidiChoices
  /// "auto" finds no system: all of them are kept, so that restarting MIDI finds one that comes.
  bool waits = false;
  bool synthesizer = true;
  SynthesizerSettings sound{};
};

/// The MIDI of this machine, for a live session: its systems, the software synthesizer, and the
/// guard process that ends what sounds when this program dies. Outlives the session. Made and
/// unmade by the main thread; choose() by the thread that opens the session, too.
class LiveMidi {
 public:
  /// Starts the guard, so this comes before the first thread of the program.
  LiveMidi();
  LiveMidi(const LiveMidi&) = delete;
  LiveMidi& operator=(const LiveMidi&) = delete;

  /// Makes the transports and the synthesizer; the engine opens them. Once.
  const MidiMachine& choose(const LiveMidiChoice& choice);

  /// What choose() fills; its address stays.
  [[nodiscard]] const MidiMachine& machine() const { return machine_; }
  /// nullptr: the choice left it out, or there was none yet.
  [[nodiscard]] FluidSynthesizer* synthesizer() const { return synthesizer_.get(); }
  /// Every system of this machine, with what is wrong with it, after choose().
  [[nodiscard]] const std::vector<MidiSystem>& systems() const { return systems_; }
  /// 0 when the guard runs, else why not (errno).
  [[nodiscard]] int guardProblem() const { return guardProblem_; }

 private:
  MidiGuardProcess guard_;
  int guardProblem_;
  std::vector<MidiSystem> systems_;
  std::unique_ptr<FluidSynthesizer> synthesizer_;
  MidiMachine machine_;
};

}  // namespace ovka
