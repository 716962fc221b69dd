#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace ovka {

/// Stores `value` in the first sizeof(T) bytes, least significant first.
template <typename T>
void putLittleEndian(std::span<std::uint8_t> bytes, T value) {
  auto rest = static_cast<std::make_unsigned_t<T>>(value);
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    bytes[i] = static_cast<std::uint8_t>(static_cast<std::uint64_t>(rest) >> (8 * i));
  }
}

/// Reads a value from the first sizeof(T) bytes.
template <typename T>
[[nodiscard]] T getLittleEndian(std::span<const std::uint8_t> bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    value |= static_cast<std::uint64_t>(bytes[i]) << (8 * i);
  }
  return static_cast<T>(value);
}

}  // namespace ovka
