#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace ovka {

/// A queue of fixed size between one thread that pushes and one that pops at a time. Nothing waits;
/// only the constructor allocates. What does not fit is dropped and counted.
template <typename T>
class BoundedRing {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  /// `capacity`: a power of two.
  explicit BoundedRing(std::size_t capacity)
      : mask_(capacity - 1), items_(std::make_unique<T[]>(capacity)) {}

  /// The pushing side.
  bool push(const T& item) noexcept {
    const std::uint64_t in = in_.load(std::memory_order_relaxed);
    if (in - out_.load(std::memory_order_acquire) > mask_) {
      dropped_.fetch_add(1, std::memory_order_relaxed);
      return false;
    }
    items_[in & mask_] = item;
    in_.store(in + 1, std::memory_order_release);
    return true;
  }
  /// The popping side.
  bool pop(T& item) noexcept {
    const std::uint64_t out = out_.load(std::memory_order_relaxed);
    if (out == in_.load(std::memory_order_acquire)) return false;
    item = items_[out & mask_];
    out_.store(out + 1, std::memory_order_release);
    return true;
  }
  /// Any thread.
  [[nodiscard]] std::uint64_t dropped() const noexcept {
    return dropped_.load(std::memory_order_relaxed);
  }

 private:
  const std::uint64_t mask_;
  const std::unique_ptr<T[]> items_;
  alignas(64) std::atomic<std::uint64_t> in_{0};
  alignas(64) std::atomic<std::uint64_t> out_{0};
  std::atomic<std::uint64_t> dropped_{0};
};

}  // namespace ovka
