#pragma once

#include <chrono>
#include <functional>
#include <string_view>

namespace ovka {

/// Detaches the system's threads. Every thread belongs to one of three kinds; on the manual clock
/// the same bodies run on the caller's thread in the order of their due times.
///
/// A body must not throw and must return soon after stopAll() was asked for: it is never
/// interrupted.
class ThreadLauncher {
 public:
  virtual ~ThreadLauncher() = default;

  /// A thread with one repeating timer: the first tick comes one interval after the start, later
  /// ones on a fixed grid (no drift); ticks missed while a tick ran long are dropped, not made up
  /// for.
  virtual void repeat(std::string_view name, std::chrono::nanoseconds interval,
                      std::function<void()> tick) = 0;

  /// A thread that calls `step` for ever and sleeps after each call for as long as it returned.
  virtual void loop(std::string_view name, std::function<std::chrono::nanoseconds()> step) = 0;

  /// A thread that runs `body` once and ends.
  virtual void once(std::string_view name, std::function<void()> body) = 0;

  /// Ends every thread that was started and waits for it; called once, by the owner, at the end of
  /// the process or of a test. Threads asked for afterwards are not started.
  virtual void stopAll() = 0;
};

}  // namespace ovka
