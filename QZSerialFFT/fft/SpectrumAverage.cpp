#include "SpectrumAverage.h"

#include <algorithm>

namespace ovka {

namespace {

inline double nodeAt(const std::array<const double*, 4>& c, std::size_t i) {
  return (c[0][i] + c[1][i]) + (c[2][i] + c[3][i]);
}

void addNodes(const std::array<const double*, 4>& c, double* node, std::size_t from,
              std::size_t to) {
  for (std::size_t i = from; i < to; ++i) node[i] = nodeAt(c, i);
}

}  // namespace

SpectrumAverage::SpectrumAverage() : memory_((kRows + 16 + 4 + 1) * kStride) {}

SpectrumAverage::Children SpectrumAverage::rowsOf(std::size_t g, std::size_t times) {
  Children children{};
  for (std::size_t c = 0; c < 4; ++c) {
    children[c] = 4 * g + c < times ? row(4 * g + c) : zeros();
  }
  return children;
}

SpectrumAverage::Children SpectrumAverage::groupsOf(std::size_t q, std::size_t times) {
  Children children{};
  for (std::size_t c = 0; c < 4; ++c) {
    children[c] = 4 * (4 * q + c) < times ? group(4 * q + c) : zeros();
  }
  return children;
}

SpectrumAverage::Children SpectrumAverage::quarters(std::size_t times) {
  Children children{};
  for (std::size_t c = 0; c < 4; ++c) children[c] = 16 * c < times ? quarter(c) : zeros();
  return children;
}

void SpectrumAverage::rebuild(std::size_t from, std::size_t to, std::size_t times) {
  for (std::size_t g = 0; 4 * g < times; ++g) addNodes(rowsOf(g, times), group(g), from, to);
  for (std::size_t q = 0; 16 * q < times; ++q) addNodes(groupsOf(q, times), quarter(q), from, to);
}

void SpectrumAverage::replaceByAverage(std::span<double> spectrum, std::int32_t times) {
  const auto count = static_cast<std::size_t>(std::clamp(times, 1, fft::kRingRows));
  const std::size_t bins = std::min(spectrum.size(), static_cast<std::size_t>(fft::kMaxBins));
  if (count != summedTimes_) {
    summedTimes_ = count;
    summedBins_ = 0;
  }
  if (bins > summedBins_) {
    rebuild(summedBins_, bins, count);
    summedBins_ = bins;
  }
  if (index_ >= count) index_ = 0;
  const std::size_t g = index_ / 4;
  const std::size_t q = g / 4;
  std::copy_n(spectrum.data(), bins, row(index_));

  // The three levels a stretch at a time, so that what one has written the next still finds in the
  // cache.
  constexpr std::size_t kStretch = 256;
  const Children rows = rowsOf(g, count);
  const Children groups = groupsOf(q, count);
  const Children all = quarters(count);
  const auto divisor = static_cast<double>(count);
  for (std::size_t from = 0; from < bins; from += kStretch) {
    const std::size_t to = std::min(from + kStretch, bins);
    addNodes(rows, group(g), from, to);
    addNodes(groups, quarter(q), from, to);
    for (std::size_t i = from; i < to; ++i) spectrum[i] = nodeAt(all, i) / divisor;
  }
  if (++index_ >= count) index_ = 0;
}

}  // namespace ovka
