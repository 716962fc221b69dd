#pragma once

#include <cstdint>

namespace ovka {

/// Seconds as a packet's time stamp: truncated to an unsigned 64-bit integer, values of 2^63 and
/// above through the signed range with the top bit put back. Below 0 and no number give 0, above
/// the range the greatest.
[[nodiscard]] constexpr std::uint64_t timeStampOf(double seconds) noexcept {
  constexpr double kTop = 9223372036854775808.0;  // 2^63
  if (!(seconds > 0)) return 0;
  if (seconds < kTop) return static_cast<std::uint64_t>(static_cast<std::int64_t>(seconds));
  if (seconds >= 2 * kTop) return ~std::uint64_t{0};
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(seconds - kTop)) |
         (std::uint64_t{1} << 63U);
}

}  // namespace ovka
