#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "AlignedBlock.h"
#include "FFTVariables.h"

namespace ovka {

/// The moving average over the last spectra of one channel: a ring of 64 rows.
///
/// The order of the sum is its definition: rows r of which `times` count are the leaves of a tree
/// with four children a node (4 x 4 x 4 = 64 rows); a node is (c0 + c1) + (c2 + c3), rows that do
/// not count being 0, and the average is the root divided by `times`. The inner nodes are kept and
/// only those above the row just written are added anew, so a pass costs the same for any `times`,
/// nothing drifts, and the sum depends on what the rows hold alone, not on the ring's phase.
///
/// Not thread-safe: used under the lock of the passes. Nothing allocates after the constructor.
class SpectrumAverage {
 public:
  SpectrumAverage();

  /// Writes `spectrum` (at most 32768 bins) into the row at the ring index, which then advances and
  /// wraps at `times` (1 to 64, clamped), and replaces each bin by the average over rows 0 ...
  /// times - 1. Rows that were not written since the last reset still count with what they hold.
  void replaceByAverage(std::span<double> spectrum, std::int32_t times);

  /// The next spectrum goes to row 0; the rows keep what they hold.
  void resetIndex() noexcept { index_ = 0; }

 private:
  static constexpr std::size_t kRows = fft::kRingRows;
  // A row is a little longer than its bins: rows a power of two apart would all fall into the same
  // few places of the processor's cache.
  static constexpr std::size_t kStride = fft::kMaxBins + 72;

  [[nodiscard]] double* row(std::size_t r) noexcept { return memory_.data() + r * kStride; }
  [[nodiscard]] double* group(std::size_t g) noexcept { return row(kRows + g); }
  [[nodiscard]] double* quarter(std::size_t q) noexcept { return row(kRows + 16 + q); }
  [[nodiscard]] double* zeros() noexcept { return row(kRows + 16 + 4); }

  using Children = std::array<const double*, 4>;
  [[nodiscard]] Children rowsOf(std::size_t group, std::size_t times);
  [[nodiscard]] Children groupsOf(std::size_t quarter, std::size_t times);
  [[nodiscard]] Children quarters(std::size_t times);
  void rebuild(std::size_t from, std::size_t to, std::size_t times);

  AlignedBlock memory_;
  std::size_t index_ = 0;
  std::size_t summedTimes_ = 0;  // what the kept nodes were made for
  std::size_t summedBins_ = 0;
};

}  // namespace ovka
