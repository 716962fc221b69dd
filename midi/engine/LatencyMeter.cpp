#include "LatencyMeter.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace ovka {

std::size_t LatencyMeter::classOf(std::uint64_t value) noexcept {
  if (value < kSteps) return static_cast<std::size_t>(value);
  const auto shift = static_cast<unsigned>(std::bit_width(value)) - 6U;
  return kSteps * shift + static_cast<std::size_t>(value >> shift);
}

std::uint64_t LatencyMeter::upperEnd(std::size_t index) noexcept {
  if (index < 2 * kSteps) return index;
  const std::size_t shift = index / kSteps - 1;
  return ((index - shift * kSteps + 1) << shift) - 1;
}

void LatencyMeter::record(std::int64_t nanoseconds) noexcept {
  const std::int64_t value = std::max<std::int64_t>(nanoseconds, 0);
  classes_[classOf(static_cast<std::uint64_t>(value))].fetch_add(1, std::memory_order_relaxed);
  std::int64_t before = max_.load(std::memory_order_relaxed);
  while (before < value && !max_.compare_exchange_weak(before, value, std::memory_order_relaxed)) {
  }
}

std::uint64_t LatencyMeter::count() const noexcept {
  std::uint64_t sum = 0;
  for (const auto& n : classes_) sum += n.load(std::memory_order_relaxed);
  return sum;
}

std::int64_t LatencyMeter::percentile(double part) const noexcept {
  const std::uint64_t all = count();
  if (all == 0) return 0;
  const double wanted = std::ceil(std::clamp(part, 0.0, 1.0) * static_cast<double>(all));
  const auto rank = std::max<std::uint64_t>(static_cast<std::uint64_t>(wanted), 1);
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < kClasses; ++i) {
    sum += classes_[i].load(std::memory_order_relaxed);
    if (sum >= rank) return std::min(static_cast<std::int64_t>(upperEnd(i)), max());
  }
  return max();
}

void LatencyMeter::reset() noexcept {
  for (auto& n : classes_) n.store(0, std::memory_order_relaxed);
  max_.store(0, std::memory_order_relaxed);
}

}  // namespace ovka
