#include "SpectrumTransform.h"

#include <algorithm>
#include <cmath>

#include "BufferVariables.h"
#include "ClassicTransform.h"
#include "RealTransform.h"
#include "SpectrumFilter.h"

namespace ovka {

TransformSettings TransformSettings::now() {
  return {fft::scalerX, fft::LOGpowerONed != 0,
          static_cast<std::int32_t>(buffer::SampleSpeed.get())};
}

SpectrumTransform::SpectrumTransform()
    : block_(fft::kMaxPoints), work_(fft::kMaxPoints), magnitude_(fft::kMaxBins) {}

void SpectrumTransform::FFTJ(double* data, std::int32_t n) const {
  complexTransform(data + 1, n);
}

void SpectrumTransform::transformBlock(double* block, double* magnitude, double* work,
                                       std::int32_t points) {
  if (const RealTransform* plan = RealTransform::forPoints(points)) {
    plan->transform(block, block, magnitude, work);
    return;
  }
  realTransform(block, points / 2);
  if (magnitude == nullptr) return;
  for (std::int32_t i = 0; i < points / 2; ++i) {
    const double re = block[2 * i];
    const double im = block[2 * i + 1];
    magnitude[i] = std::sqrt(re * re + im * im) / static_cast<double>(points);
  }
}

void SpectrumTransform::RealFFT(double* data, std::int32_t n, std::int32_t keepComplex) {
  if (n < 1 || (n & (n - 1)) != 0) return;
  if (n > fft::kMaxBins) {
    realTransform(data + 1, n);
  } else {
    const std::scoped_lock guard(lock_);
    transformBlock(data + 1, nullptr, work_.data(), 2 * n);
  }
  if (keepComplex != 0) return;
  const double points = 2.0 * n;
  for (std::size_t k = 1; k < 2 * static_cast<std::size_t>(n); k += 2) {
    data[k] = std::sqrt(data[k] * data[k] + data[k + 1] * data[k + 1]) / points;
    data[k + 1] = 0.0;
  }
}

void SpectrumTransform::RealFFTobj(double* data, double* power, std::int32_t n,
                                   std::int32_t /*CO*/) {
  if (n < 1 || (n & (n - 1)) != 0) return;
  RealFFT(data, n, 1);
  const double points = 2.0 * n;
  for (std::size_t k = 1; k < 2 * static_cast<std::size_t>(n); k += 2) {
    power[k] = std::sqrt(data[k] * data[k] + data[k + 1] * data[k + 1]) / points;
    power[k + 1] = 0.0;
  }
}

void SpectrumTransform::toLogScale(std::span<double> magnitudes) {
  for (double& value : magnitudes) {
    value = value < 0.1 ? 0.0 : 10.0 * (std::log10(value) + 1.0);
  }
}

void SpectrumTransform::automaticZero(std::int32_t CH, double binZero) {
  if (fft::AutoZeroRawDataONed == 0 || CH < 0 || CH >= fft::kEegChannels) return;
  const std::int32_t setting = fft::setAutoZeroNumber;
  if (setting < 0 || setting > 5) return;
  const std::int32_t needed = 1 << setting;
  const fft::AutoZeroState state = fft::autoZeroState(CH);
  state.count = state.count + 1;
  if (state.count < needed) {
    state.total = state.total + binZero;
    return;
  }
  state.offset = state.total / needed;
  state.count = 0;
  state.total = 0.0;
}

void SpectrumTransform::dofftKel(double* data, double* dataCoherence, std::int32_t CO,
                                 std::int32_t CH, std::int32_t fftP, std::int32_t sampleSpeed,
                                 std::int32_t LogPower) {
  if (!isLength(fftP)) return;
  const auto points = static_cast<std::size_t>(fftP);
  const std::scoped_lock guard(lock_);
  const double scale = fft::scalerX;
  double* block = block_.data();
  double* magnitude = magnitude_.data();
  for (std::size_t i = 0; i < points; ++i) block[i] = scale * data[2 * i];
  transformBlock(block, magnitude, work_.data(), fftP);
  if (LogPower != 0 && CO == 0) toLogScale({magnitude, points / 2});
  for (std::size_t i = 0; i < points / 2; ++i) {
    data[2 * i] = magnitude[i];
    data[2 * i + 1] = 0.0;
  }
  std::copy_n(block, points, dataCoherence);
  if (CO == 0) automaticZero(CH, data[0]);
  const FilterBins filter = FilterBins::ofSettings(sampleSpeed, fftP);
  filter.applyToPairs(data);
  filter.applyToPairs(dataCoherence);
}

std::int32_t SpectrumTransform::imul(std::int32_t a, std::int32_t b) {
  return imuls(a, b, 15);
}

std::int32_t SpectrumTransform::imuls(std::int32_t a, std::int32_t b, std::int32_t shift) {
  if (shift < 0 || shift > 63) return 0;
  return static_cast<std::int32_t>((static_cast<std::int64_t>(a) * b) >> shift);
}

double SpectrumTransform::imulD(double a, double b) {
  return a * b / 32768.0;
}

}  // namespace ovka
