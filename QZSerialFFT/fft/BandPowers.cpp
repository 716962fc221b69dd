#include "BandPowers.h"

#include <algorithm>
#include <cmath>

#include "BufferVariables.h"
#include "DyadicSum.h"
#include "FFTVariables.h"
#include "SpectrumTransform.h"

namespace ovka {

namespace {

using BandPointers = std::array<double*, 8>;

void store(const BandValues& values, const BandPointers& bands, double* totalP) {
  for (std::size_t b = 0; b < bands.size(); ++b) *bands[b] = values.bands[b];
  *totalP = values.total;
}

BinMap mapNow(std::int32_t numberOfS) {
  return BinMap::of(numberOfS, buffer::SampleSpeed);
}

std::size_t position(const BinMap& map, double frequency) {
  return static_cast<std::size_t>(map.binFrom(frequency));
}

}  // namespace

BinMap BinMap::of(std::int32_t numberOfS, std::uint32_t sampleSpeed) {
  const std::int32_t bins = std::max(numberOfS / 2, 0);
  const std::uint32_t half = sampleSpeed / 2;  // a whole number: an odd speed loses its half
  return {static_cast<double>(half) / bins, bins};
}

std::int32_t BinMap::binFrom(double frequency) const {
  const double exact = frequency / width;
  if (!(exact > 0.0)) return 0;
  if (exact >= bins) return bins;
  const auto below = static_cast<std::int32_t>(exact);
  return below < exact ? below + 1 : below;
}

BandValues bandSums(const double* spectrum, std::int32_t numberOfS) {
  const BinMap map = mapNow(numberOfS);
  BandValues result;
  for (std::size_t b = 0; b < kBands.size(); ++b) {
    result.bands[b] =
        dyadicSum(spectrum, position(map, kBands[b].low), position(map, kBands[b].high));
    result.total += result.bands[b];
  }
  return result;
}

BandValues bandShares(const double* spectrum, std::int32_t numberOfS) {
  BandValues result = bandSums(spectrum, numberOfS);
  for (double& band : result.bands) band /= result.total;
  return result;
}

BandValues bandPeaks(const double* spectrum, std::int32_t numberOfS) {
  const BinMap map = mapNow(numberOfS);
  BandValues result;
  for (std::size_t b = 0; b < kBands.size(); ++b) {
    result.bands[b] =
        strongestOf(spectrum, position(map, kBands[b].low), position(map, kBands[b].high)).value;
    result.total = std::max(result.total, result.bands[b]);
  }
  return result;
}

void MultiPowerNumbers(const double* spectrum, std::int32_t numberOfS, double* eyeP, double* deltaP,
                       double* thetaP, double* alphaP, double* lowbetaP, double* midbetaP,
                       double* highbetaP, double* acP, double* totalP) {
  store(bandSums(spectrum, numberOfS),
        {eyeP, deltaP, thetaP, alphaP, lowbetaP, midbetaP, highbetaP, acP}, totalP);
}

void MultiPowerPercentNumbers(const double* spectrum, std::int32_t numberOfS, double* eyePer,
                              double* deltaPer, double* thetaPer, double* alphaPer,
                              double* lowbetaPer, double* midbetaPer, double* highbetaPer,
                              double* acPer, double* totalP) {
  store(bandShares(spectrum, numberOfS),
        {eyePer, deltaPer, thetaPer, alphaPer, lowbetaPer, midbetaPer, highbetaPer, acPer}, totalP);
}

void PowerNumbers(const double* spectrum, std::int32_t numberOfS, double lowF, double highF,
                  double* bandP, double* percentP, double* totalP) {
  const BinMap map = mapNow(numberOfS);
  const double band = dyadicSum(spectrum, position(map, lowF), position(map, highF));
  const double total = dyadicSum(spectrum, 0, static_cast<std::size_t>(map.bins));
  *bandP = band;
  *percentP = total > 0.0 ? 100.0 * band / total : 0.0;
  *totalP = total;
}

void Peak(const double* spectrum, std::int32_t numberOfS, double lowF, double highF, double* peakF,
          double* peakV) {
  const BinMap map = mapNow(numberOfS);
  const Strongest best = strongestOf(spectrum, position(map, lowF), position(map, highF));
  *peakF = static_cast<double>(best.position) * map.width;
  *peakV = best.value;
}

double AverageA(const double* values, std::int32_t n) {
  if (n <= 0) return 0.0;
  return dyadicSum(values, 0, static_cast<std::size_t>(n)) / n;
}

double RMS(const double* values, std::int32_t n) {
  if (n <= 0) return 0.0;
  double total = 0.0;
  for (std::int32_t i = 0; i < n; ++i) total += values[i] * values[i];
  return std::sqrt(total / n);
}

double removeMean(double* values, std::size_t count) {
  const double mean = dyadicSum(values, 0, count) / static_cast<double>(count);
  if (mean == 0.0) return mean;
  for (std::size_t i = 0; i < count; ++i) values[i] -= mean;
  return mean;
}

BandPowers::BandPowers()
    : block_(fft::kMaxPoints),
      work_(fft::kMaxPoints),
      magnitude_(fft::kMaxBins),
      packMemory_(2 * static_cast<std::size_t>(fft::kMaxBins)),
      packA_(packMemory_.data(), fft::kMaxBins),
      packB_(packMemory_.data() + fft::kMaxBins, fft::kMaxBins) {}

// The magnitudes of the caller's block, or nullptr for a length that does nothing. The lock is
// held.
const double* BandPowers::spectrumOf(double* samples, std::size_t stride, std::int32_t numberOfS,
                                     double scale) {
  if (!SpectrumTransform::isLength(numberOfS)) return nullptr;
  const auto count = static_cast<std::size_t>(numberOfS);
  double* block = block_.data();
  for (std::size_t i = 0; i < count; ++i) block[i] = samples[stride * i];
  if (removeMean(block, count) != 0.0) {
    for (std::size_t i = 0; i < count; ++i) samples[stride * i] = block[i];
  }
  for (std::size_t i = 0; i < count; ++i) block[i] *= scale;
  SpectrumTransform::transformBlock(block, magnitude_.data(), work_.data(), numberOfS);
  return magnitude_.data();
}

void BandPowers::MultiPower(double* samples, std::int32_t numberOfS, double* eyeP, double* deltaP,
                            double* thetaP, double* alphaP, double* lowbetaP, double* midbetaP,
                            double* highbetaP, double* acP, double* totalP) {
  const std::scoped_lock guard(lock_);
  const double* spectrum = spectrumOf(samples, 1, numberOfS, fft::scalerY);
  if (spectrum == nullptr) return;
  MultiPowerNumbers(spectrum, numberOfS, eyeP, deltaP, thetaP, alphaP, lowbetaP, midbetaP,
                    highbetaP, acP, totalP);
}

void BandPowers::MultiPowerPercent(double* samples, std::int32_t numberOfS, double* eyePer,
                                   double* deltaPer, double* thetaPer, double* alphaPer,
                                   double* lowbetaPer, double* midbetaPer, double* highbetaPer,
                                   double* acPer, double* totalP) {
  const std::scoped_lock guard(lock_);
  const double* spectrum = spectrumOf(samples, 1, numberOfS, fft::scalerY);
  if (spectrum == nullptr) return;
  MultiPowerPercentNumbers(spectrum, numberOfS, eyePer, deltaPer, thetaPer, alphaPer, lowbetaPer,
                           midbetaPer, highbetaPer, acPer, totalP);
}

void BandPowers::MultiPowerPeak(double* samples, std::int32_t numberOfS, double* eyeP,
                                double* deltaP, double* thetaP, double* alphaP, double* lowbetaP,
                                double* midbetaP, double* highbetaP, double* acP, double* totalP) {
  const std::scoped_lock guard(lock_);
  const double* spectrum = spectrumOf(samples, 1, numberOfS, fft::scalerY);
  if (spectrum == nullptr) return;
  MultiPowerPeakNumbers(spectrum, numberOfS, eyeP, deltaP, thetaP, alphaP, lowbetaP, midbetaP,
                        highbetaP, acP, totalP);
}

void BandPowers::MultiPowerPeakNumbers(const double* spectrum, std::int32_t numberOfS, double* eyeP,
                                       double* deltaP, double* thetaP, double* alphaP,
                                       double* lowbetaP, double* midbetaP, double* highbetaP,
                                       double* acP, double* totalP) {
  store(bandPeaks(spectrum, numberOfS),
        {eyeP, deltaP, thetaP, alphaP, lowbetaP, midbetaP, highbetaP, acP}, totalP);
}

void BandPowers::Power(double* samples, std::int32_t numberOfS, double lowF, double highF,
                       double* bandP, double* percentP, double* totalP) {
  const std::scoped_lock guard(lock_);
  const double* spectrum = spectrumOf(samples, 2, numberOfS, fft::scalerY);
  if (spectrum == nullptr) return;
  PowerNumbers(spectrum, numberOfS, lowF, highF, bandP, percentP, totalP);
}

void BandPowers::SpectrumPeak(double* samples, std::int32_t numberOfS, double lowF, double highF,
                              double* peakF, double* peakV) {
  const std::scoped_lock guard(lock_);
  const double* spectrum = spectrumOf(samples, 2, numberOfS, fft::scalerX);
  if (spectrum == nullptr) return;
  Peak(spectrum, numberOfS, lowF, highF, peakF, peakV);
}

void BandPowers::pack(SharedArray<double>& to, double* samples, std::int32_t numberOfS) {
  const std::scoped_lock guard(lock_);
  const double* spectrum = spectrumOf(samples, 1, numberOfS, fft::scalerX);
  if (spectrum == nullptr) return;
  to.publish(0, {spectrum, static_cast<std::size_t>(numberOfS / 2)});
}

void BandPowers::FFTpackA(double* samples, std::int32_t numberOfS, double /*lowF*/,
                          double /*highF*/) {
  pack(packA_, samples, numberOfS);
}

void BandPowers::FFTpackB(double* samples, std::int32_t numberOfS, double /*lowF*/,
                          double /*highF*/) {
  pack(packB_, samples, numberOfS);
}

void BandPowers::readFFTpackA(std::span<double> out) const {
  packA_.snapshot(0, out.first(std::min(out.size(), packA_.size())));
}

void BandPowers::readFFTpackB(std::span<double> out) const {
  packB_.snapshot(0, out.first(std::min(out.size(), packB_.size())));
}

}  // namespace ovka
