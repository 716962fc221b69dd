#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "AlignedBlock.h"
#include "SampleFetch.h"
#include "SpectrumArrays.h"
#include "SpectrumAverage.h"

namespace ovka {

/// One channel's pass: fetch, transform, filter, averaging, peak search. A pass works on private
/// scratch and stores its results in the channel's arrays at its end. Passes take turns, so any
/// thread may ask for one; nothing allocates.
class SpectrumPass {
 public:
  SpectrumPass(const SampleFetch& fetch, const AnalysisTables& tables, SpectrumArrays& arrays);

  /// getAndfftA:CO:BS: and its like: one pass over the `fftp` samples that end at PT. CO 0:
  /// spectrum and coherence array, averaging; CO set: the coherence array only, its coefficients
  /// filtered twice as in doCoherence:, and the peaks of the spectrum as it stands. BS 1 (a
  /// brain-switch pass) leaves `PeakfftPower` alone.
  void getAndfftA(std::int64_t PT, std::int32_t CO, std::int32_t BS) { pass(0, PT, CO, BS); }
  void getAndfftB(std::int64_t PT, std::int32_t CO, std::int32_t BS) { pass(1, PT, CO, BS); }
  void getAndfftD(std::int64_t PT, std::int32_t CO, std::int32_t BS) { pass(2, PT, CO, BS); }
  void getAndfftE(std::int64_t PT, std::int32_t CO, std::int32_t BS) { pass(3, PT, CO, BS); }
  /// getAndfftASound:CO:BS: and getAndfftBSound:CO:BS: PT counts samples of the sound input.
  void getAndfftASound(std::int64_t PT, std::int32_t CO, std::int32_t BS) { pass(4, PT, CO, BS); }
  void getAndfftBSound(std::int64_t PT, std::int32_t CO, std::int32_t BS) { pass(5, PT, CO, BS); }

 private:
  void pass(std::int32_t channel, std::int64_t PT, std::int32_t CO, std::int32_t BS);
  void transform(std::int32_t channel, std::int64_t PT, std::int32_t CO, std::int32_t points);
  void average(std::int32_t channel, std::int32_t points);
  void resetAveragesAfterInit();

  const SampleFetch& fetch_;
  const AnalysisTables& tables_;
  SpectrumArrays& arrays_;
  std::mutex lock_;  // guards what follows
  AlignedBlock block_;
  AlignedBlock work_;
  AlignedBlock magnitude_;
  std::array<SpectrumAverage, fft::kAllChannels> averages_;
  std::uint32_t initCount_ = 0;
};

}  // namespace ovka
