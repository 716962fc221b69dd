#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace ovka {

/// Nanoseconds counted into classes of at most 1/32 of their value (exact below 64 ns): a histogram
/// in 15 KB that any number of threads fills while others read it. Nothing waits or allocates.
class LatencyMeter {
 public:
  /// Negative times count as 0.
  void record(std::int64_t nanoseconds) noexcept;

  /// Times recorded since the last reset.
  [[nodiscard]] std::uint64_t count() const noexcept;
  /// The greatest, exactly; 0 when there is none.
  [[nodiscard]] std::int64_t max() const noexcept { return max_.load(std::memory_order_relaxed); }
  /// The time that `part` (0 to 1) of all times do not exceed, by nearest rank: the upper end of
  /// its class, never more than max(). 0 when there is none.
  [[nodiscard]] std::int64_t percentile(double part) const noexcept;
  [[nodiscard]] std::int64_t median() const noexcept { return percentile(0.5); }

  /// Forgets everything; times recorded meanwhile may be forgotten in part.
  void reset() noexcept;

 private:
  static constexpr std::size_t kSteps = 32;  // classes an octave
  static constexpr std::size_t kClasses = 60 * kSteps;

  [[nodiscard]] static std::size_t classOf(std::uint64_t value) noexcept;
  [[nodiscard]] static std::uint64_t upperEnd(std::size_t index) noexcept;

  std::array<std::atomic<std::uint64_t>, kClasses> classes_{};
  std::atomic<std::int64_t> max_{0};
};

}  // namespace ovka
