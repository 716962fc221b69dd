#pragma once

#include <cstdint>

namespace ovka {

/// Who makes the messages that a thread sends from now on; for the message log.
struct MidiCause {
  enum class Source : std::uint8_t { None, Band, Single, Shutdown, Panic, Test };
  Source source = Source::None;
  std::int32_t setup = -1;   ///< 0 to 127; -1: none
  std::int32_t band = -1;    ///< 0 to 7, or the peak 0 to 2; -1: none
  std::int64_t sample = -1;  ///< the current point (`ploop`) whose data made it; -1: none
};

/// The note engine as the mappings see it: requests for notes, controllers, bends and programs.
///
/// Numbers out of range are clamped: notes, velocities, controllers, values and programs to 0 to
/// 127, channels to 0 to 15. `MIDIport` is an index into the port list. `UseQT` 1: the software
/// synthesizer plays it too, if the set-up (0 to 127) uses it or the port is the one behind the
/// last of the list. Any thread; nothing blocks, nothing allocates.
class NoteOutput {
 public:
  virtual ~NoteOutput() = default;

  /// MidiOutOn: Note On, marked as sounding.
  virtual void MidiOutOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                         std::int32_t channel, std::int32_t MIDIport, std::int32_t UseQT) = 0;
  /// MidiOutOff: Note Off, only if that note is marked as sounding.
  virtual void MidiOutOff(std::int32_t note, std::int32_t SetupN, std::int32_t channel,
                          std::int32_t MIDIport, std::int32_t UseQT) = 0;
  /// MidiOutOffOn: ends the slot's previous note, starts the new one. NOTEN up to 9: a repeated
  /// note keeps sounding; above: it is always ended and started again.
  virtual void MidiOutOffOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                            std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                            std::int32_t UseQT) = 0;
  /// MidiOutOnOff: a Note On and at once its Note Off.
  virtual void MidiOutOnOff(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                            std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                            std::int32_t UseQT) = 0;
  /// MidiControlChange
  virtual void MidiControlChange(std::int32_t controller, std::int32_t value, std::int32_t SetupN,
                                 std::int32_t channel, std::int32_t MIDIport,
                                 std::int32_t UseQT) = 0;
  /// MidiCpitch: `value` is the upper seven bits of the bend; the lower are always 0.
  virtual void MidiCpitch(std::int32_t value, std::int32_t SetupN, std::int32_t channel,
                          std::int32_t MIDIport, std::int32_t UseQT) = 0;
  /// MidiCprogram
  virtual void MidiCprogram(std::int32_t program, std::int32_t SetupN, std::int32_t channel,
                            std::int32_t MIDIport, std::int32_t UseQT) = 0;
  /// MidiStop, MidiCont, MidiStart, MidiShutDown: send nothing.
  virtual void MidiStop(std::int32_t MIDIport) = 0;
  virtual void MidiCont(std::int32_t MIDIport) = 0;
  virtual void MidiStart(std::int32_t MIDIport) = 0;
  virtual void MidiShutDown() = 0;
  /// mtimeatMIDIs: time of day in seconds.
  [[nodiscard]] virtual double mtimeatMIDIs() const = 0;

  /// Note Offs for every note of the set-up that is marked as sounding, on whatever channel and
  /// port it was started: for a set-up whose channel, port or output flag changes.
  virtual void endNotesOf(std::int32_t /*SetupN*/) {}

  /// What the calling thread's next messages come from.
  virtual void because(const MidiCause& cause) = 0;
  /// 1 once the client is set up (`runMIDI`).
  [[nodiscard]] virtual bool running() const = 0;
  /// Number of destinations of the port list (`findPortCountE`).
  [[nodiscard]] virtual std::int32_t portCount() const = 0;
  /// Restart: asks the MIDI system to look again, takes the client down and sets it up anew.
  virtual void restart() = 0;
};

}  // namespace ovka
