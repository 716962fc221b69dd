#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "Random.h"
#include "Signal.h"

namespace ovka {

/// A noise whose power falls as 1/f between about 0.3 and 80 Hz: a sum of first-order low-passed
/// noises of equal variance, an octave apart (McWhorter's model).
class PinkNoise {
 public:
  /// The next value, variance about 1.
  double next(double samplesPerSecond, Random& random);

 private:
  static constexpr std::size_t kPoles = 9;
  void tune(double samplesPerSecond);

  double tunedFor_ = 0.0;
  std::array<double, kPoles> keep_{};
  std::array<double, kPoles> drive_{};
  std::array<double, kPoles> state_{};
};

/// A made-up EEG at rest. Channels 1 and 2 stand for left and right over the forehead, 3 and 4 for
/// left and right over the back of the head, 0 for the middle. All share a part of their sources,
/// the two of a side more, so that coherence between channels means something.
class EegSignal final : public Signal {
 public:
  EegSignal(const EegChoice& choice, std::uint64_t seed);
  void next(double samplesPerSecond, Microvolts& out) override;
  /// Overrides the choice of eyes from now on.
  void setEyesClosed(bool closed) override;

 private:
  /// An event that comes at random intervals and lasts a while.
  struct Event {
    double wait = 0.0;      ///< s until it begins
    double left = 0.0;      ///< s until it ends
    double duration = 1.0;  ///< s
    double strength = 0.0;
  };
  struct Interval {
    double shortest, longest;  ///< s between two events
    double briefest, lasting;  ///< s that one lasts
  };

  void background(double samplesPerSecond, Microvolts& out);
  void alpha(double step, Microvolts& out);
  void blinks(double step, Microvolts& out);
  void muscles(double step, Microvolts& out);
  void hum(double step, Microvolts& out);
  bool advance(Event& event, const Interval& interval, double step);

  EegChoice choice_;
  Random random_;
  double seconds_ = 0.0;
  bool closed_ = false;
  std::array<PinkNoise, 5> own_;
  PinkNoise common_;
  PinkNoise left_;
  PinkNoise right_;
  double closedShare_ = 0.0;  ///< 0 eyes open ... 1 closed, with the lag of the rhythm
  double waxing_ = 0.0;       ///< slow noise that swells the rhythm
  double wander_ = 0.0;       ///< slow noise that shifts its frequency
  std::array<double, 2> sideWaxing_{};
  double alphaTurns_ = 0.0;
  double humTurns_ = 0.0;
  Event blink_;
  std::array<Event, 2> muscle_{};
  std::array<double, 5> lastMuscle_{};
};

}  // namespace ovka
