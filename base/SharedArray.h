#pragma once

#include <atomic>
#include <cstddef>
#include <span>
#include <type_traits>

namespace ovka {

/// An array at a fixed address that threads read and write without a lock: every element access is
/// a relaxed atomic one, so a reader may meet a half-finished update but never undefined behaviour.
///
/// It does not own its memory: `attach` gives it a block (from an AddressSpace port, or an array
/// member of its owner) that outlives it. Indices are the caller's to check.
template <typename T>
class SharedArray {
  static_assert(std::is_trivially_copyable_v<T>);
  static_assert(std::atomic_ref<T>::is_always_lock_free);

 public:
  SharedArray() = default;
  SharedArray(T* data, std::size_t size) noexcept : data_(data), size_(size) {}

  /// Not thread-safe: before any other thread sees the array.
  void attach(T* data, std::size_t size) noexcept {
    data_ = data;
    size_ = size;
  }

  /// Elements of the whole address range, whether opened yet or not.
  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] const T* address() const noexcept { return data_; }

  [[nodiscard]] T get(std::size_t index) const noexcept {
    return std::atomic_ref<T>(data_[index]).load(std::memory_order_relaxed);
  }
  void set(std::size_t index, T value) noexcept {
    std::atomic_ref<T>(data_[index]).store(value, std::memory_order_relaxed);
  }

  /// Copies elements first, first + 1, ... into `out`.
  void snapshot(std::size_t first, std::span<T> out) const noexcept {
    T* from = data_ + first;
#pragma GCC unroll 8
    for (T& value : out) value = std::atomic_ref<T>(*from++).load(std::memory_order_relaxed);
  }
  /// Copies `in` to elements first, first + 1, ...
  void publish(std::size_t first, std::span<const T> in) noexcept {
    T* to = data_ + first;
#pragma GCC unroll 8
    for (const T& value : in) std::atomic_ref<T>(*to++).store(value, std::memory_order_relaxed);
  }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace ovka
