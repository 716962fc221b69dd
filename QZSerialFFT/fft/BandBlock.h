#pragma once

#include <cstdint>
#include <span>

#include "AlignedBlock.h"
#include "BandAnswers.h"
#include "BandPowers.h"
#include "DyadicSum.h"

namespace ovka {

/// Scratch that blocks share: they are evaluated one at a time.
struct BandScratch {
  BandScratch();
  AlignedBlock block;
  AlignedBlock work;
};

/// What the spectra and bins of a block are made with.
struct BlockSettings {
  double scaleY = 0.0;  ///< `scalerY`, for band sums
  double scaleX = 0.0;  ///< `scalerX`, for peaks
  BinMap map{};
};

/// A block of samples and the spectra that band queries need of it, each made when first asked for.
/// `Tree` is SumTree or PeakTree. Not thread-safe.
template <typename Tree>
class KeptSpectrum {
 public:
  KeptSpectrum();
  void forget() noexcept { made_ = false; }
  /// The tree over the spectrum of scale * (values - mean).
  const Tree& of(std::span<const double> values, double mean, double scale, BandScratch& scratch);

 private:
  AlignedBlock magnitude_;
  Tree tree_;
  bool made_ = false;
};

/// The block of an EEG channel. A query takes the mean out once (mode 1) or twice (mode 0: once for
/// the sum, and what the first time left by rounding for the peak); all that is kept starts from
/// the block as it was fetched, so the order of the queries does not show.
class ChannelBlock {
 public:
  ChannelBlock();

  /// Where to fetch a new block to; forgets all spectra.
  [[nodiscard]] std::span<double> refill(std::size_t points);
  [[nodiscard]] BandAnswer answer(const BandAsk& ask, const BlockSettings& settings,
                                  BandScratch& scratch);
  /// Whether there is no block of a length that can be transformed.
  [[nodiscard]] bool empty() const { return points_ == 0; }
  /// Value `position` of the block as the last fetch or query left it.
  [[nodiscard]] double value(std::size_t position) const;

 private:
  const PeakTree& peaks(std::int32_t mode, double scale, BandScratch& scratch);
  void removeFirstMean();

  AlignedBlock values_;
  std::size_t points_ = 0;
  bool meanFree_ = false;
  bool secondTaken_ = false;  // the last query took both means out
  bool secondKnown_ = false;
  double secondMean_ = 0.0;
  KeptSpectrum<SumTree> sums_;
  KeptSpectrum<PeakTree> peaks_;
  KeptSpectrum<PeakTree> peaksOfSecond_;
};

/// The block of an extra array, which keeps what queries do to it: each takes the mean out of the
/// array itself, until nothing changes any more.
class ExtraBlock {
 public:
  ExtraBlock();

  [[nodiscard]] std::span<double> refill(std::size_t points);
  /// Answers and alters the block. True when its values changed.
  bool answer(const BandAsk& ask, const BlockSettings& settings, BandScratch& scratch,
              BandAnswer& answer);
  [[nodiscard]] std::span<const double> values() const { return {values_.data(), points_}; }
  /// Whether a further query would leave the block as it is.
  [[nodiscard]] bool settled() const { return settled_; }

 private:
  bool removeMeanOnce();

  AlignedBlock values_;
  std::size_t points_ = 0;
  bool settled_ = false;
  KeptSpectrum<SumTree> sums_;
  KeptSpectrum<PeakTree> peaks_;
};

}  // namespace ovka
