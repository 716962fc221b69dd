#pragma once

#include <cstdint>
#include <fluidsynth/types.h>
#include <memory>
#include <span>
#include <string>

#include "SynthesizerSettings.h"

namespace ovka {

/// Sixteen channels of a sound font. Messages and silence() may come from any thread while one
/// other renders: the library keeps them apart, and messages never wait for the rendering.
class FluidVoices {
 public:
  /// Voices with the sounds of `settings.soundFont`, a path. nullptr and a line for a person when
  /// they cannot be loaded.
  [[nodiscard]] static std::unique_ptr<FluidVoices> load(const SynthesizerSettings& settings,
                                                         std::string* explanation);
  /// Voices that stay silent until they have sounds.
  [[nodiscard]] static std::unique_ptr<FluidVoices> make(const SynthesizerSettings& settings,
                                                         std::string* explanation);
  /// Also while another thread renders.
  [[nodiscard]] bool loadSounds(const std::string& soundFont, std::string* explanation);
  ~FluidVoices();
  FluidVoices(const FluidVoices&) = delete;
  FluidVoices& operator=(const FluidVoices&) = delete;

  /// Plays one channel message; what is none is ignored. A Note On of velocity 0 ends the note.
  void message(std::span<const std::uint8_t> bytes);
  /// Ends every sound at once, echoes too (but for some -60 dB); programs, volumes and positions
  /// stay.
  void silence();
  /// 0 to 10. Any thread.
  void setGain(double gain);
  /// Renders both channels (of one length); the rendering thread's own.
  void render(std::span<float> left, std::span<float> right);
  /// Voices that sound or fade at the moment.
  [[nodiscard]] int activeVoices() const;

  /// The library's settings, which an audio driver takes too.
  [[nodiscard]] fluid_settings_t* settings() const { return settings_; }
  /// "FluidSynth 2.3.1".
  [[nodiscard]] static std::string libraryName();

 private:
  FluidVoices() = default;

  fluid_settings_t* settings_ = nullptr;
  fluid_synth_t* synth_ = nullptr;
};

}  // namespace ovka
