#pragma once

#include <cstdint>
#include <span>

#include "AnalysisSettings.h"
#include "BufferVariables.h"
#include "FFTVariables.h"
#include "PlainTransform.h"
#include "QZFFT.h"
#include "SampleStore.h"

// The engine once more, one value at a time and without anything kept: what the fast one must equal
// bit for bit.
namespace ovka::plain {

using Values = std::vector<double>;

/// The `points` windowed samples of channel 0 to 3 that end at PT.
inline Values fetch(const SampleStore& store, const QZFFT& engine, std::int32_t channel,
                    std::int64_t PT, std::int32_t points) {
  Values block(static_cast<std::size_t>(points));
  std::int64_t first = PT - points;
  if (first < 0) first = 0;
  const double gain = fft::appliedGain(channel);
  for (std::int32_t i = 0; i < points; ++i) {
    const double sample = store.getIntFromBuffer(channel + 1, first + i);
    // The gain word behind the window values is no window value.
    const bool outside = fft::stopWindFunction != 0 || i >= engine.tables()->points;
    const double window = outside ? 0.0 : engine.windReturn(i);
    block[static_cast<std::size_t>(i)] = sample * window / 32768.0 * gain;
  }
  return block;
}

struct Spectrum {
  Values magnitude;  ///< a value a bin
  Values pairs;      ///< interleaved coefficients
};

/// Transform of a block scaled by `scale`.
inline Spectrum transform(const Values& block, double scale) {
  const std::size_t points = block.size();
  Values data(points + 1), power(points + 1);
  for (std::size_t i = 0; i < points; ++i) data[i + 1] = scale * block[i];
  realTransform(data.data(), points / 2);
  magnitudes(data.data(), power.data(), points / 2);
  Spectrum result;
  result.pairs.assign(data.begin() + 1, data.end());
  for (std::size_t k = 1; k <= points; k += 2) result.magnitude.push_back(power[k]);
  return result;
}

inline void logScale(Values& magnitude) {
  for (double& value : magnitude) value = value < 0.1 ? 0.0 : 10.0 * (std::log10(value) + 1.0);
}

/// The sum over [from, to) of the node [first, first + size).
inline double treeSum(const Values& values, std::size_t first, std::size_t size, std::size_t from,
                      std::size_t to) {
  if (size == 1) return values[first];
  const std::size_t half = size / 2;
  const std::size_t middle = first + half;
  if (to <= middle) return treeSum(values, first, half, from, to);
  if (from >= middle) return treeSum(values, middle, half, from, to);
  return treeSum(values, first, half, from, to) + treeSum(values, middle, half, from, to);
}
inline double sum(const Values& values, std::size_t from, std::size_t to) {
  std::size_t size = 1;
  while (size < to) size *= 2;
  return from < to ? treeSum(values, 0, size, from, to) : 0.0;
}

inline void removeMean(Values& block) {
  const double mean = sum(block, 0, block.size()) / static_cast<double>(block.size());
  if (mean == 0.0) return;
  for (double& value : block) value -= mean;
}

inline std::size_t binFrom(double frequency, std::size_t points) {
  const double width =
      static_cast<double>(buffer::SampleSpeed / 2) / static_cast<double>(points / 2);
  std::size_t k = 0;
  while (k < points / 2 && static_cast<double>(k) < frequency / width) ++k;
  return k;
}

struct Answer {
  float value = 0.0F;
  float frequency = 0.0F;
};

/// The band query on a block, which it alters.
inline Answer bandQuery(Values& block, float lowF, float highF, std::int32_t mode) {
  const std::size_t points = block.size();
  const std::size_t from = binFrom(static_cast<double>(lowF), points);
  const std::size_t to = binFrom(static_cast<double>(highF), points);
  Answer answer;
  if (mode == 0) {
    removeMean(block);
    answer.value = static_cast<float>(sum(transform(block, fft::scalerY).magnitude, from, to));
  }
  removeMean(block);
  const Values spectrum = transform(block, fft::scalerX).magnitude;
  double peak = 0.0;
  std::size_t at = 0;
  for (std::size_t k = from; k < to; ++k) {
    if (spectrum[k] > peak) {
      peak = spectrum[k];
      at = k;
    }
  }
  if (mode == 1) answer.value = static_cast<float>(peak);
  const double width =
      static_cast<double>(buffer::SampleSpeed / 2) / static_cast<double>(points / 2);
  answer.frequency = static_cast<float>(static_cast<double>(at) * width);
  return answer;
}

/// The average over rows 0 ... times - 1: a tree with four children a node.
inline double average(const std::vector<Values>& rows, std::size_t bin, std::size_t times) {
  const auto row = [&](std::size_t r) { return r < times ? rows[r][bin] : 0.0; };
  const auto node = [](double a, double b, double c, double d) { return (a + b) + (c + d); };
  const auto group = [&](std::size_t g) {
    return node(row(4 * g), row(4 * g + 1), row(4 * g + 2), row(4 * g + 3));
  };
  const auto quarter = [&](std::size_t q) {
    return node(group(4 * q), group(4 * q + 1), group(4 * q + 2), group(4 * q + 3));
  };
  return node(quarter(0), quarter(1), quarter(2), quarter(3)) / static_cast<double>(times);
}

}  // namespace ovka::plain
