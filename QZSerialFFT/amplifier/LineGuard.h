#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include "AmplifierPorts.h"
#include "Clock.h"
#include "LossCounters.h"

namespace ovka {

/// Watches the open input lines: a line that hangs up or is unplugged is noticed within a quarter
/// of a second (also while nothing is read), said in one line, closed, and opened again with its
/// sample speed when its path is back. What is recorded stays; the missing time is counted. What
/// comes while paused or playing is let go, a tick's worth at most is left of it.
///
/// `tick` is called every kTick by one thread of its own: a greeting may keep it for some seconds,
/// during which the other lines are still watched and read.
class LineGuard {
 public:
  static constexpr std::chrono::nanoseconds kTick = std::chrono::milliseconds(250);
  static constexpr std::chrono::nanoseconds kRetry = std::chrono::milliseconds(500);

  LineGuard(AmplifierPorts& ports, LossCounters& losses, Clock& clock)
      : ports_(ports), losses_(losses), clock_(clock) {}

  void tick();

 private:
  struct Watch {
    bool lost = false;
    std::int64_t lostAt = 0;   // nanoseconds of the clock
    std::int64_t nextTry = 0;  // nanoseconds of the clock
  };
  void watchLines();
  void lose(std::int32_t port, std::int64_t now);
  void reopen(std::int32_t port);

  AmplifierPorts& ports_;
  LossCounters& losses_;
  Clock& clock_;
  std::array<Watch, AmplifierPorts::kInputs> watches_;
  bool atRest_ = false;  ///< nobody wanted samples at the last tick
};

}  // namespace ovka
