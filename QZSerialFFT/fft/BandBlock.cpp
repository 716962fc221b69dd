#include "BandBlock.h"

#include <algorithm>
#include <bit>

#include "FFTVariables.h"
#include "SpectrumTransform.h"

namespace ovka {

namespace {

struct Bins {
  std::size_t from;
  std::size_t to;
};

Bins binsOf(const BandAsk& ask, const BinMap& map) {
  return {static_cast<std::size_t>(map.binFrom(static_cast<double>(ask.lowF))),
          static_cast<std::size_t>(map.binFrom(static_cast<double>(ask.highF)))};
}

BandAnswer answerOf(double sum, const Strongest& peak, const BandAsk& ask, const BinMap& map) {
  return {static_cast<float>(ask.mode == 0 ? sum : peak.value),
          static_cast<float>(static_cast<double>(peak.position) * map.width)};
}

}  // namespace

BandScratch::BandScratch() : block(fft::kMaxPoints), work(fft::kMaxPoints) {}

template <typename Tree>
KeptSpectrum<Tree>::KeptSpectrum() : magnitude_(fft::kMaxBins), tree_(fft::kMaxBins) {}

template <typename Tree>
const Tree& KeptSpectrum<Tree>::of(std::span<const double> values, double mean, double scale,
                                   BandScratch& scratch) {
  if (made_) return tree_;
  double* block = scratch.block.data();
  if (mean == 0.0) {
    for (std::size_t i = 0; i < values.size(); ++i) block[i] = values[i] * scale;
  } else {
    for (std::size_t i = 0; i < values.size(); ++i) block[i] = (values[i] - mean) * scale;
  }
  SpectrumTransform::transformBlock(block, magnitude_.data(), scratch.work.data(),
                                    static_cast<std::int32_t>(values.size()));
  tree_.build({magnitude_.data(), values.size() / 2});
  made_ = true;
  return tree_;
}

template class KeptSpectrum<SumTree>;
template class KeptSpectrum<PeakTree>;

ChannelBlock::ChannelBlock() : values_(fft::kMaxPoints) {}

std::span<double> ChannelBlock::refill(std::size_t points) {
  points_ = points;
  meanFree_ = false;
  secondTaken_ = false;
  secondKnown_ = false;
  secondMean_ = 0.0;
  sums_.forget();
  peaks_.forget();
  peaksOfSecond_.forget();
  return values_.first(points);
}

void ChannelBlock::removeFirstMean() {
  if (meanFree_) return;
  removeMean(values_.data(), points_);
  meanFree_ = true;
}

const PeakTree& ChannelBlock::peaks(std::int32_t mode, double scale, BandScratch& scratch) {
  const std::span<const double> values = values_.first(points_);
  if (mode == 0 && !secondKnown_) {
    secondMean_ = dyadicSum(values_.data(), 0, points_) / static_cast<double>(points_);
    secondKnown_ = true;
  }
  secondTaken_ = mode == 0;
  if (mode == 0 && secondMean_ != 0.0)
    return peaksOfSecond_.of(values, secondMean_, scale, scratch);
  return peaks_.of(values, 0.0, scale, scratch);
}

BandAnswer ChannelBlock::answer(const BandAsk& ask, const BlockSettings& settings,
                                BandScratch& scratch) {
  removeFirstMean();
  const Bins bins = binsOf(ask, settings.map);
  double sum = 0.0;
  if (ask.mode == 0) {
    sum = sums_.of(values_.first(points_), 0.0, settings.scaleY, scratch).sum(bins.from, bins.to);
  }
  const PeakTree& peakTree = peaks(ask.mode, settings.scaleX, scratch);
  return answerOf(sum, peakTree.strongest(bins.from, bins.to), ask, settings.map);
}

double ChannelBlock::value(std::size_t position) const {
  if (position >= points_) return 0.0;
  const double value = values_.data()[position];
  return secondTaken_ && secondMean_ != 0.0 ? value - secondMean_ : value;
}

ExtraBlock::ExtraBlock() : values_(fft::kMaxPoints) {}

std::span<double> ExtraBlock::refill(std::size_t points) {
  points_ = points;
  settled_ = false;
  sums_.forget();
  peaks_.forget();
  return values_.first(points);
}

bool ExtraBlock::removeMeanOnce() {
  if (settled_) return false;
  const double mean = dyadicSum(values_.data(), 0, points_) / static_cast<double>(points_);
  bool changed = false;
  if (mean != 0.0) {
    for (double& value : values_.first(points_)) {
      const double before = value;
      value -= mean;
      changed |= std::bit_cast<std::uint64_t>(before) != std::bit_cast<std::uint64_t>(value);
    }
  }
  // A mean too small to move any value stays, and so does the block.
  settled_ = !changed;
  if (changed) {
    sums_.forget();
    peaks_.forget();
  }
  return changed;
}

bool ExtraBlock::answer(const BandAsk& ask, const BlockSettings& settings, BandScratch& scratch,
                        BandAnswer& answer) {
  const Bins bins = binsOf(ask, settings.map);
  const std::span<const double> values = values_.first(points_);
  double sum = 0.0;
  bool changed = false;
  if (ask.mode == 0) {
    changed = removeMeanOnce();
    sum = sums_.of(values, 0.0, settings.scaleY, scratch).sum(bins.from, bins.to);
  }
  changed |= removeMeanOnce();
  const PeakTree& peakTree = peaks_.of(values, 0.0, settings.scaleX, scratch);
  answer = answerOf(sum, peakTree.strongest(bins.from, bins.to), ask, settings.map);
  return changed;
}

}  // namespace ovka
