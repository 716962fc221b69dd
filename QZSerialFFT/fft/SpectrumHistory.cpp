#include "SpectrumHistory.h"

#include <algorithm>
#include <bit>

#include "BandPowers.h"
#include "BufferVariables.h"
#include "Coherence.h"
#include "DyadicSum.h"
#include "SpectrumPeaks.h"
#include "SpectrumTransform.h"

namespace ovka {

namespace {

constexpr std::size_t kFirstPair = 4;
constexpr std::size_t kGroupEntries = 15;
constexpr std::size_t kPeakEntries = 5;

std::int32_t spectraCounted() {
  return std::clamp<std::int32_t>(fft::maxBScount, 1, 64);
}

// The source whose pair a history index stands for, or -1.
std::int32_t sourceOfHistory(std::int32_t MC) {
  if (MC == 2) return 4;
  return MC >= 5 && MC <= 11 ? MC : -1;
}

}  // namespace

SpectrumHistory::SpectrumHistory(const SpectrumArrays& arrays, const AnalysisTables& tables)
    : arrays_(arrays), tables_(tables), spectrum_(fft::kMaxBins) {
  for (Track& track : tracks_) {
    track = std::make_unique<std::atomic<std::uint64_t>[]>(fft::kMaxBins);
  }
}

void SpectrumHistory::follow(std::size_t source) {
  const std::uint32_t bit = 1U << source;
  if ((followed_.load(std::memory_order_relaxed) & bit) == 0) followed_.fetch_or(bit);
}

void SpectrumHistory::push(std::size_t source, std::size_t bin, bool above) {
  std::atomic<std::uint64_t>& bits = tracks_[source][bin];
  bits.store(bits.load(std::memory_order_relaxed) << 1U | static_cast<std::uint64_t>(above),
             std::memory_order_relaxed);
}

void SpectrumHistory::update() {
  const std::int32_t points = fft::fftp;
  if (!SpectrumTransform::isLength(points)) return;
  const std::uint32_t followed = followed_.load();
  const std::uint32_t initCount = tables_.initCount();
  if (points != points_ || initCount != initCount_) {
    points_ = points;
    initCount_ = initCount;
    for (std::size_t source = 0; source < kTracks; ++source) {
      if ((followed >> source & 1U) == 0) continue;
      for (std::size_t bin = 0; bin < fft::kMaxBins; ++bin) {
        tracks_[source][bin].store(0, std::memory_order_relaxed);
      }
    }
  }
  const auto bins = static_cast<std::size_t>(points / 2);
  for (std::size_t source = 0; source < kTracks; ++source) {
    if ((followed >> source & 1U) == 0) continue;
    if (source < kFirstPair) {
      updateChannel(source, bins);
    } else {
      updatePair(source, bins, points);
    }
  }
  updates_.fetch_add(1);
}

void SpectrumHistory::updateChannel(std::size_t channel, std::size_t bins) {
  double* spectrum = spectrum_.data();
  arrays_.readSpectrum(static_cast<std::int32_t>(channel), spectrum_.first(bins));
  const double mean = bins > 1 ? dyadicSum(spectrum, 1, bins) / static_cast<double>(bins - 1) : 0.0;
  const double limit = std::max<double>(fft::peakSWlevel, fft::peakSWratio * mean);
  for (std::size_t bin = 0; bin < bins; ++bin) push(channel, bin, spectrum[bin] > limit);
}

void SpectrumHistory::updatePair(std::size_t source, std::size_t bins, double N) {
  const CoherencePair& pair = kCoherencePairs[kPairOfSource[source - kFirstPair]];
  const SharedArray<double>& first = arrays_.coherence(pair.first);
  const SharedArray<double>& second = arrays_.coherence(pair.second);
  const double level = fft::CoherenceLevel;
  const double limit = fft::coherenceSWlevel;
  for (std::size_t bin = 0; bin < bins; ++bin) {
    const double coherence =
        coherenceOf({first.get(2 * bin), first.get(2 * bin + 1)},
                    {second.get(2 * bin), second.get(2 * bin + 1)}, N, level, pair.opposite);
    push(source, bin, coherence > limit);
  }
}

std::int32_t SpectrumHistory::countOf(std::int32_t source, std::uint64_t bin) const {
  if (source < 0 || static_cast<std::size_t>(source) >= kTracks || bin >= fft::kMaxBins) return 0;
  const std::uint64_t bits =
      tracks_[static_cast<std::size_t>(source)][bin].load(std::memory_order_relaxed);
  return std::popcount(bits << static_cast<unsigned>(64 - spectraCounted()));
}

float SpectrumHistory::coherenceMFout(std::uint64_t bin, std::int32_t mSet,
                                      std::int32_t /*Channel*/, std::int32_t MC) {
  const std::int32_t source = sourceOfHistory(MC);
  if (source < 0 || bin >= fft::kMaxBins) return 0.0F;
  follow(static_cast<std::size_t>(source));
  if (mSet == 0) return static_cast<float>(countOf(source, bin));
  return mSet == 1 ? static_cast<float>(valueOf(static_cast<std::size_t>(source), bin)) : 0.0F;
}

double SpectrumHistory::valueOf(std::size_t source, std::size_t bin) const {
  if (source < kFirstPair) return arrays_.spectrum(static_cast<std::int32_t>(source)).get(bin);
  return pairCoherence(arrays_, kPairOfSource[source - kFirstPair], bin, fft::fftp);
}

SpectrumHistory::Winners SpectrumHistory::winnersOf(std::size_t source, std::int32_t from,
                                                    std::int32_t to) const {
  Winners winners;
  for (std::int32_t bin = from; bin < to; ++bin) {
    Candidate candidate;
    const auto at = static_cast<std::size_t>(bin);
    candidate.count = countOf(static_cast<std::int32_t>(source), at);
    candidate.bin = bin;
    if (candidate.count == 0 || candidate.count < winners.back().count) continue;
    candidate.value = valueOf(source, at);
    for (Candidate& place : winners) {
      const bool better = candidate.count != place.count ? candidate.count > place.count
                                                         : candidate.value > place.value;
      if (better) std::swap(candidate, place);
    }
  }
  return winners;
}

void SpectrumHistory::writeGroup(std::span<float, 180> row, std::size_t group,
                                 const Winners& winners) const {
  const float width = static_cast<float>(buffer::SampleSpeed.get()) /
                      static_cast<float>(std::max<std::int32_t>(fft::fftp, 1));
  for (std::size_t p = 0; p < winners.size(); ++p) {
    float* entry = row.data() + group * kGroupEntries + p * kPeakEntries;
    const auto count = static_cast<float>(winners[p].count);
    const auto bin = static_cast<float>(winners[p].bin);
    entry[0] = count;
    entry[1] = bin * width;
    entry[2] = bin;
    entry[3] = static_cast<float>(winners[p].value);
    entry[4] = 100.0F * count / static_cast<float>(spectraCounted());
  }
}

void SpectrumHistory::waven3DBSQC(std::int32_t channel) {
  if (channel < 0 || channel > 9) return;
  const auto source = static_cast<std::size_t>(channel);
  follow(source);
  const std::uint64_t updates = updates_.load();
  if (evaluated_[source].load() == updates) return;
  const std::int32_t points = fft::fftp;
  if (!SpectrumTransform::isLength(points)) return;
  std::array<float, fft::kSwitchRow> row{};
  const PeakRange range = PeakRange::ofSettings(points);
  writeGroup(row, 0, winnersOf(source, range.low, range.high));
  const BinMap map = BinMap::of(points, buffer::SampleSpeed);
  for (std::size_t b = 0; b < kBands.size(); ++b) {
    writeGroup(row, b + 1,
               winnersOf(source, map.binFrom(kBands[b].low), map.binFrom(kBands[b].high)));
  }
  if (source < kFirstPair) {
    fft::peakSWfftCount[source].publish(row);
  } else {
    fft::peakSWcoherenceCount[source - kFirstPair].publish(row);
  }
  evaluated_[source].store(updates);
}

}  // namespace ovka
