#include "Signal.h"

#include <cmath>

#include "EegSignal.h"
#include "FileSignal.h"

namespace ovka {

double sineOfTurns(double turns) noexcept {
  // Into -1/4 ... 1/4 turn, where the series below converges fast; every step is exactly rounded.
  double x = turns - std::floor(turns + 0.5);
  if (x > 0.25) x = 0.5 - x;
  if (x < -0.25) x = -0.5 - x;
  const double angle = x * 6.283185307179586;
  const double square = angle * angle;
  // Taylor's series up to the 21st power, innermost term first.
  double sum = 1.0;
  for (int k = 20; k >= 2; k -= 2) sum = 1.0 - sum * square / static_cast<double>(k * (k + 1));
  return angle * sum;
}

void SineSignal::next(double samplesPerSecond, Microvolts& out) {
  for (std::size_t channel = 0; channel < out.size(); ++channel) {
    out[channel] =
        choice_.microvolts[channel] * sineOfTurns(turns_ + choice_.degrees[channel] / 360.0);
  }
  turns_ += choice_.frequency / samplesPerSecond;
  turns_ -= std::floor(turns_);
}

namespace {

class Silence final : public Signal {
 public:
  void next(double /*samplesPerSecond*/, Microvolts& out) override { out.fill(0.0); }
};

}  // namespace

std::unique_ptr<Signal> makeSignal(const SimulatorOptions& options, std::string& error) {
  error.clear();
  switch (options.signal) {
    case SignalKind::Eeg:
      return std::make_unique<EegSignal>(options.eeg, options.seed);
    case SignalKind::Sine:
      return std::make_unique<SineSignal>(options.sine);
    case SignalKind::File:
      return FileSignal::load(options.file, error);
    case SignalKind::Sequence:
      break;
  }
  return std::make_unique<Silence>();
}

}  // namespace ovka
