#pragma once

#include <cstdint>

/// The choices of the analysis panels: each stores a setting together with what follows from it. An
/// index out of range changes nothing and gives false. Any thread; the caller then calls
/// fftinit:WindowType: where the length or the window changed.
namespace ovka::fft {

/// Length 128 << index, index 0 to 9: sets `FFTpointX`, `fftp`, `fftpX`, `fftpoint`.
bool selectFFTpoint(std::int32_t index);
/// Window menu 0 to 5 (rectangular, triangular, Hamming, Hanning, Blackman, rectangular): sets
/// `windSape`, `fftwind` and the scalers.
bool selectWindow(std::int32_t index);
/// Gain rule 0 to 3: sets `FFTcalculationSelectX` and the scalers.
bool selectFFTcalculation(std::int32_t index);
/// Passes to average over: index 0 to 6 for 1, 2, 5, 10, 20, 32, 64.
bool selectAverageTime(std::int32_t index);
/// Least cross magnitude: index 0 to 6 for 0.01, 0.05, 0.1, 0.5, 1, 2, 5.
bool selectCoherenceLevel(std::int32_t index);

/// `scalerX` and `scalerY` of a gain rule and a window code; an unknown code counts as rectangular,
/// an unknown rule as rule 1.
struct Scalers {
  double x;
  double y;
};
[[nodiscard]] Scalers scalersOf(std::int32_t calculationSelect, char window);
/// Sets both scalers from the present rule and window.
void updateScalers();

/// Gain of an analysis channel 0 to 5 as it is applied to a sample: the gain chosen by its index,
/// divided by 4 (EEG) or times 3.05 * 0.25 (sound). An index out of range counts as gain 1.
[[nodiscard]] double appliedGain(std::int32_t channel);
/// The gain index of an analysis channel.
[[nodiscard]] std::int32_t gainIndex(std::int32_t channel);

}  // namespace ovka::fft
