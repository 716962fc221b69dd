#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>

#include "AlignedBlock.h"
#include "FFTVariables.h"
#include "SharedArray.h"

namespace ovka {

/// One complex value.
struct ComplexDouble {
  double real = 0.0;
  double imaginary = 0.0;
};

/// The arrays in which the engine leaves its results, each with room for 65536 complex pairs.
///
/// Array indexes: 0 spectrum A, 1 spectrum B, 2 an extra array, 3 spectrum D, 4 spectrum E, 5 to 9
/// further extra arrays, 10 to 13 coherence arrays A, B, D, E. The arrays of the sound channels
/// have no index. Every access is race-free; a reader may meet an array of which a pass has stored
/// only part.
///
/// Spectra and extra arrays hold real slots only: all that writes to them leaves the imaginary
/// slots at 0, so those are not stored.
class SpectrumArrays {
 public:
  static constexpr std::int64_t kRoom = fft::kMaxPoints;

  SpectrumArrays();

  /// getcomplexDoubleFromBuffer:samplepoint: the pair at a position; a negative position counts as
  /// 0, one beyond the room and an unknown index read 0. Any thread.
  [[nodiscard]] ComplexDouble getcomplexDoubleFromBuffer(std::uint32_t array,
                                                         std::int64_t samplepoint) const;
  /// putcomplexDoubleToBuffer:samplepoint:InDataX: stores (value, 0) at a position; a negative
  /// position counts as 0, one beyond the room and an unknown index change nothing. Any thread.
  void putcomplexDoubleToBuffer(std::uint32_t array, std::int64_t samplepoint, double InDataX);

  /// Copies the first out.size() magnitudes of an analysis channel (0 to 5), at most 65536.
  void readSpectrum(std::int32_t channel, std::span<double> out) const;
  /// Copies the first out.size()/2 complex pairs of an analysis channel (0 to 5), interleaved.
  void readCoefficients(std::int32_t channel, std::span<double> pairs) const;

  /// Spectrum and coherence array of an analysis channel, for the engine's own passes.
  [[nodiscard]] SharedArray<double>& spectrum(std::int32_t channel);
  [[nodiscard]] SharedArray<double>& coherence(std::int32_t channel);
  [[nodiscard]] const SharedArray<double>& spectrum(std::int32_t channel) const;
  [[nodiscard]] const SharedArray<double>& coherence(std::int32_t channel) const;

  /// The six extra arrays, numbered 0 to 5 (array indexes 2, 5, 6, 7, 8, 9). Whoever changes one
  /// holds its lock, so that the band query can alter a block while others put values.
  struct Extra {
    SharedArray<double> values{};
    std::mutex lock{};
    std::atomic<std::uint64_t> generation{0};  ///< advances with every put
  };
  static constexpr std::size_t kExtras = 6;
  [[nodiscard]] Extra& extra(std::size_t number) { return extras_[number]; }

 private:
  /// What an array index stands for.
  struct Place {
    enum Kind : std::uint8_t { None, Spectrum, Coherence, Extra } kind = None;
    std::uint8_t number = 0;
  };
  static Place placeOf(std::uint32_t array);

  AlignedBlock memory_;
  std::array<SharedArray<double>, fft::kAllChannels> spectra_;
  std::array<SharedArray<double>, fft::kAllChannels> coherence_;
  std::array<Extra, kExtras> extras_;
};

}  // namespace ovka
