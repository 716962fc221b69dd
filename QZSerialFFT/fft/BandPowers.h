#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <span>

#include "AlignedBlock.h"
#include "SharedArray.h"

namespace ovka {

/// The band set (Hz). Nothing covers 12 to 13 Hz: that gap counts nowhere, not even in a total.
struct Band {
  const char* name;
  double low;
  double high;
};
inline constexpr std::array<Band, 8> kBands{{{"eye", 0, 2},
                                             {"delta", 2, 4},
                                             {"theta", 4, 7},
                                             {"alpha", 7, 12},
                                             {"lowbeta", 13, 25},
                                             {"midbeta", 25, 35},
                                             {"highbeta", 35, 50},
                                             {"ac", 50, 60}}};

/// One value a band, in the order of the set, and their total.
struct BandValues {
  std::array<double, 8> bands{};
  double total = 0.0;
};

/// How frequencies map to bins of a block of numberOfS samples: bin k stands for k * width.
struct BinMap {
  double width = 0.0;     ///< Hz: (speed / 2) / (numberOfS / 2), both halves whole numbers
  std::int32_t bins = 0;  ///< numberOfS / 2

  static BinMap of(std::int32_t numberOfS, std::uint32_t sampleSpeed);
  /// The first bin at or above a frequency (Hz), at most `bins`.
  [[nodiscard]] std::int32_t binFrom(double frequency) const;
};

// Reductions of a spectrum: numberOfS / 2 magnitudes, bin k at [k]. Bins are mapped by the present
// `SampleSpeed`; sums run along the fixed tree of DyadicSum.h. Any thread.

/// The sums of the eight bands and the total of those sums, added in their order.
[[nodiscard]] BandValues bandSums(const double* spectrum, std::int32_t numberOfS);
/// Each sum divided by the total: a share from 0 to 1; not a number when the total is 0.
[[nodiscard]] BandValues bandShares(const double* spectrum, std::int32_t numberOfS);
/// The strongest bin of each band (0 when none is positive) and the strongest of them.
[[nodiscard]] BandValues bandPeaks(const double* spectrum, std::int32_t numberOfS);

/// Function MultiPowerNumbers: bandSums through pointers.
void MultiPowerNumbers(const double* spectrum, std::int32_t numberOfS, double* eyeP, double* deltaP,
                       double* thetaP, double* alphaP, double* lowbetaP, double* midbetaP,
                       double* highbetaP, double* acP, double* totalP);
/// Function MultiPowerPercentNumbers: bandShares through pointers.
void MultiPowerPercentNumbers(const double* spectrum, std::int32_t numberOfS, double* eyePer,
                              double* deltaPer, double* thetaPer, double* alphaPer,
                              double* lowbetaPer, double* midbetaPer, double* highbetaPer,
                              double* acPer, double* totalP);
/// Function PowerNumbers: the sum of [lowF, highF), 100 * sum / total (0 without a positive total:
/// a percentage, unlike the band shares), and the total of all bins.
void PowerNumbers(const double* spectrum, std::int32_t numberOfS, double lowF, double highF,
                  double* bandP, double* percentP, double* totalP);
/// Function Peak: the strongest bin of [lowF, highF), at equal values the lowest: frequency (Hz)
/// and value, both 0 when none is positive.
void Peak(const double* spectrum, std::int32_t numberOfS, double lowF, double highF, double* peakF,
          double* peakV);

/// Function AverageA: mean of n values; 0 for none.
[[nodiscard]] double AverageA(const double* values, std::int32_t n);
/// Function RMS: root mean square of n values; 0 for none.
[[nodiscard]] double RMS(const double* values, std::int32_t n);

/// The same reductions on a caller's block of time-domain samples.
///
/// Each method first takes the block's mean out of the caller's array, unless it is exactly 0, then
/// transforms the block scaled by `scalerY` (Power:, MultiPower: and its kin) or `scalerX`
/// (SpectrumPeak:, FFTpackA:, FFTpackB:). Power: and SpectrumPeak: read complex pairs, value i at
/// [2i]; the others a plain array. numberOfS is a power of two from 2 to 65536; any other does
/// nothing. Any thread; calls take turns.
class BandPowers {
 public:
  BandPowers();

  /// MultiPower:numberOfS:eyeP:... band sums and their total.
  void MultiPower(double* samples, std::int32_t numberOfS, double* eyeP, double* deltaP,
                  double* thetaP, double* alphaP, double* lowbetaP, double* midbetaP,
                  double* highbetaP, double* acP, double* totalP);
  /// MultiPowerPercent:numberOfS:eyePer:... shares of the total, as fractions.
  void MultiPowerPercent(double* samples, std::int32_t numberOfS, double* eyePer, double* deltaPer,
                         double* thetaPer, double* alphaPer, double* lowbetaPer, double* midbetaPer,
                         double* highbetaPer, double* acPer, double* totalP);
  /// MultiPowerPeak:numberOfS:eyeP:... strongest bins, and the strongest of them.
  void MultiPowerPeak(double* samples, std::int32_t numberOfS, double* eyeP, double* deltaP,
                      double* thetaP, double* alphaP, double* lowbetaP, double* midbetaP,
                      double* highbetaP, double* acP, double* totalP);
  /// MultiPowerPeakNumbers:numberOfS:eyeP:... bandPeaks of a spectrum, through pointers.
  static void MultiPowerPeakNumbers(const double* spectrum, std::int32_t numberOfS, double* eyeP,
                                    double* deltaP, double* thetaP, double* alphaP,
                                    double* lowbetaP, double* midbetaP, double* highbetaP,
                                    double* acP, double* totalP);
  /// Power:numberOfS:lowF:highF:bandP:percentP:totalP: power in one range (Hz).
  void Power(double* samples, std::int32_t numberOfS, double lowF, double highF, double* bandP,
             double* percentP, double* totalP);
  /// SpectrumPeak:numberOfS:lowF:highF:peakF:peakV: strongest bin of one range (Hz).
  void SpectrumPeak(double* samples, std::int32_t numberOfS, double lowF, double highF,
                    double* peakF, double* peakV);
  /// FFTpackA:numberOfS:lowF:highF: and FFTpackB: transform a block into shared spectrum A or B;
  /// lowF and highF have no effect.
  void FFTpackA(double* samples, std::int32_t numberOfS, double lowF, double highF);
  void FFTpackB(double* samples, std::int32_t numberOfS, double lowF, double highF);
  /// Copies the first out.size() magnitudes (at most 32768) that FFTpackA: or FFTpackB: left.
  void readFFTpackA(std::span<double> out) const;
  void readFFTpackB(std::span<double> out) const;

 private:
  [[nodiscard]] const double* spectrumOf(double* samples, std::size_t stride,
                                         std::int32_t numberOfS, double scale);
  void pack(SharedArray<double>& to, double* samples, std::int32_t numberOfS);

  std::mutex lock_;  // guards the scratch
  AlignedBlock block_;
  AlignedBlock work_;
  AlignedBlock magnitude_;
  AlignedBlock packMemory_;
  SharedArray<double> packA_;
  SharedArray<double> packB_;
};

/// Takes the mean out of `count` values (a power of two), unless it is exactly 0 (a mean that is no
/// number counts as not 0); returns the mean.
double removeMean(double* values, std::size_t count);

}  // namespace ovka
