#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "AlignedBlock.h"
#include "SpectrumArrays.h"
#include "SpectrumTransform.h"

namespace ovka {

/// A pair of analysis channels (0 to 3: A, B, D, E; 4, 5: sound) and the sense in which it is
/// compared.
struct CoherencePair {
  std::uint8_t first;
  std::uint8_t second;
  bool opposite;
};
/// The pairs of CoherenceM:, CoherenceM2: ... CoherenceM8: and CoherenceMSound:.
inline constexpr std::array<CoherencePair, 9> kCoherencePairs{{{0, 1, false},
                                                               {2, 3, false},
                                                               {0, 2, false},
                                                               {1, 3, false},
                                                               {1, 2, false},
                                                               {0, 3, false},
                                                               {0, 1, true},
                                                               {2, 3, true},
                                                               {4, 5, false}}};
/// The pair that source 4 to 11 of the outputs stands for, as an index of the table; note that 8
/// and 9 change places.
inline constexpr std::array<std::uint8_t, 8> kPairOfSource{0, 1, 2, 3, 5, 4, 6, 7};

/// Coherence (0 to 100) of two coefficients of transforms of length N: 100 * max(0, cos phi), phi
/// their phase difference (opposite: -cos phi), doubled up to 100 where they are exactly in line; 0
/// where the product of their magnitudes / N^2 is not above `level`.
[[nodiscard]] double coherenceOf(ComplexDouble first, ComplexDouble second, double N, double level,
                                 bool opposite);

class SpectrumHistory;

/// Coherence between channels, from their coherence arrays. Any thread.
class Coherence {
 public:
  Coherence(SpectrumArrays& arrays, SpectrumTransform& transform, SpectrumHistory& history);

  /// doCoherence: transforms the `fftp` samples in the real slots of a channel's (0 to 3) coherence
  /// array into coefficients, in place; for blocks written there by hand (array indexes 10 to 13).
  /// Calls take turns. Other channels do nothing.
  void doCoherence(std::int32_t channel);

  /// CoherenceM:Point: coherence of the pair in a bin, 0 to 100; N is the transform length. A bin
  /// beyond the room gives 0.
  [[nodiscard]] double CoherenceM(std::uint64_t bin, double N) const { return pair(0, bin, N); }
  [[nodiscard]] double CoherenceM2(std::uint64_t bin, double N) const { return pair(1, bin, N); }
  [[nodiscard]] double CoherenceM3(std::uint64_t bin, double N) const { return pair(2, bin, N); }
  [[nodiscard]] double CoherenceM4(std::uint64_t bin, double N) const { return pair(3, bin, N); }
  [[nodiscard]] double CoherenceM5(std::uint64_t bin, double N) const { return pair(4, bin, N); }
  [[nodiscard]] double CoherenceM6(std::uint64_t bin, double N) const { return pair(5, bin, N); }
  [[nodiscard]] double CoherenceM7(std::uint64_t bin, double N) const { return pair(6, bin, N); }
  [[nodiscard]] double CoherenceM8(std::uint64_t bin, double N) const { return pair(7, bin, N); }
  [[nodiscard]] double CoherenceMSound(std::uint64_t bin, double N) const {
    return pair(8, bin, N);
  }

  /// peakAVCoherenceBand:lowF:highF:mode: band value of source 4 to 11 over [lowF, highF] (Hz, the
  /// top bin included, within the spectrum). Mode 1: the mean coherence, added upward. Mode 0: 100
  /// * the largest brain-switch count / (`maxBScount` - `coherenceSWoffset`), at most 100. Another
  /// source or mode, and in mode 0 a scale that is not positive, gives 0.
  [[nodiscard]] float peakAVCoherenceBand(std::uint32_t source, float lowF, float highF,
                                          std::int32_t mode) const;

 private:
  [[nodiscard]] double pair(std::size_t number, std::uint64_t bin, double N) const;
  [[nodiscard]] float averageOf(std::uint32_t source, std::int32_t from, std::int32_t to,
                                std::int32_t points) const;
  [[nodiscard]] float maximumOf(std::uint32_t source, std::int32_t from, std::int32_t to) const;

  SpectrumArrays& arrays_;
  SpectrumTransform& transform_;
  SpectrumHistory& history_;
  std::mutex lock_;  // guards the pairs
  AlignedBlock pairs_;
};

/// Coherence of a pair (index of kCoherencePairs) in a bin, by `CoherenceLevel`.
[[nodiscard]] double pairCoherence(const SpectrumArrays& arrays, std::size_t number,
                                   std::uint64_t bin, double N);

}  // namespace ovka
