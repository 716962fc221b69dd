#include "Coherence.h"

#include <algorithm>
#include <cmath>

#include "BufferVariables.h"
#include "SpectrumHistory.h"

namespace ovka {

double coherenceOf(ComplexDouble first, ComplexDouble second, double N, double level,
                   bool opposite) {
  const double a = first.real;
  const double b = first.imaginary;
  const double c = second.real;
  const double d = second.imaginary;
  const double square = N * N;
  const double real = (a * c + b * d) / square;
  const double imaginary = (b * c - a * d) / square;
  const double magnitude = std::sqrt(((a * a + b * b) / square) * ((c * c + d * d) / square));
  const double along = opposite ? -real : real;
  if (!(magnitude > level) || !(along > 0.0)) return 0.0;
  const double term = std::min(100.0 * along / magnitude, 100.0);
  // The system adds one term for each side of the circle; only where the imaginary part is exactly
  // 0 do both count. Which of the two is left out (the opposite pairs exchange them) does not show.
  return imaginary == 0.0 ? std::min(term + term, 100.0) : term;
}

double pairCoherence(const SpectrumArrays& arrays, std::size_t number, std::uint64_t bin,
                     double N) {
  if (bin >= static_cast<std::uint64_t>(SpectrumArrays::kRoom)) return 0.0;
  const CoherencePair& pair = kCoherencePairs[number];
  const SharedArray<double>& first = arrays.coherence(pair.first);
  const SharedArray<double>& second = arrays.coherence(pair.second);
  return coherenceOf({first.get(2 * bin), first.get(2 * bin + 1)},
                     {second.get(2 * bin), second.get(2 * bin + 1)}, N, fft::CoherenceLevel,
                     pair.opposite);
}

Coherence::Coherence(SpectrumArrays& arrays, SpectrumTransform& transform, SpectrumHistory& history)
    : arrays_(arrays),
      transform_(transform),
      history_(history),
      pairs_(2 * static_cast<std::size_t>(fft::kMaxPoints)) {}

double Coherence::pair(std::size_t number, std::uint64_t bin, double N) const {
  return pairCoherence(arrays_, number, bin, N);
}

void Coherence::doCoherence(std::int32_t channel) {
  const std::int32_t points = fft::fftp;
  if (channel < 0 || channel >= fft::kEegChannels || !SpectrumTransform::isLength(points)) return;
  const auto count = static_cast<std::size_t>(points);
  SharedArray<double>& array = arrays_.coherence(channel);
  const std::scoped_lock guard(lock_);
  array.snapshot(0, pairs_.first(2 * count));
  transform_.dofftKel(pairs_.data(), pairs_.data(), 1, channel, points,
                      static_cast<std::int32_t>(buffer::SampleSpeed.get()), fft::LOGpowerONed);
  array.publish(0, pairs_.first(count));
}

float Coherence::peakAVCoherenceBand(std::uint32_t source, float lowF, float highF,
                                     std::int32_t mode) const {
  if (source < 4 || source > 11) return 0.0F;
  const std::int32_t points = fft::fftp;
  if (!SpectrumTransform::isLength(points)) return 0.0F;
  const float width = static_cast<float>(buffer::SampleSpeed.get()) / static_cast<float>(points);
  const std::int32_t half = points / 2;
  const auto bins = static_cast<float>(half);
  const float low = lowF / width;
  const float high = highF / width;
  const std::int32_t from = low > 0.0F ? static_cast<std::int32_t>(std::min(low, bins)) : 0;
  const std::int32_t to =
      high >= 0.0F ? static_cast<std::int32_t>(std::min(high, bins - 1.0F)) + 1 : 0;
  if (mode == 1) return averageOf(source, from, to, points);
  return mode == 0 ? maximumOf(source, from, to) : 0.0F;
}

float Coherence::averageOf(std::uint32_t source, std::int32_t from, std::int32_t to,
                           std::int32_t points) const {
  double total = 0.0;
  for (std::int32_t bin = from; bin < to; ++bin) {
    total += pair(kPairOfSource[source - 4], static_cast<std::uint64_t>(bin), points);
  }
  return static_cast<float>(total / std::max(to - from, 1));
}

float Coherence::maximumOf(std::uint32_t source, std::int32_t from, std::int32_t to) const {
  // Every source but the first is tested with the history of source 5 and read with its own: the
  // system's oddity, kept.
  const std::int32_t own = source == 4 ? 2 : static_cast<std::int32_t>(source);
  const std::int32_t tested = source == 4 ? 2 : 5;
  const auto channel = static_cast<std::int32_t>(source);
  float maximum = 0.0F;
  for (std::int32_t at = from; at < to; ++at) {
    const auto bin = static_cast<std::uint64_t>(at);
    if (history_.coherenceMFout(bin, 0, channel, tested) > maximum) {
      maximum = history_.coherenceMFout(bin, 0, channel, own);
    }
  }
  const float scale = static_cast<float>(fft::maxBScount.get()) - fft::coherenceSWoffset;
  if (!(scale > 0.0F)) return 0.0F;
  return std::min(100.0F * maximum / scale, 100.0F);
}

}  // namespace ovka
