#include "SpectrumPeaks.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "BufferVariables.h"
#include "FFTVariables.h"

namespace ovka {

namespace {

std::int32_t clampedBin(float bin, std::int32_t bins) {
  if (!(bin > 0.0F)) return 0;
  return bin < static_cast<float>(bins) ? static_cast<std::int32_t>(bin) : bins;
}

void offer(Peaks& slots, float value, std::int32_t bin) {
  for (Peak3& slot : slots) {
    if (value > slot.value) {
      slot.value = value;
      slot.bin = bin;
      return;
    }
  }
}

float leastOf(const Peaks& slots) {
  return std::min({slots[0].value, slots[1].value, slots[2].value});
}

}  // namespace

PeakRange PeakRange::ofSettings(std::int32_t points) {
  const std::int32_t bins = points / 2;
  PeakRange range;
  range.binWidth =
      static_cast<float>(buffer::SampleSpeed.get()) / static_cast<float>(std::max(points, 1));
  const std::int32_t mode = fft::UsePeakModeX;
  if (mode == 1) {
    range.low = clampedBin(fft::LowFX / range.binWidth, bins);
    range.high = clampedBin(fft::HighFX / range.binWidth, bins);
  } else if (mode == 0 || mode == 2 || mode == 3) {
    range.high = bins;
  }
  return range;
}

Peaks searchPeaks(std::span<const double> spectrum, const PeakRange& range, bool downward) {
  Peaks slots;
  const std::int32_t high = std::min(range.high, static_cast<std::int32_t>(spectrum.size()));
  const std::int32_t step = downward ? -1 : 1;
  std::int32_t bin = downward ? high - 1 : range.low;
  // Hardly any bin is above the least slot: one comparison passes over the others. What is above it
  // in single precision is so in double precision too.
  double least = 0.0;
  for (std::int32_t left = high - range.low; left > 0; --left, bin += step) {
    const double value = spectrum[static_cast<std::size_t>(bin)];
    if (!(value > least)) continue;
    offer(slots, static_cast<float>(value), bin);
    least = static_cast<double>(leastOf(slots));
  }
  for (Peak3& slot : slots) slot.frequency = static_cast<float>(slot.bin) * range.binWidth;
  return slots;
}

void publishPeaks(std::int32_t channel, const Peaks& peaks, std::int32_t BS) {
  const auto c = static_cast<std::size_t>(channel);
  std::array<float, 6> list{};
  std::array<std::uint32_t, 12> rows{};
  for (std::size_t p = 0; p < peaks.size(); ++p) {
    list[2 * p] = peaks[p].value;
    list[2 * p + 1] = peaks[p].frequency;
    rows[4 * p] = std::bit_cast<std::uint32_t>(peaks[p].value);
    rows[4 * p + 1] = std::bit_cast<std::uint32_t>(peaks[p].frequency);
    rows[4 * p + 2] = static_cast<std::uint32_t>(peaks[p].bin);
  }
  fft::peakFFT(channel).publish(list);
  fft::PeakfftPowerFV[c].publish(rows);
  if (BS != 1) fft::PeakfftPower[c].publish(rows);
  const auto at = static_cast<std::size_t>(fft::avPeakCount[c]) % fft::kRingRows;
  // The strongest value is the first slot's: nothing that entered the others was above it.
  fft::peakHistory[c].set(at, static_cast<double>(peaks[0].value));
  fft::avPeakCount.set(c, static_cast<std::int32_t>((at + 1) % fft::kRingRows));
}

double averagePeak(std::int32_t channel, std::int32_t passes) {
  const auto c = static_cast<std::size_t>(channel);
  const auto count = static_cast<std::size_t>(std::clamp(passes, 1, fft::kRingRows));
  const auto next = static_cast<std::size_t>(fft::avPeakCount[c]);
  double total = 0.0;
  for (std::size_t i = 1; i <= count; ++i) {
    total += fft::peakHistory[c][(next + fft::kRingRows - i) % fft::kRingRows];
  }
  return total / static_cast<double>(count);
}

}  // namespace ovka
