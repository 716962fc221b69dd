#pragma once

#include <cstdint>
#include <span>

#include "AnalysisTables.h"
#include "SampleStore.h"
#include "SoundInput.h"
#include "SpectrumArrays.h"

namespace ovka {

/// What a fetch takes from the settings, read once before it.
struct FetchSettings {
  const AnalysisTableSet* tables = nullptr;
  bool stop = false;
  double gain = 1.0;
};

/// Takes the newest stretch of a channel out of the sample store (or the sound input), windowed and
/// scaled for the transform. Any thread; only getDataToBuffer: allocates (the passes do not call
/// it).
class SampleFetch {
 public:
  SampleFetch(const SampleStore& store, const AnalysisTables& tables, const SoundInput& sound,
              SpectrumArrays& arrays);

  /// getDataToBuffer:PT:CO: fills the channel's input with the `fftp` windowed samples that end at
  /// PT: its coherence array, and with CO 0 also its spectrum array. Channels 0 to 3 are A, B, D,
  /// E, 4 and 5 the sound channels; others do nothing.
  void getDataToBuffer(std::int32_t channel, std::int64_t PT, std::int32_t CO);

  /// The out.size() windowed samples of channel 0 to 5 that end at PT (starting at 0 when there are
  /// fewer before it), each scale * ((sample * window / 32768) * gain). All 0 while
  /// stopped; 0 where the window table has no entry.
  void windowedSamples(std::int32_t channel, std::int64_t PT, double scale,
                       const FetchSettings& settings, std::span<double> out) const;
  /// What a fetch of channel 0 to 5 takes from the settings now.
  [[nodiscard]] FetchSettings settingsOf(std::int32_t channel) const;

  /// getARawwave and its like: the samples from `samplepoint` on as readers get them, each
  /// corrected by the channel's estimated offset / -1.5. Feeds the raw-wave displays.
  void getARawwave(std::int64_t samplepoint, std::span<double> out) const;
  void getBRawwave(std::int64_t samplepoint, std::span<double> out) const;
  void getDRawwave(std::int64_t samplepoint, std::span<double> out) const;
  void getERawwave(std::int64_t samplepoint, std::span<double> out) const;
  /// getARawwaveX and its like: one corrected sample.
  [[nodiscard]] double getARawwaveX(std::int64_t samplepoint) const;
  [[nodiscard]] double getBRawwaveX(std::int64_t samplepoint) const;
  [[nodiscard]] double getDRawwaveX(std::int64_t samplepoint) const;
  [[nodiscard]] double getERawwaveX(std::int64_t samplepoint) const;

 private:
  void rawwave(std::int32_t channel, std::int64_t samplepoint, std::span<double> out) const;
  [[nodiscard]] double rawwaveX(std::int32_t channel, std::int64_t samplepoint) const;

  const SampleStore& store_;
  const AnalysisTables& tables_;
  const SoundInput& sound_;
  SpectrumArrays& arrays_;
};

/// First sample of the `points` that end at PT, clamped at 0.
[[nodiscard]] constexpr std::int64_t firstOf(std::int64_t PT, std::int64_t points) noexcept {
  return PT > points ? PT - points : 0;
}

}  // namespace ovka
