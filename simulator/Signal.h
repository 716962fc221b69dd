#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "SimulatorOptions.h"

namespace ovka {

/// Microvolts of one moment, by buffer channel 0 to 4 (1 and 2 left and right, 3 and 4 the second
/// pair, 0 the fifth).
using Microvolts = std::array<double, 5>;

/// What the electrodes pick up. Used by one thread; the same calls give the same bits on every
/// machine: only exactly rounded operations are used, and a sine of our own.
class Signal {
 public:
  virtual ~Signal() = default;
  /// The next sample of every channel, 1 / samplesPerSecond seconds after the one before.
  virtual void next(double samplesPerSecond, Microvolts& out) = 0;
  /// Eyes closed or open from now on; signals without eyes ignore it.
  virtual void setEyesClosed(bool /*closed*/) {}
};

/// sin(2 pi turns), error below 1e-14 for |turns| up to 1e6. Not from the mathematics library,
/// whose last bit differs between machines.
[[nodiscard]] double sineOfTurns(double turns) noexcept;

/// A pure sine: frequency (Hz), and amplitude (microvolts) and phase (degrees) per channel.
class SineSignal final : public Signal {
 public:
  explicit SineSignal(const SineChoice& choice) : choice_(choice) {}
  void next(double samplesPerSecond, Microvolts& out) override;

 private:
  SineChoice choice_;
  double turns_ = 0.0;
};

/// The signal that the options ask for. nullptr with a one-line `error` when its file cannot be
/// used. The sequence "signal" is silent here: the frame counter replaces its codes.
[[nodiscard]] std::unique_ptr<Signal> makeSignal(const SimulatorOptions& options,
                                                 std::string& error);

}  // namespace ovka
