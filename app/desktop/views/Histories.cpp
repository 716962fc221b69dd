#include "Histories.h"

#include <algorithm>
#include <cmath>

#include "Feed.h"

namespace ovka::desktop {

std::int64_t BandHistory::step(std::uint32_t sampleSpeed) {
  return std::max<std::int64_t>(sampleSpeed / 2, 1);
}

void BandHistory::take(const Frame& frame) {
  if (!frame.fresh) return;
  // A sample speed of its own has a time scale of its own.
  if (frame.sampleSpeed != sampleSpeed_) forget();
  sampleSpeed_ = frame.sampleSpeed;
  const std::int64_t index = std::max<std::int64_t>(frame.point - 1, 0) / step(sampleSpeed_);
  const auto place = static_cast<std::size_t>(index);
  for (std::size_t c = 0; c < entries_.size(); ++c) {
    if (place >= entries_[c].size()) entries_[c].resize(place + place / 4 + 256);
    Entry& entry = entries_[c][place];
    const BandValues& sums = frame.channels[c].sums;
    for (std::size_t b = 0; b < entry.bands.size(); ++b) {
      entry.bands[b] = static_cast<float>(sums.bands[b]);
    }
    entry.total = static_cast<float>(std::max(sums.total, 0.0));
  }
}

BandHistory::Entry BandHistory::at(std::size_t channel, std::int64_t index) const {
  if (index < 0 || index >= std::ssize(entries_[channel])) return {};
  return entries_[channel][static_cast<std::size_t>(index)];
}

void SpectrumRows::forget() {
  first_ = taken_;
  slot_ = -1;
  ++layout_;
}

void SpectrumRows::layOut(const Frame& frame) {
  const bool same = frame.fftPoints == fftPoints_ && frame.sampleSpeed == sampleSpeed_ &&
                    frame.logScale == logScale_;
  if (same || frame.bins <= 0) return;
  fftPoints_ = frame.fftPoints;
  sampleSpeed_ = frame.sampleSpeed;
  logScale_ = frame.logScale;
  const auto bins = std::min(static_cast<std::size_t>(frame.bins),
                             static_cast<std::size_t>(std::ceil(kTopHz / frame.binWidth)) + 1);
  binsPerValue_ = (bins + kMaxWidth - 1) / kMaxWidth;
  width_ = (bins + binsPerValue_ - 1) / binsPerValue_;
  valueWidth_ = frame.binWidth * static_cast<double>(binsPerValue_);
  // Room for the widest rows ever shown would be 59 MB, kept for good.
  for (std::vector<float>& rows : rows_) rows = {};
  forget();
}

void SpectrumRows::append(std::size_t track, std::span<const double> bins) {
  if (bins.empty() && rows_[track].empty()) return;
  rows_[track].resize(kRows * width_);
  float* out = rows_[track].data() + (taken_ % kRows) * width_;
  for (std::size_t i = 0; i < width_; ++i) {
    double greatest = 0;
    const std::size_t end = std::min((i + 1) * binsPerValue_, bins.size());
    for (std::size_t bin = i * binsPerValue_; bin < end; ++bin) {
      greatest = std::max(greatest, bins[bin]);
    }
    out[i] = static_cast<float>(greatest);
  }
}

void SpectrumRows::take(const Frame& frame) {
  if (!frame.alive || frame.channels[0].spectrum.empty()) return;
  layOut(frame);
  const double perRow = std::max(kInterval * static_cast<double>(frame.sampleSpeed), 1.0);
  const auto slot = static_cast<std::int64_t>(static_cast<double>(frame.point) / perRow);
  if (width_ == 0 || slot == slot_) return;
  slot_ = slot;
  points_.resize(kRows);
  points_[taken_ % kRows] = frame.point;
  for (std::size_t c = 0; c < kChannels; ++c) append(c, frame.channels[c].spectrum);
  for (std::size_t p = 0; p < kPairs; ++p) append(kChannels + p, frame.pairs[p].coherence);
  ++taken_;
}

std::span<const float> SpectrumRows::row(std::size_t track, std::uint64_t number) const {
  if (number < first_ || number >= taken_ || number + kRows < taken_ || rows_[track].empty())
    return {};
  return {rows_[track].data() + (number % kRows) * width_, width_};
}

std::int64_t SpectrumRows::pointOf(std::uint64_t number) const {
  return points_.empty() ? 0 : points_[number % kRows];
}

}  // namespace ovka::desktop
