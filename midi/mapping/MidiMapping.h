#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "AnalysisInput.h"
#include "Clock.h"
#include "DueSchedule.h"
#include "HeldNotes.h"
#include "MidiForwarding.h"
#include "SetupField.h"
#include "SetupMarks.h"
#include "SetupView.h"
#include "Shared.h"
#include "ThreadLauncher.h"

namespace ovka {

/// The variables of one mapping that its clockwork needs.
struct MappingVariables {
  std::string_view owner;  ///< "SetMIDIband"
  std::span<const SetupField> fields;
  MarkedBlock<std::int32_t>& MIDIoutON;
  MarkedBlock<std::int32_t>& SendMIDItiming;
  MarkedBlock<std::int32_t>& ONInput;
  MarkedBlock<double>& tlong;
  MarkedBlock<double>& tsave;
  SharedBlock<std::int32_t, midi::kSetups>& MIDIport;
  SharedBlock<std::int32_t, midi::kSetups>& temporary;  ///< switches put aside while paused
  SetupMarks& changes;
  Shared<std::int32_t>& shown;  ///< the set-up in the window
  Shared<std::int32_t>& needOff;
  Shared<std::int32_t>& opened;
  Shared<std::int32_t>& loaded;
  std::int32_t useQT;
};

/// A window action of a mapping; the argument is the control's value (Hz, a menu index, a switch),
/// 0 for a plain button.
struct MappingAction {
  std::string_view owner;  ///< both mappings have a setSet:, of a window of their own
  std::string selector;
  std::string meaning;
  std::function<void(double)> perform;
};

/// What the band mapping and the single-value mapping have in common: the tick with its rules of
/// silence, the schedule of the 128 set-ups, shutdown, pausing and restart, edit copies.
///
/// A tick plays in ascending order exactly the set-ups that a walk over all of them would play: a
/// schedule finds those whose interval has passed, and whatever is written into switches, intervals
/// or times marks its set-up for the next tick. Notes that a set-up left sounding end when it is
/// switched off, is not played any more, or goes on at another port, channel or note.
///
/// Any thread; one lock a mapping, held for a tick or an action. Nothing allocates in a tick.
class MidiMapping : public MidiForwarding {
 public:
  static constexpr std::chrono::milliseconds kTick{1};

  virtual ~MidiMapping() = default;

  /// timerUpdate: one tick. While a document is saved or opened or the pause is on, nothing is
  /// sent, and the first such tick ends every sounding note; else the set-ups that are due play.
  void timerUpdate();
  /// runMIDIbandThread: (and its like of the other mapping) the thread of the mapping: a tick every
  /// millisecond on a fixed grid, kRest apart while nothing may sound, or nothing is on, and
  /// nothing is left to end. `after` is called after each, with the tick's thread. The clock
  /// outlives the thread.
  void runThread(ThreadLauncher& launcher, const Clock& clock, std::string_view name,
                 std::function<void()> after = {});

  /// sendMidiShutDown Note Off for every sounding note of the enabled set-ups and of the shown one.
  void sendMidiShutDown();
  /// sendMidiTemporalyOFF puts every set-up's switch aside, ends all notes and switches all off.
  /// Once more before sendMidiBackON: what is on by then is added to what was put aside.
  void sendMidiTemporalyOFF();
  /// sendMidiBackON switches on what was put aside.
  void sendMidiBackON();
  /// sendsetMIDIRestart takes the MIDI system down and up again; the set-ups keep their ports. May
  /// take long; not on the tick's thread.
  void sendsetMIDIRestart();
  /// midiPortReturn: the set-up's port, or 0 when there is no such port now.
  [[nodiscard]] std::int32_t midiPortReturn(std::int32_t setup) const;

  // The window; main thread.
  /// setSet: commits the edit copy of every set-up.
  void setSet();
  /// setCancel: drops the edits.
  void setCancel();
  /// setSetToDefault: all 128 set-ups to their defaults, both copies. Loads the stored ones once
  /// before.
  void setSetToDefault();
  /// setGetSetup loads the stored set-ups; once in the life of the process.
  void setGetSetup();
  /// Where setGetSetup loads from; set it before the first call.
  std::function<void()> loadStoredSetups = [] {};
  /// setMIDIport: shows the port of the shown set-up.
  void setMIDIport();
  /// Makes a set-up the shown one and shows all its values. Out of range: the nearest.
  void showSetup(std::int32_t setup);
  /// Whoever shows the values from now on; outlives this or is taken away with nullptr.
  void setView(SetupView* view) { view_ = view != nullptr ? view : &noView_; }
  /// The window's actions. Those of a value write the edit copy at the shown set-up and show it at
  /// the paired control.
  [[nodiscard]] std::vector<MappingAction> actions();

