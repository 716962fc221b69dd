#include "WavePyramid.h"

#include <algorithm>
#include <cmath>

namespace ovka::desktop {

void WavePyramid::forget() {
  for (std::vector<Extent>& blocks : blocks_) std::ranges::fill(blocks, Extent{});
}

void WavePyramid::written(std::int64_t first, std::int64_t end) {
  if (first >= end) return;
  for (std::vector<Extent>& blocks : blocks_) {
    const auto from = static_cast<std::size_t>(std::max<std::int64_t>(first, 0) / kBlock);
    const auto to = std::min(static_cast<std::size_t>((end + kBlock - 1) / kBlock), blocks.size());
    for (std::size_t i = from; i < to; ++i) blocks[i] = {};
  }
}

Extent WavePyramid::points(std::size_t channel, std::int64_t first, std::int64_t end) {
  Extent extent;
  if (first >= end) return extent;
  scratch_.resize(static_cast<std::size_t>(end - first));
  read_(channel, first, scratch_);
  for (const double value : scratch_) extent.take(static_cast<float>(value));
  return extent;
}

Extent WavePyramid::block(std::size_t channel, std::int64_t number) {
  std::vector<Extent>& blocks = blocks_[channel];
  const auto index = static_cast<std::size_t>(number);
  const std::int64_t first = number * kBlock;
  // The block that is still being written is never kept.
  if (first + kBlock > end_) return points(channel, first, end_);
  if (index >= blocks.size()) blocks.resize(index + index / 4 + 64);
  if (blocks[index].empty()) blocks[index] = points(channel, first, first + kBlock);
  return blocks[index];
}

void WavePyramid::wrap(std::int64_t start, std::int64_t length) {
  wrapStart_ = start;
  wrapLength_ = length;
}

void WavePyramid::columns(std::size_t channel, std::span<const double> edges,
                          std::span<Extent> out) {
  for (std::size_t c = 0; c < out.size(); ++c) {
    out[c] = {};
    const bool before = edges[c + 1] <= static_cast<double>(wrapStart_);
    const double shift = before ? static_cast<double>(wrapLength_) : 0.0;
    const double to = edges[c + 1] + shift;
    auto first = static_cast<std::int64_t>(std::floor(std::max(edges[c] + shift, 0.0)));
    const auto end = std::min(static_cast<std::int64_t>(std::ceil(to)) + 1, end_);
    if (to < 0 || first >= end) continue;
    while (first < end) {
      const std::int64_t stop = std::min((first / kBlock + 1) * kBlock, end);
      const bool whole = first % kBlock == 0 && stop - first == kBlock;
      out[c].take(whole ? block(channel, first / kBlock) : points(channel, first, stop));
      first = stop;
    }
  }
}

}  // namespace ovka::desktop
