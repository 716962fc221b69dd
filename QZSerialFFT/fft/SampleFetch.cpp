#include "SampleFetch.h"

#include <algorithm>

#include "AnalysisSettings.h"

namespace ovka {

SampleFetch::SampleFetch(const SampleStore& store, const AnalysisTables& tables,
                         const SoundInput& sound, SpectrumArrays& arrays)
    : store_(store), tables_(tables), sound_(sound), arrays_(arrays) {}

FetchSettings SampleFetch::settingsOf(std::int32_t channel) const {
  return {tables_.tables(channel >= fft::kEegChannels), fft::stopWindFunction != 0,
          fft::appliedGain(channel)};
}

void SampleFetch::windowedSamples(std::int32_t channel, std::int64_t PT, double scale,
                                  const FetchSettings& settings, std::span<double> out) const {
  const AnalysisTableSet* set = settings.tables;
  if (settings.stop || set == nullptr) {
    std::fill(out.begin(), out.end(), 0.0);
    return;
  }
  const std::int64_t first = firstOf(PT, static_cast<std::int64_t>(out.size()));
  if (channel >= fft::kEegChannels) {
    sound_.readSound(channel - fft::kEegChannels, first, out);
  } else {
    store_.readBlock(channel + 1, first, out);
  }
  const double gain = settings.gain;
  const std::size_t count = std::min(out.size(), set->windowValue.size());
  const double* window = set->windowValue.data();
  double* value = out.data();
  for (std::size_t i = 0; i < count; ++i) {
    value[i] = scale * (value[i] * window[i] / 32768.0 * gain);
  }
  std::fill(out.begin() + static_cast<std::ptrdiff_t>(count), out.end(), 0.0);
}

void SampleFetch::getDataToBuffer(std::int32_t channel, std::int64_t PT, std::int32_t CO) {
  if (channel < 0 || channel >= fft::kAllChannels) return;
  const std::int32_t length = std::clamp<std::int32_t>(fft::fftp, 0, fft::kMaxPoints);
  const auto points = static_cast<std::size_t>(length);
  AlignedBlock samples(points);
  windowedSamples(channel, PT, 1.0, settingsOf(channel), samples.first(points));
  for (std::size_t i = 0; i < points; ++i) {
    const double value = samples.data()[i];
    if (CO == 0) arrays_.spectrum(channel).set(i, value);
    arrays_.coherence(channel).set(2 * i, value);
    arrays_.coherence(channel).set(2 * i + 1, 0.0);
  }
}

void SampleFetch::rawwave(std::int32_t channel, std::int64_t samplepoint,
                          std::span<double> out) const {
  store_.readBlock(channel + 1, samplepoint, out);
  const double offset = fft::autoZeroState(channel).offset / -1.5;
  for (double& value : out) value += offset;
}

double SampleFetch::rawwaveX(std::int32_t channel, std::int64_t samplepoint) const {
  return store_.getIntFromBuffer(channel + 1, samplepoint) +
         fft::autoZeroState(channel).offset / -1.5;
}

void SampleFetch::getARawwave(std::int64_t samplepoint, std::span<double> out) const {
  rawwave(0, samplepoint, out);
}
void SampleFetch::getBRawwave(std::int64_t samplepoint, std::span<double> out) const {
  rawwave(1, samplepoint, out);
}
void SampleFetch::getDRawwave(std::int64_t samplepoint, std::span<double> out) const {
  rawwave(2, samplepoint, out);
}
void SampleFetch::getERawwave(std::int64_t samplepoint, std::span<double> out) const {
  rawwave(3, samplepoint, out);
}
double SampleFetch::getARawwaveX(std::int64_t samplepoint) const {
  return rawwaveX(0, samplepoint);
}
double SampleFetch::getBRawwaveX(std::int64_t samplepoint) const {
  return rawwaveX(1, samplepoint);
}
double SampleFetch::getDRawwaveX(std::int64_t samplepoint) const {
  return rawwaveX(2, samplepoint);
}
double SampleFetch::getERawwaveX(std::int64_t samplepoint) const {
  return rawwaveX(3, samplepoint);
}

}  // namespace ovka
