#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace ovka {

/// Notes, velocities, controllers, values and programs.
[[nodiscard]] constexpr std::int32_t clampedData(std::int32_t value) noexcept {
  return std::clamp(value, 0, 127);
}
[[nodiscard]] constexpr std::int32_t clampedChannel(std::int32_t channel) noexcept {
  return std::clamp(channel, 0, 15);
}

/// A channel-voice message as it goes out; the literature is MIDI 1.0 (MIDI
/// Manufacturers Association), table 2. Arguments are in range.
struct MidiBytes {
  std::array<std::uint8_t, 3> bytes{};
  std::uint8_t size = 3;
  operator std::span<const std::uint8_t>() const noexcept { return {bytes.data(), size}; }
};

[[nodiscard]] constexpr MidiBytes channelMessage(std::int32_t status, std::int32_t channel,
                                                 std::int32_t first, std::int32_t second) noexcept {
  return {{static_cast<std::uint8_t>(status | channel), static_cast<std::uint8_t>(first),
           static_cast<std::uint8_t>(second)},
          3};
}
[[nodiscard]] constexpr MidiBytes noteOn(std::int32_t channel, std::int32_t note,
                                         std::int32_t velocity) noexcept {
  return channelMessage(0x90, channel, note, velocity);
}
/// The velocity of a Note Off is always 0.
[[nodiscard]] constexpr MidiBytes noteOff(std::int32_t channel, std::int32_t note) noexcept {
  return channelMessage(0x80, channel, note, 0);
}
[[nodiscard]] constexpr MidiBytes controlChange(std::int32_t channel, std::int32_t controller,
                                                std::int32_t value) noexcept {
  return channelMessage(0xB0, channel, controller, value);
}
/// `value`: the upper seven bits; the lower are always 0.
[[nodiscard]] constexpr MidiBytes pitchBend(std::int32_t channel, std::int32_t value) noexcept {
  return channelMessage(0xE0, channel, 0, value);
}
[[nodiscard]] constexpr MidiBytes programChange(std::int32_t channel,
                                                std::int32_t program) noexcept {
  MidiBytes message = channelMessage(0xC0, channel, program, 0);
  message.size = 2;
  return message;
}

}  // namespace ovka
