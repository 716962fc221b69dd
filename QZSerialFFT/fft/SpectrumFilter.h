#pragma once

#include <cstdint>

namespace ovka {

/// The bins that DC cut and mains notch touch, of `fftP`/2 bins; empty ranges where a filter is
/// off, its setting is out of range, or speed or length is not positive.
struct FilterBins {
  std::int32_t dcEnd = 0;     ///< DC cut: bins 0 ... dcEnd - 1
  std::int32_t notchLow = 0;  ///< notch: bins notchLow ... notchHigh - 1
  std::int32_t notchHigh = 0;

  static FilterBins of(std::int32_t dcOn, std::uint32_t dcSetting, std::int32_t acOn,
                       std::uint32_t acSetting, std::int32_t sampleSpeed, std::int32_t fftP);
  /// From the process-wide settings.
  static FilterBins ofSettings(std::int32_t sampleSpeed, std::int32_t fftP);

  /// DC cut: real slot / 10, imaginary slot 0; then notch: both 0.
  void applyToPairs(double* pairs) const;
  /// The same on an array of real slots alone.
  void applyToMagnitudes(double* magnitudes) const;
};

class SpectrumFilter {
 public:
  /// ACDCfilter:inData2:DCcut:setDC:ACcut:setACN:SampleS:FFT: applies DC cut and mains notch to
  /// both arrays of complex pairs. When both are the same array, its DC bins are divided by 10
  /// twice; that is what doCoherence: gets, and it stays so. Any thread.
  static void ACDCfilter(double* inData, double* inData2, std::int32_t DCcut, std::uint32_t setDC,
                         std::int32_t ACcut, std::uint32_t setACN, std::int32_t SampleS,
                         std::int32_t FFT);
};

}  // namespace ovka