  // The set-ups by name ("LowF3X[12]"), both copies.
  [[nodiscard]] std::span<const SetupField> fields() const { return variables_.fields; }
  /// None: there is no such value.
  [[nodiscard]] std::optional<double> value(std::string_view name) const;
  /// Empty when done, else one line that says what is wrong; nothing is changed then.
  [[nodiscard]] std::string assign(std::string_view name, double value);

  // Around the values that a document brings; main thread.
  /// Ends every note and keeps silent.
  void beginPut();
  /// Plays again, with the set-ups' programs sent anew. Tempo is kept, nothing follows from it.
  void endPut();
  [[nodiscard]] bool setupOpened() const { return variables_.opened != 0; }

 protected:
  enum class Turn : std::uint8_t { NotYet, WaitsForSamples, Now };

  /// A control of the window.
  struct Control {
    std::string_view selector;  ///< a % stands for the band, 1 to 8
    std::string_view field;
    std::string_view pair;  ///< the control that echoes it; empty: itself
    /// Fields of which one at most is on: this one, when it goes on, switches the others off.
    std::span<const std::string_view> instead{};
  };

  /// `analysis` and `notes` outlive it; `input` too.
  MidiMapping(const MappingVariables& variables, std::span<const Control> controls,
              NoteOutput& notes, AnalysisInput& analysis);

  /// Plays a set-up if it is on and its time has come. The lock is held.
  virtual Turn play(std::size_t setup) = 0;
  /// Whether a tick plays every enabled set-up, instead of the shown one alone.
  [[nodiscard]] virtual bool playsAll() const { return true; }
  /// The channels on which the set-up may sound.
  [[nodiscard]] virtual std::array<std::int32_t, 8> channelsOf(std::size_t setup) const = 0;
  /// All notes of the set-up have ended.
  virtual void ended(std::size_t /*setup*/) {}
  virtual void beforeTick() {}
  virtual void setDefaults() = 0;
  /// The window changed a value of the shown set-up.
  virtual void edited(const SetupField& /*field*/, std::size_t /*setup*/) {}
  virtual void sendPrograms() {}
  virtual void addActions(std::vector<MappingAction>& /*to*/) {}

  /// Whether the set-up's interval has passed at `now`; looks the interval up anew. In the
  /// performance profile also whether samples came since it was sent.
  [[nodiscard]] Turn turnOf(std::size_t setup, double now);
  /// The set-up was sent with what was there at turnOf.
  void sent(std::size_t setup, double now);
  /// The cause of the messages that follow.
  void because(MidiCause::Source source, std::size_t setup, std::size_t band);

  [[nodiscard]] AnalysisInput& analysis() const { return analysis_; }
  [[nodiscard]] HeldNotes& held() { return held_; }
  [[nodiscard]] SetupView& view() const { return *view_.load(); }
  [[nodiscard]] std::mutex& lock() { return lock_; }
  [[nodiscard]] bool isShown(std::size_t setup) const { return setup == shownSetup(); }
  [[nodiscard]] std::size_t shownSetup() const;
  [[nodiscard]] static std::optional<std::size_t> indexOf(std::int32_t setup);
  /// Writes the edit copy of the shown set-up (or both, as the field says), within its range.
  void edit(const SetupPlace& place, double value);
  [[nodiscard]] const SetupField& fieldNamed(std::string_view name) const;
  void showAll();
  void addButton(std::vector<MappingAction>& to, std::string_view selector,
                 std::string_view meaning, std::function<void()> perform) const;

 private:
  [[nodiscard]] bool silent() const;
  [[nodiscard]] bool nothingOn();
  void tick();
  void playDue(double now);
  void playShown();
  void playScheduled(std::size_t setup);
  void schedule(std::size_t setup, Turn turn);
  void release(std::size_t setup);
  void shutDown();
  void endNotesOf(std::size_t setup);
  void addControl(std::vector<MappingAction>& to, const Control& control, std::size_t row);

  MappingVariables variables_;
  std::span<const Control> controls_;
  AnalysisInput& analysis_;
  std::mutex lock_;  // the tick and the actions that send
  DueSchedule schedule_;
  HeldNotes held_;
  std::array<std::int64_t, midi::kSetups> sentPoint_{};  // current point at the last send
  std::int64_t point_ = -1;                              // current point as of turnOf
  std::int64_t tickPoint_ = -1;                          // current point as of the last tick
  bool all_ = true;
  bool profile_ = false;
  bool everything_ = true;  // the next tick looks at every set-up
  bool putAside_ = false;
  std::atomic<int> holds_{0};  // reasons to be silent: a document is put, a restart runs
  NoSetupView noView_;
  std::atomic<SetupView*> view_{&noView_};
};

}  // namespace ovka
