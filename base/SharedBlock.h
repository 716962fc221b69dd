#pragma once

#include <atomic>
#include <cstddef>
#include <span>

namespace ovka {

/// A small process-wide table of N values that any thread reads and writes without a lock; it owns
/// its storage and starts at zero. Elements are single atomic values: a reader may meet a row of
/// which the writer has stored only part. Indices are the caller's to check.
template <typename T, std::size_t N>
class SharedBlock {
  static_assert(std::atomic<T>::is_always_lock_free, "a shared table must never take a lock");

 public:
  constexpr SharedBlock() noexcept = default;
  SharedBlock(const SharedBlock&) = delete;
  SharedBlock& operator=(const SharedBlock&) = delete;

  static constexpr std::size_t size() noexcept { return N; }
  [[nodiscard]] T get(std::size_t index) const noexcept {
    return values_[index].load(std::memory_order_relaxed);
  }
  T operator[](std::size_t index) const noexcept { return get(index); }
  void set(std::size_t index, T value) noexcept {
    values_[index].store(value, std::memory_order_relaxed);
  }
  void publish(std::span<const T, N> in) noexcept {
    for (std::size_t i = 0; i < N; ++i) set(i, in[i]);
  }
  void clear() noexcept {
    for (std::size_t i = 0; i < N; ++i) set(i, T{});
  }

 private:
  std::atomic<T> values_[N]{};
};

}  // namespace ovka
