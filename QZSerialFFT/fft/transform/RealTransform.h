#pragma once

#include <cstdint>

#include "PlanTables.h"

namespace ovka {

/// The processor's means that a transform may use. Every one of them gives the same bits.
enum class InstructionSet : std::int32_t {
  plain,     ///< C++ without vectors: every processor
  baseline,  ///< SSE2, which every x86-64 has
  avx2,
  avx512,  ///< AVX-512 F and DQ
};
inline constexpr int instructionSetCount = 4;

/// "plain", "baseline", "AVX2", "AVX-512".
const char* nameOf(InstructionSet set) noexcept;
/// Whether this build has the path and this processor can run it.
bool isSupported(InstructionSet set) noexcept;
/// The fastest one supported, found once.
InstructionSet fastestInstructionSet() noexcept;

/// The real-input Fourier transform of one length, equal bit for bit to the classic plain form
/// (see ClassicTransform.h): a plan of tables, built once per length and never changed, so any
/// number of threads use one plan at once. docs/TRANSFORM.md draws the passes.
class RealTransform {
 public:
  static constexpr int shortest = 128;
  static constexpr int longest = 65536;

  /// The plan for `points` real samples, a power of two from 128 to 65536; nullptr for any other
  /// number. The first call for a length builds the plan (allocates, takes sines, up to about 2 ms)
  /// and may throw std::bad_alloc; later ones are one atomic load. A plan lives as long as the
  /// process. Any thread.
  static const RealTransform* forPoints(int points);

  /// Uses one instruction set for all transforms from now on, for tests and benchmarks. False, and
  /// nothing changes, when it is not supported here. Any thread.
  static bool useInstructionSet(InstructionSet set) noexcept;
  static InstructionSet instructionSet() noexcept;

  /// Transforms points() samples. Positive sign in the exponent, unscaled.
  /// @param in         points() samples
  /// @param packed     points() doubles: for each bin i from 0 to points()/2 - 1 the pair (real,
  /// imaginary);
  ///                   pair 0 holds (DC, Nyquist). May be the same array as `in`.
  /// @param magnitude  points()/2 doubles, sqrt(real^2 + imaginary^2) / points() of each pair (so
  /// bin 0
  ///                   folds the Nyquist term in), or nullptr when not wanted
  /// @param scratch    points() doubles, overwritten; must not overlap the others. Aligned to 64
  /// bytes it
  ///                   is fastest; any alignment works.
  /// No allocation, no lock, no sine. Any thread, with arrays of its own.
  void transform(const double* in, double* packed, double* magnitude,
                 double* scratch) const noexcept;

  [[nodiscard]] int points() const noexcept { return tables_.plan.complexPoints * 2; }

  RealTransform(const RealTransform&) = delete;
  RealTransform& operator=(const RealTransform&) = delete;

 private:
  explicit RealTransform(int points);

  PlanTables tables_;
};

}  // namespace ovka
