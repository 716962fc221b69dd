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
/// not count being 0, and the average is the root divided by `times`. So nothing drifts, and the
/// sum depends on what the rows hold alone, not on the ring's phase.
///
/// A pass is bound by the memory it touches, so it goes once over the bins with all levels in
/// registers. The ring is written in order: while it stays in a group of four rows, nothing else of
/// the two upper levels changes, and of each it reads the node that is added to the one on the path
/// and the kept sum of the other two. The nodes on the path are stored when the ring leaves them.
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
  static constexpr std::size_t kGroups = kRows / 4;
  static constexpr std::size_t kQuarters = kGroups / 4;
  // A row is a little longer than its bins: rows a power of two apart would all fall into the same
  // few places of the processor's cache.
  static constexpr std::size_t kStride = fft::kMaxBins + 72;

  [[nodiscard]] double* row(std::size_t r) noexcept { return memory_.data() + r * kStride; }
  [[nodiscard]] double* group(std::size_t g) noexcept { return row(kRows + g); }
  [[nodiscard]] double* quarter(std::size_t q) noexcept { return row(kRows + kGroups + q); }
  [[nodiscard]] double* zeros() noexcept { return row(kRows + kGroups + kQuarters); }
  [[nodiscard]] double* otherGroups() noexcept { return row(kRows + kGroups + kQuarters + 1); }
  [[nodiscard]] double* otherQuarters() noexcept { return row(kRows + kGroups + kQuarters + 2); }

  [[nodiscard]] const double* rowOrZeros(std::size_t r) noexcept;
  [[nodiscard]] const double* groupOrZeros(std::size_t g) noexcept;
  [[nodiscard]] const double* quarterOrZeros(std::size_t q) noexcept;
  void addGroup(std::size_t g);
  void addQuarter(std::size_t q);
  void rebuild();
  void moveTo(std::size_t group);

  AlignedBlock memory_;
  std::size_t index_ = 0;
  std::size_t times_ = 0;  // rows and bins for which the nodes are kept
  std::size_t bins_ = 0;
  std::size_t group_ = 0;    // the one the path leads through
  bool pathStored_ = false;  // whether the nodes of its path are
};

}  // namespace ovka
