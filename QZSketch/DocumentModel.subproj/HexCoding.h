#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace ovka {

// Hexadecimal coding of sample blocks: hundreds of megabytes at a time, so many digits a step.

/// Writes two lower-case digits a byte to `to` (room for 2 x bytes.size()).
void hexEncode(std::span<const std::uint8_t> bytes, char* to) noexcept;

/// What a run of digits gave.
struct HexRun {
  std::size_t consumed = 0;  ///< characters
  std::size_t bytes = 0;     ///< decoded
};

/// Decodes whole pairs of digits from the front of `text`, stepping over single spaces between
/// them, and stops at the first character that is neither. With `to` (room for text.size() / 2)
/// nullptr it only checks and counts.
[[nodiscard]] HexRun hexDecode(std::span<const char> text, std::uint8_t* to) noexcept;

/// 0 to 15, or -1 for what is no digit.
[[nodiscard]] constexpr int hexDigit(char c) noexcept {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace ovka
