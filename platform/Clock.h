#pragma once

#include <cstdint>

namespace ovka {

/// Time as the system sees it. Any thread.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Nanoseconds since an arbitrary start; never goes back.
  [[nodiscard]] virtual std::int64_t nanoseconds() const noexcept = 0;
  /// Nanoseconds since 1970-01-01 UTC; for texts and file names only, it may jump.
  [[nodiscard]] virtual std::int64_t wallNanoseconds() const noexcept = 0;
};

}  // namespace ovka
