#pragma once

#include <array>
#include <cstdint>

#include "BufferVariables.h"
#include "Frame.h"
#include "FrameEncoder.h"
#include "SampleLine.h"

namespace ovka::terminal {

/// Stored values of one point, by channel.
using StoredPoint = std::array<std::int32_t, buffer::kChannels>;

/// The inverse of decoding: finds for stored values the frame that the decoder of these settings
/// turns into them, or into the nearest ones that it can give. All models but 1.
class LineInverse {
 public:
  LineInverse(const SampleLine& decoding, const FrameFormat& format);

  struct Encoded {
    WireFrame frame;
    Frame decoded;         ///< what the decoder makes of it
    std::uint32_t held{};  ///< bit a channel: its value lay beyond the range of the codes
  };
  [[nodiscard]] Encoded encode(const StoredPoint& wanted) const;

 private:
  [[nodiscard]] Frame decode(const FrameCodes& codes) const;
  [[nodiscard]] bool carries(std::size_t channel) const;
  [[nodiscard]] std::int64_t top(std::size_t channel) const;
  void search(const StoredPoint& wanted, FrameCodes* codes, std::uint32_t* held) const;

  SampleLine decoding_;
  FrameFormat format_;
  Frame lowest_;   ///< decoded from codes of 0
  Frame highest_;  ///< decoded from the greatest codes
};

/// The same for the bytes of model 1 at a scale (`GainOr`).
class ByteInverse {
 public:
  explicit ByteInverse(double scale);
  /// The byte as it goes over the line; `*decoded` is what the decoder makes of it.
  [[nodiscard]] std::uint8_t encode(std::int32_t wanted, std::int32_t* decoded, bool* held) const;

 private:
  std::array<std::int32_t, 256> values_{};  ///< by code
};

}  // namespace ovka::terminal
