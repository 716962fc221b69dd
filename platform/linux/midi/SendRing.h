#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace ovka {

/// A bounded queue from many senders to one reader that never waits, locks or allocates. Each cell
/// carries the turn it is ready for: a sender that was stopped between claiming and filling its
/// cell holds back what lies behind it, never anybody's thread.
///
/// After D. Vyukov, "Bounded MPMC queue", 1024cores.net, for one reader.
template <typename T, std::size_t kCells>
class SendRing {
  static_assert((kCells & (kCells - 1)) == 0, "turns are counted modulo the cells");

 public:
  SendRing() {
    for (std::size_t i = 0; i < kCells; ++i) cells_[i].turn.store(i, std::memory_order_relaxed);
  }

  /// False when full. Any thread.
  bool push(const T& value) noexcept {
    std::size_t at = tail_.load(std::memory_order_relaxed);
    for (;;) {
      Cell& cell = cells_[at % kCells];
      const std::size_t turn = cell.turn.load(std::memory_order_acquire);
      if (turn == at) {
        if (tail_.compare_exchange_weak(at, at + 1, std::memory_order_relaxed)) {
          cell.value = value;
          cell.turn.store(at + 1, std::memory_order_release);
          return true;
        }
      } else if (turn < at) {
        return false;
      } else {
        at = tail_.load(std::memory_order_relaxed);
      }
    }
  }

  /// False when there is nothing to take. One thread at a time.
  bool pop(T& value) noexcept {
    const std::size_t at = head_.load(std::memory_order_relaxed);
    Cell& cell = cells_[at % kCells];
    if (cell.turn.load(std::memory_order_acquire) != at + 1) return false;
    value = cell.value;
    cell.turn.store(at + kCells, std::memory_order_release);
    head_.store(at + 1, std::memory_order_release);
    return true;
  }

  /// Nothing waits and nobody is about to fill a cell. Any thread; true for that moment.
  [[nodiscard]] bool empty() const noexcept {
    return head_.load(std::memory_order_acquire) == tail_.load(std::memory_order_acquire);
  }

 private:
  struct Cell {
    std::atomic<std::size_t> turn{0};
    T value{};
  };
  alignas(64) std::atomic<std::size_t> tail_{0};
  alignas(64) std::atomic<std::size_t> head_{0};
  alignas(64) std::array<Cell, kCells> cells_{};
};

}  // namespace ovka
