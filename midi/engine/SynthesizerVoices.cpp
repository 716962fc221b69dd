#include "SynthesizerVoices.h"

#include "MidiBytes.h"
#include "MidiVariables.h"

namespace ovka {

void SynthesizerVoices::setUp() {
  const MidiCause cause;
  programs_[0] = clampedData(midi::mProgram0);
  voices_.fill(Voice::Unopened);
  if (midi::AUuse != 0) {
    program(programs_[0], 0, -1, cause);
  } else {
    for (std::int32_t channel = 0; channel < 8; ++channel) setUseQtMidi(channel, 1);
  }
}

void SynthesizerVoices::setUseQtMidi(std::int32_t channel, std::int32_t on) {
  const MidiCause cause;
  if (on != 0) {
    open(channel, cause);
    return;
  }
  receivers_.endChannel(Receivers::kSynthesizer, channel, cause);
  voices_[static_cast<std::size_t>(channel)] = Voice::Closed;
}

void SynthesizerVoices::open(std::int32_t channel, const MidiCause& cause) {
  const auto index = static_cast<std::size_t>(channel);
  voices_[index] = Voice::Open;
  receivers_.deliver(Receivers::kSynthesizer, -1, 0, programChange(channel, programs_[index]),
                     cause);
}

bool SynthesizerVoices::ready(std::int32_t channel, const MidiCause& cause) {
  if (midi::AUuse != 0) return true;
  const Voice voice = voices_[static_cast<std::size_t>(channel)];
  if (voice == Voice::Unopened) open(channel, cause);
  return voice != Voice::Closed;
}

void SynthesizerVoices::note(std::int32_t channel, std::int32_t note, std::int32_t velocity,
                             std::int32_t port, const MidiCause& cause) {
  if (!ready(channel, cause)) return;
  receivers_.deliver(Receivers::kSynthesizer, port, 0, noteOn(channel, note, velocity), cause);
}

void SynthesizerVoices::program(std::int32_t program, std::int32_t channel, std::int32_t port,
                                const MidiCause& cause) {
  programs_[static_cast<std::size_t>(channel)] = program;
  if (midi::AUuse != 0) {
    receivers_.deliver(Receivers::kSynthesizer, port, 0, controlChange(channel, 0, 0), cause);
  } else if (!ready(channel, cause)) {
    return;
  }
  receivers_.deliver(Receivers::kSynthesizer, port, 0, programChange(channel, program), cause);
}

void SynthesizerVoices::PitchBendQtMidi(std::int32_t value, std::int32_t channel, std::int32_t port,
                                        const MidiCause& cause) {
  if (!ready(channel, cause)) return;
  receivers_.deliver(Receivers::kSynthesizer, port, 0, pitchBend(channel, value), cause);
}

}  // namespace ovka
