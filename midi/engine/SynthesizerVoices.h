#pragma once

#include <array>
#include <cstdint>

#include "NoteOutput.h"
#include "Receivers.h"

namespace ovka {

/// The two ways in which the engine plays the software synthesizer, chosen by AUuse. 1, the graph:
/// all channels sound at once; a program is chosen as bank select 0 and program change. 0, the note
/// allocator: a voice a channel, opened with its channel's program; a voice that was not opened
/// opens with its first note or program, one that was closed stays silent. Numbers are in range;
/// the engine's lock guards it. Functions named ...QtMidi are the note allocator's.
class SynthesizerVoices {
 public:
  explicit SynthesizerVoices(Receivers& receivers) : receivers_(receivers) {}

  /// The engine's set-up: the graph's channel 0 gets program mProgram0, or the voices of channels 0
  /// to 7 open.
  void setUp();
  /// setUseQtMidi: opens (1) or closes (0) the voice of a channel.
  void setUseQtMidi(std::int32_t channel, std::int32_t on);
  /// A velocity of 0 ends the note.
  void note(std::int32_t channel, std::int32_t note, std::int32_t velocity, std::int32_t port,
            const MidiCause& cause);
  /// MidiCproQtMidi, or the graph's bank select and program change.
  void program(std::int32_t program, std::int32_t channel, std::int32_t port,
               const MidiCause& cause);
  /// PitchBendQtMidi: bends the voice on which the set-up plays. Upper seven bits.
  void PitchBendQtMidi(std::int32_t value, std::int32_t channel, std::int32_t port,
                       const MidiCause& cause);

 private:
  enum class Voice : std::uint8_t { Unopened, Open, Closed };

  [[nodiscard]] bool ready(std::int32_t channel, const MidiCause& cause);
  void open(std::int32_t channel, const MidiCause& cause);

  Receivers& receivers_;
  std::array<Voice, 16> voices_{};
  std::array<std::int32_t, 16> programs_{};
};

}  // namespace ovka
