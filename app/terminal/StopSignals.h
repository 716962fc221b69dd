#pragma once

#include <chrono>

namespace ovka::terminal {

/// While one of these lives, SIGINT, SIGTERM and SIGHUP ask for an orderly end instead of ending
/// the process, and a pipe whose reader is gone or a file that may not grow gives an error instead
/// of a signal. A second signal ends the process at once, for the case that the orderly end hangs.
/// One at a time; main thread.
class StopSignals {
 public:
  StopSignals();
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  [[nodiscard]] bool stopped() const noexcept;

  /// What to do before a second signal ends the process (nullptr: nothing); it must be safe inside
  /// a signal handler.
  void beforeSuddenEnd(void (*last)()) noexcept;

  /// Waits for a stop or for `other` (a descriptor, -1 for none) to become readable. True when
  /// `other` is readable (or hung up).
  bool wait(std::chrono::nanoseconds atMost, int other = -1) const;
};

}  // namespace ovka::terminal
