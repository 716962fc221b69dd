#pragma once

#include <cstdint>

#include "NoteOutput.h"

namespace ovka {

/// The doors of a mapping to the note engine: every argument goes on unchanged and in its order.
/// Any thread.
class MidiForwarding {
 public:
  /// `notes` outlives it.
  explicit MidiForwarding(NoteOutput& notes) : notes_(notes) {}
  MidiForwarding(const MidiForwarding&) = delete;
  MidiForwarding& operator=(const MidiForwarding&) = delete;

  /// sendMidiOutOn:velocit:SetupN:channel:MIDIport:UseQT:
  void sendMidiOutOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                     std::int32_t channel, std::int32_t MIDIport, std::int32_t UseQT) {
    notes_.MidiOutOn(note, velocit, SetupN, channel, MIDIport, UseQT);
  }
  /// sendMidiOutOffOn:velocit:SetupN:channel:MIDIport:NOTEN:UseQT:
  void sendMidiOutOffOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                        std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                        std::int32_t UseQT) {
    notes_.MidiOutOffOn(note, velocit, SetupN, channel, MIDIport, NOTEN, UseQT);
  }
  /// sendMidiOutOnOff:velocit:SetupN:channel:MIDIport:NOTEN:UseQT:
  void sendMidiOutOnOff(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                        std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                        std::int32_t UseQT) {
    notes_.MidiOutOnOff(note, velocit, SetupN, channel, MIDIport, NOTEN, UseQT);
  }
  /// sendMidiOutOff:SetupN:channel:MIDIport:UseQT:
  void sendMidiOutOff(std::int32_t note, std::int32_t SetupN, std::int32_t channel,
                      std::int32_t MIDIport, std::int32_t UseQT) {
    notes_.MidiOutOff(note, SetupN, channel, MIDIport, UseQT);
  }
  /// sendMidiCpitch:SetupN:channel:MIDIport:UseQT:
  void sendMidiCpitch(std::int32_t value, std::int32_t SetupN, std::int32_t channel,
                      std::int32_t MIDIport, std::int32_t UseQT) {
    notes_.MidiCpitch(value, SetupN, channel, MIDIport, UseQT);
  }
  /// sendMidiControlChange:number:SetupN:channel:MIDIport:UseQT: The first number is the
  /// controller, as in the engine.
  void sendMidiControlChange(std::int32_t controller, std::int32_t number, std::int32_t SetupN,
                             std::int32_t channel, std::int32_t MIDIport, std::int32_t UseQT) {
    notes_.MidiControlChange(controller, number, SetupN, channel, MIDIport, UseQT);
  }
  /// sendMidiCprogram:SetupN:channel:MIDIport:UseQT:
  void sendMidiCprogram(std::int32_t program, std::int32_t SetupN, std::int32_t channel,
                        std::int32_t MIDIport, std::int32_t UseQT) {
    notes_.MidiCprogram(program, SetupN, channel, MIDIport, UseQT);
  }
  /// sendMidiStop: sends nothing.
  void sendMidiStop(std::int32_t MIDIport) { notes_.MidiStop(MIDIport); }

 protected:
  ~MidiForwarding() = default;
  [[nodiscard]] NoteOutput& notes() const { return notes_; }

 private:
  NoteOutput& notes_;
};

}  // namespace ovka
