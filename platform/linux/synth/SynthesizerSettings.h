#pragma once

#include <string>

namespace ovka {

/// How the software synthesizer sounds and where.
struct SynthesizerSettings {
  /// A sound font (.sf2, .sf3, .dls); empty: the first that this machine has, see SoundFonts.h.
  std::string soundFont{};
  /// "pulseaudio" (PipeWire serves it too), "jack" or "alsa"; empty: the first that works.
  std::string driver{};
  /// The driver's own name of an output; empty: its usual one. Not used by jack.
  std::string device{};
  double sampleRate = 48000;  ///< samples a second, 8000 to 96000; jack decides itself
  double gain = 0.5;          ///< 0 to 10; the limiter holds what becomes too loud
  double ceiling = -1;        ///< of the limiter, dB of full scale
  int periodSize = 256;       ///< samples the driver asks for at once, 64 to 8192
  int periods = 3;            ///< how many of them it keeps, 2 to 64
};

}  // namespace ovka
