#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "ActionRegistry.h"
#include "AnalysisInput.h"
#include "MidiEngine.h"
#include "MidiGuard.h"
#include "MidiInput.h"
#include "MidiLearn.h"
#include "SetMIDI.h"
#include "SetMIDIband.h"
#include "SettingsRegistry.h"
#include "SetupGroup.h"

namespace ovka {

class DocumentDesk;
class Engine;
struct Machine;

/// What the MIDI outputs need of the machine. All of it outlives the engine.
struct MidiMachine {
  std::vector<MidiTransport*> transports;  ///< their destinations make the port list, in this order
  Synthesizer* synthesizer = nullptr;      ///< nullptr: none
  SoundingNotes* sounding = nullptr;       ///< shared with a guard process; nullptr: no such guard
  std::function<void()> everySecond{};     ///< what the sound output wants done; empty: nothing
  /// Takes the message log, a line of JSON at a time, on the slow thread and once more at the end;
  /// empty: no log is kept.
  std::function<void(std::string_view)> logLine{};
};

/// Everything that plays: note engine, both mappings, the guard against stuck notes, MIDI input.
/// Without a MidiMachine its settings, actions and groups exist, so that documents and presets keep
/// them, but nothing runs. Made, started and stopped by the thread that made the engine.
class MidiDesk {
 public:
  MidiDesk(Engine& engine, const Machine& machine);
  ~MidiDesk();
  MidiDesk(const MidiDesk&) = delete;
  MidiDesk& operator=(const MidiDesk&) = delete;

  void addSettings(SettingsRegistry& to);
  void addActions(ActionRegistry& to);
  /// Documents and presets hold the set-ups of both mappings from now on.
  void useGroups(DocumentDesk& documents);

  /// Opens the MIDI systems and starts the mappings' threads.
  void start(ThreadLauncher& threads);
  /// After the engine's threads ended: every note ends, the clients go.
  void stop();
  [[nodiscard]] bool on() const { return machine_ != nullptr; }

  /// Ends everything that sounds, at every receiver. Any thread.
  void panic() { notes_.panic(); }

  [[nodiscard]] MidiEngine& notes() { return notes_; }
  [[nodiscard]] SetMIDIband& bands() { return bands_; }
  [[nodiscard]] SetMIDI& singles() { return singles_; }
  [[nodiscard]] MidiGuard& guard() { return guard_; }
  [[nodiscard]] MidiLearn& learn() { return learn_; }

 private:
  static constexpr std::size_t kCleared = 8;

  /// `owner` stands before a name that another variable of the system has, too.
  void addMappingSettings(SettingsRegistry& to, MidiMapping& mapping, std::string_view owner);
  void clearPortChoices();
  void bringPortChoicesBack();
  void slowTick();
  [[nodiscard]] bool inputIsLost();
  void drainLog();

  Engine& engine_;
  const Machine& host_;
  const MidiMachine* machine_;
  MidiEngine notes_;
  EngineInput analysis_;
  SetMIDIband bands_;
  SetMIDI singles_;
  MidiGuard guard_;
  MidiLearn learn_{bands_, singles_};
  SetupGroup bandGroup_{bands_};
  SetupGroup singleGroup_{singles_};
  std::unique_ptr<MidiInput> input_;
  std::array<std::pair<std::int32_t, std::int32_t>, kCleared> keptPorts_{};
  int slowTicks_ = 0;
  bool started_ = false;
};

}  // namespace ovka
