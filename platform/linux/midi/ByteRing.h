#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ovka {

/// A byte queue from one writer to one reader that never waits, locks or allocates once made.
class ByteRing {
 public:
  /// `bytes` must be a power of two.
  explicit ByteRing(std::size_t bytes) : data_(bytes) {}

  /// All of both parts, or nothing and false when they do not fit. The writer's thread.
  bool write(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second) noexcept {
    const std::size_t tail = tail_.load(std::memory_order_relaxed);
    const std::size_t used = tail - head_.load(std::memory_order_acquire);
    if (first.size() + second.size() > data_.size() - used) return false;
    put(tail, first);
    put(tail + first.size(), second);
    tail_.store(tail + first.size() + second.size(), std::memory_order_release);
    return true;
  }

  [[nodiscard]] std::size_t waiting() const noexcept {
    return tail_.load(std::memory_order_acquire) - head_.load(std::memory_order_relaxed);
  }
  /// Takes exactly `to.size()` bytes, which must wait. The reader's thread.
  void read(std::span<std::uint8_t> to) noexcept {
    const std::size_t head = head_.load(std::memory_order_relaxed);
    const std::size_t at = head & (data_.size() - 1);
    const std::size_t whole = std::min(to.size(), data_.size() - at);
    std::copy_n(data_.begin() + static_cast<std::ptrdiff_t>(at), whole, to.begin());
    std::copy_n(data_.begin(), to.size() - whole, to.begin() + static_cast<std::ptrdiff_t>(whole));
    head_.store(head + to.size(), std::memory_order_release);
  }

 private:
  void put(std::size_t tail, std::span<const std::uint8_t> from) noexcept {
    const std::size_t at = tail & (data_.size() - 1);
    const std::size_t whole = std::min(from.size(), data_.size() - at);
    std::copy_n(from.begin(), whole, data_.begin() + static_cast<std::ptrdiff_t>(at));
    std::copy_n(from.begin() + static_cast<std::ptrdiff_t>(whole), from.size() - whole,
                data_.begin());
  }

  std::vector<std::uint8_t> data_;
  alignas(64) std::atomic<std::size_t> tail_{0};
  alignas(64) std::atomic<std::size_t> head_{0};
};

}  // namespace ovka
