#include "EegSignal.h"

#include <algorithm>
#include <cmath>

namespace ovka {
namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kAlternation = 15.0;  // s with eyes open, then closed

// By channel 0 to 4, microvolts unless named otherwise.
constexpr double kBackground = 7.0;
constexpr std::array<double, 5> kAlphaShare{0.8, 0.75, 0.72, 1.0, 0.96};
constexpr std::array<double, 5> kAlphaLag{0.02, 0.05, 0.06, 0.0, 0.01};  // turns
constexpr double kAlphaOpen = 4.0;
constexpr double kAlphaClosed = 24.0;
constexpr std::array<double, 5> kBlinkShare{0.5, 1.0, 0.95, 0.2, 0.18};
constexpr std::array<double, 5> kMuscleShare{0.3, 1.0, 1.0, 0.6, 0.6};
constexpr double kMuscle = 14.0;

/// A slow noise of unit variance with the time constant `seconds`.
void drift(double& value, double seconds, double step, Random& random) {
  const double keep = std::max(1.0 - step / seconds, 0.0);
  value = keep * value + std::sqrt(1.0 - keep * keep) * random.gauss();
}

/// Channels 1 and 3 lie left, 2 and 4 right; 0 counts to neither.
constexpr int sideOf(std::size_t channel) {
  return channel == 0 ? -1 : channel % 2 == 1 ? 0 : 1;
}

}  // namespace

void PinkNoise::tune(double samplesPerSecond) {
  tunedFor_ = samplesPerSecond;
  double corner = 0.3;
  for (std::size_t pole = 0; pole < kPoles; ++pole, corner *= 2.0) {
    const double half = kTwoPi * corner / samplesPerSecond / 2.0;
    keep_[pole] = std::max((1.0 - half) / (1.0 + half), 0.0);
    drive_[pole] = std::sqrt((1.0 - keep_[pole] * keep_[pole]) / static_cast<double>(kPoles));
  }
}

double PinkNoise::next(double samplesPerSecond, Random& random) {
  if (samplesPerSecond != tunedFor_) tune(samplesPerSecond);
  double sum = 0.0;
  for (std::size_t pole = 0; pole < kPoles; ++pole) {
    state_[pole] = keep_[pole] * state_[pole] + drive_[pole] * random.gauss();
    sum += state_[pole];
  }
  return sum;
}

EegSignal::EegSignal(const EegChoice& choice, std::uint64_t seed) : choice_(choice), random_(seed) {
  blink_.wait = random_.between(1.0, 4.0);
  for (Event& event : muscle_) event.wait = random_.between(4.0, 15.0);
  closedShare_ = choice.eyes == Eyes::Closed ? 1.0 : 0.0;
}

void EegSignal::setEyesClosed(bool closed) {
  choice_.eyes = closed ? Eyes::Closed : Eyes::Open;
}

void EegSignal::next(double samplesPerSecond, Microvolts& out) {
  const double step = 1.0 / samplesPerSecond;
  const bool alternating = std::fmod(seconds_, 2.0 * kAlternation) >= kAlternation;
  closed_ = choice_.eyes == Eyes::Closed || (choice_.eyes == Eyes::Alternating && alternating);
  background(samplesPerSecond, out);
  alpha(step, out);
  blinks(step, out);
  muscles(step, out);
  if (choice_.humFrequency > 0.0) hum(step, out);
  seconds_ += step;
}

void EegSignal::background(double samplesPerSecond, Microvolts& out) {
  const double common = common_.next(samplesPerSecond, random_);
  const std::array<double, 2> side{left_.next(samplesPerSecond, random_),
                                   right_.next(samplesPerSecond, random_)};
  for (std::size_t channel = 0; channel < out.size(); ++channel) {
    const double own = own_[channel].next(samplesPerSecond, random_);
    const int which = sideOf(channel);
    const double near =
        which < 0 ? (side[0] + side[1]) * 0.7 : side[static_cast<std::size_t>(which)];
    out[channel] = kBackground * (0.55 * common + 0.5 * near + 0.67 * own);
  }
}

void EegSignal::alpha(double step, Microvolts& out) {
  closedShare_ += ((closed_ ? 1.0 : 0.0) - closedShare_) * std::min(step / 0.4, 1.0);
  drift(waxing_, 1.2, step, random_);
  drift(wander_, 2.0, step, random_);
  for (double& side : sideWaxing_) drift(side, 0.8, step, random_);
  const double amplitude = kAlphaOpen + (kAlphaClosed - kAlphaOpen) * closedShare_;
  for (std::size_t channel = 0; channel < out.size(); ++channel) {
    const int which = sideOf(channel);
    const double side = which < 0 ? 0.0 : sideWaxing_[static_cast<std::size_t>(which)];
    const double swell = std::clamp(0.8 + 0.4 * waxing_ + 0.15 * side, 0.1, 2.0);
    out[channel] +=
        amplitude * swell * kAlphaShare[channel] * sineOfTurns(alphaTurns_ - kAlphaLag[channel]);
  }
  alphaTurns_ += (10.0 + 0.25 * wander_) * step;
  alphaTurns_ -= std::floor(alphaTurns_);
}

/// Counts time; true while the event lasts.
bool EegSignal::advance(Event& event, const Interval& interval, double step) {
  if (event.left <= 0.0) {
    event.wait -= step;
    if (event.wait > 0.0) return false;
    event.wait = random_.between(interval.shortest, interval.longest);
    event.duration = random_.between(interval.briefest, interval.lasting);
    event.left = event.duration;
    event.strength = random_.between(0.7, 1.2);
  }
  event.left -= step;
  return event.left > 0.0;
}

void EegSignal::blinks(double step, Microvolts& out) {
  const bool running = blink_.left > 0.0;
  if (closed_ && !running) return;  // closed eyes do not blink
  if (!advance(blink_, {2.0, 6.0, 0.25, 0.4}, step)) return;
  const double half = sineOfTurns(0.5 * blink_.left / blink_.duration);
  const double shape = 90.0 * blink_.strength * half * half;
  for (std::size_t channel = 0; channel < out.size(); ++channel) {
    out[channel] += shape * kBlinkShare[channel];
  }
}

void EegSignal::muscles(double step, Microvolts& out) {
  for (std::size_t side = 0; side < muscle_.size(); ++side) {
    if (!advance(muscle_[side], {6.0, 20.0, 0.3, 1.0}, step)) continue;
    const double shape = kMuscle * muscle_[side].strength *
                         sineOfTurns(0.5 * muscle_[side].left / muscle_[side].duration);
    for (std::size_t channel = 0; channel < out.size(); ++channel) {
      if (sideOf(channel) >= 0 && sideOf(channel) != static_cast<int>(side)) continue;
      // The difference of neighbouring noises: the power lies towards high frequencies.
      const double noise = random_.gauss();
      out[channel] += shape * kMuscleShare[channel] * 0.7 * (noise - lastMuscle_[channel]);
      lastMuscle_[channel] = noise;
    }
  }
}

void EegSignal::hum(double step, Microvolts& out) {
  const double value = choice_.humMicrovolts * sineOfTurns(humTurns_);
  for (double& microvolts : out) microvolts += value;
  humTurns_ += choice_.humFrequency * step;
  humTurns_ -= std::floor(humTurns_);
}

}  // namespace ovka
