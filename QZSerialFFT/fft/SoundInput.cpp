#include "SoundInput.h"

#include <algorithm>
#include <cmath>

namespace ovka {

namespace {
constexpr std::size_t kPoints = SoundInput::kRoom;
constexpr double kRadiansPerDegree = 3.141592653589793 / 180.0;
}  // namespace

SoundInput::SoundInput() : memory_(2 * kPoints) {
  channels_[0].attach(memory_.data(), kPoints);
  channels_[1].attach(memory_.data() + kPoints, kPoints);
}

void SoundInput::putSoundBlock(std::int32_t channel, std::span<const double> block) {
  if (channel < 0 || channel > 1) return;
  auto& to = channels_[static_cast<std::size_t>(channel)];
  const std::size_t count = std::min(block.size(), kPoints);
  to.publish(0, block.first(count));
  for (std::size_t i = count; i < kPoints; ++i) to.set(i, 0.0);
}

void SoundInput::sinwaveSoundTest(float p, std::int32_t offsetPoint) {
  period_ = p;
  const bool silent = p == 0.0F || !std::isfinite(p);
  const double amplitude = silent ? 0.0 : amplitude_.get();
  const double radians = silent ? 0.0 : 1.0 / p;
  const double delay = offsetPoint * kRadiansPerDegree;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const double angle = static_cast<double>(i) * radians;
    channels_[0].set(i, amplitude * std::sin(angle));
    channels_[1].set(i, amplitude * std::sin(angle - delay));
  }
}

void SoundInput::sinwaveSoundTestPower(float power) {
  amplitude_ = 6.144F * power;
  sinwaveSoundTest(period_, 0);
}

void SoundInput::readSound(std::int32_t channel, std::int64_t first, std::span<double> out) const {
  std::fill(out.begin(), out.end(), 0.0);
  if (channel < 0 || channel > 1 || first < 0 || first >= kRoom) return;
  const auto start = static_cast<std::size_t>(first);
  channels_[static_cast<std::size_t>(channel)].snapshot(
      start, out.first(std::min(out.size(), kPoints - start)));
}

}  // namespace ovka
