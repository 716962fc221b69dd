#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <doctest/doctest.h>
#include <numbers>
#include <span>
#include <string>
#include <vector>

#include "ManualTime.h"
#include "OfflineSynthesizer.h"
#include "SoundFonts.h"

namespace ovka::testing {

/// False, and said, when this machine has no sound font.
inline bool soundFontHere() {
  if (!findSoundFont({}).path.empty()) return true;
  MESSAGE("skipped: no sound font (install timgm6mb-soundfont)");
  return false;
}

/// A rendering under way: time moves by hand, the sound is kept.
class Rendering {
 public:
  explicit Rendering(const SynthesizerSettings& settings = {})
      : synthesizer(settings, time, [this](std::span<const float> interleaved) {
          sound.insert(sound.end(), interleaved.begin(), interleaved.end());
        }) {
    REQUIRE(synthesizer.start() == 0);
  }
  void play(const std::vector<std::uint8_t>& bytes) { synthesizer.message(bytes); }
  void wait(std::chrono::milliseconds duration) { time.advance(duration); }
  /// One channel (0 left, 1 right) of what was rendered so far, from a sample on.
  [[nodiscard]] std::vector<float> channel(std::size_t side, std::size_t from = 0) const {
    std::vector<float> samples;
    for (std::size_t i = 2 * from + side; i < sound.size(); i += 2) samples.push_back(sound[i]);
    return samples;
  }

  ManualTime time;
  std::vector<float> sound;
  OfflineSynthesizer synthesizer;
};

/// Magnitude of one frequency in a sound, by the definition of the transform.
inline double partial(std::span<const float> sound, double frequency, double sampleRate) {
  const double step = 2 * std::numbers::pi * frequency / sampleRate;
  double real = 0;
  double imaginary = 0;
  for (std::size_t i = 0; i < sound.size(); ++i) {
    const auto t = static_cast<double>(i);
    const double window =
        0.5 - 0.5 * std::cos(2 * std::numbers::pi * t / static_cast<double>(sound.size()));
    const double value = window * static_cast<double>(sound[i]);
    real += value * std::cos(step * t);
    imaginary -= value * std::sin(step * t);
  }
  return std::hypot(real, imaginary);
}

inline float loudest(std::span<const float> sound) {
  float peak = 0;
  for (const float sample : sound) peak = std::max(peak, std::fabs(sample));
  return peak;
}

}  // namespace ovka::testing
