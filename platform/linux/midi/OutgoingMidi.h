#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <span>

namespace ovka {

/// Monotonic nanoseconds, the unit of time stamps at the MIDI transports. Any thread, no lock.
inline std::uint64_t monotonicNanoseconds() noexcept {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U +
         static_cast<std::uint64_t>(now.tv_nsec);
}

/// A message on its way from a sender to the thread that hands it to the MIDI system.
struct OutgoingMidi {
  std::uint64_t due = 0;          ///< monotonic nanoseconds; 0: at once
  std::uint64_t destination = 0;  ///< an endpoint's id or a slot, as the transport likes
  std::uint8_t size = 0;          ///< 1 to 3
  std::array<std::uint8_t, 3> bytes{};

  [[nodiscard]] std::span<const std::uint8_t> message() const noexcept {
    return {bytes.data(), size};
  }
};

/// Length of the message that a status byte begins, 1 to 3; 0 for data bytes and for the system
/// messages without a fixed length.
constexpr std::size_t midiMessageLength(std::uint8_t status) noexcept {
  if (status < 0x80) return 0;
  if (status < 0xF0) return (status & 0xE0U) == 0xC0 ? 2 : 3;
  // F0 system exclusive, quarter frame, song position, song select, two undefined, tune request,
  // end of exclusive; then the real-time messages.
  constexpr std::array<std::uint8_t, 16> kSystem{0, 2, 3, 2, 0, 0, 1, 0, 1, 0, 1, 1, 1, 0, 1, 1};
  return kSystem[status & 0x0FU];
}

/// One whole message: its status first, as many data bytes as it takes, each below 128.
constexpr bool wholeMidiMessage(std::span<const std::uint8_t> message) noexcept {
  if (message.empty() || message.size() != midiMessageLength(message[0])) return false;
  for (const std::uint8_t data : message.subspan(1)) {
    if (data >= 0x80) return false;
  }
  return true;
}

/// Time stamps further ahead than this mean now, as those of the past do: nobody plans so far, it
/// is another clock's number.
inline constexpr std::uint64_t kLongestAheadNanoseconds = 10'000'000'000;

/// The message with its time stamp judged; `message` must be whole.
inline OutgoingMidi outgoing(std::uint64_t destination, std::uint64_t timeStamp,
                             std::span<const std::uint8_t> message) noexcept {
  OutgoingMidi to;
  to.destination = destination;
  to.size = static_cast<std::uint8_t>(message.size());
  for (std::size_t i = 0; i < message.size(); ++i) to.bytes[i] = message[i];
  if (timeStamp != 0) {
    const std::uint64_t now = monotonicNanoseconds();
    if (timeStamp > now && timeStamp - now <= kLongestAheadNanoseconds) to.due = timeStamp;
  }
  return to;
}

}  // namespace ovka
