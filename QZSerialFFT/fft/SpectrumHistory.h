#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "AlignedBlock.h"
#include "AnalysisTables.h"
#include "SpectrumArrays.h"

namespace ovka {

/// What the last spectra of the channels and the last coherences of the pairs had in common: for
/// every bin, in which of the last `maxBScount` (at most 64) spectra it stood above its threshold.
/// A brain switch: a rhythm that holds on makes a high count, a passing burst a low one.
///
/// - A channel's bin is above while its value exceeds `peakSWratio` times the mean of that spectrum
///   from bin 1 on, and `peakSWlevel`.
/// - A pair's bin is above while its coherence exceeds `coherenceSWlevel`.
///
/// A channel or pair is followed from the first time somebody asks for it; before that it costs
/// nothing. A change of length or tables starts all counts anew. `update` runs on the thread of the
/// analysis tick; everything else may be called on any thread. Nothing allocates after the
/// constructor, nothing is locked.
class SpectrumHistory {
 public:
  SpectrumHistory(const SpectrumArrays& arrays, const AnalysisTables& tables);

  /// Takes in the spectra and coefficients that the passes have just left.
  void update();

  /// coherenceMFout:mSet:Channel:MC: what the history holds for a bin of the pair of history index
  /// MC (2 and 5 to 11: the pairs of sources 4 and 5 to 11). mSet 0: its count; mSet 1: its newest
  /// coherence. Other arguments and bins give 0; Channel, the asking source, has no effect, since
  /// MC alone names the pair.
  float coherenceMFout(std::uint64_t bin, std::int32_t mSet, std::int32_t Channel, std::int32_t MC);

  /// waven3DBSQC: evaluates the brain switches of channel 0 to 3 into its row of `peakSWfftCount`,
  /// of pair (source) 4 to 9 into row source - 4 of `peakSWcoherenceCount`. Other channels do
  /// nothing. A row is made anew only when a spectrum came since.
  ///
  /// A row has 12 groups of 15 entries: group 0 the range of the peak search, groups 1 to 8 the
  /// bands in their order, the rest 0. A group has three peaks of 5 entries: count, frequency (Hz),
  /// bin, newest value (coherence), count in percent of `maxBScount`. Its peaks are the bins of the
  /// highest counts, among equals those of the greatest newest value; all 0 where nothing was
  /// above.
  void waven3DBSQC(std::int32_t channel);

  /// In how many of the last `maxBScount` spectra a bin of channel 0 to 3 or pair 4 to 11 was
  /// above.
  [[nodiscard]] std::int32_t countOf(std::int32_t source, std::uint64_t bin) const;

 private:
  static constexpr std::size_t kTracks = 12;  // sources 0 to 11
  // Bit 0 of a bin: the newest spectrum; one writer, the analysis tick.
  using Track = std::unique_ptr<std::atomic<std::uint64_t>[]>;

  struct Candidate {
    std::int32_t count = 0;
    std::int32_t bin = 0;
    double value = 0.0;
  };
  using Winners = std::array<Candidate, 3>;

  void follow(std::size_t source);
  void push(std::size_t source, std::size_t bin, bool above);
  void updateChannel(std::size_t channel, std::size_t bins);
  void updatePair(std::size_t source, std::size_t bins, double N);
  [[nodiscard]] double valueOf(std::size_t source, std::size_t bin) const;
  [[nodiscard]] Winners winnersOf(std::size_t source, std::int32_t from, std::int32_t to) const;
  void writeGroup(std::span<float, 180> row, std::size_t group, const Winners& winners) const;

  const SpectrumArrays& arrays_;
  const AnalysisTables& tables_;
  std::array<Track, kTracks> tracks_;
  AlignedBlock spectrum_;
  std::atomic<std::uint32_t> followed_{0};  // a bit a source
  std::atomic<std::uint64_t> updates_{1};
  std::array<std::atomic<std::uint64_t>, 10> evaluated_{};
  std::int32_t points_ = 0;
  std::uint32_t initCount_ = 0;
};

}  // namespace ovka
