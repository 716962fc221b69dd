#pragma once

#include <cstdint>

namespace ovka {

/// A small generator whose sequence is the same on every machine (splitmix64: a Weyl sequence under
/// a mixing function; Steele, Lea and Flood, OOPSLA 2014). The standard library's distributions are
/// not used: their results differ between libraries.
class Random {
 public:
  explicit constexpr Random(std::uint64_t seed) noexcept : state_(seed) {}

  constexpr std::uint64_t next() noexcept {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
  }
  /// 0 up to, not including, 1; exact in 53 bits.
  constexpr double uniform() noexcept { return static_cast<double>(next() >> 11U) * 0x1.0p-53; }
  constexpr double between(double low, double high) noexcept {
    return low + (high - low) * uniform();
  }
  /// About normal, mean 0, variance 1, within +-3.47: the sum of four 16-bit uniforms. Needs no
  /// logarithm, so the bits are the same everywhere.
  constexpr double gauss() noexcept {
    const std::uint64_t r = next();
    const auto sum = static_cast<double>((r & 0xFFFFU) + ((r >> 16U) & 0xFFFFU) +
                                         ((r >> 32U) & 0xFFFFU) + (r >> 48U));
    return (sum - 131070.0) * (1.7320508075688772 / 65536.0);
  }

 private:
  std::uint64_t state_;
};

}  // namespace ovka
