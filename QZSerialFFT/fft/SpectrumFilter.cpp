#include "SpectrumFilter.h"

#include <algorithm>
#include <array>

#include "FFTVariables.h"

namespace ovka {

namespace {

constexpr std::array<double, 11> kDcEdges{0.0, 0.1, 0.5,  1.0,  2.0, 3.0,
                                          4.0, 8.0, 16.0, 32.0, 64.0};  // Hz; setting 0: bin 0
struct Notch {
  double low, high;  // Hz
};
constexpr std::array<Notch, 8> kNotches{
    {{49, 51}, {59, 61}, {45, 65}, {48, 52}, {45, 55}, {58, 62}, {55, 65}, {55, 70}}};

}  // namespace

FilterBins FilterBins::of(std::int32_t dcOn, std::uint32_t dcSetting, std::int32_t acOn,
                          std::uint32_t acSetting, std::int32_t sampleSpeed, std::int32_t fftP) {
  FilterBins range;
  if (sampleSpeed <= 0 || fftP <= 0) return range;
  const double binWidth = static_cast<double>(sampleSpeed) / fftP;
  const auto binAt = [&](double frequency) {
    return static_cast<std::int32_t>(std::min(frequency / binWidth, fftP / 2.0));
  };
  if (dcOn != 0 && dcSetting < kDcEdges.size()) {
    range.dcEnd = dcSetting == 0 ? std::min(1, fftP / 2) : binAt(kDcEdges[dcSetting]);
  }
  if (acOn != 0 && acSetting < kNotches.size()) {
    range.notchLow = binAt(kNotches[acSetting].low);
    range.notchHigh = binAt(kNotches[acSetting].high);
  }
  return range;
}

FilterBins FilterBins::ofSettings(std::int32_t sampleSpeed, std::int32_t fftP) {
  return of(fft::DCcutONed, fft::setDCNumber, fft::ACcutONed, fft::setACNumber, sampleSpeed, fftP);
}

void FilterBins::applyToPairs(double* pairs) const {
  for (std::int32_t i = 0; i < dcEnd; ++i) {
    pairs[2 * i] /= 10.0;
    pairs[2 * i + 1] = 0.0;
  }
  std::fill(pairs + 2 * notchLow, pairs + 2 * notchHigh, 0.0);
}

void FilterBins::applyToMagnitudes(double* magnitudes) const {
  for (std::int32_t i = 0; i < dcEnd; ++i) magnitudes[i] /= 10.0;
  std::fill(magnitudes + notchLow, magnitudes + notchHigh, 0.0);
}

void SpectrumFilter::ACDCfilter(double* inData, double* inData2, std::int32_t DCcut,
                                std::uint32_t setDC, std::int32_t ACcut, std::uint32_t setACN,
                                std::int32_t SampleS, std::int32_t FFT) {
  const FilterBins bins = FilterBins::of(DCcut, setDC, ACcut, setACN, SampleS, FFT);
  bins.applyToPairs(inData);
  bins.applyToPairs(inData2);
}

}  // namespace ovka
