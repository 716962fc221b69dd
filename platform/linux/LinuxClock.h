#pragma once

#include <cstdint>

#include "Clock.h"

namespace ovka {

/// The machine's monotonic and wall clocks. Any thread.
class LinuxClock final : public Clock {
 public:
  [[nodiscard]] std::int64_t nanoseconds() const noexcept override;
  [[nodiscard]] std::int64_t wallNanoseconds() const noexcept override;
};

}  // namespace ovka
