#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "AmplifierVariables.h"
#include "BufferBench.h"
#include "LossCounters.h"
#include "NotificationCenter.h"
#include "StreamDecoder.h"

namespace ovka::testing {

using Bytes = std::vector<std::uint8_t>;

inline Bytes bytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

/// A decoder on a buffer bench, acquiring, with its notification registered.
struct DecoderBench : BufferBench {
  explicit DecoderBench(std::uint32_t model = 0, std::uint32_t config = 1,
                        std::uint64_t capacity = 100000)
      : BufferBench(capacity) {
    amplifier::resetVariables();
    buffer::SelectDevice = model;
    buffer::DeviceConfig = config;
    center.addObserver(this, "needUpdateDataBuffer", [this] { decoder.needUpdateDataBuffer(); });
  }
  /// The stored values of the five channels at a point.
  [[nodiscard]] std::array<std::int32_t, 5> at(std::int64_t point) const {
    std::array<std::int32_t, 5> values{};
    for (std::int32_t c = 0; c < 5; ++c)
      values[static_cast<std::size_t>(c)] = store.storedValue(c, point);
    return values;
  }

  NotificationCenter center;
  LossCounters losses;
  StreamDecoder decoder{store, center, losses, shell.application};
};

}  // namespace ovka::testing
