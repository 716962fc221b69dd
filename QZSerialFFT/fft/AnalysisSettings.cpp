#include "AnalysisSettings.h"

#include <array>
#include <span>

#include "FFTVariables.h"

namespace ovka::fft {

namespace {

constexpr double kRootOfTwo = 1.414213562;  // nine decimals, on purpose
constexpr std::array<double, 12> kEegGains{10.0, 5.0, 3.0, 2.0,  1.5,  1.0,
                                           0.5,  0.2, 0.1, 0.05, 0.02, 0.01};
constexpr std::array<double, 15> kSoundGains{400.0, 200.0, 100.0, 50.0, 20.0, 10.0, 5.0, 2.0,
                                             1.0,   0.5,   0.2,   0.1,  0.05, 0.02, 0.01};
constexpr std::array<char, 6> kWindows{'r', 't', 'm', 'n', 'b', 'r'};
constexpr std::array<std::int32_t, 7> kAverageTimes{1, 2, 5, 10, 20, 32, 64};
constexpr std::array<double, 7> kCoherenceLevels{0.01, 0.05, 0.1, 0.5, 1.0, 2.0, 5.0};

bool within(std::int32_t index, std::size_t size) {
  return index >= 0 && static_cast<std::size_t>(index) < size;
}

double gainOf(std::span<const double> gains, std::int32_t index) {
  return within(index, gains.size()) ? gains[static_cast<std::size_t>(index)] : 1.0;
}

// What makes up for the mean height of each window, and its band-power gain; factor 0: none.
struct WindowGain {
  char code;
  double factor;
  double y;
};
constexpr std::array<WindowGain, 4> kWindowGains{{{'b', 2.380952380952381, 0.9300595238095238},
                                                  {'m', 1.8518518518518519, 0.7233796296296297},
                                                  {'n', 2.0, 0.78125},
                                                  {'t', 2.0, 0.78125}}};

}  // namespace

bool selectFFTpoint(std::int32_t index) {
  if (!within(index, 10)) return false;
  FFTpointX = index;
  fftp = 128 << index;
  fftpX = 7 + index;
  fftpoint = 7 + index;
  return true;
}

bool selectWindow(std::int32_t index) {
  if (!within(index, kWindows.size())) return false;
  windSape = kWindows[static_cast<std::size_t>(index)];
  fftwind = kWindows[static_cast<std::size_t>(index)];
  updateScalers();
  return true;
}

bool selectFFTcalculation(std::int32_t index) {
  if (!within(index, 4)) return false;
  FFTcalculationSelectX = index;
  updateScalers();
  return true;
}

bool selectAverageTime(std::int32_t index) {
  if (!within(index, kAverageTimes.size())) return false;
  setAverageTime = index;
  AverageTime = kAverageTimes[static_cast<std::size_t>(index)];
  return true;
}

bool selectCoherenceLevel(std::int32_t index) {
  if (!within(index, kCoherenceLevels.size())) return false;
  setCoherenceLevel = index;
  CoherenceLevel = kCoherenceLevels[static_cast<std::size_t>(index)];
  return true;
}

Scalers scalersOf(std::int32_t calculationSelect, char window) {
  if (calculationSelect == 0) return {kRootOfTwo, 0.390625};
  if (calculationSelect != 2 && calculationSelect != 3) return {1.0, 0.390625};
  for (const WindowGain& gain : kWindowGains) {
    if (gain.code != window) continue;
    return {calculationSelect == 2 ? gain.factor * kRootOfTwo : gain.factor, gain.y};
  }
  return {calculationSelect == 2 ? kRootOfTwo : 1.0, 0.390625};
}

void updateScalers() {
  const Scalers scalers = scalersOf(FFTcalculationSelectX, windSape);
  scalerX = scalers.x;
  scalerY = scalers.y;
}

std::int32_t gainIndex(std::int32_t channel) {
  switch (channel) {
    case 0:
      return setGain1Number;
    case 1:
      return setGain2Number;
    case 2:
      return setGain3Number;
    case 3:
      return setGain4Number;
    default:
      return setGain1NumberSound;
  }
}

double appliedGain(std::int32_t channel) {
  const std::int32_t index = gainIndex(channel);
  if (channel < kEegChannels) return gainOf(kEegGains, index) / 4.0;
  return gainOf(kSoundGains, index) * 3.05 * 0.25;
}

}  // namespace ovka::fft
