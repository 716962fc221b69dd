#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>

#include "BandBlock.h"
#include "SampleFetch.h"

namespace ovka {

/// The band query of the outputs, with a store of results: the newest block of each channel, its
/// spectra and the answers already given are kept and used again while nothing that enters them has
/// changed (current point, the store's write generation, capacity, length, window table, stop
/// switch, gain, both scalers, model, polarity, swapping, reverse view, sample speed). An answer
/// from the store equals a fresh one bit for bit.
///
/// Any thread. An answer already given takes no lock; a new one takes a lock for at most the time
/// of one fetch and three transforms. Nothing allocates after the constructor.
class BandQuery {
 public:
  BandQuery(const SampleStore& store, const SampleFetch& fetch, SpectrumArrays& arrays);

  /// peakFFTband:lowF:highF:mode: of source 0 to 3 (channels A, B, D, E) or 4 to 9 (the six extra
  /// arrays): mode 0 the sum of the bins of [lowF, highF) (Hz), mode 1 the strongest of them; the
  /// frequency of the strongest is left in `peakFrequencyX`. The block's mean is taken out in
  /// place, in mode 0 twice, so extra arrays are altered. Another source or mode gives 0 and does
  /// nothing.
  float peakFFTband(std::int32_t source, float lowF, float highF, std::int32_t mode);

  /// Function peakFFTbandF: the same query, giving the frequency of the strongest bin (Hz): for
  /// those who share `peakFrequencyX` with other threads.
  float peakFFTbandF(std::int32_t source, float lowF, float highF, std::int32_t mode);

  /// getDataToBufferX:PT: fetches the `fftp` windowed samples of channel 0 to 3 that end at PT into
  /// the channel's second array. Other channels do nothing.
  void getDataToBufferX(std::int32_t channel, std::int64_t PT);
  /// Value of the channel's second array at a position, as the last fetch or query left it.
  [[nodiscard]] double secondArray(std::int32_t channel, std::int64_t position);

 private:
  static constexpr std::size_t kWords = 11;
  using Key = KeptKey<kWords>;
  struct Source {
    Key key;
    BandAnswers answers;
  };
  struct Channel : Source {
    ChannelBlock block;
    BlockSettings settings;
  };
  struct Extra : Source {
    ExtraBlock block;
  };

  [[nodiscard]] BandAnswer query(std::int32_t source, const BandAsk& ask);
  [[nodiscard]] BandAnswer answerOfChannel(std::size_t channel, const BandAsk& ask,
                                           std::uint64_t version);
  [[nodiscard]] bool refill(std::size_t channel);
  [[nodiscard]] BandAnswer answerOfExtra(std::size_t number, const BandAsk& ask);
  [[nodiscard]] Key::Values keyOfChannel(const FetchSettings& settings) const;
  [[nodiscard]] Key::Values keyOfExtra(std::size_t number) const;

  const SampleStore& store_;
  const SampleFetch& fetch_;
  SpectrumArrays& arrays_;
  std::mutex lock_;  // guards the blocks and the scratch; readers of keys and answers need it not
  BandScratch scratch_;
  std::unique_ptr<std::array<Channel, fft::kEegChannels>> channels_;
  std::unique_ptr<std::array<Extra, SpectrumArrays::kExtras>> extras_;
};

}  // namespace ovka
