#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "RunLoop.h"

namespace ovka {

/// A run loop on the thread that calls run(). Timers keep a fixed grid and do not drift.
class LinuxRunLoop final : public RunLoop {
 public:
  /// Throws std::system_error when the process has no descriptor left.
  LinuxRunLoop();
  /// After run() returned; no other thread calls in any more.
  ~LinuxRunLoop() override;
  LinuxRunLoop(const LinuxRunLoop&) = delete;
  LinuxRunLoop& operator=(const LinuxRunLoop&) = delete;

  /// Runs timers and sources until stop(). One thread at a time.
  void run();
  /// Ends run() after the callback that runs now; a later run() returns at once. Any thread, also
  /// from a signal handler.
  void stop() noexcept;

  /// Timers tick only every kRest, on their grid, while `resting`; it is asked after each tick.
  /// Before run().
  void restWhile(std::function<bool()> resting) { resting_ = std::move(resting); }

  void addTimer(std::chrono::nanoseconds interval, std::function<void()> tick) override;
  Source addSource(std::function<void()> perform) override;
  void signal(Source source) override;
  void removeSource(Source source) override;

 private:
  struct Timer {
    std::int64_t interval = 0;
    std::int64_t due = 0;
    std::function<void()> tick;
  };
  struct CustomSource {
    std::function<void()> perform;
    bool signalled = false;
  };

  void wake() noexcept;
  void waitUntil(std::optional<std::int64_t> due) noexcept;
  void runTimers();
  void runSources();
  [[nodiscard]] std::optional<std::int64_t> nextDue();

  int wakeDescriptor_ = -1;
  std::atomic<bool> stopped_{false};
  std::function<bool()> resting_;
  std::mutex lock_;  // guards what follows; never held while a callback runs
  std::condition_variable performed_;
  std::vector<std::shared_ptr<Timer>> timers_;
  std::map<Source, std::shared_ptr<CustomSource>> sources_;
  Source lastSource_ = 0;
  Source performing_ = 0;
  std::thread::id thread_;
};

}  // namespace ovka
