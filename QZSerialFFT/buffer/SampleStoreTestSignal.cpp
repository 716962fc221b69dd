#include <algorithm>
#include <array>
#include <cmath>

#include "SampleStore.h"
#include "Truncate.h"

namespace ovka {
namespace {

/// The delay of the right-hand channels for an angle, in units of 0.8 points per radian: close to
/// angle / 45, rounded its own way and used exactly as listed.
struct AngleDelay {
  std::int32_t degrees;
  double factor;
};
constexpr std::array<AngleDelay, 13> kAngleDelays{{{30, 0.66},
                                                   {50, 1.1},
                                                   {60, 1.32},
                                                   {70, 1.56},
                                                   {80, 1.76},
                                                   {90, 2.0},
                                                   {135, 3.0},
                                                   {180, 4.0},
                                                   {225, 5.0},
                                                   {270, 6.0},
                                                   {315, 7.0},
                                                   {360, 8.0},
                                                   {0, 0.0}}};
constexpr float kDelayUnit = 0.8F;

/// Delay in points, held within the buffer.
std::int64_t delayOf(float p, std::int32_t degrees, std::int64_t capacity) {
  double delay = 0.0;
  if (degrees == 45) {
    const float single = kDelayUnit * p;  // this angle alone is computed in single precision
    delay = static_cast<double>(single);
  } else {
    for (const AngleDelay& entry : kAngleDelays) {
      if (entry.degrees == degrees) {
        delay = static_cast<double>(kDelayUnit) * static_cast<double>(p) * entry.factor;
      }
    }
  }
  return std::clamp(truncateTo<std::int64_t>(delay), -capacity, capacity);
}

}  // namespace

void SampleStore::sinwaveTest(float p, std::int32_t offsetPoint) {
  const std::int64_t capacity = lastWritable();
  if (capacity < 0) return;
  const std::int64_t delay = delayOf(p, offsetPoint, capacity);
  const float amplitude = PPvolt;
  frequencyZ = p;
  const auto wave = [&](std::int64_t n) {
    const float angle = static_cast<float>(n) / p;
    return truncateTo<std::int64_t>(static_cast<double>(amplitude) *
                                    std::sin(static_cast<double>(angle)));
  };
  for (std::int64_t n = 0; n < capacity; ++n) {
    const std::int64_t value = wave(n);
    for (const std::size_t channel : {0U, 1U, 3U}) write(channel, n, value);
  }
  for (std::int64_t n = 0; n < delay; ++n) {
    for (const std::size_t channel : {2U, 4U}) write(channel, n, 0);
  }
  for (std::int64_t n = 0; n < capacity - delay; ++n) {
    const std::int64_t value = wave(n);
    for (const std::size_t channel : {2U, 4U}) write(channel, delay + n, value);
  }
  noteWrite();
}

void SampleStore::sinwaveTestPower(float power) {
  PPvolt = static_cast<float>(6.144 * static_cast<double>(power));
  sinwaveTest(frequencyZ, 0);
}

}  // namespace ovka
