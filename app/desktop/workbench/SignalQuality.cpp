#include "SignalQuality.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "AmplifierModels.h"
#include "BufferVariables.h"

namespace ovka::desktop {
namespace {

constexpr double kFlat = 0.1;          // microvolts; a shorted input still shows its noise
constexpr double kRailedShare = 0.05;  // of the samples, at the known limit
constexpr double kClippedShare = 0.3;  // of the samples, on flat tops, where no limit is known
constexpr int kFlatTop = 5;            // samples in a row on one extreme

/// Power of the samples within 1 Hz of a frequency, Hann-windowed: the sum over the bins of a
/// discrete Fourier transform of just these.
double powerAround(std::span<const double> samples, double speed, double frequency) {
  const auto count = static_cast<double>(samples.size());
  const auto first = static_cast<std::int64_t>(std::floor((frequency - 1) * count / speed));
  const auto last = static_cast<std::int64_t>(std::ceil((frequency + 1) * count / speed));
  double power = 0;
  for (std::int64_t bin = std::max<std::int64_t>(first, 1); bin <= last; ++bin) {
    const double step = 2 * std::numbers::pi * static_cast<double>(bin) / count;
    double re = 0;
    double im = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      re += samples[i] * std::cos(step * static_cast<double>(i));
      im -= samples[i] * std::sin(step * static_cast<double>(i));
    }
    power += 2 * (re * re + im * im) / (count * count);
  }
  return power;
}

/// Hann-windowed, without mean and slope.
std::vector<double> prepared(std::span<const double> samples) {
  const auto count = static_cast<double>(samples.size());
  const double middle = (count - 1) / 2;
  double mean = 0;
  double slope = 0;
  double weight = 0;
  for (const double sample : samples) mean += sample / count;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double x = static_cast<double>(i) - middle;
    slope += x * (samples[i] - mean);
    weight += x * x;
  }
  slope /= weight;
  std::vector<double> result(samples.size());
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double x = static_cast<double>(i) - middle;
    const double window = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * (x + middle + 0.5) / count);
    result[i] = (samples[i] - mean - slope * x) * window;
  }
  return result;
}

/// The share of samples that stand in a row of equal ones at the least or greatest value.
double flatTopShare(std::span<const double> samples, double low, double high) {
  std::size_t held = 0;
  std::size_t run = 0;
  for (std::size_t i = 0; i <= samples.size(); ++i) {
    const bool extreme = i < samples.size() && (samples[i] <= low || samples[i] >= high);
    if (extreme && (run == 0 || samples[i] == samples[i - 1])) {
      ++run;
      continue;
    }
    if (run >= kFlatTop) held += run;
    run = extreme ? 1 : 0;
  }
  return static_cast<double>(held) / static_cast<double>(samples.size());
}

}  // namespace

SignalQuality judgeSignal(std::span<const double> samples, double samplesPerSecond, double limit) {
  SignalQuality quality;
  if (samplesPerSecond <= 0 || static_cast<double>(samples.size()) < samplesPerSecond)
    return quality;
  const auto [low, high] = std::minmax_element(samples.begin(), samples.end());
  quality.peakToPeak = *high - *low;
  const auto railed =
      static_cast<double>(std::count_if(samples.begin(), samples.end(), [&](double sample) {
        return limit > 0 && std::abs(sample) >= 0.98 * limit;
      }));
  if (railed > kRailedShare * static_cast<double>(samples.size())) {
    quality.state = SignalState::Railed;
    return quality;
  }
  if (quality.peakToPeak < kFlat) {
    quality.state = SignalState::Flat;
    return quality;
  }
  if (flatTopShare(samples, *low, *high) > kClippedShare) {
    quality.state = SignalState::Railed;
    return quality;
  }
  const std::vector<double> values = prepared(samples);
  double total = 0;
  for (const double value : values) total += value * value / static_cast<double>(values.size());
  quality.state = SignalState::Good;
  for (const double mains : {50.0, 60.0}) {
    if (2 * (mains + 1) > samplesPerSecond || total <= 0) continue;
    const double share = std::min(1.0, powerAround(values, samplesPerSecond, mains) / total);
    if (quality.humFrequency != 0 && share <= quality.humShare) continue;
    quality.humShare = share;
    quality.humFrequency = mains;
  }
  if (quality.humShare > 0.5) quality.state = SignalState::Hum;
  return quality;
}

double amplifierLimit() {
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  if (model == nullptr || model->values != AmplifierValues::Bits24) return 0;
  // A 24-bit code is 131.072 to the microvolt.
  return 8388607.0 / 131.072;
}

}  // namespace ovka::desktop
