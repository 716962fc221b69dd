#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace ovka {

/// One slot of the three-peak search.
struct Peak3 {
  float value = 0.0F;
  float frequency = 0.0F;  ///< Hz
  std::int32_t bin = 0;
};
using Peaks = std::array<Peak3, 3>;

/// Bins of the peak search: low ... high - 1.
struct PeakRange {
  std::int32_t low = 0;
  std::int32_t high = 0;
  float binWidth = 0.0F;  ///< Hz, single precision

  /// From `SampleSpeed`, the length, `UsePeakModeX`, `LowFX` and `HighFX`, kept within the bins.
  static PeakRange ofSettings(std::int32_t points);
};

/// The three slots of a spectrum, scanned downward or upward. A bin greater than the first slot
/// replaces it, else one greater than the second replaces that, else the third; a replaced value
/// does not move down, so the slots are no sorted top three. Any thread.
[[nodiscard]] Peaks searchPeaks(std::span<const double> spectrum, const PeakRange& range,
                                bool downward);

/// Stores the slots as the results of an analysis channel 0 to 5: its peak list, its rows in
/// `PeakfftPowerFV`, with BS other than 1 also in `PeakfftPower`, and the strongest value in its
/// peak history. The thread of the pass.
void publishPeaks(std::int32_t channel, const Peaks& peaks, std::int32_t BS);

/// Mean of the strongest values of a channel's last `passes` passes (clamped to 1 ... 64, passes
/// before the first count as 0). Any thread.
[[nodiscard]] double averagePeak(std::int32_t channel, std::int32_t passes);

}  // namespace ovka
