#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace ovka {

/// A software synthesizer of sixteen voices, one a MIDI channel, behind a peak limiter.
class Synthesizer {
 public:
  virtual ~Synthesizer() = default;
  /// For the user: what plays, with its sounds and its output ("FluidSynth 2.3.1,
  /// TimGM6mb.sf2, pulseaudio").
  [[nodiscard]] virtual std::string name() const = 0;
  /// Loads the sounds and starts the audio output. 0 or an errno; explanation() then says what
  /// failed. Starting twice does nothing. The owner's thread.
  [[nodiscard]] virtual int start() = 0;
  /// One line for a person about the last failure, with what to do; empty when there was none.
  [[nodiscard]] virtual std::string explanation() const = 0;
  [[nodiscard]] virtual bool started() const = 0;
  /// Plays one channel message: note on and off, controller, program, pitch bend. Others are
  /// ignored. Any thread; does not wait for the audio output.
  virtual void message(std::span<const std::uint8_t> bytes) = 0;
  /// Ends every sound at once. Any thread.
  virtual void silence() = 0;
  /// Ends the audio output. The owner's thread.
  virtual void stop() = 0;
};

}  // namespace ovka
