#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <initializer_list>
#include <list>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>
#include <vector>

#include "ThreadLauncher.h"

namespace ovka {

/// Real threads. Timers sleep to absolute times on a fixed grid, so they do not drift. A thread
/// carries the first 15 bytes of its name for debuggers and `top`, and takes no signals but those
/// of its own faults: they stay with the main thread. A thread that the machine refuses is reported
/// in one line and left out. repeat, loop and once: any thread; stopAll: not on one of its threads.
class LinuxThreadLauncher final : public ThreadLauncher {
 public:
  /// Threads of the `urgent` names go before all usual ones, where this user may ask for that.
  explicit LinuxThreadLauncher(std::initializer_list<std::string_view> urgent = {})
      : urgent_(urgent) {}
  /// Stops all threads.
  ~LinuxThreadLauncher() override;
  LinuxThreadLauncher(const LinuxThreadLauncher&) = delete;
  LinuxThreadLauncher& operator=(const LinuxThreadLauncher&) = delete;

  /// Timers of these names tick only every kRest, on their grid, while `resting`. It is asked after
  /// each tick, on their threads. Before the first thread starts.
  void restWhile(std::vector<std::string_view> names, std::function<bool()> resting);

  void repeat(std::string_view name, std::chrono::nanoseconds interval,
              std::function<void()> tick) override;
  void loop(std::string_view name, std::function<std::chrono::nanoseconds()> step) override;
  void once(std::string_view name, std::function<void()> body) override;
  /// Wakes every sleeper at once; returns when the bodies that run have returned.
  void stopAll() override;

 private:
  struct Worker {
    std::thread thread;
    std::shared_ptr<std::atomic<bool>> ended;
  };

  void start(std::string_view name, std::function<void()> body);
  void joinEnded();
  [[nodiscard]] bool stopping();
  /// False when the threads are to end.
  [[nodiscard]] bool sleepUntil(std::chrono::steady_clock::time_point due);

  const std::vector<std::string_view> urgent_;
  std::vector<std::string_view> resters_;
  std::function<bool()> resting_;
  std::mutex lock_;  // guards what follows
  std::condition_variable wake_;
  bool stopping_ = false;
  std::list<Worker> workers_;
};

}  // namespace ovka
