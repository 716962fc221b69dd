#pragma once

#include <cstdint>
#include <limits>

namespace ovka {

/// Toward zero, held at the limits of the target; what is no number gives 0. A gain that the user
/// turned up too far thus clips instead of wrapping round. Any thread.
template <typename Integer>
[[nodiscard]] constexpr Integer truncateTo(double value) noexcept {
  constexpr auto kLowest = static_cast<double>(std::numeric_limits<Integer>::min());
  if (value > kLowest && value < -kLowest) return static_cast<Integer>(value);
  if (value != value) return Integer{0};
  return value > 0 ? std::numeric_limits<Integer>::max() : std::numeric_limits<Integer>::min();
}

}  // namespace ovka
