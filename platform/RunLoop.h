#pragma once

#include <chrono>
#include <functional>

namespace ovka {

/// The system's main run loop: analysis ticks and drained message queues run on its thread.
/// addTimer, addSource, signal and removeSource may be called from any thread; callbacks run on the
/// loop's thread, never at the same time.
class RunLoop {
 public:
  using Source = int;

  virtual ~RunLoop() = default;

  /// A repeating timer, on the same grid rules as ThreadLauncher::repeat.
  virtual void addTimer(std::chrono::nanoseconds interval, std::function<void()> tick) = 0;

  /// Registers a custom source; `perform` runs once after one or more signals.
  virtual Source addSource(std::function<void()> perform) = 0;

  /// Marks the source as due and wakes the loop. Unknown sources do nothing.
  virtual void signal(Source source) = 0;

  /// When this returns on another thread, `perform` is not running and will not run again.
  virtual void removeSource(Source source) = 0;
};

}  // namespace ovka
