#pragma once

#include <array>
#include <cstdint>

#include "BufferVariables.h"

namespace ovka {

/// What one decoded frame carries: a value for each channel that the amplifier sent.
struct Frame {
  std::array<std::int32_t, buffer::kChannels> values{};
  std::array<bool, buffer::kChannels> present{};

  void set(std::size_t channel, std::int32_t value) noexcept {
    values[channel] = value;
    present[channel] = true;
  }
};

}  // namespace ovka
