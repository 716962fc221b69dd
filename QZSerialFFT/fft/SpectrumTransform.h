#pragma once

#include <cstdint>
#include <mutex>
#include <span>

#include "AlignedBlock.h"
#include "FFTVariables.h"

namespace ovka {

/// What one transform takes from the settings, read once before it.
struct TransformSettings {
  double scale = 1.0;  ///< `scalerX`
  bool log = false;
  std::int32_t sampleSpeed = 0;

  static TransformSettings now();
};

/// The transforms of the engine, on a caller's arrays. Lengths are powers of two from 2 to 65536
/// samples (FFTJ: and the lone transforms: any power of two); other lengths do nothing. Any thread;
/// calls that need the engine's scratch take turns. Nothing allocates once the plan of a length
/// exists.
class SpectrumTransform {
 public:
  SpectrumTransform();

  /// FFTJ:Point: complex transform of n points in place; data[1] ... data[2n], data[0] is unused.
  void FFTJ(double* data, std::int32_t n) const;

  /// RealFFT:Point:CH: real transform of 2n samples data[1] ... data[2n] in place: data[1] the DC
  /// term, data[2] the Nyquist term, then the pairs of bins 1 to n - 1. With keepComplex 0 the
  /// pairs become (magnitude / 2n, 0); the Nyquist term is folded into bin 0.
  void RealFFT(double* data, std::int32_t n, std::int32_t keepComplex);

  /// RealFFTobj:dataPower:Point:CO: the same, magnitudes to power[1] ... power[2n], the complex
  /// result stays in data; CO has no effect.
  void RealFFTobj(double* data, double* power, std::int32_t n, std::int32_t CO);

  /// dofftKel:dataCoherence:CO:CH:fftP:sampleSpeed:LogPower: transforms the real slots of `data`
  /// (fftP complex pairs): bins 0 ... fftP/2 - 1 get (magnitude, 0), logarithmic with LogPower and
  /// CO 0, and `dataCoherence` their complex coefficients; both arrays may be the same, which then
  /// keeps the coefficients. Automatic zero of channel CH (0 to 3, with CO 0), then the filters.
  void dofftKel(double* data, double* dataCoherence, std::int32_t CO, std::int32_t CH,
                std::int32_t fftP, std::int32_t sampleSpeed, std::int32_t LogPower);

  /// imul: (a * b) >> 15. imuls: (a * b) >> shift (0 to 63). imulD: a * b / 32768.
  static std::int32_t imul(std::int32_t a, std::int32_t b);
  static std::int32_t imuls(std::int32_t a, std::int32_t b, std::int32_t shift);
  static double imulD(double a, double b);

  /// Whether a transform of `points` samples can be made: a power of two from 2 to 65536.
  static bool isLength(std::int32_t points) noexcept {
    return points >= 2 && points <= fft::kMaxPoints && (points & (points - 1)) == 0;
  }

  /// Transforms `points` reals in place to packed pairs. magnitude (points/2 values) may be null;
  /// `work` holds `points` values and is overwritten.
  static void transformBlock(double* block, double* magnitude, double* work, std::int32_t points);
  /// The logarithmic scale: 0 below 0.1, else 10 * (log10(value) + 1), by the C library's log10
  /// (the vector forms of it differ in the last bits).
  static void toLogScale(std::span<double> magnitudes);
  /// Automatic zero: takes bin 0 of one more pass of channel CH (0 to 3; others do nothing) into
  /// the running total. The value of the pass that completes the count is left out, so a count of 1
  /// always gives an offset of 0.
  static void automaticZero(std::int32_t CH, double binZero);

 private:
  std::mutex lock_;  // guards the scratch
  AlignedBlock block_;
  AlignedBlock work_;
  AlignedBlock magnitude_;
};

}  // namespace ovka
