#pragma once

#include <atomic>
#include <type_traits>

namespace ovka {

/// A process-wide variable that any thread reads and writes without a lock.
///
/// Reads acquire and writes release, so whoever sees a new `ploop` also sees the samples stored
/// before it. There is no `++` on purpose: a read-modify-write by two threads would lose one of
/// them; a variable with one writer says `x = x + 1`, a counter with several is a Counter.
template <typename T>
class Shared {
  static_assert(std::is_trivially_copyable_v<T>);
  static_assert(std::atomic<T>::is_always_lock_free, "a shared variable must never take a lock");

 public:
  using value_type = T;

  constexpr Shared(T value) noexcept : value_(value) {}  // NOLINT: reads as a plain variable
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;

  operator T() const noexcept { return get(); }  // NOLINT: reads as a plain variable
  T operator=(T value) noexcept {                // NOLINT: the value, as a plain variable gives it
    set(value);
    return value;
  }
  [[nodiscard]] T get() const noexcept { return value_.load(std::memory_order_acquire); }
  void set(T value) noexcept { value_.store(value, std::memory_order_release); }

 private:
  std::atomic<T> value_;
};

/// An event counter that several threads may advance.
class Counter {
 public:
  constexpr Counter() noexcept = default;
  void add(long long n) noexcept { value_.fetch_add(n, std::memory_order_relaxed); }
  void reset() noexcept { value_.store(0, std::memory_order_relaxed); }
  [[nodiscard]] long long get() const noexcept { return value_.load(std::memory_order_relaxed); }

 private:
  std::atomic<long long> value_{0};
};

}  // namespace ovka
