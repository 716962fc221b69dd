#include "PeakLimiter.h"

#include <algorithm>
#include <cmath>

namespace ovka {
namespace {

constexpr std::uint32_t kUnity = 1U << 30;

double within(double value, double low, double high) {
  return std::isnan(value) ? low : std::clamp(value, low, high);
}

float sane(float sample) noexcept {
  return std::isfinite(sample) ? sample : 0.0F;
}

}  // namespace

PeakLimiter::PeakLimiter(const Settings& settings) {
  const double rate = within(settings.sampleRate, 1000, 768000);
  // Rounded down, so that the single-precision ceiling is not above the one asked for.
  const double ceiling = std::pow(10.0, within(settings.ceiling, -60, 0) / 20);
  ceiling_ = static_cast<float>(ceiling);
  if (static_cast<double>(ceiling_) > ceiling) ceiling_ = std::nextafter(ceiling_, 0.0F);
  window_ = static_cast<std::size_t>(std::lround(within(settings.lookAhead, 0, 0.1) * rate)) + 1;
  releaseStep_ = 1 - std::exp(-1 / (std::max(within(settings.release, 0, 10), 1e-4) * rate));
  left_.resize(window_);
  right_.resize(window_);
  gains_.resize(window_);
  candidates_.resize(window_);
  reset();
}

void PeakLimiter::reset() noexcept {
  std::fill(left_.begin(), left_.end(), 0.0F);
  std::fill(right_.begin(), right_.end(), 0.0F);
  std::fill(gains_.begin(), gains_.end(), kUnity);
  sum_ = std::uint64_t{kUnity} * window_;
  released_ = kUnity;
  candidateCount_ = 0;
}

std::uint32_t PeakLimiter::wantedGain(float left, float right) const noexcept {
  const float peak = std::max(std::fabs(left), std::fabs(right));
  if (peak <= ceiling_) return kUnity;
  return static_cast<std::uint32_t>(static_cast<double>(ceiling_) / static_cast<double>(peak) *
                                    kUnity);
}

std::uint32_t PeakLimiter::smallestGain(std::uint32_t gain) noexcept {
  const auto at = [this](std::size_t i) -> Candidate& {
    const std::size_t place = firstCandidate_ + i;
    return candidates_[place < window_ ? place : place - window_];
  };
  if (candidateCount_ > 0 && time_ - at(0).time >= window_) {
    firstCandidate_ = firstCandidate_ + 1 < window_ ? firstCandidate_ + 1 : 0;
    --candidateCount_;
  }
  while (candidateCount_ > 0 && at(candidateCount_ - 1).gain >= gain) --candidateCount_;
  at(candidateCount_++) = {time_, gain};
  ++time_;
  return at(0).gain;
}

double PeakLimiter::smoothed(std::uint32_t held) noexcept {
  if (held <= released_) {
    released_ = held;
  } else {
    // At least one step, so that unity is reached again.
    released_ += static_cast<std::uint32_t>(releaseStep_ * (held - released_)) + 1;
    released_ = std::min(released_, held);
  }
  sum_ += released_;
  sum_ -= gains_[place_];
  gains_[place_] = released_;
  return static_cast<double>(sum_) / (static_cast<double>(kUnity) * static_cast<double>(window_));
}

void PeakLimiter::process(std::span<float> left, std::span<float> right) noexcept {
  const std::size_t count = std::min(left.size(), right.size());
  for (std::size_t i = 0; i < count; ++i) {
    left_[place_] = sane(left[i]);
    right_[place_] = sane(right[i]);
    const double gain = smoothed(smallestGain(wantedGain(left_[place_], right_[place_])));
    place_ = place_ + 1 < window_ ? place_ + 1 : 0;
    const auto limited = [&](float sample) {
      // The clamp takes what the last rounding adds.
      return std::clamp(static_cast<float>(static_cast<double>(sample) * gain), -ceiling_,
                        ceiling_);
    };
    left[i] = limited(left_[place_]);
    right[i] = limited(right_[place_]);
  }
}

}  // namespace ovka
