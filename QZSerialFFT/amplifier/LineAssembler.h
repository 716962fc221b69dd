#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "ByteCodes.h"
#include "LossCounters.h"

namespace ovka {

/// Cuts received blocks into lines ended by a carriage return, by the amplifier's own rules.
///
/// Kept on purpose: a carriage return among the first 15 bytes of a block is data, which protects
/// the first binary frame of a block; a line of more than 16 bytes is thrown away by wrapping
/// round. So a text line split over two blocks is lost with its neighbour, and a binary frame that
/// holds a 13 is cut there unless it opens its block. FixedFraming is the way without losses. One
/// caller at a time.
class LineAssembler {
 public:
  /// Longest line, with its carriage return.
  static constexpr std::size_t kLongestLine = 16;
  /// Bytes at the start of a block that never end a line.
  static constexpr std::size_t kProtectedBytes = 15;

  /// Calls `onLine(std::span<const std::uint8_t>)` for every line that ends in this block, carriage
  /// return included; half a line waits for the next block. Lines that grew too long are counted.
  template <typename OnLine>
  void feed(std::span<const std::uint8_t> block, LossCounters& losses, OnLine&& onLine) {
    std::size_t at = 0;
    while (at < block.size()) {
      if (localCount == 0 && holdsWholeLine(block, at)) {
        onLine(block.subspan(at, kLongestLine));
        at += kLongestLine;
        continue;
      }
      takeByte(block[at], at >= kProtectedBytes, losses, onLine);
      ++at;
    }
  }

  /// Forgets half a line.
  void reset() noexcept { localCount = 0; }

 private:
  /// The common case at once: 16 bytes whose only line end is the last one.
  [[nodiscard]] static bool holdsWholeLine(std::span<const std::uint8_t> block, std::size_t at) {
    if (block.size() - at < kLongestLine) return false;
    const std::uint8_t* line = block.data() + at;
    if (at == 0) return line[kLongestLine - 1] == kCarriageReturn;
    return endsAtLastOf16(line);
  }

  template <typename OnLine>
  void takeByte(std::uint8_t byte, bool mayEnd, LossCounters& losses, OnLine&& onLine) {
    lineBuffer_[localCount++] = byte;
    if (localCount > kLongestLine) {
      localCount = 0;
      losses.longLines.add(1);
      return;
    }
    if (byte != kCarriageReturn || !mayEnd) return;
    onLine(std::span<const std::uint8_t>(lineBuffer_.data(), localCount));
    localCount = 0;
  }

  std::array<std::uint8_t, kLongestLine + 1> lineBuffer_{};
  std::size_t localCount = 0;  ///< bytes of the line so far
};

}  // namespace ovka
