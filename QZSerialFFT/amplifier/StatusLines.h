#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "AmplifierVariables.h"

namespace ovka {

/// A four-letter acknowledgement: sets its flag and clears the other flags of its group.
struct Acknowledgement {
  /// Flags that exclude each other.
  enum class Group : std::uint8_t {
    Filter,          ///< filter set-ups 0 to 6
    ExternalFilter,  ///< filter set-ups 10 and 20
    Electrode,
    OscillatorFrequency,
    OscillatorPower,
    ChannelMode,
  };
  char letter;  ///< sent four times
  Group group;
  Shared<std::int32_t>* flag;
};

extern const std::array<Acknowledgement, 22> kAcknowledgements;

/// Carries out the acknowledgement of a letter; false when there is none.
bool acknowledge(std::uint8_t letter);

/// A received block that is a status line by itself (sample-speed echo, short overflow echo,
/// battery report). True when it was one: nothing else is in it.
bool decodeStatusBlock(std::span<const std::uint8_t> block);

/// False for a line that decodeStatusLine does not know, at a glance.
[[nodiscard]] inline bool mayBeStatusLine(std::span<const std::uint8_t> line) noexcept {
  constexpr std::size_t kLongest = 14;
  if (line.size() <= kLongest) return true;
  std::uint32_t four = 0;
  std::memcpy(&four, line.data(), sizeof four);
  return four == std::rotl(four, 8);
}

/// A complete line with its carriage return. True when it was a status line or an acknowledgement.
/// As the amplifier's rules have it, four equal letters count whatever the length of the line.
bool decodeStatusLine(std::span<const std::uint8_t> line);

/// Length of the status line or acknowledgement that the bytes begin with, by its exact syntax; 0
/// when they begin with none. For framing by length, where samples may hold any byte.
[[nodiscard]] std::size_t statusLineLength(std::span<const std::uint8_t> bytes);

}  // namespace ovka
