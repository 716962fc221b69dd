#include "Crc32.h"

#include <array>
#include <cstddef>

namespace ovka {
namespace {

constexpr std::array<std::uint32_t, 256> makeTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t value = byte;
    for (int bit = 0; bit < 8; ++bit) {
      value = (value >> 1U) ^ ((value & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    table[byte] = value;
  }
  return table;
}

constexpr auto kTable = makeTable();

}  // namespace

std::uint32_t crc32(std::span<const std::uint8_t> bytes, std::uint32_t before) {
  std::uint32_t value = ~before;
  for (const std::uint8_t byte : bytes) value = (value >> 8U) ^ kTable[(value ^ byte) & 0xFFU];
  return ~value;
}

}  // namespace ovka
