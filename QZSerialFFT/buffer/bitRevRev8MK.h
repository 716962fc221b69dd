#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ovka {

/// The reversal of the 8 bits of every byte value: 1 is 128, 2 is 64, 3 is 192.
inline constexpr std::array<std::uint8_t, 256> bitrev = [] {
  std::array<std::uint8_t, 256> table{};
  for (unsigned value = 0; value < 256; ++value) {
    unsigned reversed = 0;
    for (unsigned bit = 0; bit < 8; ++bit) reversed |= ((value >> bit) & 1U) << (7 - bit);
    table[value] = static_cast<std::uint8_t>(reversed);
  }
  return table;
}();

/// bitRevRev8MK: reverses the 8 bits of its argument; an argument outside 0 ... 255 gives 0. Any
/// thread.
[[nodiscard]] constexpr std::uint8_t bitRevRev8MK(std::int64_t value) noexcept {
  // Without a branch: loud signals leave the byte at every other sample.
  const auto index = static_cast<std::uint64_t>(value);
  const auto inside = static_cast<unsigned>(-static_cast<int>(index < bitrev.size()));
  return static_cast<std::uint8_t>(bitrev[index & 0xFFU] & inside);
}

}  // namespace ovka
