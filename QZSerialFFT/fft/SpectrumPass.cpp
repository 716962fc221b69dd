#include "SpectrumPass.h"

#include "BufferVariables.h"
#include "SpectrumFilter.h"
#include "SpectrumPeaks.h"
#include "SpectrumTransform.h"

namespace ovka {

SpectrumPass::SpectrumPass(const SampleFetch& fetch, const AnalysisTables& tables,
                           SpectrumArrays& arrays)
    : fetch_(fetch),
      tables_(tables),
      arrays_(arrays),
      block_(fft::kMaxPoints),
      work_(fft::kMaxPoints),
      magnitude_(fft::kMaxBins) {}

void SpectrumPass::pass(std::int32_t channel, std::int64_t PT, std::int32_t CO, std::int32_t BS) {
  const std::int32_t points = fft::fftp;
  if (!SpectrumTransform::isLength(points)) return;
  const auto bins = static_cast<std::size_t>(points / 2);
  const std::scoped_lock guard(lock_);
  transform(channel, PT, CO, points);
  if (CO == 0) {
    average(channel, points);
    arrays_.spectrum(channel).publish(0, magnitude_.first(bins));
  }
  arrays_.coherence(channel).publish(0, block_.first(2 * bins));
  const std::int32_t search = fft::calculatePeakSelectX;
  if (search <= 0) return;
  if (CO != 0) arrays_.spectrum(channel).snapshot(0, magnitude_.first(bins));
  publishPeaks(channel,
               searchPeaks(magnitude_.first(bins), PeakRange::ofSettings(points), search == 1), BS);
}

void SpectrumPass::transform(std::int32_t channel, std::int64_t PT, std::int32_t CO,
                             std::int32_t points) {
  const auto count = static_cast<std::size_t>(points);
  const TransformSettings settings = TransformSettings::now();
  fetch_.windowedSamples(channel, PT, settings.scale, fetch_.settingsOf(channel),
                         block_.first(count));
  SpectrumTransform::transformBlock(block_.data(), CO == 0 ? magnitude_.data() : nullptr,
                                    work_.data(), points);
  const FilterBins filter = FilterBins::ofSettings(settings.sampleSpeed, points);
  if (CO == 0) {
    if (settings.log) SpectrumTransform::toLogScale(magnitude_.first(count / 2));
    SpectrumTransform::automaticZero(channel, magnitude_.data()[0]);
    filter.applyToMagnitudes(magnitude_.data());
  } else {
    filter.applyToPairs(block_.data());
  }
  filter.applyToPairs(block_.data());
}

void SpectrumPass::average(std::int32_t channel, std::int32_t points) {
  resetAveragesAfterInit();
  const std::int32_t times = fft::AverageTime;
  if (fft::calculationSelectX != 1 || times <= 0) return;
  averages_[static_cast<std::size_t>(channel)].replaceByAverage(
      magnitude_.first(static_cast<std::size_t>(points / 2)), times);
}

void SpectrumPass::resetAveragesAfterInit() {
  const std::uint32_t count = tables_.initCount();
  if (count == initCount_) return;
  initCount_ = count;
  for (std::size_t c = 0; c < fft::kEegChannels; ++c) {
    averages_[c].resetIndex();
    fft::avPeakCount.set(c, 0);
  }
}

}  // namespace ovka
