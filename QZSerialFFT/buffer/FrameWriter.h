#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "BufferVariables.h"
#include "Frame.h"
#include "SampleStore.h"
#include "SharedArray.h"
#include "bitRevRev8MK.h"

namespace ovka {

/// Stores the frames of a received block, one after the other, each as SampleStore::storeFrame
/// does.
///
/// A value for the time of one block: it holds where the arrays lie and how the byte arrays follow
/// from them, so that a frame costs its stores and little else. Positions, modes and the readers'
/// settings are still fetched for every frame, and every frame is whole, its position and the write
/// generation included, when `store` returns. The acquisition thread; allocates nothing.
class FrameWriter {
 public:
  explicit FrameWriter(SampleStore& store) : store_(store) {
    for (std::size_t channel = 0; channel < values_.size(); ++channel) {
      values_[channel] = store.channels_[channel].values;
      bytes_[channel] = store.channels_[channel].bytes;
    }
    follow(settings_);
  }

  /// Stores a frame at `ploop` and finishes it.
  [[gnu::always_inline]] void store(const Frame& frame) {
    const std::int64_t last = store_.lastWritable();
    if (last >= 0) {
      const auto at = static_cast<std::size_t>(std::clamp<std::int64_t>(buffer::ploop, 0, last));
#pragma GCC unroll 5
      for (std::size_t channel = 0; channel < values_.size(); ++channel) {
        if (frame.present[channel]) values_[channel].set(at, frame.values[channel]);
      }
      storeBytes(at, last);
    }
    end();
  }

  /// The end of a frame whose values are stored.
  void finish() {
    const std::int64_t last = store_.lastWritable();
    if (last >= 0) {
      storeBytes(static_cast<std::size_t>(std::clamp<std::int64_t>(buffer::ploop, 0, last)), last);
    }
    end();
  }

 private:
  using ReadSettings = SampleStore::ReadSettings;
  static constexpr std::size_t kByteArrays = buffer::kChannels - 1;  // of channels 1 to 4
  static constexpr double kQuarter = 0.25;
  /// A quarter over the readers' divisor. In place of both divisions, this product has the same
  /// whole part for every value whose quarter fits a byte, and leaves the byte for all others.
  static constexpr double kScaledQuarter = kQuarter / SampleStore::kDivisor;

  [[gnu::always_inline]] void storeBytes(std::size_t to, std::int64_t last) {
    const ReadSettings now;
    if (now != settings_) follow(now);
    // As readers get the sample: at the very end that is the point before.
    const std::size_t from =
        std::min(to, static_cast<std::size_t>(std::max<std::int64_t>(last - 1, 0)));
#pragma GCC unroll 4
    for (std::size_t i = 0; i < kByteArrays; ++i) {
      const auto stored = static_cast<double>(sources_[i].get(from));
      const auto quarter = static_cast<std::int32_t>(stored * factors_[i]);
      bytes_[i + 1].set(to, bitRevRev8MK(std::int64_t{quarter} + 128));
    }
  }

  void end() {
    store_.advance();
    if (buffer::UploadStartZ != 0) store_.copyUpload();
    store_.noteFrame();
  }

  void follow(const ReadSettings& settings) {
    settings_ = settings;
    const double quarter = settings.isScaled() ? kScaledQuarter : kQuarter;
    for (std::size_t i = 0; i < kByteArrays; ++i) {
      const std::size_t array = settings.arrayOf(static_cast<std::int32_t>(i + 1));
      const bool nothing = array == SampleStore::kNoArray;  // flags that make everything 0
      sources_[i] = values_[nothing ? 0 : array];
      factors_[i] = nothing ? 0.0 : settings.isNegated(array) ? -quarter : quarter;
    }
  }

  SampleStore& store_;
  ReadSettings settings_;
  std::array<SharedArray<std::int32_t>, buffer::kChannels> values_;
  std::array<SharedArray<std::uint8_t>, buffer::kChannels> bytes_;
  // A quarter of what readers get is the value of the source times the factor, cut off.
  std::array<SharedArray<std::int32_t>, kByteArrays> sources_;
  std::array<double, kByteArrays> factors_{};
};

}  // namespace ovka
