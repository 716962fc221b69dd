#pragma once

#include <chrono>
#include <ctime>
#include <semaphore.h>

namespace ovka {

/// Wakes one sleeping thread. post() neither waits nor allocates: real-time threads may call it.
class Wake {
 public:
  Wake() { ::sem_init(&semaphore_, 0, 0); }
  ~Wake() { ::sem_destroy(&semaphore_); }
  Wake(const Wake&) = delete;
  Wake& operator=(const Wake&) = delete;

  void post() noexcept {
    int waiting = 0;
    // One is enough for a thread that looks at everything when it wakes.
    if (::sem_getvalue(&semaphore_, &waiting) == 0 && waiting > 1) return;
    ::sem_post(&semaphore_);
  }
  /// Returns after a post, or when the time is over.
  void wait(std::chrono::milliseconds longest) noexcept {
    timespec until{};
    ::clock_gettime(CLOCK_MONOTONIC, &until);
    constexpr long kNanoseconds = 1'000'000'000;
    const long nanoseconds = until.tv_nsec + static_cast<long>(longest.count() % 1000) * 1'000'000;
    until.tv_sec += static_cast<time_t>(longest.count() / 1000) + nanoseconds / kNanoseconds;
    until.tv_nsec = nanoseconds % kNanoseconds;
    ::sem_clockwait(&semaphore_, CLOCK_MONOTONIC, &until);
  }

 private:
  sem_t semaphore_{};
};

}  // namespace ovka
