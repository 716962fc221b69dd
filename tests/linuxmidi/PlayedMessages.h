#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ovka::testing {

using MidiBytes = std::vector<std::uint8_t>;

/// A message of every kind that the program sends or may be asked to, with bytes at the limits.
inline std::vector<MidiBytes> everyKindOfMessage() {
  std::vector<MidiBytes> all;
  for (const unsigned channel : {0U, 9U, 15U}) {
    const auto status = [&](unsigned kind) { return static_cast<std::uint8_t>(kind | channel); };
    all.insert(all.end(), {{status(0x90), 60, 100},
                           {status(0x80), 60, 0},
                           {status(0x90), 127, 127},
                           {status(0x80), 127, 0},
                           {status(0xB0), 7, 127},
                           {status(0xB0), 123, 0},
                           {status(0xC0), 19},
                           {status(0xD0), 5},
                           {status(0xA0), 1, 2},
                           {status(0xE0), 0, 0},
                           {status(0xE0), 0, 127}});
  }
  return all;
}

/// The nth of a long burst, different from its neighbours.
inline MidiBytes burstMessage(std::size_t n) {
  return {static_cast<std::uint8_t>(0x90U | (n >> 14U & 15U)), static_cast<std::uint8_t>(n & 127U),
          static_cast<std::uint8_t>(1 + (n >> 7U) % 127U)};
}

/// Channel and note of what the player holds when it is killed.
inline std::vector<std::pair<unsigned, unsigned>> heldNotes() {
  return {{0, 60}, {0, 64}, {9, 0}, {15, 127}};
}

}  // namespace ovka::testing
