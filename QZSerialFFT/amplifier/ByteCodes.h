#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ovka {

/// What ends every line of the amplifier.
inline constexpr std::uint8_t kCarriageReturn = 13;

/// Value of a hexadecimal character that is none.
inline constexpr std::uint8_t kNoHexDigit = 0xFF;

/// Value of every byte as a hexadecimal character, kNoHexDigit for the others.
inline constexpr std::array<std::uint8_t, 256> kHexDigits = [] {
  std::array<std::uint8_t, 256> table{};
  table.fill(kNoHexDigit);
  for (std::uint8_t i = 0; i < 10; ++i) table['0' + std::size_t{i}] = i;
  for (std::uint8_t i = 0; i < 6; ++i) {
    table['A' + std::size_t{i}] = static_cast<std::uint8_t>(10 + i);
    table['a' + std::size_t{i}] = static_cast<std::uint8_t>(10 + i);
  }
  return table;
}();

/// The same with 0 for the others.
inline constexpr std::array<std::uint8_t, 256> kHexValues = [] {
  std::array<std::uint8_t, 256> table = kHexDigits;
  for (std::uint8_t& value : table) value = value == kNoHexDigit ? std::uint8_t{0} : value;
  return table;
}();

[[nodiscard]] constexpr bool isHexDigit(std::uint8_t character) noexcept {
  return kHexDigits[character] != kNoHexDigit;
}
[[nodiscard]] constexpr bool isDigit(std::uint8_t character) noexcept {
  return character >= '0' && character <= '9';
}
/// CharToInt: the value of a hexadecimal character; 0 for anything else.
[[nodiscard]] constexpr std::int32_t CharToInt(std::uint8_t character) noexcept {
  return kHexValues[character];
}
/// The 12-bit number of three hexadecimal characters.
[[nodiscard]] constexpr std::int32_t hex12(std::uint8_t d0, std::uint8_t d1,
                                           std::uint8_t d2) noexcept {
  return 256 * CharToInt(d0) + 16 * CharToInt(d1) + CharToInt(d2);
}
/// The same of three characters in a row.
[[nodiscard]] constexpr std::int32_t hex12(const std::uint8_t* digits) noexcept {
  return hex12(digits[0], digits[1], digits[2]);
}

/// True for 16 bytes of which the last one, and no other, is a carriage return.
[[nodiscard]] inline bool endsAtLastOf16(const std::uint8_t* bytes) noexcept {
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  const auto differences = [bytes](std::size_t at) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes + at, sizeof word);
    return word ^ kOnes * kCarriageReturn;
  };
  // The top bit of a byte stays when a zero lies in or below it: a carriage return is there.
  const auto zeros = [](std::uint64_t word) { return (word - kOnes) & ~word & kOnes << 7U; };
  return bytes[15] == kCarriageReturn && (zeros(differences(0)) | zeros(differences(7))) == 0;
}

}  // namespace ovka
